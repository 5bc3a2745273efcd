#ifndef PREDSEL_APPS_MODELNOTES_H
#define PREDSEL_APPS_MODELNOTES_H

#include <cstdint>
#include <string>
#include <vector>

#include "embedded/cases/LayoutRecords.h"

namespace app {

/// Throws ProgramError (kWrongUse) when more than one of the paths is standard input.
void CheckStandardInput(const std::vector<std::string>& paths);

/// The data as records of a saved classifier. Throws ProgramError that names the file when they
/// lack a variable or hold one in another type.
embedded::LayoutRecords ReadByLayout(const embedded::DataSet& data,
                                     const embedded::RecordLayout& layout,
                                     const embedded::LayoutRecordsOptions& options);

/// "1 case", "2 cases".
std::string CasesText(std::int64_t count);

/// Tells of values that the classifier has not seen, a line a variable.
void TellUnknownValues(const embedded::LayoutRecords& records,
                       const embedded::RecordLayout& layout);

}  // namespace app

#endif  // PREDSEL_APPS_MODELNOTES_H
