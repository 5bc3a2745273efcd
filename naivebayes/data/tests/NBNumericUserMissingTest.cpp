#include "naivebayes/data/NBNumericUserMissing.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "naivebayes/data/NBStringUserMissing.h"
#include "naivebayes/data/tests/PMMLText.h"
#include "naivebayes/tests/SavedForms.h"

namespace {

using savedforms::Bytes;
using variabletest::PMMLOf;

NBNumericUserMissing MakeDefinition() {
    NBNumericUserMissing definition;
    definition.Add(-9.0, "Refused");
    definition.Add(5.0, "");
    definition.SetInterval({97.0, 99.0});
    return definition;
}

TEST(NBNumericUserMissing, HoldsDiscreteValuesAndTheInterval) {
    const NBNumericUserMissing definition = MakeDefinition();
    for (const double missing : {-9.0, 5.0, 97.0, 98.5, 99.0}) {
        EXPECT_TRUE(definition.IsMissing(missing)) << missing;
    }
    for (const double valid : {-9.1, 0.0, 96.9, 99.1}) {
        EXPECT_FALSE(definition.IsMissing(valid)) << valid;
    }
    EXPECT_EQ(definition.GetMissingType(), 0);
    EXPECT_EQ(definition.GetNumDiscrete(), 2);
    EXPECT_TRUE(definition.HasInterval());
    EXPECT_EQ(definition.GetLabels(), (std::vector<std::string>{"Refused", ""}));
}

TEST(NBNumericUserMissing, AValueBothDiscreteAndInsideTheIntervalCountsOnce) {
    NBNumericUserMissing definition;
    definition.Add(2.0, "two");
    definition.SetInterval({1.0, 3.0});
    EXPECT_TRUE(definition.IsMissing(2.0));
    EXPECT_EQ(definition.GetNumDiscrete(), 1);
    EXPECT_EQ(PMMLOf(definition).size(), 3U);
}

TEST(NBNumericUserMissing, HoldsNothingWhenNew) {
    const NBNumericUserMissing definition;
    EXPECT_FALSE(definition.IsMissing(0.0));
    EXPECT_EQ(definition.GetInterval(), nullptr);
    EXPECT_TRUE(PMMLOf(definition).empty());
}

TEST(NBNumericUserMissing, AReversedIntervalHoldsNothingAndPrintsNoExtension) {
    NBNumericUserMissing definition;
    definition.SetInterval({3.0, 1.0});
    for (const double value : {0.0, 1.0, 2.0, 3.0, 4.0}) EXPECT_FALSE(definition.IsMissing(value));
    EXPECT_TRUE(definition.HasInterval());
    EXPECT_TRUE(PMMLOf(definition).empty());
}

TEST(NBNumericUserMissing, ASecondIntervalReplacesTheFirst) {
    NBNumericUserMissing definition = MakeDefinition();
    definition.SetInterval({1.0, 2.0});
    EXPECT_EQ(*definition.GetInterval(), NBNumericInterval(1.0, 2.0));
    EXPECT_FALSE(definition.IsMissing(98.0));
}

TEST(NBNumericUserMissing, ALowBoundAloneIsOneExtension) {
    NBNumericUserMissing definition;
    definition.SetInterval({7.5, false});
    EXPECT_EQ(PMMLOf(definition),
              (std::vector<std::string>{
                  R"(Extension extender="predselect" name="invalidRangeLower" value="7.5")"}));
}

TEST(NBNumericUserMissing, PMMLHasTheRangeBeforeTheValues) {
    EXPECT_EQ(PMMLOf(MakeDefinition()),
              (std::vector<std::string>{
                  R"(Extension extender="predselect" name="invalidRangeLower" value="97")",
                  R"(Extension extender="predselect" name="invalidRangeUpper" value="99")",
                  R"(Value value="-9" displayValue="Refused" property="missing")",
                  R"(Value value="5" property="missing")"}));
}

TEST(NBNumericUserMissing, EqualsLeavesOutLabels) {
    NBNumericUserMissing one;
    one.Add(1.0, "a");
    NBNumericUserMissing two;
    two.Add(1.0, "b");
    EXPECT_TRUE(one.Equals(&two));
}

TEST(NBNumericUserMissing, EqualsLooksAtValuesTheirOrderAndTheInterval) {
    const NBNumericUserMissing definition = MakeDefinition();
    EXPECT_TRUE(definition.Equals(definition.Clone().get()));
    EXPECT_FALSE(definition.Equals(nullptr));
    const NBStringUserMissing strings;
    EXPECT_FALSE(NBNumericUserMissing().Equals(&strings));
    NBNumericUserMissing swapped;
    swapped.Add(5.0, "");
    swapped.Add(-9.0, "Refused");
    swapped.SetInterval({97.0, 99.0});
    EXPECT_FALSE(definition.Equals(&swapped));
    NBNumericUserMissing shorter = MakeDefinition();
    shorter.SetInterval({97.0, 98.0});
    EXPECT_FALSE(definition.Equals(&shorter));
    NBNumericUserMissing without;
    without.Add(-9.0, "");
    without.Add(5.0, "");
    EXPECT_FALSE(definition.Equals(&without));
    EXPECT_FALSE(without.Equals(&definition));
    without.Add(6.0, "");
    without.SetInterval({97.0, 99.0});
    EXPECT_FALSE(definition.Equals(&without));
}

std::string GoodBytes() {
    return "NBNumUMi" + Bytes(2) + Bytes(-9.0) + Bytes(7) + "Refused" + Bytes(5.0) + Bytes(0) +
           Bytes(1) + "NBNumInt" + Bytes(97.0) + Bytes(99.0);
}

TEST(NBNumericUserMissing, BinaryHasThePublishedLayout) {
    EXPECT_EQ(savedforms::Binary(MakeDefinition()), GoodBytes());
    NBNumericUserMissing restored;
    EXPECT_TRUE(savedforms::FromBinary(restored, GoodBytes()));
    EXPECT_TRUE(restored.Equals(MakeDefinition().Clone().get()));
    EXPECT_EQ(restored.GetLabels(), MakeDefinition().GetLabels());
}

TEST(NBNumericUserMissing, OnlyAFlagOfOneReadsAnInterval) {
    NBNumericUserMissing restored;
    const std::string bytes =
        "NBNumUMi" + Bytes(0) + Bytes(2) + "NBNumInt" + Bytes(1.0) + Bytes(2.0);
    std::istringstream stream(bytes);
    EXPECT_EQ(restored.RestoreBinary(stream), 16);
    EXPECT_FALSE(restored.HasInterval());
}

TEST(NBNumericUserMissing, ANegativeLabelLengthAddsNoLabel) {
    NBNumericUserMissing restored;
    ASSERT_TRUE(savedforms::FromBinary(restored, "NBNumUMi" + Bytes(3) + Bytes(1.0) + Bytes(-1) +
                                                     Bytes(2.0) + Bytes(1) + "b" + Bytes(3.0) +
                                                     Bytes(-7) + Bytes(0)));
    EXPECT_EQ(restored.GetValues(), (std::vector<double>{1.0, 2.0, 3.0}));
    EXPECT_EQ(restored.GetLabels(), std::vector<std::string>{"b"});
    // The only label has moved up to the first value, and the rest have none.
    EXPECT_EQ(PMMLOf(restored),
              (std::vector<std::string>{R"(Value value="1" displayValue="b" property="missing")",
                                        R"(Value value="2" property="missing")",
                                        R"(Value value="3" property="missing")"}));
    EXPECT_EQ(savedforms::Binary(restored), "NBNumUMi" + Bytes(3) + Bytes(1.0) + Bytes(1) + "b" +
                                                Bytes(2.0) + Bytes(0) + Bytes(3.0) + Bytes(0) +
                                                Bytes(0));
    EXPECT_FALSE(savedforms::XML(restored).empty());
    EXPECT_NE(savedforms::Displayed(restored).find("2: 3, label = \n"), std::string::npos);
}

TEST(NBNumericUserMissing, ANegativeCountReadsNoEntries) {
    NBNumericUserMissing fromXML = MakeDefinition();
    EXPECT_TRUE(savedforms::FromXML(fromXML,
                                    "<Obj name=\"NBNumericUserMissing\"><Int value=\"-4\"/>"
                                    "<Int value=\"0\"/></Obj>"));
    EXPECT_EQ(fromXML.GetNumDiscrete(), 0);
    NBNumericUserMissing fromBinary = MakeDefinition();
    EXPECT_TRUE(savedforms::FromBinary(fromBinary, "NBNumUMi" + Bytes(-4) + Bytes(0)));
    EXPECT_EQ(fromBinary.GetNumDiscrete(), 0);
}

TEST(NBNumericUserMissing, XMLHasTheSameItemsInTheSameOrder) {
    const std::string text = savedforms::XML(MakeDefinition());
    EXPECT_EQ(text,
              "<Obj name=\"NBNumericUserMissing\">\n <Int value=\"2\"/>\n <Double value=\"-9\"/>\n"
              " <String value=\"Refused\"/>\n <Double value=\"5\"/>\n <String value=\"\"/>\n"
              " <Int value=\"1\"/>\n <Obj name=\"NBNumericInterval\">\n  <Double value=\"97\"/>\n"
              "  <Double value=\"99\"/>\n </Obj>\n</Obj>\n");
    NBNumericUserMissing restored;
    EXPECT_TRUE(savedforms::FromXML(restored, text));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
}

TEST(NBNumericUserMissing, FailuresHaveTheirLines) {
    NBNumericUserMissing definition;
    savedforms::ExpectBinaryFails(definition, "NBStrUMi" + Bytes(0) + Bytes(0),
                                  "Error reading NBNumericUserMissing!\n");
    savedforms::ExpectBinaryFails(definition, savedforms::With(GoodBytes(), 8, 3),
                                  "Error reading NBNumericUserMissing!\n");
    savedforms::ExpectBinaryFails(definition,
                                  savedforms::Replaced(GoodBytes(), "NBNumInt", "NBNumIns"),
                                  "Error reading NBNumericInterval!\n");
    savedforms::ExpectXMLFails(
        definition,
        savedforms::Replaced(savedforms::XML(MakeDefinition()), "NBNumericUserMissing", "Other"),
        "Failure reading NBNumericUserMissing!\n");
}

TEST(NBNumericUserMissing, DisplaysValuesLabelsAndInterval) {
    EXPECT_EQ(savedforms::Displayed(MakeDefinition()),
              "Start of NBNumericUserMissing display\nDiscrete missing values:\n"
              "0: -9, label = Refused\n1: 5, label = \nMissing interval:\n"
              "NBNumericInterval: [ 97, 99 ]\nEnd of NBNumericUserMissing display\n");
}

}  // namespace
