#ifndef PREDSEL_FEATURESELECT_FSDELETIONREASON_H
#define PREDSEL_FEATURESELECT_FSDELETIONREASON_H

#include <cstdint>

/// Why screening dropped a predictor. The first two are found by FSPredictorSet, the others by the
/// accumulators.
namespace FSDeletionReason {

inline constexpr std::int32_t kNone = 0;
inline constexpr std::int32_t kAllMissing = 1;             // no valid value at all
inline constexpr std::int32_t kAllConst = 2;               // one value throughout
inline constexpr std::int32_t kManyMissing = 3;            // too many missing values
inline constexpr std::int32_t kManyConst = 4;              // largest category too large
inline constexpr std::int32_t kManyCategs = 5;             // too many categories
inline constexpr std::int32_t kManyCategsWithOneCase = 6;  // too many categories of one case
inline constexpr std::int32_t kSmallStdDev = 7;            // standard deviation too small
inline constexpr std::int32_t kSmallVar = 8;               // coefficient of variation too small

}  // namespace FSDeletionReason

#endif  // PREDSEL_FEATURESELECT_FSDELETIONREASON_H
