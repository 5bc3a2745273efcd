"""Golden reports: each folder in reports/ holds a command, its data and what the run has to give.

command.pred   the commands
data.csv       the data, with data.csv.schema.json as their dictionary; or links to shipped tables
options        further options of the program, one a line; may be absent
report.txt     the text report, 100 columns wide; empty when the run fails
report.json    the JSON report; absent when the run fails
outcome.txt    exit status and standard error
"""

import json
from pathlib import Path

import pytest

CASES = sorted(p.parent for p in (Path(__file__).parent / "reports").glob("*/command.pred"))


def expect(path: Path, actual: str, update: bool):
    if update:
        if actual:
            path.write_text(actual, encoding="utf-8")
        else:
            path.unlink(missing_ok=True)
        return
    expected = path.read_text(encoding="utf-8") if path.exists() else ""
    assert actual == expected, f"{path.name} differs; --update-golden rewrites it"


def readable(text: str) -> str:
    """The JSON report as a golden file: the version stands apart from what is tested, and each
    picture starts its own lines, so that changes can be read."""
    report = json.loads(text)
    assert report["version"]
    report["version"] = "VERSION"
    for command in report["commands"]:
        for chart in command["charts"]:
            chart["svg"] = chart["svg"].splitlines()
    return json.dumps(report, indent=1, ensure_ascii=False) + "\n"


@pytest.mark.parametrize("case", CASES, ids=lambda case: case.name)
def test_report(case, program, tmp_path, update_golden):
    options = []
    if (case / "options").exists():
        options = (case / "options").read_text(encoding="utf-8").splitlines()
    json_file = tmp_path / "report.json"
    done = program.run(
        "run", "command.pred", "--data", "data.csv", "--json", json_file, "--width", "100", *options,
        cwd=case,
    )  # fmt: skip
    assert (done.status == 0) == json_file.exists()
    report = json_file.read_text(encoding="utf-8") if json_file.exists() else ""
    text = done.out.decode("utf-8")
    expect(case / "report.txt", text, update_golden)
    expect(case / "report.json", readable(report) if report else "", update_golden)
    expect(case / "outcome.txt", f"status {done.status}\n{done.err}", update_golden)


def test_there_are_cases():
    assert len(CASES) > 30
