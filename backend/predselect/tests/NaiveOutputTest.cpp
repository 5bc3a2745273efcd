#include "backend/predselect/NaiveOutput.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "backend/predselect/tests/NaiveData.h"
#include "backend/predselect/tests/RunFixture.h"

namespace {

using embedded::DataSet;
using embedded::DataSetBuilder;
using Texts = std::vector<std::string>;

constexpr double kMissing = MCMV::gMissingValue;
const char* const kCps = "CaseProcessingSummary";
const char* const kExcluded = "ExcludedPredictors";
const char* const kSubset = "SubsetSummary";
const char* const kClassification = "Classification";

TEST(NaiveOutput, TablesStandInTheirOrder) {
    const CommandRun run("NAIVEBAYES y BY good fair same;",
                         TwoClasses().Strings("same", Letters(std::string(20, 'p'))).Build());
    EXPECT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.TableIds(),
              (Texts{kCps, kExcluded, kSubset, "SelectedPredictors", kClassification}));
    EXPECT_TRUE(run.Messages().empty());
}

TEST(NaiveOutput, WithoutASearchThereAreNoTablesOfIt) {
    const CommandRun run("NAIVEBAYES y BY good fair /SUBSET NOSELECTION;", TwoClasses().Build());
    EXPECT_EQ(run.TableIds(), (Texts{kCps, kClassification}));
}

TEST(NaiveOutput, PrintNamesTheTables) {
    const CommandRun run("NAIVEBAYES y BY good fair /PRINT SELECTED;", TwoClasses().Build());
    EXPECT_EQ(run.TableIds(), (Texts{"SelectedPredictors"}));
}

TEST(NaiveOutput, NotesTellTheTreatmentOfMissingValues) {
    const CommandRun exclude("NAIVEBAYES y BY good;", TwoClasses().Build());
    const CommandRun include("NAIVEBAYES y BY good /MISSING USERMISSING=INCLUDE;",
                             TwoClasses().Build());
    ASSERT_EQ(exclude.Notes().size(), 2U);
    ASSERT_EQ(include.Notes().size(), 2U);
    EXPECT_NE(exclude.Notes()[0], include.Notes()[0]);
    EXPECT_EQ(exclude.Notes()[1], include.Notes()[1]);
}

// --- Case Processing Summary ---

DataSet Weighted() {
    return DataSetBuilder()
        .Strings("y", Letters("ab ba"))
        .Strings("f", Letters("pqpqp"))
        .Numbers("w", {3, 2, 4, 1, 0})
        .Weight()
        .Build();
}

TEST(NaiveOutput, CategoriesHaveTheirCountAndShare) {
    const CommandRun run(
        "NAIVEBAYES y BY f /SUBSET NOSELECTION;",
        DataSetBuilder().Strings("y", Letters("bab b")).Strings("f", Letters("pqppq")).Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings(kCps, "Value"), (Texts{"y/a", "y/b", "Valid", "Excluded", "Total"}));
    EXPECT_EQ(run.Headings(kCps, "Statistics"), (Texts{"N", "Percent"}));
    EXPECT_EQ(run.Value(kCps, {"y", "b", "N"}), 3.0);
    EXPECT_EQ(run.Value(kCps, {"y", "b", "Percent"}), 75.0);
    EXPECT_EQ(run.Value(kCps, {"Valid", "N"}), 4.0);
    EXPECT_EQ(run.Value(kCps, {"Valid", "Percent"}), 100.0);
    EXPECT_EQ(run.Value(kCps, {"Excluded", "N"}), 1.0) << "without a target";
    EXPECT_EQ(run.Value(kCps, {"Total", "N"}), 5.0);
    EXPECT_EQ(run.Cell(kCps, {"Total", "Percent"}), nullptr);
}

TEST(NaiveOutput, WeightsAddAColumnOfUnweightedCounts) {
    const CommandRun run("NAIVEBAYES y BY f /SUBSET NOSELECTION;", Weighted());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings(kCps, "Statistics"), (Texts{"N", "Percent", "Unweighted N"}));
    EXPECT_EQ(run.Value(kCps, {"y", "a", "N"}), 3.0);
    EXPECT_EQ(run.Value(kCps, {"y", "a", "Unweighted N"}), 1.0);
    EXPECT_EQ(run.Value(kCps, {"y", "b", "N"}), 3.0);
    EXPECT_EQ(run.Value(kCps, {"y", "b", "Unweighted N"}), 2.0);
    EXPECT_EQ(run.Value(kCps, {"Excluded", "N"}), 4.0);
    EXPECT_EQ(run.Value(kCps, {"Excluded", "Unweighted N"}), 1.0);
}

// --- Excluded Predictors ---

TEST(NaiveOutput, ExcludedPredictorsStandByKindAndReason) {
    const CommandRun run("NAIVEBAYES y BY good fair none same WITH empty flat;",
                         TwoClasses()
                             .Strings("none", Letters(std::string(20, ' ')))
                             .Strings("same", Letters(std::string(20, 'p')))
                             .Numbers("empty", std::vector<double>(20, kMissing))
                             .Numbers("flat", std::vector<double>(20, 2.5))
                             .Build());
    ASSERT_EQ(run.Status(), "ok");
    const auto value = [&](const char* type, const char* reason) {
        return run.Value(kExcluded, {type, reason, "Predictors"});
    };
    EXPECT_EQ(value("Categorical", "All Cases Missing"), nlohmann::json({"none"}));
    EXPECT_EQ(value("Categorical", "All Cases Constant"), nlohmann::json({"same"}));
    EXPECT_EQ(value("Scale", "All Cases Missing"), nlohmann::json({"empty"}));
    EXPECT_EQ(value("Scale", "All Cases Constant"), nlohmann::json({"flat"}));
}

TEST(NaiveOutput, AReasonThatAppliesToNoneHasNoCell) {
    const CommandRun run("NAIVEBAYES y BY good same;",
                         TwoClasses().Strings("same", Letters(std::string(20, 'p'))).Build());
    ASSERT_NE(run.Table(kExcluded), nullptr);
    EXPECT_EQ((*run.Table(kExcluded))["cells"].size(), 1U);
}

// --- Subset Summary ---

TEST(NaiveOutput, ARunByPseudoBICRanksEverySubset) {
    const CommandRun run("NAIVEBAYES y BY good fair noise;", TwoClasses().Build());
    EXPECT_EQ(run.Headings(kSubset, "Subset"), (Texts{"0", "1", "2", "3"}));
    EXPECT_EQ(run.Headings(kSubset, "Statistics"),
              (Texts{"Predictor Added", "Rank", "Pseudo-BIC", "Average Log-Likelihood"}));
    EXPECT_EQ(run.Value(kSubset, {"1", "Predictor Added"}), "good");
    std::vector<double> ranks;
    for (const char* row : {"1", "2", "3"}) ranks.push_back(run.Value(kSubset, {row, "Rank"}));
    std::sort(ranks.begin(), ranks.end());
    EXPECT_EQ(ranks, (std::vector<double>{1, 2, 3}));
}

// The rank 1 has the least criterion, and so on.
TEST(NaiveOutput, RanksFollowTheCriterion) {
    const CommandRun run("NAIVEBAYES y BY good fair noise;", TwoClasses().Build());
    std::vector<std::pair<double, double>> rows;
    for (const char* row : {"1", "2", "3"}) {
        rows.emplace_back(run.Value(kSubset, {row, "Rank"}),
                          run.Value(kSubset, {row, "Pseudo-BIC"}));
    }
    std::sort(rows.begin(), rows.end());
    EXPECT_LE(rows[0].second, rows[1].second);
    EXPECT_LE(rows[1].second, rows[2].second);
}

TEST(NaiveOutput, WithoutForcedPredictorsTheFirstRowHasANoteAndNoNumbers) {
    const CommandRun run("NAIVEBAYES y BY good fair;", TwoClasses().Build());
    const auto* cell = run.Cell(kSubset, {"0", "Predictor Added"});
    ASSERT_NE(cell, nullptr);
    ASSERT_EQ((*cell)["notes"].size(), 1U);
    EXPECT_EQ((*cell)["notes"][0], "The initial subset is empty.");
    EXPECT_EQ(run.Cell(kSubset, {"0", "Rank"}), nullptr);
    EXPECT_EQ(run.Cell(kSubset, {"0", "Pseudo-BIC"}), nullptr);
    EXPECT_EQ(run.Cell(kSubset, {"0", "Average Log-Likelihood"}), nullptr);
}

TEST(NaiveOutput, ForcedPredictorsAreTheInitialSubsetAndRanked) {
    const CommandRun run("NAIVEBAYES y BY good fair noise /FORCE FACTORS=(fair noise);",
                         TwoClasses().Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings(kSubset, "Subset"), (Texts{"0", "1"}));
    const auto* cell = run.Cell(kSubset, {"0", "Predictor Added"});
    ASSERT_NE(cell, nullptr);
    EXPECT_EQ((*cell)["notes"][0], "The initial subset contains fair, noise.");
    EXPECT_NE(run.Cell(kSubset, {"0", "Average Log-Likelihood"}), nullptr);
    EXPECT_EQ(run.Value(kSubset, {"0", "Rank"}), 2.0);
    EXPECT_EQ(run.Value(kSubset, {"1", "Rank"}), 1.0);
    EXPECT_EQ(run.Value(kSubset, {"1", "Predictor Added"}), "good");
}

TEST(NaiveOutput, AnExactSizeHasNeitherRanksNorACriterion) {
    const CommandRun run("NAIVEBAYES y BY good fair noise /SUBSET EXACTSIZE=2;",
                         TwoClasses().Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings(kSubset, "Subset"), (Texts{"0", "1", "2"}));
    EXPECT_EQ(run.Headings(kSubset, "Statistics"),
              (Texts{"Predictor Added", "Average Log-Likelihood"}));
}

TEST(NaiveOutput, AnExactSizeShowsNothingOfTheForcedPredictorsButTheirNames) {
    const CommandRun run(
        "NAIVEBAYES y BY good fair noise /FORCE FACTORS=(fair) /SUBSET EXACTSIZE=1;",
        TwoClasses().Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings(kSubset, "Subset"), (Texts{"0", "1"}));
    EXPECT_EQ(run.Cell(kSubset, {"0", "Rank"}), nullptr);
    EXPECT_EQ(run.Cell(kSubset, {"0", "Average Log-Likelihood"}), nullptr);
    EXPECT_NE(run.Cell(kSubset, {"1", "Average Log-Likelihood"}), nullptr);
}

/// TwoClasses with weights; the last cases of two predictors more, which alone differ from the
/// others, weigh too little to count.
DataSet WithUninformative() {
    std::vector<double> weight(20, 1.0);
    weight.back() = 0.2;
    return TwoClasses()
        .Strings("flat", Letters("pppppppppppppppppppq"))
        .Strings("even", Letters("rrrrrrrrrrrrrrrrrrrs"))
        .Numbers("w", weight)
        .Weight()
        .Build();
}

TEST(NaiveOutput, AForcedPredictorThatTheEngineLeavesOutIsNotInTheInitialSubset) {
    const CommandRun run("NAIVEBAYES y BY good noise /FORCE FACTORS=(fair flat);",
                         WithUninformative());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings(kSubset, "Subset"), (Texts{"0", "1", "2"}));
    EXPECT_EQ((*run.Cell(kSubset, {"0", "Predictor Added"}))["notes"][0],
              "The initial subset contains fair.");
    EXPECT_NE(run.Cell(kSubset, {"0", "Rank"}), nullptr);
    EXPECT_NE(run.Cell(kSubset, {"2", "Rank"}), nullptr);
}

TEST(NaiveOutput, WithoutAForcedPredictorLeftTheInitialSubsetIsEmpty) {
    const CommandRun run("NAIVEBAYES y BY good noise /FORCE FACTORS=(even flat);",
                         WithUninformative());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings(kSubset, "Subset"), (Texts{"0", "1", "2"}));
    EXPECT_EQ((*run.Cell(kSubset, {"0", "Predictor Added"}))["notes"][0],
              "The initial subset is empty.");
    EXPECT_EQ(run.Cell(kSubset, {"0", "Rank"}), nullptr);
    EXPECT_NE(run.Cell(kSubset, {"1", "Rank"}), nullptr);
}

/// 60 cases: y, good and fair as above three times over; part marks every third for the test.
DataSet WithPart(int copies = 3) {
    std::string y, good, fair;
    std::vector<double> part;
    for (int i = 0; i < copies; ++i) {
        y += "aaaaaaaaaabbbbbbbbbb";
        good += "aaaaaaaaababbbbbbbbb";
        fair += "aaaaaaaabbaabbbbbbbb";
    }
    for (std::size_t i = 0; i < y.size(); ++i) part.push_back(i % 3 == 2 ? 0 : 1);
    return DataSetBuilder()
        .Strings("y", Letters(y))
        .Strings("good", Letters(good))
        .Strings("fair", Letters(fair))
        .Numbers("part", part)
        .Build();
}

const char* const kByTestData =
    "NAIVEBAYES y BY good fair /TRAININGSAMPLE VARIABLE=part"
    " /SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA)";

TEST(NaiveOutput, TestDataNameTheirCriterion) {
    const CommandRun run(std::string(kByTestData) + ";", WithPart());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings(kSubset, "Statistics"),
              (Texts{"Predictor Added", "Rank", "Test Data Criterion", "Average Log-Likelihood"}));
}

TEST(NaiveOutput, ByTestDataForcedPredictorsAreRankedWithoutALikelihood) {
    const CommandRun run(std::string(kByTestData) + " /FORCE FACTORS=(fair);", WithPart());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings(kSubset, "Subset"), (Texts{"0", "1"}));
    EXPECT_EQ(run.Cell(kSubset, {"0", "Average Log-Likelihood"}), nullptr);
    ASSERT_NE(run.Cell(kSubset, {"0", "Rank"}), nullptr);
    ASSERT_NE(run.Cell(kSubset, {"0", "Test Data Criterion"}), nullptr);
    EXPECT_EQ((*run.Cell(kSubset, {"0", "Rank"}))["format"], "count");
    EXPECT_EQ((*run.Cell(kSubset, {"0", "Test Data Criterion"}))["format"],
              (*run.Cell(kSubset, {"1", "Average Log-Likelihood"}))["format"]);
}

bool HasSimulatedNote(const CommandRun& run) {
    const auto* cell = run.Cell(kSubset, {"1", "Average Log-Likelihood"});
    return cell != nullptr && !(*cell)["notes"].empty();
}

// Four record variables with the smallest memory: 4 * 1024 / 48 is 85 records.
TEST(NaiveOutput, MoreTrainingCasesThanFitIntoMemoryAreNoted) {
    const std::string command = std::string(kByTestData) + " /CRITERIA MEMALLOCATE=4;";
    const CommandRun few(command, WithPart(3));
    ASSERT_EQ(few.Status(), "ok");
    EXPECT_FALSE(HasSimulatedNote(few));
    const CommandRun many(command, WithPart(30));
    ASSERT_EQ(many.Status(), "ok");
    EXPECT_TRUE(HasSimulatedNote(many));
    EXPECT_EQ((*many.Cell(kSubset, {"0", "Predictor Added"}))["notes"].size(), 1U)
        << "the first row has its own note alone";
}

TEST(NaiveOutput, ByPseudoBICNothingIsNotedOfMemory) {
    const CommandRun run("NAIVEBAYES y BY good fair /CRITERIA MEMALLOCATE=4;", WithPart(30));
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_FALSE(HasSimulatedNote(run));
}

// --- Selected Predictors ---

TEST(NaiveOutput, SelectedPredictorsStandByKind) {
    std::vector<double> x;
    for (int i = 0; i < 20; ++i) x.push_back(i < 10 ? i * 0.1 : i * 1.5);
    const CommandRun run("NAIVEBAYES y BY good WITH x /SUBSET MAXSIZE=2;",
                         TwoClasses().Numbers("x", x).Build());
    ASSERT_EQ(run.Status(), "ok");
    const CommandRun forced("NAIVEBAYES y BY fair /FORCE FACTORS=(good) COVARIATES=(x);",
                            TwoClasses().Numbers("x", x).Build());
    ASSERT_EQ(forced.Status(), "ok");
    EXPECT_EQ(forced.Value("SelectedPredictors", {"Categorical", "Predictors"})[0], "good");
    EXPECT_EQ(forced.Value("SelectedPredictors", {"Scale", "Predictors"}), nlohmann::json({"x"}));
}

TEST(NaiveOutput, SelectedPredictorsStandByNameAndOthersByLabel) {
    const CommandRun run("NAIVEBAYES y BY clear same;",
                         TwoClasses()
                             .Strings("clear", Letters("aaaaaaaaaabbbbbbbbbb"))
                             .Label("Clear as day")
                             .Strings("same", Letters(std::string(20, 'p')))
                             .Label("Always the same")
                             .Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Value("SelectedPredictors", {"Categorical", "Predictors"}),
              nlohmann::json({"clear"}));
    EXPECT_EQ((*run.Cell(kSubset, {"1", "Predictor Added"}))["text"], "Clear as day");
    EXPECT_EQ((*run.Cell(kExcluded, {"Categorical", "All Cases Constant"}))["text"],
              "Always the same");
}

// --- Classification ---

TEST(NaiveOutput, ClassificationCountsObservedAgainstPredicted) {
    const CommandRun run("NAIVEBAYES y BY good /SUBSET NOSELECTION;", TwoClasses().Build());
    ASSERT_EQ(run.Status(), "ok");
    // The group of the values has a hidden heading.
    EXPECT_EQ(run.Headings(kClassification, "Observed"), (Texts{"a", "b", "Overall Percent"}));
    EXPECT_EQ(run.Headings(kClassification, "Predicted"), (Texts{"a", "b", "Percent Correct"}));
    std::vector<double> cells;
    for (const auto& cell : (*run.Table(kClassification))["cells"]) cells.push_back(cell["value"]);
    EXPECT_EQ(cells, (std::vector<double>{9, 1, 90, 1, 9, 90, 50, 50, 90}));
    EXPECT_EQ((*run.Table(kClassification))["caption"], "Target: y");
    EXPECT_EQ(run.Cell(kClassification, {"Training"}), nullptr) << "no dimension of samples";
    EXPECT_EQ((*run.Table(kClassification))["dimensions"].size(), 2U);
}

TEST(NaiveOutput, ClassificationCountsWeights) {
    const CommandRun run("NAIVEBAYES y BY f /SUBSET NOSELECTION;", Weighted());
    ASSERT_EQ(run.Status(), "ok");
    std::vector<double> cells;
    for (const auto& cell : (*run.Table(kClassification))["cells"]) cells.push_back(cell["value"]);
    EXPECT_EQ(cells, (std::vector<double>{3, 0, 100, 0, 3, 100, 50, 50, 100}));
}

TEST(NaiveOutput, ATestSampleHasABlockOfItsOwn) {
    const CommandRun run("NAIVEBAYES y BY good /TRAININGSAMPLE VARIABLE=part /SUBSET NOSELECTION;",
                         WithPart());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings(kClassification, "Sample"), (Texts{"Training", "Test"}));
    double train = 0, test = 0;
    for (const auto& cell : (*run.Table(kClassification))["cells"]) {
        if (cell["format"] != "count") continue;
        (cell["keys"]["Sample"][0] == "Training" ? train : test) += cell["value"].get<double>();
    }
    EXPECT_EQ(train, 40.0);
    EXPECT_EQ(test, 20.0);
}

TEST(NaiveOutput, WithoutValidTestCasesAWarningComes) {
    const CommandRun run("NAIVEBAYES y BY good /TRAININGSAMPLE VARIABLE=part /SUBSET NOSELECTION;",
                         TwoClasses().Numbers("part", std::vector<double>(20, 1)).Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Messages().back(), "warning No valid test cases for classification...");
    EXPECT_EQ((*run.Table(kClassification))["dimensions"].size(), 2U);
}

// They judged the search, though none of them has a value of the predictor that it chose.
TEST(NaiveOutput, TestCasesThatJudgedTheSearchAreNotAskedForAgain) {
    const CommandRun run(
        "NAIVEBAYES y BY good noise /TRAININGSAMPLE VARIABLE=part"
        " /SUBSET MAXSIZE=1(BESTSUBSET=TESTDATA);",
        DataSetBuilder()
            .Strings("y", Letters("aaaaabbbbbab"))
            .Strings("good", Letters("ppppqqqqqq  "))
            .Strings("noise", Letters("pqpqpqpqpqpq"))
            .Numbers("part", {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0})
            .Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ((*run.Table(kClassification))["dimensions"].size(), 2U) << "no test case is counted";
    const Texts messages = run.Messages();
    EXPECT_EQ(std::count(messages.begin(), messages.end(),
                         "warning No valid test cases for classification..."),
              0);
}

// All test cases are a, so the other row of their block has no case.
TEST(NaiveOutput, ACategoryWithoutObservedCasesHas0PercentCorrect) {
    const CommandRun run(
        "NAIVEBAYES y BY good /TRAININGSAMPLE VARIABLE=part /SUBSET NOSELECTION;",
        TwoClasses()
            .Numbers("part", {0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1})
            .Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Value(kClassification, {"Test", "a", "Percent Correct"}), 100.0);
    EXPECT_EQ(run.Value(kClassification, {"Test", "b", "Percent Correct"}), 0.0);
}

// A category that only test cases have is no category of the model: its cases have no target.
TEST(NaiveOutput, ACategoryOfTestCasesAloneIsNotTallied) {
    const CommandRun run("NAIVEBAYES y BY good /TRAININGSAMPLE VARIABLE=part /SUBSET NOSELECTION;",
                         DataSetBuilder()
                             .Strings("y", Letters("aabbca"))
                             .Strings("good", Letters("ppqqpp"))
                             .Numbers("part", {1, 1, 1, 1, 0, 0})
                             .Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings(kClassification, "Observed"), (Texts{"a", "b", "Overall Percent"}));
    EXPECT_EQ(run.Value(kClassification, {"Test", "a", "a"}), 1.0);
}

}  // namespace
