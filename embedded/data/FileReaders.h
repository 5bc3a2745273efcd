#ifndef PREDSEL_EMBEDDED_DATA_FILEREADERS_H
#define PREDSEL_EMBEDDED_DATA_FILEREADERS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/data/ArrowStream.h"
#include "embedded/data/TextDialect.h"

namespace embedded {

// What the component over Apache Arrow offers: each function gives a stream over bytes that must
// outlive it. Contents are not trusted: every batch is validated in full before it is handed on.
// All throw DataError; a build without Arrow has this in place of every reader. name stands for the
// source in messages. Parquet: see ParquetFile.h.

ArrowStream ReadIpcFile(std::string_view bytes, const std::string& name);
ArrowStream ReadIpcStream(std::string_view bytes, const std::string& name);

/// The cells of delimited text as binary columns, null where a cell is empty and not quoted. The
/// text has no header; each of its records has `columns` fields and at most longestRecord bytes;
/// empty lines are no records. Only the wanted columns are given, in the order asked for.
ArrowStream ReadCells(std::string_view text, const TextDialect& dialect, std::int32_t columns,
                      const std::vector<std::int32_t>& wanted, std::int64_t longestRecord,
                      std::int32_t blockBytes, const std::string& name);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_FILEREADERS_H
