#ifndef PREDSEL_FEATURESELECT_FSALGORITHM_H
#define PREDSEL_FEATURESELECT_FSALGORITHM_H

#include "featureselect/FSCancelState.h"
#include "featureselect/FSPredictorSet.h"
#include "featureselect/FSSettings.h"
#include "featureselect/IFSAlgorithm.h"

/// The engine as FSFactory makes it: decides what may be called when, keeps the status of the last
/// step and leaves the work to its FSPredictorSet.
class FSAlgorithm : public IFSAlgorithm {
 public:
    /// settings are borrowed from the caller and outlive the engine. Their predictors and criteria
    /// are fixed from now on.
    explicit FSAlgorithm(FSSettings& settings);
    FSAlgorithm(const FSAlgorithm&) = delete;
    FSAlgorithm& operator=(const FSAlgorithm&) = delete;

    std::string GetVersion() const override;
    FSStatus GetStatus() const override { return fStatus; }
    FSStatus AccumulateData(MCCommon::RecordIterator& records, std::int32_t maxRecords) override;
    void GetRecordCounts(double& weightedValid, double& weightedExcluded,
                         std::int32_t& unweightedValid,
                         std::int32_t& unweightedExcluded) const override;
    std::int32_t GetNumberOfTargetCategories() const override;
    CategoryCount GetTargetCategoryByValue(std::int32_t category) const override;
    bool GetTargetCategoryByIndex(std::int32_t position, std::int32_t& category,
                                  CategoryCount& count) const override;
    FSStatus DeleteMissingOrConstant() override;
    FSStatus DeleteByCriteria() override;
    std::int32_t GetNumberOfDeleted() const override;
    std::vector<std::int32_t> GetDeletedIndices() const override;
    std::vector<std::int32_t> GetDeletionReasons() const override;
    FSStatus RankPredictors(std::int32_t n) override;
    FSStatus RunAll(MCCommon::RecordIterator& records, std::int32_t maxRecords, bool screen,
                    std::int32_t n) override;
    FSStatus ScreenOnly(MCCommon::RecordIterator& records, std::vector<std::int32_t>& indices,
                        std::vector<std::vector<std::int32_t>>& reasons,
                        std::int32_t maxRecords) override;
    bool GetPredictorCriterion(std::int32_t criterion, std::int32_t predictor, double& first,
                               double& second, double& third, double& fourth) const override;
    void Cancel() override { fCancelState.Cancel(); }
    void SetProgressListener(ProgressListener* listener) override;
    void SetCancelCheck(CancelCheck* check) override;
    FSSettings& GetSettings() override { return *fpSettings; }
    const FSSettings& GetSettings() const override { return *fpSettings; }
    std::vector<std::int32_t> GetRanks(std::int32_t criterion) const override;
    std::vector<double> GetCriterionValues(std::int32_t criterion) const override;
    FSStatus GetBestPredictors(std::int32_t criterion, std::vector<std::int32_t>& indices,
                               std::vector<double>& values, std::int32_t n) override;
    bool IsDataAccumulated() const override { return fDataAccumulated; }
    bool IsRanked() const override { return fRanked; }
    void Display(std::ostream& out) const override;

    /// Needs FSPredictorSetFields.h where it meets an archive.
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive("FSAlgorithm 1.00", "FSAlgorithm 1.00", *self.fpSettings, self.fPredictorSet,
                self.fDataAccumulated, self.fRanked);
    }

 private:
    template <class Work>
    FSStatus Step(Work work);
    bool MayWork() { return !fStatus.IsError() && !fCancelState.IsCancelled(); }

    FSSettings* fpSettings;  // borrowed, see the constructor
    FSCancelState fCancelState;
    FSStatus fStatus;
    FSPredictorSet fPredictorSet;
    bool fDataAccumulated = false;
    bool fRanked = false;
};

#endif  // PREDSEL_FEATURESELECT_FSALGORITHM_H
