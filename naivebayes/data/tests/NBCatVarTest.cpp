#include "naivebayes/data/NBCatVar.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "naivebayes/tests/SavedForms.h"

namespace {

using savedforms::Bytes;

NBCatVar MakeNumeric(std::int32_t numCategories, const std::vector<double>& values) {
    return {"sex", "Sex of respondent", NBRole::kInput, numCategories,
            std::make_unique<NBCatNumEncoder>(values)};
}

NBCatVar MakeString() {
    return {"x", "", NBRole::kTarget, 2,
            std::make_unique<NBStringEncoder>(std::vector<std::string>{"m", "f"})};
}

TEST(NBCatVar, TheEncoderDecidesTheMeasureLevel) {
    EXPECT_EQ(MakeNumeric(2, {1.0, 2.0}).GetMeasureLevel(), 2);
    EXPECT_EQ(MakeString().GetMeasureLevel(), 3);
}

TEST(NBCatVar, RefreshOnlyRaisesTheCategories) {
    NBCatVar variable = MakeNumeric(1, {1.0, 2.0, 3.0});
    EXPECT_EQ(variable.GetNumCategories(), 1);
    EXPECT_EQ(variable.RefreshNumCategories(), 3);
    EXPECT_EQ(variable.GetNumCategories(), 3);
    NBCatVar more = MakeNumeric(5, {1.0});
    EXPECT_EQ(more.RefreshNumCategories(), 5);
}

TEST(NBCatVar, RangeStateRaisesTheCategoriesFirst) {
    NBCatVar usable = MakeNumeric(1, {1.0, 2.0});
    EXPECT_EQ(usable.GetRangeState(), 0);
    EXPECT_EQ(usable.GetNumCategories(), 2);
    EXPECT_EQ(MakeNumeric(1, {1.0}).GetRangeState(), 1);
    EXPECT_EQ(MakeNumeric(0, {}).GetRangeState(), 2);
    EXPECT_EQ(MakeNumeric(-1, {}).GetRangeState(), 2);
}

TEST(NBCatVar, TheEncoderKeepsTheDefinition) {
    NBCatVar variable = MakeString();
    auto definition = std::make_unique<NBStringUserMissing>();
    const INBUserMissing* const given = definition.get();
    EXPECT_TRUE(variable.SetUserMissing(std::move(definition)));
    EXPECT_EQ(variable.GetUserMissing(), given);
    EXPECT_EQ(variable.GetEncoderConst()->GetUserMissing(), given);
    EXPECT_FALSE(variable.SetUserMissing(std::make_unique<NBNumericUserMissing>()));
    EXPECT_EQ(variable.GetUserMissing(), given);
}

TEST(NBCatVar, CopiesAreDeep) {
    NBCatVar variable = MakeString();
    const auto clone = variable.Clone();
    NBCatVar assigned = MakeNumeric(1, {1.0});
    assigned = variable;
    static_cast<NBStringEncoder&>(*variable.GetEncoder()).Encode("new");
    EXPECT_EQ(clone->GetEncoder()->GetNumCodes(), 2);
    EXPECT_EQ(assigned.GetEncoder()->GetNumCodes(), 2);
    EXPECT_EQ(assigned.GetMeasureLevel(), 3);
    EXPECT_EQ(assigned.GetRole(), NBRole::kTarget);
}

std::string GoodBytes() {
    return "CAVR" + Bytes(1) + "x" + Bytes(0) + Bytes(3) + Bytes(2) + Bytes(3) + Bytes(3) +
           savedforms::Binary(NBStringEncoder(std::vector<std::string>{"m", "f"}));
}

TEST(NBCatVar, BinaryHasThePublishedLayout) {
    EXPECT_EQ(savedforms::Binary(MakeString()), GoodBytes());
    NBCatVar restored = MakeNumeric(7, {1.0});
    EXPECT_TRUE(savedforms::FromBinary(restored, GoodBytes()));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
    EXPECT_EQ(restored.GetMeasureLevel(), 3);
}

TEST(NBCatVar, XMLRoundTrips) {
    NBCatVar restored = MakeNumeric(7, {1.0});
    EXPECT_TRUE(savedforms::FromXML(restored, savedforms::XML(MakeString())));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
}

// Offsets of GoodBytes: 13 role, 17 categories, 21 measure level, 25 encoder type.
TEST(NBCatVar, RefusesWhatContradictsItself) {
    NBCatVar variable = MakeString();
    for (const std::string& bytes :
         {savedforms::Replaced(GoodBytes(), "CAVR", "COVR"), savedforms::With(GoodBytes(), 17, -1),
          savedforms::With(GoodBytes(), 21, 2), savedforms::With(GoodBytes(), 25, 0),
          savedforms::With(GoodBytes(), 25, 1), savedforms::With(GoodBytes(), 25, 4)}) {
        savedforms::ExpectBinaryFails(variable, bytes, "Error reading NBCatVar!\n");
    }
    savedforms::ExpectXMLFails(variable,
                               savedforms::Replaced(savedforms::XML(variable), "NBCatVar", "x"),
                               "Failure reading NBCatVar!\n");
    // The last of them took the fields, but the encoder is still there.
    EXPECT_EQ(variable.GetEncoder()->GetNumCodes(), 2);
}

TEST(NBCatVar, AFailedRestoreLeavesItTheLevelOfItsEncoder) {
    NBCatVar variable = MakeString();
    const std::string saved = savedforms::Binary(MakeNumeric(1, {1.0}));
    EXPECT_FALSE(savedforms::FromBinary(variable, saved.substr(0, saved.size() - 1)));
    EXPECT_EQ(variable.GetEncoder()->GetEncoderType(), 3);
    EXPECT_EQ(variable.GetMeasureLevel(), 3);
}

TEST(NBCatVar, AcceptsAnyRole) {
    NBCatVar variable = MakeString();
    EXPECT_TRUE(savedforms::FromBinary(variable, savedforms::With(GoodBytes(), 13, -77)));
    EXPECT_EQ(variable.GetRole(), -77);
}

TEST(NBCatVar, Displays) {
    EXPECT_EQ(savedforms::Displayed(MakeNumeric(3, {1.0})),
              "Categorical variable: name = sex, label = Sex of respondent, role = Input\n"
              "\tMeasurement Level = Numeric Categorical\n\tNumber of Categories = 3\n" +
                  savedforms::Displayed(NBCatNumEncoder(std::vector<double>{1.0})));
}

TEST(NBRole, HasATextForAnyNumber) {
    EXPECT_EQ(NBRole::Text(0), "Undefined variable role");
    EXPECT_EQ(NBRole::Text(1), "Input");
    EXPECT_EQ(NBRole::Text(2), "Possible Input");
    EXPECT_EQ(NBRole::Text(3), "Output");
    EXPECT_EQ(NBRole::Text(4), "Frequency weight");
    EXPECT_EQ(NBRole::Text(5), "Unused variable");
    EXPECT_EQ(NBRole::Text(6), "Variable role 6");
}

TEST(NBMeasureLevel, HasATextForAnyNumber) {
    EXPECT_EQ(NBMeasureLevel::Text(0), "Unknown measure level");
    EXPECT_EQ(NBMeasureLevel::Text(1), "Continuous");
    EXPECT_EQ(NBMeasureLevel::Text(2), "Numeric Categorical");
    EXPECT_EQ(NBMeasureLevel::Text(3), "String Categorical");
    EXPECT_EQ(NBMeasureLevel::Text(4), "Frequency weight");
    EXPECT_EQ(NBMeasureLevel::Text(-1), "Measure level -1");
}

}  // namespace
