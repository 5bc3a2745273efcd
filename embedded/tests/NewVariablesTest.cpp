// Variables that commands make.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "embedded/CommandRunner.h"
#include "embedded/data/DataSetBuilder.h"
#include "host/CommandLanguage.h"
#include "host/Output.h"

namespace {

using embedded::CommandReport;
using embedded::CommandStatus;
using embedded::DataSet;
using embedded::DataSetBuilder;

DataSet Data() {
    return DataSetBuilder()
        .Numbers("x", {1, 2, 3})
        .Strings("pred2", {"a", "b", "c"})
        .Strings("Taken", {"a", "b", "c"})
        .Build();
}

std::vector<CommandReport> RunText(DataSet& data, embedded::ProcedureEntry entry,
                                   const std::string& commands = "NAIVEBAYES x;") {
    return embedded::RunCommands(data, embedded::ParseCommandText(commands, "test").fvCommands,
                                 entry);
}

std::vector<std::int32_t> gCounts;

// Makes a number and a date.
void MakeTwo() {
    ProcedureDataSource source;
    gCounts.push_back(source.ColumnCount());
    source.SetMaxObsAdded(2);
    for (const std::int32_t format : {kFormatNumber, kFormatDate}) {
        const VarSpecObj names("PREDVAL", "SAVE", std::string("NAIVEBAYES"), source, false);
        KoltVarName name;
        ASSERT_TRUE(names.NewVarNameByRoot(KoltVarName("made"), name));
        std::int32_t column = -1;
        KOLT_Variable* variable = source.MakeVariable(0, column);
        ASSERT_NE(variable, nullptr);
        EXPECT_EQ(column, source.ColumnCount() - 1);
        variable->SetName(name.GetString());
        variable->SetFormat(format, 8, 2);
        variable->SetWriteFormat(format, 9, 3);
        variable->SetAlignment(kAlignLeft);
        variable->SetLabel("Made here");
        variable->SetMeasurementLevel(kLevelScale);
        EXPECT_EQ(&source.GetVariable(column), variable);
    }
}

void MakeTwoAndFail() {
    MakeTwo();
    BpError(BpString("this went wrong", false), kBpErrorShow, kBpError);
}

TEST(NewVariables, AreInTheDataSetForTheCommandsAfterIt) {
    DataSet data = Data();
    gCounts.clear();
    const auto reports = RunText(data, &MakeTwo, "NAIVEBAYES x; NAIVEBAYES x;");
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(gCounts, (std::vector<std::int32_t>{3, 5}));
    EXPECT_EQ(reports[0].fvSavedVariables, (std::vector<std::string>{"made", "made1"}));
    EXPECT_EQ(reports[1].fvSavedVariables, (std::vector<std::string>{"made2", "made3"}));
    ASSERT_EQ(data.ColumnCount(), 7);
    EXPECT_EQ(data.FindVariable("made3"), 6);
    const KOLT_Variable& variable = data.Variable(3);
    EXPECT_EQ(variable.GetLabel(), "Made here");
    EXPECT_EQ(variable.GetMeasurementLevel(), kLevelScale);
    EXPECT_EQ(variable.GetWriteFormat(), (KoltFormat{kFormatNumber, 9, 3}));
    EXPECT_EQ(variable.GetAlignment(), kAlignLeft);
    EXPECT_EQ(data.Kind(3), embedded::ColumnKind::kNumber);
    EXPECT_EQ(data.Kind(4), embedded::ColumnKind::kDate);
    EXPECT_EQ(data.GetColumn(3).ValidCount(), 0) << "missing until written";
}

TEST(NewVariables, OfAFailedCommandAreDropped) {
    DataSet data = Data();
    const auto reports = RunText(data, &MakeTwoAndFail);
    EXPECT_EQ(reports[0].fStatus, CommandStatus::Failed);
    EXPECT_TRUE(reports[0].fvSavedVariables.empty());
    EXPECT_EQ(data.ColumnCount(), 3);
    EXPECT_EQ(data.FindVariable("made"), -1);
}

TEST(NewVariables, MustNotTakeMoreRoomThanWasAskedFor) {
    DataSet data = Data();
    const auto reports = RunText(data, [] {
        ProcedureDataSource source;
        source.SetMaxObsAdded(3);
        std::int32_t column = -1;
        EXPECT_NE(source.MakeVariable(9, column), nullptr) << "two slots";
        source.MakeVariable(9, column);
    });
    EXPECT_EQ(reports[0].fStatus, CommandStatus::Failed);
    ASSERT_EQ(reports[0].fvMessages.size(), 1U);
    EXPECT_EQ(reports[0].fvMessages[0].fKey, "No room for new variable...");
}

struct RootCase {
    const char* fName;
    const char* fRoot;
    std::int32_t fCount;                  // 0: one name by NewVarNameByRoot
    std::vector<std::string> fvExpected;  // none: refused
};
void PrintTo(const RootCase& rootCase, std::ostream* out) { *out << rootCase.fName; }
class NewNamesByRoot : public testing::TestWithParam<RootCase> {};

const RootCase* gRootCase = nullptr;

TEST_P(NewNamesByRoot, AreFreeAndConsecutive) {
    DataSet data = Data();
    gRootCase = &GetParam();
    const auto reports = RunText(data, [] {
        const ProcedureDataSource source;
        const VarSpecObj names("PREDPROB", "SAVE", std::string("NAIVEBAYES"), source, false);
        const KoltVarName root{gRootCase->fRoot};
        std::vector<KoltVarName> made(1);
        const bool done = gRootCase->fCount == 0
                              ? names.NewVarNameByRoot(root, made[0])
                              : names.NewVarNamesByRoot(root, gRootCase->fCount, made);
        EXPECT_EQ(done, !gRootCase->fvExpected.empty());
        std::vector<std::string> texts;
        for (const KoltVarName& name : made) texts.push_back(name.GetString());
        if (done) {
            EXPECT_EQ(texts, gRootCase->fvExpected);
        }
    });
    EXPECT_EQ(reports[0].fStatus == CommandStatus::Ok, !GetParam().fvExpected.empty());
    if (reports[0].fStatus != CommandStatus::Ok) {
        EXPECT_EQ(reports[0].fvMessages.at(0).fKey, "Invalid new name ^1 in ^2...");
    }
}
INSTANTIATE_TEST_SUITE_P(
    Roots, NewNamesByRoot,
    testing::Values(RootCase{"FreeRoot", "free", 0, {"free"}},
                    RootCase{"TakenRootButForCase", "tAKEN", 0, {"tAKEN1"}},
                    RootCase{"SeveralFromOne", "p", 3, {"p1", "p2", "p3"}},
                    RootCase{"SeveralBehindATakenOne", "Pred", 2, {"Pred3", "Pred4"}},
                    RootCase{"OneBeforeATakenOne", "pred", 1, {"pred1"}},
                    RootCase{"EmptyRoot", "", 0, {}},
                    RootCase{"RootWithABlankBefore", " p", 2, {}}));

}  // namespace
