#include "embedded/data/DataSet.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <span>
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
    // Few values decide; every value of a coded column is in some row.
    std::set<double> met;
    double last = MCMV::gMissingValue;
    const auto isScale = [&](double value) {
        if (value == MCMV::gMissingValue || value == last || entry.fVariable.IsUserMissing(value)) {
            return false;
        }
        last = value;
        met.insert(value);
        return value != std::floor(value) || static_cast<std::int64_t>(met.size()) > fNominalMax;
    };
    const auto hasScale = [&isScale](std::span<const double> values) {
        return std::any_of(values.begin(), values.end(), isScale);
    };
    if (entry.fColumn.IsCoded()) {
        return hasScale(entry.fColumn.Categories().Numbers()) ? kLevelScale : kLevelNominal;
    }
    ColumnBuffer buffer;
    for (std::int32_t i = 0; i < entry.fColumn.ChunkCount(); ++i) {
        if (hasScale(entry.fColumn.Numbers(i, buffer))) {
            return kLevelScale;
        }
    }
    return kLevelNominal;
}

}  // namespace embedded
