"""The numbers of the Predictor Summary against SciPy, on real tables.

Cases of weight w stand for w equal cases, so the other software sees each row repeated; the engine
rounds a weight to the nearest whole number first. Every statistic agrees to a relative 1e-9, and so
does every p-value, but for an absolute 1e-14 that its definition costs: the program gives
1 - F(x), which in doubles is a multiple of 2^-53 (1.1e-16) near F = 1 and inherits the rounding of
F itself, up to some fifty such steps, while SciPy computes the upper tail for itself.
"""

import math

import numpy
import pandas
import pytest
from reading import rows, summary, table
from scipy import stats
from tables import TABLES, with_holes, with_weights

RELATIVE = 1e-9
FLOOR_OF_P = 1e-15

VARIANTS = ["plain", "holes", "weights", "fractional weights", "weights and holes"]


def variant(source, kind):
    """(data frame, name of its weight variable or None)"""
    frame, weight = source.frame(), source.weight
    if "holes" in kind:
        frame = with_holes(frame)
    if "weights" in kind and weight is None:
        frame, weight = with_weights(frame, "fractional" if "fractional" in kind else "whole"), "weight"
    return frame, weight


def repeated(frame, weight):
    """The cases, each as often as it counts."""
    if weight is None:
        return frame
    frame = frame[frame[weight].notna()]
    times = numpy.floor(frame[weight] + 0.5).astype(int).clip(lower=0)
    return frame.loc[frame.index.repeat(times)]


def crosstab(pairs):
    return pandas.crosstab(pairs.iloc[:, 0], pairs.iloc[:, 1])


def chi_square(pairs, kind):
    counts = crosstab(pairs)
    found = stats.chi2_contingency(counts, correction=False, lambda_=kind)
    return {"p": found.pvalue, "Value": found.statistic, "df": found.dof}


def cramers_v(pairs):
    return {"Value": stats.contingency.association(crosstab(pairs), method="cramer", correction=False)}


def asymmetric_lambda(pairs):
    """How much better the target's likeliest class is guessed when the predictor is known
    (Goodman and Kruskal 1954)."""
    counts = crosstab(pairs)
    known, unknown = counts.max(axis=1).sum(), counts.sum(axis=0).max()
    return {"Value": (known - unknown) / (counts.to_numpy().sum() - unknown)}


def f_test(values, classes):
    groups = [group.to_numpy() for _, group in values.groupby(classes)]
    found = stats.f_oneway(*groups)
    return {
        "p": found.pvalue,
        "F": found.statistic,
        "df1": len(groups) - 1,
        "df2": len(values) - len(groups),
    }


def correlation(pairs):
    x, y = pairs.iloc[:, 0].to_numpy(float), pairs.iloc[:, 1].to_numpy(float)
    found, line = stats.pearsonr(x, y), stats.linregress(x, y)
    return {"p": found.pvalue, "r": found.statistic, "t": line.slope / line.stderr, "df": len(x) - 2}


def same(actual, expected, what):
    assert actual is not None, what
    floor = FLOOR_OF_P if what[-1] == "p" else 0.0
    assert math.isclose(actual, expected, rel_tol=RELATIVE, abs_tol=floor), (what, actual, expected)


def compare(report, cases, target, target_is_class, factors, covariates):
    found = summary(report)
    checked = 0
    for predictor in [*factors, *covariates]:
        pairs = cases[[predictor, target]].dropna()
        row = found[predictor]
        is_factor = predictor in factors
        if target_is_class and is_factor:
            if ("Pearson Chi-Square", "Rank") in row:
                for name, oracle in {
                    "Pearson Chi-Square": chi_square(pairs, "pearson"),
                    "Likelihood Ratio Chi-Square": chi_square(pairs, "log-likelihood"),
                    "Cramer's V": cramers_v(pairs),
                    "Lambda": asymmetric_lambda(pairs),
                }.items():
                    if "p" in oracle:
                        same(row[name, "Unadjusted Sig."], oracle.pop("p"), (predictor, name, "p"))
                    for statistic, value in oracle.items():
                        same(row[name, statistic], value, (predictor, name, statistic))
                        checked += 1
                continue
            oracle = chi_square(pairs, "pearson")
            same(row["Unadjusted Sig."], oracle.pop("p"), (predictor, "p"))
            for statistic, value in oracle.items():
                same(row["Pearson Chi-Square", statistic], value, (predictor, statistic))
                checked += 1
            continue
        if target_is_class or is_factor:
            values, classes = (predictor, target) if target_is_class else (target, predictor)
            oracle = f_test(pairs[values], pairs[classes])
            places = {"F": ("F", "Value"), "df1": ("F", "df1"), "df2": ("F", "df2")}
        else:
            oracle = correlation(pairs)
            group = "Pearson Correlation"
            places = {"r": (group, "Value"), "t": (group, "t"), "df": (group, "df")}
        # With predictors of one kind the statistics have no group.
        if places[next(iter(places))] not in row:
            places = {k: k if k != "r" else "Pearson Correlation" for k in places}
        same(row["Unadjusted Sig."], oracle.pop("p"), (predictor, "p"))
        for statistic, value in oracle.items():
            same(row[places[statistic]], value, (predictor, statistic))
            checked += 1
    return checked


RUNS = {
    # class target or number, factors, covariates
    "class BY": (True, True, False),
    "class WITH": (True, False, True),
    "class BY WITH": (True, True, True),
    "number BY": (False, True, False),
    "number WITH": (False, False, True),
    "number BY WITH": (False, True, True),
}


@pytest.mark.parametrize("kind", VARIANTS)
@pytest.mark.parametrize("source", TABLES, ids=lambda source: source.name)
def test_numbers_are_those_of_scipy(source, kind, program, tmp_path):
    frame, weight = variant(source, kind)
    data = tmp_path / "data.csv"
    frame.to_csv(data, index=False)
    cases = repeated(frame, weight)
    options = ["--weight", weight] if weight else []

    commands, expected = [], []
    for is_class, by, with_ in RUNS.values():
        target = source.class_target if is_class else source.number_target
        factors = source.factors if by else ()
        covariates = source.covariates if with_ else ()
        if not factors + covariates or (with_ and not covariates) or target == weight:
            continue
        command = f'SELECTPRED "{target}" (MLEVEL={"N" if is_class else "S"})'
        for word, names in (("BY", factors), ("WITH", covariates)):
            if names:
                command += f" {word} " + " ".join(f'"{name}"' for name in names)
        commands.append(command + " /SCREENING STATUS=OFF /CRITERIA SHOWUNSELECTED=99")
        expected.append((target, is_class, factors, covariates))
    report = program.report(data, ";\n".join(commands), *options)
    checked = 0
    for at, (target, is_class, factors, covariates) in enumerate(expected):
        checked += compare(
            {"commands": [report["commands"][at]]}, cases, target, is_class, factors, covariates
        )
        check_order({"commands": [report["commands"][at]]})
        check_counts(report, at, frame, cases, weight, target, is_class, [*factors, *covariates])
    assert checked >= 10


def check_order(report):
    """The rows stand in the order of their p-values."""
    sigs = [
        row.get("Unadjusted Sig.", row.get(("Pearson Chi-Square", "Unadjusted Sig.")))
        for row in summary(report).values()
    ]
    assert sigs == sorted(sigs)


def check_counts(report, at, frame, cases, weight, target, is_class, predictors):
    """A case is valid when its target is there and one of its predictors at least."""

    def split(cases):
        valid = cases[target].notna() & cases[predictors].notna().any(axis=1)
        return valid.sum(), (~valid).sum(), cases[valid]

    valid, excluded, used = split(cases)
    found = rows(table(report, "CaseProcessingSummary", at), "Value", "Statistics")
    assert found["Valid"]["N"] == valid
    assert found["Excluded"]["N"] == excluded
    assert found["Total"]["N"] == valid + excluded
    if is_class:
        for value, count in used[target].value_counts().items():
            row = found[target, value]
            assert row["N"] == count
            assert row["Percent"] == pytest.approx(100 * count / valid, rel=1e-12)
    if weight is not None:
        single = frame[numpy.floor(frame[weight] + 0.5) > 0]
        valid, excluded, _ = split(single)
        assert found["Valid"]["Unweighted N"] == valid
        assert found["Excluded"]["Unweighted N"] == excluded


@pytest.mark.parametrize("treatment", ["EXCLUDE", "INCLUDE"])
def test_user_missing_values_are_missing_or_values(treatment, program, tmp_path):
    source = next(source for source in TABLES if source.name == "carData/Chile")
    frame = source.frame()
    data = tmp_path / "data.csv"
    frame.to_csv(data, index=False)
    missing = {"vote": ["U"], "region": ["M", "N"], "income": [15000.0, 200000.0]}
    if treatment == "EXCLUDE":
        for name, values in missing.items():
            frame.loc[frame[name].isin(values), name] = None
    options = [
        part
        for name, values in missing.items()
        for part in ("--missing", f"{name}={','.join(map(str, values))}")
    ]
    command = (
        f"SELECTPRED vote BY {' '.join(source.factors)} WITH {' '.join(source.covariates)}"
        f" /SCREENING STATUS=OFF /CRITERIA SHOWUNSELECTED=99 /MISSING USERMISSING={treatment}"
    )
    report = program.report(data, command, *options)
    predictors = [*source.factors, *source.covariates]
    assert compare(report, frame, "vote", True, source.factors, source.covariates) == 15
    check_counts(report, 0, frame, frame, None, "vote", True, predictors)
