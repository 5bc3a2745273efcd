#include "naivebayes/data/NBRoundEncoder.h"

#include <gtest/gtest.h>

#include <string>

#include "host/Records.h"
#include "naivebayes/data/NBNumericUserMissing.h"
#include "naivebayes/data/NBStringUserMissing.h"
#include "naivebayes/tests/SavedForms.h"
#include "tests/support/CaseName.h"

namespace {

using savedforms::Bytes;

constexpr double kMissing = MCMV::gMissingValue;

struct RoundCase {
    const char* fName;
    std::int32_t fOption;
    double fValue;
    double fExpected;
};

class Rounding : public testing::TestWithParam<RoundCase> {};

TEST_P(Rounding, CleansTheWeight) {
    EXPECT_EQ(NBRoundEncoder(GetParam().fOption).Encode(GetParam().fValue), GetParam().fExpected);
}

INSTANTIATE_TEST_SUITE_P(NBRoundEncoder, Rounding,
                         testing::Values(RoundCase{"TruncationToNothing", 0, 0.9, kMissing},
                                         RoundCase{"Truncation", 0, 2.9, 2.0},
                                         RoundCase{"RoundingUp", 1, 0.9, 1.0},
                                         RoundCase{"HalvesGoUp", 1, 2.5, 3.0},
                                         RoundCase{"RoundingToNothing", 1, 0.49, kMissing},
                                         RoundCase{"AsItIs", 2, 0.9, 0.9},
                                         RoundCase{"HigherOptionsActAsTwo", 3, 0.9, 0.9},
                                         RoundCase{"NegativeIsMissing", 2, -0.1, kMissing},
                                         RoundCase{"ZeroIsMissing", 2, 0.0, kMissing},
                                         RoundCase{"MissingIsMissing", 1, kMissing, kMissing}),
                         testsupport::CaseName());

TEST(NBRoundEncoder, UserMissingWeightsAreMissing) {
    NBNumericUserMissing definition;
    definition.Add(5.0, "");
    NBRoundEncoder encoder(1);
    EXPECT_TRUE(encoder.SetUserMissing(&definition));
    EXPECT_EQ(encoder.Encode(5.0), kMissing);
    EXPECT_EQ(encoder.Encode(4.9), 5.0);
    const NBStringUserMissing strings;
    EXPECT_FALSE(encoder.SetUserMissing(&strings));
    EXPECT_EQ(encoder.Clone()->GetUserMissing(), &definition);
    EXPECT_TRUE(encoder.SetUserMissing(nullptr));
    EXPECT_EQ(encoder.Encode(5.0), 5.0);
}

TEST(NBRoundEncoder, HasNoCodesAndNoLabels) {
    NBRoundEncoder encoder(1);
    encoder.SetCategoryLabels({"a"});
    encoder.SetCategoryLabel(0, "a");
    EXPECT_EQ(encoder.GetCategoryLabels(), nullptr);
    EXPECT_EQ(encoder.GetNumCodes(), 0);
    EXPECT_EQ(encoder.GetEncoderType(), 4);
}

TEST(NBRoundEncoder, BinaryTakesAnyOption) {
    EXPECT_EQ(savedforms::Binary(NBRoundEncoder(1)), "ROEN" + Bytes(1));
    NBRoundEncoder encoder(0);
    EXPECT_TRUE(savedforms::FromBinary(encoder, "ROEN" + Bytes(-3)));
    EXPECT_EQ(encoder.GetOption(), -3);
    EXPECT_EQ(encoder.Encode(1.5), 1.5);
}

TEST(NBRoundEncoder, XMLRefusesANegativeOption) {
    NBRoundEncoder encoder(0);
    EXPECT_TRUE(savedforms::FromXML(encoder, savedforms::XML(NBRoundEncoder(7))));
    EXPECT_EQ(encoder.GetOption(), 7);
    savedforms::ExpectXMLFails(encoder, savedforms::XML(NBRoundEncoder(-3)),
                               "Failure reading NBRoundEncoder from XML!\n");
}

TEST(NBRoundEncoder, AWrongTagFails) {
    NBRoundEncoder encoder(0);
    savedforms::ExpectBinaryFails(encoder, "ROUN" + Bytes(1), "Error reading NBRoundEncoder!\n");
}

TEST(NBRoundEncoder, DisplaysTheOption) {
    EXPECT_EQ(savedforms::Displayed(NBRoundEncoder(0)),
              "\tNBRoundEncoder: option = Truncate to smaller int\n");
    EXPECT_EQ(savedforms::Displayed(NBRoundEncoder(1)),
              "\tNBRoundEncoder: option = Round to closest int\n");
    EXPECT_EQ(savedforms::Displayed(NBRoundEncoder(2)),
              "\tNBRoundEncoder: option = As is - no change\n");
    EXPECT_EQ(savedforms::Displayed(NBRoundEncoder(3)), "\tNBRoundEncoder: option = \n");
}

}  // namespace
