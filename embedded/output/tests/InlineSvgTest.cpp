#include "embedded/output/InlineSvg.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace embedded {
namespace {

constexpr const char* kDrawing =
    "<svg xmlns=\"http://www.w3.org/2000/svg\" aria-labelledby=\"t d\"><title id=\"t\">A</title>"
    "<desc id=\"d\">B &amp; C</desc><style>.x{fill:red}</style>"
    "<clipPath id=\"c\"/><g clip-path=\"url(#c)\"><use href=\"#c\"/></g></svg>";

TEST(InlineSvg, ADrawingOfFreshIdsStaysAsItIs) {
    std::set<std::string> used = {"other"};
    const InlineSvg drawing(kDrawing, "p-", used);
    EXPECT_NE(drawing.fMarkup.find("aria-labelledby=\"t d\""), std::string::npos);
    EXPECT_NE(drawing.fMarkup.find("B &amp; C"), std::string::npos);
    EXPECT_EQ(drawing.fvStyles, std::vector<std::string>{".x{fill:red}"});
    EXPECT_EQ(used, (std::set<std::string>{"c", "d", "other", "t"}));
}

TEST(InlineSvg, TakenIdsGetThePrefixWithTheirReferences) {
    std::set<std::string> used = {"t"};
    const InlineSvg drawing(kDrawing, "p-", used);
    for (const char* part : {"aria-labelledby=\"p-t p-d\"", "id=\"p-t\"", "id=\"p-d\"",
                             "id=\"p-c\"", "url(#p-c)", "href=\"#p-c\""})
        EXPECT_NE(drawing.fMarkup.find(part), std::string::npos) << part;
    EXPECT_TRUE(used.contains("p-c"));
}

TEST(InlineSvg, WhatIsNoDrawingIsLeftOut) {
    std::set<std::string> used;
    EXPECT_EQ(InlineSvg("", "p-", used).fMarkup, "");
    EXPECT_EQ(InlineSvg("<svg><g></svg>", "p-", used).fMarkup, "");
    EXPECT_EQ(InlineSvg("<p>text</p>", "p-", used).fMarkup, "");
    EXPECT_TRUE(used.empty());
}

}  // namespace
}  // namespace embedded
