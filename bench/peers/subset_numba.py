"""The same forward search with its inner loop compiled by Numba, parallel over the candidates; the
compiled code is cached on disk, so that the warm-up run alone compiles.

logs      sums of logarithms, an exponential a class
products  running products, a logarithm a record"""

import numba
import numpy
from columns import codes_of, read
from formulas import TARGET, arguments, write_chain
from naive_bayes import counts_of, own_part, priors_of, smoothed


@numba.njit(parallel=True, fastmath=True, cache=True)
def likelihoods_of_logs(scores, tables, codes, left, sums):
    for q in numba.prange(len(left)):
        j = left[q]
        total = 0.0
        for i in range(scores.shape[0]):
            row = tables[j, codes[j, i]]
            most = scores[i, 0] + row[0]
            for k in range(1, scores.shape[1]):
                most = max(most, scores[i, k] + row[k])
            shares = 0.0
            for k in range(scores.shape[1]):
                shares += numpy.exp(scores[i, k] + row[k] - most)
            total += most + numpy.log(shares)
        sums[q] = total


@numba.njit(parallel=True, fastmath=True, cache=True)
def likelihoods_of_products(joint, tables, codes, left, sums):
    for q in numba.prange(len(left)):
        j = left[q]
        total = 0.0
        for i in range(joint.shape[0]):
            row = tables[j, codes[j, i]]
            cell = 0.0
            for k in range(joint.shape[1]):
                cell += joint[i, k] * row[k]
            total += numpy.log(cell)
        sums[q] = total


given = arguments(__doc__, "logs", "products", steps=True)
numba.set_num_threads(given.threads)
table = read(given.data, given.threads)
y, classes = codes_of(table[TARGET])
y = y.astype(numpy.intp)
n = len(y)
names = [name for name in table.column_names if name != TARGET]
columns = [codes_of(table[name]) for name in names]
codes = numpy.stack([c for c, _ in columns])
factors = numpy.ones((len(names), max(levels for _, levels in columns) + 1, classes))
own = numpy.empty(len(names))
for j, (column, levels) in enumerate(columns):
    counts = counts_of(y, classes, column, levels)
    probabilities = smoothed(counts, n)
    own[j] = own_part(counts, probabilities)
    factors[j, :levels] = probabilities.T
priors = priors_of(y, classes)
in_logs = given.form == "logs"
tables = numpy.log(factors) if in_logs else factors
state = numpy.tile(numpy.log(priors) if in_logs else priors, (n, 1))
step = likelihoods_of_logs if in_logs else likelihoods_of_products
settled = (numpy.bincount(y, minlength=classes) * numpy.log(priors)).sum()

chain, left = [], numpy.arange(len(names))
while len(chain) < given.steps and len(left):
    sums = numpy.empty(len(left))
    step(state, tables, codes, left, sums)
    scores = (settled + own[left] - sums) / n
    best = int(scores.argmax())
    j = int(left[best])
    chain.append((names[j], scores[best]))
    if in_logs:
        state += tables[j, codes[j]]
    else:
        state *= tables[j, codes[j]]
    settled += own[j]
    left = numpy.delete(left, best)
write_chain(chain, given.output)
