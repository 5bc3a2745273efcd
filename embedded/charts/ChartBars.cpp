#include "embedded/charts/ChartBars.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <map>
#include <stdexcept>

#include "embedded/output/CompositeText.h"
#include "embedded/output/ShowableText.h"
#include "embedded/strings/StringTable.h"
#include "embedded/xml/XmlText.h"
#include "host/Records.h"

namespace embedded {
namespace {

// Blue, and a grey outline around a pale filling: told apart by colour-blind readers and in print
// without colours, and each outline at least 3:1 against white and against #121212.
struct OwnColour {
    const char* fpName;
    double fOpacity;
};
constexpr std::array<OwnColour, 2> kOwnColours = {{{"#0072b2", 1.0}, {"#7c828a", 0.4}}};

std::string HexColour(std::uint32_t rgb) {
    constexpr const char* kDigits = "0123456789abcdef";
    std::string text = "#";
    for (int shift = 20; shift >= 0; shift -= 4) text += kDigits[(rgb >> shift) & 0xFu];
    return text;
}

std::string OneLine(std::string_view text) {
    std::string line = ShowableText(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

std::string LabelOf(const ChartVariable& variable, std::int32_t code) {
    const auto found = variable.fLabels.find(code);
    return found == variable.fLabels.end() ? std::to_string(code) : OneLine(found->second.Text());
}

void CheckRow(const std::vector<ChartValue>& row, const std::vector<ChartVariable>& variables) {
    bool isFit = row.size() == variables.size();
    for (std::size_t i = 0; isFit && i < row.size(); ++i) {
        isFit = std::holds_alternative<double>(row[i]) == variables[i].fbNumeric;
    }
    if (!isFit) throw std::logic_error("a row of a chart does not fit its variables");
}

std::int32_t CodeIn(const std::vector<ChartValue>& row, std::size_t column) {
    return std::get<std::int32_t>(row.at(column));
}

std::optional<double> NumberIn(const std::vector<ChartValue>& row, std::size_t column) {
    const double value = std::get<double>(row.at(column));
    if (value == MCMV::gMissingValue || !std::isfinite(value)) return std::nullopt;
    return value;
}

double FootOf(const ChartAxis& axis) {
    if (!axis.fbInverted) return axis.fLow;
    const bool isLowGood = axis.fTitle.Key() == "Unadjusted Significance";
    if (isLowGood) return axis.fOrigin;
    return axis.fOrigin == axis.fHigh ? axis.fLow : axis.fHigh;
}

}  // namespace

std::string ChartNumberText(double value, const ChartVariable& variable) {
    const double smallest = std::pow(10.0, -variable.fDecimals);
    const bool isTiny = value > 0.0 && value < smallest;
    // 309 digits of the largest double, a sign, a point and the decimals.
    std::array<char, 352> buffer;
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), isTiny ? smallest : value,
                      std::chars_format::fixed, std::clamp(variable.fDecimals, 0, 30));
    std::string number(buffer.data(), end.ptr);
    if (number.find_first_not_of("-0.") == std::string::npos && number.front() == '-') {
        number.erase(0, 1);
    }
    if (!variable.fbLeadingZero) {
        const std::size_t zero = number.find_first_not_of('-');
        if (number.compare(zero, 2, "0.") == 0) number.erase(zero, 1);
    }
    return (isTiny ? "<" : "") + variable.fPrefix + number + variable.fSuffix;
}

ChartBars ArrangeBars(const ChartModel& model) {
    const bool isComplete = model.fbElement && model.fXAxis.fVariable && model.fYAxis.fVariable;
    if (!isComplete) throw std::logic_error("a chart needs an element with an x and a y variable");
    const ChartVariable& category = model.fvVariables.at(*model.fXAxis.fVariable);
    const ChartVariable& number = model.fvVariables.at(*model.fYAxis.fVariable);

    ChartBars out;
    out.fTitle = OneLine(model.fTitle.Text());
    out.fCategoryTitle = OneLine(model.fXAxis.fTitle.Text());
    out.fValueTitle = OneLine(model.fYAxis.fTitle.Text());
    out.fGroupTitle = OneLine(model.fLegendTitle.Text());

    std::vector<const std::vector<ChartValue>*> rows;
    std::map<std::int32_t, std::size_t> groups;  // by colour code
    for (const auto& row : model.fvRows) {
        CheckRow(row, model.fvVariables);
        rows.push_back(&row);
        groups[model.fColourVariable ? CodeIn(row, *model.fColourVariable) : 0] = 0;
    }
    // The highest code stands at the top.
    std::stable_sort(rows.begin(), rows.end(), [&](const auto* a, const auto* b) {
        return CodeIn(*a, *model.fXAxis.fVariable) > CodeIn(*b, *model.fXAxis.fVariable);
    });
    for (auto& [code, index] : groups) {
        index = out.fvGroups.size();
        ChartGroup group;
        if (model.fColourVariable) {
            group.fLabel = LabelOf(model.fvVariables.at(*model.fColourVariable), code);
        }
        const auto place = static_cast<std::size_t>(code < 0 ? 0 : code);
        const OwnColour& own = kOwnColours[place % kOwnColours.size()];
        const bool isGiven = place < model.fvColours.size();
        group.fColour = isGiven ? HexColour(model.fvColours[place]) : own.fpName;
        group.fOpacity = isGiven ? 1.0 : own.fOpacity;
        out.fvGroups.push_back(std::move(group));
    }
    for (const auto* row : rows) {
        ChartBar bar;
        bar.fLabel = LabelOf(category, CodeIn(*row, *model.fXAxis.fVariable));
        bar.fValue = NumberIn(*row, *model.fYAxis.fVariable);
        bar.fGroup = groups[model.fColourVariable ? CodeIn(*row, *model.fColourVariable) : 0];
        ++out.fvGroups[bar.fGroup].fCount;
        out.fvBars.push_back(std::move(bar));
    }
    out.fFoot = FootOf(model.fYAxis);
    for (ChartBar& bar : out.fvBars) {
        if (!bar.fValue) continue;
        // A bar of full length at zero has underflowed; one without length is zero.
        const bool isUnderflow = *bar.fValue == 0.0 && out.fFoot != 0.0;
        bar.fText =
            ChartNumberText(isUnderflow ? std::numeric_limits<double>::min() : *bar.fValue, number);
    }
    if (model.fbReferenceLinesFinished) out.fvReferenceLines = model.fvReferenceLines;
    for (const ChartString* note : {&model.fFirstFootnote, &model.fSecondFootnote}) {
        if (!note->Text().empty()) out.fvFootnotes.push_back(OneLine(note->Text()));
    }
    return out;
}

std::string ChartSummary(const ChartBars& bars) {
    std::string summary =
        CompositeText(TextOf("Chart summary: ^1 bars of ^2 by ^3..."),
                      {std::to_string(bars.fvBars.size()), bars.fCategoryTitle, bars.fValueTitle});
    const auto add = [&summary](std::string_view key, const std::vector<std::string>& arguments) {
        summary += ' ' + CompositeText(TextOf(key), arguments);
    };
    for (const ChartGroup& group : bars.fvGroups) {
        if (group.fLabel.empty()) continue;
        add("Chart summary: ^1 has ^2 bars...", {group.fLabel, std::to_string(group.fCount)});
    }
    if (!bars.fvBars.empty() && bars.fvBars.front().fValue) {
        add("Chart summary: first is ^1 with ^2...",
            {bars.fvBars.front().fLabel, bars.fvBars.front().fText});
    }
    for (const double line : bars.fvReferenceLines) {
        add("Chart summary: line at ^1...", {RoundTripText(line)});
    }
    return summary;
}

}  // namespace embedded
