"""Saved tables of many rows: other software reads what went in, and threads do not show."""

import numpy
import pyarrow
import pyarrow.compute
import pyarrow.csv
import pyarrow.feather
import pyarrow.parquet
import pytest
from conftest import DONE, program

ROWS = 150_000  # more than one row group


def done(*arguments):
    result = program(*arguments)
    assert result.returncode == DONE, result.stderr
    return result


@pytest.fixture(name="table", scope="module")
def made_table(tmp_path_factory):
    random = numpy.random.default_rng(20260303)
    target = random.integers(0, 3, ROWS)
    holes = random.random((ROWS, 8)) < 0.02
    holes[:, 3] = False
    days = random.integers(0, 4000, ROWS)
    columns = {
        "y": pyarrow.array(numpy.array(["low", "mid", "high"])[target], mask=holes[:, 0]),
        "text": pyarrow.array(numpy.array(["ä", "b c", 'd"', "e,f"])[random.integers(0, 4, ROWS)], mask=holes[:, 1]),
        "count": pyarrow.array(random.integers(-3, 9, ROWS), mask=holes[:, 2]),
        "full": pyarrow.array(random.integers(0, 2, ROWS)),
        "scale": pyarrow.array(numpy.round(random.normal(target, 1), 4), mask=holes[:, 4]),
        "exact": pyarrow.array(random.normal(target, 3), mask=holes[:, 5]),
        "day": pyarrow.array(days.astype("datetime64[D]"), mask=holes[:, 6]),
        "flag": pyarrow.array(random.random(ROWS) < 0.3, mask=holes[:, 7]),
        "own": pyarrow.array([f"id{i}" for i in range(ROWS)]),
        "none": pyarrow.nulls(ROWS, pyarrow.float64()),
    }
    path = tmp_path_factory.mktemp("table") / "in.parquet"
    pyarrow.parquet.write_table(pyarrow.table(columns), path)
    return path


@pytest.fixture(name="saved", scope="module")
def made_saved(table):
    """The folder of all forms in which a run saves the table, and the state of its engine."""
    folder = table.parent
    for name in ("s.parquet", "s.arrow", "s.csv"):
        done("bayes", "--data", table, "--target", "y", "--except", "own", "--no-selection", "--quiet", "--threads",
             2, "--save", folder / name, "--state", folder / "m.state")  # fmt: skip
    return folder


def test_other_software_reads_what_went_in(table, saved):
    given = pyarrow.parquet.read_table(table)
    again = pyarrow.parquet.read_table(saved / "s.parquet")
    again.validate(full=True)
    assert again.num_rows == ROWS
    for name in given.column_names:
        if name == "none":
            assert again[name].null_count == ROWS
        else:
            assert again[name].combine_chunks().equals(given[name].combine_chunks()), name


def test_all_forms_hold_the_same(saved):
    parquet = pyarrow.parquet.read_table(saved / "s.parquet")
    assert parquet.equals(pyarrow.feather.read_table(saved / "s.arrow"))
    assert parquet.column_names[-4:] == ["PredictedValue", *(f"PredictedProbability{k}" for k in (1, 2, 3))]
    convert = pyarrow.csv.ConvertOptions(strings_can_be_null=True, quoted_strings_can_be_null=False,
                                         column_types=parquet.schema)  # fmt: skip
    text = pyarrow.csv.read_csv(saved / "s.csv", convert_options=convert)
    assert text.equals(parquet)


def test_statistics_are_those_of_each_row_group(saved):
    file = pyarrow.parquet.ParquetFile(saved / "s.parquet")
    assert file.num_row_groups > 1
    for number in range(file.num_row_groups):
        rows = file.read_row_group(number)
        for i, name in enumerate(rows.column_names):
            told = file.metadata.row_group(number).column(i).statistics
            expected = pyarrow.compute.min_max(rows[name]).as_py()
            assert told.null_count == rows[name].null_count, name
            assert told.num_values == rows.num_rows - rows[name].null_count, name
            if name != "none":
                assert (told.min, told.max) == (expected["min"], expected["max"]), name


@pytest.mark.parametrize("threads", [1, 3])
@pytest.mark.parametrize("name", ["s.parquet", "s.csv"])
def test_scoring_saves_what_the_run_saved(table, saved, tmp_path, name, threads):
    done("score", "--model", saved / "m.state", "--data", table, "--save", tmp_path / name, "--threads", threads)
    assert (tmp_path / name).read_bytes() == (saved / name).read_bytes()


def test_updating_does_not_depend_on_threads(table, saved, tmp_path):
    for threads in (1, 3):
        done("update", "--model", saved / "m.state", "--data", table, "--state", tmp_path / f"{threads}.state",
             "--threads", threads)  # fmt: skip
    assert (tmp_path / "1.state").read_bytes() == (tmp_path / "3.state").read_bytes()
