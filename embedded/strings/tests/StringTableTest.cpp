#include "embedded/strings/StringTable.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tests/support/CaseName.h"

namespace embedded {
namespace {

TEST(StringTable, AKeyGivesItsText) {
    const StringTable table(R"({"Cases Used": "Cases used"})");
    EXPECT_EQ(table.Text("Cases Used"), "Cases used");
}

TEST(StringTable, AKeyWithoutAnEntryShowsItself) {
    const StringTable table(R"({"a": "b"})");
    EXPECT_EQ(table.Text("No such key..."), "No such key...");
}

TEST(StringTable, KeysKeepTheirBackslashes) {
    EXPECT_EQ(StringTable::English().Text("[%1:\\n ^1:]1"), "[%1:\\n^1:]1");
}

TEST(StringTable, NoEnglishTextIsEmptyOrEndsInThreeDots) {
    ASSERT_GT(StringTable::English().All().size(), 100U);
    for (const auto& [key, text] : StringTable::English().All()) {
        EXPECT_FALSE(text.empty()) << key;
        EXPECT_FALSE(text.ends_with("...")) << key;
    }
}

struct BadTable {
    const char* fName;
    const char* fJson;
};

class StringTableRefuses : public testing::TestWithParam<BadTable> {};

TEST_P(StringTableRefuses, WhatIsNoTableOfTexts) {
    EXPECT_THROW(StringTable{GetParam().fJson}, std::invalid_argument);
}

INSTANTIATE_TEST_SUITE_P(Faults, StringTableRefuses,
                         testing::Values(BadTable{"TheSameKeyTwice", R"({"a": "1", "a": "2"})"},
                                         BadTable{"ANumber", R"({"a": 1})"},
                                         BadTable{"ANestedObject", R"({"a": {"b": "c"}})"},
                                         BadTable{"AnArray", R"(["a", "b"])"},
                                         BadTable{"ABareText", R"("a")"},
                                         BadTable{"NoJson", R"({"a": )"}, BadTable{"Nothing", ""}),
                         testsupport::CaseName());

}  // namespace
}  // namespace embedded
