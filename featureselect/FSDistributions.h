#ifndef PREDSEL_FEATURESELECT_FSDISTRIBUTIONS_H
#define PREDSEL_FEATURESELECT_FSDISTRIBUTIONS_H

#include "featureselect/FSTail.h"

// The distribution functions behind the p-values of the ranking criteria.
//
// All are pure functions of doubles. None throws: a bad argument gives MCMV::gMissingValue. Degrees
// of freedom need not be whole (weights are not), but they are finite and above 0; a NaN anywhere
// is a bad argument. Measured accuracy: docs/accuracy.md.

/// P(X < x) of the chi-square distribution with df degrees of freedom.
/// 0.0 for x not above 0; missing for a bad df, which is tested first.
double ChiSquareCdf(double x, double df);

/// P(F < f) of the F distribution with df1 (numerator) and df2 (denominator) degrees of freedom.
/// 0.0 for f not above 0; missing for a bad df1 or df2, which are tested first.
double FCdf(double f, double df1, double df2);

/// P(T < t) of Student's t distribution with df degrees of freedom.
/// 0.5 for t = 0; missing for a bad df, which is tested first.
double TCdf(double t, double df);

/// P(X > x) of the chi-square distribution: 1 and 0.0 for x not above 0.
FSTail ChiSquareTail(double x, double df);

/// P(F > f) of the F distribution: 1 and 0.0 for f not above 0.
FSTail FTail(double f, double df1, double df2);

/// P(|T| > |t|) of Student's t distribution, both tails; even in t to the last bit.
FSTail TTail(double t, double df);

#endif  // PREDSEL_FEATURESELECT_FSDISTRIBUTIONS_H
