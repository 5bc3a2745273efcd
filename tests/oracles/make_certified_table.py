"""Writes what the statistics of the sets under featureselect/tests/data/certified and .../magnitudes
are in exact arithmetic on the very doubles: certified.csv and magnitudes.csv in featureselect/tests/data.

Columns: set, predictor (a column, or empty), statistic, the exact value to 25 digits, the nearest
double and the double nearest to what that leaves, the certified value and its digits that doubles of
the data allow: those in which the exact value for the doubles agrees with it, at most 17.

    python make_certified_table.py
"""

import csv
import sys
from decimal import Context, Decimal
from fractions import Fraction
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests/support"))

import exact  # noqa: E402

DATA = ROOT / "featureselect/tests/data"


def read_set(path):
    """(certified values, columns by name, weights)"""
    lines = path.read_text(encoding="ascii").splitlines()
    notes = [line[2:].split(" = ") for line in lines if line.startswith("# ")]
    header, *rows = csv.reader(line for line in lines if not line.startswith("#"))
    columns = dict(zip(header, ([float(text) for text in column] for column in zip(*rows)), strict=True))
    weights = columns.pop("times")
    return dict(notes), columns, weights


def statistics(columns, weights):
    """(predictor, statistic, exact value), as the columns have it: one variable, a variable in
    groups, or predictors of y."""
    names = list(columns)
    if names == ["value"]:
        for name, value in exact.univariate(columns["value"], weights).items():
            yield "", name, value
    elif names == ["group", "value"]:
        for name, value in exact.f_test(columns["value"], columns["group"], weights).items():
            yield "", name, value
    else:
        for predictor in names[1:]:
            for name, value in exact.correlation(columns[predictor], columns["y"], weights).items():
                yield predictor, name, value


def certified_value(statistic, certified):
    """The certified value that a statistic has, or that follows from one."""
    if statistic == "variance" and "sd" in certified:
        return Fraction(certified["sd"]) ** 2
    if statistic == "r" and "R2" in certified:
        return exact.root(Fraction(certified["R2"]))
    if statistic == "t" and "F" in certified:
        return exact.root(Fraction(certified["F"]))
    if statistic == "unexplained" and "residual" in certified:
        residual = Fraction(certified["residual"])
        return residual / (residual + Fraction(certified["regression"]))
    return Fraction(certified[statistic]) if statistic in certified else None


def decimals(value, digits):
    context = Context(prec=digits, Emin=-9999, Emax=9999)
    return str(context.divide(Decimal(value.numerator), Decimal(value.denominator)))


def table_row(name, predictor, statistic, value, certified):
    nearest = float(value)
    rest = float(value - Fraction(nearest))
    of_certified = ["", ""]
    if certified is not None:
        allowed = min(exact.digits(value, certified), 17.0)
        of_certified = [decimals(certified, 17), f"{allowed:.1f}"]
    return [name, predictor, statistic, decimals(Fraction(value), 25), nearest.hex(), rest.hex(), *of_certified]


def write_table(folder):
    with open(DATA / f"{folder}.csv", "w", encoding="ascii", newline="") as file:
        out = csv.writer(file, lineterminator="\n")
        out.writerow(["set", "predictor", "statistic", "exact", "nearest", "rest", "certified", "allowed"])
        for path in sorted((DATA / folder).glob("*.csv")):
            certified, columns, weights = read_set(path)
            for predictor, statistic, value in statistics(columns, weights):
                # What no double can be is no statistic that a program could give.
                if value is not None and exact.is_double(Fraction(value)):
                    certain = certified_value(statistic, certified)
                    out.writerow(table_row(path.stem, predictor, statistic, Fraction(value), certain))


if __name__ == "__main__":
    write_table("certified")
    write_table("magnitudes")
