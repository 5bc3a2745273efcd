#include <gtest/gtest.h>

#include <stdexcept>

#include "embedded/HostSession.h"
#include "embedded/charts/XChartData.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/data/DataSetBuilder.h"
#include "host/Charts.h"

namespace embedded {
namespace {

/// A document of one bar, with its model in reach.
class OneBar : public XDocument {
 public:
    explicit OneBar(const ChartString& title) : fGraph(getGraph()) {
        SetDescription(title);
        const XVariable x = fGraph.addCategoricalVariable(ChartString("Name", ""));
        const XVariable y = fGraph.addNumericVariable(ChartString("Number", ""));
        const XElement bar = fGraph.addElement(kElementBar);
        const XRow row = fGraph.addRow();
        row.AddCode(1);
        row.AddValue(0.25);
        x.addRelabel(1, ChartString("Age", ""));
        fGraph.getXAxis().setTitle(ChartString("Name", ""));
        fGraph.getYAxis().setTitle(ChartString("Number", ""));
        bar.AddX(x);
        bar.AddY(y);
    }

    const ChartModel& Model() const { return ChartData().fModel; }
    std::int32_t Sent() const { return SendCount(); }
    XGraph fGraph;
};

class XDocumentInSession : public testing::Test {
 protected:
    const ReportChart& Chart(std::size_t item) const {
        return std::get<ReportChart>(fReport.fvItems.at(item));
    }

    DataSet fData = DataSetBuilder().Numbers("x", {1, 2}).Build();
    std::vector<CommandTokens> fCommands = ParseCommandText("SELECTPRED x;", "test").fvCommands;
    CommandReport fReport;
    HostSession fSession{fData, fCommands.front(), fReport};
};

const ChartString kTitle("My Chart Title", "The Chart Key");

TEST_F(XDocumentInSession, ChartGoesIntoTheReportWithAllItsForms) {
    OneBar(kTitle).SendChart(true, false, false);
    ASSERT_EQ(fReport.fvItems.size(), 1u);
    const ReportChart& chart = Chart(0);
    EXPECT_EQ(chart.fId, "TheChartKey");
    EXPECT_EQ(chart.fTitle, "My Chart Title");
    EXPECT_TRUE(chart.fSvg.starts_with("<svg "));
    EXPECT_NE(chart.fSvg.find("<desc id=\"chart1-desc\">Bar chart"), std::string::npos);
    EXPECT_TRUE(chart.fVegaLite.starts_with("{\"$schema\""));
    EXPECT_EQ(chart.fvDataColumns, (std::vector<std::string>{"Name", "Number", ""}));
    ASSERT_EQ(chart.fvDataRows.size(), 1u);
    EXPECT_EQ(chart.fvDataRows[0][0].fText, "Age");
    EXPECT_EQ(chart.fvDataRows[0][1].fText, ".250");
    EXPECT_TRUE(chart.fvDataRows[0][1].fbNumber);
}

TEST_F(XDocumentInSession, ChartsOfOneCommandHaveDifferentIds) {
    OneBar first(kTitle);
    EXPECT_EQ(first.Sent(), 0);
    first.SendChart(true, false, false);
    OneBar second(kTitle);
    EXPECT_EQ(second.Sent(), 1);
    second.SendChart(true, false, false);
    EXPECT_NE(Chart(0).fSvg.find("\"chart1-title\""), std::string::npos);
    EXPECT_NE(Chart(1).fSvg.find("\"chart2-title\""), std::string::npos);
}

TEST_F(XDocumentInSession, ChartThatIsNotShownStaysOutOfTheReport) {
    OneBar(kTitle).SendChart(false, false, false);
    EXPECT_TRUE(fReport.fvItems.empty());
}

TEST_F(XDocumentInSession, NameAndPlainTitleSettleTheId) {
    OneBar named(kTitle);
    named.SetName("OwnName");
    named.SendChart(true, false, false);
    EXPECT_EQ(Chart(0).fId, "OwnName");
    OneBar plain(kTitle);
    plain.SetDescription("Some Plain Title");
    plain.SendChart(true, false, false);
    EXPECT_EQ(Chart(1).fId, "SomePlainTitle");
}

TEST_F(XDocumentInSession, CommentComesFirstInTheDescription) {
    OneBar document(kTitle);
    document.SetComment("Look here.");
    document.SendChart(true, false, false);
    EXPECT_NE(Chart(0).fSvg.find(">Look here. Bar chart"), std::string::npos);
}

TEST_F(XDocumentInSession, IncompleteChartThrowsAndLeavesNothingBehind) {
    XDocument empty;
    EXPECT_THROW(empty.SendChart(true, false, false), std::logic_error);
    OneBar document(kTitle);
    document.fGraph.addRow();
    EXPECT_THROW(document.SendChart(true, false, false), std::logic_error);
    EXPECT_TRUE(fReport.fvItems.empty());
}

TEST(XDocument, OffersNeitherTemplatesNorOtherGraphs) {
    XDocument document;
    EXPECT_FALSE(document.SetChartTemplate("t"));
    EXPECT_FALSE(document.AddCSVFile("f"));
    EXPECT_FALSE(document.AddImmediateTemplate("t"));
    EXPECT_FALSE(document.getExternalGraph());
}

TEST(XGraph, ValuesOfARowFollowTheOrderOfVariables) {
    const OneBar document(kTitle);
    ASSERT_EQ(document.Model().fvRows.size(), 1u);
    EXPECT_EQ(std::get<std::int32_t>(document.Model().fvRows[0][0]), 1);
    EXPECT_EQ(std::get<double>(document.Model().fvRows[0][1]), 0.25);
}

TEST(XGraph, MarginsArePercentages) {
    const OneBar document(kTitle);
    const XAxis axis = document.fGraph.getXAxis();
    axis.setLowerMargin("10%");
    axis.setUpperMargin("2.5%");
    EXPECT_DOUBLE_EQ(document.Model().fXAxis.fLowerMargin, 0.1);
    EXPECT_DOUBLE_EQ(document.Model().fXAxis.fUpperMargin, 0.025);
    for (const char* bad : {"", "10", "%", "-1%", "101%", "10%%", "nan%"}) {
        EXPECT_THROW(axis.setLowerMargin(bad), std::invalid_argument) << bad;
    }
}

TEST(XGraph, WhatTheHostDoesNotDrawIsRefused) {
    const OneBar document(kTitle);
    const XAxis axis = document.fGraph.getYAxis();
    EXPECT_THROW(axis.setInterval(0.0, 1.0, false), std::invalid_argument);
    EXPECT_THROW(axis.setInterval(1.0, 1.0, true), std::invalid_argument);
    EXPECT_THROW(axis.setScale(1, false, 10.0), std::invalid_argument);
    EXPECT_THROW(document.fGraph.AddYReferenceLine(0.5, "dotted"), std::invalid_argument);
    EXPECT_THROW(document.fGraph.addElement(1), std::invalid_argument);
    EXPECT_THROW(document.fGraph.addElement(kElementBar).SetWidth(1, 75.0, 0.0, 0.0),
                 std::invalid_argument);
}

TEST(FacSTDictionary, UnknownKeyIsItsOwnText) {
    FacSTDictionary texts(3);
    texts.SetProcedure("SelectPredictors");
    OlangString text;
    texts.Lookup("Predictor Summary Chart", text);
    EXPECT_EQ(XUtility::ChartStringFromOLANG(text).Key(), "Predictor Summary Chart");
    texts.Lookup("no such key", text);
    EXPECT_EQ(text.fText, "no such key");
}

TEST(ChartString, NumbersAreAppendedInTheirShortestForm) {
    ChartString text = XUtility::ChartStringFromLocalCodePage("at");
    text.append(" ");
    text.appendDouble(0.05);
    text.append(" ");
    text.appendInteger(-3);
    EXPECT_EQ(text.Text(), "at 0.05 -3");
    EXPECT_EQ(text.Key(), "");
}

}  // namespace
}  // namespace embedded
