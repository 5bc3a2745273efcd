#include "featureselect/FSGamma.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "featureselect/FSNormal.h"
#include "featureselect/FSNumericError.h"
#include "host/Records.h"

namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

double Gamma(double x, double a, bool lower, int expectedError = kNUMERIC_OK) {
    int error = -1;
    const double value = IncompleteGamma(x, a, lower, error);
    EXPECT_EQ(error, expectedError) << x << ", " << a;
    return value;
}

TEST(LogGamma, IsExactlyZeroAtOneAndTwo) {
    EXPECT_EQ(LogGamma(1.0), 0.0);
    EXPECT_EQ(LogGamma(2.0), 0.0);
}

TEST(LogGamma, AtOneHalfIsTheLogOfRootPi) {
    EXPECT_EQ(LogGamma(0.5), 0.5 * std::log(std::numbers::pi));
}

TEST(LogGamma, IsMissingWhereItCannotBeFormed) {
    for (const double x : {0.0, -0.5, -3.0, 1e306, kInfinity, kNan}) {
        EXPECT_EQ(LogGamma(x), MCMV::gMissingValue) << x;
    }
}

TEST(LogGamma, TablesMeetAtEveryRow) {
    for (const double edge : {0.25, 0.5, 0.66, 0.87, 1.17, 1.6, 2.0, 2.2, 3.5, 4.0, 5.0, 8.0}) {
        const double below = LogGamma(std::nextafter(edge, 0.0));
        const double above = LogGamma(std::nextafter(edge, 9.0));
        EXPECT_NEAR(above, below, 2e-15 * (1.0 + std::abs(below))) << edge;
    }
}

TEST(LogGamma, FollowsItsRecurrence) {
    for (double x = 0.01; x < 20.0; x += 0.0137) {
        EXPECT_NEAR(LogGamma(x + 1.0), LogGamma(x) + std::log(x), 3e-14) << x;
    }
}

TEST(StirlingError, MeetsAtTheStartOfTheSeries) {
    EXPECT_NEAR(StirlingError(8.0), StirlingError(std::nextafter(8.0, 0.0)), 1e-14);
}

TEST(IncompleteGamma, RefusesAParameterNotAboveZero) {
    EXPECT_EQ(Gamma(1.0, 0.0, true, kNUMERIC_BAD_ARGUMENT), MCMV::gMissingValue);
    EXPECT_EQ(Gamma(1.0, -2.0, false, kNUMERIC_BAD_ARGUMENT), MCMV::gMissingValue);
    EXPECT_EQ(Gamma(1.0, kInfinity, true, kNUMERIC_BAD_ARGUMENT), MCMV::gMissingValue);
    EXPECT_EQ(Gamma(1.0, kNan, true, kNUMERIC_BAD_ARGUMENT), MCMV::gMissingValue);
    EXPECT_EQ(Gamma(kNan, 1.0, true, kNUMERIC_BAD_ARGUMENT), MCMV::gMissingValue);
}

TEST(IncompleteGamma, ParameterIsTestedBeforeTheArgument) {
    EXPECT_EQ(Gamma(0.0, 0.0, true, kNUMERIC_BAD_ARGUMENT), MCMV::gMissingValue);
}

TEST(IncompleteGamma, ArgumentNotAboveZeroIsTheLowerEnd) {
    EXPECT_EQ(Gamma(0.0, 3.0, true), 0.0);
    EXPECT_EQ(Gamma(-1.0, 3.0, false), 1.0);
}

TEST(IncompleteGamma, InfiniteArgumentIsTheUpperEnd) {
    EXPECT_EQ(Gamma(kInfinity, 3.0, true), 1.0);
    EXPECT_EQ(Gamma(kInfinity, 3.0, false), 0.0);
}

TEST(IncompleteGamma, WithParameterOneIsTheExponentialDistribution) {
    EXPECT_EQ(Gamma(2.0, 1.0, false), std::exp(-2.0));
    EXPECT_EQ(Gamma(2.0, 1.0, true), -std::expm1(-2.0));
    EXPECT_DOUBLE_EQ(Gamma(1e-20, 1.0, true), 1e-20);
    EXPECT_EQ(Gamma(1022.0, 1.0, true), 1.0);
    EXPECT_EQ(Gamma(1022.0, 1.0, false), 0.0);
}

TEST(IncompleteGamma, TailsAreComplements) {
    for (const double a : {0.01, 0.5, 1.0, 3.7, 50.0, 1e4}) {
        for (const double x : {0.2 * a, a, 1.01 * a, 2.0 * a, 1.0}) {
            EXPECT_NEAR(Gamma(x, a, true) + Gamma(x, a, false), 1.0, 1e-15) << x << ", " << a;
        }
    }
}

TEST(IncompleteGamma, FarTailsUnderflowToTheirLimits) {
    EXPECT_EQ(Gamma(1.0, 5000.0, true), 0.0);
    EXPECT_EQ(Gamma(1.0, 5000.0, false), 1.0);
    EXPECT_EQ(Gamma(5000.0, 2.0, true), 1.0);
    EXPECT_EQ(Gamma(5000.0, 2.0, false), 0.0);
}

TEST(IncompleteGamma, VeryLargeParametersUseTheNormalApproximations) {
    // From about a = 1.7e7 on the series at x = a would be too long.
    const double a = 2e7;
    EXPECT_EQ(Gamma(a, a, true), NormalCdf(1.0 / (3.0 * std::sqrt(a))));
    // They agree with the exact forms just outside to far more than a p-value needs.
    EXPECT_NEAR(Gamma(a, a, true), Gamma(std::nextafter(a, 3e7), a, true), 1e-12);
    EXPECT_NEAR(Gamma(a, a, false), Gamma(std::nextafter(a, 3e7), a, false), 1e-12);
}

TEST(IncompleteGamma, ArgumentsBeyondTheFractionUseTheNormalApproximations) {
    for (const double a : {0.25, 0.5, 0.75, 3.0}) {
        EXPECT_EQ(Gamma(1e112, a, true), 1.0) << a;
        EXPECT_EQ(Gamma(1e112, a, false), 0.0) << a;
    }
}

TEST(IncompleteGamma, EndsForParametersBeyondAllTables) {
    EXPECT_NEAR(Gamma(1e100, 1e100, true), 0.5, 1e-12);
    EXPECT_NEAR(Gamma(1e100, 1e100, false), 0.5, 1e-12);
    EXPECT_EQ(Gamma(1e307, 1e308, true), 0.0);
    EXPECT_EQ(Gamma(1.0, 1e-300, true), 1.0);
}

TEST(UpperGammaTail, IsWholeUpToZeroAndGoneAtInfinity) {
    for (const double x : {0.0, -3.0}) {
        EXPECT_EQ(UpperGammaTail(x, 2.5).fP, 1.0);
        EXPECT_EQ(UpperGammaTail(x, 2.5).fLogP, 0.0);
    }
    EXPECT_EQ(UpperGammaTail(kInfinity, 2.5).fP, 0.0);
    EXPECT_EQ(UpperGammaTail(kInfinity, 2.5).fLogP, -kInfinity);
}

TEST(UpperGammaTail, IsTheUpperFunctionWhereThatIsExact) {
    for (const double a : {0.25, 1.0, 3.7, 50.0, 1e4}) {
        for (const double x : {0.2 * a, a, 1.01 * a, 1.3 * a, 0.9, 1.1}) {
            const double p = Gamma(x, a, false);
            EXPECT_NEAR(UpperGammaTail(x, a).fP / p, 1.0, 1e-12) << x << ", " << a;
        }
    }
}

TEST(UpperGammaTail, OfAWholeParameterIsAPoissonSum) {
    // Q(3, x) = exp(-x) (1 + x + x^2 / 2)
    for (const double x : {0.1, 1.0, 2.9, 3.1, 40.0, 1e3, 1e5}) {
        const double expected = std::log1p(x + x * x / 2.0) - x;
        EXPECT_NEAR(UpperGammaTail(x, 3.0).fLogP / expected, 1.0, 1e-13) << x;
    }
}

TEST(UpperGammaTail, IsIntegratedWhereTheSeriesWouldBeTooLong) {
    // Q(a, a) = 1/2 - 1 / (3 sqrt(2 pi a)) + O(a^-1.5), where the function itself is approximated.
    for (const double a : {2e7, 1e9, 1e100}) {
        const double expected = 0.5 - 1.0 / (3.0 * std::sqrt(2.0 * std::numbers::pi * a));
        EXPECT_NEAR(UpperGammaTail(a, a).fP, expected, 3e-13) << a;
    }
}

TEST(UpperGammaTail, IsIntegratedWhereTheFractionWouldOverflow) {
    // log Q(a, x) is -x + (a - 1) log(x) - LogGamma(a), all but the first far below rounding.
    for (const double x : {1e99, 1e101, 1e112, 1e300}) {
        EXPECT_DOUBLE_EQ(UpperGammaTail(x, 3.0).fLogP, -x);
        EXPECT_EQ(UpperGammaTail(x, 3.0).fP, 0.0);
    }
}

}  // namespace
