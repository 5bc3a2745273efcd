#ifndef PREDSEL_FEATURESELECT_FSMAPICNT_H
#define PREDSEL_FEATURESELECT_FSMAPICNT_H

#include <cstdint>
#include <ostream>
#include <span>
#include <string>

#include "featureselect/FSPersistence.h"
#include "featureselect/FSSortedEntries.h"
#include "featureselect/FSWeightSum.h"

struct FSMapICntEntry {
    std::int32_t fKey = 0;
    FSWeightSum fWeight;

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
    void MergeFrom(const FSMapICnt& other) { Merge(other.Entries()); }
    /// Adds weights, ascending by key.
    void Merge(std::span<const FSMapICntEntry> others);
    void AppendExact(std::string& bytes) const;
    void Display(std::ostream& out) const;

    std::int64_t SaveBinary(std::ostream& stream) const;
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);

    static constexpr Persistence::SavedClass kSaved{
        .fTag = "FSMII", .fName = "FSMapICnt", .fMinLevel = 3};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fvEntries);
    }
};

#endif  // PREDSEL_FEATURESELECT_FSMAPICNT_H
