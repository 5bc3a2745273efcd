"""The model file: valid by the public schema of PMML 4.3, and scored by an evaluator that nobody
here wrote (pmml4s).

The standard takes the threshold only in the place of a count of zero, while the classifier adds it
to every count and leaves zero counts out. So the copy that the evaluator scores has the threshold
added to every count and the left-out counts written. It also reads fields as doubles: dataType
"float" would round them."""

import json
import os
import subprocess
import time
import xml.etree.ElementTree as xml
from pathlib import Path

import numpy
import pandas
import pytest
from pypmml import Model
from tables import TABLES, with_holes, with_weights

SCHEMA = Path(__file__).resolve().parents[1] / "schemas" / "pmml-4-3.xsd"
NAMESPACE = "http://www.dmg.org/PMML-4_3"
BY_NAME = {source.name: source for source in TABLES}
NAMES = ["penguins", "churn", "carData/Chile", "MASS/Cars93", "AER/CPS1985", "ggplot2/mpg"]


def tag(name):
    return f"{{{NAMESPACE}}}{name}"


def by_the_standard(path):
    """The document with the smoothed counts that the standard's own formula needs."""
    xml.register_namespace("", NAMESPACE)
    root = xml.parse(path).getroot()
    model = root.find(tag("NaiveBayesModel"))
    threshold = float(model.get("threshold"))
    priors = model.find(tag("BayesOutput")).find(tag("TargetValueCounts"))
    classes = [count.get("value") for count in priors]
    assert all(float(count.get("count")) > 0 for count in priors)
    for field in root.iter():
        if field.get("dataType") == "float":
            field.set("dataType", "double")
    for counts in root.iter(tag("TargetValueCounts")):
        found = {count.get("value"): float(count.get("count")) for count in counts}
        assert set(found) <= set(classes)
        for count in list(counts):
            counts.remove(count)
        for value in classes:
            xml.SubElement(
                counts, tag("TargetValueCount"), value=value, count=repr(found.get(value, 0.0) + threshold)
            )
    return xml.tostring(root, encoding="unicode")


def margins(path):
    """{continuous field: right margins of its bins}."""
    root = xml.parse(path).getroot()
    return {
        field.get("field"): [
            float(i.get("rightMargin")) for i in field.iter(tag("Interval")) if i.get("rightMargin")
        ]
        for field in root.iter(tag("Discretize"))
    }


def fitting_cases(frame, path):
    """Cases that the evaluator and the standard read as the classifier does: no category that the
    model does not have."""
    root = xml.parse(path).getroot()
    fits = numpy.ones(len(frame), bool)
    for field in root.iter(tag("DataField")):
        values = [v.get("value") for v in field.findall(tag("Value")) if v.get("property") == "valid"]
        if field.get("optype") != "categorical":
            continue
        column = frame[field.get("name")]
        if field.get("dataType") != "string":
            known = column.isin([float(v) for v in values])
        else:
            known = column.astype(str).isin(values)
        fits &= (known | column.isna()).to_numpy()
    return fits


def write_model(program, tmp_path, source, kind, options=()):
    frame = source.frame()[[source.class_target, *source.factors, *source.covariates]]
    if kind == "holes":
        frame = with_holes(frame)
    if kind == "weights":
        frame = with_weights(frame, "whole")
        options = [*options, "--weight", "weight"]
    data, model, scored = tmp_path / "data.csv", tmp_path / "model.xml", tmp_path / "scored.csv"
    frame.to_csv(data, index=False)
    for factor in [source.class_target, *source.factors]:
        options = [*options, "--level", f"{factor}=nominal"]
    for covariate in source.covariates:
        options = [*options, "--level", f"{covariate}=scale"]
    done = program.run(
        "bayes", "--data", data, "--target", source.class_target, "--pmml", model, "--save", scored,
        "--probabilities", "p", "--max-probabilities", "1000", "--predicted", "won", "--quiet", *options,
    )  # fmt: skip
    assert done.status == 0, done.err
    return pandas.read_csv(data), model, pandas.read_csv(scored)


CASES = [(name, kind) for name in NAMES for kind in ("plain", "holes", "weights")]


@pytest.mark.parametrize(("name", "kind"), CASES)
def test_model_is_valid_and_scores_alike(program, tmp_path, name, kind):
    source = BY_NAME[name]
    frame, path, scored = write_model(program, tmp_path, source, kind)
    lint = subprocess.run(
        ["xmllint", "--noout", "--nonet", "--schema", SCHEMA, path], capture_output=True, text=True
    )
    assert lint.returncode == 0, lint.stderr

    copy = by_the_standard(path)
    model = Model.fromString(copy)
    # Its own priors are the classifier's only if every class has a case, which is asserted above.
    fields = [f.name for f in model.inputFields]
    fits = fitting_cases(frame, path) & scored["won"].notna().to_numpy()
    assert fits.sum() > 20
    expect_alike(path, model, frame.loc[fits, fields], scored.loc[fits])


def evaluated(model, cases):
    """What the evaluator makes of the cases, given every digit: its own way from a frame rounds."""
    rows = cases.astype(object).where(cases.notna(), None).to_numpy().tolist()
    found = json.loads(model.predict(json.dumps({"columns": list(cases.columns), "data": rows})))
    return pandas.DataFrame(found["data"], columns=found["columns"])


def expect_alike(path, model, cases, scored, **where):
    """Probabilities p1, p2, ... of the program are those of the evaluator."""
    found = evaluated(model, cases)
    output = xml.parse(path).getroot().find(f".//{tag('BayesOutput')}")
    for i, count in enumerate(output.iter(tag("TargetValueCount"))):
        value = count.get("value")
        column = next(c for c in found.columns if c in (f"probability_{value}", f"probability({value})"))
        actual = scored[f"p{i + 1}"].to_numpy(float)
        expected = found[column].to_numpy(float)
        off = numpy.flatnonzero(~(numpy.abs(actual - expected) <= 1e-12))
        assert off.size == 0, (where, value, cases.iloc[off[0]].to_dict(), actual[off[0]], expected[off[0]])


def test_fields_of_the_model_are_the_ones_that_stayed(program, tmp_path):
    _, path, _ = write_model(program, tmp_path, BY_NAME["penguins"], "plain")
    root = xml.parse(path).getroot()
    mining = [f.get("name") for f in root.iter(tag("MiningField"))]
    fields = {f.get("name") for f in root.iter(tag("DataField"))}
    assert mining[-1] == "species" and set(mining) == fields
    assert [f.get("fieldName") for f in root.iter(tag("BayesInput"))] == mining[:-1]
    assert int(root.find(tag("DataDictionary")).get("numberOfFields")) == len(fields)


def clustered(random, size):
    """Numbers in clumps, so that bins between them hold no case: whole ones whose bins often end on
    one of them, decimals, neighbouring doubles whose bins share their cut points after rounding."""
    kind = random.integers(4)
    if kind == 0:
        step, start = 1.0, float(random.integers(-5, 5))
    elif kind == 1:
        step, start = 0.1, random.normal()
    elif kind == 2:
        start = float(10.0 ** random.integers(-3, 17))
        step = numpy.spacing(start)
    else:
        step, start = float(2.0 ** random.integers(-1060, 1000)), 0.0
    places = numpy.array([0, random.integers(1, 60), *random.integers(0, 60, random.integers(1, 6))])
    return start + step * (random.choice(places, size) + random.integers(0, 4, size))


def cut_points(values, bins):
    """Those that training computes from the smallest and the largest value."""
    low, high = float(numpy.min(values)), float(numpy.max(values))
    width = (high - low) / bins
    return [k * width + low for k in range(1, bins)]


def points_of_interest(values, bins):
    """Every cut point of training, the middle between any two of them, where a gap may be cut, and
    the doubles beside each."""
    cuts = numpy.array(cut_points(values, bins))
    middles = ((cuts[:, None] + cuts[None, :]) * 0.5).ravel()
    around = [numpy.nextafter(middles, -numpy.inf), middles, numpy.nextafter(middles, numpy.inf)]
    return numpy.unique(numpy.concatenate(around))


SEED = int(os.environ.get("PREDSEL_TEST_SEED", time.time_ns() % 2**32))


@pytest.mark.parametrize("is_weighted", [False, True])
@pytest.mark.parametrize("number", range(20))
def test_values_on_and_beside_every_cut_point_are_scored_alike(program, tmp_path, number, is_weighted):
    where = {"PREDSEL_TEST_SEED": SEED, "number": number, "is_weighted": is_weighted}
    print(where)
    random = numpy.random.default_rng([SEED, number])
    bins, size = int(random.integers(2, 14)), 60
    names = ["a", "b", "c"]
    training = pandas.DataFrame({name: clustered(random, size) for name in names})
    training["y"] = numpy.where(random.random(size) < 0.5, "no", "yes")
    # A weight that rounds to 0: the case counts for the range of its values but fills no bin.
    training["w"] = numpy.where(random.random(size) < 0.4, 0.4, 1.0)
    training["train"] = 1
    # Each predictor at its points, the others at values of the training.
    points = {name: points_of_interest(training[name], bins) for name in names}
    pieces = [
        training.sample(len(points[name]), replace=True, random_state=number).assign(**{name: points[name]})
        for name in names
    ]
    frame = pandas.concat([training, pandas.concat(pieces).assign(train=0)], ignore_index=True)
    data, path, state, saved = (tmp_path / name for name in ("data.csv", "model.xml", "state", "saved.csv"))
    frame.to_csv(data, index=False)
    levels = [option for name in names for option in ("--level", f"{name}=scale")]
    # A state cannot hold a weight.
    options = ["--weight", "w"] if is_weighted else ["--state", state]
    done = program.run(
        "bayes", "--data", data, "--target", "y", "--covariates", *names, "--train-variable", "train",
        "--no-selection", "--bins", bins, "--pmml", path, "--save", saved, "--probabilities", "p",
        "--quiet", *levels, *options,
    )  # fmt: skip
    assert done.status == 0, (where, done.err)
    for name, written in margins(path).items():
        assert set(written) <= set(points[name]), where
    model = Model.fromString(by_the_standard(path))
    scored = pandas.read_csv(saved)
    expect_alike(path, model, frame[names], scored, **where)
    if is_weighted:
        return

    done = program.run(
        "score", "--model", state, "--data", data, "--save", saved, "--probabilities", "p", "--quiet", *levels
    )
    assert done.status == 0, (where, done.err)
    scored = pandas.read_csv(saved)
    expect_alike(path, model, frame[names], scored, **where)
