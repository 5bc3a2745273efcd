#include "featureselect/FSRunningStep.h"

#include <gtest/gtest.h>

#include <ctime>
#include <vector>

#include "featureselect/FSCancelState.h"
#include "featureselect/FSReporter.h"
#include "host/Records.h"
#include "tests/support/ProgressHooks.h"

namespace {

using testsupport::CancelAtPoll;
using testsupport::ProgressRecorder;

TEST(FSReporter, AnswersByNameAndGivesNothingForOtherNames) {
    const FSReporter report(7, -1, 2.5);
    EXPECT_EQ(report.GetInteger("records"), 7);
    EXPECT_EQ(report.GetInteger("predictors"), -1);
    EXPECT_EQ(report.GetInteger("elapsedTime"), -1);
    EXPECT_EQ(report.GetInteger("Records"), -1);
    EXPECT_EQ(report.GetDouble("elapsedTime"), 2.5);
    EXPECT_EQ(report.GetDouble("records"), MCMV::gMissingValue);
    EXPECT_EQ(report.GetDouble(""), MCMV::gMissingValue);
}

TEST(FSRunningStep, ReportsEverySkipPlusOneUnits) {
    ProgressRecorder listener;
    double elapsed = 0;
    FSRunningStep step(elapsed, &listener, 2);
    for (std::int32_t unit = 1; unit <= 7; ++unit) step.Done(unit, -1);
    EXPECT_EQ(listener.Records(), (std::vector<std::int32_t>{3, 6}));
}

TEST(FSRunningStep, WithNothingToSkipReportsEveryUnit) {
    ProgressRecorder listener;
    double elapsed = 0;
    FSRunningStep step(elapsed, &listener, 0);
    for (std::int32_t unit = 1; unit <= 3; ++unit) step.Done(-1, unit);
    EXPECT_EQ(listener.Predictors(), (std::vector<std::int32_t>{1, 2, 3}));
}

TEST(FSRunningStep, WithoutAListenerOnlyKeepsTime) {
    double elapsed = 1.5;
    {
        FSRunningStep step(elapsed);
        step.Done(1, -1);
    }
    EXPECT_GE(elapsed, 1.5);
}

TEST(FSRunningStep, AddsItsProcessorTimeToThatOfEarlierSteps) {
    ProgressRecorder listener;
    double elapsed = 100.0;
    const std::clock_t start = std::clock();
    {
        FSRunningStep step(elapsed, &listener, 0);
        while (std::clock() - start < CLOCKS_PER_SEC / 50) {
        }
        step.Done(1, -1);
    }
    ASSERT_EQ(listener.fvReports.size(), 1U);
    EXPECT_GE(listener.fvReports[0].fElapsed, 100.019);  // 20 ms, less one tick
    EXPECT_LT(listener.fvReports[0].fElapsed, 110.0);
    EXPECT_GE(elapsed, listener.fvReports[0].fElapsed);
}

TEST(FSCancelState, IsNotCancelledAtFirst) {
    FSCancelState state;
    EXPECT_FALSE(state.IsCancelled());
    EXPECT_FALSE(state.WasCancelled());
}

TEST(FSCancelState, OnePositiveAnswerSticks) {
    CancelAtPoll check(1);
    FSCancelState state(&check);
    EXPECT_FALSE(state.IsCancelled());
    EXPECT_TRUE(state.IsCancelled());
    EXPECT_TRUE(state.IsCancelled());
    EXPECT_EQ(check.Polls(), 2);
}

TEST(FSCancelState, WasCancelledAsksNobody) {
    CancelAtPoll check(0);
    FSCancelState state(&check);
    EXPECT_FALSE(state.WasCancelled());
    EXPECT_EQ(check.Polls(), 0);
}

TEST(FSCancelState, CancelNeedsNoCheckAndASetCheckReplacesTheOld) {
    CancelAtPoll never(1000);
    CancelAtPoll atOnce(0);
    FSCancelState replaced(&never);
    replaced.SetCancelCheck(&atOnce);
    EXPECT_TRUE(replaced.IsCancelled());
    EXPECT_EQ(never.Polls(), 0);

    FSCancelState called;
    called.Cancel();
    EXPECT_TRUE(called.IsCancelled());
}

}  // namespace
