#ifndef PREDSEL_FEATURESELECT_FSTAIL_H
#define PREDSEL_FEATURESELECT_FSTAIL_H

#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/Records.h"

/// A tail probability p and its natural logarithm. Both missing for a bad argument, and where
/// nothing comes out. Where p leaves the range of doubles fP is 0 or denormal and fLogP still
/// right; fLogP is minus infinity for an infinite statistic.
struct FSTail {
    double fP = MCMV::gMissingValue;
    double fLogP = MCMV::gMissingValue;
};

/// The tail of which this is the logarithm; one that rounding lifted above 0 counts as 0.
inline FSTail TailOfLog(double logP) {
    if (std::isnan(logP)) return {};
    const double capped = std::min(logP, 0.0);
    return {std::exp(capped), capped};
}

/// The tail of which this is the logarithm of the complement 1 - p. Keeps the digits of a p near 1,
/// not those of a small one, and has nothing to tell of a p that rounding has lost.
inline FSTail TailOfLogComplement(double logQ) {
    if (!(logQ < 0.0)) return {};
    if (logQ < -std::numbers::ln2) return {-std::expm1(logQ), std::log1p(-std::exp(logQ))};
    const double p = -std::expm1(logQ);
    return {p, std::log(p)};
}

#endif  // PREDSEL_FEATURESELECT_FSTAIL_H
