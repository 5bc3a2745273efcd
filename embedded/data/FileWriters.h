#ifndef PREDSEL_EMBEDDED_DATA_FILEWRITERS_H
#define PREDSEL_EMBEDDED_DATA_FILEWRITERS_H

#include <cstdint>
#include <iosfwd>
#include <span>
#include <string>

#include "embedded/data/ArrowCData.h"
#include "embedded/data/Column.h"

namespace embedded {

/// How the rows of a column may be taken beside arrays.
enum class ColumnForm {
    kArrays,   // only so
    kEntries,  // as entries of a dictionary
    kNumbers   // as the doubles that they are
};

/// Of the distinct values of a column.
struct ValueTotals {
    std::int64_t fCount = 0;
    std::int64_t fTextBytes = 0;  // 0 of numbers
};

/// Columns that a file of columns takes one by one, in chunks of kChunkRows rows. Different columns
/// may be asked for by different threads. What is given out is valid until the same column is asked
/// again or released.
class ArrowColumns {
 public:
    virtual ~ArrowColumns() = default;
    /// A struct of all columns, as a reader of the file is to see it.
    virtual void Schema(ArrowSchema& out) const = 0;
    virtual std::int64_t RowCount() const = 0;
    virtual std::int32_t ColumnCount() const = 0;
    virtual std::int32_t ChunkCount() const = 0;
    virtual void Chunk(std::int32_t column, std::int32_t chunk, ArrowArray& out) const = 0;
    virtual bool IsText(std::int32_t column) const = 0;
    virtual ColumnForm FormOf(std::int32_t column) const = 0;
    /// Of kEntries: the chunk's entries, and the values that they stand for, in ascending order;
    /// these as in the schema, but texts always with 64-bit offsets (large utf8), as all together
    /// may be longer than those of a chunk.
    virtual CodeSpan Entries(std::int32_t column, std::int32_t chunk) const = 0;
    virtual void Values(std::int32_t column, ArrowArray& out) const = 0;
    virtual ValueTotals TotalsOf(std::int32_t column) const = 0;
    /// Of kNumbers: MCMV::gMissingValue where there is none.
    virtual std::span<const double> Numbers(std::int32_t column, std::int32_t chunk) const = 0;
    /// True when so many values of the column differ that a table of them is of no use.
    virtual bool IsScattered(std::int32_t column) const = 0;
    /// Gives back what reading the column took. It may be asked again.
    virtual void Release(std::int32_t column) const = 0;
};

// What the component over Apache Arrow writes. All throw DataError; a build without Arrow has this
// in place of every writer. name stands for the file in messages.

/// On up to that many threads; below 1: as many as are available. They do not show in the file.
void WriteParquet(const ArrowColumns& columns, std::ostream& file, const std::string& name,
                  std::int32_t threads);
/// An Arrow IPC file of all batches of the stream, which is released in any case.
void WriteIpcFile(ArrowArrayStream& stream, std::ostream& file, const std::string& name);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_FILEWRITERS_H
