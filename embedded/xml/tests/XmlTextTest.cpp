#include "embedded/xml/XmlText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>

namespace embedded {
namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";

TEST(XmlText, MarkupCharactersAreEscaped) {
    EXPECT_EQ(EscapeXml("a<b> & \"c\" 'd'"), "a&lt;b&gt; &amp; &quot;c&quot; 'd'");
}

TEST(XmlText, BlanksThatReadersWouldChangeAreEscaped) {
    EXPECT_EQ(EscapeXml("a\tb\nc\rd"), "a&#9;b&#10;c&#13;d");
}

TEST(XmlText, CharactersOfAllLengthsPassUnchanged) {
    const std::string text =
        "Gr\xC3\xB6\xC3\x9F"
        "e \xE2\x82\xAC \xF0\x9F\x93\x88";
    EXPECT_EQ(EscapeXml(text), text);
}

struct BadBytes {
    const char* fName;
    std::string fText;
    int fReplacements;
};

class UnfitForXml : public testing::TestWithParam<BadBytes> {};

TEST_P(UnfitForXml, BecomesReplacementCharacters) {
    std::string expected = "a";
    for (int i = 0; i < GetParam().fReplacements; ++i) expected += kReplacement;
    EXPECT_EQ(EscapeXml("a" + GetParam().fText + "b"), expected + "b");
}

INSTANTIATE_TEST_SUITE_P(Texts, UnfitForXml,
                         testing::Values(BadBytes{"ControlCharacter", "\x01", 1},
                                         BadBytes{"Nul", std::string(1, '\0'), 1},
                                         BadBytes{"LoneContinuation", "\x80", 1},
                                         BadBytes{"CutSequence", "\xE2\x82", 2},
                                         BadBytes{"OverlongSlash", "\xC0\xAF", 2},
                                         BadBytes{"OverlongInThreeBytes", "\xE0\x80\xAF", 3},
                                         BadBytes{"OverlongInFourBytes", "\xF0\x80\x80\xAF", 4},
                                         BadBytes{"Surrogate", "\xED\xA0\x80", 3},
                                         BadBytes{"NoCharacter", "\xEF\xBF\xBE", 3},
                                         BadBytes{"BeyondTheLastCharacter", "\xF4\x90\x80\x80", 4},
                                         BadBytes{"Latin1Letter", "\xE9", 1}),
                         [](const auto& test) { return std::string(test.param.fName); });

TEST(XmlText, SequenceCutByTheEndOfTheTextIsReplaced) {
    EXPECT_EQ(EscapeXml("a\xC3"), std::string("a") + kReplacement);
}

TEST(XmlText, WholeNumbersHaveNoPoint) {
    EXPECT_EQ(RoundTripText(5.0), "5");
    EXPECT_EQ(RoundTripText(-0.5), "-0.5");
    EXPECT_EQ(RoundTripText(0.1), "0.1");
}

TEST(XmlText, AnyFiniteDoubleReadsBackTheSame) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        double value;
        static_assert(sizeof value == sizeof bits);
        std::memcpy(&value, &bits, sizeof value);
        if (!std::isfinite(value)) continue;
        EXPECT_EQ(std::strtod(RoundTripText(value).c_str(), nullptr), value);
    }
    for (const double value :
         {std::numeric_limits<double>::max(), std::numeric_limits<double>::denorm_min()}) {
        EXPECT_EQ(std::strtod(RoundTripText(value).c_str(), nullptr), value);
    }
}

}  // namespace
}  // namespace embedded
