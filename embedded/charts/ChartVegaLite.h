#ifndef PREDSEL_EMBEDDED_CHARTS_CHARTVEGALITE_H
#define PREDSEL_EMBEDDED_CHARTS_CHARTVEGALITE_H

#include <string>

#include "embedded/charts/ChartBars.h"
#include "embedded/charts/ChartModel.h"

namespace embedded {

/// The chart in Vega-Lite 5 with its data inside: one JSON object. Values are not
/// rounded, null when missing.
std::string ChartVegaLite(const ChartModel& model, const ChartBars& bars);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_CHARTS_CHARTVEGALITE_H
