// How a table takes shape while a procedure fills it.
#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "embedded/output/tests/OutputSession.h"
#include "host/Records.h"

namespace embedded {
namespace {

using Place = std::vector<std::size_t>;

BpNumber Count(double value) { return {value, BpProcedure::Count()}; }
BpString Key(const char* key) { return {key, true}; }

class BpPivotTableFill : public OutputSession {
 protected:
    std::vector<std::string> TopTexts(std::size_t dimension) {
        std::vector<std::string> texts;
        for (const ReportHeading& heading : Sent().fvDimensions.at(dimension).fvHeadings)
            texts.push_back(heading.fText);
        return texts;
    }

    std::vector<Place> Places() {
        std::vector<Place> places;
        for (const ReportCell& cell : Sent().fvCells) places.push_back(cell.fvAt);
        return places;
    }

    std::vector<std::string> Texts() {
        std::vector<std::string> texts;
        for (const ReportCell& cell : Sent().fvCells) texts.push_back(cell.fText);
        return texts;
    }

    BpProcedure fProcedure{"SelectPredictors", 5};
    BpPivotTable fTable{fProcedure, BpHeading(Key("Case Processing Summary"), "Summary")};
};

TEST_F(BpPivotTableFill, ATableNotSentIsNotShown) { EXPECT_TRUE(fReport.fvItems.empty()); }

TEST_F(BpPivotTableFill, TitleIdentifierCaptionAndWidthArrive) {
    fTable.SetCaption(Key("Screening performed in displayed order ..."));
    fTable.SetMinDataColumnWidth(150);
    fTable.Send();
    EXPECT_EQ(Sent().fTitle, "Case Processing Summary");
    EXPECT_EQ(Sent().fId, "Summary");
    EXPECT_EQ(Sent().fCaption, "The screening rules were applied in the order shown.");
    EXPECT_EQ(Sent().fMinDataColumnWidth, 150);
}

TEST_F(BpPivotTableFill, LogarithmsOfNumbersArriveUnlessTheNumberIsMissing) {
    const BpDimension rows(fTable, Key("Predictor"));
    rows.Category(Key("N")).Cell(BpNumber(0.0, BpProcedure::Significance(), -2000.5));
    rows.Category(Key("Valid")).Cell(BpNumber(0.5, BpProcedure::Significance()));
    rows.Category(Key("Total"))
        .Cell(BpNumber(MCMV::gMissingValue, BpProcedure::Significance(), -1.0));
    fTable.Send();
    ASSERT_EQ(Sent().fvCells.size(), 3U);
    EXPECT_EQ(Sent().fvCells[0].fLogarithm, -2000.5);
    EXPECT_EQ(Sent().fvCells[0].fText, "<.001");
    EXPECT_EQ(Sent().fvCells[1].fLogarithm, std::nullopt);
    EXPECT_EQ(Sent().fvCells[2].fLogarithm, std::nullopt);
}

TEST_F(BpPivotTableFill, PositionsOfDimensionsArrive) {
    const BpDimension rows(fTable, Key("Predictor"));
    rows.Position(0, 1, 0, 0);
    const BpDimension columns(fTable, Key("Stat Type"));
    columns.Position(1, 2, 1, 0);
    fTable.Send();
    const ReportDimension& row = Sent().fvDimensions.at(0);
    EXPECT_EQ(row.fName, "Predictor");
    EXPECT_EQ(row.fAxis, ReportAxis::Row);
    EXPECT_EQ(row.fOrder, 1);
    EXPECT_TRUE(row.fbTitleShown);
    const ReportDimension& column = Sent().fvDimensions.at(1);
    EXPECT_EQ(column.fName, "Stat Type");
    EXPECT_EQ(column.fTitle, "Criterion");
    EXPECT_EQ(column.fAxis, ReportAxis::Column);
    EXPECT_EQ(column.fOrder, 2);
    EXPECT_FALSE(column.fbTitleShown);
}

TEST_F(BpPivotTableFill, ACellLiesAtTheCategoriesMadeLast) {
    const BpDimension rows(fTable, Key("Value"));
    const BpDimension columns(fTable, Key("Statistics"));
    columns.Position(1, 1, 1, 0);
    const BpCategory n = columns.Category(Key("N"));
    rows.Category(Key("Valid"));
    n.Cell(Count(10));
    columns.Category(Key("Unweighted N")).Cell(Count(11));
    rows.Category(Key("Excluded"));
    n.Cell(Count(20));
    columns.Category(Key("Unweighted N")).Cell(Count(21));
    fTable.Send();
    EXPECT_EQ(TopTexts(1), (std::vector<std::string>{"N", "Unweighted N"}));
    EXPECT_EQ(Places(), (std::vector<Place>{{0, 0}, {0, 1}, {1, 0}, {1, 1}}));
    EXPECT_EQ(Texts(), (std::vector<std::string>{"10", "11", "20", "21"}));
}

TEST_F(BpPivotTableFill, AskingForAHeadingAgainSelectsIt) {
    const BpDimension rows(fTable, Key("Value"));
    const BpDimension columns(fTable, Key("Statistics"));
    columns.Position(1, 1, 1, 0);
    rows.Category(Key("Valid"));
    rows.Category(Key("Excluded"));
    rows.Category(Key("Valid"));
    columns.Category(Key("N")).Cell(Count(1));
    fTable.Send();
    EXPECT_EQ(TopTexts(0), (std::vector<std::string>{"Valid", "Excluded"}));
    EXPECT_EQ(Places(), (std::vector<Place>{{0, 0}}));
}

TEST_F(BpPivotTableFill, HeadingsKeepTheOrderInWhichTheyWereMade) {
    const BpDimension rows(fTable, Key("Value"));
    rows.Category(Key("Total"));
    rows.Group(Key("Scale"), 1, 2).Category(Key("Valid"));
    rows.Category(Key("N"));
    rows.Group(Key("Scale"), 1, 2).Category(Key("Excluded"));
    fTable.Send();
    EXPECT_EQ(TopTexts(0), (std::vector<std::string>{"Total", "Scale", "N"}));
    const auto& group = Sent().fvDimensions[0].fvHeadings[1].fvChildren;
    ASSERT_EQ(group.size(), 2U);
    EXPECT_EQ(group[1].fText, "Excluded");
}

TEST_F(BpPivotTableFill, TheSameHeadingInTwoGroupsIsTwo) {
    const BpDimension rows(fTable, Key("Reason"));
    const BpDimension columns(fTable, Key("Predictors"));
    columns.Position(1, 1, 1, 0);
    columns.Category(Key("Predictors"));
    rows.Group(Key("Categorical"), 1, 2).Category(Key("All Cases Missing")).Cell(Count(1));
    rows.Group(Key("Scale"), 1, 2).Category(Key("All Cases Missing")).Cell(Count(2));
    fTable.Send();
    EXPECT_EQ(Places(), (std::vector<Place>{{0, 0}, {1, 0}}));
}

TEST_F(BpPivotTableFill, AGroupAndACategoryOfOneHeadingAreTwo) {
    const BpDimension rows(fTable, Key("Reason"));
    rows.Group(Key("Scale"), 1, 2).Category(Key("N"));
    rows.Category(Key("Scale"));
    fTable.Send();
    EXPECT_EQ(TopTexts(0), (std::vector<std::string>{"Scale", "Scale"}));
}

TEST_F(BpPivotTableFill, VariablesOfOneLabelAreTwoRows) {
    fData.MutableVariable(kIncome).SetLabel("Age in years");
    const BpDimension rows(fTable, Key("Predictor"));
    rows.Category(BpVariable(kAge, 2));
    rows.Category(BpVariable(kIncome, 2));
    fTable.Send();
    EXPECT_EQ(TopTexts(0), (std::vector<std::string>{"Age in years", "Age in years"}));
    EXPECT_EQ(Sent().fvDimensions[0].fvHeadings[1].fKey, ReportKey("income"));
}

TEST_F(BpPivotTableFill, CellsComeRowByRowWhateverTheOrderOfFilling) {
    const BpDimension columns(fTable, Key("Statistics"));
    columns.Position(1, 1, 1, 0);
    const BpDimension rows(fTable, Key("Value"));
    rows.Position(0, 1, 1, 0);
    const BpCategory valid = rows.Category(Key("Valid"));
    const BpCategory excluded = rows.Category(Key("Excluded"));
    for (const char* column : {"N", "Percent"}) {
        columns.Category(Key(column));
        excluded.Cell(Count(2));
        valid.Cell(Count(1));
    }
    fTable.Send();
    EXPECT_EQ(Places(), (std::vector<Place>{{0, 0}, {1, 0}, {0, 1}, {1, 1}}));
    EXPECT_EQ(Texts(), (std::vector<std::string>{"1", "1", "2", "2"}));
}

TEST_F(BpPivotTableFill, AGroupWithoutCategoriesCarriesCellsItself) {
    const BpDimension rows(fTable, Key("Predictor"));
    const BpDimension columns(fTable, Key("Statistics"));
    columns.Position(1, 1, 1, 0);
    const BpDimension types(fTable, Key("Stat Type"));
    types.Position(1, 2, 1, 0);
    rows.Category(BpVariable(kAge, 2));
    types.Group(Key("Pearson Chi-Square"), 1, 2);
    columns.Category(Key("Rank")).Cell(Count(1));
    types.Group(Key("Lambda"), 1, 2);
    columns.Category(Key("Rank")).Cell(Count(2));
    fTable.Send();
    EXPECT_EQ(Places(), (std::vector<Place>{{0, 0, 0}, {0, 0, 1}}));
}

TEST_F(BpPivotTableFill, ADimensionWithoutHeadingsHasOnePlace) {
    const BpDimension rows(fTable, Key("Predictor"));
    const BpDimension columns(fTable, Key("Statistics"));
    columns.Position(1, 1, 1, 0);
    rows.Category(Key("Valid")).Cell(Count(1));
    fTable.Send();
    EXPECT_EQ(Places(), (std::vector<Place>{{0, 0}}));
}

TEST_F(BpPivotTableFill, ASecondContentReplacesTheFirst) {
    const BpDimension rows(fTable, Key("Predictor"));
    const BpCategory valid = rows.Category(Key("Valid"));
    valid.Cell(Count(1));
    valid.Cell(Count(2));
    fTable.Send();
    EXPECT_EQ(Texts(), std::vector<std::string>{"2"});
}

TEST_F(BpPivotTableFill, NotesLieOnTheirCellAndGroup) {
    const BpDimension rows(fTable, Key("Predictor"));
    const BpDimension columns(fTable, Key("Statistics"));
    columns.Position(1, 1, 1, 0);
    const BpCategory f = columns.Category(Key("F"));
    const BpGroup group = rows.Group(Key("Unselected"), 1, 2);
    group.Note(BpString("about the group", false));
    group.Category(BpVariable(kAge, 2));
    f.CellNote(Key("No within-factor variation..."));
    f.Cell(BpNumber(MCMV::gMissingValue, BpProcedure::GeneralStat()));
    fTable.Send();
    EXPECT_EQ(Sent().fvDimensions[0].fvHeadings[0].fvNotes,
              std::vector<std::string>{"about the group"});
    ASSERT_EQ(Sent().fvCells.size(), 1U);
    EXPECT_EQ(Sent().fvCells[0].fvNotes.size(), 1U);
    EXPECT_EQ(Sent().fvCells[0].fValue, ReportValue());
    EXPECT_EQ(Sent().fvCells[0].fText, "");
    EXPECT_EQ(Sent().fvCells[0].fFormat, ReportFormat::GeneralStat);
}

TEST_F(BpPivotTableFill, AGroupMayHideItsHeading) {
    const BpDimension rows(fTable, Key("Observed"));
    rows.Group(Key("Values"), 0, 0).Category(BpDataValue(kRegion, 1.0, 2));
    fTable.Send();
    EXPECT_FALSE(Sent().fvDimensions[0].fvHeadings[0].fbShown);
    EXPECT_EQ(Sent().fvDimensions[0].fvHeadings[0].fvChildren[0].fText, "North");
}

TEST_F(BpPivotTableFill, ListCellsHoldTheNames) {
    const BpDimension columns(fTable, Key("Predictors"));
    BpComposite list("[%1:\\n ^1:]1", true);
    list.AddSublist({BpVariable(kAge, 2), BpVariable(kIncome, 2)});
    list.Finish();
    columns.Category(Key("Predictors")).Cell(list);
    fTable.Send();
    const ReportCell& cell = Sent().fvCells.at(0);
    EXPECT_EQ(cell.fFormat, ReportFormat::List);
    EXPECT_EQ(cell.fText, "Age in years\nincome");
    EXPECT_EQ(cell.fValue, ReportValue(std::vector<ReportKey>{"age", "income"}));
}

TEST_F(BpPivotTableFill, ACellOfOneVariableHoldsItsName) {
    const BpDimension columns(fTable, Key("Predictor Added"));
    columns.Category(Key("Predictor Added")).Cell(BpVariable(kAge, 2));
    fTable.Send();
    EXPECT_EQ(Sent().fvCells.at(0).fValue, ReportValue("age"));
    EXPECT_EQ(Sent().fvCells.at(0).fText, "Age in years");
    EXPECT_EQ(Sent().fvCells.at(0).fFormat, ReportFormat::Text);
}

TEST_F(BpPivotTableFill, UnderFractionalWeightsAColumnOfCountsHasDecimalsWhenOneNeedsThem) {
    fReport.fbFractionalWeights = true;
    const BpDimension rows(fTable, Key("Predictor"));
    const BpDimension columns(fTable, Key("Statistics"));
    columns.Position(1, 1, 1, 0);
    rows.Category(Key("Valid"));
    columns.Category(Key("N")).Cell(Count(10));
    columns.Category(Key("Rank")).Cell(Count(1));
    rows.Category(Key("Excluded"));
    columns.Category(Key("N")).Cell(Count(2.5));
    columns.Category(Key("Rank")).Cell(Count(2));
    fTable.Send();
    EXPECT_EQ(Texts(), (std::vector<std::string>{"10.00", "1", "2.50", "2"}));
}

TEST_F(BpPivotTableFill, TablesKeepTheOrderInWhichTheyWereSent) {
    BpPivotTable other(fProcedure, BpHeading(Key("Predictor Summary"), "Other"));
    other.Send();
    fTable.Send();
    ASSERT_EQ(fReport.fvItems.size(), 2U);
    EXPECT_EQ(std::get<ReportTable>(fReport.fvItems[0]).fId, "Other");
    EXPECT_EQ(std::get<ReportTable>(fReport.fvItems[1]).fId, "Summary");
}

TEST_F(BpPivotTableFill, ACellWithoutACategoryInAnotherDimensionIsAMistake) {
    const BpDimension rows(fTable, Key("Predictor"));
    const BpDimension columns(fTable, Key("Statistics"));
    columns.Category(Key("N")).Cell(Count(1));
    rows.Category(Key("Valid"));
    EXPECT_THROW(fTable.Send(), std::logic_error);
}

TEST_F(BpPivotTableFill, ADimensionAfterTheFirstCellIsAMistake) {
    const BpDimension rows(fTable, Key("Predictor"));
    rows.Category(Key("Valid")).Cell(Count(1));
    EXPECT_THROW(BpDimension(fTable, Key("Statistics")), std::logic_error);
}

TEST_F(BpPivotTableFill, ANoteOnADimensionIsAMistake) {
    const BpDimension rows(fTable, Key("Predictor"));
    EXPECT_THROW(rows.Note(Key("Cases Used")), std::logic_error);
}

}  // namespace
}  // namespace embedded
