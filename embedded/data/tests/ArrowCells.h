#ifndef PREDSEL_EMBEDDED_DATA_TESTS_ARROWCELLS_H
#define PREDSEL_EMBEDDED_DATA_TESTS_ARROWCELLS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/data/ArrowStream.h"
#include "embedded/data/TextDialect.h"

namespace embedded {

/// The cells of a text as Apache Arrow cuts them, to hold the own reader against: binary columns,
/// null where a cell is empty and not quoted. The text has no header; each of its records has
/// `columns` fields and at most longestRecord bytes; empty lines are no records. Only the wanted
/// columns are given, in the order asked for. Throws DataError.
ArrowStream ReadCells(std::string_view text, const TextDialect& dialect, std::int32_t columns,
                      const std::vector<std::int32_t>& wanted, std::int64_t longestRecord,
                      std::int32_t blockBytes, const std::string& name);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_TESTS_ARROWCELLS_H
