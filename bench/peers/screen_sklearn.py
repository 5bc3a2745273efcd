"""Screening with pandas and scikit-learn.

Categorical: OrdinalEncoder, OneHotEncoder and feature_selection.chi2, whose sum over the levels of a
predictor is the statistic of the whole table. Scale: feature_selection.f_classif. Neither takes a
missing cell, so that each predictor is passed without its own."""

import numpy
import pandas
from formulas import TARGET, arguments, write_ranked
from scipy.stats import chi2 as chi2_distribution
from sklearn.feature_selection import chi2, f_classif
from sklearn.preprocessing import OneHotEncoder, OrdinalEncoder

given = arguments(__doc__)
if given.data.endswith(".parquet"):
    frame = pandas.read_parquet(given.data)
else:
    frame = pandas.read_csv(given.data, engine="pyarrow")
y = OrdinalEncoder(dtype=numpy.int8).fit_transform(frame[[TARGET]]).ravel()
classes = int(y.max()) + 1
results = []
for name in frame.columns.drop(TARGET):
    column = frame[name]
    valid = column.notna().to_numpy()
    if name[0] == "x":
        statistic, p = f_classif(column.to_numpy()[valid, None], y[valid])
        results.append((name, "F", float(statistic[0]), classes - 1, int(valid.sum()) - classes, float(p[0])))
    else:
        codes = OrdinalEncoder(dtype=numpy.int8).fit_transform(column[valid].to_frame())
        indicators = OneHotEncoder(dtype=numpy.int32).fit_transform(codes)
        statistic = float(chi2(indicators, y[valid])[0].sum())
        df = (indicators.shape[1] - 1) * (classes - 1)
        results.append((name, "chi-square", statistic, df, 0, float(chi2_distribution.sf(statistic, df))))
write_ranked(results, given.output)
