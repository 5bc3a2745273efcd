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
      fWeightColumn(options.fbIgnoreWeights ? -1 : layout.fWeightColumn),
      fvUnknown(layout.fvColumns.size()),
      fRecord(static_cast<std::int32_t>(layout.fvColumns.size())) {
    std::string faults;
    for (std::size_t i = 0; i < layout.fvColumns.size(); ++i) {
        const RecordLayoutColumn& wanted = layout.fvColumns[i];
        const auto column = static_cast<std::int32_t>(i);
        const bool isWeight = column == layout.fWeightColumn;
        std::optional<RecordColumn>& made = fvColumns.emplace_back();
        fvAbsent.push_back(wanted.fbCategorical ? -1.0 : MCMV::gMissingValue);
        if (isWeight && options.fbIgnoreWeights) {
            fvAbsent.back() = 1.0;
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
        made.emplace(data, variable, wanted, isWeight || layout.fbUserMissExclude);
    }
    if (!faults.empty()) {
        throw DataError(DataError::Kind::kContent,
                        data.SourceName() + ": does not fit the model: " + faults +
                            "; give data with the variables that the model was made from");
    }
    NewPass();
}

std::int32_t LayoutRecords::NewPass() {
    fvUnknown.assign(fvUnknown.size(), Oddity());
    fRow = -1;
    fRowGiven = -1;
    fChunk = -1;
    MoveOn();
    return GetFailReason();
}

std::int32_t LayoutRecords::GetFailReason() const {
    return fRow < fpData->RowCount() ? MCCommon::kITER_SUCCESS : MCCommon::kITER_NO_VALID_CASE;
}

// To the next case with a weight.
void LayoutRecords::MoveOn() {
    while (++fRow < fpData->RowCount()) {
        const auto chunk = static_cast<std::int32_t>(fRow / kChunkRows);
        if (chunk != fChunk) {
            fChunk = chunk;
            for (std::optional<RecordColumn>& column : fvColumns) {
                if (column) column->Open(chunk);
            }
        }
        if (fWeightColumn < 0) return;
        const auto at = static_cast<std::size_t>(fWeightColumn);
        const auto row = static_cast<std::int32_t>(fRow % kChunkRows);
        if ((fvColumns[at] ? fvColumns[at]->Value(row) : fvAbsent[at]) > 0.0) return;
    }
}

const MCCommon::Record* LayoutRecords::Next() {
    if (!HasMore()) return nullptr;
    const auto row = static_cast<std::int32_t>(fRow % kChunkRows);
    for (std::size_t i = 0; i < fvColumns.size(); ++i) {
        const std::optional<RecordColumn>& column = fvColumns[i];
        fRecord[static_cast<std::int32_t>(i)] = column ? column->Value(row) : fvAbsent[i];
        if (column && column->IsUnknown(row)) fvUnknown[i].Note(fRow);
    }
    fRowGiven = fRow;
    MoveOn();
    return &fRecord;
}

}  // namespace embedded
