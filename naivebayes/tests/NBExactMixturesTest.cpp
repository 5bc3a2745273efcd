#include "naivebayes/NBExactMixtures.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "naivebayes/NBGridLog.h"
#include "tests/support/RandomSeed.h"

namespace {

/// Records with scaled products, the rows of a table and what both forms make of them.
template <class Entry>
struct Trial {
    Trial(std::mt19937& random, std::size_t numTargets, std::size_t count, double leastPower)
        : fNumTargets(numTargets), fWidth((numTargets + 3) / 4), fCount(count) {
        const std::size_t numRows = 1 + random() % 250;
        const std::size_t stride = fWidth * 4;
        fvHigh.resize(count * stride);
        fvRowHigh.resize(numRows * stride);
        fvEntries.resize(count);
        fvTargets.resize(count);
        fvExponents.resize(count);
        std::uniform_real_distribution<double> power(leastPower, 0.0);
        std::uniform_real_distribution<double> part(-0x1p-54, 0x1p-54);
        for (std::size_t i = 0; i < fvHigh.size(); ++i) {
            if (i % stride < numTargets) fvHigh[i] = std::exp2(power(random));
            if (i % stride == 0) fvHigh[i] = 1.5;
        }
        for (std::size_t i = 0; i < fvRowHigh.size(); ++i) {
            if (i % stride < numTargets) fvRowHigh[i] = std::exp2(power(random) / 8.0);
        }
        for (double high : fvHigh) fvLow.push_back(high * part(random));
        for (double high : fvRowHigh) fvRowLow.push_back(high * part(random));
        for (Entry& entry : fvEntries) entry = static_cast<Entry>(random() % numRows);
        for (std::uint32_t& target : fvTargets) {
            target = static_cast<std::uint32_t>(random() % (numTargets + 1));
        }
        for (std::int32_t& exponent : fvExponents) {
            exponent = -static_cast<std::int32_t>(random() % 600);
        }
    }
    NBExactMixtures::ConstProducts Products() const { return {fvHigh.data(), fvLow.data()}; }
    NBExactMixtures::ConstProducts Rows() const { return {fvRowHigh.data(), fvRowLow.data()}; }

    std::size_t fNumTargets;
    std::size_t fWidth;
    std::size_t fCount;
    std::vector<double> fvHigh;
    std::vector<double> fvLow;
    std::vector<double> fvRowHigh;
    std::vector<double> fvRowLow;
    std::vector<Entry> fvEntries;
    std::vector<std::uint32_t> fvTargets;
    std::vector<std::int32_t> fvExponents;
};

template <class Entry>
class NBExactMixturesTest : public testing::Test {};
using Entries = testing::Types<std::uint8_t, std::uint16_t, std::uint32_t>;
TYPED_TEST_SUITE(NBExactMixturesTest, Entries);

TYPED_TEST(NBExactMixturesTest, BothFormsMultiplyToTheSameBitsAndTheProduct) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    int numLetGo = 0;
    for (int trial = 0; trial < 200; ++trial) {
        const double leastPower = trial % 4 == 0 ? -890.0 : -60.0;
        const Trial<TypeParam> of(random, 1 + random() % 13, random() % 70, leastPower);
        Trial<TypeParam> wide = of;
        Trial<TypeParam> plain = of;
        const bool wideLetGo = NBExactMixtures::Multiply(
            of.Products(), of.Rows(), of.fvEntries.data(), of.fWidth, of.fCount,
            {wide.fvHigh.data(), wide.fvLow.data()}, wide.fvExponents.data());
        const bool plainLetGo = NBExactMixtures::PortableMultiply(
            plain.Products(), of.Rows(), of.fvEntries.data(), of.fWidth, of.fCount,
            {plain.fvHigh.data(), plain.fvLow.data()}, plain.fvExponents.data());
        EXPECT_EQ(wideLetGo, plainLetGo);
        EXPECT_EQ(wide.fvHigh, plain.fvHigh);
        EXPECT_EQ(wide.fvLow, plain.fvLow);
        EXPECT_EQ(wide.fvExponents, plain.fvExponents);
        numLetGo += wideLetGo ? 1 : 0;
        const std::size_t stride = of.fWidth * 4;
        bool expectedLetGo = false;
        for (std::size_t i = 0; i < of.fCount; ++i) {
            double largest = 0.0;
            for (std::size_t k = 0; k < stride; ++k) {
                const std::size_t at = i * stride + k;
                const std::size_t row = of.fvEntries[i] * stride + k;
                const int moved = wide.fvExponents[i] - of.fvExponents[i];
                const long double product =
                    std::ldexp((of.fvHigh[at] + static_cast<long double>(of.fvLow[at])) *
                                   (of.fvRowHigh[row] + static_cast<long double>(of.fvRowLow[row])),
                               -moved);
                largest = std::max(largest, wide.fvHigh[at]);
                if (product < 0x1p-900L) {
                    expectedLetGo = expectedLetGo || k < of.fNumTargets;
                    EXPECT_EQ(wide.fvHigh[at], 0.0);
                    EXPECT_EQ(wide.fvLow[at], 0.0);
                } else {
                    EXPECT_LE(std::abs(wide.fvHigh[at] + static_cast<long double>(wide.fvLow[at]) -
                                       product),
                              0x1p-62L * product);
                }
            }
            EXPECT_GE(largest, 1.0);
            EXPECT_LT(largest, 2.0);
        }
        EXPECT_EQ(wideLetGo, expectedLetGo);
    }
    EXPECT_GT(numLetGo, 5);
}

TEST(NBExactMixturesLogs, BothFormsGiveTheSameNumbersAndTheLogarithm) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 300; ++trial) {
        const Trial<std::uint8_t> of(random, 1 + random() % 13, 4 * (random() % 40),
                                     trial % 4 == 0 ? -890.0 : -30.0);
        const bool hasTargets = trial % 3 != 0;
        const std::uint32_t* const targets = hasTargets ? of.fvTargets.data() : nullptr;
        std::vector<std::int64_t> tops(of.fCount);
        std::vector<std::int64_t> rests(of.fCount);
        std::vector<std::int64_t> plainTops(of.fCount);
        std::vector<std::int64_t> plainRests(of.fCount);
        NBExactMixtures::Logs(of.Products(), targets, of.fvExponents.data(), of.fWidth, of.fCount,
                              {tops.data(), rests.data()});
        NBExactMixtures::PortableLogs(of.Products(), targets, of.fvExponents.data(), of.fWidth,
                                      of.fCount, {plainTops.data(), plainRests.data()});
        EXPECT_EQ(tops, plainTops);
        EXPECT_EQ(rests, plainRests);
        const std::size_t stride = of.fWidth * 4;
        for (std::size_t i = 0; i < of.fCount; ++i) {
            long double sum = 0.0L;
            for (std::size_t k = 0; k < stride; ++k) {
                sum +=
                    of.fvHigh[i * stride + k] + static_cast<long double>(of.fvLow[i * stride + k]);
            }
            long double expected = std::log(sum);
            if (hasTargets && of.fvTargets[i] > 0) {
                const std::size_t own = i * stride + of.fvTargets[i] - 1;
                expected -= std::log(of.fvHigh[own] + static_cast<long double>(of.fvLow[own]));
            } else {
                expected += of.fvExponents[i] * std::log(2.0L);
            }
            const auto actual = static_cast<long double>(NBGridLog::Units(tops[i], rests[i])) *
                                static_cast<long double>(NBGridLog::kUnit);
            EXPECT_NEAR(static_cast<double>(actual - expected), 0.0,
                        1e-18 * (4.0 + static_cast<double>(std::abs(expected))));
        }
    }
}

TEST(NBExactMixturesLogs, ASingleTargetCategoryHasAPosteriorOfOne) {
    const std::vector<double> high{1.3, 0.0, 0.0, 0.0, 1.7, 0.0, 0.0, 0.0,
                                   1.0, 0.0, 0.0, 0.0, 1.1, 0.0, 0.0, 0.0};
    const std::vector<double> low(16, 0.0);
    const std::vector<std::uint32_t> targets(4, 1);
    const std::vector<std::int32_t> exponents(4, -5);
    std::vector<std::int64_t> tops(4, 1);
    std::vector<std::int64_t> rests(4, 1);
    NBExactMixtures::Logs({high.data(), low.data()}, targets.data(), exponents.data(), 1, 4,
                          {tops.data(), rests.data()});
    for (std::size_t i = 0; i < 4; ++i) EXPECT_TRUE(NBGridLog::Units(tops[i], rests[i]) == 0) << i;
}

}  // namespace
