#include "naivebayes/data/NBBlockBinning.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "host/Records.h"
#include "naivebayes/data/NBBinningEncoder.h"

namespace {

/// More cutpoints are searched than counted.
constexpr std::size_t kMostCounted = 32;
constexpr std::size_t kPiece = 256;

}  // namespace

NBBlockBinning::NBBlockBinning(const NBBinningEncoder* encoder) : fpEncoder(encoder) {
    if (encoder == nullptr) return;
    fvCutpoints = encoder->GetCutpoints();
    // Without cutpoints there are two bins all the same.
    fEntryEnd = static_cast<std::uint32_t>(std::max<std::size_t>(fvCutpoints.size(), 1)) + 2;
    fbByCounting = !fvCutpoints.empty() && fvCutpoints.size() <= kMostCounted &&
                   encoder->GetUserMissing() == nullptr &&
                   std::is_sorted(fvCutpoints.begin(), fvCutpoints.end()) &&
                   std::none_of(fvCutpoints.begin(), fvCutpoints.end(),
                                [](double cutpoint) { return std::isnan(cutpoint); });
    if (!fbByCounting) return;
    // Of several equal cutpoints the search meets the middle one first.
    bool exceptions = false;
    for (const double cutpoint : fvCutpoints) {
        const double code = encoder->Encode(cutpoint);
        const auto below = std::lower_bound(fvCutpoints.begin(), fvCutpoints.end(), cutpoint) -
                           fvCutpoints.begin();
        exceptions = exceptions || code != static_cast<double>(below);
        fvEqual.push_back(static_cast<Entry>(code + 1.0));
    }
    if (!exceptions) fvEqual.clear();
}

void NBBlockBinning::Encode(std::span<const double> values, Entry* entriesOut) const {
    if (fbByCounting) {
        EncodeByCounting(values, entriesOut);
    } else if (fpEncoder == nullptr) {
        std::fill_n(entriesOut, values.size(), Entry{0});
    } else {
        std::transform(values.begin(), values.end(), entriesOut, [this](double value) {
            return static_cast<Entry>(fpEncoder->Encode(value) + 1.0);
        });
    }
}

void NBBlockBinning::EncodeByCounting(std::span<const double> values, Entry* entriesOut) const {
    std::array<double, kPiece> entries;
    for (std::size_t first = 0; first < values.size(); first += kPiece) {
        const std::size_t count = std::min(kPiece, values.size() - first);
        const double* const piece = values.data() + first;
        // Counted in doubles: as wide as what they are counted from.
        for (std::size_t i = 0; i < count; ++i) entries[i] = 1.0;
        for (const double cutpoint : fvCutpoints) {
            for (std::size_t i = 0; i < count; ++i) {
                entries[i] += piece[i] <= cutpoint ? 0.0 : 1.0;
            }
        }
        for (std::size_t i = 0; i < count; ++i) {
            const double entry = piece[i] == MCMV::gMissingValue ? 0.0 : entries[i];
            entriesOut[first + i] = static_cast<Entry>(static_cast<std::int32_t>(entry));
        }
        if (fvEqual.empty()) continue;
        for (std::size_t i = 0; i < count; ++i) {
            Entry& entry = entriesOut[first + i];
            if (entry > 0 && entry <= fvCutpoints.size() && fvCutpoints[entry - 1U] == piece[i]) {
                entry = fvEqual[entry - 1U];
            }
        }
    }
}
