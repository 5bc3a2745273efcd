#ifndef PREDSEL_EMBEDDED_DATA_FILEREADERSARROW_H
#define PREDSEL_EMBEDDED_DATA_FILEREADERSARROW_H

#include <arrow/api.h>
#include <arrow/io/api.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "embedded/data/ArrowStream.h"

namespace embedded {

// What the readers over Apache Arrow share; for their sources only.

using ReaderResult = arrow::Result<std::shared_ptr<arrow::RecordBatchReader>>;

/// name stands for the source, what for its form; of the reason the first line is told.
[[noreturn]] void FailAsDamaged(const std::string& name, const std::string& what,
                                std::string reason);

/// Borrows the bytes.
std::shared_ptr<arrow::io::RandomAccessFile> ArrowInput(std::string_view bytes);

/// The same batches, each checked in full before it goes on.
std::shared_ptr<arrow::RecordBatchReader> ValidatedBatchesOf(
    const std::shared_ptr<arrow::RecordBatchReader>& batches);

/// Exports what open gives. Throws DataError.
ArrowStream ArrowBatches(const std::string& name, const std::string& what,
                         const std::function<ReaderResult()>& open);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_FILEREADERSARROW_H
