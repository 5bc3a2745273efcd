#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "backend/predselect/tests/ParseFixture.h"

// CRITERIA, MISSING, PRINT, PLOT and SCREENING.

namespace {

using embedded::MessageLevel;
using Ranks = std::vector<std::int32_t>;

constexpr const char* kMixedIgnored =
    "Mixed rank criterion ^1 in parameter ^2 is ignored, subcommand ^3...";
constexpr const char* kCategoricalIgnored =
    "Categorical rank criterion ^1 in parameter ^2 is ignored, subcommand ^3...";
constexpr const char* kBelowUnique = "Parameter ^1 less than number of unique predictors in ^2...";

/// Ten factors x0 to x9 and a nominal target y.
embedded::DataSet TenFactors() {
    embedded::DataSetBuilder builder;
    builder.Numbers("y", {0, 1}).Level(kLevelNominal);
    for (int i = 0; i < 10; ++i) {
        builder.Numbers("x" + std::to_string(i), {0, 1}).Level(kLevelNominal);
    }
    return builder.Build();
}

std::int32_t RankingOf(const std::string& text) {
    ParsedCommand command(text);
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_TRUE(command.SaidNothing());
    return command.Specs().GetRanking();
}

}  // namespace

TEST(SelectCriteria, AreStored) {
    ParsedCommand command(
        "SELECTPRED y BY f1 f2 f3 /CRITERIA SIZE=2 RANKING=LRCHISQ PCUTOFF=0.25 "
        "SHOWUNSELECTED=7 TIMER=1.5");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetSelectSize(), 2);
    EXPECT_EQ(command.Specs().GetRanking(), 1);
    EXPECT_EQ(command.Specs().GetPCutoff(), 0.25);  // beside SIZE: nothing rejects it
    EXPECT_EQ(command.Specs().GetShowUnselected(), 7);
    EXPECT_EQ(command.Specs().GetTimer(), 1.5);
}

TEST(SelectCriteria, OneAloneLeavesTheOthersAtTheirDefaults) {
    ParsedCommand command("SELECTPRED y BY f1 f2 f3 /CRITERIA TIMER=2");
    EXPECT_TRUE(command.Ok());
    EXPECT_EQ(command.Specs().GetTimer(), 2.0);
    EXPECT_EQ(command.Specs().GetSelectSize(), 0);
    EXPECT_EQ(command.Specs().GetRanking(), 0);
    EXPECT_EQ(command.Specs().GetPCutoff(), 0.05);
    EXPECT_EQ(command.Specs().GetShowUnselected(), 0);
}

TEST(SelectCriteria, SizeAutoIsZero) {
    ParsedCommand command("SELECTPRED y BY f1 f2 f3 /CRITERIA SIZE=auto");
    EXPECT_TRUE(command.Ok());
    EXPECT_EQ(command.Specs().GetSelectSize(), 0);
}

TEST(SelectCriteria, SizeOf10With10CandidatesFailsAndStoresNothing) {
    ParsedCommand command("SELECTPRED y /CRITERIA SIZE=10 TIMER=1", TenFactors());
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(
        command.SaidOnlyKey(kBelowUnique, MessageLevel::Error, {"CRITERIA SIZE", "SELECTPRED"}));
    EXPECT_EQ(command.Specs().GetTimer(), 5.0);
}

TEST(SelectCriteria, SizeOf9With10CandidatesPasses) {
    ParsedCommand command("SELECTPRED y /CRITERIA SIZE=9", TenFactors());
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetSelectSize(), 9);
}

TEST(SelectCriteria, RankingWordsAreCodes0To3) {
    EXPECT_EQ(RankingOf("SELECTPRED y BY f1 f2 /CRITERIA RANKING=PEARSONCHISQ"), 0);
    EXPECT_EQ(RankingOf("SELECTPRED y BY f1 f2 /CRITERIA RANKING=LRCHISQ"), 1);
    EXPECT_EQ(RankingOf("SELECTPRED y BY f1 f2 /CRITERIA RANKING=CRAMERSV"), 2);
    EXPECT_EQ(RankingOf("SELECTPRED y BY f1 f2 /CRITERIA RANKING=lambda"), 3);
}

TEST(SelectCriteria, RankingByLambdaOfAMixFallsBackToPearsonSilently) {
    EXPECT_EQ(RankingOf("SELECTPRED y BY f1 WITH c1 /CRITERIA RANKING=LAMBDA"), 0);
    EXPECT_EQ(RankingOf("SELECTPRED y BY f1 WITH c1 /CRITERIA RANKING=CRAMERSV"), 0);
    EXPECT_EQ(RankingOf("SELECTPRED y BY f1 WITH c1 /CRITERIA RANKING=LRCHISQ"), 1);
}

TEST(SelectCriteria, RankingIsKeptWhereThereIsNoMix) {
    EXPECT_EQ(RankingOf("SELECTPRED sy BY f1 WITH c1 /CRITERIA RANKING=LAMBDA"), 3);
    EXPECT_EQ(RankingOf("SELECTPRED y WITH c1 c2 /CRITERIA RANKING=LAMBDA"), 3);
    EXPECT_EQ(RankingOf("SELECTPRED y (MLEVEL=S) BY f1 WITH c1 /CRITERIA RANKING=CRAMERSV"), 2);
}

TEST(NaiveCriteria, AreStored) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /CRITERIA BINS=4 MEMALLOCATE=4.5 TIMER=0.5");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetBins(), 4);
    EXPECT_EQ(command.Specs().GetMultiMemAllocate(), 4.5);
    EXPECT_EQ(command.Specs().GetTimer(), 0.5);
    EXPECT_EQ(command.Specs().GetShowUnselected(), 0);
}

TEST(NaiveCriteria, OneAloneLeavesTheOthersAtTheirDefaults) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /CRITERIA BINS=4");
    EXPECT_EQ(command.Specs().GetMultiMemAllocate(), 1024.0);
    EXPECT_EQ(command.Specs().GetTimer(), 5.0);
}

TEST(Missing, ExcludeAndInclude) {
    EXPECT_TRUE(ParsedCommand("SELECTPRED y BY f1 /MISSING USERMISSING=exclude")
                    .Specs()
                    .GetUserMissExclude());
    EXPECT_FALSE(ParsedCommand("SELECTPRED y BY f1 /MISSING USERMISSING=INCLUDE")
                     .Specs()
                     .GetUserMissExclude());
    EXPECT_FALSE(ParsedCommand("NAIVEBAYES y BY f1 f2 /MISSING USERMISSING=INCLUDE")
                     .Specs()
                     .GetUserMissExclude());
}

TEST(Print, OnlyTheWordsWrittenAreOn) {
    ParsedCommand command("SELECTPRED y BY f1 /PRINT SELECTED CPS");
    EXPECT_TRUE(command.Ok());
    EXPECT_TRUE(command.SaidNothing());
    EXPECT_TRUE(command.Specs().GetPrintCPS());
    EXPECT_FALSE(command.Specs().GetPrintExcluded());
    EXPECT_FALSE(command.Specs().GetPrintSummary());
    EXPECT_TRUE(command.Specs().GetPrintSelected());
    EXPECT_FALSE(command.Specs().GetPrintClassification());
    EXPECT_FALSE(command.Specs().GetPrintUncertainty());
}

TEST(Print, NaiveBayesWords) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /PRINT SUMMARY CLASSIFICATION EXCLUDED");
    EXPECT_TRUE(command.Ok());
    EXPECT_FALSE(command.Specs().GetPrintCPS());
    EXPECT_TRUE(command.Specs().GetPrintExcluded());
    EXPECT_TRUE(command.Specs().GetPrintSummary());
    EXPECT_FALSE(command.Specs().GetPrintSelected());
    EXPECT_TRUE(command.Specs().GetPrintClassification());
}

TEST(Print, AbsentLeavesTheDefaults) {
    ParsedCommand command("SELECTPRED y BY f1");
    EXPECT_TRUE(command.Specs().GetPrintCPS());
    EXPECT_TRUE(command.Specs().GetPrintSummary());
    EXPECT_TRUE(command.Specs().GetPrintRankList().empty());
}

TEST(Print, NoneExcludesAnyOther) {
    for (const char* print : {"NONE CPS", "SUMMARY NONE"}) {
        ParsedCommand command(std::string("SELECTPRED y BY f1 /PRINT ") + print);
        EXPECT_FALSE(command.Ok());
        EXPECT_TRUE(
            command.SaidOnly([](const ParserMessage& m) { m.ParamExclAnyOther("NONE", "PRINT"); }));
        EXPECT_TRUE(command.Specs().GetPrintExcluded());  // nothing stored
    }
}

TEST(Print, NoneWarnsThatNoTableIsShown) {
    for (const char* name : {"SELECTPRED", "NAIVEBAYES"}) {
        ParsedCommand command(std::string(name) + " y BY f1 f2 /PRINT NONE");
        EXPECT_TRUE(command.Ok());
        EXPECT_TRUE(command.SaidOnly([](const ParserMessage& m) { m.NoTableRequested(); }));
        EXPECT_EQ(command.Messages().front().fLevel, MessageLevel::Warning);
        EXPECT_FALSE(command.ErrorWord());
        EXPECT_FALSE(command.Specs().GetPrintCPS());
    }
}

TEST(Print, NoneWithAPlotWarnsOfNothing) {
    ParsedCommand command("SELECTPRED y BY f1 /PRINT NONE /PLOT SUMMARY");
    EXPECT_TRUE(command.Ok());
    EXPECT_TRUE(command.SaidNothing());
    EXPECT_TRUE(command.Specs().GetPlotSummary());
}

TEST(Print, SummaryAndSelectedAreNoTablesWithoutASearch) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /SUBSET NOSELECTION /PRINT SUMMARY SELECTED");
    EXPECT_TRUE(command.Ok());
    EXPECT_TRUE(command.SaidOnly([](const ParserMessage& m) { m.NoTableRequested(); }));
    EXPECT_TRUE(command.Specs().GetPrintSummary());
}

TEST(Print, EachOtherTableIsOneWithoutASearch) {
    for (const char* word : {"CPS", "EXCLUDED", "CLASSIFICATION"}) {
        ParsedCommand command(std::string("NAIVEBAYES y BY f1 f2 /SUBSET NOSELECTION /PRINT ") +
                              word);
        EXPECT_TRUE(command.Ok());
        EXPECT_TRUE(command.SaidNothing()) << word;
    }
}

TEST(Print, SummaryAndSelectedAreTablesOfASearch) {
    EXPECT_TRUE(ParsedCommand("NAIVEBAYES y BY f1 f2 /PRINT SUMMARY SELECTED").SaidNothing());
}

TEST(PrintSummary, OfFactorsTakesAllCriteriaInAFixedOrder) {
    ParsedCommand command(
        "SELECTPRED y BY f1 f2 /PRINT SUMMARY(LAMBDA PEARSONCHISQ cramersv LRCHISQ)");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_TRUE(command.SaidNothing());
    EXPECT_EQ(command.Specs().GetPrintRankList(), (Ranks{0, 1, 2, 3}));
    EXPECT_TRUE(command.Specs().GetPrintSummary());
}

TEST(PrintSummary, WithoutAValueAddsNoCriteria) {
    ParsedCommand command("SELECTPRED y BY f1 f2 /PRINT SUMMARY");
    EXPECT_TRUE(command.Specs().GetPrintRankList().empty());
    EXPECT_TRUE(command.Specs().GetPrintSummary());
}

TEST(PrintSummary, LambdaWithCovariatesAddsNothingAndWarns) {
    ParsedCommand command("SELECTPRED y BY f1 WITH c1 /PRINT SUMMARY(LAMBDA)");
    EXPECT_TRUE(command.Ok());
    EXPECT_TRUE(command.Specs().GetPrintRankList().empty());
    EXPECT_TRUE(command.SaidOnlyKey(kCategoricalIgnored, MessageLevel::Warning,
                                    {"LAMBDA", "SUMMARY", "PRINT"}));
    EXPECT_FALSE(command.ErrorWord());
}

TEST(PrintSummary, CramersVWithCovariatesAddsNothingAndWarns) {
    ParsedCommand command("SELECTPRED y BY f1 WITH c1 /PRINT SUMMARY(CRAMERSV)");
    EXPECT_TRUE(command.Specs().GetPrintRankList().empty());
    EXPECT_TRUE(command.SaidOnlyKey(kCategoricalIgnored, MessageLevel::Warning, {"CRAMERSV"}));
}

TEST(PrintSummary, OfAMixTakesTheTwoChiSquares) {
    ParsedCommand command("SELECTPRED y BY f1 WITH c1 /PRINT SUMMARY(LRCHISQ PEARSONCHISQ)");
    EXPECT_TRUE(command.SaidNothing());
    EXPECT_EQ(command.Specs().GetPrintRankList(), (Ranks{0, 1}));
}

TEST(PrintSummary, OfCovariatesOnlyWarnsOfEachCriterion) {
    ParsedCommand command(
        "SELECTPRED y WITH c1 c2 /PRINT SUMMARY(LAMBDA CRAMERSV LRCHISQ PEARSONCHISQ)");
    EXPECT_TRUE(command.Ok());
    EXPECT_TRUE(command.Specs().GetPrintRankList().empty());
    ASSERT_EQ(command.Messages().size(), 4u);
    const char* const keys[] = {kMixedIgnored, kMixedIgnored, kCategoricalIgnored,
                                kCategoricalIgnored};
    const char* const words[] = {"PEARSONCHISQ", "LRCHISQ", "CRAMERSV", "LAMBDA"};
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(command.Messages()[i].fKey, keys[i]);
        EXPECT_NE(command.Messages()[i].fText.find(words[i]), std::string::npos);
    }
}

TEST(PrintSummary, OfAContinuousTargetWarnsOfEachCriterion) {
    ParsedCommand pearson("SELECTPRED sy BY f1 f2 /PRINT SUMMARY(PEARSONCHISQ)");
    EXPECT_TRUE(pearson.Specs().GetPrintRankList().empty());
    EXPECT_TRUE(pearson.SaidOnlyKey(kMixedIgnored, MessageLevel::Warning, {"PEARSONCHISQ"}));
}

TEST(Plot, IsOffUnlessAsked) {
    EXPECT_FALSE(ParsedCommand("SELECTPRED y BY f1").Specs().GetPlotSummary());
    ParsedCommand command("SELECTPRED y BY f1 /PLOT SUMMARY");
    EXPECT_TRUE(command.Specs().GetPlotSummary());
    EXPECT_FALSE(command.Specs().GetPlotUncertainty());
}

TEST(Screening, LimitsAreStoredWithTheirTexts) {
    ParsedCommand command(
        "SELECTPRED y BY f1 /SCREENING PCTMISSING=12.50 PCTEQUAL=1.5e2 PCTUNEQUAL=33 CV=.25 "
        "STDDEV=0.10");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    const PRSValidSpecs& specs = command.Specs();
    EXPECT_TRUE(specs.GetScreening());
    EXPECT_EQ(specs.GetPctMissing(), 12.5);
    EXPECT_EQ(specs.GetPctEqual(), 150.0);
    EXPECT_EQ(specs.GetPctUnequal(), 33.0);
    EXPECT_EQ(specs.GetCoefVar(), 0.25);
    EXPECT_EQ(specs.GetStdDev(), 0.1);
    EXPECT_EQ(specs.GetPctMissingText(), "12.50");
    EXPECT_EQ(specs.GetPctEqualText(), "1.5e2");
    EXPECT_EQ(specs.GetPctUnequalText(), "33");
    EXPECT_EQ(specs.GetCoefVarText(), ".25");
    EXPECT_EQ(specs.GetStdDevText(), "0.10");
}

TEST(Screening, WhatIsNotGivenKeepsItsDefaultAndAnEmptyText) {
    ParsedCommand command("SELECTPRED y BY f1 /SCREENING CV=0.5");
    EXPECT_EQ(command.Specs().GetPctMissing(), 70.0);
    EXPECT_EQ(command.Specs().GetPctMissingText(), "");
    EXPECT_EQ(command.Specs().GetCoefVarText(), "0.5");
}

TEST(Screening, StatusOffKeepsTheLimits) {
    ParsedCommand command("SELECTPRED y BY f1 /SCREENING STATUS=OFF PCTMISSING=10");
    EXPECT_FALSE(command.Specs().GetScreening());
    EXPECT_EQ(command.Specs().GetPctMissing(), 10.0);
}

TEST(Screening, StatusOnIsTheDefault) {
    EXPECT_TRUE(ParsedCommand("SELECTPRED y BY f1 /SCREENING STATUS=on").Specs().GetScreening());
}
