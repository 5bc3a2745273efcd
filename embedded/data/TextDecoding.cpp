#include "embedded/data/TextDecoding.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "embedded/data/Utf8.h"

namespace embedded {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LittleMark = "\xFF\xFE";
constexpr std::string_view kUtf16BigMark = "\xFE\xFF";

// Windows-1252 from 0x80 to 0x9F as the WHATWG encoding standard has it: unassigned bytes stand for
// the control character of the same number.
constexpr std::array<char32_t, 32> kWindows1252 = {
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

std::string FromWindows1252(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 8);
    for (const char letter : bytes) {
        const auto byte = static_cast<unsigned char>(letter);
        AppendUtf8(byte >= 0x80 && byte < 0xA0 ? kWindows1252[byte - 0x80U] : char32_t{byte}, text);
    }
    return text;
}

constexpr char kUndecodable = '\xFF';  // occurs in no UTF-8

std::string FromUtf16(std::string_view bytes, bool bigEndian) {
    const auto unit = [bytes, bigEndian](std::size_t at) {
        const auto first = static_cast<unsigned char>(bytes[at]);
        const auto second = static_cast<unsigned char>(bytes[at + 1]);
        return static_cast<char32_t>(bigEndian ? first << 8U | second : second << 8U | first);
    };
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
        const char32_t high = unit(at);
        if (high < 0xD800 || high > 0xDFFF) {
            AppendUtf8(high, text);
            continue;
        }
        const char32_t low = at + 3 < bytes.size() ? unit(at + 2) : 0;
        if (high < 0xDC00 && low >= 0xDC00 && low <= 0xDFFF) {
            AppendUtf8(0x10000 + ((high - 0xD800) << 10U) + (low - 0xDC00), text);
            at += 2;
        } else {
            text.push_back(kUndecodable);
        }
    }
    if (bytes.size() % 2 != 0) {
        text.push_back(kUndecodable);
    }
    return text;
}

enum class ZeroBytes { kNone, kFirst, kSecond };

// In which half of the byte pairs zeros stand: text in a script of Latin origin has them in one
// half of most pairs and hardly any in the other.
ZeroBytes FindZeroBytes(std::string_view bytes) {
    const std::size_t pairs = std::min<std::size_t>(bytes.size(), 4096) / 2;
    std::array<std::size_t, 2> zeros = {0, 0};
    for (std::size_t at = 0; at < 2 * pairs; ++at) {
        zeros[at % 2] += bytes[at] == '\0' ? 1U : 0U;
    }
    if (pairs > 0 && 10 * zeros[0] >= 7 * pairs && 20 * zeros[1] <= pairs) {
        return ZeroBytes::kFirst;
    }
    if (pairs > 0 && 10 * zeros[1] >= 7 * pairs && 20 * zeros[0] <= pairs) {
        return ZeroBytes::kSecond;
    }
    return ZeroBytes::kNone;
}

bool LooksLikeUtf8(std::string_view bytes) {
    if (IsUtf8(bytes)) {
        return true;
    }
    std::size_t wellFormed = 0;
    std::size_t stray = 0;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t length = Utf8SequenceLength(bytes.substr(at));
        wellFormed += length > 1 ? 1U : 0U;
        stray += length == 0 ? 1U : 0U;
        at += std::max<std::size_t>(length, 1);
    }
    return wellFormed > stray;
}

}  // namespace

DecodedText::DecodedText(std::string_view bytes, TextEncoding encoding,
                         const std::function<bool(std::string_view)>& isUtf8)
    : fText(bytes), fEncoding(encoding) {
    const auto takeMark = [this](std::string_view mark) {
        const bool found = fText.substr(0, mark.size()) == mark;
        fText.remove_prefix(found ? mark.size() : 0);
        return found;
    };
    const bool detect = encoding == TextEncoding::kDetect;
    bool bigEndian = false;
    if ((detect || encoding == TextEncoding::kUtf8) && takeMark(kUtf8Mark)) {
        fEncoding = TextEncoding::kUtf8;
    } else if (detect || encoding == TextEncoding::kUtf16) {
        if (takeMark(kUtf16LittleMark)) {
            fEncoding = TextEncoding::kUtf16;
        } else if (takeMark(kUtf16BigMark)) {
            fEncoding = TextEncoding::kUtf16;
            bigEndian = true;
        } else if (const ZeroBytes zeros = FindZeroBytes(fText); zeros != ZeroBytes::kNone) {
            fEncoding = TextEncoding::kUtf16;
            bigEndian = zeros == ZeroBytes::kFirst;
        } else if (detect) {
            fEncoding =
                isUtf8(fText) || LooksLikeUtf8(fText) ? TextEncoding::kUtf8 : TextEncoding::kLatin1;
        }
    }
    if (fEncoding == TextEncoding::kUtf16) {
        fConverted = FromUtf16(fText, bigEndian);
        fText = fConverted;
    } else if (fEncoding == TextEncoding::kLatin1) {
        fConverted = FromWindows1252(fText);
        fText = fConverted;
    }
}

}  // namespace embedded
