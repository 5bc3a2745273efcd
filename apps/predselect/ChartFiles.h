#ifndef PREDSEL_APPS_CHARTFILES_H
#define PREDSEL_APPS_CHARTFILES_H

#include <string>
#include <vector>

#include "apps/predselect/OutputFiles.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/output/Report.h"

namespace app {

/// Whether any of the commands asks for a chart.
bool AsksForChart(const std::vector<embedded::CommandTokens>& commands);

/// Adds the report's charts in one form: the first to the path, the second to NAME-2.EXT and so on.
/// False when there is none.
bool AddCharts(const embedded::Report& report, std::string embedded::ReportChart::*form,
               const std::string& path, OutputFiles& files);

}  // namespace app

#endif  // PREDSEL_APPS_CHARTFILES_H
