"""Every golden JSON report keeps to docs/formats/report.schema.json, and the schema refuses others."""

import copy
import json
from pathlib import Path

import jsonschema
import pytest

REPORTS = sorted((Path(__file__).parent / "reports").glob("*/report.json"))


def load(path):
    """The report as the program wrote it: pictures are kept line by line in golden files."""
    report = json.loads(path.read_text(encoding="utf-8"))
    for command in report["commands"]:
        for chart in command["charts"]:
            chart["svg"] = "\n".join(chart["svg"])
    return report


@pytest.fixture(scope="module")
def validator(root):
    schema = json.loads((root / "docs/formats/report.schema.json").read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    return jsonschema.Draft202012Validator(schema)


@pytest.mark.parametrize("path", REPORTS, ids=lambda path: path.parent.name)
def test_the_report_keeps_to_the_schema(path, validator):
    validator.validate(load(path))


@pytest.mark.parametrize("path", REPORTS, ids=lambda path: path.parent.name)
def test_cells_stand_at_places_of_their_table(path):
    for command in load(path)["commands"]:
        for table in command["tables"]:
            names = [dimension["name"] for dimension in table["dimensions"]]
            assert len(set(names)) == len(names)
            places = set()
            for cell in table["cells"]:
                assert list(cell["at"]) == list(cell["keys"]) == names
                for name in names:
                    assert len(cell["at"][name]) == len(cell["keys"][name])
                places.add(json.dumps(cell["keys"]))
            assert len(places) == len(table["cells"])
            for note in table.get("headingNotes", []):
                assert note["dimension"] in names


def spoilt(report):
    """(what is wrong, report) for reports that are none."""

    def change(what, action):
        other = copy.deepcopy(report)
        action(other["commands"][0], other)
        return pytest.param(other, id=what)

    def cell(command):
        return command["tables"][0]["cells"][0]

    return [
        change("other format", lambda c, r: r.update(format="predselect-report/2")),
        change("no command", lambda c, r: r.update(commands=[])),
        change("unknown status", lambda c, r: c.update(status="done")),
        change("status missing", lambda c, r: c.pop("status")),
        change("number as text", lambda c, r: cell(c).update(value="152")),
        change("list for a number", lambda c, r: cell(c).update(value=["a"])),
        change("unknown format of a cell", lambda c, r: cell(c).update(format="number")),
        change("more than is known", lambda c, r: cell(c).update(colour="red")),
        change("keys missing", lambda c, r: cell(c).pop("keys")),
        change("picture of another kind", lambda c, r: c["charts"][0].update(svg="<img/>")),
        change("logarithm of a count", lambda c, r: cell(c).update(lnP=-1.5)),
        change("logarithm of no probability", lambda c, r: probability(c, lnP=0.5)),
        change("logarithm as text", lambda c, r: probability(c, lnP="-1.5")),
        change("null without its reason", lambda c, r: probability(c, lnP=None)),
        change("a zero of some size", lambda c, r: probability(c, lnP=None, exactZero=True, value=0.5)),
        change("a zero with a logarithm", lambda c, r: probability(c, lnP=-1.5, exactZero=True)),
        change("a zero that is none", lambda c, r: probability(c, lnP=None, exactZero=False, value=0)),
        change("a zero without a logarithm", lambda c, r: probability(c, without="lnP", exactZero=True)),
        change("logarithm without a value", lambda c, r: probability(c, lnP=-1.5, value=None)),
    ]


def probability(command, without=None, **changes):
    """Changes the first significance of the command's tables."""
    cells = [cell for table in command["tables"] for cell in table["cells"]]
    found = next(cell for cell in cells if cell["format"] == "significance")
    found.update(changes)
    found.pop(without, None)


CHURN = load(Path(__file__).parent / "reports/churn/report.json")


@pytest.mark.parametrize("report", spoilt(CHURN))
def test_the_schema_refuses(report, validator):
    assert not validator.is_valid(report)


@pytest.mark.parametrize(
    "changes",
    [{"lnP": -1.5}, {"lnP": 0}, {"lnP": -5000.25, "value": 0}, {"lnP": None, "exactZero": True, "value": 0}],
)
def test_the_schema_allows_logarithms_of_probabilities(changes, validator):
    report = copy.deepcopy(CHURN)
    probability(report["commands"][0], **changes)
    validator.validate(report)
