#ifndef PREDSEL_FEATURESELECT_FSPREDSORT_H
#define PREDSEL_FEATURESELECT_FSPREDSORT_H

#include <cstdint>
#include <iosfwd>

#include "featureselect/FSPersistence.h"
#include "featureselect/FSTestResult.h"
#include "host/Records.h"

/// What one criterion says of one predictor, as the sort sees it; FSPredOrder tells the order.
struct FSPredSort {
    double fCriterion = MCMV::gMissingValue;  // p-value (criteria 0, 1, 4, 5) or measure (2, 3)
    double fTieBreak1 = MCMV::gMissingValue;
    double fTieBreak2 = MCMV::gMissingValue;
    std::int32_t fPredictor = -1;  // index of the predictor in the settings

    // The test behind a p-value, see FSTestResult. Not saved: a restored engine keeps its order.
    FSTestResult::Test fTest = FSTestResult::kNone;
    double fLogP = MCMV::gMissingValue;
    double fStatistic = MCMV::gMissingValue;
    double fDf1 = MCMV::gMissingValue;
    double fDf2 = MCMV::gMissingValue;

    static FSPredSort Of(std::int32_t predictor, const FSTestResult& result);

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
