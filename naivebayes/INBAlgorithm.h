#ifndef PREDSEL_NAIVEBAYES_INBALGORITHM_H
#define PREDSEL_NAIVEBAYES_INBALGORITHM_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/Blocks.h"
#include "host/Progress.h"
#include "host/Records.h"
#include "naivebayes/NBStatus.h"
#include "naivebayes/NBWriteOptions.h"

class NBOutput;
class NBOutputStatistics;
class NBVarList;
struct NBBlockScores;
struct NaiveBayesSettings;

/// A subset of a nested chain of predictors by its size, and how good it is: lower is better.
struct NBSubset {
    std::int32_t fSize = 0;
    double fCriterion = 0.0;
    bool operator==(const NBSubset&) const = default;
};

/// The classifier engine: naive Bayes over contingency tables. Trained by BuildModel, or by
/// SelectSubset, which also searches the predictors; then it scores, tallies, is updated, merged
/// and saved. Records are original records: one value per variable of the list, see
/// NBDataPreparator.
///
/// Every operation returns a status. Errors of training stick: each later operation returns the
/// stored one and does nothing. An interrupt resets the model for good: error 1. Nothing throws.
/// Codes below are errors unless called warnings.
/// One thread; Interrupt is the one operation that a listener may call from within another.
class INBAlgorithm {
 public:
    /// Records and weight of a target category.
    struct CategoryCounts {
        std::int32_t fUnweighted = -1;
        double fWeighted = -1.0;
        bool operator==(const CategoryCounts&) const = default;
    };

    virtual ~INBAlgorithm();

    /// Name and version of the component, and the copyright line.
    virtual std::string GetVersionString() const = 0;

    /// Trains on the inputs of the list in one pass over at most numRecords used records, then
    /// rewinds the source. 3 no memory; 70011 no usable record; 70020 a single one, or no predictor
    /// with two filled categories. Warning 70015: such a predictor, argument 0, has left the model.
    virtual NBStatus BuildModel(MCCommon::MultiPassRecordIter& records,
                                std::int32_t numRecords) = 0;
    virtual bool IsModelBuilt() const = 0;
    /// Adds records to a built model. numRecords negative: all. Of its own refusals none sticks:
    /// 6 not built, 70007 numRecords 0, 70011 no usable record; otherwise as BuildModel.
    virtual NBStatus UpdateModel(MCCommon::MultiPassRecordIter& records,
                                 std::int32_t numRecords) = 0;

    /// Classifies records and compares with what was observed; only complete records count.
    /// numRecords limits the records used; negative: all. 3 no memory for the table, 6 not built,
    /// 70007 numRecords 0, 70011 no record, 70012 as in ScoreInputRecord.
    virtual NBStatus ClassifyRecords(MCCommon::RecordIterator& records,
                                     NBOutputStatistics& tableOut, std::int32_t numRecords) = 0;
    /// Scores a record of GetNumInputVars() inputs. 6 not built; 70012 another length, arguments 0
    /// expected and 1 given. Warning 70010: a code out of range, no result; arguments 0 the input,
    /// 1 the code, 2 the highest code, double argument 1 the value.
    virtual NBStatus ScoreInputRecord(const MCCommon::Record& record, NBOutput& output) = 0;
    /// Scores an original record; argument 0 of 70010 is then the variable. Warning 70016: no input
    /// was valid, the result is the priors.
    virtual NBStatus ScoreRecord(const MCCommon::Record& record, NBOutput& output) = 0;
    /// Scores an original record and, after success, counts it in the training or the test
    /// statistics if its target and its weight are valid. 3 no memory for the statistics; the
    /// record is scored all the same.
    virtual NBStatus TallyRecord(const MCCommon::Record& record, NBOutput& output,
                                 bool isTraining) = 0;
    /// ScoreRecord of each record of a block; no result depends on the executor, which may be null.
    /// Errors as there. Of warnings scores tells.
    virtual NBStatus ScoreBlock(const MCCommon::RecordBlock& block,
                                MCCommon::BlockExecutor* executor, NBBlockScores& scores) = 0;
    /// TallyRecord of each. isTraining: one a record, not 0 for training.
    virtual NBStatus TallyBlock(const MCCommon::RecordBlock& block,
                                MCCommon::BlockExecutor* executor, NBBlockScores& scores,
                                std::span<const std::uint8_t> isTraining) = 0;
    /// Null before a tally, here and in the next. Borrowed from the engine.
    virtual const NBOutputStatistics* GetTrainStatistics() const = 0;
    virtual const NBOutputStatistics* GetTestStatistics() const = 0;

    /// Writes the model as PMML 4.3. options may be null. Warning 6: not built.
    virtual NBStatus WritePMML(std::ostream& stream, const NBWriteOptions* options) = 0;

    /// Borrowed, may be null.
    virtual void SetInterruptSource(MCStopProcessor* stopProcessor) = 0;

    /// The state for RestoreNBAlgorithm. 4 no model, 70004 the stream has failed.
    virtual NBStatus SaveBinary(std::ostream& stream) = 0;
    virtual NBStatus SaveXML(std::ostream& stream) = 0;
    virtual void Interrupt() = 0;
    /// The stored status. After an interrupt the model is reset first.
    virtual NBStatus GetStatus() = 0;

    /// Trains, searches the candidates of the list and keeps the best subset as the model.
    ///
    /// selectedOut takes the list indices of the whole chain in selection order, forced ones first;
    /// criteriaOut the average conditional log-likelihood by subset size, entry s-1 for size s;
    /// bestSubsetsOut the best subsets, best first, none for an exact size.
    /// maxSize counts forced predictors too, -1 leaves it to the engine; exact makes it the size.
    /// testRecords null: the pseudo-BIC decides, else the test data. numTest: how many, -1 all.
    /// numBest: subsets to keep, below 1 five. xmlStream null: no report is written.
    ///
    /// As BuildModel, and 70001 no temporary file or a full disk; 70002 no record, 70003 no usable
    /// test record; 70007 and 70008 numRecords and numTest 0; 70013 maxSize not above the forced
    /// predictors, arguments both. Warning 70014: maxSize was cut, arguments maxSize, forced ones
    /// and candidates.
    virtual NBStatus SelectSubset(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords,
                                  std::vector<std::int32_t>& selectedOut,
                                  std::vector<double>& criteriaOut,
                                  std::vector<NBSubset>& bestSubsetsOut, std::int32_t maxSize,
                                  bool exact, MCCommon::MultiPassRecordIter* testRecords,
                                  std::int32_t numTest, std::int32_t numBest,
                                  std::ostream* xmlStream, const NBWriteOptions* xmlOptions) = 0;

    /// Adds the counts of another model of the same variables. checkVariables false: that they are
    /// the same is the caller's word. 70019, argument 0 the first variable that differs or -1.
    virtual NBStatus MergeModel(const INBAlgorithm& other, bool checkVariables) = 0;

    virtual void GetRecordCounts(double& weightOut, double& excludedWeightOut,
                                 std::int32_t& recordsOut, std::int32_t& excludedOut) const = 0;
    virtual std::int32_t GetNumTargetCategories() const = 0;
    /// {-1, -1.0} for a code out of range.
    virtual CategoryCounts GetTargetCategoryCounts(std::int32_t category) const = 0;
    /// Predictors of the model; before training those of role 1.
    virtual std::int32_t GetNumInputVars() const = 0;

    /// Borrowed, may be null.
    virtual void SetProgressListener(ProgressListener* listener) = 0;
    virtual NaiveBayesSettings& GetSettings() = 0;
    virtual const NaiveBayesSettings& GetSettings() const = 0;
    virtual const NBVarList& GetVarList() const = 0;
    virtual void Display(std::ostream& out) const = 0;
};

/// Makes an engine. 70009, argument 1 the first variable at fault: the list does not make a model.
/// Null after an error.
std::unique_ptr<INBAlgorithm> CreateNBAlgorithm(NBStatus& status,
                                                const NaiveBayesSettings& settings,
                                                const NBVarList& varList);
/// Makes an engine from a saved state. 70004 the stream has failed, 70005 (binary) or 70006 (XML)
/// it holds no state of an engine. Null after an error.
std::unique_ptr<INBAlgorithm> RestoreNBAlgorithm(NBStatus& status, std::istream& stream);
std::unique_ptr<INBAlgorithm> RestoreNBAlgorithmXML(NBStatus& status, std::istream& stream);

#endif  // PREDSEL_NAIVEBAYES_INBALGORITHM_H
