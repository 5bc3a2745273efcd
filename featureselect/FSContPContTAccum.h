#ifndef PREDSEL_FEATURESELECT_FSCONTPCONTTACCUM_H
#define PREDSEL_FEATURESELECT_FSCONTPCONTTACCUM_H

#include <span>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSContinuousAccum.h"
#include "featureselect/FSMoments.h"

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
    void AppendExact(std::string& bytes) const override;

    /// Adds the records of a block for each of the parts, whose accumulators are all of this class.
    static void AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases);

    /// Adds the cases of a later partition; partition order counts for the first value.
    void MergeFrom(const FSContPContTAccum& other);

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;

    /// What FinishData derives is not saved.
    static constexpr Persistence::SavedClass kSaved{"COPCO", "FSContPContTAccum"};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        const FSMoments x = self.fPairs.X();
        const FSMoments y = self.fPairs.Y();
        double predMean = x.Mean();
        double predSecondMoment = x.SecondMoment().Value();
        double targetMean = y.Mean();
        double targetSecondMoment = y.SecondMoment().Value();
        double crossProduct = self.fPairs.Cross().Value();
        archive(kSaved, self.fProcessed, self.fMissing, self.fFirstValue, self.fConstant, predMean,
                predSecondMoment, targetMean, targetSecondMoment, crossProduct);
        if constexpr (std::remove_cvref_t<Archive>::kRestores) {
            self.fPairs = FSPairMoments::Of(self.ValidWeight(), predMean, predSecondMoment,
                                            targetMean, targetSecondMoment, crossProduct);
            self.fLowest = self.fHighest = self.fFirstValue;
        }
    }

 protected:
    double ScreenedMean() const override { return fPairs.X().Mean(); }
    double ScreenedStdDev() const override { return fPredSpread.SquareRoot().Value(); }

 private:
    friend class FSContinuousAccum;
    FSWeightSum AddColumn(FSOrderedColumn& column, const FSBlockCases& cases, FSWeightSum& missing);

    FSPairMoments fPairs;
    // Set by FinishData.
    double fPredVariance = MCMV::gMissingValue;
    double fTargetVariance = MCMV::gMissingValue;
    double fCorrelation = MCMV::gMissingValue;
    FSScaled fPredSpread;  // the predictor's variance, where a double would be too small or large
    FSScaled fSquared;     // squared correlation, and 1 less that
    FSScaled fUnexplained;
};

#endif  // PREDSEL_FEATURESELECT_FSCONTPCONTTACCUM_H
