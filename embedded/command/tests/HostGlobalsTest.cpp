#include "host/HostGlobals.h"

#include <gtest/gtest.h>

namespace {

TEST(HostGlobals, BlocksStayAtTheirAddress) {
    std::int64_t* words = pvGetCmnGlb();
    words[kPreservedWordA] = 17;
    EXPECT_EQ(pvGetCmnGlb(), words);
    EXPECT_EQ(pvGetCmnGlb()[kPreservedWordA], 17);
    EXPECT_EQ(pvGetCmaSys(), pvGetCmaSys());
    words[kPreservedWordA] = 0;
}

TEST(HostGlobals, CommandWordsAreEqualWithoutRegardToCase) {
    EXPECT_TRUE(AreStringsEqualCase("SEL", "sel"));
    EXPECT_TRUE(AreStringsEqualCase("", ""));
    EXPECT_FALSE(AreStringsEqualCase("SEL", "SELE"));
    EXPECT_FALSE(AreStringsEqualCase("SELE", "SEL"));
    EXPECT_FALSE(AreStringsEqualCase("SEL", "NAI"));
}

TEST(HostGlobals, OnlyAsciiLettersHaveCase) {
    EXPECT_FALSE(AreStringsEqualCase("Ä", "ä"));
    EXPECT_FALSE(AreStringsEqualCase("[", "{"));
    EXPECT_FALSE(AreStringsEqualCase("@", "`"));
}

}  // namespace
