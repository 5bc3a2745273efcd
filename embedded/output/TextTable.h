#ifndef PREDSEL_EMBEDDED_OUTPUT_TEXTTABLE_H
#define PREDSEL_EMBEDDED_OUTPUT_TEXTTABLE_H

#include <string>

#include "embedded/output/ReportTable.h"
#include "embedded/output/TextStyle.h"

namespace embedded {

/// The escape sequences around a title when the style has colour.
std::string TextTitle(const std::string& title, const TextStyle& style);

/// One pivot table as lines of text, the last with its '\n'. Rows of a group are indented below its
/// heading. A table wider than the style's width is split into panels that repeat the row headings,
/// between groups of columns where it can be.
std::string TextTable(const ReportTable& table, const TextStyle& style);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_TEXTTABLE_H
