#ifndef PREDSEL_EMBEDDED_DATA_FILEWRITERS_H
#define PREDSEL_EMBEDDED_DATA_FILEWRITERS_H

#include <cstdint>
#include <iosfwd>
#include <string>

#include "embedded/data/ArrowCData.h"

namespace embedded {

/// Columns that a file of columns takes one by one, in chunks of the same rows. Different columns
/// may be asked for by different threads. What is given out is valid until the same column is asked
/// again.
class ArrowColumns {
 public:
    virtual ~ArrowColumns() = default;
    /// A struct of all columns, as a reader of the file is to see it.
    virtual void Schema(ArrowSchema& out) const = 0;
    virtual std::int32_t ColumnCount() const = 0;
    virtual std::int32_t ChunkCount() const = 0;
    virtual void Chunk(std::int32_t column, std::int32_t chunk, ArrowArray& out) const = 0;
    /// True when a column of texts may be taken as well through Codes and Texts: the places of the
    /// chunk's texts, in an unsigned integer of so many bytes, and all texts.
    virtual bool IsText(std::int32_t column) const = 0;
    virtual std::int32_t CodeBytes(std::int32_t column) const = 0;
    virtual void Codes(std::int32_t column, std::int32_t chunk, ArrowArray& out) const = 0;
    virtual void Texts(std::int32_t column, ArrowArray& out) const = 0;
    /// True when so many values of the column differ that a table of them is of no use.
    virtual bool IsScattered(std::int32_t column) const = 0;
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
