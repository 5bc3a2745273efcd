"""What the peers share: their arguments, the statistics of reduced tables, and the file of results."""

import argparse
import math
import sys

import numpy
from scipy.stats import chi2, f
from scipy.stats import t as student

TARGET = "y"


def arguments(description: str, *forms: str, steps: bool = False):
    """FILE OUTPUT [--form F] [--threads N]; with --imports the process ends here, libraries loaded."""
    parser = argparse.ArgumentParser(description=description, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("data")
    parser.add_argument("output")
    if forms:
        parser.add_argument("--form", choices=forms, default=forms[0])
    if steps:
        parser.add_argument("--steps", type=int, default=10, help="predictors to find")
    parser.add_argument("--threads", type=int, default=2)
    parser.add_argument("--imports", action="store_true", help="end as soon as the libraries are loaded")
    given = parser.parse_args()
    if given.imports:
        sys.exit(0)
    return given


def chi_square(name: str, counts):
    """Pearson's test of a table of counts; empty rows and columns don't count."""
    counts = numpy.asarray(counts, float)
    counts = counts[counts.sum(axis=1) > 0][:, counts.sum(axis=0) > 0]
    if min(counts.shape, default=0) < 2:
        return name, "chi-square", 0.0, 0, 0, 1.0
    expected = counts.sum(axis=1, keepdims=True) * counts.sum(axis=0, keepdims=True) / counts.sum()
    statistic = float(((counts - expected) ** 2 / expected).sum())
    df = (counts.shape[0] - 1) * (counts.shape[1] - 1)
    return name, "chi-square", statistic, df, 0, float(chi2.sf(statistic, df))


def f_test(name: str, n, mean, within):
    """One-way analysis of variance of each class's count, mean and sum of squares about its mean."""
    n, mean, within = (numpy.asarray(v, float) for v in (n, mean, within))
    filled = n > 0
    n, mean, within = n[filled], mean[filled], within[filled]
    grand = (n * mean).sum() / n.sum()
    df1, df2 = len(n) - 1, int(n.sum()) - len(n)
    statistic = float((n * (mean - grand) ** 2).sum() / df1 / (within.sum() / df2))
    return name, "F", statistic, df1, df2, float(f.sf(statistic, df1, df2))


def correlation_test(name: str, n: int, r: float):
    """Of the correlation of n pairs of numbers; its own last place holds r."""
    df = n - 2
    t = r * math.sqrt(df / (1 - r * r))
    return name, "t", t, df, 0, float(2 * student.sf(abs(t), df)), r


def counts_of(classes, levels, counts):
    """A table of counts from one row a filled cell."""
    _, rows = numpy.unique(numpy.asarray(classes), return_inverse=True)
    _, columns = numpy.unique(numpy.asarray(levels), return_inverse=True)
    table = numpy.zeros((rows.max() + 1, columns.max() + 1))
    numpy.add.at(table, (rows, columns), numpy.asarray(counts, float))
    return table


def write_ranked(results, output: str):
    """The predictors, the most significant first; a correlation, where there is one, in the last column."""
    results.sort(key=lambda r: (r[5], -r[2] / max(r[3], 1), r[0]))
    with open(output, "w") as file:
        file.write("predictor,test,statistic,df1,df2,p,correlation\n")
        for result in results:
            correlation = "%.17g" % result[6] if len(result) > 6 else ""
            file.write("%s,%s,%.17g,%d,%d,%.17g,%s\n" % (*result[:6], correlation))


def write_chain(chain, output: str):
    """Predictors in the order of being found, with the average log-likelihood of each step."""
    with open(output, "w") as file:
        file.write("predictor,likelihood\n")
        for name, likelihood in chain:
            file.write(f"{name},{likelihood:.17g}\n")
