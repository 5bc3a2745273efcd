"""Writes featureselect/tests/data/certified/*.csv, the certified data sets in one plain form, from the
files that packages of other software carry. See the README there for where each set comes from.

    python make_certified_sets.py UNIVARIATE_FOLDER ANOVA_FOLDER LINEAR_FOLDER

The folders hold *.txt, *.dat and *.dat as published. Values are copied as written, digit for digit.
Rows that recur are written once, with how many there are, where a set has few distinct rows. The
powers of x that a model asks for beside x itself are doubles, the nearest to the exact power of the
double x.
"""

import re
import sys
from collections import Counter
from fractions import Fraction
from pathlib import Path

OUT = Path(__file__).resolve().parents[2] / "featureselect/tests/data/certified"

NUMBER = r"[-+]?\d*\.?\d+(?:[Ee][-+]?\d+)?"
POWERS = {"Pontius": 2, "Filip": 10, "Wampler1": 5, "Wampler2": 5, "Wampler3": 5, "Wampler4": 5, "Wampler5": 5}


def number_rows(lines, width):
    """The lines that hold so many numbers and nothing else, as written."""
    for line in lines:
        words = line.split()
        if len(words) == width and all(re.fullmatch(NUMBER + r"|-?\d+\.", word) for word in words):
            yield words


def write(name, certified, header, rows):
    counted = Counter(map(tuple, rows))
    rows = list(counted.items()) if len(counted) <= len(rows) / 4 else [(tuple(row), 1) for row in rows]
    lines = [f"# {statistic} = {value}" for statistic, value in certified.items()]
    lines += [",".join([*header, "times"])]
    lines += [",".join([*row, str(times)]) for row, times in rows]
    (OUT / f"{name}.csv").write_text("\n".join(lines) + "\n", encoding="ascii")
    print(name, sum(times for _, times in rows), "rows")


def univariate(path):
    text = path.read_text(encoding="ascii")
    mean = re.search(rf"(?:^mean +=|mean +ybar:) +({NUMBER})", text, re.I | re.M)
    deviation = re.search(rf"(?:^standardDeviation +=|s:) +({NUMBER})", text, re.M)
    # The data stand at the end; in one file a heading, in others the word "Data" goes before them.
    start = max(text.rfind("\nData:"), text.rfind("# Data\n"))
    rows = list(number_rows(text[start:].splitlines(), 1))
    write(path.stem, {"mean": mean[1], "sd": deviation[1]}, ["value"], rows)


def analysis_of_variance(path):
    lines = path.read_text(encoding="ascii").splitlines()
    find = {line.split()[0]: line.split() for line in lines[35:60] if line.startswith(("Between", "Within"))}
    # Each ends with its sum of squares and mean square, and the first line with F.
    certified = {"between": find["Between"][-3], "within": find["Within"][-2], "F": find["Between"][-1]}
    certified["R2"] = next(line.split()[-1] for line in lines if "R-Squared" in line)
    write(path.stem, certified, ["group", "value"], list(number_rows(lines[60:], 2)))


def linear(path):
    lines = path.read_text(encoding="ascii").splitlines()
    at = max(number for number, line in enumerate(lines) if line.startswith("Data:"))
    width = len(lines[at].split()) - 1
    rows = list(number_rows(lines[at + 1 :], width))
    certified = {}
    if path.stem == "Norris":  # one predictor and an intercept: what a correlation is compared with
        certified["R2"] = next(line.split()[-1] for line in lines if "R-Squared" in line)
        regression = next(line.split() for line in lines if line.startswith("Regression"))
        residual = next(line.split() for line in lines if line.startswith("Residual "))
        certified |= {"F": regression[-1], "regression": regression[2], "residual": residual[2]}
    header = ["y", *(f"x{number}" for number in range(1, width))] if width > 2 else ["y", "x"]
    top = POWERS.get(path.stem, 1)
    for row in rows:
        exact = Fraction(float(row[1]))
        row.extend(repr(float(exact**power)) for power in range(2, top + 1))
    header.extend(f"x^{power}" for power in range(2, top + 1))
    write(path.stem, certified, header, rows)


def main(folders):
    for folder, pattern, convert in zip(
        folders, ("*.txt", "*.dat", "*.dat"), (univariate, analysis_of_variance, linear), strict=True
    ):
        for path in sorted(Path(folder).glob(pattern)):
            convert(path)


if __name__ == "__main__":
    main(sys.argv[1:])
