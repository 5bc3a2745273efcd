"""Writes featureselect/tests/data/magnitudes/*.csv: small sets of numbers that are hard to add, in the
form of the certified ones.

    python make_magnitude_sets.py
"""

import random
from math import ldexp
from pathlib import Path

OUT = Path(__file__).resolve().parents[2] / "featureselect/tests/data/magnitudes"
ROWS = 48


def forms(random):
    """Ways to write a number z of a normal distribution, by name."""
    return {
        "offset1e7": lambda z: 1e7 + z,
        "offset1e12": lambda z: -1e12 + z,
        "offset1e15": lambda z: 1e15 + z,
        "spread1e300": lambda z: z * 2e299,
        "spread1e308": lambda z: max(-1.7e308, min(1.7e308, z * 9e307)),
        "spread1e-300": lambda z: z * 1e-300,
        "offset1e300": lambda z: ldexp(1 + z * 2.0**-30, 997),
        "offset1e-300": lambda z: ldexp(1 + z * 2.0**-30, -996),
        "anysize": lambda z: ldexp(z, random.randint(-900, 900)),
        # Two rows a column hold nearly all of it; they cancel but for what the others add.
        "hugepair": lambda z: z,
        "tenth": lambda z: round(z, 1),
    }


def column(form, name, numbers):
    values = [form(z) for z in numbers]
    if name == "hugepair":
        values[:2] = [3e17, -3e17]
    return values


def write(name, header, columns):
    rows = [",".join(map(repr, row)) + ",1" for row in zip(*columns, strict=True)]
    (OUT / f"{name}.csv").write_text("\n".join([",".join([*header, "times"]), *rows]) + "\n", encoding="ascii")


def main():
    draw = random.Random(20260501)
    OUT.mkdir(exist_ok=True)
    for name, form in forms(draw).items():
        numbers = [draw.gauss(0, 1) for _ in range(ROWS)]
        write(f"one_{name}", ["value"], [column(form, name, numbers)])
        groups = [row % 5 for row in range(ROWS)]
        shifted = [z + 0.3 * group for z, group in zip(numbers, groups)]
        write(f"groups_{name}", ["group", "value"], [groups, column(form, name, shifted)])
    target = [draw.gauss(0, 1) for _ in range(ROWS)]
    for name, form in forms(draw).items():
        predictors = {
            other: column(shape, other, [0.4 * z + draw.gauss(0, 1) for z in target])
            for other, shape in forms(draw).items()
        }
        # Nearly the target itself: little is left to explain, and t is large.
        predictors["close"] = [z + 1e-6 * draw.gauss(0, 1) for z in target]
        write(f"pairs_{name}", ["y", *predictors], [column(form, name, target), *predictors.values()])


if __name__ == "__main__":
    main()
