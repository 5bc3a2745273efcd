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

TEST(FCdf, AtOneIsAlreadyTheComplement) {
    // 1 - q with q above a half is a multiple of 2^-53, which a small value computed directly, as
    // next below 1, is not. Expected: ball arithmetic.
    const double grid = std::ldexp(1.0, -53);
    const double atOne = FCdf(1.0, 3.0, 0.001);
    const double below = FCdf(std::nextafter(1.0, 0.0), 3.0, 0.001);
    EXPECT_EQ(std::fmod(atOne, grid), 0.0);
    EXPECT_NE(std::fmod(below, grid), 0.0);
    EXPECT_NEAR(atOne, 0.003689845332896817, 4.0 * grid);
    EXPECT_NEAR(below, 0.003689845332896817, 4.0 * grid);
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

void ExpectTail(const FSTail& tail, double p, double logP) {
    EXPECT_EQ(tail.fP, p);
    EXPECT_EQ(tail.fLogP, logP);
}

void ExpectMissing(const FSTail& tail) {
    ExpectTail(tail, MCMV::gMissingValue, MCMV::gMissingValue);
}

TEST(UpperTails, AreWholeForAStatisticNotAboveZero) {
    for (const double statistic : {0.0, -0.0, -4.0, -kInfinity}) {
        ExpectTail(ChiSquareTail(statistic, 3.0), 1.0, 0.0);
        ExpectTail(FTail(statistic, 2.0, 3.0), 1.0, 0.0);
    }
    ExpectTail(TTail(0.0, 12.0), 1.0, 0.0);
    ExpectTail(TTail(-0.0, 12.0), 1.0, 0.0);
}

TEST(UpperTails, AreGoneAtInfinity) {
    for (const double df : {0.5, 1.0, 2.0, 1e8}) {
        ExpectTail(ChiSquareTail(kInfinity, df), 0.0, -kInfinity);
        ExpectTail(FTail(kInfinity, df, 3.0), 0.0, -kInfinity);
        ExpectTail(FTail(kInfinity, 3.0, df), 0.0, -kInfinity);
        ExpectTail(TTail(kInfinity, df), 0.0, -kInfinity);
        ExpectTail(TTail(-kInfinity, df), 0.0, -kInfinity);
    }
}

TEST(UpperTails, AreMissingForBadArguments) {
    for (const double df : kBadDf) {
        ExpectMissing(ChiSquareTail(0.0, df));
        ExpectMissing(FTail(0.0, df, 3.0));
        ExpectMissing(FTail(0.0, 3.0, df));
        ExpectMissing(TTail(0.0, df));
    }
    ExpectMissing(ChiSquareTail(kNan, 3.0));
    ExpectMissing(FTail(kNan, 2.0, 3.0));
    ExpectMissing(TTail(kNan, 3.0));
}

TEST(UpperTails, CompleteTheDistributionFunctions) {
    for (const double df : {0.5, 1.0, 2.0, 17.0, 4e3, 1e6}) {
        for (const double x : {0.1, 0.9, 1.0, 1.1, 2.0}) {
            EXPECT_NEAR(ChiSquareCdf(x * df, df) + ChiSquareTail(x * df, df).fP, 1.0, 1e-13);
            EXPECT_NEAR(FCdf(x, df, 3.5) + FTail(x, df, 3.5).fP, 1.0, 1e-13) << x << ", " << df;
            EXPECT_NEAR(FCdf(x, 3.5, df) + FTail(x, 3.5, df).fP, 1.0, 1e-13) << x << ", " << df;
            EXPECT_NEAR(2.0 * TCdf(-x, df), TTail(x, df).fP, 1e-13) << x << ", " << df;
        }
    }
}

TEST(ChiSquareTail, WithTwoDegreesIsExponential) {
    ExpectTail(ChiSquareTail(3.0, 2.0), std::exp(-1.5), -1.5);
    ExpectTail(ChiSquareTail(2e8, 2.0), 0.0, -1e8);
    ExpectTail(ChiSquareTail(1e300, 2.0), 0.0, -5e299);
}

TEST(FTail, WithTwoDegreesOnTopIsAPower) {
    for (const double df2 : {0.5, 1.0, 2.0, 30.0, 1e8}) {
        for (const double f : {1e-300, 0.5, 1.0, 40.0, 1e300}) {
            const double expected = -df2 / 2.0 * std::log1p(2.0 * f / df2);
            // At 1e-300 the exponent is near 690, and one of its roundings is 1e-13.
            EXPECT_NEAR(FTail(f, 2.0, df2).fLogP / expected, 1.0, 1e-13) << f << ", " << df2;
        }
    }
}

TEST(TTail, IsEvenToTheLastBit) {
    for (const double df : {0.5, 1.0, 2.0, 30.5, 1e8}) {
        for (const double t : {1e-300, 0.3, 1.0, 1.1, 25.0, 1e300}) {
            ExpectTail(TTail(-t, df), TTail(t, df).fP, TTail(t, df).fLogP);
        }
    }
}

TEST(TTail, WithOneDegreeIsTheCauchyDistribution) {
    EXPECT_DOUBLE_EQ(TTail(1.0, 1.0).fP, 0.5);
    EXPECT_DOUBLE_EQ(TTail(std::nextafter(1.0, 2.0), 1.0).fP, 0.5);
    EXPECT_DOUBLE_EQ(TTail(1e300, 1.0).fP, 2e-300 / std::acos(-1.0));
    EXPECT_DOUBLE_EQ(TTail(1e-300, 1.0).fLogP, -2e-300 / std::acos(-1.0));
}

TEST(TTail, WithTwoDegreesHasAClosedForm) {
    for (const double t : {0.01, 1.0, 3.0, 1e5, 1e100}) {
        const double root = std::hypot(std::sqrt(2.0), t);
        // At 1e100 the exponent is near 460, and one of its roundings is 6e-14.
        EXPECT_NEAR(TTail(t, 2.0).fP / (2.0 / root / (root + t)), 1.0, 1e-13) << t;
    }
}

TEST(TTail, HasALogarithmForACorrelationOneRoundingBelowOne) {
    // r^2 = 1 - 2^-53 on a million rows. Expected: ball arithmetic.
    const double df = 999998.0;
    const FSTail tail = TTail(std::sqrt(df) * std::pow(2.0, 26.5), df);
    EXPECT_EQ(tail.fP, 0.0);
    EXPECT_NEAR(tail.fLogP / -18368370.681583863, 1.0, 1e-14);
}

TEST(UpperTails, FallAsTheStatisticGrows) {
    // Steps far above rounding, across all places where one form of the functions meets another.
    for (const double df : {0.5, 1.0, 2.0, 3.0, 77.7, 1e5, 4e7, 1e9}) {
        FSTail chiSquare = ChiSquareTail(0.0, df), f = chiSquare, reverse = chiSquare, t = f;
        const double deviation = 1.0 / std::sqrt(df);
        for (int step = -1500; step <= 3000; ++step) {
            const double x = 1.0 + step * 0.01 * deviation;
            if (!(x > 0.1)) continue;
            const FSTail before[] = {chiSquare, f, reverse, t};
            chiSquare = ChiSquareTail(x * df, df);
            f = FTail(x, df, 2.0 * df);
            reverse = FTail(x, 3.0, df);
            t = TTail(x, df);
            ASSERT_LT(chiSquare.fLogP, before[0].fLogP) << x << ", " << df;
            ASSERT_LT(f.fLogP, before[1].fLogP) << x << ", " << df;
            ASSERT_LT(reverse.fLogP, before[2].fLogP) << x << ", " << df;
            ASSERT_LT(t.fLogP, before[3].fLogP) << x << ", " << df;
        }
    }
}

TEST(UpperTails, EndAtExtremeDegreesOfFreedom) {
    // Beyond rounding the distributions are the normal and the unit step. From about 1e32 on the
    // 31 digits of the beta function are not enough.
    EXPECT_NEAR(TTail(1.0, 1e30).fP, std::erfc(std::sqrt(0.5)), 1e-14);
    EXPECT_NEAR(FTail(1.0, 1e30, 1e30).fP, 0.5, 1e-12);
    EXPECT_NEAR(ChiSquareTail(1e100, 1e100).fP, 0.5, 1e-12);
}

}  // namespace
