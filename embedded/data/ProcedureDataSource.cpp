#include "embedded/HostSession.h"
#include "embedded/data/DataSet.h"
#include "host/Data.h"

namespace {

embedded::DataSet& ActiveData() { return embedded::HostSession::Active().Data(); }

}  // namespace

// The session holds the active data set before and after the procedure: nothing to open or close.
ProcedureDataSource::ProcedureDataSource() = default;
ProcedureDataSource::~ProcedureDataSource() = default;

std::int32_t ProcedureDataSource::ColumnCount() const { return ActiveData().ColumnCount(); }

const KOLT_Variable& ProcedureDataSource::GetVariable(std::int32_t index) const {
    return ActiveData().Variable(index);
}

std::int32_t ProcedureDataSource::GetWeightVarIndex() const { return ActiveData().WeightIndex(); }

// Columns are added one by one: no room has to be set aside in each case.
void ProcedureDataSource::SetMaxObsAdded(std::uint32_t /*slots*/) {}

void AdjustMeasurementLevels(ProcedureDataSource& /*source*/) {
    ActiveData().SettleMeasurementLevels();
}
