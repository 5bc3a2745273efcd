#ifndef PREDSEL_EMBEDDED_COMMANDRUNNER_H
#define PREDSEL_EMBEDDED_COMMANDRUNNER_H

#include <vector>

#include "embedded/RunOptions.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/data/DataSet.h"
#include "embedded/output/Report.h"

namespace embedded {

/// A procedure library's entry. Given as a pointer, so that a library loaded at run time serves as
/// well as one that is linked in.
using ProcedureEntry = void (*)();

/// Runs the commands in turn on the data set and stops behind the first that does not end well; the
/// commands after it are not in the result. New variables of a command are in the data set for the
/// commands after it. A command that does not end well leaves the data set as it was.
std::vector<CommandReport> RunCommands(DataSet& data, const std::vector<CommandTokens>& commands,
                                       ProcedureEntry entry, const RunOptions& options = {});

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMANDRUNNER_H
