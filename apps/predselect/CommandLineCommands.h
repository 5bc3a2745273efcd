#ifndef PREDSEL_APPS_COMMANDLINECOMMANDS_H
#define PREDSEL_APPS_COMMANDLINECOMMANDS_H

#include <CLI/CLI.hpp>

#include "apps/predselect/Options.h"

// The declarations of the commands that have many options. Parsing one sets ProgramOptions::fVerb.

namespace app {

void AddSelect(CLI::App& program, ProgramOptions& options);
void AddBayes(CLI::App& program, ProgramOptions& options);
/// score, update and merge, which work on saved states.
void AddModelCommands(CLI::App& program, ProgramOptions& options);

}  // namespace app

#endif  // PREDSEL_APPS_COMMANDLINECOMMANDS_H
