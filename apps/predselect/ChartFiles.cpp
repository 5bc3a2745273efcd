#include "apps/predselect/ChartFiles.h"

#include <algorithm>
#include <filesystem>
#include <variant>

#include "embedded/charts/ChartSvg.h"

namespace app {
namespace {

std::string NumberedPath(const std::string& path, int number) {
    if (number == 1 || path == "-") return path;
    const std::filesystem::path original(path);
    std::filesystem::path numbered = original.parent_path() / original.stem();
    numbered += "-" + std::to_string(number);
    numbered += original.extension();
    return numbered.string();
}

bool HasPlot(const embedded::CommandTokens& command) {
    const TokenList& tokens = command.Tokens();
    const auto found = std::adjacent_find(
        tokens.begin(), tokens.end(), [](const TokenInfoObj& slash, const TokenInfoObj& word) {
            return slash.getOperatorCode() == TokenSequenceBase::kOpSlash && !word.IsQuoted() &&
                   word.getUpperString() == "PLOT";
        });
    return found != tokens.end();
}

}  // namespace

bool AsksForChart(const std::vector<embedded::CommandTokens>& commands) {
    return std::any_of(commands.begin(), commands.end(), HasPlot);
}

bool AddCharts(const embedded::Report& report, std::string embedded::ReportChart::*form,
               const std::string& path, OutputFiles& files) {
    int number = 0;
    for (const embedded::CommandReport& command : report.fvCommands) {
        for (const embedded::ReportItem& item : command.fvItems) {
            const auto* chart = std::get_if<embedded::ReportChart>(&item);
            if (!chart) continue;
            // A picture that leaves the page brings its colours along.
            const bool isPicture = form == &embedded::ReportChart::fSvg;
            files.Add(NumberedPath(path, ++number),
                      isPicture ? embedded::SvgFile(chart->fSvg) : chart->*form + "\n");
        }
    }
    return number > 0;
}

}  // namespace app
