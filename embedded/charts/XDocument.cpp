#include <algorithm>
#include <utility>

#include "embedded/HostSession.h"
#include "embedded/charts/ChartBars.h"
#include "embedded/charts/ChartSvg.h"
#include "embedded/charts/ChartVegaLite.h"
#include "embedded/charts/XChartData.h"
#include "host/Charts.h"

XDocument::XDocument() : fpData(std::make_unique<XChartData>()) {}

XDocument::~XDocument() = default;

void XDocument::SetDescription(const ChartString& text) { fpData->fModel.fTitle = text; }

void XDocument::SetDescription(std::string_view text) {
    fpData->fModel.fTitle = ChartString(std::string(text), std::string());
}

XGraph XDocument::getGraph() { return XGraph(fpData.get()); }

void XDocument::SendChart(bool show, bool /*editable*/, bool /*linked*/) {
    fpData->fbShow = show;
    SendContent();
    SendDone();
}

void XDocument::SetComment(std::string_view text) { fpData->fModel.fComment = text; }

void XDocument::SetName(std::string_view name) { fpData->fModel.fName = name; }

void XDocument::doNotModify() {}

bool XDocument::SetChartTemplate(std::string_view /*path*/) { return false; }

bool XDocument::AddCSVFile(std::string_view /*path*/) { return false; }

bool XDocument::AddImmediateTemplate(std::string_view /*text*/) { return false; }

std::optional<XGraph> XDocument::getExternalGraph() { return std::nullopt; }

void XDocument::SendContent() {
    fpData->fBars = embedded::ArrangeBars(fpData->fModel);
    SendDescription();
    SendXML();
    SendData();
}

void XDocument::SendDescription() {
    const embedded::ChartModel& model = fpData->fModel;
    const embedded::ChartBars& bars = fpData->fBars;
    embedded::ReportChart& chart = fpData->fChart;
    chart.fTitle = bars.fTitle;
    chart.fId = model.fName;
    if (chart.fId.empty()) {
        chart.fId = model.fTitle.Key().empty() ? bars.fTitle : model.fTitle.Key();
        std::erase(chart.fId, ' ');
    }
    fpData->fModel.fSummary = embedded::ChartSummary(bars);
}

void XDocument::SendXML() {
    const embedded::ChartModel& model = fpData->fModel;
    const embedded::ChartBars& bars = fpData->fBars;
    const std::string idStem = "chart" + std::to_string(SendCount() + 1);
    fpData->fChart.fSvg = embedded::ChartSvg(model, bars, idStem);
    fpData->fChart.fVegaLite = embedded::ChartVegaLite(model, bars);
}

void XDocument::SendData() {
    const embedded::ChartBars& bars = fpData->fBars;
    embedded::ReportChart& chart = fpData->fChart;
    chart.fvDataColumns = {bars.fCategoryTitle, bars.fValueTitle, bars.fGroupTitle};
    chart.fvDataRows.clear();
    for (const embedded::ChartBar& bar : bars.fvBars) {
        chart.fvDataRows.push_back(
            {{bar.fLabel, false}, {bar.fText, true}, {bars.fvGroups[bar.fGroup].fLabel, false}});
    }
}

void XDocument::SendDone() {
    if (!fpData->fbShow) return;
    embedded::HostSession::Active().Report().fvItems.emplace_back(std::move(fpData->fChart));
}

std::int32_t XDocument::SendCount() const {
    const auto& items = embedded::HostSession::Active().Report().fvItems;
    return static_cast<std::int32_t>(
        std::count_if(items.begin(), items.end(), [](const embedded::ReportItem& item) {
            return std::holds_alternative<embedded::ReportChart>(item);
        }));
}
