#ifndef PREDSEL_EMBEDDED_OUTPUT_REPORTSTYLE_H
#define PREDSEL_EMBEDDED_OUTPUT_REPORTSTYLE_H

#include <string_view>

namespace embedded {

/// The bytes of report.css. The build makes the source from that file.
std::string_view ReportStyle();

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_REPORTSTYLE_H
