#include "featureselect/FSCellCounts.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

namespace FSCellCounts {
namespace {

constexpr std::size_t kTileRows = 512;
// Equal cells in a row wait for one another, so that neighbouring records count in tables of their
// own, as long as all of them stay near the processor.
constexpr std::size_t kTables = 4;
constexpr std::size_t kMaxCellsOfTables = 2048;

// Cell numbers of a tile first, as that has no dependences at all.
template <class Cell, class CellOf>
void CountCells(std::size_t rows, CellOf cellOf, std::vector<std::uint32_t>& counts) {
    const std::size_t cells = counts.size();
    const std::size_t tables = cells <= kMaxCellsOfTables ? kTables : 1;
    std::vector<std::uint32_t> all(cells * tables);
    std::array<std::uint32_t*, kTables> to{};
    for (std::size_t table = 0; table < kTables; ++table) {
        to[table] = all.data() + cells * (table % tables);
    }
    std::array<Cell, kTileRows> tile{};
    for (std::size_t first = 0; first < rows; first += kTileRows) {
        const std::size_t count = std::min(kTileRows, rows - first);
        for (std::size_t row = 0; row < count; ++row) tile[row] = cellOf(first + row);
        std::size_t row = 0;
        for (; row + kTables <= count; row += kTables) {
            ++to[0][tile[row]];
            ++to[1][tile[row + 1]];
            ++to[2][tile[row + 2]];
            ++to[3][tile[row + 3]];
        }
        for (; row < count; ++row) ++to[0][tile[row]];
    }
    for (std::size_t table = 0; table < tables; ++table) {
        for (std::size_t cell = 0; cell < cells; ++cell) counts[cell] += all[table * cells + cell];
    }
}

}  // namespace

template <class Entry>
std::vector<std::uint32_t> Count(std::span<const Entry> entries, std::uint32_t entryEnd,
                                 const FSBlockCases& cases) {
    std::vector<std::uint32_t> counts((cases.Classes() + 1) * entryEnd);
    const Entry* entry = entries.data();
    const std::uint16_t* group = cases.fClasses.data();
    const auto count = [&]<class Cell>(Cell stride) {
        CountCells<Cell>(
            entries.size(),
            [=](std::size_t row) {
                return static_cast<Cell>(static_cast<Cell>(group[row]) * stride +
                                         static_cast<Cell>(entry[row]));
            },
            counts);
    };
    if (counts.size() <= std::numeric_limits<std::uint16_t>::max()) {
        count(static_cast<std::uint16_t>(entryEnd));
    } else {
        count(entryEnd);
    }
    return counts;
}

std::vector<std::uint32_t> CountClasses(const FSBlockCases& cases) {
    std::vector<std::uint32_t> counts(cases.Classes() + 1);
    CountCells<std::uint16_t>(
        cases.Rows(), [&](std::size_t row) { return cases.fClasses[row]; }, counts);
    counts.pop_back();
    return counts;
}

template std::vector<std::uint32_t> Count(std::span<const std::uint8_t>, std::uint32_t,
                                          const FSBlockCases&);
template std::vector<std::uint32_t> Count(std::span<const std::uint16_t>, std::uint32_t,
                                          const FSBlockCases&);
template std::vector<std::uint32_t> Count(std::span<const std::uint32_t>, std::uint32_t,
                                          const FSBlockCases&);

}  // namespace FSCellCounts
