#include "featureselect/FSDistributions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host/Records.h"

namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();
const double kBadDf[] = {0.0, -1.0, kInfinity, kNan, MCMV::gMissingValue};

TEST(ChiSquareCdf, IsZeroAtZero) {
    EXPECT_EQ(ChiSquareCdf(0.0, 3.0), 0.0);
    EXPECT_EQ(ChiSquareCdf(-4.0, 3.0), 0.0);
}

TEST(ChiSquareCdf, IsMissingWithoutDegreesOfFreedom) {
    EXPECT_EQ(ChiSquareCdf(5.0, 0.0), MCMV::gMissingValue);
    for (const double df : kBadDf) EXPECT_EQ(ChiSquareCdf(0.0, df), MCMV::gMissingValue) << df;
    EXPECT_EQ(ChiSquareCdf(kNan, 3.0), MCMV::gMissingValue);
}

TEST(ChiSquareCdf, WithTwoDegreesIsExponential) {
    EXPECT_DOUBLE_EQ(ChiSquareCdf(3.0, 2.0), 1.0 - std::exp(-1.5));
    EXPECT_DOUBLE_EQ(ChiSquareCdf(2e-10, 2.0), -std::expm1(-1e-10));
}

TEST(ChiSquareCdf, IsOneAtInfinity) { EXPECT_EQ(ChiSquareCdf(kInfinity, 7.0), 1.0); }

TEST(FCdf, AtOneWithEqualDegreesIsHalfByTheComplement) {
    EXPECT_DOUBLE_EQ(FCdf(1.0, 4.0, 4.0), 0.5);
    EXPECT_DOUBLE_EQ(FCdf(std::nextafter(1.0, 0.0), 4.0, 4.0), 0.5);
}

TEST(FCdf, IsZeroAtZero) {
    EXPECT_EQ(FCdf(0.0, 2.0, 3.0), 0.0);
    EXPECT_EQ(FCdf(-1.0, 2.0, 3.0), 0.0);
}

TEST(FCdf, IsMissingWithoutDegreesOfFreedom) {
    for (const double df : kBadDf) {
        EXPECT_EQ(FCdf(2.0, df, 3.0), MCMV::gMissingValue) << df;
        EXPECT_EQ(FCdf(0.0, 3.0, df), MCMV::gMissingValue) << df;
    }
    EXPECT_EQ(FCdf(kNan, 2.0, 3.0), MCMV::gMissingValue);
}

TEST(FCdf, IsContinuousWhereTheFormsMeet) {
    for (const double df1 : {0.5, 1.0, 2.0, 17.0, 4000.0}) {
        for (const double df2 : {0.5, 1.0, 2.0, 17.0, 4000.0}) {
            EXPECT_NEAR(FCdf(1.0, df1, df2), FCdf(std::nextafter(1.0, 0.0), df1, df2), 2e-14)
                << df1 << ", " << df2;
        }
    }
}

TEST(FCdf, TheReciprocalStatisticHasTheComplement) {
    for (const double f : {0.25, 0.5, 2.0, 8.0}) {
        EXPECT_NEAR(FCdf(f, 3.0, 9.0) + FCdf(1.0 / f, 9.0, 3.0), 1.0, 1e-15) << f;
    }
}

TEST(FCdf, EndsAtExtremeArguments) {
    EXPECT_EQ(FCdf(kInfinity, 2.5, 3.0), 1.0);
    EXPECT_EQ(FCdf(1e300, 2.5, 30.0), 1.0);
    EXPECT_EQ(FCdf(1e-300, 2.5, 30.0), 0.0);
    // The ratio of the degrees of freedom is infinite.
    EXPECT_EQ(FCdf(0.5, 1e-200, 1e200), 0.0);
    EXPECT_EQ(FCdf(2.0, 1e-200, 1e200), 0.0);
}

TEST(TCdf, TestsDegreesOfFreedomBeforeTheStatistic) {
    EXPECT_EQ(TCdf(0.0, 0.0), MCMV::gMissingValue);
    for (const double df : kBadDf) EXPECT_EQ(TCdf(0.0, df), MCMV::gMissingValue) << df;
    EXPECT_EQ(TCdf(kNan, 3.0), MCMV::gMissingValue);
}

TEST(TCdf, IsHalfAtZero) { EXPECT_EQ(TCdf(0.0, 12.0), 0.5); }

TEST(TCdf, WithOneDegreeIsTheCauchyDistribution) {
    EXPECT_EQ(TCdf(1.0, 1.0), 0.75);
    EXPECT_DOUBLE_EQ(TCdf(-1.0, 1.0), 0.25);
    EXPECT_DOUBLE_EQ(TCdf(-1e10, 1.0), 1e-10 / std::acos(-1.0));
}

TEST(TCdf, AtOneTakesTheCentralFormAndAboveOneTheTail) {
    // Two degrees of freedom have a closed form: 0.5 + t / (2 sqrt(2 + t^2)).
    for (const double t : {1.0, std::nextafter(1.0, 2.0), -1.0, std::nextafter(-1.0, -2.0), 0.4}) {
        EXPECT_NEAR(TCdf(t, 2.0), 0.5 + t / (2.0 * std::sqrt(2.0 + t * t)), 3e-16) << t;
    }
    for (const double df : {0.5, 1.5, 3.0, 40.0, 1e5}) {
        EXPECT_NEAR(TCdf(1.0, df), TCdf(std::nextafter(1.0, 2.0), df), 1e-14) << df;
    }
}

TEST(TCdf, BelowMinusOneIsTheTailItself) {
    EXPECT_DOUBLE_EQ(TCdf(-2.0, 4.0), 0.058058261758407794);
    EXPECT_DOUBLE_EQ(TCdf(2.0, 4.0), 1.0 - 0.058058261758407794);
    EXPECT_GT(TCdf(-1e4, 20.0), 0.0);
}

TEST(TCdf, IsTheSquareRootOfTheFDistribution) {
    for (const double df : {0.7, 2.0, 5.0, 300.0}) {
        for (const double t : {0.3, 1.0, 2.5}) {
            EXPECT_NEAR(2.0 * TCdf(t, df) - 1.0, FCdf(t * t, 1.0, df), 1e-14) << t << ", " << df;
        }
    }
}

TEST(TCdf, EndsAtInfinity) {
    EXPECT_EQ(TCdf(kInfinity, 3.0), 1.0);
    EXPECT_EQ(TCdf(-kInfinity, 3.0), 0.0);
    EXPECT_EQ(TCdf(1e-300, 3.0), 0.5);
    EXPECT_EQ(TCdf(-1e-310, 3.0), 0.5);
}

}  // namespace
