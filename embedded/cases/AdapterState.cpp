#include "embedded/cases/AdapterState.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <type_traits>

#include "embedded/HostSession.h"
#include "embedded/data/NewColumns.h"
#include "embedded/data/NumberRange.h"
#include "embedded/output/Report.h"
#include "host/Assertion.h"

namespace embedded {
namespace {

// Weights above 0 by row, and whether one of them is no whole number.
std::vector<bool> ValidWeights(const DataSet& data, std::int32_t variable, bool& fractional) {
    std::vector<bool> valid(static_cast<std::size_t>(data.RowCount()));
    // A user-missing weight is no weight, whatever the command says of user-missing values.
    RecordColumn weights(data, variable, false, true);
    for (std::size_t row = 0; row < valid.size(); ++row) {
        const std::size_t inChunk = row % kChunkRows;
        if (inChunk == 0) weights.Open(static_cast<std::int32_t>(row / kChunkRows));
        const double weight = weights.Value(static_cast<std::int32_t>(inChunk));
        if (!(weight > 0.0)) continue;  // the missing value is negative
        valid[row] = true;
        fractional = fractional || weight != std::floor(weight);
    }
    return valid;
}

}  // namespace

MissingNumbers::MissingNumbers(const KoltMissingSpec& spec) {
    if (spec.fbRange) {
        fLow = spec.fLow;
        fHigh = spec.fHigh;
    }
    for (const KoltObs& obs : spec.fvDiscrete) {
        if (const double* number = std::get_if<double>(&obs)) fvDiscrete.push_back(*number);
    }
}

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
    fEntryEnd = static_cast<std::uint32_t>(codes.size()) + 1;
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
    if (spec.fbRange || !spec.fvDiscrete.empty()) fvMissing.emplace_back(spec);
}

void RecordColumn::AssignCodes(const std::vector<bool>& keep) {
    fvCodes.assign(keep.size(), kMissing);
    fvCategories.clear();
    for (std::size_t category = 0; category < keep.size(); ++category) {
        if (!keep[category]) continue;
        fvCodes[category] = static_cast<std::int32_t>(fvCategories.size());
        fvCategories.push_back(static_cast<std::int32_t>(category));
    }
    fEntryEnd = static_cast<std::uint32_t>(fvCategories.size()) + 1;
    fvMet.assign(fvCategories.size(), false);
    fvEntries.clear();
}

void RecordColumn::KeepCategoriesOf(const std::vector<bool>& rows) {
    if (!fbCategorical) return;
    std::vector<bool> keep(fvCodes.size(), false);
    std::size_t toFind = fvCategories.size();
    ColumnBuffer buffer;
    std::size_t row = 0;
    for (std::int32_t chunk = 0; chunk < fpColumn->ChunkCount() && toFind > 0; ++chunk) {
        const auto find = [&](const auto entries) {
            for (const std::size_t entry : entries) {
                if (!rows[row++] || entry == 0 || keep[entry - 1] || fvCodes[entry - 1] < 0) {
                    continue;
                }
                keep[entry - 1] = true;
                if (--toFind == 0) return;
            }
        };
        std::visit(find, fpColumn->Codes(chunk, buffer).GetEntries());
    }
    AssignCodes(keep);
}

void RecordColumn::Open(const ChunkPart& part) {
    fBuffer = 1 - fBuffer;
    if (fbCategorical) {
        fChunkCodes = fpColumn->Codes(part, fBuffers[fBuffer]);
    } else if (fpColumn->IsNumeric()) {
        fChunkNumbers = fpColumn->Numbers(part, fBuffers[fBuffer]);
    }
}

std::int32_t RecordColumn::Code(std::int32_t row) const {
    return std::visit(
        [&](const auto entries) {
            const std::size_t entry = entries[static_cast<std::size_t>(row)];
            return entry == 0 ? kMissing : fvCodes[entry - 1];
        },
        fChunkCodes.GetEntries());
}

// A string read as a number has none: every case is missing.
double RecordColumn::Number(std::int32_t row) const {
    if (!fpColumn->IsNumeric()) return MCMV::gMissingValue;
    const double value = fChunkNumbers[static_cast<std::size_t>(row)];
    for (const MissingNumbers& missing : fvMissing) {
        if (missing.Contain(value)) return MCMV::gMissingValue;
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
    fvEntries.clear();
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
    fEntryEnd = static_cast<std::uint32_t>(fvCategories.size()) + 1;
    fvEntries.clear();
}

void RecordColumn::SettleEntries() {
    if (!fvEntries.empty()) return;
    fvEntries.reserve(fvCodes.size() + 1);
    fvEntries.push_back(0);
    fbSameEntries = true;
    for (const std::int32_t code : fvCodes) {
        const auto entry = static_cast<std::uint32_t>(std::max(kMissing, code) + 1);
        fbSameEntries = fbSameEntries && entry == fvEntries.size();
        fvEntries.push_back(entry);
    }
}

template <class Entry>
MCCommon::BlockColumn RecordColumn::CodeBlock(const ChunkRows& rows, Cells<Entry>& buffer) const {
    buffer.resize(rows.Count());
    std::visit(
        [&](const auto entries) {
            if (rows.IsDense()) {
                const auto held = entries.subspan(rows[0], rows.Count());
                std::transform(held.begin(), held.end(), buffer.begin(), [this](std::size_t entry) {
                    return static_cast<Entry>(fvEntries[entry]);
                });
                return;
            }
            for (std::size_t i = 0; i < rows.Count(); ++i) {
                buffer[i] = static_cast<Entry>(fvEntries[std::size_t{entries[rows[i]]}]);
            }
        },
        fChunkCodes.GetEntries());
    return {std::span<const Entry>(buffer), fEntryEnd};
}

MCCommon::BlockColumn RecordColumn::NumberBlock(const ChunkRows& rows) {
    if (fpColumn->IsNumeric() && fvMissing.empty() && rows.IsDense()) {
        return {fChunkNumbers.subspan(rows[0], rows.Count())};
    }
    fvBlockNumbers.resize(rows.Count());
    for (std::size_t i = 0; i < rows.Count(); ++i) {
        fvBlockNumbers[i] = Number(static_cast<std::int32_t>(rows[i]));
    }
    return {std::span<const double>(fvBlockNumbers)};
}

MCCommon::BlockColumn RecordColumn::Block(const ChunkRows& rows) {
    if (!fbCategorical) return NumberBlock(rows);
    SettleEntries();
    if (fbSameEntries && rows.IsDense()) {
        return std::visit(
            [&](const auto entries) {
                return MCCommon::BlockColumn{entries.subspan(rows[0], rows.Count()), fEntryEnd};
            },
            fChunkCodes.GetEntries());
    }
    return ForEntriesUpTo(fEntryEnd - 1,
                          [&](auto zero) { return CodeBlock(rows, Room<decltype(zero)>()); });
}

template <class Entry>
Cells<Entry>& RecordColumn::Room() {
    if (!std::holds_alternative<Cells<Entry>>(fBlockCodes)) fBlockCodes = Cells<Entry>();
    return std::get<Cells<Entry>>(fBlockCodes);
}

void RecordColumn::LearnBlock(const MCCommon::BlockColumn& block) {
    std::visit(
        [this](const auto values) {
            using Value = std::remove_const_t<typename decltype(values)::element_type>;
            if constexpr (std::is_same_v<Value, double>) {
                const auto [low, high] = RangeOf(values);
                Learn(low);
                Learn(high);
            } else {
                // Mostly all has been met in the first block.
                if (fMetCount == static_cast<std::int32_t>(fvMet.size())) return;
                std::vector<std::uint8_t> met(fvMet.size() + 1);
                for (const Value entry : values) met[entry] = 1;
                for (std::size_t code = 0; code < fvMet.size(); ++code) {
                    if (met[code + 1] != 0) Learn(static_cast<double>(code));
                }
            }
        },
        block.fValues);
}

std::vector<std::int64_t> RecordColumn::UnknownCases(const ChunkRows& rows) const {
    std::vector<std::int64_t> cases;
    if (!fbSomeUnknown) return cases;
    std::visit(
        [&](const auto entries) {
            for (std::size_t i = 0; i < rows.Count(); ++i) {
                const std::size_t entry = entries[rows[i]];
                if (entry != 0 && fvCodes[entry - 1] == kUnknown) cases.push_back(rows.Cases()[i]);
            }
        },
        fChunkCodes.GetEntries());
    return cases;
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
    OpenNumbers& open = fNumbers[index];
    const std::int64_t chunk = fRow / kChunkRows;
    if (chunk != open.fChunk) {
        open.fNumbers = column.Numbers(static_cast<std::int32_t>(chunk), open.fBuffer);
        open.fChunk = chunk;
    }
    return open.fNumbers[static_cast<std::size_t>(fRow % kChunkRows)];
}

void CaseReader::SetColumnValue(std::int32_t column, double value) {
    HostSession::Active().New().Set(column, fRow, value);
}

void CaseReader::SetColumnValue(std::int32_t column, const std::string& text, std::int32_t type) {
    HostSession::Active().New().Set(column, fRow, text, type);
}

void CaseReader::SetColumnValues(std::int32_t column, std::span<const double> values) {
    PREDSEL_ASSERT(values.size() == fBlock.size(), "one value a record of the block");
    HostSession::Active().New().Set(column, fBlock, values);
}

void CaseReader::SetColumnTexts(std::int32_t column, std::span<const std::int32_t> places,
                                const std::vector<std::string>& texts, std::int32_t type) {
    PREDSEL_ASSERT(places.size() == fBlock.size(), "one text a record of the block");
    HostSession::Active().New().Set(column, fBlock, places, texts, type);
}

}  // namespace embedded

UAAdapterState::UAAdapterState(const UAVarValidSpecs& specs, const embedded::DataSet& data)
    : fData(data),
      fRowEnd(data.RowCount()),
      fExecutor(embedded::HostSession::Active().Options().fThreads),
      fReader(data),
      fWeightColumn(specs.GetWeightColumn()),
      fbUserMissExclude(specs.GetUserMissExclude()) {
    const std::int32_t columns = specs.GetNRecordVars();
    fvColumns.reserve(static_cast<std::size_t>(columns));
    PrepareCategories(specs);
    for (std::int32_t column = 0; column < columns; ++column) {
        const std::int32_t variable = specs.GetKOLTVarIndex(column);
        fColumnOf.emplace(variable, fvColumns.size());
        fvColumns.emplace_back(data, variable, specs.GetKOLTCatVar(variable), fbUserMissExclude);
    }
    fvUnknownRows.resize(fvColumns.size());
    SettleOpenRows();
    embedded::HostSession& session = embedded::HostSession::Active();
    session.SetAdapter(this);
    if (fWeightColumn < 0) return;
    bool fractional = false;
    fvValidCases = embedded::ValidWeights(data, specs.GetKOLTVarIndex(fWeightColumn), fractional);
    session.Report().fbFractionalWeights = fractional;
    RunByColumn(data.RowCount(),
                [this](std::size_t column) { fvColumns[column].KeepCategoriesOf(fvValidCases); });
}

// Side by side what the columns would make one after the other when they are first asked.
void UAAdapterState::PrepareCategories(const UAVarValidSpecs& specs) {
    std::vector<std::int32_t> variables;
    for (std::int32_t column = 0; column < specs.GetNRecordVars(); ++column) {
        const std::int32_t variable = specs.GetKOLTVarIndex(column);
        if (specs.GetKOLTCatVar(variable)) variables.push_back(variable);
    }
    std::sort(variables.begin(), variables.end());
    variables.erase(std::unique(variables.begin(), variables.end()), variables.end());
    fExecutor.Run(static_cast<std::int32_t>(variables.size()), [&](std::int32_t i) {
        fData.GetColumn(variables[static_cast<std::size_t>(i)]).Categories();
    });
}

void UAAdapterState::RunByColumn(std::int64_t rows, const std::function<void(std::size_t)>& task) {
    fExecutor.RunOver(rows, fvColumns.size(), task);
}

// What is counted are the buffers of the open rows; copies that blocks are made of come on top.
void UAAdapterState::SettleOpenRows() {
    std::int64_t rowBytes = 0;
    for (const embedded::RecordColumn& column : fvColumns) rowBytes += column.OpenBytes();
    fOpenRows = embedded::RowsToOpen(rowBytes);
}

void UAAdapterState::Open(std::int64_t firstRow) {
    const embedded::ChunkPart part{static_cast<std::int32_t>(firstRow / embedded::kChunkRows),
                                   static_cast<std::int32_t>(firstRow % embedded::kChunkRows),
                                   fOpenRows};
    RunByColumn(std::min<std::int64_t>(fOpenRows, fData.RowCount()),
                [&](std::size_t column) { fvColumns[column].Open(part); });
}

void UAAdapterState::MakeBlock(const embedded::ChunkRows& rows, MCCommon::RecordBlock& block) {
    block.fRows = static_cast<std::int32_t>(rows.Count());
    block.fvColumns.resize(fvColumns.size());
    std::vector<std::vector<std::int64_t>> unknown(fvColumns.size());
    const bool learning = fPassesEnded == 0;
    RunByColumn(block.fRows, [&](std::size_t i) {
        embedded::RecordColumn& column = fvColumns[i];
        block.fvColumns[i] = column.Block(rows);
        if (learning) {
            column.LearnBlock(block.fvColumns[i]);
        } else {
            unknown[i] = column.UnknownCases(rows);
        }
    });
    for (std::size_t i = 0; i < unknown.size(); ++i) {
        for (const std::int64_t row : unknown[i]) NoteUnknown(i, row);
    }
    fReader.SetBlock(rows.Cases());
}

UAAdapterState::~UAAdapterState() { embedded::HostSession::Active().SetAdapter(nullptr); }

embedded::RecordColumn& UAAdapterState::ColumnOf(std::int32_t variable) {
    const auto found = fColumnOf.find(variable);
    PREDSEL_ASSERT(found != fColumnOf.end(), "the variable is registered");
    return fvColumns[found->second];
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
