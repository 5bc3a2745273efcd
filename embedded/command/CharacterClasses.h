#ifndef PREDSEL_EMBEDDED_COMMAND_CHARACTERCLASSES_H
#define PREDSEL_EMBEDDED_COMMAND_CHARACTERCLASSES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace embedded {

/// One character of a text. A byte that begins no valid UTF-8 sequence is one without a code.
struct CharacterAt {
    char32_t fCode = 0;
    std::size_t fLength = 1;  // bytes
    bool fbValid = true;
};

/// The character at a byte position. REQUIRES: position < text.size().
CharacterAt ReadCharacter(std::string_view text, std::size_t position);

/// How many characters there are.
std::int32_t CountCharacters(std::string_view text);

bool IsBlank(char32_t code);  // line breaks and the blanks of other scripts included
bool IsDigit(char32_t code);  // of ASCII
/// What a plain word may begin with and go on with. A period inside a word is not asked for here.
bool IsWordStart(char32_t code);
bool IsWordPart(char32_t code);

/// True for a name that is one plain word, so that it needs no quotes.
bool IsPlainWord(std::string_view text);

/// True for a text that can name a variable without being mistaken: not empty, no blank at either
/// end, no control character, valid UTF-8.
bool IsTidyName(std::string_view text);

/// The first character of a text as messages name it: itself and its code, or the code alone when
/// it has no shape. REQUIRES: the text begins with a valid character.
std::string NamedCharacter(std::string_view text);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_CHARACTERCLASSES_H
