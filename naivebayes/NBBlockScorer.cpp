#include "naivebayes/NBBlockScorer.h"

#include <algorithm>
#include <limits>
#include <type_traits>
#include <variant>

#include "naivebayes/NBWinner.h"
#include "naivebayes/NBayesInput.h"
#include "naivebayes/NBayesOutput.h"
#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBBinningEncoder.h"
#include "naivebayes/data/NBDataPreparator.h"

namespace {

/// More bins are scored record by record.
using BinEntry = std::uint16_t;
constexpr std::size_t kTaskRows = 4096;
/// Running products at a time: they stay in the nearest cache while all predictors pass.
constexpr std::size_t kProducts = 2048;

/// products[i] *= the factors of entries[i], width numbers each. A width of 0 is that of run time.
template <std::size_t kWidth, class Entry>
void Multiply(const Entry* entries, std::size_t rows, const double* factors, std::size_t ofRunTime,
              double* products) {
    const std::size_t width = kWidth > 0 ? kWidth : ofRunTime;
    for (std::size_t i = 0; i < rows; ++i) {
        const double* const of = factors + std::size_t{entries[i]} * width;
        double* const to = products + i * width;
        for (std::size_t k = 0; k < width; k += 2) {
            // Two at a time, whatever the width is.
            to[k] *= of[k];
            to[k + 1] *= of[k + 1];
        }
    }
}

}  // namespace

struct NBBlockScorer::Scratch {
    Scratch(std::size_t rows, std::size_t width)
        : fvProducts(rows * width), fvValid(rows), fvRefused(rows), fvEntries(rows) {}

    std::size_t fRows = 0;                // in use
    std::vector<double> fvProducts;       // by record, then by target category
    std::vector<std::uint8_t> fvValid;    // by record: above 0 when a predictor is valid
    std::vector<std::uint8_t> fvRefused;  // by record: 1 when a code is out of range
    std::vector<BinEntry> fvEntries;
    std::vector<double> fvPosteriors;
    std::vector<std::size_t> fvTies;
};

NBBlockScorer::NBBlockScorer(const NBDataPreparator& preparator,
                             const std::vector<NBayesInput>& tables, const NBayesOutput& target,
                             const MCCommon::RecordBlock& block)
    : fBlock(block),
      fTarget(target),
      fCategories(target.GetPi().size()),
      fWidth(fCategories + fCategories % 2) {
    std::size_t continuous = 0;
    fvPredictors.reserve(tables.size());
    for (std::size_t i = 0; i < tables.size() && fbUsable; ++i) {
        std::optional<NBBlockBinning> binning;
        if (preparator.GetInputMeasureLevels()[i] == NBMeasureLevel::kContinuous) {
            binning.emplace(preparator.GetCollapsedEncoders()[continuous++].get());
        }
        fbUsable = AddPredictor(preparator, i, tables[i], binning ? &*binning : nullptr);
    }
}

bool NBBlockScorer::AddPredictor(const NBDataPreparator& preparator, std::size_t input,
                                 const NBayesInput& table, const NBBlockBinning* binning) {
    Predictor& predictor = fvPredictors.emplace_back();
    const auto variable = static_cast<std::size_t>(preparator.GetInputIndices()[input]);
    predictor.fColumn = fBlock.fvColumns[variable];
    const bool isContinuous = binning != nullptr;
    if (isContinuous == predictor.fColumn.IsCategorical()) return false;
    std::uint32_t end = predictor.fColumn.fEntryEnd;
    if (isContinuous) {
        end = binning->GetEntryEnd();
        if (end - 1 > std::numeric_limits<BinEntry>::max()) return false;
        predictor.fBinning = *binning;
        predictor.fValidEnd = end;
    } else {
        predictor.fValidEnd =
            static_cast<std::uint32_t>(preparator.GetInputNumCategories()[input]) + 1;
    }
    predictor.fvFactors.assign(std::size_t{end} * fWidth, 1.0);
    const std::vector<std::vector<double>>& rows = table.GetProbabilities();
    for (std::size_t entry = 1; entry < end && entry < predictor.fValidEnd; ++entry) {
        // A code that its table lacks, which only damaged states have, is taken for the last one.
        const std::size_t last = static_cast<std::size_t>(table.GetNumCategories()) - 1;
        std::copy_n(rows[std::min(entry - 1, last)].begin(), fCategories,
                    predictor.fvFactors.begin() + static_cast<std::ptrdiff_t>(entry * fWidth));
    }
    return true;
}

void NBBlockScorer::Score(MCCommon::BlockExecutor* executor, NBBlockScores& scores) const {
    scores.Reset(fBlock.fRows, static_cast<std::int32_t>(fCategories));
    const std::size_t tasks = (scores.fRows + kTaskRows - 1) / kTaskRows;
    const auto task = [&](std::int32_t number) {
        const std::size_t first = static_cast<std::size_t>(number) * kTaskRows;
        ScoreRows(first, std::min(first + kTaskRows, scores.fRows), scores);
    };
    if (executor != nullptr) {
        executor->Run(static_cast<std::int32_t>(tasks), task);
        return;
    }
    for (std::size_t number = 0; number < tasks; ++number) task(static_cast<std::int32_t>(number));
}

void NBBlockScorer::ScoreRows(std::size_t first, std::size_t end, NBBlockScores& scores) const {
    const std::size_t atATime = std::max<std::size_t>(kProducts / fWidth, 16);
    Scratch scratch(atATime, fWidth);
    const std::vector<double>& priors = fTarget.GetPi();
    for (; first < end; first += atATime) {
        scratch.fRows = std::min(atATime, end - first);
        for (std::size_t i = 0; i < scratch.fRows; ++i) {
            std::copy(priors.begin(), priors.end(),
                      scratch.fvProducts.begin() + static_cast<std::ptrdiff_t>(i * fWidth));
        }
        std::fill(scratch.fvValid.begin(), scratch.fvValid.end(), std::uint8_t{0});
        std::fill(scratch.fvRefused.begin(), scratch.fvRefused.end(), std::uint8_t{0});
        MultiplyFactors(first, scratch);
        for (std::size_t i = 0; i < scratch.fRows; ++i) FinishRow(first + i, i, scratch, scores);
    }
}

void NBBlockScorer::MultiplyFactors(std::size_t first, Scratch& scratch) const {
    for (const Predictor& predictor : fvPredictors) {
        std::visit(
            [&](const auto values) {
                using Value = std::remove_const_t<typename decltype(values)::element_type>;
                const auto rows = values.subspan(first, scratch.fRows);
                if constexpr (std::is_same_v<Value, double>) {
                    predictor.fBinning->Encode(rows, predictor.fValidEnd - 1,
                                               scratch.fvEntries.data());
                    MultiplyFactors(predictor, scratch.fvEntries.data(), scratch);
                } else {
                    MultiplyFactors(predictor, rows.data(), scratch);
                }
            },
            predictor.fColumn.fValues);
    }
}

template <class Entry>
void NBBlockScorer::MultiplyFactors(const Predictor& predictor, const Entry* entries,
                                    Scratch& scratch) const {
    const double* const factors = predictor.fvFactors.data();
    double* const products = scratch.fvProducts.data();
    if (fWidth == 2) {
        Multiply<2>(entries, scratch.fRows, factors, fWidth, products);
    } else if (fWidth == 4) {
        Multiply<4>(entries, scratch.fRows, factors, fWidth, products);
    } else {
        Multiply<0>(entries, scratch.fRows, factors, fWidth, products);
    }
    std::uint8_t* const valid = scratch.fvValid.data();
    if (predictor.fColumn.fEntryEnd <= predictor.fValidEnd) {
        for (std::size_t i = 0; i < scratch.fRows; ++i) {
            valid[i] = static_cast<std::uint8_t>(valid[i] | (entries[i] != 0 ? 1 : 0));
        }
        return;
    }
    for (std::size_t i = 0; i < scratch.fRows; ++i) {
        if (entries[i] >= predictor.fValidEnd) {
            scratch.fvRefused[i] = 1;
        } else if (entries[i] != 0) {
            valid[i] = 1;
        }
    }
}

void NBBlockScorer::FinishRow(std::size_t row, std::size_t inScratch, Scratch& scratch,
                              NBBlockScores& scores) const {
    std::vector<double>& posteriors = scratch.fvPosteriors;
    if (scratch.fvValid[inScratch] == 0) {
        posteriors = fTarget.GetPi();
        scores.fvStates[row] = NBScoreState::kByPriors;
    } else if (scratch.fvRefused[inScratch] != 0) {
        return;
    } else {
        const auto from =
            scratch.fvProducts.begin() + static_cast<std::ptrdiff_t>(inScratch * fWidth);
        posteriors.assign(from, from + static_cast<std::ptrdiff_t>(fCategories));
        double sum = 0.0;
        for (const double product : posteriors) sum += product;
        for (double& product : posteriors) product /= sum;
        scores.fvStates[row] = NBScoreState::kScored;
    }
    scores.fvWinners[row] = NBFindWinner(posteriors, fTarget.GetWeightedCounts(), scratch.fvTies);
    for (std::size_t k = 0; k < fCategories; ++k) {
        scores.fvPosteriors[k * scores.fRows + row] = posteriors[k];
    }
}
