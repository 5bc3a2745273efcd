#include "naivebayes/NaiveBayesSettings.h"

#include <gtest/gtest.h>

#include "naivebayes/tests/SavedForms.h"

namespace {

NaiveBayesSettings Unusual() {
    NaiveBayesSettings settings;
    settings.fNumSkip = 3;
    settings.fSeed = 4294967295u;
    settings.fMaxRecordsInMemory = 50;
    settings.fNumSimulated = 60;
    settings.fRandomKind = NaiveBayesSettings::kLibrary;
    settings.fTempDir = "not saved";
    return settings;
}

void ExpectSaved(const NaiveBayesSettings& settings) {
    EXPECT_EQ(settings.fNumSkip, 3);
    EXPECT_EQ(settings.fSeed, 4294967295u);
    EXPECT_EQ(settings.fMaxRecordsInMemory, 50);
    EXPECT_EQ(settings.fNumSimulated, 60);
    EXPECT_EQ(settings.fRandomKind, NaiveBayesSettings::kLibrary);
    EXPECT_EQ(settings.fTempDir, "");
    EXPECT_EQ(settings.fpStopProcessor, nullptr);
}

TEST(NaiveBayesSettings, HasItsDefaults) {
    const NaiveBayesSettings settings;
    EXPECT_EQ(settings.fNumSkip, 0);
    EXPECT_EQ(settings.fMaxRecordsInMemory, 1000);
    EXPECT_EQ(settings.fNumSimulated, 1000);
    EXPECT_EQ(settings.fSeed, 876543u);
    EXPECT_EQ(settings.fRandomKind, 0);
    EXPECT_EQ(settings.fpListener, nullptr);
    EXPECT_EQ(settings.fpStopProcessor, nullptr);
    EXPECT_EQ(settings.fpUserRandom, nullptr);
    EXPECT_EQ(settings.fTempDir, "");
}

TEST(NaiveBayesSettings, SavesTwentyThreeBytes) {
    using savedforms::Bytes;
    EXPECT_EQ(savedforms::Binary(Unusual()),
              "NBS" + Bytes(std::int32_t{3}) + Bytes(std::uint32_t{4294967295u}) +
                  Bytes(std::int32_t{50}) + Bytes(std::int32_t{60}) + Bytes(std::int32_t{2}));
    EXPECT_EQ(savedforms::Binary(Unusual()).size(), 23u);
}

TEST(NaiveBayesSettings, RestoresInBothForms) {
    NaiveBayesSettings restored;
    ASSERT_TRUE(savedforms::FromBinary(restored, savedforms::Binary(Unusual())));
    ExpectSaved(restored);
    NaiveBayesSettings fromXML;
    ASSERT_TRUE(savedforms::FromXML(fromXML, savedforms::XML(Unusual())));
    ExpectSaved(fromXML);
}

TEST(NaiveBayesSettings, WhatCannotBeRestoredSaysSo) {
    NaiveBayesSettings restored;
    const std::string line = "Error reading NaiveBayesSettings!\n";
    const std::string bytes = savedforms::Binary(Unusual());
    savedforms::ExpectBinaryFails(restored, "NBX" + bytes.substr(3), line);
    savedforms::ExpectBinaryFails(restored, bytes.substr(0, 22), line);
    savedforms::ExpectXMLFails(restored, "<Obj name=\"NaiveBayesSettings\"/>", line);
}

TEST(NaiveBayesSettings, DisplayNamesEverySetting) {
    const std::string display = savedforms::Displayed(NaiveBayesSettings{});
    const std::string start = "Start of NaiveBayesSettings display\nProgress listener address = ";
    const std::string rest =
        "\nNumber of progress reports to skip = 0\n"
        "Max records in memory = 1000\n"
        "Number of records for simulated data = 1000\n"
        "Seed for random number generator = 876543\n"
        "Random number generator to use = Mersenne Twister\n"
        "End of NaiveBayesSettings display\n";
    EXPECT_EQ(display.substr(0, start.size()), start);
    EXPECT_EQ(display.substr(display.find('\n', start.size())), rest);
}

TEST(NaiveBayesSettings, DisplayNamesTheGenerators) {
    NaiveBayesSettings settings;
    const auto names = [&settings](std::int32_t kind, const std::string& name) {
        settings.fRandomKind = kind;
        return savedforms::Displayed(settings).find("to use = " + name + "\n") != std::string::npos;
    };
    EXPECT_TRUE(names(0, "Mersenne Twister"));
    EXPECT_TRUE(names(1, "Older portable RNG from KOLT"));
    EXPECT_TRUE(names(2, "Library RNG (not portable)"));
    EXPECT_TRUE(names(3, "User provided RNG"));
}

}  // namespace
