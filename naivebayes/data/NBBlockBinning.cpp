#include "naivebayes/data/NBBlockBinning.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "host/Records.h"
#include "naivebayes/data/NBBinningEncoder.h"

namespace {

/// More cutpoints are searched than counted.
constexpr std::size_t kMostCounted = 32;
constexpr std::size_t kPiece = 256;

}  // namespace

NBBlockBinning::NBBlockBinning(const NBBinningEncoder* encoder) : fpEncoder(encoder) {
    if (encoder == nullptr) return;
    const std::vector<double>& cutpoints = encoder->GetCutpoints();
    // Without cutpoints there are two bins all the same.
    fEntryEnd = static_cast<std::uint32_t>(std::max<std::size_t>(cutpoints.size(), 1)) + 2;
    fbByCounting =
        !cutpoints.empty() && cutpoints.size() <= kMostCounted &&
        encoder->GetUserMissing() == nullptr &&
        std::is_sorted(cutpoints.begin(), cutpoints.end()) &&
        std::none_of(cutpoints.begin(), cutpoints.end(), [](double c) { return std::isnan(c); });
    if (!fbByCounting) return;
    for (const double cutpoint : cutpoints) {
        // Cutpoints that close bins at the ends have infinities on their inner side too.
        if (cutpoint <= std::numeric_limits<double>::lowest()) {
            fFirstEntry += 1.0;
        } else if (cutpoint >= std::numeric_limits<double>::max()) {
            fvCutpoints.push_back(std::numeric_limits<double>::infinity());
        } else {
            fvCutpoints.push_back(cutpoint);
        }
    }
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
        for (std::size_t i = 0; i < count; ++i) entries[i] = fFirstEntry;
        for (const double cutpoint : fvCutpoints) {
            for (std::size_t i = 0; i < count; ++i) {
                entries[i] += piece[i] <= cutpoint ? 0.0 : 1.0;
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
