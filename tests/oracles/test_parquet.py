"""Parquet files of every make, written by pyarrow, against what pyarrow reads from them: the program saves
what it has read, and that must be the same values in the same rows."""

import datetime
import decimal
import math
import os
import string

import numpy
import pyarrow
import pyarrow.feather
import pyarrow.parquet
import pytest

FILES = 24
EPOCH = datetime.datetime(1970, 1, 1)


def whole(kind, low, high):
    return lambda random, rows: pyarrow.array(random.integers(low, high, rows, dtype=kind, endpoint=True))


def few_or_many(random, make):
    """Values of a column: all distinct, or repeated from a handful."""
    values = [make() for _ in range(random.choice([1, 5, 300, 3000]))]
    return lambda rows: [values[i] for i in random.integers(0, len(values), rows)]


def texts(kind):
    def make(random, rows):
        letters = string.ascii_letters + " ,;\"'\n\x00äß€😀"
        one = lambda: "".join(random.choice(list(letters), random.choice([0, 1, 8, 15, 16, 17, 40])))
        return pyarrow.array(few_or_many(random, one)(rows), kind)
    return make


def floats(kind):
    def make(random, rows):
        odd = [0.0, -0.0, math.inf, -math.inf, math.nan, 5e-324, 1.7976931348623157e308]
        one = lambda: float(random.normal()) if random.random() < 0.9 else odd[random.integers(len(odd))]
        return pyarrow.array(few_or_many(random, one)(rows), pyarrow.float64()).cast(kind, safe=False)
    return make


def moments(kind, per_second):
    def make(random, rows):
        seconds = random.integers(-3_000_000_000, 4_000_000_000, rows)
        parts = random.integers(0, min(per_second, 1_000_000), rows) * max(1, per_second // 1_000_000)
        return pyarrow.array(seconds * per_second + parts, pyarrow.int64()).cast(kind)
    return make


def decimals(random, rows):
    return pyarrow.array([decimal.Decimal(int(i)).scaleb(-2) for i in random.integers(-10**9, 10**9, rows)],
                         pyarrow.decimal128(20, 2))


KINDS = {
    "int8": whole("int8", -128, 127), "int16": whole("int16", -300, 300), "int32": whole("int32", -2**31, 2**31 - 1),
    "int64": whole("int64", -2**52, 2**52), "uint8": whole("uint8", 0, 255), "uint16": whole("uint16", 0, 65535),
    "uint32": whole("uint32", 0, 2**32 - 1), "uint64": whole("uint64", 0, 2**52), "few": whole("int64", 0, 3),
    "double": floats(pyarrow.float64()), "float": floats(pyarrow.float32()),
    "bool": lambda random, rows: pyarrow.array(random.random(rows) < 0.5),
    "text": texts(pyarrow.string()), "long_text": texts(pyarrow.large_string()),
    "bytes": lambda random, rows: texts(pyarrow.string())(random, rows).cast(pyarrow.binary()),
    "category": lambda random, rows: texts(pyarrow.string())(random, rows).dictionary_encode(),
    "date": lambda random, rows: whole("int32", -100_000, 100_000)(random, rows).cast(pyarrow.date32()),
    "moment": moments(pyarrow.timestamp("us"), 1_000_000), "ms": moments(pyarrow.timestamp("ms"), 1000),
    "decimal": decimals,
}  # fmt: skip
ENCODINGS = {
    "i": ["PLAIN", "DELTA_BINARY_PACKED", "BYTE_STREAM_SPLIT"], "f": ["PLAIN", "BYTE_STREAM_SPLIT"],
    "b": ["PLAIN", "RLE"], "t": ["PLAIN", "DELTA_LENGTH_BYTE_ARRAY", "DELTA_BYTE_ARRAY"],
}  # fmt: skip
ENCODED_AS = {"int": "i", "uin": "i", "few": "i", "dou": "f", "flo": "f", "boo": "b", "tex": "t", "lon": "t", "byt": "t"}


def with_nulls(random, array):
    share = random.choice([0, 0, 0.02, 0.5, 1])
    missing = pyarrow.array(random.random(len(array)) < share)
    return pyarrow.compute.if_else(missing, pyarrow.scalar(None, array.type), array) if share > 0 else array


def random_table(random, rows):
    names = list(random.permutation(list(KINDS)))[: random.integers(3, len(KINDS) + 1)]
    columns = {"y": pyarrow.array(numpy.arange(rows) % 2)}
    for name in names:
        array = KINDS[name](random, rows)
        columns[name] = array if name == "category" else with_nulls(random, array)
    fields = [pyarrow.field(name, array.type, nullable=bool(array.null_count) or bool(random.integers(2)))
              for name, array in columns.items()]
    return pyarrow.table(list(columns.values()), schema=pyarrow.schema(fields))


def write_somehow(random, table, path):
    encodings, dictionaries = {}, []
    for name in table.column_names:
        kind = ENCODED_AS.get(name[:3])
        if kind is not None and random.random() < 0.5:
            encodings[name] = str(random.choice(ENCODINGS[kind]))
        elif random.random() < 0.7:
            dictionaries.append(name)
    version = str(random.choice(["1.0", "2.4", "2.6"]))
    options = dict(
        use_dictionary=dictionaries, column_encoding=encodings, version=version,
        compression={name: str(random.choice(["none", "snappy", "gzip", "brotli", "zstd", "lz4"]))
                     for name in table.column_names},
        data_page_version=str(random.choice(["1.0", "2.0"])), data_page_size=int(random.choice([64, 4096, 1 << 20])),
        dictionary_pagesize_limit=int(random.choice([64, 4096, 1 << 20])),
        write_batch_size=int(random.choice([7, 1024])), row_group_size=int(random.choice([1, 97, 1000, 1 << 20])),
        write_page_checksum=bool(random.integers(2)), store_schema=bool(random.integers(2)),
    )  # fmt: skip
    pyarrow.parquet.write_table(table, path, **options)
    return options


def plain(value):
    """A value as it is compared: numbers, moments in seconds, texts without blanks at their end; or None."""
    if value is None or isinstance(value, str):
        return value if value is None else value.rstrip(" ")
    if isinstance(value, bytes):
        return value.decode("utf-8", "replace").rstrip(" ")
    if isinstance(value, datetime.datetime):
        return (value.replace(tzinfo=None) - EPOCH) / datetime.timedelta(seconds=1)
    if isinstance(value, datetime.date):
        return float((value - EPOCH.date()).days)
    value = float(value)
    return value if math.isfinite(value) else None


def values_of(column):
    return [plain(value) for value in column.to_pylist()]


@pytest.mark.parametrize("number", range(FILES))
def test_what_pyarrow_writes_is_read_as_pyarrow_reads_it(program, tmp_path, number):
    seed = int(os.environ.get("PREDSEL_TEST_SEED", 20260303)) + number
    random = numpy.random.default_rng(seed)
    path, saved = tmp_path / "table.parquet", tmp_path / "saved.arrow"
    table = random_table(random, int(random.choice([2, 50, 1000, 5000])))
    options = write_somehow(random, table, path)
    done = program.run("run", "-c", "SELECTPRED y;", "--data", path, "--save", saved, "--level", "y=nominal",
                       "--threads", random.integers(1, 4), *(["--memory", "1K"] if random.integers(2) else []),
                       "--quiet")  # fmt: skip
    assert done.status == 0, (seed, options, done.err)
    found, expected = pyarrow.feather.read_table(saved), pyarrow.parquet.read_table(path)
    assert found.column_names == expected.column_names, seed
    for name in expected.column_names:
        assert values_of(found[name]) == values_of(expected[name]), (seed, name, options)
