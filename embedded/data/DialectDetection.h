#ifndef PREDSEL_EMBEDDED_DATA_DIALECTDETECTION_H
#define PREDSEL_EMBEDDED_DATA_DIALECTDETECTION_H

#include <optional>
#include <string_view>

#include "embedded/data/TextDialect.h"

namespace embedded {

/// Finds how a text is delimited from its first records: the delimiter (comma, semicolon, tab or
/// bar) that cuts most of them into as many fields as the header, with the most fields; single
/// quotes only where no double quote occurs and every field that starts with one ends with one.
/// What is given is taken as given. A text in one column gets the comma.
TextDialect DetectDialect(std::string_view text, std::optional<char> delimiter,
                          std::optional<char> quote);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_DIALECTDETECTION_H
