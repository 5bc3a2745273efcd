#ifndef PREDSEL_EMBEDDED_COMMAND_COMMANDFAULT_H
#define PREDSEL_EMBEDDED_COMMAND_COMMANDFAULT_H

#include <string>
#include <string_view>
#include <vector>

#include "embedded/command/SourceText.h"

namespace embedded {

/// What is wrong with a command and where.
struct CommandFault {
    std::string fKey;      // string-table key of the text
    std::string fText;     // one line: "FILE:LINE:COLUMN: what is wrong; what was expected"
    std::string fExcerpt;  // the source line and a line with a caret, for fixed-width type
    TextPlace fPlace;

    /// All lines of it, for standard error or a report.
    std::string Lines() const { return fExcerpt.empty() ? fText : fText + "\n" + fExcerpt; }
};

/// The fault of this key at a place of the source; arguments fill the text's ^1, ^2, ... An unknown
/// place leaves out line, column and excerpt. Arguments that come from the user are given through
/// ShownText, so that the message stays one line of bearable length.
CommandFault MakeFault(std::string_view key, const std::vector<std::string>& arguments,
                       const SourceText& source, TextPlace place);

/// A text of the user's as it may stand in a message: at most 60 characters, with control
/// characters and bytes that are no UTF-8 replaced.
std::string ShownText(std::string_view text);

/// The line and under it a caret at the place. Tabs stay tabs in both, so that they line up. Of a
/// long line only the part around the caret is shown.
std::string Excerpt(const SourceText& source, TextPlace place);

/// Adds the fault to the running command's report as an error of the command language and sets the
/// host's error word. Needs an active HostSession.
void ReportFault(const CommandFault& fault);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_COMMANDFAULT_H
