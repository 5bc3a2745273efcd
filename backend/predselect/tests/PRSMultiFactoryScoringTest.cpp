// The saved variables and what makes them.
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

Texts SavedNames(const CommandRun& run) { return run.Json()["savedVariables"]; }

const KOLT_Variable& Variable(const CommandRun& run, const std::string& name) {
    const std::int32_t index = run.Data().FindVariable(name);
    if (index < 0) throw std::invalid_argument("no variable " + name);
    return run.Data().Variable(index);
}

std::vector<double> Numbers(const CommandRun& run, const std::string& name) {
    std::vector<double> numbers;
    for (const KoltObs& value : run.ValuesOf(name)) numbers.push_back(std::get<double>(value));
    return numbers;
}

TEST(SavedVariables, PredictedValuesFollowTheOnePredictor) {
    const CommandRun run("NAIVEBAYES y BY good /SUBSET NOSELECTION /SAVE PREDVAL(guess);",
                         TwoClasses().Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(SavedNames(run), (Texts{"guess"}));
    EXPECT_EQ(run.ValuesOf("guess"), run.ValuesOf("good"));
    EXPECT_EQ(Variable(run, "guess").GetLabel(), "Predicted Value");
    EXPECT_EQ(run.Notes().back(), "Predicted Value: guess");
}

TEST(SavedVariables, AStringTargetGivesAStringOfTheSameLength) {
    const CommandRun run(
        "NAIVEBAYES y BY f /SUBSET NOSELECTION /SAVE PREDVAL;",
        DataSetBuilder()
            .Strings("y", {"a string of 20 bytes", "b", "a string of 20 bytes", "b"})
            .Strings("f", Letters("pqpq"))
            .Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(SavedNames(run), (Texts{"PredictedValue"}));
    EXPECT_EQ(Variable(run, "PredictedValue").GetType(), 20);
    EXPECT_EQ(run.ValuesOf("PredictedValue"), run.ValuesOf("y"));
}

TEST(SavedVariables, ANumericTargetLendsItsProperties) {
    DataSetBuilder builder;
    builder.Numbers("y", {1, 2, 1, 2})
        .Level(kLevelOrdinal)
        .Format({kFormatNumber, 6, 1})
        .ValueLabel(KoltObs(1.0), "low")
        .Strings("f", Letters("pqpq"));
    DataSet data = builder.Build();
    data.MutableVariable(0).SetAlignment(kAlignCenter);
    data.MutableVariable(0).SetWriteFormat({kFormatNumber, 8, 3});
    const CommandRun run("NAIVEBAYES y BY f /SUBSET NOSELECTION /SAVE PREDVAL PREDPROB(p);",
                         std::move(data));
    ASSERT_EQ(run.Status(), "ok");
    const KOLT_Variable& saved = Variable(run, "PredictedValue");
    const KOLT_Variable& target = Variable(run, "y");
    EXPECT_EQ(saved.GetType(), 0);
    EXPECT_EQ(saved.GetMeasurementLevel(), kLevelOrdinal);
    EXPECT_EQ(saved.GetFormat(), target.GetFormat());
    EXPECT_EQ(saved.GetWriteFormat(), (KoltFormat{kFormatNumber, 8, 3}));
    EXPECT_EQ(saved.GetAlignment(), kAlignCenter);
    EXPECT_EQ(Numbers(run, "PredictedValue"), (std::vector<double>{1, 2, 1, 2}));
    for (const std::string& name : {SavedNames(run)[1], SavedNames(run)[2]}) {
        EXPECT_EQ(Variable(run, name).GetAlignment(), kAlignDefault) << name;
    }
}

TEST(SavedVariables, TheDefaultNameGivesWayToAnExistingVariable) {
    const CommandRun run(
        "NAIVEBAYES y BY good /SUBSET NOSELECTION /SAVE PREDVAL;",
        TwoClasses().Numbers("PredictedValue", std::vector<double>(20, 1)).Build());
    ASSERT_EQ(run.Status(), "ok");
    ASSERT_EQ(SavedNames(run).size(), 1U);
    EXPECT_NE(SavedNames(run)[0], "PredictedValue");
    EXPECT_EQ(SavedNames(run)[0].substr(0, 14), "PredictedValue");
}

TEST(SavedVariables, AnExistingNameIsRefused) {
    const CommandRun run("NAIVEBAYES y BY good /SAVE PREDVAL(fair);", TwoClasses().Build());
    EXPECT_EQ(run.Status(), "failed");
    EXPECT_TRUE(run.TableIds().empty());
}

DataSet ThreeClasses() {
    return DataSetBuilder()
        .Strings("y", Letters("aaabbbccc"))
        .Label("Kind")
        .Strings("f", Letters("ppqqqrrrp"))
        .Build();
}

TEST(SavedVariables, ThreeCategoriesAndRoomFor25GiveThreeProbabilities) {
    const CommandRun run("NAIVEBAYES y BY f /SUBSET NOSELECTION /SAVE PREDPROB;", ThreeClasses());
    ASSERT_EQ(run.Status(), "ok");
    ASSERT_EQ(SavedNames(run).size(), 3U);
    for (const std::string& name : SavedNames(run)) {
        EXPECT_EQ(name.substr(0, 20), "PredictedProbability");
        EXPECT_EQ(Variable(run, name).GetFormat(), (KoltFormat{kFormatNumber, 5, 3}));
        EXPECT_EQ(Variable(run, name).GetWriteFormat(), (KoltFormat{kFormatNumber, 5, 3}));
        EXPECT_EQ(Variable(run, name).GetMeasurementLevel(), kLevelScale);
        EXPECT_EQ(Variable(run, name).GetAlignment(), kAlignDefault);
        EXPECT_EQ(Variable(run, name).GetType(), 0);
    }
    for (std::size_t row = 0; row < 9; ++row) {
        double sum = 0.0;
        for (const std::string& name : SavedNames(run)) sum += Numbers(run, name)[row];
        EXPECT_NEAR(sum, 1.0, 1e-12) << row;
    }
}

TEST(SavedVariables, LabelsAndNotesTellWhichCategoryAProbabilityBelongsTo) {
    const CommandRun run("NAIVEBAYES y BY f /SUBSET NOSELECTION /SAVE PREDPROB(p);",
                         ThreeClasses());
    ASSERT_EQ(run.Status(), "ok");
    const Texts names = SavedNames(run);
    ASSERT_EQ(names.size(), 3U);
    EXPECT_EQ(Variable(run, names[1]).GetLabel(), "Predicted probability that y is b");
    const Texts notes = run.Notes();
    EXPECT_EQ(Texts(notes.end() - 3, notes.end()),
              (Texts{"Predicted Probabilities: y = a: " + names[0],
                     "Predicted Probabilities: y = b: " + names[1],
                     "Predicted Probabilities: y = c: " + names[2]}));
}

TEST(SavedVariables, FewerProbabilitiesThanCategoriesAreThoseOfTheFirst) {
    const CommandRun all("NAIVEBAYES y BY f /SUBSET NOSELECTION /SAVE PREDPROB(p);",
                         ThreeClasses());
    const CommandRun two("NAIVEBAYES y BY f /SUBSET NOSELECTION /SAVE PREDPROB(p:2);",
                         ThreeClasses());
    ASSERT_EQ(two.Status(), "ok");
    ASSERT_EQ(SavedNames(two).size(), 2U);
    for (const std::string& name : SavedNames(two)) {
        EXPECT_EQ(two.ValuesOf(name), all.ValuesOf(name));
    }
}

// More room than any data set has is asked for; what is made is what the target has.
TEST(SavedVariables, TheLargestCountIsTakenBesideAPredictedValue) {
    const CommandRun run(
        "NAIVEBAYES y BY f /SUBSET NOSELECTION /SAVE PREDVAL PREDPROB(p:2147483647);",
        ThreeClasses());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(SavedNames(run), (Texts{"PredictedValue", "p1", "p2", "p3"}));
}

TEST(SavedVariables, TheCountAloneKeepsTheDefaultRoot) {
    const CommandRun run("NAIVEBAYES y BY f /SUBSET NOSELECTION /SAVE PREDPROB(:1);",
                         ThreeClasses());
    ASSERT_EQ(SavedNames(run).size(), 1U);
    EXPECT_EQ(SavedNames(run)[0].substr(0, 20), "PredictedProbability");
}

struct CountCase {
    std::string fTestName;
    std::string fValue;
};
class WrongCount : public testing::TestWithParam<CountCase> {};
TEST_P(WrongCount, IsRefused) {
    const CommandRun run("NAIVEBAYES y BY f /SAVE PREDPROB(" + GetParam().fValue + ");",
                         ThreeClasses());
    EXPECT_EQ(run.Status(), "failed");
    ASSERT_EQ(run.Messages().size(), 1U);
    EXPECT_NE(run.Json()["messages"][0]["text"].get<std::string>().find("integer above 0"),
              std::string::npos);
}
INSTANTIATE_TEST_SUITE_P(Counts, WrongCount,
                         testing::Values(CountCase{"Zero", "p:0"}, CountCase{"Broken", "p:2.5"}),
                         [](const auto& param) { return param.param.fTestName; });

// Neither the sample nor a missing target nor a missing predictor keeps a case from its scores.
TEST(SavedVariables, TrainingAndTestCasesAndThoseWithoutATargetAreFilledAlike) {
    const CommandRun run(
        "NAIVEBAYES y BY good /TRAININGSAMPLE VARIABLE=part /SUBSET NOSELECTION"
        " /SAVE PREDVAL(v) PREDPROB(p);",
        DataSetBuilder()
            .Strings("y", Letters("aaabbb a"))
            .Strings("good", Letters("aabbbab "))
            .Numbers("part", {1, 1, 1, 1, 1, 1, 0, 0})
            .Build());
    ASSERT_EQ(run.Status(), "ok");
    const auto guesses = run.ValuesOf("v");
    for (std::size_t row = 0; row < 7; ++row) EXPECT_EQ(guesses[row], run.ValuesOf("good")[row]);
    // Without a valid predictor the categories' shares decide; they are equal, and the first wins.
    EXPECT_EQ(guesses[7], KoltObs(std::string("a")));
    for (const std::string& name : SavedNames(run)) {
        if (name == "v") continue;
        EXPECT_EQ(Numbers(run, name)[7], 0.5);
    }
}

TEST(SavedVariables, ACaseThatIsNotDeliveredKeepsMissingValues) {
    const CommandRun run("NAIVEBAYES y BY good /SUBSET NOSELECTION /SAVE PREDVAL(v) PREDPROB(p);",
                         DataSetBuilder()
                             .Strings("y", Letters("aabbab"))
                             .Strings("good", Letters("aabbab"))
                             .Numbers("w", {1, 1, 0, 2, 1, 1})
                             .Weight()
                             .Build());
    ASSERT_EQ(run.Status(), "ok");
    const std::int32_t value = run.Data().FindVariable("v");
    for (std::int64_t row = 0; row < 6; ++row) {
        EXPECT_EQ(run.Data().GetColumn(value).IsValid(row), row != 2) << row;
    }
    for (const std::string& name : SavedNames(run)) {
        if (name == "v") continue;
        EXPECT_EQ(Numbers(run, name)[2], kMissing);
    }
    EXPECT_EQ(run.ValuesOf("v")[3], KoltObs(std::string("b"))) << "rows stay their cases'";
}

TEST(SavedVariables, WithoutSaveAndClassificationNothingIsScored) {
    const CommandRun run("NAIVEBAYES y BY good /SUBSET NOSELECTION /PRINT CPS;",
                         TwoClasses().Build());
    EXPECT_EQ(run.Status(), "ok");
    EXPECT_TRUE(SavedNames(run).empty());
    EXPECT_EQ(run.TableIds(), (Texts{"CaseProcessingSummary"}));
}

TEST(SavedVariables, ScoresDoNotDependOnTheTables) {
    const CommandRun with("NAIVEBAYES y BY good fair /SAVE PREDPROB(p);", TwoClasses().Build());
    const CommandRun without("NAIVEBAYES y BY good fair /SAVE PREDPROB(p) /PRINT CPS;",
                             TwoClasses().Build());
    ASSERT_EQ(SavedNames(with).size(), 2U);
    ASSERT_EQ(SavedNames(without), SavedNames(with));
    for (const std::string& name : SavedNames(with)) {
        EXPECT_EQ(with.ValuesOf(name), without.ValuesOf(name));
    }
}

TEST(SavedVariables, ALaterCommandSeesThem) {
    const CommandRun run(
        "NAIVEBAYES y BY good /SUBSET NOSELECTION /SAVE PREDVAL(v); SELECTPRED y BY v;",
        TwoClasses().Build());
    EXPECT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Headings("PredictorSummary", "Predictor"), (Texts{"Selected/v"}));
}

}  // namespace
