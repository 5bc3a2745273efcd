#ifndef PREDSEL_FEATURESELECT_FSGAMMA_H
#define PREDSEL_FEATURESELECT_FSGAMMA_H

#include "featureselect/FSTail.h"

/// Logarithm of the gamma function, exactly 0.0 at 1 and 2. Missing when it can't be formed: x not
/// above 0, NaN, or so large that the result leaves the range of doubles.
double LogGamma(double x);

/// The error of Stirling's formula: LogGamma(z) - ((z - 0.5) log(z) - z + log(2 pi) / 2),
/// for z above 0.
double StirlingError(double z);

/// Regularized incomplete gamma function: the lower P(a, x), or the upper Q(a, x) = 1 - P(a, x)
/// when lower is false. x not above 0 counts as 0.
/// error: kNUMERIC_OK; kNUMERIC_BAD_ARGUMENT for an a that isn't finite and above 0 or a NaN x,
/// kNUMERIC_NO_RESULT when nothing finite comes out; both with the missing value.
/// Power series (Pearson 1922) and continued fraction (Shea 1988, Algorithm AS 239); the normal
/// approximations of Peizer and Pratt (1968) and of Wilson and Hilferty (1931) where both would
/// take too long, that is from about a = 1.7e7 on.
double IncompleteGamma(double x, double a, bool lower, int& error);

/// The upper function with its logarithm, right to the last digits where the function itself takes
/// an approximation, too: there the tail is integrated. REQUIRES: a finite and above 0, no NaN x.
FSTail UpperGammaTail(double x, double a);

#endif  // PREDSEL_FEATURESELECT_FSGAMMA_H
