#ifndef PREDSEL_EMBEDDED_CHARTS_XCHARTDATA_H
#define PREDSEL_EMBEDDED_CHARTS_XCHARTDATA_H

#include "embedded/charts/ChartBars.h"
#include "embedded/charts/ChartModel.h"
#include "embedded/output/Report.h"

/// What stands behind the chart classes of host/Charts.h.
struct XChartData {
    embedded::ChartModel fModel;
    embedded::ChartBars fBars;     // settled when the chart is sent
    embedded::ReportChart fChart;  // filled by the steps of SendChart
    bool fbShow = false;
};

#endif  // PREDSEL_EMBEDDED_CHARTS_XCHARTDATA_H
