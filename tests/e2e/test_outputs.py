"""Where results go, and that a run that fails leaves nothing and harms nothing."""

import json
import os
import resource
import shutil
import stat
import subprocess
import xml.etree.ElementTree as ET

import pytest
from conftest import (DONE, FILE_FAULT, PENGUINS, PROGRAM, WRONG_USE, default_signals, files_in,
                      program)

SELECT = ["select", "--data", PENGUINS, "--target", "species"]
OPTIONS = {"--html": "r.html", "--json": "r.json", "--chart": "c.svg", "--vega": "c.json"}


def all_outputs(folder):
    return [part for option, name in OPTIONS.items() for part in (option, folder / name)]


def test_all_outputs_of_one_run(tmp_path):
    result = program(*SELECT, *all_outputs(tmp_path))
    assert result.returncode == DONE
    assert "Predictor Summary" in result.stdout
    assert files_in(tmp_path) == sorted(OPTIONS.values())
    report = json.loads((tmp_path / "r.json").read_text(encoding="utf-8"))
    assert report["format"] == "predselect-report/1"
    assert json.loads((tmp_path / "c.json").read_text(encoding="utf-8")) == (
        report["commands"][0]["charts"][0]["vegaLite"])
    svg = ET.parse(tmp_path / "c.svg").getroot()
    assert svg.tag == "{http://www.w3.org/2000/svg}svg"
    assert "<svg" in (tmp_path / "r.html").read_text(encoding="utf-8")


@pytest.mark.parametrize("option", OPTIONS)
def test_a_dash_is_standard_output_and_takes_the_place_of_the_text(tmp_path, option):
    in_file = tmp_path / "out"
    assert program(*SELECT, option, in_file, "--quiet", "--plot").returncode == DONE
    result = program(*SELECT, option, "-", "--plot")
    assert result.returncode == DONE
    assert result.stdout == in_file.read_text(encoding="utf-8")


def test_quiet_keeps_standard_output_empty(tmp_path):
    result = program(*SELECT, "--quiet", "--json", tmp_path / "r.json")
    assert result.returncode == DONE
    assert result.stdout == ""
    assert files_in(tmp_path) == ["r.json"]


def test_warnings_are_told_where_no_text_report_shows_them():
    assert "predselect: warning: No predictors were excluded" in program(*SELECT, "--quiet").stderr
    shown = program(*SELECT)
    assert shown.stderr == ""
    assert "Warning: No predictors were excluded" in shown.stdout


def test_text_for_a_file_has_no_escape_sequences_and_100_columns():
    text = program(*SELECT).stdout
    assert "\x1b" not in text
    assert max(map(len, text.split("\n"))) <= 100


def test_colours_when_asked_for():
    assert "\x1b[" in program(*SELECT, "--color", "always").stdout
    assert "\x1b" not in program(*SELECT, "--color", "never").stdout


@pytest.mark.parametrize("width", [50, 60])
def test_the_width_that_was_asked_for(width):
    text = program(*SELECT, "--width", width).stdout
    assert max(map(len, text.split("\n"))) <= width


def test_charts_of_several_commands_are_numbered(tmp_path):
    result = program("run", "-c", "SELECTPRED species /PLOT SUMMARY; SELECTPRED sex /PLOT SUMMARY;",
                     "--data", PENGUINS, "--chart", tmp_path / "c.svg", "--quiet")
    assert result.returncode == DONE
    assert files_in(tmp_path) == ["c-2.svg", "c.svg"]


def test_a_chart_needs_a_command_that_draws_one(tmp_path):
    result = program("run", "-c", "SELECTPRED species;", "--data", PENGUINS, "--chart",
                     tmp_path / "c.svg")
    assert result.returncode == WRONG_USE
    assert "/PLOT SUMMARY" in result.stderr


def test_a_chart_of_nothing_is_not_written_but_the_rest_is(tmp_path):
    table = tmp_path / "t.csv"
    table.write_text("y,x\n" + "".join(f"{i % 2},1\n" for i in range(20)))
    result = program("select", "--data", table, "--target", "y", *all_outputs(tmp_path))
    assert result.returncode == DONE, result.stderr
    assert files_in(tmp_path) == ["r.html", "r.json", "t.csv"]
    assert "no chart was written to" in result.stderr


@pytest.mark.parametrize("arguments, says", [
    (["--html", "-", "--json", "-"], "standard output"),
    (["--html", "same", "--json", "./same"], "both go to"),
    (["--json", "{data}"], "would replace the data file"),
    (["--json", "{data}.schema.json"], "would replace the dictionary"),
])
def test_outputs_that_clash_are_wrong_use(tmp_path, arguments, says):
    data = tmp_path / "p.csv"
    shutil.copy(PENGUINS, data)
    before = data.read_bytes()
    result = program("select", "--data", data, "--target", "species",
                     *[a.format(data=data) for a in arguments], cwd=tmp_path)
    assert result.returncode == WRONG_USE
    assert says in result.stderr
    assert files_in(tmp_path) == ["p.csv"]
    assert data.read_bytes() == before


def test_an_output_over_the_command_file_is_wrong_use(tmp_path):
    commands = tmp_path / "c.pred"
    commands.write_text("SELECTPRED species;")
    (tmp_path / "link").symlink_to(commands)
    result = program("run", commands, "--data", PENGUINS, "--json", tmp_path / "link")
    assert result.returncode == WRONG_USE
    assert commands.read_text() == "SELECTPRED species;"


# --- faults ---------------------------------------------------------------------------------------


@pytest.mark.parametrize("option", OPTIONS)
@pytest.mark.parametrize("place, says", [
    ("missing/r", "No such file or directory; create the directory first"),
    ("file/r", "Not a directory"),
    ("folder", "Is a directory"),
    ("n" * 300, "File name too long"),
])
def test_a_path_that_cannot_be_written_is_told_before_any_work(tmp_path, option, place, says):
    (tmp_path / "file").write_text("")
    (tmp_path / "folder").mkdir()
    # The data don't exist: the fault of the output has to come first.
    result = program("select", "--data", "no/such/file", "--target", "y", option, tmp_path / place)
    assert result.returncode == FILE_FAULT
    assert says in result.stderr
    assert str(tmp_path / place) in result.stderr
    assert result.stderr.count("\n") == 1


def test_a_name_of_the_greatest_length_can_be_written(tmp_path):
    name = "n" * 255
    assert program(*SELECT, "--quiet", "--json", tmp_path / name).returncode == DONE
    assert files_in(tmp_path) == [name]


def test_a_folder_without_permission_is_a_file_fault(tmp_path):
    folder = tmp_path / "closed"
    folder.mkdir()
    if os.geteuid() == 0:
        # Permissions don't hold for root, a file system that is read-only does.
        script = ('mount --bind "$1" "$1" && mount -o remount,bind,ro "$1" && '
                  '"$0" select --data "$2" --target species --json "$1/r.json"')
        result = subprocess.run(["unshare", "-m", "sh", "-c", script, PROGRAM, folder, PENGUINS],
                                capture_output=True, text=True, check=False)
        if "mount" in result.stderr or "unshare" in result.stderr:
            pytest.skip("no mounts here: " + result.stderr.strip())
    else:
        folder.chmod(0o500)
        result = program(*SELECT, "--json", folder / "r.json")
    assert result.returncode == FILE_FAULT
    assert "choose a path that may be written" in result.stderr
    assert files_in(folder) == []


def test_a_file_without_permission_stays(tmp_path):
    old = tmp_path / "r.json"
    old.write_text("old")
    old.chmod(0o444)
    # Permissions don't hold for root with all its capabilities.
    plain = ["setpriv", "--bounding-set=-dac_override", "--inh-caps=-dac_override"]
    command = [PROGRAM, *map(str, SELECT), "--json", str(old)]
    result = subprocess.run([*plain, *command] if os.geteuid() == 0 else command,
                            capture_output=True, text=True, check=False)
    assert result.returncode == FILE_FAULT, result.stderr
    assert "choose a path that may be written" in result.stderr
    assert old.read_text() == "old"


def test_a_full_disk_leaves_what_was_there(tmp_path):
    script = """
mount -t tmpfs -o size=64k none "$1" || exit 77
printf old >"$1/r.json"
dd if=/dev/zero of="$1/filler" bs=1k count=48 2>/dev/null
"$0" select --data "$2" --target species --quiet --json "$1/r.json" --html "$1/r.html"
echo "status $?"
ls -A "$1"
cat "$1/r.json"
"""
    result = subprocess.run(["unshare", "-m", "sh", "-c", script, PROGRAM, tmp_path, PENGUINS],
                            capture_output=True, text=True, check=False)
    if result.returncode in (1, 77) and "status" not in result.stdout:
        pytest.skip("no mounts here: " + result.stderr.strip())
    assert result.stdout == f"status {FILE_FAULT}\nfiller\nr.json\nold"
    assert "No space left on device; free some space or choose another disk" in result.stderr


def test_a_file_above_the_size_limit_leaves_what_was_there(tmp_path):
    (tmp_path / "r.json").write_text("old")

    def limited():
        default_signals()
        resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))

    result = program(*SELECT, "--quiet", *all_outputs(tmp_path), preexec_fn=limited)
    assert result.returncode == FILE_FAULT
    assert "File too large" in result.stderr
    assert files_in(tmp_path) == ["r.json"]
    assert (tmp_path / "r.json").read_text() == "old"


def test_one_output_that_fails_keeps_the_others_back(tmp_path):
    result = program(*SELECT, "--json", tmp_path / "r.json", "--html", "/dev/full")
    assert result.returncode == FILE_FAULT
    assert "cannot write /dev/full" in result.stderr
    assert files_in(tmp_path) == []


def test_standard_output_that_is_full_keeps_the_files_back(tmp_path):
    (tmp_path / "r.json").write_text("old")
    with open("/dev/full", "w") as full:
        result = program(*SELECT, "--json", tmp_path / "r.json", capture_output=False, stdout=full,
                         stderr=subprocess.PIPE)
    assert result.returncode == FILE_FAULT
    assert files_in(tmp_path) == ["r.json"]
    assert (tmp_path / "r.json").read_text() == "old"


def test_outputs_to_devices(tmp_path):
    assert program(*SELECT, "--quiet", "--html", "/dev/null", "--json", "/dev/null").returncode == DONE
    assert stat.S_ISCHR(os.stat("/dev/null").st_mode)
    result = program(*SELECT, "--quiet", "--json", "/dev/stdout")
    assert json.loads(result.stdout)["format"] == "predselect-report/1"


# --- how files are put in place -------------------------------------------------------------------


def test_the_mode_of_a_new_file_follows_the_umask(tmp_path):
    def masked():
        default_signals()
        os.umask(0o027)

    assert program(*SELECT, "--quiet", "--json", tmp_path / "r.json",
                   preexec_fn=masked).returncode == DONE
    assert stat.S_IMODE((tmp_path / "r.json").stat().st_mode) == 0o640


def test_a_file_that_is_replaced_keeps_its_mode(tmp_path):
    old = tmp_path / "r.json"
    old.write_text("old")
    old.chmod(0o604)
    assert program(*SELECT, "--quiet", "--json", old).returncode == DONE
    assert stat.S_IMODE(old.stat().st_mode) == 0o604
    assert old.read_text(encoding="utf-8") != "old"


def test_a_link_is_written_through(tmp_path):
    (tmp_path / "real").mkdir()
    (tmp_path / "real" / "r.json").write_text("old")
    (tmp_path / "r.json").symlink_to("real/r.json")
    assert program(*SELECT, "--quiet", "--json", tmp_path / "r.json").returncode == DONE
    assert (tmp_path / "r.json").is_symlink()
    assert (tmp_path / "real" / "r.json").read_text(encoding="utf-8") != "old"
    assert files_in(tmp_path / "real") == ["r.json"]


def traced(trace, *options, inject=()):
    return subprocess.run(["strace", "-f", "-o", trace, "-e",
                           "trace=fsync,rename,renameat,renameat2,openat", *inject, PROGRAM,
                           *map(str, options)], capture_output=True, text=True, check=False)


needs_strace = pytest.mark.skipif(shutil.which("strace") is None, reason="strace is not installed")


@needs_strace
def test_files_are_synced_then_renamed_then_their_folder_is_synced(tmp_path):
    trace = tmp_path / "trace"
    out = tmp_path / "out"
    out.mkdir()
    result = traced(trace, *SELECT, "--quiet", "--json", out / "r.json", "--html", out / "r.html")
    if "PTRACE" in result.stderr or "ptrace" in result.stderr:
        pytest.skip("no tracing here: " + result.stderr.strip())
    assert result.returncode == DONE, result.stderr
    steps = []
    for line in trace.read_text().split("\n"):
        call = line.partition(" ")[2].strip()
        if call.startswith("fsync("):
            steps.append("fsync")
        elif call.startswith("rename"):
            steps.append("rename")
        elif call.startswith("openat(") and f'"{out}"' in call:
            steps.append("open folder")
    put_in_place = ["rename", "open folder", "fsync"]
    assert steps == ["fsync", "fsync", *put_in_place, *put_in_place]


@needs_strace
def test_a_process_killed_at_the_rename_leaves_what_was_there(tmp_path):
    old = tmp_path / "r.json"
    old.write_text("old")
    trace = tmp_path / "trace"
    result = traced(trace, *SELECT, "--quiet", "--json", old,
                    inject=["-e", "inject=rename:signal=SIGKILL:when=1"])
    if "PTRACE" in result.stderr or "ptrace" in result.stderr:
        pytest.skip("no tracing here: " + result.stderr.strip())
    assert result.returncode != DONE
    assert "rename(" in trace.read_text()
    # The signal comes with the call, which may or may not have been carried out: either the old
    # file is there or the whole new one.
    text = old.read_text(encoding="utf-8")
    assert text == "old" or json.loads(text)["format"] == "predselect-report/1"
