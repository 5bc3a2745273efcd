"""Fixtures of the whole-command tests: the program under test is $PREDSELECT, else the release build."""

import sys
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).parent / "support"))

from program import ROOT, Program  # noqa: E402


def pytest_addoption(parser):
    parser.addoption(
        "--update-golden",
        action="store_true",
        help="rewrite the expected reports; whoever does so reads every change",
    )


@pytest.fixture(scope="session")
def program() -> Program:
    found = Program()
    assert Path(found.path).exists(), f"no program at {found.path}: build it, or set PREDSELECT"
    return found


@pytest.fixture(scope="session")
def root() -> Path:
    return ROOT


@pytest.fixture(scope="session")
def update_golden(request) -> bool:
    return request.config.getoption("--update-golden")
