"""The command that `bayes` writes, and how its runs end."""

import csv
import os
import signal
import subprocess
import time

import numpy
import pytest
from conftest import (CHURN, COMMAND_FAILED, DONE, FILE_FAULT, INTERRUPTED, PENGUINS, WRONG_USE,
                      default_signals, files_in, program, started)


def command_of(*options):
    result = program("bayes", "--show-command", *options)
    assert result.returncode == DONE, result.stderr
    assert result.stderr == ""
    return result.stdout


def test_a_target_alone():
    assert command_of("--target", "y") == "NAIVEBAYES y;\n"


def test_every_option_has_its_words():
    assert command_of(
        "--target", "y", "--factors", "a", "b..c", "--covariates", "all", "--except", "e",
        "--force-factors", "f", "two words", "--force-covariates", "g", "--user-missing", "include",
        "--train-percent", "70", "--max-size", "auto", "--best-subset", "pseudobic", "--bins", "5",
        "--timer", "0", "--predicted", "won", "--probabilities", "p", "--max-probabilities", "3",
        "--pmml", "the model's.xml", "--print", "cps", "classification") == """\
NAIVEBAYES y BY a b..c WITH all
  /EXCEPT VARIABLES=e
  /FORCE FACTORS=(f "two words") COVARIATES=(g)
  /TRAININGSAMPLE PERCENT=70
  /SUBSET MAXSIZE=AUTO(BESTSUBSET=PSEUDOBIC)
  /CRITERIA BINS=5 TIMER=0
  /MISSING USERMISSING=INCLUDE
  /SAVE PREDVAL=won PREDPROB(p:3)
  /OUTFILE MODEL='the model''s.xml'
  /PRINT CPS CLASSIFICATION;
"""


@pytest.mark.parametrize("options, written", [
    (["--train-variable", "Part 1"], '\n  /TRAININGSAMPLE VARIABLE="Part 1"'),
    (["--max-size", "4"], "\n  /SUBSET MAXSIZE=4"),
    (["--best-subset", "testdata"], "\n  /SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA)"),
    (["--exact-size", "2"], "\n  /SUBSET EXACTSIZE=2"),
    (["--no-selection"], "\n  /SUBSET NOSELECTION"),
    (["--predicted"], "\n  /SAVE PREDVAL"),
    (["--probabilities"], "\n  /SAVE PREDPROB"),
    (["--max-probabilities", "2"], "\n  /SAVE PREDPROB(:2)"),
    (["--save", "s.csv"], "\n  /SAVE PREDVAL PREDPROB"),
    (["--save", "s.csv", "--predicted"], "\n  /SAVE PREDVAL"),
    (["--save", "s.csv", "--max-probabilities", "2"], "\n  /SAVE PREDPROB(:2)"),
])
def test_single_options(options, written):
    assert command_of("--target", "y", *options) == f"NAIVEBAYES y{written};\n"


@pytest.mark.parametrize("options", [
    ["--exact-size", "2", "--max-size", "3"],
    ["--no-selection", "--max-size", "3"],
    ["--no-selection", "--exact-size", "3"],
    ["--train-percent", "50", "--train-variable", "t"],
    ["--memory", "much"],
    ["--seed", "-1"],
])
def test_options_that_cannot_be(options):
    result = program("bayes", "--data", PENGUINS, "--target", "species", *options)
    assert result.returncode == WRONG_USE
    assert result.stdout == ""
    assert len(result.stderr.splitlines()) == 1


def test_the_command_written_is_the_one_that_runs(tmp_path):
    options = ["--target", "species", "--max-size", "2", "--print", "summary"]
    direct = program("bayes", "--data", PENGUINS, *options, "--json", "-")
    text = program("bayes", "--show-command", *options).stdout
    run = program("run", "-c", text, "--data", PENGUINS, "--json", "-")
    assert direct.returncode == run.returncode == DONE
    assert direct.stdout == run.stdout


def write_table(path, rows, header):
    with open(path, "w", newline="") as file:
        writer = csv.writer(file)
        writer.writerow(header)
        writer.writerows(rows)


@pytest.fixture
def table(tmp_path):
    """y depends on a; b is noise; one is constant; t marks the training cases."""
    random = numpy.random.default_rng(7)
    rows = []
    for i in range(60):
        y = "yes" if i % 3 else "no"
        a = y if random.random() < 0.8 else "other"
        rows.append([y, a, int(random.integers(0, 3)), round(float(random.normal()), 3), "same", int(i % 2)])
    path = tmp_path / "data.csv"
    write_table(path, rows, ["y", "a", "b", "x", "one", "t"])
    return path


def fails(status, *arguments, folder):
    """One line on standard error, nothing on standard output, no new file."""
    before = files_in(folder)
    result = program(*arguments, "--quiet")
    lines = [line for line in result.stderr.splitlines()
             if not line.startswith(("predselect: note:", "predselect: warning:"))]
    assert result.returncode == status, result.stderr
    assert result.stdout == ""
    assert files_in(folder) == before
    return lines


def fails_with(words, status, *arguments, folder):
    lines = fails(status, *arguments, folder=folder)
    assert len(lines) == 1, lines
    for word in [words] if isinstance(words, str) else words:
        assert word in lines[0], lines
    return lines[0]


@pytest.fixture
def outputs(tmp_path):
    return ["--json", tmp_path / "r.json", "--pmml", tmp_path / "m.xml", "--save",
            tmp_path / "s.csv", "--state", tmp_path / "s.state", "--state-xml", tmp_path / "s.xml"]


def test_target_not_categorical(table, outputs, tmp_path):
    lines = fails(WRONG_USE, "bayes", "--data", table, "--target", "x", "--level", "x=scale", *outputs,
                  folder=tmp_path)
    assert "target x" in lines[0] and "nominal or ordinal" in lines[0]


def test_forced_predictor_constant(table, outputs, tmp_path):
    fails_with("forced", COMMAND_FAILED, "bayes", "--data", table, "--target", "y",
               "--force-factors", "one", *outputs, folder=tmp_path)


def test_excluded_predictors_are_shown_when_none_is_left(table):
    result = program("bayes", "--data", table, "--target", "y", "--factors", "one")
    assert result.returncode == COMMAND_FAILED
    assert len(result.stderr.splitlines()) == 1
    assert "Excluded Predictors" in result.stdout and "one" in result.stdout


def test_target_constant(table, outputs, tmp_path):
    fails_with("same value", COMMAND_FAILED, "bayes", "--data", table, "--target", "one", *outputs,
               folder=tmp_path)


@pytest.mark.parametrize("option", ["--max-size", "--exact-size"])
def test_size_beyond_the_candidates(table, outputs, tmp_path, option):
    name = option.strip("-").replace("-", "").upper()
    fails_with(name, COMMAND_FAILED, "bayes", "--data", table, "--target", "y", "--factors", "a", "b",
               option, "3", *outputs, folder=tmp_path)


def test_size_beyond_the_candidates_that_vary(table, outputs, tmp_path):
    fails_with("too few", COMMAND_FAILED, "bayes", "--data", table, "--target", "y", "--factors", "a", "one",
               "--max-size", "2", *outputs, folder=tmp_path)


def test_no_training_case(table, outputs, tmp_path):
    text = table.read_text().replace(",1\n", ",2\n")
    table.write_text(text)
    fails_with("case", COMMAND_FAILED, "bayes", "--data", table, "--target", "y", "--train-variable", "t",
               *outputs, folder=tmp_path)


def test_no_test_case(table, outputs, tmp_path):
    text = table.read_text().replace(",0\n", ",1\n")
    table.write_text(text)
    fails_with("test", COMMAND_FAILED, "bayes", "--data", table, "--target", "y", "--train-variable", "t",
               *outputs, folder=tmp_path)


def test_saved_name_exists(table, outputs, tmp_path):
    line = fails(WRONG_USE, "bayes", "--data", table, "--target", "y", "--predicted", "a", *outputs,
                 folder=tmp_path)
    assert "a" in line[0]


def test_model_path_not_writable(table, tmp_path):
    fails_with("/no/such/folder", FILE_FAULT, "bayes", "--data", table, "--target", "y", "--pmml",
               "/no/such/folder/m.xml", folder=tmp_path)
    # The language knows paths only when the command runs.
    lines = fails(COMMAND_FAILED, "run", "-c", "NAIVEBAYES y /OUTFILE MODEL='/no/such/folder/m.xml';",
                  "--data", table, folder=tmp_path)
    assert "/no/such/folder/m.xml" in lines[0]


def test_outputs_keep_what_was_there_when_the_run_fails(table, outputs, tmp_path):
    for path in outputs[1::2]:
        path.write_text("old")
    fails(COMMAND_FAILED, "bayes", "--data", table, "--target", "one", *outputs, folder=tmp_path)
    for path in outputs[1::2]:
        assert path.read_text() == "old"


def test_all_outputs_of_one_run(table, outputs, tmp_path):
    result = program("bayes", "--data", table, "--target", "y", "--except", "t", *outputs)
    assert result.returncode == DONE, result.stderr
    assert files_in(tmp_path) == ["data.csv", "m.xml", "r.json", "s.csv", "s.state", "s.xml"]
    with open(tmp_path / "s.csv") as file:
        rows = list(csv.DictReader(file))
    assert list(rows[0]) == ["y", "a", "b", "x", "one", "t", "PredictedValue",
                             "PredictedProbability1", "PredictedProbability2"]
    for row in rows:
        assert row["PredictedValue"] in ("yes", "no")
        assert abs(float(row["PredictedProbability1"]) + float(row["PredictedProbability2"]) - 1) < 1e-12


def test_seed_draws_the_sample(table, tmp_path):
    def classified(*seed):
        result = program("bayes", "--data", table, "--target", "y", "--train-percent", "50", "--json",
                         "-", *seed)
        assert result.returncode == DONE, result.stderr
        return result.stdout

    assert classified("--seed", "1") == classified("--seed", "1")
    assert classified("--seed", "1") != classified("--seed", "2")
    assert classified() == classified("--seed", "2026")


def test_temporary_folder_full(table, tmp_path):
    """Records that do not fit in memory go to a file; where there is no room for it the run fails."""
    rows = [["yes" if i % 2 else "no", i % 5, i % 7] for i in range(40000)]
    write_table(table, rows, ["y", "a", "b"])

    def limited():
        import resource
        default_signals()
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (65536, 65536))

    result = program("run", "-c", "NAIVEBAYES y BY a b /CRITERIA MEMALLOCATE=4;", "--data", table,
                     "--quiet", preexec_fn=limited, env={**os.environ, "TMPDIR": str(tmp_path)})
    assert result.returncode == COMMAND_FAILED
    assert result.stdout == ""
    assert len(result.stderr.splitlines()) == 1 and "temporary" in result.stderr
    assert files_in(tmp_path) == ["data.csv"]


def test_no_temporary_folder(table, tmp_path):
    result = program("run", "-c", "NAIVEBAYES y BY a b /CRITERIA MEMALLOCATE=4;", "--data", table,
                     "--quiet", env={**os.environ, "TMPDIR": str(tmp_path / "none")})
    # 60 records fit even so; the folder is not asked for.
    assert result.returncode == DONE, result.stderr


@pytest.fixture(scope="module")
def wide_table(tmp_path_factory):
    """Enough columns for a search that takes long."""
    random = numpy.random.default_rng(99)
    values = random.integers(0, 12, size=(30000, 150))
    values[:, 0] = values[:, 1:8].sum(axis=1) % 5
    path = tmp_path_factory.mktemp("wide") / "wide.csv"
    numpy.savetxt(path, values, fmt="%d", delimiter=",", comments="",
                  header=",".join(["y", *(f"x{i}" for i in range(1, 150))]))
    return path


def searching(table, tmp_path, *more):
    """A run that is now in its search: it has written its records, more than --memory holds, to a file."""
    folder = tmp_path / "records"
    folder.mkdir()
    process = started("bayes", "--data", table, "--target", "y", "--memory", "16K", "--json", tmp_path / "r.json",
                      "--pmml", tmp_path / "m.xml", "--state", tmp_path / "s", *more,
                      env={**os.environ, "TMPDIR": str(folder)})
    seen = -1
    while process.poll() is None:
        size = sum(file.stat().st_size for file in folder.iterdir())
        if size == seen > 0:
            return process
        seen = size
        time.sleep(0.05)
    pytest.fail(f"the run ended before its search was seen: {process.communicate()}")


def test_interrupt_in_the_middle_of_the_search(wide_table, tmp_path):
    process = searching(wide_table, tmp_path, "--timer", "0")
    process.send_signal(signal.SIGINT)
    out, err = process.communicate(timeout=60)
    assert process.returncode == INTERRUPTED, err
    assert (out, err) == (b"", b"predselect: interrupted\n")
    assert files_in(tmp_path) == ["records"] and files_in(tmp_path / "records") == []


def test_time_limit_in_the_middle_of_the_search(wide_table, tmp_path):
    """The run is held, not slowed, until its time is over: the test needs no slow machine."""
    process = searching(wide_table, tmp_path, "--timer", "0.05")
    process.send_signal(signal.SIGSTOP)
    time.sleep(3.1)
    process.send_signal(signal.SIGCONT)
    out, err = process.communicate(timeout=60)
    assert process.returncode == COMMAND_FAILED, err
    assert out == b""
    assert len(err.splitlines()) == 1 and b"TIMER" in err
    assert files_in(tmp_path) == ["records"] and files_in(tmp_path / "records") == []


def test_memory_settles_whether_records_are_simulated(tmp_path):
    rows = [["yes" if (i * i) % 7 < 4 else "no", i % 5, i % 7, i % 3] for i in range(60000)]
    path = tmp_path / "data.csv"
    write_table(path, rows, ["y", "a", "b", "t"])
    options = ["--data", path, "--target", "y", "--factors", "a", "b", "--train-variable", "t",
               "--best-subset", "testdata"]
    real = program("bayes", *options)
    assert real.returncode == DONE, real.stderr
    assert "simulated" not in real.stdout
    simulated = program("bayes", *options, "--memory", "16K")
    assert simulated.returncode == DONE, simulated.stderr
    assert "simulated" in simulated.stdout
