#include "embedded/charts/ChartSvg.h"

#include <gtest/gtest.h>

#include <cstring>
#include <pugixml.hpp>

#include "embedded/charts/tests/ChartFixture.h"
#include "host/Records.h"

namespace embedded {
namespace {

/// A picture, read by an XML parser of its own.
class Picture {
 public:
    explicit Picture(const ChartModel& model, const std::string& idStem = "chart1")
        : fText(ChartSvg(model, ArrangeBars(model), idStem)) {
        EXPECT_TRUE(fDocument.load_string(fText.c_str()));
    }
    explicit Picture(const ChartRequest& request) : Picture(BuildChart(request)) {}

    pugi::xml_node Root() const { return fDocument.child("svg"); }
    // Nodes live as long as the picture.
    std::vector<pugi::xml_node> All(const char* path) const&& = delete;
    std::vector<pugi::xml_node> All(const char* path) const& {
        std::vector<pugi::xml_node> nodes;
        for (const auto& found : fDocument.select_nodes(path)) nodes.push_back(found.node());
        return nodes;
    }
    std::size_t Count(const char* path) const { return All(path).size(); }
    pugi::xml_node One(const char* path) const {
        const auto nodes = All(path);
        EXPECT_EQ(nodes.size(), 1u) << path;
        return nodes.empty() ? pugi::xml_node() : nodes.front();
    }
    const std::string& Text() const { return fText; }

 private:
    std::string fText;
    pugi::xml_document fDocument;
};

constexpr const char* kRects = "//g[@class='bar']/rect";
constexpr const char* kLabels = "//g[@class='bar']/text[not(@class)]";

double Number(pugi::xml_node node, const char* attribute) {
    EXPECT_TRUE(node.attribute(attribute)) << attribute;
    return node.attribute(attribute).as_double();
}

class BarCounts : public testing::TestWithParam<std::int32_t> {};

TEST_P(BarCounts, EveryPredictorHasOneBarInsideThePicture) {
    const std::int32_t count = GetParam();
    const Picture picture(EvenRequest(count, count / 2));
    const auto rects = picture.All(kRects);
    ASSERT_EQ(rects.size(), static_cast<std::size_t>(count));
    ASSERT_EQ(picture.Count(kLabels), static_cast<std::size_t>(count));
    const double height = Number(picture.Root(), "height");
    const double width = Number(picture.Root(), "width");
    double above = 0;
    for (const auto& rect : rects) {
        const double top = Number(rect, "y");
        EXPECT_GT(top, above);
        above = top + Number(rect, "height");
        EXPECT_GE(Number(rect, "x"), 0.0);
        EXPECT_LE(Number(rect, "x") + Number(rect, "width"), width);
    }
    EXPECT_LT(above, height);
    // Room for a label of this size in every place.
    if (count > 1) {
        const double place = Number(rects[1], "y") - Number(rects[0], "y");
        EXPECT_GE(place, Number(picture.All(kLabels)[0], "font-size") * 1.2);
    }
}

INSTANTIATE_TEST_SUITE_P(Sizes, BarCounts, testing::Values(1, 2, 5, 18, 19, 20, 21, 50, 500));

TEST(ChartSvg, NoBarsStillGiveAWellFormedPicture) {
    const Picture picture(EvenRequest(0, 0));
    EXPECT_EQ(picture.Count(kRects), 0u);
    EXPECT_GT(Number(picture.Root(), "height"), 0.0);
}

TEST(ChartSvg, HeightGrowsWithTheFrame) {
    const auto heightOf = [](std::int32_t count) {
        return Number(Picture(EvenRequest(count, 1)).Root(), "height");
    };
    EXPECT_NEAR(heightOf(80) - heightOf(40), heightOf(120) - heightOf(80), 1.0);
    EXPECT_GT(heightOf(40), heightOf(20) * 1.5);
}

TEST(ChartSvg, LowSignificanceGivesTheLongBar) {
    ChartRequest request = EvenRequest(3, 1);
    request.fvValues = {0.0, 0.5, 1.0};
    const Picture picture(request);
    const auto rects = picture.All(kRects);
    const double whole = Number(rects[0], "width");
    EXPECT_GT(whole, 100.0);
    EXPECT_NEAR(Number(rects[1], "width"), whole / 2, 0.02);
    EXPECT_EQ(Number(rects[2], "width"), 0.0);
    EXPECT_EQ(Number(rects[0], "x"), Number(rects[2], "x")) << "one foot";
}

TEST(ChartSvg, HighAssociationGivesTheLongBarOnTheSameInvertedAxis) {
    ChartRequest request = EvenRequest(3, 1);
    request.fValueKey = "Cramer's V";
    request.fvValues = {1.0, 0.5, 0.0};
    const Picture picture(request);
    const auto rects = picture.All(kRects);
    const double whole = Number(rects[0], "width");
    EXPECT_NEAR(Number(rects[1], "width"), whole / 2, 0.02);
    EXPECT_EQ(Number(rects[2], "width"), 0.0);
    EXPECT_NEAR(Number(rects[1], "x"), Number(rects[0], "x") + whole / 2, 0.02);
    EXPECT_EQ(picture.Count("//path[@class='leaders']"), 1u);
}

TEST(ChartSvg, ValuesRunFromHighToLow) {
    const Picture picture(EvenRequest(3, 1));
    const auto ticks = picture.All("//g[@class='axis']/text[not(@class)]");
    std::string labels;
    double x = 0;
    for (const auto& tick : ticks) {
        const bool isFirst = labels.empty();
        labels += std::string(tick.child_value()) + ' ';
        if (!isFirst) {
            EXPECT_LT(Number(tick, "x"), x);
        }
        x = Number(tick, "x");
    }
    EXPECT_EQ(labels, "0 0.2 0.4 0.6 0.8 1 ");
}

TEST(ChartSvg, ValuesBeyondTheIntervalEndAtIt) {
    ChartRequest request = EvenRequest(3, 1);
    request.fvValues = {-5.0, 0.0, 7.0};
    const Picture picture(request);
    const auto rects = picture.All(kRects);
    EXPECT_EQ(Number(rects[0], "width"), Number(rects[1], "width"));
    EXPECT_EQ(Number(rects[2], "width"), 0.0);
}

TEST(ChartSvg, ReferenceLineIsDashedAndStandsAtItsValue) {
    ChartRequest request = EvenRequest(2, 1);
    request.fCutoff = 0.25;
    request.fvValues = {0.25, 0.9};
    const Picture picture(request);
    const auto line = picture.One("//path[@class='reference']");
    EXPECT_STRNE(line.attribute("stroke-dasharray").value(), "");
    const auto bar = picture.All(kRects)[0];
    const double x = std::strtod(line.attribute("d").value() + 1, nullptr);
    EXPECT_NEAR(x, Number(bar, "x") + Number(bar, "width"), 0.02);
    EXPECT_STREQ(picture.One("//text[@class='reference-label']").child_value(), "0.25");
}

TEST(ChartSvg, LineThatWasNotFinishedIsNotDrawn) {
    ChartModel model = BuildChart(EvenRequest(2, 1));
    model.fbReferenceLinesFinished = false;
    EXPECT_EQ(Picture(model).Count("//path[@class='reference']"), 0u);
}

TEST(ChartSvg, BarsHaveTheColourOfTheirGroupAndTheLegendShowsIt) {
    const Picture picture(EvenRequest(5, 2));
    const auto rects = picture.All(kRects);
    const auto swatches = picture.All("//g[@class='legend']/rect");
    ASSERT_EQ(swatches.size(), 2u);
    for (std::size_t i = 0; i < rects.size(); ++i) {
        const auto& swatch = swatches[i < 2 ? 0 : 1];
        EXPECT_STREQ(rects[i].attribute("fill").value(), swatch.attribute("fill").value());
        EXPECT_STREQ(rects[i].attribute("stroke").value(), swatch.attribute("stroke").value());
    }
    const auto texts = picture.All("//g[@class='legend']/text");
    ASSERT_EQ(texts.size(), 3u);
    EXPECT_STREQ(texts[0].child_value(), "Predictors");
    EXPECT_STREQ(texts[1].child_value(), "Selected");
    EXPECT_STREQ(texts[2].child_value(), "Unselected");
}

TEST(ChartSvg, FootnotesStandBelowInOrder) {
    ChartRequest request = EvenRequest(2, 1);
    EXPECT_EQ(Picture(request).Count("//text[@class='footnote']"), 0u);
    request.fvFootnotes = {"first", "second"};
    const Picture picture(request);
    const auto notes = picture.All("//text[@class='footnote']");
    ASSERT_EQ(notes.size(), 2u);
    EXPECT_STREQ(notes[0].child_value(), "first");
    EXPECT_STREQ(notes[1].child_value(), "second");
    EXPECT_LT(Number(notes[0], "y"), Number(notes[1], "y"));
}

TEST(ChartSvg, LongFootnotesAreWrapped) {
    ChartRequest request = EvenRequest(2, 1);
    std::string note;
    for (int i = 0; i < 40; ++i) note += "word" + std::to_string(i) + ' ';
    request.fvFootnotes = {note};
    EXPECT_GT(Picture(request).Count("//text[@class='footnote']"), 1u);
}

TEST(ChartSvg, TextIsEscapedAndLongLabelsKeepTheirWholeTextInTheHint) {
    ChartRequest request = EvenRequest(2, 1);
    const std::string longLabel = "<b>\"Tom\" & Jerry</b> " + std::string(80, 'w') +
                                  " \xC3\xA9"
                                  "end";
    request.fvLabels = {longLabel, "short"};
    const Picture picture(request);
    EXPECT_EQ(picture.Text().find("<b>"), std::string::npos);
    const auto labels = picture.All(kLabels);
    const std::string shown = labels[0].child_value();
    EXPECT_LT(shown.size(), longLabel.size());
    EXPECT_TRUE(shown.ends_with("\xE2\x80\xA6"));
    EXPECT_STREQ(labels[1].child_value(), "short");
    const auto hints = picture.All("//g[@class='bar']/title");
    EXPECT_EQ(hints[0].child_value(), longLabel + ": <.001 (Selected)");
    EXPECT_STREQ(hints[1].child_value(), "short: .500 (Unselected)");
}

TEST(ChartSvg, MissingValueHasALabelButNoBar) {
    ChartRequest request = EvenRequest(2, 1);
    request.fvValues[1] = MCMV::gMissingValue;
    const Picture picture(request);
    EXPECT_EQ(picture.Count(kRects), 1u);
    EXPECT_EQ(picture.Count(kLabels), 2u);
}

TEST(ChartSvg, PictureIsNamedAndDescribedByItsOwnIds) {
    ChartModel model = BuildChart(EvenRequest(2, 1));
    model.fComment = "Comment.";
    model.fSummary = "Summary.";
    const Picture picture(model, "c7");
    const auto root = picture.Root();
    EXPECT_STREQ(root.attribute("role").value(), "img");
    EXPECT_STREQ(root.attribute("aria-labelledby").value(), "c7-title");
    EXPECT_STREQ(root.attribute("aria-describedby").value(), "c7-desc");
    EXPECT_STREQ(picture.One("//title[@id='c7-title']").child_value(), "Predictor Summary Chart");
    EXPECT_STREQ(picture.One("//desc[@id='c7-desc']").child_value(), "Comment. Summary.");
    EXPECT_EQ(picture.Count("//*[@id]"), 2u);
}

TEST(ChartSvg, HiddenTitleOfTheCategoriesIsNotDrawn) {
    ChartModel model = BuildChart(EvenRequest(2, 1));
    EXPECT_STREQ(Picture(model).One("//text[@class='axis-title']").child_value(),
                 "Unadjusted Significance");
    model.fXAxis.fbTitleShown = true;
    EXPECT_EQ(Picture(model).Count("//text[@class='axis-title']"), 2u);
}

TEST(ChartSvg, TallPictureRepeatsItsTicksAtTheTop) {
    const auto ticks = [](std::int32_t count) {
        return Picture(EvenRequest(count, 1)).Count("//g[@class='axis']/text[not(@class)]");
    };
    EXPECT_EQ(ticks(20), 6u);
    EXPECT_EQ(ticks(21), 12u);
}

TEST(ChartSvg, BarWidthFollowsItsShareAndItsLimits) {
    ChartModel model = BuildChart(EvenRequest(2, 1));
    const auto thickness = [](const ChartModel& of) {
        const Picture picture(of);
        return Number(picture.All(kRects)[0], "height");
    };
    const double wide = thickness(model);
    model.fBarWidth /= 3;
    EXPECT_NEAR(thickness(model), wide / 3, 0.02);
    model.fLowestBarWidth = 10;
    EXPECT_EQ(thickness(model), 10.0);
    model.fBarWidth = 1;
    model.fHighestBarWidth = 12;
    EXPECT_EQ(thickness(model), 12.0);
}

TEST(ChartSvg, TicksWithoutRoundNumbersStandAtTheEnds) {
    ChartModel model = BuildChart(EvenRequest(2, 1));
    model.fYAxis.fbNiceTicks = false;
    EXPECT_EQ(Picture(model).Count("//g[@class='axis']/text[not(@class)]"), 2u);
    model.fYAxis.fbTicks = false;
    EXPECT_EQ(Picture(model).Count("//g[@class='axis']/text[not(@class)]"), 0u);
}

TEST(ChartSvg, SameChartGivesTheSameBytes) {
    const ChartModel model = BuildChart(EvenRequest(30, 10));
    EXPECT_EQ(Picture(model).Text(), Picture(model).Text());
}

TEST(ChartSvg, InlinePictureHasNoStylesOrScripts) {
    const std::string text = Picture(EvenRequest(3, 1)).Text();
    EXPECT_TRUE(text.starts_with("<svg "));
    EXPECT_EQ(text.find("style"), std::string::npos);
    EXPECT_EQ(text.find("<script"), std::string::npos);
}

TEST(SvgFile, IsTheSamePictureWithColoursOfItsOwn) {
    const Picture picture(EvenRequest(3, 1));
    const std::string file = SvgFile(picture.Text());
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(file.c_str()));
    EXPECT_TRUE(file.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg "));
    const auto style = document.child("svg").child("style");
    EXPECT_NE(std::string(style.child_value()).find("prefers-color-scheme:dark"),
              std::string::npos);
    EXPECT_EQ(document.select_nodes(kRects).size(), 3u);
}

}  // namespace
}  // namespace embedded
