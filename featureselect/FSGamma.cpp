#include "featureselect/FSGamma.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <optional>

#include "featureselect/FSDecayIntegral.h"
#include "featureselect/FSNormal.h"
#include "featureselect/FSNumericError.h"
#include "featureselect/FSPolynomial.h"
#include "featureselect/FSSaddlePoint.h"
#include "host/Records.h"

namespace {

constexpr double kTolerance = 1e-14;
constexpr double kLowestExponent = -1021.0;  // exp of anything lower counts as 0
constexpr double kMaxSeriesTerms = 2147483647.0;
// From here on the fraction's numerators would overflow.
constexpr double kMaxFourLogX = 1024.0;
// And its denominators, the cube of x, from here on.
constexpr double kMaxTailFraction = 1e100;
// The fraction needs about sqrt(a) rounds near x = a; beyond this the approximations are as good.
constexpr int kMaxFractionRounds = 10'000'000;

// Tables made by tests/oracles/make_gamma_erf_coefficients.py.
// LogGamma at x = row + 3.5 + t.
constexpr std::array<std::array<double, 13>, 5> kUpperMiddle = {{
    {{1.2009736023470743, 1.1031566406452487, 0.16517887805011597, -0.018034008607576382,
      0.0029294103675490657, -0.0005666333093555773, 0.00012090163167308247,
      -2.7452277140315604e-05, 6.503592105164994e-06, -1.5865601255448258e-06,
      3.9635041065157975e-07, -1.0657688468888994e-07, 2.7494775518065507e-08}},
    {{2.4537365708424423, 1.3888709263595291, 0.12436255151950515, -0.010259470220195395,
      0.0012634378559368425, -0.00018583961154824093, 3.023646605081891e-05, -5.248300748236599e-06,
      9.525939752579442e-07, -1.7853175510303921e-07, 3.430031498549505e-08, -6.941704397141019e-09,
      1.3807166053872118e-09}},
    {{3.9578139676187165, 1.6110931485817512, 0.09967119349481382, -0.006601491253552181,
      0.0006537746948287551, -7.745505028627553e-05, 1.016525101742278e-05, -1.4252023954508437e-06,
      2.0921362334312023e-07, -3.175635506530983e-08, 4.945649856178023e-09, -8.029551876410129e-10,
      1.2967735403072632e-10}},
    {{5.662562059857142, 1.792911330399933, 0.08314226787497912, -0.0045979851178130195,
      0.00038056931268245304, -3.771608566233182e-05, 4.144195772270293e-06, -4.868554119843427e-07,
      5.993114175936025e-08, -7.634636530791309e-09, 9.984842356737154e-10, -1.3535350940786695e-10,
      1.8377488953993316e-11}},
    {{7.534364236758733, 1.9467574842460869, 0.0713079483483519, -0.0033842087561074797,
      0.00024051819402411655, -2.0479024910257442e-05, 1.934316188757173e-06,
      -1.9544263908762505e-07, 2.0702498589264174e-08, -2.2705728443616003e-09,
      2.5577008919204526e-10, -2.975875473820197e-11, 3.482768703683551e-12}},
}};
// LogGamma / ((x - 1) (x - 2)) at y = row - 3.5 + t, y = x - 4.5 / (x + 0.5). Without its zeros the
// function keeps its relative accuracy next to them; y stretches the end where it is steep.
constexpr std::array<std::array<double, 14>, 7> kLowerMiddle = {{
    {{0.7120288602674223, -0.09872719378227424, 0.006650311927017777, -0.0007030645447545675,
      0.00015648488231997544, -1.6491486101492902e-05, 2.486177940663042e-06, -5.44488171570403e-07,
      6.052989486812517e-08, -1.0891868344509328e-08, 2.292066779247261e-09,
      -2.5503207707794474e-10, 5.3896567874429956e-11, -1.0722939867174651e-11}},
    {{0.6193909006720023, -0.08698076897237977, 0.005342365753045723, -0.0002086566972826324,
      9.554451150651647e-05, -1.0501474460507847e-05, -1.4844878775964371e-07,
      -2.348516957588921e-07, 3.852662247298106e-08, 3.580174025147696e-09, 6.550256581105021e-10,
      -2.0838674927398974e-10, -2.748093240812176e-11, -9.967147551378516e-13}},
    {{0.5376285430174973, -0.0765945271795791, 0.005178713194985245, 5.981425831474703e-05,
      3.579403988782804e-05, -1.3667486220937266e-05, -3.950803255304101e-07,
      1.9316518274910497e-07, 5.523397492852161e-08, -5.070164614614939e-09,
      -2.1691035821918046e-09, -4.653936901413953e-11, 8.57305988993867e-11,
      8.899063880989476e-12}},
    {{0.46629451597132654, -0.06598346244986009, 0.005435645671361482, 6.759469902285768e-05,
      -2.8905439550883537e-05, -1.0020669926469758e-05, 1.6874717420500227e-06,
      2.5036864662047836e-07, -5.093413690127344e-08, -1.059643485916262e-08, 2.11853927056933e-09,
      4.24655040905887e-10, -8.457593566902257e-11, -1.783275325694407e-11}},
    {{0.40577724653461567, -0.05506371291141954, 0.005393664538281994, -0.00010916234447518587,
      -4.930115137019397e-05, 1.820746983745114e-06, 1.6662940944925526e-06, -2.29218543424208e-07,
      -3.394879964089382e-08, 1.083835947250033e-08, 3.502811481198153e-10, -4.5574607285489433e-10,
      2.5770768609672077e-11, 1.5643128118583524e-11}},
    {{0.3559519693126126, -0.044783753564277114, 0.0048081919923453845, -0.0002638705593488347,
      -2.429111731884972e-05, 6.383739951828446e-06, -7.116961010416604e-08, -1.796732976656696e-07,
      2.9678363195952294e-08, 1.0002092094885902e-09, -1.1048191495316963e-09,
      1.380205442145786e-10, 1.6823870706099864e-11, -7.34087741150696e-12}},
    {{0.3156944086825825, -0.03602567474824394, 0.0039306557729395794, -0.0003032716352586931,
      2.292058588256898e-06, 3.761849693845111e-06, -5.774779552751436e-07, 9.561968803364837e-09,
      1.259966643186667e-08, -2.599197341013307e-09, 1.5926673960517505e-10, 4.025270366368684e-11,
      -1.2141860474781745e-11, 1.1896259044673362e-12}},
}};
// 1 / Gamma(1 + x) at x = row / 4 + t.
constexpr std::array<std::array<double, 11>, 2> kReciprocal = {{
    {{1.0, 0.5772156649015352, -0.6558780715206195, -0.04200263501127983, 0.16653861065216147,
      -0.04219772092577123, -0.009622130132145865, 0.0072201283286118705, -0.0011708539066003542,
      -0.00019831529062053663, 9.967155459300515e-05}},
    {{1.1032626513208372, 0.250940988284993, -0.6319455615257524, 0.09607524324258636,
      0.10837977151355419, -0.048252076818967614, 0.0007852827600600792, 0.004618915112626606,
      -0.0013471905816881855, 4.868876076994618e-05, 4.671349974512561e-05}},
}};

// The part of Stirling's series that vanishes for large x, as x times itself in 1 / x^2.
constexpr std::array<double, 6> kStirling = {0.08333333333333309,   -0.0027777777773546303,
                                             0.0007936505750541542, -0.0005951894757572819,
                                             0.0008364453370338596, -0.0016331235920050082};
constexpr double kHalfLogTwoPi = 0.9189385332046728;
constexpr double kSeriesFrom = 8.0;  // Stirling's series serves from here on

double StirlingSeries(double x) { return FSPolynomial(kStirling, 1.0 / (x * x)) / x; }

double ExpOrZero(double exponent) { return exponent < kLowestExponent ? 0.0 : std::exp(exponent); }

double OverflowLimit() {
    static const double limit = std::sqrt(std::numeric_limits<double>::max());
    return limit;
}

// log(x^a e^-x / Gamma(a + 1)) = a log(x) - (x + LogGamma(a + 1)).
double LogGammaTerm(double x, double a) {
    if (a < kSeriesFrom) return a * std::log(x) - (x + LogGamma(a + 1.0));
    return a * LogRatioMinusChange((x - a) / a, x / a) -
           0.5 * std::log(2.0 * std::numbers::pi * a) - StirlingError(a);
}

// Upper tail for a of at least 0.5; Peizer and Pratt (1968).
double UpperByPeizerPratt(double x, double a) {
    const double u = (a - 0.5) / x;
    double d;
    if (u == 0.0) {
        d = std::sqrt(2.0 / x);
    } else if (u == 1.0) {
        d = std::sqrt(1.0 / x);
    } else {
        // u log(u) + 1 - u with v = u - 1 is v^2 + u (log(1 + v) - v).
        const double v = u - 1.0;
        d = std::sqrt(2.0 * (v * v + u * LogRatioMinusChange(v, u)) / x) / std::abs(v);
    }
    return NormalCdf((0.022 / a + a - x - 1.0 / 3.0) * d);
}

// Wilson and Hilferty (1931).
double TailByWilsonHilferty(double x, double a, bool lower) {
    const double c = 3.0 * std::sqrt(a);
    const double deviate = x == a ? 1.0 / c : c * (std::cbrt(x / a) + 1.0 / (9.0 * a) - 1.0);
    return NormalCdf(lower ? deviate : -deviate);
}

double Approximation(double x, double a, bool lower) {
    if (!lower && a >= 0.5) return UpperByPeizerPratt(x, a);
    return TailByWilsonHilferty(x, a, lower);
}

// The lower function for x of at most 1 or at most a; nothing when it would take too many terms.
std::optional<double> LogLowerBySeries(double x, double a) {
    const double b = a + 1.0;
    const double perTerm = std::log10(x / b);
    if (perTerm == 0.0) return std::nullopt;
    const double terms = std::log10(kTolerance) / perTerm;
    if (terms > 0.0) {
        const double estimate = 2.0 * std::sqrt(terms) + 10.0;
        if (estimate * estimate >= kMaxSeriesTerms) return std::nullopt;
    }
    if (LogGamma(b) == MCMV::gMissingValue) return std::nullopt;
    double term = 1.0;
    double sum = 1.0;
    double next = a;
    do {
        next += 1.0;
        term *= x / next;
        sum += term;
    } while (!(term < kTolerance));
    const double exponent = LogGammaTerm(x, a) + std::log(sum);
    if (exponent > 0.0) return std::nullopt;
    return exponent;
}

// The upper function for x above 1 and above a, by the fraction of Shea (1988), AS 239.
// An exponent below lowest is given without the fraction, which is below 1.
std::optional<double> LogUpperByFraction(double x, double a, double lowest) {
    if (LogGamma(a) == MCMV::gMissingValue || 4.0 * std::log(x) >= kMaxFourLogX)
        return std::nullopt;
    const double exponent = LogGammaTerm(x, a) + std::log(a);
    if (exponent < lowest) return exponent;
    double partial = 1.0 - a;
    double b = x + partial + 1.0;
    double count = 0.0;
    std::array<double, 4> pn = {1.0, x, x + 1.0, x * b};
    double ratio = pn[2] / pn[3];
    for (int round = 0; round < kMaxFractionRounds; ++round) {
        partial += 1.0;
        b += 2.0;
        count += 1.0;
        const double numerator = partial * count;
        const double upper = b * pn[2] - numerator * pn[0];
        const double lower = b * pn[3] - numerator * pn[1];
        if (std::abs(lower) > 0.0) {
            const double next = upper / lower;
            if (std::abs(ratio - next) <= std::min(kTolerance, kTolerance * next)) {
                return exponent + std::log(ratio);
            }
            ratio = next;
        }
        pn = {pn[2], pn[3], upper, lower};
        if (std::abs(upper) >= OverflowLimit()) {
            for (double& value : pn) value /= OverflowLimit();
        }
    }
    return std::nullopt;
}

// The lower function for x of at most a, the upper one for the rest, as an integral over the
// logarithm of the variable.
double LogTailByIntegral(double x, double a) {
    const double side = x > a ? 1.0 : -1.0;
    const double slope = std::abs(x - a);
    const double quotient = FSDecayIntegral(
        [&](double v) { return slope * v + x * ExpMinusLinear(side * v); }, slope, x);
    return LogGammaTerm(x, a) + std::log(a) + std::log(quotient);
}

double IncompleteGammaAbove0(double x, double a, bool lower) {
    if (std::isinf(x)) return lower ? 1.0 : 0.0;
    if (a == 1.0) {
        if (!lower) return ExpOrZero(-x);
        return -x < kLowestExponent ? 1.0 : -std::expm1(-x);
    }
    if (!(x > 1.0) || a >= x) {
        const std::optional<double> exponent = LogLowerBySeries(x, a);
        if (!exponent) return Approximation(x, a, lower);
        if (lower) return ExpOrZero(*exponent);
        return *exponent < kLowestExponent ? 1.0 : -std::expm1(*exponent);
    }
    const std::optional<double> exponent = LogUpperByFraction(x, a, kLowestExponent);
    if (!exponent) return Approximation(x, a, lower);
    return lower ? 1.0 - ExpOrZero(*exponent) : ExpOrZero(*exponent);
}

}  // namespace

double LogGamma(double x) {
    if (!(x > 0.0)) return MCMV::gMissingValue;
    if (x >= kSeriesFrom) {
        const double value = (x - 0.5) * std::log(x) - x + kHalfLogTwoPi + StirlingSeries(x);
        return std::isfinite(value) ? value : MCMV::gMissingValue;
    }
    if (x >= 3.5) {
        const double row = std::floor(x) - 3.0;
        return FSPolynomial(kUpperMiddle[static_cast<std::size_t>(row)], x - (row + 3.5));
    }
    if (x == 1.0 || x == 2.0) return 0.0;
    if (x > 0.5) {
        const double y = x - 4.5 / (x + 0.5);
        const double row = std::floor(y + 4.0);
        return (x - 1.0) * (x - 2.0) *
               FSPolynomial(kLowerMiddle[static_cast<std::size_t>(row)], y - (row - 3.5));
    }
    if (x == 0.5) return 0.5 * std::log(std::numbers::pi);
    const bool low = x < 0.25;
    const double reciprocal = FSPolynomial(kReciprocal[low ? 0 : 1], low ? x : x - 0.25) * x;
    return reciprocal > 0.0 ? -std::log(reciprocal) : MCMV::gMissingValue;
}

double StirlingError(double z) {
    if (z >= kSeriesFrom) return StirlingSeries(z);
    return LogGamma(z) - ((z - 0.5) * std::log(z) - z + kHalfLogTwoPi);
}

double IncompleteGamma(double x, double a, bool lower, int& error) {
    error = kNUMERIC_OK;
    if (!(a > 0.0) || !std::isfinite(a) || std::isnan(x)) {
        error = kNUMERIC_BAD_ARGUMENT;
        return MCMV::gMissingValue;
    }
    if (!(x > 0.0)) return lower ? 0.0 : 1.0;
    const double value = IncompleteGammaAbove0(x, a, lower);
    if (value == MCMV::gMissingValue || !std::isfinite(value)) {
        error = kNUMERIC_NO_RESULT;
        return MCMV::gMissingValue;
    }
    return value;
}

FSTail UpperGammaTail(double x, double a) {
    if (!(x > 0.0)) return {1.0, 0.0};
    if (a == 1.0 || std::isinf(x)) return TailOfLog(-x);
    if (a >= x) {
        const std::optional<double> exponent = LogLowerBySeries(x, a);
        return TailOfLogComplement(exponent ? *exponent : LogTailByIntegral(x, a));
    }
    std::optional<double> exponent;
    // Up to 1 the function itself is 1 minus the series, which loses the digits of a small tail.
    if (x > 1.0 && x < kMaxTailFraction) exponent = LogUpperByFraction(x, a, -HUGE_VAL);
    return TailOfLog(exponent ? *exponent : LogTailByIntegral(x, a));
}
