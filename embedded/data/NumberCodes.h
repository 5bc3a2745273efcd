#ifndef PREDSEL_EMBEDDED_DATA_NUMBERCODES_H
#define PREDSEL_EMBEDDED_DATA_NUMBERCODES_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace embedded {

/// Gives each distinct number a code in order of appearance: an open hash table over the bits of
/// doubles, much quicker here than std::unordered_map. Neither NaN nor -0.
class NumberCodes {
 public:
    std::uint32_t Code(double value) {
        if (2 * (fvValues.size() + 1) > fvSlots.size()) {
            Grow();
        }
        std::size_t slot = Slot(value);
        while (fvSlots[slot] != 0) {
            const std::uint32_t code = fvSlots[slot] - 1;
            if (fvValues[code] == value) {
                return code;
            }
            slot = (slot + 1) & (fvSlots.size() - 1);
        }
        fvValues.push_back(value);
        fvSlots[slot] = static_cast<std::uint32_t>(fvValues.size());
        return fvSlots[slot] - 1;
    }
    /// By code.
    const std::vector<double>& Values() const { return fvValues; }

 private:
    std::size_t Slot(double value) const {
        std::uint64_t bits = std::bit_cast<std::uint64_t>(value);
        // The finisher of Steele, Lea & Flood (2014), SplitMix: spreads the few bits in which
        // whole numbers differ.
        bits = (bits ^ (bits >> 30U)) * 0xbf58476d1ce4e5b9U;
        bits = (bits ^ (bits >> 27U)) * 0x94d049bb133111ebU;
        bits ^= bits >> 31U;
        return static_cast<std::size_t>(bits) & (fvSlots.size() - 1);
    }
    void Grow() {
        fvSlots.assign(std::max<std::size_t>(1024, 2 * fvSlots.size()), 0);
        for (std::size_t code = 0; code < fvValues.size(); ++code) {
            std::size_t slot = Slot(fvValues[code]);
            while (fvSlots[slot] != 0) {
                slot = (slot + 1) & (fvSlots.size() - 1);
            }
            fvSlots[slot] = static_cast<std::uint32_t>(code + 1);
        }
    }

    std::vector<double> fvValues;        // by code
    std::vector<std::uint32_t> fvSlots;  // code + 1, 0 empty; a power of two of them
};

/// The numbers in ascending order. newEntries gives what becomes of an entry, a code + 1 or 0.
std::vector<double> AscendingValues(const NumberCodes& codes,
                                    std::vector<std::uint32_t>& newEntries);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_NUMBERCODES_H
