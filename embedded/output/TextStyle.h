#ifndef PREDSEL_EMBEDDED_OUTPUT_TEXTSTYLE_H
#define PREDSEL_EMBEDDED_OUTPUT_TEXTSTYLE_H

#include <cstddef>

namespace embedded {

/// How text output looks.
struct TextStyle {
    std::size_t fWidth = 80;     // columns of the terminal; 0: as wide as it takes
    bool fbAscii = false;        // rules and footnote marks in ASCII; labels stay as they are
    bool fbColor = false;        // titles and levels of messages by ANSI escape sequences
    bool fbShowCommand = false;  // the command above its output; always so with several commands
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_TEXTSTYLE_H
