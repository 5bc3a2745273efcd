#ifndef PREDSEL_FEATURESELECT_FSBETA_H
#define PREDSEL_FEATURESELECT_FSBETA_H

#include "featureselect/FSDoubleDouble.h"
#include "featureselect/FSTail.h"

/// Regularized incomplete beta function I_x(a, b). x not above 0 gives 0.0, x from 1 up 1.0.
/// error: kNUMERIC_OK; kNUMERIC_BAD_ARGUMENT for an a or b that isn't finite and above 0 or a NaN
/// x, kNUMERIC_NO_RESULT when nothing finite comes out; both with the missing value.
/// Power series and continued fraction (Abramowitz and Stegun 1964, 26.5.4 and 26.5.8), and the
/// normal approximation of Peizer and Pratt (1968) when the fraction doesn't settle.
double IncompleteBeta(double x, double a, double b, int& error);

/// The same at x = part / (part + rest) for a part and a rest not below 0. A ratio close to 1
/// keeps its distance from 1 here, which one double can't hold: at a = 5e5 the result is sensitive
/// to the 17th digit.
double IncompleteBetaOfRatio(const FSDoubleDouble& part, const FSDoubleDouble& rest, double a,
                             double b, int& error);

/// The same function with its logarithm, right to the last digits where the function itself takes
/// an approximation, too: there the tail is integrated. logRatio is log(part / rest), which counts
/// where x or 1 - x leaves the range of doubles. REQUIRES: a and b finite and above 0, part and
/// rest not below 0 and not both 0 or infinite.
FSTail BetaTailOfRatio(const FSDoubleDouble& part, const FSDoubleDouble& rest, double logRatio,
                       double a, double b);

/// log(x^a (1 - x)^b / (a B(a, b))), with x + y = 1, both above 0.
/// In saddle-point form (Loader 2000), which doesn't cancel for large a and b.
double LogBetaTerm(const FSDoubleDouble& x, const FSDoubleDouble& y, double a, double b);

/// The function g of the normal approximation of Peizer and Pratt (1968):
/// (1 - x^2 + 2 x log(x)) / (1 - x)^2, with its limits 1.0 at 0, 0.0 at 1 and -1.0 for the largest
/// x. Missing for a negative x and for NaN.
double PeizerPrattG(double x);

#endif  // PREDSEL_FEATURESELECT_FSBETA_H
