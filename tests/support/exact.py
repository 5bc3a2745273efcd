"""Statistics of weighted doubles in rational arithmetic: what a program that rounds nowhere but at the
end would give. A double is a fraction; only square roots are cut, behind 100 digits."""

import math
import sys
from fractions import Fraction


def root(square: Fraction) -> Fraction:
    """The square root, from below, to 350 bits."""
    if square == 0:
        return Fraction(0)
    shift = 350 - (square.numerator.bit_length() - square.denominator.bit_length()) // 2
    scaled = square * Fraction(4) ** shift
    return Fraction(math.isqrt(scaled.numerator // scaled.denominator)) / Fraction(2) ** shift


def signed_root(square: Fraction, sign) -> Fraction:
    return -root(square) if sign < 0 else root(square)


def weighted_sum(pairs) -> Fraction:
    return sum((Fraction(value) * weight for value, weight in pairs), Fraction(0))


def moments(values, weights):
    """Weight, mean and sum of squared deviations."""
    weights = [Fraction(weight) for weight in weights]
    total = sum(weights)
    mean = weighted_sum(zip(values, weights)) / total
    return total, mean, sum(w * (Fraction(x) - mean) ** 2 for x, w in zip(values, weights))


def univariate(values, weights):
    """Mean and variance; the variance is None when the weight is not above 1."""
    total, mean, moment = moments(values, weights)
    return {"mean": mean, "variance": moment / (total - 1) if total > 1 else None}


def f_test(values, groups, weights):
    """Variation between and within groups, F and its degrees of freedom. A group of weight 1 or less
    adds nothing to the variation within. F is None where it isn't defined."""
    members = {}
    for value, group, weight in zip(values, groups, weights):
        members.setdefault(group, []).append((value, weight))
    total, grand, _ = moments(values, weights)
    between = within = Fraction(0)
    for group in members.values():
        weight, mean, moment = moments(*zip(*group))
        between += weight * (mean - grand) ** 2
        within += moment if weight > 1 else 0
    df1, df2 = len(members) - 1, total - len(members)
    f = between / df1 / (within / df2) if df1 > 0 and df2 > 0 and within > 0 else None
    return {"between": between, "within": within, "F": f, "df1": df1, "df2": df2}


def correlation(x, y, weights):
    """r, what it leaves unexplained, and t with its degrees of freedom. None where not defined."""
    total, x_mean, xx = moments(x, weights)
    _, y_mean, yy = moments(y, weights)
    if total <= 1 or xx == 0 or yy == 0:
        return {"r": None, "unexplained": None, "t": None, "df": total - 2}
    xy = sum(
        Fraction(w) * (Fraction(one) - x_mean) * (Fraction(other) - y_mean)
        for one, other, w in zip(x, y, weights)
    )
    left = xx * yy - xy**2
    t = signed_root((total - 2) * xy**2 / left, xy) if left > 0 and total >= 2 else None
    return {"r": signed_root(xy**2 / (xx * yy), xy), "unexplained": left / (xx * yy), "t": t, "df": total - 2}


def is_double(exact: Fraction) -> bool:
    """Whether doubles of full precision lie around it."""
    return exact == 0 or sys.float_info.min <= abs(exact) <= sys.float_info.max


def units_in_the_last_place(found: float, exact: Fraction) -> float:
    """How far a result is from the exact value, in steps of the doubles around that."""
    if not math.isfinite(found):
        return math.inf
    return float(abs(Fraction(found) - exact) / Fraction(math.ulp(float(exact))))


def digits(found, exact) -> float:
    """Right decimal digits: minus the logarithm of the relative error; infinite when equal."""
    found, exact = Fraction(found), Fraction(exact)
    if found == exact:
        return math.inf
    error = abs(found - exact) / abs(exact) if exact else abs(found)
    return -(math.log10(error.numerator) - math.log10(error.denominator))
