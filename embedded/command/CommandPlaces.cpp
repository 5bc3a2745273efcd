#include "embedded/command/CommandPlaces.h"

#include <algorithm>

#include "embedded/command/MessageParts.h"
#include "host/HostGlobals.h"

namespace embedded {

namespace {

using Iterator = TokenList::const_iterator;

bool IsSlash(const TokenInfoObj& token) {
    return token.getOperatorCode() == TokenSequenceBase::kOpSlash;
}

Iterator FindText(Iterator first, Iterator last, std::string_view text) {
    return std::find_if(first, last, [text](const TokenInfoObj& token) {
        return AreStringsEqualCase(token.getString(), text);
    });
}

}  // namespace

TextPlace FindPlace(const CommandTokens& command, std::string_view subcommand,
                    std::string_view parameter, std::string_view text) {
    TextPlace place = PlaceOf(command.NameToken());
    const Iterator end = command.Tokens().end();
    Iterator from = command.Tokens().begin();
    if (!subcommand.empty()) {
        while (from != end) {
            const bool slash = IsSlash(*from++);
            if (slash && from != end && AreStringsEqualCase(from->getString(), subcommand)) break;
        }
        if (from == end) return place;
        place = PlaceOf(*from++);
    }
    const Iterator last = std::find_if(from, end, IsSlash);
    for (const std::string_view word : {parameter, text}) {
        if (word.empty()) continue;
        const Iterator found = FindText(from, last, word);
        if (found == last) return place;
        place = PlaceOf(*found);
        from = found + 1;
    }
    return place;
}

}  // namespace embedded
