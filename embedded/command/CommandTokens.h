#ifndef PREDSEL_EMBEDDED_COMMAND_COMMANDTOKENS_H
#define PREDSEL_EMBEDDED_COMMAND_COMMANDTOKENS_H

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/command/CommandFault.h"
#include "embedded/command/SourceText.h"
#include "host/CommandLanguage.h"

namespace embedded {

/// The commands that there are.
inline constexpr std::array<std::string_view, 2> kCommandNames = {"SELECTPRED", "NAIVEBAYES"};

/// One command of a text, cut into tokens. A value; copies share the source text.
class CommandTokens {
 public:
    /// end is the token behind the last: kind End, at the place where the command ends, its text
    /// ";" when that ended it.
    CommandTokens(std::shared_ptr<const SourceText> source, TokenInfoObj name, TokenList tokens,
                  TokenInfoObj end, std::string text);

    /// The command's name in upper case: one of kCommandNames.
    const std::string& Name() const { return fName; }
    const TokenInfoObj& NameToken() const { return fNameToken; }
    /// The tokens after the name.
    const TokenList& Tokens() const { return fvTokens; }
    const TokenInfoObj& EndToken() const { return fEnd; }
    /// The command as it was written, from its name to its last token.
    const std::string& Text() const { return fText; }
    const SourceText& Source() const { return *fpSource; }

 private:
    std::shared_ptr<const SourceText> fpSource;
    std::string fName;
    TokenInfoObj fNameToken;
    TokenList fvTokens;
    TokenInfoObj fEnd;
    std::string fText;
};

/// The commands of a text in their order, or what keeps the text from being read: then there are no
/// commands at all, so that a text never runs in part.
struct CommandScript {
    std::vector<CommandTokens> fvCommands;
    std::optional<CommandFault> fFault;
};

/// Cuts a text into commands and tokens. `;` or the end of the text ends a command, `#` starts a
/// comment up to the end of the line. Never throws for anything that the text holds; a fault is
/// returned. Time and memory are proportional to the text.
CommandScript ParseCommandText(std::string text, std::string sourceName);

/// A variable's name as it has to be written in a command: as it is when it is a plain word, else
/// in double quotes. For programs that write commands, and for messages.
std::string WrittenName(std::string_view name);

/// A text, such as a file path, as a string in single quotes. It must not hold a line break, which
/// a string cannot hold.
std::string WrittenString(std::string_view text);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_COMMAND_COMMANDTOKENS_H
