#include "featureselect/FSOrderFreeSum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "tests/support/RandomSeed.h"

namespace {

FSDoubleDouble Sum(const std::vector<FSDoubleDouble>& terms) {
    FSOrderFreeSum sum;
    sum.Reserve(terms.size());
    for (const FSDoubleDouble& term : terms) sum.Add(term);
    return sum.Total();
}

TEST(FSOrderFreeSum, NothingIsZero) {
    EXPECT_EQ(Sum({}).High(), 0.0);
    EXPECT_EQ(Sum({0.0, 0.0}).High(), 0.0);
}

TEST(FSOrderFreeSum, KeepsWhatADoubleLoses) {
    // 1 + 2^-60 a thousand times: 1000 and 1000 * 2^-60.
    const std::vector<FSDoubleDouble> terms(1000,
                                            FSDoubleDouble::ExactSum(1.0, std::ldexp(1.0, -60)));
    EXPECT_EQ(Sum(terms).High(), 1000.0);
    EXPECT_EQ(Sum(terms).Low(), std::ldexp(1000.0, -60));
}

TEST(FSOrderFreeSum, EveryOrderGivesTheSameBits) {
    std::mt19937 generator(testsupport::RandomSeed());
    std::uniform_real_distribution<double> mantissa(0.5, 1.0);
    std::uniform_int_distribution<int> power(-60, 20);
    for (const std::size_t count : {2U, 15U, 16U, 1000U}) {
        std::vector<FSDoubleDouble> terms;
        for (std::size_t at = 0; at < count; ++at) {
            const double high = std::ldexp(mantissa(generator), power(generator));
            terms.push_back(FSDoubleDouble(high) / 3.0);
        }
        const FSDoubleDouble first = Sum(terms);
        FSDoubleDouble plain;
        for (const FSDoubleDouble& term : terms) plain = plain + term;
        EXPECT_LE(std::abs((first - plain).High()), 1e-29 * plain.High());
        for (int order = 0; order < 20; ++order) {
            std::shuffle(terms.begin(), terms.end(), generator);
            const FSDoubleDouble again = Sum(terms);
            EXPECT_EQ(again.High(), first.High());
            EXPECT_EQ(again.Low(), first.Low());
        }
    }
}

TEST(FSOrderFreeSum, ATermThatIsNotFiniteLeavesNoNumber) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(std::isnan(Sum({1.0, infinity}).High()));
    EXPECT_TRUE(std::isnan(Sum({1.0, std::numeric_limits<double>::quiet_NaN()}).High()));
}

}  // namespace
