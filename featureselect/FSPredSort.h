#ifndef PREDSEL_FEATURESELECT_FSPREDSORT_H
#define PREDSEL_FEATURESELECT_FSPREDSORT_H

#include <cstdint>
#include <iosfwd>

#include "featureselect/FSPersistence.h"
#include "host/Records.h"

/// What one criterion says of one predictor, as the sort sees it.
struct FSPredSort {
    double fCriterion = MCMV::gMissingValue;  // p-value (criteria 0, 1, 4, 5) or measure (2, 3)
    double fTieBreak1 = MCMV::gMissingValue;
    double fTieBreak2 = MCMV::gMissingValue;
    std::int32_t fPredictor = -1;  // index of the predictor in the settings

    /// Whether this record stands ahead of other under the criterion (0 to 5). A missing value is
    /// ahead of nothing and behind every value; two missing ones are equal. The smaller p-value or
    /// the larger measure wins, then the larger first tie-breaker (statistic, number of
    /// categories); then the smaller second one for 0 and 1 (degrees of freedom, or -N), the larger
    /// for 4 and 5 (N), none for 2 and 3.
    bool GoesBefore(const FSPredSort& other, std::int32_t criterion) const;

    void Display(std::ostream& out) const;

    std::int64_t SaveBinary(std::ostream& stream) const;
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);

    static constexpr Persistence::SavedClass kSaved{"FSPRS", "FSPredSort"};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fCriterion, self.fTieBreak1, self.fTieBreak2,
                self.fPredictor);  // 33 bytes
    }
};

#endif  // PREDSEL_FEATURESELECT_FSPREDSORT_H
