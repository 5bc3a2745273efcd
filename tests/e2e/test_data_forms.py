"""The same table in every form that can be read gives the same report."""

import pyarrow
import pyarrow.csv
import pyarrow.feather
import pyarrow.ipc
import pyarrow.parquet
import pytest
from conftest import DONE, FILE_FAULT, PENGUINS, program


def write_stream(table, path):
    with pyarrow.ipc.new_stream(path, table.schema) as writer:
        writer.write_table(table, max_chunksize=100)


WRITERS = {
    "tab.tsv": lambda table, path: pyarrow.csv.write_csv(
        table, path, pyarrow.csv.WriteOptions(delimiter="\t")),
    "all.parquet": lambda table, path: pyarrow.parquet.write_table(table, path, row_group_size=50),
    "file.arrow": lambda table, path: pyarrow.feather.write_feather(table, str(path)),
    "stream.arrows": write_stream,
}
RUN = ["run", "-c", "SELECTPRED species /PLOT SUMMARY; SELECTPRED body_mass_g;", "--schema",
       f"{PENGUINS}.schema.json", "--json", "-"]


@pytest.mark.parametrize("name", WRITERS)
def test_the_report_is_that_of_the_delimited_text(tmp_path, name):
    convert = pyarrow.csv.ConvertOptions(strings_can_be_null=True)
    table = pyarrow.csv.read_csv(PENGUINS, convert_options=convert)
    WRITERS[name](table, tmp_path / name)
    expected = program(*RUN, "--data", PENGUINS)
    result = program(*RUN, "--data", tmp_path / name)
    assert expected.returncode == DONE, expected.stderr
    assert (result.returncode, result.stderr) == (DONE, expected.stderr)
    assert result.stdout == expected.stdout


@pytest.mark.parametrize("name", ["all.parquet", "file.arrow", "stream.arrows"])
def test_a_file_that_was_cut_off_is_a_file_fault(tmp_path, name):
    path = tmp_path / name
    WRITERS[name](pyarrow.csv.read_csv(PENGUINS), path)
    path.write_bytes(path.read_bytes()[:-200])
    result = program(*RUN, "--data", path)
    assert result.returncode == FILE_FAULT
    assert result.stdout == ""
    assert result.stderr.startswith("predselect: ")
    assert result.stderr.count("\n") == 1
