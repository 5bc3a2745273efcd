#include "embedded/data/TextDecoding.h"

#include <gtest/gtest.h>

#include <string>

#include "embedded/data/Utf8.h"

namespace embedded {
namespace {

std::string Utf16(std::u16string_view text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

std::string Decoded(const std::string& bytes, TextEncoding encoding = TextEncoding::kDetect) {
    return std::string(DecodedText(bytes, encoding).Get());
}

TEST(DecodedText, Utf8IsTakenAsItIsAndItsMarkIsDropped) {
    EXPECT_EQ(Decoded("a,\xC3\xA4"), "a,\xC3\xA4");
    EXPECT_EQ(Decoded("\xEF\xBB\xBFname"), "name");
    EXPECT_EQ(DecodedText("name", TextEncoding::kDetect).Encoding(), TextEncoding::kUtf8);
}

TEST(DecodedText, Utf16IsFoundByItsMark) {
    const std::u16string text = u"\uFEFFn\u00E4me,\U0001F600\n";
    for (const bool bigEndian : {false, true}) {
        EXPECT_EQ(Decoded(Utf16(text, bigEndian)), "n\xC3\xA4me,\xF0\x9F\x98\x80\n");
    }
}

TEST(DecodedText, Utf16WithoutMarkIsFoundByItsZeros) {
    for (const bool bigEndian : {false, true}) {
        EXPECT_EQ(Decoded(Utf16(u"name,value\n1,2\n", bigEndian)), "name,value\n1,2\n");
    }
}

TEST(DecodedText, LoneSurrogatesAndAnOddByteStayUndecodable) {
    const std::string text = Decoded(Utf16(u"\uFEFF"
                                           u"a\xD800"
                                           u"b\xDC00"
                                           u"c",
                                           false) +
                                     "x");
    EXPECT_EQ(text,
              "a\xFF"
              "b\xFF"
              "c\xFF");
}

TEST(DecodedText, BytesBeyondAsciiThatAreNoUtf8AreWindows1252) {
    const DecodedText text("M\xFCller;\x80 5;\x96", TextEncoding::kDetect);
    EXPECT_EQ(text.Get(), "M\xC3\xBCller;\xE2\x82\xAC 5;\xE2\x80\x93");
    EXPECT_EQ(text.Encoding(), TextEncoding::kLatin1);
}

TEST(DecodedText, AFewBadBytesAmongUtf8LeaveItUtf8) {
    const std::string bytes = "\xC3\xA4\xC3\xB6\xC3\xBC \xFF";
    const DecodedText text(bytes, TextEncoding::kDetect);
    EXPECT_EQ(text.Encoding(), TextEncoding::kUtf8);
    EXPECT_EQ(text.Get(), bytes);
}

TEST(DecodedText, TheOptionBeatsDetection) {
    EXPECT_EQ(Decoded("\xC3\xA4", TextEncoding::kLatin1), "\xC3\x83\xC2\xA4");
    EXPECT_EQ(Decoded("\xFC", TextEncoding::kUtf8), "\xFC");
    EXPECT_EQ(Decoded("\xE4\xF6", TextEncoding::kUtf16), "\xEF\x9B\xA4");
}

TEST(DecodedText, EveryWindows1252ByteDecodes) {
    std::string bytes;
    for (int byte = 1; byte < 256; ++byte) {
        bytes.push_back(static_cast<char>(byte));
    }
    EXPECT_TRUE(IsUtf8(Decoded(bytes, TextEncoding::kLatin1)));
}

}  // namespace
}  // namespace embedded
