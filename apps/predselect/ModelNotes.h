#ifndef PREDSEL_APPS_MODELNOTES_H
#define PREDSEL_APPS_MODELNOTES_H

#include <string>

#include "embedded/cases/LayoutRecords.h"

namespace app {

/// The data as records of a saved classifier. Throws ProgramError that names the file when they
/// lack a variable or hold one in another type.
embedded::LayoutRecords ReadByLayout(const embedded::DataSet& data,
                                     const embedded::RecordLayout& layout,
                                     const embedded::LayoutRecordsOptions& options,
                                     const std::string& dataPath);

/// Tells of values that the classifier has not seen, a line a variable.
void TellUnknownValues(const embedded::LayoutRecords& records,
                       const embedded::RecordLayout& layout);

}  // namespace app

#endif  // PREDSEL_APPS_MODELNOTES_H
