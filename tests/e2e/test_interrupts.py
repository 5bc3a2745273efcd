"""Signals at any moment: one line, status 130, no file."""

import os
import pty
import select
import signal
import time

import pytest
from conftest import (CHURN, DONE, INTERRUPTED, PENGUINS, default_signals, files_in, program,
                      started)

SIGNALS = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP]


def read_until(descriptor, text, seconds=240):
    """What comes from a terminal up to and with the text."""
    seen = b""
    end = time.monotonic() + seconds
    while text not in seen:
        ready, _, _ = select.select([descriptor], [], [], max(0.0, end - time.monotonic()))
        assert ready, f"{text!r} did not come; seen: {seen[-500:]!r}"
        try:
            piece = os.read(descriptor, 4096)
        except OSError:  # the other end is closed
            piece = b""
        assert piece, f"ended before {text!r}; seen: {seen[-500:]!r}"
        seen += piece
    return seen


@pytest.mark.parametrize("number", SIGNALS)
def test_while_cases_are_read(tmp_path, big_table, number):
    (tmp_path / "r.json").write_text("old")
    terminal, side = pty.openpty()
    # Many commands, so that wherever the signal falls there is work left.
    process = started("run", "-c", "SELECTPRED target; " * 100, "--data", big_table, "--json",
                      tmp_path / "r.json", "--html", tmp_path / "r.html", stderr=side,
                      env={**os.environ, "TERM": "xterm"})
    os.close(side)
    read_until(terminal, b"Reading cases: ")
    process.send_signal(number)
    told = read_until(terminal, b"predselect: interrupted\r\n")
    out, _ = process.communicate(timeout=60)
    os.close(terminal)
    assert process.returncode == INTERRUPTED
    # Commands that were done are shown as text; nothing is written to files.
    assert told.endswith(b"\r\x1b[Kpredselect: interrupted\r\n")
    assert b"Traceback" not in out
    assert files_in(tmp_path) == ["r.json"]
    assert (tmp_path / "r.json").read_text() == "old"


@pytest.mark.parametrize("number", SIGNALS)
def test_while_the_data_are_read(tmp_path, number):
    queue = tmp_path / "queue.csv"
    os.mkfifo(queue)
    process = started("select", "--data", queue, "--target", "y", "--json", tmp_path / "r.json")
    with open(queue, "w") as writer:  # returns once the program has opened the other end
        writer.write("y,x\n1,2\n")
        writer.flush()
        time.sleep(0.2)
        process.send_signal(number)
        out, err = process.communicate(timeout=60)
    assert process.returncode == INTERRUPTED
    assert (out, err) == (b"", b"predselect: interrupted\n")
    assert files_in(tmp_path) == ["queue.csv"]


def test_while_a_reader_of_standard_output_does_not_read(tmp_path):
    process = started("run", "-c", "SELECTPRED churn; " * 40, "--data", CHURN, "--json", "-",
                      "--html", tmp_path / "r.html")
    # The pipe is full once bytes have come and the program still runs.
    select.select([process.stdout], [], [], 240)
    time.sleep(0.5)
    assert process.poll() is None
    process.send_signal(signal.SIGINT)
    assert process.wait(timeout=60) == INTERRUPTED
    assert b"interrupted" in process.stderr.read()
    assert files_in(tmp_path) == []


def test_a_signal_that_was_ignored_stays_ignored(tmp_path):
    def ignoring():
        default_signals()
        signal.signal(signal.SIGHUP, signal.SIG_IGN)

    queue = tmp_path / "queue.csv"
    os.mkfifo(queue)
    process = started("select", "--data", queue, "--target", "species", "--quiet",
                      preexec_fn=ignoring)
    with open(queue, "wb") as writer:
        writer.write(PENGUINS.read_bytes())
        writer.flush()
        time.sleep(0.2)
        process.send_signal(signal.SIGHUP)
        time.sleep(0.2)
    process.communicate(timeout=60)
    assert process.returncode == DONE


def test_a_run_that_was_not_disturbed_writes_its_files(tmp_path, big_table):
    result = program("select", "--data", big_table, "--target", "target", "--quiet", "--json",
                     tmp_path / "r.json")
    assert result.returncode == DONE, result.stderr
    assert files_in(tmp_path) == ["r.json"]
