#ifndef PREDSEL_FEATURESELECT_FSSORTEDENTRIES_H
#define PREDSEL_FEATURESELECT_FSSORTEDENTRIES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

/// Entries in ascending order of their fKey, found by binary search: what the category maps of the
/// engine are made of. A new key costs one insertion.
template <class Entry>
class FSSortedEntries {
 public:
    using Key = decltype(Entry::fKey);

    std::int32_t Size() const { return static_cast<std::int32_t>(fvEntries.size()); }
    /// REQUIRES: 0 <= position < Size(). Positions follow the keys upwards.
    const Entry& GetAt(std::int32_t position) const {
        return fvEntries[static_cast<std::size_t>(position)];
    }
    /// Ascending by key.
    std::span<const Entry> Entries() const { return fvEntries; }

 protected:
    /// The entry of a key, or null.
    const Entry* FindEntry(const Key& key) const {
        const std::size_t position = FirstNotBelow(key);
        return HoldsAt(position, key) ? &fvEntries[position] : nullptr;
    }

    /// The entry of the key and true, or false and the same entry, newly put in its place.
    std::pair<Entry&, bool> FindOrInsert(Entry fresh) {
        const std::size_t position = FirstNotBelow(fresh.fKey);
        const bool existed = HoldsAt(position, fresh.fKey);
        if (!existed) {
            fvEntries.insert(fvEntries.begin() + static_cast<std::ptrdiff_t>(position),
                             std::move(fresh));
        }
        return {fvEntries[position], existed};
    }

    /// Takes over other entries, ascending by key, in one walk through both: combine(mine, theirs)
    /// where the key is in both, a copy where it is new.
    template <class Combine>
    void MergeEntries(std::span<const Entry> others, Combine combine) {
        std::size_t fresh = 0;
        std::size_t at = 0;
        for (const Entry& theirs : others) {
            while (at < fvEntries.size() && fvEntries[at].fKey < theirs.fKey) ++at;
            if (at < fvEntries.size() && fvEntries[at].fKey == theirs.fKey) {
                combine(fvEntries[at], theirs);
            } else {
                ++fresh;
            }
        }
        if (fresh == 0) return;
        std::vector<Entry> merged;
        merged.reserve(fvEntries.size() + fresh);
        auto mine = fvEntries.begin();
        for (const Entry& theirs : others) {
            while (mine != fvEntries.end() && mine->fKey < theirs.fKey) {
                merged.push_back(std::move(*mine++));
            }
            const bool exists = mine != fvEntries.end() && mine->fKey == theirs.fKey;
            if (!exists) merged.push_back(theirs);
        }
        std::move(mine, fvEntries.end(), std::back_inserter(merged));
        fvEntries = std::move(merged);
    }

    std::vector<Entry> fvEntries;  // ascending and unique by fKey

 private:
    std::size_t FirstNotBelow(const Key& key) const {
        std::size_t low = 0;
        std::size_t high = fvEntries.size();
        while (low < high) {
            const std::size_t middle = (low + high) / 2;
            if (fvEntries[middle].fKey < key) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        return low;
    }

    bool HoldsAt(std::size_t position, const Key& key) const {
        return position < fvEntries.size() && fvEntries[position].fKey == key;
    }
};

#endif  // PREDSEL_FEATURESELECT_FSSORTEDENTRIES_H
