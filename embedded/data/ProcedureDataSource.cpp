#include "embedded/HostSession.h"
#include "embedded/data/DataSet.h"
#include "host/Data.h"
#include "host/Output.h"

namespace {

embedded::DataSet& ActiveData() { return embedded::HostSession::Active().Data(); }

}  // namespace

// The session holds the active data set before and after the procedure: nothing to open or close.
ProcedureDataSource::ProcedureDataSource() = default;
ProcedureDataSource::~ProcedureDataSource() = default;

std::int32_t ProcedureDataSource::ColumnCount() const {
    return ActiveData().ColumnCount() + embedded::HostSession::Active().New().Count();
}

const KOLT_Variable& ProcedureDataSource::GetVariable(std::int32_t index) const {
    return embedded::HostSession::Active().Variable(index);
}

KOLT_Variable* ProcedureDataSource::MakeVariable(std::int32_t type, std::int32_t& columnOut) {
    KOLT_Variable* variable = embedded::HostSession::Active().New().Make(type, columnOut);
    if (variable == nullptr) {
        BpError(BpString("No room for new variable...", true), kBpErrorShow, kBpError);
    }
    return variable;
}

std::int32_t ProcedureDataSource::GetWeightVarIndex() const { return ActiveData().WeightIndex(); }

void ProcedureDataSource::SetMaxObsAdded(std::uint32_t slots) {
    embedded::HostSession::Active().New().SetSlots(slots);
}

void AdjustMeasurementLevels(ProcedureDataSource& /*source*/) {
    ActiveData().SettleMeasurementLevels();
}
