"""Forward search by the average log-likelihood over all records, vectorised in NumPy; candidates side by
side on threads."""

from concurrent.futures import ThreadPoolExecutor

import numpy
from columns import codes_of, read
from formulas import TARGET, arguments, write_chain
from naive_bayes import counts_of, own_part, priors_of, smoothed

given = arguments(__doc__, steps=True)
table = read(given.data, given.threads)
y, classes = codes_of(table[TARGET])
y = y.astype(numpy.intp)
n = len(y)
names = [name for name in table.column_names if name != TARGET]
codes, factors, own = {}, {}, {}
for name in names:
    codes[name], levels = codes_of(table[name])
    counts = counts_of(y, classes, codes[name], levels)
    probabilities = smoothed(counts, n)
    own[name] = own_part(counts, probabilities)
    factors[name] = numpy.column_stack([probabilities, numpy.ones(classes)])  # the last code is a missing cell
priors = priors_of(y, classes)
# Products stay far above the smallest double at the sizes searched for here.
joint = numpy.repeat(priors[:, None], n, axis=1)
settled = (numpy.bincount(y, minlength=classes) * numpy.log(priors)).sum()


def likelihood(name):
    at, rows = codes[name], factors[name]
    sums = joint[0] * rows[0].take(at)
    for k in range(1, classes):
        sums += joint[k] * rows[k].take(at)
    return (settled + own[name] - numpy.log(sums, out=sums).sum()) / n


chain = []
with ThreadPoolExecutor(given.threads) as pool:
    while len(chain) < given.steps and names:
        scores = list(pool.map(likelihood, names))
        best = int(numpy.argmax(scores))
        name = names.pop(best)
        chain.append((name, scores[best]))
        joint *= factors[name][:, codes[name]]
        settled += own[name]
write_chain(chain, given.output)
