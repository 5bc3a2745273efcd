#include "embedded/output/ShowableText.h"

#include <array>
#include <cstddef>

#include "embedded/data/Utf8.h"

namespace embedded {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsControl(char32_t codePoint) {
    return (codePoint < 0x20 && codePoint != U'\n') || (codePoint >= 0x7F && codePoint < 0xA0) ||
           codePoint == 0xFFFE || codePoint == 0xFFFF;
}

}  // namespace

char32_t TakeCodePoint(std::string_view& text) {
    const std::size_t length = Utf8SequenceLength(text);
    if (length == 0) {
        text.remove_prefix(1);
        return kReplacement;
    }
    constexpr std::array<unsigned char, 5> kLeadBits = {0, 0x7F, 0x1F, 0x0F, 0x07};  // by length
    char32_t codePoint = static_cast<unsigned char>(text.front()) & kLeadBits.at(length);
    for (std::size_t i = 1; i < length; ++i)
        codePoint = codePoint << 6U | (static_cast<unsigned char>(text[i]) & 0x3FU);
    text.remove_prefix(length);
    return codePoint;
}

std::string ShowableText(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const char32_t codePoint = TakeCodePoint(text);
        if (codePoint == U'\r') {
            if (text.empty() || text.front() != '\n') out += '\n';
        } else if (codePoint == U'\t') {
            out += ' ';
        } else {
            AppendUtf8(IsControl(codePoint) ? kReplacement : codePoint, out);
        }
    }
    return out;
}

}  // namespace embedded
