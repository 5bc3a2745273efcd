#include "embedded/data/NumberRange.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "host/Records.h"

namespace embedded {

// Several of each, for the processor to work on at a time.
std::pair<double, double> RangeOf(std::span<const double> numbers) {
    constexpr std::size_t kLanes = 8;
    constexpr double kNone = std::numeric_limits<double>::infinity();
    std::array<double, kLanes> low;
    std::array<double, kLanes> high;
    low.fill(kNone);
    high.fill(MCMV::gMissingValue);  // below every other value
    const std::size_t even = numbers.size() - numbers.size() % kLanes;
    const auto take = [&](std::size_t lane, double value) {
        const double lower = value == MCMV::gMissingValue ? kNone : value;
        low[lane] = lower < low[lane] ? lower : low[lane];
        high[lane] = value > high[lane] ? value : high[lane];
    };
    for (std::size_t at = 0; at < even; at += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) take(lane, numbers[at + lane]);
    }
    for (std::size_t at = even; at < numbers.size(); ++at) take(0, numbers[at]);
    const double least = *std::min_element(low.begin(), low.end());
    const double most = *std::max_element(high.begin(), high.end());
    return {least == kNone ? MCMV::gMissingValue : least, most};
}

}  // namespace embedded
