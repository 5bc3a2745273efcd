"""Naive Bayes with every predictor, NumPy over pyarrow: codes, ten bins of equal width, tables, the
probabilities of the classes of every record, saved to Parquet.

table    the table with the new columns, as the program saves it
scores   the new columns alone"""

from concurrent.futures import ThreadPoolExecutor

import numpy
import pyarrow
import pyarrow.parquet
from columns import codes_of, is_scale, labels_of, numbers_of, read
from formulas import TARGET, arguments
from naive_bayes import counts_of, priors_of, smoothed

BINS = 10

given = arguments(__doc__, "table", "scores")
table = read(given.data, given.threads)
y, classes = codes_of(table[TARGET])
labels = labels_of(table[TARGET])
y = y.astype(numpy.intp)
n = len(y)


def binned(column):
    """(bins, a missing cell having the code BINS; cut points; the numbers)"""
    x = numbers_of(column)
    low, high = numpy.nanmin(x), numpy.nanmax(x)
    cuts = numpy.arange(1, BINS) * ((high - low) / BINS) + low
    # A value's bin by division, then put right where it lies on or beside a cut: as searchsorted(cuts, x).
    missing = numpy.isnan(x)
    x = numpy.where(missing, low, x)
    bins = numpy.minimum((x - low) * (BINS / (high - low)), BINS - 1).astype(numpy.uint8)
    edges = numpy.concatenate([[-numpy.inf], cuts, [numpy.inf]])
    bins -= x <= edges.take(bins)
    bins += x > edges.take(bins + 1)
    bins[missing] = BINS
    return bins, cuts, x


def log_factors(name):
    """(codes, a row of log-probabilities of each class by code, zeros for a missing cell)"""
    column = table[name]
    if is_scale(column):
        codes, cuts, x = binned(column)
        levels = BINS
    else:
        codes, levels = codes_of(column)
    counts = counts_of(y, classes, codes, levels)
    probabilities = smoothed(counts, n)
    filled = numpy.flatnonzero(counts.sum(axis=0) > 0)
    if is_scale(column) and len(filled) < BINS:
        # For scoring an empty bin is divided in the middle between its filled neighbours.
        borders = [(cuts[a] + cuts[b - 1]) * 0.5 for a, b in zip(filled[:-1], filled[1:])]
        inside = codes < BINS
        codes[inside] = filled[numpy.searchsorted(borders, x[inside], side="left")]
    return codes, numpy.column_stack([numpy.log(probabilities), numpy.zeros(classes)])


def score(names):
    """The sum over some predictors, a row a class."""
    sums = numpy.zeros((classes, n))
    for name in names:
        codes, rows = log_factors(name)
        for k in range(classes):
            sums[k] += rows[k].take(codes)
    return sums


names = [name for name in table.column_names if name != TARGET]
with ThreadPoolExecutor(given.threads) as pool:
    parts = list(pool.map(score, [names[t :: given.threads] for t in range(given.threads)]))
scores = sum(parts) + numpy.log(priors_of(y, classes))[:, None]
scores -= scores.max(axis=0)
numpy.exp(scores, out=scores)
scores /= scores.sum(axis=0)

order = numpy.argsort(labels)
new = {"predicted": pyarrow.array(labels).take(pyarrow.array(scores.argmax(axis=0)))}
new |= {f"probability_{labels[k]}": pyarrow.array(scores[k]) for k in order}
saved = pyarrow.table(new) if given.form == "scores" else table
if given.form == "table":
    for name, values in new.items():
        saved = saved.append_column(name, values)
pyarrow.parquet.write_table(saved, given.output)
