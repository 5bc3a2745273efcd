#include "featureselect/FSQuantiles.h"

#include <gtest/gtest.h>

#include <limits>

#include "featureselect/FSBeta.h"
#include "featureselect/FSDistributions.h"
#include "featureselect/FSNumericError.h"
#include "host/Records.h"

namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

TEST(ChiSquareQuantile, IsZeroAtZero) { EXPECT_EQ(ChiSquareQuantile(0.0, 3.0), 0.0); }

TEST(ChiSquareQuantile, IsMissingForBadArguments) {
    for (const double p : {-0.1, 1.0, 1.5, kNan}) {
        EXPECT_EQ(ChiSquareQuantile(p, 3.0), MCMV::gMissingValue) << p;
    }
    for (const double df : {0.0, -1.0, kInfinity, kNan}) {
        EXPECT_EQ(ChiSquareQuantile(0.5, df), MCMV::gMissingValue) << df;
    }
}

TEST(ChiSquareQuantile, InvertsTheDistribution) {
    // 5e-7 of the value is where the steps stop; the last one has gained several digits more.
    for (const double df : {0.05, 0.2, 0.32, 0.33, 1.0, 2.0, 7.5, 100.0, 1e5}) {
        for (const double p : {1e-10, 0.001, 0.05, 0.3, 0.5, 0.8, 0.99, 1.0 - 1e-9}) {
            const double x = ChiSquareQuantile(p, df);
            ASSERT_NE(x, MCMV::gMissingValue) << p << ", " << df;
            if (x >= 5e-7) {
                EXPECT_NEAR(ChiSquareCdf(x, df) / p, 1.0, 1e-9) << p << ", " << df;
            }
        }
    }
}

TEST(ChiSquareQuantile, StartBelowTheToleranceIsTheResult) {
    // Close to 0 the distribution is a power of x, which the start inverts.
    const double x = ChiSquareQuantile(1e-12, 2.0);
    EXPECT_LT(x, 5e-7);
    EXPECT_NEAR(x / 2e-12, 1.0, 1e-9);
}

TEST(ChiSquareQuantileBisect, HalvesToARelativeWidthOfOneInAHundredMillion) {
    for (const double start : {1e-5, 3.0, 1e6, 0.0, -2.0, kNan}) {
        int error = -1;
        const double x = ChiSquareQuantileBisect(0.95, 3.0, start, error);
        EXPECT_EQ(error, kNUMERIC_OK) << start;
        EXPECT_NEAR(x / 7.814727903251178, 1.0, 1e-8) << start;
    }
}

TEST(ChiSquareQuantileBisect, ReportsBadArguments) {
    for (const double p : {0.0, 1.0, -1.0, kNan}) {
        int error = -1;
        EXPECT_EQ(ChiSquareQuantileBisect(p, 3.0, 1.0, error), MCMV::gMissingValue);
        EXPECT_EQ(error, kNUMERIC_BAD_ARGUMENT) << p;
    }
    int error = -1;
    EXPECT_EQ(ChiSquareQuantileBisect(0.5, 0.0, 1.0, error), MCMV::gMissingValue);
    EXPECT_EQ(error, kNUMERIC_BAD_ARGUMENT);
}

TEST(ChiSquareQuantileBisect, ReportsThatThereIsNoBracket) {
    // The root, about p^(2 / df), lies far below the smallest double.
    int error = -1;
    EXPECT_EQ(ChiSquareQuantileBisect(1e-10, 1e-3, 1.0, error), MCMV::gMissingValue);
    EXPECT_EQ(error, kNUMERIC_NO_RESULT);
}

TEST(BetaQuantile, TrivialCases) {
    EXPECT_EQ(BetaQuantile(0.0, 2.0, 3.0), 0.0);
    EXPECT_EQ(BetaQuantile(1.0, 2.0, 3.0), 1.0);
    EXPECT_EQ(BetaQuantile(0.5, 7.0, 7.0), 0.5);
    EXPECT_DOUBLE_EQ(BetaQuantile(1.0 / 3.0, 0.5, 0.5), 0.25);
    EXPECT_DOUBLE_EQ(BetaQuantile(0.19, 1.0, 2.0), 0.1);
    EXPECT_DOUBLE_EQ(BetaQuantile(0.01, 2.0, 1.0), 0.1);
    EXPECT_EQ(BetaQuantile(0.3, 2e20, 2.0), 1.0);
}

TEST(BetaQuantile, TrivialCasesComeBeforeTheTestOfTheParameters) {
    EXPECT_EQ(BetaQuantile(0.0, -1.0, 0.0), 0.0);
    EXPECT_EQ(BetaQuantile(1.0, -1.0, 0.0), 1.0);
    EXPECT_EQ(BetaQuantile(0.5, -1.0, -1.0), 0.5);
    EXPECT_EQ(BetaQuantile(0.3, 2.0, 0.0), 1.0);
}

TEST(BetaQuantile, IsMissingForBadArguments) {
    EXPECT_EQ(BetaQuantile(-0.1, 2.0, 3.0), MCMV::gMissingValue);
    EXPECT_EQ(BetaQuantile(1.1, 2.0, 3.0), MCMV::gMissingValue);
    EXPECT_EQ(BetaQuantile(kNan, 2.0, 3.0), MCMV::gMissingValue);
    EXPECT_EQ(BetaQuantile(0.3, -2.0, 3.0), MCMV::gMissingValue);
    EXPECT_EQ(BetaQuantile(0.3, kNan, 3.0), MCMV::gMissingValue);
    EXPECT_EQ(BetaQuantile(0.3, 3.0, kInfinity), MCMV::gMissingValue);
    EXPECT_EQ(BetaQuantile(0.3, 1.0, -3.0), MCMV::gMissingValue);
    EXPECT_EQ(BetaQuantile(0.3, -3.0, 1.0), MCMV::gMissingValue);
}

TEST(BetaQuantile, InvertsTheIncompleteBetaFunction) {
    for (const double a : {0.2, 0.5, 1.5, 10.0, 2000.0}) {
        for (const double b : {0.2, 0.5, 1.5, 10.0, 2000.0}) {
            for (const double p : {0.01, 0.2, 0.5, 0.77, 0.99}) {
                const double x = BetaQuantile(p, a, b);
                // Where the search ends, at steps of 1e-10, says little about p next to an end.
                if (x <= 1e-8 || x >= 0.9999999) continue;
                int error = -1;
                EXPECT_NEAR(IncompleteBeta(x, a, b, error), p, 1e-8) << p << ", " << a << ", " << b;
            }
        }
    }
}

TEST(BetaQuantile, OnlyTheFirstPointIsHeldAwayFromTheEnds) {
    // The quantile is about (p * a * B(a, b))^(1 / a), which lies below the lowest first point.
    EXPECT_NEAR(BetaQuantile(0.01, 0.2, 0.2) / 2.4779e-9, 1.0, 1e-3);
    EXPECT_NEAR((1.0 - BetaQuantile(0.99, 0.2, 0.2)) / 2.4779e-9, 1.0, 1e-3);
}

TEST(BetaQuantile, StopsWithinOneInTenBillionOfTheQuantile) {
    // References of 40 digits: 1.3955e-23, and 1 - 1.3955e-13.
    const double low = BetaQuantile(1e-6, 0.3, 500.0);
    EXPECT_GT(low, 0.0);
    EXPECT_NEAR(low, 1.3955e-23, 1e-10);
    const double high = BetaQuantile(0.999, 500.0, 0.3);
    EXPECT_LT(high, 1.0);
    EXPECT_NEAR(high, 1.0 - 1.3955e-13, 1e-10);
}

TEST(FQuantile, IsZeroAtZero) { EXPECT_EQ(FQuantile(0.0, 3.0, 4.0), 0.0); }

TEST(FQuantile, IsMissingForBadArguments) {
    for (const double p : {-0.1, 1.0, kNan}) {
        EXPECT_EQ(FQuantile(p, 3.0, 4.0), MCMV::gMissingValue) << p;
    }
    EXPECT_EQ(FQuantile(0.5, 0.0, 4.0), MCMV::gMissingValue);
    EXPECT_EQ(FQuantile(0.5, 3.0, -1.0), MCMV::gMissingValue);
}

TEST(FQuantile, IsMissingWhenTheBetaQuantileIsOne) {
    EXPECT_EQ(FQuantile(0.3, 2e20, 1.0), MCMV::gMissingValue);
}

TEST(FQuantile, GivesTheTabledPercentile) {
    EXPECT_NEAR(FQuantile(0.95, 3.0, 10.0), 3.7082648190468435, 1e-10);
}

TEST(TQuantile, IsZeroAtHalfAndOddAroundIt) {
    EXPECT_EQ(TQuantile(0.5, 9.0), 0.0);
    EXPECT_EQ(TQuantile(0.25, 9.0), -TQuantile(0.75, 9.0));
}

TEST(TQuantile, IsMissingForBadArguments) {
    for (const double p : {0.0, 1.0, -0.5, kNan}) {
        EXPECT_EQ(TQuantile(p, 5.0), MCMV::gMissingValue) << p;
    }
    EXPECT_EQ(TQuantile(0.3, 0.0), MCMV::gMissingValue);
    EXPECT_EQ(TQuantile(0.5, 0.0), MCMV::gMissingValue);
}

TEST(TQuantile, GivesTheTabledPercentile) {
    EXPECT_NEAR(TQuantile(0.975, 10.0), 2.2281388519649385, 1e-9);
    EXPECT_DOUBLE_EQ(TQuantile(0.75, 1.0), 1.0);
}

TEST(TQuantile, TheStopOfTheBetaQuantileLimitsItNearZero) {
    // x = df / (df + t^2) is off by up to 1e-10, so t by up to sqrt(1e-10 df), here 0.01.
    EXPECT_NEAR(TQuantile(0.5001, 1e6), 0.00025066, 0.01);
}

}  // namespace
