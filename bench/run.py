"""Measures the program beside the peers, the lower bounds and itself, and writes results.json.

All commands of a workload alternate, round by round, so that ratios survive a drift of the machine. The
first round warms up and is not counted, except for a peer that takes more than ten seconds and five
times as long as the fastest one: it is not run again. Every result is held against the program's; if
one disagrees, or a command fails, the exit status is 1.

    ./dev bench                       all workloads, five rounds
    ./dev bench W1 W4 --runs 3
    ./dev bench --scale 0.01          small tables, for a look at the benchmark itself
    ./dev bench W1 --against OTHER    beside another build of the program, to see what a change did
"""

import argparse
import json
import os
import platform
import shutil
import statistics
import subprocess
import sys
from dataclasses import asdict, dataclass, field
from pathlib import Path

from processes import CommandFailed, measure
from report import text

ROOT = Path(__file__).resolve().parents[1]
BENCH = ROOT / "bench"
WORKLOADS = ("W1", "W2", "W3", "W4", "W5", "W6", "W7")
TABLE_OF = {"W5": "W1"}  # a workload without a table of its own
PEERS = ("numpy", "duckdb", "polars", "numba", "scikit-learn")
THREADS = 2
STEPS = 10
SLOW_SECONDS, SLOW_RATIO = 10.0, 5.0

TO_PEERS = {
    ("W1", "parquet"): 0.40,
    ("W1", "csv"): 0.30,
    ("W2", "parquet"): 0.45,
    ("W2", "csv"): 0.30,
    ("W3", "parquet"): 0.30,
    ("W3", "csv"): 0.30,
}
TO_FLOOR = 2.5
TO_DECODED_COLUMNS = 1.5
LOW_MEMORY, LOW_MEMORY_PEAK = "256M", 512e6
SEARCH_TO_PEER = {"numpy": 1 / 8, "numba": 1 / 8, "scikit-learn": 1 / 100}
SCORING_TO_PEER = {"numpy": 1.0, "scikit-learn": 0.25}
START_UP_RUNS, START_UP_SECONDS = 20, 0.060
FEWEST_RUNS_AGAINST = 3  # a ratio of single runs says little

# Like the peers, a statistic of every predictor, whatever the screening rules say of it.
EVERY_PREDICTOR = ("--screening", "off", "--show-unselected", 1_000_000, "--quiet")
SCREENING_FORMS = {
    "numpy": ("",),
    "duckdb": ("hist", "sets"),
    "polars": ("lazy", "onepass", "eager", "stream"),
    "scikit-learn": ("",),
}
NUMERIC_FORMS = {"numpy": ("",), "duckdb": ("",), "polars": ("",)}
# Thousands of grouping sets in one statement don't come to an end.
WIDE_FORMS = SCREENING_FORMS | {"duckdb": ("hist", "each")}
SEARCH_FORMS = {"numpy": ("",), "numba": ("logs", "products"), "scikit-learn": ("",)}
SCORING_FORMS = {"numpy": ("table", "scores"), "scikit-learn": ("table",)}
SCRIPT_OF = {"scikit-learn": "sklearn"}


class Disagreement(Exception):
    pass


@dataclass
class Command:
    name: str
    kind: str  # program, against (another build of it), peer, floor, imports, aside
    words: list
    result: Path | None = None
    peer: str = ""  # the library that is measured
    measurements: list = field(default_factory=list)
    finished: bool = False

    def median(self, of="wall"):
        return statistics.median(getattr(m, of) for m in self.measurements)


class Bench:
    def __init__(self, given):
        self.given = given
        self.work = given.output / "runs"
        self.data = given.data or given.output / "data" / (f"scale-{given.scale:g}" if given.scale != 1 else "full")
        self.environment = {
            name: str(THREADS)
            for name in ("OMP_NUM_THREADS", "OPENBLAS_NUM_THREADS", "POLARS_MAX_THREADS", "NUMBA_NUM_THREADS",
                         "LOKY_MAX_CPU_COUNT")
        }  # fmt: skip
        self.environment["NUMBA_CACHE_DIR"] = str(given.output / "numba")
        self.environment["PYTHONWARNINGS"] = "ignore"
        self.sections = []
        self.agreed = True
        shutil.rmtree(self.work, ignore_errors=True)
        self.work.mkdir(parents=True)

    # The tables.

    def make_table(self, name):
        if all((self.data / f"{name}.{kind}").exists() for kind in ("csv", "parquet")):
            return
        print(f"Generating {name}", flush=True)
        subprocess.run(
            [sys.executable, BENCH / "generate.py", name, "--scale", str(self.given.scale), "--directory", self.data],
            check=True,
        )

    def warm(self, path):
        """Reads a file once, so that all commands find it in the system's cache."""
        with open(path, "rb") as file:
            while file.read(1 << 24):
                pass

    # The commands.

    def program(self, name, words, result=None, kind="program"):
        return Command(name, kind, [self.given.program, *words], result)

    def peers(self, task, forms, data, suffix, extra=()):
        commands = []
        for peer in forms:
            if peer not in self.given.peers:
                continue
            script = BENCH / "peers" / f"{task}_{SCRIPT_OF.get(peer, peer)}.py"
            for form in forms[peer]:
                name = f"{peer} {form}".strip()
                result = self.work / f"{task}.{name.replace(' ', '.')}.{suffix}"
                words = [sys.executable, script, data, result, "--threads", THREADS, *extra]
                commands.append(Command(name, "peer", words + (["--form", form] if form else []), result, peer))
            commands.append(
                Command(f"{peer}: start-up", "imports", [sys.executable, script, data, "-", "--imports"], peer=peer)
            )
        return commands

    def floors(self, program, *words):
        if self.given.floors is None:
            return []
        return [Command("floor", "floor", [self.given.floors / program, *words])]

    def twins(self, commands):
        """[(command of the program, the same of the other build, which writes files of its own)]"""
        if self.given.against is None:
            return []
        own = [c for c in commands if c.words[0] == self.given.program]
        return [
            (c, Command(f"{c.name}, other build", "against",
                        [self.given.against, *map(self.twin_path, c.words[1:])], self.twin_path(c.result)))
            for c in own
        ]  # fmt: skip

    def twin_path(self, word):
        is_output = isinstance(word, Path) and word.parent == self.work
        return word.with_name(f"other-build.{word.name}") if is_output else word

    def add_ratios(self, section, twins):
        """What the program takes of the other build's time: ratios of medians, and of single rounds."""
        section["against"] = []
        for command, other in twins:
            pairs = [(a.wall, b.wall) for a, b in zip(command.measurements, other.measurements)]
            rounds = [a / b for a, b in pairs]
            section["against"].append(
                {"name": command.name, "lowest": min(rounds), "highest": max(rounds)}
                | {of: command.median(of) / other.median(of) for of in ("wall", "processor", "peak")}
            )  # fmt: skip

    # Measuring.

    def alternate(self, workload, kind, commands, runs=None):
        """Rounds of all commands; then one section of the results."""
        twins = self.twins(commands)
        for round_number in range((runs or self.given.runs) + 1):
            for command in self.order_of(commands, twins, round_number):
                if command.finished:
                    continue
                label = f"{workload}.{kind}.{command.name}".replace(" ", ".").replace(":", "")
                try:
                    taken = measure(list(map(str, command.words)), self.environment, self.work / f"{label}.log")
                except CommandFailed as failure:
                    raise Disagreement(f"{workload} {kind}, {command.name}: {failure}") from None
                if round_number > 0:
                    command.measurements.append(taken)
                elif command.kind == "peer" and taken.wall > SLOW_SECONDS:
                    command.measurements.append(taken)  # its only one, if others are much faster
            if round_number == 0:
                quickest = min((c.measurements[0].wall if c.measurements else 0.0 for c in commands if c.kind == "peer"),
                               default=0.0)  # fmt: skip
                for command in commands:
                    if command.measurements:
                        command.finished = command.measurements[0].wall > SLOW_RATIO * max(quickest, SLOW_SECONDS / SLOW_RATIO)
                        if not command.finished:
                            command.measurements.clear()
            print(f"{workload} {kind}: {'warm-up' if round_number == 0 else f'round {round_number}'}", flush=True)
        section = {"workload": workload, "data": kind, "commands": [], "bars": [], "agreement": []}
        if twins:
            self.add_ratios(section, twins)
        for command in self.order_of(commands, twins, 0):
            section["commands"].append(
                {"name": command.name, "kind": command.kind, "peer": command.peer,
                 "measurements": [asdict(m) for m in command.measurements]}
            )  # fmt: skip
        self.sections.append(section)
        return section

    def order_of(self, commands, twins, round_number):
        """The other build beside the program: behind it in one round, before it in the next."""
        others = {id(command): other for command, other in twins}
        for command in commands:
            pair = [command, others[id(command)]] if id(command) in others else [command]
            yield from pair if round_number % 2 == 0 else reversed(pair)

    def check(self, section, what, own, commands, *more):
        """Holds the peers' results against the program's; what differs is told and remembered."""
        peers = [c.result for c in commands if c.kind == "peer" and c.result]
        if not peers:
            return
        done = subprocess.run(
            [sys.executable, BENCH / "check.py", what, own, *peers, *more], capture_output=True, text=True
        )
        said = (done.stdout + done.stderr).replace(f"{self.work}/", "").strip().splitlines()
        section["agreement"] += said
        if done.returncode != 0:
            self.tell(f"{section['workload']} {section['data']}: " + "\n".join(said[-5:]))

    def tell(self, difference):
        self.agreed = False
        print(f"bench: {difference}", file=sys.stderr, flush=True)

    def bar(self, section, what, measured, limit, unit=""):
        # The bars hold for the whole tables; on smaller ones start-up is most of every time.
        judged = measured is not None and (self.given.scale == 1 or section["workload"] == "W6")
        section["bars"].append(
            {"what": what, "measured": measured, "limit": limit, "unit": unit,
             "met": bool(measured <= limit) if judged else None}
        )  # fmt: skip

    def ratio_bars(self, section, commands, peers, floor=False):
        """Bars on the ratio of whole processes; peers {name, or "fastest peer": limit}."""
        own = next(c for c in commands if c.kind == "program")
        for peer, limit in peers.items():
            times = [c.median() for c in commands if c.kind == "peer" and peer in (c.peer, "fastest peer")]
            self.bar(section, f"time to {peer}", own.median() / min(times) if times else None, limit)
        if floor:
            times = [c.median() for c in commands if c.kind == "floor"]
            self.bar(section, "time to floor", own.median() / times[0] if times else None, TO_FLOOR)

    # The workloads.

    def screening(self, workload):
        for kind in ("parquet", "csv"):
            data = self.data / f"{workload}.{kind}"
            self.warm(data)
            own = self.work / "screen.json"
            select = ["select", "--data", data, "--target", "y", "--threads", THREADS]
            commands = [
                self.program("predselect", [*select, *EVERY_PREDICTOR, "--json", own], own),
                *self.peers("screen", WIDE_FORMS if workload == "W3" else SCREENING_FORMS, data, "csv"),
                *self.floors("ParquetFloor" if kind == "parquet" else "CsvFloor", data, THREADS),
            ]  # fmt: skip
            section = self.alternate(workload, kind, commands)
            self.ratio_bars(section, commands, {"fastest peer": TO_PEERS[workload, kind]}, floor=True)
            self.check(section, "screen", own, [c for c in commands if c.peer != "scikit-learn"])
            # It adds up squares of what stands in the table, others those of distances from a mean.
            self.check(section, "squares", own, [c for c in commands if c.peer == "scikit-learn"],
                       self.data / f"{workload}.parquet")  # fmt: skip
            if workload == "W1":
                decoded = int(subprocess.check_output(
                    [sys.executable, BENCH / "check.py", "size", self.data / "W1.parquet"]))  # fmt: skip
                self.bar(section, "peak memory to decoded columns", commands[0].median("peak") / decoded,
                         TO_DECODED_COLUMNS)  # fmt: skip
            if (workload, kind) == ("W2", "csv"):
                self.low_memory(section, select)

    def numeric(self, workload):
        for kind in ("parquet", "csv"):
            data = self.data / f"{workload}.{kind}"
            self.warm(data)
            own = self.work / "numeric.json"
            words = ["select", "--data", data, "--target", "y", "--threads", THREADS, *EVERY_PREDICTOR, "--json", own]
            commands = [
                self.program("predselect", words, own),
                *self.peers("numeric", NUMERIC_FORMS, data, "csv"),
            ]
            section = self.alternate(workload, kind, commands)
            self.check(section, "screen", own, commands)

    def low_memory(self, section, select):
        """The same report from little memory."""
        reports = [self.work / "memory-all.txt", self.work / "memory-low.txt"]
        words = [self.given.program, *select, "--width", 100]
        try:
            measure(list(map(str, words)), self.environment, self.work / "memory-all.log", reports[0])
            taken = measure(list(map(str, [*words, "--memory", LOW_MEMORY])), self.environment,
                            self.work / "memory-low.log", reports[1])  # fmt: skip
        except CommandFailed as failure:
            raise Disagreement(f"W2 with little memory: {failure}") from None
        if reports[0].read_bytes() != reports[1].read_bytes():
            raise Disagreement(f"W2 csv: another report under --memory {LOW_MEMORY}")
        section["commands"].append(
            {"name": f"predselect --memory {LOW_MEMORY}", "kind": "aside", "peer": "", "measurements": [asdict(taken)]}
        )
        section["agreement"].append(f"--memory {LOW_MEMORY}: the same report")
        self.bar(section, f"peak memory under --memory {LOW_MEMORY}", taken.peak / 1e6, LOW_MEMORY_PEAK / 1e6, "MB")

    def search(self, workload):
        for kind in ("parquet", "csv"):
            data = self.data / f"{workload}.{kind}"
            self.warm(data)
            own = self.work / "chain.json"
            bayes = ["bayes", "--data", data, "--target", "y", "--threads", THREADS, "--quiet"]
            forms = dict(SEARCH_FORMS)
            if kind == "csv":
                # Its search takes minutes, and reading next to nothing of them.
                del forms["scikit-learn"]
            commands = [
                self.program("predselect", [*bayes, "--exact-size", STEPS, "--json", own], own),
                self.program("predselect, tables alone", [*bayes, "--no-selection", "--json", self.work / "tables.json"],
                             kind="aside"),
                *self.peers("subset", forms, data, "csv", ("--steps", STEPS)),
                *(self.floors("SubsetFloor", data, STEPS, THREADS) if kind == "csv" else []),
            ]  # fmt: skip
            section = self.alternate(workload, kind, commands)
            self.ratio_bars(section, commands, {p: SEARCH_TO_PEER[p] for p in forms})
            self.check(section, "chain", own, [c for c in commands if c.peer != "scikit-learn"])
            self.cells(section, commands)

    def cells(self, section, commands):
        """Nanoseconds of processor time a cell (record, candidate, class) of the search: the whole run
        less one that reads, trains and classifies with all predictors and searches nothing."""
        metadata = subprocess.check_output(
            [sys.executable, "-c", "import sys, pyarrow.parquet as p; m = p.read_metadata(sys.argv[1]);"
             "print(m.num_rows, m.num_columns)", self.data / "W4.parquet"])  # fmt: skip
        rows, columns = map(int, metadata.split())
        candidates = sum(columns - 1 - step for step in range(STEPS))
        seconds = commands[0].median("processor") - commands[1].median("processor")
        section["nanoseconds"] = {"predselect": seconds * 1e9 / (rows * candidates * 3)}
        if self.given.floors is not None:
            kernel = subprocess.check_output([self.given.floors / "SearchKernel", str(rows)])
            section["nanoseconds"] |= {f"bare kernel, {form}": value for form, value in json.loads(kernel).items()}

    def scoring(self, workload):
        data = self.data / f"{TABLE_OF[workload]}.parquet"
        self.warm(data)
        own = self.work / "scored.parquet"
        words = ["bayes", "--data", data, "--target", "y", "--threads", THREADS, "--no-selection", "--save", own, "--quiet",
                 "--json", self.work / "scored.json"]  # fmt: skip
        commands = [
            self.program("predselect", words, own),
            *self.peers("scores", SCORING_FORMS, data, "parquet"),
        ]
        section = self.alternate(workload, "parquet", commands)
        self.ratio_bars(
            section, [c for c in commands if not c.name.endswith(" scores")],
            {p: SCORING_TO_PEER[p] for p in SCORING_FORMS},
        )  # fmt: skip
        self.check(section, "scores", own, [c for c in commands if c.peer != "scikit-learn"])

    def start_up(self, workload):
        words = ["select", "--data", ROOT / "data" / "penguins.csv", "--target", "species", "--threads", THREADS]
        command = self.program("predselect", words)
        section = self.alternate(workload, "344 rows", [command], START_UP_RUNS)
        self.bar(section, "processor time", command.median("processor") * 1e3, START_UP_SECONDS * 1e3, "ms")

    def run(self):
        """True if all results agree."""
        tasks = {"W4": self.search, "W5": self.scoring, "W6": self.start_up, "W7": self.numeric}
        for workload in self.given.workloads:
            try:
                if workload != "W6":
                    self.make_table(TABLE_OF.get(workload, workload))
                tasks.get(workload, self.screening)(workload)
            except Disagreement as difference:
                self.tell(difference)
        return self.agreed


def machine():
    model = platform.processor() or platform.machine()
    memory = 0
    try:
        with open("/proc/cpuinfo") as file:
            model = next((line.split(":")[1].strip() for line in file if line.startswith("model name")), model)
        memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES")
    except (OSError, ValueError):
        pass
    return {"processor": model, "processors": os.cpu_count(), "memory": memory, "system": platform.platform()}


def use_processors(count):
    """All commands on the same few processors, where the system can say so."""
    if hasattr(os, "sched_setaffinity"):
        allowed = sorted(os.sched_getaffinity(0))
        os.sched_setaffinity(0, allowed[:count])


def version_of(program):
    return subprocess.check_output([program, "--version"], text=True).strip()


def parse(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("workloads", nargs="*", metavar="WORKLOAD", help=f"of {', '.join(WORKLOADS)}; default: all")
    parser.add_argument("--runs", type=int, default=5, help="rounds that count")
    parser.add_argument("--scale", type=float, default=1.0, help="size of the tables")
    parser.add_argument("--peers", default=",".join(PEERS), help=f"of {','.join(PEERS)}; default: all")
    parser.add_argument("--program", type=Path, default=ROOT / "build" / "bin" / "predselect")
    parser.add_argument("--against", type=Path, metavar="PROGRAM",
                        help="another build, whose runs alternate with the program's")
    parser.add_argument("--floors", type=Path, help="folder of the lower bounds; without it there are none")
    parser.add_argument("--data", type=Path, help="folder of the tables; default: OUTPUT/data, made when missing")
    parser.add_argument("--output", type=Path, default=ROOT / "build" / "bench")
    given = parser.parse_args(arguments)
    given.workloads = given.workloads or list(WORKLOADS)
    given.peers = given.peers.split(",")
    for value, known in ((given.workloads, WORKLOADS), (given.peers, PEERS)):
        if unknown := set(value) - set(known):
            parser.error(f"{', '.join(sorted(unknown))} is none of {', '.join(known)}")
    if given.runs < 1 or given.scale <= 0:
        parser.error("--runs and --scale are above zero")
    if given.against and given.runs < FEWEST_RUNS_AGAINST:
        parser.error(f"--against takes at least {FEWEST_RUNS_AGAINST} runs")
    for program in filter(None, (given.program, given.against)):
        if not shutil.which(program):
            parser.error(f"there is no program {program}")
    return given


def main(arguments=None):
    given = parse(arguments)
    use_processors(THREADS)
    bench = Bench(given)
    agreed = bench.run()
    results = {"machine": machine(), "version": version_of(given.program), "scale": given.scale, "runs": given.runs, "agreed": agreed,
               "sections": bench.sections}  # fmt: skip
    if given.against:
        results["against"] = version_of(given.against)
    part = given.output / "results.json.part"
    part.write_text(json.dumps(results, indent=1) + "\n")
    part.rename(given.output / "results.json")
    print(text(results))
    print(f"Results: {os.path.relpath(given.output / 'results.json')}")
    return 0 if agreed else 1


if __name__ == "__main__":
    sys.exit(main())
