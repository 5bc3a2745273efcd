#ifndef PREDSEL_APPS_CHARTFILES_H
#define PREDSEL_APPS_CHARTFILES_H

#include <string>

#include "apps/predselect/OutputFiles.h"
#include "embedded/output/Report.h"

namespace app {

/// Adds the report's charts in one form: the first to the path, the second to NAME-2.EXT and so on.
/// Throws ProgramError when the commands drew no chart.
void AddCharts(const embedded::Report& report, std::string embedded::ReportChart::*form,
               const std::string& path, OutputFiles& files);

}  // namespace app

#endif  // PREDSEL_APPS_CHARTFILES_H
