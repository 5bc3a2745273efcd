"""Completion scripts."""

import shutil
import subprocess

import pytest
from conftest import DONE, program


def script_for(shell, folder):
    result = program("completion", shell)
    assert result.returncode == DONE
    path = folder / f"predselect.{shell}"
    path.write_text(result.stdout, encoding="utf-8")
    return path


@pytest.mark.parametrize("shell", ["bash", "zsh", "fish"])
def test_the_shell_can_read_it(tmp_path, shell):
    assert shutil.which(shell), f"{shell} is not installed; ./dev test installs it"
    result = subprocess.run([shell, "-n", script_for(shell, tmp_path)], capture_output=True,
                            text=True, check=False)
    assert (result.returncode, result.stderr) == (0, "")


def completed_by_bash(folder, *words):
    """What bash offers for the last of the words."""
    line = " ".join(f"'{word}'" for word in words)
    text = (f"source '{script_for('bash', folder)}'\nCOMP_WORDS=({line})\n"
            f"COMP_CWORD={len(words) - 1}\n_predselect\nprintf '%s\\n' \"${{COMPREPLY[@]}}\"\n")
    result = subprocess.run(["bash", "-c", text], capture_output=True, text=True, check=True,
                            cwd=folder)
    return [word for word in result.stdout.split("\n") if word]


@pytest.mark.parametrize("words, offered", [
    (["predselect", ""], ["run", "select", "bayes", "score", "update", "merge", "describe",
                          "completion", "--help", "--version"]),
    (["predselect", "sel"], ["select"]),
    (["predselect", "select", "--rank"], ["--ranking"]),
    (["predselect", "select", "--ranking", ""], ["pearsonchisq", "lrchisq", "cramersv", "lambda"]),
    (["predselect", "select", "--ranking", "l"], ["lrchisq", "lambda"]),
    (["predselect", "select", "--color", "a"], ["auto", "always"]),
    (["predselect", "completion", ""], ["bash", "zsh", "fish"]),
])
def test_bash_offers(tmp_path, words, offered):
    assert completed_by_bash(tmp_path, *words) == offered


def test_bash_offers_files_for_paths(tmp_path):
    (tmp_path / "table.csv").write_text("")
    assert completed_by_bash(tmp_path, "predselect", "run", "--data", "tab") == ["table.csv"]


@pytest.mark.parametrize("shell", ["bash", "zsh", "fish"])
def test_every_option_of_every_command_is_in_it(tmp_path, shell):
    text = script_for(shell, tmp_path).read_text(encoding="utf-8")
    for command in ["run", "select", "bayes", "score", "update", "merge", "describe", "completion"]:
        for word in program(command, "--help").stdout.split():
            for option in word.split(","):
                if option.startswith("--") and option[2:].replace("-", "").isalpha():
                    wanted = f"-l {option[2:]}" if shell == "fish" else option
                    assert wanted in text, (command, option)
