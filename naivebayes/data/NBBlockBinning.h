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
    using Entry = std::uint16_t;

    /// Borrows the encoder; null: every value is missing.
    explicit NBBlockBinning(const NBBinningEncoder* encoder);
    /// Every entry is below it.
    std::uint32_t GetEntryEnd() const { return fEntryEnd; }
    /// False when there are more bins than entries; Encode may then not be called.
    bool IsUsable() const { return fEntryEnd <= 65536; }
    /// One entry a value.
    void Encode(std::span<const double> values, Entry* entriesOut) const;

 private:
    void EncodeByCounting(std::span<const double> values, Entry* entriesOut) const;

    const NBBinningEncoder* fpEncoder;
    std::uint32_t fEntryEnd = 1;
    bool fbByCounting = false;  // an entry follows from how many cutpoints are below the value
    std::vector<double> fvCutpoints;
    // By cutpoint, the entry of a value that is equal to it; empty where that is no exception.
    std::vector<Entry> fvEqual;
};

#endif  // PREDSEL_NAIVEBAYES_DATA_NBBLOCKBINNING_H
