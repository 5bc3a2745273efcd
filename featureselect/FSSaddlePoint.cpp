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
