"""The model file: valid by the public schema of PMML 4.3, and scored by an evaluator that nobody
here wrote (pmml4s).

The standard takes the threshold only in the place of a count of zero, while the classifier adds it
to every count and leaves zero counts out. So the copy that the evaluator scores has the threshold
added to every count and the left-out counts written. It also reads fields as doubles: dataType
"float" would round them."""

import subprocess
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


def merged_cuts(path):
    """{continuous field: cut points}, all of them."""
    root = xml.parse(path).getroot()
    return {
        field.get("field"): [
            float(i.get("rightMargin")) for i in field.iter(tag("Interval")) if i.get("rightMargin")
        ]
        for field in root.iter(tag("Discretize"))
    }


def fitting_cases(frame, path):
    """Cases that the evaluator and the standard read as the classifier does: no category that the
    model does not have, no value exactly on a cut point."""
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
    for name, cuts in merged_cuts(path).items():
        fits &= ~frame[name].isin(cuts).to_numpy()
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
    cases = frame.loc[fits, fields]
    assert len(cases) > 20
    found = model.predict(cases)
    classes = [count.get("value") for count in xml.parse(path).getroot().find(f".//{tag('BayesOutput')}").iter(tag("TargetValueCount"))]
    for i, value in enumerate(classes):
        column = next(c for c in found.columns if c in (f"probability_{value}", f"probability({value})"))
        actual = scored.loc[fits, f"p{i + 1}"].to_numpy(float)
        numpy.testing.assert_allclose(actual, found[column].to_numpy(float), rtol=0, atol=1e-12)


def test_fields_of_the_model_are_the_ones_that_stayed(program, tmp_path):
    _, path, _ = write_model(program, tmp_path, BY_NAME["penguins"], "plain")
    root = xml.parse(path).getroot()
    mining = [f.get("name") for f in root.iter(tag("MiningField"))]
    fields = {f.get("name") for f in root.iter(tag("DataField"))}
    assert mining[-1] == "species" and set(mining) == fields
    assert [f.get("fieldName") for f in root.iter(tag("BayesInput"))] == mining[:-1]
    assert int(root.find(tag("DataDictionary")).get("numberOfFields")) == len(fields)
