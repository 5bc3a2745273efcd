#ifndef PREDSEL_FEATURESELECT_FSTAIL_H
#define PREDSEL_FEATURESELECT_FSTAIL_H

#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/Records.h"

/// A tail probability p and its natural logarithm. Both missing for a bad argument.
/// Where p leaves the range of doubles fP is 0 or denormal and fLogP still right; fLogP is minus
/// infinity only where p is 0 in exact arithmetic.
struct FSTail {
    double fP = MCMV::gMissingValue;
    double fLogP = MCMV::gMissingValue;
};

/// The tail of which this is the logarithm; one that rounding lifted above 0 counts as 0.
inline FSTail TailOfLog(double logP) {
    const double capped = std::min(logP, 0.0);
    return {std::exp(capped), capped};
}

/// The tail of which this is the logarithm of the complement 1 - p. Keeps the digits of a p near 1,
/// not those of a small one.
inline FSTail TailOfLogComplement(double logQ) {
    if (!(logQ < 0.0)) return TailOfLog(-HUGE_VAL);  // rounded up to q = 1
    const bool small = logQ < -std::numbers::ln2;    // q, and the better-conditioned form
    return {-std::expm1(logQ), small ? std::log1p(-std::exp(logQ)) : std::log(-std::expm1(logQ))};
}

#endif  // PREDSEL_FEATURESELECT_FSTAIL_H
