#ifndef PREDSEL_EMBEDDED_CHARTS_CHARTSVG_H
#define PREDSEL_EMBEDDED_CHARTS_CHARTSVG_H

#include <string>
#include <string_view>

#include "embedded/charts/ChartBars.h"
#include "embedded/charts/ChartModel.h"

namespace embedded {

/// The chart as one <svg> element to stand inside a page. Text and lines take the page's colour.
/// Its ids begin with `idStem` and a hyphen; a name of XML letters and digits. The bytes depend on
/// the arguments alone.
std::string ChartSvg(const ChartModel& model, const ChartBars& bars, std::string_view idStem);

/// The same element as a file of its own: with a prolog, and with colours that follow the viewer's
/// choice of a light or a dark page.
std::string SvgFile(std::string_view svg);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_CHARTS_CHARTSVG_H
