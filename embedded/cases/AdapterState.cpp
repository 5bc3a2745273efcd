#include "embedded/cases/AdapterState.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "embedded/HostSession.h"
#include "embedded/data/NewColumns.h"
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
        if (userMissExclude) HoldAgainst(description.GetMissingSpec());
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

RecordColumn::RecordColumn(const DataSet& data, std::int32_t variable,
                           const RecordLayoutColumn& layout, bool userMissExclude)
    : fpColumn(&data.GetColumn(variable)),
      fVariable(variable),
      fbCategorical(layout.fbCategorical) {
    const KOLT_Variable& description = data.Variable(variable);
    if (!fbCategorical) {
        if (userMissExclude) {
            HoldAgainst(description.GetMissingSpec());
            HoldAgainst(layout.fMissing);
        }
        return;
    }
    KOLT_Variable declared;
    declared.SetMissingSpec(layout.fMissing);
    std::map<KoltObs, std::int32_t> codes;
    for (const KoltObs& value : layout.fvValues) {
        codes.emplace(value, static_cast<std::int32_t>(codes.size()));
    }
    const ColumnCategories& categories = fpColumn->Categories();
    for (std::int32_t category = 0; category < categories.Count(); ++category) {
        const KoltObs value = categories.Value(category);
        const auto code = codes.find(value);
        if (userMissExclude &&
            (description.IsUserMissing(value) || declared.IsUserMissing(value))) {
            fvCodes.push_back(kMissing);
        } else if (code == codes.end()) {
            fvCodes.push_back(kUnknown);
            fbSomeUnknown = true;
        } else {
            fvCodes.push_back(code->second);
        }
    }
}

void RecordColumn::HoldAgainst(const KoltMissingSpec& spec) {
    if (spec.fbRange || !spec.fvDiscrete.empty()) fvMissing.push_back(spec);
}

void RecordColumn::AssignCodes(const std::vector<bool>& keep) {
    fvCodes.assign(keep.size(), kMissing);
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
    return std::max(kMissing, fvCodes[fChunkCodes[static_cast<std::size_t>(row)]]);
}

// A string read as a number has none: every case is missing.
double RecordColumn::Number(std::int32_t row) const {
    if (!fpColumn->IsNumeric()) return MCMV::gMissingValue;
    const double value = fChunk.fNumbers[static_cast<std::size_t>(row)];
    for (const KoltMissingSpec& spec : fvMissing) {
        if (IsUserMissingNumber(spec, value)) return MCMV::gMissingValue;
    }
    return value;
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

void RecordColumn::EndLearning() {
    for (std::size_t code = 0; code < fvMet.size(); ++code) {
        if (fvMet[code]) continue;
        fvCodes[static_cast<std::size_t>(fvCategories[code])] = kUnknown;
        fbSomeUnknown = true;
    }
}

void RecordColumn::Reorder(bool ascending) {
    std::vector<std::int32_t> met;
    for (std::size_t code = 0; code < fvMet.size(); ++code) {
        if (fvMet[code]) met.push_back(fvCategories[code]);
    }
    // Categories of a column ascend by value.
    std::sort(met.begin(), met.end());
    if (!ascending) std::reverse(met.begin(), met.end());
    for (std::size_t code = 0; code < met.size(); ++code) {
        fvCodes[static_cast<std::size_t>(met[code])] = static_cast<std::int32_t>(code);
    }
    fvMet.assign(met.size(), true);
    fvCategories = std::move(met);
}

std::vector<KoltObs> RecordColumn::Values() const {
    std::vector<KoltObs> values;
    for (const std::int32_t category : fvCategories) {
        values.push_back(fpColumn->Categories().Value(category));
    }
    return values;
}

bool RecordColumn::Decode(std::int32_t code, KoltObs& valueOut) const {
    if (code < 0 || static_cast<std::size_t>(code) >= fvCategories.size()) return false;
    valueOut = fpColumn->Categories().Value(fvCategories[static_cast<std::size_t>(code)]);
    return true;
}

double CaseReader::GetNumericValue(std::int32_t index) const {
    const Column& column = fData.GetColumn(index);
    if (!column.IsNumeric()) return MCMV::gMissingValue;
    const ColumnChunk chunk = column.Chunk(static_cast<std::int32_t>(fRow / kChunkRows));
    return chunk.fNumbers[static_cast<std::size_t>(fRow % kChunkRows)];
}

void CaseReader::SetColumnValue(std::int32_t column, double value) {
    HostSession::Active().New().Set(column, fRow, value);
}

void CaseReader::SetColumnValue(std::int32_t column, const std::string& text, std::int32_t type) {
    HostSession::Active().New().Set(column, fRow, text, type);
}

}  // namespace embedded

UAAdapterState::UAAdapterState(const UAVarValidSpecs& specs, const embedded::DataSet& data)
    : fData(data),
      fRowEnd(data.RowCount()),
      fReader(data),
      fWeightColumn(specs.GetWeightColumn()),
      fbUserMissExclude(specs.GetUserMissExclude()) {
    const std::int32_t columns = specs.GetNRecordVars();
    fvColumns.reserve(static_cast<std::size_t>(columns));
    for (std::int32_t column = 0; column < columns; ++column) {
        const std::int32_t variable = specs.GetKOLTVarIndex(column);
        fvColumns.emplace_back(data, variable, specs.GetKOLTCatVar(variable), fbUserMissExclude);
    }
    fvUnknownRows.resize(fvColumns.size());
    embedded::HostSession& session = embedded::HostSession::Active();
    session.SetAdapter(this);
    if (fWeightColumn < 0) return;
    bool fractional = false;
    fvValidCases = embedded::ValidWeights(data, specs.GetKOLTVarIndex(fWeightColumn), fractional);
    session.Report().fbFractionalWeights = fractional;
    for (embedded::RecordColumn& column : fvColumns) column.KeepCategoriesOf(fvValidCases);
}

UAAdapterState::~UAAdapterState() { embedded::HostSession::Active().SetAdapter(nullptr); }

embedded::RecordColumn& UAAdapterState::ColumnOf(std::int32_t variable) {
    const auto found =
        std::find_if(fvColumns.begin(), fvColumns.end(),
                     [variable](const auto& column) { return column.Variable() == variable; });
    PREDSEL_ASSERT(found != fvColumns.end(), "the variable is registered");
    return *found;
}

const embedded::RecordColumn& UAAdapterState::ColumnOf(std::int32_t variable) const {
    return const_cast<UAAdapterState*>(this)->ColumnOf(variable);
}

bool UAAdapterState::HasValidCase() const {
    if (fvValidCases.empty()) return fData.RowCount() > 0;
    return std::find(fvValidCases.begin(), fvValidCases.end(), true) != fvValidCases.end();
}

void UAAdapterState::BeginPass(const void* owner) {
    if (fpUnderWay != nullptr) BreakOffPass();
    fpUnderWay = owner;
    fCasesRead = 0;
}

void UAAdapterState::BreakOffPass() {
    if (fCasesRead > 0) EndPass();
    fpUnderWay = nullptr;
}

void UAAdapterState::EndPass() {
    if (fPassesEnded == 0) {
        fRowEnd = fCasesRead;
        for (embedded::RecordColumn& column : fvColumns) column.EndLearning();
    }
    ++fPassesEnded;
    fpUnderWay = nullptr;
}

void UAAdapterState::NoteUnknown(std::size_t column, std::int64_t row) {
    std::vector<bool>& rows = fvUnknownRows[column];
    if (rows.empty()) rows.resize(static_cast<std::size_t>(fData.RowCount()));
    if (rows[static_cast<std::size_t>(row)]) return;
    rows[static_cast<std::size_t>(row)] = true;
    embedded::HostSession::Active().NoteUnknownCase(fvColumns[column].Variable());
}

embedded::RecordLayout UAAdapterState::Layout() const {
    embedded::RecordLayout layout;
    layout.fWeightColumn = fWeightColumn;
    layout.fbUserMissExclude = fbUserMissExclude;
    for (const embedded::RecordColumn& column : fvColumns) {
        const KOLT_Variable& variable = fData.Variable(column.Variable());
        layout.fvColumns.push_back({variable.GetName(), fData.Kind(column.Variable()),
                                    variable.GetType(), column.IsCategorical(), column.Values(),
                                    variable.GetMissingSpec()});
    }
    return layout;
}
