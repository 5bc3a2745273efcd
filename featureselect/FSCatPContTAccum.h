#ifndef PREDSEL_FEATURESELECT_FSCATPCONTTACCUM_H
#define PREDSEL_FEATURESELECT_FSCATPCONTTACCUM_H

#include <span>

#include "featureselect/FSBlockCases.h"
#include "featureselect/FSCategoricalAccum.h"
#include "featureselect/FSGroupMoments.h"

/// A continuous target over the categories of a categorical predictor, for the F test.
class FSCatPContTAccum : public FSCategoricalAccum {
 public:
    void AddPair(double predictor, double target, double weight, bool track) override;
    void AddValue(double value, double weight, bool track) override;
    void FinishData() override { fGroups.FinishVariances(); }
    /// Criteria 4 and 5 alike, see FSFTest: p-value, F, valid weight, then the degrees of freedom.
    FSTestResult Test(std::int32_t criterion) const override;
    bool GetCriterionForDisplay(std::int32_t criterion, double& first, double& second,
                                double& third, double& fourth) const override;
    void Display(std::ostream& out) const override;
    void AppendExact(std::string& bytes) const override;

    /// Adds the records of a block for each of the parts, whose accumulators are all of this class.
    static void AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases);

    /// Adds the cases of a later partition; partition order counts for the first category.
    void MergeFrom(const FSCatPContTAccum& other);

    std::int64_t SaveBinary(std::ostream& stream) const override;
    std::int64_t RestoreBinary(std::istream& stream) override;
    std::int64_t SaveXML(std::ostream& stream, std::int32_t level) const override;
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document) override;

    static constexpr Persistence::SavedClass kSaved{"CAPCO", "FSCatPContTAccum"};
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        double mean = self.GrandMean();
        FSMapIStat groups = self.fGroups.Rounded();
        archive(kSaved, self.fProcessed, self.fMissing, self.fFirstCategory, self.fConstant, mean,
                self.fPredCounts, groups);
        if constexpr (std::remove_cvref_t<Archive>::kRestores) {
            self.fSum = self.ValidWeight().Exact() * FSExactSum(mean);
            self.fGroups = FSGroupMoments::Of(groups);
        }
    }

 protected:
    // Intended: with a continuous target, categories of one case never drop a predictor
    // (TenDistinctValuesInTenRecordsFireReason5Only).
    bool HasOneCaseRule() const override { return false; }

 private:
    friend class FSCategoricalAccum;
    double GrandMean() const;
    template <class Entry>
    void AddEntries(std::span<const Entry> entries, std::uint32_t entryEnd,
                    const FSBlockCases& cases);

    FSExactSum fSum;         // of weight * target over valid records
    FSGroupMoments fGroups;  // of the target, per predictor category
};

#endif  // PREDSEL_FEATURESELECT_FSCATPCONTTACCUM_H
