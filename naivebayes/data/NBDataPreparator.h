#ifndef PREDSEL_NAIVEBAYES_DATA_NBDATAPREPARATOR_H
#define PREDSEL_NAIVEBAYES_DATA_NBDATAPREPARATOR_H

#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "host/Blocks.h"
#include "host/Records.h"
#include "naivebayes/NBInterruptState.h"
#include "naivebayes/NBStatus.h"

class NBBinningEncoder;
class NBColumnStore;
class NBRoundEncoder;
class NBVarList;
class NBayesInput;

/// Turns records of the source into records of codes. There are three shapes:
///
/// - original: position i holds variable i of the list; a raw value of a continuous or weight
///   variable, the category code of a categorical one. Missing is the missing value or -1.
/// - processed: position 0 the target code; position 1 the weight, when the list has one; then one
///   code per input, in list order.
/// - input-only: one code per input, in list order.
///
/// Inputs are the variables of role 1 and, while a subset is searched, those of role 2.
///
/// One preparator serves an engine from its first training on. While training, continuous inputs
/// get the bins of their variables; while scoring, those of the collapsed encoders, which make bins
/// that the training data left empty unreachable.
class NBDataPreparator {
 public:
    /// varList and interrupt are borrowed from the engine and must stay. numRecords: how many
    /// records are expected; it gives the number of bins, from 2 to 10, of continuous inputs that
    /// have none yet.
    /// Encoders are borrowed from the list: its variables must keep theirs.
    NBDataPreparator(NBVarList& varList, bool usePossibleInputs, std::int32_t numRecords,
                     NBInterruptState& interrupt);
    ~NBDataPreparator();
    NBDataPreparator(const NBDataPreparator&) = delete;
    NBDataPreparator& operator=(const NBDataPreparator&) = delete;

    /// The one pass over training records that are read again later: prepares at most numRecords
    /// records (null ones don't count) and stores those that can be used, in memory or in a file in
    /// tempDir. tempDir ends in a separator; empty stands for the system's own.
    /// countOut: the records stored. Results: success; 70001 no temporary file could be made,
    /// storeOut stays as it was; 70011 no record can be used, storeOut is null. An interrupt ends
    /// the pass; the records so far stand.
    /// What the file could not take (a full disk) shows when the store is read: it ends early.
    NBStatus PrepareRecords(MCCommon::RecordIterator& source, std::int32_t numRecords,
                            bool inMemory, std::unique_ptr<MCCommon::MultiPassRecordIter>& storeOut,
                            std::int32_t& countOut, const std::string& tempDir);

    /// Original to processed, for training. An error means that the record can't be used. Of
    /// several faults the last one counts, so that a warning may take the place of an error:
    /// Intended, see ABadInputCodeTakesThePlaceOfAMissingTarget.
    ///
    /// 70018 error, the weight is missing (integer 0: list index; double 1: the value); 70017
    /// error, the target is missing; 70010 a code is out of range (integers: list index, code,
    /// highest code; double 1: the value), error for the target, warning for an input; 70016 error,
    /// no input is valid.
    /// REQUIRES: original and processed have their sizes. Allocates nothing.
    NBStatus PrepareRecord(const MCCommon::Record& original, MCCommon::Record& processed,
                           double& weightOut) const;
    /// An empty store for prepared records. executor: borrowed, may be null.
    NBColumnStore MakeColumnStore(MCCommon::BlockExecutor* executor) const;
    /// The same for a block of original records: appends those that can be used to the store, and
    /// adds the others to the counts, weights that are missing left out.
    /// REQUIRES: a store of MakeColumnStore; a column per variable of the list.
    void PrepareBlock(const MCCommon::RecordBlock& block, NBColumnStore& store,
                      std::int32_t& numExcluded, double& weightExcluded) const;
    /// Original to input-only, for scoring. Warnings 70010 and 70016 as above.
    /// REQUIRES: both have their sizes; MakeCollapsedEncoders was called.
    NBStatus PrepareScoreRecord(const MCCommon::Record& original, MCCommon::Record& inputOnly,
                                double& weightOut) const;
    /// A record that has inputs only, codes of categorical and values of continuous ones, to
    /// input-only. Warning 70010; its integer 0 is the position of the input.
    /// REQUIRES: both have their size; MakeCollapsedEncoders was called.
    NBStatus PrepareInputRecord(const MCCommon::Record& inputsIn,
                                MCCommon::Record& inputsOut) const;

    /// Makes the encoders for scoring anew from the model's tables. Returns how many were made.
    /// REQUIRES: one table per input, in list order, with as many rows as the input has bins.
    std::int32_t MakeCollapsedEncoders(const std::vector<NBayesInput>& tables);

    /// Takes the input at this position among the inputs out. Returns how many are left, -1 for a
    /// position out of range.
    std::int32_t RemoveInput(std::int32_t position);
    /// Takes over the roles of the list after a search: inputs are then those of role 1.
    void SyncWithVarList();
    /// Takes over the numbers of categories of the list, after models were merged.
    void RefreshCategoryCounts();

    /// Of the last PrepareRecords.
    NBStatus GetStatus() const { return fStatus; }
    std::int32_t GetNumExcluded() const { return fNumExcluded; }
    /// Weight of the excluded records, but for those whose weight is missing.
    double GetWeightExcluded() const { return fWeightExcluded; }

    std::int32_t GetOriginalRecordSize() const { return fOriginalRecordSize; }
    std::int32_t GetProcessedRecordSize() const { return fProcessedRecordSize; }
    std::int32_t GetInputRecordSize() const { return fInputRecordSize; }
    /// List index; -1 without a target.
    std::int32_t GetTargetIndex() const { return fTargetIndex; }
    /// List index; -1 without a weight.
    std::int32_t GetWeightIndex() const { return fWeightIndex; }
    /// List index of each input.
    const std::vector<std::int32_t>& GetInputIndices() const { return fvInputIndices; }
    /// Position of each variable in a processed record; -1 when it is not in it.
    const std::vector<std::int32_t>& GetVarIndex() const { return fvVarIndex; }
    /// Categories or bins, and measure level, of each input.
    const std::vector<std::int32_t>& GetInputNumCategories() const { return fvInputNumCategories; }
    const std::vector<std::int32_t>& GetInputMeasureLevels() const { return fvInputMeasureLevels; }
    /// One per continuous input, in input order.
    const std::vector<std::unique_ptr<NBBinningEncoder>>& GetCollapsedEncoders() const {
        return fvpCollapsedEncoders;
    }
    /// Null without a weight.
    const NBRoundEncoder* GetWeightEncoder() const { return fpWeightEncoder; }
    const NBVarList& GetVarList() const { return *fpVarList; }
    NBVarList& GetVarList() { return *fpVarList; }
    /// The engine's, polled between records.
    NBInterruptState& Interrupt() const { return *fpInterrupt; }

    void Display(std::ostream& out) const;

 private:
    /// Appends the variable at this list index to the inputs.
    void AddInput(std::int32_t index);
    /// In a processed record.
    std::int32_t FirstInputPosition() const;
    /// Whether categorical variables come as codes and the others as numbers.
    bool HasUsualKinds(const MCCommon::RecordBlock& block) const;
    void PrepareRowByRow(const MCCommon::RecordBlock& block, NBColumnStore& store,
                         std::int32_t& numExcluded, double& weightExcluded) const;
    /// The pass over a source that gives blocks; calls sink() when the store has got one more.
    template <class Sink>
    void PrepareBlocks(MCCommon::RecordIterator& source, MCCommon::RecordBlockSource& blocks,
                       std::int32_t numRecords, NBColumnStore& store, Sink sink);
    /// The pass over another; calls sink(processed) for each record that can be used.
    template <class Sink>
    void PrepareEach(MCCommon::RecordIterator& source, std::int32_t numRecords, Sink sink);
    void SetRecordSizes();

    std::vector<std::int32_t> fvVarIndex;            // by list index
    std::vector<std::int32_t> fvInputIndices;        // by input
    std::int32_t fTargetIndex = -1;                  // in the list
    std::int32_t fWeightIndex = -1;                  // in the list
    std::int32_t fNewWeightIndex = -1;               // in a processed record
    std::vector<std::int32_t> fvNumCategories;       // by list index
    std::vector<std::int32_t> fvInputNumCategories;  // by input
    std::vector<std::int32_t> fvMeasureLevels;       // by list index
    std::vector<std::int32_t> fvInputMeasureLevels;  // by input
    std::vector<std::int32_t> fvRoles;               // by list index
    bool fbUsePossibleInputs;
    NBVarList* fpVarList;  // borrowed from the engine
    NBStatus fStatus;
    std::int32_t fOriginalRecordSize = 0;
    std::int32_t fProcessedRecordSize = 0;
    std::int32_t fInputRecordSize = 0;
    NBInterruptState* fpInterrupt;                            // borrowed from the engine
    std::vector<const NBBinningEncoder*> fvpBinningEncoders;  // borrowed from the variables
    std::vector<std::unique_ptr<NBBinningEncoder>> fvpCollapsedEncoders;
    const NBRoundEncoder* fpWeightEncoder = nullptr;  // borrowed from the weight variable
    std::int32_t fNumExcluded = 0;
    double fWeightExcluded = 0.0;
};

/// A path in the folder dir, which ends in a separator, that no file has: the prefix, digits from
/// the clock and ".tmp". An empty dir stands for the system's own temporary folder. May wait for
/// the clock to move on. Where the folder tells nothing of its files the path may be taken.
std::string MakeTempFileName(const std::string& dir, const std::string& prefix);

#endif  // PREDSEL_NAIVEBAYES_DATA_NBDATAPREPARATOR_H
