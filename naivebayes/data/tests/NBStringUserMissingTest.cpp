#include "naivebayes/data/NBStringUserMissing.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "naivebayes/data/NBNumericUserMissing.h"
#include "naivebayes/data/tests/PMMLText.h"
#include "naivebayes/tests/SavedForms.h"

namespace {

using savedforms::Bytes;

NBStringUserMissing MakeDefinition() {
    NBStringUserMissing definition;
    definition.Add("a", "Refused");
    definition.Add("", "");
    return definition;
}

TEST(NBStringUserMissing, ComparesLengthAndBytes) {
    const NBStringUserMissing definition = MakeDefinition();
    EXPECT_TRUE(definition.IsMissing("a"));
    EXPECT_TRUE(definition.IsMissing(""));
    EXPECT_FALSE(definition.IsMissing("a "));
    EXPECT_FALSE(definition.IsMissing("A"));
    EXPECT_FALSE(definition.IsMissing("ab"));
    EXPECT_EQ(definition.GetMissingType(), 1);
    EXPECT_EQ(definition.GetNumDiscrete(), 2);
    EXPECT_FALSE(definition.HasInterval());
}

TEST(NBStringUserMissing, EqualsLeavesOutLabels) {
    NBStringUserMissing other;
    other.Add("a", "");
    other.Add("", "Empty");
    EXPECT_TRUE(MakeDefinition().Equals(&other));
    EXPECT_TRUE(other.Equals(other.Clone().get()));
    other.Add("b", "");
    EXPECT_FALSE(MakeDefinition().Equals(&other));
    EXPECT_FALSE(other.Equals(nullptr));
    const NBNumericUserMissing numbers;
    EXPECT_FALSE(NBStringUserMissing().Equals(&numbers));
}

TEST(NBStringUserMissing, PMMLHasAValueEach) {
    EXPECT_EQ(
        variabletest::PMMLOf(MakeDefinition()),
        (std::vector<std::string>{R"(Value value="a" displayValue="Refused" property="missing")",
                                  R"(Value value="" property="missing")"}));
}

std::string GoodBytes() {
    return "NBStrUMi" + Bytes(2) + Bytes(1) + "a" + Bytes(7) + "Refused" + Bytes(0) + Bytes(0);
}

TEST(NBStringUserMissing, BinaryHasThePublishedLayout) {
    EXPECT_EQ(savedforms::Binary(MakeDefinition()), GoodBytes());
    NBStringUserMissing restored;
    EXPECT_TRUE(savedforms::FromBinary(restored, GoodBytes()));
    EXPECT_EQ(restored.GetValues(), MakeDefinition().GetValues());
    EXPECT_EQ(restored.GetLabels(), MakeDefinition().GetLabels());
}

TEST(NBStringUserMissing, ANegativeLabelLengthAddsNoLabel) {
    NBStringUserMissing restored;
    EXPECT_TRUE(
        savedforms::FromBinary(restored, "NBStrUMi" + Bytes(1) + Bytes(1) + "a" + Bytes(-2)));
    EXPECT_EQ(restored.GetNumDiscrete(), 1);
    EXPECT_TRUE(restored.GetLabels().empty());
    EXPECT_EQ(variabletest::PMMLOf(restored),
              std::vector<std::string>{R"(Value value="a" property="missing")"});
}

TEST(NBStringUserMissing, ANegativeCountReadsNoEntries) {
    NBStringUserMissing fromXML = MakeDefinition();
    EXPECT_TRUE(savedforms::FromXML(fromXML,
                                    "<Obj name=\"NBStringUserMissing\"><Int value=\"-4\"/></Obj>"));
    EXPECT_EQ(fromXML.GetNumDiscrete(), 0);
    NBStringUserMissing fromBinary = MakeDefinition();
    EXPECT_TRUE(savedforms::FromBinary(fromBinary, "NBStrUMi" + Bytes(-4)));
    EXPECT_EQ(fromBinary.GetNumDiscrete(), 0);
}

TEST(NBStringUserMissing, XMLRoundTrips) {
    const std::string text = savedforms::XML(MakeDefinition());
    EXPECT_EQ(text,
              "<Obj name=\"NBStringUserMissing\">\n <Int value=\"2\"/>\n <String value=\"a\"/>\n"
              " <String value=\"Refused\"/>\n <String value=\"\"/>\n <String value=\"\"/>\n"
              "</Obj>\n");
    NBStringUserMissing restored;
    EXPECT_TRUE(savedforms::FromXML(restored, text));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
}

TEST(NBStringUserMissing, FailuresHaveTheirLines) {
    NBStringUserMissing definition;
    savedforms::ExpectBinaryFails(definition, "NBNumUMi" + Bytes(0),
                                  "Error reading NBStringUserMissing!\n");
    savedforms::ExpectBinaryFails(definition, "NBStrUMi" + Bytes(1) + Bytes(-1),
                                  "Error reading NBStringUserMissing!\n");
    savedforms::ExpectXMLFails(
        definition, savedforms::Replaced(savedforms::XML(MakeDefinition()), "\"2\"", "\"1\""),
        "Failure reading NBStringUserMissing!\n");
}

TEST(NBStringUserMissing, DisplaysValuesAndLabels) {
    EXPECT_EQ(savedforms::Displayed(MakeDefinition()),
              "Start of NBStringUserMissing display\nDiscrete missing values:\n"
              "0: a, label = Refused\n1: , label = \nEnd of NBStringUserMissing display\n");
}

}  // namespace
