#include "backend/predselect/PREDSELE.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "backend/predselect/tests/RunFixture.h"
#include "embedded/HostSession.h"
#include "embedded/files/Interrupt.h"
#include "host/HostGlobals.h"
#include "host/Progress.h"

namespace {

using embedded::DataSet;
using embedded::DataSetBuilder;
using Texts = std::vector<std::string>;

constexpr double kMissing = MCMV::gMissingValue;

/// y nominal, f a factor that agrees with it mostly, x a covariate.
DataSetBuilder SmallData() {
    DataSetBuilder builder;
    builder.Strings("y", {"a", "a", "a", "a", "b", "b", "b", "b"})
        .Strings("f", {"p", "p", "p", "q", "q", "q", "q", "p"})
        .Numbers("x", {1.5, 2, 3, 2.5, 7, 8, 9, 8.25});
    return builder;
}

/// Runs the entry with a session of its own, so that a test can set the host's words before.
class Entry {
 public:
    explicit Entry(DataSet data)
        : fData(std::move(data)),
          fCommands(embedded::ParseCommandText("SELECTPRED y;", "test").fvCommands),
          fSession(fData, fCommands.front(), fReport) {}

    DataSet fData;
    std::vector<embedded::CommandTokens> fCommands;
    embedded::CommandReport fReport;
    embedded::HostSession fSession;
};

struct NameCase {
    std::string fTestName;
    std::string fCommandName;
    bool fbSelect;
};

class CommandName : public testing::TestWithParam<NameCase> {};

TEST_P(CommandName, FirstThreeCharactersDecide) {
    Entry entry(SmallData().Build());
    char* name = pvGetCmaSys()->fCommandName;
    std::fill_n(name, sizeof(CmaSysBlock::fCommandName), '\0');
    std::copy(GetParam().fCommandName.begin(), GetParam().fCommandName.end(), name);
    PREDSELE();
    const bool selected = std::any_of(
        entry.fReport.fvItems.begin(), entry.fReport.fvItems.end(), [](const auto& item) {
            const auto* table = std::get_if<embedded::ReportTable>(&item);
            return table && table->fId == "PredictorSummary";
        });
    EXPECT_EQ(selected, GetParam().fbSelect);
}
INSTANTIATE_TEST_SUITE_P(Names, CommandName,
                         testing::Values(NameCase{"Whole", "SELECTPRED", true},
                                         NameCase{"LowerCase", "selectpred", true},
                                         NameCase{"ThreeLetters", "SEL", true},
                                         NameCase{"AnythingBehind", "SeLOTHER", true},
                                         NameCase{"TwoLetters", "SE", false},
                                         NameCase{"Other", "NAIVEBAYES", false},
                                         NameCase{"Empty", "", false}),
                         [](const auto& param) { return param.param.fTestName; });

/// The level of the data's only undecided variable after the command.
std::int32_t LevelAfter(const std::string& command) {
    DataSet data = SmallData().Build();
    data.MutableVariable(2).SetMeasurementLevel(kLevelUnknown);
    const auto commands = embedded::ParseCommandText(command, "test").fvCommands;
    embedded::CommandReport report;
    const embedded::HostSession session(data, commands.front(), report);
    PREDSELE();
    return data.Variable(2).GetMeasurementLevel();
}

TEST(PREDSELE, OnlyScreeningLetsTheHostSettleMeasurementLevels) {
    EXPECT_EQ(LevelAfter("SELECTPRED y BY f;"), kLevelScale);
    EXPECT_EQ(LevelAfter("NAIVEBAYES y BY f;"), kLevelUnknown);
}

/// Runs a NAIVEBAYES command and tells how many slots its variables took.
struct SlotCase {
    std::string fTestName;
    bool fbLongTarget;
    std::string fSave;
    std::int32_t fSlots;
};
class SavedVariableSlots : public testing::TestWithParam<SlotCase> {};

// As many more numbers fit as slots were reserved and not taken.
TEST_P(SavedVariableSlots, AreReservedAheadOfTheRun) {
    DataSetBuilder builder;
    if (GetParam().fbLongTarget) {
        builder.Strings("y", {"a string of 20 bytes", "b"});
    } else {
        builder.Numbers("y", {1, 2});
    }
    DataSet data = builder.Strings("f", {"p", "q"}).Build();
    const auto commands =
        embedded::ParseCommandText("NAIVEBAYES y BY f" + GetParam().fSave + ";", "test").fvCommands;
    embedded::CommandReport report;
    embedded::HostSession session(data, commands.front(), report);
    PREDSELE();
    ASSERT_TRUE(std::none_of(report.fvMessages.begin(), report.fvMessages.end(),
                             [](auto& m) { return m.fLevel == embedded::MessageLevel::Error; }));
    std::int32_t slots = 0;
    for (std::int32_t i = 0; i < session.New().Count(); ++i) {
        const std::int32_t type = session.New().Variable(data.ColumnCount() + i).GetType();
        slots += type <= 8 ? 1 : (type + 7) / 8;
    }
    std::int32_t column = -1;
    while (slots < 100 && session.New().Make(0, column) != nullptr) ++slots;
    EXPECT_EQ(slots, GetParam().fSlots);
}
INSTANTIATE_TEST_SUITE_P(
    Requests, SavedVariableSlots,
    testing::Values(SlotCase{"NumberAndProbabilities", false, " /SAVE PREDVAL PREDPROB", 26},
                    SlotCase{"LongStringAndProbabilities", true, " /SAVE PREDVAL PREDPROB", 28},
                    SlotCase{"ValueAlone", true, " /SAVE PREDVAL", 3},
                    SlotCase{"FewProbabilities", false, " /SAVE PREDPROB(:4)", 4},
                    SlotCase{"Nothing", false, "", 0}),
    [](const auto& param) { return param.param.fTestName; });

TEST(PREDSELE, NaiveBayesWithPercentGivesTheSameSampleForTheSameSeed) {
    std::vector<std::optional<std::string>> y, f;
    for (int i = 0; i < 200; ++i) {
        y.emplace_back(i % 2 == 0 ? "a" : "b");
        f.emplace_back(i % 3 == 0 ? "p" : "q");
    }
    const auto run = [&](std::uint32_t seed) {
        return CommandRun("NAIVEBAYES y BY f /TRAININGSAMPLE PERCENT=50;",
                          DataSetBuilder().Strings("y", y).Strings("f", f).Build(),
                          embedded::RunOptions{.fSeed = seed})
            .Json()["tables"];
    };
    EXPECT_EQ(run(1), run(1));
    EXPECT_NE(run(1), run(2));
}

// A bad EXCEPT list fails by its message alone: the parse goes on and ends well.
TEST(PREDSELE, AParseThatIsTrueWithTheErrorWordSetRunsNoLaterStage) {
    const CommandRun run("SELECTPRED y /EXCEPT VARIABLES=nobody;", SmallData().Split().Build());
    EXPECT_EQ(run.Status(), "failed");
    EXPECT_EQ(run.Messages().size(), 1U) << "the list's own message, and none of a later stage";
    EXPECT_TRUE(run.Json()["notes"].empty());
    EXPECT_TRUE(run.TableIds().empty());
    EXPECT_EQ(pvGetCmnGlb()[kSplitFileCount], 1) << "restored";
}

TEST(PREDSELE, ACommandThatDoesNotParseLeavesTheHostWordsAsTheyWere) {
    const CommandRun run("SELECTPRED nobody;", SmallData().Split().Build());
    EXPECT_EQ(run.Status(), "failed");
    EXPECT_EQ(pvGetCmnGlb()[kSplitFileCount], 1);
    EXPECT_TRUE(run.TableIds().empty());
}

class SplitWatcher final : public ProgressListener {
 public:
    void OnProgress(const ProgressReport& /*report*/) override {
        fvSeen.push_back(pvGetCmnGlb()[kSplitFileCount]);
    }
    std::vector<std::int64_t> fvSeen;
};

TEST(PREDSELE, TheSplitFileCountIsZeroDuringTheRunAndBackAfterwards) {
    SplitWatcher watcher;
    const CommandRun run("SELECTPRED y WITH x;", SmallData().Split().Build(), &watcher);
    ASSERT_FALSE(watcher.fvSeen.empty());
    for (const std::int64_t count : watcher.fvSeen) EXPECT_EQ(count, 0);
    EXPECT_EQ(pvGetCmnGlb()[kSplitFileCount], 1);
    EXPECT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Messages().size(), 2U) << "split files are ignored; nothing was excluded";
}

TEST(PREDSELE, ThePreservedWordsAreKept) {
    Entry entry(SmallData().Build());
    pvGetCmnGlb()[kPreservedWordA] = 17;
    pvGetCmnGlb()[kPreservedWordB] = -4;
    PREDSELE();
    EXPECT_EQ(pvGetCmnGlb()[kPreservedWordA], 17);
    EXPECT_EQ(pvGetCmnGlb()[kPreservedWordB], -4);
}

class Thrower final : public ProgressListener {
 public:
    void OnProgress(const ProgressReport& /*report*/) override {
        throw std::runtime_error("from within the pass");
    }
};

TEST(PREDSELE, AnExceptionThatEscapesLeavesTheWordsUnrestored) {
    Thrower thrower;
    EXPECT_THROW(CommandRun("SELECTPRED y BY f;", SmallData().Split().Build(), &thrower),
                 std::runtime_error);
    EXPECT_EQ(pvGetCmnGlb()[kSplitFileCount], 0);
}

DataSet AllPredictorsConstant() {
    return DataSetBuilder()
        .Strings("y", {"a", "b", "a", "b"})
        .Strings("f", {"p", "p", "p", "p"})
        .Numbers("x", {kMissing, kMissing, kMissing, kMissing})
        .Build();
}

TEST(PREDSELE, NoPredictorLeftShowsTheExcludedTableAlone) {
    const CommandRun run("SELECTPRED y BY f WITH x;", AllPredictorsConstant());
    EXPECT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Messages(), (Texts{"warning All predictors missing or constant..."}));
    EXPECT_EQ(run.TableIds(), (Texts{"ExcludedPredictors"}));
}

TEST(PREDSELE, NoPredictorLeftAndPrintWithoutExcludedShowsNoTable) {
    const CommandRun run("SELECTPRED y BY f WITH x /PRINT CPS SUMMARY SELECTED;",
                         AllPredictorsConstant());
    EXPECT_EQ(run.Status(), "ok");
    EXPECT_TRUE(run.TableIds().empty());
}

TEST(PREDSELE, MeasurementLevelsAreSettledBeforeTheParse) {
    // y2 is a number without a declared level: two whole values make it nominal, so that the run
    // has target categories.
    DataSet data =
        DataSetBuilder().Numbers("y2", {1, 1, 2, 2}).Numbers("x", {1.5, 2.25, 7, 8}).Build();
    data.MutableVariable(0).SetMeasurementLevel(kLevelUnknown);
    const CommandRun run("SELECTPRED y2 WITH x;", std::move(data));
    EXPECT_EQ(run.Value("CaseProcessingSummary", {"y2", "1", "N"}), 2.0);
}

TEST(PREDSELE, ATimeLimitThatIsReachedEndsTheRunWithAnError) {
    // Longer than the smallest limit: a tenth of a microsecond.
    std::vector<double> x;
    std::vector<std::optional<std::string>> y;
    for (int i = 0; i < 20000; ++i) {
        x.push_back(i * 0.5);
        y.push_back(i % 2 == 0 ? "a" : "b");
    }
    const CommandRun run("SELECTPRED y WITH x /CRITERIA TIMER=0.000000001;",
                         DataSetBuilder().Strings("y", y).Numbers("x", x).Build());
    EXPECT_EQ(run.Status(), "failed");
    EXPECT_EQ(run.Messages(), (Texts{"error The time limit was reached..."}));
    EXPECT_TRUE(run.TableIds().empty());
}

class Interrupter final : public ProgressListener {
 public:
    void OnProgress(const ProgressReport& /*report*/) override { embedded::RequestInterrupt(); }
};

TEST(PREDSELE, AnInterruptEndsTheRunWithoutTables) {
    std::vector<double> x(70000);
    std::vector<std::optional<std::string>> y;
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = static_cast<double>(i);
        y.push_back(i % 3 == 0 ? "a" : "b");
    }
    Interrupter interrupter;
    const CommandRun run("SELECTPRED y WITH x;",
                         DataSetBuilder().Strings("y", y).Numbers("x", x).Build(), &interrupter);
    EXPECT_EQ(run.Status(), "interrupted");
    EXPECT_TRUE(run.TableIds().empty());
}

TEST(PREDSELE, SeveralCommandsRunInTurnAndStopBehindTheFirstThatFails) {
    DataSet data = SmallData().Build();
    const auto script =
        embedded::ParseCommandText("SELECTPRED y; SELECTPRED nobody; SELECTPRED y BY f;", "test");
    const auto reports = embedded::RunCommands(data, script.fvCommands, &PREDSELE);
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(reports[0].fStatus, embedded::CommandStatus::Ok);
    EXPECT_EQ(reports[1].fStatus, embedded::CommandStatus::Failed);
}

}  // namespace
