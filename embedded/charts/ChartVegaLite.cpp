#include "embedded/charts/ChartVegaLite.h"

#include <nlohmann/json.hpp>

namespace embedded {

std::string ChartVegaLite(const ChartModel& model, const ChartBars& bars) {
    using nlohmann::ordered_json;
    ordered_json rows = ordered_json::array();
    for (std::size_t i = 0; i < bars.fvBars.size(); ++i) {
        const ChartBar& bar = bars.fvBars[i];
        rows.push_back({{"position", i + 1},
                        {"label", bar.fLabel},
                        {"value", bar.fValue ? ordered_json(*bar.fValue) : ordered_json()},
                        {"group", bars.fvGroups[bar.fGroup].fLabel}});
    }
    ordered_json names = ordered_json::array();
    ordered_json colours = ordered_json::array();
    for (const ChartGroup& group : bars.fvGroups) {
        names.push_back(group.fLabel);
        colours.push_back(group.fColour);
    }
    ordered_json legend;
    if (model.fbLegend) legend = {{"orient", "top"}};
    const ordered_json byColour = {{"field", "group"},
                                   {"type", "nominal"},
                                   {"title", bars.fGroupTitle},
                                   {"scale", {{"domain", names}, {"range", colours}}},
                                   {"legend", legend}};
    const ChartAxis& axis = model.fYAxis;
    const ordered_json valueTitle =
        axis.fbTitleShown ? ordered_json(bars.fValueTitle) : ordered_json();
    const ordered_json categoryTitle =
        model.fXAxis.fbTitleShown ? ordered_json(bars.fCategoryTitle) : ordered_json();
    const ordered_json across = {
        {"field", "value"},
        {"type", "quantitative"},
        {"title", valueTitle},
        {"scale", {{"domain", {axis.fLow, axis.fHigh}}, {"reverse", axis.fbInverted}}}};
    // Two bars may have the same label: a bar's place is its position, which shows its label.
    const ordered_json down = {{"field", "position"},
                               {"type", "ordinal"},
                               {"title", categoryTitle},
                               {"axis",
                                {{"labelExpr", "data('bars')[datum.value - 1].label"},
                                 {"labelLimit", 240},
                                 {"ticks", false}}}};

    ordered_json tooltip = ordered_json::array();
    tooltip.push_back({{"field", "label"}, {"type", "nominal"}, {"title", bars.fCategoryTitle}});
    tooltip.push_back({{"field", "value"}, {"type", "quantitative"}, {"title", bars.fValueTitle}});
    tooltip.push_back({{"field", "group"}, {"type", "nominal"}, {"title", bars.fGroupTitle}});

    ordered_json layers = ordered_json::array();
    layers.push_back({{"mark", {{"type", "bar"}, {"height", {{"band", model.fBarWidth}}}}},
                      {"encoding",
                       {{"y", down},
                        {"x", across},
                        {"x2", {{"datum", bars.fFoot}}},
                        {"color", byColour},
                        {"tooltip", tooltip}}}});
    if (!bars.fvReferenceLines.empty()) {
        ordered_json lines = ordered_json::array();
        for (const double value : bars.fvReferenceLines) lines.push_back({{"value", value}});
        layers.push_back(
            {{"data", {{"values", lines}}},
             {"mark", {{"type", "rule"}, {"strokeDash", {5, 3}}, {"strokeWidth", 1.5}}},
             {"encoding", {{"x", {{"field", "value"}, {"type", "quantitative"}}}}}});
    }

    ordered_json title = {{"text", bars.fTitle}, {"anchor", "start"}};
    if (!bars.fvFootnotes.empty()) title["subtitle"] = bars.fvFootnotes;
    const ordered_json spec = {{"$schema", "https://vega.github.io/schema/vega-lite/v5.json"},
                               {"title", title},
                               {"description", model.fSummary},
                               {"width", 420},
                               {"height", {{"step", 20}}},
                               {"data", {{"name", "bars"}, {"values", rows}}},
                               {"layer", layers}};
    return spec.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

}  // namespace embedded
