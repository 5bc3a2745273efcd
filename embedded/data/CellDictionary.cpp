#include "embedded/data/CellDictionary.h"

#include <utility>

namespace embedded {

CellDictionary::CellDictionary(std::size_t texts) : fvEnds(1) { Resize(std::bit_ceil(2 * texts)); }

std::uint32_t CellDictionary::Add(Slot slot, std::size_t at, const char* letters) {
    fLetters.append(letters, slot.fLength);
    fvEnds.push_back(fLetters.size());
    slot.fEntry = static_cast<std::uint32_t>(Count());
    fvSlots[at] = slot;
    if (2 * Count() > fvSlots.size()) {
        Resize(2 * fvSlots.size());
    }
    return slot.fEntry;
}

void CellDictionary::Resize(std::size_t slots) {
    fShift = 64U - static_cast<unsigned>(std::countr_zero(slots));
    const std::vector<Slot> old = std::exchange(fvSlots, std::vector<Slot>(slots));
    for (const Slot& slot : old) {
        if (slot.fEntry == 0) {
            continue;
        }
        std::size_t at = Place(slot, fShift);
        while (fvSlots[at].fEntry != 0) {
            at = (at + 1) & (slots - 1);
        }
        fvSlots[at] = slot;
    }
}

}  // namespace embedded
