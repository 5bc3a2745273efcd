#ifndef PREDSEL_EMBEDDED_DATA_NUMBERRANGE_H
#define PREDSEL_EMBEDDED_DATA_NUMBERRANGE_H

#include <span>
#include <utility>

namespace embedded {

/// Smallest and largest of some numbers; MCMV::gMissingValue twice where there is none but missing
/// ones.
std::pair<double, double> RangeOf(std::span<const double> numbers);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_NUMBERRANGE_H
