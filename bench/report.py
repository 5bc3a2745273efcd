"""Tables of the benchmark's results: bench/report.py [RESULTS.json] [--markdown]"""

import argparse
import json
import statistics
import sys
from pathlib import Path

RESULTS = Path(__file__).resolve().parents[1] / "build" / "bench" / "results.json"
HEADINGS = ["Command", "Median s", "Spread", "Without start-up s", "Processor s", "Peak MB", "To fastest peer",
            "To floor", "Runs"]  # fmt: skip
BAR_HEADINGS = ["Workload", "Data", "Bar", "At most", "Measured", ""]


def median(command, what="wall"):
    return statistics.median(m[what] for m in command["measurements"])


def share(part, whole):
    return f"{part / whole:.2f}" if whole else ""


def rows_of(section):
    """A row a command; those that only load libraries are taken into the rows of their peers."""
    commands = section["commands"]
    imports = {c["peer"]: median(c) for c in commands if c["kind"] == "imports"}
    quickest = min((median(c) for c in commands if c["kind"] == "peer"), default=None)
    floor = next((median(c) for c in commands if c["kind"] == "floor"), None)
    for command in commands:
        if command["kind"] == "imports":
            continue
        wall = median(command)
        walls = [m["wall"] for m in command["measurements"]]
        yield [
            command["name"],
            f"{wall:.3f}",
            f"{100 * (max(walls) - min(walls)) / wall:.0f} %" if len(walls) > 1 else "",
            f"{max(0.0, wall - imports[command['peer']]):.3f}" if command["peer"] in imports else "",
            f"{median(command, 'processor'):.3f}",
            f"{max(m['peak'] for m in command['measurements']) / 1e6:.0f}",
            share(wall, quickest),
            share(wall, floor),
            str(len(walls)),
        ]


def bars_of(results):
    for section in results["sections"]:
        for bar in section["bars"]:
            measured = bar["measured"]
            yield [
                section["workload"],
                section["data"],
                bar["what"],
                f"{bar['limit']:.4g} {bar['unit']}".strip(),
                "not measured" if measured is None else f"{measured:.3g} {bar['unit']}".strip(),
                {None: "", True: "met", False: "NOT MET"}[bar["met"]],
            ]


def noise_of(section):
    """The share of the processors that others took: of all runs the middle and the most."""
    others = [m["others"] for c in section["commands"] for m in c["measurements"]]
    return f"other processes took {100 * statistics.median(others):.0f} % of the processors, at most {100 * max(others):.0f} %"


def ratio_line(ratio):
    return (
        f"{ratio['name']} to the other build: time {ratio['wall']:.3f} (rounds {ratio['lowest']:.3f} to "
        f"{ratio['highest']:.3f}), processor time {ratio['processor']:.3f}, peak memory {ratio['peak']:.3f}."
    )


def plain_table(rows):
    widths = [max(len(row[i]) for row in rows) for i in range(len(rows[0]))]
    lines = []
    for row in rows:
        cells = [cell.ljust(w) if i == 0 else cell.rjust(w) for i, (cell, w) in enumerate(zip(row, widths))]
        lines.append("  ".join(cells).rstrip())
    return lines


def markdown_table(rows):
    lines = ["| " + " | ".join(row) + " |" for row in rows]
    return [lines[0], "|" + "---|" * len(rows[0]), *lines[1:]]


def render(results, table, heading):
    machine = results["machine"]
    lines = [
        f"{results['version']}; {machine['processor']}, {machine['processors']} processors, "
        f"{machine['memory'] / 2**30:.0f} GiB; two threads each; scale {results['scale']:g}, rounds: {results['runs']}"
    ]
    if "against" in results:
        lines.append(f"The other build: {results['against']}.")
    for section in results["sections"]:
        lines += ["", heading(f"{section['workload']}, {section['data']}"), ""]
        lines += table([HEADINGS, *rows_of(section)])
        lines += ["", f"Noise: {noise_of(section)}."]
        lines += [ratio_line(ratio) for ratio in section.get("against", [])]
        for name, value in section.get("nanoseconds", {}).items():
            lines.append(f"A cell (record, candidate, class), {name}: {value:.2f} ns.")
    bars = list(bars_of(results))
    if bars:
        lines += ["", heading("Bars"), "", *table([BAR_HEADINGS, *bars])]
    lines += ["", "All results agree." if results["agreed"] else "THE RESULTS DO NOT AGREE, or a command failed."]
    return "\n".join(lines)


def text(results):
    return render(results, plain_table, lambda title: title)


def markdown(results):
    return render(results, markdown_table, lambda title: f"### {title}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("results", nargs="?", type=Path, default=RESULTS)
    parser.add_argument("--markdown", action="store_true")
    given = parser.parse_args()
    results = json.loads(given.results.read_text())
    print(markdown(results) if given.markdown else text(results))


if __name__ == "__main__":
    sys.exit(main())
