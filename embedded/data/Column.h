#ifndef PREDSEL_EMBEDDED_DATA_COLUMN_H
#define PREDSEL_EMBEDDED_DATA_COLUMN_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "host/Data.h"
#include "host/Records.h"

namespace embedded {

/// Rows of every chunk of a column but the last.
inline constexpr std::int32_t kChunkRows = 65536;

/// Codes of some rows in the narrowest unsigned integer that holds all codes of the column.
using CodeVector =
    std::variant<std::vector<std::uint8_t>, std::vector<std::uint16_t>, std::vector<std::uint32_t>>;

/// A view of the codes of one chunk.
class CodeSpan {
 public:
    CodeSpan() = default;
    explicit CodeSpan(const CodeVector& codes);

    std::size_t Size() const;
    /// The code of a row of the chunk. For loops over many rows, Visit is quicker.
    std::uint32_t operator[](std::size_t row) const;
    /// Calls the visitor with a std::span of const std::uint8_t, std::uint16_t or std::uint32_t.
    template <class Visitor>
    decltype(auto) Visit(Visitor&& visitor) const {
        return std::visit(std::forward<Visitor>(visitor), fCodes);
    }

 private:
    std::variant<std::span<const std::uint8_t>, std::span<const std::uint16_t>,
                 std::span<const std::uint32_t>>
        fCodes;
};

/// A view of consecutive rows of one column, counted within the chunk from 0. Valid until the next
/// call of Column::Chunk for the same column.
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

/// The distinct valid values of a column in ascending order (numeric, else byte order), and the
/// code of each row: its value's place in that order. User-missing values are values like any
/// other.
class ColumnCategories {
 public:
    /// Of a string column.
    ColumnCategories(std::vector<std::string> values, std::vector<CodeVector> chunks);
    /// Of a numeric column.
    ColumnCategories(std::vector<double> values, std::vector<CodeVector> chunks);

    std::int32_t Count() const;
    /// The value behind a code from 0 to Count() - 1.
    KoltObs Value(std::int32_t code) const;
    /// All values of a string column; empty for a numeric one.
    const std::vector<std::string>& Strings() const { return fvStrings; }
    /// All values of a numeric column; empty for a string one.
    const std::vector<double>& Numbers() const { return fvNumbers; }
    /// The codes of a chunk's rows; 0 where the row is system-missing.
    CodeSpan Codes(std::int32_t chunk) const;

 private:
    std::vector<std::string> fvStrings;
    std::vector<double> fvNumbers;
    std::vector<CodeVector> fvChunks;
};

/// Values of one variable for all rows. Holds numbers as doubles and strings as codes of their
/// distinct values, in chunks of kChunkRows rows; immutable. One thread.
class Column {
 public:
    /// Bits of one chunk's valid rows; empty when all are.
    using Validity = std::vector<std::uint64_t>;

    /// A numeric column. Every chunk but the last has kChunkRows rows; missing rows hold
    /// MCMV::gMissingValue.
    static Column OfNumbers(std::vector<std::vector<double>> chunks,
                            std::vector<Validity> validity);
    /// A string column; values are distinct and in byte order.
    static Column OfStrings(std::vector<std::string> values, std::vector<CodeVector> chunks,
                            std::vector<Validity> validity);

    Column(Column&&) noexcept = default;
    Column& operator=(Column&&) noexcept = default;

    bool IsNumeric() const { return fbNumeric; }
    std::int64_t RowCount() const { return fRowCount; }
    /// Rows that are not system-missing.
    std::int64_t ValidCount() const { return fValidCount; }

    std::int32_t ChunkCount() const { return static_cast<std::int32_t>(fvValidity.size()); }
    ColumnChunk Chunk(std::int32_t index) const;

    /// The categories; those of a numeric column are made on first use and kept.
    const ColumnCategories& Categories() const;
    /// Distinct valid values. Does not make categories.
    std::int64_t DistinctCount() const;

    /// One row, for tests and messages: reading by chunks is much quicker.
    bool IsValid(std::int64_t row) const;
    /// The row's value; MCMV::gMissingValue when system-missing, in a string column too.
    KoltObs Value(std::int64_t row) const;

 private:
    Column() = default;

    bool fbNumeric = true;
    std::int64_t fRowCount = 0;
    std::int64_t fValidCount = 0;
    std::vector<std::vector<double>> fvNumbers;  // by chunk, numeric columns
    std::vector<Validity> fvValidity;            // by chunk
    mutable std::unique_ptr<ColumnCategories> fpCategories;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_COLUMN_H
