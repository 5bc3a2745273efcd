#include "apps/predselect/SelectCommandText.h"

#include <algorithm>
#include <vector>

#include "apps/predselect/CommandTextParts.h"

namespace app {
namespace {

std::string Print(const SelectOptions& options) {
    if (options.fvPrint.empty() && options.fvSummary.empty()) return {};
    std::vector<std::string> words;
    for (const std::string& word : options.fvPrint) words.push_back(Keyword(word));
    // PRINT shows only what it names: further criteria alone take nothing away.
    if (words.empty()) words = {"CPS", "EXCLUDED", "SUMMARY", "SELECTED"};
    if (!options.fvSummary.empty()) {
        std::string summary = "SUMMARY(";
        for (const std::string& criterion : options.fvSummary) {
            if (summary.back() != '(') summary += ' ';
            summary += Keyword(criterion);
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
    std::string qualifier;
    if (!options.fTargetLevel.empty()) {
        qualifier = "(MLEVEL=" + Keyword(options.fTargetLevel.substr(0, 1)) + ')';
    }
    std::string text = "SELECTPRED " + VariablesText(options.fVariables, qualifier);
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
