#ifndef PREDSEL_NAIVEBAYES_NBALGORITHM_H
#define PREDSEL_NAIVEBAYES_NBALGORITHM_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/Blocks.h"
#include "host/Records.h"
#include "host/Xml.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NBInterruptState.h"
#include "naivebayes/NBOutput.h"
#include "naivebayes/NBOutputStatistics.h"
#include "naivebayes/NBStatus.h"
#include "naivebayes/NBayesInput.h"
#include "naivebayes/NBayesOutput.h"
#include "naivebayes/NaiveBayesSettings.h"
#include "naivebayes/data/NBDataPreparator.h"
#include "naivebayes/data/NBVarList.h"

/// The engine. Owns the variables, the tables and the preparation of records.
///
/// Of a built model the tables stand in the order of the list's variables of role 1, one for each;
/// predictors that carried no information have got role 5, candidates that were not chosen keep
/// role 2. A restored state that is not so is refused, hence all later code may index by it.
class NBAlgorithm : public INBAlgorithm {
 public:
    /// Copies both. The list has passed NBVarList::ValidateVariables.
    NBAlgorithm(const NaiveBayesSettings& settings, const NBVarList& varList);
    /// Empty, to be restored.
    NBAlgorithm();
    ~NBAlgorithm() override;
    // The preparator borrows the list and the interrupt state.
    NBAlgorithm(const NBAlgorithm&) = delete;
    NBAlgorithm& operator=(const NBAlgorithm&) = delete;

    std::string GetVersionString() const override;
    NBStatus BuildModel(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords) override;
    bool IsModelBuilt() const override { return fbModelBuilt; }
    NBStatus UpdateModel(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords) override;
    NBStatus ClassifyRecords(MCCommon::RecordIterator& records, NBOutputStatistics& tableOut,
                             std::int32_t numRecords) override;
    NBStatus ScoreInputRecord(const MCCommon::Record& record, NBOutput& output) override;
    NBStatus ScoreRecord(const MCCommon::Record& record, NBOutput& output) override;
    NBStatus TallyRecord(const MCCommon::Record& record, NBOutput& output,
                         bool isTraining) override;
    NBStatus ScoreBlock(const MCCommon::RecordBlock& block, MCCommon::BlockExecutor* executor,
                        NBBlockScores& scores) override;
    NBStatus TallyBlock(const MCCommon::RecordBlock& block, MCCommon::BlockExecutor* executor,
                        NBBlockScores& scores, std::span<const std::uint8_t> isTraining) override;
    const NBOutputStatistics* GetTrainStatistics() const override {
        return fpTrainStatistics.get();
    }
    const NBOutputStatistics* GetTestStatistics() const override { return fpTestStatistics.get(); }
    NBStatus WritePMML(std::ostream& stream, const NBWriteOptions* options) override;
    void SetInterruptSource(MCStopProcessor* stopProcessor) override {
        fInterrupt.fpStopProcessor = stopProcessor;
    }
    NBStatus SaveBinary(std::ostream& stream) override;
    NBStatus SaveXML(std::ostream& stream) override;
    void Interrupt() override { fInterrupt.fStopped = true; }
    NBStatus GetStatus() override;
    NBStatus SelectSubset(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords,
                          std::vector<std::int32_t>& selectedOut, std::vector<double>& criteriaOut,
                          std::vector<NBSubset>& bestSubsetsOut, std::int32_t maxSize, bool exact,
                          MCCommon::MultiPassRecordIter* testRecords, std::int32_t numTest,
                          std::int32_t numBest, std::ostream* xmlStream,
                          const NBWriteOptions* xmlOptions) override;
    NBStatus MergeModel(const INBAlgorithm& other, bool checkVariables) override;
    void GetRecordCounts(double& weightOut, double& excludedWeightOut, std::int32_t& recordsOut,
                         std::int32_t& excludedOut) const override;
    std::int32_t GetNumTargetCategories() const override { return fOutput.GetNumCategories(); }
    CategoryCounts GetTargetCategoryCounts(std::int32_t category) const override;
    std::int32_t GetNumInputVars() const override { return fNumInputs; }
    void SetProgressListener(ProgressListener* listener) override {
        fSettings.fpListener = listener;
    }
    NaiveBayesSettings& GetSettings() override { return fSettings; }
    const NaiveBayesSettings& GetSettings() const override { return fSettings; }
    const NBVarList& GetVarList() const override { return fVarList; }
    void Display(std::ostream& out) const override;

    /// Fill an empty engine; then the model is built. They throw a pointer to an IOException when
    /// the state cannot be read or does not describe a model; the engine may then only be deleted.
    std::int64_t RestoreBinary(std::istream& stream);
    std::int64_t RestoreXML(MCCommonXML::XMLReader& document);

    template <class Self, class Archive>
    static void Fields(Self&& self, Archive& archive);

 private:
    // Training.

    /// Error 1 for good, and no model.
    NBStatus ResetModel();
    /// Makes the preparator unless there is one that prepares just the predictors of these roles;
    /// with a new one all tables are to be made anew.
    void EnsurePreparator(bool usePossibleInputs, std::int32_t numRecords);
    /// Counts from 0 again, one table for each input and, if asked, each candidate.
    void ResetTables(bool includeCandidates);
    /// The core of all training: counts prepared records and forms the probabilities. Predictors
    /// without information leave the model, warning 70015 if they were forced.
    NBStatus AccumulateRecords(MCCommon::RecordIterator& records, std::int32_t numRecords,
                               bool reportProgress);
    /// The records themselves: how many were used, and their weight.
    std::int32_t CountRecords(MCCommon::RecordIterator& records, std::int32_t numRecords,
                              bool reportProgress, double& weightOut);
    /// The same from prepared blocks, the tables side by side.
    std::int32_t CountBlocks(MCCommon::RecordIterator& records, MCCommon::RecordBlockSource& blocks,
                             std::int32_t numRecords, double& weightOut);
    void CountRecord(const MCCommon::Record& record, std::int32_t target, double weight);
    NBStatus DropUninformative();
    /// Takes table i out; those behind it move up in the prepared records.
    void RemoveTable(std::size_t i);
    /// Counts records as they are prepared, reporting progress; the excluded are added. prepare()
    /// is called when there is a usable one, else error 70011 results.
    template <class Prepare>
    NBStatus TrainOn(MCCommon::RecordIterator& records, std::int32_t numRecords, Prepare prepare);
    template <class Adapter>
    NBStatus TrainOnAdapter(Adapter& adapter, std::int32_t numRecords);
    /// Ends a training operation: what was learned of the status, the model and an interrupt.
    NBStatus FinishTraining(const NBStatus& status);
    /// Runs a training operation. Error 3, for good, when memory does not suffice.
    template <class Train>
    NBStatus Training(Train train);
    bool IsMergeable() const;

    // The steps of SelectSubset.
    NBStatus CheckSelection(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords,
                            std::int32_t maxSize, bool hasTestRecords, std::int32_t numTest) const;
    /// Bounds the size asked for; warning 70014 when it is above the number of predictors.
    std::int32_t BoundSize(std::int32_t maxSize, NBStatus& status) const;
    std::int32_t BoundNumBest(std::int32_t numBest) const;
    /// Takes over the roles that the search has set.
    void KeepSelected();

    // Scoring.

    /// Error of the engine that keeps it from scoring, or success.
    NBStatus CheckScoring(std::int32_t expectedLength, std::int32_t length) const;
    NBStatus FinishScore(const NBStatus& prepared, NBOutput& output);
    /// fvPosteriors from the codes of fInputRecord.
    void ComputePosterior();
    /// The winner of fvPosteriors.
    std::int32_t FindWinner();
    /// Counts a scored record, given by its values of the weight and of the target, if these are
    /// valid. False when memory does not suffice.
    bool Tally(double weightValue, double observed, std::int32_t winner, bool isTraining);
    NBStatus ScoreEachRecord(const MCCommon::RecordBlock& block, NBBlockScores& scores);
    void SizeScratch();
    /// Whether a prepared code names a category: neither missing nor unknown, which is -1.
    static bool IsKnown(double code) { return code > -1.0; }
    /// The category that a known code names. Codes are whole numbers; one that is not must not
    /// leave its table.
    static std::int32_t Category(double code, std::int32_t numCategories) {
        const double moved = code + 0.5;
        return std::min(static_cast<std::int32_t>(moved), numCategories - 1);
    }

    // State.

    /// Whether what was restored is a model: its parts agree, so that later code may index by them.
    bool IsConsistent() const;
    bool IsTargetConsistent() const;
    bool IsTableConsistent(const NBayesInput& table, std::int32_t varIndex,
                           std::int32_t recordIndex) const;
    /// After a restore: borrowed variables, preparator and encoders for scoring.
    void Wire();
    /// What keeps the model from being saved, or success.
    NBStatus CheckSaving(const std::ostream& stream);

    NaiveBayesSettings fSettings;
    NBVarList fVarList;
    NBInterruptState fInterrupt;
    std::unique_ptr<NBDataPreparator> fpPreparator;  // borrows fVarList, its encoders, fInterrupt
    bool fbModelBuilt = false;
    NBStatus fStatus;             // the last error or warning that sticks
    std::int32_t fNumInputs = 0;  // predictors of the model
    NBayesOutput fOutput;
    std::vector<NBayesInput> fvInputs;
    std::int32_t fNumRecords = 0;  // used
    double fWeight = 0.0;          // of the used
    std::int32_t fNumExcluded = 0;
    double fExcludedWeight = 0.0;
    std::unique_ptr<NBOutputStatistics> fpTrainStatistics;
    std::unique_ptr<NBOutputStatistics> fpTestStatistics;

    // Scratch of scoring: no allocation a record.
    MCCommon::Record fInputRecord;     // a code per table
    std::vector<double> fvPosteriors;  // a value per target category
    std::vector<std::size_t> fvTies;   // target categories with the best value
};

#endif  // PREDSEL_NAIVEBAYES_NBALGORITHM_H
