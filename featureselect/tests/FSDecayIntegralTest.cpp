#include "featureselect/FSDecayIntegral.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

TEST(FSDecayIntegral, OfAnExponentialIsItsScale) {
    for (const double rate : {1e-200, 1e-9, 0.3, 1.0, 1e12, 1e200}) {
        const double value = FSDecayIntegral([&](double v) { return rate * v; }, rate, 0.0);
        EXPECT_NEAR(value * rate, 1.0, 1e-15) << rate;
    }
}

TEST(FSDecayIntegral, OfHalfABell) {
    for (const double curvature : {1e-100, 1e-9, 1.0, 1e9, 1e100}) {
        const double value =
            FSDecayIntegral([&](double v) { return curvature * v * v / 2.0; }, 0.0, curvature);
        EXPECT_NEAR(value * std::sqrt(curvature), std::sqrt(std::numbers::pi / 2.0), 1e-15)
            << curvature;
    }
}

TEST(FSDecayIntegral, OfADecayThatEndsSteeply) {
    // The integral of exp(-c (exp(v) - 1)) is exp(c) E1(c), here from mpmath. A small c is the hard
    // case: level for long, then down within one.
    const struct {
        double fC;
        double fExpected;
    } cases[] = {
        {50.0, 0.019615109930114870}, {1.0, 0.59634736232319407}, {0.001, 6.3378740703254880}};
    for (const auto& [c, expected] : cases) {
        const auto fall = [c = c](double v) { return c * std::expm1(v); };
        EXPECT_NEAR(FSDecayIntegral(fall, c, c) / expected, 1.0, 1e-14) << c;
    }
}

TEST(FSDecayIntegral, OfADecayThatBendsFromCurvedToStraight) {
    // 1 / cosh(v)^b has the integral sqrt(pi) Gamma(b / 2) / (2 Gamma((b + 1) / 2)).
    for (const double b : {0.25, 1.0, 30.0}) {
        const auto fall = [&](double v) {
            return b * (v + std::log1p(std::exp(-2.0 * v)) - std::numbers::ln2);
        };
        const double expected =
            std::sqrt(std::numbers::pi) / 2.0 * std::tgamma(b / 2.0) / std::tgamma((b + 1.0) / 2.0);
        EXPECT_NEAR(FSDecayIntegral(fall, 0.0, b) / expected, 1.0, 1e-14) << b;
    }
}

}  // namespace
