"""Whole NAIVEBAYES commands against the independent model in bayes_model.py, on real tables: chain,
criteria, probabilities and classification counts."""

import json
import math

import numpy
import pandas
import pytest
from bayes_model import Model, Setup
from reading import rows, table
from tables import TABLES, with_holes, with_weights

RELATIVE = 1e-9
BY_NAME = {source.name: source for source in TABLES}


def half(names):
    return list(names[: len(names) // 2]), list(names[len(names) // 2 :])


def forced_setup(source, **others):
    """The last factor and the last covariate are forced."""
    factors, covariates = list(source.factors), list(source.covariates)
    return Setup(
        source.class_target, factors[:-1], covariates[:-1],
        forced_factors=factors[-1:], forced_covariates=covariates[-1:], **others,
    )  # fmt: skip


def plain_setup(source, **others):
    return Setup(source.class_target, list(source.factors), list(source.covariates), **others)


SETUPS = {
    "default": lambda s: plain_setup(s),
    "bins": lambda s: plain_setup(s, bins=4),
    "forced": lambda s: forced_setup(s),
    "percent": lambda s: plain_setup(s, percent=70.0, test_data=True),
    "percent and forced": lambda s: forced_setup(s, percent=60.0, test_data=True),
    "percent judged on the training sample": lambda s: plain_setup(s, percent=55.5),
    "variable": lambda s: plain_setup(s, train_variable="training", test_data=True),
    "maximum": lambda s: plain_setup(s, max_size=3),
    "exact": lambda s: plain_setup(s, exact_size=2),
    "exact and forced": lambda s: forced_setup(s, exact_size=1),
    "no selection": lambda s: plain_setup(s, no_selection=True),
    "no selection, all forced": lambda s: Setup(
        s.class_target, [], [], list(s.factors), list(s.covariates), no_selection=True
    ),
    "simulated": lambda s: forced_setup(s, memory=4.0),
    "simulated and test": lambda s: plain_setup(s, memory=4.0, percent=70.0, test_data=True),
    "whole weights": lambda s: plain_setup(s, weight="weight"),
    "rounded weights": lambda s: forced_setup(s, weight="weight"),
    "weights and variable": lambda s: plain_setup(
        s, weight="weight", train_variable="training", test_data=True
    ),
}
NAMES = ["penguins", "churn", "carData/Chile", "MASS/Cars93", "AER/CPS1985", "ggplot2/mpg"]
CASES = [(name, kind, holes) for name in NAMES for kind in SETUPS for holes in (False, True)]


def prepared(source, kind, setup, holes):
    frame = source.frame()
    columns = [setup.target, *source.factors, *source.covariates]
    frame = frame[columns]
    if holes:
        frame = with_holes(frame)
    if setup.weight:
        frame = with_weights(frame, "whole" if kind == "whole weights" else "fractional")
    if setup.train_variable:
        random = numpy.random.default_rng([1618, *frame.shape])
        frame = frame.assign(training=random.choice([0.0, 1.0, 2.0, numpy.nan], len(frame), p=[0.2, 0.7, 0.05, 0.05]))
    return frame


def command(setup):
    def listed(names):
        return " ".join(f'"{name}"' for name in names)

    text = f'NAIVEBAYES "{setup.target}"'
    candidates = bool(setup.factors or setup.covariates)
    if setup.factors:
        text += f" BY {listed(setup.factors)}"
    if setup.covariates:
        text += f" WITH {listed(setup.covariates)}"
    forced = ""
    if setup.forced_factors:
        forced += f" FACTORS=({listed(setup.forced_factors)})"
    if setup.forced_covariates:
        forced += f" COVARIATES=({listed(setup.forced_covariates)})"
    if not candidates:
        # Without a list all other variables are candidates; what is forced is none.
        assert forced
    if forced:
        text += f" /FORCE{forced}"
    if setup.percent is not None:
        text += f" /TRAININGSAMPLE PERCENT={setup.percent}"
    if setup.train_variable:
        text += f" /TRAININGSAMPLE VARIABLE={setup.train_variable}"
    if setup.no_selection:
        text += " /SUBSET NOSELECTION"
    elif setup.exact_size is not None:
        text += f" /SUBSET EXACTSIZE={setup.exact_size}"
    else:
        size = "AUTO" if setup.max_size is None else setup.max_size
        judged = "TESTDATA" if setup.test_data else "PSEUDOBIC"
        text += f" /SUBSET MAXSIZE={size}(BESTSUBSET={judged})"
    text += f" /CRITERIA BINS={setup.bins} MEMALLOCATE={setup.memory:g} TIMER=0"
    return text + " /SAVE PREDVAL=won PREDPROB(p:1000);"


def close(actual, expected, what):
    assert actual is not None, what
    assert math.isclose(actual, expected, rel_tol=RELATIVE, abs_tol=1e-12), (what, actual, expected)


def check_search(report, model):
    forced = model.num_forced
    found = rows(table(report, "SubsetSummary"), "Subset", "Statistics")
    added = model.chain[forced:]
    assert len(found) == len(added) + 1
    for step, name in enumerate([None, *added]):
        row = found[step]
        size = forced + step
        if name is not None:
            assert row["Predictor Added"] == name, (step, row)
        if size == 0 or (name is None and size not in model.likelihood):
            assert "Average Log-Likelihood" not in row
        else:
            close(row["Average Log-Likelihood"], model.likelihood[size], (size, "likelihood"))
        key = "Test Data Criterion" if model.setup.test_data else "Pseudo-BIC"
        if size in model.criterion:
            close(row[key], model.criterion[size], (size, key))
            better = sum(
                (c, s) < (model.criterion[size], size) for s, c in model.criterion.items()
            )
            assert row["Rank"] == better + 1
        else:
            assert key not in row and "Rank" not in row
    selected = table(report, "SelectedPredictors")
    shown = [name for cell in selected["cells"] for name in cell["value"]]
    assert sorted(shown) == sorted(model.chain[: model.size])


def check_classification(report, model):
    found = table(report, "Classification")
    samples = {(): model.train}
    split = model.setup.percent is not None or model.setup.train_variable
    tested = model.classification(model.test).sum() > 0
    if split and tested:
        samples = {("Training",): model.train, ("Test",): model.test}
    for sample, chosen in samples.items():
        expected = model.classification(chosen)
        cells = {}
        for cell in found["cells"]:
            keys = cell["keys"]
            if tuple(keys.get("Sample", [])) != sample:
                continue
            cells[keys["Observed"][-1], keys["Predicted"][-1]] = cell["value"]
        counts = {k: v for k, v in cells.items() if k[0] != "Overall Percent" and k[1] != "Percent Correct"}
        assert len(counts) == model.k**2
        for (observed, predicted), count in counts.items():
            i, j = index(model.classes, observed), index(model.classes, predicted)
            assert count == expected[i, j], (sample, observed, predicted)
        total = expected.sum()
        correct = 100.0 * numpy.trace(expected) / total if total else 0.0
        close(cells["Overall Percent", "Percent Correct"], correct, "overall")


def index(classes, key):
    return classes.index(key) if key in classes else [str(c) for c in classes].index(str(key))


def check_probabilities(saved, model):
    posterior, winner, _ = model.score()
    names = [f"p{i + 1}" for i in range(model.k)]
    scored = model.delivered
    actual = saved[names].to_numpy(float)
    assert numpy.isnan(actual[~scored]).all()
    numpy.testing.assert_allclose(actual[scored], posterior[scored], rtol=RELATIVE, atol=1e-12)
    expected = [str(model.classes[code]) for code in winner[scored]]
    assert [str(v) for v in saved["won"][scored]] == expected


def check_counts(report, model):
    found = rows(table(report, "CaseProcessingSummary"), "Value", "Statistics")
    assert found["Valid"]["N"] == model.n


@pytest.mark.parametrize(("name", "kind", "holes"), CASES, ids=lambda v: str(v))
def test_command_agrees_with_the_model(program, tmp_path, name, kind, holes):
    source = BY_NAME[name]
    setup = SETUPS[kind](source)
    if setup.weight and source.weight:
        setup.weight = source.weight
    frame = prepared(source, kind, setup, holes)
    data, out = tmp_path / "data.csv", tmp_path / "scored.csv"
    frame.to_csv(data, index=False)
    frame = pandas.read_csv(data)  # what the program sees too
    model = Model(frame, setup).search()
    options = ["--save", out]
    if setup.weight:
        options += ["--weight", setup.weight]
    for factor in [setup.target, *source.factors]:
        options += ["--level", f"{factor}=nominal"]
    for covariate in source.covariates:
        options += ["--level", f"{covariate}=scale"]
    report = program.report(data, command(setup), *options)
    if not setup.no_selection:
        check_search(report, model)
    check_classification(report, model)
    check_probabilities(pandas.read_csv(out, dtype={"won": str}), model)
    check_counts(report, model)
