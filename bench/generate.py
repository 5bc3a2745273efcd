"""Makes the tables of the benchmark, as CSV and as Parquet.

Every column of every block of rows has a random stream of its own, so the same arguments give the same
values on every machine. A table has a target `y` of three classes that drives about half of the
predictors, strongly or weakly:

    c0000 ...   categorical, 2 to --levels levels of uneven frequency; every other one is text, the
                rest small whole numbers; some are noisy copies of an earlier one
    x0000 ...   scale, doubles of four decimals; one in four is log-normal
    b0000 ...   a number cut into ten intervals: 0 to 9

W7 is W1 with a number as target: the class, which is not in it, moves its mean.

    python bench/generate.py W1 --directory DATA [--scale 0.01]
    python bench/generate.py --name T --rows 50000 --factors 10 --covariates 5 --directory DATA
"""

import argparse
import math
from dataclasses import dataclass, replace
from pathlib import Path

import numpy
import pyarrow
import pyarrow.csv
import pyarrow.parquet

SEED = 1_618_033
CLASSES = ("high", "low", "mid")
PRIORS = (0.2, 0.5, 0.3)
CLASS_MEANS = (12.0, -8.0, 3.0)  # of a target that is a number, about its middle
WORDS = (
    "amber", "birch", "cedar", "delta", "east", "fern", "gold", "hazel", "iris", "jade",
    "kelp", "lime", "moss", "north", "oak", "pine", "quartz", "rust", "south", "teal",
)  # fmt: skip
ROWS_OF_BLOCK = 131_072  # also the rows of a Parquet row group


@dataclass(frozen=True)
class Shape:
    rows: int
    factors: int = 0
    covariates: int = 0
    binned: int = 0
    levels: int = 20
    missing: float = 0.02
    number: bool = False  # the target is one, not the class

    def scaled(self, scale: float) -> "Shape":
        """A smaller table of the same kind: fewer rows, and where columns abound fewer of both."""
        if self.factors + self.covariates <= 1000:
            return replace(self, rows=max(200, round(self.rows * scale)))
        side = math.sqrt(scale)
        return replace(
            self,
            rows=max(200, round(self.rows * side)),
            factors=max(30, round(self.factors * side)),
            covariates=max(20, round(self.covariates * side)),
        )


SHAPES = {
    "W1": Shape(1_000_000, 60, 40),
    "W2": Shape(10_000_000, 12, 8),
    "W3": Shape(10_000, 6_000, 4_000),
    "W4": Shape(200_000, 60, 0, 40, levels=10),
    "W7": Shape(1_000_000, 60, 40, number=True),
}


class Factor:
    """Levels drawn with frequencies that depend on the class."""

    def __init__(self, number: int, random, levels: int):
        self.name = f"c{number:04d}"
        self.levels = int(random.integers(2, levels + 1))
        strength = random.uniform(0.02, 0.8) if random.random() < 0.5 else 0.0
        logits = random.normal(0, 0.7, self.levels) + strength * random.normal(
            0, 1, (len(CLASSES), self.levels)
        )
        shares = numpy.exp(logits)
        self.cumulative = (shares / shares.sum(axis=1, keepdims=True)).cumsum(axis=1).astype(numpy.float32)
        self.labels = [f"{word}{number % 7}" for word in WORDS[: self.levels]] if number % 2 == 0 else None
        # A noisy copy of an earlier predictor, where that one has no more levels.
        self.source = int(random.integers(0, number)) if number > 5 and random.random() < 0.12 else None
        self.type = pyarrow.string() if self.labels else pyarrow.int32()

    def draw(self, random, y, codes_of):
        draws = random.random(len(y), dtype=numpy.float32)
        codes = numpy.zeros(len(y), numpy.int8)
        for k in range(len(CLASSES)):
            inside = y == k
            codes[inside] = numpy.searchsorted(self.cumulative[k][:-1], draws[inside], side="right")
        original = codes_of.get(self.source)
        if original is not None and original[1] <= self.levels:
            copied = random.random(len(y), dtype=numpy.float32) < 0.75
            codes[copied] = original[0][copied]
        return codes

    def array(self, codes, missing):
        if self.labels is None:
            return pyarrow.array(codes.astype(numpy.int32), mask=missing)
        indices = pyarrow.array(codes, mask=missing)
        return pyarrow.DictionaryArray.from_arrays(indices, pyarrow.array(self.labels)).cast(self.type)


class Covariate:
    """Normal or log-normal numbers whose mean depends on the class."""

    type = pyarrow.float64()

    def __init__(self, number: int, random):
        self.name = f"x{number:04d}"
        self.mean = random.normal(0, 50)
        self.spread = 10 ** random.uniform(-0.5, 2.5)
        self.shift = drawn_shift(random)
        self.log_normal = number % 4 == 3

    def draw(self, random, y, _):
        z = random.standard_normal(len(y)) + self.shift[y]
        return numpy.round(self.mean + self.spread * (numpy.exp(z) if self.log_normal else z), 4)

    def array(self, values, missing):
        return pyarrow.array(values, mask=missing)


class Binned:
    """A normal number in ten intervals."""

    type = pyarrow.int32()

    def __init__(self, number: int, random):
        self.name = f"b{number:04d}"
        self.shift = drawn_shift(random)

    def draw(self, random, y, _):
        z = random.standard_normal(len(y)) + self.shift[y]
        return numpy.clip(numpy.floor((z + 3) / 0.6), 0, 9).astype(numpy.int32)

    def array(self, values, missing):
        return pyarrow.array(values, mask=missing)


def drawn_shift(random):
    strength = random.uniform(0.01, 0.6) if random.random() < 0.5 else 0.0
    return strength * random.normal(0, 1, len(CLASSES))


def columns_of(shape: Shape):
    random = numpy.random.default_rng([SEED, 0])
    return (
        [Factor(j, random, shape.levels) for j in range(shape.factors)]
        + [Covariate(j, random) for j in range(shape.covariates)]
        + [Binned(j, random) for j in range(shape.binned)]
    )


def block_of(columns, shape: Shape, block: int, rows: int) -> pyarrow.Table:
    random = numpy.random.default_rng([SEED, 1, block])
    y = numpy.searchsorted(numpy.cumsum(PRIORS)[:-1], random.random(rows), side="right")
    arrays = [target_of(y, shape, block)]
    codes_of = {}
    for j, column in enumerate(columns):
        random = numpy.random.default_rng([SEED, 2, block, j])
        missing = random.random(rows, dtype=numpy.float32) < shape.missing
        values = column.draw(random, y, codes_of)
        if isinstance(column, Factor):
            codes_of[j] = (values, column.levels)
        arrays.append(column.array(values, missing))
    return pyarrow.Table.from_arrays(arrays, schema=schema_of(columns, shape))


def target_of(y, shape: Shape, block: int):
    if not shape.number:
        indices = pyarrow.array(y.astype(numpy.int8))
        return pyarrow.DictionaryArray.from_arrays(indices, pyarrow.array(CLASSES)).cast(pyarrow.string())
    random = numpy.random.default_rng([SEED, 3, block])
    return pyarrow.array(numpy.round(100 + numpy.array(CLASS_MEANS)[y] + 10 * random.standard_normal(len(y)), 4))


def schema_of(columns, shape: Shape):
    target = pyarrow.float64() if shape.number else pyarrow.string()
    return pyarrow.schema([("y", target)] + [(c.name, c.type) for c in columns])


def write(shape: Shape, csv: Path, parquet: Path):
    columns = columns_of(shape)
    schema = schema_of(columns, shape)
    options = pyarrow.csv.WriteOptions(quoting_style="none", quoting_header="none")
    with (
        pyarrow.parquet.ParquetWriter(parquet, schema, compression="snappy") as to_parquet,
        pyarrow.csv.CSVWriter(csv, schema, write_options=options) as to_csv,
    ):
        for block, start in enumerate(range(0, shape.rows, ROWS_OF_BLOCK)):
            table = block_of(columns, shape, block, min(ROWS_OF_BLOCK, shape.rows - start))
            to_parquet.write_table(table, row_group_size=len(table))
            to_csv.write_table(table)


def generate(name: str, shape: Shape, directory: Path):
    """NAME.csv and NAME.parquet, each under its name only when it is whole."""
    directory.mkdir(parents=True, exist_ok=True)
    parts = [directory / f"{name}.{kind}.part" for kind in ("csv", "parquet")]
    write(shape, *parts)
    for part in parts:
        part.rename(part.with_suffix(""))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("workloads", nargs="*", metavar="WORKLOAD", help=f"of {', '.join(SHAPES)}")
    parser.add_argument("--directory", type=Path, required=True)
    parser.add_argument("--scale", type=float, default=1.0)
    parser.add_argument("--name", help="make a table of this name and the sizes below")
    parser.add_argument("--rows", type=int, default=10_000)
    parser.add_argument("--factors", type=int, default=10)
    parser.add_argument("--covariates", type=int, default=10)
    parser.add_argument("--binned", type=int, default=0)
    parser.add_argument("--levels", type=int, default=20)
    parser.add_argument("--missing", type=float, default=0.02)
    given = parser.parse_args()
    unknown = set(given.workloads) - set(SHAPES)
    if unknown or not (given.workloads or given.name):
        parser.error(f"no such workload: {', '.join(unknown)}" if unknown else "name a workload, or a table by --name")
    for name in given.workloads:
        generate(name, SHAPES[name].scaled(given.scale), given.directory)
    if given.name:
        shape = Shape(given.rows, given.factors, given.covariates, given.binned, given.levels, given.missing)
        generate(given.name, shape, given.directory)


if __name__ == "__main__":
    main()
