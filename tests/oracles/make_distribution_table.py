"""Writes featureselect/tests/data/distributions.csv: reference values of the distribution functions.

Every value is computed in ball arithmetic (python-flint): the precision is raised until the ball
is narrower than 1e-25 of the value, so each printed double is the correctly rounded one. The
arguments are the exact doubles that the file shows.

    python tests/oracles/make_distribution_table.py
"""

import math
import pathlib

import flint
from flint import arb, ctx

OUTPUT = pathlib.Path(__file__).parents[2] / "featureselect" / "tests" / "data" / "distributions.csv"
SMALLEST = 1e-300  # rows below are left out: doubles thin out there
TAIL = 1e-4


def certain(function):
    """function() as the nearest double, or None when it is below SMALLEST."""
    ctx.prec = 192
    while ctx.prec < 40000:
        ball = function()
        if ball.is_finite():
            if abs(ball) < SMALLEST:
                return None
            if ball.rad() < abs(ball.mid()) * arb(1e-25):
                return float(ball.mid())
        ctx.prec *= 2
    raise ArithmeticError("no certain value")


def short(x):
    """x with few digits, so that the file stays readable; the result is the argument used."""
    return float(f"{x:.6g}")


def beta(x, a, b):
    """I_x(a, b) for balls; through the complement where that converges better."""
    if x > (a + 1) / (a + b + 2):
        return 1 - (1 - x).beta_lower(b, a, regularized=1)
    return x.beta_lower(a, b, regularized=1)


def gamma_lower(x, a):
    return 1 - x.gamma_upper(a, regularized=1)


def chi_square(x, df):
    return gamma_lower(arb(x) / 2, arb(df) / 2)


def f_cdf(f, df1, df2):
    f, df1, df2 = arb(f), arb(df1), arb(df2)
    return beta(df1 * f / (df2 + df1 * f), df1 / 2, df2 / 2)


def t_cdf(t, df):
    tail = beta(arb(df) / (arb(df) + arb(t) * arb(t)), arb(df) / 2, arb(0.5)) / 2
    return tail if t < 0 else 1 - tail


def log_chi_square_tail(x, df):
    return (arb(x) / 2).gamma_upper(arb(df) / 2, regularized=1).log()


def log_f_tail(f, df1, df2):
    f, df1, df2 = arb(f), arb(df1), arb(df2)
    x, y = df2 / (df2 + df1 * f), df1 * f / (df2 + df1 * f)
    if x * df1 < y * df2:  # the smaller side, which converges
        return x.beta_lower(df2 / 2, df1 / 2, regularized=1).log()
    return (-y.beta_lower(df1 / 2, df2 / 2, regularized=1)).log1p()


def log_t_tail(t, df):
    return log_f_tail(arb(t) * arb(t), 1, df)


def normal(z):
    return (-arb(z) / arb(2).sqrt()).erfc() / 2


STEPS = [0.01, 0.1, 0.3, 0.7, 1.0, 1.5, 2.2, 3.0, 4.5, 6.0, 9.0, 14.0, 20.0, 28.0, 37.0]
SPREAD = [-s for s in reversed(STEPS)] + [0.0] + STEPS


def size(largest):
    if largest <= 2:
        return "df to 2"
    if largest <= 1000:
        return "df to 1000"
    return "df to 1e6" if largest <= 1e6 else "df to 1e9"


def tail(p):
    if p < TAIL:
        return "lower tail"
    return "upper tail" if p > 1 - TAIL else "centre"


def gamma_rows():
    dfs = [0.1, 0.5, 1, 1.5, 2, 3, 4, 5, 7.3, 10, 16, 17, 30, 99.5, 300, 1000, 5000, 1e4, 1e5, 1e6, 1e7, 1e9]
    for df in dfs:
        points = {short(df * math.exp(s * math.sqrt(2 / df))) for s in SPREAD if s * math.sqrt(2 / df) < 12}
        points |= {short(df + s * math.sqrt(2 * df)) for s in SPREAD if df + s * math.sqrt(2 * df) > 0}
        points |= {1.5, 2.0, 2.5, 1e-10, 1e-3, 100.0, 1000.0}
        for x in sorted(points):
            p = certain(lambda: chi_square(x, df))
            if p is not None:
                yield "ChiSquareCdf", f"{tail(p)} {size(df)}", x, df, 0, p
            q = certain(lambda: arb(x / 2).gamma_upper(arb(df / 2), regularized=1))
            if q is not None:
                where = "lower tail" if q > 1 - TAIL else "upper tail" if q < TAIL else "centre"
                yield "UpperGamma", f"{where} {size(df)}", x / 2, df / 2, 0, q


def f_rows():
    dfs = [0.5, 1, 1.7, 2, 3, 4, 7.3, 10, 30, 99.5, 1000, 5000, 1e5, 1e6]
    pairs = [(df1, df2) for df1 in dfs for df2 in dfs]
    pairs += [(1, 1e9), (5, 1e8), (1e7, 3), (1e7, 1e7), (1e8, 1e9)]
    for df1, df2 in pairs:
        width = math.sqrt(2 / df1 + 2 / df2)
        points = {short(math.exp(s * width)) for s in SPREAD[::2] if abs(s * width) < 40}
        points |= {0.999, 1.0, 1.001}
        for f in sorted(points):
            p = certain(lambda: f_cdf(f, df1, df2))
            if p is not None:
                yield "FCdf", f"{tail(p)} {size(max(df1, df2))}", f, df1, df2, p


def t_rows():
    for df in [0.5, 1, 1.5, 2, 2.5, 3, 4, 7, 10, 30.5, 100, 1000, 5000, 1e5, 1e6, 1e9]:
        for t in [1e-8, 1e-3, 0.1, 0.5, 0.9, 1, 1.000001, 1.2, 1.7, 1.8, 2, 3, 5, 8, 12, 20, 30, 37, 100, 1e3, 1e6]:
            for signed in (-t, t):
                p = certain(lambda: t_cdf(signed, df))
                if p is not None:
                    yield "TCdf", f"{tail(p)} {size(df)}", signed, df, 0, p


TAIL_STEPS = [-30, -8, -3, -1, -0.1, -0.01, 0, 0.01, 0.1, 0.5, 1, 2, 3, 5, 8, 14, 20, 28, 36, 60, 1e3]
EXTREMES = [1e-300, 1e-100, 1e-10, 1e10, 1e100, 1e300]


def tail_region(log_p):
    if log_p < -1e6:
        return "ln p below -1e6"
    for limit, region in ((0.5, "p from 0.5"), (1e-16, "p from 1e-16"), (SMALLEST, "p from 1e-300")):
        if log_p >= math.log(limit):
            return region
    return "ln p from -1e6"


def both_rows(function, logarithm, x, first, second):
    """The row of a tail, unless it is below SMALLEST, and that of its logarithm."""
    log_p = certain(logarithm)
    if log_p is None:
        return
    region = tail_region(log_p)
    p = certain(lambda: logarithm().exp())
    if p is not None:
        yield function, region, x, first, second, p
    yield f"log {function}", region, x, first, second, log_p


def chi_square_tail_rows():
    for df in [0.5, 1, 1.5, 2, 3, 4, 7.3, 30, 99.5, 300, 1e4, 12345.67, 1e6, 1e7, 3.5e7, 1e8, 1e9]:
        points = {df + s * math.sqrt(2 * df) for s in TAIL_STEPS} | {df * k for k in (1e-3, 0.3, 1.6, 10, 1e3)}
        for x in sorted({float(f"{x:.12g}") for x in points if x > 0} | set(EXTREMES) | {1.0, 2.0, 2.5}):
            yield from both_rows("ChiSquareTail", lambda: log_chi_square_tail(x, df), x, df, 0)


def f_tail_rows():
    dfs = [0.5, 1, 1.7, 2, 3, 30.5, 1000, 1e6, 1e8]
    for df1, df2 in [(df1, df2) for df1 in dfs for df2 in dfs] + [(1e9, 1e9), (5, 1e9), (1e9, 5)]:
        width = math.sqrt(2 / df1 + 2 / df2)
        points = {math.exp(s * width) for s in TAIL_STEPS if abs(s * width) < 40}
        points = {float(f"{f:.12g}") for f in points} | set(EXTREMES) | {1.0, 1e3}
        for f in sorted(points):
            yield from both_rows("FTail", lambda: log_f_tail(f, df1, df2), f, df1, df2)


def t_tail_rows():
    statistics = [s for s in TAIL_STEPS if s > 0] + EXTREMES + [1e-3, 0.9, 1.000001, 1.2, 100, 1e6]
    for df in [0.5, 1, 1.5, 2, 2.5, 3, 7, 30.5, 100, 5000, 1e5, 999998, 1e8, 1e9]:
        # The last one: r^2 one rounding below 1.
        for t in sorted(statistics + [math.sqrt(df) * 2.0**26.5]):
            yield from both_rows("TTail", lambda: log_t_tail(t, df), t, df, 0)


def beta_rows():
    parameters = [0.05, 0.3, 0.5, 0.95, 1, 1.2, 2, 5.5, 20, 300, 5e4]
    for a in parameters:
        for b in parameters:
            for x in [1e-10, 1e-5, 1e-3, 0.0034, 0.004, 0.02, 0.2, 0.5, 0.7, 0.95, 0.9962, 0.9999, 0.999999]:
                p = certain(lambda: beta(arb(x), arb(a), arb(b)))
                if p is not None:
                    where = "a and b below 1" if max(a, b) < 1 else tail(p)
                    yield "IncompleteBeta", where, x, a, b, p


def simple_rows():
    for z in [-37, -30, -20.5, -12, -8, -5.9, -4, -3.1, -3, -2.5, -2, -1.5, -1, -0.7, -0.3, -0.1, -1e-3, -1e-9,
              1e-9, 1e-3, 0.1, 0.3, 0.7, 1, 1.5, 2, 2.5, 3, 3.2, 4, 5, 6, 8]:
        p = certain(lambda: normal(z))
        yield "NormalCdf", tail(p), z, 0, 0, p
    for x in [1e-300, 1e-10, 1e-3] + [short(0.0625 * k) for k in range(1, 112)] + [2.19999, 2.2, 6.8999, 7.0]:
        yield "Erf", "all", x, 0, 0, certain(lambda: arb(x).erf())
    for x in [-3.0, -1.0, -0.1, 1e-10, 1e-3] + [short(0.125 * k) for k in range(1, 208)]:
        yield "Erfc", "all", x, 0, 0, certain(lambda: arb(x).erfc())
    grid = [1e-300, 1e-20, 1e-5, 0.01] + [short(k / 32) for k in range(1, 320)]
    grid += [0.999, 0.9999999, 1.0000001, 1.001, 1.9999, 2.00001, 12.5, 30, 171, 1e3, 1e5, 1e6, 1e10, 1e100, 1e300]
    for x in grid:
        if x not in (1.0, 2.0):
            yield "LogGamma", "below 8" if x < 8 else "from 8", x, 0, 0, certain(lambda: arb(x).lgamma())


def invert(cdf, p, low, high):
    """The nearest double to the root of cdf(x) = p, bisected on balls."""
    target = arb(p)
    ctx.prec = 192
    low, high = arb(low), arb(high)
    while high - low > abs(high) * arb(1e-19):
        middle = ((low + high) / 2).mid()
        if (cdf(middle) - target).mid() < 0:
            low = middle
        else:
            high = middle
    return float(((low + high) / 2).mid())


PROBABILITIES = [1e-12, 1e-6, 0.001, 0.025, 0.2, 0.49, 0.5, 0.6, 0.9, 0.975, 0.999, 1 - 1e-6]


def quantile_rows():
    for p in [1e-300, 1e-100, 1e-20] + PROBABILITIES + [0.074, 0.076, 1 - 1e-12]:
        if p != 0.5:
            yield "NormalQuantile", "all", p, 0, 0, invert(normal, p, -40, 40)
    for df in [0.2, 0.5, 1, 2, 3, 5, 10, 30.5, 100, 1000, 1e4]:
        for p in PROBABILITIES:
            x = invert(lambda v: gamma_lower(v / 2, arb(df) / 2), p, 0, df + 200 + 12 * math.sqrt(2 * df))
            if x > 1e-290:
                yield "ChiSquareQuantile", "quantile below 1e-3" if x < 1e-3 else "quantile from 1e-3", p, df, 0, x
    for a in [0.3, 0.5, 1.5, 3, 20, 500]:
        for b in [0.3, 0.5, 1.5, 3, 20, 500]:
            for p in PROBABILITIES[1:]:
                x = invert(lambda v: beta(v, arb(a), arb(b)), p, 0, 1)
                if within_bounds(x):
                    yield "BetaQuantile", share(x), p, a, b, x
    for df1 in [1, 3, 10, 200]:
        for df2 in [1, 3, 10, 200, 1e4]:
            for p in PROBABILITIES[2:-1]:
                w = invert(lambda v: beta(v, arb(df1) / 2, arb(df2) / 2), p, 0, 1)
                if within_bounds(w):
                    yield "FQuantile", share(w), p, df1, df2, f_quantile(p, df1, df2)
    for df in [1, 1.5, 2, 3, 5, 10, 30.5, 100, 1e4, 1e6]:
        for p in [1e-12, 1e-6, 0.001, 0.025, 0.2, 0.49, 0.5001, 0.6, 0.9, 0.975, 0.999, 1 - 1e-6]:
            t = invert(lambda v: t_ball(v, df), p, -1e13, 1e13)
            w = df / (df + t * t)
            if within_bounds(w):
                yield "TQuantile", share(w), p, df, 0, t


def within_bounds(x):
    """Whether the search for the beta quantile, which ends at steps of 1e-10, leaves right digits."""
    return 1e-8 < x < 0.9999999


def share(x):
    return "beta quantile inside" if 1e-3 <= x <= 0.999 else "beta quantile near an end"


def f_quantile(p, df1, df2):
    return invert(lambda v: beta(df1 * v / (df2 + df1 * v), arb(df1) / 2, arb(df2) / 2), p, 0, 1e8)


def t_ball(t, df):
    v = beta(arb(df) / (arb(df) + t * t), arb(df) / 2, arb(0.5)) / 2
    return v if t < 0 else 1 - v


ROWS = (gamma_rows, f_rows, t_rows, chi_square_tail_rows, f_tail_rows, t_tail_rows, beta_rows, simple_rows,
        quantile_rows)


def main():
    lines = [f"# Made by tests/oracles/make_distribution_table.py with python-flint {flint.__version__}."]
    lines.append("function,region,x,parameter1,parameter2,value")
    for rows in ROWS:
        for name, region, x, first, second, value in rows():
            cells = [repr(float(v)) for v in (x, first, second, value)]
            lines.append(",".join([name, region] + cells))
        print(rows.__name__, len(lines) - 2)
    OUTPUT.write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
