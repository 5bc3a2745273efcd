#include "featureselect/FSSaddlePoint.h"

#include <cmath>

double LogRatioMinusChange(double u, double ratio) {
    const double r = u / (2.0 + u);
    if (!(std::abs(r) <= 0.5)) return std::log(ratio) - u;
    // log(1 + u) = 2 atanh(r) = 2 r (1 + r^2/3 + r^4/5 + ...), and 2 r - u = -r u.
    const double square = r * r;
    double power = square;
    double sum = 0.0;
    for (double odd = 3.0; power / odd > 1e-18 * sum; odd += 2.0) {
        sum += power / odd;
        power *= square;
    }
    return r * (2.0 * sum - u);
}

double ExpMinusLinear(double v) {
    if (!(std::abs(v) <= 0.5)) return std::expm1(v) - v;
    double term = v * v / 2.0;
    double sum = 0.0;
    for (double next = 3.0; std::abs(term) > 1e-18 * sum; next += 1.0) {
        sum += term;
        term *= v / next;
    }
    return sum;
}

double LogMeanMinusLinear(double s, double other, double v) {
    // The mirror image: exp(v) taken out of the mean.
    if (s > 0.5) return LogMeanMinusLinear(other, s, -v);
    // From here on exp(v) would overflow, and counts for all of the mean.
    if (v > 700.0) return other * v + std::log(s + other * std::exp(-v));
    const double change = s * std::expm1(v);
    if (!(std::abs(v) <= 0.5)) return std::log1p(change) - s * v;
    return s * ExpMinusLinear(v) + LogRatioMinusChange(change, 1.0 + change);
}
