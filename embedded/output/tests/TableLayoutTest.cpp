#include "embedded/output/TableLayout.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "embedded/output/tests/SampleTables.h"

namespace embedded {
namespace {

std::vector<std::vector<std::string>> PathTexts(const std::vector<LayoutPath>& paths) {
    std::vector<std::vector<std::string>> texts;
    for (const LayoutPath& path : paths) {
        auto& out = texts.emplace_back();
        for (const LayoutHeading& heading : path) out.push_back(heading.fText);
    }
    return texts;
}

using Texts = std::vector<std::vector<std::string>>;

TEST(TableLayout, SpreadsGroupsOutAsPaths) {
    const ReportTable table = PredictorTable();
    const TableLayout layout(table);
    EXPECT_EQ(
        PathTexts(layout.fvRows),
        (Texts{{"Selected", "Age in years"}, {"Selected", "Income"}, {"Unselected", "Shoe size"}}));
    EXPECT_EQ(PathTexts(layout.fvColumns), (Texts{{"Rank"},
                                                  {"Unadjusted Sig."},
                                                  {"Pearson Chi-Square", "Value"},
                                                  {"Pearson Chi-Square", "df"}}));
    EXPECT_EQ(layout.fRowTitle, "Predictor");
    EXPECT_EQ(layout.fvCells[1][2].fpCell->fText, "12.250");
}

TEST(TableLayout, NumbersFootnotesInReadingOrderAndEachTextOnce) {
    ReportTable table = PredictorTable();
    table.fvCells.back().fvNotes = {"A note on the value."};
    const TableLayout layout(table);
    EXPECT_EQ(layout.fvFootnotes,
              (std::vector<std::string>{"A note on the value.",
                                        "Limited to the first 1 unselected predictors."}));
    EXPECT_EQ(layout.fvCells[2][3].fvFootnotes, std::vector<std::size_t>{0});
    EXPECT_EQ(layout.fvRows[2][0].fvFootnotes, std::vector<std::size_t>{1});
}

TEST(TableLayout, OfCrossedDimensionsOnlyCombinationsWithCellsAppear) {
    ReportTable table;
    table.fvDimensions = {
        Dimension("Reason", ReportAxis::Row, {Leaf("Missing"), Leaf("Constant")}, 1),
        Dimension("Type", ReportAxis::Row, {Leaf("Categorical"), Leaf("Scale")}, 2),
        Dimension("Predictors", ReportAxis::Column, {Leaf("Predictors")})};
    table.fvCells = {TextCell({1, 0, 0}, "a"), TextCell({0, 1, 0}, "b")};
    const TableLayout layout(table);
    EXPECT_EQ(PathTexts(layout.fvRows), (Texts{{"Categorical", "Constant"}, {"Scale", "Missing"}}));
    EXPECT_EQ(layout.fvCells[0][0].fpCell->fText, "a");
}

TEST(TableLayout, RowsOfOneDimensionStandWithoutCells) {
    ReportTable table;
    table.fvDimensions = {Dimension("Reason", ReportAxis::Row, {Leaf("Missing"), Leaf("Constant")}),
                          Dimension("Predictors", ReportAxis::Column, {Leaf("Predictors")})};
    const TableLayout layout(table);
    EXPECT_EQ(layout.fvRows.size(), 2U);
    EXPECT_EQ(layout.fvCells[0][0].fpCell, nullptr);
}

TEST(TableLayout, AnEmptyGroupStands) {
    ReportTable table;
    table.fvDimensions = {Dimension("Predictor", ReportAxis::Row, {Branch("Selected", {})})};
    EXPECT_EQ(PathTexts(TableLayout(table).fvRows), (Texts{{"Selected"}}));
}

TEST(TableLayout, HiddenGroupsLeaveTheirCategories) {
    ReportTable table;
    ReportHeading values = Branch("Values", {Leaf("North"), Leaf("South")});
    values.fbShown = false;
    table.fvDimensions = {
        Dimension("Observed", ReportAxis::Row, {values, Leaf("Overall Percent")}, 1, true)};
    const TableLayout layout(table);
    EXPECT_EQ(PathTexts(layout.fvRows), (Texts{{"North"}, {"South"}, {"Overall Percent"}}));
}

TEST(TableLayout, ShownTitlesOfColumnDimensionsStandAboveTheirHeadings) {
    ReportTable table;
    table.fvDimensions = {
        Dimension("Sample", ReportAxis::Row, {Leaf("Training")}, 2, true),
        Dimension("Observed", ReportAxis::Row, {Leaf("North")}, 1, true),
        Dimension("Predicted", ReportAxis::Column, {Leaf("North"), Leaf("South")}, 1, true)};
    table.fvCells = {NumberCell({0, 0, 0}, 1, "1")};
    const TableLayout layout(table);
    EXPECT_EQ(PathTexts(layout.fvColumns), (Texts{{"Predicted", "North"}, {"Predicted", "South"}}));
    EXPECT_TRUE(TableLayout::Shares(layout.fvColumns[0], layout.fvColumns[1], 0));
    EXPECT_FALSE(TableLayout::Shares(layout.fvColumns[0], layout.fvColumns[1], 1));
    EXPECT_EQ(layout.fRowTitle, "Sample / Observed");
}

TEST(TableLayout, ATableWithoutDimensionsOrCellsIsEmpty) {
    const ReportTable table;
    const TableLayout layout(table);
    EXPECT_TRUE(layout.fvRows.empty());
    EXPECT_TRUE(layout.fvColumns.empty());
}

TEST(FootnoteMark, LeavesOutQAndDoublesAfterZ) {
    EXPECT_EQ(FootnoteMark(0), "a");
    EXPECT_EQ(FootnoteMark(15), "p");
    EXPECT_EQ(FootnoteMark(16), "r");
    EXPECT_EQ(FootnoteMark(24), "z");
    EXPECT_EQ(FootnoteMark(25), "aa");
    EXPECT_EQ(FootnoteMark(50), "aaa");
}

}  // namespace
}  // namespace embedded
