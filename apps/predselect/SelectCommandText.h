#ifndef PREDSEL_APPS_SELECTCOMMANDTEXT_H
#define PREDSEL_APPS_SELECTCOMMANDTEXT_H

#include <string>

#include "apps/predselect/Options.h"

namespace app {

/// The SELECTPRED command that the options stand for, a subcommand a line.
std::string SelectCommandText(const SelectOptions& options);

}  // namespace app

#endif  // PREDSEL_APPS_SELECTCOMMANDTEXT_H
