#include <gtest/gtest.h>

#include "embedded/HostSession.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/data/DataSetBuilder.h"
#include "embedded/output/Report.h"
#include "host/Data.h"

namespace embedded {
namespace {

TEST(ProcedureDataSource, ShowsTheActiveDataSet) {
    DataSet data = DataSetBuilder().Numbers("x", {1, 2}).Numbers("w", {1, 2}).Weight().Build();
    const CommandScript script = ParseCommandText("SELECTPRED x;", "test");
    ASSERT_EQ(script.fvCommands.size(), 1U);
    CommandReport report;
    const HostSession session(data, script.fvCommands[0], report);
    ProcedureDataSource source;
    source.SetMaxObsAdded(3);
    EXPECT_EQ(source.ColumnCount(), 2);
    EXPECT_EQ(source.GetVariable(0).GetName(), "x");
    EXPECT_EQ(source.GetWeightVarIndex(), 1);
}

TEST(ProcedureDataSource, UnknownLevelsAreSettledOnDemand) {
    DataSet data = DataSetBuilder().Numbers("x", {1, 2.5}).Strings("s", {"a", "b"}).Build();
    data.MutableVariable(0).SetMeasurementLevel(kLevelUnknown);
    data.MutableVariable(1).SetMeasurementLevel(kLevelOrdinal);
    const CommandScript script = ParseCommandText("SELECTPRED x;", "test");
    CommandReport report;
    const HostSession session(data, script.fvCommands.at(0), report);
    ProcedureDataSource source;
    EXPECT_EQ(source.GetVariable(0).GetMeasurementLevel(), kLevelUnknown);
    AdjustMeasurementLevels(source);
    EXPECT_EQ(source.GetVariable(0).GetMeasurementLevel(), kLevelScale);
    EXPECT_EQ(source.GetVariable(1).GetMeasurementLevel(), kLevelOrdinal);
    EXPECT_EQ(source.GetWeightVarIndex(), -1);
}

}  // namespace
}  // namespace embedded
