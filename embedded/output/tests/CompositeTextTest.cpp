#include "embedded/output/CompositeText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/CaseName.h"

namespace embedded {
namespace {

struct CompositeCase {
    const char* fName;
    const char* fTemplate;
    std::vector<std::string> fvArguments;
    std::vector<std::vector<std::string>> fvLists;
    const char* fExpected;
};

class CompositeTextOf : public testing::TestWithParam<CompositeCase> {};

TEST_P(CompositeTextOf, Template) {
    const CompositeCase& c = GetParam();
    EXPECT_EQ(CompositeText(c.fTemplate, c.fvArguments, c.fvLists), c.fExpected);
}

INSTANTIATE_TEST_SUITE_P(
    Templates, CompositeTextOf,
    testing::Values(
        CompositeCase{"NoPlaceholder", "plain", {"x"}, {}, "plain"},
        CompositeCase{"Empty", "", {"x"}, {}, ""},
        CompositeCase{
            "ArgumentsInAnyOrder", "^1 in ^3, not ^2", {"a", "b", "c"}, {}, "a in c, not b"},
        CompositeCase{"AnArgumentTwice", "^1 and ^1", {"a"}, {}, "a and a"},
        CompositeCase{"AnArgumentThatIsMissingStays", "^1 and ^2", {"a"}, {}, "a and ^2"},
        CompositeCase{"NoSubstitutionInsideArguments", "^1 ^2", {"^2", "b"}, {}, "^2 b"},
        CompositeCase{"ALoneCaretStays", "2^x ^", {"a"}, {}, "2^x ^"},
        CompositeCase{"EmptyList", "<[%1:, ^1:]1>", {}, {{}}, "<>"},
        CompositeCase{"ListOfOne", "[%1:, ^1:]1", {}, {{"a"}}, "a"},
        CompositeCase{"ListOfThree", "[%1:, ^1:]1", {}, {{"a", "b", "c"}}, "a, b, c"},
        CompositeCase{"ListOnLines", "[%1:\\n ^1:]1", {}, {{"a", "b", "c"}}, "a\n b\n c"},
        CompositeCase{"ListAmongWords", "It has [%1:, ^1:]1.", {}, {{"a", "b"}}, "It has a, b."},
        CompositeCase{"ListBesideAnArgument", "^1: [%1: ^1:]1", {"x"}, {{"a", "b"}}, "x: a b"},
        CompositeCase{"TwoLists", "[%1: ^1:]2/[%1:+^1:]1", {}, {{"a", "b"}, {"c", "d"}}, "c d/a+b"},
        CompositeCase{"AListThatIsMissingStays", "[%1:, ^1:]2", {}, {{"a"}}, "[%1:, ^1:]2"},
        CompositeCase{"BracketsThatAreNoList", "[0, 1] of ^1", {"a"}, {}, "[0, 1] of a"},
        CompositeCase{
            "ElementsAreNotTemplates", "[%1:, ^1:]1", {}, {{"^1", "[%1:x:]1"}}, "^1, [%1:x:]1"},
        CompositeCase{"LineBreak", "a\\nb", {}, {}, "a\nb"},
        CompositeCase{"ABackslashBeforeAnotherLetterStays", "a\\tb\\", {}, {}, "a\\tb\\"}),
    testsupport::CaseName());

TEST(CompositeText, KnowsTemplatesThatAreOneList) {
    EXPECT_TRUE(IsListTemplate("[%1: ^1:]1"));
    EXPECT_TRUE(IsListTemplate("[%1:\\n ^1:]1"));
    EXPECT_FALSE(IsListTemplate("The initial subset contains [%1:, ^1:]1"));
    EXPECT_FALSE(IsListTemplate("[%1: ^1:]1."));
    EXPECT_FALSE(IsListTemplate("^1"));
    EXPECT_FALSE(IsListTemplate(""));
}

}  // namespace
}  // namespace embedded
