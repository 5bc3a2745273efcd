#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <sstream>
#include <string>

#include "naivebayes/tests/EngineFixture.h"
#include "naivebayes/tests/RandomSearchData.h"
#include "tests/support/RandomSeed.h"

namespace {

using namespace enginetest;

/// Original records of a target, five categorical and four continuous predictors, two of each
/// forced, and at times a weight.
struct RandomOriginals {
    RandomOriginals(std::mt19937& random, std::int32_t numRows, bool weighted) {
        const auto below = [&random](std::int32_t limit) {
            return static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(limit));
        };
        const std::int32_t targets = 2 + below(4);
        AddCategorical(fList, "t", targets, kTarget);
        fColumns.push_back(targets);
        for (std::int32_t j = 0; j < 5; ++j) {
            fColumns.push_back(2 + below(j == 4 ? 400 : 8));
            AddCategorical(fList, "p" + std::to_string(j), fColumns.back(),
                           j < 2 ? kInput : kCandidate);
        }
        if (weighted) {
            fList.AddWeightVar("w", "", 0);
            fColumns.push_back(-1);
        }
        for (std::int32_t j = 0; j < 4; ++j) {
            fList.AddContVar("c" + std::to_string(j), "", 0.0, 10.0, 2 + below(9),
                             j < 2 ? kInput : kCandidate);
            fColumns.push_back(-1);
        }
        for (std::int32_t i = 0; i < numRows; ++i) {
            std::vector<double> values;
            const std::int32_t target = below(targets);
            values.push_back(below(30) == 0 ? -1.0 : target);
            for (std::size_t c = 1; c < 6; ++c) {
                values.push_back(below(20) == 0  ? -1.0
                                 : below(2) == 0 ? target % fColumns[c]
                                                 : below(fColumns[c]));
            }
            if (weighted) values.push_back(below(20) == 0 ? kMissing : below(50) * 0.1);
            for (std::int32_t j = 0; j < 4; ++j) {
                values.push_back(below(20) == 0 ? kMissing : target + below(60) * 0.1);
            }
            fRecords.emplace_back(std::move(values));
        }
    }
    NBVarList fList;
    std::vector<std::int32_t> fColumns;  // categories, -1 for numbers
    std::vector<MCCommon::Record> fRecords;
};

std::string Saved(INBAlgorithm& engine) {
    std::ostringstream out;
    EXPECT_TRUE(engine.SaveBinary(out).IsOK());
    return out.str();
}

TEST(NBAlgorithmBlocks, BuildAndUpdateTheModelThatSingleRecordsGive) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 10; ++trial) {
        const RandomOriginals data(random, 500, trial % 2 == 0);
        CountedRecords single(data.fRecords);
        BackwardExecutor executor;
        BlockRecords blocks(data.fRecords, data.fColumns, 77, trial % 3 == 0 ? &executor : nullptr);
        std::string saved[2];
        int at = 0;
        for (MCCommon::MultiPassRecordIter* source :
             {static_cast<MCCommon::MultiPassRecordIter*>(&single),
              static_cast<MCCommon::MultiPassRecordIter*>(&blocks)}) {
            const auto engine = Create(data.fList);
            EXPECT_EQ(engine->BuildModel(*source, 400), NBStatus());
            EXPECT_EQ(engine->UpdateModel(*source, 250), NBStatus());
            EXPECT_EQ(engine->UpdateModel(*source, -1), NBStatus());
            saved[at++] = Saved(*engine);
        }
        EXPECT_EQ(saved[0], saved[1]);
    }
}

TEST(NBAlgorithmBlocks, UpdateCountsThatAreNotWholeAsSingleRecordsDo) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const RandomOriginals data(random, 3000, false);
    CountedRecords single(data.fRecords);
    const auto engine = Create(data.fList);
    ASSERT_EQ(engine->BuildModel(single, 50), NBStatus());
    // A state that was written elsewhere: a fraction joins the counts of each first category.
    std::string state = SavedBinary(*engine);
    constexpr std::size_t kHead = 28;  // of a table; a row then has its length
    int numTables = 0;
    for (std::size_t at = state.find("NBIN"); at != std::string::npos;
         at = state.find("NBIN", at + 1), ++numTables) {
        for (std::size_t k = 0; k < 2; ++k) {
            char* const cell = state.data() + at + kHead + 4 + 16 * k;
            double count = 0.0;
            std::memcpy(&count, cell, sizeof count);
            count += 0.01 + 0.1 * static_cast<double>(numTables);
            std::memcpy(cell, &count, sizeof count);
        }
    }
    ASSERT_EQ(numTables, 4);
    BlockRecords blocks(data.fRecords, data.fColumns, 777);
    const auto one = RestoredBinary(state);
    const auto other = RestoredBinary(state);
    ASSERT_EQ(one->UpdateModel(single, -1), NBStatus());
    ASSERT_EQ(other->UpdateModel(blocks, -1), NBStatus());
    EXPECT_EQ(SavedBinary(*one), SavedBinary(*other));
}

TEST(NBAlgorithmBlocks, SelectTheSubsetThatSingleRecordsSelect) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 12; ++trial) {
        const RandomOriginals data(random, 3000, trial % 2 == 0);
        CountedRecords single(data.fRecords);
        BackwardExecutor executor;
        BlockRecords blocks(data.fRecords, data.fColumns, 777,
                            trial % 3 == 0 ? &executor : nullptr);
        NaiveBayesSettings settings;
        settings.fMaxRecordsInMemory = trial % 4 < 2 ? 3000 : 10;
        std::string saved[2];
        std::vector<std::int32_t> selected[2];
        std::vector<double> criteria[2];
        std::vector<NBSubset> best[2];
        int at = 0;
        for (MCCommon::MultiPassRecordIter* source :
             {static_cast<MCCommon::MultiPassRecordIter*>(&single),
              static_cast<MCCommon::MultiPassRecordIter*>(&blocks)}) {
            const auto engine = Create(data.fList, settings);
            EXPECT_EQ(engine->SelectSubset(*source, 3000, selected[at], criteria[at], best[at], -1,
                                           false, nullptr, 0, 100, nullptr, nullptr),
                      NBStatus());
            saved[at++] = Saved(*engine);
        }
        EXPECT_EQ(selected[0], selected[1]);
        EXPECT_EQ(criteria[0], criteria[1]);
        EXPECT_EQ(best[0], best[1]);
        EXPECT_EQ(saved[0], saved[1]);
    }
}

TEST(NBAlgorithmBlocks, OfRecordsThatCannotBeUsedGiveNoModel) {
    const std::vector<MCCommon::Record> records(5,
                                                MCCommon::Record(std::vector<double>{-1.0, 0.0}));
    BlockRecords blocks(records, {2, 2}, 2);
    const auto engine = Create(CategoricalList(2, {2}));
    EXPECT_EQ(engine->BuildModel(blocks, 5), NBStatus(70011, false));
}

}  // namespace
