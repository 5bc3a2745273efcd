#ifndef PREDSEL_FEATURESELECT_FSMAPICNT_H
#define PREDSEL_FEATURESELECT_FSMAPICNT_H

#include <cstdint>
#include <ostream>

#include "featureselect/FSSortedEntries.h"

struct FSMapICntEntry {
    std::int32_t fKey = 0;
    double fWeight = 0;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive.Items(self.fKey, self.fWeight);
    }
};

/// Weight per category, categories ascending.
class FSMapICnt : public FSSortedEntries<FSMapICntEntry> {
 public:
    /// True when the category existed.
    bool Add(std::int32_t key, double weight);
    /// False, and the output untouched, for an unknown category.
    bool Find(std::int32_t key, double& weight) const;
    /// Adds the cases of a later partition.
    void MergeFrom(const FSMapICnt& other);
    void Display(std::ostream& out) const;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive("FSMII", "FSMapICnt", self.fvEntries);
    }
};

#endif  // PREDSEL_FEATURESELECT_FSMAPICNT_H
