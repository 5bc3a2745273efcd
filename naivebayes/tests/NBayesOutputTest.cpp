#include "naivebayes/NBayesOutput.h"

#include <gtest/gtest.h>

#include <limits>

#include "naivebayes/data/NBCatNumEncoder.h"
#include "naivebayes/data/NBStringEncoder.h"
#include "naivebayes/data/NBVarList.h"
#include "naivebayes/tests/SavedForms.h"

namespace {

using Strings = std::vector<std::string>;
using Weights = std::vector<double>;
using Counts = std::vector<std::int32_t>;
using savedforms::Bytes;

class NBayesOutputTest : public testing::Test {
 protected:
    NBayesOutputTest() { fList.AddStringCatVar("answer", "", {"no", "yes", "never"}, {}, 3); }

    /// Weights 1.5, 2.5 and 0 in one, two and no records; N = 4.
    NBayesOutput Small() const {
        NBayesOutput table(*fList.GetVariable(0), 6);
        table.AddRecord(0, 1.5);
        table.AddRecord(1, 2.0);
        table.AddRecord(1, 0.5);
        table.ComputePriors(4.0);
        return table;
    }

    NBVarList fList;
};

TEST_F(NBayesOutputTest, ATableThatWasNeverSetUpHasNoCategories) {
    const NBayesOutput table;
    EXPECT_EQ(table.GetNumCategories(), -1);
    EXPECT_EQ(table.GetVariable(), nullptr);
    EXPECT_TRUE(table.GetPi().empty());
}

TEST_F(NBayesOutputTest, TakesItsSizeFromTheVariable) {
    const NBayesOutput table(*fList.GetVariable(0), 6);
    EXPECT_EQ(table.GetNumCategories(), 3);
    EXPECT_EQ(table.GetVarIndex(), 6);
    EXPECT_EQ(table.GetVariable(), fList.GetVariable(0));
    EXPECT_EQ(table.GetWeightedCounts(), Weights(3, 0.0));
    EXPECT_EQ(table.GetUnweightedCounts(), Counts(3, 0));
    EXPECT_EQ(table.GetPi(), Weights(3, 0.0));
}

TEST_F(NBayesOutputTest, AddRecordGivesTheCategorysNewWeight) {
    NBayesOutput table(*fList.GetVariable(0), 0);
    EXPECT_EQ(table.AddRecord(1, 2.0), 2.0);
    EXPECT_EQ(table.AddRecord(1, 0.5), 2.5);
    EXPECT_EQ(table.GetWeightedCount(1), 2.5);
    EXPECT_EQ(table.GetUnweightedCount(1), 2);
}

TEST_F(NBayesOutputTest, PriorsTakeTheCategoriesThatHoldWeight) {
    NBayesOutput table = Small();
    EXPECT_EQ(table.ComputePriors(4.0), 2);
    EXPECT_DOUBLE_EQ(table.GetPi(0), 1.75 / 4.5);
    EXPECT_DOUBLE_EQ(table.GetPi(1), 2.75 / 4.5);
}

TEST_F(NBayesOutputTest, ACategoryWithoutWeightHasAPositivePrior) {
    EXPECT_DOUBLE_EQ(Small().GetPi(2), 0.25 / (4.0 + 2 * 0.25));
}

TEST_F(NBayesOutputTest, ClearKeepsTheSize) {
    NBayesOutput table = Small();
    table.Clear();
    EXPECT_EQ(table.GetNumCategories(), 3);
    EXPECT_EQ(table.GetWeightedCounts(), Weights(3, 0.0));
    EXPECT_EQ(table.GetUnweightedCounts(), Counts(3, 0));
    EXPECT_EQ(table.GetPi(), Weights(3, 0.0));
}

TEST_F(NBayesOutputTest, SavesItsEntriesInterleaved) {
    const NBayesOutput table = Small();
    std::string expected = "NBOUT";
    for (const std::int32_t number : {6, 3, 3}) expected += Bytes(number);
    for (std::int32_t k = 0; k < 3; ++k) {
        expected += Bytes(table.GetWeightedCount(k)) + Bytes(table.GetUnweightedCount(k)) +
                    Bytes(table.GetPi(k));
    }
    EXPECT_EQ(savedforms::Binary(table), expected);
    EXPECT_EQ(expected.size(), 17u + 3 * 20);
}

TEST_F(NBayesOutputTest, RestoresInBothForms) {
    const NBayesOutput table = Small();
    NBayesOutput fromBinary;
    ASSERT_TRUE(savedforms::FromBinary(fromBinary, savedforms::Binary(table)));
    NBayesOutput fromXML;
    ASSERT_TRUE(savedforms::FromXML(fromXML, savedforms::XML(table)));
    for (const NBayesOutput* restored : {&fromBinary, &fromXML}) {
        EXPECT_EQ(restored->GetVariable(), nullptr);
        EXPECT_EQ(restored->GetVarIndex(), 6);
        EXPECT_EQ(restored->GetNumCategories(), 3);
        EXPECT_EQ(restored->GetWeightedCounts(), table.GetWeightedCounts());
        EXPECT_EQ(restored->GetUnweightedCounts(), table.GetUnweightedCounts());
        EXPECT_EQ(restored->GetPi(), table.GetPi());
    }
}

TEST_F(NBayesOutputTest, XMLHoldsTheSameValuesInOrder) {
    NBVarList list;
    list.AddStringCatVar("answer", "", {"no"}, {}, 3);
    NBayesOutput table(*list.GetVariable(0), 0);
    table.AddRecord(0, 1.0);
    table.ComputePriors(1.0);
    EXPECT_EQ(savedforms::XML(table),
              "<Obj name=\"NBayesOutput\">\n <Int value=\"0\"/>\n <Int value=\"1\"/>\n"
              " <Int value=\"1\"/>\n <Double value=\"1\"/>\n <Int value=\"1\"/>\n"
              " <Double value=\"1\"/>\n</Obj>\n");
}

TEST_F(NBayesOutputTest, TheTagsFifthLetterMayBeAny) {
    std::string bytes = savedforms::Binary(Small());
    for (int letter = 0; letter < 256; ++letter) {
        bytes[4] = static_cast<char>(letter);
        NBayesOutput restored;
        ASSERT_TRUE(savedforms::FromBinary(restored, bytes)) << letter;
        ASSERT_EQ(restored.GetUnweightedCount(1), 2);
    }
}

TEST_F(NBayesOutputTest, WhatCannotBeRestoredSaysSo) {
    const std::string bytes = savedforms::Binary(Small());
    const std::string line = "Error reading NBayesOutput!\n";
    NBayesOutput restored;
    savedforms::ExpectBinaryFails(restored, "NBOXT" + bytes.substr(5), line);
    savedforms::ExpectBinaryFails(restored, bytes.substr(0, 4), line);
    savedforms::ExpectBinaryFails(restored, bytes.substr(0, bytes.size() - 1), line);
    savedforms::ExpectXMLFails(restored, "<Obj name=\"NBayesInput\"/>",
                               "Failure reading NBayesOutput!\n");
    for (const std::size_t offset : {9, 13}) {  // K, entries
        for (const std::int32_t number : {-2, 1, 1000000000}) {
            SCOPED_TRACE(testing::Message() << offset << " " << number);
            savedforms::ExpectBinaryFails(restored, savedforms::With(bytes, offset, number), line);
        }
    }
}

TEST_F(NBayesOutputTest, MergeFindsTheOtherSidesCodesByTheirStrings) {
    NBVarList list;
    list.AddStringCatVar("answer", "", {"yes", "no"}, {}, 3);
    NBayesOutput other(*list.GetVariable(0), 0);
    other.AddRecord(0, 8.0);
    other.AddRecord(1, 3.0);
    NBayesOutput table = Small();
    Counts codeMap;
    double weight = 0.0;
    table.MergeFrom(other, fList.GetEncoder(0), list.GetEncoder(0), codeMap, weight);
    EXPECT_EQ(codeMap, (Counts{1, 0}));
    EXPECT_EQ(weight, 15.0);
    EXPECT_EQ(table.GetWeightedCounts(), (Weights{4.5, 10.5, 0.0}));
    EXPECT_EQ(table.GetUnweightedCounts(), (Counts{2, 3, 0}));
    EXPECT_DOUBLE_EQ(table.GetPi(0), (4.5 + 1 / 15.0) / (15.0 + 2 / 15.0));
}

TEST_F(NBayesOutputTest, MergeLearnsCategoriesAndTheOtherSidesLabels) {
    NBVarList mine;
    mine.AddNumericCatVar("f", "", {1.0}, {"mine"}, 3);
    NBVarList theirs;
    theirs.AddNumericCatVar("f", "", {2.0, 1.0}, {"two", "one"}, 3);
    NBayesOutput table(*mine.GetVariable(0), 0);
    table.AddRecord(0, 1.0);
    NBayesOutput other(*theirs.GetVariable(0), 0);
    other.AddRecord(0, 5.0);
    other.AddRecord(1, 7.0);
    Counts codeMap;
    double weight = 0.0;
    table.MergeFrom(other, mine.GetEncoder(0), theirs.GetEncoder(0), codeMap, weight);
    EXPECT_EQ(codeMap, (Counts{1, 0}));
    EXPECT_EQ(table.GetNumCategories(), 2);
    EXPECT_EQ(table.GetWeightedCounts(), (Weights{8.0, 5.0}));
    EXPECT_EQ(*mine.GetEncoder(0)->GetCategoryLabels(), (Strings{"one", "two"}));
}

TEST_F(NBayesOutputTest, MergeLeavesOutWhatThisSideTakesForMissing) {
    NBVarList mine;
    mine.AddNumericCatVar("f", "", {1.0}, {}, 3);
    mine.AddNumericMissing(0, 9.0, "");
    NBVarList theirs;
    theirs.AddNumericCatVar("f", "", {9.0}, {}, 3);
    NBayesOutput table(*mine.GetVariable(0), 0);
    table.AddRecord(0, 1.0);
    NBayesOutput other(*theirs.GetVariable(0), 0);
    other.AddRecord(0, 5.0);
    Counts codeMap;
    double weight = 0.0;
    table.MergeFrom(other, mine.GetEncoder(0), theirs.GetEncoder(0), codeMap, weight);
    EXPECT_EQ(codeMap, Counts{-1});
    EXPECT_EQ(weight, 1.0);
}

TEST_F(NBayesOutputTest, MergeNeverLeavesTheTables) {
    NBayesOutput table = Small();
    Counts codeMap;
    double weight = 0.0;
    NBCatNumEncoder numeric(std::vector<double>{1.0, 2.0, 3.0});
    table.MergeFrom(Small(), fList.GetEncoder(0), &numeric, codeMap, weight);
    EXPECT_EQ(codeMap, (Counts{-1, -1, -1}));
    EXPECT_EQ(weight, 4.0);
    table.MergeFrom(Small(), nullptr, nullptr, codeMap, weight);
    EXPECT_EQ(codeMap, (Counts{0, 1, 2}));
    EXPECT_EQ(weight, 8.0);
    NBayesOutput empty;
    empty.MergeFrom(Small(), nullptr, nullptr, codeMap, weight);
    EXPECT_EQ(empty.GetNumCategories(), -1);
    EXPECT_EQ(weight, 0.0);
}

TEST_F(NBayesOutputTest, RestoredCountsOfRecordsStayInRange) {
    const std::int32_t most = std::numeric_limits<std::int32_t>::max();
    NBayesOutput table;
    ASSERT_TRUE(
        savedforms::FromBinary(table, savedforms::With(savedforms::Binary(Small()), 25, most)));
    EXPECT_EQ(table.GetUnweightedCount(0), most);
    table.AddRecord(0, 1.0);
    EXPECT_EQ(table.GetUnweightedCount(0), most);
    Counts codeMap;
    double weight = 0.0;
    const NBayesOutput other = table;
    table.MergeFrom(other, nullptr, nullptr, codeMap, weight);
    EXPECT_EQ(table.GetUnweightedCount(0), most);
}

TEST_F(NBayesOutputTest, DisplayListsCountsAndPriors) {
    NBVarList list;
    list.AddStringCatVar("answer", "", {"no"}, {}, 3);
    NBayesOutput table(*list.GetVariable(0), 4);
    table.AddRecord(0, 1.0);
    table.ComputePriors(1.0);
    EXPECT_EQ(savedforms::Displayed(table),
              "Begin NBayesOutput object. \nIndex in variable list: 4\n"
              "Weighted Counts  (1 element): \n     1\n"
              "Unweighted Counts  (1 element): \n     1\n"
              "Pi_k    (1 element): \n     1\n"
              "End of NBayesOutput display.\n");
}

}  // namespace
