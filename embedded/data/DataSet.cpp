#include "embedded/data/DataSet.h"

#include <cmath>
#include <set>
#include <utility>

#include "host/Assertion.h"

namespace embedded {

const DataSet::Entry& DataSet::At(std::int32_t index) const {
    PREDSEL_ASSERT(index >= 0 && index < ColumnCount(), "index >= 0 && index < ColumnCount()");
    return fvColumns[static_cast<std::size_t>(index)];
}

KOLT_Variable& DataSet::MutableVariable(std::int32_t index) {
    PREDSEL_ASSERT(index >= 0 && index < ColumnCount(), "index >= 0 && index < ColumnCount()");
    return fvColumns[static_cast<std::size_t>(index)].fVariable;
}

std::int32_t DataSet::FindVariable(std::string_view name) const {
    const auto found = fIndices.find(std::string(name));
    return found == fIndices.end() ? -1 : found->second;
}

std::int32_t DataSet::AddColumn(KOLT_Variable variable, Column column, ColumnKind kind) {
    PREDSEL_ASSERT(fvColumns.empty() || column.RowCount() == fRowCount,
                   "column.RowCount() == fRowCount");
    const std::int32_t index = ColumnCount();
    const bool isNew = fIndices.emplace(variable.GetName(), index).second;
    PREDSEL_ASSERT(isNew, "isNew");
    fRowCount = column.RowCount();
    fvColumns.push_back({std::move(variable), std::move(column), kind});
    return index;
}

void DataSet::SettleMeasurementLevels() {
    for (Entry& entry : fvColumns) {
        if (entry.fVariable.GetMeasurementLevel() == kLevelUnknown) {
            entry.fVariable.SetMeasurementLevel(LevelByValues(entry));
        }
    }
}

std::int32_t DataSet::LevelByValues(const Entry& entry) const {
    switch (entry.fKind) {
        case ColumnKind::kString:
        case ColumnKind::kBoolean:
            return kLevelNominal;
        case ColumnKind::kDate:
        case ColumnKind::kDateTime:
        case ColumnKind::kTime:
            return kLevelScale;
        case ColumnKind::kNumber:
            break;
    }
    std::set<double> met;
    double last = MCMV::gMissingValue;
    for (std::int32_t i = 0; i < entry.fColumn.ChunkCount(); ++i) {
        for (const double value : entry.fColumn.Chunk(i).fNumbers) {
            if (value == MCMV::gMissingValue || value == last ||
                entry.fVariable.IsUserMissing(value)) {
                continue;
            }
            last = value;
            met.insert(value);
            if (value != std::floor(value) || static_cast<std::int64_t>(met.size()) > fNominalMax) {
                return kLevelScale;
            }
        }
    }
    return kLevelNominal;
}

}  // namespace embedded
