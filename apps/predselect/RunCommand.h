#ifndef PREDSEL_APPS_RUNCOMMAND_H
#define PREDSEL_APPS_RUNCOMMAND_H

#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramError.h"

namespace app {

/// `run` and `select`: reads the commands and the data, runs the one on the other and writes the
/// report. Throws ProgramError and embedded::DataError.
ExitStatus RunCommand(const ProgramOptions& options);

/// `describe`. Throws the same.
ExitStatus DescribeCommand(const ProgramOptions& options);

}  // namespace app

#endif  // PREDSEL_APPS_RUNCOMMAND_H
