#ifndef PREDSEL_EMBEDDED_OUTPUT_HTMLRENDERER_H
#define PREDSEL_EMBEDDED_OUTPUT_HTMLRENDERER_H

#include <string>

#include "embedded/output/Report.h"

namespace embedded {

/// The report as one page that needs nothing else: no scripts, no network. Its content policy
/// admits its own style sheets by their hashes and nothing more. The page is well-formed XML too.
class HtmlRenderer {
 public:
    static std::string Render(const Report& report);
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_HTMLRENDERER_H
