#ifndef PREDSEL_EMBEDDED_OUTPUT_INLINESVG_H
#define PREDSEL_EMBEDDED_OUTPUT_INLINESVG_H

#include <set>
#include <string>
#include <vector>

namespace embedded {

/// A drawing made fit to stand inside a page.
struct InlineSvg {
    /// Reads a drawing. usedIds are the page's ids so far and grow by those of the drawing: where
    /// one is taken, all ids of the drawing and the references to them get the prefix.
    InlineSvg(const std::string& svg, const std::string& prefix, std::set<std::string>& usedIds);

    std::string fMarkup;                // empty when the text is no well-formed <svg> element
    std::vector<std::string> fvStyles;  // contents of its style sheets
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_INLINESVG_H
