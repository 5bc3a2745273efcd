"""The benchmark itself, on tables so small that its times mean nothing: it runs, compares, and fails
where results disagree."""

import json
import shutil
import subprocess
import sys

import pyarrow.parquet
import pytest

WORKLOADS = ("W1", "W4", "W5", "W6", "W7")


@pytest.fixture(scope="module")
def output(program, root, tmp_path_factory):
    folder = tmp_path_factory.mktemp("bench")
    done = subprocess.run(
        [sys.executable, root / "bench" / "run.py", *WORKLOADS, "--runs", "1", "--scale", "0.002",
         "--peers", "numpy", "--program", program.path, "--output", folder],
        capture_output=True, text=True,
    )  # fmt: skip
    assert done.returncode == 0, done.stdout + done.stderr
    return folder


def check(root, kind, own, peer, *more):
    return subprocess.run(
        [sys.executable, root / "bench" / "check.py", kind, own, peer, *more], capture_output=True, text=True
    )


def test_the_results_are_written_with_a_section_for_each_file(output):
    results = json.loads((output / "results.json").read_text())
    assert results["agreed"]
    assert {section["workload"] for section in results["sections"]} == set(WORKLOADS)
    for section in results["sections"]:
        for command in section["commands"]:
            assert all(m["wall"] > 0 and m["peak"] > 0 for m in command["measurements"])
            assert command["measurements"]


def test_every_peer_of_a_workload_is_compared(output):
    results = json.loads((output / "results.json").read_text())
    for section in results["sections"]:
        peers = [c for c in section["commands"] if c["kind"] == "peer"]
        assert len(section["agreement"]) == len(peers)


def test_the_report_comes_as_text_and_as_markdown(root, output):
    for option, mark in (((), "All results agree."), (("--markdown",), "| Command | Median s |")):
        done = subprocess.run(
            [sys.executable, root / "bench" / "report.py", output / "results.json", *option],
            capture_output=True, text=True,
        )  # fmt: skip
        assert done.returncode == 0, done.stderr
        assert mark in done.stdout


def test_the_same_arguments_make_the_same_table(root, output, tmp_path):
    subprocess.run(
        [sys.executable, root / "bench" / "generate.py", "W4", "--scale", "0.002", "--directory", tmp_path], check=True
    )
    first, second = (folder / "W4.csv" for folder in (output / "data" / "scale-0.002", tmp_path))
    assert first.read_bytes() == second.read_bytes()


@pytest.mark.parametrize("column", ["statistic", "p", "df1"])
def test_a_statistic_that_differs_is_found(root, output, tmp_path, column):
    peer = output / "runs" / "screen.numpy.csv"
    lines = peer.read_text().splitlines()
    at = lines[0].split(",").index(column)
    cells = lines[50].split(",")
    cells[at] = str(int(cells[at]) + 1) if column == "df1" else repr(float(cells[at]) * (1 + 1e-6) + 1e-6)
    lines[50] = ",".join(cells)
    wrong = tmp_path / "wrong.csv"
    wrong.write_text("\n".join(lines) + "\n")
    assert check(root, "screen", output / "runs" / "screen.json", peer).returncode == 0
    done = check(root, "screen", output / "runs" / "screen.json", wrong)
    assert done.returncode == 1 and cells[0] in done.stdout


@pytest.mark.parametrize(
    ("predictor", "column"),
    [("c0000", "statistic"), ("c0000", "df2"), ("x0000", "statistic"), ("x0000", "correlation"), ("x0000", "p")],
)
def test_a_statistic_for_a_number_as_target_that_differs_is_found(root, output, tmp_path, predictor, column):
    peer = output / "runs" / "numeric.numpy.csv"
    lines = peer.read_text().splitlines()
    at = lines[0].split(",").index(column)
    row = next(i for i, line in enumerate(lines) if line.startswith(f"{predictor},"))
    cells = lines[row].split(",")
    cells[at] = str(int(cells[at]) + 1) if column == "df2" else repr(float(cells[at]) * (1 + 1e-6))
    lines[row] = ",".join(cells)
    wrong = tmp_path / "wrong.csv"
    wrong.write_text("\n".join(lines) + "\n")
    assert check(root, "screen", output / "runs" / "numeric.json", peer).returncode == 0
    done = check(root, "screen", output / "runs" / "numeric.json", wrong)
    assert done.returncode == 1 and predictor in done.stdout


def test_a_number_as_target_stands_beside_the_predictors_of_its_twin(output):
    folder = next((output / "data").glob("*"))
    classes, numbers = (pyarrow.parquet.read_table(folder / f"{name}.parquet") for name in ("W1", "W7"))
    assert numbers.drop_columns("y").equals(classes.drop_columns("y"))
    y = numbers["y"].to_numpy()
    by_class = {name: y[classes["y"].to_numpy() == name].mean() for name in ("low", "mid", "high")}
    assert by_class["low"] < by_class["mid"] < by_class["high"]
    significant = [
        float(line.split(",")[5]) < 1e-3
        for line in (output / "runs" / "numeric.numpy.csv").read_text().splitlines()[1:]
    ]
    assert 10 < sum(significant) < len(significant) - 10


@pytest.fixture(scope="module")
def other_build(program, tmp_path_factory):
    """The program, slower to start."""
    slow = tmp_path_factory.mktemp("other") / "predselect"
    slow.write_text(f'#!/bin/sh\n[ "$1" = --version ] && exec echo slow 1\nsleep 0.3\nexec {program.path} "$@"\n')
    slow.chmod(0o755)
    return slow


def test_another_build_runs_beside_the_program(program, root, output, other_build, tmp_path):
    shutil.copytree(output / "data", tmp_path / "data")
    done = subprocess.run(
        [sys.executable, root / "bench" / "run.py", "W5", "W7", "--runs", "3", "--scale", "0.002", "--peers", "numba",
         "--program", program.path, "--against", other_build, "--output", tmp_path],
        capture_output=True, text=True,
    )  # fmt: skip
    assert done.returncode == 0, done.stdout + done.stderr
    assert "The other build: slow 1." in done.stdout
    assert "predselect to the other build: time 0." in done.stdout
    results = json.loads((tmp_path / "results.json").read_text())
    for section in results["sections"]:
        (ratio,) = section["against"]
        walls = {
            c["kind"]: sorted(m["wall"] for m in c["measurements"])
            for c in section["commands"]
            if c["kind"] in ("program", "against")
        }
        assert len(walls["against"]) == 3
        assert ratio["wall"] == walls["program"][1] / walls["against"][1]
        assert 0 < ratio["lowest"] <= ratio["wall"] <= ratio["highest"] < 1
    # Its files are its own: peers are compared with the program's.
    runs = tmp_path / "runs"
    assert (runs / "other-build.scored.parquet").stat().st_size == (runs / "scored.parquet").stat().st_size
    assert (runs / "other-build.numeric.json").exists() and (runs / "numeric.json").exists()


@pytest.mark.parametrize(
    ("options", "said"),
    [(["--runs", "2"], "at least 3 runs"), (["--program", "nowhere"], "there is no program nowhere")],
)
def test_another_build_needs_rounds_and_programs(program, root, tmp_path, options, said):
    done = subprocess.run(
        [sys.executable, root / "bench" / "run.py", "W6", "--program", program.path, "--against", program.path,
         "--output", tmp_path, *options],
        capture_output=True, text=True,
    )  # fmt: skip
    assert done.returncode == 2 and said in done.stderr


@pytest.mark.parametrize(("digits", "agrees"), [(0.3, True), (3.0, False)])
def test_sums_of_squares_may_differ_in_their_last_digit_alone(root, output, tmp_path, digits, agrees):
    table = next((output / "data").glob("*/W1.parquet"))
    peer = output / "runs" / "screen.numpy.csv"
    lines = peer.read_text().splitlines()
    at = lines[0].split(",").index("statistic")
    row = next(i for i, line in enumerate(lines) if line.startswith("x0001,"))
    cells = lines[row].split(",")
    values = pyarrow.parquet.read_table(table, columns=["x0001"])["x0001"].drop_null().to_numpy()
    last_digit = sys.float_info.epsilon * len(values) * (1 + values.mean() ** 2 / values.var())
    statistic = float(cells[at])
    cells[at] = repr(statistic + digits * max(1e-8 * statistic, last_digit))
    lines[row] = ",".join(cells)
    other = tmp_path / "other.csv"
    other.write_text("\n".join(lines) + "\n")
    done = check(root, "squares", output / "runs" / "screen.json", other, table)
    assert (done.returncode == 0) == agrees, done.stdout


def test_a_chain_in_another_order_is_found(root, output, tmp_path):
    peer = output / "runs" / "subset.numpy.csv"
    lines = peer.read_text().splitlines()
    lines[3], lines[4] = lines[4], lines[3]
    wrong = tmp_path / "wrong.csv"
    wrong.write_text("\n".join(lines) + "\n")
    assert check(root, "chain", output / "runs" / "chain.json", peer).returncode == 0
    assert check(root, "chain", output / "runs" / "chain.json", wrong).returncode == 1


def test_a_probability_that_differs_is_found(root, output, tmp_path):
    peer = output / "runs" / "scores.numpy.scores.parquet"
    table = pyarrow.parquet.read_table(peer)
    name = table.column_names[-1]
    values = table[name].to_pylist()
    values[7] += 1e-8
    wrong = tmp_path / "wrong.parquet"
    pyarrow.parquet.write_table(
        table.set_column(table.num_columns - 1, name, pyarrow.array(values)), wrong
    )
    own = output / "runs" / "scored.parquet"
    assert check(root, "scores", own, peer).returncode == 0
    assert check(root, "scores", own, wrong).returncode == 1


def test_a_program_that_fails_fails_the_run(root, output, tmp_path):
    shutil.copytree(output / "data", tmp_path / "data")
    failing = tmp_path / "predselect"
    failing.write_text('#!/bin/sh\n[ "$1" = --version ] && echo failing || exit 1\n')
    failing.chmod(0o755)
    done = subprocess.run(
        [sys.executable, root / "bench" / "run.py", "W4", "--runs", "1", "--scale", "0.002",
         "--peers", "numpy", "--program", failing, "--output", tmp_path],
        capture_output=True, text=True,
    )  # fmt: skip
    assert done.returncode == 1
    assert not json.loads((tmp_path / "results.json").read_text())["agreed"]
