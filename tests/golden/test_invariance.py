"""What must not change a report, or change it in one way only."""

import csv
import random

import pytest
from reading import summary

COMMANDS = {
    "penguins": "SELECTPRED species /CRITERIA SHOWUNSELECTED=9 /PLOT SUMMARY;"
    " SELECTPRED body_mass_g /CRITERIA SHOWUNSELECTED=9",
    "churn": "SELECTPRED churn BY state WITH total_day_minutes..churn /CRITERIA SHOWUNSELECTED=9",
}


def read(path):
    with open(path, newline="", encoding="utf-8") as file:
        header, *body = csv.reader(file)
    return header, body


def write(path, header, body):
    with open(path, "w", newline="", encoding="utf-8") as file:
        csv.writer(file).writerows([header, *body])
    return path


def text(program, data, command, *options):
    done = program.run("run", "-c", command, "--data", data, *options)
    assert done.status == 0, done.err
    return done.out


@pytest.mark.parametrize("name", COMMANDS)
def test_the_order_of_rows_does_not_show(name, program, root, tmp_path):
    data = root / f"data/{name}.csv"
    header, body = read(data)
    random.Random(20260401).shuffle(body)
    shuffled = write(tmp_path / "shuffled.csv", header, body)
    schema = ("--schema", f"{data}.schema.json")
    expected = text(program, data, COMMANDS[name], *schema)
    assert text(program, shuffled, COMMANDS[name], *schema) == expected


def test_a_weight_of_3_is_the_same_case_three_times(program, root, tmp_path):
    header, body = read(root / "data/penguins.csv")
    numbers = random.Random(20260402)
    times = [numbers.choice([0, 1, 1, 2, 3]) for _ in body]
    weighted = write(
        tmp_path / "weighted.csv", [*header, "w"], [[*row, n] for row, n in zip(body, times)]
    )
    repeated = write(
        tmp_path / "repeated.csv", header, [row for row, n in zip(body, times) for _ in range(n)]
    )
    # A case stands for itself in the rule on the number of categories, so the rules are off.
    command = "SELECTPRED species{} /SCREENING STATUS=OFF /CRITERIA SHOWUNSELECTED=9"
    lists = " BY island sex year WITH bill_length_mm..body_mass_g"
    one = summary(program.report(weighted, command.format(lists), "--weight", "w"))
    other = summary(program.report(repeated, command.format(lists)))
    assert list(one) == list(other)
    for predictor, row in one.items():
        assert row == pytest.approx(other[predictor], rel=1e-12, abs=1e-15), predictor


def test_the_case_of_words_blanks_and_comments_do_not_show(program, root):
    data = root / "data/penguins.csv"
    plain = "SELECTPRED species BY island sex WITH body_mass_g /PRINT SUMMARY /CRITERIA SIZE=2"
    other = (
        "# a comment; with a semicolon\nselectPred species\n\tby island,sex # factors\n"
        "with body_mass_g\n/print summary\n\n/Criteria Size = 2 ;\n;"
    )
    reports = [program.report(data, command)["commands"][0]["tables"] for command in (plain, other)]
    assert reports[0] == reports[1]
    assert len(reports[0]) == 1


def test_every_form_of_the_report_shows_the_same_texts(program, root, tmp_path):
    """Each text of a cell of the JSON report stands in the text report and on the page."""
    data = root / "data/penguins.csv"
    page = tmp_path / "report.html"
    command = COMMANDS["penguins"]
    shown = text(program, data, command, "--html", page, "--width", "400").decode("utf-8")
    html = page.read_text(encoding="utf-8")
    cells = [
        cell["text"]
        for command in program.report(data, command)["commands"]
        for table in command["tables"]
        for cell in table["cells"]
    ]
    assert len(cells) > 50
    for cell in cells:
        assert cell in shown
        assert f">{cell.replace('<', '&lt;')}<" in html
