#include "naivebayes/NBColumnStore.h"

#include <algorithm>
#include <variant>

NBColumnStore::NBColumnStore(std::int32_t numTargetCategories, bool weighted,
                             const std::vector<std::int32_t>& inputNumCategories,
                             MCCommon::BlockExecutor* executor)
    : fTarget(numTargetCategories),
      fbWeighted(weighted),
      fpExecutor(executor),
      fRecord(static_cast<std::int32_t>(inputNumCategories.size()) + (weighted ? 2 : 1)) {
    for (const std::int32_t numCategories : inputNumCategories) {
        fvInputs.emplace_back(numCategories);
    }
}

void NBColumnStore::Clear() {
    fTarget.Resize(0);
    fvWeights.clear();
    for (NBEntryColumn& input : fvInputs) input.Resize(0);
    fCount = 0;
    fNext = 0;
}

void NBColumnStore::Reserve(std::size_t count) {
    fTarget.Reserve(count);
    if (fbWeighted) NBEntryColumn::ReserveOf(fvWeights, count);
    for (NBEntryColumn& input : fvInputs) input.Reserve(count);
}

void NBColumnStore::SetCount() { fCount = fTarget.Size(); }

void NBColumnStore::CopyRows(std::vector<double>& rowsOut) const {
    const auto size = static_cast<std::size_t>(fRecord.Size());
    rowsOut.resize(fCount * size);
    const auto copy = [this, size, &rowsOut](const NBEntryColumn& column, std::size_t position) {
        std::visit(
            [&](const auto& entries) {
                for (std::size_t i = 0; i < fCount; ++i) {
                    rowsOut[i * size + position] = static_cast<double>(entries[i]) - 1.0;
                }
            },
            column.GetEntries());
    };
    std::size_t position = 0;
    copy(fTarget, position++);
    if (fbWeighted) {
        for (std::size_t i = 0; i < fCount; ++i) rowsOut[i * size + position] = fvWeights[i];
        ++position;
    }
    for (const NBEntryColumn& input : fvInputs) copy(input, position++);
}

const MCCommon::Record* NBColumnStore::Next() {
    if (fNext >= fCount) return nullptr;
    std::int32_t position = 0;
    fRecord[position++] = fTarget.Code(fNext);
    if (fbWeighted) fRecord[position++] = fvWeights[fNext];
    for (const NBEntryColumn& input : fvInputs) fRecord[position++] = input.Code(fNext);
    ++fNext;
    return &fRecord;
}

std::int32_t NBColumnStore::NewPass() {
    fNext = 0;
    return GetFailReason();
}

const MCCommon::RecordBlock* NBColumnStore::NextBlock(std::int32_t maxRows) {
    if (fNext >= fCount) return nullptr;
    const std::size_t count = std::min(fCount - fNext, static_cast<std::size_t>(maxRows));
    fBlock.fRows = static_cast<std::int32_t>(count);
    fBlock.fvColumns.clear();
    fBlock.fvColumns.push_back(fTarget.View(fNext, count));
    if (fbWeighted) {
        MCCommon::BlockColumn weights;
        weights.fValues = MCCommon::BlockColumn::Numbers(fvWeights).subspan(fNext, count);
        fBlock.fvColumns.push_back(weights);
    }
    for (const NBEntryColumn& input : fvInputs) {
        fBlock.fvColumns.push_back(input.View(fNext, count));
    }
    fNext += count;
    return &fBlock;
}
