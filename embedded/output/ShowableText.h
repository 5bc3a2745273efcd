#ifndef PREDSEL_EMBEDDED_OUTPUT_SHOWABLETEXT_H
#define PREDSEL_EMBEDDED_OUTPUT_SHOWABLETEXT_H

#include <string>
#include <string_view>

namespace embedded {

/// Takes the first code point off a text that is not empty. A byte that begins no well-formed UTF-8
/// sequence is taken alone and gives U+FFFD.
char32_t TakeCodePoint(std::string_view& text);

/// A text of the data made fit to be shown: valid UTF-8, line breaks as '\n', a tab as a blank, and
/// other control characters as U+FFFD, so that no label can steer a terminal or break a page.
std::string ShowableText(std::string_view text);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_SHOWABLETEXT_H
