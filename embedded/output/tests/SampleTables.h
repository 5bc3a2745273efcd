#ifndef PREDSEL_EMBEDDED_OUTPUT_TESTS_SAMPLETABLES_H
#define PREDSEL_EMBEDDED_OUTPUT_TESTS_SAMPLETABLES_H

#include <string>
#include <utility>
#include <vector>

#include "embedded/output/Report.h"

namespace embedded {

// Tables as the model has them, for tests of layout and renderers.

inline ReportHeading Leaf(std::string text) { return {text, text, true, {}, {}}; }

inline ReportHeading Branch(std::string text, std::vector<ReportHeading> children) {
    return {text, text, true, {}, std::move(children)};
}

inline ReportDimension Dimension(std::string name, ReportAxis axis,
                                 std::vector<ReportHeading> headings, std::int32_t order = 1,
                                 bool titleShown = false) {
    return {name, name, axis, order, titleShown, std::move(headings)};
}

inline ReportCell NumberCell(std::vector<std::size_t> at, double value, std::string text,
                             ReportFormat format = ReportFormat::Count) {
    return {std::move(at), value, std::move(text), format, {}};
}

inline ReportCell TextCell(std::vector<std::size_t> at, std::string text) {
    return {std::move(at), text, text, ReportFormat::Text, {}};
}

/// Two selected predictors and an unselected one, with a note on the group and one on a cell.
inline ReportTable PredictorTable() {
    ReportTable table;
    table.fId = "PredictorSummary";
    table.fTitle = "Predictor Summary";
    ReportHeading unselected = Branch("Unselected", {Leaf("Shoe size")});
    unselected.fvNotes = {"Limited to the first 1 unselected predictors."};
    table.fvDimensions = {
        Dimension("Predictor", ReportAxis::Row,
                  {Branch("Selected", {Leaf("Age in years"), Leaf("Income")}), unselected}, 1,
                  true),
        Dimension("Statistics", ReportAxis::Column,
                  {Leaf("Rank"), Leaf("Unadjusted Sig."),
                   Branch("Pearson Chi-Square", {Leaf("Value"), Leaf("df")})})};
    for (std::size_t row = 0; row < 3; ++row) {
        table.fvCells.push_back(
            NumberCell({row, 0}, static_cast<double>(row + 1), std::to_string(row + 1)));
        const std::vector<std::pair<double, std::string>> sig = {
            {0.0001, "<.001"}, {0.013, ".013"}, {0.456, ".456"}};
        table.fvCells.push_back(
            NumberCell({row, 1}, sig[row].first, sig[row].second, ReportFormat::Significance));
        const std::vector<std::pair<double, std::string>> value = {
            {1234.5, "1234.500"}, {12.25, "12.250"}, {0.5, "0.500"}};
        table.fvCells.push_back(
            NumberCell({row, 2}, value[row].first, value[row].second, ReportFormat::GeneralStat));
        table.fvCells.push_back(NumberCell({row, 3}, 2, "2"));
    }
    table.fvCells[2].fvNotes = {"A note on the value."};
    return table;
}

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_OUTPUT_TESTS_SAMPLETABLES_H
