#include "naivebayes/data/NBVarList.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "naivebayes/data/NBBinningEncoder.h"
#include "naivebayes/data/NBCatNumEncoder.h"
#include "naivebayes/data/NBNumericUserMissing.h"
#include "naivebayes/data/NBStringEncoder.h"
#include "naivebayes/tests/SavedForms.h"
#include "tests/support/CaseName.h"

namespace {

using Indices = std::vector<std::int32_t>;
using Texts = std::vector<std::string>;

enum Variable { kTarget, kColour, kAge, kWeight, kShape };

NBVarList MakeList() {
    NBVarList list;
    list.AddStringCatVar("answer", "Answer", {"no", "yes"}, {"No", "Yes"}, NBRole::kTarget);
    list.AddNumericCatVar("colour", "", {10.0, 20.0, 30.0}, {"red"}, NBRole::kInput);
    list.AddContVar("age", "Age", 0.0, 10.0, 5, NBRole::kInput);
    list.AddWeightVar("n", "", 1);
    list.AddCatVar("shape", "", 4, NBMeasureLevel::kNumericCat, NBRole::kPossibleInput);
    return list;
}

TEST(NBVarList, IsEmptyWhenNew) {
    const NBVarList list;
    EXPECT_EQ(list.GetNumVariables(), 0);
    EXPECT_EQ(list.GetNumContVars(), 0);
    EXPECT_EQ(list.GetNumCatVars(), 0);
    EXPECT_EQ(list.GetTargetIndex(), -1);
    EXPECT_EQ(list.GetWeightIndex(), -1);
    EXPECT_EQ(list.GetTargetNumCategories(), 0);
}

TEST(NBVarList, CountsWhatIsAdded) {
    NBVarList list = MakeList();
    EXPECT_EQ(list.GetNumVariables(), 5);
    EXPECT_EQ(list.GetNumContVars(), 1);
    EXPECT_EQ(list.GetNumCatVars(), 3);
    EXPECT_EQ(list.GetTargetIndex(), kTarget);
    EXPECT_EQ(list.GetWeightIndex(), kWeight);
    EXPECT_EQ(list.GetNumInputVars(), 2);
    EXPECT_EQ(list.GetNumPossibleInputVars(), 1);
    EXPECT_EQ(list.GetTargetNumCategories(), 2);
    EXPECT_EQ(list.GetTotalCategories(), 2 + 3 + 5 + 0 + 4);
}

TEST(NBVarList, ValueIGetsCodeI) {
    const NBVarList list = MakeList();
    const auto& numbers = static_cast<const NBCatNumEncoder&>(*list.GetEncoder(kColour));
    EXPECT_EQ(numbers.Lookup(30.0), 2.0);
    EXPECT_EQ(*numbers.GetCategoryLabels(), Texts{"red"});
    const auto& strings = static_cast<const NBStringEncoder&>(*list.GetEncoder(kTarget));
    EXPECT_EQ(strings.Lookup("yes"), 1.0);
    EXPECT_EQ(*strings.GetCategoryLabels(), (Texts{"No", "Yes"}));
}

TEST(NBVarList, RefusesEmptyAndKnownNames) {
    NBVarList list = MakeList();
    for (const std::string name : {"", "age", "n"}) {
        EXPECT_EQ(list.AddNumericCatVar(name, "", {1.0}, {}, NBRole::kInput), -1);
        EXPECT_EQ(list.AddNumericCatVar(name, "", {1.0}, NBRole::kInput), -1);
        EXPECT_EQ(list.AddStringCatVar(name, "", {"a"}, {}, NBRole::kInput), -1);
        EXPECT_EQ(list.AddCatVar(name, "", 2, NBMeasureLevel::kStringCat, NBRole::kInput), -1);
        EXPECT_EQ(list.AddContVar(name, "", {1.0}, NBRole::kInput), -1);
        EXPECT_EQ(list.AddContVar(name, "", 0.0, 1.0, 2, NBRole::kInput), -1);
    }
    EXPECT_EQ(list.GetNumVariables(), 5);
    EXPECT_EQ(list.AddCatVar("Age", "", 2, NBMeasureLevel::kStringCat, NBRole::kInput), 5);
}

TEST(NBVarList, AContinuousVariableIsNeverTheTarget) {
    NBVarList list;
    EXPECT_EQ(list.AddContVar("a", "", 0.0, 1.0, 2, NBRole::kTarget), -1);
    EXPECT_EQ(list.AddContVar("a", "", {1.0}, NBRole::kTarget), -1);
    EXPECT_EQ(list.GetNumVariables(), 0);
    EXPECT_EQ(list.GetNumContVars(), 0);
}

TEST(NBVarList, ASecondWeightIsRefused) {
    NBVarList list = MakeList();
    EXPECT_EQ(list.AddWeightVar("m", "", 1), -1);
    EXPECT_EQ(list.GetNumVariables(), 5);
}

TEST(NBVarList, AWeightsNameIsNotLookedAt) {
    NBVarList list;
    list.AddContVar("a", "", 0.0, 1.0, 2, NBRole::kInput);
    EXPECT_EQ(list.AddWeightVar("a", "", 1), 1);
    NBVarList nameless;
    EXPECT_EQ(nameless.AddWeightVar("", "", 1), 0);
    EXPECT_EQ(nameless.GetNumCatVars(), 0);
    EXPECT_EQ(nameless.GetNumContVars(), 0);
}

TEST(NBVarList, AnAddedTargetTakesTheIndexFromAnEarlierOne) {
    NBVarList list = MakeList();
    EXPECT_EQ(list.AddNumericCatVar("second", "", {1.0, 2.0}, NBRole::kTarget), 5);
    EXPECT_EQ(list.GetTargetIndex(), 5);
    EXPECT_EQ(list.AddCatVar("third", "", 3, NBMeasureLevel::kStringCat, NBRole::kTarget), 6);
    EXPECT_EQ(list.GetTargetIndex(), 6);
    EXPECT_EQ(list.GetTargetNumCategories(), 2);
}

TEST(NBVarList, AVariableOfUnknownValuesHasItsCategoriesButNoCodes) {
    NBVarList list = MakeList();
    EXPECT_EQ(list.GetVariable(kShape)->GetNumCategories(), 4);
    EXPECT_EQ(list.GetEncoder(kShape)->GetNumCodes(), 0);
    EXPECT_EQ(list.GetEncoder(kShape)->GetEncoderType(), 2);
    const std::int32_t odd = list.AddCatVar("odd", "", 4, 7, NBRole::kInput);
    EXPECT_EQ(list.GetEncoder(odd)->GetEncoderType(), 3);
    EXPECT_EQ(list.GetVariable(odd)->GetMeasureLevel(), 3);
}

TEST(NBVarList, RepeatedValuesGiveFewerCodesThanCategories) {
    NBVarList list;
    list.AddNumericCatVar("a", "", {1.0, 1.0}, NBRole::kInput);
    EXPECT_EQ(list.GetEncoder(0)->GetNumCodes(), 1);
    EXPECT_EQ(list.GetVariable(0)->GetNumCategories(), 2);
    EXPECT_EQ(list.GetVariable(0)->GetRangeState(), 0);
}

TEST(NBVarList, OutOfRangeThereIsNothing) {
    NBVarList list = MakeList();
    const NBVarList& fixed = list;
    for (const std::int32_t index : {-1, 5}) {
        EXPECT_EQ(list.GetVariable(index), nullptr);
        EXPECT_EQ(fixed.GetVariable(index), nullptr);
        EXPECT_EQ(list.GetEncoder(index), nullptr);
        EXPECT_EQ(fixed.GetEncoder(index), nullptr);
        EXPECT_EQ(list.GetRole(index), 0);
        EXPECT_FALSE(list.SetRole(index, NBRole::kInput));
        EXPECT_FALSE(list.RemoveVariable(index));
        EXPECT_FALSE(list.AddNumericMissing(index, 1.0, ""));
        EXPECT_FALSE(list.AddStringMissing(index, "a", ""));
        EXPECT_FALSE(list.SetMissingRange(index, 1.0, 2.0));
    }
}

TEST(NBVarList, GivesTheNamesOfInputsAndTarget) {
    const NBVarList list = MakeList();
    Texts names{"old"};
    std::string target;
    list.GetVariableNames(names, target);
    EXPECT_EQ(names, (Texts{"colour", "age"}));
    EXPECT_EQ(target, "answer");
    NBVarList().GetVariableNames(names, target);
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(target, "");
}

TEST(NBVarList, MissingValuesMustFitTheVariable) {
    NBVarList list = MakeList();
    EXPECT_TRUE(list.AddStringMissing(kTarget, "na", "None"));
    EXPECT_TRUE(list.AddStringMissing(kTarget, "dk", ""));
    EXPECT_EQ(list.GetVariable(kTarget)->GetUserMissing()->GetNumDiscrete(), 2);
    EXPECT_FALSE(list.AddNumericMissing(kTarget, 1.0, ""));
    EXPECT_FALSE(list.SetMissingRange(kTarget, 1.0, 2.0));
    for (const std::int32_t index : {kColour, kAge, kWeight}) {
        EXPECT_FALSE(list.AddStringMissing(index, "na", ""));
        EXPECT_TRUE(list.AddNumericMissing(index, 1.0, "One"));
        EXPECT_TRUE(list.SetMissingRange(index, 5.0, 6.0));
        EXPECT_EQ(list.GetVariable(index)->GetUserMissing()->GetNumDiscrete(), 1);
    }
    EXPECT_EQ(static_cast<NBBinningEncoder&>(*list.GetEncoder(kAge)).Encode(5.5), -1.0);
}

TEST(NBVarList, TheFirstMissingRangeStands) {
    NBVarList list = MakeList();
    EXPECT_TRUE(list.SetMissingRange(kAge, 5.0, 6.0));
    EXPECT_FALSE(list.SetMissingRange(kAge, 1.0, 2.0));
    EXPECT_TRUE(list.AddNumericMissing(kAge, 1.0, ""));
    const auto& definition =
        static_cast<const NBNumericUserMissing&>(*list.GetVariable(kAge)->GetUserMissing());
    EXPECT_EQ(*definition.GetInterval(), NBNumericInterval(5.0, 6.0));
}

TEST(NBVarList, ASecondTargetDoesNotDisplaceTheFirst) {
    NBVarList list = MakeList();
    EXPECT_TRUE(list.SetRole(kColour, NBRole::kTarget));
    EXPECT_EQ(list.GetRole(kColour), NBRole::kTarget);
    EXPECT_EQ(list.GetTargetIndex(), kTarget);
    EXPECT_TRUE(list.SetRole(kTarget, NBRole::kInput));
    EXPECT_EQ(list.GetTargetIndex(), -1);
    EXPECT_EQ(list.GetTargetNumCategories(), 3);
    EXPECT_TRUE(list.SetRole(kShape, NBRole::kTarget));
    EXPECT_EQ(list.GetTargetIndex(), kShape);
}

TEST(NBVarList, AWeightKeepsItsRoleButCanTakeTheTargetsIndex) {
    NBVarList list;
    list.AddWeightVar("n", "", 1);
    EXPECT_TRUE(list.SetRole(0, NBRole::kTarget));
    EXPECT_EQ(list.GetRole(0), NBRole::kWeight);
    EXPECT_EQ(list.GetTargetIndex(), 0);
}

TEST(NBVarList, RemovingTheWeightLeavesBothCountsAlone) {
    NBVarList list = MakeList();
    EXPECT_TRUE(list.RemoveVariable(kWeight));
    EXPECT_EQ(list.GetWeightIndex(), -1);
    EXPECT_EQ(list.GetNumContVars(), 1);
    EXPECT_EQ(list.GetNumCatVars(), 3);
    EXPECT_EQ(list.GetTargetIndex(), kTarget);
    EXPECT_EQ(list.GetVariable(3)->GetName(), "shape");
}

TEST(NBVarList, RemovingClosesTheGap) {
    NBVarList list;
    list.AddContVar("a", "", 0.0, 1.0, 2, NBRole::kInput);
    list.AddNumericCatVar("b", "", {1.0, 2.0}, NBRole::kInput);
    list.AddNumericCatVar("t", "", {1.0, 2.0}, NBRole::kTarget);
    list.AddWeightVar("n", "", 1);
    EXPECT_TRUE(list.RemoveVariable("a"));
    EXPECT_EQ(list.GetNumContVars(), 0);
    EXPECT_EQ(list.GetTargetIndex(), 1);
    EXPECT_EQ(list.GetWeightIndex(), 2);
    EXPECT_TRUE(list.RemoveVariable(1));
    EXPECT_EQ(list.GetNumCatVars(), 1);
    EXPECT_EQ(list.GetTargetIndex(), -1);
    EXPECT_EQ(list.GetWeightIndex(), 1);
    EXPECT_FALSE(list.RemoveVariable("a"));
}

TEST(NBVarList, MakesBinsForInputsAndOnRequestForCandidates) {
    NBVarList list;
    list.AddContVar("input", "", 0.0, 1.0, -1, NBRole::kInput);
    list.AddContVar("candidate", "", 0.0, 1.0, -1, NBRole::kPossibleInput);
    list.AddContVar("unused", "", 0.0, 1.0, -1, NBRole::kUnused);
    list.AddContVar("constant", "", 1.0, 1.0, -1, NBRole::kInput);
    list.AddContVar("has", "", 0.0, 1.0, 3, NBRole::kInput);
    EXPECT_EQ(list.MakeBinningEncoders(4, false), 1);
    EXPECT_EQ(list.GetEncoder(0)->GetNumCodes(), 4);
    EXPECT_EQ(list.GetEncoder(1), nullptr);
    EXPECT_EQ(list.MakeBinningEncoders(4, true), 1);
    EXPECT_EQ(list.GetEncoder(1)->GetNumCodes(), 4);
    EXPECT_EQ(list.GetEncoder(2), nullptr);
    EXPECT_EQ(list.GetEncoder(3), nullptr);
    EXPECT_EQ(list.GetEncoder(4)->GetNumCodes(), 3);
}

TEST(NBVarList, DropsGivenCutpointsByForceOnly) {
    NBVarList list;
    list.AddContVar("equal", "", 0.0, 1.0, 2, NBRole::kInput);
    list.AddContVar("given", "", {1.0, 2.0}, NBRole::kInput);
    list.AddNumericCatVar("t", "", {1.0, 2.0}, NBRole::kTarget);
    EXPECT_EQ(list.DropEncoders(false), 1);
    EXPECT_EQ(list.GetEncoder(0), nullptr);
    EXPECT_EQ(list.DropEncoders(true), 1);
    EXPECT_EQ(list.GetEncoder(1), nullptr);
    EXPECT_NE(list.GetEncoder(2), nullptr);
}

TEST(NBVarList, ValidatesWhatIsInUse) {
    NBVarList list = MakeList();
    Indices constant{1};
    Indices empty{1};
    EXPECT_TRUE(list.ValidateVariables(constant, empty, true));
    EXPECT_TRUE(constant.empty());
    EXPECT_TRUE(empty.empty());
    list.AddContVar("flat", "", 1.0, 1.0, 2, NBRole::kInput);
    list.AddContVar("none", "", 2.0, 1.0, 2, NBRole::kInput);
    list.AddCatVar("one", "", 1, NBMeasureLevel::kStringCat, NBRole::kPossibleInput);
    list.AddCatVar("zero", "", 0, NBMeasureLevel::kStringCat, NBRole::kUnused);
    EXPECT_FALSE(list.ValidateVariables(constant, empty, true));
    EXPECT_EQ(constant, (Indices{5, 7}));
    EXPECT_EQ(empty, Indices{6});
    EXPECT_FALSE(list.ValidateVariables(constant, empty, false));
    EXPECT_EQ(constant, Indices{5});
}

TEST(NBVarList, AVariableWithoutARoleIsCheckedButIsNoPredictor) {
    NBVarList list;
    list.AddNumericCatVar("t", "", {1.0, 2.0}, NBRole::kTarget);
    list.AddNumericCatVar("none", "", {1.0, 2.0}, NBRole::kNone);
    Indices constant;
    Indices empty;
    EXPECT_FALSE(list.ValidateVariables(constant, empty, true));
    EXPECT_TRUE(constant.empty());
    list.AddNumericCatVar("p", "", {1.0, 2.0}, NBRole::kInput);
    EXPECT_TRUE(list.ValidateVariables(constant, empty, true));
    list.AddNumericCatVar("flat", "", {1.0}, NBRole::kNone);
    EXPECT_FALSE(list.ValidateVariables(constant, empty, true));
    EXPECT_EQ(constant, Indices{3});
}

TEST(NBVarList, NeedsAPredictorAndExactlyOneTarget) {
    Indices constant;
    Indices empty;
    NBVarList list;
    list.AddNumericCatVar("t", "", {1.0, 2.0}, NBRole::kTarget);
    EXPECT_FALSE(list.ValidateVariables(constant, empty, true));
    list.AddNumericCatVar("p", "", {1.0, 2.0}, NBRole::kPossibleInput);
    EXPECT_TRUE(list.ValidateVariables(constant, empty, true));
    EXPECT_FALSE(list.ValidateVariables(constant, empty, false));
    list.AddNumericCatVar("u", "", {1.0, 2.0}, NBRole::kTarget);
    EXPECT_FALSE(list.ValidateVariables(constant, empty, true));
    list.SetRole(0, NBRole::kInput);
    list.SetRole(2, NBRole::kInput);
    EXPECT_FALSE(list.ValidateVariables(constant, empty, true));
}

TEST(NBVarList, CopiesAreDeep) {
    NBVarList list = MakeList();
    NBVarList copy(list);
    NBVarList assigned;
    assigned = list;
    list.SetRole(kColour, NBRole::kUnused);
    static_cast<NBCatNumEncoder&>(*list.GetEncoder(kColour)).Encode(40.0);
    for (const NBVarList* const other : {&copy, &assigned}) {
        EXPECT_EQ(other->GetRole(kColour), NBRole::kInput);
        EXPECT_EQ(other->GetEncoder(kColour)->GetNumCodes(), 3);
        EXPECT_EQ(other->GetNumCatVars(), 3);
        EXPECT_EQ(other->GetTargetIndex(), kTarget);
        EXPECT_EQ(other->GetWeightIndex(), kWeight);
    }
    list = copy;
    EXPECT_EQ(list.GetRole(kColour), NBRole::kInput);
}

struct CompareCase {
    const char* fName;
    void (*fChange)(NBVarList& list);
    bool fEqual;
    std::int32_t fFirstDifference;
};

class Compare : public testing::TestWithParam<CompareCase> {};

NBVarList MakeComparable() {
    NBVarList list = MakeList();
    list.AddContVar("cut", "", {1.0, 2.0}, NBRole::kInput);
    return list;
}

TEST_P(Compare, TellsWhereListsFirstDiffer) {
    const NBVarList list = MakeComparable();
    NBVarList other = MakeComparable();
    GetParam().fChange(other);
    std::int32_t first = 77;
    EXPECT_EQ(list.Compare(other, first), GetParam().fEqual);
    EXPECT_EQ(first, GetParam().fFirstDifference);
    EXPECT_EQ(other.Compare(list, first), GetParam().fEqual);
    EXPECT_EQ(first, GetParam().fFirstDifference);
}

constexpr std::int32_t kCut = 5;

INSTANTIATE_TEST_SUITE_P(
    NBVarList, Compare,
    testing::Values(
        CompareCase{"Nothing", [](NBVarList&) {}, true, -1},
        CompareCase{"NumberOfVariables", [](NBVarList& list) { list.RemoveVariable(kCut); }, false,
                    5},
        CompareCase{"TargetIndex",
                    [](NBVarList& list) {
                        list.SetRole(kTarget, NBRole::kUnused);
                        list.SetRole(kShape, NBRole::kTarget);
                    },
                    false, 0},
        CompareCase{"NoTarget", [](NBVarList& list) { list.SetRole(kTarget, NBRole::kInput); },
                    false, -1},
        CompareCase{"Label", [](NBVarList& list) { list.GetVariable(kAge)->SetLabel("age"); },
                    false, kAge},
        CompareCase{"Role", [](NBVarList& list) { list.SetRole(kAge, NBRole::kPossibleInput); },
                    false, kAge},
        CompareCase{"MissingValuesOfAnInput",
                    [](NBVarList& list) { list.AddNumericMissing(kColour, 1.0, ""); }, false,
                    kColour},
        CompareCase{"MissingValuesOfTheTarget",
                    [](NBVarList& list) { list.AddStringMissing(kTarget, "x", ""); }, false,
                    kTarget},
        CompareCase{"MissingValuesOfACandidateDoNotCount",
                    [](NBVarList& list) { list.AddNumericMissing(kShape, 1.0, ""); }, true, -1},
        CompareCase{"MissingValuesOfTheWeightDoNotCount",
                    [](NBVarList& list) { list.AddNumericMissing(kWeight, 1.0, ""); }, true, -1},
        CompareCase{"FewerBins",
                    [](NBVarList& list) {
                        static_cast<NBBinningEncoder&>(*list.GetEncoder(kCut)).SetCutpoints({1.0});
                    },
                    false, kCut},
        CompareCase{
            "OtherBins",
            [](NBVarList& list) {
                static_cast<NBBinningEncoder&>(*list.GetEncoder(kCut)).SetCutpoints({1.0, 2.5});
            },
            false, kCut},
        CompareCase{"NoBins", [](NBVarList& list) { list.DropEncoders(false); }, false, kAge},
        CompareCase{"OtherValuesOfTheSameNumberDoNotCount",
                    [](NBVarList& list) {
                        auto& encoder = static_cast<NBCatNumEncoder&>(*list.GetEncoder(kColour));
                        encoder = NBCatNumEncoder({1.0, 2.0, 3.0});
                    },
                    true, -1},
        CompareCase{"CategoriesWithoutValuesInEitherList",
                    [](NBVarList& list) {
                        auto& encoder = static_cast<NBCatNumEncoder&>(*list.GetEncoder(kColour));
                        encoder = NBCatNumEncoder({1.0, 2.0});
                    },
                    false, kColour}),
    testsupport::CaseName());

TEST(NBVarList, CompareLooksAtNameAndMeasureLevel) {
    std::int32_t first = 77;
    NBVarList list;
    list.AddCatVar("a", "", 2, NBMeasureLevel::kNumericCat, NBRole::kUnused);
    NBVarList renamed;
    renamed.AddCatVar("A", "", 2, NBMeasureLevel::kNumericCat, NBRole::kUnused);
    EXPECT_FALSE(list.Compare(renamed, first));
    EXPECT_EQ(first, 0);
    NBVarList retyped;
    retyped.AddCatVar("a", "", 2, NBMeasureLevel::kStringCat, NBRole::kUnused);
    EXPECT_FALSE(list.Compare(retyped, first));
}

TEST(NBVarList, AModelWithoutKnownValuesComparesWithNoneNotEvenItself) {
    NBVarList list;
    list.AddCatVar("a", "", 2, NBMeasureLevel::kNumericCat, NBRole::kInput);
    std::int32_t first = 77;
    EXPECT_FALSE(list.Compare(list, first));
    EXPECT_EQ(first, 0);
}

TEST(NBVarList, Displays) {
    NBVarList list;
    list.AddContVar("a", "", 1.0, 1.0, 2, NBRole::kUnused);
    EXPECT_EQ(savedforms::Displayed(list),
              "\nBegin display of NBVarList object.\nNumber of Continuous Variables = 1\n"
              "Number of Categorical Variables  = 0\nTarget Index  = -1\n"
              "Continuous variable: name = a, label = , role = Unused variable\n"
              "\tNumber of bins = 2, min = 1, max = 1\n\tEncoder not set.\n"
              "End of display for NBVarList object.\n");
}

}  // namespace
