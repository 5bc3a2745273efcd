#ifndef PREDSEL_APPS_COMMANDTEXTPARTS_H
#define PREDSEL_APPS_COMMANDTEXTPARTS_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/predselect/Options.h"

// What the texts of the two commands share.

namespace app {

/// The elements of a variable list, each with a blank before it. What is none of the language's own
/// forms is a name.
std::string WrittenList(const std::vector<std::string>& elements);

/// Keywords are written in upper case; a number stays as it was typed, because reports show it so.
std::string Keyword(std::string text);

using Params = std::vector<std::pair<std::string_view, std::string>>;
/// "/NAME PARAM=VALUE ..." of the values that were given; nothing when none was.
std::string SubCommand(std::string_view name, const Params& params);

/// The target with its qualifier, the predictors, and EXCEPT.
std::string VariablesText(const VariableOptions& variables, const std::string& qualifier = {});

}  // namespace app

#endif  // PREDSEL_APPS_COMMANDTEXTPARTS_H
