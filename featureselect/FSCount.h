#ifndef PREDSEL_FEATURESELECT_FSCOUNT_H
#define PREDSEL_FEATURESELECT_FSCOUNT_H

#include <cstdint>
#include <limits>

/// Counts one more. The largest number stays: a restored state may hold it.
inline void FSCountOne(std::int32_t& count) {
    if (count < std::numeric_limits<std::int32_t>::max()) ++count;
}

#endif  // PREDSEL_FEATURESELECT_FSCOUNT_H
