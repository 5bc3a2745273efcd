#ifndef PREDSEL_EMBEDDED_CHARTS_CHARTMODEL_H
#define PREDSEL_EMBEDDED_CHARTS_CHARTMODEL_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/Charts.h"

namespace embedded {

/// One column of a chart's data.
struct ChartVariable {
    ChartString fName;
    bool fbNumeric = false;
    std::int32_t fDecimals = 3;
    bool fbLeadingZero = false;
    std::string fPrefix;
    std::string fSuffix;
    std::map<std::int32_t, ChartString> fLabels;  // categorical: text by code
};

/// A code of a categorical variable or the value of a numeric one.
using ChartValue = std::variant<std::int32_t, double>;

struct ChartAxis {
    std::optional<std::size_t> fVariable;
    ChartString fTitle;
    bool fbTitleShown = true;
    double fLowerMargin = 0;  // shares of the axis
    double fUpperMargin = 0;
    bool fbTicks = false;
    double fTickLabelSize = 10;  // points
    bool fbNiceTicks = false;
    double fLow = 0;
    double fHigh = 1;
    bool fbInverted = false;
    double fOrigin = 0;  // where bars start on an inverted axis
};

/// A bar chart as it was asked for, before anything is laid out. Filled through host/Charts.h.
struct ChartModel {
    ChartString fTitle;
    std::string fName;     // empty: made from the title
    std::string fComment;  // for readers who cannot see the chart
    std::string fSummary;  // the same, found by the host when the chart is sent

    std::vector<ChartVariable> fvVariables;
    std::vector<std::vector<ChartValue>> fvRows;  // values in the order of fvVariables
    ChartAxis fXAxis;
    ChartAxis fYAxis;

    bool fbElement = false;
    double fBarWidth = 0.8;      // share of the room between two categories
    double fLowestBarWidth = 0;  // points, 0 for none
    double fHighestBarWidth = 0;
    std::optional<std::size_t> fColourVariable;
    std::vector<std::uint32_t> fvColours;  // by code, empty for the host's own
    bool fbLegend = false;
    ChartString fLegendTitle;

    double fFrameHeight = 1;  // in standard frames
    std::vector<double> fvReferenceLines;
    bool fbReferenceLinesFinished = false;
    ChartString fFirstFootnote;
    ChartString fSecondFootnote;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_CHARTS_CHARTMODEL_H
