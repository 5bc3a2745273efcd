#include "embedded/charts/ChartVegaLite.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "embedded/charts/tests/ChartFixture.h"
#include "host/Records.h"

namespace embedded {
namespace {

nlohmann::json SpecOf(const ChartModel& model) {
    return nlohmann::json::parse(ChartVegaLite(model, ArrangeBars(model)));
}

TEST(ChartVegaLite, RowsAreTheBarsFromTheTopWithUnroundedValues) {
    ChartRequest request = EvenRequest(3, 1);
    request.fvValues = {1.0 / 3.0, 1e-300, MCMV::gMissingValue};
    const nlohmann::json spec = SpecOf(BuildChart(request));
    const nlohmann::json expected = {
        {{"position", 1}, {"label", "x1"}, {"value", 1.0 / 3.0}, {"group", "Selected"}},
        {{"position", 2}, {"label", "x2"}, {"value", 1e-300}, {"group", "Unselected"}},
        {{"position", 3}, {"label", "x3"}, {"value", nullptr}, {"group", "Unselected"}}};
    EXPECT_EQ(spec["data"]["values"], expected);
    EXPECT_EQ(spec["data"]["name"], "bars");
}

TEST(ChartVegaLite, AxisRunsFromHighToLowAndBarsStartAtTheirFoot) {
    ChartRequest request = EvenRequest(2, 1);
    const nlohmann::json encoding = SpecOf(BuildChart(request))["layer"][0]["encoding"];
    EXPECT_EQ(encoding["x"]["scale"]["domain"], nlohmann::json({0.0, 1.0}));
    EXPECT_EQ(encoding["x"]["scale"]["reverse"], true);
    EXPECT_EQ(encoding["x"]["title"], "Unadjusted Significance");
    EXPECT_EQ(encoding["x2"]["datum"], 1.0);
    EXPECT_TRUE(encoding["y"]["title"].is_null());
    request.fValueKey = "Cramer's V";
    EXPECT_EQ(SpecOf(BuildChart(request))["layer"][0]["encoding"]["x2"]["datum"], 0.0);
}

TEST(ChartVegaLite, ColoursAreThoseOfThePicture) {
    const ChartModel model = BuildChart(EvenRequest(2, 1));
    const ChartBars bars = ArrangeBars(model);
    const nlohmann::json colour = SpecOf(model)["layer"][0]["encoding"]["color"];
    EXPECT_EQ(colour["title"], "Predictors");
    EXPECT_EQ(colour["scale"]["domain"], nlohmann::json({"Selected", "Unselected"}));
    EXPECT_EQ(colour["scale"]["range"],
              nlohmann::json({bars.fvGroups[0].fColour, bars.fvGroups[1].fColour}));
}

TEST(ChartVegaLite, ReferenceLineIsADashedRule) {
    const nlohmann::json layers = SpecOf(BuildChart(EvenRequest(2, 1)))["layer"];
    ASSERT_EQ(layers.size(), 2u);
    EXPECT_EQ(layers[1]["mark"]["type"], "rule");
    EXPECT_TRUE(layers[1]["mark"].contains("strokeDash"));
    EXPECT_EQ(layers[1]["data"]["values"], nlohmann::json::parse(R"([{"value": 0.05}])"));
}

TEST(ChartVegaLite, FootnotesAndTitleAreShown) {
    ChartRequest request = EvenRequest(2, 1);
    EXPECT_FALSE(SpecOf(BuildChart(request))["title"].contains("subtitle"));
    request.fvFootnotes = {"first", "second"};
    const nlohmann::json title = SpecOf(BuildChart(request))["title"];
    EXPECT_EQ(title["text"], "Predictor Summary Chart");
    EXPECT_EQ(title["subtitle"], nlohmann::json({"first", "second"}));
}

TEST(ChartVegaLite, BadBytesOfLabelsAreReplaced) {
    ChartRequest request = EvenRequest(1, 1);
    request.fvLabels = {"bad\xFF \"quoted\""};
    EXPECT_EQ(SpecOf(BuildChart(request))["data"]["values"][0]["label"],
              "bad\xEF\xBF\xBD \"quoted\"");
}

TEST(ChartVegaLite, LegendIsLeftOutWhenNotAskedFor) {
    ChartModel model = BuildChart(EvenRequest(2, 1));
    EXPECT_TRUE(SpecOf(model)["layer"][0]["encoding"]["color"]["legend"].is_object());
    model.fbLegend = false;
    EXPECT_TRUE(SpecOf(model)["layer"][0]["encoding"]["color"]["legend"].is_null());
}

}  // namespace
}  // namespace embedded
