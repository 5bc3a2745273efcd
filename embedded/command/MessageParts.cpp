#include "embedded/command/MessageParts.h"

#include <array>
#include <charconv>

#include "embedded/command/CommandFault.h"
#include "embedded/command/NearestNames.h"
#include "embedded/output/CompositeText.h"
#include "embedded/strings/StringTable.h"

namespace embedded {

namespace {

std::string Joined(const std::vector<std::string>& words, std::string_view lastJoin) {
    std::string joined;
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (i > 0) joined += i + 1 < words.size() ? ", " : " " + std::string(lastJoin) + " ";
        joined += words[i];
    }
    return joined;
}

}  // namespace

std::string FilledText(std::string_view key, const std::vector<std::string>& arguments) {
    return CompositeText(TextOf(key), arguments);
}

std::string FoundText(const TokenInfoObj& token) {
    switch (token.Kind()) {
        case TokenKind::End:
            if (token.getString().empty()) return FilledText("the end of the command", {});
            return "'" + token.getString() + "'";
        case TokenKind::Operator:
            return "'" + token.getString() + "'";
        case TokenKind::String:
            return "'" + ShownText(token.getString()) + "'";
        case TokenKind::Number:
            return ShownText(token.getString());
        case TokenKind::Name:
            break;
    }
    const std::string shown = ShownText(token.getString());
    return token.IsQuoted() ? "\"" + shown + "\"" : shown;
}

std::string OneOf(const std::vector<std::string>& words) {
    return Joined(words, FilledText("or", {}));
}

std::string AllOf(const std::vector<std::string>& words) {
    return Joined(words, FilledText("and", {}));
}

std::string DidYouMean(std::string_view word, const std::vector<std::string>& words) {
    NearestNames nearest(word);
    for (const std::string& candidate : words) nearest.Offer(candidate);
    const std::vector<std::string> names = nearest.Names();
    return names.empty() ? FilledText("expected ^1.", {OneOf(words)})
                         : FilledText("did you mean ^1?", {OneOf(names)});
}

std::string PlainNumber(double number) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return std::string(text.data(), end);
}

std::string BoundsText(double lower, std::int32_t lowerOption, double upper,
                       std::int32_t upperOption) {
    std::vector<std::string> bounds;
    if (lowerOption != 0)
        bounds.push_back(FilledText(lowerOption == kBdryIncluded ? "at least ^1" : "above ^1",
                                    {PlainNumber(lower)}));
    if (upperOption != 0)
        bounds.push_back(FilledText(upperOption == kBdryIncluded ? "at most ^1" : "below ^1",
                                    {PlainNumber(upper)}));
    return AllOf(bounds);
}

}  // namespace embedded
