#include "featureselect/FSDistributions.h"

#include <cmath>
#include <numbers>

#include "featureselect/FSBeta.h"
#include "featureselect/FSDoubleDouble.h"
#include "featureselect/FSGamma.h"
#include "featureselect/FSNumericError.h"
#include "host/Records.h"

namespace {

bool IsGoodDf(double df) { return df > 0.0 && std::isfinite(df); }

// I_x(a, b) at x = part / (part + rest), then times scale plus shift; missing stays missing.
double ScaledBeta(const FSDoubleDouble& part, const FSDoubleDouble& rest, double a, double b,
                  double scale, double shift) {
    int error = kNUMERIC_OK;
    const double value = IncompleteBetaOfRatio(part, rest, a, b, error);
    return error == kNUMERIC_OK ? value * scale + shift : MCMV::gMissingValue;
}

// atan(t) / pi + 0.5, without the cancellation in the lower tail.
double CauchyCdf(double t) {
    if (t < -1.0) return std::atan(-1.0 / t) / std::numbers::pi;
    return std::atan(t) / std::numbers::pi + 0.5;
}

// Both tails of the Cauchy distribution for an a above 0: 1 - 2 atan(a) / pi, without cancellation.
FSTail CauchyTail(double a) {
    if (a > 1.0) {
        const double p = 2.0 * std::atan(1.0 / a) / std::numbers::pi;
        return {p, std::log(p)};
    }
    const double rest = 2.0 * std::atan(a) / std::numbers::pi;
    return {1.0 - rest, std::log1p(-rest)};
}

}  // namespace

double ChiSquareCdf(double x, double df) {
    if (!IsGoodDf(df) || std::isnan(x)) return MCMV::gMissingValue;
    if (!(x > 0.0)) return 0.0;
    int error = kNUMERIC_OK;
    return IncompleteGamma(x / 2.0, df / 2.0, true, error);
}

double FCdf(double f, double df1, double df2) {
    if (!IsGoodDf(df1) || !IsGoodDf(df2) || std::isnan(f)) return MCMV::gMissingValue;
    if (!(f > 0.0)) return 0.0;
    const FSDoubleDouble ratio = FSDoubleDouble(df2) / df1;
    if (f >= 1.0) return ScaledBeta(ratio, f, df2 / 2.0, df1 / 2.0, -1.0, 1.0);
    return ScaledBeta(f, ratio, df1 / 2.0, df2 / 2.0, 1.0, 0.0);
}

double TCdf(double t, double df) {
    if (!IsGoodDf(df) || std::isnan(t)) return MCMV::gMissingValue;
    if (t == 0.0) return 0.5;
    if (df == 1.0) return CauchyCdf(t);
    const double a = std::abs(t);
    const double h = df / 2.0;
    const FSDoubleDouble v = FSDoubleDouble(df) / a;
    if (a > 1.0) {
        const double sign = t > 1.0 ? -0.5 : 0.5;
        return ScaledBeta(v, a, h, 0.5, sign, t > 1.0 ? 1.0 : 0.0);
    }
    return ScaledBeta(a, v, 0.5, h, t < 0.0 ? -0.5 : 0.5, 0.5);
}

FSTail ChiSquareTail(double x, double df) {
    if (!IsGoodDf(df) || std::isnan(x)) return {};
    return UpperGammaTail(x / 2.0, df / 2.0);
}

FSTail FTail(double f, double df1, double df2) {
    if (!IsGoodDf(df1) || !IsGoodDf(df2) || std::isnan(f)) return {};
    if (!(f > 0.0)) return {1.0, 0.0};
    const double logRatio = std::log(df2) - std::log(df1) - std::log(f);
    return BetaTailOfRatio(FSDoubleDouble(df2) / df1, f, logRatio, df2 / 2.0, df1 / 2.0);
}

FSTail TTail(double t, double df) {
    if (!IsGoodDf(df) || std::isnan(t)) return {};
    if (t == 0.0) return {1.0, 0.0};
    const double a = std::abs(t);
    if (df == 1.0) return CauchyTail(a);
    const double logRatio = std::log(df) - 2.0 * std::log(a);
    return BetaTailOfRatio(FSDoubleDouble(df) / a, a, logRatio, df / 2.0, 0.5);
}
