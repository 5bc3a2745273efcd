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

/// exp(v) - 1 - v to full relative accuracy, so near v = 0 too.
double ExpMinusLinear(double v);

/// log(1 - s + s exp(v)) - s v for s from 0 to 1, to full relative accuracy: what the logarithm of
/// a mean of 1 and exp(v) has above its tangent. The other share, 1 - s, is passed beside s, so
/// that an s near 1 keeps its distance from it.
double LogMeanMinusLinear(double s, double other, double v);

#endif  // PREDSEL_FEATURESELECT_FSSADDLEPOINT_H
