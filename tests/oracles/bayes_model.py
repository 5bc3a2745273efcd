"""An independent model of the classifier, from its formulas: tables, smoothing, search and scores.

Plain NumPy over whole columns. Nothing here comes from the program; the one thing that the two
share is the Mersenne Twister, which both libraries have."""

from dataclasses import dataclass, field

import numpy
import pandas

MISSING = -1


def uniforms(seed: int):
    """Reals in the open unit interval from the Mersenne Twister, (32 bits + 0.5) / 2^32."""
    state = numpy.random.RandomState(seed)
    while True:
        for number in state.randint(0, 2**32, size=4096, dtype=numpy.uint32):
            yield (float(number) + 0.5) / 2.0**32


@dataclass
class Setup:
    target: str
    factors: list[str]
    covariates: list[str]
    forced_factors: list[str] = field(default_factory=list)
    forced_covariates: list[str] = field(default_factory=list)
    weight: str | None = None
    percent: float | None = None
    train_variable: str | None = None
    max_size: int | None = None  # None: the default rule
    exact_size: int | None = None
    no_selection: bool = False
    test_data: bool = False
    bins: int = 10
    memory: float = 1024.0
    seed: int = 2026


@dataclass
class Table:
    """One predictor: its counts by category and target category, and how values become codes."""

    name: str
    continuous: bool
    codes: numpy.ndarray  # of every case, MISSING where there is none
    values: numpy.ndarray | None = None
    cuts: numpy.ndarray | None = None
    counts: numpy.ndarray | None = None
    probabilities: numpy.ndarray | None = None

    def smooth(self, threshold):
        filled = int((self.counts.sum(axis=1) > 0).sum())
        if filled < 1:
            self.probabilities = numpy.full_like(self.counts, threshold)
        else:
            columns = self.counts.sum(axis=0)
            self.probabilities = (self.counts + threshold) / (columns + filled * threshold)
        return filled

    def scoring_codes(self):
        """Bins without a training case are joined to their neighbours."""
        if not self.continuous:
            return self.codes
        filled = numpy.flatnonzero(self.counts.sum(axis=1) > 0)
        # Each filled bin reaches to the middle between its upper border and the lower border of the
        # next filled one; the outermost ones reach as far as there are numbers.
        borders = [
            (self.cuts[here] + self.cuts[after - 1]) * 0.5
            for here, after in zip(filled[:-1], filled[1:])
        ]
        codes = filled[numpy.searchsorted(borders, self.values, side="left")]
        return numpy.where(self.codes == MISSING, MISSING, codes)


class Model:
    def __init__(self, frame: pandas.DataFrame, setup: Setup):
        self.setup = setup
        delivered = numpy.ones(len(frame), bool)
        weight = numpy.ones(len(frame))
        if setup.weight:
            raw = frame[setup.weight].to_numpy(float)
            delivered = ~numpy.isnan(raw) & (raw > 0)
            weight = numpy.floor(numpy.where(delivered, raw, 0.0) + 0.5)
        self.delivered = delivered
        self.weight = numpy.where(weight > 0, weight, numpy.nan)

        train = numpy.ones(len(frame), bool)
        if setup.percent is not None:
            source = uniforms(setup.seed)
            draws = numpy.array([next(source) for _ in range(len(frame))])
            train = setup.percent * 0.01 > draws
        elif setup.train_variable:
            train = frame[setup.train_variable].to_numpy(float) == 1.0
        self.train = train & delivered
        self.test = ~train & delivered

        # What the first pass sees settles categories and ranges.
        seen = self.train & frame[setup.target].notna().to_numpy()
        self.num_read = int(seen.sum())
        self.classes, self.target = self.categories(frame[setup.target], seen)
        self.k = len(self.classes)

        self.constant, self.empty = [], []
        # Candidates come before forced predictors, both in file order.
        order = list(frame.columns)
        candidates = self.describe(frame, seen, setup.factors, setup.covariates, order)
        forced = self.describe(frame, seen, setup.forced_factors, setup.forced_covariates, order)
        self.tables = candidates + forced
        self.forced = [t.name for t in forced]
        self.candidates = [t.name for t in candidates]
        self.num_record_variables = (
            1 + (setup.weight is not None)
            + len(setup.factors) + len(setup.covariates)
            + len(setup.forced_factors) + len(setup.forced_covariates)
        )  # fmt: skip
        self.usable = self.complete(self.train)
        self.train_tables()

    def categories(self, column, seen):
        classes = sorted(column[seen].dropna().unique())
        numbers = {value: code for code, value in enumerate(classes)}
        codes = numpy.array([numbers.get(v, MISSING) if pandas.notna(v) else MISSING for v in column])
        return classes, codes

    def describe(self, frame, seen, factors, covariates, order):
        tables = []
        for name in sorted([*factors, *covariates], key=order.index):
            column = frame[name]
            if name in factors:
                classes, codes = self.categories(column, seen)
                if len(classes) < 2:
                    (self.constant if classes else self.empty).append(name)
                    continue
                table = Table(name, False, codes)
                table.counts = numpy.zeros((len(classes), self.k))
            else:
                values = column.to_numpy(float)
                valid = values[seen & ~numpy.isnan(values)]
                if len(valid) == 0 or valid.min() == valid.max():
                    (self.constant if len(valid) else self.empty).append(name)
                    continue
                low, high = valid.min(), valid.max()
                width = (high - low) / self.setup.bins
                cuts = numpy.arange(1, self.setup.bins) * width + low
                codes = numpy.searchsorted(cuts, values, side="left")
                codes = numpy.where(numpy.isnan(values), MISSING, codes)
                table = Table(name, True, codes, values, cuts)
                table.counts = numpy.zeros((self.setup.bins, self.k))
            tables.append(table)
        return tables

    def complete(self, sample):
        """Cases of a sample that training and testing can use."""
        any_input = numpy.zeros(len(sample), bool)
        for table in self.tables:
            any_input |= table.codes != MISSING
        return sample & (self.target != MISSING) & ~numpy.isnan(self.weight) & any_input

    def train_tables(self):
        used = self.usable
        t, w = self.target[used], self.weight[used]
        self.n = w.sum()
        self.num_used = int(used.sum())
        self.class_weight = numpy.bincount(t, w, self.k)
        threshold = 1.0 / self.n
        filled = (self.class_weight > 0).sum()
        self.priors = (threshold + self.class_weight) / (self.n + filled * threshold)
        kept = []
        for table in self.tables:
            codes = table.codes[used]
            valid = codes != MISSING
            numpy.add.at(table.counts, (codes[valid], t[valid]), w[valid])
            if table.smooth(threshold) >= 2:
                kept.append(table)
        self.tables = kept

    def joint(self, table, counts, total):
        mask = counts > 0
        return (counts[mask] * numpy.log(table.probabilities[mask])).sum() / total

    def factor(self, table, codes):
        """A row of probabilities by target category a case; ones where the code is missing."""
        rows = table.probabilities[numpy.maximum(codes, 0)]
        return numpy.where((codes == MISSING)[:, None], 1.0, rows)

    def fits(self):
        limit = int(self.setup.memory * 1024.0 / (self.num_record_variables * 8 + 16))
        return limit >= self.num_read

    def max_size(self):
        setup, forced = self.setup, self.num_forced
        total = len(self.tables)
        if setup.exact_size is not None:
            return forced + setup.exact_size
        if setup.max_size is not None:
            return min(forced + setup.max_size, total)
        allowed = 20 if total * 0.2 < 20 else total // 5
        return min(forced + min(allowed, 100), total)

    @property
    def num_forced(self):
        return sum(t.name in self.forced for t in self.tables)

    def simulated(self, source):
        """Codes of records drawn from the model, a row of tables each."""
        drawn = numpy.zeros((1000, len(self.tables)), int)
        for record in drawn:
            u, k = next(source), 0
            while k < self.k - 1 and u > self.priors[k]:
                u -= self.priors[k]
                k += 1
            for j, table in enumerate(self.tables):
                u, m, rows = next(source), 0, len(table.probabilities)
                while m < rows and u > table.probabilities[m, k]:
                    u -= table.probabilities[m, k]
                    m += 1
                record[j] = min(m, rows - 1)
        return drawn

    def search(self):
        """Sets chain (table names), size, likelihood {size: value}, criterion {size: value}."""
        forced = [j for j, t in enumerate(self.tables) if t.name in self.forced]
        candidates = [j for j in range(len(self.tables)) if j not in forced]
        if self.setup.no_selection:
            self.chain = [t.name for t in self.tables]
            self.size = len(self.chain)
            self.likelihood, self.criterion = {}, {}
            return self
        used, n = self.usable, self.n
        real = [t.codes[used] for t in self.tables]
        w = self.weight[used]
        fits = self.fits()
        source = uniforms(876543)
        own = [self.joint(t, t.counts, n) for t in self.tables]
        joint = (self.class_weight[self.class_weight > 0]
                 * numpy.log(self.priors[self.class_weight > 0])).sum() / n  # fmt: skip
        joint += sum(own[j] for j in forced)
        chain, joints = list(forced), {len(forced): joint}
        likelihood = {}
        while len(chain) < self.max_size() and candidates:
            # Where the records are not kept, each step draws new ones from the same sequence.
            codes = real if fits else list(self.simulated(source).T)
            weights = w if fits else numpy.ones(1000)
            base = numpy.tile(self.priors, (len(weights), 1))
            for j in chain:
                base = base * self.factor(self.tables[j], codes[j])
            logs = [numpy.log((base * self.factor(self.tables[c], codes[c])).sum(axis=1)) for c in candidates]
            scores = [
                joint + own[c] - (weights * log).sum() / weights.sum()
                for c, log in zip(candidates, logs)
            ]
            best = int(numpy.argmax(scores))
            winner = candidates.pop(best)
            chain.append(winner)
            joint += own[winner]
            joints[len(chain)] = joint
            likelihood[len(chain)] = scores[best]
        self.chain = [self.tables[j].name for j in chain]
        self.criterion = {}
        if self.setup.exact_size is not None:
            self.size = len(chain)
        elif self.setup.test_data:
            self.criterion = self.test_criterion(chain, len(forced))
        else:
            base = numpy.tile(self.priors, (len(w), 1))
            for size in range(0, len(chain) + 1):
                if size:
                    j = chain[size - 1]
                    base = base * self.factor(self.tables[j], real[j])
                if size >= max(len(forced), 1):
                    likelihood[size] = joints[size] - (w * numpy.log(base.sum(axis=1))).sum() / n
            self.criterion = {
                s: s * 0.5 * numpy.log(n) / n - likelihood[s]
                for s in range(max(len(forced), 1), len(chain) + 1)
            }
        if self.criterion:
            self.size = min(self.criterion, key=lambda s: (self.criterion[s], s))
        self.likelihood = likelihood
        return self

    def test_criterion(self, chain, forced):
        used = self.complete(self.test)
        w, t = self.weight[used], self.target[used]
        total = w.sum()
        base = numpy.tile(self.priors, (len(w), 1))
        observed = numpy.log(self.priors[t])
        result = {}
        for size in range(0, len(chain) + 1):
            if size:
                table = self.tables[chain[size - 1]]
                rows = self.factor(table, table.codes[used])
                base = base * rows
                observed = observed + numpy.log(rows[numpy.arange(len(t)), t])
            if size >= max(forced, 1):
                result[size] = (w * (numpy.log(base.sum(axis=1)) - observed)).sum() / total
        return result

    def score(self):
        """(posteriors, predicted class codes, cases with a valid predictor) of all cases."""
        chosen = [t for t in self.tables if t.name in self.chain[: self.size]]
        product = numpy.tile(self.priors, (len(self.target), 1))
        any_input = numpy.zeros(len(self.target), bool)
        for table in chosen:
            codes = table.scoring_codes()
            product = product * self.factor(table, codes)
            any_input |= codes != MISSING
        posterior = product / product.sum(axis=1, keepdims=True)
        posterior = numpy.where(any_input[:, None], posterior, self.priors)
        return posterior, posterior.argmax(axis=1), any_input

    def classification(self, sample):
        _, winner, any_input = self.score()
        used = sample & (self.target != MISSING) & ~numpy.isnan(self.weight) & any_input
        matrix = numpy.zeros((self.k, self.k))
        numpy.add.at(matrix, (self.target[used], winner[used]), self.weight[used])
        return matrix
