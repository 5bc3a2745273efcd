#include "embedded/output/TextRenderer.h"

#include <gtest/gtest.h>

#include <string>

#include "embedded/output/tests/SampleTables.h"

namespace embedded {
namespace {

CommandReport OneCommand() {
    CommandReport command;
    command.fCommand = "SELECTPRED region";
    command.fvNotes = {{4, "Definition of Missing", "Treated as missing."},
                       {4, "Cases Used", "Each statistic is based on all cases with valid data."}};
    command.fvMessages = {{MessageLevel::Warning, "key", "No predictors were excluded."}};
    return command;
}

std::string Rendered(const CommandReport& command, TextStyle style = {}) {
    return TextRenderer::Render({"1", {command}}, style);
}

TEST(TextRenderer, MessagesComeBeforeNotes) {
    EXPECT_EQ(Rendered(OneCommand()),
              "Warning: No predictors were excluded.\n"
              "\n"
              "Notes\n"
              "  Definition of Missing  Treated as missing.\n"
              "  Cases Used             Each statistic is based on all cases with valid data.\n");
}

TEST(TextRenderer, NotesAreWrappedInTheirColumn) {
    TextStyle style;
    style.fWidth = 50;
    EXPECT_EQ(Rendered(OneCommand(), style),
              "Warning: No predictors were excluded.\n"
              "\n"
              "Notes\n"
              "  Definition of Missing  Treated as missing.\n"
              "  Cases Used             Each statistic is based\n"
              "                         on all cases with valid\n"
              "                         data.\n");
}

TEST(TextRenderer, MessagesAreWrapped) {
    CommandReport command;
    command.fvMessages = {{MessageLevel::Error, "key", "This line is longer than that."}};
    TextStyle style;
    style.fWidth = 20;
    EXPECT_EQ(Rendered(command, style),
              "Error: This line is\n"
              "  longer than that.\n");
}

TEST(TextRenderer, MessagesWithLinesOfTheirOwnKeepThem) {
    CommandReport command;
    command.fvMessages = {{MessageLevel::Error, "key",
                           "No such variable.\n    SELECTPRED y BY zz\n                  ^"}};
    TextStyle style;
    style.fWidth = 20;
    EXPECT_EQ(Rendered(command, style),
              "Error: No such variable.\n"
              "    SELECTPRED y BY zz\n"
              "                  ^\n");
}

TEST(TextRenderer, TablesFollowInTheirOrderWithABlankLineBetween) {
    CommandReport command;
    ReportTable first;
    first.fTitle = "First";
    ReportTable second;
    second.fTitle = "Second";
    command.fvItems = {first, ReportChart{}, second};
    EXPECT_EQ(Rendered(command), "First\nThe table is empty.\n\nSecond\nThe table is empty.\n");
}

TEST(TextRenderer, SeveralCommandsAreNamed) {
    CommandReport other = OneCommand();
    other.fCommand = "SELECTPRED code";
    other.fvNotes.clear();
    CommandReport first = OneCommand();
    first.fvNotes.clear();
    EXPECT_EQ(TextRenderer::Render({"1", {first, other}}, {}),
              "SELECTPRED region\n\nWarning: No predictors were excluded.\n\n"
              "SELECTPRED code\n\nWarning: No predictors were excluded.\n");
}

TEST(TextRenderer, OneCommandIsNamedWhenAskedFor) {
    TextStyle style;
    style.fbShowCommand = true;
    EXPECT_TRUE(Rendered(OneCommand(), style).starts_with("SELECTPRED region\n\n"));
}

TEST(TextRenderer, AFailedCommandSaysSo) {
    CommandReport command;
    command.fStatus = CommandStatus::Failed;
    EXPECT_EQ(Rendered(command), "The command failed.\n");
    command.fStatus = CommandStatus::Interrupted;
    EXPECT_EQ(Rendered(command), "The command was interrupted.\n");
}

TEST(TextRenderer, ColourMarksLevelsAndTitles) {
    TextStyle style;
    style.fbColor = true;
    const std::string text = Rendered(OneCommand(), style);
    EXPECT_TRUE(text.starts_with("\x1b[1;33mWarning\x1b[0m: No predictors were excluded.\n"));
    EXPECT_NE(text.find("\x1b[1mNotes\x1b[0m\n"), std::string::npos);
    CommandReport failed;
    failed.fStatus = CommandStatus::Failed;
    EXPECT_EQ(Rendered(failed, style), "\x1b[1;31mThe command failed.\x1b[0m\n");
}

TEST(TextRenderer, WithoutColourThereIsNoEscapeEvenFromTheData) {
    CommandReport command = OneCommand();
    command.fCommand = "SELECTPRED \x1b[31my";
    command.fvMessages[0].fText = "\x1b[2J";
    TextStyle style;
    style.fbShowCommand = true;
    EXPECT_EQ(Rendered(command, style).find('\x1b'), std::string::npos);
}

TEST(TextRenderer, AnEmptyReportIsEmpty) { EXPECT_EQ(TextRenderer::Render({"1", {}}, {}), ""); }

}  // namespace
}  // namespace embedded
