#include "featureselect/tests/PredictorSetFixture.h"

namespace {

using testsupport::CancelAtPoll;
using testsupport::RecordList;

using Reasons = std::vector<Indices>;

class FSPredictorSetScreening : public PredictorSetTest {
 protected:
    // Predictors: 0 all missing, 1 constant, 2 good, 3 half missing, 4 all missing.
    void ReadFive() {
        fSettings.AddPredictors(5, kCategorical);
        fSettings.SetMaxMissingPercent(40);
        fSettings.SetDeleteManyCategs(false);
        Make();
        Rows rows;
        for (int row = 0; row < 8; ++row) {
            const double value = row % 2;
            rows.push_back({value, -1, 3, static_cast<double>(row / 4), row < 4 ? -1 : value, -1});
        }
        EXPECT_TRUE(Read(rows).IsOk());
    }
};

TEST_F(FSPredictorSetScreening, DeletesMissingAndConstantPredictorsWithTheirReasons) {
    ReadFive();
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    EXPECT_EQ(fpSet->GetDeletedIndices(), (Indices{0, 1, 4}));
    EXPECT_EQ(fpSet->GetDeletionReasons(), (Indices{1, 2, 1}));
    EXPECT_EQ(fpSet->GetNumberOfRemaining(), 2);
    EXPECT_EQ(fpSet->GetState(), 3);
}

TEST_F(FSPredictorSetScreening, DeletesByTheFirstBrokenRule) {
    ReadFive();
    EXPECT_TRUE(fpSet->DeleteByCriteria().IsOk());
    // Reason 3 comes before reason 4, which predictor 1 alone breaks first.
    EXPECT_EQ(fpSet->GetDeletedIndices(), (Indices{0, 1, 3, 4}));
    EXPECT_EQ(fpSet->GetDeletionReasons(), (Indices{3, 4, 3, 3}));
    EXPECT_EQ(fpSet->GetState(), 3);
}

TEST_F(FSPredictorSetScreening, BothStepsTogetherKeepTheIndicesAscending) {
    ReadFive();
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    EXPECT_TRUE(fpSet->DeleteByCriteria().IsOk());
    EXPECT_EQ(fpSet->GetDeletedIndices(), (Indices{0, 1, 3, 4}));
    EXPECT_EQ(fpSet->GetDeletionReasons(), (Indices{1, 2, 3, 1}));
}

TEST_F(FSPredictorSetScreening, AllPredictorsConstantIsAWarningWithReasonTwoEach) {
    fSettings.AddPredictors(3, kCategorical);
    Make();
    EXPECT_TRUE(Read({{0, 1, 2, 3}, {1, 1, 2, 3}}).IsOk());
    ExpectStatus(fpSet->DeleteMissingOrConstant(), 80010, 1);
    EXPECT_EQ(fpSet->GetDeletionReasons(), (Indices{2, 2, 2}));
    EXPECT_EQ(fpSet->GetNumberOfRemaining(), 0);
    EXPECT_EQ(fpSet->GetState(), 3);
}

TEST_F(FSPredictorSetScreening, AllDeletedAlreadyIsAnotherWarning) {
    fSettings.AddPredictor(kCategorical);
    Make();
    EXPECT_TRUE(Read({{0, 1}, {1, 1}}).IsOk());
    ExpectStatus(fpSet->DeleteMissingOrConstant(), 80010, 1);
    ExpectStatus(fpSet->DeleteMissingOrConstant(), 80011, 1);
    ExpectStatus(fpSet->DeleteByCriteria(), 80011, 1);
    EXPECT_EQ(fpSet->GetDeletionReasons(), (Indices{2}));
}

TEST_F(FSPredictorSetScreening, AllDeletedByTheRulesIsAWarning) {
    fSettings.AddPredictor(kCategorical);
    Make();
    // Two distinct values in two records: as many categories as cases.
    EXPECT_TRUE(Read({{0, 1}, {1, 2}}).IsOk());
    ExpectStatus(fpSet->DeleteByCriteria(), 80011, 1);
    EXPECT_EQ(fpSet->GetDeletionReasons(), (Indices{5}));
    EXPECT_EQ(fpSet->GetState(), 3);
}

TEST_F(FSPredictorSetScreening, NoPredictorsCountAsAllDeleted) {
    Make();
    ExpectStatus(Read({{0}}), 80009, -1);
    ExpectStatus(fpSet->DeleteMissingOrConstant(), 80011, 1);
    EXPECT_EQ(fpSet->GetState(), 3);
}

TEST_F(FSPredictorSetScreening, AnUnreadPredictorIsMissingThroughout) {
    fSettings.AddPredictors(2, kCategorical);
    Make();
    EXPECT_TRUE(Read({{0, 1}, {1, 2}}).IsOk());
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    EXPECT_EQ(fpSet->GetDeletedIndices(), (Indices{1}));
    EXPECT_EQ(fpSet->GetDeletionReasons(), (Indices{1}));
}

TEST_F(FSPredictorSetScreening, BeforeAnyPassNothingIsDeleted) {
    fSettings.AddPredictor(kCategorical);
    Make();
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    EXPECT_EQ(fpSet->GetNumberOfDeleted(), 0);
    EXPECT_EQ(fpSet->GetState(), 3);
}

TEST_F(FSPredictorSetScreening, FinishesThePassForTheRulesOfContinuousPredictors) {
    fSettings = FSSettings(2, kContinuous, false);
    fSettings.SetMinStdDev(2.0);
    Make();
    // Standard deviations 1 and 10.
    EXPECT_TRUE(Read({{1, 5, 10}, {5, 6, 20}, {3, 7, 30}}).IsOk());
    EXPECT_TRUE(fpSet->DeleteByCriteria().IsOk());
    EXPECT_EQ(fpSet->GetDeletedIndices(), (Indices{0}));
    EXPECT_EQ(fpSet->GetDeletionReasons(), (Indices{7}));
}

// Whether FinishData ran shows in the F test, which divides by the variances it derives: without
// them there is no variation within the groups and the p-value is 0.
TEST_F(FSPredictorSetScreening, FinishDataPassDerivesVariancesOfEveryContinuousPredictor) {
    for (const bool mixed : {false, true}) {
        fSettings = FSSettings({kContinuous, mixed}, true);
        Make();
        EXPECT_TRUE(Read({{0, 1, 1}, {0, 2, 1}, {1, 2, 2}, {1, 4, 2}}).IsOk());
        EXPECT_TRUE(fpSet->FinishDataPass().IsOk());
        EXPECT_EQ(fpSet->GetState(), 2);
        double p = 0, f = 0, df1 = 0, df2 = 0;
        EXPECT_TRUE(fpSet->GetPredictorCriterion(4, 0, p, f, df1, df2));
        // Means 1.5 and 3 about 2.25: B = 4 * 0.75^2 = 2.25; W = 0.5 + 2; F = 2.25 / (2.5 / 2).
        EXPECT_DOUBLE_EQ(f, 1.8);
        EXPECT_EQ(df1, 1);
        EXPECT_EQ(df2, 2);
    }
}

TEST_F(FSPredictorSetScreening, CollectsAllReasonsAndDeletesNothing) {
    fSettings.AddPredictors(3, kCategorical);
    fSettings.SetTargetPosition(-1);
    Make();
    Rows rows;
    for (int row = 0; row < 10; ++row) {
        rows.push_back({static_cast<double>(row), static_cast<double>(row % 2), 4});
    }
    RecordList records(rows);
    EXPECT_TRUE(fpSet->AccumulateForScreening(records, -1).IsOk());
    Indices indices{99};
    Reasons reasons{{99}};
    EXPECT_TRUE(fpSet->CollectDeletionReasons(indices, reasons).IsOk());
    EXPECT_EQ(indices, (Indices{0, 2}));
    EXPECT_EQ(reasons, (Reasons{{5, 6}, {4}}));
    EXPECT_EQ(fpSet->GetNumberOfRemaining(), 3);
    EXPECT_EQ(fpSet->GetState(), 2);
}

TEST_F(FSPredictorSetScreening, CollectingReadsTheVariancesOfContinuousPredictors) {
    fSettings = FSSettings(2, kContinuous, true);
    fSettings.SetTargetPosition(-1);
    Make();
    RecordList records({{1, 1000000}, {2, 1000001}, {3, 1000002}});
    EXPECT_TRUE(fpSet->AccumulateForScreening(records, -1).IsOk());
    Indices indices;
    Reasons reasons;
    EXPECT_TRUE(fpSet->CollectDeletionReasons(indices, reasons).IsOk());
    EXPECT_EQ(indices, (Indices{1}));
    EXPECT_EQ(reasons, (Reasons{{8}}));
}

TEST_F(FSPredictorSetScreening, CollectingWarnsWhenEveryPredictorIsDeletedAlready) {
    fSettings.AddPredictors(2, kCategorical);
    Make();
    EXPECT_TRUE(Read({{0, 1, 1}, {1, 1, 1}}).IsOk());
    ExpectStatus(fpSet->DeleteMissingOrConstant(), 80010, 1);
    Indices indices{1};
    Reasons reasons{{1}};
    ExpectStatus(fpSet->CollectDeletionReasons(indices, reasons), 80011, 1);
    EXPECT_TRUE(indices.empty());
    EXPECT_TRUE(reasons.empty());
}

TEST_F(FSPredictorSetScreening, CollectingSkipsADeletedPredictor) {
    fSettings.AddPredictors(2, kCategorical);
    Make();
    EXPECT_TRUE(Read({{0, 1, 1}, {1, 1, 2}}).IsOk());
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    Indices indices;
    Reasons reasons;
    EXPECT_TRUE(fpSet->CollectDeletionReasons(indices, reasons).IsOk());
    EXPECT_EQ(indices, (Indices{1}));
}

TEST_F(FSPredictorSetScreening, ACancelKeepsWhatWasDeletedBefore) {
    ReadFive();
    CancelAtPoll check(2);
    fCancel.SetCancelCheck(&check);
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    EXPECT_EQ(fpSet->GetDeletedIndices(), (Indices{0, 1}));
    EXPECT_EQ(fpSet->GetState(), 3);
}

TEST_F(FSPredictorSetScreening, ACancelEndsTheSecondStepAndTheCollecting) {
    ReadFive();
    CancelAtPoll check(1);
    fCancel.SetCancelCheck(&check);
    Indices indices;
    Reasons reasons;
    EXPECT_TRUE(fpSet->CollectDeletionReasons(indices, reasons).IsOk());
    EXPECT_EQ(indices, (Indices{0}));
    EXPECT_TRUE(fpSet->DeleteByCriteria().IsOk());
    EXPECT_EQ(fpSet->GetNumberOfDeleted(), 0);
}

TEST_F(FSPredictorSetScreening, ADeletedPredictorShowsNoCriterion) {
    ReadFive();
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    double a = 0, b = 0, c = 0, d = 0;
    EXPECT_FALSE(fpSet->GetPredictorCriterion(0, 1, a, b, c, d));
    EXPECT_EQ(a, kMissing);
    EXPECT_EQ(d, kMissing);
    EXPECT_TRUE(fpSet->GetPredictorCriterion(0, 2, a, b, c, d));
    EXPECT_FALSE(fpSet->GetPredictorCriterion(0, -1, a, b, c, d));
    EXPECT_FALSE(fpSet->GetPredictorCriterion(0, 5, a, b, c, d));
    EXPECT_FALSE(fpSet->GetPredictorCriterion(4, 2, a, b, c, d));
    EXPECT_EQ(b, kMissing);
}

TEST(FSPredictorSetNames, TheSixthReasonHasNoName) {
    const std::vector<std::string_view> names{
        "",           "allMissing", "allConst",    "manyMissing", "manyConst",
        "manyCategs", "",           "smallStdDev", "smallVar",    ""};
    for (std::int32_t reason = 0; reason < 10; ++reason) {
        EXPECT_EQ(FSPredictorSet::GetReasonName(reason), names[static_cast<std::size_t>(reason)]);
    }
    EXPECT_EQ(FSPredictorSet::GetReasonName(-1), "");
}

TEST(FSPredictorSetNames, CriteriaHaveNames) {
    const std::vector<std::string_view> names{"Pearson", "Likelihood",  "Cramer",
                                              "Lambda",  "F-Statistic", "t-Statistic"};
    for (std::int32_t criterion = 0; criterion < 6; ++criterion) {
        EXPECT_EQ(FSPredictorSet::GetCriterionName(criterion),
                  names[static_cast<std::size_t>(criterion)]);
    }
    EXPECT_EQ(FSPredictorSet::GetCriterionName(-1), "");
    EXPECT_EQ(FSPredictorSet::GetCriterionName(6), "");
}

}  // namespace
