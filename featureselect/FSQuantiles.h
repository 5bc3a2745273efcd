#ifndef PREDSEL_FEATURESELECT_FSQUANTILES_H
#define PREDSEL_FEATURESELECT_FSQUANTILES_H

// Inverses of the distribution functions. They complete the family; no criterion calls them. Each
// is as accurate as its stopping rule, see docs/accuracy.md. A NaN is a bad argument.

/// The x with ChiSquareCdf(x, df) = p; 0.0 for p = 0; missing unless 0 <= p < 1 and df is finite
/// and above 0. Best and Roberts (1975), Algorithm AS 91.
double ChiSquareQuantile(double p, double df);

/// The same by bisection, for the arguments where AS 91 doesn't settle: brackets the root outward
/// from start (df when start isn't above 0) and halves to a relative width of 1e-8.
/// error: kNUMERIC_OK; kNUMERIC_BAD_ARGUMENT unless 0 < p < 1 and df is finite and above 0,
/// kNUMERIC_NO_RESULT when there is no bracket; both with the missing value.
double ChiSquareQuantileBisect(double p, double df, double start, int& error);

/// The x with I_x(a, b) = p; closed forms for a or b of 1 and a = b = 0.5. Missing when p isn't
/// from 0 to 1 or no x from 0 to 1 comes out. The cases that need no search are tested before the
/// parameters: p = 0 and p = 1 give themselves, p = 0.5 with a equal to b gives 0.5, and b up to
/// a * 1e-20 gives 1.0, for whatever a and b.
/// Cran, Martin and Thomas (1977), Algorithm AS 109. The first point is held within 1e-8 to
/// 0.9999999; Newton steps are shortened until the point stays inside 0 to 1, and end at 1e-10.
double BetaQuantile(double p, double a, double b);

/// The f with FCdf(f, df1, df2) = p; 0.0 for p = 0; missing unless 0 <= p < 1 and both df are
/// above 0, and when the beta quantile behind it isn't from 0 up to but excluding 1.
double FQuantile(double p, double df1, double df2);

/// The t with TCdf(t, df) = p; missing unless 0 < p < 1 and df is above 0.
double TQuantile(double p, double df);

#endif  // PREDSEL_FEATURESELECT_FSQUANTILES_H
