#ifndef PREDSEL_EMBEDDED_COMMAND_COMMANDLEXER_H
#define PREDSEL_EMBEDDED_COMMAND_COMMANDLEXER_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/command/CommandFault.h"
#include "host/CommandLanguage.h"

namespace embedded {

/// Cuts a text into tokens, one after the other, up to the first fault.
class CommandLexer {
 public:
    /// Borrows the text.
    explicit CommandLexer(const SourceText& source);

    /// The next token; of kind End behind the last one and at a fault. Comments and blanks are
    /// passed over, `;` comes as an operator.
    TokenInfoObj Next();
    /// What stopped the reading, if anything did.
    const std::optional<CommandFault>& Fault() const { return fFault; }
    /// Byte positions of the token that Next gave last, and the place behind it.
    std::size_t TokenStart() const { return fTokenStart; }
    std::size_t TokenEnd() const { return fAt; }
    TextPlace EndPlace() const { return {fLine, fColumn}; }

 private:
    bool AtEnd() const { return fAt >= fText.size(); }
    char32_t Code(std::size_t ahead = 0) const;
    TextPlace Here() const { return EndPlace(); }
    void Step();
    void PassBlanks();
    bool CheckCharacter();
    TokenInfoObj Token(TokenKind kind, std::string text, TextPlace place) const;
    TokenInfoObj Refuse(std::string_view key, TextPlace place,
                        const std::vector<std::string>& arguments = {});
    TokenInfoObj RefuseCharacter();
    TokenInfoObj ReadWord();
    TokenInfoObj ReadNumber();
    TokenInfoObj ReadQuoted(char quote);
    TokenInfoObj ReadOperator();

    const SourceText& fSource;  // borrowed from the constructor's caller
    std::string_view fText;
    std::size_t fAt = 0;
    std::size_t fTokenStart = 0;
    std::int32_t fLine = 1;
    std::int32_t fColumn = 1;
    bool fbAfterOperand = false;  // right behind a name, number or string: a sign is an operator
    TextPlace fFirstLongName;     // the first quoted name that goes on over the end of its line
    std::optional<CommandFault> fFault;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_COMMANDLEXER_H
