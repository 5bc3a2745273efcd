#include "backend/predselect/SelOutput.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "backend/predselect/tests/RunFixture.h"

namespace {

using embedded::DataSet;
using embedded::DataSetBuilder;
using Texts = std::vector<std::string>;

constexpr double kMissing = MCMV::gMissingValue;
const char* const kSummary = "PredictorSummary";
const char* const kCps = "CaseProcessingSummary";

/// y: two categories of ten cases. good agrees with it on 9 of 10, fair on 8. poor2 is split 6:4
/// and 4:6 (chi-square 0.8), poor1 and poor3 5:5 and 5:5 (chi-square 0).
DataSetBuilder Factors() {
    const auto column = [](const char* bits) {
        std::vector<std::optional<std::string>> values;
        for (const char* bit = bits; *bit != '\0'; ++bit) values.emplace_back(std::string(1, *bit));
        return values;
    };
    DataSetBuilder builder;
    builder.Strings("y", column("aaaaaaaaaabbbbbbbbbb"))
        .Strings("good", column("aaaaaaaaababbbbbbbbb"))
        .Strings("fair", column("aaaaaaaabbaabbbbbbbb"))
        .Strings("poor1", column("abababababababababab"))
        .Strings("poor2", column("aabbaabbaabbaabbaabb"))
        .Strings("poor3", column("abbaabbaabbaabbaabba"));
    return builder;
}

TEST(SelOutput, NotesTellTheTreatmentOfMissingValues) {
    const CommandRun exclude("SELECTPRED y;", Factors().Build());
    ASSERT_EQ(exclude.Json()["notes"].size(), 2U);
    const CommandRun include("SELECTPRED y /MISSING USERMISSING=INCLUDE;", Factors().Build());
    ASSERT_EQ(include.Json()["notes"].size(), 2U);
    EXPECT_EQ(exclude.Json()["notes"][0]["title"], include.Json()["notes"][0]["title"]);
    EXPECT_NE(exclude.Json()["notes"][0]["text"], include.Json()["notes"][0]["text"]);
    EXPECT_EQ(exclude.Json()["notes"][1], include.Json()["notes"][1]);
}

TEST(SelOutput, TablesStandInTheirOrder) {
    const CommandRun run("SELECTPRED y BY good poor1 WITH none;",
                         Factors().Numbers("none", std::vector<double>(20, kMissing)).Build());
    EXPECT_EQ(run.TableIds(), (Texts{kCps, "ExcludedPredictors", kSummary, "SelectedPredictors"}));
    EXPECT_TRUE(run.Messages().empty());
}

TEST(SelOutput, WithNothingExcludedAWarningStandsForTheTable) {
    const CommandRun run("SELECTPRED y;", Factors().Build());
    EXPECT_EQ(run.TableIds(), (Texts{kCps, kSummary, "SelectedPredictors"}));
    EXPECT_EQ(run.Messages(), (Texts{"warning No predictors excluded ..."}));
}

TEST(SelOutput, PrintNamesTheTables) {
    const CommandRun run("SELECTPRED y /PRINT CPS;", Factors().Build());
    EXPECT_EQ(run.TableIds(), (Texts{kCps}));
    EXPECT_TRUE(run.Messages().empty());
}

// --- Case Processing Summary ---

TEST(SelOutput, CategoriesHaveTheirCountAndShare) {
    const CommandRun run("SELECTPRED y;", DataSetBuilder()
                                              .Strings("y", {"b", "a", "b", std::nullopt, "b"})
                                              .Numbers("x", {1.5, 2, 3, 4, kMissing})
                                              .Level(kLevelScale)
                                              .Build());
    EXPECT_EQ(run.Headings(kCps, "Value"), (Texts{"y/a", "y/b", "Valid", "Excluded", "Total"}));
    EXPECT_EQ(run.Value(kCps, {"y", "a", "N"}), 1.0);
    EXPECT_EQ(run.Value(kCps, {"y", "b", "N"}), 2.0);
    EXPECT_DOUBLE_EQ(run.Value(kCps, {"y", "b", "Percent"}), 200.0 / 3.0);
    EXPECT_EQ(run.Value(kCps, {"Valid", "N"}), 3.0);
    EXPECT_EQ(run.Value(kCps, {"Valid", "Percent"}), 100.0);
    EXPECT_EQ(run.Value(kCps, {"Excluded", "N"}), 2.0) << "no target, or no predictor";
    EXPECT_EQ(run.Value(kCps, {"Total", "N"}), 5.0);
    EXPECT_EQ(run.Cell(kCps, {"Excluded", "Percent"}), nullptr);
    EXPECT_EQ(run.Cell(kCps, {"Total", "Percent"}), nullptr);
    EXPECT_EQ(run.Cell(kCps, {"Valid", "Unweighted N"}), nullptr);
}

// The target varies over all cases, but its second category has no case with a predictor value.
TEST(SelOutput, ATargetWithOneValidCategoryShowsNoPercentInValid) {
    const CommandRun run("SELECTPRED y WITH x /SCREENING STATUS=OFF;",
                         DataSetBuilder()
                             .Strings("y", {"a", "a", "b"})
                             .Numbers("x", {1.5, 2, kMissing})
                             .Level(kLevelScale)
                             .Build());
    EXPECT_EQ(run.Value(kCps, {"y", "a", "Percent"}), 100.0);
    EXPECT_EQ(run.Value(kCps, {"Valid", "N"}), 2.0);
    EXPECT_EQ(run.Cell(kCps, {"Valid", "Percent"}), nullptr);
}

TEST(SelOutput, WeightsAddAColumnOfUnweightedCounts) {
    const CommandRun run("SELECTPRED y;", DataSetBuilder()
                                              .Strings("y", {"a", "b", "a"})
                                              .Numbers("x", {1.5, 2, 3})
                                              .Level(kLevelScale)
                                              .Numbers("w", {3, 2, 0})
                                              .Weight()
                                              .Build());
    EXPECT_EQ(run.Headings(kCps, "Statistics"), (Texts{"N", "Percent", "Unweighted N"}));
    EXPECT_EQ(run.Value(kCps, {"y", "a", "N"}), 3.0);
    EXPECT_EQ(run.Value(kCps, {"y", "a", "Unweighted N"}), 1.0);
    EXPECT_EQ(run.Value(kCps, {"Total", "N"}), 5.0);
    EXPECT_EQ(run.Value(kCps, {"Total", "Unweighted N"}), 2.0);
}

TEST(SelOutput, AContinuousTargetHasThreeRowsAndNoPercent) {
    const CommandRun run("SELECTPRED t WITH x;", DataSetBuilder()
                                                     .Numbers("t", {1.5, 2.5, 4, kMissing})
                                                     .Numbers("x", {1.5, 2, 3, 4})
                                                     .Build());
    EXPECT_EQ(run.Headings(kCps, "Value"), (Texts{"Valid", "Excluded", "Total"}));
    EXPECT_EQ(run.Headings(kCps, "Statistics"), (Texts{"N"}));
    EXPECT_EQ(run.Value(kCps, {"Excluded", "N"}), 1.0);
}

// --- Excluded Predictors ---

TEST(SelOutput, RowsOfTheExcludedTableStandEvenWhenTheirCellIsEmpty) {
    const CommandRun run("SELECTPRED y BY good WITH none;",
                         Factors().Numbers("none", std::vector<double>(20, kMissing)).Build());
    const auto* table = run.Table("ExcludedPredictors");
    ASSERT_NE(table, nullptr);
    ASSERT_EQ((*table)["cells"].size(), 1U);
    EXPECT_EQ(run.Value("ExcludedPredictors", {"Scale", "All Cases Missing"}),
              nlohmann::json({"none"}));
}

struct LimitCase {
    std::string fTestName;
    std::string fScreening;
    bool fbCell;
};
class LimitOfOneCategory : public testing::TestWithParam<LimitCase> {};

// 29 of 30 cases in one category: 96.7 percent, above the engine's 95.
TEST_P(LimitOfOneCategory, Below100Decides) {
    std::vector<std::optional<std::string>> y, mostly, half;
    for (int i = 0; i < 30; ++i) {
        y.emplace_back(i % 2 == 0 ? "a" : "b");
        mostly.emplace_back(i == 7 ? "q" : "p");
        half.emplace_back(i % 3 == 0 ? "q" : "p");
    }
    const CommandRun run(
        "SELECTPRED y BY mostly half" + GetParam().fScreening + ";",
        DataSetBuilder().Strings("y", y).Strings("mostly", mostly).Strings("half", half).Build());
    ASSERT_NE(run.Table("ExcludedPredictors"), nullptr) << "deleted in any case";
    EXPECT_EQ(run.Cell("ExcludedPredictors", {"Categorical", "Cases Constant > ^1"}) != nullptr,
              GetParam().fbCell);
}
INSTANTIATE_TEST_SUITE_P(
    Limits, LimitOfOneCategory,
    testing::Values(LimitCase{"Default", "", true},
                    LimitCase{"Typed", " /SCREENING PCTEQUAL=96", true},
                    // The engine refuses it and keeps 95, so there is a predictor to list.
                    LimitCase{"Above100LeavesTheRowWithoutACell", " /SCREENING PCTEQUAL=150",
                              false}),
    [](const auto& param) { return param.param.fTestName; });

// --- Predictor Summary ---

TEST(SelOutput, NoPredictorPassesTheCutoff) {
    const CommandRun run("SELECTPRED y BY poor1 poor2 poor3 /CRITERIA SHOWUNSELECTED=5;",
                         Factors().Build());
    EXPECT_EQ(run.Headings(kSummary, "Predictor"),
              (Texts{"Unselected/poor2", "Unselected/poor1", "Unselected/poor3"}));
    EXPECT_EQ(run.Table("SelectedPredictors"), nullptr);
    EXPECT_EQ(run.Messages(), (Texts{"warning No predictors excluded ...",
                                     "warning No predictors were selected."}));
}

TEST(SelOutput, WithoutTheSelectedTableTheWarningStillComes) {
    const CommandRun run("SELECTPRED y BY poor1 poor2 /PRINT CPS;", Factors().Build());
    EXPECT_EQ(run.Messages(), (Texts{"warning No predictors were selected."}));
}

TEST(SelOutput, WithoutShowUnselectedThereIsNoUnselectedGroup) {
    const CommandRun run("SELECTPRED y;", Factors().Build());
    EXPECT_EQ(run.Headings(kSummary, "Predictor"), (Texts{"Selected/good", "Selected/fair"}));
}

bool HasLimitNote(const CommandRun& run) {
    return run.Table(kSummary)->dump().find("unselected predictors.") != std::string::npos;
}

TEST(SelOutput, MoreUnselectedThanShownHaveANote) {
    const CommandRun run("SELECTPRED y /CRITERIA SHOWUNSELECTED=2;", Factors().Build());
    EXPECT_EQ(run.Headings(kSummary, "Predictor"),
              (Texts{"Selected/good", "Selected/fair", "Unselected/poor2", "Unselected/poor1"}));
    // Two selected, two shown, one left: the list that is asked for holds size + 2 entries.
    EXPECT_TRUE(HasLimitNote(run));
}

TEST(SelOutput, AsManyUnselectedAsShownHaveNoNote) {
    const CommandRun run("SELECTPRED y /CRITERIA SHOWUNSELECTED=3;", Factors().Build());
    EXPECT_EQ(run.Headings(kSummary, "Predictor").size(), 5U);
    EXPECT_FALSE(HasLimitNote(run));
}

TEST(SelOutput, RankContinuesAmongTheUnselected) {
    const CommandRun run("SELECTPRED t WITH x z /CRITERIA SHOWUNSELECTED=1;",
                         DataSetBuilder()
                             .Numbers("t", {1, 2, 3, 4, 5, 6.5})
                             .Numbers("x", {1.1, 2.3, 2.9, 4.2, 5.1, 6.4})
                             .Numbers("z", {3, 1, 4, 1, 5, 2.5})
                             .Build());
    EXPECT_EQ(run.Value(kSummary, {"Selected", "x", "Rank"}), 1.0);
    EXPECT_EQ(run.Value(kSummary, {"Unselected", "z", "Rank"}), 2.0);
}

TEST(SelOutput, SizeLimitsTheSelection) {
    const CommandRun run("SELECTPRED y /CRITERIA SIZE=1;", Factors().Build());
    EXPECT_EQ(run.Headings(kSummary, "Predictor"), (Texts{"Selected/good"}));
}

TEST(SelOutput, AMeasureIsComparedWithNoCutoff) {
    const CommandRun run("SELECTPRED y /CRITERIA RANKING=CRAMERSV;", Factors().Build());
    EXPECT_EQ(run.Headings(kSummary, "Predictor").size(), 5U) << "poor ones too";
    EXPECT_EQ(run.Headings(kSummary, "Stat Type"),
              (Texts{"Pearson Chi-Square", "Likelihood Ratio Chi-Square", "Cramer's V", "Lambda"}));
}

TEST(SelOutput, SignificancesHaveTheirLogarithmAndOtherCellsNone) {
    // fair against y is {8, 2; 2, 8}: chi-square 20 * 60^2 / 10^4 = 7.2.
    const CommandRun run("SELECTPRED y BY fair /CRITERIA PCUTOFF=1;", Factors().Build());
    const double p = std::erfc(std::sqrt(3.6));
    for (const char* type : {"Pearson Chi-Square", "Likelihood Ratio Chi-Square"}) {
        const auto* cell = run.Cell(kSummary, {"fair", type, "Unadjusted Sig."});
        ASSERT_NE(cell, nullptr);
        EXPECT_NEAR((*cell)["lnP"].get<double>(), std::log((*cell)["value"].get<double>()), 1e-13);
    }
    EXPECT_NEAR(
        run.Value(kSummary, {"fair", "Pearson Chi-Square", "Unadjusted Sig."}).get<double>(), p,
        1e-14);
    std::size_t logarithms = 0;
    for (const auto& cell : (*run.Table(kSummary))["cells"]) logarithms += cell.count("lnP");
    EXPECT_EQ(logarithms, 2U);
}

TEST(SelOutput, OneOrderOfUnlikeTestsHasTheLogarithmsOfBoth) {
    const CommandRun run(
        "SELECTPRED y BY fair WITH x /SCREENING STATUS=OFF /CRITERIA PCUTOFF=1;",
        Factors()
            .Numbers("x", {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12})
            .Level(kLevelScale)
            .Build());
    for (const char* predictor : {"fair", "x"}) {
        const auto* cell = run.Cell(kSummary, {predictor, "Unadjusted Sig."});
        ASSERT_NE(cell, nullptr);
        ASSERT_TRUE(cell->contains("lnP")) << predictor;
        EXPECT_NEAR((*cell)["lnP"].get<double>(), std::log((*cell)["value"].get<double>()), 1e-13);
    }
}

// y varies by x's categories alone, so nothing is left within them.
TEST(SelOutput, AnFWithoutVariationWithinGroupsIsExplained) {
    const CommandRun run("SELECTPRED t BY f;", DataSetBuilder()
                                                   .Numbers("t", {1.5, 1.5, 1.5, 2.5, 2.5, 2.5})
                                                   .Level(kLevelScale)
                                                   .Strings("f", {"p", "p", "p", "q", "q", "q"})
                                                   .Build());
    const auto* cell = run.Cell(kSummary, {"f", "F"});
    ASSERT_NE(cell, nullptr);
    EXPECT_TRUE((*cell)["value"].is_null());
    EXPECT_EQ((*cell)["notes"].size(), 1U);
    const auto* significance = run.Cell(kSummary, {"f", "Unadjusted Sig."});
    ASSERT_NE(significance, nullptr);
    EXPECT_EQ((*significance)["value"], 0.0);
    EXPECT_TRUE(significance->at("lnP").is_null());
    EXPECT_EQ(significance->at("exactZero"), true);
}

TEST(SelOutput, TheTOfAPerfectCorrelationIsExplained) {
    const CommandRun run("SELECTPRED t WITH x;", DataSetBuilder()
                                                     .Numbers("t", {1, 2, 3})
                                                     .Level(kLevelScale)
                                                     .Numbers("x", {1, 2, 3})
                                                     .Level(kLevelScale)
                                                     .Build());
    const auto* cell = run.Cell(kSummary, {"x", "t"});
    ASSERT_NE(cell, nullptr);
    EXPECT_TRUE((*cell)["value"].is_null());
    EXPECT_EQ((*cell)["notes"].size(), 1U);
    EXPECT_EQ(run.Value(kSummary, {"x", "Pearson Correlation"}), 1.0);
    EXPECT_EQ((*run.Cell(kSummary, {"x", "Unadjusted Sig."})).at("exactZero"), true);
}

// x has values only where t does not vary: it has no correlation and no p-value.
DataSet WithoutCorrelation() {
    return DataSetBuilder()
        .Numbers("t", {1, 2, 3, 5, 5, 5})
        .Level(kLevelScale)
        .Numbers("x", {kMissing, kMissing, kMissing, 1, 2, 3})
        .Level(kLevelScale)
        .Numbers("z", {1.1, 1.9, 3.2, 4.8, 5.1, 5})
        .Level(kLevelScale)
        .Build();
}

TEST(SelOutput, APredictorWithoutAPValueIsNotSelected) {
    const CommandRun run("SELECTPRED t WITH x z /CRITERIA SHOWUNSELECTED=2;", WithoutCorrelation());
    EXPECT_EQ(run.Headings(kSummary, "Predictor"), (Texts{"Selected/z", "Unselected/x"}));
    EXPECT_EQ(run.Value("SelectedPredictors", {"Scale"}), nlohmann::json({"z"}));
}

TEST(SelOutput, AMissingCorrelationIsNotTakenForAPerfectOne) {
    const CommandRun run("SELECTPRED t WITH x z /CRITERIA SHOWUNSELECTED=2;", WithoutCorrelation());
    const auto* cell = run.Cell(kSummary, {"x", "t"});
    ASSERT_NE(cell, nullptr);
    EXPECT_TRUE((*cell)["value"].is_null());
    EXPECT_TRUE((*cell)["notes"].empty());
}

// --- Selected Predictors ---

TEST(SelOutput, SelectedNamesStandByKindInRankOrder) {
    const CommandRun run(
        "SELECTPRED y;",
        Factors()
            .Numbers("x", {1, 2, 3, 4, 5, 6, 7, 8, 9, 9.5, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20})
            .Level(kLevelScale)
            .Build());
    EXPECT_EQ(run.Value("SelectedPredictors", {"Categorical"}), nlohmann::json({"good", "fair"}));
    EXPECT_EQ(run.Value("SelectedPredictors", {"Scale"}), nlohmann::json({"x"}));
}

}  // namespace
