#include "featureselect/FSPredOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/RandomSeed.h"

namespace {

constexpr double kMissing = MCMV::gMissingValue;
constexpr double kMinusInfinity = -std::numeric_limits<double>::infinity();
using Indices = std::vector<std::int32_t>;
using Records = std::vector<FSPredSort>;

// The indices of the predictors in the order of their records.
Indices Sorted(const Records& records, std::int32_t criterion, std::size_t head) {
    std::vector<std::unique_ptr<FSPredSort>> pointers;
    for (const FSPredSort& record : records) {
        pointers.push_back(std::make_unique<FSPredSort>(record));
    }
    FSPredOrder::Sort(pointers, criterion, head);
    EXPECT_EQ(pointers.size(), records.size());
    Indices order;
    for (const auto& record : pointers) order.push_back(record->fPredictor);
    return order;
}

Indices Sorted(const Records& records, std::int32_t criterion) {
    return Sorted(records, criterion, records.size());
}

// As they come out of a restored state: without the test behind them.
struct PairCase {
    std::string fName;
    std::int32_t fCriterion;
    FSPredSort fFirst;
    FSPredSort fSecond;
};

void PrintTo(const PairCase& pair, std::ostream* out) { *out << pair.fName; }

class FSPredOrderOfTwo : public testing::TestWithParam<PairCase> {};

TEST_P(FSPredOrderOfTwo, Holds) {
    const PairCase& pair = GetParam();
    const Indices expected{pair.fFirst.fPredictor, pair.fSecond.fPredictor};
    EXPECT_EQ(Sorted({pair.fFirst, pair.fSecond}, pair.fCriterion), expected);
    EXPECT_EQ(Sorted({pair.fSecond, pair.fFirst}, pair.fCriterion), expected);
}

std::vector<PairCase> PairCases() {
    std::vector<PairCase> cases;
    for (std::int32_t criterion = 0; criterion < 6; ++criterion) {
        const std::string suffix = std::to_string(criterion);
        const bool isMeasure = criterion == 2 || criterion == 3;
        const double better = isMeasure ? 0.9 : 0.1;
        const double worse = isMeasure ? 0.1 : 0.9;
        const auto add = [&](const char* name, const FSPredSort& first, const FSPredSort& second) {
            cases.push_back({name + suffix, criterion, first, second});
        };
        add("BetterValueFirst", {better, 1, 1, 5}, {worse, 9, 9, 2});
        add("MissingValueLast", {worse, 1, 1, 5}, {kMissing, 9, 9, 2});
        add("NoNumberLast", {worse, 1, 1, 5}, {std::nan(""), 9, 9, 2});
        add("TwoMissingValuesByIndex", {kMissing, 1, 1, 2}, {kMissing, 9, 9, 5});
        add("LargerFirstTieBreakerFirst", {0.5, 9, 1, 5}, {0.5, 1, 1, 2});
        add("MissingFirstTieBreakerLast", {0.5, 0, 1, 5}, {0.5, kMissing, 1, 2});
        add("AllEqualByIndex", {0.5, 1, 1, 2}, {0.5, 1, 1, 5});
    }
    for (const std::int32_t criterion : {0, 1}) {
        const std::string suffix = std::to_string(criterion);
        cases.push_back(
            {"FewerDegreesOfFreedomFirst" + suffix, criterion, {0.5, 4, 1, 5}, {0.5, 4, 2, 2}});
        cases.push_back({"MoreCasesByTheirNegativeFirst" + suffix,
                         criterion,
                         {0.5, 4, -100, 5},
                         {0.5, 4, -50, 2}});
    }
    for (const std::int32_t criterion : {2, 3}) {
        cases.push_back({"SecondTieBreakerIsNotRead" + std::to_string(criterion),
                         criterion,
                         {0.5, 4, 2, 2},
                         {0.5, 4, 1, 5}});
    }
    for (const std::int32_t criterion : {4, 5}) {
        cases.push_back({"MoreCasesFirst" + std::to_string(criterion),
                         criterion,
                         {0.5, 4, 100, 5},
                         {0.5, 4, 50, 2}});
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Rules, FSPredOrderOfTwo, testing::ValuesIn(PairCases()),
                         [](const auto& test) { return test.param.fName; });

// A chi-square of so many degrees of freedom; the logarithm is that of p unless told otherwise.
FSPredSort ChiSquare(std::int32_t predictor, double statistic, double df, double p, double logP) {
    FSPredSort record{p, statistic, df, predictor};
    record.fTest = FSTestResult::kChiSquare;
    record.fLogP = logP;
    record.fStatistic = statistic;
    record.fDf1 = df;
    return record;
}
FSPredSort ChiSquare(std::int32_t predictor, double statistic, double df, double p) {
    return ChiSquare(predictor, statistic, df, p, std::log(p));
}

FSPredSort F(std::int32_t predictor, double f, double df1, double df2, double p, double logP) {
    FSPredSort record{p, f, df2 + df1 + 1, predictor};
    record.fTest = FSTestResult::kF;
    record.fLogP = logP;
    record.fStatistic = f;
    record.fDf1 = df1;
    record.fDf2 = df2;
    return record;
}

FSPredSort T(std::int32_t predictor, double t, double rSquared, double df, double p) {
    FSPredSort record{p, rSquared, df + 2, predictor};
    record.fTest = FSTestResult::kT;
    record.fLogP = std::log(p);
    record.fStatistic = t;
    record.fDf1 = df;
    return record;
}

TEST(FSPredOrder, TheStatisticDecidesWherePHasBeenTurnedRound) {
    EXPECT_EQ(Sorted({ChiSquare(0, 7.0, 2, 0.0301), ChiSquare(1, 7.1, 2, 0.0302)}, 0),
              (Indices{1, 0}));
    EXPECT_EQ(Sorted({F(0, 7.0, 2, 9, 0.0301, -3.5), F(1, 7.1, 2, 9, 0.0302, -3.4)}, 4),
              (Indices{1, 0}));
    // Of t tests too, though the first tie-breaker is the squared correlation.
    EXPECT_EQ(Sorted({T(0, 2.5, 0.41, 9, 0.03), T(1, 2.6, 0.40, 9, 0.03)}, 5), (Indices{1, 0}));
}

TEST(FSPredOrder, OtherDegreesOfFreedomAreOtherTests) {
    EXPECT_EQ(Sorted({ChiSquare(0, 7.0, 2, 0.03), ChiSquare(1, 7.1, 3, 0.07)}, 0), (Indices{0, 1}));
    EXPECT_EQ(Sorted({F(0, 7.0, 2, 90, 0.01, -5), F(1, 7.1, 2, 9, 0.02, -4)}, 4), (Indices{0, 1}));
    EXPECT_EQ(Sorted({F(0, 7.0, 3, 9, 0.01, -5), F(1, 7.1, 2, 9, 0.02, -4)}, 4), (Indices{0, 1}));
}

TEST(FSPredOrder, UnlikeTestsDoNotGoByTheirStatistics) {
    FSPredSort f = F(1, 7.1, 2, kMissing, 0.04, -3);
    f.fTieBreak2 = -12;
    EXPECT_EQ(Sorted({f, ChiSquare(0, 7.0, 2, 0.03)}, 0), (Indices{0, 1}));
}

TEST(FSPredOrder, ACircleOfPAndStatisticHasAnOrderThatHoldsTheStatistics) {
    // 0 before 1 by statistic, 1 before 2 and 2 before 0 by p-value.
    const std::vector<FSPredSort> circle{ChiSquare(0, 7.1, 2, 0.0303), ChiSquare(1, 7.0, 2, 0.0301),
                                         ChiSquare(2, 8.0, 3, 0.0302)};
    Indices order{0, 1, 2};
    do {
        Records records;
        for (const std::int32_t at : order) records.push_back(circle[static_cast<std::size_t>(at)]);
        EXPECT_EQ(Sorted(records, 0), (Indices{2, 0, 1}));
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST(FSPredOrder, ManyCirclesHaveOneOrderWhateverTheOrderOfRecords) {
    std::mt19937 generator(testsupport::RandomSeed());
    std::uniform_int_distribution<int> few(1, 6);
    for (int round = 0; round < 50; ++round) {
        Records records;
        for (std::int32_t predictor = 0; predictor < 60; ++predictor) {
            const double p = few(generator) / 10.0;
            records.push_back(ChiSquare(predictor, few(generator), few(generator) % 3 + 1, p));
        }
        const Indices order = Sorted(records, 0);
        for (std::size_t a = 0; a < order.size(); ++a) {
            for (std::size_t b = a + 1; b < order.size(); ++b) {
                const FSPredSort& first = records[static_cast<std::size_t>(order[a])];
                const FSPredSort& second = records[static_cast<std::size_t>(order[b])];
                EXPECT_TRUE(first.fDf1 != second.fDf1 || first.fStatistic >= second.fStatistic);
            }
        }
        Records shuffled = records;
        std::shuffle(shuffled.begin(), shuffled.end(), generator);
        EXPECT_EQ(Sorted(shuffled, 0), order);
        Indices head = Sorted(shuffled, 0, 10);
        head.resize(10);
        EXPECT_EQ(head, Indices(order.begin(), order.begin() + 10));
    }
}

TEST(FSPredOrder, PValuesBelowTheReachOfADoubleGoByTheirLogarithms) {
    EXPECT_EQ(Sorted({ChiSquare(0, 2000, 1, 0.0, -1005), ChiSquare(1, 2000, 2, 0.0, -1000),
                      ChiSquare(2, 2100, 4, 0.0, -1030)},
                     0),
              (Indices{2, 0, 1}));
}

TEST(FSPredOrder, PValuesBelow1e290GoByTheirLogarithmsToo) {
    // Two that only their logarithms order rightly.
    EXPECT_EQ(
        Sorted({ChiSquare(0, 1500, 1, 3e-310, -712.1), ChiSquare(1, 1510, 2, 4e-310, -712.4)}, 0),
        (Indices{1, 0}));
    // And one above the bound stands behind both, whatever its logarithm says.
    EXPECT_EQ(
        Sorted({ChiSquare(0, 1300, 1, 2e-290, -700.0), ChiSquare(1, 1510, 2, 9e-291, -667.0)}, 0),
        (Indices{1, 0}));
}

TEST(FSPredOrder, EqualPValuesGoByTheirLogarithms) {
    // Next to 1 the logarithm has the digits that p has lost.
    EXPECT_EQ(Sorted({ChiSquare(0, 0.2, 9, 1.0, -1e-20), ChiSquare(1, 0.1, 8, 1.0, -1e-19)}, 0),
              (Indices{1, 0}));
}

TEST(FSPredOrder, NoVariationWithinGroupsStandsBeforeAllElse) {
    FSPredSort perfect{0.0, kMissing, 30, 3};
    perfect.fTest = FSTestResult::kF;
    perfect.fLogP = kMinusInfinity;
    perfect.fDf1 = 2;
    perfect.fDf2 = 27;
    EXPECT_EQ(Sorted({F(0, 1e200, 2, 27, 0.0, -5000), perfect, F(1, 9, 2, 27, 0.001, -6.9)}, 4),
              (Indices{3, 0, 1}));
}

TEST(FSPredOrder, TwentyFiveEqualPredictorsKeepTheOrderOfTheFile) {
    for (std::int32_t criterion = 0; criterion < 6; ++criterion) {
        Records records;
        Indices expected;
        for (std::int32_t predictor = 0; predictor < 25; ++predictor) {
            records.push_back(ChiSquare(predictor, 4.0, 2, 0.135));
            expected.push_back(predictor);
        }
        EXPECT_EQ(Sorted(records, criterion), expected) << criterion;
        for (std::size_t head = 1; head < 25; ++head) {
            Indices order = Sorted(records, criterion, head);
            order.resize(head);
            EXPECT_EQ(order, Indices(expected.begin(),
                                     expected.begin() + static_cast<std::ptrdiff_t>(head)));
        }
        std::reverse(records.begin(), records.end());
        EXPECT_EQ(Sorted(records, criterion), expected) << criterion;
    }
}

TEST(FSPredOrder, TwentyFiveMissingValuesKeepTheOrderOfTheFileBehindTheRest) {
    Records records;
    Indices expected{25};
    for (std::int32_t predictor = 0; predictor < 25; ++predictor) {
        records.push_back({kMissing, static_cast<double>(predictor), kMissing, predictor});
        expected.push_back(predictor);
    }
    records.push_back(ChiSquare(25, 0.1, 2, 0.95));
    EXPECT_EQ(Sorted(records, 0), expected);
    EXPECT_EQ(Sorted(records, 3), expected);
}

TEST(FSPredOrder, OfNothingNothingIsSorted) { EXPECT_EQ(Sorted({}, 0), Indices{}); }

}  // namespace
