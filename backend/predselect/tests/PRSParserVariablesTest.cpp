#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "backend/predselect/tests/ParseFixture.h"

// The weight, FORCE, TRAININGSAMPLE, EXCEPT and the variable list.

namespace {

using embedded::MessageLevel;

constexpr const char* kNoPredictors = "No predictors available in data...";
constexpr const char* kNoPossible = "No possible predictors available in data...";

}  // namespace

TEST(WeightVariable, IsStored) {
    ParsedCommand command("SELECTPRED y BY f1", WeightedParseData());
    EXPECT_TRUE(command.Ok());
    EXPECT_EQ(command.Specs().GetWeightVar(), kWeight);
}

TEST(WeightVariable, AbsentIsMinusOne) {
    EXPECT_EQ(ParsedCommand("SELECTPRED y BY f1").Specs().GetWeightVar(), -1);
}

TEST(WeightVariable, IsNoPredictor) {
    ParsedCommand command("SELECTPRED y", WeightedParseData());
    EXPECT_TRUE(command.Ok());
    EXPECT_EQ(command.Predictors(), "sy* f1 f2 f3 c1* c2* text part");
}

TEST(WeightVariable, ThatIsTheTargetIsRefused) {
    for (const char* name : {"SELECTPRED", "NAIVEBAYES"}) {
        ParsedCommand command(std::string(name) + " wt BY f1 f2",
                              ParseData().Level(kLevelNominal).Weight().Build());
        EXPECT_FALSE(command.Ok());
        EXPECT_EQ(command.Messages().size(), 1u) << command.MessageTexts();
    }
}

TEST(WeightVariable, ThatIsAStringFailsTheCommand) {
    embedded::DataSetBuilder builder;
    builder.Numbers("y", {0, 1}).Level(kLevelNominal);
    builder.Numbers("f", {0, 1}).Level(kLevelNominal);
    builder.Strings("s", {"1", "2"}).Weight();
    ParsedCommand command("SELECTPRED y BY f", builder.Build());
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.ErrorWord());
    EXPECT_EQ(command.Specs().GetWeightVar(), -1);
    EXPECT_EQ(command.Specs().GetDependVar(), -1);  // no handler ran
}

TEST(VariableList, FactorsAndCovariatesAreMergedByIndex) {
    ParsedCommand command("SELECTPRED y BY f3 text f1 WITH c2 sy");
    EXPECT_TRUE(command.Ok());
    EXPECT_EQ(command.Predictors(), "sy* f1 f3 c2* text");
    EXPECT_EQ(command.Specs().GetDependVar(), kY);
    EXPECT_TRUE(command.Specs().GetDependCat());
    EXPECT_EQ(command.Specs().GetPredictCount(), 5);
}

TEST(VariableList, WithoutByAndWithTakesAllOthersByLevel) {
    ParsedCommand command("SELECTPRED y");
    EXPECT_TRUE(command.Ok());
    EXPECT_EQ(command.Predictors(), "sy* f1 f2 f3 c1* c2* text part wt*");
}

TEST(VariableList, RepeatedPredictorIsTakenOnce) {
    ParsedCommand command("SELECTPRED y BY f1 f2 f1 WITH c1 c1");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Predictors(), "f1 f2 c1*");
}

TEST(VariableList, StringAmongCovariatesIsRefused) {
    ParsedCommand command("SELECTPRED y BY f1 WITH text");
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.ErrorWord());
}

TEST(VariableList, UnknownVariableIsRefused) {
    ParsedCommand command("SELECTPRED nobody BY f1");
    EXPECT_FALSE(command.Ok());
    EXPECT_EQ(command.Messages().size(), 1u) << command.MessageTexts();
}

TEST(VariableList, WithNoVariableButTheTargetIsRefused) {
    for (const char* name : {"SELECTPRED y", "NAIVEBAYES y"}) {
        embedded::DataSetBuilder builder;
        builder.Numbers("y", {0, 1}).Level(kLevelNominal);
        ParsedCommand command(name, builder.Build());
        EXPECT_FALSE(command.Ok());
        EXPECT_TRUE(command.SaidOnlyKey(kNoPredictors, MessageLevel::Error));
    }
}

TEST(VariableList, WithAllPredictorsExceptedIsRefused) {
    ParsedCommand command("SELECTPRED y /EXCEPT VARIABLES=ALL");
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.SaidOnlyKey(kNoPredictors, MessageLevel::Error));
}

TEST(VariableList, TargetTakesItsOwnLevelWithoutAQualifier) {
    EXPECT_TRUE(ParsedCommand("SELECTPRED y BY f1").Specs().GetDependCat());
    EXPECT_TRUE(ParsedCommand("SELECTPRED f2 BY f1").Specs().GetDependCat());
    EXPECT_TRUE(ParsedCommand("SELECTPRED text BY f1").Specs().GetDependCat());
    EXPECT_FALSE(ParsedCommand("SELECTPRED sy BY f1").Specs().GetDependCat());
}

TEST(TargetQualifier, OverridesTheLevelOfTheVariable) {
    ParsedCommand continuous("SELECTPRED y (MLEVEL=S) BY f1");
    EXPECT_TRUE(continuous.Ok()) << continuous.MessageTexts();
    EXPECT_FALSE(continuous.Specs().GetDependCat());
}

class CategoricalQualifier : public testing::TestWithParam<const char*> {};
TEST_P(CategoricalQualifier, MakesAScaleTargetCategorical) {
    ParsedCommand command(std::string("SELECTPRED sy (") + GetParam() + ") BY f1");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_TRUE(command.Specs().GetDependCat());
}
INSTANTIATE_TEST_SUITE_P(Levels, CategoricalQualifier,
                         testing::Values("MLEVEL=N", "MLEVEL=O", "MLEVEL=F", "MLEVEL=T",
                                         "mlevel=n"));

class BadQualifier : public testing::TestWithParam<const char*> {};
TEST_P(BadQualifier, IsRefused) {
    ParsedCommand command(std::string("SELECTPRED y (") + GetParam() + ") BY f1");
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(
        command.SaidOnly([](const ParserMessage& m) { m.VariableInvalidQualif("y", "", ""); }));
    EXPECT_EQ(command.Specs().GetDependVar(), -1);
}
INSTANTIATE_TEST_SUITE_P(Forms, BadQualifier,
                         testing::Values("MLEVEL=X", "MLEVEL=NN", "LEVEL=S", "MLEVEL", "S",
                                         "MLEVEL:S", "MLEVEL=S S", "MLEVEL=1"));

TEST(TargetQualifier, IsNotForNaiveBayes) {
    ParsedCommand command("NAIVEBAYES y (MLEVEL=N) BY f1 f2");
    EXPECT_FALSE(command.Ok());
    EXPECT_EQ(command.Messages().size(), 1u) << command.MessageTexts();
}

TEST(VariableList, NaiveBayesNeedsACategoricalTarget) {
    ParsedCommand command("NAIVEBAYES sy BY f1 f2");
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.SaidOnly([](const ParserMessage& m) { m.NeedDepVarCat("sy", "", ""); }));
}

TEST(VariableList, NaiveBayesLeavesForcedVariablesOut) {
    ParsedCommand command("NAIVEBAYES y /FORCE FACTORS=(f2) COVARIATES=(c1)");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Predictors(), "sy* f1 f3 c2* text part wt*");
    EXPECT_EQ(command.ForcedPredictors(), "f2 c1*");
}

TEST(VariableList, NaiveBayesWithNothingToSearchIsRefused) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /FORCE FACTORS=(f1 f2)");
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.SaidOnlyKey(kNoPossible, MessageLevel::Error));
}

TEST(VariableList, NaiveBayesWithoutASearchMayHaveForcedPredictorsOnly) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /FORCE FACTORS=(f1 f2) /SUBSET NOSELECTION");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Predictors(), "null");
    EXPECT_TRUE(command.Specs().IsNoSelection());
}

TEST(VariableList, NaiveBayesTargetThatIsForcedIsRefused) {
    EXPECT_FALSE(ParsedCommand("NAIVEBAYES y BY f1 f2 /FORCE FACTORS=(y)").Ok());
    EXPECT_FALSE(ParsedCommand("NAIVEBAYES y BY f1 f2 /FORCE COVARIATES=(y)").Ok());
}

TEST(Except, LeavesVariablesOut) {
    ParsedCommand command("SELECTPRED y /EXCEPT VARIABLES=(f1 c1 f1)");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Predictors(), "sy* f2 f3 c2* text part wt*");
    ASSERT_NE(command.Specs().GetExceptList(), nullptr);
    EXPECT_EQ(command.Specs().GetExceptList()->size(), 2u);
}

TEST(Except, ABadListFailsByTheErrorWordOnly) {
    ParsedCommand command("SELECTPRED y BY f1 f2 /EXCEPT VARIABLES=(nobody)");
    EXPECT_TRUE(command.Ok());
    EXPECT_TRUE(command.ErrorWord());
    EXPECT_EQ(command.Messages().size(), 1u) << command.MessageTexts();
    EXPECT_EQ(command.Predictors(), "f1 f2");  // the variable list ran all the same
}

TEST(Except, AForcedVariableStaysForced) {
    ParsedCommand command("NAIVEBAYES y /FORCE FACTORS=(f1) /EXCEPT VARIABLES=(f1 f2)");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.ForcedPredictors(), "f1");
    EXPECT_EQ(command.Predictors(), "sy* f3 c1* c2* text part wt*");
    ASSERT_NE(command.Specs().GetExceptList(), nullptr);
    EXPECT_EQ(*command.Specs().GetExceptList(), std::vector<std::int32_t>{kF2});
}

TEST(Force, MergesFactorsAndCovariatesByIndex) {
    ParsedCommand command("NAIVEBAYES y /FORCE FACTORS=(text f1) COVARIATES=(c2 sy)");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.ForcedPredictors(), "sy* f1 c2* text");
    EXPECT_EQ(command.Specs().GetForcePredCount(), 4);
}

TEST(Force, AbsentLeavesNoList) {
    EXPECT_EQ(ParsedCommand("NAIVEBAYES y BY f1 f2").ForcedPredictors(), "null");
}

TEST(Force, OneVariableAsFactorAndCovariateIsRefused) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /FORCE FACTORS=(c1 f3) COVARIATES=(c1)");
    EXPECT_FALSE(command.Ok());
    EXPECT_EQ(command.Messages().size(), 1u) << command.MessageTexts();
}

TEST(Force, RepeatedVariableIsRefused) {
    EXPECT_FALSE(ParsedCommand("NAIVEBAYES y BY f1 f2 /FORCE FACTORS=(f3 f3)").Ok());
}

TEST(Force, StringAmongCovariatesIsRefused) {
    EXPECT_FALSE(ParsedCommand("NAIVEBAYES y BY f1 f2 /FORCE COVARIATES=(text)").Ok());
}

TEST(Force, WeightIsRefusedInEitherList) {
    EXPECT_FALSE(
        ParsedCommand("NAIVEBAYES y BY f1 f2 /FORCE FACTORS=(wt)", WeightedParseData()).Ok());
    EXPECT_FALSE(
        ParsedCommand("NAIVEBAYES y BY f1 f2 /FORCE COVARIATES=(wt)", WeightedParseData()).Ok());
}

TEST(Force, BadFactorsEndTheHandlerBeforeTheCovariates) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /FORCE FACTORS=(nobody) COVARIATES=(nobodyelse)");
    EXPECT_FALSE(command.Ok());
    EXPECT_EQ(command.Messages().size(), 1u) << command.MessageTexts();
}

TEST(TrainingSample, PercentIsStored) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /TRAININGSAMPLE PERCENT=62.5");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetTrainSampPct(), 62.5);
    EXPECT_EQ(command.Specs().GetTrainSampVar(), -1);
    EXPECT_TRUE(command.Specs().GetMultiTrainSamp());
}

TEST(TrainingSample, VariableIsStoredAndIsNoPredictor) {
    ParsedCommand command("NAIVEBAYES y /TRAININGSAMPLE VARIABLE=part");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetTrainSampPct(), 0.0);
    EXPECT_EQ(command.Specs().GetTrainSampVar(), kPart);
    EXPECT_EQ(command.Predictors(), "sy* f1 f2 f3 c1* c2* text wt*");
}

TEST(TrainingSample, PercentAndVariableExcludeEachOther) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /TRAININGSAMPLE PERCENT=50 VARIABLE=part");
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.SaidOnly(
        [](const ParserMessage& m) { m.ParamExclusive("PERCENT", "VARIABLE", "TRAININGSAMPLE"); }));
}

TEST(TrainingSample, PercentIsRefusedWithAWeight) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /TRAININGSAMPLE PERCENT=50", WeightedParseData());
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.SaidOnly(
        [](const ParserMessage& m) { m.InvalidParamWithWeight("PERCENT", "TRAININGSAMPLE"); }));
}

TEST(TrainingSample, VariableThatIsTheWeightIsRefused) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /TRAININGSAMPLE VARIABLE=wt", WeightedParseData());
    EXPECT_FALSE(command.Ok());
    EXPECT_EQ(command.Messages().size(), 1u) << command.MessageTexts();
}

TEST(TrainingSample, VariableThatIsForcedIsRefused) {
    EXPECT_FALSE(
        ParsedCommand("NAIVEBAYES y BY f1 /FORCE FACTORS=(part) /TRAININGSAMPLE VARIABLE=part")
            .Ok());
    EXPECT_FALSE(
        ParsedCommand("NAIVEBAYES y BY f1 /FORCE COVARIATES=(part) /TRAININGSAMPLE VARIABLE=part")
            .Ok());
}

TEST(TrainingSample, VariableThatIsTheTargetIsRefusedByTheVariableList) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /TRAININGSAMPLE VARIABLE=y");
    EXPECT_FALSE(command.Ok());
    EXPECT_EQ(command.Messages().size(), 1u) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetTrainSampVar(), kY);  // the handler itself let it pass
}

TEST(TrainingSample, StringOrUnknownVariableIsRefused) {
    EXPECT_FALSE(ParsedCommand("NAIVEBAYES y BY f1 f2 /TRAININGSAMPLE VARIABLE=text").Ok());
    EXPECT_FALSE(ParsedCommand("NAIVEBAYES y BY f1 f2 /TRAININGSAMPLE VARIABLE=nobody").Ok());
}
