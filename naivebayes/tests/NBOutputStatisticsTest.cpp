#include "naivebayes/NBOutputStatistics.h"

#include <gtest/gtest.h>

#include <random>

#include "naivebayes/tests/SavedForms.h"

namespace {

TEST(NBOutputStatistics, ADefaultOneHasNoCategories) {
    const NBOutputStatistics statistics;
    EXPECT_EQ(statistics.GetNumCategories(), 0);
    EXPECT_TRUE(statistics.GetMatrix().empty());
    EXPECT_TRUE(statistics.GetRow(0).empty());
    EXPECT_EQ(statistics.GetCell(0, 0), -1.0);
}

TEST(NBOutputStatistics, ACellOutOfRangeIsMinusOne) {
    NBOutputStatistics statistics(2);
    EXPECT_EQ(statistics.GetCell(2, 0), -1.0);
    EXPECT_EQ(statistics.GetCell(0, 2), -1.0);
    EXPECT_EQ(statistics.GetCell(-1, 0), -1.0);
    EXPECT_EQ(statistics.GetCell(0, -1), -1.0);
    EXPECT_EQ(statistics.GetCell(1, 1), 0.0);
}

TEST(NBOutputStatistics, ARowOutOfRangeIsZero) {
    NBOutputStatistics statistics(2);
    statistics.Add(1, 0, 2.0);
    EXPECT_EQ(statistics.GetRow(1), (std::vector<double>{2.0, 0.0}));
    EXPECT_EQ(statistics.GetRow(2), (std::vector<double>{0.0, 0.0}));
    EXPECT_EQ(statistics.GetRow(-1), (std::vector<double>{0.0, 0.0}));
}

TEST(NBOutputStatistics, RowsAreObservedAndColumnsPredicted) {
    NBOutputStatistics statistics(2);
    statistics.Add(0, 1, 1.5);
    statistics.Add(1, 1, 2.0);
    EXPECT_EQ(statistics.GetMatrix(), (std::vector<std::vector<double>>{{0.0, 1.5}, {0.0, 2.0}}));
    EXPECT_EQ(statistics.GetTotalWeight(), 3.5);
    EXPECT_DOUBLE_EQ(statistics.GetErrorPercent(), 150.0 / 3.5);
}

TEST(NBOutputStatistics, OneCategoryIsNeverWrong) {
    NBOutputStatistics statistics(1);
    for (int i = 0; i < 10; ++i) statistics.Add(0, 0, 1.0);
    EXPECT_EQ(statistics.GetErrorPercent(), 0.0);
    EXPECT_EQ(statistics.GetCell(0, 0), 10.0);
}

TEST(NBOutputStatistics, TheRunningPercentageIsTheWeightedOneWithinRounding) {
    const unsigned seed = 20260711;
    RecordProperty("seed", static_cast<int>(seed));
    std::mt19937 random(seed);
    NBOutputStatistics statistics(3);
    double total = 0.0;
    double wrong = 0.0;
    for (int i = 0; i < 2000; ++i) {
        const auto observed = static_cast<std::int32_t>(random() % 3);
        const auto predicted = static_cast<std::int32_t>(random() % 3);
        const double weight = 0.25 * static_cast<double>(1 + random() % 16);
        statistics.Add(observed, predicted, weight);
        total += weight;
        if (observed != predicted) wrong += weight;
    }
    // 2000 steps of at most three roundings each.
    EXPECT_NEAR(statistics.GetErrorPercent(), 100.0 * wrong / total, 100.0 * 6000 * 0x1p-53);
    EXPECT_EQ(statistics.GetTotalWeight(), total);
}

TEST(NBOutputStatistics, CellsCanBeAddedWithoutThePercentage) {
    NBOutputStatistics statistics(2);
    statistics.AddCell(0, 1, 3.0);
    EXPECT_EQ(statistics.GetErrorPercent(), 0.0);
    statistics.SetErrorPercent(100.0);
    EXPECT_EQ(statistics.GetErrorPercent(), 100.0);
    EXPECT_EQ(statistics.GetTotalWeight(), 3.0);
}

TEST(NBOutputStatistics, ResetEmptiesTheTable) {
    NBOutputStatistics statistics(2);
    statistics.Add(0, 1, 3.0);
    statistics.Reset(3);
    EXPECT_EQ(statistics.GetTotalWeight(), 0.0);
    EXPECT_EQ(statistics.GetErrorPercent(), 0.0);
    EXPECT_EQ(statistics.GetRow(0), std::vector<double>(3, 0.0));
    statistics.Reset(-1);
    EXPECT_TRUE(statistics.GetMatrix().empty());
}

TEST(NBOutputStatistics, FurtherCategoriesLeaveCountsAtTheirPlaces) {
    NBOutputStatistics statistics(2);
    statistics.Add(0, 1, 1.0);
    statistics.Add(1, 0, 2.0);
    statistics.Add(1, 1, 3.0);
    statistics.Extend(3);
    EXPECT_EQ(statistics.GetMatrix(),
              (std::vector<std::vector<double>>{{0, 1, 0}, {2, 3, 0}, {0, 0, 0}}));
    EXPECT_EQ(statistics.GetTotalWeight(), 6.0);
    EXPECT_EQ(statistics.GetErrorPercent(), 50.0);
    statistics.Extend(2);
    EXPECT_EQ(statistics.GetNumCategories(), 3) << "it never shrinks";
    NBOutputStatistics empty;
    empty.Extend(2);
    EXPECT_EQ(empty.GetRow(1), std::vector<double>(2, 0.0));
}

TEST(NBOutputStatistics, DisplayListsTheMatrix) {
    NBOutputStatistics statistics(2);
    statistics.Add(0, 1, 1.0);
    statistics.Add(1, 1, 3.0);
    EXPECT_EQ(savedforms::Displayed(statistics),
              "Start of NBOutputStatistics display\n"
              "Number of categories of the categorical variable = 2\n"
              "Total weight = 4\n"
              "Overall error (percent of incorrect predictions) = 25\n"
              "MisClassification Matrix (4 elements): \n     0     1     0     3\n"
              "End of NBOutputStatistics display\n");
}

}  // namespace
