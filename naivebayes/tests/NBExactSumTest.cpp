#include "naivebayes/NBExactSum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/RandomSeed.h"

namespace {

using Summands = std::vector<std::pair<double, NBInt128>>;

double SumOf(const Summands& summands) {
    NBExactSum sum;
    for (const auto& [weight, number] : summands) sum.Add(weight, number);
    return sum.GetValue();
}

TEST(NBExactSum, OfNothingIsZero) { EXPECT_EQ(NBExactSum().GetValue(), 0.0); }

TEST(NBExactSum, OfOneIsTheProduct) {
    for (const double weight : {1.0, 3.0, 0.1, 1e-300, 5e-324, 1e300}) {
        for (const std::int64_t number : {1LL, -1LL, 7LL, -123456789LL, 1LL << 53}) {
            EXPECT_EQ(SumOf({{weight, number}}), weight * static_cast<double>(number))
                << weight << ' ' << number;
        }
    }
    EXPECT_EQ(SumOf({{1.0, NBInt128{1} << 90}}), 0x1p90);
    EXPECT_EQ(SumOf({{1.0, -(NBInt128{3} << 90)}}), -3.0 * 0x1p90);
}

TEST(NBExactSum, LosesNothingOfTheSmallBesideTheLarge) {
    EXPECT_EQ(SumOf({{1e300, 1}, {1e-300, 7}, {1e300, -1}}), 7e-300);
    EXPECT_EQ(SumOf({{5e-324, 1}, {1e308, 1000}, {1e308, -1000}}), 5e-324);
    EXPECT_EQ(SumOf({{1.0, 1}, {5e-324, -1}, {1.0, -1}}), -5e-324);
}

TEST(NBExactSum, CarriesThroughAllLimbs) {
    NBExactSum sum;
    for (int i = 0; i < 1000; ++i) {
        sum.Add(5e-324, -1);
        sum.Add(5e-324, 1);
        ASSERT_EQ(sum.GetValue(), 0.0);
    }
    sum.Add(5e-324, -1);
    sum.Add(1e308, 1);
    sum.Add(1e308, -1);
    EXPECT_EQ(sum.GetValue(), -5e-324);
}

// In 128-bit integers.
TEST(NBExactSum, IsThatOfIntegers) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (int trial = 0; trial < 200; ++trial) {
        NBExactSum sum;
        NBExactSum left;
        NBExactSum right;
        NBInt128 expected = 0;
        NBInt128 difference = 0;
        for (int i = 0; i < 200; ++i) {
            const auto weight = static_cast<std::int64_t>(random() >> 40);
            const NBInt128 number = NBInt128{static_cast<std::int64_t>(random())}
                                    << (random() % 20);
            expected += weight * number;
            difference += i % 2 == 0 ? weight * number : -weight * number;
            sum.Add(static_cast<double>(weight), number);
            (i % 2 == 0 ? left : right).Add(static_cast<double>(weight), number);
        }
        EXPECT_EQ(sum.GetValue(), static_cast<double>(expected));
        EXPECT_EQ(left.Minus(right), static_cast<double>(difference));
        left.AddSum(right);
        EXPECT_EQ(left.GetValue(), static_cast<double>(expected));
        left.SubtractSum(sum);
        EXPECT_EQ(left.GetValue(), 0.0);
    }
}

TEST(NBExactSum, KnowsNoOrder) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> exponent(-1000.0, 1000.0);
    for (int trial = 0; trial < 50; ++trial) {
        Summands summands;
        for (int i = 0; i < 100; ++i) {
            summands.emplace_back(std::exp2(exponent(random)), static_cast<std::int64_t>(random()));
        }
        const double expected = SumOf(summands);
        std::shuffle(summands.begin(), summands.end(), random);
        EXPECT_EQ(SumOf(summands), expected);
        NBExactSum whole;
        NBExactSum part;
        for (const auto& [weight, number] : summands) {
            part.Add(weight, number);
            if (random() % 10 == 0) {
                whole.AddSum(part);
                part = NBExactSum();
            }
        }
        whole.AddSum(part);
        EXPECT_EQ(whole.GetValue(), expected);
    }
}

TEST(NBExactSum, LogarithmsOfZeroAndNoNumbersStandOut) {
    const double infinity = std::numeric_limits<double>::infinity();
    NBExactSum sum;
    sum.Add(2.0, 5);
    sum.AddLogOfZero();
    EXPECT_EQ(sum.GetValue(), -infinity);
    NBExactSum other;
    other.Add(2.0, 5);
    EXPECT_EQ(sum.Minus(other), -infinity);
    EXPECT_EQ(other.Minus(sum), infinity);
    other.SubtractSum(sum);
    EXPECT_EQ(other.GetValue(), infinity);
    other.AddNoNumber();
    EXPECT_TRUE(std::isnan(other.GetValue()));
    for (const double weight : {infinity, std::nan("")}) {
        NBExactSum none;
        none.Add(weight, 1);
        EXPECT_TRUE(std::isnan(none.GetValue()));
    }
}

}  // namespace
