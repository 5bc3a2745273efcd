#include "naivebayes/NBayesInput.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

#include "naivebayes/data/NBBinningEncoder.h"
#include "naivebayes/data/NBCatNumEncoder.h"
#include "naivebayes/data/NBStringEncoder.h"
#include "naivebayes/data/NBVarList.h"
#include "naivebayes/tests/SavedForms.h"

namespace {

using Matrix = NBayesInputBase::Matrix;
using Strings = std::vector<std::string>;
using savedforms::Bytes;

/// Row 1 is empty; N = 4; a predictor was dropped before it.
NBayesInput SmallTable(const INBVariable& variable) {
    NBayesInput table;
    table.Setup(variable, 2, 3, 2);
    table.DecrementAdjustedIndex();
    table.AddCount(0, 0, 1.0);
    table.AddCount(0, 1, 2.0);
    table.AddCount(2, 1, 1.0);
    table.UpdateProbabilities(4.0);
    return table;
}

class NBayesInputTest : public testing::Test {
 protected:
    NBayesInputTest() { fList.AddStringCatVar("colour", "", {"a", "b", "c"}, {}, 1); }
    NBayesInput Small() const { return SmallTable(*fList.GetVariable(0)); }

    NBVarList fList;
};

TEST_F(NBayesInputTest, SetupTakesItsShapeFromTheVariable) {
    NBayesInput table;
    EXPECT_EQ(table.GetVarIndex(), -1);
    EXPECT_EQ(table.GetAdjustedRecordIndex(), -1);
    table.Setup(*fList.GetVariable(0), 2, 3, 5);
    EXPECT_EQ(table.GetNumCategories(), 3);
    EXPECT_EQ(table.GetNumTargetCategories(), 2);
    EXPECT_EQ(table.GetCounts(), Matrix(3, {0, 0}));
    EXPECT_EQ(table.GetVariable(), fList.GetVariable(0));
    EXPECT_EQ(table.GetVarIndex(), 3);
    EXPECT_EQ(table.GetRecordIndex(), 5);
    EXPECT_EQ(table.GetAdjustedRecordIndex(), 5);
    table.DecrementAdjustedIndex();
    EXPECT_EQ(table.GetRecordIndex(), 5);
    EXPECT_EQ(table.GetAdjustedRecordIndex(), 4);
}

TEST_F(NBayesInputTest, UpdateProbabilitiesSmoothsByOneOverTheTotalWeight) {
    const NBayesInput table = Small();
    EXPECT_EQ(table.GetNumNonEmpty(), 2);
    EXPECT_DOUBLE_EQ(table.GetProbability(0, 1), 2.25 / 3.5);
    EXPECT_DOUBLE_EQ(table.GetProbability(1, 0), 0.25 / 1.5);
}

TEST_F(NBayesInputTest, SavesTheAdjustedIndexAndInterleavedCells) {
    const NBayesInput table = Small();
    std::string expected = "NBIN";
    for (const std::int32_t number : {3, 1, 3, 2, 2, 3}) expected += Bytes(number);
    for (std::size_t m = 0; m < 3; ++m) {
        expected += Bytes(std::int32_t{2});
        for (std::size_t k = 0; k < 2; ++k) {
            expected += Bytes(table.GetCounts()[m][k]) + Bytes(table.GetProbabilities()[m][k]);
        }
    }
    EXPECT_EQ(savedforms::Binary(table), expected);
    EXPECT_EQ(expected.size(), 28u + 3 * 4 + 6 * 16);
}

TEST_F(NBayesInputTest, XMLHoldsTheSameValuesInOrder) {
    NBayesInput table;
    table.SetCounts(0.5, {{1.5}});
    EXPECT_EQ(savedforms::XML(table),
              "<Obj name=\"NBayesInput\">\n <Int value=\"-1\"/>\n <Int value=\"-1\"/>\n"
              " <Int value=\"1\"/>\n <Int value=\"1\"/>\n <Int value=\"1\"/>\n"
              " <Int value=\"1\"/>\n <Int value=\"1\"/>\n"
              " <Double value=\"1.5\"/>\n <Double value=\"1\"/>\n</Obj>\n");
}

TEST_F(NBayesInputTest, BothRecordIndicesAreEqualAfterARestore) {
    const NBayesInput table = Small();
    ASSERT_NE(table.GetRecordIndex(), table.GetAdjustedRecordIndex());
    NBayesInput fromBinary;
    ASSERT_TRUE(savedforms::FromBinary(fromBinary, savedforms::Binary(table)));
    NBayesInput fromXML;
    ASSERT_TRUE(savedforms::FromXML(fromXML, savedforms::XML(table)));
    for (const NBayesInput* restored : {&fromBinary, &fromXML}) {
        EXPECT_EQ(restored->GetRecordIndex(), 1);
        EXPECT_EQ(restored->GetAdjustedRecordIndex(), 1);
        EXPECT_EQ(restored->GetVarIndex(), 3);
        EXPECT_EQ(restored->GetVariable(), nullptr);
        EXPECT_EQ(restored->GetNumCategories(), 3);
        EXPECT_EQ(restored->GetNumTargetCategories(), 2);
        EXPECT_EQ(restored->GetCounts(), table.GetCounts());
        EXPECT_EQ(restored->GetProbabilities(), table.GetProbabilities());
        EXPECT_EQ(savedforms::Binary(*restored), savedforms::Binary(table));
    }
}

TEST_F(NBayesInputTest, ARestoreKeepsTheFilledRowsAndProbabilitiesAsStored) {
    std::string bytes = savedforms::Binary(Small());
    bytes = savedforms::With(bytes, 16, std::int32_t{1});  // fNumNonEmpty
    bytes = savedforms::With(bytes, 40, 0.875);            // the first probability
    NBayesInput restored;
    ASSERT_TRUE(savedforms::FromBinary(restored, bytes));
    EXPECT_EQ(restored.GetNumNonEmpty(), 1);
    EXPECT_EQ(restored.GetProbability(0, 0), 0.875);
}

TEST_F(NBayesInputTest, ATableThatWasNeverSetUpSavesAndRestores) {
    NBayesInput restored = Small();
    ASSERT_TRUE(savedforms::FromBinary(restored, savedforms::Binary(NBayesInput())));
    EXPECT_EQ(restored.GetNumCategories(), -1);
    EXPECT_TRUE(restored.GetCounts().empty());
    EXPECT_TRUE(restored.GetProbabilities().empty());
}

TEST_F(NBayesInputTest, WhatCannotBeRestoredSaysSo) {
    const std::string bytes = savedforms::Binary(Small());
    const std::string line = "Error reading NBayesInput!\n";
    NBayesInput restored;
    savedforms::ExpectBinaryFails(restored, "NBOU" + bytes.substr(4), line);
    savedforms::ExpectBinaryFails(restored, bytes.substr(0, bytes.size() - 1), line);
    savedforms::ExpectXMLFails(restored,
                               savedforms::Replaced(savedforms::XML(Small()), "Double", "Int"),
                               "Failure reading NBayesInput!\n");
}

TEST_F(NBayesInputTest, RowsMustAgreeWithTheStoredShape) {
    const std::string bytes = savedforms::Binary(Small());
    const std::string line = "Error reading NBayesInput!\n";
    NBayesInput restored;
    for (const std::size_t offset : {12, 20, 24, 28}) {  // M, K, rows, first row's length
        for (const std::int32_t number : {-2, 1, 1000000000}) {
            SCOPED_TRACE(testing::Message() << offset << " " << number);
            savedforms::ExpectBinaryFails(restored, savedforms::With(bytes, offset, number), line);
        }
    }
}

TEST_F(NBayesInputTest, DisplayListsIndicesAndRows) {
    NBVarList list;
    list.AddStringCatVar("colour", "", {"a"}, {}, 1);
    NBayesInput table;
    table.Setup(*list.GetVariable(0), 1, 3, 2);
    table.DecrementAdjustedIndex();
    table.AddCount(0, 0, 1.0);
    table.UpdateProbabilities(1.0);
    EXPECT_EQ(savedforms::Displayed(table),
              "Begin NBayesInput object. \nVariable name: colour\n"
              " Index in varlist: 3 Index in Record: 2 Adjusted Index in Record: 1\n"
              "Number of categories: 1, non-empty categories: 1, target categories: 1\n"
              "Category 0: \n"
              "Counts   (1 element): \n     1\n"
              "P_{mk}^j (1 element): \n     1\n"
              "End of NBayesInput display.\n");
    table.SetVariable(nullptr);
    EXPECT_NE(savedforms::Displayed(table).find("Variable name: \n"), std::string::npos);
}

TEST_F(NBayesInputTest, MergeFindsTheOtherSidesCodesByTheirStrings) {
    NBStringEncoder mine(Strings{"a", "b"});
    const NBStringEncoder theirs(Strings{"b", "a"});
    NBayesInput table;
    table.SetCounts(1.0, {{1, 2}, {3, 4}});
    NBayesInput other;
    other.SetCounts(1.0, {{10, 20}, {30, 40}});
    EXPECT_EQ(table.MergeFrom(other, &mine, &theirs, 2, {0, 1}, 110.0), 2);
    EXPECT_EQ(table.GetCounts(), (Matrix{{31, 42}, {13, 24}}));
    EXPECT_DOUBLE_EQ(table.GetProbability(0, 0), (31 + 1 / 110.0) / (44 + 2 / 110.0));
}

TEST_F(NBayesInputTest, MergeFindsTheTargetsCodesByTheMap) {
    NBStringEncoder mine(Strings{"a"});
    const NBStringEncoder theirs(Strings{"a"});
    NBayesInput table;
    table.SetCounts(1.0, {{1, 2}});
    NBayesInput other;
    other.SetCounts(1.0, {{10, 20}});
    table.MergeFrom(other, &mine, &theirs, 2, {1, 0}, 33.0);
    EXPECT_EQ(table.GetCounts(), (Matrix{{21, 12}}));
}

TEST_F(NBayesInputTest, MergeLearnsCategoriesAndGivesTheNewRowsTheirCells) {
    NBCatNumEncoder mine(std::vector<double>{1.0});
    NBCatNumEncoder theirs(std::vector<double>{7.5, 1.0});
    theirs.SetCategoryLabels({"seven", "one"});
    mine.SetCategoryLabels({"mine"});
    NBayesInput table;
    table.SetCounts(1.0, {{1, 2}});
    NBayesInput other;
    other.SetCounts(1.0, {{10, 20}, {30, 40}});
    EXPECT_EQ(table.MergeFrom(other, &mine, &theirs, 2, {0, 1}, 103.0), 2);
    EXPECT_EQ(mine.Lookup(7.5), 1.0);
    EXPECT_EQ(table.GetCounts(), (Matrix{{31, 42}, {10, 20}}));
    EXPECT_EQ(table.GetNumNonEmpty(), 2);
    // The table grew, so the labels are the other side's.
    EXPECT_EQ(*mine.GetCategoryLabels(), (Strings{"one", "seven"}));
}

TEST_F(NBayesInputTest, MergeWithoutNewCategoriesKeepsTheLabels) {
    NBCatNumEncoder mine(std::vector<double>{1.0});
    NBCatNumEncoder theirs(std::vector<double>{1.0});
    theirs.SetCategoryLabels({"theirs"});
    mine.SetCategoryLabels({"mine"});
    NBayesInput table;
    table.SetCounts(1.0, {{1}});
    const NBayesInput other = table;
    table.MergeFrom(other, &mine, &theirs, 1, {0}, 2.0);
    EXPECT_EQ(*mine.GetCategoryLabels(), Strings{"mine"});
}

TEST_F(NBayesInputTest, MergeExtendsRowsToTheTargetsNewCategories) {
    NBStringEncoder mine(Strings{"a"});
    const NBStringEncoder theirs(Strings{"b"});
    NBayesInput table;
    table.SetCounts(1.0, {{1, 2}});
    NBayesInput other;
    other.SetCounts(1.0, {{10, 20}});
    EXPECT_EQ(table.MergeFrom(other, &mine, &theirs, 3, {2, 0}, 33.0), 2);
    EXPECT_EQ(table.GetNumTargetCategories(), 3);
    EXPECT_EQ(table.GetCounts(), (Matrix{{1, 2, 0}, {20, 0, 10}}));
}

TEST_F(NBayesInputTest, MergeTakesBinsAsTheyStand) {
    NBBinningEncoder mine(0.0, 3.0, 3);
    const NBBinningEncoder theirs(0.0, 3.0, 3);
    NBayesInput table;
    table.SetCounts(1.0, {{1}, {2}, {3}});
    const NBayesInput other = table;
    EXPECT_EQ(table.MergeFrom(other, &mine, &theirs, 1, {0}, 12.0), 3);
    EXPECT_EQ(table.GetCounts(), (Matrix{{2}, {4}, {6}}));
}

TEST_F(NBayesInputTest, MergeLeavesOutWhatThisSideTakesForMissing) {
    NBVarList list;
    list.AddNumericCatVar("f", "", {1.0}, {}, 1);
    list.AddNumericMissing(0, 9.0, "");
    const NBCatNumEncoder theirs(std::vector<double>{9.0, 1.0});
    NBayesInput table;
    table.SetCounts(1.0, {{1}});
    NBayesInput other;
    other.SetCounts(1.0, {{10}, {20}});
    EXPECT_EQ(table.MergeFrom(other, list.GetEncoder(0), &theirs, 1, {0}, 21.0), 1);
    EXPECT_EQ(table.GetCounts(), (Matrix{{21}}));
}

TEST_F(NBayesInputTest, MergeKeepsUserMissingValuesThatAreCategories) {
    NBVarList numbers;
    numbers.AddNumericCatVar("f", "", {1.0, 9.0}, {}, 1);
    numbers.AddNumericMissing(0, 9.0, "");
    NBVarList texts;
    texts.AddStringCatVar("f", "", {"a", "?"}, {}, 1);
    texts.AddStringMissing(0, "?", "");
    for (NBVarList* const mine : {&numbers, &texts}) {
        const NBVarList theirs(*mine);
        NBayesInput table;
        table.SetCounts(1.0, {{1}, {2}});
        const NBayesInput other = table;
        EXPECT_EQ(table.MergeFrom(other, mine->GetEncoder(0), theirs.GetEncoder(0), 1, {0}, 6.0),
                  2);
        EXPECT_EQ(table.GetCounts(), (Matrix{{2}, {4}}));
    }
}

TEST_F(NBayesInputTest, MergeNeverLeavesTheTables) {
    NBStringEncoder mine(Strings{"a"});
    NBBinningEncoder bins(0.0, 5.0, 5);
    const NBStringEncoder theirs(Strings{"a", "b", "c"});
    const NBCatNumEncoder numeric(std::vector<double>{1.0});
    NBayesInput other;
    other.SetCounts(1.0, {{10, 20}});
    const auto merged = [&other](INBEncoder* thisEncoder, const INBEncoder* otherEncoder,
                                 const std::vector<std::int32_t>& targets) {
        NBayesInput table;
        table.SetCounts(1.0, {{1}});
        table.MergeFrom(other, thisEncoder, otherEncoder, 1, targets, 10.0);
        return table.GetCounts();
    };
    EXPECT_EQ(merged(&mine, &theirs, {0, 1})[0][0], 11.0);  // codes without rows over there
    EXPECT_EQ(merged(&mine, &theirs, {}), (Matrix{{1}, {0}, {0}}));
    EXPECT_EQ(merged(&mine, &theirs, {-5, 0})[0][0], 1.0);
    EXPECT_EQ(merged(&mine, &theirs, {700})[0][0], 1.0);
    EXPECT_EQ(merged(&mine, &numeric, {0})[0][0], 1.0);  // another kind of variable
    EXPECT_EQ(merged(&bins, nullptr, {0}).size(), 5u);
    EXPECT_EQ(merged(nullptr, nullptr, {0}), (Matrix{{11}}));
    NBayesInput empty;
    empty.MergeFrom(other, nullptr, nullptr, 2, {0, 1}, 1.0);
    EXPECT_TRUE(empty.GetCounts().empty());
}

// Parts of the data that meet the categories in different orders, merged, give the table of one
// pass up to the order of its rows and columns.
TEST_F(NBayesInputTest, MergedPartsEqualOnePass) {
    const unsigned seed = 421;
    RecordProperty("seed", static_cast<int>(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < 50; ++round) {
        NBCatNumEncoder whole(0), left(0), right(0);
        std::vector<std::array<int, 2>> cases;
        for (int i = 0; i < 40; ++i) {
            cases.push_back({static_cast<int>(random() % 6), static_cast<int>(random() % 3)});
        }
        const std::size_t cut = random() % 41;
        const auto tableOf = [&cases](NBCatNumEncoder& encoder, std::size_t from, std::size_t to) {
            Matrix counts;
            for (std::size_t i = from; i < to; ++i) {
                const auto m = static_cast<std::size_t>(encoder.Encode(cases[i][0]));
                if (m >= counts.size()) counts.resize(m + 1, std::vector<double>(3, 0.0));
                counts[m][static_cast<std::size_t>(cases[i][1])] += 1.0;
            }
            NBayesInput table;
            if (counts.empty()) {
                table = NBayesInput(0, 3);
            } else {
                table.SetCounts(1.0 / 40, counts);
            }
            return table;
        };
        const NBayesInput all = tableOf(whole, 0, 40);
        NBayesInput merged = tableOf(left, 0, cut);
        const NBayesInput other = tableOf(right, cut, 40);
        merged.MergeFrom(other, &left, &right, 3, {0, 1, 2}, 40.0);
        ASSERT_EQ(merged.GetNumCategories(), all.GetNumCategories());
        for (std::int32_t m = 0; m < all.GetNumCategories(); ++m) {
            const auto at = static_cast<std::size_t>(left.Lookup(whole.Decode(m)));
            ASSERT_EQ(merged.GetCounts()[at], all.GetCounts()[static_cast<std::size_t>(m)]);
            ASSERT_EQ(merged.GetProbabilities()[at],
                      all.GetProbabilities()[static_cast<std::size_t>(m)]);
        }
    }
}

}  // namespace
