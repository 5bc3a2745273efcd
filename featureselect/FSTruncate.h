#ifndef PREDSEL_FEATURESELECT_FSTRUNCATE_H
#define PREDSEL_FEATURESELECT_FSTRUNCATE_H

#include <cstdint>
#include <limits>

/// The category code that a categorical value stands for: the value cut to a 32-bit integer. What
/// no such integer can hold, a NaN included, gives the lowest one, so that no input is undefined.
inline std::int32_t FSTruncate(double value) {
    if (value > -2147483649.0 && value < 2147483648.0) {
        return static_cast<std::int32_t>(value);
    }
    return std::numeric_limits<std::int32_t>::min();
}

#endif  // PREDSEL_FEATURESELECT_FSTRUNCATE_H
