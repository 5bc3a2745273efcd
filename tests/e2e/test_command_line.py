"""Options, help and exit statuses."""

import os
import subprocess

import pytest
from conftest import (COMMAND_FAILED, DATA, DONE, FILE_FAULT, PENGUINS, PROGRAM, WRONG_USE,
                      default_signals, program)


def test_version_is_one_line_of_name_and_number():
    result = program("--version")
    assert result.returncode == DONE
    name, number = result.stdout.removesuffix("\n").split(" ")
    assert name == "predselect"
    assert [part.isdigit() for part in number.split(".")] == [True] * 3


@pytest.mark.parametrize("command", [[], ["run"], ["select"], ["bayes"], ["score"], ["update"],
                                     ["merge"], ["describe"], ["completion"]])
def test_help_goes_to_standard_output_in_lines_of_100_columns(command):
    result = program(*command, "--help")
    assert result.returncode == DONE
    assert result.stderr == ""
    assert "Usage: predselect" in result.stdout
    assert [line for line in result.stdout.split("\n") if len(line) > 100] == []


@pytest.mark.parametrize("command", [[], ["run"], ["select"], ["bayes"], ["score"], ["update"],
                                     ["merge"], ["describe"]])
def test_help_shows_examples_and_exit_statuses(command):
    text = program(*command, "--help").stdout
    assert "Examples:\n  predselect" in text
    for status in ["0 done", "1 the command failed", "2 wrong use", "3 a file", "130 interrupted"]:
        assert status in text.replace("\n", " ")


def test_help_gives_each_option_of_the_command_language():
    text = program("select", "--help").stdout
    for option in ["--target", "--target-level", "--factors", "--covariates", "--except",
                   "--screening", "--max-missing", "--max-single", "--max-categories", "--min-cv",
                   "--min-stddev", "--user-missing", "--ranking", "--size", "--p-cutoff",
                   "--show-unselected", "--timer", "--print", "--summary", "--plot"]:
        assert f"  {option} " in text or f",{option} " in text, option


@pytest.mark.parametrize("arguments, says", [
    ([], "run, select, bayes, score, update, merge, describe or completion is required"),
    (["frobnicate"], "frobnicate"),
    (["select", "--data", PENGUINS], "--target is required"),
    (["select", "--target", "species"], "--data is required"),
    (["run", "-c", "SELECTPRED species;"], "--data is required"),
    (["run", "--data", PENGUINS], "a command file or -c"),
    (["run", "x.pred", "-c", "SELECTPRED x;", "--data", PENGUINS], "a command file or -c"),
    (["run", "-", "--data", "-"], "standard input cannot give both"),
    (["describe"], "file is required"),
    (["completion", "tcsh"], "tcsh"),
    (["select", "--data", PENGUINS, "--target", "species", "--ranking", "best"], "--ranking"),
    (["select", "--data", PENGUINS, "--target", "species", "--timer", "soon"],
     "'soon' is not a number"),
    (["select", "--data", PENGUINS, "--target", "species", "--size", "2.5"],
     "'2.5' has to be a whole number or auto"),
    (["select", "--data", PENGUINS, "--target", "species", "--level", "year"],
     "'year' has to be NAME=VALUE"),
    (["select", "--data", PENGUINS, "--target", "species", "--delimiter", "ab"],
     "'ab' has to be one character"),
    (["select", "--data", PENGUINS, "--target", "species", "--width", "5"], "--width"),
    (["select", "--data", PENGUINS, "--target", "species", "--unknown"], "--unknown"),
    (["select", "--data", PENGUINS, "--target", "species", "--color", "pink"], "--color"),
])
def test_wrong_use_is_told_in_one_line_and_ends_with_2(arguments, says):
    result = program(*arguments)
    assert result.returncode == WRONG_USE
    assert result.stdout == ""
    assert result.stderr.startswith("predselect: ")
    assert result.stderr.count("\n") == 1
    assert says in result.stderr


def test_wrong_use_points_to_the_help_of_the_command_that_was_meant():
    assert "see predselect select --help" in program("select").stderr
    assert "see predselect --help" in program().stderr


def test_nothing_selected_is_no_failure():
    result = program("select", "--data", PENGUINS, "--target", "sex", "--covariates", "year",
                     "--p-cutoff", "1e-12")
    assert result.returncode == DONE
    assert "No predictors were selected" in result.stdout.replace("\n ", "")


@pytest.mark.parametrize("option, says", [
    (["--target", "spices"], "species"),
    (["--target", "species", "--factors", "island", "island2"], "island2"),
    (["--target", "species", "--weight", "heft"], "heft"),
    (["--target", "species", "--level", "heft=scale"], "heft"),
    (["--target", "species", "--level", "year=high"], "high"),
    (["--target", "species", "--missing", "heft=1"], "heft"),
    (["--target", "species", "--p-cutoff", "2"], "PCUTOFF"),
])
def test_what_does_not_fit_the_data_is_wrong_use(option, says):
    result = program("select", "--data", PENGUINS, *option)
    assert result.returncode == WRONG_USE
    assert result.stdout == ""
    assert result.stderr.startswith("predselect: ")
    assert says in result.stderr


def test_a_constant_target_fails_the_command(tmp_path):
    table = tmp_path / "t.csv"
    table.write_text("y,x\n1,1\n1,2\n1,3\n")
    result = program("select", "--data", table, "--target", "y")
    assert result.returncode == COMMAND_FAILED
    assert result.stdout == ""
    assert "The target has the same value in all valid cases" in result.stderr


@pytest.mark.parametrize("path", ["no/such/file.csv", "."])
def test_data_that_cannot_be_read_are_a_file_fault(path):
    result = program("select", "--data", path, "--target", "y")
    assert result.returncode == FILE_FAULT, result.stderr
    assert result.stdout == ""
    assert result.stderr.startswith("predselect: ")
    assert result.stderr.count("\n") == 1


def test_data_without_a_table_are_a_file_fault(tmp_path):
    empty = tmp_path / "empty.csv"
    empty.write_text("")
    assert program("select", "--data", empty, "--target", "y").returncode == FILE_FAULT


def test_a_faulty_dictionary_is_a_file_fault(tmp_path):
    table = tmp_path / "t.csv"
    table.write_text("y,x\n1,1\n2,2\n")
    (tmp_path / "t.csv.schema.json").write_text('{"fields": [')
    result = program("select", "--data", table, "--target", "y")
    assert result.returncode == FILE_FAULT
    assert "t.csv.schema.json" in result.stderr


def test_reading_options_reach_the_reader(tmp_path):
    table = tmp_path / "t.csv"
    rows = [f"{'ab'[i % 2]}|{i % 7},5|{'?' if i % 3 == 0 else i}|1" for i in range(60)]
    table.write_text("\n".join(["y|x|z|w", *rows]), encoding="latin-1")
    result = program("select", "--data", table, "--target", "y", "--delimiter", "pipe",
                     "--decimal", ",", "--na", "?", "--na", "-", "--quote", "none",
                     "--encoding", "latin-1", "--weight", "w", "--level", "x=ordinal",
                     "--level", "z=scale", "--missing", "z=1,2", "--nominal-max", "3",
                     "--max-missing", "35", "--json", "-")
    # z misses 20 question marks and the values 1 and 2: 22 of 60 is above 35 percent.
    assert result.returncode == DONE, result.stderr
    assert '"z"' in result.stdout
    assert "ExcludedPredictors" in result.stdout


def test_a_standard_stream_that_is_closed_is_no_file_of_the_run(tmp_path):
    page = tmp_path / "r.html"
    script = '"$0" select --data "$1" --target species --html "$2" >&- 2>&-'
    status = subprocess.run(["sh", "-c", script, PROGRAM, PENGUINS, page], check=False).returncode
    assert status == DONE
    assert page.read_text(encoding="utf-8").lower().startswith("<!doctype html>")
    assert os.listdir(tmp_path) == ["r.html"]


def test_a_reader_that_goes_away_is_no_fault(tmp_path):
    read, write = os.pipe()
    os.close(read)
    result = subprocess.run([PROGRAM, "describe", DATA / "churn.csv"], stdout=write,
                            stderr=subprocess.PIPE, preexec_fn=default_signals, check=False)
    os.close(write)
    assert result.returncode == DONE
    assert result.stderr == b""


@pytest.mark.parametrize("arguments", [
    ["--version"], ["--help"], ["completion", "bash"], ["describe", PENGUINS],
    ["select", "--data", PENGUINS, "--target", "species"],
    ["select", "--data", PENGUINS, "--target", "species", "--json", "-"],
])
def test_standard_output_that_is_full_is_a_file_fault(arguments):
    with open("/dev/full", "w") as full:
        result = program(*arguments, capture_output=False, stdout=full, stderr=subprocess.PIPE)
    assert result.returncode == FILE_FAULT
    assert "cannot write standard output" in result.stderr
