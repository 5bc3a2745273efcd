#include "embedded/output/HtmlRenderer.h"

#include <gtest/gtest.h>

#include <pugixml.hpp>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/output/Sha256.h"
#include "embedded/output/tests/SampleTables.h"

namespace embedded {
namespace {

class HtmlPage : public testing::Test {
 protected:
    void Render(const std::vector<CommandReport>& commands) {
        fPage = HtmlRenderer::Render({"1.2.3", commands});
        const pugi::xml_parse_result result =
            fDocument.load_string(fPage.c_str(), pugi::parse_default | pugi::parse_doctype);
        ASSERT_TRUE(result) << result.description() << " at " << result.offset << "\n" << fPage;
    }

    pugi::xml_node First(const char* path) const { return fDocument.select_node(path).node(); }
    std::size_t Number(const char* path) const { return fDocument.select_nodes(path).size(); }
    /// All text of an element.
    static std::string TextIn(pugi::xml_node node) {
        std::string text;
        for (pugi::xml_node child : node.children())
            text += child.type() == pugi::node_element ? TextIn(child) : child.value();
        return text;
    }

    std::string fPage;
    pugi::xml_document fDocument;
};

CommandReport TableCommand(const ReportTable& table) {
    CommandReport command;
    command.fCommand = "SELECTPRED y";
    command.fvItems = {table};
    return command;
}

ReportChart Chart(const std::string& style = "") {
    return {"Chart",
            "A chart",
            "{}",
            "<svg xmlns=\"http://www.w3.org/2000/svg\" role=\"img\" aria-labelledby=\"t\">"
            "<title id=\"t\">Bars</title><style>" +
                style + "</style></svg>",
            {"Predictor", "Sig."},
            {{{"Age", false}, {".013", true}}}};
}

TEST_F(HtmlPage, NamesItsLanguageAndFitsSmallScreens) {
    Render({});
    EXPECT_TRUE(fPage.starts_with("<!DOCTYPE html>"));
    EXPECT_STREQ(First("/html").attribute("lang").value(), "en");
    EXPECT_EQ(Number("//meta[@name='viewport']"), 1U);
    EXPECT_EQ(Number("//title"), 1U);
    EXPECT_EQ(Number("//main"), 1U);
    EXPECT_EQ(Number("//h1"), 1U);
}

TEST_F(HtmlPage, ThePolicyAdmitsItsOwnStylesAndNothingElse) {
    CommandReport command = TableCommand(PredictorTable());
    command.fvItems.emplace_back(Chart(".bar > g { fill: red }"));
    Render({command});
    const std::string policy =
        First("//meta[@http-equiv='Content-Security-Policy']").attribute("content").value();
    EXPECT_TRUE(policy.starts_with("default-src 'none'; base-uri 'none'; form-action 'none'; "));
    EXPECT_EQ(policy.find("unsafe"), std::string::npos);
    std::size_t styles = 0;
    for (const auto& style : fDocument.select_nodes("//*[local-name()='style']")) {
        const std::string text = TextIn(style.node());
        EXPECT_NE(policy.find("'sha256-" + Sha256Base64(text) + "'"), std::string::npos) << text;
        ++styles;
    }
    EXPECT_EQ(styles, 2U);
    EXPECT_EQ(Number("//script"), 0U);
    EXPECT_EQ(Number("//@style"), 0U);
    EXPECT_EQ(Number("//@onclick"), 0U);
}

TEST_F(HtmlPage, HeadingCellsSayWhatTheyHead) {
    Render({TableCommand(PredictorTable())});
    EXPECT_EQ(TextIn(First("//caption")), "Predictor Summary");
    EXPECT_EQ(Number("//thead/tr"), 2U);
    const pugi::xml_node group = First("//th[@scope='colgroup']");
    EXPECT_EQ(TextIn(group), "Pearson Chi-Square");
    EXPECT_STREQ(group.attribute("colspan").value(), "2");
    const pugi::xml_node rank = First("//th[@scope='col' and text()='Rank']");
    EXPECT_STREQ(rank.attribute("rowspan").value(), "2");
    EXPECT_STREQ(rank.attribute("class").value(), "number");
    const pugi::xml_node corner = First("//thead/tr[1]/th[1]");
    EXPECT_EQ(TextIn(corner), "Predictor");
    EXPECT_STREQ(corner.attribute("colspan").value(), "2");
    const pugi::xml_node selected = First("//tbody/tr[1]/th[1]");
    EXPECT_STREQ(selected.attribute("scope").value(), "rowgroup");
    EXPECT_STREQ(selected.attribute("rowspan").value(), "2");
    EXPECT_EQ(TextIn(First("//tbody/tr[2]/th[1]")), "Income");
    EXPECT_EQ(Number("//tbody/tr/th[@scope='row']"), 3U);
}

TEST_F(HtmlPage, EveryRowFillsTheTable) {
    ReportTable table = PredictorTable();
    table.fvDimensions[0].fvHeadings.push_back(Leaf("Total"));
    Render({TableCommand(table)});
    for (const auto& row : fDocument.select_nodes("//tbody/tr")) {
        unsigned cells = 0;
        for (pugi::xml_node cell : row.node().children())
            cells += cell.attribute("colspan").as_uint(1);
        const bool under = TextIn(row.node()).starts_with("Income");
        EXPECT_EQ(cells, under ? 5U : 6U) << TextIn(row.node());
    }
}

TEST_F(HtmlPage, FootnotesAreMarkedAndExplained) {
    Render({TableCommand(PredictorTable())});
    EXPECT_EQ(TextIn(First("//td[sup]")), "1234.500a");
    EXPECT_EQ(TextIn(First("//th[sup]")), "Unselectedb");
    EXPECT_EQ(TextIn(First("//div[@class='under']/p[2]")),
              "b Limited to the first 1 unselected predictors.");
}

TEST_F(HtmlPage, WideTablesCanBeScrolledWithTheKeyboard) {
    Render({TableCommand(PredictorTable())});
    const pugi::xml_node scroll = First("//div[@class='scroll']");
    EXPECT_STREQ(scroll.attribute("tabindex").value(), "0");
    const std::string caption = First("//caption").attribute("id").value();
    EXPECT_EQ(scroll.attribute("aria-labelledby").value(), caption);
}

TEST_F(HtmlPage, TextsOfTheDataCannotBecomeMarkup) {
    ReportTable table;
    const std::string hostile = "<script>alert(\"1\")</script> & 'x'";
    table.fTitle = hostile;
    table.fCaption = hostile;
    ReportHeading row = Leaf(hostile);
    row.fvNotes = {hostile};
    table.fvDimensions = {Dimension(hostile, ReportAxis::Row, {row}, 1, true),
                          Dimension(hostile, ReportAxis::Column, {Leaf(hostile)}, 1, true)};
    table.fvCells = {TextCell({0, 0}, hostile)};
    CommandReport command = TableCommand(table);
    command.fCommand = hostile;
    command.fvNotes = {{4, hostile, hostile}};
    command.fvMessages = {{MessageLevel::Error, hostile, hostile}};
    command.fvItems.emplace_back(
        ReportChart{hostile, hostile, "", "", {hostile}, {{{hostile, false}}}});
    Render({command});
    EXPECT_EQ(Number("//script"), 0U);
    EXPECT_EQ(TextIn(First("//caption")), hostile);
    EXPECT_EQ(TextIn(First("//td[@class='text']")), hostile);
}

TEST_F(HtmlPage, BytesThatAreNoTextAreReplaced) {
    ReportTable table;
    table.fTitle = "a\xFF\x01";
    Render({TableCommand(table)});
    EXPECT_EQ(TextIn(First("//h3")), "a\uFFFD\uFFFD");
}

TEST_F(HtmlPage, AnEmptyTableSaysSo) {
    ReportTable table;
    table.fTitle = "Nothing";
    Render({TableCommand(table)});
    EXPECT_EQ(Number("//table"), 0U);
    EXPECT_NE(fPage.find("The table is empty."), std::string::npos);
}

TEST_F(HtmlPage, AChartComesWithItsDataAsATable) {
    CommandReport command;
    command.fvItems = {Chart()};
    Render({command});
    EXPECT_EQ(TextIn(First("//figure/figcaption")), "A chart");
    EXPECT_EQ(Number("//figure/*[local-name()='svg']"), 1U);
    EXPECT_EQ(TextIn(First("//figure/details//tbody/tr/th[@scope='row']")), "Age");
    EXPECT_EQ(TextIn(First("//figure/details//td[@class='number']")), ".013");
}

TEST_F(HtmlPage, IdsAreUniqueAndEveryReferenceHasItsTarget) {
    CommandReport command = TableCommand(PredictorTable());
    command.fvItems.emplace_back(Chart());
    command.fvItems.emplace_back(PredictorTable());
    Render({command, command});
    std::set<std::string> ids;
    for (const auto& id : fDocument.select_nodes("//@id"))
        EXPECT_TRUE(ids.insert(id.attribute().value()).second) << id.attribute().value();
    std::size_t references = 0;
    for (const auto& reference : fDocument.select_nodes("//@aria-labelledby")) {
        EXPECT_TRUE(ids.contains(reference.attribute().value())) << reference.attribute().value();
        ++references;
    }
    EXPECT_EQ(references, 2U * 3 + 2);  // tables with the charts' data, drawings
}

TEST_F(HtmlPage, MessagesNotesAndStatusAreShown) {
    CommandReport command;
    command.fStatus = CommandStatus::Failed;
    command.fvMessages = {{MessageLevel::Warning, "k", "Look here."},
                          {MessageLevel::Error, "k", "This is wrong."}};
    command.fvNotes = {{4, "Cases Used", "All."}};
    Render({command});
    EXPECT_EQ(TextIn(First("//p[@class='message warning']")), "Warning: Look here.");
    EXPECT_EQ(TextIn(First("//p[@class='message error']")), "Error: This is wrong.");
    EXPECT_EQ(TextIn(First("//dl/dt")), "Cases Used");
    EXPECT_EQ(TextIn(First("//p[@class='status']")), "The command failed.");
}

TEST_F(HtmlPage, TheSameReportGivesTheSameBytes) {
    const Report report{"1", {TableCommand(PredictorTable())}};
    EXPECT_EQ(HtmlRenderer::Render(report), HtmlRenderer::Render(report));
}

}  // namespace
}  // namespace embedded
