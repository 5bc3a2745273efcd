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
        fvEqual.push_back(static_cast<std::uint32_t>(code + 1.0));
    }
    if (!exceptions) fvEqual.clear();
}

template <class Entry>
void NBBlockBinning::Encode(std::span<const double> values, std::uint32_t highest,
                            Entry* entriesOut) const {
    if (fbByCounting) {
        EncodeByCounting(values, highest, entriesOut);
    } else if (fpEncoder == nullptr) {
        std::fill_n(entriesOut, values.size(), Entry{0});
    } else {
        std::transform(values.begin(), values.end(), entriesOut, [&](double value) {
            const auto entry = static_cast<std::uint32_t>(fpEncoder->Encode(value) + 1.0);
            return static_cast<Entry>(std::min(entry, highest));
        });
    }
}

template <class Entry>
void NBBlockBinning::EncodeByCounting(std::span<const double> values, std::uint32_t highest,
                                      Entry* entriesOut) const {
    const auto most = static_cast<double>(highest);
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
        for (std::size_t i = 0; !fvEqual.empty() && i < count; ++i) {
            const auto below = static_cast<std::size_t>(entries[i]) - 1;
            if (below < fvCutpoints.size() && fvCutpoints[below] == piece[i]) {
                entries[i] = fvEqual[below];
            }
        }
        for (std::size_t i = 0; i < count; ++i) {
            double entry = entries[i] < most ? entries[i] : most;
            entry = piece[i] == MCMV::gMissingValue ? 0.0 : entry;
            entriesOut[first + i] = static_cast<Entry>(static_cast<std::int32_t>(entry));
        }
    }
}

template void NBBlockBinning::Encode(std::span<const double>, std::uint32_t, std::uint8_t*) const;
template void NBBlockBinning::Encode(std::span<const double>, std::uint32_t, std::uint16_t*) const;
template void NBBlockBinning::Encode(std::span<const double>, std::uint32_t, std::uint32_t*) const;
