#include "embedded/charts/SvgText.h"

#include <gtest/gtest.h>

namespace embedded {
namespace {

TEST(SvgText, WidthGrowsWithTheTextAndTheSize) {
    EXPECT_EQ(EstimatedTextWidth("", 10), 0.0);
    EXPECT_DOUBLE_EQ(EstimatedTextWidth("abab", 10), 2 * EstimatedTextWidth("ab", 10));
    EXPECT_DOUBLE_EQ(EstimatedTextWidth("ab", 20), 2 * EstimatedTextWidth("ab", 10));
    EXPECT_LT(EstimatedTextWidth("il", 10), EstimatedTextWidth("ab", 10));
    EXPECT_GT(EstimatedTextWidth("WM", 10), EstimatedTextWidth("ab", 10));
}

TEST(SvgText, WideCharactersTakeMoreAndCombiningOnesNone) {
    EXPECT_GT(EstimatedTextWidth("\xE5\xB9\xB4", 10), EstimatedTextWidth("a", 10));
    EXPECT_DOUBLE_EQ(EstimatedTextWidth("e\xCC\x81", 10), EstimatedTextWidth("e", 10));
}

TEST(SvgText, TextThatFitsIsLeftAlone) {
    const double width = EstimatedTextWidth("Income", 12);
    EXPECT_EQ(ShortenedText("Income", 12, width), "Income");
    EXPECT_NE(ShortenedText("Income", 12, width - 0.01), "Income");
}

TEST(SvgText, ShortenedTextFitsAndKeepsWholeCharacters) {
    const std::string text = "\xC3\xA4\xC3\xB6\xC3\xBC \xE5\xB9\xB4\xE9\xBD\xA2 and some more";
    for (double width = 20; width < 150; width += 3) {
        const std::string shortened = ShortenedText(text, 10, width);
        // The widths are added up in another order here.
        EXPECT_LE(EstimatedTextWidth(shortened, 10), width + 1e-9);
        EXPECT_EQ(shortened.find("\xEF\xBF\xBD"), std::string::npos);
        const std::string kept = shortened.substr(0, shortened.size() - 3);
        EXPECT_EQ(text.compare(0, kept.size(), kept), 0);
        const bool cutsInside = kept.size() < text.size() &&
                                (static_cast<unsigned char>(text[kept.size()]) & 0xC0) == 0x80;
        EXPECT_FALSE(cutsInside) << width;
        EXPECT_FALSE(kept.ends_with(' '));
    }
}

}  // namespace
}  // namespace embedded
