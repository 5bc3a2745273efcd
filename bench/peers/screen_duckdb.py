"""Screening with DuckDB.

hist   GROUP BY the target, with histogram() of every categorical predictor and count, avg and var_samp of
       every scale one: one statement and one scan. The time of a statement grows faster than its
       histograms, so that a wide table is read once and takes several statements of 60
sets   one statement with GROUPING SETS ((y, c1), (y, c2), ...), one for the scale predictors
each   the table is read once, then one GROUP BY y, c a predictor: for wide tables"""

import duckdb
import numpy
from formulas import TARGET, arguments, chi_square, counts_of, f_test, write_ranked

given = arguments(__doc__, "hist", "sets", "each")
connection = duckdb.connect()
connection.execute(f"SET threads={given.threads}")
connection.execute("SET preserve_insertion_order=false")
source = f"read_parquet('{given.data}')" if given.data.endswith(".parquet") else f"read_csv('{given.data}')"
BATCH = 60
described = connection.execute(f"DESCRIBE SELECT * FROM {source}").fetchall()
scale = [name for name, kind, *_ in described if kind == "DOUBLE"]
categorical = [name for name, kind, *_ in described if kind != "DOUBLE" and name != TARGET]
results = []
if given.form == "each" or len(described) > 4 * BATCH:
    connection.execute(f"CREATE TABLE loaded AS SELECT * FROM {source}")
    source = "loaded"


def rows_of(expressions, tail=f"GROUP BY {TARGET}"):
    return connection.execute(f"SELECT {TARGET}, {', '.join(expressions)} FROM {source} {tail}").fetchall()


def batches_of(names):
    return [names[at : at + BATCH] for at in range(0, len(names), BATCH)]


def moments_of(names):
    return [f"{f}({name})" for name in names for f in ("count", "avg", "var_samp")]


def add_f_tests(names, rows, first):
    for at, name in enumerate(names):
        n, mean, variance = numpy.array([row[first + 3 * at : first + 3 * at + 3] for row in rows], float).T
        results.append(f_test(name, n, mean, variance * (n - 1)))


def add_histograms(names, rows):
    for at, name in enumerate(names):
        cells = [(row[0], str(level), count) for row in rows for level, count in row[1 + at].items()]
        results.append(chi_square(name, counts_of(*zip(*cells))))


scale_left = scale
if given.form == "hist":
    first, *others = batches_of(categorical)
    # A table of few columns takes all in one scan.
    together = scale if not others else []
    rows = rows_of([f"histogram({name})" for name in first] + moments_of(together))
    add_histograms(first, rows)
    add_f_tests(together, rows, 1 + len(first))
    scale_left = [] if together else scale
    for names in others:
        add_histograms(names, rows_of([f"histogram({name})" for name in names]))
elif given.form == "each":
    for name in categorical:
        cells = rows_of([name, "count(*)"], f"WHERE {name} IS NOT NULL GROUP BY {TARGET}, {name}")
        results.append(chi_square(name, counts_of(*zip(*cells))))
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
for names in batches_of(scale_left):
    add_f_tests(names, rows_of(moments_of(names)), 1)
write_ranked(results, given.output)
