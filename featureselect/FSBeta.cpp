#include "featureselect/FSBeta.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>
#include <utility>

#include "featureselect/FSDecayIntegral.h"
#include "featureselect/FSGamma.h"
#include "featureselect/FSNormal.h"
#include "featureselect/FSNumericError.h"
#include "featureselect/FSSaddlePoint.h"
#include "host/Records.h"

namespace {

constexpr double kTolerance = 1e-15;
constexpr int kMaxSteps = 10'000;
constexpr double kLeastShare = 0x1p-700;     // a smaller one is held by its logarithm
constexpr double kMaxLeastShareB = 0x1p600;  // (1 - x)^b is 1 there
constexpr double kLowestExponent = -1021.0;  // exp of anything lower counts as 0

// An x with its complement y = 1 - x, both exact to about 31 digits.
struct Share {
    FSDoubleDouble x;
    FSDoubleDouble y;
};

// log(share.x), accurate when x is close to 1 too.
double Log(const Share& share) {
    if (share.x.High() > 0.5) return std::log1p(-share.y.High());
    return std::log(share.x.High()) + share.x.Low() / share.x.High();
}

// Sum over k of the products of (j + a + b) / (j + a + 1) * x, j up to k: the incomplete beta
// function over its first term. Nothing when it doesn't converge.
std::optional<double> PowerSeries(const Share& share, double a, double b) {
    // The k-th term is at least x^k a / (a + k + 1), so this tells beforehand, and without 10,000
    // idle steps, that the last one would still be too large.
    const double steps = kMaxSteps + 1.0;
    if (steps * Log(share) + std::log(a / (a + steps)) > std::log(kTolerance) + 1.0) {
        return std::nullopt;
    }
    const FSDoubleDouble both = FSDoubleDouble::ExactSum(a, b);
    FSDoubleDouble term = 1.0;
    FSDoubleDouble sum = 1.0;
    for (int k = 0; k <= kMaxSteps; ++k) {
        term = term * (both + k) * share.x / FSDoubleDouble::ExactSum(a, k + 1.0);
        sum = sum + term;
        if (std::abs(term.High()) < kTolerance) return sum.High();
    }
    return std::nullopt;
}

// The same quotient as a continued fraction. In 31 digits: its value reaches the square root of
// the larger parameter and its first denominators nearly vanish, so that with plain doubles
// rounding alone would keep successive values further apart than the tolerance.
std::optional<double> ContinuedFraction(const Share& share, double a, double b) {
    const FSDoubleDouble both = FSDoubleDouble::ExactSum(a, b);
    FSDoubleDouble oldNumerator = 1.0, numerator = 1.0;
    FSDoubleDouble oldDenominator = 1.0;
    FSDoubleDouble denominator =
        FSDoubleDouble(1.0) - both * share.x / FSDoubleDouble::ExactSum(a, 1.0);
    for (int round = 1; round <= kMaxSteps; ++round) {
        const double m = round;
        const FSDoubleDouble below = FSDoubleDouble::ExactSum(a, 2.0 * m - 1.0);
        const FSDoubleDouble at = FSDoubleDouble::ExactSum(a, 2.0 * m);
        const FSDoubleDouble above = FSDoubleDouble::ExactSum(a, 2.0 * m + 1.0);
        const FSDoubleDouble even = FSDoubleDouble::ExactSum(b, -m) * m * share.x / (below * at);
        const FSDoubleDouble odd =
            -(FSDoubleDouble::ExactSum(a, m) * (both + m) * share.x / (at * above));
        const FSDoubleDouble midNumerator = numerator + even * oldNumerator;
        const FSDoubleDouble midDenominator = denominator + even * oldDenominator;
        const FSDoubleDouble newNumerator = midNumerator + odd * numerator;
        const FSDoubleDouble newDenominator = midDenominator + odd * denominator;
        const FSDoubleDouble before = numerator;
        if (newDenominator.High() == 0.0) {
            oldNumerator = midNumerator;
            oldDenominator = midDenominator;
            numerator = newNumerator;
            denominator = newDenominator;
            continue;
        }
        const FSDoubleDouble scale = FSDoubleDouble(1.0) / newDenominator;
        oldNumerator = midNumerator * scale;
        oldDenominator = midDenominator * scale;
        numerator = newNumerator * scale;
        denominator = 1.0;
        if (std::abs((numerator - before).High()) < kTolerance) return numerator.High();
    }
    return std::nullopt;
}

// Peizer and Pratt (1968); the lower probability, or the upper one for complement.
double NormalApproximation(double x, double a, double b, bool complement) {
    const double n = a + b - 1.0;
    const double s =
        (PeizerPrattG((a - 0.5) / n) * x + PeizerPrattG((b - 0.5) / n) * (1.0 - x) + 1.0) /
        ((n + 1.0 / 6.0) * x * (1.0 - x));
    double z = 0.0;
    if (s > 0.0) {
        z = std::sqrt(s) * ((x - a / n) * n + (x + 1.0) / 3.0 +
                            (x / b - (1.0 - x) / a + (x - 0.5) / (a + b)) / 50.0);
    }
    return NormalCdf(complement ? -z : z);
}

double Scaled(const Share& share, double a, double b, double value, bool complement) {
    double exponent = -std::numeric_limits<double>::infinity();
    if (value > 0.0) exponent = LogBetaTerm(share.x, share.y, a, b) + std::log(value);
    if (exponent < kLowestExponent) return complement ? 1.0 : 0.0;
    return complement ? -std::expm1(exponent) : std::exp(exponent);
}

double BetaOfShare(Share share, double a, double b) {
    if (a == 1.0) {
        if (b == 1.0) return share.x.High();
        const double t = b * Log({share.y, share.x});
        return t < kLowestExponent ? 1.0 : -std::expm1(t);
    }
    if (b == 1.0) {
        const double t = a * Log(share);
        return t < kLowestExponent ? 0.0 : std::exp(t);
    }
    bool complement = false;
    const auto swapRoles = [&] {
        std::swap(share.x, share.y);
        std::swap(a, b);
        complement = !complement;
    };
    if (!(a > 1.0) || !(b > 1.0)) {
        if (!(a > 1.0)) swapRoles();
        if (const auto value = PowerSeries(share, a, b)) {
            return Scaled(share, a, b, *value, complement);
        }
    }
    if (share.x.High() >= (a + 1.0) / (a + b + 2.0)) swapRoles();
    if (const auto value = ContinuedFraction(share, a, b)) {
        return Scaled(share, a, b, *value, complement);
    }
    return NormalApproximation(share.x.High(), a, b, complement);
}

// The function over LogBetaTerm as an integral over the log-odds of the variable, for x not above
// a / (a + b).
double QuotientByIntegral(const Share& share, double a, double b) {
    const double x = share.x.High(), y = share.y.High();
    const double n = a + b;
    const double slope = std::max((share.y * a - share.x * b).High(), 0.0);
    return a *
           FSDecayIntegral([&](double v) { return slope * v + n * LogMeanMinusLinear(y, x, v); },
                           slope, n * x * y);
}

// The logarithm of the function for x not above a / (a + b).
double LogSmallerTail(const Share& share, double a, double b) {
    if (a == 1.0) return std::log(-std::expm1(b * Log({share.y, share.x})));
    if (b == 1.0) return a * Log(share);
    std::optional<double> value;
    if (!(a > 1.0) || !(b > 1.0)) value = PowerSeries(share, a, b);
    if (!value) value = ContinuedFraction(share, a, b);
    if (!value) value = QuotientByIntegral(share, a, b);
    return LogBetaTerm(share.x, share.y, a, b) + std::log(*value);
}

// x = part / (part + rest) and 1 - x; the ends when one of the two is infinite, NaN for both.
Share ShareOfRatio(const FSDoubleDouble& part, const FSDoubleDouble& rest) {
    if (std::isinf(rest.High()) && std::isfinite(part.High())) return {0.0, 1.0};
    if (std::isinf(part.High()) && std::isfinite(rest.High())) return {1.0, 0.0};
    const FSDoubleDouble whole = part + rest;
    return {part / whole, rest / whole};
}

bool IsGoodParameter(double a) { return a > 0.0 && std::isfinite(a); }

double CheckedBeta(const Share& share, double a, double b, int& error) {
    error = kNUMERIC_OK;
    if (!IsGoodParameter(a) || !IsGoodParameter(b) || std::isnan(share.x.High())) {
        error = kNUMERIC_BAD_ARGUMENT;
        return MCMV::gMissingValue;
    }
    if (!(share.x.High() > 0.0)) return 0.0;
    if (!(share.y.High() > 0.0)) return 1.0;
    const double value = BetaOfShare(share, a, b);
    if (value == MCMV::gMissingValue || !std::isfinite(value)) {
        error = kNUMERIC_NO_RESULT;
        return MCMV::gMissingValue;
    }
    return value;
}

}  // namespace

double IncompleteBeta(double x, double a, double b, int& error) {
    return CheckedBeta({x, FSDoubleDouble::ExactSum(1.0, -x)}, a, b, error);
}

double IncompleteBetaOfRatio(const FSDoubleDouble& part, const FSDoubleDouble& rest, double a,
                             double b, int& error) {
    return CheckedBeta(ShareOfRatio(part, rest), a, b, error);
}

FSTail BetaTailOfRatio(const FSDoubleDouble& part, const FSDoubleDouble& rest, double logRatio,
                       double a, double b) {
    Share share = ShareOfRatio(part, rest);
    // The function itself or its complement, whichever has the variable below its mean: about the
    // smaller of the two, and never a small one as a difference from 1.
    const bool complement = (share.x * b - share.y * a).High() > 0.0;
    if (complement) {
        std::swap(share.x, share.y);
        std::swap(a, b);
        logRatio = -logRatio;
    }
    double shift = 0.0;
    if (share.x.High() < kLeastShare && b < kMaxLeastShareB) {
        // Down here the function is proportional to x^a, and x to the ratio.
        shift = a * (logRatio - std::log(kLeastShare));
        share = {kLeastShare, 1.0};
    }
    const double exponent = LogSmallerTail(share, a, b) + shift;
    return complement ? TailOfLogComplement(exponent) : TailOfLog(exponent);
}

double LogBetaTerm(const FSDoubleDouble& x, const FSDoubleDouble& y, double a, double b) {
    // With x0 = a / (a + b) and y0 = 1 - x0 the power x^a y^b is x0^a y0^b times
    // exp(a log(x / x0) + b log(y / y0)), where the linear parts of the two logs cancel exactly.
    const double deviation = (x * b - y * a).High();
    const double n = a + b;
    const FSDoubleDouble both = FSDoubleDouble::ExactSum(a, b);
    return a * LogRatioMinusChange(deviation / a, (x * both / a).High()) +
           b * LogRatioMinusChange(-deviation / b, (y * both / b).High()) +
           0.5 * std::log(b / a / n / (2.0 * std::numbers::pi)) + StirlingError(n) -
           StirlingError(a) - StirlingError(b);
}

double PeizerPrattG(double x) {
    static const double largest = std::sqrt(std::numeric_limits<double>::max());
    if (!(x >= 0.0)) return MCMV::gMissingValue;
    if (x > largest) return -1.0;
    if (x == 1.0) return 0.0;
    if (x == 0.0) return 1.0;
    // With u = x - 1 the numerator is u^2 + 2 x (log(1 + u) - u), which keeps its digits near u =
    // 0.
    const double u = x - 1.0;
    return 1.0 + 2.0 * x * LogRatioMinusChange(u, x) / (u * u);
}
