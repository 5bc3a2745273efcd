#include "embedded/cases/LayoutRecords.h"

#include <algorithm>
#include <string>

namespace embedded {
namespace {

// Numbers may stand for booleans; dates and times only for their like.
bool HasSameMeaning(ColumnKind a, ColumnKind b) {
    const auto plain = [](ColumnKind kind) {
        return kind == ColumnKind::kBoolean ? ColumnKind::kNumber : kind;
    };
    return plain(a) == plain(b);
}

std::string KindName(ColumnKind kind) {
    switch (kind) {
        case ColumnKind::kNumber:
        case ColumnKind::kBoolean:
            return "numbers";
        case ColumnKind::kDate:
            return "dates";
        case ColumnKind::kDateTime:
            return "dates with times";
        case ColumnKind::kTime:
            return "times";
        case ColumnKind::kString:
            break;
    }
    return "texts";
}

}  // namespace

LayoutRecords::LayoutRecords(const DataSet& data, const RecordLayout& layout,
                             const LayoutRecordsOptions& options)
    : fpData(&data),
      fExecutor(options.fThreads),
      fWeightColumn(options.fbIgnoreWeights ? -1 : layout.fWeightColumn),
      fvUnknown(layout.fvColumns.size()),
      fRecord(static_cast<std::int32_t>(layout.fvColumns.size())) {
    std::string faults;
    for (std::size_t i = 0; i < layout.fvColumns.size(); ++i) {
        const RecordLayoutColumn& wanted = layout.fvColumns[i];
        const auto column = static_cast<std::int32_t>(i);
        const bool isWeight = column == layout.fWeightColumn;
        Source& source = fvSources.emplace_back();
        source.fbCategorical = wanted.fbCategorical;
        source.fAbsent = wanted.fbCategorical ? -1.0 : MCMV::gMissingValue;
        if (isWeight && options.fbIgnoreWeights) {
            source.fAbsent = 1.0;
            continue;
        }
        const std::int32_t variable = data.FindVariable(wanted.fName);
        const bool mayLack = std::find(options.fvMayLack.begin(), options.fvMayLack.end(),
                                       column) != options.fvMayLack.end();
        if (variable < 0) {
            if (!mayLack) {
                faults += (faults.empty() ? "" : "; ") + std::string("no variable '") +
                          wanted.fName + "'";
            }
            continue;
        }
        const ColumnKind kind = data.Kind(variable);
        if (!HasSameMeaning(kind, wanted.fKind) && data.GetColumn(variable).ValidCount() > 0) {
            if (mayLack) continue;
            faults += (faults.empty() ? "" : "; ") + std::string("the variable '") + wanted.fName +
                      "' holds " + KindName(kind) + " in place of " + KindName(wanted.fKind);
            continue;
        }
        // A user-missing weight is no weight, whatever was said of user-missing values.
        source.fMade.emplace(data, variable, wanted, isWeight || layout.fbUserMissExclude);
        if (isWeight) fWeights.emplace(data, variable, wanted, true);
    }
    if (!faults.empty()) {
        throw DataError(DataError::Kind::kContent,
                        data.SourceName() + ": does not fit the model: " + faults +
                            "; give data with the variables that the model was made from");
    }
    SettleOpenRows();
    NewPass();
}

void LayoutRecords::SettleOpenRows() {
    std::int64_t rowBytes = 0;
    for (const Source& source : fvSources) {
        if (source.fMade) rowBytes += source.fMade->OpenBytes();
    }
    fOpenRows = RowsToOpen(rowBytes);
}

MCCommon::BlockColumn LayoutRecords::Source::Absent(std::size_t rows) {
    if (fbCategorical) {
        fvAbsentEntries.resize(rows);
        return {MCCommon::BlockColumn::Bytes(fvAbsentEntries)};
    }
    fvAbsentNumbers.resize(rows, fAbsent);
    return {MCCommon::BlockColumn::Numbers(fvAbsentNumbers)};
}

std::int32_t LayoutRecords::NewPass() {
    fvUnknown.assign(fvUnknown.size(), Oddity());
    fRow = -1;
    fRowGiven = -1;
    fOpenRow = -1;
    fWeightChunk = -1;
    MoveOn();
    return GetFailReason();
}

std::int32_t LayoutRecords::GetFailReason() const {
    return fRow < fpData->RowCount() ? MCCommon::kITER_SUCCESS : MCCommon::kITER_NO_VALID_CASE;
}

bool LayoutRecords::HasWeight(std::int64_t row) {
    if (fWeightColumn < 0) return true;
    if (!fWeights) return fvSources[static_cast<std::size_t>(fWeightColumn)].fAbsent > 0.0;
    const auto chunk = static_cast<std::int32_t>(row / kChunkRows);
    if (chunk != fWeightChunk) fWeights->Open(chunk);
    fWeightChunk = chunk;
    return fWeights->Value(static_cast<std::int32_t>(row % kChunkRows)) > 0.0;
}

// To the next case with a weight.
void LayoutRecords::MoveOn() {
    do {
        ++fRow;
    } while (HasMore() && !HasWeight(fRow));
}

// Opened when it gives a record: a block of the chunk before stays valid until then.
void LayoutRecords::OpenRowsOf(std::int64_t row) {
    const std::int64_t first = row - row % fOpenRows;
    if (first == fOpenRow) return;
    fOpenRow = first;
    const ChunkPart part{static_cast<std::int32_t>(first / kChunkRows),
                         static_cast<std::int32_t>(first % kChunkRows), fOpenRows};
    fExecutor.RunOver(std::min<std::int64_t>(fOpenRows, fpData->RowCount()), fvSources.size(),
                      [&](std::size_t i) {
                          if (fvSources[i].fMade) fvSources[i].fMade->Open(part);
                      });
}

const MCCommon::Record* LayoutRecords::Next() {
    if (!HasMore()) return nullptr;
    OpenRowsOf(fRow);
    const auto row = static_cast<std::int32_t>(fRow - fOpenRow);
    for (std::size_t i = 0; i < fvSources.size(); ++i) {
        const std::optional<RecordColumn>& made = fvSources[i].fMade;
        fRecord[static_cast<std::int32_t>(i)] = made ? made->Value(row) : fvSources[i].fAbsent;
        if (made && made->IsUnknown(row)) fvUnknown[i].Note(fRow);
    }
    fRowGiven = fRow;
    MoveOn();
    return &fRecord;
}

const MCCommon::RecordBlock* LayoutRecords::NextBlock(std::int32_t maxRows) {
    if (!HasMore()) return nullptr;
    OpenRowsOf(fRow);
    const std::int64_t end = std::min(fOpenRow + fOpenRows, fpData->RowCount());
    fvBlockRows.clear();
    while (fRow < end && static_cast<std::int32_t>(fvBlockRows.size()) < maxRows) {
        fvBlockRows.push_back(fRow);
        MoveOn();
    }
    const ChunkRows rows(fvBlockRows, fOpenRow);
    fBlock.fRows = static_cast<std::int32_t>(rows.Count());
    fBlock.fvColumns.resize(fvSources.size());
    std::vector<std::vector<std::int64_t>> unknown(fvSources.size());
    fExecutor.RunOver(fBlock.fRows, fvSources.size(), [&](std::size_t i) {
        Source& source = fvSources[i];
        fBlock.fvColumns[i] =
            source.fMade ? source.fMade->Block(rows) : source.Absent(rows.Count());
        if (source.fMade) unknown[i] = source.fMade->UnknownCases(rows);
    });
    for (std::size_t i = 0; i < unknown.size(); ++i) {
        for (const std::int64_t row : unknown[i]) fvUnknown[i].Note(row);
    }
    return &fBlock;
}

MCCommon::BlockExecutor* LayoutRecords::GetExecutor() {
    return fExecutor.Threads() > 1 ? &fExecutor : nullptr;
}

}  // namespace embedded
