#ifndef PREDSEL_FEATURESELECT_FSROWLINES_H
#define PREDSEL_FEATURESELECT_FSROWLINES_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "featureselect/FSMoments.h"

/// Of each record of a block its weight w and, with a number y, w y and w y^2: exactly, as limbs of
/// 48 bits on a grid for the block. A line is all limbs of a record. Lines are added limb by limb,
/// so that one walk over a column of codes gives the exact moments of every category.
class FSRowLines {
 public:
    /// Records that a block can have; more would let the sums of limbs outgrow 64 bits.
    static constexpr std::size_t kMostRows = 16384;

    FSRowLines() = default;
    /// The records that count. With numbers, one a record; else weights alone. Both are finite, of
    /// records that count weights above 0. A record that the grid does not hold, because its
    /// numbers are too far from those of the others, has an empty line and stands in Odd().
    FSRowLines(std::span<const double> weights, std::span<const double> numbers,
               std::span<const std::uint8_t> counts);

    bool IsEmpty() const { return fvLines.empty(); }
    std::size_t Stride() const { return fWeightLimbs + fSumLimbs + fSquareLimbs; }
    const std::int64_t* LineOf(std::size_t row) const { return fvLines.data() + row * Stride(); }
    std::span<const std::uint32_t> Odd() const { return fvOdd; }

    /// Adds the line of each record to the line of its cell in a table of Stride() numbers a cell.
    template <class CellOf>
    void AddTo(std::vector<std::int64_t>& table, std::size_t rows, CellOf cellOf) const;
    /// The sum of the lines of some records.
    std::vector<std::int64_t> SumOf(std::span<const std::uint32_t> rows) const;

    /// What a sum of lines says.
    FSExactSum WeightOf(const std::int64_t* line) const;
    void AddWeight(const std::int64_t* line, FSWeightSum& weight) const;
    void AddMoments(const std::int64_t* line, FSMoments& moments) const;
    /// Whether it is the sum of no record.
    bool IsZero(const std::int64_t* line) const;

 private:
    template <std::size_t kStride, class CellOf>
    void AddStride(std::int64_t* table, std::size_t rows, CellOf cellOf) const;

    std::size_t fWeightLimbs = 0;
    std::size_t fSumLimbs = 0;
    std::size_t fSquareLimbs = 0;
    std::int32_t fWeightExponent = 0;  // of the last limb
    std::int32_t fNumberExponent = 0;
    std::vector<std::int64_t> fvLines;
    std::vector<std::uint32_t> fvOdd;
};

template <std::size_t kStride, class CellOf>
void FSRowLines::AddStride(std::int64_t* table, std::size_t rows, CellOf cellOf) const {
    const std::int64_t* line = fvLines.data();
    for (std::size_t row = 0; row < rows; ++row, line += kStride) {
        std::int64_t* cell = table + cellOf(row) * kStride;
        for (std::size_t limb = 0; limb < kStride; ++limb) cell[limb] += line[limb];
    }
}

template <class CellOf>
void FSRowLines::AddTo(std::vector<std::int64_t>& table, std::size_t rows, CellOf cellOf) const {
    // A loop of known length for each length that is usual.
    switch (Stride()) {
        case 1:
            return AddStride<1>(table.data(), rows, cellOf);
        case 2:
            return AddStride<2>(table.data(), rows, cellOf);
        case 3:
            return AddStride<3>(table.data(), rows, cellOf);
        case 4:
            return AddStride<4>(table.data(), rows, cellOf);
        case 5:
            return AddStride<5>(table.data(), rows, cellOf);
        case 6:
            return AddStride<6>(table.data(), rows, cellOf);
        case 7:
            return AddStride<7>(table.data(), rows, cellOf);
        case 8:
            return AddStride<8>(table.data(), rows, cellOf);
        default:
            break;
    }
    const std::size_t stride = Stride();
    const std::int64_t* line = fvLines.data();
    for (std::size_t row = 0; row < rows; ++row, line += stride) {
        std::int64_t* cell = table.data() + cellOf(row) * stride;
        for (std::size_t limb = 0; limb < stride; ++limb) cell[limb] += line[limb];
    }
}

#endif  // PREDSEL_FEATURESELECT_FSROWLINES_H
