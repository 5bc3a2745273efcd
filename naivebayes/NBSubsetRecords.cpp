#include "naivebayes/NBSubsetRecords.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numbers>
#include <numeric>
#include <type_traits>
#include <variant>

#include "naivebayes/NBInterruptState.h"
#include "naivebayes/NBScaledProduct.h"

namespace {

/// The products of a piece stay in the processor's first cache while the candidates pass.
constexpr std::size_t kPieceRecords = 1024;
/// Fewer records of one share are not worth a piece of their own.
constexpr std::size_t kShortestRun = 32;
/// Row products that the logarithm of a record scored one by one is worth.
constexpr std::size_t kPlainCost = 32;
constexpr std::size_t kEmpty = static_cast<std::size_t>(-1);

/// A scaled product's entries below this power of 2 are let go; they would only slow the arithmetic
/// down.
constexpr std::int32_t kNothingExponent = -900;
/// A product whose scaled form lost this many powers of 2 is near underflow. While it did not, an
/// entry that was let go has no part in any sum: it is still below 2^-64 of the largest when the
/// next predictor takes that as far down as it may.
constexpr std::int32_t kNearUnderflow = kNothingExponent + 64 - NBSubsetModel::kLowestExponent;

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

}  // namespace

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
    fvShares.clear();
    NBEntryColumn::ReserveOf(fvShares, numExpected);
    fvSlots.clear();
    fvPieces.clear();
}

void NBSubsetRecords::Add(const MCCommon::Record& record,
                          const std::vector<std::int32_t>& positions, double share) {
    for (std::size_t table = 0; table < fvColumns.size(); ++table) {
        if (positions[table] < 0) continue;
        NBEntryColumn& column = fvColumns[table];
        column.Append(NBSubsetModel::Row(record[positions[table]], column.GetNumCategories()));
    }
    fvShares.push_back(share);
    ++fNumRecords;
}

void NBSubsetRecords::Add(const MCCommon::RecordBlock& block,
                          const std::vector<std::int32_t>& positions, std::int32_t weightPosition,
                          double factor) {
    const auto numRows = static_cast<std::size_t>(block.fRows);
    std::vector<std::uint8_t> keep(numRows, 1);
    if (weightPosition < 0) {
        fvShares.resize(fNumRecords + numRows, factor);
    } else {
        const double* const weights =
            NumbersOf(block.fvColumns[static_cast<std::size_t>(weightPosition)]);
        for (std::size_t i = 0; i < numRows; ++i) {
            keep[i] = weights[i] > 0.0 ? 1 : 0;
            fvShares.push_back(weights[i] * factor);
        }
    }
    const bool isWhole = std::find(keep.begin(), keep.end(), 0) == keep.end();
    if (!isWhole) NBEntryColumn::KeepOf(fvShares, fNumRecords, keep);
    for (std::size_t table = 0; table < fvColumns.size(); ++table) {
        if (positions[table] < 0) continue;
        NBEntryColumn& column = fvColumns[table];
        const std::uint32_t numCategories = column.GetNumCategories();
        std::visit(
            [&column, numCategories](const auto& values) {
                using Value = typename std::remove_cvref_t<decltype(values)>::element_type;
                column.Append(values, [numCategories](std::remove_const_t<Value> value) {
                    if constexpr (std::is_same_v<std::remove_const_t<Value>, double>) {
                        return NBSubsetModel::Row(value, numCategories);
                    } else {
                        return std::min(std::uint32_t{value}, numCategories);
                    }
                });
            },
            block.fvColumns[static_cast<std::size_t>(positions[table])].fValues);
        if (!isWhole) column.Keep(fNumRecords, keep);
    }
    fNumRecords = fvShares.size();
}

void NBSubsetRecords::Arrange() {
    fvPieces.clear();
    fNumSlots = 0;
    const bool isUniform = std::adjacent_find(fvShares.begin(), fvShares.end(),
                                              std::not_equal_to<>()) == fvShares.end();
    if (isUniform) {
        AppendPieces(fNumRecords, fvShares.empty() ? 0.0 : fvShares.front(), false);
        fvShares.clear();
    } else {
        const std::vector<std::size_t> order = SortByShare();
        const auto permute = [&order](auto& values) {
            std::remove_reference_t<decltype(values)> old(order.size());
            old.swap(values);
            for (std::size_t slot = 0; slot < order.size(); ++slot) {
                if (order[slot] != kEmpty) values[slot] = old[order[slot]];
            }
        };
        permute(fvShares);
        fvSlots.resize(fNumRecords);
        for (std::size_t slot = 0; slot < order.size(); ++slot) {
            if (order[slot] != kEmpty) fvSlots[order[slot]] = static_cast<std::uint32_t>(slot);
        }
        for (NBEntryColumn& column : fvColumns) {
            if (column.Size() > 0) std::visit(permute, column.GetEntries());
        }
    }
    for (NBEntryColumn& column : fvColumns) column.Resize(fNumSlots);
    Restart();
}

std::vector<std::size_t> NBSubsetRecords::SortByShare() {
    std::vector<std::size_t> records(fNumRecords);
    std::iota(records.begin(), records.end(), std::size_t{0});
    std::stable_sort(records.begin(), records.end(), [this](std::size_t left, std::size_t right) {
        return fvShares[left] < fvShares[right];
    });
    std::vector<std::size_t> order;
    std::vector<std::size_t> rare;
    for (auto first = records.begin(); first != records.end();) {
        const double share = fvShares[*first];
        const auto end = std::find_if(first, records.end(), [this, share](std::size_t record) {
            return fvShares[record] != share;
        });
        if (static_cast<std::size_t>(end - first) < kShortestRun) {
            rare.insert(rare.end(), first, end);
        } else {
            order.insert(order.end(), first, end);
            AppendPieces(static_cast<std::size_t>(end - first), share, false);
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

void NBSubsetRecords::AppendPieces(std::size_t count, double share, bool mixed) {
    // All but the last are whole groups.
    for (std::size_t done = 0; done < count; done += kPieceRecords) {
        Piece& piece = fvPieces.emplace_back();
        piece.fFirst = fNumSlots;
        piece.fCount = std::min(count - done, kPieceRecords);
        piece.fShare = share;
        piece.fbMixed = mixed;
        fNumSlots += RoundUp(piece.fCount);
    }
}

void NBSubsetRecords::Restart() {
    for (Piece& piece : fvPieces) piece.fbNearUnderflow = !fModel.IsModerate();
    if (!fModel.IsModerate()) return;
    const std::vector<double>& priors = fModel.GetPriors();
    const std::int32_t exponent = ExponentOf(*std::max_element(priors.begin(), priors.end()));
    const std::size_t width = fModel.GetWidth();
    std::vector<NBSubsetModel::Group> scaled(width);
    for (std::size_t k = 0; k < priors.size(); ++k) {
        scaled[k / 4].fValues[k % 4] = priors[k] * PowerOfTwo(-exponent);
    }
    // A factor of 1 in an empty slot.
    std::vector<NBSubsetModel::Group> empty(width);
    empty.front().fValues[0] = 1.0;
    fvProducts.resize(fNumSlots * width);
    fvExponents.assign(fNumSlots, exponent);
    for (Piece& piece : fvPieces) {
        piece.fExponent =
            static_cast<std::int64_t>(exponent) * static_cast<std::int64_t>(piece.fCount);
        for (std::size_t i = 0; i < RoundUp(piece.fCount); ++i) {
            const auto& groups = i < piece.fCount ? scaled : empty;
            std::copy(groups.begin(), groups.end(),
                      fvProducts.begin() + static_cast<std::ptrdiff_t>((piece.fFirst + i) * width));
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
void NBSubsetRecords::ForEachPiece(std::size_t cost, Begin begin, Visit visit, Finish finish) {
    InRounds(
        fvPieces.size(), kPieceRecords * std::max<std::size_t>(cost, 1), begin,
        [this, &visit](std::size_t first, std::size_t at, std::size_t end) {
            for (std::size_t i = at; i < end; ++i) visit(fvPieces[first + i], i);
        },
        finish);
}

void NBSubsetRecords::Join(std::int32_t table) {
    ForEachPiece(
        4, [](std::size_t) {},
        [this, table](Piece& piece, std::size_t) {
            if (!piece.IsPlain()) JoinPiece(piece, static_cast<std::size_t>(table));
        },
        [](std::size_t) {});
}

void NBSubsetRecords::JoinPiece(Piece& piece, std::size_t table) {
    const std::size_t stride = fModel.GetStride();
    const double* const rows = fModel.GetRows(table);
    const double nothing = PowerOfTwo(kNothingExponent);
    std::visit(
        [&](const auto& entries) {
            double* product = fvProducts[piece.fFirst * fModel.GetWidth()].fValues;
            for (std::size_t slot = piece.fFirst; slot < piece.fFirst + piece.fCount;
                 ++slot, product += stride) {
                const double* const row = rows + entries[slot] * stride;
                double largest = 0.0;
                for (std::size_t k = 0; k < stride; ++k) {
                    product[k] *= row[k];
                    largest = std::max(largest, product[k]);
                }
                const std::int32_t exponent = ExponentOf(largest);
                const double scale = PowerOfTwo(-exponent);
                for (std::size_t k = 0; k < stride; ++k) {
                    const double scaled = product[k] * scale;
                    product[k] = scaled < nothing ? 0.0 : scaled;
                }
                fvExponents[slot] += exponent;
                piece.fExponent += exponent;
                if (fvExponents[slot] < kNearUnderflow) piece.fbNearUnderflow = true;
            }
        },
        fvColumns[table].GetEntries());
}

double NBSubsetRecords::Score(const std::vector<std::int32_t>& selected) {
    std::vector<double> scores;
    Score(selected, {-1}, scores);
    return scores.front();
}

void NBSubsetRecords::Score(const std::vector<std::int32_t>& selected,
                            const std::vector<std::int32_t>& candidates,
                            std::vector<double>& scoresOut) {
    scoresOut.assign(candidates.size(), 0.0);
    const bool hasPlain = std::any_of(fvPieces.begin(), fvPieces.end(),
                                      [](const Piece& piece) { return piece.IsPlain(); });
    std::vector<double> scores;  // of the pieces of a round
    ForEachPiece(
        candidates.size() * (hasPlain ? kPlainCost : 1),
        [&](std::size_t count) { scores.assign(count * candidates.size(), 0.0); },
        [&](const Piece& piece, std::size_t i) {
            ScorePiece(piece, selected, candidates, scores.data() + i * candidates.size());
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
                                 const std::vector<std::int32_t>& candidates,
                                 double* scores) const {
    if (piece.IsPlain()) return ScorePlainly(piece, selected, candidates, scores);
    // A predictor that is missing everywhere stands for none.
    static constexpr std::array<std::uint8_t, kPieceRecords> kNoEntries{};
    constexpr std::size_t kSafeRunOfNone = 16;
    const double* const products = fvProducts[piece.fFirst * fModel.GetWidth()].fValues;
    for (std::size_t c = 0; c < candidates.size(); ++c) {
        NBScaledProduct product;
        const auto multiply = [&](const auto* entries, const double* rows, std::size_t safeRun) {
            using Entry = std::remove_cvref_t<decltype(*entries)>;
            product = NBMixtures::Product(NBMixtures::Operands<Entry>{
                products, entries, rows, fModel.GetWidth(), RoundUp(piece.fCount), safeRun});
        };
        if (candidates[c] < 0) {
            multiply(kNoEntries.data(), fModel.GetRows(0), kSafeRunOfNone);
        } else {
            const auto table = static_cast<std::size_t>(candidates[c]);
            std::visit(
                [&](const auto& entries) {
                    multiply(entries.data() + piece.fFirst, fModel.GetRows(table),
                             fModel.GetSafeRun(table));
                },
                fvColumns[table].GetEntries());
        }
        const auto exponent = static_cast<double>(product.fExponent + piece.fExponent);
        scores[c] = piece.fShare * (std::log(product.fMantissa) + exponent * std::numbers::ln2);
    }
}

void NBSubsetRecords::ScorePlainly(const Piece& piece, const std::vector<std::int32_t>& selected,
                                   const std::vector<std::int32_t>& candidates,
                                   double* scores) const {
    std::vector<double> product(fModel.GetNumTargets());
    for (std::size_t slot = piece.fFirst; slot < piece.fFirst + piece.fCount; ++slot) {
        const double share = piece.fbMixed ? fvShares[slot] : piece.fShare;
        ScoreSlot(slot, share, selected, candidates, product, scores);
    }
}

void NBSubsetRecords::ScoreSlot(std::size_t slot, double share,
                                const std::vector<std::int32_t>& selected,
                                const std::vector<std::int32_t>& candidates,
                                std::vector<double>& product, double* scores) const {
    const std::vector<double>& priors = fModel.GetPriors();
    const auto rowOf = [this, slot](std::int32_t table) {
        const auto at = static_cast<std::size_t>(table);
        return fModel.GetRows(at) + fvColumns[at][slot] * fModel.GetStride();
    };
    std::fill(product.begin(), product.end(), 1.0);
    for (const std::int32_t table : selected) {
        const double* const row = rowOf(table);
        for (std::size_t k = 0; k < product.size(); ++k) product[k] *= row[k];
    }
    for (std::size_t c = 0; c < candidates.size(); ++c) {
        const double* const row = candidates[c] < 0 ? fModel.GetRows(0) : rowOf(candidates[c]);
        double sum = 0.0;
        for (std::size_t k = 0; k < product.size(); ++k) sum += product[k] * row[k] * priors[k];
        scores[c] += share * std::log(sum);
    }
}

void NBSubsetRecords::ScoreInOrder(const std::vector<std::int32_t>& selected,
                                   const std::vector<std::int32_t>& candidates,
                                   std::vector<double>& scoresOut) const {
    const std::size_t numCandidates = candidates.size();
    scoresOut.assign(numCandidates, 0.0);
    // The terms of a round, by record; only their logarithms are worth several threads.
    std::vector<double> terms;
    InRounds(
        fNumRecords, 1 + selected.size() + numCandidates * kPlainCost,
        [&](std::size_t count) { terms.assign(count * numCandidates, 0.0); },
        [&](std::size_t first, std::size_t at, std::size_t end) {
            std::vector<double> product(fModel.GetNumTargets());
            for (std::size_t i = at; i < end; ++i) {
                const std::size_t slot = fvSlots.empty() ? first + i : fvSlots[first + i];
                const double share = fvSlots.empty() ? fvPieces.front().fShare : fvShares[slot];
                ScoreSlot(slot, share, selected, candidates, product,
                          terms.data() + i * numCandidates);
            }
        },
        [&](std::size_t count) {
            for (std::size_t i = 0; i < count; ++i) {
                for (std::size_t c = 0; c < numCandidates; ++c) {
                    scoresOut[c] += terms[i * numCandidates + c];
                }
            }
        });
}
