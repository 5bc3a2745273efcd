#include "embedded/command/CommandFault.h"

#include <gtest/gtest.h>

#include <string>

#include "embedded/command/CharacterClasses.h"
#include "embedded/output/DisplayWidth.h"

namespace embedded {
namespace {

std::string ExcerptOf(const std::string& text, TextPlace place) {
    return Excerpt(SourceText("test", text), place);
}

TEST(Excerpt, CaretStandsUnderTheCharacter) {
    EXPECT_EQ(ExcerptOf("SELECTPRED y BY x", {1, 12}), "SELECTPRED y BY x\n           ^");
    EXPECT_EQ(ExcerptOf("a\nbc\nd", {2, 2}), "bc\n ^");
    EXPECT_EQ(ExcerptOf("x", {1, 1}), "x\n^");
}

TEST(Excerpt, CaretMayStandBehindTheLine) { EXPECT_EQ(ExcerptOf("abc\n", {1, 4}), "abc\n   ^"); }

TEST(Excerpt, LinesEndAtAnyLineBreak) {
    EXPECT_EQ(ExcerptOf("a\r\nbc\r\nd", {2, 1}), "bc\n^");
    EXPECT_EQ(ExcerptOf("a\rbc\rd", {2, 1}), "bc\n^");
}

TEST(Excerpt, TabsStayTabsInBothLines) { EXPECT_EQ(ExcerptOf("\ta\tb", {1, 4}), "\ta\tb\n\t \t^"); }

TEST(Excerpt, CharactersCountNotBytes) {
    EXPECT_EQ(ExcerptOf("Größe ?", {1, 7}), "Größe ?\n      ^");
}

TEST(Excerpt, WideCharactersMoveTheCaretByTwo) {
    EXPECT_EQ(ExcerptOf("年齢 ?", {1, 4}), "年齢 ?\n     ^");
}

TEST(Excerpt, CombiningCharactersDoNotMoveTheCaret) {
    EXPECT_EQ(ExcerptOf("e\u0301 ?", {1, 4}), "e\u0301 ?\n  ^");
}

TEST(Excerpt, BadBytesAndControlsAreReplaced) {
    EXPECT_EQ(ExcerptOf("a\xFF\x1b[31m?", {1, 8}), "a\uFFFD\uFFFD[31m?\n       ^");
}

TEST(Excerpt, LongLinesShowThePartAroundTheCaret) {
    std::string line(5000, 'a');
    line[3000] = '?';
    const std::string excerpt = ExcerptOf(line, {1, 3001});
    const std::size_t end = excerpt.find('\n');
    const std::string shown = excerpt.substr(0, end), caret = excerpt.substr(end + 1);
    EXPECT_LE(DisplayWidth(shown), 80u);
    EXPECT_TRUE(shown.starts_with("\u2026a"));
    EXPECT_TRUE(shown.ends_with("a\u2026"));
    EXPECT_EQ(DisplayWidth(shown.substr(0, shown.find('?'))), caret.find('^'));
}

TEST(Excerpt, LinesOfScreenWidthAreShownWhole) {
    const std::string line = std::string(77, 'a') + "?";
    EXPECT_EQ(ExcerptOf(line, {1, 78}), line + "\n" + std::string(77, ' ') + "^");
}

TEST(Excerpt, LongLinesAreCutOnlyWhereTheyAreLong) {
    EXPECT_EQ(ExcerptOf("?" + std::string(100, 'a'), {1, 1}),
              "?" + std::string(23, 'a') + "\u2026\n^");
    EXPECT_EQ(ExcerptOf(std::string(100, 'a') + "?", {1, 101}),
              "\u2026" + std::string(48, 'a') + "?\n" + std::string(49, ' ') + "^");
}

TEST(MakeFault, NamesFileLineAndColumn) {
    const CommandFault fault = MakeFault("Unknown variable ^1 ^2...", {"agee", "did you mean age?"},
                                         SourceText("a.pred", "SELECTPRED y BY agee"), {1, 17});
    EXPECT_EQ(fault.fKey, "Unknown variable ^1 ^2...");
    EXPECT_EQ(fault.Lines(),
              "a.pred:1:17: There is no variable agee; did you mean age?\n"
              "SELECTPRED y BY agee\n"
              "                ^");
}

TEST(MakeFault, UnknownPlaceLeavesOutPlaceAndExcerpt) {
    const CommandFault fault = MakeFault("Zero byte in command...", {}, SourceText("a", "b"), {});
    EXPECT_TRUE(fault.fExcerpt.empty());
    EXPECT_EQ(fault.Lines(), fault.fText);
    EXPECT_FALSE(fault.fText.starts_with("a:"));
}

TEST(ShownText, KeepsMessagesShortAndOnOneLine) {
    EXPECT_EQ(ShownText("age"), "age");
    EXPECT_EQ(ShownText("a\nb"), "a b");
    EXPECT_EQ(ShownText(std::string(61, 'a')), std::string(60, 'a') + "\u2026");
    EXPECT_EQ(ShownText(std::string(60, 'a')), std::string(60, 'a'));
    EXPECT_EQ(ShownText("\x01"), "\uFFFD");
}

TEST(CharacterClasses, NamesCharactersByShapeAndCode) {
    EXPECT_EQ(NamedCharacter("%"), "% (U+0025)");
    EXPECT_EQ(NamedCharacter("\u2013x"), "\u2013 (U+2013)");
    EXPECT_EQ(NamedCharacter("\u200B"), "U+200B");
    EXPECT_EQ(NamedCharacter("\x07"), "U+0007");
}

TEST(CharacterClasses, CountsCharactersOfAllLengths) {
    EXPECT_EQ(CountCharacters("aß年😀"), 4);
    EXPECT_EQ(CountCharacters("\xFF\xC3"), 2);
    EXPECT_EQ(CountCharacters(""), 0);
}

TEST(CharacterClasses, ReplacementCharacterIsValidText) {
    EXPECT_TRUE(ReadCharacter("\uFFFD", 0).fbValid);
    EXPECT_FALSE(ReadCharacter("\xFF", 0).fbValid);
}

}  // namespace
}  // namespace embedded
