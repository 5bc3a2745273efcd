"""The classifier's tables, for the NumPy and Numba peers: the same smoothing as the program's.

A count gets 1/n added, n being the cases, in each row of a table that has any; a missing cell takes no
part in its predictor."""

import numpy


def smoothed(counts, n):
    """Probabilities of the levels (columns) in each class (row)."""
    threshold = 1.0 / n
    filled = (counts.sum(axis=0) > 0).sum()
    return (counts + threshold) / (counts.sum(axis=1, keepdims=True) + filled * threshold)


def priors_of(y, classes):
    counts = numpy.bincount(y, minlength=classes)
    threshold = 1.0 / len(y)
    return (counts + threshold) / (len(y) + (counts > 0).sum() * threshold)


def counts_of(y, classes, codes, levels):
    counts = numpy.bincount(y * (levels + 1) + codes, minlength=classes * (levels + 1))
    return counts.reshape(classes, levels + 1)[:, :levels]


def own_part(counts, probabilities):
    """What a table adds to the likelihood before the division by the sums over the classes."""
    filled = counts > 0
    return (counts[filled] * numpy.log(probabilities[filled])).sum()
