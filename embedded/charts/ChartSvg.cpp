#include "embedded/charts/ChartSvg.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <utility>

#include "embedded/charts/SvgText.h"
#include "embedded/output/DisplayWidth.h"
#include "embedded/xml/XmlText.h"

namespace embedded {
namespace {

// All lengths are points; the picture's size is given in points too, so that 12 is 12 points.
constexpr double kWidth = 540;
constexpr double kStandardFrame = 330;  // height of a frame of 20 bars
constexpr double kWidestPlace = 24;     // between two bars: few bars give a lower picture
constexpr double kEdge = 8;
constexpr double kGap = 6;
constexpr double kTitleSize = 13;
constexpr double kTextSize = 9.5;
constexpr double kTickSize = 9;
constexpr double kBoldness = 1.1;  // how much wider a bold text is
constexpr double kSwatch = 9;
constexpr double kWidestMargin = 8;  // before the first and after the last bar
constexpr double kWidestLabels = 0.42 * kWidth;
constexpr double kNarrowestLabels = 24;

/// A length with at most two decimals, the same on every machine.
std::string Length(double value) {
    std::array<char, 64> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                   std::chars_format::fixed, 2);
    std::string text(buffer.data(), end.ptr);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text == "-0" ? "0" : text;
}

using Attributes = std::initializer_list<std::pair<const char*, std::string>>;

class SvgWriter {
 public:
    void Open(std::string_view name, Attributes attributes) {
        Tag(name, attributes);
        fText += ">";
    }
    void Close(std::string_view name) { (fText += "</").append(name) += ">\n"; }
    void Empty(std::string_view name, Attributes attributes) {
        Tag(name, attributes);
        fText += "/>\n";
    }
    void Leaf(std::string_view name, Attributes attributes, std::string_view content) {
        Open(name, attributes);
        fText += EscapeXml(content);
        Close(name);
    }
    void Break() { fText += '\n'; }
    std::string Take() { return std::move(fText); }

 private:
    void Tag(std::string_view name, Attributes attributes) {
        (fText += '<').append(name);
        for (const auto& [key, value] : attributes) {
            fText.append(" ").append(key).append("=\"").append(EscapeXml(value)) += '"';
        }
    }
    std::string fText;
};

/// Where everything goes, from the top down.
class Layout {
 public:
    Layout(const ChartModel& model, const ChartBars& bars)
        : fModel(model), fBars(bars), fAxis(model.fYAxis) {
        fLabelSize = model.fXAxis.fTickLabelSize;
        double labels = kNarrowestLabels;
        double numbers = 0;
        for (const ChartBar& bar : bars.fvBars) {
            labels = std::max(labels, EstimatedTextWidth(bar.fLabel, fLabelSize));
            numbers = std::max(numbers, EstimatedTextWidth(bar.fText, kTickSize));
        }
        fLabelRoom = std::min(labels, kWidestLabels);
        fPlotLeft = kEdge + fLabelRoom + kGap;
        fPlotRight = kWidth - kEdge - numbers - kGap;
        // Bars run from the foot outwards; the upper margin lies beyond where they can end.
        const double room = fPlotRight - fPlotLeft;
        fIsFootLeft = (bars.fFoot == fAxis.fLow) != fAxis.fbInverted;
        const double before = fIsFootLeft ? fAxis.fLowerMargin : fAxis.fUpperMargin;
        const double after = fIsFootLeft ? fAxis.fUpperMargin : fAxis.fLowerMargin;
        fValuesLeft = fPlotLeft + room * before;
        fValuesRight = fPlotRight - room * after;

        // Margins are shares of the frame, as far as they serve to keep the bars off its ends.
        const double frame = kStandardFrame * model.fFrameHeight;
        const double above = std::min(model.fXAxis.fUpperMargin * frame, kWidestMargin);
        const double below = std::min(model.fXAxis.fLowerMargin * frame, kWidestMargin);
        const auto count = static_cast<double>(bars.fvBars.size());
        fPlace = std::min((frame - above - below) / std::max(count, 1.0), kWidestPlace);

        double y = kEdge + kTitleSize;
        fTitleLine = y;
        y += kGap;
        if (HasLegend()) {
            fLegendLine = y + kTextSize + 2;
            y = fLegendLine + kGap;
        }
        if (HasTopTicks()) {
            fTopTickLine = y + kTickSize + 2;
            y = fTopTickLine + kGap;
        }
        if (!bars.fvReferenceLines.empty()) {
            fReferenceLine = y + kTickSize;
            y = fReferenceLine + 3;
        }
        fPlotTop = y;
        fFirstBar = fPlotTop + above;
        fPlotBottom = fFirstBar + count * fPlace + below;
        y = fPlotBottom;
        if (fAxis.fbTicks) {
            fTickLine = y + kTickSize + 4;
            y = fTickLine + 2;
        }
        if (fAxis.fbTitleShown && !bars.fValueTitle.empty()) {
            fAxisTitleLine = y + kTextSize + 3;
            y = fAxisTitleLine + 2;
        }
        y += kGap;
        for (const std::string& note : bars.fvFootnotes) {
            const auto columns =
                static_cast<std::size_t>((kWidth - 2 * kEdge) / (0.55 * kTextSize));
            for (std::string& line : WrapText(note, columns)) {
                y += kTextSize + 3.5;
                fvFootnoteLines.emplace_back(y, std::move(line));
            }
        }
        fHeight = std::ceil(y + kEdge);
    }

    std::string Draw(std::string_view idStem) {
        const std::string stem(idStem);
        fOut.Open("svg", {{"xmlns", "http://www.w3.org/2000/svg"},
                          {"class", "chart"},
                          {"role", "img"},
                          {"aria-labelledby", stem + "-title"},
                          {"aria-describedby", stem + "-desc"},
                          {"width", Length(kWidth) + "pt"},
                          {"height", Length(fHeight) + "pt"},
                          {"viewBox", "0 0 " + Length(kWidth) + " " + Length(fHeight)},
                          {"fill", "currentColor"},
                          {"font-family",
                           "system-ui, 'Segoe UI', 'Helvetica Neue', Arial, "
                           "'Liberation Sans', sans-serif"},
                          {"font-size", Length(kTextSize)}});
        fOut.Break();
        fOut.Leaf("title", {{"id", stem + "-title"}}, fBars.fTitle);
        fOut.Leaf("desc", {{"id", stem + "-desc"}}, Description());
        DrawHeadings();
        DrawGrid();
        DrawBars();
        DrawReferenceLines();
        for (const auto& [y, line] : fvFootnoteLines) {
            fOut.Leaf("text", {{"class", "footnote"}, {"x", Length(kEdge)}, {"y", Length(y)}},
                      line);
        }
        fOut.Close("svg");
        return fOut.Take();
    }

 private:
    bool HasLegend() const {
        if (!fModel.fbLegend) return false;
        return std::any_of(fBars.fvGroups.begin(), fBars.fvGroups.end(),
                           [](const ChartGroup& group) { return !group.fLabel.empty(); });
    }

    /// Beyond a standard frame the axis at the bottom is out of sight of the first bars.
    bool HasTopTicks() const { return fAxis.fbTicks && fModel.fFrameHeight > 1; }

    std::string Description() const {
        std::string text = fModel.fComment;
        if (!text.empty() && !fModel.fSummary.empty()) text += ' ';
        return text + fModel.fSummary;
    }

    double Across(double value) const {
        const double clamped = std::clamp(value, fAxis.fLow, fAxis.fHigh);
        double share = (clamped - fAxis.fLow) / (fAxis.fHigh - fAxis.fLow);
        if (fAxis.fbInverted) share = 1 - share;
        return fValuesLeft + share * (fValuesRight - fValuesLeft);
    }

    void DrawHeadings() {
        fOut.Leaf("text",
                  {{"class", "title"},
                   {"x", Length(kEdge)},
                   {"y", Length(fTitleLine)},
                   {"font-size", Length(kTitleSize)},
                   {"font-weight", "600"}},
                  fBars.fTitle);
        if (!HasLegend()) return;
        fOut.Open("g", {{"class", "legend"}});
        fOut.Break();
        double x = kEdge;
        if (!fBars.fGroupTitle.empty()) {
            fOut.Leaf("text",
                      {{"x", Length(x)}, {"y", Length(fLegendLine)}, {"font-weight", "600"}},
                      fBars.fGroupTitle);
            x += kBoldness * EstimatedTextWidth(fBars.fGroupTitle, kTextSize) + kGap;
        }
        for (const ChartGroup& group : fBars.fvGroups) {
            fOut.Empty("rect", {{"x", Length(x + 0.5)},
                                {"y", Length(fLegendLine - kSwatch + 1)},
                                {"width", Length(kSwatch)},
                                {"height", Length(kSwatch)},
                                {"rx", "1.5"},
                                {"fill", group.fColour},
                                {"fill-opacity", Length(group.fOpacity)},
                                {"stroke", group.fColour}});
            x += kSwatch + kGap;
            fOut.Leaf("text", {{"x", Length(x)}, {"y", Length(fLegendLine)}}, group.fLabel);
            x += EstimatedTextWidth(group.fLabel, kTextSize) + 2 * kGap;
        }
        fOut.Close("g");
    }

    std::vector<double> Ticks() const {
        if (!fAxis.fbNiceTicks) return {fAxis.fLow, fAxis.fHigh};
        // The largest of 1, 2, 5 times a power of ten that gives at least five steps.
        const double fifth = (fAxis.fHigh - fAxis.fLow) / 5;
        const double power = std::pow(10.0, std::floor(std::log10(fifth)));
        double step = power;
        for (const double factor : {2.0, 5.0, 10.0}) {
            if (factor * power <= fifth * (1 + 1e-9)) step = factor * power;
        }
        std::vector<double> ticks;
        const auto first = static_cast<std::int64_t>(std::ceil(fAxis.fLow / step - 1e-9));
        const auto last = static_cast<std::int64_t>(std::floor(fAxis.fHigh / step + 1e-9));
        for (std::int64_t i = first; i <= last; ++i) {
            ticks.push_back(static_cast<double>(i) * step);
        }
        return ticks;
    }

    void DrawTickLabels(double y) {
        for (const double tick : Ticks()) {
            // As many digits as the round number has: 0.6, not 0.6000000000000001.
            // The sum takes the sign off a negative zero.
            const std::string label = RoundTripText(std::round(tick * 1e9) / 1e9 + 0.0);
            fOut.Leaf("text",
                      {{"x", Length(Across(tick))},
                       {"y", Length(y)},
                       {"font-size", Length(kTickSize)},
                       {"text-anchor", "middle"}},
                      label);
        }
    }

    void DrawGrid() {
        fOut.Open("g", {{"class", "axis"}});
        fOut.Break();
        if (fAxis.fbTicks) {
            std::string path;
            for (const double tick : Ticks()) {
                path +=
                    "M" + Length(Across(tick)) + " " + Length(fPlotTop) + "V" + Length(fPlotBottom);
            }
            fOut.Empty("path", {{"class", "grid"},
                                {"d", path},
                                {"stroke", "currentColor"},
                                {"stroke-opacity", "0.14"},
                                {"stroke-width", "0.75"}});
            DrawTickLabels(fTickLine);
            if (HasTopTicks()) DrawTickLabels(fTopTickLine);
        }
        if (fAxis.fbTitleShown && !fBars.fValueTitle.empty()) {
            fOut.Leaf("text",
                      {{"class", "axis-title"},
                       {"x", Length((fValuesLeft + fValuesRight) / 2)},
                       {"y", Length(fAxisTitleLine)},
                       {"text-anchor", "middle"}},
                      fBars.fValueTitle);
        }
        if (fModel.fXAxis.fbTitleShown && !fBars.fCategoryTitle.empty()) {
            fOut.Leaf("text",
                      {{"class", "axis-title"},
                       {"x", Length(fPlotLeft - kGap)},
                       {"y", Length(fPlotTop - 3)},
                       {"text-anchor", "end"}},
                      ShortenedText(fBars.fCategoryTitle, kTextSize, fLabelRoom));
        }
        fOut.Close("g");
    }

    double BarThickness() const {
        double thickness = fPlace * fModel.fBarWidth;
        if (fModel.fHighestBarWidth > 0) thickness = std::min(thickness, fModel.fHighestBarWidth);
        return std::max(thickness, fModel.fLowestBarWidth);
    }

    void DrawBars() {
        const double thickness = BarThickness();
        const double foot = Across(fBars.fFoot);
        fOut.Open("g", {{"class", "bars"}, {"stroke-width", "0.75"}});
        fOut.Break();
        if (!fIsFootLeft) DrawLeaders();
        double middle = fFirstBar + fPlace / 2;
        for (const ChartBar& bar : fBars.fvBars) {
            DrawBar(bar, middle, thickness, foot);
            middle += fPlace;
        }
        fOut.Close("g");
        fOut.Empty("path",
                   {{"class", "foot"},
                    {"d", "M" + Length(foot) + " " + Length(fPlotTop) + "V" + Length(fPlotBottom)},
                    {"stroke", "currentColor"},
                    {"stroke-opacity", "0.6"}});
    }

    /// Leads the eye from a label to a bar that starts at the far side.
    void DrawLeaders() {
        std::string path;
        double middle = fFirstBar + fPlace / 2;
        for (const ChartBar& bar : fBars.fvBars) {
            const double end = Across(bar.fValue.value_or(fBars.fFoot));
            path += "M" + Length(fPlotLeft) + " " + Length(middle) + "H" + Length(end);
            middle += fPlace;
        }
        fOut.Empty("path", {{"class", "leaders"},
                            {"d", path},
                            {"stroke", "currentColor"},
                            {"stroke-opacity", "0.3"},
                            {"stroke-dasharray", "1 3"}});
    }

    void DrawBar(const ChartBar& bar, double middle, double thickness, double foot) {
        const ChartGroup& group = fBars.fvGroups[bar.fGroup];
        // The whole label and the value show up under the pointer.
        std::string hint = bar.fLabel + ": " + bar.fText;
        if (!group.fLabel.empty()) hint += " (" + group.fLabel + ")";
        fOut.Open("g", {{"class", "bar"}});
        fOut.Leaf("title", {}, hint);
        const double labelLine = middle + 0.35 * fLabelSize;
        fOut.Leaf("text",
                  {{"x", Length(fPlotLeft - kGap)},
                   {"y", Length(labelLine)},
                   {"font-size", Length(fLabelSize)},
                   {"text-anchor", "end"}},
                  ShortenedText(bar.fLabel, fLabelSize, fLabelRoom));
        if (bar.fValue) {
            const double end = Across(*bar.fValue);
            fOut.Empty("rect", {{"x", Length(std::min(foot, end))},
                                {"y", Length(middle - thickness / 2)},
                                {"width", Length(std::abs(end - foot))},
                                {"height", Length(thickness)},
                                {"rx", "1"},
                                {"fill", group.fColour},
                                {"fill-opacity", Length(group.fOpacity)},
                                {"stroke", group.fColour}});
            fOut.Leaf("text",
                      {{"class", "value"},
                       {"x", Length(kWidth - kEdge)},
                       {"y", Length(middle + 0.35 * ValueSize())},
                       {"font-size", Length(ValueSize())},
                       {"text-anchor", "end"}},
                      bar.fText);
        }
        fOut.Close("g");
    }

    double ValueSize() const { return std::min(kTickSize, fLabelSize); }

    void DrawReferenceLines() {
        for (const double value : fBars.fvReferenceLines) {
            const double x = Across(value);
            fOut.Empty("path",
                       {{"class", "reference"},
                        {"d", "M" + Length(x) + " " + Length(fPlotTop) + "V" + Length(fPlotBottom)},
                        {"stroke", "currentColor"},
                        {"stroke-width", "1.25"},
                        {"stroke-dasharray", "5 3"}});
            fOut.Leaf("text",
                      {{"class", "reference-label"},
                       {"x", Length(x)},
                       {"y", Length(fReferenceLine)},
                       {"font-size", Length(kTickSize)},
                       {"text-anchor", "middle"}},
                      RoundTripText(value));
        }
    }

    const ChartModel& fModel;
    const ChartBars& fBars;
    const ChartAxis& fAxis;
    SvgWriter fOut;
    bool fIsFootLeft = true;
    double fLabelSize = 0;
    double fLabelRoom = 0;
    double fPlotLeft = 0;
    double fPlotRight = 0;
    double fValuesLeft = 0;
    double fValuesRight = 0;
    double fPlace = 0;  // height that one bar has, with the gap to the next
    double fTitleLine = 0;
    double fLegendLine = 0;
    double fTopTickLine = 0;
    double fReferenceLine = 0;
    double fPlotTop = 0;
    double fFirstBar = 0;
    double fPlotBottom = 0;
    double fTickLine = 0;
    double fAxisTitleLine = 0;
    std::vector<std::pair<double, std::string>> fvFootnoteLines;
    double fHeight = 0;
};

}  // namespace

std::string ChartSvg(const ChartModel& model, const ChartBars& bars, std::string_view idStem) {
    return Layout(model, bars).Draw(idStem);
}

std::string SvgFile(std::string_view svg) {
    const std::size_t rootEnd = std::min(svg.find('>'), svg.size() - 1) + 1;
    std::string out = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    out.append(svg, 0, rootEnd);
    out +=
        "\n<style>svg{color:#1f2328;background:#ffffff}"
        "@media (prefers-color-scheme:dark){svg{color:#e6e6e6;background:#16181d}}</style>";
    out.append(svg, rootEnd);
    return out;
}

}  // namespace embedded
