#ifndef PREDSEL_EMBEDDED_COMMAND_COMMANDPLACES_H
#define PREDSEL_EMBEDDED_COMMAND_COMMANDPLACES_H

#include <string_view>

#include "embedded/command/CommandTokens.h"

namespace embedded {

/// The place that a message speaks of when it knows words only: the subcommand (empty for the
/// variables that open the command), in it the parameter, behind that the text. An empty parameter
/// or text is not looked for. The nearest thing that is found: else the parameter, the subcommand
/// or the command's name.
TextPlace FindPlace(const CommandTokens& command, std::string_view subcommand,
                    std::string_view parameter, std::string_view text);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_COMMANDPLACES_H
