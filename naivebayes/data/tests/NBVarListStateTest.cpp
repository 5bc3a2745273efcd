// Saved variable lists: golden files, refusals, damage.
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "naivebayes/data/NBBinningEncoder.h"
#include "naivebayes/data/NBCatNumEncoder.h"
#include "naivebayes/data/NBStringEncoder.h"
#include "naivebayes/data/NBVarList.h"
#include "naivebayes/tests/SavedForms.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/RestoreAbuse.h"

#include "tests/support/AllocationCounter.inc"  // after all others

namespace {

using savedforms::Bytes;

/// What the golden files hold: every kind of variable that can be restored.
NBVarList MakeList() {
    NBVarList list;
    list.AddStringCatVar("answer", "The answer", {"no", "yes"}, {"No", "Yes"}, NBRole::kTarget);
    list.AddStringMissing(0, "dk", "Don't know");
    list.AddNumericCatVar("colour", "", {10.0, 20.5, -3.0}, {"red"}, NBRole::kInput);
    list.AddNumericMissing(1, 99.0, "Refused");
    list.AddContVar("age", "Age & more", {18.0, 30.0, 65.0}, NBRole::kInput);
    list.SetMissingRange(2, 97.0, NBNumericInterval::kNoHigh);
    list.AddContVar("height", "", 150.0, 200.0, 2, NBRole::kPossibleInput);
    list.AddContVar("flat", "", 1.0, 1.0, 10, NBRole::kUnused);
    list.AddCatVar("shape", "", 4, NBMeasureLevel::kNumericCat, NBRole::kPossibleInput);
    return list;
}

std::string Golden(const std::string& fileName) {
    std::ifstream file(std::string(NAIVEBAYES_TEST_DATA) + "/" + fileName, std::ios::binary);
    EXPECT_TRUE(file.good()) << fileName;
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(NBVarListState, BinaryIsThatOfTheGoldenFile) {
    EXPECT_EQ(savedforms::Binary(MakeList()), Golden("variables.bin"));
}

TEST(NBVarListState, XMLIsThatOfTheGoldenFile) {
    EXPECT_EQ(savedforms::XML(MakeList()), Golden("variables.xml"));
}

TEST(NBVarListState, BothFormsRestoreTheSameList) {
    NBVarList fromBinary;
    EXPECT_TRUE(savedforms::FromBinary(fromBinary, Golden("variables.bin")));
    NBVarList fromXML;
    EXPECT_TRUE(savedforms::FromXML(fromXML, Golden("variables.xml")));
    for (NBVarList* const list : {&fromBinary, &fromXML}) {
        EXPECT_EQ(savedforms::Binary(*list), Golden("variables.bin"));
        EXPECT_EQ(list->GetTargetIndex(), 0);
        EXPECT_EQ(list->GetNumContVars(), 3);
        EXPECT_EQ(list->GetNumCatVars(), 3);
        auto& age = static_cast<NBBinningEncoder&>(*list->GetEncoder(2));
        EXPECT_EQ(age.Encode(98.0), -1.0);
        EXPECT_EQ(age.Encode(40.0), 2.0);
        EXPECT_EQ(list->GetEncoder(4), nullptr);
        EXPECT_EQ(list->GetVariable(4)->GetNumCategories(), 10);
    }
    std::int32_t first = 0;
    EXPECT_TRUE(fromBinary.Compare(fromXML, first));
}

TEST(NBVarListState, RestoringReportsTheBytesRead) {
    const std::string bytes = Golden("variables.bin") + "more";
    std::istringstream stream(bytes);
    NBVarList list;
    EXPECT_EQ(list.RestoreBinary(stream), static_cast<std::int64_t>(bytes.size() - 4));
}

TEST(NBVarListState, RestoringReplacesWhatWasThere) {
    NBVarList list;
    list.AddContVar("old", "", 0.0, 1.0, 2, NBRole::kInput);
    EXPECT_TRUE(savedforms::FromBinary(list, savedforms::Binary(NBVarList())));
    EXPECT_EQ(list.GetNumVariables(), 0);
    EXPECT_EQ(list.GetNumContVars(), 0);
}

TEST(NBVarListState, AListWithAWeightCannotBeRestored) {
    NBVarList list = MakeList();
    list.AddWeightVar("n", "", 1);
    NBVarList restored;
    savedforms::ExpectBinaryFails(restored, savedforms::Binary(list), "Error reading NBCatVar!\n");
    savedforms::ExpectXMLFails(restored, savedforms::XML(list), "Failure reading NBCatVar!\n");
}

TEST(NBVarListState, TheWeightsIndexIsNotSaved) {
    NBVarList list;
    list.AddContVar("a", "", 0.0, 1.0, 2, NBRole::kInput);
    list.AddWeightVar("n", "", 1);
    EXPECT_TRUE(savedforms::FromBinary(list, Golden("variables.bin")));
    EXPECT_EQ(list.GetWeightIndex(), 1);
    EXPECT_EQ(list.AddWeightVar("n", "", 1), -1);
    EXPECT_TRUE(list.RemoveVariable(1));
    EXPECT_EQ(list.GetWeightIndex(), -1);
    EXPECT_EQ(list.GetNumCatVars(), 2);
}

TEST(NBVarListState, AnyOtherMeasureLevelInTheListMeansACategory) {
    for (const std::int32_t level : {0, 2, 4, 77, -1}) {
        NBVarList restored;
        EXPECT_TRUE(
            savedforms::FromBinary(restored, savedforms::With(Golden("variables.bin"), 8, level)));
        EXPECT_EQ(restored.GetVariable(0)->GetMeasureLevel(), 3);
    }
}

TEST(NBVarListState, CountsAndIndexMustAgreeWithTheVariables) {
    const std::string bytes = Golden("variables.bin");
    const std::size_t end = bytes.size();
    NBVarList list;
    EXPECT_TRUE(savedforms::FromBinary(list, savedforms::With(bytes, end - 4, -1)));
    EXPECT_TRUE(savedforms::FromBinary(list, savedforms::With(bytes, end - 4, 5)));
    for (const std::string& damaged :
         {savedforms::With(bytes, end - 4, 6), savedforms::With(bytes, end - 4, -2),
          savedforms::With(bytes, end - 8, 2), savedforms::With(bytes, end - 12, 2),
          savedforms::With(bytes, 4, -1), savedforms::Replaced(bytes, "NBVL", "NBVM")}) {
        savedforms::ExpectBinaryFails(list, damaged, "Error reading NBVarList!\n");
    }
    savedforms::ExpectXMLFails(list,
                               savedforms::Replaced(Golden("variables.xml"), "NBVarList", "Vars"),
                               "Failure reading NBVarList!\n");
}

TEST(NBVarListState, AFailedRestoreLeavesTheCountsOfTheVariablesThatWereRead) {
    constexpr std::int32_t kFewest = std::numeric_limits<std::int32_t>::min();
    const std::string bytes = Golden("variables.bin");
    NBVarList list;
    savedforms::ExpectBinaryFails(list, savedforms::With(bytes, bytes.size() - 8, kFewest),
                                  "Error reading NBVarList!\n");
    EXPECT_EQ(list.GetNumVariables(), 6);
    EXPECT_EQ(list.GetNumContVars(), 3);
    EXPECT_EQ(list.GetNumCatVars(), 3);
    EXPECT_TRUE(list.RemoveVariable(0));
    EXPECT_EQ(list.GetNumCatVars(), 2);
}

/// All that an engine does with a list.
void Use(NBVarList& list) {
    std::vector<std::int32_t> constant;
    std::vector<std::int32_t> empty;
    list.ValidateVariables(constant, empty, true);
    (void)list.GetTotalCategories();
    (void)list.GetTargetNumCategories();
    (void)list.GetVariable(list.GetTargetIndex());
    list.MakeBinningEncoders(5, true);
    for (std::int32_t i = 0; i < list.GetNumVariables(); ++i) {
        INBEncoder* const encoder = list.GetEncoder(i);
        const std::int32_t level = list.GetVariable(i)->GetMeasureLevel();
        double code = -1.0;
        if (level == NBMeasureLevel::kNumericCat) {
            auto& numbers = dynamic_cast<NBCatNumEncoder&>(*encoder);
            code = numbers.Encode(20.5);
            (void)numbers.Decode(0);
        } else if (level == NBMeasureLevel::kStringCat) {
            auto& strings = dynamic_cast<NBStringEncoder&>(*encoder);
            code = strings.Encode("yes");
            (void)strings.Decode(1);
        } else if (encoder != nullptr) {
            code = dynamic_cast<NBBinningEncoder&>(*encoder).Encode(20.5);
        }
        // Tables are sized by the categories.
        list.GetVariable(i)->RefreshNumCategories();
        if (encoder != nullptr) {
            EXPECT_LT(code, list.GetVariable(i)->GetNumCategories());
        }
        if (const INBUserMissing* const missing = list.GetVariable(i)->GetUserMissing()) {
            (void)missing->MakePMMLElements();
        }
        if (encoder != nullptr) encoder->SetCategoryLabel(1, "label");
    }
    NBVarList copy(list);
    std::int32_t first = 0;
    (void)copy.Compare(list, first);
    copy.DropEncoders(true);
    list = copy;
    (void)savedforms::Binary(list);
    (void)savedforms::XML(list);
    (void)savedforms::Displayed(list);
    list.RemoveVariable(0);
}

testsupport::RestoreSubject BinarySubject() {
    return {"NBVarList, binary", Golden("variables.bin"), [](const std::string& bytes) {
                NBVarList list;
                savedforms::FromBinary(list, bytes);
                Use(list);
            }};
}

testsupport::RestoreSubject XMLSubject() {
    return {"NBVarList, XML", Golden("variables.xml"),
            [](const std::string& text) {
                NBVarList list;
                savedforms::FromXML(list, text);
                Use(list);
            },
            true};
}

// A failed restore leaves a list, too, that can be used.
TEST(NBVarListState, BinaryStandsAnyDamage) {
    EXPECT_TRUE(testsupport::MemoryIsChecked());
    testsupport::RestoreAbuse abuse;
    abuse.Truncate(BinarySubject());
    abuse.ChangeEveryByte(BinarySubject());
    abuse.Fuzz(BinarySubject(), 5000, testsupport::RandomSeed());
    EXPECT_GT(abuse.Count(), 100000);
}

TEST(NBVarListState, XMLStandsAnyDamage) {
    testsupport::RestoreAbuse abuse;
    abuse.Truncate(XMLSubject());
    abuse.ChangeEveryByte(XMLSubject(), 3, 50);
    abuse.Fuzz(XMLSubject(), 3000, testsupport::RandomSeed());
    EXPECT_GT(abuse.Count(), 10000);
}

}  // namespace
