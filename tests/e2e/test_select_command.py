"""The command that `select` writes."""

import json

import pytest
from conftest import DONE, PENGUINS, program


def command_of(*options):
    result = program("select", "--show-command", *options)
    assert result.returncode == DONE, result.stderr
    assert result.stderr == ""
    return result.stdout


def test_a_target_alone():
    assert command_of("--target", "y") == "SELECTPRED y;\n"


def test_every_option_has_its_words():
    assert command_of(
        "--target", "y", "--target-level", "scale", "--factors", "a", "b..c", "d*",
        "--covariates", "all", "--except", "e", "--screening", "on", "--max-missing", "50",
        "--max-single", "90.5", "--max-categories", "80", "--min-cv", "0.01", "--min-stddev", "1e-3",
        "--user-missing", "include", "--ranking", "lrchisq", "--size", "auto", "--p-cutoff", ".01",
        "--show-unselected", "3", "--timer", "0", "--print", "cps", "summary", "--summary",
        "pearsonchisq", "lambda", "--plot") == """\
SELECTPRED y(MLEVEL=S) BY a b..c d* WITH all
  /EXCEPT VARIABLES=e
  /SCREENING STATUS=ON PCTMISSING=50 PCTEQUAL=90.5 PCTUNEQUAL=80 CV=0.01 STDDEV=1e-3
  /CRITERIA TIMER=0 SHOWUNSELECTED=3 SIZE=AUTO RANKING=LRCHISQ PCUTOFF=.01
  /MISSING USERMISSING=INCLUDE
  /PRINT CPS SUMMARY(PEARSONCHISQ LAMBDA)
  /PLOT SUMMARY;
"""


@pytest.mark.parametrize("level, letter", [("nominal", "N"), ("ordinal", "O"), ("scale", "S")])
def test_levels_of_the_target(level, letter):
    assert command_of("--target", "y", "--target-level", level) == f"SELECTPRED y(MLEVEL={letter});\n"


def test_further_criteria_alone_take_no_table_away():
    assert command_of("--target", "y", "--summary", "lambda") == (
        "SELECTPRED y\n  /PRINT CPS EXCLUDED SUMMARY(LAMBDA) SELECTED;\n")


def test_print_none():
    assert command_of("--target", "y", "--print", "none") == "SELECTPRED y\n  /PRINT NONE;\n"


@pytest.mark.parametrize("output", [["--html", "r.html"], ["--chart", "c.svg"], ["--vega", "-"]])
def test_outputs_that_show_a_chart_ask_for_it(output):
    assert command_of("--target", "y", *output) == "SELECTPRED y\n  /PLOT SUMMARY;\n"


def test_a_json_report_does_not():
    assert command_of("--target", "y", "--json", "-") == "SELECTPRED y;\n"


def test_elements_of_lists():
    written = {
        "plain": "plain", "a.b": "a.b", "größe": "größe", "_x1": "_x1",
        "two words": '"two words"', 'with "quotes"': '"with ""quotes"""', "semi;colon": '"semi;colon"',
        "a,b": '"a,b"', "[a,b]": '"[a,b]"', "{}": '"{}"', "by": '"by"', "With": '"With"',
        "1st": '"1st"', "x=1": '"x=1"', "# no comment": '"# no comment"', "it's": '"it\'s"',
        "a..b": "a..b", "a b..c": '"a b..c"', '"a b".."c d"': '"a b".."c d"',
        "stem*": "stem*", "two words*": '"two words*"', "*": "ALL", "all": "all", '"all"': '"all"',
        '"a b"': '"a b"', '"a"b"': '"""a""b"""', '"': '""""', '""': '""', "": '""',
        '"a" /PRINT NONE "b"': '"""a"" /PRINT NONE ""b"""', "-": '"-"',
    }
    expected = "SELECTPRED y BY " + " ".join(written.values()) + ";\n"
    assert command_of("--target", "y", "--factors", *written) == expected


def test_names_of_commands_and_options_are_names_in_a_list():
    assert command_of("--target", "run", "--factors", "select", "describe", "--covariates=--plot") == (
        'SELECTPRED run BY select describe WITH "--plot";\n')


def test_the_target_is_always_a_name():
    assert command_of("--target", "all") == 'SELECTPRED "all";\n'
    assert command_of("--target", "a..b") == 'SELECTPRED "a..b";\n'
    assert command_of("--target", "x*") == 'SELECTPRED "x*";\n'


AWKWARD_NAMES = ["two words", 'with "quotes"', "it's", "größe in cm", "年龄", "😀", "a;b", "x=1",
                 "# no comment", "by", "ALL", "1", "-", "[a,b]", "{}", "a..b", "stem*", "/PRINT",
                 "tab\tinside", "n" * 1000]


@pytest.mark.parametrize("name", AWKWARD_NAMES, ids=lambda name: name[:20])
def test_a_name_of_any_characters_is_found_again(tmp_path, name):
    table = tmp_path / "t.csv"
    quoted = '"' + name.replace('"', '""') + '"'
    rows = [f"{'ab'[i % 2]},{i % 5},{i}" for i in range(40)]
    table.write_text("\n".join([f"target,{quoted},other", *rows]) + "\n", encoding="utf-8")
    # In a list double quotes make a name of what would be a pattern, a range or ALL.
    result = program("select", "--data", table, "--target", "target", "--factors", quoted,
                     "--screening", "off", "--show-unselected", "5", "--json", "-")
    assert result.returncode == DONE, result.stderr
    assert name in predictors_of(result.stdout)

    as_target = program("select", "--data", table, "--target", name, "--factors", "target",
                        "--screening", "off", "--show-unselected", "5", "--json", "-")
    assert as_target.returncode == DONE, as_target.stderr
    assert predictors_of(as_target.stdout) == ["target"]


def predictors_of(report):
    """The names of the predictors in the summary, by their keys."""
    command = json.loads(report)["commands"][0]
    summary = next(t for t in command["tables"] if t["id"] == "PredictorSummary")
    names = []
    for cell in summary["cells"]:
        name = cell["keys"]["Predictor"][-1]
        if name not in names:
            names.append(name)
    return names


def test_the_written_command_gives_the_same_report_as_the_options(tmp_path):
    options = ["--target", "species", "--factors", "island", "sex", "--covariates", "bill*",
               "--show-unselected", "2", "--ranking", "lrchisq", "--plot"]
    command = tmp_path / "c.pred"
    command.write_text(command_of(*options), encoding="utf-8")
    by_options = program("select", "--data", PENGUINS, *options, "--json", "-")
    by_command = program("run", command, "--data", PENGUINS, "--json", "-")
    assert by_options.returncode == DONE
    assert by_options.stdout == by_command.stdout


def test_show_command_touches_no_file(tmp_path):
    result = program("select", "--target", "y", "--data", "no/such/file", "--html",
                     tmp_path / "r.html", "--show-command")
    assert result.returncode == DONE
    assert list(tmp_path.iterdir()) == []
