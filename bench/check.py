"""Holds the results of the benchmark's programs against each other; exit status 1 where they disagree.

    check.py screen REPORT.json PEER.csv ...     statistic, degrees of freedom and p of every predictor
    check.py squares REPORT.json PEER.csv TABLE.parquet   the same; F as a difference of sums of squares
    check.py chain REPORT.json PEER.csv ...      the predictors found, in order, and their likelihoods
    check.py scores SCORED.parquet PEER.parquet ...   every case's probabilities
    check.py size TABLE.parquet                  bytes of its columns in their narrowest form

The first file is the program's own. Each of the others is compared with it."""

import csv
import json
import math
import sys

import pyarrow
import pyarrow.compute
import pyarrow.parquet

# Sums of millions of numbers in different orders, and variances from sums of squares.
STATISTIC = 1e-8
# A sum of the squares of n numbers of mean m and variance v is n (1 + m^2 / v) variances large. F is a
# difference of such sums, in variances, and so no more certain than their last digit.
EPSILON = sys.float_info.epsilon
# 1 - F(x) has no more digits than doubles near 1.
P_ABSOLUTE, P_RELATIVE = 1e-12, 1e-7
LIKELIHOOD = 1e-10
PROBABILITY = 1e-9


class Disagreement(Exception):
    pass


def near(a, b, relative, absolute=0.0):
    return math.isclose(a, b, rel_tol=relative, abs_tol=absolute)


def cells_of(path, table):
    """{(path of the row, path of the column): value} of a report's table."""
    with open(path) as file:
        (command,) = json.load(file)["commands"]
    if command["status"] != "ok":
        raise Disagreement(f"{path}: the command ended as {command['status']}")
    (found,) = [t for t in command["tables"] if t["id"] == table]
    return [(list(cell["keys"].values()), cell["value"]) for cell in found["cells"]]


def screened(path):
    """{predictor: (statistics, df1, df2, p)} of a report; a correlation has two: its t and itself."""
    fields = {}
    for (row, statistics, *_), value in (
        (keys, value)
        for keys, value in cells_of(path, "PredictorSummary")
        if keys[2:] in ([], [["Pearson Chi-Square"]], [[]])
    ):
        fields.setdefault(row[-1], {})[statistics[-1]] = value
    return {
        name: (
            (cell["t"], cell["Value"]) if "t" in cell else (cell["Value"],),
            cell.get("df", cell.get("df1")),
            cell.get("df2", 0),
            cell["Unadjusted Sig."],
        )
        for name, cell in fields.items()
    }


def screened_by_peer(path):
    with open(path) as file:
        return {
            row["predictor"]: (
                tuple(float(row[name]) for name in ("statistic", "correlation") if row[name]),
                int(row["df1"]),
                int(row["df2"]),
                float(row["p"]),
            )
            for row in csv.DictReader(file)
        }


def compare_screening(ours, theirs, rounding=None):
    """rounding: {predictor: how far its statistic may be off for rounding's sake}."""
    if ours.keys() != theirs.keys():
        raise Disagreement(f"predictors of one side alone: {sorted(ours.keys() ^ theirs.keys())[:5]}")
    worst = 0.0
    for name, (statistics, df1, df2, p) in ours.items():
        their_statistics, their_df1, their_df2, their_p = theirs[name]
        if (df1, df2) != (their_df1, their_df2):
            raise Disagreement(f"{name}: degrees of freedom {df1}, {df2} and {their_df1}, {their_df2}")
        allowed = max(STATISTIC * 1e-2, rounding.get(name, 0.0) if rounding else 0.0)
        if len(statistics) != len(their_statistics):
            raise Disagreement(f"{name}: statistics {statistics} and {their_statistics}")
        for statistic, their_statistic in zip(statistics, their_statistics):
            if not near(statistic, their_statistic, STATISTIC, allowed):
                raise Disagreement(f"{name}: statistic {statistic} and {their_statistic}")
            worst = max(worst, abs(statistic - their_statistic) / max(abs(their_statistic), 1e-2))
        # No density of the statistics is above 1 there, so p is off by no more.
        if not near(p, their_p, P_RELATIVE, max(P_ABSOLUTE, allowed if rounding else 0.0)):
            raise Disagreement(f"{name}: p {p} and {their_p}")
    return f"{len(ours)} predictors, statistics within {worst:.0e}"


def rounding_of_squares(path):
    """{scale predictor: the last digit of its sum of squares, in variances}."""
    result = {}
    for field in pyarrow.parquet.read_schema(path):
        if pyarrow.types.is_floating(field.type):
            column = pyarrow.parquet.read_table(path, columns=[field.name])[field.name]
            mean, variance = (f(column).as_py() for f in (pyarrow.compute.mean, pyarrow.compute.variance))
            if variance:
                result[field.name] = EPSILON * (len(column) - column.null_count) * (1 + mean**2 / variance)
    return result


def chain_of(path):
    steps = {}
    for (subset, statistics), value in cells_of(path, "SubsetSummary"):
        steps.setdefault(subset[0], {})[statistics[0]] = value
    steps.pop(0, None)
    return [
        (steps[size]["Predictor Added"], steps[size]["Average Log-Likelihood"]) for size in sorted(steps)
    ]


def chain_of_peer(path):
    with open(path) as file:
        return [(row["predictor"], float(row["likelihood"])) for row in csv.DictReader(file)]


def compare_chains(ours, theirs):
    if [name for name, _ in ours] != [name for name, _ in theirs]:
        raise Disagreement(f"the chains are {[n for n, _ in ours]} and {[n for n, _ in theirs]}")
    for (name, likelihood), (_, their_likelihood) in zip(ours, theirs):
        if not near(likelihood, their_likelihood, LIKELIHOOD):
            raise Disagreement(f"{name}: likelihood {likelihood} and {their_likelihood}")
    return f"the same {len(ours)} predictors in the same order"


def probabilities_of(path):
    """{category: column} of a saved table; our columns are numbered in the order of the categories."""
    names = pyarrow.parquet.read_schema(path).names
    peers = [name for name in names if name.startswith("probability_")]
    if peers:
        table = pyarrow.parquet.read_table(path, columns=peers)
        return {name.removeprefix("probability_"): table[name] for name in peers}
    ours = [name for name in names if name.startswith("PredictedProbability")]
    table = pyarrow.parquet.read_table(path, columns=["y", *ours])
    categories = sorted(c for c in pyarrow.compute.unique(table["y"]).to_pylist() if c is not None)
    return {category: table[name] for category, name in zip(categories, ours, strict=True)}


def compare_scores(ours, theirs):
    if ours.keys() != theirs.keys():
        raise Disagreement(f"categories {sorted(ours)} and {sorted(theirs)}")
    worst = 0.0
    for category, column in ours.items():
        if len(column) != len(theirs[category]) or column.null_count:
            raise Disagreement(f"{category}: a case has no probability")
        difference = pyarrow.compute.abs(pyarrow.compute.subtract(column, theirs[category]))
        worst = max(worst, pyarrow.compute.max(difference).as_py())
    if not worst <= PROBABILITY:
        raise Disagreement(f"probabilities differ by up to {worst:.2e}")
    return f"{len(column):,} cases, probabilities within {worst:.0e}"


def size_of_columns(path):
    """A byte a category cell, eight a number, a bit for each cell's presence."""
    metadata = pyarrow.parquet.read_metadata(path)
    schema = metadata.schema.to_arrow_schema()
    widths = [8 if pyarrow.types.is_floating(field.type) else 1 for field in schema]
    return metadata.num_rows * sum(widths) + len(widths) * ((metadata.num_rows + 7) // 8)


KINDS = {
    "screen": (screened, screened_by_peer, compare_screening),
    "chain": (chain_of, chain_of_peer, compare_chains),
    "scores": (probabilities_of, probabilities_of, compare_scores),
}


def main(arguments):
    kind, own, *peers = arguments
    if kind == "size":
        print(size_of_columns(own))
        return 0
    more = ()
    if kind == "squares":
        kind, (*peers, table) = "screen", peers
        more = (rounding_of_squares(table),)
    read_own, read_peer, compare = KINDS[kind]
    ours = read_own(own)
    for peer in peers:
        try:
            print(f"{peer}: {compare(ours, read_peer(peer), *more)}")
        except Disagreement as difference:
            print(f"{peer}: {difference}")
            return 1
    return 0


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1:]))
