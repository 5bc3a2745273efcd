"""Writes the sections "Sums and statistics" and "Order of rows" of docs/accuracy.md from what the unit
tests measure. Leaves the page alone when a test fails.

    python tests/oracles/write_accuracy.py build/asan/bin/featureselect_test
"""

import os
import re
import subprocess
import sys
from pathlib import Path

PAGE = Path(__file__).resolve().parents[2] / "docs/accuracy.md"
SEED = "20260510"

SUMS = """\
Means, variances, F, r and t come from sums that lose no digit. Each is within two units in the last
place of the exact value for the given doubles, in any unit and at any distance from 0 (tests
`FSExactSets`, `FSMagnitudes` and `tests/oracles/test_exact_statistics.py`, against rational arithmetic).

The table has the sets with certified values of the Statistical Reference Datasets (see
`featureselect/tests/data/certified/README.md`), each read as records, in a block, on two threads, with
weights and in another order; the worst result counts. A set with more than one predictor has r and t
of each of its columns with the response, which nobody has certified.

- Digits, exact: right digits against rational arithmetic on the doubles that the data are read as.
  "nearest" is the double nearest to the exact value, each time.
- Digits, certified: right digits against the certified value, which is that of the decimals as
  printed, as a double. "all" is 17 or more.
- Digits, allowed: in how many the exact value for the doubles agrees with the certified one. The
  rounding of the data to doubles costs the others, and no program can have them.
"""

ORDER = """\
The order of the records, cuts into parts, the order of merging, reading in blocks and threads change no
bit of a result. Test `FSOrderFreedom` reads random tables (all kinds of predictors and targets, weights
of all kinds, missing values, drift, offsets to 1e12, numbers of any size) in other orders as a whole, or
cut into two to seven parts that are read on their own and merged two at a time in any order. It compares
every number that the engine gives: counts, weights, deletions, values, ranks, statistics. None of these
{total:,} trials differs from the first reading:

"""

TOGETHER = """
`tests/golden/test_invariance.py` compares the bytes of the program's JSON reports in the same way, from
CSV and Parquet, on one to four threads.

Print all this again, from a build directory made with the `dev` or `asan` preset:

    .venv/bin/python tests/oracles/write_accuracy.py build/asan/bin/featureselect_test
"""


def measured(binary, wanted):
    """The lines of tables that the tests of a filter print."""
    done = subprocess.run(
        [binary, f"--gtest_filter={wanted}"],
        env={**os.environ, "PREDSEL_PRINT_ACCURACY": "1", "PREDSEL_TEST_SEED": SEED},
        capture_output=True,
        text=True,
    )
    if done.returncode != 0:
        failed = [line for line in done.stdout.splitlines() if line.startswith("[  FAILED  ]")]
        sys.exit("\n".join(["the tests fail, nothing is written", *dict.fromkeys(failed)]))
    return [line for line in done.stdout.splitlines() if line.startswith("| ") or line.startswith("|--")]


def with_section(page, title, text):
    """The page with a section replaced, or put at its end."""
    section = f"## {title}\n\n{text.strip()}\n\n"
    found = re.search(rf"^## {re.escape(title)}\n.*?(?=^## |\Z)", page, re.M | re.S)
    if found:
        return page[: found.start()] + section + page[found.end() :]
    return page.rstrip("\n") + "\n\n" + section


def main(binary):
    sets = measured(binary, "FSCertifiedSets.*")
    orders = measured(binary, "*/FSOrderFreedom.*")
    counts = [[int(cell) for cell in line.split("|")[2:5]] for line in orders]
    tables, permutations, splits = (sum(column) for column in zip(*counts))
    orders = [
        "| Predictors and target | Tables | Permutations | Splits |",
        "|---|---|---|---|",
        *(re.sub(r"(?<=[a-z])By(?=[A-Z])", " by ", line) for line in orders),
        f"| together | {tables} | {permutations} | {splits} |",
    ]
    page = PAGE.read_text(encoding="utf-8")
    page = with_section(page, "Sums and statistics", SUMS + "\n" + "\n".join(sets))
    order = ORDER.format(total=permutations + splits) + "\n".join(orders) + "\n" + TOGETHER
    page = with_section(page, "Order of rows", order)
    PAGE.write_text(page.rstrip("\n") + "\n", encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
