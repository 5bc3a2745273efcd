#ifndef PREDSEL_APPS_SAVEDATA_H
#define PREDSEL_APPS_SAVEDATA_H

#include <string>
#include <vector>

#include "apps/predselect/Options.h"
#include "apps/predselect/OutputFiles.h"
#include "apps/predselect/OutputPaths.h"
#include "embedded/data/DataSet.h"

namespace app {

/// What --save writes: the data, and beside them a dictionary when the data that were read have
/// one, since labels, levels and missing values would be lost otherwise. Throws DataError when the
/// name says no format that can be written; "-" is CSV on standard output.
std::vector<NamedPath> SavedPaths(const ProgramOptions& options);

/// Writes the data set to stand at these paths when the files are committed. Throws ProgramError
/// and embedded::DataError.
void SaveData(const embedded::DataSet& data, const ProgramOptions& options, OutputFiles& files);

}  // namespace app

#endif  // PREDSEL_APPS_SAVEDATA_H
