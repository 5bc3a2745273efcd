"""Screening with DuckDB.

hist   one statement, one scan: GROUP BY the target, with histogram() of every categorical predictor and
       count, avg and var_samp of every scale one
sets   one statement with GROUPING SETS ((y, c1), (y, c2), ...), one for the scale predictors"""

import duckdb
import numpy
from formulas import TARGET, arguments, chi_square, counts_of, f_test, write_ranked

given = arguments(__doc__, "hist", "sets")
connection = duckdb.connect()
connection.execute(f"SET threads={given.threads}")
connection.execute("SET preserve_insertion_order=false")
source = f"read_parquet('{given.data}')" if given.data.endswith(".parquet") else f"read_csv('{given.data}')"
described = connection.execute(f"DESCRIBE SELECT * FROM {source}").fetchall()
scale = [name for name, kind, *_ in described if kind == "DOUBLE"]
categorical = [name for name, kind, *_ in described if kind != "DOUBLE" and name != TARGET]
moments = [f"{f}({name})" for name in scale for f in ("count", "avg", "var_samp")]
results = []


def rows_of(expressions, tail=f"GROUP BY {TARGET}"):
    return connection.execute(f"SELECT {TARGET}, {', '.join(expressions)} FROM {source} {tail}").fetchall()


def add_f_tests(rows, first):
    for at, name in enumerate(scale):
        n, mean, variance = numpy.array([row[first + 3 * at : first + 3 * at + 3] for row in rows], float).T
        results.append(f_test(name, n, mean, variance * (n - 1)))


if given.form == "hist":
    rows = rows_of([f"histogram({name})" for name in categorical] + moments)
    for at, name in enumerate(categorical):
        cells = [(row[0], str(level), count) for row in rows for level, count in row[1 + at].items()]
        results.append(chi_square(name, counts_of(*zip(*cells))))
    add_f_tests(rows, 1 + len(categorical))
else:
    sets = ", ".join(f"({TARGET}, {name})" for name in categorical)
    grouping = f"grouping({', '.join(categorical)})"
    if len(categorical) > 60:  # grouping() packs its bits into one number of 64
        grouping = ", ".join(f"grouping({name})" for name in categorical)
    rows = rows_of([*categorical, grouping, "count(*)"], f"GROUP BY GROUPING SETS ({sets})")
    cells = [[] for _ in categorical]
    everything = (1 << len(categorical)) - 1
    for row in rows:
        bits = row[1 + len(categorical) : -1]
        # The bit of the predictor that is grouped by is zero; the first argument has the highest bit.
        which = bits.index(0) if len(bits) > 1 else len(categorical) - (everything - bits[0]).bit_length()
        if row[1 + which] is not None:
            cells[which].append((row[0], str(row[1 + which]), row[-1]))
    for name, filled in zip(categorical, cells):
        results.append(chi_square(name, counts_of(*zip(*filled))))
    if scale:
        add_f_tests(rows_of(moments), 1)
write_ranked(results, given.output)
