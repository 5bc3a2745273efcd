#ifndef PREDSEL_EMBEDDED_DATA_FILEREADERS_H
#define PREDSEL_EMBEDDED_DATA_FILEREADERS_H

#include <string>
#include <string_view>

#include "embedded/data/ArrowStream.h"

namespace embedded {

// What the component over Apache Arrow offers: each function gives a stream over bytes that must
// outlive it. Contents are not trusted: every batch is validated in full before it is handed on.
// All throw DataError; a build without Arrow has this in place of every reader. name stands for the
// source in messages. Parquet: see ParquetFile.h.

ArrowStream ReadIpcFile(std::string_view bytes, const std::string& name);
ArrowStream ReadIpcStream(std::string_view bytes, const std::string& name);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_FILEREADERS_H
