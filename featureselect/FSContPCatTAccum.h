#ifndef PREDSEL_FEATURESELECT_FSCONTPCATTACCUM_H
#define PREDSEL_FEATURESELECT_FSCONTPCATTACCUM_H

#include <span>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSContinuousAccum.h"
#include "featureselect/FSGroupMoments.h"

/// A continuous predictor over the categories of a categorical target, for the F test.
class FSContPCatTAccum : public FSContinuousAccum {
 public:
    void AddPair(double predictor, double target, double weight, bool track) override;
    void AddValue(double value, double weight, bool track) override;
    void FinishData() override { fGroups.FinishVariances(); }
    /// Criteria 0, 1 and 4 alike, see FSFTest: p-value, F, valid weight, then the degrees of
    /// freedom. The valid weight is negative for 0 and 1, where smaller goes first among equals.
    FSTestResult Test(std::int32_t criterion) const override;
    bool GetCriterionForDisplay(std::int32_t criterion, double& first, double& second,
                                double& third, double& fourth) const override;
    void Display(std::ostream& out) const override;
    void AppendExact(std::string& bytes) const override;

    /// Adds the records of a block for each of the parts, whose accumulators are all of this class.
    static void AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases);

    /// Adds the cases of a later partition; partition order counts for the first value.
    void MergeFrom(const FSContPCatTAccum& other);

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;

    static constexpr Persistence::SavedClass kSaved{"COPRA", "FSContPCatTAccum"};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        double mean = self.GrandMean();
        FSMapIStat groups = self.fGroups.Rounded();
        archive(kSaved, self.fProcessed, self.fMissing, self.fFirstValue, self.fConstant, mean,
                groups);
        if constexpr (std::remove_cvref_t<Archive>::kRestores) self.TakeRounded(mean, groups);
    }

 protected:
    double ScreenedMean() const override { return GrandMean(); }
    /// From the categories' second moments about the grand mean.
    double ScreenedStdDev() const override;

 private:
    friend class FSContinuousAccum;
    double GrandMean() const;
    FSWeightSum AddColumn(FSOrderedColumn& column, const FSBlockCases& cases, FSWeightSum& missing);
    void TakeRounded(double mean, const FSMapIStat& groups);

    FSExactSum fSum;         // of weight * value over valid records
    FSGroupMoments fGroups;  // of the predictor, per target category
};

#endif  // PREDSEL_FEATURESELECT_FSCONTPCATTACCUM_H
