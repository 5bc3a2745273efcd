#ifndef PREDSEL_FEATURESELECT_FSSADDLEPOINT_H
#define PREDSEL_FEATURESELECT_FSSADDLEPOINT_H

// Pieces of the saddle-point form of gamma and beta densities. Written with logs of gamma
// functions, such a density is a small difference of numbers as large as its parameters; in this
// form all large terms are gone before anything is rounded. Loader (2000), Fast and accurate
// computation of binomial probabilities.

/// log(1 + u) - u for u above -1, to full relative accuracy, so near u = 0 too.
/// ratio is 1 + u; a caller who knows it better than this sum passes its own value, which serves
/// where u is far from 0.
double LogRatioMinusChange(double u, double ratio);

#endif  // PREDSEL_FEATURESELECT_FSSADDLEPOINT_H
