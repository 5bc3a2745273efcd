"""Refused commands: refusals/NAME.pred is refused with what refusals/NAME.err says, word for word."""

from pathlib import Path

import pytest

FOLDER = Path(__file__).parent / "refusals"
CASES = sorted(FOLDER.glob("*.pred"))


@pytest.mark.parametrize("case", CASES, ids=lambda case: case.stem)
def test_refusal(case, program, tmp_path, update_golden):
    options = []
    if "weight" in case.stem:
        options = ["--weight", "w"]
    done = program.run(
        "run", case.name, "--data", "data.csv", "--json", tmp_path / "report.json", *options,
        cwd=FOLDER,
    )  # fmt: skip
    assert done.status == 2
    assert done.out == b""
    assert list(tmp_path.iterdir()) == []
    expected = case.with_suffix(".err")
    if update_golden:
        expected.write_text(done.err, encoding="utf-8")
    assert done.err == expected.read_text(encoding="utf-8")


def test_there_are_cases():
    assert len(CASES) > 40
