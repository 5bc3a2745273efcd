#ifndef PREDSEL_NAIVEBAYES_NBBLOCKADAPTER_H
#define PREDSEL_NAIVEBAYES_NBBLOCKADAPTER_H

#include <cstdint>

#include "host/Blocks.h"
#include "host/Records.h"
#include "naivebayes/NBColumnStore.h"

class NBDataPreparator;

/// Prepares the records of a source on the fly, as NBInternalAdapter does, a block at a time.
class NBBlockAdapter : public MCCommon::RecordIterator, public MCCommon::RecordBlockSource {
 public:
    /// Both borrowed; source also gives blocks. limit: original records to read at most, below 1
    /// for all.
    NBBlockAdapter(MCCommon::RecordIterator& source, MCCommon::RecordBlockSource& blocks,
                   std::int32_t limit, const NBDataPreparator& preparator);

    bool HasMore() override;
    const MCCommon::Record* Next() override;
    std::int32_t GetFailReason() const override { return fPrepared.GetFailReason(); }
    const MCCommon::RecordBlock* NextBlock(std::int32_t maxRows) override;
    MCCommon::BlockExecutor* GetExecutor() override { return fPrepared.GetExecutor(); }

    std::int32_t GetNumExcluded() const { return fNumExcluded; }
    /// Weight of the excluded records, but for those whose weight is missing.
    double GetExcludedWeight() const { return fExcludedWeight; }

 private:
    MCCommon::RecordIterator& fSource;     // borrowed from the caller
    MCCommon::RecordBlockSource& fBlocks;  // the same
    std::int32_t fLimit;
    const NBDataPreparator& fPreparator;  // borrowed from the caller
    std::int32_t fNumRead = 0;
    NBColumnStore fPrepared;  // the records that are next
    std::int32_t fNumExcluded = 0;
    double fExcludedWeight = 0.0;
};

#endif  // PREDSEL_NAIVEBAYES_NBBLOCKADAPTER_H
