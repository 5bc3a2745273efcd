#ifndef PREDSEL_FEATURESELECT_FSDECAYINTEGRAL_H
#define PREDSEL_FEATURESELECT_FSDECAYINTEGRAL_H

#include <cmath>

/// The integral over v from 0 to infinity of exp(-fall(v)), for a smooth convex fall that rises
/// from fall(0) = 0 with this first and second derivative at 0, neither negative and not both 0. A
/// tail of a gamma or beta distribution over its density has this form in the logarithm or the
/// log-odds of the variable, whatever the parameters: every term is positive, nothing cancels, and
/// about 60 values give the result to rounding.
///
/// Double exponential transform for exponential decay, v = scale exp(t - exp(-t)) (Takahasi and
/// Mori 1974), trapezoidal rule in t, its step halved until the sum settles.
template <class Fall>
double FSDecayIntegral(const Fall& fall, double slope, double curvature) {
    constexpr double kFirst = -3.75;  // v / scale is 1e-20 here
    constexpr double kLast = 6.5;     // and 600 here; as a rule terms vanish from 3.7 on
    constexpr double kNegligible = 1e-18;
    // Halving the step squares the error, so this change foretells one of about 1e-16.
    constexpr double kSettled = 1e-8;
    constexpr int kMaxHalvings = 7;
    // About where fall is 1.
    const double scale = 2.0 / (slope + std::hypot(slope, std::sqrt(2.0 * curvature)));
    double sum = 0.0;
    const auto addTerms = [&](double first, double step) {
        const int count = static_cast<int>((kLast - first) / step);
        for (int i = 0; i < count; ++i) {
            const double t = first + i * step;
            const double shrink = std::exp(-t);
            const double v = std::exp(t - shrink);
            const double term = std::exp(-fall(scale * v)) * v * (1.0 + shrink);
            sum += term;
            if (t > 0.0 && term < kNegligible * sum) break;
        }
    };
    double step = 0.25;  // the steps and with them all t are exact
    addTerms(kFirst, step);
    for (int halving = 0; halving < kMaxHalvings; ++halving) {
        const double before = sum * step;
        addTerms(kFirst + step / 2.0, step);
        step /= 2.0;
        if (std::abs(sum * step - before) <= kSettled * before) break;
    }
    return sum * step * scale;
}

#endif  // PREDSEL_FEATURESELECT_FSDECAYINTEGRAL_H
