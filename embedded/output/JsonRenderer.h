#ifndef PREDSEL_EMBEDDED_OUTPUT_JSONRENDERER_H
#define PREDSEL_EMBEDDED_OUTPUT_JSONRENDERER_H

#include <string>

#include "embedded/output/Report.h"

namespace embedded {

/// The report as JSON for programs, in the form of docs/formats/report-json.md. Numbers are
/// unrounded, in their shortest form that reads back as the same double. The same report gives the
/// same bytes.
class JsonRenderer {
 public:
    static std::string Render(const Report& report);
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_JSONRENDERER_H
