"""Screening for a number as target with Polars: a scan, one group_by a categorical predictor and the
correlations of all scale ones, all collected together."""

import numpy
import polars
from formulas import TARGET, arguments, correlation_test, f_test, write_ranked

given = arguments(__doc__)
if given.data.endswith(".parquet"):
    scan = polars.scan_parquet(given.data)
else:
    scan = polars.scan_csv(given.data, infer_schema_length=1000)
kinds = [(name, kind) for name, kind in scan.collect_schema().items() if name != TARGET]
scale = [name for name, kind in kinds if kind.is_float()]
categorical = [name for name, kind in kinds if not kind.is_float()]
y = polars.col(TARGET)
moments = [y.count().alias("n"), y.mean().alias("mean"), y.var().alias("variance")]
queries = [scan.drop_nulls(name).group_by(name).agg(moments) for name in categorical]
correlations = scan.select(
    expression
    for name in scale
    for expression in (polars.col(name).count().alias(f"{name} n"), polars.corr(y, name).alias(f"{name} r"))
)
*tables, correlated = polars.collect_all([*queries, correlations])
results = []
for name, table in zip(categorical, tables, strict=True):
    n, mean, variance = (table[what].to_numpy().astype(float) for what in ("n", "mean", "variance"))
    # A level with one case has no variance.
    results.append(f_test(name, n, mean, numpy.where(n > 1, variance * (n - 1), 0.0)))
for name in scale:
    results.append(correlation_test(name, correlated[f"{name} n"].item(), correlated[f"{name} r"].item()))
write_ranked(results, given.output)
