#ifndef PREDSEL_EMBEDDED_CHARTS_CHARTBARS_H
#define PREDSEL_EMBEDDED_CHARTS_CHARTBARS_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "embedded/charts/ChartModel.h"

namespace embedded {

struct ChartBar {
    std::string fLabel;
    std::optional<double> fValue;  // none when missing
    std::string fText;             // the value as shown, empty when missing
    std::size_t fGroup = 0;        // index into ChartBars::fvGroups
};

/// The bars of one colour.
struct ChartGroup {
    std::string fLabel;
    std::string fColour;  // "#rrggbb", distinct on light and dark pages alike
    double fOpacity = 1;  // of the filling; the outline is solid
    std::size_t fCount = 0;
};

/// The bars of a chart as they are drawn, from top to bottom, with all texts settled: what the
/// picture, the Vega-Lite form and the data table have in common.
struct ChartBars {
    std::string fTitle;
    std::string fCategoryTitle;
    std::string fValueTitle;
    std::string fGroupTitle;
    std::vector<ChartBar> fvBars;
    std::vector<ChartGroup> fvGroups;  // those that occur, in the order of their codes
    double fFoot = 0;                  // the value at which bars start
    std::vector<double> fvReferenceLines;
    std::vector<std::string> fvFootnotes;
};

/// Throws std::logic_error for a model that lacks its element, an axis' variable or a row's value.
ChartBars ArrangeBars(const ChartModel& model);

/// A value in the form of its variable. What is not zero but rounds to it shows as "<.001".
std::string ChartNumberText(double value, const ChartVariable& variable);

/// A few sentences on what the chart shows.
std::string ChartSummary(const ChartBars& bars);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_CHARTS_CHARTBARS_H
