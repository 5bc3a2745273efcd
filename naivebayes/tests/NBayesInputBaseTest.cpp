#include "naivebayes/NBayesInputBase.h"

#include <gtest/gtest.h>

#include "naivebayes/tests/SavedForms.h"

namespace {

using Matrix = NBayesInputBase::Matrix;

/// Two filled rows of three, three target categories of which the last is empty. N = 10.
NBayesInputBase SmallTable() {
    NBayesInputBase table(3, 3);
    table.AddCount(0, 0, 2.0);
    table.AddCount(0, 1, 1.5);
    table.AddCount(2, 0, 4.0);
    table.AddCount(2, 1, 2.5);
    return table;
}

TEST(NBayesInputBase, ATableThatWasNeverSetUpHasNoShape) {
    const NBayesInputBase table;
    EXPECT_EQ(table.GetNumCategories(), -1);
    EXPECT_EQ(table.GetNumTargetCategories(), -1);
    EXPECT_EQ(table.GetNumNonEmpty(), 0);
    EXPECT_TRUE(table.GetCounts().empty());
}

TEST(NBayesInputBase, ANewTableIsFilledWithZeros) {
    const NBayesInputBase table(2, 3);
    EXPECT_EQ(table.GetCounts(), Matrix(2, {0, 0, 0}));
    EXPECT_EQ(table.GetProbabilities(), Matrix(2, {0, 0, 0}));
    EXPECT_EQ(table.GetNumNonEmpty(), 0);
}

TEST(NBayesInputBase, AddCountGivesTheCellsNewValue) {
    NBayesInputBase table(2, 2);
    EXPECT_EQ(table.AddCount(1, 0, 0.5), 0.5);
    EXPECT_EQ(table.AddCount(1, 0, 2.0), 2.5);
    EXPECT_EQ(table.GetCounts(), (Matrix{{0, 0}, {2.5, 0}}));
}

TEST(NBayesInputBase, TheDivisorTakesTheRowsThatHoldWeightOnly) {
    NBayesInputBase table = SmallTable();
    EXPECT_EQ(table.ComputeProbabilities(0.1), 2);
    EXPECT_EQ(table.GetNumNonEmpty(), 2);
    // (count + 0.1) / (column sum + 2 * 0.1): 2 rows, not 3.
    EXPECT_DOUBLE_EQ(table.GetProbability(0, 0), 2.1 / 6.2);
    EXPECT_DOUBLE_EQ(table.GetProbability(0, 1), 1.6 / 4.2);
    EXPECT_DOUBLE_EQ(table.GetProbability(2, 0), 4.1 / 6.2);
    EXPECT_DOUBLE_EQ(table.GetProbability(2, 1), 2.6 / 4.2);
    EXPECT_DOUBLE_EQ(table.GetProbability(1, 0), 0.1 / 6.2);
}

TEST(NBayesInputBase, AColumnWithEmptyRowsSumsToSlightlyAboveOne) {
    NBayesInputBase table = SmallTable();
    table.ComputeProbabilities(0.1);
    const Matrix& p = table.GetProbabilities();
    EXPECT_DOUBLE_EQ(p[0][0] + p[1][0] + p[2][0], 1.0 + 0.1 / 6.2);
}

TEST(NBayesInputBase, ATargetCategoryWithoutRecordsIsEvenOverTheFilledRowsInEveryRow) {
    NBayesInputBase table = SmallTable();
    table.ComputeProbabilities(0.1);
    for (std::int32_t m = 0; m < 3; ++m) EXPECT_DOUBLE_EQ(table.GetProbability(m, 2), 0.5) << m;
}

TEST(NBayesInputBase, WithoutAPositiveCellEveryProbabilityIsTheThreshold) {
    NBayesInputBase table(4, 2);
    EXPECT_EQ(table.ComputeProbabilities(0.125), 0);
    EXPECT_EQ(table.GetProbabilities(), Matrix(4, {0.125, 0.125}));
}

TEST(NBayesInputBase, OneFilledRowOfOneRecord) {
    NBayesInputBase table(2, 1);
    table.AddCount(0, 0, 1.0);
    EXPECT_EQ(table.ComputeProbabilities(1.0), 1);
    EXPECT_EQ(table.GetProbability(0, 0), 1.0);
    EXPECT_EQ(table.GetProbability(1, 0), 0.5);
}

TEST(NBayesInputBase, ClearCountsKeepsTheShape) {
    NBayesInputBase table = SmallTable();
    table.ComputeProbabilities(0.1);
    table.ClearCounts();
    EXPECT_EQ(table.GetNumCategories(), 3);
    EXPECT_EQ(table.GetNumTargetCategories(), 3);
    EXPECT_EQ(table.GetNumNonEmpty(), 0);
    EXPECT_EQ(table.GetCounts(), Matrix(3, {0, 0, 0}));
    EXPECT_EQ(table.GetProbabilities(), Matrix(3, {0, 0, 0}));
}

TEST(NBayesInputBase, SetCountsTakesTheLongestRowAndFillsTheOthersUp) {
    NBayesInputBase table;
    EXPECT_EQ(table.SetCounts(0.5, {{1}, {}, {2, 3}}), 2);
    EXPECT_EQ(table.GetNumCategories(), 3);
    EXPECT_EQ(table.GetNumTargetCategories(), 2);
    EXPECT_EQ(table.GetCounts(), (Matrix{{1, 0}, {0, 0}, {2, 3}}));
    EXPECT_DOUBLE_EQ(table.GetProbability(0, 1), 0.5 / 4.0);
}

TEST(NBayesInputBase, ACopyIsDeep) {
    NBayesInputBase table = SmallTable();
    const NBayesInputBase copy = table;
    table.AddCount(0, 0, 1.0);
    EXPECT_EQ(copy.GetCounts()[0][0], 2.0);
}

TEST(NBayesInputBase, DisplayListsTheRows) {
    NBayesInputBase table(2, 1);
    table.AddCount(0, 0, 1.0);
    table.ComputeProbabilities(1.0);
    EXPECT_EQ(savedforms::Displayed(table),
              "Begin NBayesInputBase object. \n"
              "Number of categories: 2, non-empty categories: 1, target categories: 1\n"
              "Category 0: \n"
              "Counts   (1 element): \n     1\n"
              "Probability_{mk}^j (1 element): \n     1\n"
              "Category 1: \n"
              "Counts   (1 element): \n     0\n"
              "Probability_{mk}^j (1 element): \n   0.5\n"
              "End of NBayesInputBase display.\n");
}

}  // namespace
