#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <random>
#include <sstream>

#include "naivebayes/data/NBRoundEncoder.h"
#include "naivebayes/tests/EngineFixture.h"
#include "tests/support/CaseName.h"

using namespace enginetest;

namespace {

/// Target of 3 categories and candidates, the first of them forced.
NBVarList ListOf(std::int32_t forced, std::int32_t candidates) {
    NBVarList list;
    AddCategorical(list, "t", 3, kTarget);
    for (std::int32_t j = 0; j < forced + candidates; ++j) {
        AddCategorical(list, "p" + std::to_string(j), 2 + j % 3, j < forced ? kInput : kCandidate);
    }
    return list;
}

Rows RowsFor(std::int32_t predictors, std::size_t count, std::uint32_t seed = 20260101) {
    std::mt19937 random(seed);
    std::vector<std::int32_t> categories;
    for (std::int32_t j = 0; j < predictors; ++j) categories.push_back(2 + j % 3);
    return RandomRows(random, count, 3, categories);
}

/// Counts what it delivers.
class CountingTestSource : public Source {
 public:
    using Source::Source;
    const MCCommon::Record* Next() override {
        ++fNumDelivered;
        return Source::Next();
    }
    std::int32_t fNumDelivered = 0;
};

struct SizeCase {
    const char* fName;
    std::int32_t fForced;
    std::int32_t fCandidates;
    std::int32_t fMaxSize;
    std::size_t fExpected;
};

class NBAlgorithmMaxSize : public testing::TestWithParam<SizeCase> {};

struct BestCase {
    const char* fName;
    std::int32_t fForced;
    std::int32_t fCandidates;
    std::int32_t fNumBest;
    std::size_t fExpected;
};

class NBAlgorithmNumBest : public testing::TestWithParam<BestCase> {};

}  // namespace

TEST_P(NBAlgorithmMaxSize, BoundsTheChain) {
    const SizeCase& size = GetParam();
    const auto engine = Create(ListOf(size.fForced, size.fCandidates));
    Selection selection;
    selection.fMaxSize = size.fMaxSize;
    EXPECT_EQ(selection.Run(*engine, RowsFor(size.fForced + size.fCandidates, 40)), NBStatus());
    EXPECT_EQ(selection.fvCriteria.size(), size.fExpected);
    EXPECT_EQ(selection.fvSelected.size(), size.fExpected);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, NBAlgorithmMaxSize,
    testing::Values(SizeCase{"LeftOpenWithThreeCandidates", 0, 3, -1, 3},
                    SizeCase{"LeftOpenWith99Candidates", 0, 99, -1, 20},
                    SizeCase{"LeftOpenWith104Candidates", 0, 104, -1, 20},
                    SizeCase{"LeftOpenWith105Candidates", 0, 105, -1, 21},
                    SizeCase{"LeftOpenWith100CandidatesAndFiveForced", 5, 100, -1, 26},
                    SizeCase{"LeftOpenWith1000CandidatesAndFiveForced", 5, 1000, -1, 105},
                    SizeCase{"ForcedOnesCount", 2, 4, 3, 3},
                    SizeCase{"AsManyAsThereAre", 2, 4, 6, 6}),
    testsupport::CaseName());

TEST_P(NBAlgorithmNumBest, BoundsTheListOfSubsets) {
    const BestCase& best = GetParam();
    const auto engine = Create(ListOf(best.fForced, best.fCandidates));
    Selection selection;
    selection.fNumBest = best.fNumBest;
    EXPECT_EQ(selection.Run(*engine, RowsFor(best.fForced + best.fCandidates, 60)), NBStatus());
    EXPECT_EQ(selection.fvBest.size(), best.fExpected);
}

INSTANTIATE_TEST_SUITE_P(Numbers, NBAlgorithmNumBest,
                         testing::Values(BestCase{"NoneAskedForGivesFive", 0, 7, 0, 5},
                                         BestCase{"BelowNoneGivesFive", 1, 7, -3, 5},
                                         BestCase{"AsAskedFor", 0, 7, 2, 2},
                                         BestCase{"NoMoreThanCandidates", 0, 3, 100, 3},
                                         BestCase{"FiveAreBoundedToo", 0, 3, 0, 3},
                                         BestCase{"OneMoreWithForced", 2, 3, 100, 4}),
                         testsupport::CaseName());

TEST(NBAlgorithmSelectSubset, TheModelIsTheBestSubset) {
    const auto engine = Create(ListOf(1, 5));
    Selection selection;
    const Rows rows = RowsFor(6, 200);
    EXPECT_EQ(selection.Run(*engine, rows), NBStatus());
    ASSERT_FALSE(selection.fvBest.empty());
    EXPECT_TRUE(engine->IsModelBuilt());
    const std::int32_t size = selection.fvBest.front().fSize;
    EXPECT_EQ(engine->GetNumInputVars(), size);
    EXPECT_EQ(selection.fvSelected.front(), 1) << "the forced one comes first";
    for (std::size_t i = 0; i < selection.fvSelected.size(); ++i) {
        EXPECT_EQ(engine->GetVarList().GetRole(selection.fvSelected[i]),
                  i < static_cast<std::size_t>(size) ? kInput : kCandidate);
    }
    NBOutput output;
    EXPECT_EQ(engine->ScoreRecord(MCCommon::Record(rows[0]), output), NBStatus());
}

TEST(NBAlgorithmSelectSubset, AnExactSizeIsTakenWhole) {
    const auto engine = Create(ListOf(1, 5));
    Selection selection;
    selection.fbExact = true;
    selection.fMaxSize = 3;
    EXPECT_EQ(selection.Run(*engine, RowsFor(6, 200)), NBStatus());
    EXPECT_TRUE(selection.fvBest.empty());
    EXPECT_EQ(selection.fvSelected.size(), 3U);
    EXPECT_EQ(engine->GetNumInputVars(), 3);
}

TEST(NBAlgorithmSelectSubset, TheModelIsThatOfBuildingOnTheChosen) {
    const NBVarList list = ListOf(1, 5);
    const Rows rows = RowsFor(6, 200);
    const auto engine = Create(list);
    Selection selection;
    selection.fbExact = true;
    selection.fMaxSize = 3;
    EXPECT_EQ(selection.Run(*engine, rows), NBStatus());
    NBVarList chosen = list;
    for (const std::int32_t index : selection.fvSelected) chosen.SetRole(index, kInput);
    EXPECT_EQ(SavedBinary(*engine), SavedBinary(*Built(chosen, rows)));

    const Rows more = RowsFor(6, 50, 77);
    Rows all = rows;
    all.insert(all.end(), more.begin(), more.end());
    Source source(more);
    EXPECT_EQ(engine->UpdateModel(source, -1), NBStatus());
    EXPECT_EQ(SavedBinary(*engine), SavedBinary(*Built(chosen, all)));
}

TEST(NBAlgorithmSelectSubset, RecordsThatDoNotFitGiveTheSameTables) {
    const std::string folder = testing::TempDir() + "nbselectXXXXXX";
    std::string path = folder;
    ASSERT_NE(mkdtemp(path.data()), nullptr);
    const Rows rows = RowsFor(4, 100);
    Selection selection;
    selection.fbExact = true;
    selection.fMaxSize = 4;
    NaiveBayesSettings settings;
    settings.fMaxRecordsInMemory = 100;
    const auto inMemory = Create(ListOf(1, 3), settings);
    EXPECT_EQ(selection.Run(*inMemory, rows), NBStatus());
    settings.fMaxRecordsInMemory = 99;
    settings.fTempDir = path + "/";
    const auto onDisk = Create(ListOf(1, 3), settings);
    EXPECT_EQ(selection.Run(*onDisk, rows), NBStatus());
    inMemory->GetSettings().fMaxRecordsInMemory = 99;  // it is saved
    EXPECT_EQ(SavedBinary(*inMemory), SavedBinary(*onDisk));
    EXPECT_TRUE(std::filesystem::is_empty(path)) << "the temporary file is gone";
    std::filesystem::remove(path);
}

TEST(NBAlgorithmSelectSubset, ALimitOfTheRecordCountNeedsNoFileWhateverIsExcluded) {
    Rows rows = RowsFor(3, 20);
    for (std::size_t i = 0; i < 5; ++i) rows[i][0] = -1;  // leaves 15 records
    const auto run = [&rows](std::int32_t limit) {
        NaiveBayesSettings settings;
        settings.fMaxRecordsInMemory = limit;
        settings.fTempDir = testing::TempDir() + "no-such-folder/";
        return Selection().Run(*Create(ListOf(0, 3), settings), rows);
    };
    EXPECT_EQ(run(20), NBStatus());
    EXPECT_EQ(run(19), Error(NBCode::kNoTempFile));
}

TEST(NBAlgorithmSelectSubset, WithoutATemporaryFileThereIsNoModel) {
    NaiveBayesSettings settings;
    settings.fMaxRecordsInMemory = 0;
    settings.fTempDir = testing::TempDir() + "no-such-folder/";
    const auto engine = Create(ListOf(0, 3), settings);
    Selection selection;
    EXPECT_EQ(selection.Run(*engine, RowsFor(3, 20)), Error(NBCode::kNoTempFile));
    EXPECT_EQ(engine->GetStatus(), Error(NBCode::kNoTempFile));
    EXPECT_FALSE(engine->IsModelBuilt());
}

TEST(NBAlgorithmSelectSubset, RefusalsStick) {
    const Rows rows = RowsFor(3, 20);
    const auto refusal = [&rows](std::int32_t forced, auto run) {
        const auto engine = Create(ListOf(forced, 3 - forced));
        const NBStatus status = run(*engine, rows);
        EXPECT_EQ(engine->GetStatus(), status);
        EXPECT_FALSE(engine->IsModelBuilt());
        return status;
    };
    EXPECT_EQ(
        refusal(0, [](INBAlgorithm& engine, const Rows&) { return Selection().Run(engine, {}); }),
        Error(NBCode::kTrainingEmpty));
    EXPECT_EQ(refusal(0,
                      [](INBAlgorithm& engine, const Rows& all) {
                          Source source(all);
                          Selection selection;
                          return engine.SelectSubset(source, 0, selection.fvSelected,
                                                     selection.fvCriteria, selection.fvBest, -1,
                                                     false, nullptr, 0, 0, nullptr, nullptr);
                      }),
              Error(NBCode::kNoRecordCount));
    EXPECT_EQ(refusal(0,
                      [](INBAlgorithm& engine, const Rows& all) {
                          Source test(all);
                          return Selection().Run(engine, all, test, 0);
                      }),
              Error(NBCode::kNoTestCount));
    EXPECT_EQ(refusal(2,
                      [](INBAlgorithm& engine, const Rows& all) {
                          Selection selection;
                          selection.fMaxSize = 2;
                          return selection.Run(engine, all);
                      }),
              With(Error(NBCode::kMaxSizeTooSmall), 2, 2));
    EXPECT_EQ(refusal(0,
                      [](INBAlgorithm& engine, const Rows& all) {
                          Source test(Rows{});
                          return Selection().Run(engine, all, test, -1);
                      }),
              Error(NBCode::kTestEmpty));
    EXPECT_EQ(refusal(0,
                      [](INBAlgorithm& engine, const Rows& all) {
                          Source test(Rows{{-1, 0, 0, 0}});
                          return Selection().Run(engine, all, test, -1);
                      }),
              Error(NBCode::kTestEmpty));
    EXPECT_EQ(refusal(0,
                      [](INBAlgorithm& engine, const Rows&) {
                          return Selection().Run(engine, {{-1, 0, 0, 0}});
                      }),
              Error(NBCode::kNoUsableRecords));
}

TEST(NBAlgorithmSelectSubset, ASizeAboveThePredictorsIsCutWithAWarning) {
    const auto engine = Create(ListOf(1, 3));
    Selection selection;
    selection.fMaxSize = 9;
    const NBStatus expected = With(NBStatus(NBCode::kMaxSizeTooLarge, true), 9, 1, 3);
    EXPECT_EQ(selection.Run(*engine, RowsFor(4, 50)), expected);
    EXPECT_EQ(engine->GetStatus(), expected);
    EXPECT_TRUE(engine->IsModelBuilt());
    EXPECT_EQ(selection.fvCriteria.size(), 4U);
}

TEST(NBAlgorithmSelectSubset, ACandidateWithoutInformationLeavesInSilence) {
    const auto engine = Create(ListOf(1, 3));
    Rows rows = RowsFor(4, 50);
    for (auto& row : rows) row[2] = 0;
    Selection selection;
    EXPECT_EQ(selection.Run(*engine, rows), NBStatus());
    EXPECT_EQ(engine->GetVarList().GetRole(2), kUnused);
    EXPECT_EQ(selection.fvCriteria.size(), 3U);
}

TEST(NBAlgorithmSelectSubset, AForcedPredictorWithoutInformationLeavesWithAWarning) {
    const auto engine = Create(ListOf(1, 3));
    Rows rows = RowsFor(4, 50);
    for (auto& row : rows) row[1] = 0;
    Selection selection;
    const NBStatus expected = With(NBStatus(NBCode::kForcedUninformative, true), 1);
    EXPECT_EQ(selection.Run(*engine, rows), expected);
    EXPECT_EQ(engine->GetStatus(), expected);
    EXPECT_TRUE(engine->IsModelBuilt());
}

TEST(NBAlgorithmSelectSubset, TestRecordsAreReadAtTheirPlacesAfterAPredictorHasLeft) {
    // The test records are prepared without the predictor, the stored ones were with it. Without
    // the column at all the result must be the same.
    Rows rows = RowsFor(4, 80);
    Rows test = RowsFor(4, 40, 5);
    for (auto& row : rows) row[2] = 0;
    NBVarList without = ListOf(1, 3);
    without.RemoveVariable(2);
    const auto cut = [](Rows all) {
        for (auto& row : all) row.erase(row.begin() + 2);
        return all;
    };
    Selection selection;
    Selection expected;
    Source source(test);
    Source sourceWithout(cut(test));
    EXPECT_EQ(selection.Run(*Create(ListOf(1, 3)), rows, source, -1), NBStatus());
    EXPECT_EQ(expected.Run(*Create(without), cut(rows), sourceWithout, -1), NBStatus());
    EXPECT_EQ(selection.fvBest, expected.fvBest);
    EXPECT_EQ(selection.fvCriteria, expected.fvCriteria);
}

TEST(NBAlgorithmSelectSubset, ExcludedRecordsAreCounted) {
    Rows rows = RowsFor(3, 50);
    rows.push_back({-1, 0, 0, 0});
    rows.push_back({0, -1, -1, -1});
    std::int32_t without = 0;
    for (const auto& row : rows) without += row[1] < 0 && row[2] < 0 && row[3] < 0 ? 1 : 0;
    const auto engine = Create(ListOf(0, 3));
    Selection selection;
    EXPECT_EQ(selection.Run(*engine, rows), NBStatus());
    EXPECT_EQ(RecordCounts(*engine).fExcluded, without + 1);
    EXPECT_EQ(RecordCounts(*engine).fRecords, 52 - without - 1);
}

TEST(NBAlgorithmSelectSubset, TheWeightOfExcludedRecordsIsCounted) {
    NBVarList list = ListOf(0, 2);
    list.AddWeightVar("w", "", NBRoundEncoder::kAsIs);
    Rows rows = RowsFor(2, 50);
    for (auto& row : rows) {
        row[1] = row[1] < 0.0 ? 0.0 : row[1];
        row.push_back(2.0);
    }
    rows.push_back({-1, 0, 0, 7.5});    // no target
    rows.push_back({0, -1, -1, 2.25});  // no predictor
    rows.push_back({0, 0, 0, 0.0});     // no weight
    const auto engine = Create(list);
    Selection selection;
    EXPECT_EQ(selection.Run(*engine, rows), NBStatus());
    EXPECT_EQ(RecordCounts(*engine), (Counts{100.0, 9.75, 50, 3}));
}

TEST(NBAlgorithmSelectSubset, AnInfiniteWeightEndsWithAnError) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const std::vector<double>& weights :
         {std::vector<double>{infinity}, {infinity, infinity}, {1e308, 1e308}}) {
        NBVarList list = ListOf(0, 2);
        list.AddWeightVar("w", "", NBRoundEncoder::kAsIs);
        Rows rows = RowsFor(2, 50);
        for (std::size_t i = 0; i < rows.size(); ++i) {
            rows[i][1] = std::max(rows[i][1], 0.0);
            rows[i].push_back(i < weights.size() ? weights[i] : 1.0 + static_cast<double>(i));
        }
        const auto engine = Create(list);
        Selection selection;
        EXPECT_EQ(selection.Run(*engine, rows), Error(NBCode::kTooLittleData));
        EXPECT_FALSE(engine->IsModelBuilt());
        NBVarList inputs = ListOf(2, 0);
        inputs.AddWeightVar("w", "", NBRoundEncoder::kAsIs);
        EXPECT_EQ(Build(*Create(inputs), rows), Error(NBCode::kTooLittleData));
        // Among the test records.
        Rows sound = rows;
        for (auto& row : sound) row.back() = 1.0;
        Source test(rows);
        EXPECT_EQ(selection.Run(*Create(list), sound, test, -1), Error(NBCode::kTestEmpty));
    }
}

TEST(NBAlgorithmSelectSubset, KeptSizesAscendByCriterion) {
    int numOutOfSize = 0;
    for (std::uint32_t seed = 1; seed <= 20; ++seed) {
        const Rows rows = RowsFor(8, 60, seed);
        Selection all;
        Selection some;
        some.fNumBest = 3;
        all.fNumBest = 8;
        const auto engine = Create(ListOf(0, 8));
        EXPECT_EQ(all.Run(*engine, rows), NBStatus());
        EXPECT_EQ(some.Run(*Create(ListOf(0, 8)), rows), NBStatus());
        ASSERT_EQ(all.fvBest.size(), 8U);
        EXPECT_EQ(some.fvBest, std::vector<NBSubset>(all.fvBest.begin(), all.fvBest.begin() + 3));
        for (std::size_t i = 0; i < 8; ++i) {
            // The criterion is that of its size.
            const auto size = all.fvBest[i].fSize;
            const double records = RecordCounts(*engine).fWeight;
            const double expected = size * 0.5 * std::log(records) / records -
                                    all.fvCriteria[static_cast<std::size_t>(size) - 1];
            EXPECT_NEAR(all.fvBest[i].fCriterion, expected, 1e-15) << size;
            if (i == 0) continue;
            EXPECT_LT(all.fvBest[i - 1].fCriterion, all.fvBest[i].fCriterion);
            numOutOfSize += size < all.fvBest[i - 1].fSize ? 1 : 0;
        }
    }
    EXPECT_GT(numOutOfSize, 10);
}

TEST(NBAlgorithmSelectSubset, TestRecordsAreAskedForOnce) {
    const Rows rows = RowsFor(4, 60);
    for (const std::int32_t numInMemory : {1000, 1}) {
        NaiveBayesSettings settings;
        settings.fMaxRecordsInMemory = numInMemory;
        settings.fTempDir = testing::TempDir();
        CountingTestSource test(rows);
        Selection selection;
        EXPECT_EQ(selection.Run(*Create(ListOf(1, 3), settings), rows, test, -1), NBStatus());
        EXPECT_EQ(test.fNumDelivered, 60);
        EXPECT_EQ(test.fNumPasses, 1);
    }
}

TEST(NBAlgorithmSelectSubset, AnInterruptLeavesNothingOfAModel) {
    const Rows rows = RowsFor(3, 60);
    const auto engine = Create(ListOf(1, 2));
    Selection selection;
    ASSERT_EQ(selection.Run(*engine, rows), NBStatus());
    ASSERT_EQ(RecordCounts(*engine).fRecords, 60 - RecordCounts(*engine).fExcluded);
    engine->Interrupt();
    EXPECT_EQ(engine->GetStatus(), Error(NBCode::kInterrupted));
    EXPECT_FALSE(engine->IsModelBuilt());
    EXPECT_EQ(engine->GetNumInputVars(), 0);
    EXPECT_EQ(RecordCounts(*engine).fRecords, 0);
    for (std::int32_t k = 0; k < 3; ++k) {
        EXPECT_EQ(engine->GetTargetCategoryCounts(k), (INBAlgorithm::CategoryCounts{0, 0.0})) << k;
    }
    std::ostringstream shown;
    engine->Display(shown);
    EXPECT_NE(shown.str().find("Model built? No"), std::string::npos);
    EXPECT_NE(shown.str().find("The model has 0 predictors."), std::string::npos);
    std::ostringstream saved;
    EXPECT_EQ(engine->SaveBinary(saved), Error(NBCode::kInterrupted));
}

TEST(NBAlgorithmSelectSubset, AReportIsWrittenOnDemand) {
    std::ostringstream xml;
    Selection selection;
    selection.fpXML = &xml;
    EXPECT_EQ(selection.Run(*Create(ListOf(0, 3)), RowsFor(3, 50)), NBStatus());
    EXPECT_NE(xml.str().find("nbasoutput.dtd"), std::string::npos);
}

TEST(NBAlgorithmSelectSubset, AnInterruptAtAnyPollResetsTheModelForGood) {
    const Rows rows = RowsFor(3, 6);
    bool ran = false;
    std::int32_t interrupts = 0;
    for (std::int32_t polls = 0; !ran && polls < 1000; ++polls) {
        StopAtPoll stop(polls);
        const auto engine = Create(ListOf(1, 2));
        engine->SetInterruptSource(&stop);
        Selection selection;
        const NBStatus status = selection.Run(*engine, rows);
        ran = status.IsOK();
        if (ran) continue;
        ++interrupts;
        EXPECT_EQ(status, Error(NBCode::kInterrupted)) << polls;
        EXPECT_FALSE(engine->IsModelBuilt());
        EXPECT_EQ(engine->GetNumInputVars(), 0);
        EXPECT_EQ(engine->GetStatus(), Error(NBCode::kInterrupted));
        EXPECT_EQ(engine->GetStatus(), Error(NBCode::kInterrupted));
    }
    EXPECT_TRUE(ran);
    EXPECT_GT(interrupts, 10);
}

TEST(NBAlgorithmSelectSubset, ASearchMayFollowATraining) {
    const Rows rows = RowsFor(4, 100);
    Selection selection;
    Selection expected;
    const auto engine = Built(ListOf(1, 3), rows);
    EXPECT_EQ(selection.Run(*engine, rows), NBStatus());
    const auto fresh = Create(ListOf(1, 3));
    EXPECT_EQ(expected.Run(*fresh, rows), NBStatus());
    EXPECT_EQ(selection.fvSelected, expected.fvSelected);
    EXPECT_EQ(SavedBinary(*engine), SavedBinary(*fresh));
}

TEST(NBAlgorithmSelectSubset, ASecondSearchForcesWhatTheFirstChose) {
    const Rows rows = RowsFor(5, 100);
    const auto engine = Create(ListOf(0, 5));
    Selection selection;
    selection.fbExact = true;
    selection.fMaxSize = 2;
    EXPECT_EQ(selection.Run(*engine, rows), NBStatus());
    selection.fMaxSize = 4;
    EXPECT_EQ(selection.Run(*engine, rows), NBStatus());
    EXPECT_EQ(engine->GetNumInputVars(), 4);
    NBVarList chosen = ListOf(0, 5);
    for (const std::int32_t index : selection.fvSelected) chosen.SetRole(index, kInput);
    EXPECT_EQ(SavedBinary(*engine), SavedBinary(*Built(chosen, rows)));
}

TEST(NBAlgorithmSelectSubset, ASearchAfterATrainingThatDroppedAPredictorReadsTheNewPlaces) {
    // The tables of the training are taken over; their records had one column more.
    Rows rows = RowsFor(4, 80);
    for (auto& row : rows) row[2] = 0;
    const NBStatus dropped = With(NBStatus(NBCode::kForcedUninformative, true), 2);
    const auto engine = Create(ListOf(4, 0));
    ASSERT_EQ(Build(*engine, rows), dropped);
    const auto fresh = Create(ListOf(4, 0));
    for (const bool withTest : {false, true}) {
        Selection selection;
        Selection expected;
        Source test(rows);
        if (withTest) {
            EXPECT_EQ(selection.Run(*engine, rows, test, -1), NBStatus());
            EXPECT_EQ(expected.Run(*fresh, rows, test, -1), NBStatus());
        } else {
            EXPECT_EQ(selection.Run(*engine, rows), NBStatus());
            EXPECT_EQ(expected.Run(*fresh, rows), dropped);
        }
        EXPECT_EQ(selection.fvSelected, expected.fvSelected);
        EXPECT_EQ(selection.fvCriteria, expected.fvCriteria);
        EXPECT_EQ(selection.fvBest, expected.fvBest);
    }
    Selection again;
    EXPECT_EQ(again.Run(*engine, rows), NBStatus());
    Rows without = rows;
    for (auto& row : without) row.erase(row.begin() + 2);
    NBVarList list = ListOf(4, 0);
    list.RemoveVariable(2);
    Selection plain;
    EXPECT_EQ(plain.Run(*Create(list), without), NBStatus());
    EXPECT_EQ(again.fvCriteria, plain.fvCriteria);
    EXPECT_EQ(again.fvBest, plain.fvBest);
}

TEST(NBAlgorithmSelectSubset, ACodeThatRoundsBeyondItsCategoriesCountsAsTheLast) {
    const Rows rows = RowsFor(3, 60);
    Rows rounded = rows;  // preparation keeps the fraction of a code that truncates to a valid one
    for (auto& row : rounded) {
        if (row[1] == 1.0) row[1] = 1.9;
    }
    for (const bool withTest : {false, true}) {
        Selection selection;
        Selection expected;
        Source test(rows);
        Source roundedTest(rounded);
        if (withTest) {
            EXPECT_EQ(selection.Run(*Create(ListOf(1, 2)), rounded, roundedTest, -1), NBStatus());
            EXPECT_EQ(expected.Run(*Create(ListOf(1, 2)), rows, test, -1), NBStatus());
        } else {
            EXPECT_EQ(selection.Run(*Create(ListOf(1, 2)), rounded), NBStatus());
            EXPECT_EQ(expected.Run(*Create(ListOf(1, 2)), rows), NBStatus());
        }
        EXPECT_EQ(selection.fvCriteria, expected.fvCriteria);
        EXPECT_EQ(selection.fvBest, expected.fvBest);
    }
}
