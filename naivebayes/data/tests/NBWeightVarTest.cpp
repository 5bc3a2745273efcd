#include "naivebayes/data/NBWeightVar.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "host/Records.h"
#include "naivebayes/data/NBStringUserMissing.h"
#include "naivebayes/tests/SavedForms.h"

namespace {

using savedforms::Bytes;

NBWeightVar MakeWeight() {
    NBWeightVar variable("w", "Weight", 1);
    auto definition = std::make_unique<NBNumericUserMissing>();
    definition->Add(9.0, "");
    variable.SetUserMissing(std::move(definition));
    return variable;
}

TEST(NBWeightVar, RoleAndLevelNeverChange) {
    NBWeightVar variable = MakeWeight();
    variable.SetRole(NBRole::kInput);
    EXPECT_EQ(variable.GetRole(), 4);
    EXPECT_EQ(variable.GetMeasureLevel(), 4);
    EXPECT_EQ(variable.GetNumCategories(), 0);
    EXPECT_EQ(variable.RefreshNumCategories(), 0);
    EXPECT_EQ(variable.GetRangeState(), 0);
}

TEST(NBWeightVar, KeepsTheDefinitionAndLendsItToTheEncoder) {
    NBWeightVar variable = MakeWeight();
    EXPECT_EQ(variable.GetEncoder()->GetUserMissing(), variable.GetUserMissing());
    EXPECT_EQ(variable.GetEncoder()->Encode(9.0), MCMV::gMissingValue);
    EXPECT_FALSE(variable.SetUserMissing(std::make_unique<NBStringUserMissing>()));
    EXPECT_EQ(variable.GetEncoder()->Encode(9.0), MCMV::gMissingValue);
    EXPECT_TRUE(variable.SetUserMissing(nullptr));
    EXPECT_EQ(variable.GetEncoder()->Encode(9.0), 9.0);
}

TEST(NBWeightVar, CopiesAreDeep) {
    auto variable = std::make_unique<NBWeightVar>(MakeWeight());
    const auto clone = variable->Clone();
    NBWeightVar assigned("other", "", 0);
    assigned = *variable;
    variable.reset();
    EXPECT_EQ(clone->GetEncoder()->GetUserMissing(), clone->GetUserMissing());
    EXPECT_EQ(assigned.GetEncoder()->Encode(9.0), MCMV::gMissingValue);
    EXPECT_EQ(assigned.GetEncoder()->Encode(8.6), 9.0);
    EXPECT_EQ(assigned.GetName(), "w");
}

std::string GoodBytes() {
    return "WEVR" + Bytes(1) + "w" + Bytes(6) + "Weight" + "ROEN" + Bytes(1) + Bytes(1) +
           "NBNumUMi" + Bytes(1) + Bytes(9.0) + Bytes(0) + Bytes(0);
}

TEST(NBWeightVar, BinaryHasThePublishedLayout) {
    EXPECT_EQ(savedforms::Binary(MakeWeight()), GoodBytes());
    NBWeightVar restored("", "", 0);
    EXPECT_TRUE(savedforms::FromBinary(restored, GoodBytes()));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
    EXPECT_EQ(restored.GetEncoder()->Encode(9.0), MCMV::gMissingValue);
}

TEST(NBWeightVar, XMLRoundTrips) {
    NBWeightVar restored("", "", 0);
    EXPECT_TRUE(savedforms::FromXML(restored, savedforms::XML(MakeWeight())));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
}

TEST(NBWeightVar, FailuresHaveTheirLines) {
    NBWeightVar variable = MakeWeight();
    savedforms::ExpectBinaryFails(variable, savedforms::Replaced(GoodBytes(), "WEVR", "CAVR"),
                                  "Error reading NBWeightVar!\n");
    savedforms::ExpectXMLFails(variable,
                               savedforms::Replaced(savedforms::XML(variable), "NBWeightVar", "x"),
                               "Failure reading NBWeightVar!\n");
    EXPECT_EQ(variable.GetEncoder()->Encode(9.0), MCMV::gMissingValue);
}

TEST(NBWeightVar, Displays) {
    EXPECT_EQ(savedforms::Displayed(NBWeightVar("w", "Weight", 2)),
              "Frequency weight variable: name = w, label = Weight, role = Frequency weight\n"
              "\tNBRoundEncoder: option = As is - no change\n");
}

}  // namespace
