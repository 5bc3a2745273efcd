#ifndef PREDSEL_EMBEDDED_OUTPUT_TEXTRENDERER_H
#define PREDSEL_EMBEDDED_OUTPUT_TEXTRENDERER_H

#include <string>

#include "embedded/output/Report.h"
#include "embedded/output/TextStyle.h"

namespace embedded {

/// The report as text for a terminal: messages, notes and tables in order. Charts have no text
/// form; their numbers are those of the table before them.
class TextRenderer {
 public:
    static std::string Render(const Report& report, const TextStyle& style);
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_TEXTRENDERER_H
