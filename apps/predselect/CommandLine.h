#ifndef PREDSEL_APPS_COMMANDLINE_H
#define PREDSEL_APPS_COMMANDLINE_H

#include <CLI/CLI.hpp>
#include <memory>

#include "apps/predselect/Options.h"

namespace app {

/// The program's command line. Parsing it fills the options, which must live as long.
std::unique_ptr<CLI::App> MakeCommandLine(ProgramOptions& options);

}  // namespace app

#endif  // PREDSEL_APPS_COMMANDLINE_H
