"""State files read by nothing but what docs/formats/ says of them, to their last byte."""

import base64
import hashlib
import json
import struct

import pytest
from conftest import DONE, PENGUINS, program


class Reader:
    """Takes items off the front of bytes."""

    def __init__(self, data):
        self.data = data
        self.at = 0

    def characters(self, length):
        piece = self.data[self.at:self.at + length]
        assert len(piece) == length, f"the state ends at {len(self.data)}, within an item at {self.at}"
        self.at += length
        return piece.decode()

    def tag(self, expected):
        assert self.characters(len(expected)) == expected

    def number(self, form):
        (value,) = struct.unpack_from("<" + form, self.data, self.at)
        self.at += struct.calcsize("<" + form)
        return value

    def integer(self):
        return self.number("i")

    def real(self):
        return self.number("d")

    def flag(self):
        value = self.integer()
        assert value in (0, 1)
        return value == 1

    def integers(self, count):
        return [self.integer() for _ in range(count)]

    def reals(self, count):
        return [self.real() for _ in range(count)]

    def text(self):
        return self.characters(self.integer())


def state_of(path):
    """Header and engine's bytes of a state file."""
    content = path.read_bytes()
    assert content[:16] == b"predselect state"
    version, header_size, state_size = struct.unpack_from("<iiq", content, 16)
    assert version == 1
    end = 32 + header_size + state_size
    assert len(content) == end + 44
    assert content[end:] == base64.b64encode(hashlib.sha256(content[:end]).digest())
    return json.loads(content[32:32 + header_size]), content[32 + header_size:end]


@pytest.fixture(scope="module")
def states(tmp_path_factory):
    folder = tmp_path_factory.mktemp("states")
    for command in ("bayes", "select"):
        result = program(command, "--data", PENGUINS, "--target", "species", "--state",
                         folder / f"{command}.state", "--quiet")
        assert result.returncode == DONE, result.stderr
    return folder


# The classifier: classifier-state.md, classifier-tables.md and classifier-variables.md.

def target_table(reader):
    reader.tag("NBOUT")
    index, categories, entries = reader.integers(3)
    assert entries == categories
    weights, records, priors = [], [], []
    for _ in range(entries):
        weights.append(reader.real())
        records.append(reader.integer())
        priors.append(reader.real())
    return index, weights, records, priors


def predictor_table(reader):
    reader.tag("NBIN")
    index, position, categories, filled, targets, rows = reader.integers(6)
    assert rows == categories
    weights, probabilities = [], []
    for _ in range(rows):
        assert reader.integer() == targets
        cells = [reader.reals(2) for _ in range(targets)]
        weights.append([weight for weight, _ in cells])
        probabilities.append([probability for _, probability in cells])
    assert filled == sum(sum(row) > 0 for row in weights)
    return index, position, weights, probabilities


def numeric_missing(reader):
    reader.tag("NBNumUMi")
    for _ in range(reader.integer()):
        reader.real()
        reader.text()
    if reader.flag():
        reader.tag("NBNumInt")
        reader.reals(2)


def string_missing(reader):
    reader.tag("NBStrUMi")
    for _ in range(reader.integer()):
        reader.text()
        reader.text()


def categorical_variable(reader, level):
    reader.tag("CAVR")
    name, _, role, categories = reader.text(), reader.text(), reader.integer(), reader.integer()
    assert reader.integer() == level
    assert reader.integer() == level
    reader.tag({2: "CNEN", 3: "STEN"}[level])
    read = {2: reader.real, 3: reader.text}[level]
    values = [read() for _ in range(reader.integer())]
    assert len(values) == categories
    for _ in range(reader.integer()):
        reader.text()
    if reader.flag():
        {2: numeric_missing, 3: string_missing}[level](reader)
    return name, role, categories


def continuous_variable(reader):
    reader.tag("COVR")
    name, _, role, bins = reader.text(), reader.text(), reader.integer(), reader.integer()
    low, high = reader.reals(2)
    if reader.integer() == 1:
        reader.tag("BIEN")
        assert reader.integer() == bins
        reader.flag()
        cutpoints = reader.reals(bins - 1)
        assert cutpoints == sorted(cutpoints)
        assert low < cutpoints[0] and cutpoints[-1] < high
    if reader.flag():
        numeric_missing(reader)
    return name, role, bins


def variable_list(reader):
    reader.tag("NBVL")
    variables = []
    continuous = 0
    for _ in range(reader.integer()):
        level = reader.integer()
        continuous += level == 1
        variables.append(continuous_variable(reader) if level == 1 else categorical_variable(reader, level))
    assert reader.integers(2) == [continuous, len(variables) - continuous]
    return variables, reader.integer()


def test_a_classifier_is_what_the_pages_say(states):
    header, state = state_of(states / "bayes.state")
    assert header["command"] == "NAIVEBAYES"
    reader = Reader(state)
    reader.tag("NBAlgorithm 1.00")
    count, records = reader.integers(2)
    weight = reader.real()
    reader.integer()
    reader.real()
    assert reader.at == 44
    target, weights, unweighted, priors = target_table(reader)
    assert reader.at == 61 + 20 * len(weights)
    assert sum(unweighted) == records
    assert sum(weights) == weight
    assert priors == [pytest.approx((w + 1 / weight) / (weight + len(weights) / weight), rel=1e-14)
                      for w in weights]
    tables = [predictor_table(reader) for _ in range(count)]
    settings = reader.at
    reader.tag("NBS")
    reader.integers(1)
    assert reader.number("I") == 876543
    reader.integers(3)
    assert reader.at == settings + 23
    variables, target_index = variable_list(reader)
    assert reader.at == len(state), "nothing is left"

    assert target_index == target and variables[target][0] == "species"
    assert [name for name, _, _ in variables] == [column["name"] for column in header["columns"]]
    assert [index for index, _, _, _ in tables] == \
        [i for i, (_, role, _) in enumerate(variables) if role == 1]
    assert [position for _, position, _, _ in tables] == list(range(1, count + 1))
    for index, _, rows, probabilities in tables:
        assert len(rows) == variables[index][2]
        filled = [row for row in rows if sum(row) > 0]
        for k in range(len(weights)):
            column = sum(row[k] for row in rows)
            for row, formed in zip(rows, probabilities, strict=True):
                if sum(row) > 0:
                    assert formed[k] == pytest.approx(
                        (row[k] + 1 / weight) / (column + len(filled) / weight), rel=1e-14)


# The screening engine: screening-state.md.

def counts(reader):
    reader.tag("FSMII")
    return [(reader.integer(), reader.real()) for _ in range(reader.integer())]


def categories(reader):
    reader.tag("FSMII")
    entries = []
    for _ in range(reader.integer()):
        key, count = reader.integers(2)
        reader.integer()
        entries.append((key, count, reader.real()))
    return entries


def statistics(reader):
    reader.tag("FSMIS")
    return [(reader.integer(), reader.reals(4)) for _ in range(reader.integer())]


def pairs(reader):
    reader.tag("FSMPI")
    return [(reader.integers(2), reader.real()) for _ in range(reader.integer())]


def accumulator(reader, kind):
    """Weight of valid values, by the head and by the tables."""
    start = reader.at
    reader.tag({2: "CAPRA", 5: "COPRA"}[kind])
    processed, missing = reader.reals(2)
    if kind == 2:
        reader.integers(2)
        assert reader.at == start + 29
        by_predictor, by_target, cells = counts(reader), counts(reader), pairs(reader)
        sums = [sum(weight for _, weight in table) for table in (by_predictor, by_target, cells)]
        assert sums[0] == sums[1] == sums[2]
        return processed - missing, sums[0]
    reader.real()
    reader.integer()
    assert reader.at == start + 33
    reader.real()
    return processed - missing, sum(values[0] for _, values in statistics(reader))


def test_a_screening_is_what_the_page_says(states):
    header, state = state_of(states / "select.state")
    assert header["command"] == "SELECTPRED"
    reader = Reader(state)
    reader.tag("FSAlgorithm 1.00")
    reader.tag("FSSet")
    n = reader.integer()
    kinds = [reader.flag() for _ in range(n)]
    categorical, kind_of_set = reader.integers(2)
    assert categorical == sum(kinds)
    assert reader.flag(), "the target is categorical"
    for _ in range(6):
        reader.flag()
    reader.integers(2)
    reader.flag()
    reader.integers(4)
    for _ in range(6):
        reader.real()
        reader.flag()
    assert reader.at == 16 + 145 + 4 * n

    start = reader.at
    reader.tag("PRSET")
    assert reader.integers(2)[0] == n
    reader.real()
    assert reader.integers(2) == [kind_of_set, 7]
    assert [reader.flag() for _ in range(4)] == [True, True, False, True]
    weights = reader.reals(2)
    records = reader.integers(2)
    assert records[0] == weights[0]
    assert reader.at == start + 69
    deleted = reader.integer()
    indices = reader.integers(deleted)
    assert all(1 <= reason <= 8 for reason in reader.integers(deleted))
    assert reader.integer() == n
    for predictor in range(n):
        kind = reader.integer()
        assert kind == (0 if predictor in indices else 2 if kinds[predictor] else 5)
        if kind:
            by_head, by_table = accumulator(reader, kind)
            assert by_head == pytest.approx(by_table)
    assert reader.flag()
    assert sum(count for _, count, _ in categories(reader)) == records[0]
    orders = []
    for _ in range(6):
        order = []
        for _ in range(reader.integer()):
            reader.tag("FSPRS")
            order.append((reader.reals(3)[0], reader.integer()))
        orders.append(order)
    ranks = [reader.integers(reader.integer()) for _ in range(6)]
    values = [reader.reals(reader.integer()) for _ in range(6)]
    for order, rank, value in zip(orders, ranks, values, strict=True):
        assert len(rank) == len(value) == (n if order else 0)
        for place, (criterion, predictor) in enumerate(order):
            assert rank[predictor] in (place, -1)
            assert value[predictor] == criterion
    assert any(orders)
    assert reader.flag() and reader.flag()
    assert reader.at == len(state), "nothing is left"
