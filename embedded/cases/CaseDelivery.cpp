#include "host/CaseDelivery.h"

#include <algorithm>
#include <chrono>
#include <cstddef>

#include "embedded/HostSession.h"
#include "embedded/cases/AdapterState.h"
#include "host/Assertion.h"
#include "host/Output.h"
#include "host/Progress.h"

// --- UAVarValidSpecs ----------------------------------------------------------------------------

UAVarValidSpecs::UAVarValidSpecs(bool /*procedure*/, bool userMissExclude, bool /*useWeights*/)
    : fbUserMissExclude(userMissExclude) {}

UAVarValidSpecs::~UAVarValidSpecs() = default;

std::int32_t UAVarValidSpecs::AddVariable(std::int32_t index, bool isCategorical) {
    fvIndices.push_back(index);
    fCategorical.emplace(index, isCategorical);
    return GetNRecordVars() - 1;
}

std::int32_t UAVarValidSpecs::SetWeightVar(std::int32_t index) {
    fWeightColumn = AddVariable(index, false);
    return fWeightColumn;
}

void UAVarValidSpecs::AddVariables(const std::vector<std::int32_t>& indices,
                                   std::vector<std::int32_t>& columnsOut,
                                   const std::vector<bool>& flags) {
    PREDSEL_ASSERT(indices.size() == flags.size(), "one flag a variable");
    columnsOut.clear();
    for (std::size_t i = 0; i < indices.size(); ++i) {
        columnsOut.push_back(AddVariable(indices[i], flags[i]));
    }
}

std::int32_t UAVarValidSpecs::GetNRecordVars() const {
    return static_cast<std::int32_t>(fvIndices.size());
}

bool UAVarValidSpecs::GetKOLTCatVar(std::int32_t index) const {
    const auto found = fCategorical.find(index);
    return found != fCategorical.end() && found->second;
}

std::int32_t UAVarValidSpecs::GetKOLTVarIndex(std::int32_t column) const {
    return fvIndices[static_cast<std::size_t>(column)];
}

// --- UAInputAdapter -----------------------------------------------------------------------------

UAInputAdapter::UAInputAdapter(UAVarValidSpecs* specs, ProcedureDataSource& /*source*/)
    : fpState(std::make_unique<UAAdapterState>(*specs, embedded::HostSession::Active().Data())) {}

UAInputAdapter::~UAInputAdapter() = default;

std::int32_t UAInputAdapter::GetCatVarSize(std::int32_t index) const {
    return fpState->ColumnOf(index).MetCategories();
}

double UAInputAdapter::GetContMinValue(std::int32_t index) const {
    return fpState->ColumnOf(index).Min();
}

double UAInputAdapter::GetContMaxValue(std::int32_t index) const {
    return fpState->ColumnOf(index).Max();
}

bool UAInputAdapter::DecodeCatValue(std::int32_t index, std::int32_t code, std::int32_t& indexOut,
                                    KoltObs& valueOut) const {
    indexOut = index;
    return fpState->ColumnOf(index).Decode(code, valueOut);
}

void UAInputAdapter::ReorderCategories(std::int32_t index, bool ascending) {
    PREDSEL_ASSERT(fpState->fPassesEnded > 0, "the first pass has ended");
    embedded::RecordColumn& column = fpState->ColumnOf(index);
    PREDSEL_ASSERT(column.IsCategorical(), "the variable is categorical");
    column.Reorder(ascending);
}

std::int32_t UAInputAdapter::GetDataPassCount() const { return fpState->fPassesEnded; }

std::int32_t UAInputAdapter::GetCaseCount() const {
    return static_cast<std::int32_t>(fpState->fCasesRead);
}

KOLT_InputCaseIterator* UAInputAdapter::GetDSIterator() const { return fpState->Reader(); }

// --- UACaseValueReader --------------------------------------------------------------------------

struct UACaseValueReader::Impl {
    Impl(UAAdapterState& state, std::int32_t index, bool includeUserMissing)
        : fState(state),
          fbString(!state.fData.GetColumn(index).IsNumeric()),
          // A number need not be looked up among the categories.
          fColumn(state.fData, index, fbString, !includeUserMissing) {}

    UAAdapterState& fState;
    bool fbString;
    embedded::RecordColumn fColumn;
    std::int32_t fChunk = -1;
};

UACaseValueReader::UACaseValueReader(const UAInputAdapter& adapter, std::int32_t index,
                                     bool includeUserMissing)
    : fpImpl(std::make_unique<Impl>(adapter.State(), index, includeUserMissing)) {}

UACaseValueReader::~UACaseValueReader() = default;

bool UACaseValueReader::UpdateValid() const {
    Impl& reader = *fpImpl;
    const embedded::CaseReader* at = reader.fState.Reader();
    PREDSEL_ASSERT(at != nullptr, "a pass is under way");
    const auto chunk = static_cast<std::int32_t>(at->Row() / embedded::kChunkRows);
    if (chunk != reader.fChunk) reader.fColumn.Open(chunk);
    reader.fChunk = chunk;
    const double value =
        reader.fColumn.Value(static_cast<std::int32_t>(at->Row() % embedded::kChunkRows));
    return reader.fbString ? value >= 0.0 : value != MCMV::gMissingValue;
}

// --- UAProcDataSourceIter -----------------------------------------------------------------------

namespace {

// How far a pass over the cases has come: "records" read of "totalRecords" in the "pass", counted
// from 1, in seconds.
class PassProgress final : public ProgressReport {
 public:
    PassProgress(std::int64_t records, std::int64_t total, std::int32_t pass, double elapsed)
        : fRecords(records), fTotal(total), fPass(pass), fElapsed(elapsed) {}
    std::int32_t GetInteger(const std::string& name) const override {
        if (name == "records") return static_cast<std::int32_t>(fRecords);
        if (name == "totalRecords") return static_cast<std::int32_t>(fTotal);
        return name == "pass" ? fPass : -1;
    }
    double GetDouble(const std::string& name) const override {
        return name == "elapsedTime" ? fElapsed : MCMV::gMissingValue;
    }

 private:
    std::int64_t fRecords;
    std::int64_t fTotal;
    std::int32_t fPass;
    double fElapsed;
};

}  // namespace

struct UAProcDataSourceIter::Impl {
    explicit Impl(UAAdapterState& state) : fState(state) {
        for (MCCommon::Record& record : fRecords) {
            record = MCCommon::Record(static_cast<std::int32_t>(state.fvColumns.size()));
        }
    }

    bool IsUnderWay() const { return fState.fpUnderWay == this; }

    void Start() {
        fState.BeginPass(this);
        fOpenRow = -1;
        fbStarted = true;
        fbOnRecord = false;
        fStart = std::chrono::steady_clock::now();
    }

    // Rows are opened when one of them gives a record: a block of those before stays valid until
    // then.
    void OpenRowsOf(std::int64_t row) {
        const std::int64_t first = row - row % fState.OpenRows();
        if (first == fOpenRow) return;
        fOpenRow = first;
        fState.Open(first);
    }

    // To the next case, which counts as read.
    void MoveTo(std::int64_t row) {
        fState.Reader()->MoveTo(row);
        ++fState.fCasesRead;
        if (row % embedded::kChunkRows == 0) ReportProgress(row);
    }

    void ReportProgress(std::int64_t row) const {
        ProgressListener* listener = embedded::HostSession::Active().Progress();
        if (!listener) return;
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - fStart;
        listener->OnProgress(
            PassProgress(row, fState.fData.RowCount(), fState.fPassesEnded + 1, elapsed.count()));
    }

    // Makes the record of the case that the reader stands on.
    void MakeRecord() {
        // The record given out before stays as it is.
        fCurrent = 1 - fCurrent;
        MCCommon::Record& record = fRecords[fCurrent];
        const std::int64_t at = fState.Reader()->Row();
        OpenRowsOf(at);
        const auto row = static_cast<std::int32_t>(at - fOpenRow);
        const bool learning = fState.fPassesEnded == 0;
        for (std::int32_t i = 0; i < record.Size(); ++i) {
            embedded::RecordColumn& column = fState.fvColumns[static_cast<std::size_t>(i)];
            const double value = column.Value(row);
            if (learning) {
                column.Learn(value);
            } else if (column.IsUnknown(row)) {
                fState.NoteUnknown(static_cast<std::size_t>(i), at);
            }
            record[i] = value;
        }
        fbOnRecord = true;
    }

    UAAdapterState& fState;
    std::vector<std::int64_t> fvBlockCases;
    MCCommon::RecordBlock fBlock;
    MCCommon::Record fRecords[2];
    std::size_t fCurrent = 0;
    std::int64_t fOpenRow = -1;  // the first that is open
    bool fbStarted = false;
    bool fbOnRecord = false;  // the pass stands on fRecords[fCurrent]
    std::chrono::steady_clock::time_point fStart;
};

UAProcDataSourceIter::UAProcDataSourceIter(UAInputAdapter& adapter, bool startNow)
    : fpImpl(std::make_unique<Impl>(adapter.State())) {
    // The first case is read when it is asked for: the subclass that preprocesses it is not built.
    if (startNow) fpImpl->Start();
}

UAProcDataSourceIter::~UAProcDataSourceIter() { StopPass(); }

std::int32_t UAProcDataSourceIter::NewPass() { return NewPass(true); }

std::int32_t UAProcDataSourceIter::NewPass(bool standOnFirst) {
    if (fpImpl->fState.fbLastPass) {
        StopPass();
        return MCCommon::kITER_NO_NEW_PASS;
    }
    fpImpl->Start();
    if (standOnFirst) HasMore();
    return GetFailReason();
}

void UAProcDataSourceIter::StopPass() {
    if (fpImpl->IsUnderWay()) fpImpl->fState.BreakOffPass();
    fpImpl->fbOnRecord = false;
}

bool UAProcDataSourceIter::HasMore() {
    Impl& pass = *fpImpl;
    if (!pass.fbStarted) pass.Start();
    if (!pass.IsUnderWay()) return false;
    UAAdapterState& state = pass.fState;
    while (!pass.fbOnRecord) {
        const std::int64_t row = state.fCasesRead;
        if (row >= state.fRowEnd) {
            pass.ReportProgress(row);
            state.EndPass();
            return false;
        }
        pass.MoveTo(row);
        if (PreprocessCase() && state.IsValidCase(row)) pass.MakeRecord();
    }
    return true;
}

const MCCommon::RecordBlock* UAProcDataSourceIter::NextBlock(std::int32_t maxRows) {
    PREDSEL_ASSERT(maxRows > 0, "a block has a record");
    if (!HasMore()) return nullptr;
    Impl& pass = *fpImpl;
    UAAdapterState& state = pass.fState;
    const std::int64_t firstRow = pass.fOpenRow;
    const std::int64_t end = std::min(firstRow + state.OpenRows(), state.fRowEnd);
    const auto most = static_cast<std::size_t>(maxRows);
    // The case that the pass stands on has been preprocessed.
    std::vector<std::int64_t>& cases = pass.fvBlockCases;
    cases.assign(1, state.Reader()->Row());
    while (cases.size() < most && state.fCasesRead < end) {
        const std::int64_t row = state.fCasesRead;
        pass.MoveTo(row);
        if (PreprocessCase() && state.IsValidCase(row)) cases.push_back(row);
    }
    state.MakeBlock(embedded::ChunkRows(cases, firstRow), pass.fBlock);
    pass.fbOnRecord = false;
    HasMore();
    return &pass.fBlock;
}

MCCommon::BlockExecutor* UAProcDataSourceIter::GetExecutor() {
    embedded::TaskExecutor& executor = fpImpl->fState.fExecutor;
    return executor.Threads() > 1 ? &executor : nullptr;
}

std::span<const std::int64_t> UAProcDataSourceIter::GetBlockCases() const {
    return fpImpl->fvBlockCases;
}

const MCCommon::Record* UAProcDataSourceIter::Next() {
    if (!HasMore()) return nullptr;
    const MCCommon::Record* record = &fpImpl->fRecords[fpImpl->fCurrent];
    fpImpl->fbOnRecord = false;
    HasMore();
    return record;
}

const MCCommon::Record* UAProcDataSourceIter::Current() const {
    return fpImpl->IsUnderWay() && fpImpl->fbOnRecord ? &fpImpl->fRecords[fpImpl->fCurrent]
                                                      : nullptr;
}

std::int32_t UAProcDataSourceIter::GetFailReason() const {
    const Impl& pass = *fpImpl;
    if (!pass.fbStarted) return MCCommon::kITER_SUCCESS;
    // A pass whose first case has not been read yet has more if there is any case.
    const bool more = pass.IsUnderWay() && (pass.fbOnRecord || pass.fState.HasValidCase());
    return more ? MCCommon::kITER_SUCCESS : MCCommon::kITER_NO_VALID_CASE;
}

void UAProcDataSourceIter::SetLastPass() { fpImpl->fState.fbLastPass = true; }

KOLT_InputCaseIterator* UAProcDataSourceIter::GetProcDS() const { return fpImpl->fState.Reader(); }

// --- UAInpAdaptMsg ------------------------------------------------------------------------------

UAInpAdaptMsg::UAInpAdaptMsg(ProcedureDataSource& /*source*/) {}

void UAInpAdaptMsg::NoValidCases() const {
    BpError(BpString("No valid cases...", true), kBpErrorShow, kBpError);
}

void UAInpAdaptMsg::NoValidCasesForSelect() const {
    BpError(BpString("No columns in the data...", true), kBpErrorShow, kBpWarning);
}
