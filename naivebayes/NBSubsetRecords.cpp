#include "naivebayes/NBSubsetRecords.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <type_traits>
#include <variant>

#include "naivebayes/NBDoubleDouble.h"
#include "naivebayes/NBExactMixtures.h"
#include "naivebayes/NBGridLog.h"
#include "naivebayes/NBInterruptState.h"
#include "naivebayes/NBScaledProduct.h"

namespace {

/// The products of a piece stay in the processor's first cache while the candidates pass.
constexpr std::size_t kPieceRecords = 1024;
/// Fewer records of one weight are not worth a piece of their own.
constexpr std::size_t kShortestRun = 32;
/// Row products that the logarithm of a record scored one by one is worth, and an exact one.
constexpr std::size_t kPlainCost = 32;
constexpr std::size_t kExactCost = 16;
constexpr std::int32_t kTargetPosition = 0;  // in a prepared record
constexpr std::size_t kEmpty = static_cast<std::size_t>(-1);

/// A product whose scaled form lost this many powers of 2 is near underflow. While it did not, an
/// entry that was let go has no part in any sum: it is still below 2^-64 of the largest when the
/// next predictor takes that as far down as it may.
constexpr std::int32_t kNearUnderflow =
    NBExactMixtures::kNothingExponent + 64 - NBSubsetModel::kLowestExponent;
/// A plain sum from here on is that of its true terms but for rounding: those that were too small
/// for a double's full precision have no part in it.
constexpr double kFullPrecision = 0x1p-960;

std::int32_t ExponentOf(double positive) {
    return static_cast<std::int32_t>(std::bit_cast<std::uint64_t>(positive) >> 52) - 1023;
}

double PowerOfTwo(std::int32_t exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + 1023) << 52);
}

std::size_t RoundUp(std::size_t count) {
    return (count + NBMixtures::kGroup - 1) / NBMixtures::kGroup * NBMixtures::kGroup;
}

/// Numbers as a span of doubles, or null for a column of codes.
const double* NumbersOf(const MCCommon::BlockColumn& column) {
    const auto* numbers = std::get_if<MCCommon::BlockColumn::Numbers>(&column.fValues);
    return numbers == nullptr ? nullptr : numbers->data();
}

/// A positive number of any size, or 0: fNumber * 2^fExponent.
struct ScaledNumber {
    NBDoubleDouble fNumber;
    std::int64_t fExponent = 0;

    explicit ScaledNumber(const NBDoubleDouble& number) : fNumber(number) { Scale(); }
    void Multiply(const NBDoubleDouble& factor) {
        const ScaledNumber other(factor);
        fNumber = fNumber * other.fNumber;
        fExponent += other.fExponent;
        Scale();
    }
    /// From 1/2 to 1.
    void Scale() {
        int exponent = 0;
        fNumber.fHigh = std::frexp(fNumber.fHigh, &exponent);
        fNumber.fLow = std::ldexp(fNumber.fLow, -exponent);
        fExponent += exponent;
    }
};

/// The sum, of which one at least is not 0.
ScaledNumber SumOf(const std::vector<ScaledNumber>& numbers) {
    constexpr std::int64_t kNoPart = 1000;
    std::int64_t largest = std::numeric_limits<std::int64_t>::min();
    for (const ScaledNumber& number : numbers) {
        if (number.fNumber.fHigh > 0.0) largest = std::max(largest, number.fExponent);
    }
    NBDoubleDouble sum;
    for (const ScaledNumber& number : numbers) {
        const std::int64_t below = largest - number.fExponent;
        if (!(number.fNumber.fHigh > 0.0) || below > kNoPart) continue;
        const double scale = PowerOfTwo(static_cast<std::int32_t>(-below));
        sum = sum + NBDoubleDouble(number.fNumber.fHigh * scale, number.fNumber.fLow * scale);
    }
    ScaledNumber result(sum);
    result.fExponent += largest;
    return result;
}

}  // namespace

struct NBSubsetRecords::Scratch {
    std::vector<NBSubsetModel::Group> fvHigh;
    std::vector<NBSubsetModel::Group> fvLow;
    std::vector<std::int32_t> fvExponents;
    std::vector<std::int64_t> fvTops;
    std::vector<std::int64_t> fvRests;
};

NBSubsetRecords::NBSubsetRecords(const NBSubsetModel& model, NBInterruptState& interrupt,
                                 MCCommon::BlockExecutor* executor)
    : fModel(model), fInterrupt(interrupt), fpExecutor(executor) {
    Clear();
}

void NBSubsetRecords::Clear(std::size_t numExpected) {
    fNumRecords = 0;
    fNumSlots = 0;
    fvColumns.clear();
    for (std::size_t table = 0; table < fModel.GetNumTables(); ++table) {
        // With the empty slots behind the last record.
        fvColumns.emplace_back(fModel.GetNumCategories(table)).Reserve(RoundUp(numExpected));
    }
    fvTargets.clear();
    NBEntryColumn::ReserveOf(fvTargets, numExpected);
    fvWeights.clear();
    NBEntryColumn::ReserveOf(fvWeights, numExpected);
    fvPieces.clear();
}

void NBSubsetRecords::Add(const MCCommon::Record& record,
                          const std::vector<std::int32_t>& positions, double weight) {
    for (std::size_t table = 0; table < fvColumns.size(); ++table) {
        if (positions[table] < 0) continue;
        NBEntryColumn& column = fvColumns[table];
        column.Append(NBSubsetModel::Row(record[positions[table]], column.GetNumCategories()));
    }
    fvTargets.push_back(NBSubsetModel::Row(record[kTargetPosition],
                                           static_cast<std::uint32_t>(fModel.GetNumTargets())));
    fvWeights.push_back(weight);
    ++fNumRecords;
}

void NBSubsetRecords::Add(const MCCommon::RecordBlock& block,
                          const std::vector<std::int32_t>& positions, std::int32_t weightPosition) {
    const auto numRows = static_cast<std::size_t>(block.fRows);
    std::vector<std::uint8_t> keep(numRows, 1);
    if (weightPosition < 0) {
        fvWeights.resize(fNumRecords + numRows, 1.0);
    } else {
        const double* const weights =
            NumbersOf(block.fvColumns[static_cast<std::size_t>(weightPosition)]);
        for (std::size_t i = 0; i < numRows; ++i) {
            keep[i] = weights[i] > 0.0 ? 1 : 0;
            fvWeights.push_back(weights[i]);
        }
    }
    // The same for codes that come as numbers and for entries.
    const auto appender = [](std::uint32_t numCategories, auto append) {
        return [numCategories, append](const auto& values) {
            using Value = typename std::remove_cvref_t<decltype(values)>::element_type;
            append(values, [numCategories](std::remove_const_t<Value> value) {
                if constexpr (std::is_same_v<std::remove_const_t<Value>, double>) {
                    return NBSubsetModel::Row(value, numCategories);
                } else {
                    return std::min(std::uint32_t{value}, numCategories);
                }
            });
        };
    };
    const bool isWhole = std::find(keep.begin(), keep.end(), 0) == keep.end();
    std::visit(appender(static_cast<std::uint32_t>(fModel.GetNumTargets()),
                        [this](const auto& values, auto entry) {
                            for (const auto value : values) fvTargets.push_back(entry(value));
                        }),
               block.fvColumns[static_cast<std::size_t>(kTargetPosition)].fValues);
    if (!isWhole) {
        NBEntryColumn::KeepOf(fvWeights, fNumRecords, keep);
        NBEntryColumn::KeepOf(fvTargets, fNumRecords, keep);
    }
    for (std::size_t table = 0; table < fvColumns.size(); ++table) {
        if (positions[table] < 0) continue;
        NBEntryColumn& column = fvColumns[table];
        std::visit(
            appender(column.GetNumCategories(),
                     [&column](const auto& values, auto entry) { column.Append(values, entry); }),
            block.fvColumns[static_cast<std::size_t>(positions[table])].fValues);
        if (!isWhole) column.Keep(fNumRecords, keep);
    }
    fNumRecords = fvWeights.size();
}

void NBSubsetRecords::Arrange() {
    fvPieces.clear();
    fNumSlots = 0;
    fNumTargets = static_cast<std::size_t>(
        std::count_if(fvTargets.begin(), fvTargets.end(), [](std::uint32_t t) { return t != 0; }));
    fTotalWeight = std::accumulate(fvWeights.begin(), fvWeights.end(), 0.0);
    const bool isUniform = std::adjacent_find(fvWeights.begin(), fvWeights.end(),
                                              std::not_equal_to<>()) == fvWeights.end();
    if (isUniform) {
        AppendPieces(fNumRecords, fvWeights.empty() ? 0.0 : fvWeights.front(), false);
        fvWeights.clear();
    } else {
        const std::vector<std::size_t> order = SortByWeight();
        const auto permute = [&order](auto& values) {
            std::remove_reference_t<decltype(values)> old(order.size());
            old.swap(values);
            for (std::size_t slot = 0; slot < order.size(); ++slot) {
                if (order[slot] != kEmpty) values[slot] = old[order[slot]];
            }
        };
        permute(fvWeights);
        permute(fvTargets);
        for (NBEntryColumn& column : fvColumns) {
            if (column.Size() > 0) std::visit(permute, column.GetEntries());
        }
    }
    fvTargets.resize(fNumSlots);
    for (NBEntryColumn& column : fvColumns) column.Resize(fNumSlots);
    Restart();
}

std::vector<std::size_t> NBSubsetRecords::SortByWeight() {
    std::vector<std::size_t> records(fNumRecords);
    std::iota(records.begin(), records.end(), std::size_t{0});
    std::stable_sort(records.begin(), records.end(), [this](std::size_t left, std::size_t right) {
        return fvWeights[left] < fvWeights[right];
    });
    std::vector<std::size_t> order;
    std::vector<std::size_t> rare;
    for (auto first = records.begin(); first != records.end();) {
        const double weight = fvWeights[*first];
        const auto end = std::find_if(first, records.end(), [this, weight](std::size_t record) {
            return fvWeights[record] != weight;
        });
        if (static_cast<std::size_t>(end - first) < kShortestRun) {
            rare.insert(rare.end(), first, end);
        } else {
            order.insert(order.end(), first, end);
            AppendPieces(static_cast<std::size_t>(end - first), weight, false);
            order.resize(fNumSlots, kEmpty);
        }
        first = end;
    }
    std::sort(rare.begin(), rare.end());
    order.insert(order.end(), rare.begin(), rare.end());
    AppendPieces(rare.size(), 0.0, true);
    order.resize(fNumSlots, kEmpty);
    return order;
}

void NBSubsetRecords::AppendPieces(std::size_t count, double weight, bool mixed) {
    // All but the last are whole groups.
    for (std::size_t done = 0; done < count; done += kPieceRecords) {
        Piece& piece = fvPieces.emplace_back();
        piece.fFirst = fNumSlots;
        piece.fCount = std::min(count - done, kPieceRecords);
        piece.fWeight = weight;
        piece.fbMixed = mixed;
        fNumSlots += RoundUp(piece.fCount);
    }
}

void NBSubsetRecords::Restart() {
    for (Piece& piece : fvPieces) {
        piece.fbNearUnderflow = !fModel.IsModerate();
        piece.fbLetGo = false;
    }
    if (!fModel.IsModerate()) return;
    const std::vector<double>& priors = fModel.GetPriors();
    const std::int32_t exponent = ExponentOf(*std::max_element(priors.begin(), priors.end()));
    const double scale = PowerOfTwo(-exponent);
    const std::size_t width = fModel.GetWidth();
    std::vector<NBSubsetModel::Group> high(width);
    std::vector<NBSubsetModel::Group> low(width);
    for (std::size_t k = 0; k < priors.size(); ++k) {
        high[k / 4].fValues[k % 4] = fModel.GetExactPriors()[k].fHigh * scale;
        low[k / 4].fValues[k % 4] = fModel.GetExactPriors()[k].fLow * scale;
    }
    // A factor of 1 in an empty slot.
    std::vector<NBSubsetModel::Group> empty(width);
    empty.front().fValues[0] = 1.0;
    fvProducts.resize(fNumSlots * width);
    fvLowProducts.assign(fNumSlots * width, NBSubsetModel::Group());
    fvExponents.assign(fNumSlots, exponent);
    for (Piece& piece : fvPieces) {
        piece.fExponent =
            static_cast<std::int64_t>(exponent) * static_cast<std::int64_t>(piece.fCount);
        for (std::size_t i = 0; i < RoundUp(piece.fCount); ++i) {
            const auto at = static_cast<std::ptrdiff_t>((piece.fFirst + i) * width);
            const auto& groups = i < piece.fCount ? high : empty;
            std::copy(groups.begin(), groups.end(), fvProducts.begin() + at);
            if (i < piece.fCount) std::copy(low.begin(), low.end(), fvLowProducts.begin() + at);
        }
    }
}

template <class Begin, class Visit, class Finish>
void NBSubsetRecords::InRounds(std::size_t count, std::size_t work, Begin begin, Visit visit,
                               Finish finish) const {
    // In row products: a task is worth handing over, a round takes a few milliseconds.
    constexpr std::size_t kTaskWork = std::size_t{1} << 18;
    constexpr std::size_t kRoundWork = std::size_t{1} << 22;
    constexpr std::size_t kFewestTasks = 4;
    const std::size_t perTask = std::max<std::size_t>(kTaskWork / work, 1);
    const std::size_t perRound = perTask * std::max(kRoundWork / (perTask * work), kFewestTasks);
    for (std::size_t first = 0; first < count; first += perRound) {
        if (fInterrupt.IsStopped()) return;
        const std::size_t inRound = std::min(count - first, perRound);
        begin(inRound);
        const auto run = [first, inRound, perTask, &visit](std::int32_t task) {
            const std::size_t at = static_cast<std::size_t>(task) * perTask;
            visit(first, at, std::min(at + perTask, inRound));
        };
        const auto tasks = static_cast<std::int32_t>((inRound + perTask - 1) / perTask);
        if (fpExecutor != nullptr && tasks > 1) {
            fpExecutor->Run(tasks, run);
        } else {
            for (std::int32_t task = 0; task < tasks; ++task) run(task);
        }
        finish(inRound);
    }
}

template <class Begin, class Visit, class Finish>
void NBSubsetRecords::ForEachPiece(std::size_t cost, Begin begin, Visit visit,
                                   Finish finish) const {
    InRounds(
        fvPieces.size(), kPieceRecords * std::max<std::size_t>(cost, 1), begin,
        [&visit](std::size_t first, std::size_t at, std::size_t end) {
            for (std::size_t i = at; i < end; ++i) visit(first + i, i);
        },
        finish);
}

void NBSubsetRecords::Join(std::int32_t table) {
    ForEachPiece(
        4, [](std::size_t) {},
        [this, table](std::size_t piece, std::size_t) {
            if (!fvPieces[piece].fbNearUnderflow) {
                JoinPiece(fvPieces[piece], static_cast<std::size_t>(table));
            }
        },
        [](std::size_t) {});
}

void NBSubsetRecords::JoinPiece(Piece& piece, std::size_t table) {
    const std::size_t width = fModel.GetWidth();
    double* const high = fvProducts[piece.fFirst * width].fValues;
    double* const low = fvLowProducts[piece.fFirst * width].fValues;
    const auto first = fvExponents.begin() + static_cast<std::ptrdiff_t>(piece.fFirst);
    const auto end = first + static_cast<std::ptrdiff_t>(piece.fCount);
    std::visit(
        [&](const auto& entries) {
            piece.fbLetGo = NBExactMixtures::Multiply({high, low}, fModel.GetExactRows(table),
                                                      entries.data() + piece.fFirst, width,
                                                      piece.fCount, {high, low}, &*first);
        },
        fvColumns[table].GetEntries());
    piece.fExponent = std::accumulate(first, end, std::int64_t{0});
    piece.fbNearUnderflow = *std::min_element(first, end) < kNearUnderflow;
}

void NBSubsetRecords::Score(const std::vector<std::int32_t>& selected,
                            const std::vector<std::int32_t>& candidates, double factor,
                            std::vector<double>& scoresOut) {
    scoresOut.assign(candidates.size(), 0.0);
    const bool hasPlain = std::any_of(fvPieces.begin(), fvPieces.end(),
                                      [](const Piece& piece) { return piece.IsPlain(); });
    std::vector<double> scores;  // of the pieces of a round
    ForEachPiece(
        candidates.size() * (hasPlain ? kPlainCost : 1),
        [&](std::size_t count) { scores.assign(count * candidates.size(), 0.0); },
        [&](std::size_t piece, std::size_t i) {
            ScorePiece(fvPieces[piece], selected, candidates, factor,
                       scores.data() + i * candidates.size());
        },
        [&](std::size_t count) {
            for (std::size_t i = 0; i < count; ++i) {
                for (std::size_t c = 0; c < candidates.size(); ++c) {
                    scoresOut[c] += scores[i * candidates.size() + c];
                }
            }
        });
}

void NBSubsetRecords::ScorePiece(const Piece& piece, const std::vector<std::int32_t>& selected,
                                 const std::vector<std::int32_t>& candidates, double factor,
                                 double* scores) const {
    if (piece.IsPlain()) return ScorePlainly(piece, selected, candidates, factor, scores);
    const double* const products = fvProducts[piece.fFirst * fModel.GetWidth()].fValues;
    for (std::size_t c = 0; c < candidates.size(); ++c) {
        const auto table = static_cast<std::size_t>(candidates[c]);
        NBScaledProduct product;
        std::visit(
            [&](const auto& entries) {
                using Entry = typename std::remove_cvref_t<decltype(entries)>::value_type;
                product = NBMixtures::Product(NBMixtures::Operands<Entry>{
                    products, entries.data() + piece.fFirst, fModel.GetRows(table),
                    fModel.GetWidth(), RoundUp(piece.fCount), fModel.GetSafeRun(table)});
            },
            fvColumns[table].GetEntries());
        const auto exponent = static_cast<double>(product.fExponent + piece.fExponent);
        scores[c] =
            piece.fWeight * factor * (std::log(product.fMantissa) + exponent * std::numbers::ln2);
    }
}

void NBSubsetRecords::ScorePlainly(const Piece& piece, const std::vector<std::int32_t>& selected,
                                   const std::vector<std::int32_t>& candidates, double factor,
                                   double* scores) const {
    std::vector<double> product;
    for (std::size_t slot = piece.fFirst; slot < piece.fFirst + piece.fCount; ++slot) {
        Multiply(slot, selected, product);
        for (std::size_t c = 0; c < candidates.size(); ++c) {
            scores[c] +=
                WeightOf(piece, slot) * factor * std::log(Mixture(slot, candidates[c], product));
        }
    }
}

std::size_t NBSubsetRecords::RowAt(std::int32_t table, std::size_t slot) const {
    return fvColumns[static_cast<std::size_t>(table)][slot] * fModel.GetStride();
}

void NBSubsetRecords::Multiply(std::size_t slot, const std::vector<std::int32_t>& selected,
                               std::vector<double>& product) const {
    product.assign(fModel.GetNumTargets(), 1.0);
    for (const std::int32_t table : selected) {
        const double* const row =
            fModel.GetRows(static_cast<std::size_t>(table)) + RowAt(table, slot);
        for (std::size_t k = 0; k < product.size(); ++k) product[k] *= row[k];
    }
}

double NBSubsetRecords::Mixture(std::size_t slot, std::int32_t table,
                                const std::vector<double>& product) const {
    const std::vector<double>& priors = fModel.GetPriors();
    const double* const row =
        table == kNone ? fModel.GetRows(0)
                       : fModel.GetRows(static_cast<std::size_t>(table)) + RowAt(table, slot);
    double sum = 0.0;
    for (std::size_t k = 0; k < product.size(); ++k) sum += product[k] * row[k] * priors[k];
    return sum;
}

double NBSubsetRecords::ScoreError(std::size_t numSelected, double factor, double score) const {
    // With u the unit roundoff, K targets, s selected tables, d the largest relative error of a
    // probability of the plain rows, in first order:
    //   A record's sum. From products: u for the product, which was rounded from 106 bits, d for
    //   the row, u for their multiplication, at most (K / 4 + 2) u for adding terms of one sign.
    //   From codes: (s + 2) (d + u) for the factors, K u for adding. At most (s + 2) d + (s + K +
    //   6) u together, and so much in the record's logarithm. What was let go is below K * 2^-64.
    //   Near underflow from codes: the exact score takes the plain sum itself, where a term lost
    //   precision; so the two differ by the logarithm alone.
    //   A piece: u a record for multiplying the sums, that is for each unit of weight; its
    //   logarithm, one of a mantissa below 16 plus a multiple of log(2), 4 u of itself and 24 u;
    //   from codes 3 u of each logarithm, and an addition a record, at most kPieceRecords of them.
    //   All: an addition a piece, two multiplications.
    // Logarithms are all of one sign but for those of sums above 1, by rounding or empty
    // categories: these are below 1 for each unit of weight together.
    constexpr double kRoundoff = std::numeric_limits<double>::epsilon() / 2.0;
    const bool hasPlain = std::any_of(fvPieces.begin(), fvPieces.end(),
                                      [](const Piece& piece) { return piece.IsPlain(); });
    const auto factors = static_cast<double>(numSelected + 2);
    const double aRecord =
        factors * fModel.GetRounding() +
        (factors + static_cast<double>(fModel.GetNumTargets()) + 30.0) * kRoundoff;
    const double additions = static_cast<double>(fvPieces.size()) +
                             (hasPlain ? static_cast<double>(kPieceRecords) : 0.0) + 8.0;
    const double weight = std::abs(factor) * fTotalWeight;
    // A tenth for the second order.
    return 1.1 * (weight * aRecord + (std::abs(score) + weight) * additions * kRoundoff);
}

void NBSubsetRecords::ScoreExactly(const std::vector<std::int32_t>& selected,
                                   const std::vector<std::int32_t>& candidates, bool byTarget,
                                   std::vector<NBExactSum>& sumsOut) const {
    sumsOut.assign(candidates.size(), NBExactSum());
    const bool hasCodes = std::any_of(fvPieces.begin(), fvPieces.end(),
                                      [](const Piece& piece) { return piece.IsBeyondProducts(); });
    const std::size_t cost = kExactCost + (hasCodes ? kPlainCost * (1 + selected.size()) : 0);
    std::vector<NBExactSum> sums;  // of the pieces of a round
    ForEachPiece(
        candidates.size() * cost,
        [&](std::size_t count) { sums.assign(count * candidates.size(), NBExactSum()); },
        [&](std::size_t piece, std::size_t i) {
            Scratch scratch;
            for (std::size_t c = 0; c < candidates.size(); ++c) {
                ScorePieceExactly(fvPieces[piece], {selected, candidates[c], byTarget}, scratch,
                                  sums[i * candidates.size() + c]);
            }
        },
        [&](std::size_t count) {
            for (std::size_t i = 0; i < count * candidates.size(); ++i) {
                sumsOut[i % candidates.size()].AddSum(sums[i]);
            }
        });
}

void NBSubsetRecords::ScorePieceExactly(const Piece& piece, const Asked& asked, Scratch& scratch,
                                        NBExactSum& sum) const {
    if (piece.IsBeyondProducts()) return ScoreCodesExactly(piece, asked, sum);
    const std::size_t width = fModel.GetWidth();
    const std::size_t count = RoundUp(piece.fCount);
    const std::int32_t* exponents = fvExponents.data() + piece.fFirst;
    NBExactMixtures::ConstProducts products{fvProducts[piece.fFirst * width].fValues,
                                            fvLowProducts[piece.fFirst * width].fValues};
    if (asked.fCandidate != kNone) {
        const auto table = static_cast<std::size_t>(asked.fCandidate);
        scratch.fvHigh.resize(count * width);
        scratch.fvLow.resize(count * width);
        scratch.fvExponents.assign(exponents, exponents + count);
        const NBExactMixtures::Products tried{scratch.fvHigh[0].fValues, scratch.fvLow[0].fValues};
        const auto numFilled = static_cast<std::ptrdiff_t>(piece.fCount * width);
        const auto empty = static_cast<std::ptrdiff_t>(piece.fFirst * width) + numFilled;
        std::copy(
            fvProducts.begin() + empty,
            fvProducts.begin() + empty + static_cast<std::ptrdiff_t>(count * width) - numFilled,
            scratch.fvHigh.begin() + numFilled);
        std::fill(scratch.fvLow.begin() + numFilled, scratch.fvLow.end(), NBSubsetModel::Group());
        const bool hasLetGo = std::visit(
            [&](const auto& entries) {
                return NBExactMixtures::Multiply(products, fModel.GetExactRows(table),
                                                 entries.data() + piece.fFirst, width, piece.fCount,
                                                 tried, scratch.fvExponents.data());
            },
            fvColumns[table].GetEntries());
        if (hasLetGo) return ScoreCodesExactly(piece, asked, sum);
        products = {tried.fpHigh, tried.fpLow};
        exponents = scratch.fvExponents.data();
    }
    scratch.fvTops.resize(count);
    scratch.fvRests.resize(count);
    NBExactMixtures::Logs(products, asked.fbByTarget ? fvTargets.data() + piece.fFirst : nullptr,
                          exponents, width, count, {scratch.fvTops.data(), scratch.fvRests.data()});
    if (piece.fbMixed) {
        for (std::size_t i = 0; i < piece.fCount; ++i) {
            sum.Add(fvWeights[piece.fFirst + i],
                    NBGridLog::Units(scratch.fvTops[i], scratch.fvRests[i]));
        }
        return;
    }
    const auto sumOf = [&piece](const std::vector<std::int64_t>& numbers) {
        return std::accumulate(numbers.begin(),
                               numbers.begin() + static_cast<std::ptrdiff_t>(piece.fCount),
                               NBInt128{0});
    };
    sum.Add(piece.fWeight, NBGridLog::Units(sumOf(scratch.fvTops), sumOf(scratch.fvRests)));
}

void NBSubsetRecords::ScoreCodesExactly(const Piece& piece, const Asked& asked,
                                        NBExactSum& sum) const {
    for (std::size_t slot = piece.fFirst; slot < piece.fFirst + piece.fCount; ++slot) {
        AddRecordExactly(piece, slot, asked, sum);
    }
}

void NBSubsetRecords::AddRecordExactly(const Piece& piece, std::size_t slot, const Asked& asked,
                                       NBExactSum& sum) const {
    std::vector<ScaledNumber> products;
    for (const NBDoubleDouble& prior : fModel.GetExactPriors()) products.emplace_back(prior);
    const auto multiply = [&](std::int32_t table) {
        const auto rows = fModel.GetExactRows(static_cast<std::size_t>(table));
        const std::size_t row = RowAt(table, slot);
        for (std::size_t k = 0; k < products.size(); ++k) {
            products[k].Multiply(NBDoubleDouble(rows.fpHigh[row + k], rows.fpLow[row + k]));
        }
    };
    for (const std::int32_t table : asked.fvSelected) multiply(table);
    if (asked.fCandidate != kNone) multiply(asked.fCandidate);
    const auto mixture = [&] {
        if (!piece.fbNearUnderflow) return SumOf(products);
        // Only where a double holds the plain sum.
        std::vector<double> plainProduct;
        Multiply(slot, asked.fvSelected, plainProduct);
        const double plain = Mixture(slot, asked.fCandidate, plainProduct);
        return plain >= kFullPrecision ? SumOf(products) : ScaledNumber(NBDoubleDouble(plain));
    }();
    const std::uint32_t target = asked.fbByTarget ? fvTargets[slot] : 0;
    const ScaledNumber own = target > 0 ? products[target - 1] : ScaledNumber(NBDoubleDouble(1.0));
    if (!(mixture.fNumber.fHigh >= 0.0) || !(own.fNumber.fHigh > 0.0)) return sum.AddNoNumber();
    if (mixture.fNumber.fHigh == 0.0) return sum.AddLogOfZero();
    sum.Add(WeightOf(piece, slot),
            NBGridLog::Log(mixture.fNumber / own.fNumber, mixture.fExponent - own.fExponent));
}
