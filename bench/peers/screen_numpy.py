"""Screening with NumPy's bincount over columns that pyarrow reads; predictors side by side on threads."""

from concurrent.futures import ThreadPoolExecutor

import numpy
from columns import codes_of, is_scale, numbers_of, read
from formulas import TARGET, arguments, chi_square, f_test, write_ranked

given = arguments(__doc__)
table = read(given.data, given.threads)
codes, classes = codes_of(table[TARGET])
y = codes.astype(numpy.intp)


def screen(name):
    column = table[name]
    if not is_scale(column):
        x, levels = codes_of(column)
        counts = numpy.bincount(y * (levels + 1) + x, minlength=classes * (levels + 1))
        return chi_square(name, counts.reshape(classes, levels + 1)[:, :levels])
    x = numbers_of(column)
    valid = ~numpy.isnan(x)
    x, t = x[valid], y[valid]
    origin = x[:1000].mean()
    x = x - origin
    n = numpy.bincount(t, minlength=classes)
    mean = numpy.bincount(t, x, classes) / n
    return f_test(name, n, mean, numpy.bincount(t, x * x, classes) - n * mean**2)


with ThreadPoolExecutor(given.threads) as pool:
    results = list(pool.map(screen, [n for n in table.column_names if n != TARGET]))
write_ranked(results, given.output)
