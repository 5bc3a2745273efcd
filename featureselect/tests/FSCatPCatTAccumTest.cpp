#include "featureselect/FSCatPCatTAccum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <utility>

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

FSCatPCatTAccum Of(const std::vector<Case>& cases) {
    FSCatPCatTAccum accum;
    for (const Case& one : cases) FeedPair(accum, one);
    return accum;
}

// A crosstab: rows are predictor categories 0, 1, ..., columns target categories.
FSCatPCatTAccum Table(const std::vector<std::vector<double>>& rows) {
    FSCatPCatTAccum accum;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t j = 0; j < rows[i].size(); ++j) {
            accum.AddPair(static_cast<double>(i), static_cast<double>(j), rows[i][j], true);
        }
    }
    return accum;
}

// Statistics of a crosstab from the definitions, over a full table of cells.
struct PlainTable {
    std::map<std::int32_t, double> fRows;
    std::map<std::int32_t, double> fColumns;
    std::map<std::pair<std::int32_t, std::int32_t>, double> fCells;
    double fTotal = 0;

    explicit PlainTable(const std::vector<Case>& cases) {
        for (const Case& one : cases) {
            if (!one.IsValid()) continue;
            const auto row = static_cast<std::int32_t>(one.fPredictor);
            const auto column = static_cast<std::int32_t>(one.fTarget);
            fRows[row] += one.fWeight;
            fColumns[column] += one.fWeight;
            fCells[{row, column}] += one.fWeight;
            fTotal += one.fWeight;
        }
    }

    double Cell(std::int32_t row, std::int32_t column) const {
        const auto found = fCells.find({row, column});
        return found == fCells.end() ? 0.0 : found->second;
    }

    double Pearson() const {
        double sum = 0.0;
        for (const auto& [row, rowWeight] : fRows) {
            for (const auto& [column, columnWeight] : fColumns) {
                const double expected = rowWeight * columnWeight / fTotal;
                sum += std::pow(Cell(row, column) - expected, 2.0) / expected;
            }
        }
        return sum;
    }

    double LikelihoodRatio() const {
        double sum = 0.0;
        for (const auto& [key, weight] : fCells) {
            sum += 2.0 * weight *
                   (std::log(weight) + std::log(fTotal) - std::log(fRows.at(key.first)) -
                    std::log(fColumns.at(key.second)));
        }
        return sum;
    }

    double Lambda() const {
        double correct = 0.0;
        for (const auto& [row, rowWeight] : fRows) {
            double largest = 0.0;
            for (const auto& [column, columnWeight] : fColumns) {
                largest = std::max(largest, Cell(row, column));
            }
            correct += largest;
        }
        double mode = 0.0;
        for (const auto& [column, weight] : fColumns) mode = std::max(mode, weight);
        return (correct - mode) / (fTotal - mode);
    }

    double Df() const { return static_cast<double>((fRows.size() - 1) * (fColumns.size() - 1)); }
};

TEST(FSCatPCatTAccum, WeightsNotAboveZeroReachNoCounter) {
    FSCatPCatTAccum accum;
    for (const double weight : {0.0, -1.0, accumcases::kNaN}) {
        accum.AddPair(3.0, 1.0, weight, true);
        accum.AddMissing(weight);
    }
    EXPECT_EQ(testsupport::Save(accum), testsupport::Save(FSCatPCatTAccum()));
    EXPECT_EQ(ShownNumber(accum, "Number of unweighted valid cases = "), 0.0);
}

TEST(FSCatPCatTAccum, ValuesWithoutTargetAreIgnored) {
    FSCatPCatTAccum accum;
    accum.AddValue(3.0, 1.0, true);
    EXPECT_EQ(testsupport::Save(accum), testsupport::Save(FSCatPCatTAccum()));
}

TEST(FSCatPCatTAccum, PearsonByHand) {
    // Rows 30, 70, columns 40, 60: expected 12, 18, 28, 42, every deviation 2.
    // X2 = 4 * (1/12 + 1/18 + 1/28 + 1/42) = 4 * 50/252 = 200/252.
    const Criterion result = Compute(Table({{10, 20}, {30, 40}}), 0);
    EXPECT_NEAR(result.fTieBreak1, 200.0 / 252.0, 1e-15);
    EXPECT_EQ(result.fTieBreak2, 1.0);
    // With one degree of freedom the upper tail is erfc(sqrt(X2 / 2)).
    EXPECT_NEAR(result.fValue, std::erfc(std::sqrt(100.0 / 252.0)), 1e-15);
    EXPECT_EQ(result.fExtra1, kMissing);
    EXPECT_EQ(result.fExtra2, kMissing);
}

TEST(FSCatPCatTAccum, LikelihoodRatioByHand) {
    const double g2 = 2.0 * (10 * std::log(10.0 / 12) + 20 * std::log(20.0 / 18) +
                             30 * std::log(30.0 / 28) + 40 * std::log(40.0 / 42));
    const Criterion result = Compute(Table({{10, 20}, {30, 40}}), 1);
    EXPECT_NEAR(result.fTieBreak1, g2, 1e-13);
    EXPECT_EQ(result.fTieBreak2, 1.0);
    EXPECT_NEAR(result.fValue, std::erfc(std::sqrt(g2 / 2.0)), 1e-13);
}

TEST(FSCatPCatTAccum, TwoDegreesOfFreedomHaveAnExponentialTail) {
    // Columns 10, 20, 30, rows 20, 40: expected 10/3, 20/3, 10, 20/3, 40/3, 20.
    // Row 0 is 5, 5, 10 and row 1 is 5, 15, 20:
    // X2 = (5/3)^2 * (3/10 + 3/20) + (5/3)^2 * (3/20 + 3/40) = 25/9 * 27/40 = 1.875.
    const Criterion result = Compute(Table({{5, 5, 10}, {5, 15, 20}}), 0);
    EXPECT_NEAR(result.fTieBreak1, 1.875, 1e-14);
    EXPECT_EQ(result.fTieBreak2, 2.0);
    EXPECT_NEAR(result.fValue, std::exp(-1.875 / 2.0), 1e-14);
}

TEST(FSCatPCatTAccum, ATestTellsItsKindItsStatisticAndALogarithm) {
    const FSCatPCatTAccum accum = Table({{5, 5, 10}, {5, 15, 20}});
    for (const std::int32_t criterion : {0, 1}) {
        const FSTestResult result = accum.Test(criterion);
        EXPECT_EQ(result.fTest, FSTestResult::kChiSquare);
        EXPECT_EQ(result.fStatistic, result.fTieBreak1);
        EXPECT_EQ(result.fDf1, 2.0);
        EXPECT_EQ(result.fDf2, kMissing);
        // Of two degrees of freedom.
        EXPECT_NEAR(result.fLogP, -result.fStatistic / 2.0, 1e-15);
    }
    for (const std::int32_t criterion : {2, 3}) {
        EXPECT_EQ(accum.Test(criterion).fTest, FSTestResult::kNone);
        EXPECT_EQ(accum.Test(criterion).fLogP, kMissing);
    }
}

TEST(FSCatPCatTAccum, TailsFarBelowTheReachOfADoubleHaveALogarithm) {
    // Chi-square 4e5 with two degrees of freedom.
    const FSTestResult result = Table({{2e5, 0}, {0, 1e5}, {0, 1e5}}).Test(0);
    EXPECT_EQ(result.fStatistic, 4e5);
    EXPECT_EQ(result.fValue, 0.0);
    EXPECT_NEAR(result.fLogP, -2e5, 1e-9);
}

TEST(FSCatPCatTAccum, CramerByHand) {
    // m = N * (min(R, C) - 1) = 60 * 1 for the table above.
    const Criterion result = Compute(Table({{5, 5, 10}, {5, 15, 20}}), 2);
    EXPECT_NEAR(result.fValue, std::sqrt(1.875 / 60.0), 1e-15);
    EXPECT_NEAR(result.fTieBreak1, 1.875, 1e-14);
    EXPECT_EQ(result.fTieBreak2, kMissing);
}

TEST(FSCatPCatTAccum, LambdaByHand) {
    // L = 30 + 55 = 85, M = 65, D = 100 - 65 = 35.
    const Criterion result = Compute(Table({{30, 10}, {5, 55}}), 3);
    EXPECT_DOUBLE_EQ(result.fValue, 20.0 / 35.0);
    EXPECT_EQ(result.fTieBreak1, 2.0);
    EXPECT_EQ(result.fTieBreak2, kMissing);
}

TEST(FSCatPCatTAccum, LambdaPredictsTheTargetFromThePredictor) {
    // The other way round it would be (30 + 55 - 60) / 40.
    const Criterion result = Compute(Table({{30, 10}, {5, 55}, {0, 0}}), 3);
    EXPECT_DOUBLE_EQ(result.fValue, 20.0 / 35.0);
}

TEST(FSCatPCatTAccum, OnePredictorCategory) {
    const FSCatPCatTAccum accum = Table({{30, 10}});
    for (const std::int32_t criterion : {0, 1}) {
        const Criterion result = Compute(accum, criterion);
        EXPECT_EQ(result.fValue, 1.0);
        EXPECT_EQ(result.fTieBreak1, 0.0);
        EXPECT_EQ(result.fTieBreak2, 0.0);
        EXPECT_EQ(accum.Test(criterion).fLogP, 0.0);
    }
    EXPECT_TRUE(Compute(accum, 2).AllAre(kMissing));
    EXPECT_EQ(Compute(accum, 3).fValue, 0.0);
    EXPECT_EQ(Compute(accum, 3).fTieBreak1, 1.0);
}

TEST(FSCatPCatTAccum, AllCasesInOneTargetCategory) {
    const FSCatPCatTAccum accum = Table({{30}, {10}});
    EXPECT_EQ(Compute(accum, 0).fValue, 1.0);
    EXPECT_TRUE(Compute(accum, 2).AllAre(kMissing));
    EXPECT_EQ(Compute(accum, 3).fValue, kMissing);
    EXPECT_EQ(Compute(accum, 3).fTieBreak1, 2.0);
}

TEST(FSCatPCatTAccum, NothingSeenHasNoAssociation) {
    const FSCatPCatTAccum accum;
    EXPECT_EQ(Compute(accum, 0).fValue, 1.0);
    EXPECT_EQ(Compute(accum, 3).fValue, kMissing);
    EXPECT_EQ(Compute(accum, 3).fTieBreak1, 0.0);
}

TEST(FSCatPCatTAccum, InfiniteWeightsLeaveNoResult) {
    const FSCatPCatTAccum accum = Table({{30, 10}, {5, std::numeric_limits<double>::infinity()}});
    for (const std::int32_t criterion : {0, 1, 2}) {
        EXPECT_TRUE(Compute(accum, criterion).AllAre(kMissing)) << criterion;
    }
    EXPECT_EQ(Compute(accum, 3).fValue, kMissing);
}

TEST(FSCatPCatTAccum, AbsentPairCountsInPearsonAndIsSkippedInTheLikelihoodRatio) {
    // [[10, 0], [5, 5]]: expected 7.5, 2.5, 7.5, 2.5; the empty cell contributes its 2.5.
    // X2 = 6.25/7.5 + 2.5 + 6.25/7.5 + 2.5 = 20/3.
    const FSCatPCatTAccum accum = Table({{10, 0}, {5, 5}});
    EXPECT_NEAR(Compute(accum, 0).fTieBreak1, 20.0 / 3.0, 1e-14);
    const double g2 = 2.0 * (10 * std::log(10 / 7.5) + 5 * std::log(5 / 7.5) + 5 * std::log(2.0));
    EXPECT_NEAR(Compute(accum, 1).fTieBreak1, g2, 1e-13);
}

TEST(FSCatPCatTAccum, CriteriaAgreeWithAFullTableOfRandomData) {
    const std::vector<Case> cases = accumcases::RandomCases(testsupport::RandomSeed(), 300, {}, {});
    const FSCatPCatTAccum accum = Of(cases);
    const PlainTable plain(cases);
    const double x2 = plain.Pearson();
    const double g2 = plain.LikelihoodRatio();
    EXPECT_NEAR(Compute(accum, 0).fTieBreak1, x2, 1e-12 * x2);
    EXPECT_EQ(Compute(accum, 0).fTieBreak2, plain.Df());
    const double p = ChiSquareTail(x2, plain.Df()).fP;
    EXPECT_NEAR(Compute(accum, 0).fValue, p, 1e-11 * p);
    // The plain sum of logarithms cancels, so it knows g2 to an error in the size of the total.
    EXPECT_NEAR(Compute(accum, 1).fTieBreak1, g2, 1e-14 * plain.fTotal * std::log(plain.fTotal));
    EXPECT_NEAR(Compute(accum, 1).fValue, ChiSquareTail(g2, plain.Df()).fP, 1e-11);
    const auto smaller =
        static_cast<double>(std::min(plain.fRows.size(), plain.fColumns.size()) - 1);
    EXPECT_NEAR(Compute(accum, 2).fValue, std::sqrt(x2 / (plain.fTotal * smaller)), 1e-12);
    EXPECT_NEAR(Compute(accum, 3).fValue, plain.Lambda(), 1e-15);
    EXPECT_EQ(Compute(accum, 3).fTieBreak1, static_cast<double>(plain.fRows.size()));
}

TEST(FSCatPCatTAccum, CriteriaOfOtherKindsStayMissing) {
    const FSCatPCatTAccum accum = Table({{30, 10}, {5, 55}});
    for (const std::int32_t criterion : {4, 5, 6, -1}) {
        EXPECT_TRUE(Compute(accum, criterion).AllAre(kMissing)) << criterion;
        const Displayed shown = ForDisplay(accum, criterion);
        EXPECT_FALSE(shown.fbReported) << criterion;
        for (const double value : shown.fValues) EXPECT_EQ(value, kMissing);
    }
}

TEST(FSCatPCatTAccum, DisplayedCriteria) {
    const FSCatPCatTAccum accum = Table({{30, 10}, {5, 55}});
    for (const std::int32_t criterion : {0, 1}) {
        const Criterion result = Compute(accum, criterion);
        const Displayed shown = ForDisplay(accum, criterion);
        EXPECT_TRUE(shown.fbReported);
        EXPECT_EQ(shown.fValues, (std::array<double, 4>{result.fValue, result.fTieBreak1,
                                                        result.fTieBreak2, kMissing}));
    }
    for (const std::int32_t criterion : {2, 3}) {
        const Displayed shown = ForDisplay(accum, criterion);
        EXPECT_TRUE(shown.fbReported);
        EXPECT_EQ(shown.fValues, (std::array<double, 4>{Compute(accum, criterion).fValue, kMissing,
                                                        kMissing, kMissing}));
    }
}

TEST(FSCatPCatTAccum, TenDistinctValuesInTenRecordsFireReasons5And6) {
    std::vector<Case> cases;
    for (int i = 0; i < 10; ++i) cases.push_back({static_cast<double>(i), 0, 1});
    EXPECT_EQ(AllReasons(Of(cases), FSSettings()), (std::vector<std::int32_t>{5, 6}));
}

TEST(FSCatPCatTAccum, ConstancyIsThatOfThePredictor) {
    const FSCatPCatTAccum accum = Of({{-2, 0, 1}, {-2, 1, 1}, {kMissing, 2, 1}});
    EXPECT_TRUE(accum.IsConstant());
    EXPECT_FALSE(accum.IsAllMissing());
    EXPECT_TRUE(accum.IsCategorical());
    EXPECT_EQ(ShownNumber(accum, "The first non-missing predictor category = "), -2.0);
    EXPECT_FALSE(Of({{-2, 0, 1}, {3, 0, 1}}).IsConstant());
}

TEST(FSCatPCatTAccum, MissingPredictorsReachNoTable) {
    const FSCatPCatTAccum accum = Of({{1, 0, 1}, {kMissing, 1, 2}});
    EXPECT_EQ(ShownNumber(accum, "Number of target categories = "), 1.0);
    EXPECT_EQ(ShownNumber(accum, "Number of processed cases = "), 3.0);
    EXPECT_EQ(ShownNumber(accum, "Number of missing cases = "), 2.0);
}

TEST(FSCatPCatTAccum, MergedPartitionsAreOnePass) {
    const std::vector<Case> cases = accumcases::RandomCases(testsupport::RandomSeed(), 100, {}, {});
    testsupport::ExpectSplitInvariant(
        cases, [] { return FSCatPCatTAccum(); }, FeedPair);
}

TEST(FSCatPCatTAccum, MergeAddsUnweightedRecordsUnlessASaveLostThem) {
    const std::string label = "Number of unweighted valid cases = ";
    const FSCatPCatTAccum side = Of({{1, 0, 2}, {2, 1, 2}, {kMissing, 0, 1}});
    FSCatPCatTAccum merged = side;
    merged.MergeFrom(side);
    EXPECT_EQ(ShownNumber(merged, label), 4.0);
    const FSCatPCatTAccum restored = testsupport::Restored(side, [] { return FSCatPCatTAccum(); });
    EXPECT_EQ(ShownNumber(restored, label), 0.0);
    merged.MergeFrom(restored);
    EXPECT_EQ(ShownNumber(merged, label), 4.0);
}

TEST(FSCatPCatTAccum, CategoriesBeyondTheIntegerRangeFallTogether) {
    const FSCatPCatTAccum accum = Of({{1e300, 0, 1}, {-1e300, 1, 1}});
    EXPECT_TRUE(accum.IsConstant());
    EXPECT_EQ(ShownNumber(accum, "Number of predictor categories = "), 1.0);
}

TEST(FSCatPCatTAccum, DisplayShowsEveryField) {
    FSCatPCatTAccum accum;
    accum.AddPair(3.0, 1.0, 1.5, true);
    accum.AddPair(4.0, 1.0, 1.0, true);
    accum.AddMissing(1.0);
    EXPECT_EQ(accumcases::DisplayText(accum),
              "Start of FSCatPCatTAccum display\n"
              "Number of predictor categories = 2\n"
              "Number of target categories = 1\n"
              "Number of processed cases = 3.5\n"
              "Number of unweighted valid cases = 2\n"
              "Number of missing cases = 1\n"
              "The first non-missing predictor category = 3\n"
              "This is not constant\n"
              "Case counts of predictor categories:\n"
              "Start of FSMapICnt display\n"
              "Map size = 2\n"
              "Key = 3, Value = 1.5\n"
              "Key = 4, Value = 1\n"
              "End of FSMapICnt display\n"
              "Case counts of target categories:\n"
              "Start of FSMapICnt display\n"
              "Map size = 1\n"
              "Key = 1, Value = 2.5\n"
              "End of FSMapICnt display\n"
              "Case counts of pairs of predictor and target categories:\n"
              "Start of FSMapPiCnt display\n"
              "Map size = 2\n"
              "Key = (3, 1) Value = 1.5\n"
              "Key = (4, 1) Value = 1\n"
              "End of FSMapPiCnt display\n"
              "End of FSCatPCatTAccum display\n");
}

}  // namespace
