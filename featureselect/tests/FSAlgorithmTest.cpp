#include "featureselect/FSAlgorithm.h"

#include <functional>
#include <sstream>
#include <utility>

#include "featureselect/FSFactory.h"
#include "featureselect/tests/PredictorSetFixture.h"

namespace {

using testsupport::CancelAtPoll;
using testsupport::ProgressRecorder;
using testsupport::RecordList;

using Reasons = std::vector<Indices>;

// Target, then three categorical predictors: strong, constant, weak.
Rows SomeRows() {
    Rows rows;
    for (int row = 0; row < 12; ++row) {
        rows.push_back({static_cast<double>(row % 2), static_cast<double>(row < 10 ? row % 2 : 3),
                        4, static_cast<double>(row % 3)});
    }
    return rows;
}

class FSAlgorithmTest : public testing::Test {
 protected:
    FSAlgorithmTest() : fSettings(3, kCategorical, true) { Make(); }

    void Make() { fpEngine = std::make_unique<FSAlgorithm>(fSettings); }

    FSStatus RunAll(const Rows& rows, bool screen = false, std::int32_t n = 0) {
        RecordList records(rows);
        return fpEngine->RunAll(records, -1, screen, n);
    }
    FSStatus AccumulateData(const Rows& rows, std::int32_t maxRecords = -1) {
        RecordList records(rows);
        return fpEngine->AccumulateData(records, maxRecords);
    }
    FSStatus ScreenOnly(const Rows& rows) {
        RecordList records(rows);
        return fpEngine->ScreenOnly(records, fvIndices, fvReasons, -1);
    }
    FSStatus Best(std::int32_t criterion, std::int32_t n) {
        return fpEngine->GetBestPredictors(criterion, fvIndices, fvValues, n);
    }
    void ExpectNothingLeft() const {
        EXPECT_EQ(fpEngine->GetNumberOfTargetCategories(), -1);
        EXPECT_EQ(fpEngine->GetNumberOfDeleted(), 0);
        EXPECT_TRUE(fpEngine->GetDeletedIndices().empty());
        EXPECT_TRUE(fpEngine->GetRanks(0).empty());
        EXPECT_TRUE(fpEngine->GetCriterionValues(0).empty());
        double a = 0, b = 0, c = 0, d = 0;
        EXPECT_FALSE(fpEngine->GetPredictorCriterion(0, 0, a, b, c, d));
        EXPECT_EQ(a, kMissing);
    }

    FSSettings fSettings;
    std::unique_ptr<IFSAlgorithm> fpEngine;
    Indices fvIndices;
    Reasons fvReasons;
    std::vector<double> fvValues;
};

TEST_F(FSAlgorithmTest, StartsWithSuccessAndNothingDone) {
    EXPECT_EQ(fpEngine->GetStatus(), FSStatus::Success());
    EXPECT_FALSE(fpEngine->IsDataAccumulated());
    EXPECT_FALSE(fpEngine->IsRanked());
    EXPECT_EQ(&fpEngine->GetSettings(), &fSettings);
    EXPECT_EQ(&std::as_const(*fpEngine).GetSettings(), &fSettings);
    EXPECT_TRUE(fpEngine->GetVersion().starts_with("Feature Selection Component Ver.1.0"));
    EXPECT_NE(fpEngine->GetVersion().find("Copyright (c) 2026 The predselect authors"),
              std::string::npos);
}

TEST_F(FSAlgorithmTest, RunsTheStepsOneByOne) {
    EXPECT_TRUE(AccumulateData(SomeRows()).IsOk());
    EXPECT_TRUE(fpEngine->IsDataAccumulated());
    EXPECT_EQ(CountsOf(*fpEngine), (RecordCounts{12, 0, 12, 0}));
    EXPECT_TRUE(fpEngine->DeleteMissingOrConstant().IsOk());
    EXPECT_EQ(fpEngine->GetDeletedIndices(), (Indices{1}));
    EXPECT_EQ(fpEngine->GetDeletionReasons(), (Indices{2}));
    EXPECT_EQ(fpEngine->GetNumberOfDeleted(), 1);
    EXPECT_TRUE(fpEngine->DeleteByCriteria().IsOk());
    EXPECT_FALSE(fpEngine->IsRanked());
    EXPECT_TRUE(fpEngine->RankPredictors(0).IsOk());
    EXPECT_TRUE(fpEngine->IsRanked());
    EXPECT_EQ(fpEngine->GetRanks(0), (Indices{0, -1, 1}));
    EXPECT_TRUE(Best(0, 0).IsOk());
    EXPECT_EQ(fvIndices, (Indices{0, 2}));
    EXPECT_EQ(fvValues[0], fpEngine->GetCriterionValues(0)[0]);
}

TEST_F(FSAlgorithmTest, RunAllDoesTheSame) {
    EXPECT_TRUE(RunAll(SomeRows()).IsOk());
    EXPECT_TRUE(fpEngine->GetStatus().IsOk());
    EXPECT_TRUE(fpEngine->IsDataAccumulated());
    EXPECT_TRUE(fpEngine->IsRanked());
    EXPECT_EQ(fpEngine->GetDeletedIndices(), (Indices{1}));
    EXPECT_EQ(fpEngine->GetRanks(0), (Indices{0, -1, 1}));
}

TEST_F(FSAlgorithmTest, RunAllScreensOnlyWhenAsked) {
    Rows rows = SomeRows();
    for (std::size_t row = 0; row < rows.size(); ++row)
        rows[row][3] = row < 10 ? -1.0 : rows[row][3];
    EXPECT_TRUE(RunAll(rows, false).IsOk());
    EXPECT_EQ(fpEngine->GetDeletedIndices(), (Indices{1}));
    Make();
    EXPECT_TRUE(RunAll(rows, true).IsOk());
    EXPECT_EQ(fpEngine->GetDeletedIndices(), (Indices{1, 2}));
    EXPECT_EQ(fpEngine->GetDeletionReasons(), (Indices{2, 3}));
}

TEST_F(FSAlgorithmTest, RunAllHeedsTheMaximum) {
    RecordList records(SomeRows());
    EXPECT_TRUE(fpEngine->RunAll(records, 7, false, 0).IsOk());
    EXPECT_EQ(CountsOf(*fpEngine), (RecordCounts{7, 0, 7, 0}));
}

TEST_F(FSAlgorithmTest, RunAllOfAFewRanksThoseAlone) {
    EXPECT_TRUE(RunAll(SomeRows(), false, 1).IsOk());
    EXPECT_EQ(fpEngine->GetRanks(0), (Indices{0, -1, -1}));
    EXPECT_TRUE(Best(0, 0).IsOk());
    EXPECT_EQ(fvIndices, (Indices{0}));
}

TEST_F(FSAlgorithmTest, RunAllStopsAtAWarningAndIsRankedAllTheSame) {
    const FSStatus status = RunAll({{0, 1, 2, 3}, {1, 1, 2, 3}});
    ExpectStatus(status, 80010, 1);
    EXPECT_EQ(fpEngine->GetStatus(), status);
    EXPECT_TRUE(fpEngine->IsRanked());
    EXPECT_EQ(fpEngine->GetDeletionReasons(), (Indices{2, 2, 2}));
    // No ranking ran, which would have given values.
    EXPECT_EQ(fpEngine->GetCriterionValues(0), std::vector<double>(3, kMissing));
    EXPECT_TRUE(Best(0, 0).IsOk());
    EXPECT_TRUE(fvIndices.empty());
}

TEST_F(FSAlgorithmTest, AWarningOfTheSecondScreeningStopsTheRankingToo) {
    // As many categories as cases, in every predictor.
    ExpectStatus(RunAll({{0, 1, 1, 1}, {1, 2, 2, 2}}, true), 80011, 1);
    EXPECT_EQ(fpEngine->GetDeletionReasons(), (Indices{5, 5, 5}));
    EXPECT_TRUE(fpEngine->IsRanked());
}

TEST_F(FSAlgorithmTest, RunAllStopsAtAnErrorAndIsRankedAllTheSame) {
    ExpectStatus(RunAll({{-1, 1, 2, 3}}), 80009, -1);
    EXPECT_TRUE(fpEngine->IsRanked());
    EXPECT_TRUE(fpEngine->IsDataAccumulated());
    EXPECT_EQ(fpEngine->GetNumberOfDeleted(), 0);
}

TEST_F(FSAlgorithmTest, AnErrorStopsEveryLaterStep) {
    const FSStatus error = AccumulateData({});
    ExpectStatus(error, 80009, -1);
    EXPECT_EQ(AccumulateData(SomeRows()), error);
    EXPECT_EQ(fpEngine->DeleteMissingOrConstant(), error);
    EXPECT_EQ(fpEngine->DeleteByCriteria(), error);
    EXPECT_EQ(fpEngine->RankPredictors(0), error);
    EXPECT_EQ(RunAll(SomeRows()), error);
    EXPECT_EQ(ScreenOnly(SomeRows()), error);
    EXPECT_EQ(fpEngine->GetStatus(), error);
    EXPECT_FALSE(fpEngine->IsRanked());
    EXPECT_EQ(CountsOf(*fpEngine), (RecordCounts{0, 0, 0, 0}));
}

TEST_F(FSAlgorithmTest, AWarningStopsNoLaterStep) {
    ExpectStatus(RunAll({{0, 1, 2, 3}, {1, 1, 2, 3}}), 80010, 1);
    ExpectStatus(fpEngine->DeleteByCriteria(), 80011, 1);
    EXPECT_TRUE(fpEngine->RankPredictors(0).IsOk());
    EXPECT_TRUE(fpEngine->GetStatus().IsOk());
}

TEST_F(FSAlgorithmTest, FewerPredictorsThanAskedForIsAnErrorOfTheRanking) {
    const FSStatus status = RunAll(SomeRows(), false, 3);
    ExpectStatus(status, 80012, -1);
    EXPECT_EQ(status.fIntArgs[0], 2);
    EXPECT_EQ(status, FSStatus::FewerRemain(FSStatus::kError, 2));
    EXPECT_TRUE(fpEngine->IsRanked());
    // They are ranked, but an error keeps the results back.
    EXPECT_EQ(fpEngine->GetRanks(0), (Indices{0, -1, 1}));
    EXPECT_EQ(Best(0, 0), status);
    EXPECT_TRUE(fvIndices.empty());
}

TEST_F(FSAlgorithmTest, FewerPredictorsThanAskedForIsAWarningOfTheResults) {
    EXPECT_TRUE(RunAll(SomeRows()).IsOk());
    const FSStatus status = Best(0, 3);
    ExpectStatus(status, 80012, 1);
    EXPECT_EQ(status.fIntArgs[0], 2);
    EXPECT_EQ(fvIndices, (Indices{0, 2}));
    EXPECT_EQ(fvValues.size(), 2U);
    EXPECT_TRUE(fpEngine->GetStatus().IsOk());
    EXPECT_TRUE(Best(0, 2).IsOk());
}

TEST_F(FSAlgorithmTest, ResultsBeforeTheRankingAreRefused) {
    ExpectStatus(Best(0, 0), 6, -1);
    EXPECT_TRUE(AccumulateData(SomeRows()).IsOk());
    ExpectStatus(Best(0, 0), 6, -1);
    EXPECT_TRUE(fpEngine->GetStatus().IsOk());
}

TEST_F(FSAlgorithmTest, ResultsOfACriterionNotAskedForAreRefused) {
    EXPECT_TRUE(RunAll(SomeRows()).IsOk());
    fvIndices = {9};
    ExpectStatus(Best(4, 9), 80006, -1);
    EXPECT_TRUE(fvIndices.empty());
    EXPECT_TRUE(fpEngine->GetStatus().IsOk());
}

TEST_F(FSAlgorithmTest, ResultsAfterACancelAreRefused) {
    EXPECT_TRUE(RunAll(SomeRows()).IsOk());
    fpEngine->Cancel();
    ExpectStatus(Best(0, 0), 1, -1);
    // Only a step turns the cancel into the engine's status.
    EXPECT_TRUE(fpEngine->GetStatus().IsOk());
}

TEST_F(FSAlgorithmTest, TargetCategoriesByValueAndByPosition) {
    EXPECT_EQ(fpEngine->GetNumberOfTargetCategories(), -1);
    EXPECT_EQ(fpEngine->GetTargetCategoryByValue(0), (IFSAlgorithm::CategoryCount{-1, -1.0}));
    fSettings.SetWeightPosition(1);
    fSettings.SetWeightConversion(0);
    EXPECT_TRUE(AccumulateData({{5, 0.5, 1, 1, 1}, {5, 2, 1, 1, 1}, {3, 1, 1, 1, 1}}).IsOk());
    EXPECT_EQ(fpEngine->GetNumberOfTargetCategories(), 2);
    EXPECT_EQ(fpEngine->GetTargetCategoryByValue(5), (IFSAlgorithm::CategoryCount{2, 2.5}));
    EXPECT_EQ(fpEngine->GetTargetCategoryByValue(4), (IFSAlgorithm::CategoryCount{-1, -1.0}));
    std::int32_t category = 9;
    IFSAlgorithm::CategoryCount count{9, 9.0};
    EXPECT_TRUE(fpEngine->GetTargetCategoryByIndex(0, category, count));
    EXPECT_EQ(category, 3);
    EXPECT_EQ(count, (IFSAlgorithm::CategoryCount{1, 1.0}));
    for (const std::int32_t position : {-1, 2}) {
        EXPECT_FALSE(fpEngine->GetTargetCategoryByIndex(position, category, count));
        EXPECT_EQ(category, -1);
        EXPECT_EQ(count, (IFSAlgorithm::CategoryCount{-1, -1.0}));
    }
}

TEST_F(FSAlgorithmTest, TransactionsAreReadAsSuchAndWithoutAMaximum) {
    fSettings.SetTransactions(true);
    EXPECT_TRUE(AccumulateData({{1, 0, 5, 7}, {2, 0, 6, 7}, {3, 0, 6, 7}}, 1).IsOk());
    EXPECT_EQ(CountsOf(*fpEngine), (RecordCounts{3, 1, 3, 1}));
    EXPECT_TRUE(fpEngine->IsDataAccumulated());
    const FSStatus status = AccumulateData({{8, 4, 5, 7}});
    ExpectStatus(status, 80008, -1);
    EXPECT_EQ(status.fIntArgs, (std::array<std::int32_t, 3>{4, 3, 8}));
    EXPECT_EQ(fpEngine->GetStatus(), status);
}

// --- ScreenOnly ---

TEST_F(FSAlgorithmTest, ScreenOnlyGivesEveryReasonAndDeletesNothing) {
    fSettings.SetTargetPosition(0);
    fvIndices = {9};
    fvReasons = {{9}};
    Rows rows;
    for (int row = 0; row < 10; ++row) {
        rows.push_back({static_cast<double>(row), 4, static_cast<double>(row % 2)});
    }
    EXPECT_TRUE(ScreenOnly(rows).IsOk());
    EXPECT_EQ(fvIndices, (Indices{0, 1}));
    EXPECT_EQ(fvReasons, (Reasons{{5, 6}, {4}}));
    EXPECT_EQ(fpEngine->GetNumberOfDeleted(), 0);
    EXPECT_TRUE(fpEngine->IsDataAccumulated());
    EXPECT_FALSE(fpEngine->IsRanked());
    EXPECT_EQ(CountsOf(*fpEngine), (RecordCounts{0, 10, 0, 10}));
}

TEST_F(FSAlgorithmTest, ScreenOnlyLeavesTheSettingsWithoutATarget) {
    EXPECT_TRUE(ScreenOnly(SomeRows()).IsOk());
    EXPECT_EQ(fSettings.GetTargetPosition(), -1);
    ExpectStatus(AccumulateData(SomeRows()), 0, 0);  // some predictor was valid in the first pass
    EXPECT_EQ(CountsOf(*fpEngine), (RecordCounts{0, 24, 0, 24}));
}

TEST_F(FSAlgorithmTest, ScreenOnlyWarnsOfAnEmptyPassAndStillGivesTheReasons) {
    const FSStatus status = ScreenOnly({{-1, -1, -1}});
    ExpectStatus(status, 80009, 1);
    EXPECT_EQ(fvIndices, (Indices{0, 1, 2}));
    EXPECT_EQ(fvReasons, (Reasons{{3}, {3}, {3}}));
    EXPECT_EQ(fpEngine->GetStatus(), status);
}

TEST_F(FSAlgorithmTest, ScreenOnlyWarnsOfAPassWithoutAValidWeight) {
    fSettings.SetWeightPosition(3);
    ExpectStatus(ScreenOnly({{1, 2, 3, 0}}), 80013, 1);
    EXPECT_TRUE(fvIndices.empty());
}

TEST_F(FSAlgorithmTest, ScreenOnlyAfterADeletionOfEverythingWarnsOfThat) {
    ExpectStatus(RunAll({{0, 1, 2, 3}, {1, 1, 2, 3}}), 80010, 1);
    ExpectStatus(ScreenOnly({{1, 2, 3}}), 80011, 1);
}

TEST_F(FSAlgorithmTest, ScreenOnlyAfterAnErrorStillEmptiesItsOutputs) {
    ExpectStatus(AccumulateData({}), 80009, -1);
    fvIndices = {9};
    fvReasons = {{9}};
    ExpectStatus(ScreenOnly(SomeRows()), 80009, -1);
    EXPECT_TRUE(fvIndices.empty());
    EXPECT_TRUE(fvReasons.empty());
    EXPECT_EQ(fSettings.GetTargetPosition(), -1);
}

// --- Cancelling and progress ---

TEST_F(FSAlgorithmTest, CancelledAtAnyPollARunEndsEmptyWithStatusOne) {
    std::int64_t polls = 0;
    {
        CancelAtPoll never(1'000'000);
        fpEngine->SetCancelCheck(&never);
        EXPECT_TRUE(RunAll(SomeRows(), true, 2).IsOk());
        polls = never.Polls();
    }
    ASSERT_GT(polls, 12 + 3 + 3 + 3);
    for (std::int64_t poll = 0; poll < polls; ++poll) {
        SCOPED_TRACE("cancelled at poll " + std::to_string(poll));
        CancelAtPoll check(poll);
        fSettings.SetCancelCheck(&check);
        Make();
        const FSStatus status = RunAll(SomeRows(), true, 2);
        ExpectStatus(status, 1, -1);
        EXPECT_EQ(fpEngine->GetStatus(), status);
        EXPECT_EQ(fpEngine->IsRanked(), poll > 0);
        ExpectNothingLeft();
        ExpectStatus(fpEngine->DeleteMissingOrConstant(), 1, -1);
        EXPECT_EQ(check.Polls(), poll + 1);  // one answer was enough
    }
    fSettings.SetCancelCheck(nullptr);
}

TEST_F(FSAlgorithmTest, CancelledAtAnyPollEachStepEndsEmptyWithStatusOne) {
    const std::vector<std::function<FSStatus()>> steps{
        [this] { return AccumulateData(SomeRows()); },
        [this] { return fpEngine->DeleteMissingOrConstant(); },
        [this] { return fpEngine->DeleteByCriteria(); },
        [this] { return fpEngine->RankPredictors(0); },
        [this] { return fpEngine->RankPredictors(1); },
        [this] { return ScreenOnly(SomeRows()); }};
    int number = 0;
    for (const auto& step : steps) {
        ++number;
        for (std::int64_t poll = 0;; ++poll) {
            SCOPED_TRACE("step " + std::to_string(number) + " at poll " + std::to_string(poll));
            fSettings.SetTargetPosition(0);
            Make();
            EXPECT_TRUE(AccumulateData(SomeRows()).IsOk());
            CancelAtPoll check(poll);
            fpEngine->SetCancelCheck(&check);
            const FSStatus status = step();
            fpEngine->SetCancelCheck(nullptr);
            if (check.Polls() <= poll) {
                EXPECT_TRUE(status.IsOk());  // the step has fewer polls
                break;
            }
            ASSERT_LT(poll, 100);
            ExpectStatus(status, 1, -1);
            ExpectNothingLeft();
        }
    }
}

TEST_F(FSAlgorithmTest, AListenerMayCancel) {
    ProgressRecorder listener;
    listener.fOnReport = [this] { fpEngine->Cancel(); };
    fpEngine->SetProgressListener(&listener);
    fSettings.SetRecordsToSkip(4);
    ExpectStatus(RunAll(SomeRows()), 1, -1);
    EXPECT_EQ(listener.Records(), (Indices{5}));
    EXPECT_EQ(CountsOf(*fpEngine), (RecordCounts{5, 0, 5, 0}));
    ExpectNothingLeft();
}

TEST_F(FSAlgorithmTest, HooksAreKeptInTheSettings) {
    ProgressRecorder listener;
    CancelAtPoll check(1000);
    fpEngine->SetProgressListener(&listener);
    fpEngine->SetCancelCheck(&check);
    EXPECT_EQ(fSettings.GetProgressListener(), &listener);
    EXPECT_EQ(fSettings.GetCancelCheck(), &check);
    fSettings.SetRecordsToSkip(4);
    fSettings.SetPredictorsToSkip(2);
    EXPECT_TRUE(RunAll(SomeRows()).IsOk());
    EXPECT_EQ(listener.Records(), (Indices{5, 10, -1}));
    EXPECT_EQ(listener.Predictors(), (Indices{-1, -1, 3}));
    EXPECT_GT(check.Polls(), 12);
}

TEST_F(FSAlgorithmTest, ARunCancelledBeforeItStartsIsNotRanked) {
    fpEngine->Cancel();
    ExpectStatus(RunAll(SomeRows()), 1, -1);
    EXPECT_FALSE(fpEngine->IsRanked());
    EXPECT_FALSE(fpEngine->IsDataAccumulated());
    ExpectStatus(Best(0, 0), 6, -1);
}

// --- The rest ---

TEST_F(FSAlgorithmTest, RestoresWhatItSaved) {
    FSAlgorithm saved(fSettings);
    RecordList records(SomeRows());
    EXPECT_TRUE(saved.RunAll(records, -1, true, 0).IsOk());
    const auto bytes = testsupport::Save(saved);
    const std::string start(reinterpret_cast<const char*>(bytes.data()), 16);
    EXPECT_EQ(start, "FSAlgorithm 1.00");

    FSSettings otherSettings;
    FSAlgorithm restored(otherSettings);
    testsupport::RestoreInto(restored, bytes);
    EXPECT_EQ(testsupport::Save(restored), bytes);
    EXPECT_TRUE(restored.IsRanked());
    EXPECT_TRUE(restored.IsDataAccumulated());
    EXPECT_TRUE(restored.GetStatus().IsOk());
    EXPECT_EQ(restored.GetRanks(0), saved.GetRanks(0));
    EXPECT_EQ(restored.GetSettings().GetNumPredictors(), 3);
}

TEST_F(FSAlgorithmTest, DisplaysSettingsAndPredictorSet) {
    std::ostringstream fresh;
    fpEngine->Display(fresh);
    EXPECT_TRUE(
        fresh.str().starts_with("Start of FSAlgorithm display\n"
                                "Data accumulated? No.  Predictors ranked? No.\n"
                                "\nSettings:\nStart of FSSettings display\n"));
    EXPECT_NE(fresh.str().find("End of FSSettings display\n"
                               "\nPredictor set:\nStart of FSPredictorSet display\n"),
              std::string::npos);
    EXPECT_TRUE(
        fresh.str().ends_with("End of FSPredictorSet display\n"
                              "End of FSAlgorithm display\n"));
    EXPECT_TRUE(RunAll(SomeRows()).IsOk());
    std::ostringstream done;
    fpEngine->Display(done);
    EXPECT_NE(done.str().find("Data accumulated? Yes.  Predictors ranked? Yes.\n"),
              std::string::npos);
}

TEST(FSFactory, MakesAnEngineOnBorrowedSettings) {
    FSSettings settings(2, kCategorical, true);
    FSFactory factory;
    EXPECT_EQ(factory.GetStatus(), FSStatus::Success());
    const std::unique_ptr<IFSAlgorithm> engine = factory.CreateFromSettings(settings);
    ASSERT_NE(engine, nullptr);
    EXPECT_EQ(&engine->GetSettings(), &settings);
    EXPECT_TRUE(factory.GetStatus().IsOk());
}

TEST(FSFactory, ShutDownItHasStatusOneAndMakesNothing) {
    FSSettings settings(1, kCategorical, true);
    FSFactory factory;
    const std::unique_ptr<IFSAlgorithm> earlier = factory.CreateFromSettings(settings);
    factory.Shutdown();
    ExpectStatus(factory.GetStatus(), 1, -1);
    EXPECT_EQ(factory.CreateFromSettings(settings), nullptr);
    ExpectStatus(factory.GetStatus(), 1, -1);
    // The engine made before is its owner's and works on.
    RecordList records({{0, 1}, {1, 2}, {1, 1}});
    EXPECT_TRUE(earlier->RunAll(records, -1, false, 0).IsOk());
}

}  // namespace
