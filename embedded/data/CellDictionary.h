#ifndef PREDSEL_EMBEDDED_DATA_CELLDICTIONARY_H
#define PREDSEL_EMBEDDED_DATA_CELLDICTIONARY_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace embedded {

/// Gives each distinct text a number in order of appearance, from 1.
class CellDictionary {
    static constexpr std::uint32_t kKeyLetters = 16;
    struct Slot {
        std::uint64_t fFirst = 0;  // the text's letters, zeros behind them; of longer texts a hash
        std::uint64_t fSecond = 0;
        std::uint32_t fLength = 0;
        std::uint32_t fEntry = 0;  // 0: none
    };

 public:
    /// Letters that a look-up reads, however short the text is.
    static constexpr std::uint32_t kLettersRead = kKeyLetters;

    /// Room for this many texts at first.
    explicit CellDictionary(std::size_t texts = 16);

    /// Looks texts up from a loop: knows where to look without asking the dictionary each time,
    /// which must not change otherwise meanwhile.
    class Probe {
     public:
        explicit Probe(CellDictionary& dictionary)
            : fpDictionary(&dictionary),
              fpSlots(dictionary.fvSlots.data()),
              fLastSlot(dictionary.fvSlots.size() - 1),
              fShift(dictionary.fShift) {}

        /// The number of a text. Reads kLettersRead bytes from `letters` on, whatever the length.
        std::uint32_t Entry(const char* letters, std::uint32_t length) {
            const Slot wanted = SlotFor(letters, length);
            std::size_t at = Place(wanted, fShift);
            while (fpSlots[at].fEntry != 0) {
                const Slot& slot = fpSlots[at];
                if (slot.fFirst == wanted.fFirst && slot.fSecond == wanted.fSecond &&
                    slot.fLength == wanted.fLength &&
                    (length <= kKeyLetters ||
                     fpDictionary->Text(slot.fEntry) == std::string_view(letters, length))) {
                    return slot.fEntry;
                }
                at = (at + 1) & fLastSlot;
            }
            const std::uint32_t entry = fpDictionary->Add(wanted, at, letters);
            *this = Probe(*fpDictionary);
            return entry;
        }

     private:
        CellDictionary* fpDictionary;
        const Slot* fpSlots;
        std::size_t fLastSlot;
        unsigned fShift;
    };
    std::uint32_t Entry(const char* letters, std::uint32_t length) {
        return Probe(*this).Entry(letters, length);
    }

    /// Keeps the texts and their numbers alone: Entry must not be called any more.
    void Close() { fvSlots = std::vector<Slot>(); }
    std::size_t Count() const { return fvEnds.size() - 1; }
    std::string_view Text(std::uint32_t entry) const {
        return std::string_view(fLetters).substr(fvEnds[entry - 1],
                                                 fvEnds[entry] - fvEnds[entry - 1]);
    }

 private:
    static Slot SlotFor(const char* letters, std::uint32_t length) {
        Slot slot;
        slot.fLength = length;
        if (length > kKeyLetters) {
            slot.fFirst = std::hash<std::string_view>()({letters, length});
            return slot;
        }
        std::memcpy(&slot.fFirst, letters, sizeof slot.fFirst);
        std::memcpy(&slot.fSecond, letters + sizeof slot.fFirst, sizeof slot.fSecond);
        slot.fFirst &= kMasks[length].fFirst;
        slot.fSecond &= kMasks[length].fSecond;
        return slot;
    }
    static std::size_t Place(const Slot& slot, unsigned shift) {
        return static_cast<std::size_t>(((slot.fFirst ^ slot.fSecond * 31) * 0x9E3779B97F4A7C15U) >>
                                        shift);
    }
    std::uint32_t Add(Slot slot, std::size_t at, const char* letters);
    void Resize(std::size_t slots);

    struct Mask {
        std::uint64_t fFirst;
        std::uint64_t fSecond;
    };
    static constexpr std::array<Mask, kKeyLetters + 1> kMasks = [] {
        std::array<Mask, kKeyLetters + 1> masks{};
        for (unsigned length = 0; length <= kKeyLetters; ++length) {
            const auto upTo = [](unsigned bytes) {
                constexpr std::uint64_t kAll = ~std::uint64_t{0};
                constexpr bool kLittle = std::endian::native == std::endian::little;
                const unsigned others = bytes >= 8 ? 0 : 8 * (8 - bytes);
                return bytes == 0 ? 0 : kLittle ? kAll >> others : kAll << others;
            };
            masks[length] = {upTo(length), length <= 8 ? 0 : upTo(length - 8)};
        }
        return masks;
    }();

    unsigned fShift = 0;
    std::vector<Slot> fvSlots;  // a power of two of them, at most half of them used
    std::string fLetters;
    std::vector<std::size_t> fvEnds;  // in fLetters, by entry; the first is 0
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_CELLDICTIONARY_H
