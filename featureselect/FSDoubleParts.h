#ifndef PREDSEL_FEATURESELECT_FSDOUBLEPARTS_H
#define PREDSEL_FEATURESELECT_FSDOUBLEPARTS_H

#include <algorithm>
#include <bit>
#include <cstdint>

/// A finite double as sign * mantissa * 2^exponent with a whole mantissa below 2^53.
struct FSDoubleParts {
    explicit FSDoubleParts(double value) {
        constexpr std::uint64_t kHidden = std::uint64_t{1} << 52;
        const auto bits = std::bit_cast<std::uint64_t>(value);
        const auto biased = static_cast<std::int32_t>(bits >> 52 & 0x7FF);
        fbNegative = bits >> 63 != 0;
        fMantissa = (bits & (kHidden - 1)) | (biased != 0 ? kHidden : 0);
        fExponent = std::max(biased, 1) - 1075;
    }

    std::uint64_t fMantissa = 0;
    std::int32_t fExponent = 0;
    bool fbNegative = false;
};

#endif  // PREDSEL_FEATURESELECT_FSDOUBLEPARTS_H
