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

}  // namespace
