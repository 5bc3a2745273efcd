"""Naive Bayes with every predictor, pandas and scikit-learn: OrdinalEncoder, KBinsDiscretizer of ten
equal widths, CategoricalNB, predict_proba, the table with the probabilities saved to Parquet.
CategoricalNB takes no missing cell, so that a missing one is a level of its own here: the probabilities
are close to the others' and not the same."""

import numpy
import pandas
from formulas import TARGET, arguments
from sklearn.naive_bayes import CategoricalNB
from sklearn.preprocessing import KBinsDiscretizer, OrdinalEncoder

given = arguments(__doc__, "table", "scores")
if given.data.endswith(".parquet"):
    frame = pandas.read_parquet(given.data)
else:
    frame = pandas.read_csv(given.data, engine="pyarrow")
y = frame[TARGET].to_numpy()
names = frame.columns.drop(TARGET)
X = numpy.empty((len(frame), len(names)), numpy.int8)
for j, name in enumerate(names):
    column = frame[name]
    if name[0] == "x":
        values = column.to_numpy()
        valid = ~numpy.isnan(values)
        bins = KBinsDiscretizer(10, encode="ordinal", strategy="uniform", subsample=None)
        X[:, j] = 0
        X[valid, j] = bins.fit_transform(values[valid, None]).ravel() + 1
    else:
        encoder = OrdinalEncoder(dtype=numpy.float32, encoded_missing_value=-1)
        X[:, j] = encoder.fit_transform(column.to_frame()).ravel() + 1
model = CategoricalNB(alpha=1.0 / len(y)).fit(X, y)
probabilities = model.predict_proba(X)
new = {"predicted": model.classes_[probabilities.argmax(axis=1)]}
new |= {f"probability_{label}": probabilities[:, k] for k, label in enumerate(model.classes_)}
new = pandas.DataFrame(new)
(new if given.form == "scores" else pandas.concat([frame, new], axis=1)).to_parquet(given.output)
