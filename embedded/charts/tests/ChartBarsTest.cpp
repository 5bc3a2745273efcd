#include "embedded/charts/ChartBars.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "embedded/charts/tests/ChartFixture.h"
#include "host/Records.h"

namespace embedded {
namespace {

std::vector<std::string> TextsOf(const ChartBars& bars) {
    std::vector<std::string> texts;
    for (const ChartBar& bar : bars.fvBars) texts.push_back(bar.fText);
    return texts;
}

TEST(ChartBars, HighestCodeStandsAtTheTop) {
    ChartModel model = BuildChart(EvenRequest(3, 1));
    std::swap(model.fvRows[0], model.fvRows[2]);
    const ChartBars bars = ArrangeBars(model);
    ASSERT_EQ(bars.fvBars.size(), 3u);
    EXPECT_EQ(bars.fvBars[0].fLabel, "x1");
    EXPECT_EQ(bars.fvBars[1].fLabel, "x2");
    EXPECT_EQ(bars.fvBars[2].fLabel, "x3");
}

TEST(ChartBars, BarsOfOneColourAreCounted) {
    const ChartBars bars = ArrangeBars(BuildChart(EvenRequest(5, 2)));
    ASSERT_EQ(bars.fvGroups.size(), 2u);
    EXPECT_EQ(bars.fvGroups[0].fLabel, "Selected");
    EXPECT_EQ(bars.fvGroups[0].fCount, 2u);
    EXPECT_EQ(bars.fvGroups[1].fLabel, "Unselected");
    EXPECT_EQ(bars.fvGroups[1].fCount, 3u);
    EXPECT_NE(bars.fvGroups[0].fColour, bars.fvGroups[1].fColour);
}

TEST(ChartBars, UnselectedKeepTheirColourWhenNoneIsSelected) {
    const ChartBars both = ArrangeBars(BuildChart(EvenRequest(3, 1)));
    const ChartBars none = ArrangeBars(BuildChart(EvenRequest(3, 0)));
    ASSERT_EQ(none.fvGroups.size(), 1u);
    EXPECT_EQ(none.fvGroups[0].fLabel, "Unselected");
    EXPECT_EQ(none.fvGroups[0].fColour, both.fvGroups[1].fColour);
}

TEST(ChartBars, GivenColoursReplaceTheHosts) {
    ChartModel model = BuildChart(EvenRequest(2, 1));
    model.fvColours = {0x01AbCd, 0xFF0000};
    const ChartBars bars = ArrangeBars(model);
    EXPECT_EQ(bars.fvGroups[0].fColour, "#01abcd");
    EXPECT_EQ(bars.fvGroups[1].fColour, "#ff0000");
}

TEST(ChartBars, SignificancesStartAtOneSoThatLowOnesAreLong) {
    EXPECT_EQ(ArrangeBars(BuildChart(EvenRequest(3, 1))).fFoot, 1.0);
}

TEST(ChartBars, MeasuresOfAssociationStartAtZeroSoThatHighOnesAreLong) {
    ChartRequest request = EvenRequest(3, 1);
    for (const char* key : {"Cramer's V", "Predictor"}) {
        request.fValueKey = key;
        EXPECT_EQ(ArrangeBars(BuildChart(request)).fFoot, 0.0) << key;
    }
}

TEST(ChartBars, BarsOfAPlainAxisStartAtItsLowEnd) {
    ChartModel model = BuildChart(EvenRequest(3, 1));
    model.fYAxis.fbInverted = false;
    model.fYAxis.fLow = -2;
    EXPECT_EQ(ArrangeBars(model).fFoot, -2.0);
}

TEST(ChartBars, SignificanceOfZeroShowsAsBelowTheLastDigit) {
    ChartRequest request = EvenRequest(2, 1);
    request.fvValues = {0.0, 1e-300};
    EXPECT_EQ(TextsOf(ArrangeBars(BuildChart(request))),
              (std::vector<std::string>{"<.001", "<.001"}));
}

TEST(ChartBars, AssociationOfZeroShowsAsZero) {
    ChartRequest request = EvenRequest(2, 1);
    request.fValueKey = "Cramer's V";
    request.fvValues = {0.0004, 0.0};
    EXPECT_EQ(TextsOf(ArrangeBars(BuildChart(request))),
              (std::vector<std::string>{"<.001", ".000"}));
}

TEST(ChartBars, MissingAndInfiniteValuesHaveNoBar) {
    ChartRequest request = EvenRequest(3, 1);
    request.fvValues = {0.01, MCMV::gMissingValue, std::numeric_limits<double>::infinity()};
    const ChartBars bars = ArrangeBars(BuildChart(request));
    EXPECT_TRUE(bars.fvBars[0].fValue);
    for (const std::size_t i : {1u, 2u}) {
        EXPECT_FALSE(bars.fvBars[i].fValue);
        EXPECT_EQ(bars.fvBars[i].fText, "");
    }
}

TEST(ChartBars, LabelsAreOneLineOfValidText) {
    ChartRequest request = EvenRequest(2, 1);
    request.fvLabels = {"two\nlines", "bad\xFF"};
    const ChartBars bars = ArrangeBars(BuildChart(request));
    EXPECT_EQ(bars.fvBars[0].fLabel, "two lines");
    EXPECT_EQ(bars.fvBars[1].fLabel, "bad\xEF\xBF\xBD");
}

TEST(ChartBars, CodeWithoutALabelShowsItself) {
    ChartModel model = BuildChart(EvenRequest(1, 1));
    model.fvVariables[0].fLabels.clear();
    EXPECT_EQ(ArrangeBars(model).fvBars[0].fLabel, "1");
}

TEST(ChartBars, ReferenceLinesCountOnceFinished) {
    ChartModel model = BuildChart(EvenRequest(2, 1));
    EXPECT_EQ(ArrangeBars(model).fvReferenceLines, std::vector<double>{0.05});
    model.fbReferenceLinesFinished = false;
    EXPECT_TRUE(ArrangeBars(model).fvReferenceLines.empty());
}

TEST(ChartBars, EmptyFootnotesAreLeftOut) {
    ChartRequest request = EvenRequest(2, 1);
    EXPECT_TRUE(ArrangeBars(BuildChart(request)).fvFootnotes.empty());
    request.fvFootnotes = {"", "second"};
    EXPECT_EQ(ArrangeBars(BuildChart(request)).fvFootnotes, std::vector<std::string>{"second"});
}

TEST(ChartBars, NoRowsGiveNoBars) {
    const ChartBars bars = ArrangeBars(BuildChart(EvenRequest(0, 0)));
    EXPECT_TRUE(bars.fvBars.empty());
    EXPECT_TRUE(bars.fvGroups.empty());
}

TEST(ChartBars, IncompleteChartsAreRefused) {
    const ChartModel whole = BuildChart(EvenRequest(2, 1));
    ChartModel model = whole;
    model.fbElement = false;
    EXPECT_THROW(ArrangeBars(model), std::logic_error);
    model = whole;
    model.fXAxis.fVariable.reset();
    EXPECT_THROW(ArrangeBars(model), std::logic_error);
    model = whole;
    model.fYAxis.fVariable.reset();
    EXPECT_THROW(ArrangeBars(model), std::logic_error);
    model = whole;
    model.fvRows[1].pop_back();
    EXPECT_THROW(ArrangeBars(model), std::logic_error);
    model = whole;
    std::swap(model.fvRows[1][0], model.fvRows[1][1]);
    EXPECT_THROW(ArrangeBars(model), std::logic_error);
}

TEST(ChartBars, SummaryTellsWhatThePictureShows) {
    const ChartBars bars = ArrangeBars(BuildChart(EvenRequest(4, 1)));
    EXPECT_EQ(ChartSummary(bars),
              "Bar chart of Predictor by Unadjusted Significance, the best at the top. Bars: 4. "
              "Selected: 1. Unselected: 3. The first bar is x1 with <.001. "
              "A dashed reference line stands at 0.05.");
}

struct NumberCase {
    const char* fName;
    double fValue;
    std::int32_t fDecimals;
    bool fbLeadingZero;
    const char* fPrefix;
    const char* fSuffix;
    const char* fText;
};

class ChartNumber : public testing::TestWithParam<NumberCase> {};

TEST_P(ChartNumber, IsWrittenInItsFormat) {
    const NumberCase& given = GetParam();
    ChartVariable variable;
    variable.fDecimals = given.fDecimals;
    variable.fbLeadingZero = given.fbLeadingZero;
    variable.fPrefix = given.fPrefix;
    variable.fSuffix = given.fSuffix;
    EXPECT_EQ(ChartNumberText(given.fValue, variable), given.fText);
}

INSTANTIATE_TEST_SUITE_P(
    Formats, ChartNumber,
    testing::Values(NumberCase{"NoLeadingZero", 0.0134, 3, false, "", "", ".013"},
                    NumberCase{"LeadingZero", 0.0134, 3, true, "", "", "0.013"},
                    NumberCase{"One", 1.0, 3, false, "", "", "1.000"},
                    NumberCase{"Ten", 10.0, 1, false, "", "", "10.0"},
                    NumberCase{"Zero", 0.0, 3, false, "", "", ".000"},
                    NumberCase{"NegativeZero", -0.0, 3, false, "", "", ".000"},
                    NumberCase{"NegativeThatRoundsToZero", -0.0001, 3, false, "", "", ".000"},
                    NumberCase{"Negative", -0.5, 1, false, "", "", "-.5"},
                    NumberCase{"Tiny", 1e-9, 3, false, "", "", "<.001"},
                    NumberCase{"TinyWithLeadingZero", 1e-9, 3, true, "", "", "<0.001"},
                    NumberCase{"SmallestShown", 0.001, 3, false, "", "", ".001"},
                    NumberCase{"NoDecimals", 12.4, 0, true, "", "", "12"},
                    NumberCase{"PrefixAndSuffix", 0.5, 1, true, "p=", "!", "p=0.5!"}),
    [](const auto& test) { return std::string(test.param.fName); });

TEST(ChartNumberText, LargestNumberFits) {
    EXPECT_EQ(ChartNumberText(std::numeric_limits<double>::max(), ChartVariable{}).size(), 313u);
}

}  // namespace
}  // namespace embedded
