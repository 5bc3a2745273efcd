#include "embedded/data/Utf8.h"

#include <gtest/gtest.h>

namespace embedded {
namespace {

TEST(Utf8, WellFormedTextIsKept) {
    for (const char* text : {"", "abc", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                             "eight and more \xC3\xA4 ascii bytes around it"}) {
        EXPECT_TRUE(IsUtf8(text)) << text;
        EXPECT_EQ(ReplaceInvalidUtf8(text), text);
    }
}

TEST(Utf8, IllFormedTextIsFound) {
    for (const char* text : {"\x80", "\xC0\x80", "\xC3", "\xC3 ", "\xE2\x82", "\xED\xA0\x80",
                             "\xF4\x90\x80\x80", "\xF0\x80\x80\x80", "12345678\xFF"}) {
        EXPECT_FALSE(IsUtf8(text)) << text;
        EXPECT_TRUE(IsUtf8(ReplaceInvalidUtf8(text))) << text;
    }
}

TEST(Utf8, EachBadByteBecomesOneReplacement) {
    EXPECT_EQ(ReplaceInvalidUtf8("a\xFF\xFE"
                                 "b"),
              "a\xEF\xBF\xBD\xEF\xBF\xBD"
              "b");
}

TEST(Utf8, AppendedCodePointsReadBack) {
    for (const char32_t codePoint : {U'a', U'\u00E4', U'\u20AC', U'\U0001F600'}) {
        std::string text;
        AppendUtf8(codePoint, text);
        EXPECT_EQ(Utf8SequenceLength(text), text.size());
        EXPECT_TRUE(IsUtf8(text));
    }
}

}  // namespace
}  // namespace embedded
