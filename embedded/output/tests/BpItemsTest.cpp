// What items show and what identifies them.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "embedded/output/ItemData.h"
#include "embedded/output/tests/OutputSession.h"
#include "host/Records.h"

namespace embedded {
namespace {

std::string TextOfItem(const BpItem& item, bool fractionalWeights = false) {
    return ItemText(*item.Data(), fractionalWeights);
}

ReportKey KeyOf(const BpItem& item) { return ItemKey(*item.Data()); }

using BpItems = OutputSession;

TEST_F(BpItems, AKeyShowsItsTextAndIsItself) {
    const BpString item("Cramer's V", true);
    EXPECT_EQ(TextOfItem(item), "Cramér's V");
    EXPECT_EQ(KeyOf(item), ReportKey("Cramer's V"));
}

TEST_F(BpItems, WithoutTheKeyFlagATextStandsAsItIs) {
    EXPECT_EQ(TextOfItem(BpString("Cramer's V", false)), "Cramer's V");
}

TEST_F(BpItems, AVariableShowsItsLabelAndIsItsName) {
    EXPECT_EQ(TextOfItem(BpVariable(kAge, 2)), "Age in years");
    EXPECT_EQ(KeyOf(BpVariable(kAge, 2)), ReportKey("age"));
}

TEST_F(BpItems, AVariableWithoutALabelShowsItsName) {
    EXPECT_EQ(TextOfItem(BpVariable(kIncome, 2)), "income");
}

TEST_F(BpItems, AValueShowsItsLabelAndIsTheRawValue) {
    const BpDataValue north(kRegion, 1.0, 2);
    EXPECT_EQ(TextOfItem(north), "North");
    EXPECT_EQ(KeyOf(north), ReportKey(1.0));
    const BpDataValue first(kCode, std::string("A"), 2);
    EXPECT_EQ(TextOfItem(first), "First");
    EXPECT_EQ(KeyOf(first), ReportKey("A"));
}

TEST_F(BpItems, AValueWithoutALabelIsFormatted) {
    const KoltFormat& format = fData.Variable(kRegion).GetFormat();
    EXPECT_EQ(TextOfItem(BpDataValue(kRegion, 2.0, 2)), ConvertObsToString(2.0, format, true));
    EXPECT_EQ(TextOfItem(BpDataValue(kCode, std::string("B"), 2)), "B");
}

TEST_F(BpItems, TheMissingValueHasNoKey) {
    EXPECT_EQ(KeyOf(BpDataValue(kRegion, MCMV::gMissingValue, 2)), ReportKey());
}

TEST_F(BpItems, ACountInATextHasDecimalsOnlyWhenItNeedsThem) {
    EXPECT_EQ(TextOfItem(BpNumber(5, BpProcedure::Count()), true), "5");
    EXPECT_EQ(TextOfItem(BpNumber(5.5, BpProcedure::Count()), true), "5.50");
    EXPECT_EQ(TextOfItem(BpNumber(5.5, BpProcedure::Percent()), true), "5.5%");
}

TEST_F(BpItems, ACompositeFillsItsTemplate) {
    BpComposite composite("Limited to the first ^1 unselected predictors.", true);
    composite.Add(BpNumber(3, BpProcedure::Count()));
    composite.Finish();
    EXPECT_EQ(TextOfItem(composite), "Limited to the first 3 unselected predictors.");
    EXPECT_EQ(KeyOf(composite), ReportKey("Limited to the first ^1 unselected predictors."));
}

TEST_F(BpItems, ACompositeOfAKeyTakesTheTablesTemplate) {
    BpComposite composite("[%1:\\n ^1:]1", true);
    composite.AddSublist({BpVariable(kAge, 2), BpVariable(kIncome, 2)});
    composite.Finish();
    EXPECT_EQ(TextOfItem(composite), "Age in years\nincome");
}

TEST_F(BpItems, ACompositeWithoutTheKeyFlagTakesItsTemplateAsItStands) {
    BpComposite composite("[%1:\\n ^1:]1", false);
    composite.AddSublist({BpVariable(kAge, 2), BpVariable(kIncome, 2)});
    composite.Finish();
    EXPECT_EQ(TextOfItem(composite), "Age in years\n income");
}

TEST_F(BpItems, ArgumentsOfACompositeAreTranslatedOnlyWhenTheyAreKeys) {
    BpComposite composite("^1/^2", false);
    composite.Add(BpString("Cramer's V", false));
    composite.Add(BpString("Cramer's V", true));
    composite.Finish();
    EXPECT_EQ(TextOfItem(composite), "Cramer's V/Cramér's V");
}

TEST_F(BpItems, ACopyOfACompositeDoesNotGrowWithIt) {
    BpComposite composite("^1^2", false);
    composite.Add(BpString("a", false));
    const BpItem copy = composite;
    composite.Add(BpString("b", false));
    EXPECT_EQ(TextOfItem(copy), "a^2");
    EXPECT_EQ(TextOfItem(composite), "ab");
}

TEST_F(BpItems, LabelsCannotSteerATerminal) {
    fData.MutableVariable(kAge).SetLabel("\x1b[2JAge");
    EXPECT_EQ(TextOfItem(BpVariable(kAge, 2)), "\xEF\xBF\xBD[2JAge");
}

TEST_F(BpItems, HeadingsAreTheSameByWhatTheyAreAndNotByWhatTheyShow) {
    fData.MutableVariable(kIncome).SetLabel("Age in years");
    BpComposite one("Cases Missing > ^1", true);
    one.Add(BpString("70", false));
    BpComposite other("Cases Missing > ^1", true);
    other.Add(BpString("80", false));
    const std::vector<BpItem> different = {BpString("N", true),
                                           BpString("N", false),
                                           BpString("n", true),
                                           BpNumber(1, BpProcedure::Count()),
                                           BpNumber(2, BpProcedure::Count()),
                                           BpVariable(kAge, 2),
                                           BpVariable(kIncome, 2),
                                           BpDataValue(kRegion, 1.0, 2),
                                           BpDataValue(kRegion, 2.0, 2),
                                           BpDataValue(kAge, 1.0, 2),
                                           BpDataValue(kRegion, MCMV::gMissingValue, 2),
                                           BpDataValue(kCode, std::string("1"), 2),
                                           one,
                                           other};
    for (std::size_t i = 0; i < different.size(); ++i)
        for (std::size_t j = 0; j < different.size(); ++j)
            EXPECT_EQ(
                HeadingIdentity(*different[i].Data()) == HeadingIdentity(*different[j].Data()),
                i == j)
                << i << " " << j;
    EXPECT_EQ(HeadingIdentity(*BpVariable(kAge, 2).Data()),
              HeadingIdentity(*BpVariable(kAge, 2).Data()));
    EXPECT_EQ(HeadingIdentity(*BpNumber(0.0, BpProcedure::Count()).Data()),
              HeadingIdentity(*BpNumber(-0.0, BpProcedure::Count()).Data()));
}

}  // namespace
}  // namespace embedded
