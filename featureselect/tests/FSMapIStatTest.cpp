#include "featureselect/FSMapIStat.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <sstream>
#include <vector>

#include "featureselect/FSMapICnt.h"
#include "featureselect/tests/AccumCases.h"
#include "tests/support/MemoryArchive.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/SplitInvariance.h"

namespace {

using accumcases::Case;

void Feed(FSMapIStat& map, const Case& one) {
    if (one.IsValid()) map.Add(static_cast<std::int32_t>(one.fTarget), one.fPredictor, one.fWeight);
}

std::vector<Case> RandomValues(double mean, double stdDev) {
    return accumcases::RandomCases(testsupport::RandomSeed(), 200, {false, mean, stdDev}, {});
}

TEST(FSMapIStat, FirstValueIsTheMean) {
    FSMapIStat map;
    EXPECT_FALSE(map.Add(2, 7.5, 3.0));
    ASSERT_EQ(map.Size(), 1);
    EXPECT_EQ(map.GetAt(0).fWeight, 3.0);
    EXPECT_EQ(map.GetAt(0).fMean, 7.5);
    EXPECT_EQ(map.GetAt(0).fSecondMoment, 0.0);
    EXPECT_EQ(map.GetAt(0).fVariance, 0.0);
}

TEST(FSMapIStat, IgnoresWeightsNotAboveZero) {
    FSMapIStat map;
    EXPECT_FALSE(map.Add(2, 7.5, 0.0));
    EXPECT_FALSE(map.Add(2, 7.5, -1.0));
    EXPECT_FALSE(map.Add(2, 7.5, std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(map.Size(), 0);
    map.Add(2, 7.5, 1.0);
    EXPECT_TRUE(map.Add(2, 9.0, 0.0));
    EXPECT_EQ(map.GetAt(0).fWeight, 1.0);
    EXPECT_EQ(map.GetAt(0).fMean, 7.5);
}

TEST(FSMapIStat, WeightedUpdateMovesMeanAndMoment) {
    // 1 with weight 1, 5 with weight 3: mean (1 + 15) / 4 = 4, moment 1 * 3^2 + 3 * 1^2 = 12.
    FSMapIStat map;
    map.Add(2, 1.0, 1.0);
    EXPECT_TRUE(map.Add(2, 5.0, 3.0));
    double weight = 0.0;
    double mean = 0.0;
    double moment = 0.0;
    double variance = -1.0;
    EXPECT_TRUE(map.Find(2, weight, mean, moment, variance));
    EXPECT_EQ(weight, 4.0);
    EXPECT_EQ(mean, 4.0);
    EXPECT_DOUBLE_EQ(moment, 12.0);
    EXPECT_EQ(variance, 0.0);
    map.FinishVariances();
    EXPECT_DOUBLE_EQ(map.GetAt(0).fVariance, 12.0 / 3.0);
    EXPECT_FALSE(map.Find(3, weight, mean, moment, variance));
    EXPECT_EQ(weight, 4.0);
}

TEST(FSMapIStat, VarianceIsZeroForAWeightOfOneOrLess) {
    FSMapIStat map;
    map.Add(1, 1.0, 0.5);
    map.Add(1, 3.0, 0.5);
    map.Add(2, 1.0, 0.25);
    map.FinishVariances();
    EXPECT_GT(map.GetAt(0).fSecondMoment, 0.0);
    EXPECT_EQ(map.GetAt(0).fVariance, 0.0);
    EXPECT_EQ(map.GetAt(1).fVariance, 0.0);
}

TEST(FSMapIStat, VarianceAgreesWithTwoPasses) {
    const std::vector<Case> cases = RandomValues(5.0, 2.0);
    FSMapIStat map;
    std::map<std::int32_t, std::vector<Case>> byCategory;
    for (const Case& one : cases) {
        Feed(map, one);
        if (one.IsValid()) byCategory[static_cast<std::int32_t>(one.fTarget)].push_back(one);
    }
    map.FinishVariances();
    ASSERT_EQ(map.Size(), static_cast<std::int32_t>(byCategory.size()));
    std::int32_t position = 0;
    for (const auto& [key, values] : byCategory) {
        const accumcases::TwoPass plain(values);
        const FSMapIStatEntry& entry = map.GetAt(position++);
        EXPECT_EQ(entry.fKey, key);
        EXPECT_NEAR(entry.fMean, static_cast<double>(plain.fPredMean), 1e-12);
        const auto moment = static_cast<double>(plain.fPredMoment);
        EXPECT_NEAR(entry.fSecondMoment, moment, 1e-12 * (1.0 + moment));
        if (plain.fWeight > 1.0L) {
            EXPECT_NEAR(entry.fVariance, moment / static_cast<double>(plain.fWeight - 1.0L),
                        1e-12 * (1.0 + entry.fVariance));
        }
    }
}

TEST(FSMapIStat, MergedPartitionsAreOnePass) {
    testsupport::ExpectSplitInvariant(
        RandomValues(5.0, 2.0), [] { return FSMapIStat(); }, Feed);
}

TEST(FSMapIStat, MergedPartitionsAreOnePassWithMeansNearABillion) {
    testsupport::ExpectSplitInvariant(
        RandomValues(1e9, 1e8), [] { return FSMapIStat(); }, Feed);
    testsupport::ExpectSplitInvariant(
        RandomValues(1e9, 1.0), [] { return FSMapIStat(); }, Feed,
        testsupport::ToleranceFor(1e9, 1.0));
}

TEST(FSMapIStat, EntryTakesThirtySixBytes) {
    FSMapIStat map;
    map.Add(1, 1.0, 0.5);
    EXPECT_EQ(testsupport::Save(map).size(), 9u + 36u);
}

TEST(FSMapIStat, RefusesTheTagOfACountMap) {
    FSMapIStat map;
    EXPECT_THROW(testsupport::RestoreInto(map, testsupport::Save(FSMapICnt())), std::runtime_error);
}

TEST(FSMapIStat, DisplayShowsFourValues) {
    FSMapIStat map;
    map.Add(-3, 1.0, 1.0);
    map.Add(-3, 5.0, 3.0);
    map.FinishVariances();
    std::ostringstream out;
    map.Display(out);
    EXPECT_EQ(out.str(),
              "Start of FSMapIStat display\n"
              "Map size = 1\n"
              "Key = -3, Value = (4, 4, 12, 4)\n"
              "End of FSMapIStat display\n");
}

}  // namespace
