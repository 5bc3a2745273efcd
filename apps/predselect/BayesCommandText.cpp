#include "apps/predselect/BayesCommandText.h"

#include <unistd.h>

#include <algorithm>

#include "apps/predselect/CommandTextParts.h"
#include "embedded/command/CommandTokens.h"

namespace app {
namespace {

std::string NameOrNothing(const std::string& name) {
    return name.empty() ? std::string() : embedded::WrittenName(name);
}

std::string Force(const BayesOptions& options) {
    std::string text;
    const auto add = [&text](const char* param, const std::vector<std::string>& names) {
        if (names.empty()) return;
        text.append(" ").append(param).append("=(").append(WrittenList(names).substr(1)) += ')';
    };
    add("FACTORS", options.fvForceFactors);
    add("COVARIATES", options.fvForceCovariates);
    return text.empty() ? text : "\n  /FORCE" + text;
}

std::string Subset(const BayesOptions& options) {
    if (options.fbNoSelection) return "\n  /SUBSET NOSELECTION";
    if (!options.fExactSize.empty()) return "\n  /SUBSET EXACTSIZE=" + options.fExactSize;
    if (options.fMaxSize.empty() && options.fBestSubset.empty()) return {};
    std::string text =
        "\n  /SUBSET MAXSIZE=" + (options.fMaxSize.empty() ? "AUTO" : Keyword(options.fMaxSize));
    if (!options.fBestSubset.empty()) text += "(BESTSUBSET=" + Keyword(options.fBestSubset) + ')';
    return text;
}

// Data that are written out without a wish of which predictions: all of them.
std::string Save(const BayesOptions& options, bool savesData) {
    const bool probabilities = options.fProbabilities || !options.fMaxProbabilities.empty();
    const bool both = savesData && !options.fPredicted && !probabilities;
    std::string text;
    if (options.fPredicted || both) {
        const std::string name = NameOrNothing(options.fPredicted.value_or(""));
        text += " PREDVAL" + (name.empty() ? name : '=' + name);
    }
    if (probabilities || both) {
        std::string value = NameOrNothing(options.fProbabilities.value_or(""));
        if (!options.fMaxProbabilities.empty()) value += ':' + options.fMaxProbabilities;
        text += " PREDPROB" + (value.empty() ? value : '(' + value + ')');
    }
    return text.empty() ? text : "\n  /SAVE" + text;
}

std::string Print(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += ' ' + Keyword(word);
    return text.empty() ? text : "\n  /PRINT" + text;
}

}  // namespace

std::string BayesCommandText(const ProgramOptions& options,
                             std::optional<std::int64_t> memAllocate) {
    const BayesOptions& bayes = options.fBayes;
    std::string text = "NAIVEBAYES " + VariablesText(bayes.fVariables) + Force(bayes);
    text += SubCommand("TRAININGSAMPLE", {{"PERCENT", bayes.fTrainPercent}});
    if (!bayes.fTrainVariable.empty()) {
        text += "\n  /TRAININGSAMPLE VARIABLE=" + embedded::WrittenName(bayes.fTrainVariable);
    }
    text += Subset(bayes);
    text += SubCommand("CRITERIA",
                       {{"BINS", bayes.fBins},
                        {"MEMALLOCATE", memAllocate ? std::to_string(*memAllocate) : std::string()},
                        {"TIMER", bayes.fTimer}});
    text += SubCommand("MISSING", {{"USERMISSING", bayes.fUserMissing}});
    text += Save(bayes, !options.fOutput.fSave.empty());
    const std::string& model = options.fOutput.fPmml;
    if (!model.empty()) text += "\n  /OUTFILE MODEL=" + embedded::WrittenString(model);
    text += Print(bayes.fvPrint);
    return text + ";\n";
}

std::optional<std::int64_t> MemAllocateFor(std::int64_t records, std::int64_t columns,
                                           std::uint64_t limit) {
    constexpr std::int64_t kUnit = 1024;  // bytes
    constexpr std::int64_t kDefault = 1024;
    constexpr std::int64_t kLeast = 4;
    const std::int64_t bytesPerRecord = columns * 8 + 16;
    const std::int64_t needed =
        records / kUnit * bytesPerRecord + (records % kUnit * bytesPerRecord + kUnit - 1) / kUnit;
    const auto most = static_cast<std::int64_t>(std::min<std::uint64_t>(limit / kUnit, INT64_MAX));
    const std::int64_t asked = std::max(kLeast, std::min(needed, most));
    if (needed <= kDefault && most >= kDefault) return std::nullopt;
    return asked;
}

std::uint64_t HalfOfMemory() {
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0) return UINT64_C(1) << 30;
    return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize) / 2;
}

}  // namespace app
