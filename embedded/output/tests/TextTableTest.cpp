#include "embedded/output/TextTable.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "embedded/output/DisplayWidth.h"
#include "embedded/output/tests/SampleTables.h"

namespace embedded {
namespace {

std::string Plain(const ReportTable& table, std::size_t width = 80) {
    TextStyle style;
    style.fWidth = width;
    return TextTable(table, style);
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

ReportTable ExcludedTable() {
    ReportTable table;
    table.fTitle = "Excluded Predictors";
    table.fCaption = "The screening rules were applied in the order shown.";
    table.fMinDataColumnWidth = 150;
    table.fvDimensions = {
        Dimension("Reason", ReportAxis::Row,
                  {Branch("Categorical", {Leaf("All Cases Missing"), Leaf("All Cases Constant")}),
                   Branch("Scale", {Leaf("Standard Deviation < 0.001")})}),
        Dimension("Predictors", ReportAxis::Column, {Leaf("Predictors")})};
    table.fvCells = {TextCell({0, 0}, "Age in years\nVisits to the cinema with friends"),
                     TextCell({2, 0}, "日本語")};
    return table;
}

ReportTable ClassificationTable() {
    ReportTable table;
    table.fTitle = "Classification";
    table.fvDimensions = {
        Dimension("Observed", ReportAxis::Row, {Leaf("North"), Leaf("Overall Percent")}, 1, true),
        Dimension("Predicted", ReportAxis::Column, {Leaf("North"), Leaf("South")}, 1, true),
        Dimension("Sample", ReportAxis::Row, {Leaf("Training"), Leaf("Test")}, 2, true)};
    for (std::size_t sample = 0; sample < 2; ++sample)
        for (std::size_t column = 0; column < 2; ++column) {
            table.fvCells.push_back(NumberCell({0, column, sample}, 1234, "1234"));
            table.fvCells.push_back(
                NumberCell({1, column, sample}, 45.5, "45.5%", ReportFormat::Percent));
        }
    return table;
}

TEST(TextTable, GroupsIndentTheirRowsAndSpanTheirColumns) {
    EXPECT_EQ(Plain(PredictorTable()),
              "Predictor Summary\n"
              "────────────────────────────────────────────────────\n"
              "                                          Pearson\n"
              "                                        Chi-Square\n"
              "                                       ─────────────\n"
              "Predictor       Rank  Unadjusted Sig.     Value   df\n"
              "────────────────────────────────────────────────────\n"
              "Selected\n"
              "  Age in years     1            <.001  1234.500ᵃ   2\n"
              "  Income           2             .013    12.250    2\n"
              "Unselectedᵇ\n"
              "  Shoe size        3             .456     0.500    2\n"
              "────────────────────────────────────────────────────\n"
              "a. A note on the value.\n"
              "b. Limited to the first 1 unselected predictors.\n");
}

TEST(TextTable, ATooWideTableIsSplitIntoPanelsThatRepeatTheRowHeadings) {
    EXPECT_EQ(Plain(PredictorTable(), 40),
              "Predictor Summary\n"
              "─────────────────────────────────────\n"
              "Predictor       Rank  Unadjusted Sig.\n"
              "─────────────────────────────────────\n"
              "Selected\n"
              "  Age in years     1            <.001\n"
              "  Income           2             .013\n"
              "Unselectedᵇ\n"
              "  Shoe size        3             .456\n"
              "─────────────────────────────────────\n"
              "\n"
              "─────────────────────────────\n"
              "                   Pearson\n"
              "                 Chi-Square\n"
              "                ─────────────\n"
              "Predictor          Value   df\n"
              "─────────────────────────────\n"
              "Selected\n"
              "  Age in years  1234.500ᵃ   2\n"
              "  Income          12.250    2\n"
              "Unselectedᵇ\n"
              "  Shoe size        0.500    2\n"
              "─────────────────────────────\n"
              "a. A note on the value.\n"
              "b. Limited to the first 1 unselected\n"
              "   predictors.\n");
}

TEST(TextTable, PanelsEndBetweenGroups) {
    // There is room for the first of the group's two columns.
    const std::vector<std::string> lines = LinesOf(Plain(PredictorTable(), 48));
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "Predictor       Rank  Unadjusted Sig."), 1);
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "Predictor          Value   df"), 1);
}

TEST(TextTable, AsciiStyleHasNoOtherRulesAndMarks) {
    TextStyle style;
    style.fbAscii = true;
    const std::string text = TextTable(PredictorTable(), style);
    for (const char c : text) EXPECT_LT(static_cast<unsigned char>(c), 0x80U);
    EXPECT_NE(text.find("1234.500(a)"), std::string::npos);
    EXPECT_NE(text.find("Unselected(b)"), std::string::npos);
    EXPECT_NE(text.find("-----"), std::string::npos);
}

TEST(TextTable, ListsStandOneBelowTheOtherAtTheLeft) {
    EXPECT_EQ(Plain(ExcludedTable()),
              "Excluded Predictors\n"
              "───────────────────────────────────────────────────────────────\n"
              "                              Predictors\n"
              "───────────────────────────────────────────────────────────────\n"
              "Categorical\n"
              "  All Cases Missing           Age in years\n"
              "                              Visits to the cinema with friends\n"
              "  All Cases Constant\n"
              "Scale\n"
              "  Standard Deviation < 0.001  日本語\n"
              "───────────────────────────────────────────────────────────────\n"
              "The screening rules were applied in the order shown.\n");
}

TEST(TextTable, LongHeadingsAndTextsAreWrappedInNarrowTerminals) {
    EXPECT_EQ(Plain(ExcludedTable(), 36),
              "Excluded Predictors\n"
              "────────────────────────────────────\n"
              "                Predictors\n"
              "────────────────────────────────────\n"
              "Categorical\n"
              "  All Cases     Age in years\n"
              "    Missing     Visits to the cinema\n"
              "                  with friends\n"
              "  All Cases\n"
              "    Constant\n"
              "Scale\n"
              "  Standard      日本語\n"
              "    Deviation\n"
              "    < 0.001\n"
              "────────────────────────────────────\n"
              "The screening rules were applied in\n"
              "the order shown.\n");
}

TEST(TextTable, NumbersOfSeveralKindsAreAlignedAtTheirDecimalMarks) {
    EXPECT_EQ(Plain(ClassificationTable()),
              "Classification\n"
              "───────────────────────────────────\n"
              "                      Predicted\n"
              "                   ────────────────\n"
              "Sample / Observed    North    South\n"
              "───────────────────────────────────\n"
              "Training\n"
              "  North            1234     1234\n"
              "  Overall Percent    45.5%    45.5%\n"
              "Test\n"
              "  North            1234     1234\n"
              "  Overall Percent    45.5%    45.5%\n"
              "───────────────────────────────────\n");
}

TEST(TextTable, NumbersWithExponentsAreAlignedAtTheRight) {
    ReportTable table;
    table.fTitle = "T";
    table.fvDimensions = {Dimension("R", ReportAxis::Row, {Leaf("a"), Leaf("b"), Leaf("c")}),
                          Dimension("C", ReportAxis::Column, {Leaf("F")})};
    table.fvCells = {NumberCell({0, 0}, 1.5e12, "1.500e+12", ReportFormat::GeneralStat),
                     NumberCell({1, 0}, 12.25, "12.250", ReportFormat::GeneralStat),
                     NumberCell({2, 0}, 0, "", ReportFormat::GeneralStat)};
    EXPECT_EQ(Plain(table),
              "T\n"
              "────────────\n"
              "           F\n"
              "────────────\n"
              "a  1.500e+12\n"
              "b     12.250\n"
              "c\n"
              "────────────\n");
}

TEST(TextTable, AnEmptyGroupStandsAlone) {
    ReportTable table = PredictorTable();
    table.fvDimensions[0].fvHeadings = {Branch("Selected", {}),
                                        Branch("Unselected", {Leaf("Shoe size")})};
    table.fvCells = {NumberCell({1, 0}, 1, "1")};
    const std::vector<std::string> lines = LinesOf(Plain(table));
    EXPECT_EQ(lines.at(7), "Selected");
    EXPECT_EQ(lines.at(8), "Unselected");
    EXPECT_EQ(lines.at(9), "  Shoe size     1");
}

TEST(TextTable, AnEmptyTableSaysSo) {
    ReportTable table;
    table.fTitle = "Nothing";
    EXPECT_EQ(Plain(table), "Nothing\nThe table is empty.\n");
}

TEST(TextTable, WithoutAWidthNothingIsSplit) {
    ReportTable table;
    table.fTitle = "T";
    std::vector<ReportHeading> columns;
    for (std::size_t i = 0; i < 100; ++i) {
        columns.push_back(Leaf("column" + std::to_string(i)));
        table.fvCells.push_back(NumberCell({0, i}, 1, "1"));
    }
    table.fvDimensions = {Dimension("R", ReportAxis::Row, {Leaf("row")}),
                          Dimension("C", ReportAxis::Column, columns)};
    EXPECT_EQ(LinesOf(Plain(table, 0)).size(), 6U);
    EXPECT_GT(LinesOf(Plain(table, 80)).size(), 50U);
}

TEST(TextTable, OnlyTheTitleHasColour) {
    TextStyle style;
    style.fbColor = true;
    const std::string text = TextTable(PredictorTable(), style);
    EXPECT_TRUE(text.starts_with("\x1b[1mPredictor Summary\x1b[0m\n"));
    EXPECT_EQ(text.substr(text.find('\n')), Plain(PredictorTable()).substr(17));
}

// Below 30 columns a heading of 16 no longer fits beside the row headings.
RC_GTEST_PROP(TextTable, NoLineIsWiderThanTheTerminal, ()) {
    const auto width = *rc::gen::inRange<std::size_t>(30, 120);
    for (const ReportTable& table : {PredictorTable(), ExcludedTable(), ClassificationTable()})
        for (const std::string& line : LinesOf(Plain(table, width)))
            RC_ASSERT(DisplayWidth(line) <= width);
}

}  // namespace
}  // namespace embedded
