#include "embedded/output/ShowableText.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/CaseName.h"

namespace embedded {
namespace {

struct ShowableCase {
    const char* fName;
    std::string fText;
    const char* fExpected;
};

class ShowableTextOf : public testing::TestWithParam<ShowableCase> {};

TEST_P(ShowableTextOf, Text) { EXPECT_EQ(ShowableText(GetParam().fText), GetParam().fExpected); }

INSTANTIATE_TEST_SUITE_P(
    Texts, ShowableTextOf,
    testing::Values(ShowableCase{"PlainStays", "Größe 日本 😀", "Größe 日本 😀"},
                    ShowableCase{"AStrayByte",
                                 "a\xFF"
                                 "b",
                                 "a\xEF\xBF\xBD"
                                 "b"},
                    ShowableCase{"ACutSequence", "a\xE6\x97", "a\xEF\xBF\xBD\xEF\xBF\xBD"},
                    ShowableCase{"AnOverlongForm", "\xC0\xAF", "\xEF\xBF\xBD\xEF\xBF\xBD"},
                    ShowableCase{"ASurrogate", "\xED\xA0\x80",
                                 "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
                    ShowableCase{"TerminalEscapes", "\x1b[31mred", "\xEF\xBF\xBD[31mred"},
                    ShowableCase{"NulAndDelete", std::string("a\0b\x7f", 4),
                                 "a\xEF\xBF\xBD"
                                 "b\xEF\xBF\xBD"},
                    ShowableCase{"ATabIsABlank", "a\tb", "a b"},
                    ShowableCase{"LineBreaksAreOneKind", "a\r\nb\rc\nd", "a\nb\nc\nd"}),
    testsupport::CaseName());

}  // namespace
}  // namespace embedded
