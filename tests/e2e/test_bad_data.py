"""Data that cannot be used: one line says what is wrong, where and how to mend it, and nothing is
written. The first words of each message stand here; what a reader must find in it follows."""

import json

import pytest
from conftest import DATA, FILE_FAULT, WRONG_USE, files_in, program

GOOD = "group,color,size\na,red,1.5\nb,blue,2.5\na,red,3.5\n"


def refused(folder, data, *options, status=FILE_FAULT, command="SELECTPRED group"):
    """The one line on standard error of a run that must fail and leave no file behind."""
    path = folder / "data.csv"
    if data is not None:
        path.write_bytes(data if isinstance(data, bytes) else data.encode())
    before = files_in(folder)
    done = program(
        "run", "-c", command, "--data", path, *options,
        "--json", folder / "report.json", "--html", folder / "report.html",
    )  # fmt: skip
    assert done.returncode == status, done.stderr
    assert done.stdout == ""
    assert files_in(folder) == before
    lines = done.stderr.splitlines()
    assert len(lines) == 1
    assert lines[0].startswith("predselect: ")
    return lines[0].removeprefix("predselect: ").replace(str(path), "DATA")


@pytest.mark.parametrize("data, says", [
    (b"", "DATA: is empty; a header line with the variables' names is expected"),
    (b"\n\n", "DATA: is empty; a header line with the variables' names is expected"),
    (b"\x89PNG\r\n\x1a\n\x00\x00\x00\x0dIHDR", "DATA: is no data file in a known form"),
    (b"PK\x03\x04rest of a spreadsheet", "DATA: is compressed (zip; a spreadsheet is such an archive"),
    (b"\x1f\x8b\x08\x00", "DATA: is compressed (gzip)"),
    (GOOD + "b,blue\n", "DATA: line 5 has 2 values where the header has 3 names; correct the line"),
    (GOOD + "b,blue,1,2\n", "DATA: line 5 has 4 values where the header has 3 names"),
    (GOOD + "\n\n\nb,blue\n", "DATA: line 8 has 2 values"),
    (GOOD + '"b\nb",blue\n', "DATA: line 5 has 2 values"),
    (GOOD.replace("color", "group"), "DATA: several columns have the same name: 'group' (columns 1 and 2)"),
    (GOOD.replace("color", ""), "DATA: column 2 has no name; give every column a name"),
    (GOOD + 'b,"blue,1\n', "DATA: the record that starts in line 5 has a quote that is never closed"),
], ids=[
    "empty", "blank lines", "picture", "zip", "gzip", "too few values", "too many values",
    "line after blank lines", "line after a cell of two lines", "name twice", "empty name",
    "quote not closed",
])  # fmt: skip
def test_a_file_that_is_no_table(tmp_path, data, says):
    assert refused(tmp_path, data).startswith(says)


@pytest.mark.parametrize("cut", [8, 100, 0.5, -1])
@pytest.mark.parametrize("form", ["parquet", "feather"])
def test_a_binary_table_that_is_cut_short(tmp_path, form, cut):
    import pyarrow.csv
    import pyarrow.feather
    import pyarrow.parquet

    table = pyarrow.csv.read_csv(DATA / "penguins.csv")
    whole = tmp_path.parent / f"{tmp_path.name}.{form}"
    if form == "parquet":
        pyarrow.parquet.write_table(table, whole)
    else:
        pyarrow.feather.write_feather(table, whole, compression="uncompressed")
    content = whole.read_bytes()
    length = int(cut * len(content)) if isinstance(cut, float) else cut
    line = refused(tmp_path, content[:length])
    assert line.startswith("DATA: the Parquet file" if form == "parquet" else "DATA: the Arrow file")
    assert "damaged or cut short" in line


@pytest.mark.parametrize("schema, says", [
    ("{", "it is no JSON: line 1, column"),
    ("[]", "it is no Table Schema: an object with a list 'fields' is expected"),
    ({"fields": [{"name": "colour"}]}, "field 'colour': no column of"),
    ({"fields": [{"name": "color", "type": "numbr"}]}, "field 'color': the type 'numbr' is none of"),
    ({"fields": [{"name": "color", "type": "number"}]}, "field 'color': the type is number, but line 2 of"),
    ({"fields": [{"name": "size", "type": "integer"}]}, "field 'size': the type is integer, but line 2 of"),
    ({"fields": [{"name": "color", "measurementLevel": "scale"}]}, "field 'color': the string variable"),
    ({"fields": [{"name": "size", "measurementLevel": "ratio"}]}, "field 'size': the measurement level 'ratio'"),
    ({"fields": [{"name": "size", "missingRange": [9, 1]}]}, "field 'size': the missing range is reversed"),
    ({"fields": [{"name": "size"}, {"name": "size"}]}, "the field 'size' is declared twice"),
    ({"fields": [{"type": "string"}]}, "item 1 of 'fields': it has no 'name'"),
    ({"fields": [], "weight": "mass"}, "'weight': "),
    ({"fields": [], "weight": "color"}, "'weight': the weight variable 'color' is a string"),
    ({"fields": [], "split": ["shape"]}, "'split': "),
    ({"fields": [], "fieldsMatch": "exact"}, "the column 'group' of"),
])  # fmt: skip
def test_a_dictionary_that_contradicts(tmp_path, schema, says):
    file = tmp_path / "data.csv.schema.json"
    file.write_text(schema if isinstance(schema, str) else json.dumps(schema))
    line = refused(tmp_path, GOOD)
    assert line.startswith("DATA.schema.json: " + says)


def test_a_dictionary_that_is_not_there(tmp_path):
    line = refused(tmp_path, GOOD, "--schema", tmp_path / "other.json")
    assert line.startswith(f"{tmp_path}/other.json: ")


@pytest.mark.parametrize("option, value, says", [
    ("--weight", "mass", "--weight mass: no column of DATA has the name 'mass'"),
    ("--weight", "color", "--weight color: the weight variable 'color' is a string"),
    ("--level", "mass=scale", "--level mass=scale: no column of DATA has the name 'mass'"),
    ("--level", "color=scale", "--level color=scale: the string variable 'color'"),
    ("--missing", "size=1,2,3,4", "--missing size=1,2,3,4: 'size' has 4 missing values"),
])  # fmt: skip
def test_an_option_that_does_not_fit(tmp_path, option, value, says):
    assert refused(tmp_path, GOOD, option, value, status=WRONG_USE).startswith(says)


def test_undecodable_bytes_are_told_and_read(tmp_path):
    data = tmp_path / "data.csv"
    data.write_bytes("group,größe\na,klein\nb,groß\na,groß\nb,klein\n".encode("latin-1"))
    done = program("run", "-c", "SELECTPRED group BY größe", "--data", data, "--json", "-")
    assert done.returncode == 0
    assert "no UTF-8 text and was read as Windows-1252" in done.stderr
    assert json.loads(done.stdout)["commands"][0]["status"] == "ok"


def test_a_bad_byte_in_a_file_said_to_be_utf_8_is_told_with_its_line(tmp_path):
    data = tmp_path / "data.csv"
    data.write_bytes(b"group,color\na,red\nb,bl\xffe\na,blue\nb,red\n")
    done = program("run", "-c", "SELECTPRED group", "--data", data, "--encoding", "utf-8")
    assert done.returncode == 0
    assert "'color': 1 value is not valid text in the file's encoding" in done.stderr
    assert "First in line 3." in done.stderr


def test_a_number_column_with_one_bad_cell_is_told_with_its_line(tmp_path):
    data = tmp_path / "data.csv"
    data.write_text("group,size\na,1.5\nb,n/a\na,2.5\nb,3.5\n")
    done = program("run", "-c", "SELECTPRED group", "--data", data, "--quiet")
    assert done.returncode == 0
    assert "'size': the text 'n/a' in line 3 made it a string variable" in done.stderr
    assert "use --na n/a" in done.stderr


def test_an_unknown_target_is_answered_with_the_nearest_names(tmp_path):
    done = program("select", "--data", DATA / "penguins.csv", "--target", "specie")
    assert done.returncode == WRONG_USE
    assert "There is no variable specie; did you mean species?" in done.stderr
