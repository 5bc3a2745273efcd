#ifndef PREDSEL_FEATURESELECT_FSCONTPCONTTACCUM_H
#define PREDSEL_FEATURESELECT_FSCONTPCONTTACCUM_H

#include <span>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSContinuousAccum.h"

/// Means, spreads and cross-product of a continuous predictor and a continuous target, for the t
/// test of their correlation.
class FSContPContTAccum : public FSContinuousAccum {
 public:
    void AddPair(double predictor, double target, double weight, bool track) override;
    void AddValue(double value, double weight, bool track) override;
    /// Sets variances and correlation; the latter is missing unless both variables vary.
    void FinishData() override;
    /// Criteria 4 and 5 alike, the t test of a Pearson correlation r (Fisher 1915) with N the valid
    /// weight: two-sided p-value, r^2, N, r, t. A perfect correlation has the p-value 0.0 and no t;
    /// without a correlation all is missing.
    FSTestResult Test(std::int32_t criterion) const override;
    bool GetCriterionForDisplay(std::int32_t criterion, double& first, double& second,
                                double& third, double& fourth) const override;
    void Display(std::ostream& out) const override;

    /// Adds the records of a block for each of the parts, whose accumulators are all of this class:
    /// the bits are those of one record after the other.
    static void AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases);

    /// Adds the cases of a later partition (Chan, Golub & LeVeque 1983); partition order counts for
    /// the first value.
    void MergeFrom(const FSContPContTAccum& other);

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;

    /// What FinishData derives is not saved.
    static constexpr Persistence::SavedClass kSaved{"COPCO", "FSContPContTAccum"};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, self.fProcessed, self.fMissing, self.fFirstValue, self.fConstant,
                self.fPredMean, self.fPredSecondMoment, self.fTargetMean, self.fTargetSecondMoment,
                self.fCrossProduct);
    }

 protected:
    double ScreenedMean() const override { return fPredMean; }
    double ScreenedStdDev() const override;

 private:
    friend class FSContinuousAccum;
    static void AddLanes(std::span<FSContPContTAccum* const> accums,
                         const FSMomentLanes::Columns& columns, const FSBlockCases& cases);

    double fPredMean = 0;
    double fPredSecondMoment = 0;  // sum of weight * (predictor - mean)^2
    double fTargetMean = 0;
    double fTargetSecondMoment = 0;
    double fCrossProduct = 0;  // sum of weight * both deviations
    // Set by FinishData.
    double fPredVariance = MCMV::gMissingValue;
    double fTargetVariance = MCMV::gMissingValue;
    double fCorrelation = MCMV::gMissingValue;
};

#endif  // PREDSEL_FEATURESELECT_FSCONTPCONTTACCUM_H
