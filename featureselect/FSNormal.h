#ifndef PREDSEL_FEATURESELECT_FSNORMAL_H
#define PREDSEL_FEATURESELECT_FSNORMAL_H

// The error function and the normal distribution. A NaN argument gives MCMV::gMissingValue.

/// Error function, odd in x.
double Erf(double x);

/// 1 - Erf(x), accurate in the upper tail down to the smallest double.
double Erfc(double x);

/// Standard normal distribution function, accurate in the lower tail.
double NormalCdf(double z);

/// P(X < x) of the normal distribution; missing unless sd is above 0.
double NormalCdfAt(double x, double mean, double sd);

/// The z with NormalCdf(z) = p; missing unless 0 < p < 1.
/// Wichura (1988), Algorithm AS 241, form PPND16.
double NormalQuantile(double p);

/// mean + sd * NormalQuantile(p); missing unless 0 < p < 1 and sd is above 0.
double NormalQuantileAt(double p, double mean, double sd);

#endif  // PREDSEL_FEATURESELECT_FSNORMAL_H
