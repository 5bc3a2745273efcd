"""What the program does for a person at a terminal."""

import fcntl
import os
import pty
import struct
import subprocess
import termios

import pytest
from conftest import DONE, PENGUINS, PROGRAM, default_signals


def on_terminal(*arguments, columns=80, environment=None):
    """Runs the program with standard output and error on a terminal; its status and what it shows."""
    terminal, side = pty.openpty()
    fcntl.ioctl(side, termios.TIOCSWINSZ, struct.pack("HHHH", 24, columns, 0, 0))
    settings = {name: value for name, value in os.environ.items()
                if name not in ("COLUMNS", "NO_COLOR", "TERM")}
    settings["TERM"] = "xterm"
    settings.update(environment or {})
    process = subprocess.Popen([PROGRAM, *map(str, arguments)], stdin=subprocess.DEVNULL,
                               stdout=side, stderr=side, env=settings, preexec_fn=default_signals)
    os.close(side)
    shown = b""
    while True:
        try:
            piece = os.read(terminal, 65536)
        except OSError:
            break
        if not piece:
            break
        shown += piece
    os.close(terminal)
    return process.wait(timeout=60), shown.decode("utf-8").replace("\r\n", "\n")


SELECT = ["select", "--data", PENGUINS, "--target", "species"]
WIPE = "\r\x1b[K"


def report_of(shown):
    """What stands on the screen after the line of progress was wiped."""
    return shown.rpartition(WIPE)[2]


def test_progress_is_shown_and_wiped():
    status, shown = on_terminal(*SELECT, "--color", "never")
    assert status == DONE
    assert f"{WIPE}Reading {PENGUINS} ..."[:80] in shown
    assert f"{WIPE}Reading cases: 344 of 344 rows" in shown or "Reading cases: 0 of 344" in shown
    assert "\x1b" not in report_of(shown)
    assert report_of(shown).startswith(("Warning:", "Notes"))


def test_progress_never_fills_its_line():
    _, shown = on_terminal(*SELECT, columns=30)
    lines = [part.partition("\n")[0] for part in shown.split(WIPE)[1:-1]]
    assert lines
    assert max(map(len, lines)) < 30


@pytest.mark.parametrize("arguments, environment", [
    (["--quiet"], {}),
    ([], {"TERM": "dumb"}),
])
def test_no_progress_when_it_is_not_wanted(arguments, environment):
    status, shown = on_terminal(*SELECT, *arguments, environment=environment)
    assert status == DONE
    assert "Reading" not in shown


def test_colours_on_a_terminal():
    assert "\x1b[1m" in report_of(on_terminal(*SELECT)[1])


@pytest.mark.parametrize("environment", [{"NO_COLOR": "1"}, {"TERM": "dumb"}])
def test_no_colours_when_the_environment_says_so(environment):
    assert "\x1b" not in report_of(on_terminal(*SELECT, environment=environment)[1])


def test_an_empty_no_color_says_nothing():
    assert "\x1b[1m" in report_of(on_terminal(*SELECT, environment={"NO_COLOR": ""})[1])


def test_color_always_beats_the_environment():
    shown = on_terminal(*SELECT, "--color", "always", environment={"NO_COLOR": "1"})[1]
    assert "\x1b[1m" in report_of(shown)


@pytest.mark.parametrize("columns, environment, widest", [
    (60, {}, 60),
    (132, {"COLUMNS": "50"}, 50),
    (70, {"COLUMNS": "wide"}, 70),
])
def test_text_is_as_wide_as_the_terminal(columns, environment, widest):
    shown = on_terminal(*SELECT, "--color", "never", columns=columns, environment=environment)[1]
    width = max(map(len, report_of(shown).split("\n")))
    assert widest - 25 < width <= widest
