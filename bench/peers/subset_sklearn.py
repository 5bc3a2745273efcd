"""scikit-learn's SequentialFeatureSelector over CategoricalNB, forward, by the likelihood over all
records: one "fold" that trains and scores on everything, as the other searches do. CategoricalNB takes no
missing cell, so that a missing one is a level of its own here; the search does the same work on it."""

import numpy
from columns import codes_of, read
from formulas import TARGET, arguments
from sklearn.feature_selection import SequentialFeatureSelector
from sklearn.naive_bayes import CategoricalNB

given = arguments(__doc__, steps=True)
table = read(given.data, given.threads)
y, _ = codes_of(table[TARGET])
names = numpy.array([name for name in table.column_names if name != TARGET])
columns = [codes_of(table[name]) for name in names]
X = numpy.stack([codes for codes, _ in columns], axis=1).astype(numpy.int32)
everything = numpy.arange(len(y))
selector = SequentialFeatureSelector(
    CategoricalNB(alpha=1.0 / len(y), min_categories=max(levels for _, levels in columns) + 1),
    n_features_to_select=given.steps,
    direction="forward",
    scoring="neg_log_loss",
    cv=[(everything, everything)],
    n_jobs=given.threads,
).fit(X, y)
with open(given.output, "w") as file:
    file.write("predictor\n" + "".join(f"{name}\n" for name in names[selector.get_support()]))
