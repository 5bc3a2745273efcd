#include "naivebayes/data/NBCatNumEncoder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "host/Records.h"
#include "naivebayes/data/NBStringUserMissing.h"
#include "naivebayes/tests/SavedForms.h"

namespace {

using savedforms::Bytes;

std::unique_ptr<NBNumericUserMissing> Missing(double value) {
    auto definition = std::make_unique<NBNumericUserMissing>();
    definition->Add(value, "");
    return definition;
}

TEST(NBCatNumEncoder, CodesFollowFirstAppearance) {
    NBCatNumEncoder encoder({7.0, 3.0, 5.0});
    EXPECT_EQ(encoder.Encode(3.0), 1.0);
    EXPECT_EQ(encoder.Encode(1.0), 3.0);
    EXPECT_EQ(encoder.Decode(0), 7.0);
    EXPECT_EQ(encoder.Decode(3), 1.0);
    EXPECT_EQ(encoder.GetEncoderType(), 2);
}

TEST(NBCatNumEncoder, ARepeatedValueGetsItsFirstCode) {
    NBCatNumEncoder encoder({7.0, 3.0});
    EXPECT_EQ(encoder.Encode(7.0), 0.0);
    EXPECT_EQ(encoder.GetNumCodes(), 2);
}

TEST(NBCatNumEncoder, TellsNeighbouringDoublesApart) {
    NBCatNumEncoder encoder(std::vector<double>{1.0});
    EXPECT_EQ(encoder.Encode(std::nextafter(1.0, 2.0)), 1.0);
}

TEST(NBCatNumEncoder, MissingValuesGetNoCode) {
    NBCatNumEncoder encoder(0);
    encoder.SetUserMissing(Missing(9.0));
    EXPECT_EQ(encoder.Encode(9.0), -1.0);
    EXPECT_EQ(encoder.Encode(MCMV::gMissingValue), -1.0);
    EXPECT_EQ(encoder.Lookup(9.0), -1.0);
    EXPECT_EQ(encoder.GetNumCodes(), 0);
}

TEST(NBCatNumEncoder, LookupNeverAdds) {
    NBCatNumEncoder encoder(std::vector<double>{7.0});
    EXPECT_EQ(encoder.Lookup(7.0), 0.0);
    EXPECT_EQ(encoder.Lookup(8.0), -1.0);
    EXPECT_EQ(encoder.GetNumCodes(), 1);
}

TEST(NBCatNumEncoder, DecodeOutOfRangeIsMissing) {
    const NBCatNumEncoder encoder(std::vector<double>{7.0});
    EXPECT_EQ(encoder.Decode(-1), MCMV::gMissingValue);
    EXPECT_EQ(encoder.Decode(1), MCMV::gMissingValue);
}

TEST(NBCatNumEncoder, ALabelGrowsTheVectorFirst) {
    NBCatNumEncoder encoder({7.0, 8.0, 9.0});
    encoder.SetCategoryLabels({"seven"});
    EXPECT_EQ(*encoder.GetCategoryLabels(), std::vector<std::string>{"seven"});
    encoder.SetCategoryLabel(3, "nothing");
    EXPECT_EQ(*encoder.GetCategoryLabels(), (std::vector<std::string>{"seven", "", ""}));
    encoder.SetCategoryLabel(1, "eight");
    encoder.SetCategoryLabel(-1, "nothing");
    EXPECT_EQ(*encoder.GetCategoryLabels(), (std::vector<std::string>{"seven", "eight", ""}));
}

TEST(NBCatNumEncoder, RefusesAStringDefinitionAndKeepsTheOld) {
    NBCatNumEncoder encoder(std::vector<double>{7.0});
    EXPECT_TRUE(encoder.SetUserMissing(Missing(9.0)));
    const INBUserMissing* const held = encoder.GetUserMissing();
    EXPECT_FALSE(encoder.SetUserMissing(std::make_unique<NBStringUserMissing>()));
    EXPECT_EQ(encoder.GetUserMissing(), held);
    EXPECT_TRUE(encoder.SetUserMissing(nullptr));
    EXPECT_EQ(encoder.GetUserMissing(), nullptr);
}

TEST(NBCatNumEncoder, CopiesAreDeep) {
    auto first = std::make_unique<NBCatNumEncoder>(std::vector<double>{7.0});
    first->SetUserMissing(Missing(9.0));
    first->SetCategoryLabel(0, "seven");
    NBCatNumEncoder assigned(0);
    assigned = *first;
    const auto clone = first->Clone();
    first.reset();
    EXPECT_EQ(assigned.Encode(9.0), -1.0);
    EXPECT_EQ(assigned.Encode(7.0), 0.0);
    EXPECT_EQ(clone->GetNumCodes(), 1);
    EXPECT_EQ(clone->GetUserMissing()->GetNumDiscrete(), 1);
    EXPECT_EQ(*clone->GetCategoryLabels(), std::vector<std::string>{"seven"});
    EXPECT_EQ(assigned.Encode(8.0), 1.0);
    EXPECT_EQ(clone->GetNumCodes(), 1);
}

NBCatNumEncoder MakeEncoder() {
    NBCatNumEncoder encoder({7.0, 3.0});
    encoder.SetCategoryLabels({"x"});
    encoder.SetUserMissing(Missing(9.0));
    return encoder;
}

std::string GoodBytes() {
    return "CNEN" + Bytes(2) + Bytes(7.0) + Bytes(3.0) + Bytes(1) + Bytes(1) + "x" + Bytes(1) +
           "NBNumUMi" + Bytes(1) + Bytes(9.0) + Bytes(0) + Bytes(0);
}

TEST(NBCatNumEncoder, BinaryHasThePublishedLayout) {
    EXPECT_EQ(savedforms::Binary(MakeEncoder()), GoodBytes());
    NBCatNumEncoder restored({1.0, 2.0, 3.0});
    restored.SetCategoryLabels({"a", "b", "c"});
    EXPECT_TRUE(savedforms::FromBinary(restored, GoodBytes()));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
    EXPECT_EQ(restored.Lookup(3.0), 1.0);
}

TEST(NBCatNumEncoder, TheOldDefinitionStillFiltersRestoredValues) {
    NBCatNumEncoder restored(0);
    restored.SetUserMissing(Missing(7.0));
    EXPECT_TRUE(savedforms::FromBinary(restored, GoodBytes()));
    EXPECT_EQ(restored.GetNumCodes(), 1);
    EXPECT_EQ(restored.Decode(0), 3.0);
    // Only then the saved one takes its place.
    EXPECT_EQ(restored.Encode(7.0), 1.0);
    EXPECT_EQ(restored.Encode(9.0), -1.0);
}

TEST(NBCatNumEncoder, RestoringWithoutDefinitionDropsTheOld) {
    NBCatNumEncoder restored(0);
    restored.SetUserMissing(Missing(50.0));
    EXPECT_TRUE(savedforms::FromBinary(restored, "CNEN" + Bytes(0) + Bytes(0) + Bytes(0)));
    EXPECT_EQ(restored.GetUserMissing(), nullptr);
}

TEST(NBCatNumEncoder, OnlyAFlagOfOneReadsADefinition) {
    NBCatNumEncoder restored(0);
    EXPECT_TRUE(savedforms::FromBinary(restored, "CNEN" + Bytes(0) + Bytes(0) + Bytes(2)));
    EXPECT_EQ(restored.GetUserMissing(), nullptr);
}

TEST(NBCatNumEncoder, RepeatedSavedValuesGiveFewerCodes) {
    NBCatNumEncoder restored(0);
    EXPECT_TRUE(savedforms::FromBinary(restored, savedforms::With(GoodBytes(), 16, 7.0)));
    EXPECT_EQ(restored.GetNumCodes(), 1);
}

TEST(NBCatNumEncoder, ANaNIsNoCategory) {
    NBCatNumEncoder restored(0);
    savedforms::ExpectBinaryFails(
        restored, savedforms::With(GoodBytes(), 16, std::numeric_limits<double>::quiet_NaN()),
        "Error reading NBCatNumEncoder!\n");
}

TEST(NBCatNumEncoder, XMLHasTheSameItemsInTheSameOrder) {
    const std::string text = savedforms::XML(MakeEncoder());
    EXPECT_EQ(text,
              "<Obj name=\"NBCatNumEncoder\">\n <Int value=\"2\"/>\n <Double value=\"7\"/>\n"
              " <Double value=\"3\"/>\n <Int value=\"1\"/>\n <String value=\"x\"/>\n"
              " <Int value=\"1\"/>\n <Obj name=\"NBNumericUserMissing\">\n  <Int value=\"1\"/>\n"
              "  <Double value=\"9\"/>\n  <String value=\"\"/>\n  <Int value=\"0\"/>\n </Obj>\n"
              "</Obj>\n");
    NBCatNumEncoder restored(2);
    EXPECT_TRUE(savedforms::FromXML(restored, text));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
}

TEST(NBCatNumEncoder, FailuresHaveTheirLines) {
    NBCatNumEncoder encoder(0);
    savedforms::ExpectBinaryFails(encoder, savedforms::Replaced(GoodBytes(), "CNEN", "STEN"),
                                  "Error reading NBCatNumEncoder!\n");
    savedforms::ExpectBinaryFails(encoder, savedforms::With(GoodBytes(), 4, -1),
                                  "Error reading NBCatNumEncoder!\n");
    savedforms::ExpectXMLFails(
        encoder, savedforms::Replaced(savedforms::XML(MakeEncoder()), "NBCatNumEncoder", "Other"),
        "Failure reading NBCatNumEncoder!\n");
}

TEST(NBCatNumEncoder, DisplaysSevenValuesToALine) {
    NBCatNumEncoder encoder({1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0});
    encoder.SetCategoryLabels({"one", "two"});
    EXPECT_EQ(savedforms::Displayed(encoder),
              "\tNBCatNumEncoder: Last code = 7\n\t\tNumeric values of categories: 1 2 3 4 5 6 7\n"
              "8\n\t\tValue Labels:\none two\n");
}

}  // namespace
