#include "featureselect/FSBlockNumbers.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "featureselect/FSDoubleDouble.h"
#include "host/Records.h"

namespace {

// w * x as the sum of two doubles, for some values; missing ones stay missing. Positions of values
// whose product is not such a sum, being infinite or too small, come out in odd.
void Weighted(std::span<const double> values, std::span<const double> weights,
              std::vector<double>& high, std::vector<double>& low, FSFixedSums::Rows& odd) {
    constexpr double kSmallest = 0x1p-900;
    high.resize(values.size());
    low.resize(values.size());
    for (std::size_t at = 0; at < values.size(); ++at) {
        const FSDoubleDouble product = FSDoubleDouble::ExactProduct(values[at], weights[at]);
        const bool isMissing = values[at] == MCMV::gMissingValue;
        const bool isOdd =
            !isMissing && values[at] != 0.0 &&
            !(std::abs(product.High()) >= kSmallest && std::isfinite(product.High()));
        if (isOdd) odd.push_back(static_cast<std::uint32_t>(at));
        high[at] = isMissing || isOdd ? MCMV::gMissingValue : product.High();
        low[at] = isMissing || isOdd ? MCMV::gMissingValue : product.Low();
    }
}

// The weight of so many records.
FSWeightSum Times(double weight, std::size_t records) {
    const auto count = static_cast<double>(records);
    if (std::floor(weight) == weight && weight * count < 0x1p53) return weight * count;
    FSExactSum sum;
    sum.AddProduct(weight, count);
    FSWeightSum weights;
    weights += sum;
    return weights;
}

/// The different weights of the records of a block, if they are few.
class WeightSizes {
 public:
    WeightSizes(const FSBlockCases& cases, std::span<const std::uint8_t> counts) {
        if (cases.fbUnit) return;
        fvWeights.clear();
        fvAt.resize(cases.Rows());
        for (std::size_t row = 0; fbFew && row < cases.Rows(); ++row) {
            if (counts[row] != 0) fvAt[row] = Find(cases.fWeights[row]);
        }
        // Short runs are not worth it.
        fbFew = fbFew && fvWeights.size() * cases.Classes() * kShortestRun <= cases.Rows();
        if (!fbFew || fvWeights.empty()) {
            fvAt.clear();
            fvWeights.assign(1, 1.0);
        }
    }

    bool AreFew() const { return fbFew; }
    std::size_t Count() const { return fvWeights.size(); }
    double WeightOf(std::size_t size) const { return fvWeights[size]; }
    std::size_t At(std::size_t row) const { return fvAt.empty() ? 0 : fvAt[row]; }

 private:
    static constexpr std::size_t kShortestRun = 64;
    static constexpr std::size_t kSlots = 1024;  // a power of two
    static constexpr std::size_t kMost = 256;

    // The number of a weight, in a table by a hash of its bits.
    std::uint16_t Find(double weight) {
        const std::uint64_t bits = std::bit_cast<std::uint64_t>(weight);
        constexpr std::uint64_t kGolden = 0x9E3779B97F4A7C15;
        for (std::uint64_t slot = bits * kGolden >> 54;; slot = (slot + 1) % kSlots) {
            std::uint16_t& number = fSlots[slot];
            if (number == 0) {
                fvWeights.push_back(weight);
                number = static_cast<std::uint16_t>(fvWeights.size());
                fbFew = fvWeights.size() < kMost;
            }
            if (fvWeights[number - 1U] == weight) return static_cast<std::uint16_t>(number - 1);
        }
    }

    bool fbFew = true;
    std::vector<double> fvWeights{1.0};
    std::vector<std::uint16_t> fvAt;             // by row; empty when there is one
    std::array<std::uint16_t, kSlots> fSlots{};  // number of a weight plus 1
};

}  // namespace

FSBlockNumbers::FSBlockNumbers(const FSBlockCases& cases, bool columns) {
    fvCounts.resize(cases.Rows());
    for (std::size_t row = 0; row < cases.Rows(); ++row) fvCounts[row] = cases.Counts(row) ? 1 : 0;
    const bool numbers = cases.fTarget == FSBlockCases::kContinuous;
    if (numbers || !cases.fbUnit) {
        for (std::size_t row = 0; row < cases.Rows(); ++row) {
            if (fvCounts[row] == 0) continue;
            if (std::isfinite(cases.fWeights[row]) &&
                (!numbers || std::isfinite(cases.fTargets[row]))) {
                continue;
            }
            fvCounts[row] = 0;
            fvOdd.push_back(static_cast<std::uint32_t>(row));
        }
    }
    // A grid without the odd records may have odd ones of its own; in the end none.
    for (std::size_t known = fvOdd.size() + 1; known != fvOdd.size();) {
        known = fvOdd.size();
        Settle(cases, columns);
    }
    std::sort(fvOdd.begin(), fvOdd.end());
}

// One attempt; records that turn out odd are dropped for the next one.
void FSBlockNumbers::Settle(const FSBlockCases& cases, bool columns) {
    const auto drop = [this](std::uint32_t row) {
        fvCounts[row] = 0;
        fvOdd.push_back(row);
    };
    const bool numbers = cases.fTarget == FSBlockCases::kContinuous;
    const std::size_t before = fvOdd.size();
    if (numbers || !cases.fbUnit) {
        fLines = FSRowLines(cases.fWeights, numbers ? cases.fTargets : std::span<const double>(),
                            fvCounts);
        for (const std::uint32_t row : fLines.Odd()) drop(row);
        if (fvOdd.size() != before) return;
    }
    if (!columns) return;
    Order(cases);
    if (!numbers) return;
    TakeTargets(cases);
    if (fvOdd.size() != before) return;
    std::vector<std::uint32_t> all(Counted());
    for (std::size_t place = 0; place < all.size(); ++place) all[place] = RowAt(place);
    fTarget = {};
    fLines.AddMoments(fLines.SumOf(all).data(), fTarget);
}

// The records that count by class, and by weight where there are few weights.
void FSBlockNumbers::Order(const FSBlockCases& cases) {
    const WeightSizes sizes(cases, fvCounts);
    const std::size_t many = sizes.Count();
    std::vector<std::size_t> ends(cases.Classes() * many);
    const auto runOf = [&](std::size_t row) {
        return std::size_t{cases.fClasses[row]} * many + sizes.At(row);
    };
    for (std::size_t row = 0; row < fvCounts.size(); ++row) {
        if (fvCounts[row] != 0) ++ends[runOf(row)];
    }
    fvRuns.clear();
    fvRunEnds.clear();
    std::vector<std::size_t> next;
    std::size_t end = 0;
    for (std::size_t run = 0; run < ends.size(); ++run) {
        next.push_back(end);
        if (run % many == 0) fvRunEnds.push_back(fvRuns.size());
        if (ends[run] == 0) continue;
        ++fvRunEnds.back();
        fvRuns.push_back({sizes.WeightOf(run % many), end, end + ends[run]});
        end = fvRuns.back().fEnd;
    }
    fbAsTheyStand = end == fvCounts.size() && fvRuns.size() == 1;
    fvRows.clear();
    if (!fbAsTheyStand) {
        // Records that do not count go to a place of their own, behind the others.
        fvRows.resize(end + 1);
        next.push_back(end);
        const std::size_t aside = ends.size();
        for (std::size_t row = 0; row < fvCounts.size(); ++row) {
            const std::size_t run = fvCounts[row] != 0 ? runOf(row) : aside;
            fvRows[next[run]] = static_cast<std::uint32_t>(row);
            next[run] += run != aside ? 1 : 0;
        }
        fvRows.pop_back();
    }
    fvWeights.clear();
    if (sizes.AreFew()) return;
    for (std::size_t place = 0; place < end; ++place) {
        fvWeights.push_back(cases.fWeights[RowAt(place)]);
    }
}

void FSBlockNumbers::TakeTargets(const FSBlockCases& cases) {
    std::vector<double> scratch;
    const std::span<const double> targets = InOrder(cases.fTargets, scratch);
    FSFixedSums::Rows odd;
    const auto split = [&](std::span<const double> numbers, FSFixedSums::Limbs& limbs) {
        const FSFixedSums::Range range = FSFixedSums::RangeOf(numbers);
        if (!range.fbPlain) {
            for (std::size_t at = 0; at < numbers.size(); ++at) {
                odd.push_back(static_cast<std::uint32_t>(at));
            }
            return;
        }
        limbs = FSFixedSums::Split(numbers, range);
        odd.insert(odd.end(), limbs.fvOdd.begin(), limbs.fvOdd.end());
    };
    if (fvWeights.empty()) {
        split(targets, fHigh);
    } else {
        std::vector<double> high;
        std::vector<double> low;
        Weighted(targets, fvWeights, high, low, odd);
        split(high, fHigh);
        split(low, fLow);
    }
    std::sort(odd.begin(), odd.end());
    odd.erase(std::unique(odd.begin(), odd.end()), odd.end());
    for (const std::uint32_t place : odd) {
        const std::uint32_t row = RowAt(place);
        fvCounts[row] = 0;
        fvOdd.push_back(row);
    }
}

std::span<const double> FSBlockNumbers::InOrder(std::span<const double> column,
                                                std::vector<double>& scratch) const {
    if (fbAsTheyStand) return column;
    scratch.resize(fvRows.size());
    for (std::size_t place = 0; place < fvRows.size(); ++place) {
        scratch[place] = column[fvRows[place]];
    }
    return scratch;
}

FSOrderedColumn::FSOrderedColumn(std::span<const double> column, const FSBlockNumbers& numbers)
    : fNumbers(numbers), fvValues(numbers.InOrder(column, fvScratch)) {
    fRange = FSFixedSums::RangeOf(fvValues);
    if (fRange.fbPlain && !numbers.Weights().empty()) Weigh();
}

// The weighted values on their grids. Those that one of the grids does not hold become missing
// values here and are set apart.
void FSOrderedColumn::Weigh() {
    std::vector<double> high;
    std::vector<double> low;
    FSFixedSums::Rows odd;
    do {
        odd.clear();
        Weighted(fvValues, fNumbers.Weights(), high, low, odd);
        const FSFixedSums::Range highRange = FSFixedSums::RangeOf(high);
        const FSFixedSums::Range lowRange = FSFixedSums::RangeOf(low);
        if (!highRange.fbPlain || !lowRange.fbPlain) {
            fRange.fbPlain = false;
            return;
        }
        fHigh = FSFixedSums::Split(high, highRange);
        fLow = FSFixedSums::Split(low, lowRange);
        odd.insert(odd.end(), fHigh.fvOdd.begin(), fHigh.fvOdd.end());
        odd.insert(odd.end(), fLow.fvOdd.begin(), fLow.fvOdd.end());
        const FSFixedSums::Limbs plain = FSFixedSums::Split(fvValues, fRange);
        odd.insert(odd.end(), plain.fvOdd.begin(), plain.fvOdd.end());
        std::sort(odd.begin(), odd.end());
        odd.erase(std::unique(odd.begin(), odd.end()), odd.end());
        if (odd.empty()) {
            std::sort(fvApart.begin(), fvApart.end());
            return;
        }
        if (fvScratch.data() != fvValues.data()) fvScratch.assign(fvValues.begin(), fvValues.end());
        for (const std::uint32_t place : odd) {
            fvApart.push_back(fNumbers.RowAt(place));
            fvScratch[place] = MCMV::gMissingValue;
        }
        fvValues = fvScratch;
    } while (true);
}

std::vector<std::uint32_t> FSOrderedColumn::RowsAt(std::size_t first,
                                                   const FSFixedSums::Rows& places) const {
    std::vector<std::uint32_t> rows;
    rows.reserve(places.size());
    for (const std::uint32_t place : places) rows.push_back(fNumbers.RowAt(first + place));
    return rows;
}

void FSOrderedColumn::AddMoments(std::size_t group, FSMoments& moments, FSWeightSum& missing) {
    for (const FSBlockNumbers::Run& run : fNumbers.RunsOf(group)) {
        if (fNumbers.Weights().empty()) {
            AddRun(run, moments, missing);
        } else {
            AddWeighted(run, moments, missing);
        }
    }
}

void FSOrderedColumn::AddRun(const FSBlockNumbers::Run& run, FSMoments& moments,
                             FSWeightSum& missing) {
    FSFixedSums::Seen seen;
    const std::size_t rows = run.fEnd - run.fFirst;
    if (run.fWeight == 1.0) {
        FSFixedSums::Add(ValuesOf(run), fRange, moments.fSum, moments.fSquares, seen);
    } else {
        FSExactSum sum;
        FSExactSum squares;
        FSFixedSums::Add(ValuesOf(run), fRange, sum, squares, seen);
        const FSExactSum weight(run.fWeight);
        moments.fSum += weight * sum;
        moments.fSquares += weight * squares;
    }
    moments.fWeight += Times(run.fWeight, seen.fValid - seen.fvOdd.size());
    missing += Times(run.fWeight, rows - seen.fValid);
    const std::vector<std::uint32_t> apart = RowsAt(run.fFirst, seen.fvOdd);
    fvApart.insert(fvApart.end(), apart.begin(), apart.end());
}

// sum w x = sum high + sum low; sum w x^2 = sum high x + sum low x.
void FSOrderedColumn::AddWeighted(const FSBlockNumbers::Run& run, FSMoments& moments,
                                  FSWeightSum& missing) {
    const std::span<const double> values = ValuesOf(run);
    FSFixedSums::AddSum(fHigh, run.fFirst, values.size(), moments.fSum);
    FSFixedSums::AddSum(fLow, run.fFirst, values.size(), moments.fSum);
    FSFixedSums::Seen seen;
    FSFixedSums::AddProducts(values, fRange, fHigh, run.fFirst, moments.fSquares, seen);
    FSFixedSums::Seen again;
    FSFixedSums::AddProducts(values, fRange, fLow, run.fFirst, moments.fSquares, again);
    const FSRowLines& lines = fNumbers.Lines();
    std::vector<std::uint32_t> rows;
    for (std::size_t place = 0; place < values.size(); ++place) {
        if (values[place] != MCMV::gMissingValue) {
            rows.push_back(fNumbers.RowAt(run.fFirst + place));
        }
    }
    lines.AddWeight(lines.SumOf(rows).data(), moments.fWeight);
    // Those set apart are not missing.
    rows.clear();
    for (const std::uint32_t row : RowsAt(run.fFirst, seen.fvMissing)) {
        if (!std::binary_search(fvApart.begin(), fvApart.end(), row)) rows.push_back(row);
    }
    lines.AddWeight(lines.SumOf(rows).data(), missing);
}

void FSOrderedColumn::AddRunPairs(const FSBlockNumbers::Run& run, FSPairMoments& pairs,
                                  FSFixedSums::Rows& missing) {
    FSFixedSums::Seen seen;
    const auto add = [&](FSExactSum& sum, FSExactSum& squares, FSExactSum& products) {
        FSFixedSums::Add(ValuesOf(run), fRange, fNumbers.TargetHigh(), run.fFirst, sum, squares,
                         products, seen);
    };
    if (run.fWeight == 1.0) {
        add(pairs.fX, pairs.fXX, pairs.fXY);
    } else {
        FSExactSum sum;
        FSExactSum squares;
        FSExactSum products;
        add(sum, squares, products);
        const FSExactSum weight(run.fWeight);
        pairs.fX += weight * sum;
        pairs.fXX += weight * squares;
        pairs.fXY += weight * products;
    }
    const std::vector<std::uint32_t> rows = RowsAt(run.fFirst, seen.fvMissing);
    missing.insert(missing.end(), rows.begin(), rows.end());
    const std::vector<std::uint32_t> apart = RowsAt(run.fFirst, seen.fvOdd);
    fvApart.insert(fvApart.end(), apart.begin(), apart.end());
}

void FSOrderedColumn::AddPairs(FSPairMoments& pairs, FSWeightSum& missing) {
    const FSRowLines& lines = fNumbers.Lines();
    FSMoments without;  // of the target, over records without a value or set apart
    if (fNumbers.Weights().empty()) {
        FSFixedSums::Rows rows;
        for (const FSBlockNumbers::Run& run : fNumbers.Runs()) AddRunPairs(run, pairs, rows);
        lines.AddMoments(lines.SumOf(rows).data(), without);
        missing += without.fWeight;
        lines.AddMoments(lines.SumOf(fvApart).data(), without);
    } else {
        FSMoments x;
        AddMoments(0, x, missing);
        pairs.fX += x.fSum;
        pairs.fXX += x.fSquares;
        FSFixedSums::Seen seen;
        FSFixedSums::AddProducts(fvValues, fRange, fNumbers.TargetHigh(), 0, pairs.fXY, seen);
        FSFixedSums::Seen again;
        FSFixedSums::AddProducts(fvValues, fRange, fNumbers.TargetLow(), 0, pairs.fXY, again);
        lines.AddMoments(lines.SumOf(RowsAt(0, seen.fvMissing)).data(), without);
    }
    FSMoments y = fNumbers.Target();
    y -= without;
    pairs.fWeight += y.fWeight;
    pairs.fY += y.fSum;
    pairs.fYY += y.fSquares;
}
