#include "featureselect/FSOrderFreeSum.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <utility>

namespace {

constexpr int kDigits = std::numeric_limits<double>::digits;
constexpr int kWanted = 2 * kDigits + 1;  // bits of the sum, from the highest of the largest term

}  // namespace

// The leading bits of all parts, cut at one place, add up in plain doubles without rounding; then
// the leading bits of what is left, and so on (Rump, Ogita & Oishi 2008). Where to cut goes by the
// largest part and the number of parts alone. Adding 2^cut and taking it away again rounds a part
// to a multiple of 2^(cut - kDigits + 1), with a rest of at most half of that.
FSDoubleDouble FSOrderFreeSum::Total() {
    std::vector<double> parts = std::exchange(fvParts, {});
    double largest = 0.0;
    bool isFinite = true;
    for (const double part : parts) {
        largest = std::max(largest, std::abs(part));
        isFinite = isFinite && std::isfinite(part);
    }
    if (!isFinite) return std::numeric_limits<double>::quiet_NaN();
    if (largest == 0.0) return 0.0;
    const int carries = static_cast<int>(std::bit_width(parts.size())) + 1;
    const int bits = kDigits - carries;  // that a cut takes of every part
    FSDoubleDouble total;
    int cut = std::ilogb(largest) + 1 + carries;
    for (int left = kWanted + carries; left > 0; left -= bits, cut -= bits) {
        const double unit = std::ldexp(1.0, cut);
        double sum = 0.0;
        for (double& part : parts) {
            const double leading = (unit + part) - unit;
            sum += leading;
            part -= leading;
        }
        total = total + sum;
    }
    return total;
}
