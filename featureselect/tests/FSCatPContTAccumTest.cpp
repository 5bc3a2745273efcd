#include "featureselect/FSCatPContTAccum.h"

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

FSCatPContTAccum Of(const std::vector<Case>& cases) {
    FSCatPContTAccum accum;
    for (const Case& one : cases) FeedPair(accum, one);
    accum.FinishData();
    return accum;
}

// The groups {1, 2, 3}, {2, 3, 4}, {6, 7, 8} of the target.
const std::vector<Case> kThreeGroups{{0, 1, 1}, {1, 2, 1}, {2, 6, 1}, {0, 2, 1}, {1, 3, 1},
                                     {2, 7, 1}, {0, 3, 1}, {1, 4, 1}, {2, 8, 1}};

std::vector<Case> RandomCases(double mean, double stdDev) {
    return accumcases::RandomCases(testsupport::RandomSeed(), 200, {}, {false, mean, stdDev});
}

TEST(FSCatPContTAccum, WeightsNotAboveZeroReachNoCounter) {
    FSCatPContTAccum accum;
    for (const double weight : {0.0, -1.0, accumcases::kNaN}) {
        accum.AddPair(3.0, 1.0, weight, true);
        accum.AddMissing(weight);
    }
    accum.AddValue(3.0, 1.0, true);  // has no meaning here
    EXPECT_EQ(testsupport::Save(accum), testsupport::Save(FSCatPContTAccum()));
    EXPECT_EQ(ShownNumber(accum, "Number of unweighted valid cases = "), 0.0);
}

TEST(FSCatPContTAccum, GrandMeanIsThatOfValidRecords) {
    // (1 * 2 + 2 * 5) / 3 = 4; the record without predictor does not enter.
    const FSCatPContTAccum accum = Of({{1, 2, 1}, {kMissing, 100, 4}, {2, 5, 2}});
    EXPECT_EQ(ShownNumber(accum, "Grand mean of the target = "), 4.0);
    EXPECT_EQ(ShownNumber(accum, "Number of processed cases = "), 7.0);
}

TEST(FSCatPContTAccum, FTestByHand) {
    // F = 21 with 2 and 6 degrees of freedom, p = 8^-3; see the test of FSFTest for the sums.
    const FSCatPContTAccum accum = Of(kThreeGroups);
    for (const std::int32_t criterion : {4, 5}) {
        const Criterion result = Compute(accum, criterion);
        EXPECT_NEAR(result.fValue, 1.0 / 512.0, 1e-15);
        EXPECT_NEAR(result.fTieBreak1, 21.0, 1e-13);
        EXPECT_EQ(result.fTieBreak2, 9.0);
        EXPECT_EQ(result.fExtra1, 2.0);
        EXPECT_EQ(result.fExtra2, 6.0);
    }
}

TEST(FSCatPContTAccum, ConstantGroupsRankFirst) {
    const Criterion result = Compute(Of({{0, 1, 2}, {1, 5, 2}, {1, 5, 1}}), 4);
    EXPECT_EQ(result.fValue, 0.0);
    EXPECT_EQ(result.fTieBreak1, kMissing);
    EXPECT_EQ(result.fTieBreak2, 5.0);
}

TEST(FSCatPContTAccum, OneCategoryHasNoFTest) {
    const Criterion result = Compute(Of({{3, 1, 1}, {3, 2, 1}, {3, 4, 1}}), 4);
    EXPECT_EQ(result.fValue, kMissing);
    EXPECT_EQ(result.fTieBreak1, kMissing);
    EXPECT_EQ(result.fTieBreak2, 3.0);
    EXPECT_EQ(result.fExtra1, 0.0);
}

TEST(FSCatPContTAccum, CriteriaOfOtherKindsStayMissing) {
    const FSCatPContTAccum accum = Of(kThreeGroups);
    for (const std::int32_t criterion : {0, 1, 2, 3, 6, -1}) {
        EXPECT_TRUE(Compute(accum, criterion).AllAre(kMissing)) << criterion;
    }
    for (const std::int32_t criterion : {0, 1, 2, 3, 5}) {
        const Displayed shown = ForDisplay(accum, criterion);
        EXPECT_FALSE(shown.fbReported) << criterion;
        for (const double value : shown.fValues) EXPECT_EQ(value, kMissing);
    }
}

TEST(FSCatPContTAccum, DisplayedFTest) {
    const FSCatPContTAccum accum = Of(kThreeGroups);
    const Criterion result = Compute(accum, 4);
    const Displayed shown = ForDisplay(accum, 4);
    EXPECT_TRUE(shown.fbReported);
    EXPECT_EQ(shown.fValues, (std::array<double, 4>{result.fValue, result.fTieBreak1, 2.0, 6.0}));
}

TEST(FSCatPContTAccum, FTestAgreesWithTwoPassesOfRandomData) {
    const std::vector<Case> cases = RandomCases(5.0, 2.0);
    std::map<std::int32_t, std::vector<Case>> groups;
    for (const Case& one : cases) {
        if (one.IsValid()) groups[static_cast<std::int32_t>(one.fPredictor)].push_back(one);
    }
    const accumcases::TwoPass all(cases);
    long double within = 0.0L;
    for (const auto& [key, group] : groups) {
        // A group whose weight is not above 1 has variance 0 and so adds nothing within.
        const accumcases::TwoPass one(group);
        if (one.fWeight > 1.0L) within += one.fTargetMoment;
    }
    long double between = 0.0L;
    for (const auto& [key, group] : groups) {
        const accumcases::TwoPass one(group);
        const long double deviation = one.fTargetMean - all.fTargetMean;
        between += deviation * deviation * one.fWeight;
    }
    const auto df1 = static_cast<double>(groups.size() - 1);
    const auto df2 = static_cast<double>(all.fWeight) - static_cast<double>(groups.size());
    const auto f = static_cast<double>((between / df1) / (within / df2));
    const Criterion result = Compute(Of(cases), 4);
    EXPECT_NEAR(result.fTieBreak1, f, 1e-12 * f);
    EXPECT_NEAR(result.fValue, 1.0 - FCdf(f, df1, df2), 1e-12);
    EXPECT_EQ(result.fExtra1, df1);
    EXPECT_EQ(result.fExtra2, df2);
}

TEST(FSCatPContTAccum, TenDistinctValuesInTenRecordsFireReason5Only) {
    std::vector<Case> cases;
    for (int i = 0; i < 10; ++i) cases.push_back({static_cast<double>(i), 0.5 * i, 1});
    EXPECT_EQ(AllReasons(Of(cases), FSSettings()), (std::vector<std::int32_t>{5}));
}

TEST(FSCatPContTAccum, OtherRulesApplyInOrder) {
    const FSCatPContTAccum accum = Of({{1, 0.5, 1}, {kMissing, 0, 3}});
    EXPECT_EQ(AllReasons(accum, FSSettings()), (std::vector<std::int32_t>{3, 4, 5}));
    EXPECT_TRUE(accum.IsConstant());
    EXPECT_TRUE(accum.IsCategorical());
}

TEST(FSCatPContTAccum, MergedPartitionsAreOnePass) {
    testsupport::ExpectSplitInvariant(
        RandomCases(5.0, 2.0), [] { return FSCatPContTAccum(); }, FeedPair);
}

TEST(FSCatPContTAccum, MergedPartitionsAreOnePassWithMeansNearABillion) {
    testsupport::ExpectSplitInvariant(
        RandomCases(1e9, 1e8), [] { return FSCatPContTAccum(); }, FeedPair);
    testsupport::ExpectSplitInvariant(
        RandomCases(1e9, 1.0), [] { return FSCatPContTAccum(); }, FeedPair,
        testsupport::ToleranceFor(1e9, 1.0));
}

TEST(FSCatPContTAccum, MergeAddsUnweightedRecordsUnlessASaveLostThem) {
    const std::string label = "Number of unweighted valid cases = ";
    const FSCatPContTAccum side = Of({{1, 0, 2}, {2, 1, 2}, {kMissing, 0, 1}});
    FSCatPContTAccum merged = side;
    merged.MergeFrom(side);
    EXPECT_EQ(ShownNumber(merged, label), 4.0);
    merged.MergeFrom(testsupport::Restored(side, [] { return FSCatPContTAccum(); }));
    EXPECT_EQ(ShownNumber(merged, label), 4.0);
}

TEST(FSCatPContTAccum, DisplayShowsEveryField) {
    const FSCatPContTAccum accum = Of({{3, 1, 1}, {3, 5, 3}, {kMissing, 0, 1}});
    EXPECT_EQ(accumcases::DisplayText(accum),
              "Start of FSCatPContTAccum display\n"
              "Number of predictor categories = 1\n"
              "Number of processed cases = 5\n"
              "Number of unweighted valid cases = 2\n"
              "Number of missing cases = 1\n"
              "The first non-missing category = 3\n"
              "This is constant\n"
              "Grand mean of the target = 4\n"
              "Case counts of predictor categories:\n"
              "Start of FSMapICnt display\n"
              "Map size = 1\n"
              "Key = 3, Value = 4\n"
              "End of FSMapICnt display\n"
              "Target statistics for predictor categories:\n"
              "Start of FSMapIStat display\n"
              "Map size = 1\n"
              "Key = 3, Value = (4, 4, 12, 4)\n"
              "End of FSMapIStat display\n"
              "End of FSCatPContTAccum display\n");
}

}  // namespace
