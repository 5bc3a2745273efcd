#include "embedded/output/DisplayWidth.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

namespace embedded {
namespace {

using Lines = std::vector<std::string>;

TEST(DisplayWidth, LettersTakeOneColumn) {
    EXPECT_EQ(DisplayWidth(""), 0U);
    EXPECT_EQ(DisplayWidth("abc"), 3U);
    EXPECT_EQ(DisplayWidth("Größe"), 5U);
    EXPECT_EQ(DisplayWidth("Καλημέρα"), 8U);
}

TEST(DisplayWidth, EastAsianCharactersAndEmojiTakeTwo) {
    EXPECT_EQ(DisplayWidth("日本語"), 6U);
    EXPECT_EQ(DisplayWidth("한국"), 4U);
    EXPECT_EQ(DisplayWidth("ＡＢ"), 4U);
    EXPECT_EQ(DisplayWidth("😀"), 2U);
}

TEST(DisplayWidth, CombiningAndFormatCharactersTakeNone) {
    EXPECT_EQ(DisplayWidth("e\u0301"), 1U);
    EXPECT_EQ(DisplayWidth("a\u200Db"), 2U);
    EXPECT_EQ(DisplayWidth("न\u093Fम\u0947"),
              3U);  // a vowel sign that stands apart, one that does not
}

TEST(DisplayWidth, BytesThatAreNoTextTakeOneColumnEach) { EXPECT_EQ(DisplayWidth("\xFF\xFE"), 2U); }

TEST(WrapText, BreaksAtBlanks) {
    EXPECT_EQ(WrapText("one two three", 7), (Lines{"one two", "three"}));
    EXPECT_EQ(WrapText("one two three", 100), (Lines{"one two three"}));
}

TEST(WrapText, AnEmptyTextIsOneEmptyLine) { EXPECT_EQ(WrapText("", 5), Lines{""}); }

TEST(WrapText, KeepsLineBreaksAndBlanksWithinALine) {
    EXPECT_EQ(WrapText("a  b\n\n  c", 10), (Lines{"a  b", "", "  c"}));
}

TEST(WrapText, IndentsContinuedLines) {
    EXPECT_EQ(WrapText("one two three\nfour", 7, 2), (Lines{"one two", "  three", "four"}));
}

TEST(WrapText, BreaksWordsThatAreTooWide) {
    EXPECT_EQ(WrapText("ab abcdefghij", 4), (Lines{"ab", "abcd", "efgh", "ij"}));
}

TEST(WrapText, NeverSplitsACharacter) {
    EXPECT_EQ(WrapText("日本語", 3), (Lines{"日", "本", "語"}));
    EXPECT_EQ(WrapText("日本", 1), (Lines{"日", "本"}));
    EXPECT_EQ(WrapText("e\u0301e\u0301e\u0301", 2), (Lines{"e\u0301e\u0301", "e\u0301"}));
}

TEST(WidestWord, CountsColumns) {
    EXPECT_EQ(WidestWord("one three\n日本語"), 6U);
    EXPECT_EQ(WidestWord(""), 0U);
}

RC_GTEST_PROP(WrapText, LosesNoWordAndKeepsTheWidth, ()) {
    const auto words = *rc::gen::container<std::vector<std::string>>(
        rc::gen::nonEmpty(rc::gen::string<std::string>()));
    std::string text;
    for (const std::string& word : words) {
        for (const char c : word) text += c >= '!' && c <= '~' ? c : 'x';
        text += ' ';
    }
    const auto width = *rc::gen::inRange<std::size_t>(1, 30);
    std::string letters;
    for (const std::string& line : WrapText(text, width)) {
        for (const char c : line)
            if (c != ' ') letters += c;
        const std::size_t end = line.find_last_not_of(' ') + 1;
        RC_ASSERT(end <= width);
    }
    std::string expected;
    for (const char c : text)
        if (c != ' ') expected += c;
    RC_ASSERT(letters == expected);
}

}  // namespace
}  // namespace embedded
