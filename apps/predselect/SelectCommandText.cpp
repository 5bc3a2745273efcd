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

// An element of a variable list: ALL, STEM*, FIRST..LAST and what stands in double quotes already
// are written as they are, any other text is a name.
std::string WrittenElement(const std::string& element) {
    if (AreStringsEqualCase(element, "ALL")) return element;
    if (element.size() >= 2 && element.front() == '"' && element.back() == '"') return element;
    if (element == "*") return "ALL";
    if (element.size() > 1 && element.back() == '*' &&
        IsPlain(std::string_view(element).substr(0, element.size() - 1))) {
        return element;
    }
    if (const std::size_t dots = element.find(".."); dots != std::string::npos) {
        const std::string_view text = element;
        if (IsPlain(text.substr(0, dots)) && IsPlain(text.substr(dots + 2))) return element;
    }
    return embedded::WrittenName(element);
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
