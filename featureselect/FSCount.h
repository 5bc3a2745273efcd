#ifndef PREDSEL_FEATURESELECT_FSCOUNT_H
#define PREDSEL_FEATURESELECT_FSCOUNT_H

#include <algorithm>
#include <cstdint>
#include <limits>

/// Counts some more, at least 0. The largest number stays: a restored state may hold it.
inline void FSCountMore(std::int32_t& count, std::int32_t more) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    count = static_cast<std::int32_t>(std::min(std::int64_t{count} + more, kMost));
}

/// Counts one more, likewise.
inline void FSCountOne(std::int32_t& count) { FSCountMore(count, 1); }

#endif  // PREDSEL_FEATURESELECT_FSCOUNT_H
