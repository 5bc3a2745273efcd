#ifndef PREDSEL_APPS_TERMINAL_H
#define PREDSEL_APPS_TERMINAL_H

#include <cstdint>
#include <string>
#include <string_view>

#include "apps/predselect/Options.h"

namespace app {

/// Columns for text on standard output: those asked for, else the terminal's, else 100.
std::int32_t TextWidth(std::int32_t asked);

/// Columns of the terminal of standard error.
std::int32_t ErrorTerminalWidth();

/// Whether text on standard output is coloured: as asked; Auto colours a terminal that is not
/// "dumb", unless the environment holds NO_COLOR.
bool UseColor(ColorMode mode);

/// A name or a text of the data as part of a message of one line: line breaks as blanks, other
/// control characters replaced.
std::string OneLine(std::string_view text);

/// Whether standard error is a terminal on which a line can be rewritten.
bool ProgressIsSeen();

}  // namespace app

#endif  // PREDSEL_APPS_TERMINAL_H
