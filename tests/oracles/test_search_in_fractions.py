"""The subset search in rational arithmetic: chains and rankings of small tables of every shape, where
many candidates and sizes are equal and a rounding would order them."""

import itertools
import random
from fractions import Fraction
from math import prod

import pytest
from reading import rows, table

CLASSES = "abcde"


class Search:
    """The definition. Average log-likelihoods are compared as the products they are logs of, to the
    power of the weight; predictors are columns of codes, None is missing."""

    def __init__(self, target, columns, weights):
        self.target, self.columns, self.weights = target, columns, weights
        self.k = max(target) + 1
        n = sum(weights)
        of_class = self.sums(target, self.k)
        filled = sum(weight > 0 for weight in of_class)
        self.n, self.priors = n, [Fraction(w * n + 1, n * n + filled) for w in of_class]
        self.tables = [self.table(column) for column in columns]

    def sums(self, codes, size):
        totals = [0] * size
        for code, weight in zip(codes, self.weights):
            totals[code] += weight
        return totals

    def table(self, column):
        """P[m][k], smoothed by 1/n for each category that has cases."""
        size = max(code for code in column if code is not None) + 1
        counts = [[0] * self.k for _ in range(size)]
        for code, target, weight in zip(column, self.target, self.weights):
            if code is not None:
                counts[code][target] += weight
        filled = sum(any(row) for row in counts)
        totals = [sum(column) for column in zip(*counts)]
        return [
            [Fraction(c * self.n + 1, total * self.n + filled) for c, total in zip(row, totals)] for row in counts
        ]

    def posterior(self, target, codes, subset):
        joint = list(self.priors)
        for j in subset:
            if codes[j] is not None:
                joint = [p * q for p, q in zip(joint, self.tables[j][codes[j]])]
        return joint[target] / sum(joint)

    def likelihood(self, subset, target=None, columns=None, weights=None):
        """The product over the cases of the posterior of their own class."""
        target, columns, weights = target or self.target, columns or self.columns, weights or self.weights
        return prod(
            self.posterior(t, codes, subset) ** w for t, codes, w in zip(target, zip(*columns), weights)
        )

    def chain(self, length):
        chosen = []
        while len(chosen) < length:
            left = [j for j in range(len(self.columns)) if j not in chosen]
            likelihoods = [self.likelihood([*chosen, j]) for j in left]
            chosen.append(left[likelihoods.index(max(likelihoods))])
        return chosen


def ranked(values):
    """Sizes by value, the highest first, of equal ones the smallest."""
    return sorted(range(1, len(values) + 1), key=lambda size: (-values[size - 1], size))


def shaped(shape, generator):
    """Target and columns of a table of this shape."""
    classes = generator.choice([2, 2, 3])
    n = classes * generator.choice([6, 8, 12])
    target = [i % classes for i in range(n)]
    if shape == "balanced":
        # Each code as often in every class; one column tells something.
        columns = []
        for size in (2, 2, 3):
            codes = [[i % size for i in range(n // classes)] for _ in range(classes)]
            for ofClass in codes:
                generator.shuffle(ofClass)
            columns.append([codes[t][i // classes] for i, t in enumerate(target)])
        columns.append([t if generator.random() < 0.8 else (t + 1) % classes for t in target])
    elif shape == "saturated":
        columns = [[t if generator.random() < 0.97 else 0 for t in target] for _ in range(4)]
    else:
        columns = [
            [t % 2 if generator.random() < 0.4 else generator.randrange(size) for t in target] for size in (2, 2, 3, 2)
        ]
    if shape == "copies":
        # The same column, and under other names of its categories.
        columns = [*columns[:2], columns[0], [1 - code for code in columns[1]], columns[2]]
    if shape == "missing":
        columns = [[None if generator.random() < 0.15 else code for code in column] for column in columns]
        columns[0] = [0 if code is None else code for code in columns[0]]
    generator.shuffle(columns)
    order = generator.sample(range(n), n)
    return [target[i] for i in order], [[column[i] for i in order] for column in columns]


def usable(columns):
    return all(len({code for code in column if code is not None}) >= 2 for column in columns)


SHAPES = ("balanced", "saturated", "copies", "missing", "plain")


def written(path, target, columns, weights, training):
    names = [f"p{j}" for j in range(len(columns))]
    lines = [",".join(["y", *names, "w", "training"])]
    for i, t in enumerate(target):
        codes = ["" if column[i] is None else f"c{column[i]}" for column in columns]
        lines.append(",".join([CLASSES[t], *codes, str(weights[i]), str(training[i])]))
    path.write_text("\n".join(lines) + "\n")
    return names


def search_of(program, path, names, judged):
    sample = " /TRAININGSAMPLE VARIABLE=training" if judged == "TESTDATA" else ""
    command = f"NAIVEBAYES y BY {' '.join(names)}{sample} /SUBSET MAXSIZE={len(names)}(BESTSUBSET={judged});"
    levels = [word for name in ["y", *names] for word in ("--level", f"{name}=nominal")]
    report = program.report(path, command, "--weight", "w", *levels)
    found = rows(table(report, "SubsetSummary"), "Subset", "Statistics")
    steps = [found[size] for size in range(1, len(names) + 1)]
    chain = [names.index(step["Predictor Added"]) for step in steps]
    return chain, sorted(range(1, len(names) + 1), key=lambda size: steps[size - 1]["Rank"])


@pytest.mark.parametrize(("shape", "seed"), [*itertools.product(SHAPES, range(12))])
def test_chain_and_ranking_are_those_of_fractions(program, tmp_path, shape, seed):
    generator = random.Random(f"{shape} {seed}")
    target, columns = shaped(shape, generator)
    while not usable(columns):
        target, columns = shaped(shape, generator)
    weights = [generator.choice([1, 1, 2, 3]) if seed % 3 == 0 and shape != "balanced" else 1 for _ in target]
    path = tmp_path / "table.csv"
    names = written(path, target, columns, weights, [1] * len(target))
    search = Search(target, columns, weights)
    chain, ranking = search_of(program, path, names, "PSEUDOBIC")
    assert chain == search.chain(len(columns))
    # exp(-2 n criterion) is likelihood^2 / n^size.
    likelihoods = [search.likelihood(chain[:size]) for size in range(1, len(chain) + 1)]
    assert ranking == ranked([p * p / search.n**size for size, p in enumerate(likelihoods, 1)])

    # The same cases once more, to judge the sizes by.
    twice = [target * 2, [column * 2 for column in columns], weights * 2]
    written(path, *twice, [1] * len(target) + [0] * len(target))
    chain, ranking = search_of(program, path, names, "TESTDATA")
    assert chain == search.chain(len(columns))
    assert ranking == ranked(likelihoods)
