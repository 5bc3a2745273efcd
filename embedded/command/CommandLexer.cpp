#include "embedded/command/CommandLexer.h"

#include <charconv>
#include <utility>

#include "embedded/command/CharacterClasses.h"

namespace embedded {

namespace {

using namespace TokenSequenceBase;

std::int32_t SingleOperator(char32_t code) {
    switch (code) {
        case '=':
            return kOpEquals;
        case '/':
            return kOpSlash;
        case '-':
            return kOpMinus;
        case '*':
            return kOpStar;
        case ',':
            return kOpComma;
        case '(':
            return kOpLeftParen;
        case ')':
            return kOpRightParen;
        case ':':
            return kOpColon;
        case ';':
            return kOpSemicolon;
        default:
            return kOpNone;
    }
}

// The quotes that word processors and chat programs put in the place of " and '.
bool IsTypographicQuote(char32_t code) {
    return (code >= 0x2018 && code <= 0x201F) || code == 0xAB || code == 0xBB || code == 0x2039 ||
           code == 0x203A || code == '`' || code == 0xB4;
}

}  // namespace

CommandLexer::CommandLexer(const SourceText& source) : fSource(source), fText(source.Text()) {}

/// The ASCII character so many bytes ahead; 0 for the end and for any other byte.
char32_t CommandLexer::Code(std::size_t ahead) const {
    const std::size_t at = fAt + ahead;
    const unsigned char byte = at < fText.size() ? static_cast<unsigned char>(fText[at]) : 0;
    return byte < 0x80 ? byte : 0;
}

void CommandLexer::Step() {
    const CharacterAt character = ReadCharacter(fText, fAt);
    fAt += character.fLength;
    const bool firstOfTwo = character.fCode == '\r' && fAt < fText.size() && fText[fAt] == '\n';
    if (firstOfTwo) return;
    if (character.fCode == '\n' || character.fCode == '\r') {
        ++fLine;
        fColumn = 1;
    } else {
        ++fColumn;
    }
}

/// False, with a fault, for what stands nowhere in a text, not even in comments and quotes.
bool CommandLexer::CheckCharacter() {
    const CharacterAt character = ReadCharacter(fText, fAt);
    if (!character.fbValid) {
        Refuse("Byte is not UTF-8...", Here());
    } else if (character.fCode == 0) {
        Refuse("Zero byte in command...", Here());
    }
    return !fFault;
}

void CommandLexer::PassBlanks() {
    bool comment = false;
    while (!AtEnd() && CheckCharacter()) {
        const char32_t code = ReadCharacter(fText, fAt).fCode;
        if (code == '\n' || code == '\r') {
            comment = false;
        } else if (code == '#') {
            comment = true;
        } else if (!comment && !IsBlank(code)) {
            return;
        }
        fbAfterOperand = false;
        Step();
    }
}

TokenInfoObj CommandLexer::Token(TokenKind kind, std::string text, TextPlace place) const {
    return TokenInfoObj(kind, std::move(text), place.fLine, place.fColumn);
}

TokenInfoObj CommandLexer::Refuse(std::string_view key, TextPlace place,
                                  const std::vector<std::string>& arguments) {
    fFault = MakeFault(key, arguments, fSource, place);
    return Token(TokenKind::End, {}, place);
}

TokenInfoObj CommandLexer::Next() {
    if (!fFault) PassBlanks();
    fTokenStart = fAt;
    if (fFault || AtEnd()) return Token(TokenKind::End, {}, Here());
    const char32_t code = Code();
    if (code == '"' || code == '\'') return ReadQuoted(static_cast<char>(code));
    const bool sign = (code == '-' && !fbAfterOperand) || code == '+';
    const std::size_t digit = sign ? 1 : 0;
    if (IsDigit(Code(digit)) || (Code(digit) == '.' && IsDigit(Code(digit + 1))))
        return ReadNumber();
    if (IsWordStart(ReadCharacter(fText, fAt).fCode)) return ReadWord();
    return ReadOperator();
}

TokenInfoObj CommandLexer::ReadWord() {
    const TextPlace place = Here();
    while (!AtEnd() && CheckCharacter()) {
        // A period belongs to a word only between two of its characters, so `a..b` is a range.
        const bool period = Code() == '.';
        if (period && fAt + 1 == fText.size()) break;
        const CharacterAt character = ReadCharacter(fText, period ? fAt + 1 : fAt);
        if (!character.fbValid || !IsWordPart(character.fCode)) {
            if (!period && !character.fbValid) continue;  // refused by CheckCharacter
            break;
        }
        if (period) Step();
        Step();
    }
    if (fFault) return Token(TokenKind::End, {}, place);
    fbAfterOperand = true;
    return Token(TokenKind::Name, std::string(fText.substr(fTokenStart, fAt - fTokenStart)), place);
}

TokenInfoObj CommandLexer::ReadNumber() {
    const TextPlace place = Here();
    bool plain = true;  // sign, digits and periods only so far
    if (Code() == '-' || Code() == '+') Step();
    while (!AtEnd() && CheckCharacter()) {
        const CharacterAt character = ReadCharacter(fText, fAt);
        const bool range = Code() == '.' && Code(1) == '.';
        const bool exponent = plain && (character.fCode == 'e' || character.fCode == 'E');
        if (range || !(character.fCode == '.' || IsWordPart(character.fCode))) break;
        plain = plain && (character.fCode == '.' || IsDigit(character.fCode));
        Step();
        if (exponent && (Code() == '-' || Code() == '+')) Step();
    }
    if (fFault) return Token(TokenKind::End, {}, place);
    const std::string_view typed = fText.substr(fTokenStart, fAt - fTokenStart);
    const std::string_view unsignedPlus = typed.substr(typed.front() == '+' ? 1 : 0);
    double number = 0;
    const char* end = unsignedPlus.data() + unsignedPlus.size();
    const auto [stop, error] = std::from_chars(unsignedPlus.data(), end, number);
    if (error == std::errc::result_out_of_range && stop == end)
        return Refuse("Number ^1 out of range...", place, {ShownText(typed)});
    if (error != std::errc() || stop != end)
        return Refuse(plain ? "Not a number ^1..." : "Neither number nor name ^1...", place,
                      {ShownText(typed)});
    TokenInfoObj token = Token(TokenKind::Number, std::string(typed), place);
    token.SetNumber(number);
    fbAfterOperand = true;
    return token;
}

TokenInfoObj CommandLexer::ReadQuoted(char quote) {
    const bool name = quote == '"';
    const TextPlace place = Here();
    std::string text;
    Step();
    while (!AtEnd() && CheckCharacter()) {
        if (fText[fAt] == quote) {
            Step();
            if (Code() != static_cast<char32_t>(quote)) {
                if (name && text.empty()) return Refuse("Empty name in quotes...", place);
                if (name && fLine > place.fLine && !fFirstLongName.IsKnown())
                    fFirstLongName = place;
                TokenInfoObj token =
                    Token(name ? TokenKind::Name : TokenKind::String, std::move(text), place);
                token.SetQuoted(name);
                fbAfterOperand = true;
                return token;
            }
        } else if (!name && (Code() == '\n' || Code() == '\r')) {
            break;
        }
        const std::size_t start = fAt;
        Step();
        text.append(fText.substr(start, fAt - start));
    }
    if (fFault) return Token(TokenKind::End, {}, place);
    if (!name) return Refuse("Single quote not closed...", place);
    // One quote that lacks its end pairs with the beginning of the next one, and so on to the last.
    // Names hardly ever go over the end of a line, so the first that did is where it began.
    return Refuse("Double quote not closed...", fFirstLongName.IsKnown() ? fFirstLongName : place);
}

TokenInfoObj CommandLexer::ReadOperator() {
    const TextPlace place = Here();
    std::int32_t code = SingleOperator(Code());
    if (Code() == '.' && Code(1) == '.') {
        code = kOpRange;
        Step();
    }
    if (code == kOpNone) return RefuseCharacter();
    Step();
    fbAfterOperand = false;
    TokenInfoObj token = Token(TokenKind::Operator,
                               std::string(fText.substr(fTokenStart, fAt - fTokenStart)), place);
    token.SetOperator(code);
    return token;
}

TokenInfoObj CommandLexer::RefuseCharacter() {
    const char32_t code = ReadCharacter(fText, fAt).fCode;
    return Refuse(IsTypographicQuote(code) ? "Typographic quote ^1..." : "Illegal character ^1...",
                  Here(), {NamedCharacter(fText.substr(fAt))});
}

}  // namespace embedded
