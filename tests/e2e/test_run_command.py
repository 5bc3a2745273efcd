"""Commands from files, from standard input and from the command line."""

import json

import pytest
from conftest import (CHURN, COMMAND_FAILED, DONE, FILE_FAULT, PENGUINS, WRONG_USE, files_in,
                      program)


def test_a_command_file(tmp_path):
    commands = tmp_path / "c.pred"
    commands.write_text("# the species\nselectpred species\n  /print selected\n")
    result = program("run", commands, "--data", PENGUINS)
    assert result.returncode == DONE
    assert "Selected Predictors" in result.stdout
    assert "Case Processing Summary" not in result.stdout


def test_commands_from_standard_input():
    result = program("run", "-", "--data", PENGUINS, input="SELECTPRED species;")
    assert result.returncode == DONE
    assert "Selected Predictors" in result.stdout


def test_data_from_standard_input():
    from_pipe = program("run", "-c", "SELECTPRED species;", "--data", "-", "--json", "-", "--schema",
                        f"{PENGUINS}.schema.json", input=PENGUINS.read_text(encoding="utf-8"))
    from_file = program("run", "-c", "SELECTPRED species;", "--data", PENGUINS, "--json", "-")
    assert from_pipe.returncode == DONE
    assert from_pipe.stdout == from_file.stdout


def test_several_commands_run_in_turn():
    result = program("run", "-c", "SELECTPRED species; SELECTPRED sex; SELECTPRED island;",
                     "--data", PENGUINS, "--json", "-")
    assert result.returncode == DONE
    commands = json.loads(result.stdout)["commands"]
    assert [command["command"] for command in commands] == [
        "SELECTPRED species", "SELECTPRED sex", "SELECTPRED island"]
    assert [command["status"] for command in commands] == ["ok"] * 3


def test_the_same_run_gives_the_same_bytes():
    runs = [program("run", "-c", "SELECTPRED churn /PLOT SUMMARY;", "--data", CHURN, "--html", "-")
            for _ in range(2)]
    assert runs[0].returncode == DONE
    assert runs[0].stdout == runs[1].stdout


@pytest.mark.parametrize("command, place, caret", [
    ("FREQUENCIES x;", "1:1", "^"),
    ("SELECTPRED species\n  /PRITN CPS;", "2:4", "   ^"),
    ("SELECTPRED spices;", "1:12", "           ^"),
    ("SELECTPRED species /CRITERIA PCUTOFF=2;", "1:38", " " * 37 + "^"),
    ("SELECTPRED größe;", "1:12", "           ^"),
])
def test_a_refused_command_shows_where(command, place, caret):
    result = program("run", "-c", command, "--data", PENGUINS)
    assert result.returncode == WRONG_USE
    assert result.stdout == ""
    first, line, mark = result.stderr.rstrip("\n").split("\n")
    assert first.startswith(f"predselect: command line:{place}: ")
    assert line == command.split("\n")[int(place[0]) - 1]
    assert mark == caret


def test_another_command_word_names_the_two_that_there_are():
    result = program("run", "-c", "DESCRIPTIVES x;", "--data", PENGUINS)
    assert "SELECTPRED or NAIVEBAYES" in result.stderr


def test_a_fault_of_form_anywhere_keeps_all_commands_from_running():
    result = program("run", "-c", "SELECTPRED species; SELECTPRED 'x", "--data", PENGUINS)
    assert result.returncode == WRONG_USE
    assert result.stdout == ""


def test_a_text_is_read_before_the_data():
    assert program("run", "-c", "FOO;", "--data", "no/such/file").returncode == WRONG_USE


@pytest.mark.parametrize("text", ["", " \n\t", "# nothing", ";;"])
def test_a_text_without_a_command_is_wrong_use(tmp_path, text):
    commands = tmp_path / "c.pred"
    commands.write_text(text)
    result = program("run", commands, "--data", PENGUINS)
    assert result.returncode == WRONG_USE
    assert "SELECTPRED" in result.stderr


@pytest.mark.parametrize("path", ["no/such/file.pred", "."])
def test_a_command_file_that_cannot_be_read_is_a_file_fault(path):
    result = program("run", path, "--data", PENGUINS)
    assert result.returncode == FILE_FAULT
    assert "cannot read the command file" in result.stderr
    assert result.stderr.count("\n") == 1


@pytest.mark.parametrize("garbage", [b"\x00\x01\x02", b"SELECTPRED \xff\xfe;", b"\x89PNG\r\n\x1a\n" * 100])
def test_a_command_file_of_other_bytes_is_refused(tmp_path, garbage):
    commands = tmp_path / "c.pred"
    commands.write_bytes(garbage)
    assert program("run", commands, "--data", PENGUINS).returncode == WRONG_USE


def test_when_a_command_fails_those_before_it_are_shown_and_no_file_is_written(tmp_path):
    result = program("run", "-c", "SELECTPRED species; SELECTPRED nothere; SELECTPRED sex;",
                     "--data", PENGUINS, "--html", tmp_path / "r.html")
    assert result.returncode == WRONG_USE
    assert "SELECTPRED species" in result.stdout
    assert "SELECTPRED sex" not in result.stdout
    assert "nothere" in result.stderr
    assert files_in(tmp_path) == []


def test_a_hundred_thousand_tokens(tmp_path):
    commands = tmp_path / "c.pred"
    commands.write_text("SELECTPRED species BY\n" + "island\nsex\n" * 50_000 + ";\n")
    result = program("run", commands, "--data", PENGUINS, "--quiet")
    assert result.returncode == DONE, result.stderr[:500]


def test_a_fault_behind_a_hundred_thousand_tokens(tmp_path):
    commands = tmp_path / "c.pred"
    commands.write_text("SELECTPRED species BY\n" + "island\n" * 100_000 + "iceland;\n")
    result = program("run", commands, "--data", PENGUINS)
    assert result.returncode == WRONG_USE
    assert f"{commands}:100002:1: " in result.stderr


def test_the_time_limit_ends_the_run_with_a_reason(tmp_path, big_table):
    result = program("select", "--data", big_table, "--target", "target", "--timer", "0.000001",
                     "--html", tmp_path / "r.html")
    assert result.returncode == COMMAND_FAILED
    assert "time limit" in result.stderr
    assert files_in(tmp_path) == []


def test_notes_on_the_data_go_to_standard_error(tmp_path):
    table = tmp_path / "t.csv"
    rows = [f"{'ab'[i % 2]},{'oops' if i == 7 else i}" for i in range(40)]
    table.write_text("\n".join(["y,x", *rows]) + "\n")
    result = program("select", "--data", table, "--target", "y")
    assert "note: " in result.stderr
    assert "oops" in result.stderr
    assert "oops" not in result.stdout


def test_many_notes_are_cut_short(tmp_path):
    table = tmp_path / "t.csv"
    names = [f"x{i}" for i in range(30)]
    rows = ["a," + ",".join("oops" if i == 7 else str(i) for _ in names) for i in range(20)]
    table.write_text("\n".join(["y," + ",".join(names), *rows, "b" + ",1" * 30]) + "\n")
    result = program("select", "--data", table, "--target", "y")
    assert result.stderr.count("predselect: note: ") == 21
    assert "there are 10 more" in result.stderr
