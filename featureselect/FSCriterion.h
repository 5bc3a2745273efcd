#ifndef PREDSEL_FEATURESELECT_FSCRITERION_H
#define PREDSEL_FEATURESELECT_FSCRITERION_H

#include <cstdint>

/// The ranking criteria. Each number is a bit position in the settings, the slot of every
/// per-criterion vector and the argument of every per-criterion operation.
namespace FSCriterion {

inline constexpr std::int32_t kPearson = 0;     // Pearson chi-square, ranked by p-value
inline constexpr std::int32_t kLikelihood = 1;  // likelihood ratio chi-square, by p-value
inline constexpr std::int32_t kCramer = 2;      // Cramer's V
inline constexpr std::int32_t kLambda = 3;      // asymmetric lambda, target from predictor
inline constexpr std::int32_t kFStat = 4;       // one-way analysis of variance, by p-value
inline constexpr std::int32_t kTStat = 5;       // t test of a correlation, by p-value
inline constexpr std::int32_t kCount = 6;

}  // namespace FSCriterion

#endif  // PREDSEL_FEATURESELECT_FSCRITERION_H
