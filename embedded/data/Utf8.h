#ifndef PREDSEL_EMBEDDED_DATA_UTF8_H
#define PREDSEL_EMBEDDED_DATA_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

namespace embedded {

/// Length of the well-formed UTF-8 sequence at the start of text (Unicode 15, table 3-7: no
/// surrogates, no overlong forms), 0 when there is none.
std::size_t Utf8SequenceLength(std::string_view text);

/// Whether the text is well-formed UTF-8 throughout.
bool IsUtf8(std::string_view text);

/// The text with U+FFFD for each byte that belongs to no well-formed sequence.
std::string ReplaceInvalidUtf8(std::string_view text);

/// The text, or as many of its first bytes as make whole characters and not more than maxBytes,
/// with
/// "..." behind them.
std::string Shortened(std::string_view text, std::size_t maxBytes);

/// Appends a code point, which is no surrogate and at most 0x10FFFF.
void AppendUtf8(char32_t codePoint, std::string& out);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_UTF8_H
