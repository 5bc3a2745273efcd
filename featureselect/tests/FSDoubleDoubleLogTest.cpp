#include "featureselect/FSDoubleDoubleLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

// References: mpmath 1.4.1 with 60 and 150 digits, as a double and what it leaves out.
struct Reference {
    double fA;
    double fB;
    double fHigh;
    double fLow;
};

constexpr Reference kLogs[] = {
    {2.0, 1.0, 0.6931471805599453, 2.3190468138462996e-17},
    {1.0, 3.0, -1.0986122886681098, 9.07129723500153e-17},
    {10.0, 1.0, 2.302585092994046, -2.1707562233822494e-16},
    {1.0, 1.0, 0.0, 0.0},
    {1.0625, 1.0, 0.06062462181643484, 2.6424025938726934e-18},
    {3.0, 4.0, -0.2876820724517809, -2.607160616442564e-17},
    {1e-200, 7.0, -462.46292874786445, 2.6898261666842934e-15},
    {1e+200, 1e-05, 472.02994406377934, 2.555352264527226e-14},
    {0.7, 0.3, 0.8472978603872036, 2.6492650427854514e-17},
    {4503599627370497.0, 4503599627370496.0, 2.2204460492503128e-16, 3.649214750845877e-48},
    {0.5000000000000001, 1.0, -0.6931471805599451, -2.319046813846302e-17},
    {0.9999999999999999, 1.0, -1.1102230246251565e-16, -6.162975822039155e-33},
    {1.0, 0.99609375, 0.003913899321136329, 4.2808986230681256e-19},
};

TEST(LogOfRatio, HasThirtyDigits) {
    for (const Reference& reference : kLogs) {
        const FSDoubleDouble log = LogOfRatio(reference.fA, reference.fB);
        const double error = (log - reference.fHigh - reference.fLow).High();
        // Of a logarithm near 0 the digits after the point count.
        EXPECT_LE(std::abs(error), 2e-31 * std::max(1.0, std::abs(reference.fHigh)))
            << reference.fA << " / " << reference.fB;
    }
}

TEST(LogOfRatio, TakesTheDigitsThatDoublesLeaveOut) {
    const FSDoubleDouble third = FSDoubleDouble(1.0) / 3.0;
    const FSDoubleDouble sum = LogOfRatio(third, 1.0) + LogOfRatio(3.0, 1.0);
    EXPECT_LE(std::abs(sum.High()), 2e-31);
}

TEST(LogOfRatio, IsContinuousAcrossItsPieces) {
    // log(x * (1 + d)) - log(x) = d to first order, at the ends of all 128 pieces of an octave.
    const double step = std::ldexp(1.0, -52);
    for (int piece = 0; piece < 128; ++piece) {
        const double x = 1.0 + piece / 128.0;
        const FSDoubleDouble below = FSDoubleDouble(x) * (FSDoubleDouble(1.0) - step);
        const double rise = (LogOfRatio(x, 1.0) - LogOfRatio(below, 1.0)).High();
        EXPECT_NEAR(rise, step + step * step / 2, 2e-31) << x;
    }
}

struct ExcessReference {
    double fS;
    double fHigh;
    double fLow;
};

constexpr ExcessReference kExcesses[] = {
    {0.03125, 0.0009870590685003384, -6.393272192153193e-20},
    {-0.03125, 0.0009667020871663488, -2.5363977845297632e-20},
    {0.01, 0.00010033668686810964, -1.706155090351536e-22},
    {-0.01, 9.966998019858561e-05, -3.7615166446998e-21},
    {0.001, 1.0003336668668668e-06, 7.634410451445385e-23},
    {-1e-05, 9.999966666999999e-11, 6.4533869384278646e-27},
    {1e-10, 1.0000000000333334e-20, -2.285452295318917e-37},
    {1e-30, 1.0000000000000001e-60, 5.806068042052694e-77},
    {0.0, 0.0, 0.0},
};

TEST(AtanhExcess, HasThirtyDigitsHoweverSmall) {
    for (const ExcessReference& reference : kExcesses) {
        const FSDoubleDouble excess = AtanhExcess(reference.fS);
        const double error = (excess - reference.fHigh - reference.fLow).High();
        EXPECT_LE(std::abs(error), 2e-31 * reference.fHigh) << reference.fS;
    }
}

}  // namespace
