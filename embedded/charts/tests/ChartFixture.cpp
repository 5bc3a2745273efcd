#include "embedded/charts/tests/ChartFixture.h"

#include "embedded/charts/XChartData.h"

namespace embedded {
namespace {

struct OpenDocument final : XDocument {
    const ChartModel& Model() const { return ChartData().fModel; }
};

ChartString Looked(const FacSTDictionary& texts, const std::string& key) {
    OlangString text;
    texts.Lookup(key, text);
    return XUtility::ChartStringFromOLANG(text);
}

}  // namespace

ChartRequest EvenRequest(std::int32_t count, std::int32_t selected) {
    ChartRequest request;
    for (std::int32_t i = 0; i < count; ++i) {
        request.fvLabels.push_back("x" + std::to_string(i + 1));
        request.fvValues.push_back(static_cast<double>(i) / count);
    }
    request.fSelected = selected;
    return request;
}

ChartModel BuildChart(const ChartRequest& request) {
    const FacSTDictionary texts(3);
    const auto count = static_cast<std::int32_t>(request.fvLabels.size());
    OpenDocument document;
    document.SetDescription(Looked(texts, "Predictor Summary Chart"));
    const XGraph graph = document.getGraph();
    const XVariable x = graph.addCategoricalVariable(Looked(texts, "Predictor"));
    const XVariable y = graph.addNumericVariable(Looked(texts, request.fValueKey));
    y.SetNumberFormat(3, false, nullptr, nullptr);
    const XVariable colour = graph.addCategoricalVariable(ChartString("color", ""));
    const XElement bars = graph.addElement(kElementBar);
    bars.GetElementType().setPositionModifier(1);
    bars.SetWidth(2, 75.0, 0.0, 0.0);
    if (count > 20) graph.setOuterFrameHeight(count / 20.0);
    bars.colorByVariable(colour, {}, 1, Looked(texts, "Predictors"));
    colour.addRelabel(0, Looked(texts, "Selected"));
    colour.addRelabel(1, Looked(texts, "Unselected"));
    for (std::int32_t i = 0; i < count; ++i) {
        const auto at = static_cast<std::size_t>(i);
        const XRow row = graph.addRow();
        row.AddCode(count - i);
        row.AddValue(request.fvValues[at]);
        row.AddCode(i < request.fSelected ? 0 : 1);
        x.addRelabel(count - i, XUtility::ChartStringFromLocalCodePage(request.fvLabels[at]));
    }
    const XAxis xAxis = graph.getXAxis();
    xAxis.setTitle(Looked(texts, "Predictor"));
    xAxis.setMajorTickStagger(false);
    xAxis.setLowerMargin("10%");
    xAxis.setUpperMargin("10%");
    xAxis.AddMajorTicks();
    xAxis.hideLabel();
    const double labelSize = count >= 19 ? 8.0 : 12.0;
    xAxis.setTickLabelFontSize(labelSize, labelSize);
    const XAxis yAxis = graph.getYAxis();
    yAxis.setTitle(Looked(texts, request.fValueKey));
    yAxis.setUpperMargin("5%");
    yAxis.setNiceUpperMapping(true);
    yAxis.AddMajorTicks();
    yAxis.setInterval(0.0, 1.0, true);
    yAxis.setScale(0, false, 0.0);
    yAxis.invertScale(1.0);
    bars.AddX(x);
    bars.AddY(y);
    graph.AddYReferenceLine(request.fCutoff, "dash");
    graph.FinishReferenceLines();
    const auto& notes = request.fvFootnotes;
    if (!notes.empty()) graph.SetFirstFootnote(ChartString(notes[0], ""));
    if (notes.size() > 1) graph.SetSecondFootnote(ChartString(notes[1], ""));
    return document.Model();
}

}  // namespace embedded
