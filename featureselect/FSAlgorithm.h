#ifndef PREDSEL_FEATURESELECT_FSALGORITHM_H
#define PREDSEL_FEATURESELECT_FSALGORITHM_H

#include <memory>

#include "featureselect/FSCancelState.h"
#include "featureselect/FSPersistence.h"
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
    /// Restore a saved engine, with settings of its own. When that fails, lines on the error stream
    /// and the status say so (80004 and 80005), and the engine is fit for its destruction only.
    explicit FSAlgorithm(std::istream& stream);
    explicit FSAlgorithm(MCCommonXML::XMLReader& document);
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
    FSStatus WriteOutputOne(std::ostream& stream, std::int32_t criterion, std::int32_t n) override;
    bool GetPredictorCriterion(std::int32_t criterion, std::int32_t predictor, double& first,
                               double& second, double& third, double& fourth) const override;
    FSStatus WriteOutputAll(std::ostream& stream) override;
    FSStatus SaveBinary(std::ostream& stream) override;
    FSStatus SaveXML(std::ostream& stream) override;
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

    FSStatus MergeFrom(const IFSAlgorithm& other) override;
    bool GetPredictorLogP(std::int32_t criterion, std::int32_t predictor,
                          double& logP) const override;

    static constexpr Persistence::SavedClass kSaved{
        .fTag = "FSAlgorithm 1.00",
        .fName = "FSAlgorithm 1.00",
        .fBinaryFailure = "Error reading FSAlgorithm!\n",
        .fXMLFailure = "Error reading FSAlgorithm!\n"};
    /// Needs FSPredictorSetFields.h where it meets an archive.
    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive) {
        archive(kSaved, Contents<Self>{self});
    }

 private:
    /// What is saved between the start and the end of the object.
    template <class Self>
    struct Contents {
        Self& fAlgorithm;

        template <class Part, class Archive>
        static void Fields(Part&& part, Archive& archive) {
            archive.Items(*part.fAlgorithm.fpSettings, part.fAlgorithm.fPredictorSet,
                          part.fAlgorithm.fDataAccumulated, part.fAlgorithm.fRanked);
        }
    };

    explicit FSAlgorithm(std::unique_ptr<FSSettings> ownSettings);
    template <class Archive>
    bool Restore(Archive& archive);
    template <class Save>
    FSStatus WriteState(Save save);
    template <class Work>
    FSStatus Step(Work work);
    bool MayWork() { return !fStatus.IsError() && !fCancelState.IsCancelled(); }

    std::unique_ptr<FSSettings> fpOwnSettings;  // only of a restored engine
    FSSettings* fpSettings;                     // fpOwnSettings, or borrowed, see the constructor
    FSCancelState fCancelState;
    FSStatus fStatus;
    FSPredictorSet fPredictorSet;
    bool fDataAccumulated = false;
    bool fRanked = false;
};

#endif  // PREDSEL_FEATURESELECT_FSALGORITHM_H
