#include "naivebayes/data/NBStringEncoder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "naivebayes/data/NBNumericUserMissing.h"
#include "naivebayes/tests/SavedForms.h"

namespace {

using savedforms::Bytes;
using Texts = std::vector<std::string>;

std::unique_ptr<NBStringUserMissing> Missing(const std::string& value) {
    auto definition = std::make_unique<NBStringUserMissing>();
    definition->Add(value, "");
    return definition;
}

TEST(NBStringEncoder, CodesFollowFirstAppearance) {
    NBStringEncoder encoder(Texts{"m", "f", "m"});
    EXPECT_EQ(encoder.GetNumCodes(), 2);
    EXPECT_EQ(encoder.Encode("f"), 1.0);
    EXPECT_EQ(encoder.Encode("a"), 2.0);
    EXPECT_EQ(encoder.Decode(2), "a");
    EXPECT_EQ(encoder.GetEncoderType(), 3);
}

TEST(NBStringEncoder, TheEmptyStringIsAnOrdinaryValue) {
    NBStringEncoder encoder(0);
    EXPECT_EQ(encoder.Encode(""), 0.0);
    EXPECT_EQ(encoder.GetNumCodes(), 1);
}

TEST(NBStringEncoder, BlanksAndCaseCount) {
    NBStringEncoder encoder(Texts{"a", "a ", "A"});
    EXPECT_EQ(encoder.GetNumCodes(), 3);
}

TEST(NBStringEncoder, LookupNeverAdds) {
    NBStringEncoder encoder(Texts{"a"});
    encoder.SetUserMissing(Missing("z"));
    EXPECT_EQ(encoder.Lookup("a"), 0.0);
    EXPECT_EQ(encoder.Lookup("b"), -1.0);
    EXPECT_EQ(encoder.Lookup("z"), -1.0);
    EXPECT_EQ(encoder.Encode("z"), -1.0);
    EXPECT_EQ(encoder.GetNumCodes(), 1);
}

TEST(NBStringEncoder, DecodeOutOfRangeIsEmpty) {
    const NBStringEncoder encoder(Texts{"a"});
    EXPECT_EQ(encoder.Decode(-1), "");
    EXPECT_EQ(encoder.Decode(1), "");
}

TEST(NBStringEncoder, RefusesANumericDefinitionAndKeepsTheOld) {
    NBStringEncoder encoder(0);
    EXPECT_TRUE(encoder.SetUserMissing(Missing("z")));
    EXPECT_FALSE(encoder.SetUserMissing(std::make_unique<NBNumericUserMissing>()));
    EXPECT_EQ(encoder.Encode("z"), -1.0);
    EXPECT_TRUE(encoder.SetUserMissing(nullptr));
    EXPECT_EQ(encoder.Encode("z"), 0.0);
}

TEST(NBStringEncoder, CopiesPointToTheirOwnValues) {
    auto first = std::make_unique<NBStringEncoder>(Texts{"m", "f", "a"});
    first->SetUserMissing(Missing("z"));
    NBStringEncoder assigned(Texts{"q"});
    assigned = *first;
    const auto clone = first->Clone();
    first.reset();
    const auto& copied = static_cast<const NBStringEncoder&>(*clone);
    EXPECT_EQ(copied.Decode(0), "m");
    EXPECT_EQ(copied.Decode(2), "a");
    EXPECT_EQ(assigned.Decode(1), "f");
    EXPECT_EQ(assigned.Encode("z"), -1.0);
    EXPECT_EQ(assigned.Encode("q"), 3.0);
    EXPECT_EQ(copied.Lookup("q"), -1.0);
}

NBStringEncoder MakeEncoder() {
    NBStringEncoder encoder(Texts{"m", "f"});
    encoder.SetCategoryLabels({"male", "female", "more"});
    encoder.SetUserMissing(Missing("z"));
    return encoder;
}

std::string GoodBytes() {
    return "STEN" + Bytes(2) + Bytes(1) + "m" + Bytes(1) + "f" + Bytes(3) + Bytes(4) + "male" +
           Bytes(6) + "female" + Bytes(4) + "more" + Bytes(1) + "NBStrUMi" + Bytes(1) + Bytes(1) +
           "z" + Bytes(0);
}

TEST(NBStringEncoder, BinaryHasThePublishedLayout) {
    EXPECT_EQ(savedforms::Binary(MakeEncoder()), GoodBytes());
    NBStringEncoder restored(Texts{"f"});
    EXPECT_TRUE(savedforms::FromBinary(restored, GoodBytes()));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
    EXPECT_EQ(restored.Lookup("f"), 1.0);
}

TEST(NBStringEncoder, TheOldDefinitionStillFiltersRestoredValues) {
    NBStringEncoder restored(0);
    restored.SetUserMissing(Missing("m"));
    EXPECT_TRUE(savedforms::FromBinary(restored, GoodBytes()));
    EXPECT_EQ(restored.GetNumCodes(), 1);
    EXPECT_EQ(restored.Decode(0), "f");
    EXPECT_EQ(restored.Encode("m"), 1.0);
}

TEST(NBStringEncoder, XMLRoundTrips) {
    NBStringEncoder restored(2);
    EXPECT_TRUE(savedforms::FromXML(restored, savedforms::XML(MakeEncoder())));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
}

TEST(NBStringEncoder, FailuresHaveTheirLines) {
    NBStringEncoder encoder(0);
    savedforms::ExpectBinaryFails(encoder, savedforms::Replaced(GoodBytes(), "STEN", "CNEN"),
                                  "Error reading NBStringEncoder!\n");
    savedforms::ExpectBinaryFails(encoder, savedforms::With(GoodBytes(), 8, -1),
                                  "Error reading NBStringEncoder!\n");
    savedforms::ExpectXMLFails(
        encoder, savedforms::Replaced(savedforms::XML(MakeEncoder()), "\"m\"/>", "\"m\"/><Int/>"),
        "Failure reading NBStringEncoder!\n");
}

TEST(NBStringEncoder, DisplaysValuesByCode) {
    EXPECT_EQ(savedforms::Displayed(NBStringEncoder(Texts{"m", "f"})),
              "\tNBStringEncoder object:  Last code = 1\nm\nf\n\t\tValue Labels:\n\n");
}

}  // namespace
