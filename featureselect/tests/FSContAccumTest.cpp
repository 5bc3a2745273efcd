#include "featureselect/FSContAccum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <sstream>
#include <string>

#include "featureselect/FSSettings.h"
#include "featureselect/tests/AccumCases.h"
#include "tests/support/CaseName.h"
#include "tests/support/MemoryArchive.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/SplitInvariance.h"

namespace {

using accumcases::AllReasons;
using accumcases::Case;
using accumcases::FeedValue;
using accumcases::kMissing;
using accumcases::Shown;
using accumcases::ShownNumber;

FSContAccum Of(const std::vector<Case>& cases) {
    FSContAccum accum;
    for (const Case& one : cases) FeedValue(accum, one);
    accum.FinishData();
    return accum;
}

std::vector<Case> RandomCases(double mean, double stdDev) {
    return accumcases::RandomCases(testsupport::RandomSeed(), 200, {false, mean, stdDev}, {});
}

TEST(FSContAccum, WeightsNotAboveZeroReachNoCounter) {
    FSContAccum accum;
    for (const double weight : {0.0, -1.0, accumcases::kNaN}) {
        accum.AddValue(3.0, weight, true);
        accum.AddMissing(weight);
    }
    accum.AddPair(3.0, 1.0, 1.0, true);  // has no meaning here
    EXPECT_EQ(testsupport::Save(accum), testsupport::Save(FSContAccum()));
    EXPECT_TRUE(accum.IsAllMissing());
    EXPECT_TRUE(accum.IsConstant());
}

TEST(FSContAccum, OneValueWithWeightThree) {
    const FSContAccum accum = Of({{7.5, 0, 3}});
    EXPECT_EQ(ShownNumber(accum, "Mean = "), 7.5);
    EXPECT_EQ(ShownNumber(accum, "Second moment = "), 0.0);
    EXPECT_EQ(ShownNumber(accum, "Variance = "), 0.0);
}

TEST(FSContAccum, AVarianceStaysWhereOneValueGivesNone) {
    // Offset 49 of the saved form holds the variance.
    std::stringstream stream;
    Of({{7.5, 0, 1}}).SaveBinary(stream);
    std::string bytes = stream.str();
    const double variance = 2.25;
    std::memcpy(bytes.data() + 49, &variance, sizeof variance);
    std::istringstream restored(bytes);
    FSContAccum accum;
    accum.RestoreBinary(restored);
    accum.FinishData();
    EXPECT_EQ(ShownNumber(accum, "Variance = "), variance);
    FSSettings settings;
    settings.SetDeleteSmallVar(false);
    settings.SetMinStdDev(1.6);  // above sqrt(2.25)
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{7}));
    settings.SetMinStdDev(1.4);
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{}));
}

TEST(FSContAccum, TheLargestDoubleStandsForAMomentBeyondIt) {
    const FSContAccum accum = Of({{1e300, 0, 1}, {-1e300, 0, 1}});
    EXPECT_EQ(Shown(accum, "Second moment = "),
              "1.7976931348623157e+308 (the largest double; the number is beyond it)");
    FSSettings settings;
    settings.SetDeleteSmallVar(false);
    settings.SetMinStdDev(1.4e300);  // below sqrt(2) * 1e300
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{}));
    settings.SetMinStdDev(1.5e300);
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{7}));
}

TEST(FSContAccum, WeightedMomentsByHand) {
    // 1 with weight 1, 5 with weight 3: mean 4, moment 9 + 3 = 12, variance 12 / 3.
    const FSContAccum accum = Of({{1, 0, 1}, {5, 0, 3}});
    EXPECT_EQ(ShownNumber(accum, "Mean = "), 4.0);
    EXPECT_DOUBLE_EQ(ShownNumber(accum, "Second moment = "), 12.0);
    EXPECT_DOUBLE_EQ(ShownNumber(accum, "Variance = "), 4.0);
}

TEST(FSContAccum, FractionalWeightOfOneAndAHalfIsEnoughForAVariance) {
    // 1 with weight 1, 4 with weight 1/2: mean 2, moment 1 + 2 = 3, divisor 1/2.
    const FSContAccum accum = Of({{1, 0, 1}, {4, 0, 0.5}});
    EXPECT_EQ(ShownNumber(accum, "Mean = "), 2.0);
    EXPECT_DOUBLE_EQ(ShownNumber(accum, "Variance = "), 6.0);
}

TEST(FSContAccum, WeightOfOneLeavesTheVariance) {
    const FSContAccum accum = Of({{1, 0, 0.5}, {4, 0, 0.5}});
    EXPECT_GT(ShownNumber(accum, "Second moment = "), 0.0);
    EXPECT_EQ(ShownNumber(accum, "Variance = "), 0.0);
}

TEST(FSContAccum, UntrackedValueLeavesTheMoments) {
    FSContAccum accum;
    accum.AddValue(3.0, 2.0, false);
    EXPECT_EQ(ShownNumber(accum, "Mean = "), 0.0);
    EXPECT_EQ(ShownNumber(accum, "Number of processed cases = "), 2.0);
    EXPECT_EQ(ShownNumber(accum, "The first non-missing value = "), 3.0);
}

TEST(FSContAccum, ConstancyIsExactEquality) {
    EXPECT_TRUE(Of({{0.1, 0, 1}, {kMissing, 0, 1}, {0.1, 0, 1}}).IsConstant());
    EXPECT_FALSE(Of({{0.1, 0, 1}, {std::nextafter(0.1, 1.0), 0, 1}}).IsConstant());
    EXPECT_FALSE(Of({{0.1, 0, 1}, {0.2, 0, 1}, {0.1, 0, 1}}).IsConstant());
}

TEST(FSContAccum, MomentsAgreeWithTwoPassesOfRandomData) {
    for (const double mean : {5.0, -1e3}) {
        const std::vector<Case> cases = RandomCases(mean, 2.0);
        const accumcases::TwoPass plain(cases);
        const FSContAccum accum = Of(cases);
        const auto moment = static_cast<double>(plain.fPredMoment);
        EXPECT_NEAR(ShownNumber(accum, "Mean = "), static_cast<double>(plain.fPredMean),
                    1e-12 * std::fabs(mean));
        EXPECT_NEAR(ShownNumber(accum, "Second moment = "), moment, 1e-12 * moment);
        const double variance = moment / static_cast<double>(plain.fWeight - 1.0L);
        EXPECT_NEAR(ShownNumber(accum, "Variance = "), variance, 1e-12 * variance);
    }
}

TEST(FSContAccum, StdDevBoundOfZeroNeverFires) {
    FSSettings settings;
    settings.SetDeleteSmallVar(false);
    EXPECT_EQ(AllReasons(Of({{3, 0, 1}, {3, 0, 1}}), settings), (std::vector<std::int32_t>{}));
}

TEST(FSContAccum, ConstantNonZeroPredictorFiresReason8) {
    EXPECT_EQ(AllReasons(Of({{3, 0, 1}, {3, 0, 1}}), FSSettings()), (std::vector<std::int32_t>{8}));
}

TEST(FSContAccum, MeanOfZeroWithSpreadNeverFiresReason8) {
    FSSettings settings;
    settings.SetMinCoefVar(1e9);
    EXPECT_EQ(AllReasons(Of({{-1e-9, 0, 1}, {1e-9, 0, 1}}), settings),
              (std::vector<std::int32_t>{}));
}

TEST(FSContAccum, ReasonsComeInRuleOrder) {
    FSSettings settings;
    settings.SetMinStdDev(0.5);
    const FSContAccum accum = Of({{100.01, 0, 1}, {100, 0, 1}, {kMissing, 0, 10}});
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{3, 7, 8}));
}

TEST(FSContAccum, AllMissingFiresReason3AtMost) {
    const FSContAccum accum = Of({{kMissing, 0, 1}, {kMissing, 0, 2}});
    FSSettings settings;
    settings.SetMinStdDev(0.5);
    EXPECT_TRUE(accum.IsAllMissing());
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{3}));
    settings.SetMaxMissingPercent(100.0);
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{}));
}

TEST(FSContAccum, NothingSeenIsJudgedByItsSpreadOfZero) {
    EXPECT_EQ(AllReasons(FSContAccum(), FSSettings()), (std::vector<std::int32_t>{8}));
}

TEST(FSContAccum, ComputesNoCriterion) {
    const FSContAccum accum = Of({{1, 0, 1}, {2, 0, 1}});
    for (std::int32_t c = 0; c < 6; ++c) {
        EXPECT_TRUE(accumcases::Compute(accum, c).AllAre(accumcases::Criterion::kUntouched));
        EXPECT_FALSE(accumcases::ForDisplay(accum, c).fbReported);
    }
    EXPECT_FALSE(accum.IsCategorical());
}

TEST(FSContAccum, MergedPartitionsAreOnePass) {
    testsupport::ExpectSplitInvariant(
        RandomCases(5.0, 2.0), [] { return FSContAccum(); }, FeedValue);
}

TEST(FSContAccum, MergedPartitionsAreOnePassWithMeansNearABillion) {
    testsupport::ExpectSplitInvariant(
        RandomCases(1e9, 1e8), [] { return FSContAccum(); }, FeedValue);
    testsupport::ExpectSplitInvariant(
        RandomCases(1e9, 1.0), [] { return FSContAccum(); }, FeedValue,
        testsupport::ToleranceFor(1e9, 1.0));
}

struct MergeCase {
    std::string fName;
    std::vector<double> fvFirst;
    std::vector<double> fvSecond;
    double fFirstValue;
    bool fbConstant;
};

void PrintTo(const MergeCase& one, std::ostream* out) { *out << one.fName; }

class FSContAccumMerge : public testing::TestWithParam<MergeCase> {};

TEST_P(FSContAccumMerge, TracksTheFirstValue) {
    FSContAccum merged;
    for (const double value : GetParam().fvFirst) FeedValue(merged, {value, 0, 1});
    FSContAccum second;
    for (const double value : GetParam().fvSecond) FeedValue(second, {value, 0, 1});
    merged.MergeFrom(second);
    const std::string first = Shown(merged, "The first non-missing value = ");
    if (GetParam().fFirstValue == kMissing) {
        EXPECT_EQ(first, "<missing>");
    } else {
        EXPECT_EQ(std::stod(first), GetParam().fFirstValue);
    }
    EXPECT_EQ(merged.IsConstant(), GetParam().fbConstant);
}

INSTANTIATE_TEST_SUITE_P(
    Sides, FSContAccumMerge,
    testing::Values(MergeCase{"BothEmpty", {}, {}, kMissing, true},
                    MergeCase{"SecondEmpty", {4, 5}, {}, 4, false},
                    MergeCase{"SecondMissing", {4}, {kMissing}, 4, true},
                    MergeCase{"FirstEmptySecondVaries", {}, {4, 5}, 4, false},
                    MergeCase{"FirstMissing", {kMissing}, {5}, 5, true},
                    MergeCase{"SameConstant", {4, 4}, {4}, 4, true},
                    MergeCase{"DifferentConstants", {4, 4}, {5}, 4, false},
                    MergeCase{"SecondVariesFromTheSameStart", {4}, {4, 5}, 4, false}),
    testsupport::CaseName());

TEST(FSContAccum, MergeWithEmptyChangesNoBit) {
    FSContAccum accum;
    for (const Case& one : RandomCases(0.1, 0.7)) FeedValue(accum, one);
    FSContAccum onlyMissing;
    onlyMissing.AddMissing(2.0);
    FSContAccum merged = accum;
    merged.MergeFrom(FSContAccum());
    EXPECT_EQ(testsupport::Save(merged), testsupport::Save(accum));
    FSContAccum into;
    into.MergeFrom(accum);
    EXPECT_EQ(testsupport::Save(into), testsupport::Save(accum));
    into = onlyMissing;
    into.MergeFrom(accum);
    EXPECT_EQ(Shown(into, "Mean = "), Shown(accum, "Mean = "));
    EXPECT_EQ(Shown(into, "Second moment = "), Shown(accum, "Second moment = "));
}

TEST(FSContAccum, SavesFiftySevenBytes) { EXPECT_EQ(testsupport::Save(FSContAccum()).size(), 57u); }

TEST(FSContAccum, DisplayShowsEveryField) {
    EXPECT_EQ(accumcases::DisplayText(Of({{1, 0, 1}, {5, 0, 3}, {kMissing, 0, 1}})),
              "Start of FSContAccum display\n"
              "Number of processed cases = 5\n"
              "Number of missing cases = 1\n"
              "The first non-missing value = 1\n"
              "This is not constant\n"
              "Mean = 4\n"
              "Second moment = 12\n"
              "Variance = 4\n"
              "End of FSContAccum display\n");
    EXPECT_EQ(Shown(FSContAccum(), "The first non-missing value = "), "<missing>");
}

}  // namespace
