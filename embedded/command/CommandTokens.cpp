#include "embedded/command/CommandTokens.h"

#include <algorithm>
#include <utility>

#include "embedded/command/AsciiCase.h"
#include "embedded/command/CharacterClasses.h"
#include "embedded/command/CommandLexer.h"
#include "embedded/command/MessageParts.h"

namespace embedded {

namespace {

using TokenSequenceBase::kOpSemicolon;

std::vector<std::string> CommandNames() { return {kCommandNames.begin(), kCommandNames.end()}; }

/// The fault of a token that should be the name of a command.
CommandFault NoCommand(const TokenInfoObj& token, const SourceText& source) {
    const std::string names = OneOf(CommandNames());
    if (token.Kind() != TokenKind::Name || token.IsQuoted())
        return MakeFault("Command name expected ^1, found ^2...", {names, FoundText(token)}, source,
                         PlaceOf(token));
    return MakeFault("Unknown command ^1 ^2...",
                     {ShownText(token.getString()), DidYouMean(token.getString(), CommandNames())},
                     source, PlaceOf(token));
}

bool IsCommandName(const TokenInfoObj& token) {
    return token.Kind() == TokenKind::Name && !token.IsQuoted() &&
           std::find(kCommandNames.begin(), kCommandNames.end(), token.getUpperString()) !=
               kCommandNames.end();
}

std::string InQuotes(std::string_view text, char quote) {
    std::string quoted(1, quote);
    for (const char c : text) {
        quoted += c;
        if (c == quote) quoted += quote;
    }
    return quoted + quote;
}

}  // namespace

CommandTokens::CommandTokens(std::shared_ptr<const SourceText> source, TokenInfoObj name,
                             TokenList tokens, TokenInfoObj end, std::string text)
    : fpSource(std::move(source)),
      fName(name.getUpperString()),
      fNameToken(std::move(name)),
      fvTokens(std::move(tokens)),
      fEnd(std::move(end)),
      fText(std::move(text)) {}

CommandScript ParseCommandText(std::string text, std::string sourceName) {
    const auto source = std::make_shared<const SourceText>(std::move(sourceName), std::move(text));
    CommandLexer lexer(*source);
    CommandScript script;
    const auto refuse = [&script](CommandFault fault) {
        script.fvCommands.clear();
        script.fFault = std::move(fault);
        return std::move(script);
    };
    while (true) {
        TokenInfoObj name = lexer.Next();
        if (name.Kind() == TokenKind::End) break;
        if (name.getOperatorCode() == kOpSemicolon) continue;
        if (!IsCommandName(name)) return refuse(NoCommand(name, *source));
        const std::size_t start = lexer.TokenStart();
        std::size_t end = lexer.TokenEnd();
        TextPlace endPlace = lexer.EndPlace();
        TokenList tokens;
        TokenInfoObj token = lexer.Next();
        for (; token.Kind() != TokenKind::End && token.getOperatorCode() != kOpSemicolon;
             token = lexer.Next()) {
            end = lexer.TokenEnd();
            endPlace = lexer.EndPlace();
            tokens.push_back(std::move(token));
        }
        // Without a `;` the end is shown right behind the last token, not where the blanks and
        // comments after it end.
        if (token.Kind() != TokenKind::End) endPlace = PlaceOf(token);
        TokenInfoObj last(TokenKind::End, token.getString(), endPlace.fLine, endPlace.fColumn);
        script.fvCommands.emplace_back(source, std::move(name), std::move(tokens), std::move(last),
                                       source->Text().substr(start, end - start));
    }
    if (const auto& fault = lexer.Fault()) return refuse(*fault);
    if (script.fvCommands.empty())
        return refuse(MakeFault("No command in text ^1...", {OneOf(CommandNames())}, *source,
                                TextPlace{1, 1}));
    return script;
}

std::string WrittenName(std::string_view name) {
    const std::string upper = UpperAscii(name);
    // Words with a meaning of their own in a list of variables.
    const bool taken = upper == "ALL" || upper == "BY" || upper == "WITH";
    return IsPlainWord(name) && !taken ? std::string(name) : InQuotes(name, '"');
}

std::string WrittenString(std::string_view text) { return InQuotes(text, '\''); }

}  // namespace embedded
