"""Screening with Polars.

lazy      a scan, one group_by a predictor, all collected together
onepass   a scan, one group_by on the target with value counts and moments of every predictor inside
eager     the table is read, texts become categories, then one group_by a predictor
stream    as onepass, on the streaming engine"""

import numpy
import polars
from formulas import TARGET, arguments, chi_square, counts_of, f_test, write_ranked

given = arguments(__doc__, "lazy", "onepass", "eager", "stream")
if given.data.endswith(".parquet"):
    scan = polars.scan_parquet(given.data)
else:
    scan = polars.scan_csv(given.data, infer_schema_length=1000)
kinds = scan.collect_schema()
scale = [name for name, kind in kinds.items() if kind.is_float()]
categorical = [name for name, kind in kinds.items() if not kind.is_float() and name != TARGET]
moments = [
    expression
    for name in scale
    for expression in (
        polars.col(name).count().alias(f"{name} n"),
        polars.col(name).mean().alias(f"{name} mean"),
        polars.col(name).var().alias(f"{name} variance"),
    )
]
results = []


def add_chi_square(name, counted):
    counted = counted.drop_nulls()
    results.append(
        chi_square(name, counts_of(counted[TARGET].to_numpy(), counted[name].to_numpy(), counted["len"].to_numpy()))
    )


if given.form == "lazy":
    queries = [scan.group_by(TARGET, name).len() for name in categorical]
    *tables, by_class = polars.collect_all(queries + [scan.group_by(TARGET).agg(moments)])
    for name, counted in zip(categorical, tables):
        add_chi_square(name, counted)
elif given.form == "eager":
    frame = scan.collect().with_columns(polars.col(polars.String).cast(polars.Categorical))
    for name in categorical:
        counted = frame.group_by(TARGET, name).len()
        add_chi_square(name, counted.with_columns(polars.col(polars.Categorical).cast(polars.String)))
    by_class = frame.group_by(TARGET).agg(moments)
else:
    value_counts = [polars.col(name).value_counts() for name in categorical]
    grouped = scan.group_by(TARGET).agg(moments + value_counts)
    by_class = grouped.collect(engine="streaming" if given.form == "stream" else "auto")
    for name in categorical:
        counted = by_class.select(TARGET, polars.col(name).alias("cell")).explode("cell").unnest("cell")
        add_chi_square(name, counted.rename({"count": "len"}))
for name in scale:
    n, mean, variance = (by_class[f"{name} {what}"].to_numpy() for what in ("n", "mean", "variance"))
    results.append(f_test(name, n, mean, variance * (numpy.asarray(n, float) - 1)))
write_ranked(results, given.output)
