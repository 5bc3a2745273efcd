"""Writes featureselect/tests/data/crosstabs.csv: measures of association of crosstabs.

Chi-square and lambda are ratios of whole numbers in exact arithmetic, rounded once; the likelihood
ratio chi-square and Cramer's V are computed to 60 digits and rounded once. So every value is the
double nearest to the truth. Weights that are no whole numbers stand for the exact value of their
double.

    python tests/oracles/make_crosstab_table.py
"""

import pathlib
import random
from fractions import Fraction

import mpmath

OUTPUT = pathlib.Path(__file__).parents[2] / "featureselect" / "tests" / "data" / "crosstabs.csv"
mpmath.mp.dps = 80


def real(fraction):
    return mpmath.mpf(fraction.numerator) / fraction.denominator


def measures(table):
    """(chi-square, likelihood ratio, Cramer's V, lambda) as doubles."""
    cells = [[Fraction(weight) for weight in row] for row in table]
    rows = [sum(row) for row in cells]
    columns = [sum(column) for column in zip(*cells)]
    total = sum(rows)
    chi_square, likelihood = Fraction(0), mpmath.mpf(0)
    for row, weights in zip(rows, cells):
        for column, weight in zip(columns, weights):
            expected = row * column / total
            chi_square += (weight - expected) ** 2 / expected
            if weight:
                likelihood += 2 * real(weight) * mpmath.log(real(weight / expected))
    smaller = min(len(rows), len(columns)) - 1
    cramer = mpmath.sqrt(real(chi_square / (total * smaller)))
    known, unknown = sum(max(row) for row in cells), max(columns)
    gain = (known - unknown) / (total - unknown)
    return float(chi_square), float(likelihood), float(cramer), float(gain)


def shuffled(table, generator):
    """The same table with its rows and columns in another order."""
    columns = list(zip(*generator.sample(table, len(table))))
    return [list(row) for row in zip(*generator.sample(columns, len(columns)))]


def filled(rows, columns, weight):
    """A table without an empty row or column."""
    while True:
        table = [[weight() for _ in range(columns)] for _ in range(rows)]
        if all(map(any, table)) and all(map(any, zip(*table))):
            return table


def near_independence(generator, rows, columns, largest):
    """Products of margins, with a case or two out of place: nearly all of a plain sum cancels."""
    r = [generator.randint(1, largest) for _ in range(rows)]
    c = [generator.randint(1, largest) for _ in range(columns)]
    table = [[a * b for b in c] for a in r]
    table[0][0] += generator.randint(0, 1)
    table[-1][-1] += generator.randint(0, 1)
    return table


def tables():
    generator = random.Random(20)
    shapes = [(2, 2), (2, 3), (5, 3), (4, 4), (9, 2), (12, 7), (30, 20)]
    for rows, columns in shapes:
        for largest in (1, 3, 50, 10_000, 10**7):
            table = filled(rows, columns, lambda: generator.randint(0, largest))
            yield "whole", table
            yield "shuffled", shuffled(table, generator)
        for largest in (3, 1000, 10**6):
            yield "near independence", near_independence(generator, rows, columns, largest)
        table = filled(rows, columns, lambda: generator.choice([0, 0, 1, 2]))
        yield "sparse", table
        yield "tripled", [[3 * weight for weight in row] for row in table]
        weights = filled(rows, columns, lambda: round(generator.random(), 2) * generator.randint(0, 3))
        yield "fractional", weights
        yield "fractional shuffled", shuffled(weights, generator)
    for sizes in ([50, 50], [1, 99], [30, 30, 40], [7, 11, 13, 17, 19], [10, 10, 10, 70]):
        size = len(sizes)
        yield "perfect", [[sizes[i] if i == j else 0 for j in range(size)] for i in range(size)]
        # Each class split over several categories: as perfect, with more rows.
        split = [[0] * size for _ in range(2 * size)]
        for i, weight in enumerate(sizes):
            split[2 * i][i], split[2 * i + 1][i] = weight // 2 + weight % 2, weight // 2
        yield "perfect split", [row for row in split if any(row)]
        tenths = [[sizes[i] / 10 if i == j else 0 for j in range(size)] for i in range(size)]
        yield "perfect fractional", tenths


def main():
    tools = f"fractions and mpmath {mpmath.__version__}"
    lines = [f"# Made by tests/oracles/make_crosstab_table.py with {tools}."]
    lines.append("kind,columns,cells,chi-square,likelihood ratio,Cramer's V,lambda")
    for kind, table in tables():
        values = measures(table)
        cells = " ".join(repr(weight) for row in table for weight in row)
        lines.append(",".join([kind, str(len(table[0])), cells, *map(repr, values)]))
    OUTPUT.write_text("\n".join(lines) + "\n", encoding="utf-8")


if __name__ == "__main__":
    main()
