"""Runs a command and takes its time, processor time and memory from the kernel's own accounts.

Nothing heavy is imported here: a new process begins its account with the memory of the one that
starts it, so that a large runner would show up in every figure."""

import os
import subprocess
import threading
import time
from dataclasses import dataclass
from pathlib import Path

TICKS = os.sysconf("SC_CLK_TCK")


@dataclass(frozen=True)
class Measurement:
    wall: float  # seconds
    processor: float  # seconds, user and system, of the process and the children it waited for
    peak: float  # bytes, of the largest process
    others: float  # share of the machine's processors that other processes took meanwhile


class CommandFailed(Exception):
    pass


def busy_seconds() -> float:
    """Processor seconds that the whole machine has spent working; 0 where it doesn't say."""
    try:
        with open("/proc/stat") as file:
            times = [int(field) for field in file.readline().split()[1:9]]
    except OSError:
        return 0.0
    idle, waiting = times[3:5]
    return (sum(times) - idle - waiting) / TICKS


def measure(command, environment, log: Path, output: Path | None = None, limit: float = 3600.0) -> Measurement:
    """One run of a command; what it says on standard error stays in `log`."""
    log.parent.mkdir(parents=True, exist_ok=True)
    with open(log, "wb") as errors, open(output or os.devnull, "wb") as out:
        busy, start = busy_seconds(), time.perf_counter()
        process = subprocess.Popen(
            command, stdin=subprocess.DEVNULL, stdout=out, stderr=errors, env={**os.environ, **environment}
        )
        killer = threading.Timer(limit, process.kill)
        killer.start()
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.perf_counter() - start
        killer.cancel()
        process.returncode = os.waitstatus_to_exitcode(status)
    processor = usage.ru_utime + usage.ru_stime
    others = max(0.0, busy_seconds() - busy - processor) / (wall * (os.cpu_count() or 1))
    if process.returncode != 0:
        said = log.read_text(errors="replace").strip().splitlines()
        raise CommandFailed(
            f"exit status {process.returncode}: {' '.join(map(str, command))}\n" + "\n".join(said[-5:])
        )
    return Measurement(wall, processor, usage.ru_maxrss * 1024.0, others)
