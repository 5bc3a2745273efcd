#include "featureselect/FSContPCatTAccum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

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
using accumcases::ShownNumber;

FSContPCatTAccum Of(const std::vector<Case>& cases) {
    FSContPCatTAccum accum;
    for (const Case& one : cases) FeedPair(accum, one);
    accum.FinishData();
    return accum;
}

// The groups {1, 2, 3}, {2, 3, 4}, {6, 7, 8} of the predictor.
const std::vector<Case> kThreeGroups{{1, 0, 1}, {2, 1, 1}, {6, 2, 1}, {2, 0, 1}, {3, 1, 1},
                                     {7, 2, 1}, {3, 0, 1}, {4, 1, 1}, {8, 2, 1}};

std::vector<Case> RandomCases(double mean, double stdDev) {
    return accumcases::RandomCases(testsupport::RandomSeed(), 200, {false, mean, stdDev}, {});
}

TEST(FSContPCatTAccum, WeightsNotAboveZeroReachNoCounter) {
    FSContPCatTAccum accum;
    for (const double weight : {0.0, -1.0, accumcases::kNaN}) {
        accum.AddPair(3.0, 1.0, weight, true);
        accum.AddMissing(weight);
    }
    accum.AddValue(3.0, 1.0, true);  // has no meaning here
    EXPECT_EQ(testsupport::Save(accum), testsupport::Save(FSContPCatTAccum()));
}

TEST(FSContPCatTAccum, FTestByHand) {
    // F = 21 with 2 and 6 degrees of freedom, p = 8^-3; see the test of FSFTest for the sums.
    const FSContPCatTAccum accum = Of(kThreeGroups);
    for (const std::int32_t criterion : {0, 1, 4}) {
        const Criterion result = Compute(accum, criterion);
        EXPECT_NEAR(result.fValue, 1.0 / 512.0, 1e-15);
        EXPECT_NEAR(result.fTieBreak1, 21.0, 1e-13);
        EXPECT_EQ(result.fExtra1, 2.0);
        EXPECT_EQ(result.fExtra2, 6.0);
    }
}

TEST(FSContPCatTAccum, SecondTieBreakIsNegativeAmongChiSquares) {
    const FSContPCatTAccum accum = Of(kThreeGroups);
    EXPECT_EQ(Compute(accum, 0).fTieBreak2, -9.0);
    EXPECT_EQ(Compute(accum, 1).fTieBreak2, -9.0);
    EXPECT_EQ(Compute(accum, 4).fTieBreak2, 9.0);
}

TEST(FSContPCatTAccum, CriteriaOfOtherKindsStayMissing) {
    const FSContPCatTAccum accum = Of(kThreeGroups);
    for (const std::int32_t criterion : {2, 3, 5, 6, -1}) {
        EXPECT_TRUE(Compute(accum, criterion).AllAre(kMissing)) << criterion;
    }
    for (const std::int32_t criterion : {0, 1, 2, 3, 5}) {
        const Displayed shown = ForDisplay(accum, criterion);
        EXPECT_FALSE(shown.fbReported) << criterion;
        for (const double value : shown.fValues) EXPECT_EQ(value, kMissing);
    }
}

TEST(FSContPCatTAccum, DisplayedFTest) {
    const FSContPCatTAccum accum = Of(kThreeGroups);
    const Criterion result = Compute(accum, 4);
    const Displayed shown = ForDisplay(accum, 4);
    EXPECT_TRUE(shown.fbReported);
    EXPECT_EQ(shown.fValues, (std::array<double, 4>{result.fValue, result.fTieBreak1, 2.0, 6.0}));
}

TEST(FSContPCatTAccum, AllGroupsConstantGiveZeroAndNoStatistic) {
    const Criterion result = Compute(Of({{1, 0, 1}, {1, 0, 1}, {2, 1, 1}, {2, 1, 1}}), 4);
    EXPECT_EQ(result.fValue, 0.0);
    EXPECT_EQ(result.fTieBreak1, kMissing);
    EXPECT_EQ(result.fTieBreak2, 4.0);
}

TEST(FSContPCatTAccum, OneTargetCategoryHasNoFTest) {
    const Criterion result = Compute(Of({{1, 0, 1}, {2, 0, 1}, {4, 0, 1}}), 4);
    EXPECT_EQ(result.fValue, kMissing);
    EXPECT_EQ(result.fTieBreak2, 3.0);
}

TEST(FSContPCatTAccum, FTestAgreesWithTwoPassesOfRandomData) {
    const std::vector<Case> cases = RandomCases(5.0, 2.0);
    std::map<std::int32_t, std::vector<Case>> groups;
    for (const Case& one : cases) {
        if (one.IsValid()) groups[static_cast<std::int32_t>(one.fTarget)].push_back(one);
    }
    const accumcases::TwoPass all(cases);
    long double within = 0.0L;
    long double between = 0.0L;
    for (const auto& [key, group] : groups) {
        const accumcases::TwoPass one(group);
        if (one.fWeight > 1.0L) within += one.fPredMoment;
        const long double deviation = one.fPredMean - all.fPredMean;
        between += deviation * deviation * one.fWeight;
    }
    const auto df1 = static_cast<double>(groups.size() - 1);
    const auto df2 = static_cast<double>(all.fWeight) - static_cast<double>(groups.size());
    const auto f = static_cast<double>((between / df1) / (within / df2));
    const Criterion result = Compute(Of(cases), 4);
    EXPECT_NEAR(result.fTieBreak1, f, 1e-12 * f);
    EXPECT_NEAR(result.fValue, 1.0 - FCdf(f, df1, df2), 1e-12);
}

TEST(FSContPCatTAccum, StdDevIsThatOfAllCategoriesTogether) {
    const std::vector<Case> cases = RandomCases(5.0, 2.0);
    const accumcases::TwoPass plain(cases);
    const auto stdDev = static_cast<double>(std::sqrt(plain.fPredMoment / (plain.fWeight - 1.0L)));
    const FSContPCatTAccum accum = Of(cases);
    FSSettings settings;
    settings.SetMinStdDev(stdDev * (1.0 + 1e-12));
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{7}));
    settings.SetMinStdDev(stdDev * (1.0 - 1e-12));
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{}));
}

TEST(FSContPCatTAccum, WeightNotAboveOneHasNoSpread) {
    EXPECT_EQ(AllReasons(Of({{1, 0, 0.5}, {4, 1, 0.5}}), FSSettings()),
              (std::vector<std::int32_t>{8}));
}

TEST(FSContPCatTAccum, ConstantNonZeroPredictorFiresReason8) {
    const FSContPCatTAccum accum = Of({{3, 0, 1}, {3, 1, 1}});
    EXPECT_TRUE(accum.IsConstant());
    EXPECT_FALSE(accum.IsCategorical());
    EXPECT_EQ(AllReasons(accum, FSSettings()), (std::vector<std::int32_t>{8}));
}

TEST(FSContPCatTAccum, VariationIsAboutTheGrandMean) {
    // s / mean = sqrt(0.00005) / 100.005, below the default of 0.001.
    EXPECT_EQ(AllReasons(Of({{100, 0, 1}, {100.01, 1, 1}}), FSSettings()),
              (std::vector<std::int32_t>{8}));
    EXPECT_EQ(AllReasons(Of({{-1, 0, 1}, {1, 1, 1}}), FSSettings()), (std::vector<std::int32_t>{}));
}

TEST(FSContPCatTAccum, AllMissingFiresReason3AtMost) {
    const FSContPCatTAccum accum = Of({{kMissing, 0, 1}});
    FSSettings settings;
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{3}));
    settings.SetMaxMissingPercent(100.0);
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{}));
}

TEST(FSContPCatTAccum, MergedPartitionsAreOnePass) {
    testsupport::ExpectSplitInvariant(
        RandomCases(5.0, 2.0), [] { return FSContPCatTAccum(); }, FeedPair);
}

TEST(FSContPCatTAccum, MergedPartitionsAreOnePassWithMeansNearABillion) {
    testsupport::ExpectSplitInvariant(
        RandomCases(1e9, 1e8), [] { return FSContPCatTAccum(); }, FeedPair);
    testsupport::ExpectSplitInvariant(
        RandomCases(1e9, 1.0), [] { return FSContPCatTAccum(); }, FeedPair,
        testsupport::ToleranceFor(1e9, 1.0));
}

TEST(FSContPCatTAccum, DisplayShowsEveryField) {
    EXPECT_EQ(accumcases::DisplayText(Of({{1, -2, 1}, {5, -2, 3}, {kMissing, 0, 1}})),
              "Start of FSContPCatTAccum display\n"
              "Number of processed cases = 5\n"
              "Number of missing cases = 1\n"
              "Grand mean of predictor = 4\n"
              "The first non-missing predictor value = 1\n"
              "This is not constant\n"
              "Predictor statistics for target categories:\n"
              "Start of FSMapIStat display\n"
              "Map size = 1\n"
              "Key = -2, Value = (4, 4, 12, 4)\n"
              "End of FSMapIStat display\n"
              "End of FSContPCatTAccum display\n");
}

}  // namespace
