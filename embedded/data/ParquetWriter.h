#ifndef PREDSEL_EMBEDDED_DATA_PARQUETWRITER_H
#define PREDSEL_EMBEDDED_DATA_PARQUETWRITER_H

#include <arrow/io/interfaces.h>

#include <cstdint>
#include <memory>

#include "embedded/data/FileWriters.h"

namespace embedded {

/// Writes a Parquet file of these columns. The columns of a row group are encoded side by side, and
/// meanwhile the group before them goes to the file. Columns that are held as codes are written
/// from these, without a look at their values. Faults come out as exceptions of the library.
void WriteParquetFile(const ArrowColumns& columns,
                      const std::shared_ptr<arrow::io::OutputStream>& sink, std::int32_t threads);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_PARQUETWRITER_H
