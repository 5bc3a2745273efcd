#include "featureselect/FSCatAccum.h"

#include <gtest/gtest.h>

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
using accumcases::kNaN;
using accumcases::Shown;
using accumcases::ShownNumber;

const std::string kUnweighted = "Number of unweighted valid cases = ";

FSCatAccum Of(const std::vector<Case>& cases) {
    FSCatAccum accum;
    for (const Case& one : cases) FeedValue(accum, one);
    return accum;
}

TEST(FSCatAccum, WeightsNotAboveZeroReachNoCounter) {
    FSCatAccum accum;
    for (const double weight : {0.0, -1.0, kNaN}) {
        accum.AddValue(3.0, weight, true);
        accum.AddMissing(weight);
    }
    EXPECT_EQ(testsupport::Save(accum), testsupport::Save(FSCatAccum()));
    EXPECT_EQ(ShownNumber(accum, kUnweighted), 0.0);
}

TEST(FSCatAccum, CountsWeightsPerCategory) {
    const FSCatAccum accum = Of({{3.7, 0, 1.5}, {-2.2, 0, 1.0}, {3.0, 0, 2.0}, {kMissing, 0, 0.5}});
    EXPECT_EQ(ShownNumber(accum, "Number of variable categories = "), 2.0);
    EXPECT_EQ(ShownNumber(accum, "Number of processed cases = "), 5.0);
    EXPECT_EQ(ShownNumber(accum, kUnweighted), 3.0);
    EXPECT_EQ(ShownNumber(accum, "Number of missing cases = "), 0.5);
    EXPECT_EQ(ShownNumber(accum, "Key = -2, Value = "), 1.0);
    EXPECT_EQ(ShownNumber(accum, "Key = 3, Value = "), 3.5);
}

TEST(FSCatAccum, FirstCategoryIsThatOfTheFirstValue) {
    const FSCatAccum accum = Of({{kMissing, 0, 1}, {4, 0, 1}, {4, 0, 1}});
    EXPECT_EQ(ShownNumber(accum, "The first non-missing category = "), 4.0);
    EXPECT_TRUE(accum.IsConstant());
    EXPECT_FALSE(accum.IsAllMissing());
}

TEST(FSCatAccum, OnceNotConstantStaysSo) {
    const FSCatAccum accum = Of({{4, 0, 1}, {5, 0, 1}, {4, 0, 1}});
    EXPECT_FALSE(accum.IsConstant());
}

TEST(FSCatAccum, CategoryMinusTwoIsValid) {
    const FSCatAccum accum = Of({{-2, 0, 1}, {-2, 0, 1}});
    EXPECT_EQ(ShownNumber(accum, "The first non-missing category = "), -2.0);
    EXPECT_TRUE(accum.IsConstant());
    EXPECT_EQ(ShownNumber(accum, "Number of variable categories = "), 1.0);
}

TEST(FSCatAccum, UntrackedValueIsNotCountedByCategory) {
    FSCatAccum accum;
    accum.AddValue(4.0, 2.0, false);
    EXPECT_EQ(ShownNumber(accum, "Number of variable categories = "), 0.0);
    EXPECT_EQ(ShownNumber(accum, "Number of processed cases = "), 2.0);
    EXPECT_EQ(ShownNumber(accum, kUnweighted), 1.0);
    EXPECT_EQ(ShownNumber(accum, "The first non-missing category = "), 4.0);
}

TEST(FSCatAccum, NothingSeenIsAllMissingAndConstant) {
    const FSCatAccum accum;
    EXPECT_TRUE(accum.IsAllMissing());
    EXPECT_TRUE(accum.IsConstant());
}

TEST(FSCatAccum, EveryValueMissing) {
    const FSCatAccum accum = Of({{kMissing, 0, 1}, {kMissing, 0, 2}});
    EXPECT_TRUE(accum.IsAllMissing());
    EXPECT_TRUE(accum.IsConstant());
    EXPECT_EQ(ShownNumber(accum, "Number of variable categories = "), 0.0);
    FSSettings settings;
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{3}));
    settings.SetMaxMissingPercent(100.0);
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{}));
}

TEST(FSCatAccum, ShareOfMissingAtTheBoundPasses) {
    const FSCatAccum accum = Of({{1, 0, 5}, {2, 0, 5}, {kMissing, 0, 10}});
    FSSettings settings;
    settings.SetMaxMissingPercent(50.0);
    settings.SetDeleteManyCategs(false);
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{}));
    settings.SetMaxMissingPercent(49.9);
    EXPECT_EQ(AllReasons(accum, settings), (std::vector<std::int32_t>{3}));
}

TEST(FSCatAccum, TenDistinctValuesInTenRecordsFireReasons5And6) {
    std::vector<Case> cases;
    for (int i = 0; i < 10; ++i) cases.push_back({static_cast<double>(i), 0, 1});
    EXPECT_EQ(AllReasons(Of(cases), FSSettings()), (std::vector<std::int32_t>{5, 6}));
}

TEST(FSCatAccum, ReasonsComeInRuleOrder) {
    // 3 missing of 4; the one category has all valid weight, is one category of one record, and
    // holds one case.
    const FSCatAccum accum = Of({{1, 0, 1}, {kMissing, 0, 3}});
    EXPECT_EQ(AllReasons(accum, FSSettings()), (std::vector<std::int32_t>{3, 4, 5, 6}));
}

TEST(FSCatAccum, MissingValuesDoNotDiluteTheLargestCategory) {
    const FSCatAccum accum = Of({{1, 0, 1}, {1, 0, 48}, {1, 0, 48}, {2, 0, 3}, {kMissing, 0, 100}});
    EXPECT_EQ(AllReasons(accum, FSSettings()), (std::vector<std::int32_t>{4}));
}

TEST(FSCatAccum, CategoriesAreComparedWithUnweightedRecords) {
    // Two categories in two records: a share of 1, though the weight is 200.
    const FSCatAccum accum = Of({{1, 0, 100}, {2, 0, 100}});
    EXPECT_EQ(AllReasons(accum, FSSettings()), (std::vector<std::int32_t>{5}));
}

TEST(FSCatAccum, PairsAreIgnored) {
    FSCatAccum accum;
    accum.AddPair(1.0, 2.0, 1.0, true);
    EXPECT_EQ(testsupport::Save(accum), testsupport::Save(FSCatAccum()));
}

TEST(FSCatAccum, ComputesNoCriterion) {
    const FSCatAccum accum = Of({{1, 0, 1}, {2, 0, 1}});
    for (std::int32_t c = 0; c < 6; ++c) {
        EXPECT_TRUE(accumcases::Compute(accum, c).AllAre(accumcases::Criterion::kUntouched));
        EXPECT_FALSE(accumcases::ForDisplay(accum, c).fbReported);
    }
}

TEST(FSCatAccum, IsCategorical) { EXPECT_TRUE(FSCatAccum().IsCategorical()); }

TEST(FSCatAccum, MergedPartitionsAreOnePass) {
    const std::vector<Case> cases = accumcases::RandomCases(testsupport::RandomSeed(), 100, {}, {});
    testsupport::ExpectSplitInvariant(
        cases, [] { return FSCatAccum(); }, FeedValue);
}

TEST(FSCatAccum, MergeAddsUnweightedRecordsUnlessASaveLostThem) {
    const FSCatAccum first = Of({{1, 0, 1}, {2, 0, 1}});
    const FSCatAccum second = Of({{1, 0, 1}, {kMissing, 0, 1}, {3, 0, 1}, {1, 0, 2}});
    FSCatAccum merged = first;
    merged.MergeFrom(second);
    EXPECT_EQ(ShownNumber(merged, kUnweighted), 5.0);
    const FSCatAccum restored = testsupport::Restored(second, [] { return FSCatAccum(); });
    EXPECT_EQ(ShownNumber(restored, kUnweighted), 0.0);
    merged = first;
    merged.MergeFrom(restored);
    EXPECT_EQ(ShownNumber(merged, kUnweighted), 2.0);
}

TEST(FSCatAccum, MergeLeavesUnweightedRecordsAtTheLargestNumber) {
    FSCatAccum merged = Of({{1, 0, 1}});
    for (int doubling = 0; doubling < 32; ++doubling) {
        const FSCatAccum same = merged;
        merged.MergeFrom(same);
    }
    EXPECT_EQ(ShownNumber(merged, kUnweighted), 2147483647.0);
}

struct MergeCase {
    std::string fName;
    std::vector<double> fvFirst;
    std::vector<double> fvSecond;
    std::int32_t fFirstCategory;
    bool fbConstant;
};

void PrintTo(const MergeCase& one, std::ostream* out) { *out << one.fName; }

class FSCatAccumMerge : public testing::TestWithParam<MergeCase> {};

TEST_P(FSCatAccumMerge, TracksTheFirstCategory) {
    FSCatAccum merged;
    for (const double value : GetParam().fvFirst) FeedValue(merged, {value, 0, 1});
    FSCatAccum second;
    for (const double value : GetParam().fvSecond) FeedValue(second, {value, 0, 1});
    merged.MergeFrom(second);
    EXPECT_EQ(ShownNumber(merged, "The first non-missing category = "), GetParam().fFirstCategory);
    EXPECT_EQ(merged.IsConstant(), GetParam().fbConstant);
}

INSTANTIATE_TEST_SUITE_P(
    Sides, FSCatAccumMerge,
    testing::Values(MergeCase{"BothEmpty", {}, {}, -1, true},
                    MergeCase{"SecondEmpty", {4, 5}, {}, 4, false},
                    MergeCase{"SecondMissing", {4}, {kMissing}, 4, true},
                    MergeCase{"FirstEmptySecondVaries", {}, {4, 5}, 4, false},
                    MergeCase{"FirstMissing", {kMissing}, {5}, 5, true},
                    MergeCase{"SameConstant", {4, 4}, {4}, 4, true},
                    MergeCase{"DifferentConstants", {4, 4}, {5}, 4, false},
                    MergeCase{"SecondVariesFromTheSameStart", {4}, {4, 5}, 4, false}),
    testsupport::CaseName());

TEST(FSCatAccum, DisplayShowsEveryField) {
    FSCatAccum accum;
    accum.AddValue(3.0, 1.5, true);
    accum.AddMissing(1.0);
    EXPECT_EQ(accumcases::DisplayText(accum),
              "Start of FSCatAccum display\n"
              "Number of variable categories = 1\n"
              "Number of processed cases = 2.5\n"
              "Number of unweighted valid cases = 1\n"
              "Number of missing cases = 1\n"
              "The first non-missing category = 3\n"
              "This is constant\n"
              "Case counts of predictor categories:\n"
              "Start of FSMapICnt display\n"
              "Map size = 1\n"
              "Key = 3, Value = 1.5\n"
              "End of FSMapICnt display\n"
              "End of FSCatAccum display\n");
}

}  // namespace
