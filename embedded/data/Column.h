#ifndef PREDSEL_EMBEDDED_DATA_COLUMN_H
#define PREDSEL_EMBEDDED_DATA_COLUMN_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "embedded/data/Cells.h"
#include "host/Data.h"
#include "host/Records.h"

namespace embedded {

/// Rows of every chunk of a column but the last.
inline constexpr std::int32_t kChunkRows = 65536;

/// A view of the codes of one chunk.
class CodeSpan {
 public:
    /// Entries: code + 1, and 0 where the row is system-missing.
    using Entries = std::variant<std::span<const std::uint8_t>, std::span<const std::uint16_t>,
                                 std::span<const std::uint32_t>>;

    CodeSpan() = default;
    explicit CodeSpan(Entries entries) : fEntries(entries) {}

    std::size_t Size() const;
    /// The code of a row of the chunk, 0 where missing. For loops over many rows, entries are
    /// quicker.
    std::uint32_t operator[](std::size_t row) const;
    const Entries& GetEntries() const { return fEntries; }

 private:
    Entries fEntries;
};

/// Rows of a chunk, counted within it.
struct ChunkPart {
    std::int32_t fChunk = 0;
    std::int32_t fFirstRow = 0;
    std::int32_t fRows = kChunkRows;  // there may be fewer
};

/// Rows of a chunk to open together in columns that are not held as they are read, whose buffers
/// take rowBytes bytes a row in all: kChunkRows halved until the buffers take 16 MiB at most, but
/// not below 512, as fewer rows are not worth their reading. Divides kChunkRows.
std::int32_t RowsToOpen(std::int64_t rowBytes);

/// Room for one chunk of a column that is not held as it is asked for. Each thread that reads has
/// its own.
struct ColumnBuffer {
    Cells<double> fvNumbers;
    CodeVector fCodes;
    std::vector<std::uint64_t> fvValidity;
};

/// A view of consecutive rows of one column, counted within the chunk from 0. Valid until the next
/// call of Column::Chunk for the same column or, if a buffer was given, the next use of the buffer.
struct ColumnChunk {
    std::int64_t fFirstRow = 0;  // row of the data set, from 0
    std::int32_t fRows = 0;
    /// Numeric columns: finite values, MCMV::gMissingValue where system-missing. Never NaN,
    /// never an infinity, never -0.
    std::span<const double> fNumbers;
    /// String columns: codes into Categories(); 0 where system-missing.
    CodeSpan fCodes;
    /// One bit a row, the lowest bit of word 0 first; empty when every row is valid.
    std::span<const std::uint64_t> fValidity;

    bool IsValid(std::int32_t row) const {
        const auto at = static_cast<std::size_t>(row);
        return fValidity.empty() || ((fValidity[at / 64] >> (at % 64)) & 1U) != 0;
    }
};

/// The distinct valid values of a column in ascending order (numeric, else byte order): a value's
/// place is its code. User-missing values are values like any other.
class ColumnCategories {
 public:
    /// Of a string column.
    explicit ColumnCategories(std::vector<std::string> values) : fvStrings(std::move(values)) {}
    /// Of a numeric column.
    explicit ColumnCategories(std::vector<double> values) : fvNumbers(std::move(values)) {}

    std::int32_t Count() const;
    /// The value behind a code from 0 to Count() - 1.
    KoltObs Value(std::int32_t code) const;
    /// All values of a string column; empty for a numeric one.
    const std::vector<std::string>& Strings() const { return fvStrings; }
    /// All values of a numeric column; empty for a string one.
    const std::vector<double>& Numbers() const { return fvNumbers; }

 private:
    std::vector<std::string> fvStrings;
    std::vector<double> fvNumbers;
};

/// Values of one variable for all rows, in chunks of kChunkRows rows; immutable. Strings and
/// numbers of few distinct values are held as codes, other numbers as doubles, in memory or, beyond
/// the budget, in its file. Reading with buffers of their own, threads may share a column; what is
/// made on first use (Categories, Codes of numbers held as doubles) and what has no buffer is for
/// one thread at a time and column. Reading throws DataError when the file cannot be read back.
class Column {
 public:
    using CodeChunks = std::variant<std::vector<StoredCells<std::uint8_t>>,
                                    std::vector<StoredCells<std::uint16_t>>,
                                    std::vector<StoredCells<std::uint32_t>>>;

    /// A numeric column. Every chunk but the last has kChunkRows rows; missing rows hold
    /// MCMV::gMissingValue, and no row -0 or a value that is not finite.
    static Column OfNumbers(std::vector<StoredCells<double>> chunks, std::int64_t validCount);
    /// A numeric column; values are distinct and ascend, and each is in a row.
    static Column OfCodes(std::vector<double> values, CodeChunks chunks, std::int64_t validCount);
    /// A string column; values are distinct and in byte order, and each is in a row.
    static Column OfCodes(std::vector<std::string> values, CodeChunks chunks,
                          std::int64_t validCount);

    Column(Column&&) noexcept = default;
    Column& operator=(Column&&) noexcept = default;

    bool IsNumeric() const { return fbNumeric; }
    std::int64_t RowCount() const { return fRowCount; }
    /// Rows that are not system-missing.
    std::int64_t ValidCount() const { return fValidCount; }

    std::int32_t ChunkCount() const {
        return static_cast<std::int32_t>((fRowCount + kChunkRows - 1) / kChunkRows);
    }
    ColumnChunk Chunk(std::int32_t index) const { return Chunk(index, OwnBuffer()); }
    ColumnChunk Chunk(std::int32_t index, ColumnBuffer& buffer) const;

    /// Whether codes are what is held: true of every string column.
    bool IsCoded() const { return fbCoded; }
    /// The codes of a chunk's rows into Categories(), of a numeric column too.
    CodeSpan Codes(std::int32_t index) const { return Codes(index, OwnBuffer()); }
    CodeSpan Codes(std::int32_t index, ColumnBuffer& buffer) const {
        return Codes(ChunkPart{index}, buffer);
    }
    CodeSpan Codes(const ChunkPart& part, ColumnBuffer& buffer) const;
    /// What Chunk gives as fNumbers. REQUIRES: a numeric column.
    std::span<const double> Numbers(std::int32_t index, ColumnBuffer& buffer) const {
        return Numbers(ChunkPart{index}, buffer);
    }
    std::span<const double> Numbers(const ChunkPart& part, ColumnBuffer& buffer) const;
    /// Bytes that a row takes in the buffer when Codes, or else Numbers, reads it; 0 where rows are
    /// given as they are held.
    std::int32_t BufferBytes(bool asCodes) const;

    /// The categories; those of a column that is not coded are made on first use and kept.
    const ColumnCategories& Categories() const;
    /// Distinct valid values, or a number above `enough` when there are more than that. Does not
    /// make categories.
    std::int64_t DistinctCount(
        std::int64_t enough = std::numeric_limits<std::int64_t>::max()) const;

    /// One row, for tests and messages: reading by chunks is much quicker.
    bool IsValid(std::int64_t row) const;
    /// The row's value; MCMV::gMissingValue when system-missing, in a string column too.
    KoltObs Value(std::int64_t row) const;

 private:
    Column() = default;
    std::size_t RowsOf(const ChunkPart& part) const;
    ColumnBuffer& OwnBuffer() const;
    void MakeCategories() const;

    bool fbNumeric = true;
    bool fbCoded = false;
    std::int64_t fRowCount = 0;
    std::int64_t fValidCount = 0;
    std::vector<StoredCells<double>> fvNumbers;  // by chunk, unless coded
    mutable CodeChunks fCodes;                   // by chunk, once there are categories
    mutable std::unique_ptr<ColumnCategories> fpCategories;
    mutable std::unique_ptr<ColumnBuffer> fpBuffer;  // for those who bring none
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_COLUMN_H
