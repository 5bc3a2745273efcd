#ifndef PREDSEL_FEATURESELECT_FSMAPPICNT_H
#define PREDSEL_FEATURESELECT_FSMAPPICNT_H

#include <compare>
#include <cstdint>
#include <ostream>
#include <span>
#include <string>

#include "featureselect/FSPersistence.h"
#include "featureselect/FSSortedEntries.h"
#include "featureselect/FSWeightSum.h"

/// A cell of a crosstab. Ordered by the predictor's category, then the target's.
struct FSCategoryPair {
    std::int32_t fPredictor = 0;
    std::int32_t fTarget = 0;

    auto operator<=>(const FSCategoryPair&) const = default;
};

struct FSMapPiCntEntry {
    FSCategoryPair fKey;
    FSWeightSum fWeight;

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive.Items(self.fKey.fPredictor, self.fKey.fTarget, self.fWeight);
    }
};

/// Weight per pair of a predictor category and a target category, pairs ascending: the cells of a
/// crosstab that hold anything, row by row.
class FSMapPiCnt : public FSSortedEntries<FSMapPiCntEntry> {
 public:
    /// True when the pair existed.
    bool Add(FSCategoryPair key, double weight);
    /// False, and the output untouched, for an unknown pair.
    bool Find(FSCategoryPair key, double& weight) const;
    /// Adds the cases of a later partition.
    void MergeFrom(const FSMapPiCnt& other) { Merge(other.Entries()); }
    /// Adds weights, ascending by key.
    void Merge(std::span<const FSMapPiCntEntry> others);
    void AppendExact(std::string& bytes) const;
    void Display(std::ostream& out) const;

    std::int64_t SaveBinary(std::ostream& stream) const;
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);

    static constexpr Persistence::SavedClass kSaved{
        .fTag = "FSMPI", .fName = "FSMapPiCnt", .fMinLevel = 3};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fvEntries);
    }
};

#endif  // PREDSEL_FEATURESELECT_FSMAPPICNT_H
