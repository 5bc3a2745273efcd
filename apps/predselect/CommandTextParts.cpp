#include "apps/predselect/CommandTextParts.h"

#include <algorithm>

#include "embedded/command/CommandTokens.h"
#include "host/HostGlobals.h"

namespace app {
namespace {

bool IsPlain(std::string_view name) { return embedded::WrittenName(name) == name; }

// One name in double quotes, those inside it doubled.
bool IsQuoted(std::string_view text) {
    if (text.size() < 2 || text.front() != '"' || text.back() != '"') return false;
    const std::string_view inside = text.substr(1, text.size() - 2);
    for (std::size_t at = inside.find('"'); at != std::string_view::npos;
         at = inside.find('"', at + 2)) {
        if (at + 1 == inside.size() || inside[at + 1] != '"') return false;
    }
    return true;
}

bool IsRange(std::string_view text) {
    const auto isEnd = [](std::string_view end) { return IsPlain(end) || IsQuoted(end); };
    for (std::size_t dots = text.find(".."); dots != std::string_view::npos;
         dots = text.find("..", dots + 1)) {
        if (isEnd(text.substr(0, dots)) && isEnd(text.substr(dots + 2))) return true;
    }
    return false;
}

bool IsPattern(std::string_view text) {
    return text.size() > 1 && text.back() == '*' && IsPlain(text.substr(0, text.size() - 1));
}

// An element of a variable list. What is none of the language's own forms is a name.
std::string WrittenElement(const std::string& element) {
    if (element == "*") return "ALL";
    const bool isWritten = AreStringsEqualCase(element, "ALL") || IsQuoted(element) ||
                           IsRange(element) || IsPattern(element);
    return isWritten ? element : embedded::WrittenName(element);
}

}  // namespace

std::string WrittenList(const std::vector<std::string>& elements) {
    std::string text;
    for (const std::string& element : elements) text += ' ' + WrittenElement(element);
    return text;
}

std::string Keyword(std::string text) {
    const bool isWord = !text.empty() && (text.front() > '9' || text.front() < '+');
    if (!isWord) return text;
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return text;
}

std::string SubCommand(std::string_view name, const Params& params) {
    std::string text;
    for (const auto& [param, value] : params) {
        if (!value.empty()) text.append(" ").append(param).append("=").append(Keyword(value));
    }
    return text.empty() ? text : "\n  /" + std::string(name) + text;
}

std::string VariablesText(const VariableOptions& variables, const std::string& qualifier) {
    std::string text = embedded::WrittenName(variables.fTarget) + qualifier;
    if (!variables.fvFactors.empty()) text += " BY" + WrittenList(variables.fvFactors);
    if (!variables.fvCovariates.empty()) text += " WITH" + WrittenList(variables.fvCovariates);
    if (!variables.fvExcept.empty()) {
        text += "\n  /EXCEPT VARIABLES=" + WrittenList(variables.fvExcept).substr(1);
    }
    return text;
}

}  // namespace app
