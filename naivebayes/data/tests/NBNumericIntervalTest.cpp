#include "naivebayes/data/NBNumericInterval.h"

#include <gtest/gtest.h>

#include <limits>

#include "naivebayes/tests/SavedForms.h"

namespace {

constexpr double kLowest = std::numeric_limits<double>::lowest();
constexpr double kHighest = std::numeric_limits<double>::max();

TEST(NBNumericInterval, HoldsBothEndsAndWhatLiesBetween) {
    const NBNumericInterval interval(1.0, 3.0);
    EXPECT_TRUE(interval.Contains(1.0));
    EXPECT_TRUE(interval.Contains(3.0));
    EXPECT_TRUE(interval.Contains(2.5));
    EXPECT_FALSE(interval.Contains(0.999));
    EXPECT_FALSE(interval.Contains(3.001));
}

TEST(NBNumericInterval, IsFromZeroToZeroByDefault) {
    EXPECT_EQ(NBNumericInterval(), NBNumericInterval(0.0, 0.0));
    EXPECT_TRUE(NBNumericInterval().Contains(0.0));
}

TEST(NBNumericInterval, ReachesFromABoundUpwardOrUpToIt) {
    const NBNumericInterval upward(2.0, false);
    EXPECT_TRUE(upward.HasNoHigh());
    EXPECT_FALSE(upward.HasNoLow());
    EXPECT_TRUE(upward.Contains(2.0));
    EXPECT_TRUE(upward.Contains(kHighest));
    EXPECT_FALSE(upward.Contains(1.9));
    const NBNumericInterval upTo(2.0, true);
    EXPECT_TRUE(upTo.HasNoLow());
    EXPECT_FALSE(upTo.HasNoHigh());
    EXPECT_TRUE(upTo.Contains(kLowest));
    EXPECT_FALSE(upTo.Contains(2.1));
}

TEST(NBNumericInterval, SettersStoreAndTellWhetherAnythingIsLeft) {
    NBNumericInterval interval(1.0, 3.0);
    EXPECT_TRUE(interval.SetLow(3.0));
    EXPECT_FALSE(interval.SetLow(4.0));
    EXPECT_EQ(interval.GetLow(), 4.0);
    EXPECT_TRUE(interval.IsEmpty());
    EXPECT_TRUE(interval.SetHigh(4.0));
    EXPECT_FALSE(interval.SetHigh(3.5));
    EXPECT_EQ(interval.GetHigh(), 3.5);
}

TEST(NBNumericInterval, TakesTwentyFourBytes) {
    const std::string bytes = savedforms::Binary(NBNumericInterval(1.0, 3.0));
    EXPECT_EQ(bytes, "NBNumInt" + savedforms::Bytes(1.0) + savedforms::Bytes(3.0));
    EXPECT_EQ(bytes.size(), 24U);
    NBNumericInterval restored;
    EXPECT_TRUE(savedforms::FromBinary(restored, bytes));
    EXPECT_EQ(restored, NBNumericInterval(1.0, 3.0));
}

TEST(NBNumericInterval, XMLWritesAnOpenHighEndAsMissing) {
    const NBNumericInterval upward(2.0, false);
    const std::string text = savedforms::XML(upward);
    EXPECT_EQ(text,
              "<Obj name=\"NBNumericInterval\">\n <Double value=\"2\"/>\n"
              " <Double value=\"Missing\"/>\n</Obj>\n");
    NBNumericInterval restored;
    EXPECT_TRUE(savedforms::FromXML(restored, text));
    EXPECT_EQ(restored, upward);
}

TEST(NBNumericInterval, XMLKeepsAnOpenLowEnd) {
    NBNumericInterval restored;
    EXPECT_TRUE(savedforms::FromXML(restored, savedforms::XML(NBNumericInterval(2.0, true))));
    EXPECT_EQ(restored, NBNumericInterval(2.0, true));
}

TEST(NBNumericInterval, XMLTurnsALowestHighEndIntoNone) {
    NBNumericInterval restored;
    EXPECT_TRUE(
        savedforms::FromXML(restored, savedforms::XML(NBNumericInterval(kLowest, kLowest))));
    EXPECT_EQ(restored, NBNumericInterval(kLowest, kHighest));
}

TEST(NBNumericInterval, BinaryKeepsALowestHighEnd) {
    NBNumericInterval restored;
    EXPECT_TRUE(
        savedforms::FromBinary(restored, savedforms::Binary(NBNumericInterval(1.0, kLowest))));
    EXPECT_EQ(restored, NBNumericInterval(1.0, kLowest));
}

TEST(NBNumericInterval, FailuresHaveTheirLines) {
    NBNumericInterval interval;
    const std::string bytes = savedforms::Binary(interval);
    savedforms::ExpectBinaryFails(interval, 'M' + bytes.substr(1),
                                  "Error reading NBNumericInterval!\n");
    savedforms::ExpectBinaryFails(interval, bytes.substr(0, 23),
                                  "Error reading NBNumericInterval!\n");
    savedforms::ExpectXMLFails(interval,
                               savedforms::Replaced(savedforms::XML(interval), "Double", "Int"),
                               "Failure reading NBNumericInterval!\n");
}

TEST(NBNumericInterval, DisplaysEndsAndTheirAbsence) {
    EXPECT_EQ(savedforms::Displayed(NBNumericInterval(1.0, 3.5)),
              "NBNumericInterval: [ 1, 3.5 ]\n");
    EXPECT_EQ(savedforms::Displayed(NBNumericInterval(kLowest, kHighest)),
              "NBNumericInterval: ( -infinity, infinity )\n");
}

}  // namespace
