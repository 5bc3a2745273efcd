#ifndef PREDSEL_FEATURESELECT_FSCONTACCUM_H
#define PREDSEL_FEATURESELECT_FSCONTACCUM_H

#include <span>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSContinuousAccum.h"
#include "featureselect/FSMoments.h"

/// Mean and spread of a continuous predictor when there is no target: screening only.
class FSContAccum : public FSContinuousAccum {
 public:
    void AddPair(double predictor, double target, double weight, bool track) override;
    void AddValue(double value, double weight, bool track) override;
    /// Sets the variance when the valid weight is above 1, and else leaves it.
    void FinishData() override;
    /// No criterion: the outputs stay as they are.
    void ComputeCriterion(std::int32_t criterion, double& value, double& tieBreak1,
                          double& tieBreak2, double& extra1, double& extra2) const override;
    FSTestResult Test(std::int32_t) const override { return {}; }
    bool GetCriterionForDisplay(std::int32_t criterion, double& first, double& second,
                                double& third, double& fourth) const override;
    void Display(std::ostream& out) const override;
    void AppendExact(std::string& bytes) const override;

    /// Adds the records of a block for each of the parts, whose accumulators are all of this class.
    static void AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases);

    /// Adds the cases of a later partition; partition order counts for the first value.
    void MergeFrom(const FSContAccum& other);

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;

    static constexpr Persistence::SavedClass kSaved{"COPRE", "FSContAccum"};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        double mean = self.fMoments.Mean();
        double secondMoment = self.fMoments.SecondMoment().Value();
        archive(kSaved, self.fProcessed, self.fMissing, self.fFirstValue, self.fConstant, mean,
                secondMoment, self.fVariance);
        if constexpr (std::remove_cvref_t<Archive>::kRestores) {
            self.TakeRounded(mean, secondMoment);
        }
    }

 protected:
    double ScreenedMean() const override { return fMoments.Mean(); }
    double ScreenedStdDev() const override { return fSpread.SquareRoot().Value(); }

 private:
    friend class FSContinuousAccum;
    FSWeightSum AddColumn(FSOrderedColumn& column, const FSBlockCases& cases, FSWeightSum& missing);
    void TakeRounded(double mean, double secondMoment);

    FSMoments fMoments;
    double fVariance = 0;  // set by FinishData
    FSScaled fSpread;      // the same, where a double would be too small or too large
};

#endif  // PREDSEL_FEATURESELECT_FSCONTACCUM_H
