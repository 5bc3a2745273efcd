#include "featureselect/FSBeta.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "featureselect/FSNumericError.h"
#include "host/Records.h"

namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

double Beta(double x, double a, double b, int expectedError = kNUMERIC_OK) {
    int error = -1;
    const double value = IncompleteBeta(x, a, b, error);
    EXPECT_EQ(error, expectedError) << x << ", " << a << ", " << b;
    return value;
}

TEST(IncompleteBeta, RefusesParametersNotAboveZero) {
    for (const double bad : {0.0, -1.0, kInfinity, kNan}) {
        EXPECT_EQ(Beta(0.5, bad, 1.0, kNUMERIC_BAD_ARGUMENT), MCMV::gMissingValue) << bad;
        EXPECT_EQ(Beta(0.5, 1.0, bad, kNUMERIC_BAD_ARGUMENT), MCMV::gMissingValue) << bad;
    }
    EXPECT_EQ(Beta(kNan, 2.0, 2.0, kNUMERIC_BAD_ARGUMENT), MCMV::gMissingValue);
    EXPECT_EQ(Beta(0.0, 0.0, 2.0, kNUMERIC_BAD_ARGUMENT), MCMV::gMissingValue);
}

TEST(IncompleteBeta, IsZeroAndOneAtAndBeyondTheEnds) {
    EXPECT_EQ(Beta(0.0, 2.0, 3.0), 0.0);
    EXPECT_EQ(Beta(-0.5, 2.0, 3.0), 0.0);
    EXPECT_EQ(Beta(1.0, 2.0, 3.0), 1.0);
    EXPECT_EQ(Beta(1.5, 2.0, 3.0), 1.0);
    EXPECT_EQ(Beta(kInfinity, 2.0, 3.0), 1.0);
}

TEST(IncompleteBeta, WithBothParametersOneIsItsArgument) { EXPECT_EQ(Beta(0.3, 1.0, 1.0), 0.3); }

TEST(IncompleteBeta, WithOneParameterOneIsAPower) {
    EXPECT_DOUBLE_EQ(Beta(0.3, 1.0, 4.0), 1.0 - std::pow(0.7, 4.0));
    EXPECT_DOUBLE_EQ(Beta(0.3, 4.0, 1.0), std::pow(0.3, 4.0));
    EXPECT_DOUBLE_EQ(Beta(1e-20, 1.0, 3.0), 3e-20);  // 1 - (1 - x)^3
    EXPECT_EQ(Beta(0.5, 1.0, 2000.0), 1.0);
    EXPECT_EQ(Beta(0.5, 2000.0, 1.0), 0.0);
}

TEST(IncompleteBeta, IsHalfInTheMiddleOfEqualParameters) {
    for (const double a : {0.3, 0.5, 1.0, 2.0, 77.0, 5e5}) {
        EXPECT_NEAR(Beta(0.5, a, a), 0.5, 1e-14) << a;
    }
}

TEST(IncompleteBeta, ArcsineLaw) {
    // a = b = 0.5: the series at the far end, or the fraction when x is small.
    for (const double x : {1e-9, 1e-4, 0.01, 0.3, 0.9, 0.99999}) {
        EXPECT_NEAR(Beta(x, 0.5, 0.5) / (std::asin(std::sqrt(x)) / std::asin(1.0)), 1.0, 1e-12)
            << x;
    }
}

TEST(IncompleteBeta, SwappingParametersComplements) {
    std::mt19937 random(20240611);  // fixed, so that a failure can be repeated
    std::uniform_real_distribution<double> exponent(-1.0, 5.0), unit(0.0, 1.0);
    for (int i = 0; i < 500; ++i) {
        const double a = std::pow(10.0, exponent(random));
        const double b = std::pow(10.0, exponent(random));
        // A multiple of 2^-20, so that 1 - x is exact.
        const double x = std::ldexp(std::floor(std::ldexp(unit(random), 20)), -20);
        EXPECT_NEAR(Beta(x, a, b) + Beta(1.0 - x, b, a), 1.0, 1e-13)
            << x << ", " << a << ", " << b << ", seed 20240611";
    }
}

TEST(IncompleteBeta, UnderflowsToItsEnds) {
    EXPECT_EQ(Beta(1e-3, 500.0, 2.0), 0.0);
    EXPECT_EQ(Beta(0.999, 2.0, 500.0), 1.0);
}

TEST(IncompleteBeta, FallsBackToTheNormalApproximationWhenTheFractionDoesNotSettle) {
    // Close to the mean of parameters of 5e9 the fraction needs more than its 10,000 rounds.
    // Expected: the approximation's formula at 40 digits.
    const double approximation = 0.4995580175409687;
    EXPECT_NEAR(Beta(0.499999995, 5e9, 5e9), approximation, 1e-9);
    const double exact = 0.4996010577840943;
    EXPECT_NEAR(std::abs(Beta(0.499999995, 5e9, 5e9) - exact), 4.3e-5, 1e-6);
    // The complement flag turns the deviate, it doesn't complement once more.
    EXPECT_NEAR(Beta(0.500000005, 5e9, 5e9), 1.0 - approximation, 1e-9);
}

TEST(IncompleteBetaOfRatio, AgreesWithTheRatioAsOneNumber) {
    int error = -1;
    EXPECT_EQ(IncompleteBetaOfRatio(3.0, 5.0, 2.5, 7.0, error), Beta(0.375, 2.5, 7.0));
    EXPECT_EQ(error, kNUMERIC_OK);
}

TEST(IncompleteBetaOfRatio, InfinitePartsAreTheEnds) {
    int error = -1;
    EXPECT_EQ(IncompleteBetaOfRatio(1.0, kInfinity, 2.0, 3.0, error), 0.0);
    EXPECT_EQ(IncompleteBetaOfRatio(kInfinity, 1.0, 2.0, 3.0, error), 1.0);
    EXPECT_EQ(IncompleteBetaOfRatio(kInfinity, kInfinity, 2.0, 3.0, error), MCMV::gMissingValue);
    EXPECT_EQ(error, kNUMERIC_BAD_ARGUMENT);
}

TEST(PeizerPrattG, HasItsLimits) {
    EXPECT_EQ(PeizerPrattG(0.0), 1.0);
    EXPECT_EQ(PeizerPrattG(1.0), 0.0);
    EXPECT_EQ(PeizerPrattG(1e300), -1.0);
    EXPECT_NEAR(PeizerPrattG(1e150), -1.0, 1e-14);
}

TEST(PeizerPrattG, IsMissingBelowZero) {
    EXPECT_EQ(PeizerPrattG(-1e-300), MCMV::gMissingValue);
    EXPECT_EQ(PeizerPrattG(kNan), MCMV::gMissingValue);
}

TEST(PeizerPrattG, FollowsItsFormula) {
    for (const double x : {1e-6, 0.1, 0.4, 0.7, 1.4, 2.5, 9.0, 1e3}) {
        const double plain = (1.0 - x * x + 2.0 * x * std::log(x)) / ((1.0 - x) * (1.0 - x));
        EXPECT_NEAR(PeizerPrattG(x), plain, 1e-14) << x;
    }
}

TEST(PeizerPrattG, KeepsItsDigitsNextToOne) {
    // Near 1 it is (1 - x) / 3 + (1 - x)^2 / 6 + ...
    for (const double u : {1e-3, -1e-3, 1e-6, -1e-9}) {
        EXPECT_NEAR(PeizerPrattG(1.0 + u), -u / 3.0 + u * u / 6.0, 1e-15 + std::abs(u * u * u))
            << u;
    }
}

TEST(BetaTailOfRatio, IsTheFunctionWithItsLogarithm) {
    for (const double a : {0.3, 1.0, 2.5, 40.0}) {
        for (const double b : {0.3, 1.0, 7.0, 40.0}) {
            const FSTail tail = BetaTailOfRatio(3.0, 5.0, std::log(0.6), a, b);
            EXPECT_NEAR(tail.fP / Beta(0.375, a, b), 1.0, 1e-12) << a << ", " << b;
            EXPECT_NEAR(tail.fLogP, std::log(tail.fP), 1e-14) << a << ", " << b;
        }
    }
}

TEST(BetaTailOfRatio, IsIntegratedWhereTheFractionDoesNotSettle) {
    // The function itself is off by 4.3e-5 here. Expected: ball arithmetic.
    const double x = 0.499999995;
    const FSDoubleDouble y = FSDoubleDouble::ExactSum(1.0, -x);
    const double logRatio = std::log(x) - std::log1p(-x);
    EXPECT_NEAR(BetaTailOfRatio(x, y, logRatio, 5e9, 5e9).fP / 0.4996010577840943, 1.0, 1e-13);
    EXPECT_NEAR(BetaTailOfRatio(y, x, -logRatio, 5e9, 5e9).fLogP / std::log1p(-0.4996010577840943),
                1.0, 1e-13);
}

TEST(BetaTailOfRatio, TakesAShareThatUnderflowsFromItsLogarithm) {
    // I_x(a, 2) = x^a (1 + a (1 - x)), with x = 1e-600 and a = 0.25 and 4.
    const double logRatio = -600.0 * std::numbers::ln10;
    for (const double a : {0.25, 4.0}) {
        const FSTail tail = BetaTailOfRatio(1e-300, 1e300, logRatio, a, 2.0);
        EXPECT_NEAR(tail.fLogP / (a * logRatio + std::log1p(a)), 1.0, 1e-15) << a;
        const FSTail complement = BetaTailOfRatio(1e300, 1e-300, -logRatio, 2.0, a);
        const double expected = -std::exp(a * logRatio + std::log1p(a));  // 0 for the larger a
        EXPECT_NEAR(complement.fLogP, expected, -1e-12 * expected) << a;
        EXPECT_EQ(complement.fP, 1.0);
    }
}

}  // namespace
