#include "embedded/command/CommandFault.h"

#include <algorithm>
#include <cstddef>

#include "embedded/HostSession.h"
#include "embedded/command/CharacterClasses.h"
#include "embedded/output/CompositeText.h"
#include "embedded/output/DisplayWidth.h"
#include "embedded/output/Report.h"
#include "embedded/output/ShowableText.h"
#include "embedded/strings/StringTable.h"
#include "host/HostGlobals.h"

namespace embedded {

namespace {

constexpr std::string_view kEllipsis = "\u2026";

/// The byte position of a column; the text's length for a column behind its end.
std::size_t ByteOfColumn(std::string_view line, std::int32_t column) {
    std::size_t at = 0;
    for (std::int32_t passed = 1; passed < column && at < line.size(); ++passed)
        at += ReadCharacter(line, at).fLength;
    return at;
}

/// At most so many characters from a byte position on.
std::string_view Characters(std::string_view text, std::size_t from, std::size_t most) {
    std::size_t end = from;
    for (std::size_t taken = 0; taken < most && end < text.size(); ++taken)
        end += ReadCharacter(text, end).fLength;
    return text.substr(from, end - from);
}

/// A piece of a line made fit to be shown, tabs kept.
std::string ShowableLine(std::string_view text) {
    std::string out;
    while (true) {
        const std::size_t tab = text.find('\t');
        out += ShowableText(text.substr(0, tab));
        if (tab == std::string_view::npos) return out;
        out += '\t';
        text.remove_prefix(tab + 1);
    }
}

/// As wide as the text is on a terminal, and as invisible as can be.
std::string BlankFor(std::string_view text) {
    std::string blank;
    while (true) {
        const std::size_t tab = text.find('\t');
        blank.append(DisplayWidth(text.substr(0, tab)), ' ');
        if (tab == std::string_view::npos) return blank;
        blank += '\t';
        text.remove_prefix(tab + 1);
    }
}

}  // namespace

std::string ShownText(std::string_view text) {
    constexpr std::size_t kMostCharacters = 60;
    const std::string_view head = Characters(text, 0, kMostCharacters);
    std::string shown = ShowableText(head);
    std::replace(shown.begin(), shown.end(), '\n', ' ');
    if (head.size() < text.size()) shown += kEllipsis;
    return shown;
}

std::string Excerpt(const SourceText& source, TextPlace place) {
    constexpr std::int32_t kWidest = 78;  // characters of a line that is shown as a whole
    constexpr std::int32_t kBefore = 48;  // of a longer one, before the caret and from it on
    constexpr std::size_t kFrom = 24;
    const std::string_view line = source.Line(place.fLine);
    const bool whole = CountCharacters(line) <= kWidest;
    const bool cutBefore = !whole && place.fColumn > kBefore + 1;
    const std::size_t caret = ByteOfColumn(line, place.fColumn);
    const std::size_t start = cutBefore ? ByteOfColumn(line, place.fColumn - kBefore) : 0;
    const std::string_view tail = whole ? line.substr(caret) : Characters(line, caret, kFrom);
    const bool cutBehind = caret + tail.size() < line.size();

    const std::string head = (cutBefore ? std::string(kEllipsis) : std::string()) +
                             ShowableLine(line.substr(start, caret - start));
    return head + ShowableLine(tail) + (cutBehind ? std::string(kEllipsis) : std::string()) + "\n" +
           BlankFor(head) + "^";
}

CommandFault MakeFault(std::string_view key, const std::vector<std::string>& arguments,
                       const SourceText& source, TextPlace place) {
    CommandFault fault;
    fault.fKey = key;
    fault.fPlace = place;
    fault.fText = CompositeText(TextOf(key), arguments);
    if (place.IsKnown()) {
        fault.fText = source.Name() + ":" + std::to_string(place.fLine) + ":" +
                      std::to_string(place.fColumn) + ": " + fault.fText;
        fault.fExcerpt = Excerpt(source, place);
    }
    return fault;
}

void ReportFault(const CommandFault& fault) {
    ReportMessage message;
    message.fLevel = MessageLevel::Error;
    message.fKey = fault.fKey;
    message.fText = fault.Lines();
    message.fbCommandLanguage = true;
    HostSession::Active().Report().fvMessages.push_back(std::move(message));
    pvGetCmnGlb()[kErrorWord] = 1;
}

}  // namespace embedded
