#include <gtest/gtest.h>

#include <random>

#include "naivebayes/data/INBEncoder.h"
#include "naivebayes/data/INBVariable.h"
#include "naivebayes/tests/EngineFixture.h"
#include "tests/support/RandomSeed.h"

using namespace enginetest;

namespace {

NBVarList MixedList() {
    NBVarList list;
    list.AddStringCatVar("t", "Target", {"no", "yes", "maybe"}, {}, kTarget);
    AddCategorical(list, "a", 3, kInput);
    list.AddContVar("x", "", 0.0, 8.0, 4, kInput);
    list.AddStringCatVar("s", "", {"red", "green"}, {}, kInput);
    return list;
}

Rows MixedRows(std::mt19937& random, std::size_t count) {
    Rows rows = RandomRows(random, count, 3, {3, 8, 2});
    for (auto& row : rows) row[2] = row[2] < 0 ? kMissing : row[2] + 0.25;
    return rows;
}

NBStatus Merge(INBAlgorithm& into, const INBAlgorithm& other, bool check = true) {
    return into.MergeModel(other, check);
}

}  // namespace

TEST(NBAlgorithmMerge, TwoPartsSavedRestoredAndMergedAreOnePass) {
    std::mt19937 random(testsupport::RandomSeed());
    for (int set = 0; set < 10; ++set) {
        const Rows rows = MixedRows(random, 120);
        const std::size_t cut = 40 + random() % 40;
        const Rows first(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(cut));
        const Rows second(rows.begin() + static_cast<std::ptrdiff_t>(cut), rows.end());
        const NBVarList list = MixedList();
        const auto whole = Built(list, rows);
        const auto left = Built(list, first);
        const auto right = Built(list, second);
        const auto restored = RestoredBinary(SavedBinary(*left));
        const auto restoredXML = RestoredXML(SavedXML(*left));
        EXPECT_EQ(Merge(*restored, *RestoredXML(SavedXML(*right))), NBStatus());
        EXPECT_EQ(Merge(*restoredXML, *RestoredBinary(SavedBinary(*right))), NBStatus());
        EXPECT_EQ(Merge(*left, *right), NBStatus());
        const std::string expected = SavedBinary(*whole);
        EXPECT_EQ(SavedBinary(*left), expected);
        EXPECT_EQ(SavedBinary(*restored), expected);
        EXPECT_EQ(SavedBinary(*restoredXML), expected);
        EXPECT_EQ(RecordCounts(*restored), RecordCounts(*whole));
        for (const auto& row : MixedRows(random, 20)) {
            NBOutput fromWhole;
            NBOutput fromParts;
            EXPECT_EQ(whole->ScoreRecord(MCCommon::Record(row), fromWhole),
                      restored->ScoreRecord(MCCommon::Record(row), fromParts));
            EXPECT_EQ(fromWhole.GetValues(), fromParts.GetValues());
        }
    }
}

TEST(NBAlgorithmMerge, CategoriesInAnotherOrderMeetByValue) {
    NBVarList mine;
    mine.AddNumericCatVar("t", "", {1, 2}, {}, kTarget);
    mine.AddNumericCatVar("a", "", {5, 6}, {}, kInput);
    NBVarList theirs;
    theirs.AddNumericCatVar("t", "", {2, 1}, {}, kTarget);
    theirs.AddNumericCatVar("a", "", {6, 5}, {}, kInput);
    const auto engine = Built(mine, {{0, 0}, {0, 0}, {1, 1}});
    const auto other = Built(theirs, {{0, 0}, {1, 1}, {1, 1}, {1, 0}});
    EXPECT_EQ(Merge(*engine, *other), NBStatus());
    EXPECT_EQ(SavedBinary(*engine),
              SavedBinary(*Built(mine, {{0, 0}, {0, 0}, {1, 1}, {1, 1}, {0, 0}, {0, 0}, {0, 1}})));
}

TEST(NBAlgorithmMerge, CategoriesSeenOnOneSideOnlyJoin) {
    NBVarList mine;
    mine.AddStringCatVar("t", "", {"a", "b"}, {"A", "B"}, kTarget);
    mine.AddNumericCatVar("p", "", {5, 6}, {"five", "six"}, kInput);
    NBVarList theirs;
    theirs.AddStringCatVar("t", "", {"c", "a"}, {"C", "A"}, kTarget);
    theirs.AddNumericCatVar("p", "", {7, 5}, {"seven", "five"}, kInput);
    NBVarList both;
    both.AddStringCatVar("t", "", {"a", "b", "c"}, {"A", "B", "C"}, kTarget);
    both.AddNumericCatVar("p", "", {5, 6, 7}, {"five", "six", "seven"}, kInput);

    const auto engine = Built(mine, {{0, 0}, {0, 1}, {1, 1}});
    const auto other = Built(theirs, {{0, 0}, {0, 1}, {1, 1}, {0, 0}});
    EXPECT_EQ(Merge(*engine, *other), NBStatus());
    EXPECT_EQ(engine->GetNumTargetCategories(), 3);
    EXPECT_EQ(SavedBinary(*engine),
              SavedBinary(*Built(both, {{0, 0}, {0, 1}, {1, 1}, {2, 2}, {2, 0}, {0, 0}, {2, 2}})));
    // Records with the new codes are scored, and train.
    NBOutput output;
    EXPECT_EQ(engine->ScoreRecord(MCCommon::Record({0, 2}), output), NBStatus());
    EXPECT_EQ(output.GetWinner(), 2);
    Source source(Rows{{2, 2}});
    EXPECT_EQ(engine->UpdateModel(source, 1), NBStatus());
    EXPECT_EQ(engine->GetTargetCategoryCounts(2).fUnweighted, 4);
    // And what has grown can be saved, restored and merged again.
    const auto restored = RestoredBinary(SavedBinary(*engine));
    EXPECT_EQ(Merge(*restored, *other), NBStatus());
}

TEST(NBAlgorithmMerge, EmptyBinsAreClosedAnew) {
    NBVarList list;
    AddCategorical(list, "t", 2, kTarget);
    list.AddContVar("x", "", 0.0, 4.0, 4, kInput);
    const auto engine = Built(list, {{0, 0.5}, {0, 0.5}, {1, 3.5}});
    const auto other = Built(list, {{1, 1.5}, {1, 1.5}, {1, 2.5}, {0, 0.5}});
    NBOutput before;
    NBOutput after;
    EXPECT_EQ(engine->ScoreRecord(MCCommon::Record({0, 1.5}), before), NBStatus());
    EXPECT_EQ(before.GetWinner(), 0);
    EXPECT_EQ(Merge(*engine, *other), NBStatus());
    EXPECT_EQ(engine->ScoreRecord(MCCommon::Record({0, 1.5}), after), NBStatus());
    EXPECT_EQ(after.GetWinner(), 1);
}

TEST(NBAlgorithmMerge, AModelMayBeMergedWithItself) {
    const Rows rows{{0, 0}, {0, 1}, {1, 1}, {-1, 0}};
    Rows twice = rows;
    twice.insert(twice.end(), rows.begin(), rows.end());
    const NBVarList list = CategoricalList(2, {2});
    const auto engine = Built(list, rows);
    EXPECT_EQ(Merge(*engine, *engine), NBStatus());
    EXPECT_EQ(SavedBinary(*engine), SavedBinary(*Built(list, twice)));
    EXPECT_EQ(RecordCounts(*engine), (Counts{6.0, 2.0, 6, 2}));
}

TEST(NBAlgorithmMerge, OtherVariablesAreRefusedByTheFirstThatDiffers) {
    const auto engine = Built(CategoricalList(2, {2, 2}), {{0, 0, 0}, {1, 1, 1}});
    NBVarList list = CategoricalList(2, {2, 2});
    list.GetVariable(2)->SetLabel("another");
    const std::string before = SavedBinary(*engine);
    EXPECT_EQ(Merge(*engine, *Built(list, {{0, 0, 0}, {1, 1, 1}})),
              With(Error(NBCode::kCannotMerge), 2));
    EXPECT_EQ(SavedBinary(*engine), before);
    EXPECT_EQ(engine->GetStatus(), NBStatus()) << "a refusal does not stick";
    EXPECT_EQ(Merge(*engine, *Built(list, {{0, 0, 0}, {1, 1, 1}}), false), NBStatus())
        << "at the caller's word";
}

TEST(NBAlgorithmMerge, OtherNumbersOfTablesAreRefusedEvenAtTheCallersWord) {
    const auto engine = Built(CategoricalList(2, {2, 2}), {{0, 0, 0}, {1, 1, 1}});
    const auto other = Built(CategoricalList(2, {2}), {{0, 0}, {1, 1}});
    EXPECT_EQ(Merge(*engine, *other, false), With(Error(NBCode::kCannotMerge), -1));
    EXPECT_EQ(Merge(*engine, *other, true), With(Error(NBCode::kCannotMerge), 2))
        << "the smaller number of variables";
}

TEST(NBAlgorithmMerge, WithoutTwoModelsNothingIsMerged) {
    const NBVarList list = CategoricalList(2, {2});
    const Rows rows{{0, 0}, {1, 1}};
    const NBStatus refused = With(Error(NBCode::kCannotMerge), -1);
    const auto built = Built(list, rows);
    const auto empty = Create(list);
    const auto failed = Create(list);
    EXPECT_TRUE(Build(*failed, {{0, 0}}).IsError());
    const auto stopped = Built(list, rows);
    stopped->Interrupt();
    for (const auto* other : {&empty, &failed, &stopped}) {
        EXPECT_EQ(Merge(*built, **other), refused);
        EXPECT_EQ(Merge(**other, *built), refused);
        EXPECT_EQ(Merge(*built, **other, false), refused);
    }
    EXPECT_EQ(SavedBinary(*built), SavedBinary(*Built(list, rows)));
}

TEST(NBAlgorithmMerge, CategoriesWithoutValuesCannotBeCompared) {
    NBVarList list;
    AddCategorical(list, "t", 2, kTarget);
    list.AddCatVar("a", "", 2, 2, kInput);
    const Rows rows{{0, 0}, {1, 1}};
    EXPECT_EQ(Merge(*Built(list, rows), *Built(list, rows)), With(Error(NBCode::kCannotMerge), 1));
}
