#include <sstream>

#include "featureselect/tests/PredictorSetFixture.h"

namespace {

class FSPredictorSetState : public PredictorSetTest {
 protected:
    void ReadAndRank() {
        fSettings = FSSettings({kCategorical, kContinuous, kCategorical}, true);
        Make();
        EXPECT_TRUE(Read({{0, 1, 2.5, 7}, {1, 2, 3.5, 7}, {1, 2, 4, 7}, {-1, 1, 1, 7}}).IsOk());
        EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
        EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
        EXPECT_TRUE(fpSet->SortBest(2).IsOk());
        EXPECT_TRUE(fpSet->RankBest().IsOk());
    }

    std::string Shown() const {
        std::ostringstream out;
        fpSet->Display(out);
        return out.str();
    }
};

TEST_F(FSPredictorSetState, StartsWithRanksAndValuesForTheCriteriaThatAreOn) {
    fSettings = FSSettings(2, kCategorical, true);
    ASSERT_TRUE(fSettings.SetCriterion(FSCriterion::kCramer, false));
    Make();
    EXPECT_EQ(fpSet->GetState(), 1);
    EXPECT_EQ(fpSet->GetNumberOfPredictors(), 2);
    EXPECT_EQ(fpSet->GetNumberOfRemaining(), 2);
    EXPECT_EQ(fpSet->GetNumberOfTargetCategories(), -1);
    EXPECT_EQ(fpSet->GetTargetCategories(), nullptr);
    EXPECT_EQ(fpSet->GetRanks(0), (Indices{-1, -1}));
    EXPECT_EQ(fpSet->GetCriterionValues(0), std::vector<double>(2, kMissing));
    EXPECT_TRUE(fpSet->GetRanks(2).empty());
    EXPECT_TRUE(fpSet->GetCriterionValues(2).empty());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{0, 0, 0, 0}));
}

TEST_F(FSPredictorSetState, ResetEmptiesTheSetAndKeepsStateAndCounters) {
    ReadAndRank();
    fpSet->Reset();
    EXPECT_EQ(fpSet->GetNumberOfPredictors(), 0);
    EXPECT_EQ(fpSet->GetNumberOfRemaining(), 0);
    EXPECT_EQ(fpSet->GetNumberOfDeleted(), 0);
    EXPECT_TRUE(fpSet->GetDeletionReasons().empty());
    EXPECT_EQ(fpSet->GetNumberOfTargetCategories(), -1);
    EXPECT_TRUE(SeenBy(*fpSet).empty());
    EXPECT_TRUE(SortRecords(*fpSet).empty());
    EXPECT_TRUE(fpSet->GetRanks(0).empty());
    EXPECT_TRUE(fpSet->GetCriterionValues(0).empty());
    EXPECT_EQ(fpSet->GetState(), 7);
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{3, 1, 3, 1}));
    EXPECT_EQ(SavedFields(testsupport::StateOf(*fpSet), "FSPredictorSet", 0)[3], 3);  // type
    EXPECT_TRUE(fpSet->AllocateAccumulators(true));
}

TEST_F(FSPredictorSetState, RestoresWhatItSaved) {
    ReadAndRank();
    const auto bytes = testsupport::Save(*fpSet);
    FSSettings sameSettings = fSettings;
    FSPredictorSet restored(sameSettings, fCancel);
    testsupport::RestoreInto(restored, bytes);
    EXPECT_EQ(testsupport::Save(restored), bytes);
    EXPECT_EQ(restored.GetState(), 7);
    EXPECT_EQ(restored.GetDeletedIndices(), (Indices{2}));
    EXPECT_EQ(restored.GetDeletionReasons(), (Indices{2}));
    EXPECT_EQ(restored.GetRanks(0), fpSet->GetRanks(0));
    EXPECT_EQ(restored.GetCriterionValues(4), fpSet->GetCriterionValues(4));
    EXPECT_EQ(CountsOf(restored), CountsOf(*fpSet));
    EXPECT_EQ(restored.GetNumberOfTargetCategories(), 2);
    double p = 0, f = 0, df1 = 0, df2 = 0;
    EXPECT_TRUE(restored.GetPredictorCriterion(4, 1, p, f, df1, df2));
    EXPECT_EQ(p, fpSet->GetCriterionValues(4)[1]);
}

TEST_F(FSPredictorSetState, SavesAnEmptySetInOneHundredAndFiftyThreeBytes) {
    Make();
    // Tag; sizes, time, type and state; four booleans; counters; no deleted, no accumulators, no
    // target; three times six counts.
    EXPECT_EQ(testsupport::Save(*fpSet).size(), 5U + 24 + 16 + 24 + 4 + 4 + 4 + 3 * 6 * 4);
}

TEST_F(FSPredictorSetState, EveryClassOfAccumulatorIsSavedWithItsNumber) {
    struct Case {
        bool fbPredictorCategorical, fbWithTarget, fbTargetCategorical;
        std::int32_t fKind;
    };
    for (const Case& one :
         {Case{true, false, true, 1}, Case{true, true, true, 2}, Case{true, true, false, 3},
          Case{false, false, true, 4}, Case{false, true, true, 5}, Case{false, true, false, 6}}) {
        SCOPED_TRACE(one.fKind);
        fSettings = FSSettings(1, one.fbPredictorCategorical, one.fbTargetCategorical);
        Make();
        fpSet->AllocateAccumulators(one.fbWithTarget);
        const auto bytes = testsupport::Save(*fpSet);
        std::int32_t kind = -1;
        const std::size_t at = 5 + 24 + 16 + 24 + 4 + 4;  // after the number of accumulators
        std::memcpy(&kind, bytes.data() + at, sizeof kind);
        EXPECT_EQ(kind, one.fKind);
        FSPredictorSet restored(fSettings, fCancel);
        testsupport::RestoreInto(restored, bytes);
        EXPECT_EQ(testsupport::Save(restored), bytes);
    }
}

TEST_F(FSPredictorSetState, DisplayOfAFreshSet) {
    fSettings = FSSettings(1, kContinuous, true);
    Make();
    EXPECT_EQ(Shown(),
              "Start of FSPredictorSet display\n"
              "cancel has not been called\n"
              "Number of predictors = 1\n"
              "Predictor set type = All continuous\n"
              "Predictor set status = Initial\n"
              "Memory for accumulation not allocated\n"
              "Data pass not completed\n"
              "No valid data found\n"
              "No records with valid weight found\n"
              "Weighted number of valid records = 0\n"
              "Weighted number of excluded records = 0\n"
              "Unweighted number of valid records = 0\n"
              "Unweighted number of excluded records = 0\n"
              "Total elapsed time 0 seconds.\n"
              "Number of best predictors sorted with SortBest() = 0\n"
              "Target data accumulation object not allocated\n"
              "Vector fvpAccum:\n"
              "Indices of deleted predictors: <empty>\n"
              "Reasons for deletion of deleted predictors: <empty>\n"
              "Vector fvpSortPearson:\n"
              "Vector fvpSortLikelihood:\n"
              "Vector fvpSortCramer:\n"
              "Vector fvpSortLambda:\n"
              "Vector fvpSortFStat:\n"
              "Vector fvpSortTStat:\n"
              "Ranks based on Pearson: <empty>\n"
              "Ranks based on Likelihood: <empty>\n"
              "Ranks based on Cramer: <empty>\n"
              "Ranks based on Lambda: <empty>\n"
              "Ranks based on F-Statistic (1 element): \n"
              "    -1\n"
              "Ranks based on t-Statistic: <empty>\n"
              "Criterion values in original order of predictors for Pearson: <empty>\n"
              "Criterion values in original order of predictors for Likelihood: <empty>\n"
              "Criterion values in original order of predictors for Cramer: <empty>\n"
              "Criterion values in original order of predictors for Lambda: <empty>\n"
              "Criterion values in original order of predictors for F-Statistic (1 element): \n"
              "<missing>\n"
              "Criterion values in original order of predictors for t-Statistic: <empty>\n"
              "End of FSPredictorSet display\n");
}

TEST_F(FSPredictorSetState, DisplayOfARankedAndCancelledSet) {
    ReadAndRank();
    fCancel.Cancel();
    const std::string shown = Shown();
    for (const char* line :
         {"\ncancel has been called\n", "\nPredictor set type = Mixed\n",
          "\nPredictor set status = Predictors ranked\n", "\nMemory for accumulation allocated\n",
          "\nData pass completed\n", "\nValid data found\n",
          "\nWeighted number of valid records = 3\n",
          "\nUnweighted number of excluded records = 1\n",
          "\nNumber of best predictors sorted with SortBest() = 1\n",
          "\nTarget data accumulation:\nStart of FSMapIPCnt display\nMap size = 2\n",
          "\nVector fvpAccum:\nStart of FSCatPCatTAccum display\n",
          "\nIndices of deleted predictors (1 element): \n     2\n",
          "\nVector fvpSortPearson:\nStart of FSPredSort display\n"}) {
        EXPECT_NE(shown.find(line), std::string::npos) << line << "\nin\n" << shown;
    }
}

TEST_F(FSPredictorSetState, DisplaySaysWhetherAWeightWasValid) {
    fSettings = FSSettings(1, kCategorical, true);
    fSettings.SetWeightPosition(1);
    Make();
    EXPECT_TRUE(Read({{0, 1, 2}}).IsOk());
    EXPECT_NE(Shown().find("\nRecords with valid weight found\n"), std::string::npos);
}

TEST_F(FSPredictorSetState, DisplayNamesEveryState) {
    fSettings = FSSettings(2, kCategorical, true);
    Make();
    const auto shows = [this](const std::string& state) {
        return Shown().find("Predictor set status = " + state + "\n") != std::string::npos;
    };
    EXPECT_TRUE(Read({{0, 1, 2}, {1, 2, 2}, {1, 2, 3}}).IsOk());
    EXPECT_TRUE(shows("Counts and statistics accumulated"));
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    EXPECT_TRUE(shows("Predictors checked for deletion"));
    EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
    EXPECT_TRUE(shows("Ranking criteria computed"));
    EXPECT_TRUE(fpSet->SortAll().IsOk());
    EXPECT_TRUE(shows("Predictors sorted (all)"));
    EXPECT_TRUE(fpSet->SortBest(1).IsOk());
    EXPECT_TRUE(shows("Predictors sorted (best)"));
    EXPECT_TRUE(fpSet->RankBest().IsOk());
    EXPECT_TRUE(shows("Predictors ranked"));
}

}  // namespace
