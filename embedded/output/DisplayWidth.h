#ifndef PREDSEL_EMBEDDED_OUTPUT_DISPLAYWIDTH_H
#define PREDSEL_EMBEDDED_OUTPUT_DISPLAYWIDTH_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace embedded {

/// Columns that a line of UTF-8 takes on a terminal: 0 for combining and format characters, 2 for
/// wide ones, else 1.
std::size_t DisplayWidth(std::string_view text);

/// The lines of a text: broken at '\n', and where a line is wider than `width` columns (at least 1)
/// at a blank, or inside a word that alone is too wide. Later lines of one '\n' line are indented
/// by `indent` columns. Always at least one line.
std::vector<std::string> WrapText(std::string_view text, std::size_t width, std::size_t indent = 0);

/// Width of the widest word.
std::size_t WidestWord(std::string_view text);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_DISPLAYWIDTH_H
