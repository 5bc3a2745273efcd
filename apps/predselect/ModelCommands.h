#ifndef PREDSEL_APPS_MODELCOMMANDS_H
#define PREDSEL_APPS_MODELCOMMANDS_H

#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramError.h"

// The commands on saved classifiers. All throw ProgramError and embedded::DataError.

namespace app {

/// `score`: classifies the cases of a data file and writes the data with the predictions.
ExitStatus ScoreCommand(const ProgramOptions& options);
/// `update`: trains a saved classifier on further cases.
ExitStatus UpdateCommand(const ProgramOptions& options);
/// `merge`: joins classifiers that were trained on different cases.
ExitStatus MergeCommand(const ProgramOptions& options);

}  // namespace app

#endif  // PREDSEL_APPS_MODELCOMMANDS_H
