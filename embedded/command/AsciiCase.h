#ifndef PREDSEL_EMBEDDED_COMMAND_ASCIICASE_H
#define PREDSEL_EMBEDDED_COMMAND_ASCIICASE_H

#include <string>
#include <string_view>

namespace embedded {

/// The host's rule for command words: the case of ASCII letters does not count, all other bytes do.
constexpr char UpperAscii(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

inline std::string UpperAscii(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) c = UpperAscii(c);
    return upper;
}

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_ASCIICASE_H
