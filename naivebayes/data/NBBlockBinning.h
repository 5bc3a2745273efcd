#ifndef PREDSEL_NAIVEBAYES_DATA_NBBLOCKBINNING_H
#define PREDSEL_NAIVEBAYES_DATA_NBBLOCKBINNING_H

#include <cstdint>
#include <span>
#include <vector>

class NBBinningEncoder;

/// Bins of many values at a time. An entry is what NBBinningEncoder::Encode gives, moved up by one
/// so that 0 is missing.
class NBBlockBinning {
 public:
    /// Borrows the encoder; null: every value is missing.
    explicit NBBlockBinning(const NBBinningEncoder* encoder);
    /// Every entry is below it.
    std::uint32_t GetEntryEnd() const { return fEntryEnd; }
    /// One entry a value; one above highest becomes highest. Entry is an unsigned integer of 1, 2
    /// or 4 bytes that holds highest.
    template <class Entry>
    void Encode(std::span<const double> values, std::uint32_t highest, Entry* entriesOut) const;

 private:
    template <class Entry>
    void EncodeByCounting(std::span<const double> values, std::uint32_t highest,
                          Entry* entriesOut) const;

    const NBBinningEncoder* fpEncoder;
    std::uint32_t fEntryEnd = 1;
    bool fbByCounting = false;  // an entry follows from how many cutpoints are below the value
    // Each of these cutpoints below a value adds one to the first entry.
    double fFirstEntry = 1.0;
    std::vector<double> fvCutpoints;
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBBLOCKBINNING_H
