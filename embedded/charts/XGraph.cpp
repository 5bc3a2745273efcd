#include <charconv>
#include <stdexcept>

#include "embedded/charts/XChartData.h"
#include "host/Charts.h"

namespace {

using embedded::ChartAxis;
using embedded::ChartVariable;

/// "10%" as 0.1.
double ShareFromPercent(std::string_view percent) {
    double value = 0;
    const char* const end = percent.data() + percent.size();
    const auto result = std::from_chars(percent.data(), end, value);
    const bool isPercent = result.ec == std::errc() && std::string_view(result.ptr, end) == "%";
    if (!isPercent || !(value >= 0.0) || !(value <= 100.0)) {
        throw std::invalid_argument("a margin is a percentage");
    }
    return value / 100.0;
}

ChartAxis& AxisOf(XChartData& data, bool categories) {
    return categories ? data.fModel.fXAxis : data.fModel.fYAxis;
}

}  // namespace

void XVariable::SetNumberFormat(std::int32_t decimals, bool leadingZero, const char* prefix,
                                const char* suffix) const {
    ChartVariable& variable = fpData->fModel.fvVariables[fColumn];
    variable.fDecimals = decimals;
    variable.fbLeadingZero = leadingZero;
    variable.fPrefix = prefix == nullptr ? "" : prefix;
    variable.fSuffix = suffix == nullptr ? "" : suffix;
}

void XVariable::addRelabel(std::int32_t code, const ChartString& label) const {
    fpData->fModel.fvVariables[fColumn].fLabels[code] = label;
}

void XRow::AddCode(std::int32_t code) const { fpData->fModel.fvRows[fRow].emplace_back(code); }

void XRow::AddValue(double value) const { fpData->fModel.fvRows[fRow].emplace_back(value); }

void XAxis::setTitle(const ChartString& title) const {
    AxisOf(*fpData, fbCategories).fTitle = title;
}

void XAxis::hideLabel() const { AxisOf(*fpData, fbCategories).fbTitleShown = false; }

// Categories stand below one another, so that no label is in another's way.
void XAxis::setMajorTickStagger(bool /*stagger*/) const {}

void XAxis::setLowerMargin(std::string_view percent) const {
    AxisOf(*fpData, fbCategories).fLowerMargin = ShareFromPercent(percent);
}

void XAxis::setUpperMargin(std::string_view percent) const {
    AxisOf(*fpData, fbCategories).fUpperMargin = ShareFromPercent(percent);
}

void XAxis::AddMajorTicks() const { AxisOf(*fpData, fbCategories).fbTicks = true; }

// Charts have no minor ticks here.
void XAxis::setTickLabelFontSize(double major, double /*minor*/) const {
    AxisOf(*fpData, fbCategories).fTickLabelSize = major;
}

void XAxis::setNiceUpperMapping(bool nice) const {
    AxisOf(*fpData, fbCategories).fbNiceTicks = nice;
}

void XAxis::setInterval(double low, double high, bool fixed) const {
    if (!fixed || !(low < high)) throw std::invalid_argument("an interval is fixed and not empty");
    ChartAxis& axis = AxisOf(*fpData, fbCategories);
    axis.fLow = low;
    axis.fHigh = high;
}

void XAxis::setScale(std::int32_t kind, bool /*keepZero*/, double /*base*/) const {
    if (kind != 0) throw std::invalid_argument("axes are linear");
}

void XAxis::invertScale(double origin) const {
    ChartAxis& axis = AxisOf(*fpData, fbCategories);
    axis.fbInverted = true;
    axis.fOrigin = origin;
}

// Each row has a place of its own here, so that no two marks ever share one.
void CTElementType::setPositionModifier(std::int32_t /*modifier*/) const {}

CTElementType XElement::GetElementType() const { return CTElementType(fpData); }

void XElement::SetWidth(std::int32_t unit, double width, double lowest, double highest) const {
    if (unit != 2) throw std::invalid_argument("bars have their width in percent");
    fpData->fModel.fBarWidth = width / 100.0;
    fpData->fModel.fLowestBarWidth = lowest;
    fpData->fModel.fHighestBarWidth = highest;
}

void XElement::colorByVariable(const XVariable& variable, const std::vector<std::uint32_t>& colours,
                               std::int32_t legend, const ChartString& legendTitle) const {
    fpData->fModel.fColourVariable = variable.fColumn;
    fpData->fModel.fvColours = colours;
    fpData->fModel.fbLegend = legend == 1;
    fpData->fModel.fLegendTitle = legendTitle;
}

void XElement::AddX(const XVariable& variable) const {
    fpData->fModel.fXAxis.fVariable = variable.fColumn;
}

void XElement::AddY(const XVariable& variable) const {
    fpData->fModel.fYAxis.fVariable = variable.fColumn;
}

XVariable XGraph::AddVariable(const ChartString& name, bool isNumeric) const {
    auto& variables = fpData->fModel.fvVariables;
    variables.emplace_back();
    variables.back().fName = name;
    variables.back().fbNumeric = isNumeric;
    return XVariable(fpData, variables.size() - 1);
}

XVariable XGraph::addCategoricalVariable(const ChartString& name) const {
    return AddVariable(name, false);
}

XVariable XGraph::addNumericVariable(const ChartString& name) const {
    return AddVariable(name, true);
}

XRow XGraph::addRow() const {
    fpData->fModel.fvRows.emplace_back();
    return XRow(fpData, fpData->fModel.fvRows.size() - 1);
}

XElement XGraph::addElement(std::int32_t type) const {
    if (type != kElementBar) throw std::invalid_argument("elements are bars");
    fpData->fModel.fbElement = true;
    return XElement(fpData);
}

XAxis XGraph::getXAxis() const { return XAxis(fpData, true); }

XAxis XGraph::getYAxis() const { return XAxis(fpData, false); }

void XGraph::setOuterFrameHeight(double frames) const { fpData->fModel.fFrameHeight = frames; }

void XGraph::AddYReferenceLine(double value, std::string_view style) const {
    if (style != "dash") throw std::invalid_argument("reference lines are dashed");
    fpData->fModel.fvReferenceLines.push_back(value);
}

void XGraph::FinishReferenceLines() const { fpData->fModel.fbReferenceLinesFinished = true; }

void XGraph::SetFirstFootnote(const ChartString& text) const {
    fpData->fModel.fFirstFootnote = text;
}

void XGraph::SetSecondFootnote(const ChartString& text) const {
    fpData->fModel.fSecondFootnote = text;
}
