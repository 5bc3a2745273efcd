#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "backend/predselect/PRSValidSpecs.h"
#include "backend/predselect/SelOutput.h"
#include "host/Charts.h"
#include "host/Data.h"

namespace {

constexpr std::int32_t kProcedurePath = 3;  // the host's path to the texts of procedures
constexpr std::int32_t kCramer = 2;
constexpr std::int32_t kStacked = 1;
constexpr std::int32_t kPercentOfPlace = 2;
constexpr std::int32_t kWithLegend = 1;
constexpr std::int32_t kSelected = 0;  // codes of the colour variable
constexpr std::int32_t kUnselected = 1;
constexpr std::int32_t kLinear = 0;
constexpr double kBarsInStandardFrame = 20.0;
constexpr std::int32_t kManyBars = 19;  // from here on the labels are small

/// Looks texts up and keeps the last one, as the name of the y axis needs.
class ChartTexts {
 public:
    ChartTexts() : fDictionary(kProcedurePath) { fDictionary.SetProcedure("SelectPredictors"); }
    ChartString Text(std::string_view key) {
        fDictionary.Lookup(key, fLast);
        return Last();
    }
    ChartString Last() const { return XUtility::ChartStringFromOLANG(fLast); }

 private:
    FacSTDictionary fDictionary;
    OlangString fLast;
};

ChartString LabelOrName(const KOLT_Variable& variable) {
    return XUtility::ChartStringFromLocalCodePage(
        variable.GetLabel().empty() ? variable.GetName() : variable.GetLabel());
}

}  // namespace

void SelOutput::WritePredictorChart() const {
    if (!fSpecs.GetPlotSummary()) return;
    const Criterion criterion = SettleCriterion();
    const double cutoff = fSpecs.GetPCutoff();
    const std::int32_t most = fSpecs.GetShowUnselected();
    const Ranking ranking = RankAndSelect(criterion, fSpecs.GetEffectiveSelectSize() + most);
    const std::int32_t lastSelected = ranking.fLastSelected;
    const std::int32_t left = ranking.Size() - 1 - lastSelected;
    const std::int32_t last = lastSelected + std::clamp(most, 0, left);

    // The tables are worth having without the chart.
    try {
        XDocument document;
        ChartTexts texts;
        document.SetDescription(texts.Text("Predictor Summary Chart"));
        const XGraph graph = document.getGraph();

        const ChartString xText = texts.Text("Predictor");
        const XVariable x = graph.addCategoricalVariable(xText);
        // Intended: the axis of a Lambda chart reads as the predictor heading, the text that was
        // looked up last. LambdaAxisReadsAsThePredictorHeading holds it.
        ChartString yText = texts.Last();
        if (criterion.fbCompared) {
            yText = texts.Text("Unadjusted Significance");
        } else if (criterion.fNumber == kCramer) {
            yText = texts.Text("Cramer's V");
        }
        const XVariable y = graph.addNumericVariable(yText);
        y.SetNumberFormat(3, false, nullptr, nullptr);
        const XVariable colour =
            graph.addCategoricalVariable(XUtility::ChartStringFromLocalCodePage("color"));

        const XElement bars = graph.addElement(kElementBar);
        bars.GetElementType().setPositionModifier(kStacked);
        bars.SetWidth(kPercentOfPlace, 75.0, 0.0, 0.0);
        const double height = (last + 1) / kBarsInStandardFrame;
        if (height > 1.0) graph.setOuterFrameHeight(height);

        bars.colorByVariable(colour, {}, kWithLegend, texts.Text("Predictors"));
        colour.addRelabel(kSelected, texts.Text("Selected"));
        colour.addRelabel(kUnselected, texts.Text("Unselected"));

        // The best predictor gets the highest code.
        for (std::int32_t position = 0; position <= last; ++position) {
            const auto at = static_cast<std::size_t>(position);
            const std::int32_t code = last - position + 1;
            const XRow row = graph.addRow();
            row.AddCode(code);
            row.AddValue(ranking.fvValues[at]);
            row.AddCode(position > lastSelected ? kUnselected : kSelected);
            x.addRelabel(code,
                         LabelOrName(fSource.GetVariable(VariableOf(ranking.fvPredictors[at]))));
        }

        const XAxis xAxis = graph.getXAxis();
        xAxis.setTitle(xText);
        xAxis.setMajorTickStagger(false);
        xAxis.setLowerMargin("10%");
        xAxis.setUpperMargin("10%");
        xAxis.AddMajorTicks();
        xAxis.hideLabel();
        const double labelSize = last + 1 >= kManyBars ? 8.0 : 12.0;
        xAxis.setTickLabelFontSize(labelSize, labelSize);

        const XAxis yAxis = graph.getYAxis();
        yAxis.setTitle(yText);
        yAxis.setUpperMargin("5%");
        yAxis.setNiceUpperMapping(true);
        yAxis.AddMajorTicks();
        yAxis.setInterval(0.0, 1.0, true);
        yAxis.setScale(kLinear, false, 0.0);
        yAxis.invertScale(1.0);

        bars.AddX(x);
        bars.AddY(y);

        // Drawn for every criterion, though only p-values are compared with it.
        graph.AddYReferenceLine(cutoff, "dash");
        graph.FinishReferenceLines();

        if (criterion.fbCompared) {
            ChartString note = texts.Text("The line is at p-value...");
            note.append(" ");
            note.appendDouble(cutoff);
            graph.SetFirstFootnote(note);
        }
        if (most >= 1) {
            ChartString note = texts.Text("Unselected predictors limited...");
            note.append(" ");
            note.appendInteger(most);
            if (criterion.fbCompared) {
                graph.SetSecondFootnote(note);
            } else {
                graph.SetFirstFootnote(note);
            }
        }
        document.SendChart(true, false, false);
    } catch (...) {
        return;
    }
}
