#include "embedded/xml/XmlText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace embedded {

std::size_t XmlCharacterLength(std::string_view text, std::size_t at) {
    const auto byte = [text](std::size_t i) {
        return static_cast<unsigned>(static_cast<unsigned char>(text[i]));
    };
    const unsigned lead = byte(at);
    if (lead < 0x80) {
        return lead >= 0x20 || lead == '\t' || lead == '\n' || lead == '\r' ? 1 : 0;
    }
    // 0x80 to 0xC1 are continuations or overlong; beyond 0xF4 lies no character.
    if (lead < 0xC2 || lead > 0xF4) return 0;
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (text.size() - at < length) return 0;
    unsigned code = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(at + i) & 0xC0u) != 0x80u) return 0;
        code = (code << 6) | (byte(at + i) & 0x3Fu);
    }
    const bool isOverlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool isNoCharacter = code == 0xFFFE || code == 0xFFFF || code > 0x10FFFF;
    return isOverlong || isSurrogate || isNoCharacter ? 0 : length;
}

std::string EscapeXml(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = XmlCharacterLength(text, at);
        if (length == 0) {
            out += "\xEF\xBF\xBD";
            ++at;
            continue;
        }
        switch (text[at]) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            // As they stand, readers turn these into blanks or plain line ends.
            case '\t':
                out += "&#9;";
                break;
            case '\n':
                out += "&#10;";
                break;
            case '\r':
                out += "&#13;";
                break;
            default:
                out.append(text, at, length);
        }
        at += length;
    }
    return out;
}

std::string RoundTripText(double value) {
    std::array<char, 32> buffer;  // 24 characters suffice for any double
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    return std::string(buffer.data(), end);
}

std::string PlainNumberText(double value) {
    if (!(std::abs(value) < 1e15) || value != std::trunc(value)) return RoundTripText(value);
    std::array<char, 24> buffer;  // a sign and 15 digits
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed)
            .ptr;
    return std::string(buffer.data(), end);
}

}  // namespace embedded
