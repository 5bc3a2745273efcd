#include "featureselect/FSNormal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host/Records.h"

namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

TEST(Erf, IsZeroAtZeroAndOdd) {
    EXPECT_EQ(Erf(0.0), 0.0);
    for (const double x : {1e-300, 0.3, 2.1999, 2.2, 5.0, 6.9, 100.0}) EXPECT_EQ(Erf(-x), -Erf(x));
}

TEST(Erf, IsOneFromSixPointNineOn) {
    EXPECT_EQ(Erf(6.9), 1.0);
    EXPECT_EQ(Erf(kInfinity), 1.0);
    EXPECT_EQ(Erf(-kInfinity), -1.0);
}

TEST(Erf, TablesMeetAtEveryRow) {
    for (const double edge : {1.0, std::sqrt(2.0), std::sqrt(3.0), 2.0, 2.2, 3.0, 4.0, 5.0, 6.0}) {
        const double below = Erf(std::nextafter(edge, 0.0));
        EXPECT_NEAR(Erf(edge), below, 5e-16) << edge;
    }
}

TEST(Erfc, IsOneAtZero) { EXPECT_EQ(Erfc(0.0), 1.0); }

TEST(Erfc, IsTwoMinusItsMirrorForNegativeArguments) {
    for (const double x : {1e-5, 0.5, 1.0, 4.0, 30.0}) EXPECT_EQ(Erfc(-x), 2.0 - Erfc(x));
}

TEST(Erfc, VanishesFarOut) {
    EXPECT_GT(Erfc(26.0), 0.0);
    EXPECT_EQ(Erfc(32.0), 0.0);
    EXPECT_EQ(Erfc(kInfinity), 0.0);
}

TEST(Erfc, CompletesErfToOne) {
    for (double x = -3.0; x < 7.0; x += 0.01) EXPECT_NEAR(Erf(x) + Erfc(x), 1.0, 1e-15) << x;
}

TEST(NormalCdf, IsHalfAtZero) {
    EXPECT_EQ(NormalCdf(0.0), 0.5);
    EXPECT_EQ(NormalCdf(-0.0), 0.5);
}

TEST(NormalCdf, ReachesItsLimits) {
    EXPECT_EQ(NormalCdf(kInfinity), 1.0);
    EXPECT_EQ(NormalCdf(-kInfinity), 0.0);
}

TEST(NormalCdfAt, ShiftsAndScales) {
    EXPECT_EQ(NormalCdfAt(12.0, 10.0, 4.0), NormalCdf(0.5));
    EXPECT_EQ(NormalCdfAt(10.0, 10.0, 4.0), 0.5);
}

TEST(NormalCdfAt, NeedsAPositiveDeviation) {
    EXPECT_EQ(NormalCdfAt(1.0, 0.0, 0.0), MCMV::gMissingValue);
    EXPECT_EQ(NormalCdfAt(1.0, 0.0, -1.0), MCMV::gMissingValue);
    EXPECT_EQ(NormalCdfAt(1.0, 0.0, kNan), MCMV::gMissingValue);
}

TEST(NormalQuantile, IsZeroAtHalf) { EXPECT_EQ(NormalQuantile(0.5), 0.0); }

TEST(NormalQuantile, IsMissingOutsideTheOpenInterval) {
    for (const double p : {0.0, 1.0, -0.1, 1.1, kNan}) {
        EXPECT_EQ(NormalQuantile(p), MCMV::gMissingValue) << p;
    }
}

TEST(NormalQuantile, InvertsTheDistributionInAllRegions) {
    // The central region ends 0.425 from the middle, the tails split at p = exp(-25).
    for (const double p : {1e-300, 1e-12, std::exp(-25.0), 1.4e-11, 0.074, 0.076, 0.3}) {
        EXPECT_NEAR(NormalCdf(NormalQuantile(p)) / p, 1.0, 1e-12) << p;
    }
}

TEST(NormalQuantileAt, GivesTheMeanAtHalf) { EXPECT_EQ(NormalQuantileAt(0.5, 7.0, 2.0), 7.0); }

TEST(NormalQuantileAt, ShiftsAndScales) {
    EXPECT_EQ(NormalQuantileAt(0.9, 7.0, 2.0), 7.0 + 2.0 * NormalQuantile(0.9));
}

TEST(NormalQuantileAt, IsMissingForABadProbabilityOrDeviation) {
    EXPECT_EQ(NormalQuantileAt(0.0, 0.0, 1.0), MCMV::gMissingValue);
    EXPECT_EQ(NormalQuantileAt(1.0, 0.0, 1.0), MCMV::gMissingValue);
    EXPECT_EQ(NormalQuantileAt(0.5, 0.0, 0.0), MCMV::gMissingValue);
}

TEST(NormalFunctions, GiveMissingForNan) {
    EXPECT_EQ(Erf(kNan), MCMV::gMissingValue);
    EXPECT_EQ(Erfc(kNan), MCMV::gMissingValue);
    EXPECT_EQ(NormalCdf(kNan), MCMV::gMissingValue);
}

}  // namespace
