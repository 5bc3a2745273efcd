#ifndef PREDSEL_EMBEDDED_DATA_OPENDATASET_H
#define PREDSEL_EMBEDDED_DATA_OPENDATASET_H

#include <string>

#include "embedded/data/DataError.h"
#include "embedded/data/DataSet.h"
#include "embedded/data/OpenOptions.h"

struct ArrowArrayStream;

namespace embedded {

/// Reads a data file: delimited text, Parquet, Arrow IPC file or stream, told apart by their first
/// bytes; "-" is standard input. Throws DataError.
DataSet OpenDataSet(const std::string& path, const OpenOptions& options = {});

/// Reads the batches of an Arrow stream, which is released in any case. sourceName stands for the
/// file in messages; no dictionary is looked for unless options name one. The producer is trusted:
/// buffers are as long as the arrays say. Throws DataError.
DataSet ReadArrowStream(ArrowArrayStream& stream, const std::string& sourceName,
                        const OpenOptions& options = {});

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_OPENDATASET_H
