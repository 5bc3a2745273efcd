#include "featureselect/FSRowLines.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <limits>

#include "featureselect/FSDoubleParts.h"

namespace {

__extension__ typedef unsigned __int128 UnsignedWide;

constexpr int kLimbBits = FSExactSum::kLimbBits;
// Of a weight and of a number on their grids: the longest product, w y^2, stays within six words
// and six limbs.
constexpr int kMostBits = 94;
constexpr std::size_t kMostWords = 6;

using Words = std::array<std::uint64_t, kMostWords>;

/// Where the bits of some doubles lie.
struct Grid {
    std::int32_t fLowest = std::numeric_limits<std::int32_t>::max();  // place of the lowest bit
    std::int32_t fEnd = std::numeric_limits<std::int32_t>::min();     // after the highest

    void Take(double value) {
        if (value == 0.0) return;
        const FSDoubleParts parts(value);
        fEnd = std::max(
            fEnd, parts.fExponent + static_cast<std::int32_t>(std::bit_width(parts.fMantissa)));
        fLowest = std::min(fLowest, parts.fExponent + std::countr_zero(parts.fMantissa));
    }
    void Settle() {
        if (fLowest > fEnd) fLowest = fEnd = 0;
        fLowest = std::max(fLowest, fEnd - kMostBits);
    }
    int Bits() const { return fEnd - fLowest; }
};

/// A magnitude on a grid; false when it has bits below.
bool OnGrid(double value, const Grid& grid, UnsignedWide& number) {
    const FSDoubleParts parts(value);
    const std::int32_t shift = parts.fExponent - grid.fLowest;
    number = parts.fMantissa;
    if (shift >= 0) {
        number <<= shift;  // within the grid's bits
        return true;
    }
    number >>= std::min(-shift, 64);
    return number << std::min(-shift, 64) == parts.fMantissa;
}

Words Product(const Words& a, UnsignedWide b) {
    Words product{};
    const std::array<std::uint64_t, 2> factors{static_cast<std::uint64_t>(b),
                                               static_cast<std::uint64_t>(b >> 64)};
    for (std::size_t i = 0; i < factors.size(); ++i) {
        if (factors[i] == 0) continue;
        std::uint64_t carry = 0;
        for (std::size_t j = 0; i + j < kMostWords; ++j) {
            const UnsignedWide sum = UnsignedWide{a[j]} * factors[i] + product[i + j] + carry;
            product[i + j] = static_cast<std::uint64_t>(sum);
            carry = static_cast<std::uint64_t>(sum >> 64);
        }
    }
    return product;
}

Words WordsOf(UnsignedWide number) {
    return {static_cast<std::uint64_t>(number), static_cast<std::uint64_t>(number >> 64)};
}

void PutLimbs(const Words& words, bool negative, std::int64_t* line, std::size_t limbs) {
    constexpr std::uint64_t kMask = (std::uint64_t{1} << kLimbBits) - 1;
    for (std::size_t limb = 0; limb < limbs; ++limb) {
        const std::size_t bit = limb * kLimbBits;
        const std::size_t word = bit / 64;
        const std::size_t offset = bit % 64;
        std::uint64_t digit = words[word] >> offset;
        if (offset > 64 - kLimbBits && word + 1 < kMostWords) {
            digit |= words[word + 1] << (64 - offset);
        }
        const auto value = static_cast<std::int64_t>(digit & kMask);
        line[limb] = negative ? -value : value;
    }
}

std::size_t LimbsFor(int bits) {
    return static_cast<std::size_t>((std::max(bits, 1) + kLimbBits - 1) / kLimbBits);
}

}  // namespace

FSRowLines::FSRowLines(std::span<const double> weights, std::span<const double> numbers,
                       std::span<const std::uint8_t> counts) {
    const std::size_t rows = counts.size();
    Grid weightGrid;
    Grid numberGrid;
    for (std::size_t row = 0; row < rows; ++row) {
        if (counts[row] == 0) continue;
        weightGrid.Take(weights[row]);
        if (!numbers.empty()) numberGrid.Take(numbers[row]);
    }
    weightGrid.Settle();
    numberGrid.Settle();
    fWeightExponent = weightGrid.fLowest;
    fNumberExponent = numberGrid.fLowest;
    const bool unit = weightGrid.Bits() == 1 && weightGrid.fLowest == 0;
    const int weightBits = unit ? 0 : weightGrid.Bits();
    fWeightLimbs = LimbsFor(weightBits);
    if (!numbers.empty()) {
        fSumLimbs = LimbsFor(weightBits + numberGrid.Bits());
        fSquareLimbs = LimbsFor(weightBits + 2 * numberGrid.Bits());
    }
    fvLines.assign(std::max<std::size_t>(rows, 1) * Stride(), 0);
    for (std::size_t row = 0; row < rows; ++row) {
        if (counts[row] == 0) continue;
        std::int64_t* line = fvLines.data() + row * Stride();
        UnsignedWide weight = 0;
        UnsignedWide number = 0;
        if (!OnGrid(weights[row], weightGrid, weight) ||
            (!numbers.empty() && !OnGrid(numbers[row], numberGrid, number))) {
            fvOdd.push_back(static_cast<std::uint32_t>(row));
            continue;
        }
        const Words weightWords = WordsOf(weight);
        PutLimbs(weightWords, false, line, fWeightLimbs);
        if (numbers.empty()) continue;
        const Words sum = unit ? WordsOf(number) : Product(weightWords, number);
        PutLimbs(sum, numbers[row] < 0.0, line + fWeightLimbs, fSumLimbs);
        PutLimbs(Product(sum, number), false, line + fWeightLimbs + fSumLimbs, fSquareLimbs);
    }
}

std::vector<std::int64_t> FSRowLines::SumOf(std::span<const std::uint32_t> rows) const {
    std::vector<std::int64_t> sum(Stride());
    for (const std::uint32_t row : rows) {
        const std::int64_t* line = LineOf(row);
        for (std::size_t limb = 0; limb < sum.size(); ++limb) sum[limb] += line[limb];
    }
    return sum;
}

FSExactSum FSRowLines::WeightOf(const std::int64_t* line) const {
    FSExactSum weight;
    weight.AddLimbs(std::span(line, fWeightLimbs), fWeightExponent);
    return weight;
}

void FSRowLines::AddWeight(const std::int64_t* line, FSWeightSum& weight) const {
    constexpr std::int64_t kLargest = std::int64_t{1} << 53;  // that a double holds
    if (fWeightLimbs == 1 && *line <= kLargest) {
        weight += std::ldexp(static_cast<double>(*line), fWeightExponent);
    } else {
        weight += WeightOf(line);
    }
}

void FSRowLines::AddMoments(const std::int64_t* line, FSMoments& moments) const {
    AddWeight(line, moments.fWeight);
    const std::int64_t* sum = line + fWeightLimbs;
    moments.fSum.AddLimbs(std::span(sum, fSumLimbs), fWeightExponent + fNumberExponent);
    moments.fSquares.AddLimbs(std::span(sum + fSumLimbs, fSquareLimbs),
                              fWeightExponent + 2 * fNumberExponent);
}

bool FSRowLines::IsZero(const std::int64_t* line) const {
    return std::all_of(line, line + fWeightLimbs, [](std::int64_t limb) { return limb == 0; });
}
