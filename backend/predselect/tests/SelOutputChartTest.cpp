// The chart as SelOutput asks for it. This program has a chart document of its own that keeps what
// is sent, so that the model is in reach, and that can be made to fail.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "backend/predselect/PRSUniFactory.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "backend/predselect/SelOutput.h"
#include "embedded/HostSession.h"
#include "embedded/charts/XChartData.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/data/DataSetBuilder.h"
#include "embedded/output/Report.h"
#include "host/Charts.h"

namespace {

struct Sent {
    std::vector<embedded::ChartModel> fvModels;
    std::vector<bool> fvShown;
    std::size_t fItemsBefore = 0;  // tables in the report when the last chart was sent
    bool fbFail = false;
};
Sent gSent;

}  // namespace

XDocument::XDocument() : fpData(std::make_unique<XChartData>()) {}
XDocument::~XDocument() = default;
void XDocument::SetDescription(const ChartString& text) { fpData->fModel.fTitle = text; }
void XDocument::SetDescription(std::string_view) {}
XGraph XDocument::getGraph() { return XGraph(fpData.get()); }
void XDocument::SendChart(bool show, bool editable, bool linked) {
    if (gSent.fbFail) throw std::runtime_error("the chart cannot be sent");
    EXPECT_FALSE(editable);
    EXPECT_FALSE(linked);
    gSent.fvModels.push_back(fpData->fModel);
    gSent.fvShown.push_back(show);
    gSent.fItemsBefore = embedded::HostSession::Active().Report().fvItems.size();
}
void XDocument::SetComment(std::string_view) {}
void XDocument::SetName(std::string_view) {}
void XDocument::doNotModify() {}
bool XDocument::SetChartTemplate(std::string_view) { return false; }
bool XDocument::AddCSVFile(std::string_view) { return false; }
bool XDocument::AddImmediateTemplate(std::string_view) { return false; }
std::optional<XGraph> XDocument::getExternalGraph() { return std::nullopt; }
void XDocument::SendContent() {}
void XDocument::SendDescription() {}
void XDocument::SendXML() {}
void XDocument::SendData() {}
void XDocument::SendDone() {}
std::int32_t XDocument::SendCount() const { return 0; }

namespace {

constexpr std::int32_t kPearson = 0;
constexpr std::int32_t kCramer = 2;
constexpr std::int32_t kLambda = 3;

struct ChartCase {
    std::int32_t fPredictors = 5;
    std::int32_t fSize = 3;
    std::int32_t fUnselected = 5;
    std::int32_t fRanking = kPearson;
    double fCutoff = 0.05;
    bool fbPlot = true;
    bool fbScaleTarget = false;
    bool fbScalePredictors = false;
};

/// Two hundred cases of a target y and predictors x1 to xn, the first agreeing with the target most
/// often. Every second one is labelled. The same numbers at every call.
embedded::DataSet MakeData(const ChartCase& given) {
    constexpr std::size_t kCases = 200;
    std::mt19937 random(20260401);
    const auto chance = [&random] { return static_cast<double>(random()) / 4294967296.0; };
    std::vector<double> target(kCases);
    for (double& value : target) value = chance() < 0.5 ? 0.0 : 1.0;
    embedded::DataSetBuilder builder;
    builder.Numbers("y", target).Level(given.fbScaleTarget ? kLevelScale : kLevelNominal);
    for (std::int32_t i = 0; i < given.fPredictors; ++i) {
        const double agreement = 0.95 - 0.45 * i / given.fPredictors;
        std::vector<double> values;
        for (const double y : target) values.push_back(chance() < agreement ? y : 1.0 - y);
        const std::string number = std::to_string(i + 1);
        builder.Numbers("x" + number, values)
            .Level(given.fbScalePredictors ? kLevelScale : kLevelNominal);
        if (i % 2 == 0) builder.Label("Label " + number);
    }
    return builder.Build();
}

/// A run of SELECTPRED over the data, all tables left out unless asked for.
class ChartRun {
 public:
    explicit ChartRun(const ChartCase& given, bool withTables = false)
        : fData(MakeData(given)),
          fCommands(embedded::ParseCommandText("SELECTPRED y;", "test").fvCommands),
          fSession(fData, fCommands.front(), fReport),
          fSource(std::make_unique<ProcedureDataSource>()),
          fProcedure("SelectPredictors", 5) {
        for (std::int32_t i = 1; i <= given.fPredictors; ++i) fvPredictors.push_back(i);
        fvFlags.assign(fvPredictors.size(), !given.fbScalePredictors);
        PRSValidSpecs specs;
        specs.SetDependVar(0, !given.fbScaleTarget);
        specs.SetPredictors(&fvPredictors, &fvFlags);
        specs.SetScreening(false, 100.0, 100.0, 100.0, 0.0, 0.0);
        specs.SetSelectCriteria(given.fSize, given.fRanking, given.fCutoff, given.fUnselected, 5.0);
        specs.SetPrintFlags(false, false, withTables, withTables, false, false);
        specs.SetPlotSummary(given.fbPlot);
        specs.FinishSpecs();
        PRSUniFactory factory(specs, *fSource);
        EXPECT_TRUE(factory.Run());
        gSent.fvModels.clear();
        gSent.fvShown.clear();
        SelOutput(specs, factory, *fSource, fProcedure).WriteTables();
    }

    /// The one chart of the run.
    const embedded::ChartModel& Model() const {
        EXPECT_EQ(gSent.fvModels.size(), 1u);
        return gSent.fvModels.at(0);
    }
    const embedded::CommandReport& Report() const { return fReport; }

 private:
    embedded::DataSet fData;
    std::vector<embedded::CommandTokens> fCommands;
    embedded::CommandReport fReport;
    embedded::HostSession fSession;
    std::unique_ptr<ProcedureDataSource> fSource;
    BpProcedure fProcedure;
    std::vector<std::int32_t> fvPredictors;
    std::vector<bool> fvFlags;
};

std::vector<std::int32_t> Codes(const embedded::ChartModel& model, std::size_t column) {
    std::vector<std::int32_t> codes;
    for (const auto& row : model.fvRows) codes.push_back(std::get<std::int32_t>(row[column]));
    return codes;
}

std::vector<double> Values(const embedded::ChartModel& model) {
    std::vector<double> values;
    for (const auto& row : model.fvRows) values.push_back(std::get<double>(row[1]));
    return values;
}

std::string LabelAt(const embedded::ChartModel& model, std::size_t position) {
    const std::int32_t code = Codes(model, 0).at(position);
    return model.fvVariables[0].fLabels.at(code).Text();
}

TEST(SelOutputChart, VariablesStandInTheOrderCategoryNumberColour) {
    const ChartRun run({});
    const auto& variables = run.Model().fvVariables;
    ASSERT_EQ(variables.size(), 3u);
    EXPECT_EQ(variables[0].fName.Key(), "Predictor");
    EXPECT_FALSE(variables[0].fbNumeric);
    EXPECT_EQ(variables[1].fName.Key(), "Unadjusted Significance");
    EXPECT_TRUE(variables[1].fbNumeric);
    EXPECT_EQ(variables[1].fDecimals, 3);
    EXPECT_EQ(variables[2].fName.Text(), "color");
    EXPECT_FALSE(variables[2].fbNumeric);
    EXPECT_EQ(run.Model().fTitle.Key(), "Predictor Summary Chart");
    EXPECT_EQ(gSent.fvShown, std::vector<bool>{true});
}

TEST(SelOutputChart, BestPredictorGetsTheHighestCode) {
    const ChartRun run({});
    EXPECT_EQ(Codes(run.Model(), 0), (std::vector<std::int32_t>{5, 4, 3, 2, 1}));
    const std::vector<double> values = Values(run.Model());
    EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
    EXPECT_LT(values.front(), values.back());
}

TEST(SelOutputChart, PredictorsGoByLabelElseByName) {
    const ChartRun run({});
    EXPECT_EQ(LabelAt(run.Model(), 0), "Label 1");
    EXPECT_EQ(LabelAt(run.Model(), 1), "x2");
}

TEST(SelOutputChart, SelectedAndUnselectedHaveCodesZeroAndOne) {
    const ChartRun run({});
    EXPECT_EQ(Codes(run.Model(), 2), (std::vector<std::int32_t>{0, 0, 0, 1, 1}));
    const auto& labels = run.Model().fvVariables[2].fLabels;
    EXPECT_EQ(labels.at(0).Key(), "Selected");
    EXPECT_EQ(labels.at(1).Key(), "Unselected");
    EXPECT_EQ(run.Model().fColourVariable, 2u);
    EXPECT_TRUE(run.Model().fvColours.empty());
    EXPECT_TRUE(run.Model().fbLegend);
    EXPECT_EQ(run.Model().fLegendTitle.Key(), "Predictors");
}

TEST(SelOutputChart, NoMoreUnselectedThanAskedFor) {
    const ChartRun run({.fUnselected = 1});
    EXPECT_EQ(Codes(run.Model(), 2), (std::vector<std::int32_t>{0, 0, 0, 1}));
    EXPECT_EQ(Codes(run.Model(), 0), (std::vector<std::int32_t>{4, 3, 2, 1}));
}

TEST(SelOutputChart, NoUnselectedBarsAndOneFootnoteWhenNoneAreAskedFor) {
    const ChartRun run({.fUnselected = 0});
    EXPECT_EQ(Codes(run.Model(), 2), (std::vector<std::int32_t>{0, 0, 0}));
    EXPECT_EQ(run.Model().fFirstFootnote.Key(), "The line is at p-value...");
    EXPECT_EQ(run.Model().fSecondFootnote.Text(), "");
}

TEST(SelOutputChart, AllBarsAreUnselectedWhenNoPredictorPassesTheCutOff) {
    const ChartRun run({.fCutoff = 0.0});
    EXPECT_EQ(Codes(run.Model(), 2), (std::vector<std::int32_t>{1, 1, 1, 1, 1}));
}

TEST(SelOutputChart, ChartWithoutBarsIsSentAllTheSame) {
    const ChartRun run({.fUnselected = 0, .fCutoff = 0.0});
    EXPECT_TRUE(run.Model().fvRows.empty());
    EXPECT_TRUE(embedded::ArrangeBars(run.Model()).fvBars.empty());
}

struct SizeCase {
    const char* fName;
    std::int32_t fPredictors;
    double fLabelSize;
    double fHeight;
};

class ChartSizes : public testing::TestWithParam<SizeCase> {};

TEST_P(ChartSizes, FollowTheNumberOfPredictors) {
    const SizeCase& given = GetParam();
    const ChartRun run({.fPredictors = given.fPredictors, .fUnselected = given.fPredictors});
    ASSERT_EQ(run.Model().fvRows.size(), static_cast<std::size_t>(given.fPredictors));
    EXPECT_EQ(run.Model().fXAxis.fTickLabelSize, given.fLabelSize);
    EXPECT_DOUBLE_EQ(run.Model().fFrameHeight, given.fHeight);
}

INSTANTIATE_TEST_SUITE_P(Numbers, ChartSizes,
                         testing::Values(SizeCase{"EighteenHaveLargeLabels", 18, 12.0, 1.0},
                                         SizeCase{"NineteenHaveSmallLabels", 19, 8.0, 1.0},
                                         SizeCase{"TwentyFillTheFrame", 20, 8.0, 1.0},
                                         SizeCase{"TwentyOneAreHigher", 21, 8.0, 1.05}),
                         [](const auto& test) { return std::string(test.param.fName); });

TEST(SelOutputChart, AxesAreAsFixed) {
    const ChartRun run({});
    const embedded::ChartAxis& x = run.Model().fXAxis;
    EXPECT_EQ(x.fVariable, 0u);
    EXPECT_EQ(x.fTitle.Key(), "Predictor");
    EXPECT_FALSE(x.fbTitleShown);
    EXPECT_TRUE(x.fbTicks);
    EXPECT_DOUBLE_EQ(x.fLowerMargin, 0.1);
    EXPECT_DOUBLE_EQ(x.fUpperMargin, 0.1);
    EXPECT_FALSE(x.fbInverted);
    const embedded::ChartAxis& y = run.Model().fYAxis;
    EXPECT_EQ(y.fVariable, 1u);
    EXPECT_EQ(y.fTitle.Key(), "Unadjusted Significance");
    EXPECT_TRUE(y.fbTitleShown);
    EXPECT_TRUE(y.fbTicks);
    EXPECT_TRUE(y.fbNiceTicks);
    EXPECT_DOUBLE_EQ(y.fUpperMargin, 0.05);
    EXPECT_EQ(y.fLow, 0.0);
    EXPECT_EQ(y.fHigh, 1.0);
    EXPECT_TRUE(y.fbInverted);
    EXPECT_EQ(y.fOrigin, 1.0);
    EXPECT_DOUBLE_EQ(run.Model().fBarWidth, 0.75);
}

TEST(SelOutputChart, FootnotesGiveTheCutOffAndTheLimit) {
    const ChartRun run({.fUnselected = 7, .fCutoff = 0.025});
    const embedded::ChartModel& model = run.Model();
    EXPECT_EQ(model.fFirstFootnote.Key(), "The line is at p-value...");
    EXPECT_TRUE(model.fFirstFootnote.Text().ends_with(" 0.025"));
    EXPECT_EQ(model.fSecondFootnote.Key(), "Unselected predictors limited...");
    EXPECT_TRUE(model.fSecondFootnote.Text().ends_with(" 7"));
    EXPECT_EQ(model.fvReferenceLines, std::vector<double>{0.025});
    EXPECT_TRUE(model.fbReferenceLinesFinished);
}

TEST(SelOutputChart, CramersVHasTheLineButNoFootnoteOnIt) {
    const ChartRun run({.fRanking = kCramer});
    const embedded::ChartModel& model = run.Model();
    EXPECT_EQ(model.fYAxis.fTitle.Key(), "Cramer's V");
    EXPECT_EQ(model.fvReferenceLines, std::vector<double>{0.05});
    EXPECT_TRUE(model.fbReferenceLinesFinished);
    EXPECT_EQ(model.fFirstFootnote.Key(), "Unselected predictors limited...");
    EXPECT_EQ(model.fSecondFootnote.Text(), "");
    const std::vector<double> values = Values(model);
    EXPECT_GT(values.front(), values.back());
}

TEST(SelOutputChart, CramersVWithoutUnselectedHasNoFootnoteAtAll) {
    const ChartRun run({.fUnselected = 0, .fRanking = kCramer});
    EXPECT_EQ(run.Model().fFirstFootnote.Text(), "");
    EXPECT_EQ(run.Model().fSecondFootnote.Text(), "");
}

// Intended; the y axis of a Lambda chart has no name of its own.
TEST(SelOutputChart, LambdaAxisReadsAsThePredictorHeading) {
    const ChartRun run({.fRanking = kLambda});
    EXPECT_EQ(run.Model().fYAxis.fTitle.Key(), "Predictor");
    EXPECT_EQ(run.Model().fvVariables[1].fName.Key(), "Predictor");
    EXPECT_TRUE(run.Model().fYAxis.fbInverted);
}

TEST(SelOutputChart, RankingOfAnAssociationIsNotComparedWithTheCutOff) {
    const ChartRun run({.fRanking = kCramer, .fCutoff = 0.0});
    EXPECT_EQ(Codes(run.Model(), 2), (std::vector<std::int32_t>{0, 0, 0, 1, 1}));
}

struct TypesCase {
    const char* fName;
    bool fbScaleTarget;
    bool fbScalePredictors;
};

class ChartTypes : public testing::TestWithParam<TypesCase> {};

TEST_P(ChartTypes, ShowSignificancesWhateverTheRankingAskedFor) {
    const ChartRun run({.fRanking = kCramer,
                        .fbScaleTarget = GetParam().fbScaleTarget,
                        .fbScalePredictors = GetParam().fbScalePredictors});
    EXPECT_EQ(run.Model().fYAxis.fTitle.Key(), "Unadjusted Significance");
    EXPECT_EQ(run.Model().fFirstFootnote.Key(), "The line is at p-value...");
    const std::vector<double> values = Values(run.Model());
    EXPECT_TRUE(std::is_sorted(values.begin(), values.end()));
}

INSTANTIATE_TEST_SUITE_P(Types, ChartTypes,
                         testing::Values(TypesCase{"CategoricalTargetScalePredictors", false, true},
                                         TypesCase{"ScaleTargetCategoricalPredictors", true, false},
                                         TypesCase{"ScaleTargetScalePredictors", true, true}),
                         [](const auto& test) { return std::string(test.param.fName); });

TEST(SelOutputChart, NoChartUnlessAskedFor) {
    const ChartRun run({.fbPlot = false});
    EXPECT_TRUE(gSent.fvModels.empty());
}

TEST(SelOutputChart, ChartStandsBetweenTheSummaryAndTheSelectedPredictors) {
    const ChartRun run({}, true);
    EXPECT_EQ(gSent.fvModels.size(), 1u);
    EXPECT_EQ(gSent.fItemsBefore, 1u);
    EXPECT_EQ(run.Report().fvItems.size(), 2u);
}

TEST(SelOutputChart, ChartThatFailsLeavesTheTablesAndSaysNothing) {
    gSent.fbFail = true;
    const ChartRun run({}, true);
    gSent.fbFail = false;
    EXPECT_TRUE(gSent.fvModels.empty());
    EXPECT_EQ(run.Report().fvItems.size(), 2u);
    EXPECT_TRUE(run.Report().fvMessages.empty());
}

}  // namespace
