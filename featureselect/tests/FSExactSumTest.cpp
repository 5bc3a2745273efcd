#include "featureselect/FSExactSum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "featureselect/FSWeightSum.h"
#include "tests/support/RandomSeed.h"

namespace {

constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();

std::string Bytes(const FSExactSum& sum) {
    std::string bytes;
    sum.AppendTo(bytes);
    return bytes;
}

// Any double, of any magnitude.
double AnyDouble(std::mt19937_64& engine) {
    const int exponent = static_cast<int>(engine() % 2000) - 1060;
    return std::ldexp(static_cast<double>(static_cast<std::int64_t>(engine())), exponent - 63);
}

TEST(FSExactSum, StartsAtZero) {
    const FSExactSum sum;
    EXPECT_EQ(sum.Value(), 0.0);
    EXPECT_EQ(sum.Sign(), 0);
    EXPECT_TRUE(sum.Scaled().IsZero());
}

TEST(FSExactSum, KeepsWhatADoubleWouldLose) {
    FSExactSum sum;
    for (const double value : {1e300, 1.0, kSmallest, -1e300, -1.0}) sum.Add(value);
    EXPECT_EQ(sum.Value(), kSmallest);
    sum.Add(-kSmallest);
    EXPECT_EQ(sum.Sign(), 0);
    EXPECT_EQ(sum, FSExactSum());
}

TEST(FSExactSum, RoundsToTheNearestDoubleAndTiesToEven) {
    FSExactSum half(0x1p53);
    half.Add(1.0);
    EXPECT_EQ(half.Value(), 0x1p53);  // between 2^53 and 2^53 + 2, whose last bit is odd
    half.Add(2.0);
    EXPECT_EQ(half.Value(), 0x1p53 + 4.0);
    half.Add(-kSmallest);
    EXPECT_EQ(half.Value(), 0x1p53 + 2.0);
    FSExactSum denormal;
    denormal.AddProduct(kSmallest, 0.5);
    EXPECT_EQ(denormal.Value(), 0.0);
    denormal.AddProduct(kSmallest, 0.25);
    EXPECT_EQ(denormal.Value(), kSmallest);
}

TEST(FSExactSum, IsTheLargestDoubleBeyondIt) {
    FSExactSum sum(kLargest);
    sum.Add(kLargest);
    EXPECT_EQ(sum.Value(), kLargest);
    EXPECT_TRUE(sum.Scaled().IsBeyondDouble());
    EXPECT_EQ((FSExactSum() - sum).Value(), -kLargest);
    sum.Add(-kLargest);
    EXPECT_FALSE(sum.Scaled().IsBeyondDouble());
}

TEST(FSExactSum, TakesProductsOfTheSmallestAndTheLargest) {
    FSExactSum sum;
    sum.AddProduct(kLargest, kLargest, kLargest);
    sum.AddProduct(kSmallest, kSmallest, kSmallest);
    sum.AddProduct(kLargest, kLargest, -kLargest);
    FSExactSum rest;
    rest.AddProduct(kSmallest, kSmallest, kSmallest);
    EXPECT_EQ(sum, rest);
    EXPECT_EQ(sum.Sign(), 1);
}

TEST(FSExactSum, MultipliesExactly) {
    // (2^100 + 1) (2^100 - 1) + 1 = 2^200.
    FSExactSum above(0x1p100);
    above.Add(1.0);
    FSExactSum below(0x1p100);
    below.Add(-1.0);
    FSExactSum product = above * below;
    EXPECT_EQ((FSExactSum() - above) * below, FSExactSum() - product);
    product.Add(1.0);
    EXPECT_EQ(product, FSExactSum(0x1p200));
}

TEST(FSExactSum, AddsLimbsAndWordsOfEitherSign) {
    for (const int exponent : {-70, -1, 0, 1, 63, 64}) {
        FSExactSum sum;
        sum.AddLimbs(std::vector<std::int64_t>{-5, 7, -1}, exponent);
        FSExactSum expected(std::ldexp(-5.0, exponent));
        expected.Add(std::ldexp(7.0, exponent + 48));
        expected.Add(std::ldexp(-1.0, exponent + 96));
        EXPECT_EQ(sum, expected) << exponent;
        FSExactSum words;
        words.AddWords(std::vector<std::uint64_t>{3, ~std::uint64_t{0}}, exponent);
        FSExactSum other(std::ldexp(3.0, exponent));
        other.Add(-std::ldexp(1.0, exponent + 64));
        EXPECT_EQ(words, other) << exponent;
    }
}

TEST(FSExactSum, IsTheSameInAnyOrderAndAfterTakingAway) {
    std::mt19937_64 engine(testsupport::RandomSeed());
    for (int trial = 0; trial < 300; ++trial) {
        std::vector<double> values(2 + engine() % 40);
        std::generate(values.begin(), values.end(), [&] { return AnyDouble(engine); });
        FSExactSum forth;
        for (const double value : values) forth.AddProduct(value, value);
        std::shuffle(values.begin(), values.end(), engine);
        const std::size_t cut = engine() % values.size();
        FSExactSum first;
        FSExactSum second;
        for (std::size_t at = 0; at < values.size(); ++at) {
            (at < cut ? first : second).AddProduct(values[at], values[at]);
        }
        ASSERT_EQ(Bytes(first + second), Bytes(forth));
        ASSERT_EQ(Bytes(forth - second), Bytes(first));
        ASSERT_EQ(Bytes(forth - first - second), Bytes(FSExactSum()));
    }
}

TEST(FSExactSum, ReadsItsBytesAndNoOthers) {
    std::mt19937_64 engine(testsupport::RandomSeed());
    FSExactSum sum;
    for (int i = 0; i < 5; ++i) sum.AddProduct(AnyDouble(engine), AnyDouble(engine));
    const std::string bytes = Bytes(sum);
    std::string_view rest = bytes;
    const auto restored = FSExactSum::TakeFrom(rest);
    ASSERT_TRUE(restored);
    EXPECT_EQ(*restored, sum);
    EXPECT_TRUE(rest.empty());
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        std::string_view cut(bytes.data(), size);
        EXPECT_FALSE(FSExactSum::TakeFrom(cut)) << size;
        EXPECT_EQ(cut.size(), size);
    }
    // A word more than needed is no canonical form.
    const std::string longer("\x02\x00\x00\x00\x01\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 20);
    std::string_view padded = longer;
    EXPECT_FALSE(FSExactSum::TakeFrom(padded));
}

TEST(FSExactSum, WhatIsNotFiniteMakesItNotANumber) {
    for (const double value :
         {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
        FSExactSum sum(1.0);
        sum.AddProduct(2.0, value);
        EXPECT_FALSE(sum.IsNumber());
        EXPECT_TRUE(std::isnan(sum.Value()));
        EXPECT_TRUE(std::isnan((sum * FSExactSum(0.0)).Value()));
        EXPECT_FALSE(sum == sum);
        std::string bytes = Bytes(sum);
        std::string_view view = bytes;
        const auto restored = FSExactSum::TakeFrom(view);
        ASSERT_TRUE(restored);
        EXPECT_FALSE(restored->IsNumber());
    }
}

TEST(FSScaled, KeepsRatiosOfSquaresBeyondDoubles) {
    FSExactSum large;
    large.AddProduct(0x1p1000, 0x1p1000);
    FSExactSum larger;
    larger.AddProduct(0x1p1001, 0x1p1001);
    EXPECT_EQ((larger.Scaled() / large.Scaled()).Value(), 4.0);
    EXPECT_EQ(large.Scaled().SquareRoot().Value(), 0x1p1000);
    EXPECT_EQ((large.Scaled() * FSScaled(0.0)).Value(), 0.0);
    EXPECT_TRUE(large.Scaled() < larger.Scaled());
    EXPECT_FALSE(larger.Scaled() < large.Scaled());
}

TEST(FSWeightSum, IsExactBeyondTwoToThe53AndWithFractions) {
    FSWeightSum sum(0x1p53);
    sum += 1.0;
    sum += 1.0;
    EXPECT_EQ(static_cast<double>(sum), 0x1p53 + 2.0);
    FSWeightSum tenth;
    for (int i = 0; i < 10; ++i) tenth += 0.1;
    // Ten times the double next to a tenth is nearest to 1, which adding one by one misses.
    EXPECT_EQ(static_cast<double>(tenth), 1.0);
    EXPECT_FALSE(tenth.IsWhole());
    EXPECT_EQ((tenth - tenth).Exact().Sign(), 0);
    EXPECT_TRUE(FSWeightSum(7.0).IsWhole());
}

}  // namespace
