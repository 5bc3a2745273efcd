#ifndef PREDSEL_EMBEDDED_DATA_COLUMNASSEMBLY_H
#define PREDSEL_EMBEDDED_DATA_COLUMNASSEMBLY_H

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "embedded/data/Cells.h"
#include "embedded/data/Column.h"
#include "embedded/data/ColumnBuilder.h"

namespace embedded {

/// Codes of one part's rows, in memory or in the file.
using StoredCodes =
    std::variant<StoredCells<std::uint8_t>, StoredCells<std::uint16_t>, StoredCells<std::uint32_t>>;

// A column from parts that were made side by side. A part is consecutive rows; parts are numbered
// from 0 in row order and may be set in any order from any thread, each once; a part that is never
// set has no rows. Joined, dictionaries are merged, and no row shows how the rows were parted.

/// Makes numbers as they came out of a file what columns hold: NaN becomes missing; infinities and
/// MCMV::gMissingValue too, which are counted (the first of the numbers is in row firstRow); -0
/// becomes 0. Returns how many are missing.
std::int64_t SettleNumbers(std::span<double> numbers, std::int64_t firstRow, Oddity& infinite);

/// A numeric column from parts.
class NumericParts {
 public:
    /// Borrows nothing; without a memory budget all stays in memory.
    explicit NumericParts(std::shared_ptr<ColumnMemory> memory = nullptr)
        : fpMemory(std::move(memory)) {}
    /// The rows of all parts are known, so that numbers can be written where they stay. For columns
    /// that fit into memory whole.
    NumericParts(const std::vector<std::int64_t>& partRows, std::shared_ptr<ColumnMemory> memory);

    /// Only if the rows of all parts are known: room for rows of a part from `row` (of the part)
    /// on, as many as its chunk has, but no more than the part has.
    std::span<double> Room(std::int32_t part, std::int64_t row);
    /// Every row of the part has been written as SettleNumbers leaves it; `missing` of them are.
    void SetPlaced(std::int32_t part, std::int64_t missing);

    /// Numbers by row: finite, MCMV::gMissingValue where missing; -0 becomes 0.
    void SetNumbers(std::int32_t part, Cells<double> numbers);
    /// Entries by row (code + 1, 0 where missing) into values, which may come in any order, more
    /// than once, and without a row. Rows of NaN are missing; those of infinities and of
    /// MCMV::gMissingValue too, and counted.
    void SetCodes(std::int32_t part, std::vector<double> values, CodeVector entries);
    /// Infinities that the reader made missing; the row is counted within the part.
    void NoteInfinite(std::int32_t part, const Oddity& oddity);

    /// REQUIRES: all parts are set. Few distinct values are held as codes.
    Column Finish(std::int32_t threads);
    /// After Finish: rows of the column.
    const Oddity& Infinite() const { return fInfinite; }

 private:
    struct Part {
        std::int64_t fRows = 0;
        std::int64_t fMissing = 0;
        bool fbPlaced = false;  // its rows are in fvPlaced
        StoredCells<double> fNumbers;
        bool fbCoded = false;
        std::vector<double> fvValues;  // by code; NaN missing, gMissingValue without a row
        StoredCodes fCodes;
        Oddity fInfinite;
    };
    Part& At(std::int32_t part);
    bool AreAllCoded() const;
    std::optional<Column> FinishCodes(std::int32_t threads);
    Column FinishNumbers(std::int32_t threads);

    std::shared_ptr<ColumnMemory> fpMemory;
    std::mutex fMutex;
    std::deque<Part> fvParts;
    std::vector<std::int64_t> fvFirstRows;  // of each part and behind the last, if they are known
    std::vector<Cells<double>> fvPlaced;    // by chunk
    Oddity fInfinite;
};

/// A string column from parts.
class TextParts {
 public:
    /// Texts that are system-missing; borrowed, null when there are none.
    explicit TextParts(const TextSet* missingTexts = nullptr,
                       std::shared_ptr<ColumnMemory> memory = nullptr)
        : fpMissingTexts(missingTexts), fpMemory(std::move(memory)) {}

    /// Entries by row (code + 1, 0 where missing) into values, which may come in any order, more
    /// than once, and without a row. Bytes that are no UTF-8 are replaced by U+FFFD and such rows
    /// counted.
    void SetCodes(std::int32_t part, std::vector<std::string> values, CodeVector entries);

    /// REQUIRES: all parts are set.
    Column Finish(std::int32_t threads);
    /// After Finish: rows whose text had bytes replaced.
    const Oddity& Undecodable() const { return fUndecodable; }

 private:
    struct Part {
        std::int64_t fRows = 0;
        std::vector<std::string> fvValues;  // by code
        std::vector<bool> fvbUsed;          // by code: a row has it, and it is no missing text
        StoredCodes fCodes;
        Oddity fUndecodable;
    };
    Part& At(std::int32_t part);

    const TextSet* fpMissingTexts;
    std::shared_ptr<ColumnMemory> fpMemory;
    std::mutex fMutex;
    std::deque<Part> fvParts;
    Oddity fUndecodable;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_COLUMNASSEMBLY_H
