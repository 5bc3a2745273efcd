"""Runs the program and reads what it says."""

import json
import os
import subprocess
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


@dataclass(frozen=True)
class Outcome:
    status: int
    out: bytes
    err: str

    def faults(self) -> list[str]:
        """The lines on standard error that aren't notes on the data or warnings."""
        return [
            line
            for line in self.err.splitlines()
            if not line.startswith(("predselect: note:", "predselect: warning:"))
        ]


class Program:
    def __init__(self, path: str | None = None):
        path = path or os.environ.get("PREDSELECT") or str(ROOT / "build/bin/predselect")
        self.path = str(Path(path).resolve())

    def run(self, *args, cwd=None, stdin: bytes | None = None, env=None, timeout=60) -> Outcome:
        """Runs it to its end. Colours and the width of the terminal don't reach the report."""
        plain = {k: v for k, v in os.environ.items() if k not in ("COLUMNS", "NO_COLOR")}
        done = subprocess.run(
            [self.path, *map(str, args)],
            cwd=cwd,
            input=stdin,
            stdin=subprocess.DEVNULL if stdin is None else None,
            capture_output=True,
            env={**plain, **(env or {})},
            timeout=timeout,
        )
        return Outcome(done.returncode, done.stdout, done.stderr.decode("utf-8", "replace"))

    def report(self, data, command: str, *options) -> dict:
        """The JSON report of a run that has to end well."""
        done = self.run("run", "-c", command, "--data", data, "--json", "-", *options)
        assert done.status == 0, done.err
        return json.loads(done.out)
