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

TEST(NBAlgorithmMerge, UserMissingValuesThatAreCategoriesMeetToo) {
    NBVarList list;
    list.AddStringCatVar("t", "", {"a", "?"}, {}, kTarget);
    list.AddStringMissing(0, "?", "");
    list.AddNumericCatVar("p", "", {5, 9}, {}, kInput);
    list.AddNumericMissing(1, 9.0, "");
    const Rows first{{0, 0}, {1, 1}, {1, 0}};
    const Rows second{{1, 1}, {0, 1}, {0, 0}, {1, 1}};
    Rows all = first;
    all.insert(all.end(), second.begin(), second.end());
    const auto engine = Built(list, first);
    EXPECT_EQ(Merge(*engine, *RestoredBinary(SavedBinary(*Built(list, second)))), NBStatus());
    EXPECT_EQ(SavedBinary(*engine), SavedBinary(*Built(list, all)));
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

TEST(NBAlgorithmMerge, StatisticsTakeInTheTargetCategoriesThatJoin) {
    NBVarList mine;
    mine.AddStringCatVar("t", "", {"a", "b"}, {}, kTarget);
    AddCategorical(mine, "p", 2, kInput);
    NBVarList theirs;
    theirs.AddStringCatVar("t", "", {"c", "a"}, {}, kTarget);
    AddCategorical(theirs, "p", 2, kInput);
    const auto engine = Built(mine, {{0, 0}, {0, 0}, {1, 1}});
    NBOutput output;
    const auto tally = [&](double target, double code, bool isTraining) {
        EXPECT_EQ(engine->TallyRecord(MCCommon::Record({target, code}), output, isTraining),
                  NBStatus());
    };
    tally(0, 0, true);
    tally(0, 1, true);
    tally(1, 1, false);
    const Rows many(20, {0, 1});
    Rows others = many;
    others.push_back({1, 0});
    EXPECT_EQ(Merge(*engine, *Built(theirs, others)), NBStatus());
    // What was counted stays where it was.
    tally(2, 1, true);
    tally(1, 1, false);
    EXPECT_EQ(engine->GetTrainStatistics()->GetMatrix(),
              (std::vector<std::vector<double>>{{1, 1, 0}, {0, 0, 0}, {0, 0, 1}}));
    EXPECT_EQ(engine->GetTrainStatistics()->GetTotalWeight(), 3.0);
    EXPECT_NEAR(engine->GetTrainStatistics()->GetErrorPercent(), 100.0 / 3, 1e-12);
    EXPECT_EQ(engine->GetTestStatistics()->GetMatrix(),
              (std::vector<std::vector<double>>{{0, 0, 0}, {0, 1, 1}, {0, 0, 0}}));
    EXPECT_NEAR(engine->GetTestStatistics()->GetErrorPercent(), 50.0, 1e-12);
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

TEST(NBAlgorithmMerge, VariablesOfOtherKindsAtTheCallersWordLeaveAUsableModel) {
    // Nothing meets by value: their tables add nothing, or bin by bin.
    NBVarList texts;
    texts.AddStringCatVar("t", "", {"a", "b", "c"}, {}, kTarget);
    texts.AddStringCatVar("p", "", {"d", "e", "f", "g", "h"}, {}, kInput);
    AddCategorical(texts, "q", 3, kInput);
    NBVarList numbers;
    AddCategorical(numbers, "t", 2, kTarget);
    numbers.AddContVar("p", "", 0.0, 4.0, 4, kInput);
    numbers.AddContVar("q", "", 0.0, 4.0, 2, kInput);
    const Rows ofTexts{{0, 0, 0}, {1, 4, 2}, {2, 3, 1}, {2, 2, 2}};
    const Rows ofNumbers{{0, 0.5, 0.5}, {1, 3.5, 3.5}, {1, 1.5, 2.5}};
    for (const bool textsFirst : {true, false}) {
        const auto engine = textsFirst ? Built(texts, ofTexts) : Built(numbers, ofNumbers);
        const auto other = textsFirst ? Built(numbers, ofNumbers) : Built(texts, ofTexts);
        EXPECT_EQ(Merge(*engine, *other, false), NBStatus());
        NBOutput output;
        for (const auto& row : textsFirst ? ofTexts : ofNumbers) {
            EXPECT_EQ(engine->TallyRecord(MCCommon::Record(row), output, true), NBStatus());
        }
        Source source(textsFirst ? ofTexts : ofNumbers);
        EXPECT_EQ(engine->UpdateModel(source, -1), NBStatus());
        const std::string saved = SavedBinary(*engine);
        EXPECT_EQ(SavedBinary(*RestoredBinary(saved)), saved);
    }
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
