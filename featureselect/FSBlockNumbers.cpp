#include "featureselect/FSBlockNumbers.h"

#include <algorithm>
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

}  // namespace

FSBlockNumbers::FSBlockNumbers(const FSBlockCases& cases, bool lines, bool columns) {
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
        Settle(cases, lines, columns);
    }
    std::sort(fvOdd.begin(), fvOdd.end());
}

// One attempt; records that turn out odd are dropped for the next one.
void FSBlockNumbers::Settle(const FSBlockCases& cases, bool lines, bool columns) {
    const auto drop = [this](std::uint32_t row) {
        fvCounts[row] = 0;
        fvOdd.push_back(row);
    };
    const bool numbers = cases.fTarget == FSBlockCases::kContinuous;
    const std::size_t before = fvOdd.size();
    if (lines || numbers || !cases.fbUnit) {
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

void FSBlockNumbers::Order(const FSBlockCases& cases) {
    fvEnds.assign(cases.Classes(), 0);
    for (std::size_t row = 0; row < fvCounts.size(); ++row) {
        if (fvCounts[row] != 0) ++fvEnds[cases.fClasses[row]];
    }
    std::size_t end = 0;
    std::vector<std::size_t> next;
    for (std::size_t& size : fvEnds) {
        next.push_back(end);
        end += size;
        size = end;
    }
    fbAsTheyStand = end == fvCounts.size() && fvEnds.size() == 1;
    fvRows.clear();
    if (!fbAsTheyStand) {
        fvRows.resize(end);
        for (std::size_t row = 0; row < fvCounts.size(); ++row) {
            if (fvCounts[row] == 0) continue;
            fvRows[next[cases.fClasses[row]]++] = static_cast<std::uint32_t>(row);
        }
    }
    fvWeights.clear();
    if (!cases.fbUnit) {
        for (std::size_t place = 0; place < end; ++place) {
            fvWeights.push_back(cases.fWeights[RowAt(place)]);
        }
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
    if (cases.fbUnit) {
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
    const std::size_t first = group == 0 ? 0 : fNumbers.EndOf(group - 1);
    const std::span<const double> values = fvValues.subspan(first, fNumbers.EndOf(group) - first);
    if (values.empty()) return;
    if (fNumbers.Weights().empty()) {
        AddUnit(first, values, moments, missing);
    } else {
        AddWeighted(first, values, moments, missing);
    }
}

void FSOrderedColumn::AddUnit(std::size_t first, std::span<const double> values, FSMoments& moments,
                              FSWeightSum& missing) {
    FSFixedSums::Seen seen;
    FSFixedSums::Add(values, fRange, moments.fSum, moments.fSquares, seen);
    moments.fWeight += static_cast<double>(seen.fValid - seen.fvOdd.size());
    missing += static_cast<double>(values.size() - seen.fValid);
    const std::vector<std::uint32_t> apart = RowsAt(first, seen.fvOdd);
    fvApart.insert(fvApart.end(), apart.begin(), apart.end());
}

// sum w x = sum high + sum low; sum w x^2 = sum high x + sum low x.
void FSOrderedColumn::AddWeighted(std::size_t first, std::span<const double> values,
                                  FSMoments& moments, FSWeightSum& missing) {
    FSFixedSums::AddSum(fHigh, first, values.size(), moments.fSum);
    FSFixedSums::AddSum(fLow, first, values.size(), moments.fSum);
    FSFixedSums::Seen seen;
    FSFixedSums::AddProducts(values, fRange, fHigh, first, moments.fSquares, seen);
    FSFixedSums::Seen again;
    FSFixedSums::AddProducts(values, fRange, fLow, first, moments.fSquares, again);
    std::vector<std::uint32_t> rows;
    for (std::size_t place = 0; place < values.size(); ++place) {
        if (values[place] != MCMV::gMissingValue) rows.push_back(fNumbers.RowAt(first + place));
    }
    fNumbers.Lines().AddWeight(fNumbers.Lines().SumOf(rows).data(), moments.fWeight);
    // Those set apart are not missing.
    const std::vector<std::uint32_t> without = RowsAt(first, seen.fvMissing);
    rows.clear();
    for (const std::uint32_t row : without) {
        if (!std::binary_search(fvApart.begin(), fvApart.end(), row)) rows.push_back(row);
    }
    fNumbers.Lines().AddWeight(fNumbers.Lines().SumOf(rows).data(), missing);
}

void FSOrderedColumn::AddPairs(FSPairMoments& pairs, FSWeightSum& missing) {
    FSMoments x;
    FSFixedSums::Seen seen;
    const bool unit = fNumbers.Weights().empty();
    if (unit) {
        FSFixedSums::Add(fvValues, fRange, fNumbers.TargetHigh(), x.fSum, x.fSquares, pairs.fXY,
                         seen);
    } else {
        AddMoments(0, x, missing);
        FSFixedSums::AddProducts(fvValues, fRange, fNumbers.TargetHigh(), 0, pairs.fXY, seen);
        FSFixedSums::Seen again;
        FSFixedSums::AddProducts(fvValues, fRange, fNumbers.TargetLow(), 0, pairs.fXY, again);
    }
    // The target over the records that have a value: over all, less those that have none or are
    // set apart.
    FSMoments without;
    const std::vector<std::uint32_t> rows = RowsAt(0, seen.fvMissing);
    fNumbers.Lines().AddMoments(fNumbers.Lines().SumOf(rows).data(), without);
    if (unit) {
        missing += without.fWeight;
        const std::vector<std::uint32_t> apart = RowsAt(0, seen.fvOdd);
        fNumbers.Lines().AddMoments(fNumbers.Lines().SumOf(apart).data(), without);
        fvApart.insert(fvApart.end(), apart.begin(), apart.end());
    }
    FSMoments y = fNumbers.Target();
    y -= without;
    pairs.fWeight += y.fWeight;
    pairs.fX += x.fSum;
    pairs.fXX += x.fSquares;
    pairs.fY += y.fSum;
    pairs.fYY += y.fSquares;
}
