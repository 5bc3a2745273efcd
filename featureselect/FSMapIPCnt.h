#ifndef PREDSEL_FEATURESELECT_FSMAPIPCNT_H
#define PREDSEL_FEATURESELECT_FSMAPIPCNT_H

#include <cstdint>
#include <ostream>
#include <span>
#include <string>

#include "featureselect/FSPersistence.h"
#include "featureselect/FSSortedEntries.h"
#include "featureselect/FSWeightSum.h"

struct FSMapIPCntEntry {
    std::int32_t fKey = 0;
    std::int32_t fCount = 0;  // unweighted
    FSWeightSum fWeight;

    // The published layout aligns the weight to 8 bytes within count and weight.
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive.Items(self.fKey, self.fCount, Persistence::Padding{4}, self.fWeight);
    }
};

/// Unweighted count and weight per category, categories ascending.
class FSMapIPCnt : public FSSortedEntries<FSMapIPCntEntry> {
 public:
    /// Adds one case. True when the category existed.
    bool Add(std::int32_t key, double weight);
    /// False, and the outputs untouched, for an unknown category.
    bool Find(std::int32_t key, std::int32_t& count, double& weight) const;
    /// Adds the cases of a later partition.
    void MergeFrom(const FSMapIPCnt& other) { Merge(other.Entries()); }
    /// Adds weights, ascending by key.
    void Merge(std::span<const FSMapIPCntEntry> others);
    void AppendExact(std::string& bytes) const;
    void Display(std::ostream& out) const;

    std::int64_t SaveBinary(std::ostream& stream) const;
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);

    // Intended: the tag is that of FSMapICnt, only the position in a saved state tells them apart.
    static constexpr Persistence::SavedClass kSaved{
        .fTag = "FSMII", .fName = "FSMapIPCnt", .fMinLevel = 3};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fvEntries);
    }
};

#endif  // PREDSEL_FEATURESELECT_FSMAPIPCNT_H
