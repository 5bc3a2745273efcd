"""Screening for a number as target with NumPy over columns that pyarrow reads: means by level, and
correlations; predictors side by side on threads."""

from concurrent.futures import ThreadPoolExecutor

import numpy
from columns import codes_of, is_scale, numbers_of, read
from formulas import TARGET, arguments, correlation_test, f_test, write_ranked

given = arguments(__doc__)
table = read(given.data, given.threads)
y = numbers_of(table[TARGET])
# About the middle, sums of squares keep their digits.
y = y - y.mean()


def screen(name):
    column = table[name]
    if not is_scale(column):
        codes, levels = codes_of(column)
        codes = codes.astype(numpy.intp)
        n, sums, squares = (
            numpy.bincount(codes, weights, levels + 1)[:levels] for weights in (None, y, y * y)
        )
        filled = n > 0
        n, sums, squares = n[filled], sums[filled], squares[filled]
        return f_test(name, n, sums / n, squares - sums**2 / n)
    x = numbers_of(column)
    valid = ~numpy.isnan(x)
    x, t = x[valid], y[valid]
    x, t = x - x.mean(), t - t.mean()
    return correlation_test(name, len(x), float((x @ t) / numpy.sqrt((x @ x) * (t @ t))))


with ThreadPoolExecutor(given.threads) as pool:
    results = list(pool.map(screen, [n for n in table.column_names if n != TARGET]))
write_ranked(results, given.output)
