#include "naivebayes/MCRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "naivebayes/tests/SavedForms.h"

namespace {

class FixedSource : public MCCommon::MCRandom {
 public:
    double GetRandom() override { return 0.75; }
};

constexpr double kTwoToMinus31 = 4.656612873077393e-10;

TEST(MCRandom, TheConstantOfTheOlderGeneratorIsTwoToMinus31) {
    EXPECT_EQ(kTwoToMinus31, 1.0 / 2147483648.0);
}

TEST(MCRandom, OlderGeneratorWithSeedZeroStaysAtZero) {
    MCRandom random(0, true, false, nullptr);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(random.GetUniform(), 0.0);
}

TEST(MCRandom, OlderGeneratorWithSeedOneStartsWithItsMultiplier) {
    MCRandom random(1, true, false, nullptr);
    const double first = random.GetUniform();
    EXPECT_EQ(first, 397204094.0 / 2147483648.0);
    EXPECT_NEAR(first, 0.18496, 5e-6);
    EXPECT_NE(savedforms::Displayed(random).find("The seed = 397204094 "), std::string::npos);
    // 397204094^2 modulo 2^31 - 1, worked out with long integers.
    EXPECT_EQ(random.GetUniform(), 2083249653.0 / 2147483648.0);
}

TEST(MCRandom, OlderGeneratorTakesSeedsOfAll32Bits) {
    MCRandom random(4294967295u, true, false, nullptr);
    // 4294967295 is 1 modulo 2^31 - 1.
    EXPECT_EQ(random.GetUniform(), 397204094.0 / 2147483648.0);
}

TEST(MCRandom, OlderGeneratorStaysBelowOne) {
    MCRandom random(876543, true, false, nullptr);
    for (int i = 0; i < 100000; ++i) {
        const double value = random.GetUniform();
        ASSERT_GE(value, 0.0);
        ASSERT_LT(value, 1.0);
    }
}

TEST(MCRandom, TwisterGivesTheHostsSequenceOfTheSeed) {
    MCRandom random(876543, true, true, nullptr);
    EXPECT_TRUE(random.IsPortable());
    EXPECT_TRUE(random.IsTwister());
    MCCommonMath::MCRandomTwister twister;
    twister.Initialize(876543);
    for (int i = 0; i < 1000; ++i) ASSERT_EQ(random.GetUniform(), twister.GetRealOpen());
}

TEST(MCRandom, SetSeedStartsTheTwisterAnew) {
    MCRandom random(1, true, true, nullptr);
    const double first = random.GetUniform();
    random.GetUniform();
    random.SetSeed(1);
    EXPECT_EQ(random.GetUniform(), first);
}

TEST(MCRandom, SetSeedStartsTheOlderGeneratorAnew) {
    MCRandom random(5, true, false, nullptr);
    random.GetUniform();
    random.SetSeed(1);
    EXPECT_EQ(random.GetUniform(), 397204094.0 / 2147483648.0);
}

TEST(MCRandom, TwisterCountsOnlyWithPortable) {
    const MCRandom random(1, false, true, nullptr);
    EXPECT_FALSE(random.IsTwister());
    EXPECT_FALSE(random.IsPortable());
}

TEST(MCRandom, AUserSourceOverridesAllOthers) {
    FixedSource source;
    for (const bool portable : {false, true}) {
        for (const bool twister : {false, true}) {
            MCRandom random(1, portable, twister, &source);
            EXPECT_FALSE(random.IsTwister());
            EXPECT_EQ(random.GetUserSource(), &source);
            EXPECT_EQ(random.GetUniform(), 0.75);
        }
    }
}

TEST(MCRandom, LibrarySourceIsTheLibrarysOverItsOldLimit) {
    MCRandom random(1, false, false, nullptr);
    random.SetSeed(4711);
    const double drawn = random.GetUniform();
    std::srand(4711);
    EXPECT_EQ(drawn, std::rand() / 32767.0);
}

// The divisor is the smallest limit that a library may have: there 1 is reached, and with a higher
// limit most numbers lie above it.
TEST(MCRandom, LibrarySourceIsNotHeldBelowOne) {
    MCRandom random(1, false, false, nullptr);
    random.SetSeed(1);
    double largest = 0.0;
    for (int i = 0; i < 200000; ++i) largest = std::max(largest, random.GetUniform());
    EXPECT_GE(largest, 1.0);
}

TEST(MCRandom, LibrarySourceIsNotSeededByConstruction) {
    std::srand(99);
    const int expected = std::rand();
    std::srand(99);
    MCRandom random(1, false, false, nullptr);
    EXPECT_EQ(random.GetUniform(), expected / 32767.0);
}

TEST(MCRandom, ClearingPortableEndsTheTwisterForGood) {
    MCRandom random(1, true, true, nullptr);
    random.SetPortable(false);
    EXPECT_FALSE(random.IsTwister());
    EXPECT_FALSE(random.IsPortable());
    random.SetPortable(true);
    EXPECT_FALSE(random.IsTwister());
    EXPECT_EQ(random.GetUniform(), 397204094.0 / 2147483648.0);
}

TEST(MCRandom, SavesTwentyBytesWithTheSeedAsADouble) {
    const MCRandom random(876543, true, true, nullptr);
    using savedforms::Bytes;
    EXPECT_EQ(savedforms::Binary(random),
              "MCRa" + Bytes(876543.0) + Bytes(std::int32_t{1}) + Bytes(std::int32_t{1}));
    EXPECT_EQ(savedforms::XML(random),
              "<Obj name=\"MCRandom\">\n <Double value=\"876543\"/>\n <Int value=\"1\"/>\n"
              " <Int value=\"1\"/>\n</Obj>\n");
}

TEST(MCRandom, RestoresSeedAndKindInBothForms) {
    const MCRandom random(4294967295u, true, false, nullptr);
    MCRandom fromBinary(0, false, false, nullptr);
    ASSERT_TRUE(savedforms::FromBinary(fromBinary, savedforms::Binary(random)));
    MCRandom fromXML(0, false, false, nullptr);
    ASSERT_TRUE(savedforms::FromXML(fromXML, savedforms::XML(random)));
    for (MCRandom* restored : {&fromBinary, &fromXML}) {
        EXPECT_TRUE(restored->IsPortable());
        EXPECT_FALSE(restored->IsTwister());
        EXPECT_EQ(restored->GetUniform(), 397204094.0 / 2147483648.0);
    }
}

TEST(MCRandom, ARestoredTwisterStartsAnewFromItsSeed) {
    MCRandom random(42, true, true, nullptr);
    const double first = random.GetUniform();
    random.GetUniform();
    MCRandom restored(0, false, false, nullptr);
    ASSERT_TRUE(savedforms::FromBinary(restored, savedforms::Binary(random)));
    EXPECT_TRUE(restored.IsTwister());
    EXPECT_EQ(restored.GetUniform(), first);
}

TEST(MCRandom, ABooleanOfTwoReadsBackAsFalseAndASeedIsTruncated) {
    std::string bytes = savedforms::Binary(MCRandom(7, true, false, nullptr));
    MCRandom restored(0, false, false, nullptr);
    ASSERT_TRUE(savedforms::FromBinary(
        restored, savedforms::With(savedforms::With(bytes, 12, std::int32_t{2}), 4, 1.9)));
    EXPECT_FALSE(restored.IsPortable());
    restored.SetPortable(true);
    EXPECT_EQ(restored.GetUniform(), 397204094.0 / 2147483648.0);
}

TEST(MCRandom, WhatCannotBeRestoredSaysSo) {
    const std::string bytes = savedforms::Binary(MCRandom(7, true, true, nullptr));
    const std::string line = "Error reading MCRandom!\n";
    MCRandom restored(0, false, false, nullptr);
    savedforms::ExpectBinaryFails(restored, "MCRx" + bytes.substr(4), line);
    savedforms::ExpectBinaryFails(restored, bytes.substr(0, 19), line);
    savedforms::ExpectBinaryFails(restored, savedforms::With(bytes, 4, 4294967296.0), line);
    savedforms::ExpectBinaryFails(restored, savedforms::With(bytes, 4, -1.0), line);
    // A twister that is not portable is no generator.
    savedforms::ExpectBinaryFails(restored, savedforms::With(bytes, 12, std::int32_t{0}), line);
    savedforms::ExpectXMLFails(restored, "<Obj name=\"MCRandom\"/>", "Failure reading MCRandom!\n");
}

TEST(MCRandom, DisplayNamesTheGenerator) {
    EXPECT_EQ(savedforms::Displayed(MCRandom(5, true, true, nullptr)),
              "MCRandom: \nThe seed = 5  Portable?  Yes, Mersenne Twister.\n");
    EXPECT_EQ(savedforms::Displayed(MCRandom(5, true, false, nullptr)),
              "MCRandom: \nThe seed = 5  Portable?  Yes, old KOLT one.\n");
    EXPECT_EQ(savedforms::Displayed(MCRandom(5, false, false, nullptr)),
              "MCRandom: \nThe seed = 5  Portable?  No.\n");
}

}  // namespace
