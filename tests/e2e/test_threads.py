"""Threads and memory for the columns: what comes out does not depend on them."""

import re

import numpy
import pytest
from conftest import CHURN, DONE, PENGUINS, WRONG_USE, program
from test_state_formats import state_of

TABLES = {"penguins": (PENGUINS, "species"), "churn": (CHURN, "churn")}


def outputs_of(folder, command, table, target, *options):
    """All that a run writes but for a state, by name. Paths are the same in every run: reports may tell them."""
    paths = {"--html": folder / "r.html", "--json": folder / "r.json"}
    if command == "bayes":
        paths |= {"--save": folder / "r.csv", "--pmml": folder / "r.xml"}
    places = [word for place in paths.items() for word in place]
    result = program(command, "--data", table, "--target", target, *places, *options)
    assert result.returncode == DONE, result.stderr
    # The model tells when it was made.
    return {"text": result.stdout, "told": result.stderr,
            **{name: re.sub(rb"<Timestamp>[^<]*", b"<Timestamp>", path.read_bytes())
               for name, path in paths.items()}}


@pytest.mark.parametrize("command", ["select", "bayes"])
@pytest.mark.parametrize("table", TABLES)
def test_outputs_do_not_depend_on_threads(tmp_path, command, table):
    one = outputs_of(tmp_path, command, *TABLES[table], "--threads", "1")
    assert one["--json"] and one["--html"]
    for threads in ["2", "5", "256"]:
        assert outputs_of(tmp_path, command, *TABLES[table], "--threads", threads) == one, threads
    assert outputs_of(tmp_path, command, *TABLES[table]) == one


@pytest.fixture(name="long_table", scope="module")
def made_long_table(tmp_path_factory):
    """More rows than are read at a time, with holes in them, so that columns are made side by side."""
    random = numpy.random.default_rng(20260202)
    rows = 150_000
    target = random.integers(0, 3, rows)
    columns = {"y": target, "w": random.integers(0, 4, rows)}
    for i in range(6):
        columns[f"c{i}"] = numpy.where(random.random(rows) < 0.3, target, random.integers(0, 7, rows))
        columns[f"x{i}"] = numpy.round(random.normal(target * 0.1 * i, 1), 6)
    path = tmp_path_factory.mktemp("long") / "long.csv"
    holes = random.random((rows, len(columns))) < 0.02
    holes[:, :2] = False
    cells = [numpy.where(holes[:, i], "", values.astype(str)) for i, values in enumerate(columns.values())]
    numpy.savetxt(path, numpy.column_stack(cells), fmt="%s", delimiter=",", header=",".join(columns), comments="")
    return path


@pytest.mark.parametrize("options", [
    ["select"], ["select", "--weight", "w"], ["select", "--missing", "c1=2", "--missing", "x1=0..1"],
    ["bayes", "--train-percent", "60", "--timer", "0"],
])
def test_outputs_of_a_long_table_do_not_depend_on_threads(tmp_path, long_table, options):
    command, *further = options
    one = outputs_of(tmp_path, command, long_table, "y", *further, "--threads", "1")
    assert outputs_of(tmp_path, command, long_table, "y", *further, "--threads", "3") == one


def engine_of(folder, table, command, *options):
    """Header and engine's bytes of the state that a command leaves, but for the processor seconds of a
    screening, which are no result."""
    path = folder / "engine.state"
    result = program(command, "--data", table, "--target", "y", "--state", path, "--quiet", *options)
    assert result.returncode == DONE, result.stderr
    header, state = state_of(path)
    if command == "select":
        seconds = state.index(b"PRSET") + len(b"PRSET") + 2 * 4
        state = state[:seconds] + state[seconds + 8:]
    return header, state


@pytest.mark.parametrize("options", [
    ["select"], ["select", "--weight", "w"], ["bayes", "--timer", "0"], ["bayes", "--no-selection"],
    ["bayes", "--train-percent", "60", "--timer", "0"],
])
def test_states_of_a_long_table_do_not_depend_on_threads(tmp_path, long_table, options):
    assert engine_of(tmp_path, long_table, *options, "--threads", "2") == \
        engine_of(tmp_path, long_table, *options, "--threads", "1")


def classifier_by(folder, table, command, *options):
    """The model and the scored table of a NAIVEBAYES command."""
    paths = {"--pmml": folder / "model.xml", "--save": folder / "scored.csv"}
    result = program("run", "-c", command.replace("MODEL", f"MODEL='{paths['--pmml']}'"), "--data", table,
                     "--save", paths["--save"], "--quiet", *options)
    assert result.returncode == DONE, result.stderr
    return [re.sub(rb"<Timestamp>[^<]*", b"<Timestamp>", path.read_bytes()) for path in paths.values()]


def test_records_in_a_temporary_file_give_the_model_of_those_in_memory(tmp_path, long_table):
    """The one choice is between a predictor that tells of the target and one that does not, as drawn records,
    which differ from those in the file, decide it."""
    command = ("NAIVEBAYES y BY c5 WITH x0 /FORCE FACTORS=(c0 c1 c2) COVARIATES=(x3) /SUBSET EXACTSIZE=1"
               " /CRITERIA MEMALLOCATE={} TIMER=0 /SAVE PREDVAL PREDPROB /OUTFILE MODEL;")
    kept = classifier_by(tmp_path, long_table, command.format(1_000_000))
    for threads in ["1", "2"]:
        assert classifier_by(tmp_path, long_table, command.format(4), "--threads", threads) == kept


@pytest.mark.parametrize("table", TABLES)
def test_screening_does_not_depend_on_the_memory_for_columns(tmp_path, table):
    everything = outputs_of(tmp_path, "select", *TABLES[table])
    assert outputs_of(tmp_path, "select", *TABLES[table], "--memory", "1K") == everything


def test_screening_of_a_long_table_does_not_depend_on_the_memory(tmp_path, long_table):
    everything = outputs_of(tmp_path, "select", long_table, "y", "--weight", "w")
    less = outputs_of(tmp_path, "select", long_table, "y", "--weight", "w", "--memory", "1M")
    assert less == everything


@pytest.mark.parametrize("option", [["--threads", "0"], ["--threads", "257"], ["--threads", "two"],
                                    ["--memory", "much"], ["--memory", "-1"]])
def test_what_is_no_number_of_threads_or_bytes_is_refused(option):
    result = program("select", "--data", PENGUINS, "--target", "species", *option)
    assert result.returncode == WRONG_USE
    assert option[0] in result.stderr


def test_every_command_that_reads_data_takes_both(tmp_path):
    state = tmp_path / "model.state"
    both = ["--threads", "2", "--memory", "1G"]
    commands = [
        ["select", "--data", PENGUINS, "--target", "species"],
        ["bayes", "--data", PENGUINS, "--target", "species", "--state", state],
        ["run", "-c", "SELECTPRED species BY island;", "--data", PENGUINS],
        ["score", "--model", state, "--data", PENGUINS, "--save", tmp_path / "scored.csv"],
        ["update", "--model", state, "--data", PENGUINS, "--state", tmp_path / "more.state"],
        ["describe", PENGUINS],
    ]
    for command in commands:
        result = program(*command, *both)
        assert result.returncode == DONE, (command[0], result.stderr)
