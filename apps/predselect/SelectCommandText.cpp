#include "apps/predselect/SelectCommandText.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

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

std::string WrittenList(const std::vector<std::string>& elements) {
    std::string text;
    for (const std::string& element : elements) text += ' ' + WrittenElement(element);
    return text;
}

// Keywords are written in upper case; a number stays as it was typed, because reports show it so.
std::string Upper(std::string text) {
    const bool isWord = !text.empty() && (text.front() > '9' || text.front() < '+');
    if (!isWord) return text;
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return text;
}

using Params = std::vector<std::pair<std::string_view, std::string>>;

// "/NAME PARAM=VALUE ..." of the values that were given; nothing when none was.
std::string SubCommand(std::string_view name, const Params& params) {
    std::string text;
    for (const auto& [param, value] : params) {
        if (!value.empty()) text.append(" ").append(param).append("=").append(Upper(value));
    }
    return text.empty() ? text : "\n  /" + std::string(name) + text;
}

std::string Print(const SelectOptions& options) {
    if (options.fvPrint.empty() && options.fvSummary.empty()) return {};
    std::vector<std::string> words;
    for (const std::string& word : options.fvPrint) words.push_back(Upper(word));
    // PRINT shows only what it names: further criteria alone take nothing away.
    if (words.empty()) words = {"CPS", "EXCLUDED", "SUMMARY", "SELECTED"};
    if (!options.fvSummary.empty()) {
        std::string summary = "SUMMARY(";
        for (const std::string& criterion : options.fvSummary) {
            if (summary.back() != '(') summary += ' ';
            summary += Upper(criterion);
        }
        summary += ')';
        const auto plain = std::find(words.begin(), words.end(), "SUMMARY");
        if (plain == words.end()) {
            words.push_back(summary);
        } else {
            *plain = summary;
        }
    }
    std::string text = "\n  /PRINT";
    for (const std::string& word : words) text += ' ' + word;
    return text;
}

}  // namespace

std::string SelectCommandText(const SelectOptions& options) {
    std::string text = "SELECTPRED " + embedded::WrittenName(options.fTarget);
    if (!options.fTargetLevel.empty()) {
        text += "(MLEVEL=" + Upper(options.fTargetLevel.substr(0, 1)) + ')';
    }
    if (!options.fvFactors.empty()) text += " BY" + WrittenList(options.fvFactors);
    if (!options.fvCovariates.empty()) text += " WITH" + WrittenList(options.fvCovariates);
    if (!options.fvExcept.empty())
        text += "\n  /EXCEPT VARIABLES=" + WrittenList(options.fvExcept).substr(1);
    text += SubCommand("SCREENING", {{"STATUS", options.fScreening},
                                     {"PCTMISSING", options.fMaxMissing},
                                     {"PCTEQUAL", options.fMaxSingle},
                                     {"PCTUNEQUAL", options.fMaxCategories},
                                     {"CV", options.fMinCv},
                                     {"STDDEV", options.fMinStdDev}});
    text += SubCommand("CRITERIA", {{"TIMER", options.fTimer},
                                    {"SHOWUNSELECTED", options.fShowUnselected},
                                    {"SIZE", options.fSize},
                                    {"RANKING", options.fRanking},
                                    {"PCUTOFF", options.fPCutoff}});
    text += SubCommand("MISSING", {{"USERMISSING", options.fUserMissing}});
    text += Print(options);
    if (options.fbPlot) text += "\n  /PLOT SUMMARY";
    return text + ";\n";
}

}  // namespace app
