#include "embedded/cases/AdapterState.h"

#include <algorithm>
#include <cmath>

#include "embedded/HostSession.h"
#include "embedded/output/Report.h"
#include "host/Assertion.h"

namespace embedded {
namespace {

bool IsUserMissingNumber(const KoltMissingSpec& spec, double value) {
    if (spec.fbRange && value >= spec.fLow && value <= spec.fHigh) return true;
    return std::any_of(spec.fvDiscrete.begin(), spec.fvDiscrete.end(), [value](const KoltObs& obs) {
        const double* number = std::get_if<double>(&obs);
        return number && *number == value;
    });
}

// Weights above 0 by row, and whether one of them is no whole number.
std::vector<bool> ValidWeights(const DataSet& data, std::int32_t variable, bool& fractional) {
    std::vector<bool> valid(static_cast<std::size_t>(data.RowCount()));
    // A user-missing weight is no weight, whatever the command says of user-missing values.
    RecordColumn weights(data, variable, false, true);
    const Column& column = data.GetColumn(variable);
    for (std::int32_t chunk = 0; chunk < column.ChunkCount(); ++chunk) {
        const ColumnChunk rows = column.Chunk(chunk);
        weights.Open(chunk);
        for (std::int32_t row = 0; row < rows.fRows; ++row) {
            const double weight = weights.Value(row);
            if (!(weight > 0.0)) continue;  // the missing value is negative
            valid[static_cast<std::size_t>(rows.fFirstRow + row)] = true;
            fractional = fractional || weight != std::floor(weight);
        }
    }
    return valid;
}

}  // namespace

RecordColumn::RecordColumn(const DataSet& data, std::int32_t variable, bool isCategorical,
                           bool userMissExclude)
    : fpColumn(&data.GetColumn(variable)), fVariable(variable), fbCategorical(isCategorical) {
    const KOLT_Variable& description = data.Variable(variable);
    if (!fbCategorical) {
        fMissing = description.GetMissingSpec();
        fbUserMissing = userMissExclude && (fMissing.fbRange || !fMissing.fvDiscrete.empty());
        return;
    }
    const ColumnCategories& categories = fpColumn->Categories();
    std::vector<bool> keep(static_cast<std::size_t>(categories.Count()), true);
    if (userMissExclude) {
        for (std::int32_t category = 0; category < categories.Count(); ++category) {
            keep[static_cast<std::size_t>(category)] =
                !description.IsUserMissing(categories.Value(category));
        }
    }
    AssignCodes(keep);
}

void RecordColumn::AssignCodes(const std::vector<bool>& keep) {
    fvCodes.assign(keep.size(), -1);
    fvCategories.clear();
    for (std::size_t category = 0; category < keep.size(); ++category) {
        if (!keep[category]) continue;
        fvCodes[category] = static_cast<std::int32_t>(fvCategories.size());
        fvCategories.push_back(static_cast<std::int32_t>(category));
    }
    fvMet.assign(fvCategories.size(), false);
}

void RecordColumn::KeepCategoriesOf(const std::vector<bool>& rows) {
    if (!fbCategorical) return;
    std::vector<bool> keep(fvCodes.size(), false);
    for (std::int32_t chunk = 0; chunk < fpColumn->ChunkCount(); ++chunk) {
        const ColumnChunk view = fpColumn->Chunk(chunk);
        const CodeSpan codes = fpColumn->Categories().Codes(chunk);
        for (std::int32_t row = 0; row < view.fRows; ++row) {
            if (!rows[static_cast<std::size_t>(view.fFirstRow + row)] || !view.IsValid(row)) {
                continue;
            }
            const std::size_t category = codes[static_cast<std::size_t>(row)];
            keep[category] = fvCodes[category] >= 0;
        }
    }
    AssignCodes(keep);
}

void RecordColumn::Open(std::int32_t chunk) {
    fChunk = fpColumn->Chunk(chunk);
    if (fbCategorical) fChunkCodes = fpColumn->Categories().Codes(chunk);
}

double RecordColumn::CodeValue(std::int32_t row) const {
    if (!fChunk.IsValid(row)) return -1.0;
    return fvCodes[fChunkCodes[static_cast<std::size_t>(row)]];
}

// A string read as a number has none: every case is missing.
double RecordColumn::Number(std::int32_t row) const {
    if (!fpColumn->IsNumeric()) return MCMV::gMissingValue;
    const double value = fChunk.fNumbers[static_cast<std::size_t>(row)];
    return fbUserMissing && IsUserMissingNumber(fMissing, value) ? MCMV::gMissingValue : value;
}

void RecordColumn::Learn(double value) {
    if (!fbCategorical) {
        if (value == MCMV::gMissingValue) return;
        if (fMin == MCMV::gMissingValue || value < fMin) fMin = value;
        if (fMax == MCMV::gMissingValue || value > fMax) fMax = value;
        return;
    }
    if (value < 0.0) return;
    const auto code = static_cast<std::size_t>(value);
    if (fvMet[code]) return;
    fvMet[code] = true;
    ++fMetCount;
}

bool RecordColumn::Decode(std::int32_t code, KoltObs& valueOut) const {
    if (code < 0 || static_cast<std::size_t>(code) >= fvCategories.size()) return false;
    valueOut = fpColumn->Categories().Value(fvCategories[static_cast<std::size_t>(code)]);
    return true;
}

}  // namespace embedded

UAAdapterState::UAAdapterState(const UAVarValidSpecs& specs, const embedded::DataSet& data)
    : fData(data) {
    const std::int32_t columns = specs.GetNRecordVars();
    fvColumns.reserve(static_cast<std::size_t>(columns));
    for (std::int32_t column = 0; column < columns; ++column) {
        const std::int32_t variable = specs.GetKOLTVarIndex(column);
        fvColumns.emplace_back(data, variable, specs.GetKOLTCatVar(variable),
                               specs.GetUserMissExclude());
    }
    const std::int32_t weight = specs.GetWeightColumn();
    if (weight < 0) return;
    bool fractional = false;
    fvValidCases = embedded::ValidWeights(data, specs.GetKOLTVarIndex(weight), fractional);
    embedded::HostSession::Active().Report().fbFractionalWeights = fractional;
    for (embedded::RecordColumn& column : fvColumns) column.KeepCategoriesOf(fvValidCases);
}

const embedded::RecordColumn& UAAdapterState::ColumnOf(std::int32_t variable) const {
    const auto found =
        std::find_if(fvColumns.begin(), fvColumns.end(),
                     [variable](const auto& column) { return column.Variable() == variable; });
    PREDSEL_ASSERT(found != fvColumns.end(), "the variable is registered");
    return *found;
}

bool UAAdapterState::HasValidCase() const {
    if (fvValidCases.empty()) return fData.RowCount() > 0;
    return std::find(fvValidCases.begin(), fvValidCases.end(), true) != fvValidCases.end();
}
