"""Natural logarithms of p-values in ball arithmetic (python-flint), right to some 15 digits however
small the p-value is."""

from flint import arb, ctx


def certain(compute) -> float:
    """The value as a double, at a precision that leaves no doubt about it."""
    before = ctx.prec
    try:
        ctx.prec = 192
        while ctx.prec < 40000:
            ball = compute()
            if ball.is_finite() and ball.rel_accuracy_bits() > 60:
                return float(ball)
            ctx.prec *= 2
        raise ArithmeticError("not settled")
    finally:
        ctx.prec = before


def log_p_of_chi_square(statistic: float, df: float) -> float:
    return certain(lambda: (arb(statistic) / 2).gamma_upper(arb(df) / 2, regularized=1).log())


def log_p_of_f(statistic: float, df1: float, df2: float) -> float:
    def tail():
        share = arb(df2) / (arb(df2) + arb(df1) * arb(statistic))
        return share.beta_lower(arb(df2) / 2, arb(df1) / 2, regularized=1).log()

    return certain(tail)


def log_p_of_t(statistic: float, df: float) -> float:
    """Two-sided."""

    def tail():
        share = arb(df) / (arb(df) + arb(statistic) * arb(statistic))
        return share.beta_lower(arb(df) / 2, arb(0.5), regularized=1).log()

    return certain(tail)
