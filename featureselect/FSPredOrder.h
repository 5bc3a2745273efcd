#ifndef PREDSEL_FEATURESELECT_FSPREDORDER_H
#define PREDSEL_FEATURESELECT_FSPREDORDER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "featureselect/FSPredSort.h"

/// The order of predictors under a criterion.
///
/// Criteria 0, 1, 4 and 5: ascending by p-value; p-values that are equal, or both below 1e-290, by
/// their logarithms; then the larger first tie-breaker (statistic), then the smaller second one for
/// 0 and 1 (degrees of freedom, or -N), the larger for 4 and 5 (N). But two results of one test
/// with equal degrees of freedom always stand in the order of their statistics, the larger first: a
/// p-value is a rounded function of them, which may turn the order of neighbours round.
///
/// Criteria 2 and 3: descending by value, then the larger first tie-breaker (chi-square, number of
/// categories).
///
/// Predictors that are equal so far stand in the order of their indices, those without a value last
/// and in that order too.
namespace FSPredOrder {

/// Puts the first `head` records of the order in front, in their order. The order of the rest is
/// unspecified.
void Sort(std::vector<std::unique_ptr<FSPredSort>>& records, std::int32_t criterion,
          std::size_t head);

}  // namespace FSPredOrder

#endif  // PREDSEL_FEATURESELECT_FSPREDORDER_H
