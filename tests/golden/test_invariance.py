"""What must not change a report, or change it in one way only."""

import csv
import math
import random

import pyarrow
import pyarrow.parquet
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


BAYES_SHAPES = {
    "forced": "y BY f0 f1 f2 f3 WITH x0 x1 /FORCE FACTORS=(f1)",
    "bins": "y WITH x0 x1 x2 /CRITERIA BINS=4",
    "exact": "y BY f0 f1 f2 f3 f4 /SUBSET EXACTSIZE=3",
    "test data": "y BY f0 f1 f2 f3 f4 WITH x0 x1 /TRAININGSAMPLE VARIABLE=part"
    " /SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA)",
    "no search": "y BY f0 f1 f2 WITH x0 /SUBSET NOSELECTION",
    "drawn": "y BY f0 f1 f2 f3 f4 WITH x0 x1 /CRITERIA MEMALLOCATE=4",
}


def bayes_table(seed):
    """Factors of 2 to 12 levels, one a copy, scale predictors, missing cells, classes 2 to 4."""
    draw = random.Random(f"bayes {seed}")
    classes = 2 + seed % 3
    header = ["y", *(f"f{j}" for j in range(5)), "x0", "x1", "x2", "part", "w"]
    body = []
    for _ in range(draw.choice([40, 300, 1500])):
        y = draw.randrange(classes)
        levels = [2, 3, 12, 2 + seed % 7]
        factors = [f"v{y % n if draw.random() < 0.3 else draw.randrange(n)}" for n in levels]
        row = [*factors, factors[1], *(round(draw.gauss(y * s, 1), 2) for s in (0, 0.5, 1))]
        row = ["" if draw.random() < 0.06 else cell for cell in row]
        # Every level of the sample has cases; a weight may be 0 or no whole number.
        weight = draw.choice([0, 0.4, 1, 1, 1.6, 2, 3])
        body.append(["abcd"[y], *row, draw.choice([0, 1, 1]), weight])
    return header, body, draw


def json_report(program, path, command, *options):
    done = program.run("run", "-c", command, "--data", path, "--json", "-", *options)
    assert done.status == 0, done.err
    return done.out.replace(str(path).encode(), b"DATA").replace(path.name.encode(), b"DATA")


@pytest.mark.parametrize("weighted", [False, True], ids=["plain", "weighted"])
@pytest.mark.parametrize("seed", range(6))
@pytest.mark.parametrize("shape", BAYES_SHAPES)
def test_the_order_of_rows_and_the_threads_do_not_show_in_a_classifier(
    shape, seed, weighted, program, tmp_path
):
    header, body, draw = bayes_table(seed)
    levels = [w for name in header[1:6] for w in ("--level", f"{name}=nominal")]
    levels += [w for name in header[6:9] for w in ("--level", f"{name}=scale")]
    levels += ["--level", "y=nominal", *(["--weight", "w"] if weighted else [])]
    command = f"NAIVEBAYES {BAYES_SHAPES[shape]};"
    path = write(tmp_path / "data.csv", header, body)
    expected = json_report(program, path, command, *levels, "--threads", "1")
    assert json_report(program, path, command, *levels, "--threads", "3") == expected
    for _ in range(2):
        draw.shuffle(body)
        write(path, header, body)
        assert json_report(program, path, command, *levels, "--threads", "2") == expected


@pytest.mark.parametrize("seed", range(6))
@pytest.mark.parametrize("shape", ["forced", "exact", "test data"])
def test_cases_whose_weight_is_split_give_the_same_search(shape, seed, program, tmp_path):
    header, body, draw = bayes_table(seed)
    at = header.index("w")
    whole = [[*row[:at], int(row[at] + 0.5)] for row in body]
    levels = [w for name in header[1:6] for w in ("--level", f"{name}=nominal")]
    levels += [w for name in header[6:9] for w in ("--level", f"{name}=scale")]
    levels += ["--level", "y=nominal", "--weight", "w"]
    command = f"NAIVEBAYES {BAYES_SHAPES[shape]};"
    reports = []
    for rows in (whole, [[*row[:at], 1] for row in whole for _ in range(row[at])]):
        draw.shuffle(rows)
        path = write(tmp_path / "data.csv", header, rows)
        reports.append(program.report(path, command, *levels)["commands"][0]["tables"])
    searches = [[t for t in tables if t["id"] in ("SubsetSummary", "SelectedPredictors")] for tables in reports]
    assert len(searches[0]) >= 1
    assert searches[0] == searches[1]


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


# --- Random tables: bytes of the JSON report ---

SHAPES = {
    "factors of classes": ("N", True, False),
    "covariates of classes": ("N", False, True),
    "both of classes": ("N", True, True),
    "factors of a number": ("S", True, False),
    "covariates of a number": ("S", False, True),
    "both of a number": ("S", True, True),
}
TABLES_PER_SHAPE = 6
ORDERS_PER_TABLE = 9


def numbers(rows, draw):
    """A column of numbers: plain, far from 0, with a drift, of any size, whole, of few decimals."""
    kind = draw.randrange(8)
    z = [draw.gauss(0, 1) for _ in range(rows)]
    return {
        0: z,
        1: [1e7 + v for v in z],
        2: [v - 1e12 for v in z],
        3: [v + 0.05 * row for row, v in enumerate(z)],
        4: [math.ldexp(v, draw.randrange(-300, 300)) for v in z],
        5: [math.ldexp(v, 980) for v in z],
        6: [float(round(2 * v)) for v in z],
        7: [round(v, 1) for v in z],
    }[kind]


def categories(rows, draw):
    levels = draw.choice([2, 3, 3, 7, rows // 3])
    drifts = draw.random() < 0.3
    codes = [row * levels // rows if drifts else draw.randrange(levels) for row in range(rows)]
    return [f"c{code}" for code in codes]


def random_table(shape, draw):
    """Columns of a table with holes, and the command on it. A target has no holes in every second."""
    level, by, with_ = SHAPES[shape]
    rows = draw.choice([10, 30, 60, 120])
    columns = {"y": categories(rows, draw) if level == "N" else numbers(rows, draw)}
    columns |= {f"f{at}": categories(rows, draw) for at in range(4 if by else 0)}
    columns |= {f"x{at}": numbers(rows, draw) for at in range(5 if with_ else 0)}
    for name, values in columns.items():
        share = draw.choice([0, 0, 0.1, 0.6])
        columns[name] = [None if draw.random() < share else value for value in values]
    kind = draw.randrange(3)
    if kind:
        times = [0, 1, 2, 3] if kind == 1 else [0.1, 0.4, 0.75, 1.5, 2.7]
        columns["w"] = [float(draw.choice(times)) for _ in range(rows)]
    lists = (" BY f0..f3" if by else "") + (" WITH x0..x4" if with_ else "")
    command = f"SELECTPRED y (MLEVEL={level}){lists} /CRITERIA SHOWUNSELECTED=9"
    if level == "N" and by:
        command += " /PRINT SUMMARY(PEARSONCHISQ LRCHISQ CRAMERSV LAMBDA)"
    return columns, command


def written(folder, columns, order, form="csv"):
    """A file of one name, whatever its order, so that a report that named it would be the same."""
    folder.mkdir(exist_ok=True)
    columns = {name: [values[row] for row in order] for name, values in columns.items()}
    path = folder / f"data.{form}"
    if form == "parquet":
        pyarrow.parquet.write_table(pyarrow.table(columns), path)
        return path
    body = [["" if cell is None else cell for cell in row] for row in zip(*columns.values())]
    return write(path, list(columns), body)


def report_bytes(program, path, command, columns, threads=None):
    options = ["--weight", "w"] if "w" in columns else []
    options += ["--threads", threads] if threads else []
    done = program.run("run", "-q", "-c", command, "--data", path.name, "--json", "-", *options, cwd=path.parent)
    # A table that leaves no predictor or has no valid case fails in the same way in any order.
    return done.status, done.out


def same(found, expected, *trial):
    """Statuses and reports, with the first line that differs."""
    if found == expected:
        return
    lines = zip(found[1].decode().splitlines(), expected[1].decode().splitlines())
    differing = next((pair for pair in lines if pair[0] != pair[1]), "the ends differ")
    pytest.fail(f"{trial}: statuses {found[0]} and {expected[0]}, {differing}")


@pytest.mark.parametrize("shape", SHAPES)
def test_no_order_threads_or_form_of_a_random_table_shows(shape, program, tmp_path):
    draw = random.Random(f"{shape} 20260503")
    ranked = 0
    for number in range(TABLES_PER_SHAPE):
        columns, command = random_table(shape, draw)
        order = list(range(len(columns["y"])))
        first = written(tmp_path / "first", columns, order)
        expected = report_bytes(program, first, command, columns)
        ranked += b'"PredictorSummary"' in expected[1]
        for threads in (1, 2, 4):
            same(report_bytes(program, first, command, columns, threads), expected, number, threads)
        parquet = written(tmp_path / "parquet", columns, order, "parquet")
        same(report_bytes(program, parquet, command, columns), expected, number, "parquet")
        for again in range(ORDERS_PER_TABLE):
            draw.shuffle(order)
            other = written(tmp_path / f"order{again}", columns, order, ["csv", "parquet"][again % 2])
            threads = [None, 1, 2, 4][again % 4]
            same(report_bytes(program, other, command, columns, threads), expected, number, again)
    assert ranked > TABLES_PER_SHAPE / 2


def test_no_order_or_threads_of_a_classifier_show(program, tmp_path):
    """All cases train it: which ones would be drawn for that depends on their places."""
    draw = random.Random(20260504)
    for number in range(8):
        columns, command = random_table("both of classes", draw)
        command = "NAIVEBAYES y BY f0..f3 WITH x0..x4 /CRITERIA TIMER=0"
        order = list(range(len(columns["y"])))
        expected = report_bytes(program, written(tmp_path / "first", columns, order), command, columns)
        assert expected[1]
        for threads in (1, 2):
            draw.shuffle(order)
            other = written(tmp_path / f"order{threads}", columns, order)
            same(report_bytes(program, other, command, columns, threads), expected, number, threads)
