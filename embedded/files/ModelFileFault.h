#ifndef PREDSEL_EMBEDDED_FILES_MODELFILEFAULT_H
#define PREDSEL_EMBEDDED_FILES_MODELFILEFAULT_H

#include <string>

namespace embedded {

/// The error message of the running command that its model file cannot be written.
void ReportModelFileFault(const std::string& path, const std::string& reason);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_FILES_MODELFILEFAULT_H
