#include "host/CaseDelivery.h"

#include <algorithm>
#include <chrono>

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
    fvCategorical.push_back(isCategorical);
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
    const auto found = std::find(fvIndices.begin(), fvIndices.end(), index);
    return found != fvIndices.end() &&
           fvCategorical[static_cast<std::size_t>(found - fvIndices.begin())];
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

// --- UAProcDataSourceIter -----------------------------------------------------------------------

namespace {

// How far a pass over the cases has come: "records" read of "totalRecords", in seconds.
class PassProgress final : public ProgressReport {
 public:
    PassProgress(std::int64_t records, std::int64_t total, double elapsed)
        : fRecords(records), fTotal(total), fElapsed(elapsed) {}
    std::int32_t GetInteger(const std::string& name) const override {
        if (name == "records") return static_cast<std::int32_t>(fRecords);
        if (name == "totalRecords") return static_cast<std::int32_t>(fTotal);
        return -1;
    }
    double GetDouble(const std::string& name) const override {
        return name == "elapsedTime" ? fElapsed : MCMV::gMissingValue;
    }

 private:
    std::int64_t fRecords;
    std::int64_t fTotal;
    double fElapsed;
};

}  // namespace

struct UAProcDataSourceIter::Impl {
    explicit Impl(UAAdapterState& state)
        : fState(state), fRecord(static_cast<std::int32_t>(state.fvColumns.size())) {}

    void Start() {
        fRow = -1;
        fDelivered = 0;
        fChunk = -1;
        fbStarted = true;
        fbReady = false;
        fStart = std::chrono::steady_clock::now();
    }

    void OpenChunkOf(std::int64_t row) {
        const auto chunk = static_cast<std::int32_t>(row / embedded::kChunkRows);
        if (chunk == fChunk) return;
        fChunk = chunk;
        for (embedded::RecordColumn& column : fState.fvColumns) column.Open(chunk);
        ReportProgress(row);
    }

    void ReportProgress(std::int64_t row) const {
        ProgressListener* listener = embedded::HostSession::Active().Progress();
        if (!listener) return;
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - fStart;
        listener->OnProgress(PassProgress(row, fState.fData.RowCount(), elapsed.count()));
    }

    UAAdapterState& fState;
    MCCommon::Record fRecord;
    std::int64_t fRow = -1;  // the case that Next will give, once fbReady
    std::int64_t fDelivered = 0;
    std::int32_t fChunk = -1;  // the open one
    bool fbStarted = false;
    bool fbReady = false;  // fRow stands on a case, or behind the last
    std::chrono::steady_clock::time_point fStart;
};

UAProcDataSourceIter::UAProcDataSourceIter(UAInputAdapter& adapter, bool startNow)
    : fpImpl(std::make_unique<Impl>(adapter.State())) {
    if (startNow) fpImpl->Start();
}

UAProcDataSourceIter::~UAProcDataSourceIter() = default;

void UAProcDataSourceIter::NewPass() { fpImpl->Start(); }

bool UAProcDataSourceIter::HasMore() {
    Impl& pass = *fpImpl;
    if (!pass.fbStarted) pass.Start();
    const std::int64_t rows = pass.fState.fData.RowCount();
    while (!pass.fbReady) {
        ++pass.fRow;
        if (pass.fRow >= rows) {
            pass.fbReady = true;
            if (pass.fState.fPassesEnded++ == 0) pass.ReportProgress(rows);
        } else if (pass.fState.IsValidCase(pass.fRow)) {
            pass.OpenChunkOf(pass.fRow);
            pass.fbReady = PreprocessCase();
        }
    }
    return pass.fRow < rows;
}

const MCCommon::Record* UAProcDataSourceIter::Next() {
    if (!HasMore()) return nullptr;
    Impl& pass = *fpImpl;
    const auto row = static_cast<std::int32_t>(pass.fRow % embedded::kChunkRows);
    const bool learning = pass.fState.fPassesEnded == 0;
    for (std::int32_t i = 0; i < pass.fRecord.Size(); ++i) {
        embedded::RecordColumn& column = pass.fState.fvColumns[static_cast<std::size_t>(i)];
        const double value = column.Value(row);
        if (learning) column.Learn(value);
        pass.fRecord[i] = value;
    }
    ++pass.fDelivered;
    pass.fbReady = false;
    return &pass.fRecord;
}

std::int32_t UAProcDataSourceIter::GetFailReason() const {
    const Impl& pass = *fpImpl;
    const bool ended = pass.fbReady && pass.fRow >= pass.fState.fData.RowCount();
    const bool none = ended ? pass.fDelivered == 0 : pass.fbStarted && !pass.fState.HasValidCase();
    return none ? MCCommon::kITER_NO_VALID_CASE : MCCommon::kITER_SUCCESS;
}

// --- UAInpAdaptMsg ------------------------------------------------------------------------------

UAInpAdaptMsg::UAInpAdaptMsg(ProcedureDataSource& /*source*/) {}

void UAInpAdaptMsg::NoValidCases() const {
    BpError(BpString("No valid cases...", true), kBpErrorShow, kBpError);
}

void UAInpAdaptMsg::NoValidCasesForSelect() const {
    BpError(BpString("No columns in the data...", true), kBpErrorShow, kBpWarning);
}
