#ifndef PREDSEL_EMBEDDED_CHARTS_SVGTEXT_H
#define PREDSEL_EMBEDDED_CHARTS_SVGTEXT_H

#include <string>
#include <string_view>

namespace embedded {

/// About how wide a text is in a sans-serif font, in the unit of `size`. No font is at hand, so
/// this goes by classes of characters and errs on the wide side.
double EstimatedTextWidth(std::string_view text, double size);

/// The text, or its beginning and an ellipsis where it would be wider than `width`.
std::string ShortenedText(std::string_view text, double size, double width);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_CHARTS_SVGTEXT_H
