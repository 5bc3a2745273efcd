#ifndef PREDSEL_BACKEND_PRSMULTIFACTORY_H
#define PREDSEL_BACKEND_PRSMULTIFACTORY_H

#include <cstdint>
#include <memory>
#include <vector>

#include "backend/predselect/NaiveDataSourceIter.h"
#include "backend/predselect/PRSMessage.h"
#include "host/CaseDelivery.h"
#include "host/CommandLanguage.h"
#include "host/Data.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/NBStatus.h"
#include "naivebayes/data/NBVarList.h"

class BlockColumnWriter;
class PRSValidSpecs;

/// Controller of a NAIVEBAYES run: reads the training cases once, describes the variables to the
/// engine, has it build a model or search a subset, writes the model file, scores all cases into
/// the saved variables and the classification counts. Keeps the engine alive for NaiveOutput.
///
/// CheckTrainingData, BuildVarList and Run follow each other; the first that is false ends the run.
class PRSMultiFactory {
 public:
    /// Both borrowed. Makes the first contact with the data; when there is no valid case the host's
    /// message is issued and the status becomes an error.
    PRSMultiFactory(const PRSValidSpecs& specs, ProcedureDataSource& source);
    ~PRSMultiFactory();
    PRSMultiFactory(const PRSMultiFactory&) = delete;
    PRSMultiFactory& operator=(const PRSMultiFactory&) = delete;

    /// The first pass, from which the adapter learns the categories and ranges of the training
    /// cases.
    bool CheckTrainingData();
    /// Describes every variable, usable or not, in the order of the record. False, after a message,
    /// when what is left makes no model. REQUIRES: CheckTrainingData was true.
    bool BuildVarList();
    /// Model, model file, scores. False when there is nothing to report on.
    bool Run();
    /// The message of a run that failed without one. Of a run that was stopped the host tells.
    void ReportFailure() const;

    NBStatus GetStatus() const { return fStatus; }
    /// Null until Run has made it.
    INBAlgorithm* GetAlgorithm() const { return fpAlgorithm.get(); }
    const UAInputAdapter& GetInputAdapter() const { return *fpInpAdapt; }
    /// Predictors without any valid value, and with one only. Dictionary indices.
    const std::vector<std::int32_t>& GetEmptyPredList() const { return fEmptyPredList; }
    const std::vector<std::int32_t>& GetConstPredList() const { return fConstPredList; }
    /// Results of the search, see INBAlgorithm::SelectSubset; empty without one.
    const std::vector<std::int32_t>& GetSelectPredictors() const { return fSelectPredictors; }
    const std::vector<double>& GetSelectCriteria() const { return fSelectCriteria; }
    const std::vector<NBSubset>& GetSelectBest() const { return fSelectBest; }

 private:
    // The host's class is deleted through this.
    struct InputAdapter final : UAInputAdapter {
        using UAInputAdapter::UAInputAdapter;
    };

    // PRSMultiFactoryVariables.cpp
    bool AddVariable(std::int32_t index, bool isCat, bool isPredictor, bool isForced);
    bool AddCategorical(std::int32_t index, std::int32_t role, bool isPredictor);
    bool AddContinuous(std::int32_t index, std::int32_t role);
    void AddByValues(std::int32_t index, std::int32_t categories, std::int32_t role);
    void PassUserMissing(std::int32_t index, std::int32_t variable);
    bool CheckPredictorCounts();

    // PRSMultiFactory.cpp
    bool Train(std::int32_t numRecords);
    NBStatus SearchSubset(std::int32_t numRecords);
    void ReportStatus() const;
    void WriteModelFile();

    // PRSMultiFactoryScoring.cpp
    bool ScoreCases();
    bool MakeSavedVariables();
    bool MakePredictedValue(const KOLT_Variable& target);
    bool MakePredictedProbabilities(const KOLT_Variable& target);
    void ScoreOneCase(KOLT_InputCaseIterator& writer, const MCCommon::Record& record,
                      bool isTraining);
    struct BlockScratch;
    /// What is predicted for each category of the target.
    void DecodeTargets(BlockScratch& scratch) const;
    /// As ScoreOneCase for the next records, and moves behind them.
    void ScoreNextBlock(BlockColumnWriter& writer, BlockScratch& scratch);
    void WritePredictedValues(BlockColumnWriter& writer, BlockScratch& scratch) const;
    /// The value of a category of the target. False when the code has none.
    bool DecodeTarget(std::int32_t code, KoltObs& valueOut) const;

    bool IsStopped() const;
    void SetError(std::uint32_t code) { fStatus = NBStatus(code, false); }

    const PRSValidSpecs& fProcValidSpec;
    bool fbWriteModel;
    /// Categories are described by value, not by number alone: for the model file, and for a state
    /// of the engine that is to be merged or scored with elsewhere.
    bool fbDescribeValues;
    bool fbSubsetSearch;
    ProcedureDataSource& fActiveDS;
    UAInpAdaptMsg fAdapterMessages;
    std::vector<bool> fTrainTestFlags;  // true for training, by case of the file
    // Torn down from the engine to the adapter.
    std::unique_ptr<InputAdapter> fpInpAdapt;
    std::unique_ptr<NaiveDataSourceIter> fpScoreRecIter;  // all cases
    std::unique_ptr<NaiveDataSourceIter> fpTestRecIter;   // only when test data judge the search
    std::unique_ptr<NaiveDataSourceIter> fpTrainRecIter;
    std::unique_ptr<NBVarList> fpNBVarList;
    std::unique_ptr<INBAlgorithm> fpAlgorithm;
    std::int32_t fNUniquePreds = 0;  // candidates accepted
    std::int32_t fNForcePreds = 0;   // forced predictors accepted
    std::vector<std::int32_t> fEmptyPredList;
    std::vector<std::int32_t> fConstPredList;
    std::vector<std::int32_t> fSelectPredictors;
    std::vector<double> fSelectCriteria;
    std::vector<NBSubset> fSelectBest;
    std::int32_t fPredValColumn = -1;         // -1 when none is saved
    std::vector<std::int32_t> fPredProbVars;  // columns, by category of the target
    std::int32_t fNSaveDepCats = 0;           // probabilities saved a case
    ParserMessage fTranslator;
    PRSMessage fMessages;
    NBStatus fStatus;
};

#endif  // PREDSEL_BACKEND_PRSMULTIFACTORY_H
