#include "apps/predselect/ChartFiles.h"

#include <filesystem>
#include <variant>

#include "apps/predselect/ProgramError.h"

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

}  // namespace

void AddCharts(const embedded::Report& report, std::string embedded::ReportChart::*form,
               const std::string& path, OutputFiles& files) {
    int number = 0;
    for (const embedded::CommandReport& command : report.fvCommands) {
        for (const embedded::ReportItem& item : command.fvItems) {
            const auto* chart = std::get_if<embedded::ReportChart>(&item);
            if (chart) files.Add(NumberedPath(path, ++number), chart->*form + "\n");
        }
    }
    if (number == 0) {
        throw ProgramError(kCommandFailed, "there is no chart to write to " + path +
                                               ": the commands drew none; ask for it with "
                                               "/PLOT SUMMARY");
    }
}

}  // namespace app
