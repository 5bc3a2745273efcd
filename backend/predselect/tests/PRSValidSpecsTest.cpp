#include "backend/predselect/PRSValidSpecs.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "backend/predselect/tests/ParseFixture.h"
#include "featureselect/FSCriterion.h"
#include "featureselect/FSSettings.h"
#include "host/CaseDelivery.h"
#include "host/Progress.h"
#include "naivebayes/NaiveBayesSettings.h"

namespace {

/// Three predictors, the first and last of them factors.
struct FilledSpecs {
    explicit FilledSpecs(bool uniVariable = true) {
        fSpecs.SetUniVariable(uniVariable);
        fSpecs.SetDependVar(4, true);
        fSpecs.SetPredictors(&fList, &fFlags);
    }
    std::vector<std::int32_t> fList = {2, 5, 7};
    std::vector<bool> fFlags = {true, false, true};
    PRSValidSpecs fSpecs;
};

/// A NAIVEBAYES command of a target and nine factors, with so much memory, finished.
class FinishedNaiveBayes {
 public:
    explicit FinishedNaiveBayes(double memory)
        : fCommands(embedded::ParseCommandText("NAIVEBAYES y;", "test").fvCommands),
          fSession(fData, fCommands.front(), fReport, {.fTempDir = "/some/folder"}) {
        fSpecs.SetUniVariable(false);
        fSpecs.SetDependVar(0, true);
        fSpecs.SetPredictors(&fList, &fFlags);
        fSpecs.SetNaiveCriteria(10, memory, 0, 5.0);
        fSpecs.FinishSpecs();
    }
    const PRSValidSpecs& Specs() const { return fSpecs; }

 private:
    embedded::DataSet fData;
    std::vector<embedded::CommandTokens> fCommands;
    embedded::CommandReport fReport;
    embedded::HostSession fSession;
    std::vector<std::int32_t> fList = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    std::vector<bool> fFlags = std::vector<bool>(9, true);
    PRSValidSpecs fSpecs;
};

std::string DisplayOf(const PRSValidSpecs& specs) {
    std::ostringstream out;
    specs.Display(out);
    return out.str();
}

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(PRSValidSpecs, FreshRecordHasTheDefaults) {
    const PRSValidSpecs specs;
    EXPECT_TRUE(specs.GetUniVariable());
    EXPECT_EQ(specs.GetDependVar(), -1);
    EXPECT_TRUE(specs.GetDependCat());
    EXPECT_EQ(specs.GetWeightVar(), -1);
    EXPECT_EQ(specs.GetPredictList(), nullptr);
    EXPECT_EQ(specs.GetPredCatFlags(), nullptr);
    EXPECT_EQ(specs.GetForcePredList(), nullptr);
    EXPECT_EQ(specs.GetForceCatFlags(), nullptr);
    EXPECT_EQ(specs.GetExceptList(), nullptr);
    EXPECT_TRUE(specs.GetScreening());
    EXPECT_EQ(specs.GetPctMissing(), 70.0);
    EXPECT_EQ(specs.GetPctEqual(), 95.0);
    EXPECT_EQ(specs.GetPctUnequal(), 90.0);
    EXPECT_EQ(specs.GetCoefVar(), 0.001);
    EXPECT_EQ(specs.GetStdDev(), 0.0);
    EXPECT_EQ(specs.GetPctMissingText() + specs.GetPctEqualText() + specs.GetPctUnequalText() +
                  specs.GetCoefVarText() + specs.GetStdDevText(),
              "");
    EXPECT_EQ(specs.GetTimer(), 5.0);
    EXPECT_EQ(specs.GetShowUnselected(), 0);
    EXPECT_EQ(specs.GetSelectSize(), 0);
    EXPECT_EQ(specs.GetRanking(), 0);
    EXPECT_EQ(specs.GetPCutoff(), 0.05);
    EXPECT_EQ(specs.GetBins(), 10);
    EXPECT_EQ(specs.GetMultiMemAllocate(), 1024.0);
    EXPECT_EQ(specs.GetTrainSampPct(), 0.0);
    EXPECT_EQ(specs.GetTrainSampVar(), -1);
    EXPECT_EQ(specs.GetMaxSubsetSize(), 0);
    EXPECT_FALSE(specs.GetPseudoBIC());
    EXPECT_FALSE(specs.GetTestData());
    EXPECT_EQ(specs.GetExactSubsetSize(), 0);
    EXPECT_TRUE(specs.GetUserMissExclude());
    EXPECT_TRUE(specs.GetPredProbRoot().IsEmpty());
    EXPECT_EQ(specs.GetMaxPredProbs(), 25);
    EXPECT_TRUE(specs.GetPredValName().IsEmpty());
    EXPECT_FALSE(specs.GetPredValDefault());
    EXPECT_EQ(specs.GetModelFile(), "");
    EXPECT_TRUE(specs.GetPrintRankList().empty());
    EXPECT_EQ(specs.GetVarValidSpecs(), nullptr);
    EXPECT_EQ(specs.GetFSSettings(), nullptr);
}

TEST(PRSValidSpecs, FreshRecordHasNoTrainingSampleAndDoesSelect) {
    const PRSValidSpecs specs;
    EXPECT_FALSE(specs.GetMultiTrainSamp());
    EXPECT_FALSE(specs.IsNoSelection());
    EXPECT_EQ(specs.GetPredictCount(), 0);
    EXPECT_EQ(specs.GetForcePredCount(), 0);
    EXPECT_EQ(specs.GetEffectiveSelectSize(), 0);
}

TEST(PRSValidSpecs, FreshRecordPrintsAllButTheUncertainty) {
    const PRSValidSpecs specs;
    EXPECT_TRUE(specs.GetPrintCPS());
    EXPECT_TRUE(specs.GetPrintExcluded());
    EXPECT_TRUE(specs.GetPrintSummary());
    EXPECT_TRUE(specs.GetPrintSelected());
    EXPECT_TRUE(specs.GetPrintClassification());
    EXPECT_FALSE(specs.GetPrintUncertainty());
    EXPECT_FALSE(specs.GetPlotSummary());
    EXPECT_FALSE(specs.GetPlotUncertainty());
}

TEST(PRSValidSpecs, RepeatedPrintRankIsStoredOnce) {
    PRSValidSpecs specs;
    specs.AddPrintRank(1);
    specs.AddPrintRank(0);
    specs.AddPrintRank(1);
    EXPECT_EQ(specs.GetPrintRankList(), (std::vector<std::int32_t>{1, 0}));
}

TEST(PRSValidSpecs, EitherFormOfATrainingSampleCounts) {
    PRSValidSpecs specs;
    specs.SetTrainSample(0.5, -1);
    EXPECT_TRUE(specs.GetMultiTrainSamp());
    specs.SetTrainSample(0.0, 0);
    EXPECT_TRUE(specs.GetMultiTrainSamp());
    specs.SetTrainSample(0.0, -1);
    EXPECT_FALSE(specs.GetMultiTrainSamp());
}

TEST(PRSValidSpecs, NoSelectionIsNoMaximumAndNoExactSize) {
    PRSValidSpecs specs;
    specs.SetSubset(-1, false, false, 0);
    EXPECT_TRUE(specs.IsNoSelection());
    specs.SetSubset(-1, false, false, 1);
    EXPECT_FALSE(specs.IsNoSelection());
    specs.SetSubset(0, true, false, 0);
    EXPECT_FALSE(specs.IsNoSelection());
}

TEST(PRSValidSpecs, SizeAsGivenComesBeforeTheEnginesDefault) {
    FilledSpecs filled;
    EXPECT_EQ(filled.fSpecs.GetEffectiveSelectSize(), 0);  // no settings yet
    filled.fSpecs.FinishSpecs();
    EXPECT_EQ(filled.fSpecs.GetEffectiveSelectSize(), 3);
    filled.fSpecs.SetSelectCriteria(2, 0, 0.05, 0, 5.0);
    EXPECT_EQ(filled.fSpecs.GetEffectiveSelectSize(), 2);
}

TEST(PRSValidSpecs, DefaultSizeOfManyPredictorsIsTheEngines) {
    std::vector<std::int32_t> list;
    for (std::int32_t i = 1; i <= 400; ++i) {
        list.push_back(i);
    }
    const std::vector<bool> flags(list.size(), true);
    PRSValidSpecs specs;
    specs.SetDependVar(0, true);
    specs.SetPredictors(&list, &flags);
    specs.FinishSpecs();
    EXPECT_EQ(specs.GetPredictCount(), 400);
    EXPECT_EQ(specs.GetEffectiveSelectSize(), 40);
}

TEST(PRSValidSpecs, ColumnsAreTargetThenWeightThenPredictors) {
    FilledSpecs filled;
    filled.fSpecs.SetWeightVar(9);
    filled.fSpecs.FinishSpecs();
    const UAVarValidSpecs& registry = *filled.fSpecs.GetVarValidSpecs();
    ASSERT_EQ(registry.GetNRecordVars(), 5);
    const std::int32_t expected[] = {4, 9, 2, 5, 7};
    for (std::int32_t column = 0; column < 5; ++column) {
        EXPECT_EQ(registry.GetKOLTVarIndex(column), expected[column]);
    }
    EXPECT_EQ(registry.GetWeightColumn(), 1);
    EXPECT_TRUE(registry.GetKOLTCatVar(4));
    EXPECT_TRUE(registry.GetKOLTCatVar(2));
    EXPECT_FALSE(registry.GetKOLTCatVar(5));
    EXPECT_EQ(filled.fSpecs.GetFSSettings()->GetTargetPosition(), 0);
    EXPECT_EQ(filled.fSpecs.GetFSSettings()->GetWeightPosition(), 1);
}

TEST(PRSValidSpecs, WithoutWeightThePredictorsFollowTheTarget) {
    FilledSpecs filled;
    filled.fSpecs.FinishSpecs();
    const UAVarValidSpecs& registry = *filled.fSpecs.GetVarValidSpecs();
    ASSERT_EQ(registry.GetNRecordVars(), 4);
    EXPECT_EQ(registry.GetKOLTVarIndex(1), 2);
    EXPECT_EQ(registry.GetWeightColumn(), -1);
    EXPECT_EQ(filled.fSpecs.GetFSSettings()->GetWeightPosition(), -1);
}

TEST(PRSValidSpecs, RegistryIsToldHowToTreatUserMissingValues) {
    for (const bool exclude : {true, false}) {
        FilledSpecs filled;
        filled.fSpecs.SetUserMissExclude(exclude);
        filled.fSpecs.FinishSpecs();
        EXPECT_EQ(filled.fSpecs.GetVarValidSpecs()->GetUserMissExclude(), exclude);
    }
}

TEST(PRSValidSpecs, SettingsTakeTheKindsOfPredictorsAndTarget) {
    FilledSpecs filled;
    filled.fSpecs.SetDependVar(4, false);
    filled.fSpecs.FinishSpecs();
    const FSSettings& settings = *filled.fSpecs.GetFSSettings();
    EXPECT_EQ(settings.GetPredIsCategorical(), filled.fFlags);
    EXPECT_FALSE(settings.IsTargetCategorical());
    EXPECT_EQ(settings.GetPredSetType(), FSSettings::kMixed);
}

TEST(PRSValidSpecs, WithoutPredictorsTheSettingsStillTakeTheTarget) {
    PRSValidSpecs specs;
    specs.SetDependVar(4, false);
    specs.FinishSpecs();
    ASSERT_NE(specs.GetFSSettings(), nullptr);
    EXPECT_EQ(specs.GetFSSettings()->GetNumPredictors(), 0);
    EXPECT_FALSE(specs.GetFSSettings()->IsTargetCategorical());
    EXPECT_EQ(specs.GetEffectiveSelectSize(), 0);
}

TEST(PRSValidSpecs, ScreeningPassesTheLimits) {
    FilledSpecs filled;
    filled.fSpecs.SetScreening(true, 11, 22, 33, 0.25, 0.5);
    filled.fSpecs.FinishSpecs();
    const FSSettings& settings = *filled.fSpecs.GetFSSettings();
    EXPECT_DOUBLE_EQ(settings.GetMaxMissingPercent(), 11);
    EXPECT_DOUBLE_EQ(settings.GetMaxSingleCategoryPercent(), 22);
    EXPECT_DOUBLE_EQ(settings.GetMaxCategoriesPercent(), 33);
    EXPECT_EQ(settings.GetMinCoefVar(), 0.25);
    EXPECT_EQ(settings.GetMinStdDev(), 0.5);
}

TEST(PRSValidSpecs, WithScreeningOffTheSettingsKeepTheirOwnLimits) {
    FilledSpecs filled;
    filled.fSpecs.SetScreening(false, 11, 22, 33, 0.25, 0.5);
    filled.fSpecs.FinishSpecs();
    const FSSettings& settings = *filled.fSpecs.GetFSSettings();
    EXPECT_DOUBLE_EQ(settings.GetMaxMissingPercent(), 70);
    EXPECT_DOUBLE_EQ(settings.GetMaxSingleCategoryPercent(), 95);
    EXPECT_DOUBLE_EQ(settings.GetMaxCategoriesPercent(), 90);
    EXPECT_EQ(settings.GetMinCoefVar(), 0.001);
    EXPECT_EQ(settings.GetMinStdDev(), 0.0);
}

TEST(PRSValidSpecs, PercentEqualAbove100LeavesTheEngineAt95) {
    FilledSpecs filled;
    filled.fSpecs.SetScreening(true, 11, 150, 33, 0.25, 0.5);
    filled.fSpecs.FinishSpecs();
    EXPECT_DOUBLE_EQ(filled.fSpecs.GetFSSettings()->GetMaxSingleCategoryPercent(), 95);
    EXPECT_DOUBLE_EQ(filled.fSpecs.GetFSSettings()->GetMaxCategoriesPercent(), 33);
}

TEST(PRSValidSpecs, RankingAndPrintRanksSwitchCriteriaOn) {
    // Factors alone would compute criteria 0 to 3 anyhow; a mix computes 0, 1 and 4.
    FilledSpecs filled;
    filled.fSpecs.SetSelectCriteria(0, FSCriterion::kLikelihood, 0.05, 0, 5.0);
    filled.fSpecs.AddPrintRank(FSCriterion::kPearson);
    filled.fSpecs.AddPrintRank(FSCriterion::kCramer);  // refused by the settings for a mix
    filled.fSpecs.AddPrintRank(7);                     // no ranking criterion: skipped
    filled.fSpecs.AddPrintRank(-1);
    filled.fSpecs.FinishSpecs();
    EXPECT_EQ(filled.fSpecs.GetFSSettings()->GetCriteria(),
              (std::vector<bool>{true, true, false, false, true, false}));
}

TEST(PRSValidSpecs, CriterionOfAContinuousTargetIsNotSwitchedOn) {
    FilledSpecs filled;
    filled.fSpecs.SetDependVar(4, false);
    filled.fSpecs.FinishSpecs();
    EXPECT_EQ(filled.fSpecs.GetFSSettings()->GetCriteria(),
              (std::vector<bool>{false, false, false, false, true, true}));
}

TEST(PRSValidSpecs, TimerOfZeroSetsNoLimit) {
    FilledSpecs filled;
    filled.fSpecs.SetSelectCriteria(0, 0, 0.05, 0, 0.0);
    filled.fSpecs.FinishSpecs();
    ASSERT_NE(filled.fSpecs.GetFSSettings()->GetCancelCheck(), nullptr);
    EXPECT_FALSE(filled.fSpecs.GetFSSettings()->GetCancelCheck()->IsCancelled());
}

TEST(PRSValidSpecs, TimerIsInMinutes) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    FilledSpecs filled;
    filled.fSpecs.SetSelectCriteria(0, 0, 0.05, 0, 0.002);  // 120 ms
    filled.fSpecs.FinishSpecs();
    CancelCheck& check = *filled.fSpecs.GetFSSettings()->GetCancelCheck();
    while (!check.IsCancelled() && Clock::now() - start < std::chrono::seconds(60)) {
    }
    const std::chrono::duration<double> elapsed = Clock::now() - start;
    EXPECT_GE(elapsed.count(), 0.12);
    EXPECT_LT(elapsed.count(), 60);
}

TEST(PRSValidSpecs, NaiveBayesMakesTheRegistryAndTheOtherSettings) {
    FinishedNaiveBayes finished(1024.0);
    ASSERT_NE(finished.Specs().GetVarValidSpecs(), nullptr);
    EXPECT_EQ(finished.Specs().GetVarValidSpecs()->GetNRecordVars(), 10);
    EXPECT_EQ(finished.Specs().GetFSSettings(), nullptr);
    const NaiveBayesSettings* settings = finished.Specs().GetNBSettings();
    ASSERT_NE(settings, nullptr);
    EXPECT_NE(settings->fpUserRandom, nullptr);
    EXPECT_NE(settings->fpStopProcessor, nullptr);
    EXPECT_EQ(settings->fTempDir, "/some/folder/");
    EXPECT_EQ(settings->fRandomKind, NaiveBayesSettings::kMersenneTwister)
        << "the host's random source is for the sample alone";
}

TEST(PRSValidSpecs, TenRecordVariablesAnd1024MegabytesGive10922Records) {
    EXPECT_EQ(FinishedNaiveBayes(1024.0).Specs().GetNBSettings()->fMaxRecordsInMemory, 10922);
}

TEST(PRSValidSpecs, TheSmallestMemoryIsTruncated) {
    // 4 * 1024 / 96 is 42.67.
    EXPECT_EQ(FinishedNaiveBayes(4.0).Specs().GetNBSettings()->fMaxRecordsInMemory, 42);
}

TEST(PRSValidSpecs, MoreMemoryThanRecordsCanBeCountedGivesTheLargestNumber) {
    EXPECT_EQ(FinishedNaiveBayes(1e300).Specs().GetNBSettings()->fMaxRecordsInMemory,
              std::numeric_limits<std::int32_t>::max());
}

TEST(PRSValidSpecs, ForcedPredictorsComeBehindTheCandidates) {
    ParsedCommand command("NAIVEBAYES y BY f2 f3 /FORCE FACTORS=(f1) COVARIATES=(c1)");
    ASSERT_TRUE(command.Ok()) << command.MessageTexts();
    command.Specs().FinishSpecs();
    const UAVarValidSpecs& registry = *command.Specs().GetVarValidSpecs();
    ASSERT_EQ(registry.GetNRecordVars(), 5);
    EXPECT_EQ(registry.GetKOLTVarIndex(1), kF2);
    EXPECT_EQ(registry.GetKOLTVarIndex(3), kF1);
    EXPECT_EQ(registry.GetKOLTVarIndex(4), kC1);
    EXPECT_TRUE(registry.GetKOLTCatVar(kF1));
    EXPECT_FALSE(registry.GetKOLTCatVar(kC1));
}

TEST(PRSValidSpecsDeathTest, LessMemoryThanTheGrammarAllowsStops) {
    EXPECT_DEATH(FinishedNaiveBayes(3.9), "fMultiMemAllocate >= 4.0");
}

TEST(PRSValidSpecs, NoSelectionWithForcedPredictorsOnlyHasNoPredictorList) {
    ParsedCommand command(
        "NAIVEBAYES y BY f1 /FORCE FACTORS=(f1) COVARIATES=(c1) /SUBSET NOSELECTION");
    ASSERT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Predictors(), "null");
    EXPECT_EQ(command.Specs().GetPredictCount(), 0);
    EXPECT_EQ(command.Specs().GetForcePredCount(), 2);
    command.Specs().FinishSpecs();
    EXPECT_EQ(command.Specs().GetVarValidSpecs()->GetKOLTVarIndex(0), kY);
}

TEST(PRSValidSpecsDeathTest, PredictorsAndFlagsOfDifferentSizesStop) {
    const std::vector<std::int32_t> two = {1, 2};
    const std::vector<bool> one = {true};
    PRSValidSpecs specs;
    EXPECT_DEATH(specs.SetPredictors(&two, &one), "nPreds == nFlags");
    EXPECT_DEATH(specs.SetForcePredictors(&two, &one), "nPreds == nFlags");
    EXPECT_DEATH(specs.SetPredictors(nullptr, &one), "nPreds == nFlags");
    EXPECT_DEATH(specs.SetForcePredictors(&two, nullptr), "nPreds == nFlags");
}

TEST(PRSValidSpecsDeathTest, FinishingWithOneOfTwoListsStops) {
    const std::vector<std::int32_t> noList;
    const std::vector<bool> noFlags;
    PRSValidSpecs specs;
    specs.SetPredictors(nullptr, &noFlags);  // null counts as empty
    EXPECT_DEATH(specs.FinishSpecs(), "fpPredictList != 0 && fbpPredCatVarList != 0");
    specs.SetPredictors(&noList, nullptr);
    EXPECT_DEATH(specs.FinishSpecs(), "fpPredictList != 0 && fbpPredCatVarList != 0");
}

TEST(PRSValidSpecsDeathTest, FinishingWithListsThatDriftedApartStops) {
    FilledSpecs filled;
    filled.fList.push_back(8);
    EXPECT_DEATH(filled.fSpecs.FinishSpecs(),
                 "fpPredictList->size\\(\\) == fbpPredCatVarList->size\\(\\)");
}

TEST(PRSValidSpecs, DisplayStartsWithItsTitleAndSaysThatItIsForDebugging) {
    const std::string text = DisplayOf(PRSValidSpecs());
    EXPECT_EQ(text.find("PRSValidSpecs display start\n"), 0u);
    EXPECT_TRUE(Has(text, "For debugging only"));
    EXPECT_TRUE(text.ends_with("PRSValidSpecs display end\n"));
}

TEST(PRSValidSpecs, DisplayOfSelectPredShowsItsMembersOnly) {
    FilledSpecs filled;
    filled.fSpecs.SetScreeningTexts("7e1", "", "", "", "");
    filled.fSpecs.AddPrintRank(2);
    const std::string text = DisplayOf(filled.fSpecs);
    EXPECT_TRUE(Has(text, "This is SELECTPRED (univariable)\n"));
    EXPECT_TRUE(Has(text, "Dependent variable index = 4\n"));
    EXPECT_TRUE(Has(text, "Percent missing as typed = \"7e1\"\n"));
    EXPECT_TRUE(Has(text, "Ranking criterion = Pearson Chi Square\n"));
    EXPECT_TRUE(Has(text,
                    "Further ranking criterion = Predictors are sorted in descending order of "
                    "Cramers's V\n"));
    EXPECT_FALSE(Has(text, "Bins"));
    EXPECT_FALSE(Has(text, "Forced predictor"));
    EXPECT_FALSE(Has(text, "Model file"));
}

TEST(PRSValidSpecs, DisplayOfNaiveBayesShowsItsMembersOnly) {
    FilledSpecs filled(false);
    filled.fSpecs.SetModelFile("model.xml");
    filled.fSpecs.SetPredProb(KoltVarName("root"), 7);
    const std::string text = DisplayOf(filled.fSpecs);
    EXPECT_TRUE(Has(text, "This is NAIVEBAYES (multivariable)\n"));
    EXPECT_TRUE(Has(text, "Forced predictor list: none\n"));
    EXPECT_TRUE(Has(text, "Bins = 10\n"));
    EXPECT_TRUE(Has(text, "Model file = \"model.xml\"\n"));
    EXPECT_TRUE(Has(text, "Maximum number of predicted probabilities = 7\n"));
    EXPECT_FALSE(Has(text, "Screening"));
    EXPECT_FALSE(Has(text, "anking criteri"));
    EXPECT_FALSE(Has(text, "Plot summary"));
}

TEST(PRSValidSpecs, RankingsAreSpelledOut) {
    EXPECT_EQ(PRSValidSpecs::RankingText(0), "= Pearson Chi Square");
    EXPECT_EQ(PRSValidSpecs::RankingText(1), "= Likelihood Ratio Chi Square");
    EXPECT_EQ(PRSValidSpecs::RankingText(2),
              "= Predictors are sorted in descending order of Cramers's V");
    EXPECT_EQ(PRSValidSpecs::RankingText(3), "= Rank Predictors based on Lambda (asymmetric)");
    EXPECT_EQ(PRSValidSpecs::RankingText(4), "= unrecognized");
    EXPECT_EQ(PRSValidSpecs::RankingText(-1), "= unrecognized");
}
