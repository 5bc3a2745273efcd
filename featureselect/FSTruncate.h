#ifndef PREDSEL_FEATURESELECT_FSTRUNCATE_H
#define PREDSEL_FEATURESELECT_FSTRUNCATE_H

#include <cstdint>
#include <limits>

#include "host/Records.h"

/// The category code that a categorical value stands for: the value cut to a 32-bit integer. What
/// no such integer can hold, a NaN included, gives the lowest one, so that no input is undefined.
inline std::int32_t FSTruncate(double value) {
    if (value > -2147483649.0 && value < 2147483648.0) {
        return static_cast<std::int32_t>(value);
    }
    return std::numeric_limits<std::int32_t>::min();
}

/// Whether the value of a predictor or a target is missing: the missing value, or as a category
/// the code -1.
inline bool FSIsMissing(double value, bool categorical) {
    return value == MCMV::gMissingValue || (categorical && FSTruncate(value) == -1);
}

#endif  // PREDSEL_FEATURESELECT_FSTRUNCATE_H
