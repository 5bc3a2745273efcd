"""The program under test and data for it. PREDSELECT names the program; default build/bin/predselect."""

import os
import pathlib
import signal
import subprocess

import numpy
import pytest

ROOT = pathlib.Path(__file__).parents[2]
PROGRAM = os.environ.get("PREDSELECT", str(ROOT / "build" / "bin" / "predselect"))
DATA = ROOT / "data"
PENGUINS = DATA / "penguins.csv"
CHURN = DATA / "churn.csv"

DONE, COMMAND_FAILED, WRONG_USE, FILE_FAULT, INTERRUPTED = 0, 1, 2, 3, 130


def default_signals():
    """Whoever runs the tests in the background may have had signals ignored, which is inherited."""
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    signal.signal(signal.SIGHUP, signal.SIG_DFL)
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)


def program(*arguments, **options):
    """Runs the program to its end. Text in and out is UTF-8."""
    options.setdefault("capture_output", True)
    options.setdefault("timeout", 300)
    options.setdefault("preexec_fn", default_signals)
    if "input" not in options:
        options.setdefault("stdin", subprocess.DEVNULL)
    return subprocess.run([PROGRAM, *map(str, arguments)], encoding="utf-8", **options)


def started(*arguments, **options):
    """Starts the program and returns at once."""
    options.setdefault("preexec_fn", default_signals)
    options.setdefault("stdin", subprocess.DEVNULL)
    options.setdefault("stdout", subprocess.PIPE)
    options.setdefault("stderr", subprocess.PIPE)
    return subprocess.Popen([PROGRAM, *map(str, arguments)], **options)


def files_in(folder):
    """All names in a folder, hidden ones included, so that leftovers show."""
    return sorted(os.listdir(folder))


@pytest.fixture(scope="session")
def big_table(tmp_path_factory):
    """A table whose one pass takes long enough to be interrupted in its middle."""
    rows, columns = 300_000, 24
    random = numpy.random.default_rng(20260101)
    values = random.integers(0, 50, size=(rows, columns))
    values[:, 0] %= 3
    path = tmp_path_factory.mktemp("big") / "big.csv"
    header = ",".join(["target", *(f"x{i}" for i in range(1, columns))])
    numpy.savetxt(path, values, fmt="%d", delimiter=",", header=header, comments="")
    return path
