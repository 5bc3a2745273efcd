#include "featureselect/FSNormal.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "featureselect/FSPolynomial.h"
#include "host/Records.h"

namespace {

constexpr double kLowestExponent = -1021.0;  // exp of anything lower counts as 0

// Tables made by tests/oracles/make_gamma_erf_coefficients.py.
// erf(sqrt(s)) / sqrt(s) at s = row + t.
constexpr std::array<std::array<double, 13>, 5> kErfCentre = {{
    {{1.1283791670955126, -0.3761263890318375, 0.11283791670954879, -0.026866170645076792,
      0.0052239776248180145, -0.000854832698083379, 0.0001205533111164271, -1.4925595266831182e-05,
      1.6461000484121368e-06, -1.6350312701054695e-07, 1.4659775274047436e-08,
      -1.1372848856791674e-09, 5.957176147748911e-11}},
    {{0.8427007929497149, -0.21379664776456006, 0.05657061146827041, -0.01254988477182171,
      0.0023330763121867585, -0.0003701541069179074, 5.103883005512123e-05, -6.211885059712096e-06,
      6.759561852462639e-07, -6.64207437794427e-08, 5.903518663815184e-09, -4.548910420378519e-10,
      2.371819488992582e-11}},
    {{0.674933236039655, -0.13055593046562267, 0.029869784652462577, -0.006082847181135817,
      0.0010705215356402917, -0.0001635898692091164, 2.1954550551083198e-05,
      -2.6183001854578176e-06, 2.80455161038557e-07, -2.721437862422335e-08, 2.3945876204854266e-09,
      -1.8308588312453914e-10, 9.496316198212628e-12}},
    {{0.5690907664239364, -0.08548534594781312, 0.016689778925531654, -0.0030755305143926955,
      0.0005068999365411263, -7.404402134887541e-05, 9.620234424352444e-06, -1.119927568178188e-06,
      1.1775132355480907e-07, -1.1260063125064924e-08, 9.792886024357431e-10,
      -7.420946168412453e-11, 3.8261340347071865e-12}},
    {{0.49766113250947636, -0.05962426839442304, 0.009887863739323504, -0.0016294094174807794,
      0.0002487927613391878, -3.445026145312554e-05, 4.306832843657057e-06, -4.872251555373265e-07,
      5.011914887259079e-08, -4.711340780850207e-09, 4.042414591888261e-10, -3.0319451773545935e-11,
      1.552531667287944e-12}},
}};
// The 16th root of erfc(a) at a = row + 2 + t: flat enough for a polynomial.
constexpr std::array<std::array<double, 13>, 5> kErfcRoot = {{
    {{0.7151172032884284, -0.19746892495383023, -0.014022836638962293, 0.008155330225232522,
      0.00015380842448483833, -0.00025616361116898706, 1.6127224858263492e-05,
      2.6624525172150226e-06, -2.1853157502327917e-07, -1.6691048677577275e-08,
      -6.399381739341273e-09, 2.6945273567164805e-09, -2.968052542628731e-10}},
    {{0.5116969671872764, -0.20160072778491014, 0.009095309223548346, 0.006610629705021059,
      -0.0008099172895473225, -0.00011843240281147232, 2.6870446015485563e-05,
      1.999987303765788e-07, -3.577277517242435e-07, 3.428374545793489e-09, 5.2253035488189114e-09,
      -3.2328739820116333e-10, -1.946739037371063e-11}},
    {{0.32490054966649434, -0.16725021123116876, 0.02328095035422814, 0.0027118700352003118,
      -0.001015650631515787, 2.8541472281186273e-05, 1.9472045380365728e-05, -2.033406549725422e-06,
      -1.5451091779955285e-07, 3.3775732894099456e-08, 6.370891286663572e-10, -4.84786069104922e-10,
      3.149787612182796e-11}},
    {{0.1826733677529661, -0.11637092784486193, 0.025854344242029616, -0.0007528581489525066,
      -0.0006586024399026555, 9.823686252349781e-05, 3.687973321841336e-06, -2.112113463522853e-06,
      1.137187174164146e-07, 2.0506930102642272e-08, -2.6487832588552173e-09, -6.30698492738118e-11,
      2.319991717112575e-11}},
    {{0.09084526782065479, -0.06905562880005864, 0.020641290238760216, -0.0023972961143504776,
      -0.0001760438893726198, 8.428418335750926e-05, -6.754076526807023e-06, -7.844121252337859e-07,
      1.8006974454945378e-07, -4.359347536760429e-09, -1.933313952759996e-09,
      2.0880760997752786e-10, -3.6857546769305725e-12}},
}};
// exp(a^2) erfc(a) / t in u = t - 0.5, t = kErfcScale / (a + kErfcScale).
constexpr double kErfcScale = 3.97886080735226;
constexpr std::array<double, 23> kErfc = {
    0.2753747415973768,    0.49016508058531844,    0.7743681991195386,    1.0792551515585667,
    1.313146538310231,     1.3704021768233816,     1.1890298290927332,    0.8052764087529106,
    0.35752427444953105,   0.016620792496936737,   -0.11946395996432542,  -0.0838864557023002,
    0.002493672000535033,  0.039097684558848406,   0.016131532973325226,  -0.013382364453346007,
    -0.012722381378212275, 0.003833351262648873,   0.007736725283135267,  -0.0008707796353172959,
    -0.003963850973605135, 0.00011931402283834095, 0.0012710976495261409,
};

// Wichura (1988), AS 241, PPND16: numerators and denominators of the three regions.
constexpr std::array<double, 8> kCentreNumerator = {
    3.3871328727963666080e0, 1.3314166789178437745e2, 1.9715909503065514427e3,
    1.3731693765509461125e4, 4.5921953931549871457e4, 6.7265770927008700853e4,
    3.3430575583588128105e4, 2.5090809287301226727e3};
constexpr std::array<double, 8> kCentreDenominator = {1.0,
                                                      4.2313330701600911252e1,
                                                      6.8718700749205790830e2,
                                                      5.3941960214247511077e3,
                                                      2.1213794301586595867e4,
                                                      3.9307895800092710610e4,
                                                      2.8729085735721942674e4,
                                                      5.2264952788528545610e3};
constexpr std::array<double, 8> kMiddleNumerator = {
    1.42343711074968357734e0,  4.63033784615654529590e0, 5.76949722146069140550e0,
    3.64784832476320460504e0,  1.27045825245236838258e0, 2.41780725177450611770e-1,
    2.27238449892691845833e-2, 7.74545014278341407640e-4};
constexpr std::array<double, 8> kMiddleDenominator = {1.0,
                                                      2.05319162663775882187e0,
                                                      1.67638483018380384940e0,
                                                      6.89767334985100004550e-1,
                                                      1.48103976427480074590e-1,
                                                      1.51986665636164571966e-2,
                                                      5.47593808499534494600e-4,
                                                      1.05075007164441684324e-9};
constexpr std::array<double, 8> kTailNumerator = {
    6.65790464350110377720e0,  5.46378491116411436990e0,  1.78482653991729133580e0,
    2.96560571828504891230e-1, 2.65321895265761230930e-2, 1.24266094738807843860e-3,
    2.71155556874348757815e-5, 2.01033439929228813265e-7};
constexpr std::array<double, 8> kTailDenominator = {1.0,
                                                    5.99832206555887937690e-1,
                                                    1.36929880922735805310e-1,
                                                    1.48753612908506148525e-2,
                                                    7.86869131145613259100e-4,
                                                    1.84631831751005468180e-5,
                                                    1.42151175831644588870e-7,
                                                    2.04426310338993978564e-15};

double SixteenthPower(double x) {
    for (int squaring = 0; squaring < 4; ++squaring) x *= x;
    return x;
}

}  // namespace

double Erf(double x) {
    if (std::isnan(x)) return MCMV::gMissingValue;
    const double a = std::abs(x);
    if (!(a > 0.0)) return 0.0;
    double value = 1.0;
    if (a < 2.2) {
        const double square = a * a;
        const double row = std::floor(square);
        value = a * FSPolynomial(kErfCentre[static_cast<std::size_t>(row)], square - row);
    } else if (a < 6.9) {
        const double whole = std::floor(a);
        const auto row = static_cast<std::size_t>(whole) - 2;
        value = 1.0 - SixteenthPower(FSPolynomial(kErfcRoot[row], a - whole));
    }
    return std::copysign(value, x);
}

double Erfc(double x) {
    if (std::isnan(x)) return MCMV::gMissingValue;
    const double a = std::abs(x);
    if (!(a > 0.0)) return 1.0;
    const double t = kErfcScale / (a + kErfcScale);
    const double scaled = FSPolynomial(kErfc, t - 0.5) * t;
    double value = 0.0;
    if (scaled > 0.0) {
        const double exponent = std::log(scaled) - a * a;
        if (!(exponent < kLowestExponent)) value = std::exp(exponent);
    }
    return x < 0.0 ? 2.0 - value : value;
}

double NormalCdf(double z) {
    if (std::isnan(z)) return MCMV::gMissingValue;
    if (z > 0.0) return (Erf(z / std::numbers::sqrt2) + 1.0) * 0.5;
    if (z < 0.0) return Erfc(std::abs(z) / std::numbers::sqrt2) * 0.5;
    return 0.5;
}

double NormalCdfAt(double x, double mean, double sd) {
    if (!(sd > 0.0)) return MCMV::gMissingValue;
    return NormalCdf((x - mean) / sd);
}

double NormalQuantile(double p) {
    if (!(p > 0.0) || !(p < 1.0)) return MCMV::gMissingValue;
    const double q = p - 0.5;
    if (q == 0.0) return 0.0;
    if (std::abs(q) <= 0.425) {
        const double r = 0.180625 - q * q;
        return q * FSPolynomial(kCentreNumerator, r) / FSPolynomial(kCentreDenominator, r);
    }
    const double r = std::sqrt(-std::log(q < 0.0 ? p : 1.0 - p));
    const double z =
        r <= 5.0
            ? FSPolynomial(kMiddleNumerator, r - 1.6) / FSPolynomial(kMiddleDenominator, r - 1.6)
            : FSPolynomial(kTailNumerator, r - 5.0) / FSPolynomial(kTailDenominator, r - 5.0);
    return q < 0.0 ? -z : z;
}

double NormalQuantileAt(double p, double mean, double sd) {
    if (!(p > 0.0) || !(p < 1.0) || !(sd > 0.0)) return MCMV::gMissingValue;
    if (p == 0.5) return mean;
    return mean + sd * NormalQuantile(p);
}
