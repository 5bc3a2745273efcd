"""The dictionary as the program understands it."""

import json

import pytest
from conftest import DONE, FILE_FAULT, PENGUINS, ROOT, WRONG_USE, files_in, program


def described(*arguments, **options):
    result = program("describe", *arguments, "--json", **options)
    assert result.returncode == DONE, result.stderr
    return {variable["name"]: variable for variable in json.loads(result.stdout)["variables"]}


def test_text_shows_each_variable():
    result = program("describe", PENGUINS)
    assert result.returncode == DONE
    assert result.stderr == ""
    for name in PENGUINS.read_text(encoding="utf-8").split("\n")[0].split(","):
        assert name in result.stdout
    assert "344 rows" in result.stdout


def test_a_column_with_one_bad_cell_names_it(tmp_path):
    table = tmp_path / "t.csv"
    cells = [str(i) for i in range(1000)]
    cells[700] = "12O"  # a letter O
    table.write_text("\n".join(["x", *cells]) + "\n")
    result = program("describe", table)
    assert result.returncode == DONE
    flat = " ".join(result.stdout.split())
    assert "12O" in flat
    assert "701" in flat or "702" in flat


def test_a_cell_that_is_declared_missing_is_no_bad_cell(tmp_path):
    table = tmp_path / "t.csv"
    table.write_text("x\n1\n2\n?\n4.5\n")
    assert described(table)["x"]["type"] == "string"
    assert described(table, "--na", "?")["x"]["type"] == "numeric"


def test_options_change_what_is_understood(tmp_path):
    table = tmp_path / "t.csv"
    table.write_text("code,x\n" + "".join(f"{i % 3},{i}.5\n" for i in range(30)))
    assert described(table)["code"]["level"] == "nominal"
    assert described(table, "--nominal-max", "2")["code"]["level"] == "scale"
    assert described(table, "--level", "code=ordinal")["code"]["level"] == "ordinal"


def test_standard_input():
    text = PENGUINS.read_text(encoding="utf-8")
    assert "island" in described("-", input=text)


@pytest.fixture
def table(tmp_path):
    path = tmp_path / "t.csv"
    path.write_text("y,x\na,1\nb,2\n")
    return path


def test_a_draft_goes_beside_the_data(table):
    result = program("describe", table, "--write-schema")
    assert result.returncode == DONE
    draft = json.loads((table.parent / "t.csv.schema.json").read_text(encoding="utf-8"))
    assert [field["name"] for field in draft["fields"]] == ["y", "x"]
    assert files_in(table.parent) == ["t.csv", "t.csv.schema.json"]


def test_a_draft_replaces_no_dictionary_unless_its_path_is_spelled_out(table):
    schema = table.parent / "t.csv.schema.json"
    schema.write_text('{"fields": [{"name": "x", "title": "Length"}]}')
    refused = program("describe", table, "--write-schema")
    assert refused.returncode == WRONG_USE
    assert f"--write-schema={schema}" in refused.stderr
    assert program("describe", table, f"--write-schema={schema}").returncode == DONE
    fields = json.loads(schema.read_text(encoding="utf-8"))["fields"]
    assert {field["name"]: field.get("title") for field in fields} == {"x": "Length", "y": None}


def test_a_draft_to_a_path_or_to_standard_output(table):
    path = table.parent / "draft.json"
    assert program("describe", table, "--write-schema", path).returncode == DONE
    shown = program("describe", table, "--write-schema", "-")
    assert shown.stdout == path.read_text(encoding="utf-8")


def test_opening_with_the_draft_gives_the_same_dictionary(table):
    program("describe", PENGUINS, "--write-schema", table.parent / "draft.json")
    assert described(PENGUINS) == described(PENGUINS, "--schema", table.parent / "draft.json")


@pytest.mark.parametrize("arguments, status", [
    (["-", "--write-schema"], WRONG_USE),
    (["{table}", "--write-schema={table}"], WRONG_USE),
    (["{table}", "--json", "--write-schema=-"], WRONG_USE),
    (["{table}", "--write-schema=no/such/folder/x"], FILE_FAULT),
    (["no/such/file"], FILE_FAULT),
])
def test_what_cannot_be_drafted_is_refused(table, arguments, status):
    before = table.read_text()
    result = program("describe", *[argument.format(table=table) for argument in arguments])
    assert result.returncode == status
    assert result.stdout == ""
    assert result.stderr.count("\n") == 1
    assert table.read_text() == before


def test_the_example_of_the_dictionary_page_is_read_as_the_page_says(tmp_path):
    page = (ROOT / "docs" / "formats" / "dictionary.md").read_text(encoding="utf-8")
    data = tmp_path / "data.csv"
    data.write_text("age,sex,grade,n\n31,f,1,2\n-1,m,2,1\n98,NA,3,1\n45,f,2,3\n")
    schema = page.partition("```json\n")[2].partition("```")[0]
    (tmp_path / "data.csv.schema.json").write_text(schema, encoding="utf-8")
    variables = described(data)
    levels = {name: variable["level"] for name, variable in variables.items()}
    assert levels == {"age": "scale", "sex": "nominal", "grade": "ordinal", "n": "nominal"}
    assert (variables["age"]["valid"], variables["age"]["userMissing"]) == (2, 2)
    assert (variables["sex"]["valid"], variables["sex"]["systemMissing"]) == (3, 1)
    assert "Weight: n" in program("describe", data).stdout
