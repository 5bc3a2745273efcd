#include "embedded/command/CharacterClasses.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "embedded/output/DisplayWidth.h"
#include "embedded/output/ShowableText.h"

namespace embedded {

namespace {

struct CodeRange {
    char32_t fFirst;
    char32_t fLast;
};

template <std::size_t N>
bool IsIn(const std::array<CodeRange, N>& ranges, char32_t code) {
    return std::any_of(ranges.begin(), ranges.end(), [code](CodeRange range) {
        return code >= range.fFirst && code <= range.fLast;
    });
}

// Beyond ASCII.
constexpr std::array<CodeRange, 6> kBlanks = {{{0xA0, 0xA0},
                                               {0x1680, 0x1680},
                                               {0x2000, 0x200A},
                                               {0x202F, 0x202F},
                                               {0x205F, 0x205F},
                                               {0x3000, 0x3000}}};

// Beyond ASCII, what stands in no plain word because there it is a slip of typing or pasting:
// blanks, controls, angle quotes, general punctuation (dashes, quotes, dots, invisible marks; the
// joiners U+200C and U+200D belong to words of some scripts), the minus sign, punctuation of CJK
// and of full width, specials and tags.
constexpr std::array<CodeRange, 17> kNotInWords = {{{0x80, 0xA0},
                                                    {0xAB, 0xAB},
                                                    {0xBB, 0xBB},
                                                    {0x1680, 0x1680},
                                                    {0x2000, 0x200B},
                                                    {0x200E, 0x206F},
                                                    {0x2212, 0x2212},
                                                    {0x3000, 0x3003},
                                                    {0x3008, 0x3011},
                                                    {0x3014, 0x301F},
                                                    {0xFEFF, 0xFEFF},
                                                    {0xFF01, 0xFF0F},
                                                    {0xFF1A, 0xFF20},
                                                    {0xFF3B, 0xFF3E},
                                                    {0xFF5B, 0xFF65},
                                                    {0xFFF0, 0xFFFF},
                                                    {0xE0000, 0xE0FFF}}};

}  // namespace

CharacterAt ReadCharacter(std::string_view text, std::size_t position) {
    const auto byte = static_cast<unsigned char>(text[position]);
    if (byte < 0x80) return {byte, 1, true};
    constexpr char32_t kReplacement = 0xFFFD;
    std::string_view rest = text.substr(position);
    const char32_t code = TakeCodePoint(rest);
    const std::size_t length = text.size() - position - rest.size();
    // The replacement character itself takes three bytes; for a bad byte it stands after one.
    return {code, length, code != kReplacement || length > 1};
}

std::int32_t CountCharacters(std::string_view text) {
    std::int32_t count = 0;
    for (std::size_t at = 0; at < text.size(); at += ReadCharacter(text, at).fLength) ++count;
    return count;
}

bool IsBlank(char32_t code) {
    if (code < 0x80) return code == ' ' || (code >= '\t' && code <= '\r');
    return IsIn(kBlanks, code);
}

bool IsDigit(char32_t code) { return code >= '0' && code <= '9'; }

bool IsWordStart(char32_t code) {
    if (code >= 0x80) return !IsIn(kNotInWords, code);
    return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') || code == '_' ||
           code == '$' || code == '@';
}

bool IsWordPart(char32_t code) { return IsWordStart(code) || IsDigit(code); }

bool IsPlainWord(std::string_view text) {
    if (text.empty()) return false;
    bool period = false;
    for (std::size_t at = 0; at < text.size();) {
        const CharacterAt character = ReadCharacter(text, at);
        if (!character.fbValid) return false;
        const bool begins = at == 0;
        at += character.fLength;
        if (character.fCode == '.' && !begins && !period) {
            period = true;
            continue;
        }
        if (begins ? !IsWordStart(character.fCode) : !IsWordPart(character.fCode)) return false;
        period = false;
    }
    return !period;
}

bool IsTidyName(std::string_view text) {
    bool blank = true;  // the character before, and the edges of the text
    for (std::size_t at = 0; at < text.size();) {
        const CharacterAt character = ReadCharacter(text, at);
        const bool control =
            character.fCode < 0x20 || (character.fCode >= 0x7F && character.fCode < 0xA0);
        const bool begins = at == 0;
        blank = IsBlank(character.fCode);
        if (!character.fbValid || control || (begins && blank)) return false;
        at += character.fLength;
    }
    return !blank;
}

std::string NamedCharacter(std::string_view text) {
    const CharacterAt character = ReadCharacter(text, 0);
    const std::string shape(text.substr(0, character.fLength));
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "U+%04X", static_cast<unsigned>(character.fCode));
    const bool shapeless =
        IsBlank(character.fCode) || DisplayWidth(shape) == 0 || ShowableText(shape) != shape;
    return shapeless ? std::string(code.data()) : shape + " (" + code.data() + ")";
}

}  // namespace embedded
