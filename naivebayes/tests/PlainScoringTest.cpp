#include "naivebayes/tests/PlainScoring.h"

#include <gtest/gtest.h>

#include <cmath>

#include "naivebayes/tests/SearchFixture.h"

namespace {

/// 10 records; weights 6 and 4 of the two targets.
SearchData TenRecords() {
    SearchData data;
    data.fPredictors = {{3, 2}, {2, 2}};
    data.fbWeighted = true;
    const auto add = [&data](std::int32_t target, double weight, std::int32_t first,
                             std::int32_t second) {
        data.fRows.push_back({target, weight, {first, second}});
    };
    add(0, 3.0, 0, 0);
    add(0, 1.0, 1, 0);
    add(0, 1.0, 1, 1);
    add(0, 1.0, 2, 1);
    add(1, 1.0, 0, 0);
    add(1, 1.0, 1, 1);
    add(1, 2.0, 2, 1);
    return data;
}

TEST(PlainScoringTest, MissingAndUnknownCodesAreNotValid) {
    EXPECT_FALSE(PlainScoring::IsValid(MCMV::gMissingValue));
    EXPECT_FALSE(PlainScoring::IsValid(-1.0));
    EXPECT_FALSE(PlainScoring::IsValid(-1.5));
    EXPECT_TRUE(PlainScoring::IsValid(0.0));
    EXPECT_TRUE(PlainScoring::IsValid(7.0));
}

TEST(PlainScoringTest, ACodeIsRoundedUpFromFiftyFiveHundredths) {
    EXPECT_EQ(PlainScoring::Category(2.0, 4), 2);
    EXPECT_EQ(PlainScoring::Category(2.54, 4), 2);
    EXPECT_EQ(PlainScoring::Category(2.56, 4), 3);
    EXPECT_EQ(PlainScoring::Category(1.9999999, 4), 2);
}

TEST(PlainScoringTest, ACodeThatRoundsBeyondTheCategoriesNamesTheLast) {
    EXPECT_EQ(PlainScoring::Category(3.9, 4), 3);
    TrainedTables trained(TenRecords());
    PlainScoring scoring(trained.fvInputs, trained.fOutput);
    scoring.StartRecord();
    EXPECT_EQ(scoring.LogSumWith(1, 1.9), scoring.LogSumWith(1, 1.0));
}

TEST(PlainScoringTest, AnEmptySubsetScoresTheSumOfThePriors) {
    TrainedTables trained(TenRecords());
    PlainScoring scoring(trained.fvInputs, trained.fOutput);
    scoring.StartRecord();
    EXPECT_DOUBLE_EQ(scoring.LogSum(),
                     std::log(trained.fOutput.GetPi(0) + trained.fOutput.GetPi(1)));
}

TEST(PlainScoringTest, ScoresAreLogsOfTheMixtureOfProducts) {
    TrainedTables trained(TenRecords());
    PlainScoring scoring(trained.fvInputs, trained.fOutput);
    scoring.StartRecord();
    scoring.Multiply(0, 1.0);
    // By hand: t = 0.1; Pi = 6.1 / 10.2, 4.1 / 10.2; P0[1] = 2.1 / 6.3, 1.1 / 4.3;
    // P1[0] = 4.1 / 6.2, 1.1 / 4.2.
    const double first = 6.1 / 10.2 * (2.1 / 6.3);
    const double second = 4.1 / 10.2 * (1.1 / 4.3);
    EXPECT_NEAR(scoring.LogSum(), std::log(first + second), 1e-14);
    EXPECT_NEAR(scoring.LogSumWith(1, 0.0), std::log(first * 4.1 / 6.2 + second * 1.1 / 4.2),
                1e-14);
    // The candidate did not join.
    EXPECT_NEAR(scoring.LogSum(), std::log(first + second), 1e-14);
}

TEST(PlainScoringTest, JoiningGivesTheBitsOfTrying) {
    TrainedTables trained(TenRecords());
    PlainScoring scoring(trained.fvInputs, trained.fOutput);
    scoring.StartRecord();
    scoring.Multiply(0, 2.0);
    const double tried = scoring.LogSumWith(1, 1.0);
    scoring.Multiply(1, 1.0);
    EXPECT_EQ(scoring.LogSum(), tried);
}

TEST(PlainScoringTest, AMissingCodeContributesNoFactor) {
    TrainedTables trained(TenRecords());
    PlainScoring scoring(trained.fvInputs, trained.fOutput);
    scoring.StartRecord();
    scoring.Multiply(1, 1.0);
    const double before = scoring.LogSum();
    EXPECT_EQ(scoring.LogSumWith(0, -1.0), before);
    EXPECT_EQ(scoring.LogSumWith(0, MCMV::gMissingValue), before);
    scoring.Multiply(0, -1.0);
    EXPECT_EQ(scoring.LogSum(), before);
}

TEST(PlainScoringTest, ANewRecordForgetsTheOneBefore) {
    TrainedTables trained(TenRecords());
    PlainScoring scoring(trained.fvInputs, trained.fOutput);
    scoring.StartRecord();
    scoring.Multiply(0, 0.0);
    const double once = scoring.LogSum();
    scoring.StartRecord();
    scoring.Multiply(0, 0.0);
    EXPECT_EQ(scoring.LogSum(), once);
}

TEST(PlainScoringTest, AProductThatUnderflowsScoresMinusInfinity) {
    SearchData data;
    data.fbWeighted = true;
    data.fPredictors.assign(20, {2, 2});
    data.fRows = {{0, 5e11, std::vector<std::int32_t>(20, 0)},
                  {1, 5e11, std::vector<std::int32_t>(20, 0)}};
    TrainedTables trained(data);
    PlainScoring scoring(trained.fvInputs, trained.fOutput);
    scoring.StartRecord();
    for (std::int32_t table = 0; table < 20; ++table) scoring.Multiply(table, 1.0);
    EXPECT_TRUE(std::isinf(scoring.LogSum()));
    EXPECT_LT(scoring.LogSum(), 0.0);
}

}  // namespace
