"""The numbers of the Predictor Summary against SciPy, on real tables.

Cases of weight w stand for w equal cases, so the other software sees each row repeated; the engine
rounds a weight to the nearest whole number first. Every statistic agrees to a relative 1e-9, and so
do every p-value, however small, and its logarithm, which is that of ball arithmetic (python-flint)
at SciPy's statistic.
"""

import json
import math

import jsonschema
import numpy
import pandas
import pytest
from flint import arb, ctx
from reading import logarithm, rows, summary, table
from scipy import stats
from tables import TABLES, with_holes, with_weights

RELATIVE = 1e-9

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
    return {
        "p": found.pvalue,
        "lnP": ln_chi_square(found.statistic, found.dof),
        "Value": found.statistic,
        "df": found.dof,
    }


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
    df1, df2 = len(groups) - 1, len(values) - len(groups)
    ln_p = ln_f(found.statistic, df1, df2)
    return {"p": found.pvalue, "lnP": ln_p, "F": found.statistic, "df1": df1, "df2": df2}


def correlation(pairs):
    x, y = pairs.iloc[:, 0].to_numpy(float), pairs.iloc[:, 1].to_numpy(float)
    found, line = stats.pearsonr(x, y), stats.linregress(x, y)
    t, df = line.slope / line.stderr, len(x) - 2
    return {"p": found.pvalue, "lnP": ln_f(t * t, 1, df), "r": found.statistic, "t": t, "df": df}


def ln_tail(tail):
    """The logarithm of tail(), computed until it is certain."""
    ctx.prec = 128
    while ctx.prec < 100_000:
        log = tail().log()
        if log.is_finite() and log.rad() < 1e-12 * abs(log.mid()):
            return float(log.mid())
        ctx.prec *= 2
    raise ArithmeticError("no certain value")


def ln_chi_square(x, df):
    return ln_tail(lambda: (arb(x) / 2).gamma_upper(arb(int(df)) / 2, regularized=1))


def ln_f(f, df1, df2):
    """F from above; that of t * t with 1 and df degrees of freedom is t from both sides."""

    def tail():
        share = arb(df2) / (arb(df2) + arb(df1) * arb(f))
        return share.beta_lower(arb(df2) / 2, arb(df1) / 2, regularized=1)

    return ln_tail(tail)


def same(actual, expected, what):
    assert actual is not None, what
    assert math.isclose(actual, expected, rel_tol=RELATIVE), (what, actual, expected)


def compare(report, cases, target, target_is_class, factors, covariates):
    found, logarithms = summary(report), summary(report, read=logarithm)
    checked = 0
    for predictor in [*factors, *covariates]:
        pairs = cases[[predictor, target]].dropna()
        row, ln_row = found[predictor], logarithms[predictor]
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
                        place = (name, "Unadjusted Sig.")
                        same(row[place], oracle.pop("p"), (predictor, name, "p"))
                        same(ln_row[place], oracle.pop("lnP"), (predictor, name, "lnP"))
                    for statistic, value in oracle.items():
                        same(row[name, statistic], value, (predictor, name, statistic))
                        checked += 1
                continue
            oracle = chi_square(pairs, "pearson")
            same(row["Unadjusted Sig."], oracle.pop("p"), (predictor, "p"))
            same(ln_row["Unadjusted Sig."], oracle.pop("lnP"), (predictor, "lnP"))
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
        same(ln_row["Unadjusted Sig."], oracle.pop("lnP"), (predictor, "lnP"))
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


def test_probabilities_too_small_for_a_double_have_their_logarithm(root, program, tmp_path):
    """Two classes that a, b and c tell apart better and better; n does so without an exception."""
    data = tmp_path / "data.csv"
    lines = ["y,a,b,c,n,w"]
    for y, a, b, c, n, weight in [
        ("p", "k", "k", "k", 1, 8000),
        ("q", "l", "l", "m", 2, 8000),
        ("p", "l", "k", "k", 1, 500),
        ("q", "k", "k", "l", 2, 500),
    ]:
        lines.append(f"{y},{a},{b},{c},{n},{weight}")
    data.write_text("\n".join(lines) + "\n", encoding="utf-8")
    command = "SELECTPRED y BY a b c WITH n /SCREENING STATUS=OFF"
    report = program.report(data, command, "--weight", "w")
    schema = json.loads((root / "docs/formats/report.schema.json").read_text(encoding="utf-8"))
    jsonschema.validate(report, schema)
    found, logarithms = summary(report), summary(report, read=logarithm)
    assert list(found) == ["n", "c", "b", "a"]
    assert [row["Unadjusted Sig."] for row in found.values()] == [0, 0, 0, 0]
    for predictor, df in {"a": 1, "b": 1, "c": 2}.items():
        statistic = found[predictor]["Pearson Chi-Square", "Value"]
        assert found[predictor]["Pearson Chi-Square", "df"] == df
        expected = ln_chi_square(statistic, df)
        assert expected < -5000
        assert logarithms[predictor]["Unadjusted Sig."] == pytest.approx(expected, rel=1e-12)
    assert logarithms["n"]["Unadjusted Sig."] == -math.inf


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
