#include "embedded/output/JsonRenderer.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <fstream>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "embedded/output/tests/SampleTables.h"
#include "tests/support/CaseName.h"

namespace embedded {
namespace {

using Json = nlohmann::ordered_json;

Report OneCommand(CommandReport command) { return {"1.2.3", {std::move(command)}}; }

std::vector<std::string> Names(const Json& object) {
    std::vector<std::string> names;
    for (const auto& [name, value] : object.items()) names.push_back(name);
    return names;
}

CommandReport FullCommand() {
    CommandReport command;
    command.fCommand = "SELECTPRED y BY a";
    command.fvNotes = {{4, "Cases Used", "All of them."}};
    command.fvMessages = {
        {MessageLevel::Warning, "No predictors excluded ...", "No predictors were excluded."}};
    command.fvItems = {
        PredictorTable(),
        ReportChart{"Chart", "A chart", R"({"mark": "bar", "width": 10})", "<svg/>", {}, {}}};
    command.fvSavedVariables = {"pred", "prob_1"};
    return command;
}

TEST(JsonRenderer, KeysComeInTheirFixedOrder) {
    const Json report = Json::parse(JsonRenderer::Render(OneCommand(FullCommand())));
    using List = std::vector<std::string>;
    EXPECT_EQ(Names(report), (List{"format", "version", "commands"}));
    const Json& command = report["commands"][0];
    EXPECT_EQ(Names(command), (List{"command", "status", "notes", "messages", "tables", "charts",
                                    "savedVariables", "modelFile"}));
    EXPECT_EQ(Names(command["notes"][0]), (List{"title", "text"}));
    EXPECT_EQ(Names(command["messages"][0]), (List{"level", "key", "text"}));
    const Json& table = command["tables"][0];
    EXPECT_EQ(Names(table),
              (List{"id", "title", "caption", "dimensions", "cells", "headingNotes"}));
    EXPECT_EQ(Names(table["dimensions"][0]), (List{"name", "title", "axis"}));
    EXPECT_EQ(Names(table["cells"][0]), (List{"at", "keys", "value", "text", "format", "notes"}));
    EXPECT_EQ(Names(command["charts"][0]), (List{"id", "title", "vegaLite", "svg"}));
}

TEST(JsonRenderer, AReportSaysWhatItsModelHolds) {
    const Json report = Json::parse(JsonRenderer::Render(OneCommand(FullCommand())));
    EXPECT_EQ(report["format"], "predselect-report/1");
    EXPECT_EQ(report["version"], "1.2.3");
    const Json& command = report["commands"][0];
    EXPECT_EQ(command["status"], "ok");
    EXPECT_EQ(command["messages"][0]["level"], "warning");
    EXPECT_EQ(command["savedVariables"], (Json{"pred", "prob_1"}));
    EXPECT_TRUE(command["modelFile"].is_null());
    EXPECT_EQ(command["charts"][0]["vegaLite"]["width"], 10);
    const Json& table = command["tables"][0];
    EXPECT_TRUE(table["caption"].is_null());
    EXPECT_EQ(table["dimensions"][1],
              (Json{{"name", "Statistics"}, {"title", "Statistics"}, {"axis", "column"}}));
    ASSERT_EQ(table["cells"].size(), 12U);
    const Json& cell = table["cells"][2];
    EXPECT_EQ(cell["at"]["Predictor"], (Json{"Selected", "Age in years"}));
    EXPECT_EQ(cell["at"]["Statistics"], (Json{"Pearson Chi-Square", "Value"}));
    EXPECT_EQ(cell["keys"]["Statistics"], (Json{"Pearson Chi-Square", "Value"}));
    EXPECT_EQ(cell["value"], 1234.5);
    EXPECT_EQ(cell["text"], "1234.500");
    EXPECT_EQ(cell["format"], "generalStat");
    EXPECT_EQ(cell["notes"], Json::array({"A note on the value."}));
    EXPECT_EQ(table["headingNotes"][0]["dimension"], "Predictor");
    EXPECT_EQ(table["headingNotes"][0]["at"], Json::array({"Unselected"}));
    EXPECT_EQ(table["headingNotes"][0]["keys"], Json::array({"Unselected"}));
    EXPECT_EQ(table["headingNotes"][0]["text"], "Limited to the first 1 unselected predictors.");
}

TEST(JsonRenderer, ATableWithoutHeadingNotesDoesNotMentionThem) {
    CommandReport command;
    ReportTable table = PredictorTable();
    table.fvDimensions[0].fvHeadings[1].fvNotes.clear();
    command.fvItems = {table};
    const Json report = Json::parse(JsonRenderer::Render(OneCommand(command)));
    EXPECT_FALSE(report["commands"][0]["tables"][0].contains("headingNotes"));
}

TEST(JsonRenderer, HiddenGroupsLeaveNoTraceInThePaths) {
    CommandReport command;
    ReportTable table;
    ReportHeading values = Branch("Values", {Leaf("North")});
    values.fbShown = false;
    table.fvDimensions = {Dimension("Observed", ReportAxis::Row, {values})};
    table.fvCells = {NumberCell({0}, 1, "1")};
    command.fvItems = {table};
    const Json report = Json::parse(JsonRenderer::Render(OneCommand(command)));
    EXPECT_EQ(report["commands"][0]["tables"][0]["cells"][0]["at"]["Observed"],
              Json::array({"North"}));
}

TEST(JsonRenderer, ADimensionWithoutHeadingsHasAnEmptyPath) {
    CommandReport command;
    ReportTable table;
    table.fvDimensions = {Dimension("Statistics", ReportAxis::Column, {})};
    table.fvCells = {NumberCell({0}, 1, "1")};
    command.fvItems = {table};
    const Json report = Json::parse(JsonRenderer::Render(OneCommand(command)));
    EXPECT_EQ(report["commands"][0]["tables"][0]["cells"][0]["at"]["Statistics"], Json::array());
}

TEST(JsonRenderer, AnEmptyReportIsComplete) {
    EXPECT_EQ(JsonRenderer::Render({"1", {}}),
              "{\"format\": \"predselect-report/1\", \"version\": \"1\", \"commands\": []}\n");
}

TEST(JsonRenderer, TheDocumentedExampleIsWhatIsWritten) {
    CommandReport command;
    command.fCommand = "SELECTPRED region BY age sex";
    command.fvNotes = {
        {4, "Definition of Missing", "User-defined missing values are treated as missing."}};
    ReportTable table;
    table.fId = "PredictorSummary";
    table.fTitle = "Predictor Summary";
    ReportHeading age = Leaf("Age in years");
    age.fKey = "age";
    ReportHeading unselected = Branch("Unselected", {Leaf("sex")});
    unselected.fvNotes = {"Limited to the first 5 unselected predictors."};
    table.fvDimensions = {
        Dimension("Predictor", ReportAxis::Row, {Branch("Selected", {age}), unselected}),
        Dimension("Statistics", ReportAxis::Column, {Leaf("Unadjusted Sig.")})};
    table.fvCells = {NumberCell({0, 0}, 0.01284716, ".013", ReportFormat::Significance)};
    table.fvCells[0].fLogarithm = -4.354632503740739;
    command.fvItems = {table};

    std::ifstream in(PREDSEL_SOURCE_DIR "/docs/formats/report-json.md", std::ios::binary);
    const std::string page{std::istreambuf_iterator<char>(in), {}};
    ASSERT_FALSE(page.empty());
    const std::string example = "```json\n" + JsonRenderer::Render({"0.1.0", {command}}) + "```\n";
    EXPECT_NE(page.find(example), std::string::npos) << example;
}

TEST(JsonRenderer, ALogarithmStandsBesideItsValue) {
    CommandReport command;
    ReportTable table;
    table.fvCells = {NumberCell({}, 0.0, "<.001", ReportFormat::Significance),
                     NumberCell({}, 0.0, "<.001", ReportFormat::Significance),
                     NumberCell({}, 0.5, ".500", ReportFormat::Significance)};
    table.fvCells[0].fLogarithm = -1234.5;
    table.fvCells[1].fLogarithm = -std::numeric_limits<double>::infinity();
    command.fvItems = {table};
    const Json report = Json::parse(JsonRenderer::Render(OneCommand(command)));
    const Json& cells = report["commands"][0]["tables"][0]["cells"];
    EXPECT_EQ(cells[0]["lnP"], -1234.5);
    EXPECT_FALSE(cells[0].contains("exactZero"));
    EXPECT_TRUE(cells[1]["lnP"].is_null());
    EXPECT_EQ(cells[1]["exactZero"], true);
    EXPECT_FALSE(cells[2].contains("lnP"));
    EXPECT_FALSE(cells[2].contains("exactZero"));
    const std::string json = JsonRenderer::Render(OneCommand(command));
    EXPECT_NE(json.find("\"value\": 0, \"lnP\": -1234.5, \"text\""), std::string::npos) << json;
}

struct ValueCase {
    const char* fName;
    ReportValue fValue;
    const char* fExpected;
};

class JsonValueOf : public testing::TestWithParam<ValueCase> {};

TEST_P(JsonValueOf, Cell) {
    CommandReport command;
    ReportTable table;
    table.fvCells = {{{}, GetParam().fValue, "shown", ReportFormat::Text, {}}};
    command.fvItems = {table};
    const std::string json = JsonRenderer::Render(OneCommand(command));
    EXPECT_NE(json.find(std::string("\"value\": ") + GetParam().fExpected + ","), std::string::npos)
        << json;
}

INSTANTIATE_TEST_SUITE_P(
    Values, JsonValueOf,
    testing::Values(
        ValueCase{"Missing", {}, "null"}, ValueCase{"Whole", 1.0, "1"},
        ValueCase{"NegativeZero", -0.0, "0"}, ValueCase{"HundredThousand", 100000.0, "100000"},
        ValueCase{"LargestWhole", 9007199254740991.0, "9007199254740991"},
        ValueCase{"Tenth", 0.1, "0.1"}, ValueCase{"Sum", 0.1 + 0.2, "0.30000000000000004"},
        ValueCase{"HardToShorten", 5e-324, "5e-324"},
        ValueCase{"Tiny", 2.2250738585072014e-308, "2.2250738585072014e-308"},
        ValueCase{"Huge", 1.7976931348623157e308, "1.7976931348623157e+308"},
        ValueCase{"Infinite", std::numeric_limits<double>::infinity(), "null"},
        ValueCase{"Text", std::string("a \"b\""), "\"a \\\"b\\\"\""},
        ValueCase{"List", std::vector<ReportKey>{"a", 2.5, ReportKey()}, "[\"a\", 2.5, null]"}),
    testsupport::CaseName());

TEST(JsonRenderer, UndecodableBytesAreReplaced) {
    CommandReport command;
    command.fCommand = "SELECTPRED \xFFy";
    ReportTable table;
    table.fvDimensions = {Dimension("D\xC3", ReportAxis::Row, {Leaf("\xE6\x97")})};
    table.fvCells = {TextCell({0}, "\x80")};
    command.fvItems = {table};
    const Json report = Json::parse(JsonRenderer::Render(OneCommand(command)));
    EXPECT_EQ(report["commands"][0]["command"], "SELECTPRED \uFFFDy");
    EXPECT_EQ(report["commands"][0]["tables"][0]["cells"][0]["value"], "\uFFFD");
}

TEST(JsonRenderer, AChartWithoutAGrammarHasNull) {
    CommandReport command;
    command.fvItems = {ReportChart{"Chart", "A chart", "{not json", "", {}, {}}};
    const Json report = Json::parse(JsonRenderer::Render(OneCommand(command)));
    EXPECT_TRUE(report["commands"][0]["charts"][0]["vegaLite"].is_null());
}

TEST(JsonRenderer, TheSameReportGivesTheSameBytes) {
    EXPECT_EQ(JsonRenderer::Render(OneCommand(FullCommand())),
              JsonRenderer::Render(OneCommand(FullCommand())));
}

RC_GTEST_PROP(JsonRenderer, NumbersReadBackAsTheSameDoubles, (double value)) {
    CommandReport command;
    ReportTable table;
    table.fvCells = {{{}, value, "", ReportFormat::GeneralStat, {}}};
    command.fvItems = {table};
    const Json report = Json::parse(JsonRenderer::Render(OneCommand(command)));
    RC_ASSERT(report["commands"][0]["tables"][0]["cells"][0]["value"].get<double>() == value);
}

}  // namespace
}  // namespace embedded
