#include "naivebayes/NBBlockAdapter.h"

#include <algorithm>

#include "naivebayes/data/NBDataPreparator.h"

NBBlockAdapter::NBBlockAdapter(MCCommon::RecordIterator& source,
                               MCCommon::RecordBlockSource& blocks, std::int32_t limit,
                               const NBDataPreparator& preparator)
    : fSource(source),
      fBlocks(blocks),
      fLimit(limit),
      fPreparator(preparator),
      fPrepared(preparator.MakeColumnStore(blocks.GetExecutor())) {}

bool NBBlockAdapter::HasMore() {
    constexpr std::int32_t kBlockRows = 16384;
    while (!fPrepared.HasMore() && (fLimit < 1 || fNumRead < fLimit) && fSource.HasMore()) {
        fPrepared.Clear();
        const auto* const block =
            fBlocks.NextBlock(fLimit < 1 ? kBlockRows : std::min(kBlockRows, fLimit - fNumRead));
        if (block == nullptr) break;
        // Without a limit nothing is counted: there may be more than the number holds.
        if (fLimit >= 1) fNumRead += block->fRows;
        fPreparator.PrepareBlock(*block, fPrepared, fNumExcluded, fExcludedWeight);
    }
    return fPrepared.HasMore();
}

const MCCommon::Record* NBBlockAdapter::Next() { return HasMore() ? fPrepared.Next() : nullptr; }

const MCCommon::RecordBlock* NBBlockAdapter::NextBlock(std::int32_t maxRows) {
    return HasMore() ? fPrepared.NextBlock(maxRows) : nullptr;
}
