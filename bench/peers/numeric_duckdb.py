"""Screening for a number as target with DuckDB: one statement with GROUPING SETS (c1, c2, ...) for the
means by level, one with corr() of every scale predictor."""

import duckdb
import numpy
from formulas import TARGET, arguments, correlation_test, f_test, write_ranked

given = arguments(__doc__)
connection = duckdb.connect()
connection.execute(f"SET threads={given.threads}")
connection.execute("SET preserve_insertion_order=false")
source = f"read_parquet('{given.data}')" if given.data.endswith(".parquet") else f"read_csv('{given.data}')"
described = connection.execute(f"DESCRIBE SELECT * FROM {source}").fetchall()
predictors = [(name, kind) for name, kind, *_ in described if name != TARGET]
scale = [name for name, kind in predictors if kind == "DOUBLE"]
categorical = [name for name, kind in predictors if kind != "DOUBLE"]
moments = f"count({TARGET}), avg({TARGET}), var_samp({TARGET})"
results = []

# The bit of the predictor that is grouped by is zero.
grouped = ", ".join(f"grouping({name})" for name in categorical)
rows = connection.execute(
    f"SELECT {', '.join(categorical)}, {grouped}, {moments} FROM {source} "
    f"GROUP BY GROUPING SETS ({', '.join(f'({name})' for name in categorical)})"
).fetchall()
levels = {name: [] for name in categorical}
for row in rows:
    which = row[len(categorical) :].index(0)
    if row[which] is not None:
        levels[categorical[which]].append(row[-3:])
for name, found in levels.items():
    n, mean, variance = numpy.array(found, float).T
    # A level with one case has no variance.
    results.append(f_test(name, n, mean, numpy.where(n > 1, variance * (n - 1), 0.0)))

correlations = ", ".join(f"regr_count({TARGET}, {name}), corr({TARGET}, {name})" for name in scale)
(row,) = connection.execute(f"SELECT {correlations} FROM {source}").fetchall()
for at, name in enumerate(scale):
    results.append(correlation_test(name, row[2 * at], row[2 * at + 1]))
write_ranked(results, given.output)
