"""Columns beyond the memory allowed: what that costs, and what happens when the file has no room for them."""

import os
import resource
import subprocess
import sys

import pytest
from conftest import DONE, FILE_FAULT, PROGRAM, default_signals, files_in

# Prints the peak of the process that it starts, in KiB: seen from the tests it could be their own.
MEASURE = """
import resource, subprocess, sys
done = subprocess.run(sys.argv[1:], stdout=subprocess.DEVNULL)
print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)
sys.exit(done.returncode)
"""


def peak_of(*arguments):
    done = subprocess.run([sys.executable, "-c", MEASURE, PROGRAM, *map(str, arguments)],
                          capture_output=True, text=True, preexec_fn=default_signals)
    assert done.returncode == DONE, done.stderr
    return int(done.stdout) / 1024


def test_numbers_that_the_first_rows_do_not_show_keep_to_the_memory_allowed(tmp_path):
    """80 MB of numbers in columns that begin as if they held one value each."""
    columns = 20
    same = ",".join(["1"] * columns)
    table = tmp_path / "late.csv"
    header = ",".join(f"x{i}" for i in range(columns))
    many = "".join(",".join(str((row * (2 * i + 1)) % 499) for i in range(columns)) + "\n"
                   for row in range(2000))
    with open(table, "w") as file:
        file.write(header + "\n" + (same + "\n") * 200 + many * 250)
    run = ["select", "--data", table, "--target", "x0", "--threads", "2"]
    everything = peak_of(*run)
    assert everything > 80
    assert peak_of(*run, "--memory", "24M") < everything - 25


@pytest.fixture(name="beyond", scope="module")
def made_beyond(tmp_path_factory):
    """Some 0.7 MB of columns, and 0.4 MB that the first command makes when it takes the numbers for
    categories."""
    table = tmp_path_factory.mktemp("beyond") / "beyond.csv"
    table.write_text("y,x\n" + "".join(f"{row % 3},{row * 7919 % 90001}\n" for row in range(90001)))
    return table


def limited_by_size(size, folder, command):
    def limit():
        default_signals()
        resource.setrlimit(resource.RLIMIT_FSIZE, (size, size))

    return subprocess.run(command, capture_output=True, text=True, preexec_fn=limit,
                          env={**os.environ, "TMPDIR": str(folder)})


def in_a_small_file_system(size, folder, command):
    mount = f'mount -t tmpfs -o size={size} none "$0" && exec "$@"'
    return subprocess.run(["unshare", "--user", "--map-root-user", "--mount", "sh", "-c", mount, folder, *command],
                          capture_output=True, text=True, preexec_fn=default_signals,
                          env={**os.environ, "TMPDIR": str(folder)})


@pytest.mark.parametrize("run", [limited_by_size, in_a_small_file_system])
def test_a_temporary_folder_that_is_full(tmp_path, beyond, run):
    """Wherever the room ends, the run fails with one line and leaves nothing, or it had room enough."""
    folder = tmp_path / "temporary"
    folder.mkdir()
    try:
        if run(65536, folder, ["true"]).returncode != 0:
            pytest.skip("file systems cannot be mounted here")
    except FileNotFoundError:
        pytest.skip("there is no unshare")
    command = [PROGRAM, "run", "-c", "SELECTPRED y BY x;", "--data", str(beyond), "--memory", "64K",
               "--threads", "2", "--quiet", "--html", str(tmp_path / "report.html")]
    ends = []
    for size in range(4096, 3 << 20, 128 << 10):
        done = run(size, folder, command)
        ends.append(done.returncode)
        assert done.stdout == ""
        if done.returncode == DONE:
            assert files_in(tmp_path) == ["report.html", "temporary"]
            (tmp_path / "report.html").unlink()
            continue
        assert done.returncode == FILE_FAULT, done.stderr
        assert len(done.stderr.splitlines()) == 1
        assert "temporary file" in done.stderr and "cannot be written" in done.stderr
        assert "--memory" in done.stderr and "TMPDIR" in done.stderr
        assert files_in(tmp_path) == ["temporary"]
        assert files_in(folder) == []
    assert FILE_FAULT in ends and DONE in ends
