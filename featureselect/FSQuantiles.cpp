#include "featureselect/FSQuantiles.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

#include "featureselect/FSBeta.h"
#include "featureselect/FSDistributions.h"
#include "featureselect/FSDoubleDouble.h"
#include "featureselect/FSGamma.h"
#include "featureselect/FSNormal.h"
#include "featureselect/FSNumericError.h"
#include "host/Records.h"

namespace {

constexpr double kLowestExponent = -1021.0;
// A Taylor step takes the fifth power of the exponential: a fifth of the exponents of doubles.
constexpr double kHighestExponent = 204.8;
constexpr double kChiTolerance = 5e-7;
constexpr int kChiRounds = 20;
constexpr int kHalvings = 40;
constexpr double kBisectWidth = 1e-8;
constexpr double kBetaEnd = 1e-20;    // of the squared step
constexpr double kBetaLowest = 1e-8;  // of the first value; later ones only stay inside 0 to 1
constexpr double kBetaHighest = 0.9999999;
constexpr int kBetaRounds = 1000;

bool IsGoodParameter(double a) { return a > 0.0 && std::isfinite(a); }

double FiniteOrMissing(double value) { return std::isfinite(value) ? value : MCMV::gMissingValue; }

double ShareOrMissing(double x) { return x >= 0.0 && x <= 1.0 ? x : MCMV::gMissingValue; }

double ExpOrZero(double exponent) { return exponent < kLowestExponent ? 0.0 : std::exp(exponent); }

// First value of AS 91 for few degrees of freedom (at most 0.32).
double SmallDfStart(double p, double h, double g) {
    const double c = h - 1.0;
    const double a = std::log1p(-p);
    double ch = 0.4;
    for (int round = 0; round < kChiRounds; ++round) {
        const double before = ch;
        const double p1 = 1.0 + ch * (4.67 + ch);
        const double p2 = ch * (6.73 + ch * (6.66 + ch));
        const double t = -0.5 + (4.67 + 2.0 * ch) / p1 - (6.73 + ch * (13.32 + 3.0 * ch)) / p2;
        ch -= (1.0 - std::exp(a + g + 0.5 * ch + c * std::numbers::ln2) * p2 / p1) / t;
        if (!(std::abs(before / ch - 1.0) > 0.01)) break;
    }
    return ch;
}

// First value of AS 91 otherwise, from the normal approximation of Wilson and Hilferty (1931).
double WilsonHilfertyStart(double p, double df, double h, double g) {
    const double p1 = 0.222222 / df;
    const double root = NormalQuantile(p) * std::sqrt(p1) + 1.0 - p1;
    const double ch = df * root * root * root;
    if (ch > 2.2 * df + 6.0) {
        return -2.0 * (std::log1p(-p) - (h - 1.0) * std::log(0.5 * ch) + g);
    }
    return ch;
}

// The rounds of AS 91; nothing when they don't settle.
std::optional<double> TaylorRounds(double p, double h, double g, double ch) {
    const double c = h - 1.0;
    for (int round = 0; round < kChiRounds; ++round) {
        if (!(ch > 0.0) || !std::isfinite(ch)) return std::nullopt;
        const double before = ch;
        const double p1 = 0.5 * ch;
        int error = kNUMERIC_OK;
        const double lower = IncompleteGamma(p1, h, true, error);
        const double exponent = h * std::numbers::ln2 + g + p1 - c * std::log(ch);
        if (error != kNUMERIC_OK || exponent > kHighestExponent) return std::nullopt;
        const double t = (p - lower) * ExpOrZero(exponent);
        const double b = t / ch;
        const double a = 0.5 * t - b * c;
        const double s1 =
            (210.0 + a * (140.0 + a * (105.0 + a * (84.0 + a * (70.0 + 60.0 * a))))) / 420.0;
        const double s2 = (420.0 + a * (735.0 + a * (966.0 + a * (1141.0 + 1278.0 * a)))) / 2520.0;
        const double s3 = (210.0 + a * (462.0 + a * (707.0 + 932.0 * a))) / 2520.0;
        const double s4 =
            (252.0 + a * (672.0 + 1182.0 * a) + c * (294.0 + a * (889.0 + 1740.0 * a))) / 5040.0;
        const double s5 = (84.0 + 264.0 * a + c * (175.0 + 606.0 * a)) / 2520.0;
        const double s6 = (120.0 + c * (346.0 + 127.0 * c)) / 5040.0;
        ch += t * (1.0 + 0.5 * t * s1 -
                   b * c * (s1 - b * (s2 - b * (s3 - b * (s4 - b * (s5 - b * s6))))));
        if (!(std::abs(before - ch) > kChiTolerance * std::abs(ch)) && ch > 0.0) return ch;
    }
    return std::nullopt;
}

// First value of AS 109.
double BetaStart(double p, double a, double b, double logBeta) {
    const double y = -NormalQuantile(p);
    if (a > 1.0 && b > 1.0) {
        const double r = (y * y - 3.0) / 6.0;
        const double s = 1.0 / (2.0 * a - 1.0);
        const double t = 1.0 / (2.0 * b - 1.0);
        const double h = 2.0 / (s + t);
        const double w = y * std::sqrt(h + r) / h - (t - s) * (r + 5.0 / 6.0 - 2.0 / (3.0 * h));
        return a / (a + b * std::exp(2.0 * w));
    }
    const double ninth = 1.0 / (9.0 * b);
    const double root = 1.0 - ninth + y * std::sqrt(ninth);
    const double chi = 2.0 * b * root * root * root;
    if (!(chi > 0.0)) return -std::expm1((std::log((1.0 - p) * b) + logBeta) / b);
    const double t = (4.0 * a + 2.0 * b - 2.0) / chi;
    if (!(t > 1.0)) return std::exp((std::log(a * p) + logBeta) / a);
    return 1.0 - 2.0 / (t + 1.0);
}

// The Newton steps of AS 109; missing when they don't settle.
double BetaNewton(double p, double a, double b) {
    constexpr double kSmallestStep = 1e-30;
    const double logBeta = LogGamma(a) + LogGamma(b) - LogGamma(a + b);
    const double start = BetaStart(p, a, b, logBeta);
    double x = std::clamp(std::isnan(start) ? 0.5 : start, kBetaLowest, kBetaHighest);
    double yBefore = 0.0;
    double squaredStep = 1.0;
    double longest = 1.0;  // no squared step may reach it; it shrinks when the root is passed
    for (int round = 0; round < kBetaRounds; ++round) {
        int error = kNUMERIC_OK;
        const double value = IncompleteBeta(x, a, b, error);
        if (error != kNUMERIC_OK) return MCMV::gMissingValue;
        // The density is a / (x (1 - x)) times the beta term.
        const FSDoubleDouble complement = FSDoubleDouble::ExactSum(1.0, -x);
        const double logTerm = LogBetaTerm(x, complement, a, b);
        const double y = std::clamp(
            (value - p) * std::exp(std::min(-logTerm, 700.0)) * x * complement.High() / a, -1e300,
            1e300);
        if (y * yBefore <= 0.0) longest = std::max(squaredStep, kSmallestStep);
        double next;
        double share = 1.0;
        for (;; share /= 3.0) {
            const double step = share * y;
            squaredStep = step * step;
            if (!(squaredStep < longest)) continue;
            next = x - step;
            if (next > 0.0 && next < 1.0) break;
        }
        if (longest <= kBetaEnd || y * y <= kBetaEnd || next == x) return next;
        x = next;
        yBefore = y;
    }
    return MCMV::gMissingValue;
}

}  // namespace

double ChiSquareQuantile(double p, double df) {
    if (!(p >= 0.0) || !(p < 1.0) || !IsGoodParameter(df)) return MCMV::gMissingValue;
    if (p == 0.0) return 0.0;
    const double h = 0.5 * df;
    const double g = LogGamma(h);
    if (g == MCMV::gMissingValue) return MCMV::gMissingValue;
    double start;
    if (df < -1.24 * std::log(p)) {
        start = ExpOrZero((std::log(h) + std::log(p) + g + h * std::numbers::ln2) / h);
        if (start < kChiTolerance) return start;
    } else if (!(df > 0.32)) {
        start = SmallDfStart(p, h, g);
    } else {
        start = WilsonHilfertyStart(p, df, h, g);
    }
    if (const auto value = TaylorRounds(p, h, g, start)) return *value;
    int error = kNUMERIC_OK;
    return ChiSquareQuantileBisect(p, df, start, error);
}

double ChiSquareQuantileBisect(double p, double df, double start, int& error) {
    error = kNUMERIC_BAD_ARGUMENT;
    if (!(p > 0.0) || !(p < 1.0) || !IsGoodParameter(df)) return MCMV::gMissingValue;
    error = kNUMERIC_OK;
    const auto isBelow = [&](double x) { return ChiSquareCdf(x, df) < p; };
    double low = start > 0.0 && std::isfinite(start) ? start : df;
    double high = low;
    while (isBelow(high) && std::isfinite(high)) {
        low = high;
        high *= 2.0;
    }
    constexpr double kLowest = std::numeric_limits<double>::min();
    while (!isBelow(low) && low >= kLowest) {
        high = low;
        low *= 0.5;
    }
    if (!std::isfinite(high) || !(low >= kLowest)) {
        error = kNUMERIC_NO_RESULT;
        return MCMV::gMissingValue;
    }
    for (int halving = 0; halving < kHalvings && high - low > kBisectWidth * high; ++halving) {
        const double middle = low + 0.5 * (high - low);
        (isBelow(middle) ? low : high) = middle;
    }
    return low + 0.5 * (high - low);
}

double BetaQuantile(double p, double a, double b) {
    if (!(p >= 0.0) || !(p <= 1.0)) return MCMV::gMissingValue;
    if (p == 0.0) return 0.0;
    if (p == 1.0) return 1.0;
    if (a == b && p == 0.5) return 0.5;
    if (a == 0.5 && b == 0.5) {
        const double sine = std::sin(p * std::numbers::pi / 2.0);
        return sine * sine;
    }
    if (a == 1.0) return ShareOrMissing(-std::expm1(std::log1p(-p) / b));
    if (b == 1.0) return ShareOrMissing(std::pow(p, 1.0 / a));
    if (a * 1e-20 >= b) return 1.0;
    if (!IsGoodParameter(a) || !IsGoodParameter(b)) return MCMV::gMissingValue;
    return BetaNewton(p, a, b);
}

double FQuantile(double p, double df1, double df2) {
    if (!(p >= 0.0) || !(p < 1.0) || !IsGoodParameter(df1) || !IsGoodParameter(df2)) {
        return MCMV::gMissingValue;
    }
    if (p == 0.0) return 0.0;
    const double x = BetaQuantile(p, df1 / 2.0, df2 / 2.0);
    if (!(x >= 0.0) || !(x < 1.0)) return MCMV::gMissingValue;
    return FiniteOrMissing(x / (1.0 - x) * df2 / df1);
}

double TQuantile(double p, double df) {
    if (!(p > 0.0) || !(p < 1.0) || !IsGoodParameter(df)) return MCMV::gMissingValue;
    if (p == 0.5) return 0.0;
    const double x = BetaQuantile(2.0 * std::min(p, 1.0 - p), df / 2.0, 0.5);
    if (x == MCMV::gMissingValue) return x;
    const double t = FiniteOrMissing(std::sqrt((1.0 / x - 1.0) * df));
    return p < 0.5 && t != MCMV::gMissingValue ? -t : t;
}
