#include "featureselect/FSContPContTAccum.h"

#include <gtest/gtest.h>

#include <cmath>

#include "featureselect/FSDistributions.h"
#include "featureselect/FSSettings.h"
#include "featureselect/tests/AccumCases.h"
#include "tests/support/MemoryArchive.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/SplitInvariance.h"

namespace {

using accumcases::AllReasons;
using accumcases::Case;
using accumcases::Compute;
using accumcases::Criterion;
using accumcases::Displayed;
using accumcases::FeedPair;
using accumcases::ForDisplay;
using accumcases::kMissing;
using accumcases::Shown;
using accumcases::ShownNumber;

const std::string kCorrelation = "Pearson correlation coefficient = ";

FSContPContTAccum Of(const std::vector<Case>& cases) {
    FSContPContTAccum accum;
    for (const Case& one : cases) FeedPair(accum, one);
    accum.FinishData();
    return accum;
}

// Moments 5 and 5, cross-product 2.25 - 0.25 - 0.25 + 2.25 = 4: r = 0.8.
const std::vector<Case> kFour{{1, 1, 1}, {2, 3, 1}, {3, 2, 1}, {4, 4, 1}};

std::vector<Case> RandomCases(double mean, double stdDev) {
    return accumcases::RandomCases(testsupport::RandomSeed(), 200, {false, mean, stdDev},
                                   {false, -3.0 * mean, stdDev});
}

TEST(FSContPContTAccum, WeightsNotAboveZeroReachNoCounter) {
    FSContPContTAccum accum;
    for (const double weight : {0.0, -1.0, accumcases::kNaN}) {
        accum.AddPair(3.0, 1.0, weight, true);
        accum.AddMissing(weight);
    }
    accum.AddValue(3.0, 1.0, true);  // has no meaning here
    EXPECT_EQ(testsupport::Save(accum), testsupport::Save(FSContPContTAccum()));
}

TEST(FSContPContTAccum, DerivedStatisticsStartMissing) {
    const FSContPContTAccum accum;
    EXPECT_EQ(Shown(accum, "Variance of the predictor = "), "<missing>");
    EXPECT_EQ(Shown(accum, "Variance of the target = "), "<missing>");
    EXPECT_EQ(Shown(accum, kCorrelation), "<missing>");
}

TEST(FSContPContTAccum, MomentsByHand) {
    const FSContPContTAccum accum = Of(kFour);
    EXPECT_EQ(ShownNumber(accum, "Mean of the predictor = "), 2.5);
    EXPECT_EQ(ShownNumber(accum, "Mean of the target = "), 2.5);
    EXPECT_DOUBLE_EQ(ShownNumber(accum, "Second moment of the predictor = "), 5.0);
    EXPECT_DOUBLE_EQ(ShownNumber(accum, "Second moment of the target = "), 5.0);
    EXPECT_DOUBLE_EQ(ShownNumber(accum, "Cross-product = "), 4.0);
    EXPECT_DOUBLE_EQ(ShownNumber(accum, "Variance of the predictor = "), 5.0 / 3.0);
    EXPECT_DOUBLE_EQ(ShownNumber(accum, "Variance of the target = "), 5.0 / 3.0);
    EXPECT_DOUBLE_EQ(ShownNumber(accum, kCorrelation), 0.8);
}

TEST(FSContPContTAccum, TTestByHand) {
    // t = sqrt(2 / 0.36) * 0.8; with 2 degrees of freedom the two-sided p-value is
    // 1 - t / sqrt(2 + t^2) = 1 - r = 0.2.
    const FSContPContTAccum accum = Of(kFour);
    for (const std::int32_t criterion : {4, 5}) {
        const Criterion result = Compute(accum, criterion);
        EXPECT_NEAR(result.fValue, 0.2, 1e-15);
        EXPECT_NEAR(result.fTieBreak1, 0.64, 1e-15);
        EXPECT_EQ(result.fTieBreak2, 4.0);
        EXPECT_DOUBLE_EQ(result.fExtra1, 0.8);
        EXPECT_NEAR(result.fExtra2, std::sqrt(2.0 / 0.36) * 0.8, 1e-14);
    }
}

TEST(FSContPContTAccum, NegativeCorrelationHasTheSamePValue) {
    std::vector<Case> cases = kFour;
    for (Case& one : cases) one.fTarget = -one.fTarget;
    const Criterion result = Compute(Of(cases), 5);
    EXPECT_NEAR(result.fValue, 0.2, 1e-15);
    EXPECT_DOUBLE_EQ(result.fExtra1, -0.8);
    EXPECT_LT(result.fExtra2, 0.0);
}

TEST(FSContPContTAccum, OneDegreeOfFreedomIsCauchy) {
    // x = 1, 2, 3 and y = 1, 3, 2: r = 1/2, t = sqrt(1 / 0.75) * 0.5 = 1/sqrt(3) = tan(30 degrees),
    // p = 1 - (2/pi) * atan(t) = 2/3.
    const Criterion result = Compute(Of({{1, 1, 1}, {2, 3, 1}, {3, 2, 1}}), 5);
    EXPECT_NEAR(result.fValue, 2.0 / 3.0, 1e-14);
}

TEST(FSContPContTAccum, NoCorrelationAtAllHasThePValueOne) {
    const Criterion result = Compute(Of({{1, 1, 1}, {2, 0, 1}, {3, 1, 1}, {2, 2, 1}}), 5);
    EXPECT_EQ(result.fExtra1, 0.0);
    EXPECT_EQ(result.fExtra2, 0.0);
    EXPECT_EQ(result.fValue, 1.0);
}

TEST(FSContPContTAccum, PerfectCorrelationHasThePValueZeroAndNoT) {
    // Powers of 2, so that r is exactly 1.
    const Criterion result = Compute(Of({{-2, -2, 1}, {2, 2, 1}, {-2, -2, 1}, {2, 2, 2}}), 5);
    ASSERT_GE(result.fTieBreak1, 1.0);
    EXPECT_EQ(result.fValue, 0.0);
    EXPECT_EQ(result.fTieBreak2, 5.0);
    EXPECT_EQ(result.fExtra2, kMissing);
}

TEST(FSContPContTAccum, ZeroDegreesOfFreedomLeaveTheValueMissing) {
    // N = 2 and r = 0.5 (three records of weight 2/4, 1, 2/4 would do; here moments 2 and 2 with
    // cross-product 1).
    const std::vector<Case> cases{
        {1, 1, 0.5}, {-1, -1, 0.5}, {1, -1, 0.25}, {-1, 1, 0.25}, {0, 0, 0.5}};
    const Criterion result = Compute(Of(cases), 5);
    ASSERT_EQ(result.fTieBreak2, 2.0);
    ASSERT_LT(result.fTieBreak1, 1.0);
    EXPECT_EQ(result.fValue, kMissing);
    EXPECT_EQ(result.fExtra2, 0.0);
}

TEST(FSContPContTAccum, NegativeDegreesOfFreedomGiveZero) {
    const std::vector<Case> cases{{1, 1, 0.5}, {-1, -1, 0.5}, {1, -1, 0.25}, {-1, 1, 0.25}};
    const Criterion result = Compute(Of(cases), 5);
    ASSERT_EQ(result.fTieBreak2, 1.5);
    EXPECT_EQ(result.fValue, 0.0);
    EXPECT_EQ(result.fExtra2, kMissing);
}

TEST(FSContPContTAccum, WeightOfOneHasNoCorrelation) {
    const FSContPContTAccum accum = Of({{1, 5, 1}, {kMissing, 3, 1}});
    EXPECT_EQ(ShownNumber(accum, "Variance of the predictor = "), 0.0);
    EXPECT_EQ(ShownNumber(accum, "Variance of the target = "), 0.0);
    EXPECT_EQ(Shown(accum, kCorrelation), "<missing>");
    EXPECT_TRUE(Compute(accum, 5).AllAre(kMissing));
}

TEST(FSContPContTAccum, FractionalWeightOfOneAndAHalfIsEnoughForACorrelation) {
    // 1 with weight 1, 4 with weight 1/2: moment 3, divisor 1/2.
    const FSContPContTAccum accum = Of({{1, 2, 1}, {4, 8, 0.5}});
    EXPECT_DOUBLE_EQ(ShownNumber(accum, "Variance of the predictor = "), 6.0);
    EXPECT_DOUBLE_EQ(ShownNumber(accum, kCorrelation), 1.0);
}

TEST(FSContPContTAccum, ConstantTargetHasNoCorrelation) {
    const FSContPContTAccum accum = Of({{1, 2, 1}, {4, 2, 1}, {5, 2, 1}});
    EXPECT_EQ(ShownNumber(accum, "Variance of the target = "), 0.0);
    EXPECT_EQ(Shown(accum, kCorrelation), "<missing>");
    const Displayed shown = ForDisplay(accum, 5);
    EXPECT_TRUE(shown.fbReported);
    for (const double value : shown.fValues) EXPECT_EQ(value, kMissing);
}

TEST(FSContPContTAccum, CriteriaOfOtherKindsStayMissing) {
    const FSContPContTAccum accum = Of(kFour);
    for (const std::int32_t criterion : {0, 1, 2, 3, 6, -1}) {
        EXPECT_TRUE(Compute(accum, criterion).AllAre(kMissing)) << criterion;
    }
    for (const std::int32_t criterion : {0, 1, 2, 3, 4}) {
        const Displayed shown = ForDisplay(accum, criterion);
        EXPECT_FALSE(shown.fbReported) << criterion;
        for (const double value : shown.fValues) EXPECT_EQ(value, kMissing);
    }
}

TEST(FSContPContTAccum, DisplayedTTest) {
    const FSContPContTAccum accum = Of(kFour);
    const Criterion result = Compute(accum, 5);
    const Displayed shown = ForDisplay(accum, 5);
    EXPECT_TRUE(shown.fbReported);
    EXPECT_EQ(shown.fValues,
              (std::array<double, 4>{result.fValue, result.fExtra1, result.fExtra2, 2.0}));
}

TEST(FSContPContTAccum, TTestAgreesWithTwoPassesOfRandomData) {
    const std::vector<Case> cases = RandomCases(5.0, 2.0);
    const accumcases::TwoPass plain(cases);
    const auto r =
        static_cast<double>(plain.fCross / std::sqrt(plain.fPredMoment * plain.fTargetMoment));
    const auto df = static_cast<double>(plain.fWeight - 2.0L);
    const double t = r * std::sqrt(df / ((1.0 - r) * (1.0 + r)));
    const Criterion result = Compute(Of(cases), 5);
    EXPECT_NEAR(result.fExtra1, r, 1e-12);
    EXPECT_NEAR(result.fExtra2, t, 1e-11 * std::fabs(t));
    EXPECT_NEAR(result.fValue, 2.0 * TCdf(-std::fabs(t), df), 1e-12);
    EXPECT_EQ(result.fTieBreak2, df + 2.0);
}

TEST(FSContPContTAccum, RulesJudgeThePredictorAlone) {
    FSSettings settings;
    settings.SetMinStdDev(1.0);
    EXPECT_EQ(AllReasons(Of({{1, 5, 1}, {2, 5, 1}, {3, 5, 1}}), settings),
              (std::vector<std::int32_t>{}));
    EXPECT_EQ(AllReasons(Of({{100.01, 5, 1}, {100, 9, 1}, {kMissing, 9, 10}}), settings),
              (std::vector<std::int32_t>{3, 7, 8}));
    EXPECT_EQ(AllReasons(Of({{3, 5, 1}, {3, 9, 1}}), FSSettings()), (std::vector<std::int32_t>{8}));
}

TEST(FSContPContTAccum, AllMissingFiresReason3AtMost) {
    const FSContPContTAccum accum = Of({{kMissing, 0, 1}});
    FSSettings settings;
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{3}));
    settings.SetMaxMissingPercent(100.0);
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{}));
}

TEST(FSContPContTAccum, ConstancyIsThatOfThePredictor) {
    const FSContPContTAccum accum = Of({{2, 1, 1}, {2, 3, 1}});
    EXPECT_TRUE(accum.IsConstant());
    EXPECT_FALSE(accum.IsAllMissing());
    EXPECT_FALSE(accum.IsCategorical());
    EXPECT_FALSE(Of(kFour).IsConstant());
}

TEST(FSContPContTAccum, MergedPartitionsAreOnePass) {
    testsupport::ExpectSplitInvariant(
        RandomCases(5.0, 2.0), [] { return FSContPContTAccum(); }, FeedPair);
}

TEST(FSContPContTAccum, MergedPartitionsAreOnePassWithMeansNearABillion) {
    testsupport::ExpectSplitInvariant(
        RandomCases(1e9, 1e8), [] { return FSContPContTAccum(); }, FeedPair);
    testsupport::ExpectSplitInvariant(
        RandomCases(1e9, 1.0), [] { return FSContPContTAccum(); }, FeedPair,
        testsupport::ToleranceFor(3e9, 1.0));
}

TEST(FSContPContTAccum, ASaveLosesWhatFinishDataDerives) {
    FSContPContTAccum restored =
        testsupport::Restored(Of(kFour), [] { return FSContPContTAccum(); });
    EXPECT_EQ(Shown(restored, "Variance of the predictor = "), "<missing>");
    EXPECT_EQ(Shown(restored, "Variance of the target = "), "<missing>");
    EXPECT_EQ(Shown(restored, kCorrelation), "<missing>");
    EXPECT_TRUE(Compute(restored, 5).AllAre(kMissing));
    restored.FinishData();
    EXPECT_DOUBLE_EQ(ShownNumber(restored, kCorrelation), 0.8);
}

TEST(FSContPContTAccum, AMergeKeepsItsOwnDerivedStatistics) {
    FSContPContTAccum merged = Of(kFour);
    merged.MergeFrom(Of({{100, 7, 1}}));
    EXPECT_DOUBLE_EQ(ShownNumber(merged, kCorrelation), 0.8);
    merged.FinishData();
    EXPECT_GT(std::fabs(ShownNumber(merged, kCorrelation) - 0.8), 0.01);
}

TEST(FSContPContTAccum, SavesSeventyThreeBytes) {
    EXPECT_EQ(testsupport::Save(FSContPContTAccum()).size(), 73u);
}

TEST(FSContPContTAccum, DisplayShowsEveryField) {
    EXPECT_EQ(accumcases::DisplayText(Of({{1, 2, 1}, {5, 2, 3}, {kMissing, 0, 1}})),
              "Start of FSContPContTAccum display\n"
              "Number of processed cases = 5\n"
              "Number of missing cases = 1\n"
              "The first non-missing value = 1\n"
              "This is not constant\n"
              "Mean of the predictor = 4\n"
              "Second moment of the predictor = 12\n"
              "Mean of the target = 2\n"
              "Second moment of the target = 0\n"
              "Cross-product = 0\n"
              "Variance of the predictor = 4\n"
              "Variance of the target = 0\n"
              "Pearson correlation coefficient = <missing>\n"
              "End of FSContPContTAccum display\n");
}

}  // namespace
