#ifndef PREDSEL_NAIVEBAYES_NBCOLUMNSTORE_H
#define PREDSEL_NAIVEBAYES_NBCOLUMNSTORE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/Blocks.h"
#include "host/Records.h"
#include "naivebayes/NBEntryColumn.h"

/// Prepared records in memory, column by column in the narrowest form, to be read any number of
/// times in blocks, or record by record. NBDataPreparator fills it from sources that give blocks.
/// A code that is missing or unknown reads as -1.
class NBColumnStore : public MCCommon::MultiPassRecordIter, public MCCommon::RecordBlockSource {
 public:
    /// executor: borrowed from the source of the records, may be null.
    NBColumnStore(std::int32_t numTargetCategories, bool weighted,
                  const std::vector<std::int32_t>& inputNumCategories,
                  MCCommon::BlockExecutor* executor);

    /// No records.
    void Clear();
    /// Makes room for so many records.
    void Reserve(std::size_t count);
    // Of these columns the filler keeps the length the same, and calls SetCount after that. Reading
    // goes on behind what was read.
    NBEntryColumn& Target() { return fTarget; }
    /// Null without weights.
    std::vector<double>* Weights() { return fbWeighted ? &fvWeights : nullptr; }
    std::vector<NBEntryColumn>& Inputs() { return fvInputs; }
    void SetCount();
    std::size_t GetCount() const { return fCount; }
    /// All values of all records, row by row.
    void CopyRows(std::vector<double>& rowsOut) const;

    bool HasMore() override { return fNext < fCount; }
    const MCCommon::Record* Next() override;
    std::int32_t GetFailReason() const override {
        return fNext < fCount ? MCCommon::kITER_SUCCESS : MCCommon::kITER_NO_VALID_CASE;
    }
    std::int32_t NewPass() override;
    /// Valid until the store changes or is asked for another block.
    const MCCommon::RecordBlock* NextBlock(std::int32_t maxRows) override;
    MCCommon::BlockExecutor* GetExecutor() override { return fpExecutor; }

 private:
    NBEntryColumn fTarget;
    bool fbWeighted;
    std::vector<double> fvWeights;
    std::vector<NBEntryColumn> fvInputs;
    MCCommon::BlockExecutor* fpExecutor;
    std::size_t fCount = 0;
    std::size_t fNext = 0;
    MCCommon::Record fRecord;
    MCCommon::RecordBlock fBlock;
};

#endif  // PREDSEL_NAIVEBAYES_NBCOLUMNSTORE_H
