// A data set without columns cannot be parsed against, so it has to lose them after the parse. This
// program has a data source of its own that does.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "backend/predselect/tests/RunFixture.h"
#include "embedded/HostSession.h"
#include "embedded/data/DataSet.h"
#include "host/Data.h"

namespace {

std::int32_t gQuestions = 0;      // for the number of columns, so far
std::int32_t gLastQuestion = -1;  // the one that is answered with 0
std::int32_t gReservations = 0;   // of slots for new variables
std::int32_t gAskedBefore = -1;   // the questions before the last reservation

}  // namespace

ProcedureDataSource::ProcedureDataSource() = default;
ProcedureDataSource::~ProcedureDataSource() = default;
std::int32_t ProcedureDataSource::ColumnCount() const {
    if (++gQuestions == gLastQuestion) return 0;
    return embedded::HostSession::Active().Data().ColumnCount();
}
const KOLT_Variable& ProcedureDataSource::GetVariable(std::int32_t index) const {
    return embedded::HostSession::Active().Data().Variable(index);
}
KOLT_Variable* ProcedureDataSource::MakeVariable(std::int32_t, std::int32_t&) { return nullptr; }
std::int32_t ProcedureDataSource::GetWeightVarIndex() const { return -1; }
void ProcedureDataSource::SetMaxObsAdded(std::uint32_t) {
    ++gReservations;
    gAskedBefore = gQuestions;
}
void AdjustMeasurementLevels(ProcedureDataSource&) {}

namespace {

embedded::DataSet Data() {
    return embedded::DataSetBuilder()
        .Strings("y", {"a", "b", "a", "b"})
        .Strings("f", {"p", "q", "p", "p"})
        .Build();
}

class WithoutColumns : public testing::Test {
 protected:
    void SetUp() override {
        gQuestions = 0;
        gLastQuestion = -1;
        gReservations = 0;
        gAskedBefore = -1;
    }
};

TEST_F(WithoutColumns, ADataSetHasItsMessageAndTheRunGoesOn) {
    const CommandRun before("SELECTPRED y;", Data());
    ASSERT_EQ(before.Status(), "ok");
    ASSERT_GT(gQuestions, 0);
    // The entry's own question is the last of a run.
    gLastQuestion = gQuestions;
    gQuestions = 0;
    const CommandRun run("SELECTPRED y;", Data());
    EXPECT_EQ(run.Messages().front(), "warning No columns in the data...");
    EXPECT_EQ(run.Json()["notes"].size(), 2U) << "factory and output were made";
    EXPECT_EQ(run.TableIds(), before.TableIds());
}

TEST_F(WithoutColumns, NoSlotsAreReserved) {
    const std::string command = "NAIVEBAYES y BY f /SAVE PREDVAL PREDPROB;";
    const CommandRun before(command, Data());
    ASSERT_EQ(gReservations, 1);
    gLastQuestion = gAskedBefore;
    gQuestions = 0;
    const CommandRun run(command, Data());
    EXPECT_EQ(run.Messages().front(), "warning No columns in the data...");
    EXPECT_EQ(gReservations, 1) << "none more";
}

}  // namespace
