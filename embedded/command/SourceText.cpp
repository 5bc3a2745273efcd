#include "embedded/command/SourceText.h"

#include <utility>

namespace embedded {

SourceText::SourceText(std::string name, std::string text)
    : fName(std::move(name)), fText(std::move(text)) {
    if (fText.starts_with("\xEF\xBB\xBF")) fText.erase(0, 3);
    fvLineStarts.push_back(0);
    for (std::size_t at = 0; at < fText.size(); ++at) {
        if (fText[at] == '\r' && at + 1 < fText.size() && fText[at + 1] == '\n') continue;
        if (fText[at] == '\n' || fText[at] == '\r') fvLineStarts.push_back(at + 1);
    }
}

std::string_view SourceText::Line(std::int32_t line) const {
    const auto index = static_cast<std::size_t>(line) - 1;
    if (line < 1 || index >= fvLineStarts.size()) return {};
    const std::size_t start = fvLineStarts[index];
    const std::string_view rest = std::string_view(fText).substr(start);
    return rest.substr(0, rest.find_first_of("\r\n"));
}

}  // namespace embedded
