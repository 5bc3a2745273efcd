"""Prints the coefficient tables of LogGamma (featureselect/FSGamma.cpp) and Erf
(featureselect/FSNormal.cpp), lowest power first, and the worst error of each row.

Near-minimax polynomials by Chebyshev interpolation at 60 digits, rounded to doubles.

    python tests/oracles/make_gamma_erf_coefficients.py
"""

import mpmath
from mpmath import mp, mpf

mp.dps = 60


def lower_middle(x):
    """log Gamma(x) without its two zeros, which the caller multiplies in exactly."""
    if abs(x - 1) < mpf(10) ** -25:
        return mpmath.euler
    if abs(x - 2) < mpf(10) ** -25:
        return 1 - mpmath.euler
    return mpmath.loggamma(x).real / ((x - 1) * (x - 2))


def x_of_y(y):
    """The x above 0 with y = x - 4.5 / (x + 0.5)."""
    return ((y - mpf("0.5")) + mpmath.sqrt((y - mpf("0.5")) ** 2 + 4 * (mpf("4.5") + y / 2))) / 2


def erf_over_root(s):
    return 2 / mpmath.sqrt(mp.pi) if s < mpf(10) ** -50 else mpmath.erf(mpmath.sqrt(s)) / mpmath.sqrt(s)


def table(name, rows, function, low, high, terms):
    print(f"// {name}")
    print("{{")
    for row in range(rows):
        coefficients, error = mpmath.chebyfit(lambda t: function(row, t), [low, high], terms, error=True)
        cells = ", ".join(repr(float(c)) for c in reversed(coefficients))
        print(f"    {{{{{cells}}}}},  // {float(error):.1e}")
    print("}};")


half = mpf("0.5")
table("kUpperMiddle", 5, lambda r, t: mpmath.loggamma(r + mpf("3.5") + t).real, -half, half, 13)
table("kLowerMiddle", 7, lambda r, t: lower_middle(x_of_y(r - mpf("3.5") + t)), -half, half, 14)
table("kReciprocal", 2, lambda r, t: mpmath.rgamma(1 + mpf(r) / 4 + t), mpf(0), mpf("0.25"), 11)
table("kErfCentre", 5, lambda r, t: erf_over_root(r + t), mpf(0), mpf(1), 13)
table("kErfcRoot", 5, lambda r, t: mpmath.erfc(r + 2 + t) ** (mpf(1) / 16), mpf(0), mpf(1), 13)
