#include "embedded/data/Utf8.h"

#include <cstdint>
#include <cstring>

namespace embedded {

std::size_t Utf8SequenceLength(std::string_view text) {
    if (text.empty()) {
        return 0;
    }
    const auto byte = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) {
        return 1;
    }
    std::size_t length = 0;
    unsigned char low = 0x80;  // bounds of the second byte
    unsigned char high = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        low = lead == 0xE0 ? 0xA0 : 0x80;
        high = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        low = lead == 0xF0 ? 0x90 : 0x80;
        high = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (text.size() < length || byte(1) < low || byte(1) > high) {
        return 0;
    }
    for (std::size_t at = 2; at < length; ++at) {
        if (byte(at) < 0x80 || byte(at) > 0xBF) {
            return 0;
        }
    }
    return length;
}

bool IsUtf8(std::string_view text) {
    std::size_t at = 0;
    while (at < text.size()) {
        // Eight ASCII bytes at a time: most text is nothing else.
        std::uint64_t word = 0;
        if (at + sizeof word <= text.size()) {
            std::memcpy(&word, text.data() + at, sizeof word);
            if ((word & 0x8080808080808080U) == 0) {
                at += sizeof word;
                continue;
            }
        }
        const std::size_t length = Utf8SequenceLength(text.substr(at));
        if (length == 0) {
            return false;
        }
        at += length;
    }
    return true;
}

std::string ReplaceInvalidUtf8(std::string_view text) {
    std::string result;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t length = Utf8SequenceLength(text.substr(at));
        if (length == 0) {
            AppendUtf8(0xFFFD, result);
            ++at;
        } else {
            result.append(text.substr(at, length));
            at += length;
        }
    }
    return result;
}

std::string Shortened(std::string_view text, std::size_t maxBytes) {
    if (text.size() <= maxBytes) {
        return std::string(text);
    }
    std::size_t length = maxBytes;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
        --length;
    }
    return std::string(text.substr(0, length)) + "...";
}

void AppendUtf8(char32_t codePoint, std::string& out) {
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (codePoint < 0x80) {
        put(codePoint);
    } else if (codePoint < 0x800) {
        put(0xC0 | (codePoint >> 6U));
        put(0x80 | (codePoint & 0x3FU));
    } else if (codePoint < 0x10000) {
        put(0xE0 | (codePoint >> 12U));
        put(0x80 | ((codePoint >> 6U) & 0x3FU));
        put(0x80 | (codePoint & 0x3FU));
    } else {
        put(0xF0 | (codePoint >> 18U));
        put(0x80 | ((codePoint >> 12U) & 0x3FU));
        put(0x80 | ((codePoint >> 6U) & 0x3FU));
        put(0x80 | (codePoint & 0x3FU));
    }
}

}  // namespace embedded
