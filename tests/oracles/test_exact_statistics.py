"""F, r and t of reports against rational arithmetic on the same doubles, through every step from a
file to the JSON report: within two units in the last place."""

import csv
import math
import random

import exact
import pyarrow
import pyarrow.parquet
import pytest
from make_certified_table import DATA, read_set
from reading import summary

UNITS = 2.0
SETS = {path.stem: path for folder in ("certified", "magnitudes") for path in (DATA / folder).glob("*.csv")}
GROUPED, PAIRED = (
    sorted(name for name, path in SETS.items() if list(read_set(path)[1])[0] == first) for first in ("group", "y")
)


# With predictors of one kind a statistic may have no group.
PLACES = {
    "F": [("F", "Value"), "F"],
    "df1": [("F", "df1"), "df1"],
    "df2": [("F", "df2"), "df2"],
    "r": [("Pearson Correlation", "Value"), "Pearson Correlation"],
    "t": [("Pearson Correlation", "t"), "t"],
    "df": [("Pearson Correlation", "df"), "df"],
}


def check(row, predictor, expected):
    """Compares the statistics of a predictor's row with the exact ones, {name: value}."""
    for name, value in expected.items():
        # What is not defined or no double can be is nobody's to give.
        if value is None or not exact.is_double(value):
            continue
        found = next((row[place] for place in PLACES[name] if place in row), None)
        assert found is not None, f"{name} of {predictor} is missing, not {float(value)!r}"
        units = exact.units_in_the_last_place(found, value)
        assert units <= UNITS, f"{name} of {predictor} is {found!r}, not {float(value)!r}"


def expanded(columns, weights, draw=None):
    """All rows, each as often as it is there, and shuffled where asked for."""
    rows = [row for row, times in zip(zip(*columns.values()), weights) for _ in range(int(times))]
    if draw:
        draw.shuffle(rows)
    return rows


def save(path, header, rows):
    if path.suffix == ".parquet":
        pyarrow.parquet.write_table(pyarrow.table(dict(zip(header, map(list, zip(*rows))))), path)
    else:
        with open(path, "w", newline="", encoding="ascii") as file:
            csv.writer(file).writerows([header, *([("" if v is None else v) for v in row] for row in rows)])
    return path


def quoted(names):
    return " ".join(f'"{name}"' for name in names)


ALL_ROWS = "/SCREENING STATUS=OFF /CRITERIA SHOWUNSELECTED=99"


@pytest.mark.parametrize("form", ["csv", "parquet"])
@pytest.mark.parametrize("name", GROUPED)
def test_groups(name, form, program, tmp_path):
    _, columns, weights = read_set(SETS[name])
    expected = exact.f_test(columns["value"], columns["group"], weights)
    expected = {key: expected[key] for key in ("F", "df1", "df2")}
    columns = columns | {"group": [f"g{int(group)}" for group in columns["group"]]}
    for draw in (None, random.Random(name)):
        path = save(tmp_path / f"data.{form}", list(columns), expanded(columns, weights, draw))
        for command, predictor in (
            ("SELECTPRED value (MLEVEL=S) BY group", "group"),
            ("SELECTPRED group (MLEVEL=N) WITH value", "value"),
        ):
            check(summary(program.report(path, f"{command} {ALL_ROWS}"))[predictor], predictor, expected)


@pytest.mark.parametrize("form", ["csv", "parquet"])
@pytest.mark.parametrize("name", PAIRED)
def test_pairs(name, form, program, tmp_path):
    _, columns, weights = read_set(SETS[name])
    predictors = list(columns)[1:]
    for draw in (None, random.Random(name)):
        path = save(tmp_path / f"data.{form}", list(columns), expanded(columns, weights, draw))
        command = f"SELECTPRED y (MLEVEL=S) WITH {quoted(predictors)} {ALL_ROWS}"
        rows = summary(program.report(path, command))
        for predictor in predictors:
            expected = exact.correlation(columns[predictor], columns["y"], weights)
            check(rows[predictor], predictor, {key: expected[key] for key in ("r", "t", "df")})


def far_from_0(numbers, draw):
    offset = draw.choice([1e7, -1e12, 1e15])
    return [offset + z for z in numbers]


FORMS = [
    lambda numbers, draw: numbers,
    far_from_0,
    lambda numbers, draw: [math.ldexp(z, draw.randrange(-700, 700)) for z in numbers],
    lambda numbers, draw: [math.ldexp(z, 990) for z in numbers],
    lambda numbers, draw: [math.ldexp(z, -990) for z in numbers],
    lambda numbers, draw: [round(z, 1) for z in numbers],
]


@pytest.mark.parametrize("seed", range(20))
def test_random_numbers_with_weights_and_holes(seed, program, tmp_path):
    draw = random.Random(seed)
    rows = draw.choice([12, 20, 80])
    hole = lambda values, share: [None if draw.random() < share else v for v in values]
    normal = [draw.gauss(0, 1) for _ in range(rows)]
    columns = {"y": hole(draw.choice(FORMS)(normal, draw), 0.05)}
    for at, form in enumerate(FORMS):
        mixed = [0.5 * v + draw.gauss(0, 1) for v in normal]
        columns[f"x{at}"] = hole(form(mixed, draw), 0.1)
    columns["g"] = hole([f"g{draw.randrange(4)}" for _ in range(rows)], 0.05)
    columns["w"] = [float(draw.randrange(4)) for _ in range(rows)]
    path = save(tmp_path / draw.choice(["d.csv", "d.parquet"]), list(columns), list(zip(*columns.values())))

    def complete(*names):
        kept = [row for row in zip(*(columns[n] for n in (*names, "w"))) if None not in row and row[-1] > 0]
        return [list(column) for column in zip(*kept)] or [[]] * (len(names) + 1)

    command = f"SELECTPRED y (MLEVEL=S) BY g WITH x0..x5 {ALL_ROWS}"
    of_number = summary(program.report(path, command, "--weight", "w"))
    command = f"SELECTPRED g (MLEVEL=N) WITH x0..x5 {ALL_ROWS}"
    of_classes = summary(program.report(path, command, "--weight", "w"))
    compared = 0
    for predictor, row in of_number.items():
        values, target, weights = complete(predictor, "y")
        if predictor == "g":
            expected = exact.f_test(target, values, weights)
            check(row, predictor, {"F": expected["F"]})
        else:
            expected = exact.correlation(values, target, weights)
            check(row, predictor, {"r": expected["r"], "t": expected["t"]})
        compared += 1
    for predictor, row in of_classes.items():
        values, groups, weights = complete(predictor, "g")
        check(row, predictor, {"F": exact.f_test(values, groups, weights)["F"]})
        compared += 1
    assert compared >= 6
