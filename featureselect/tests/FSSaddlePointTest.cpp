#include "featureselect/FSSaddlePoint.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(LogRatioMinusChange, IsZeroAtZero) { EXPECT_EQ(LogRatioMinusChange(0.0, 1.0), 0.0); }

TEST(LogRatioMinusChange, KeepsItsDigitsNearZero) {
    // -u^2/2 + u^3/3 - u^4/4 + ...
    for (const double u : {1e-12, -1e-8, 1e-5, -1e-4}) {
        const double expected = u * u * (-1.0 / 2.0 + u * (1.0 / 3.0 - u * (1.0 / 4.0 - u / 5.0)));
        EXPECT_NEAR(LogRatioMinusChange(u, 1.0 + u) / expected, 1.0, 1e-15) << u;
    }
}

TEST(LogRatioMinusChange, SeriesAndLogarithmMeet) {
    for (const double u : {-2.0 / 3.0, 2.0}) {
        const double inside = u * 0.999999, outside = u * 1.000001;
        EXPECT_NEAR(LogRatioMinusChange(inside, 1.0 + inside), std::log1p(inside) - inside, 1e-15);
        EXPECT_NEAR(LogRatioMinusChange(outside, 1.0 + outside), std::log1p(outside) - outside,
                    1e-15);
    }
}

TEST(LogRatioMinusChange, UsesTheGivenRatioFarFromZero) {
    // u alone can't tell a ratio of 1e-30 from 0.
    EXPECT_DOUBLE_EQ(LogRatioMinusChange(-1.0, 1e-30), std::log(1e-30) + 1.0);
}

TEST(ExpMinusLinear, KeepsItsDigitsNearZero) {
    EXPECT_EQ(ExpMinusLinear(0.0), 0.0);
    for (const double v : {1e-150, 1e-9, -1e-9}) {
        EXPECT_NEAR(ExpMinusLinear(v) / (v * v / 2.0 * (1.0 + v / 3.0)), 1.0, 1e-15) << v;
    }
    EXPECT_NEAR(ExpMinusLinear(0.3), 0.0498588075760031, 1e-17);
    EXPECT_NEAR(ExpMinusLinear(-0.3), 0.040818220681717865, 1e-17);
}

TEST(ExpMinusLinear, SeriesAndExponentialMeet) {
    for (const double v : {-0.5, 0.5}) {
        EXPECT_NEAR(ExpMinusLinear(v * (1.0 + 1e-15)) / ExpMinusLinear(v), 1.0, 1e-14) << v;
    }
    EXPECT_EQ(ExpMinusLinear(-50.0), std::expm1(-50.0) + 50.0);
}

TEST(LogMeanMinusLinear, OfEqualSharesIsTheLogOfACosh) {
    for (const double v : {1e-100, 1e-8, 0.01, 0.49, 0.51, 3.0, -3.0}) {
        const double half = std::sinh(v / 4.0);  // cosh(v / 2) = 1 + 2 sinh(v / 4)^2
        const double expected = std::log1p(2.0 * half * half);
        EXPECT_NEAR(LogMeanMinusLinear(0.5, 0.5, v) / expected, 1.0, 1e-14) << v;
    }
    EXPECT_DOUBLE_EQ(LogMeanMinusLinear(0.5, 0.5, 3e3), 1500.0 - std::log(2.0));
    EXPECT_DOUBLE_EQ(LogMeanMinusLinear(0.5, 0.5, -3e3), 1500.0 - std::log(2.0));
}

TEST(LogMeanMinusLinear, AgreesWithFortyDigits) {
    // mpmath, log1p(s expm1(v)) - s v.
    const struct {
        double fShare, fV, fExpected;
    } cases[] = {{1e-9, 0.3, 4.98588075148025106e-11},
                 {1e-9, -0.3, 4.0818220648130268361e-11},
                 {0.3, 0.4, 0.017626977386588265305},
                 {0.3, 0.6, 0.040448434842067240477},
                 {1e-18, 700.0, 658.55346832610717706}};
    for (const auto& [share, v, expected] : cases) {
        EXPECT_NEAR(LogMeanMinusLinear(share, 1.0 - share, v) / expected, 1.0, 5e-15)
            << share << ", " << v;
        // exp(v) taken out of the mean.
        EXPECT_EQ(LogMeanMinusLinear(1.0 - share, share, -v),
                  LogMeanMinusLinear(share, 1.0 - share, v));
    }
}

}  // namespace
