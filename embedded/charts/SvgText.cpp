#include "embedded/charts/SvgText.h"

#include "embedded/output/DisplayWidth.h"
#include "embedded/output/ShowableText.h"

namespace embedded {
namespace {

constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

/// Takes the first character off a text that is not empty; its width as a share of the font's size.
double TakeWidth(std::string_view& text) {
    const std::string_view before = text;
    const char32_t character = TakeCodePoint(text);
    constexpr std::u32string_view kNarrow = U" .,:;'`|!()[]{}/\\ijlftrI-";
    constexpr std::u32string_view kBroad = U"mwMW@%\u2026";
    if (kNarrow.find(character) != std::u32string_view::npos) return 0.38;
    if (kBroad.find(character) != std::u32string_view::npos) return 0.98;
    if (character >= U'A' && character <= U'Z') return 0.72;
    if (character < 0x80) return 0.61;
    const std::size_t columns = DisplayWidth(before.substr(0, before.size() - text.size()));
    return columns == 0 ? 0.0 : columns == 1 ? 0.66 : 1.05;
}

}  // namespace

double EstimatedTextWidth(std::string_view text, double size) {
    double width = 0;
    while (!text.empty()) width += TakeWidth(text);
    return width * size;
}

std::string ShortenedText(std::string_view text, double size, double width) {
    if (EstimatedTextWidth(text, size) <= width) return std::string(text);
    const double room = width - EstimatedTextWidth(kEllipsis, size);
    std::string_view rest = text;
    std::string_view kept;
    double used = 0;
    while (!rest.empty()) {
        used += TakeWidth(rest) * size;
        if (used > room) break;
        kept = text.substr(0, text.size() - rest.size());
    }
    while (!kept.empty() && kept.back() == ' ') kept.remove_suffix(1);
    return std::string(kept) + std::string(kEllipsis);
}

}  // namespace embedded
