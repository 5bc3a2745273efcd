#ifndef PREDSEL_NAIVEBAYES_NBBLOCKSCORES_H
#define PREDSEL_NAIVEBAYES_NBBLOCKSCORES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "host/Records.h"

enum class NBScoreState : std::uint8_t {
    kScored,
    kByPriors,  // no predictor was valid: the result is the priors
    kRefused    // a code is out of range: no result
};

/// What the records of a block scored.
struct NBBlockScores {
    /// Most records that a block to be scored should have, so that the results stay small.
    static std::int32_t MostRows(std::int32_t numCategories) {
        constexpr std::int32_t kResults = 1 << 20;
        return std::clamp(kResults / std::max(numCategories, 1), 1 << 10, 1 << 16);
    }

    /// No results yet.
    void Reset(std::int32_t rows, std::int32_t numCategories) {
        fRows = static_cast<std::size_t>(rows);
        fvStates.assign(fRows, NBScoreState::kRefused);
        fvWinners.assign(fRows, -1);
        fvPosteriors.assign(fRows * static_cast<std::size_t>(numCategories), MCMV::gMissingValue);
    }
    /// Of one target category, by record. The missing value where there is no result.
    std::span<const double> Posteriors(std::int32_t category) const {
        return std::span(fvPosteriors).subspan(static_cast<std::size_t>(category) * fRows, fRows);
    }

    std::size_t fRows = 0;
    std::vector<NBScoreState> fvStates;   // by record
    std::vector<std::int32_t> fvWinners;  // by record; -1 where there is no result
    std::vector<double> fvPosteriors;     // by target category, then by record
};

#endif  // PREDSEL_NAIVEBAYES_NBBLOCKSCORES_H
