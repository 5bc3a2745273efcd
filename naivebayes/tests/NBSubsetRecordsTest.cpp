#include "naivebayes/NBSubsetRecords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <string>

#include "naivebayes/tests/PlainScoring.h"
#include "naivebayes/tests/RandomSearchData.h"
#include "tests/support/RandomSeed.h"

namespace {

using Tables = std::vector<std::int32_t>;

/// Scores of candidates by the plain form, record by record.
std::vector<double> PlainScores(const TrainedTables& trained, const Tables& selected,
                                const Tables& candidates, double factor) {
    PlainScoring scoring(trained.fvInputs, trained.fOutput);
    std::vector<double> scores(candidates.size(), 0.0);
    for (const MCCommon::Record& record : trained.fRecords.fvRecords) {
        const auto code = [&](std::int32_t table) {
            return record[trained.fvInputs[static_cast<std::size_t>(table)].GetRecordIndex()];
        };
        const double weight = trained.fData.fbWeighted ? record[1] : 1.0;
        scoring.StartRecord();
        for (const std::int32_t table : selected) scoring.Multiply(table, code(table));
        for (std::size_t c = 0; c < candidates.size(); ++c) {
            scores[c] += weight * factor * scoring.LogSumWith(candidates[c], code(candidates[c]));
        }
    }
    return scores;
}

/// What a search holds of trained tables.
struct Scored {
    explicit Scored(const TrainedTables& trained, MCCommon::BlockExecutor* executor = nullptr)
        : fTrained(trained),
          fModel(trained.fvInputs, trained.fOutput),
          fRecords(fModel, fInterrupt, executor) {
        for (const NBayesInput& input : trained.fvInputs) {
            fPositions.push_back(input.GetRecordIndex());
        }
    }
    void AddRecords(double factor) {
        fFactor = factor;
        for (const MCCommon::Record& record : fTrained.fRecords.fvRecords) {
            fRecords.Add(record, fPositions, fTrained.fData.fbWeighted ? record[1] : 1.0);
        }
        fRecords.Arrange();
    }
    void AddBlocks(double factor, std::int32_t rows) {
        fFactor = factor;
        std::vector<std::int32_t> columns{fTrained.fData.fNumTargets};
        if (fTrained.fData.fbWeighted) columns.push_back(-1);
        for (const std::int32_t count : fTrained.fData.NumCategories()) columns.push_back(count);
        BlockRecords source(fTrained.fRecords.fvRecords, columns, rows);
        while (const MCCommon::RecordBlock* block = source.NextBlock(rows)) {
            fRecords.Add(*block, fPositions, fTrained.fData.fbWeighted ? 1 : -1);
        }
        fRecords.Arrange();
    }
    std::vector<double> Scores(const Tables& selected, const Tables& candidates) {
        fRecords.Restart();
        for (const std::int32_t table : selected) fRecords.Join(table);
        std::vector<double> scores;
        fRecords.Score(selected, candidates, fFactor, scores);
        return scores;
    }
    /// Sums of logarithms, of the subset that was joined last.
    std::vector<double> ExactSums(const Tables& selected, const Tables& candidates,
                                  bool byTarget) const {
        std::vector<NBExactSum> sums;
        fRecords.ScoreExactly(selected, candidates, byTarget, sums);
        std::vector<double> values;
        for (const NBExactSum& sum : sums) values.push_back(sum.GetValue() * NBGridLog::kUnit);
        return values;
    }

    const TrainedTables& fTrained;
    NBInterruptState fInterrupt;
    NBSubsetModel fModel;
    NBSubsetRecords fRecords;
    std::vector<std::int32_t> fPositions;
    double fFactor = 1.0;
};

/// To 12 digits, or the same infinity or no number. rounding: what the sums for single records
/// leave open where they are all but 1, as those of predictors of one category, and their
/// logarithms nothing but rounding.
void ExpectEqualScores(const std::vector<double>& actual, const std::vector<double>& expected,
                       double rounding = 0.0) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t c = 0; c < actual.size(); ++c) {
        if (std::isfinite(expected[c])) {
            EXPECT_NEAR(actual[c], expected[c], 1e-12 * std::abs(expected[c]) + rounding) << c;
        } else {
            EXPECT_EQ(std::isnan(actual[c]), std::isnan(expected[c])) << c;
            if (!std::isnan(expected[c])) {
                EXPECT_EQ(actual[c], expected[c]) << c;
            }
        }
    }
}

class NBSubsetRecordsTest : public testing::TestWithParam<RandomWeights> {};

INSTANTIATE_TEST_SUITE_P(Weights, NBSubsetRecordsTest,
                         testing::Values(RandomWeights::kNone, RandomWeights::kFew,
                                         RandomWeights::kMany),
                         [](const auto& test) {
                             return std::string(test.param == RandomWeights::kNone  ? "None"
                                                : test.param == RandomWeights::kFew ? "Few"
                                                                                    : "Many");
                         });

TEST_P(NBSubsetRecordsTest, ScoreAsThePlainForm) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 25; ++trial) {
        const auto numRows = static_cast<std::int32_t>(2 + random() % 3000);
        const TrainedTables trained(RandomSearchData(random, numRows, 9, GetParam()));
        Tables selected;
        Tables candidates;
        for (std::int32_t table = 0; table < 9; ++table) {
            (random() % 2 == 0 ? selected : candidates).push_back(table);
        }
        const double factor = -1.0 / numRows;
        double rounding = 0.0;
        for (const SearchOracle::Row& row : trained.fData.fRows) {
            rounding += 16.0 * std::numeric_limits<double>::epsilon() * row.fWeight / numRows;
        }
        const std::vector<double> plain = PlainScores(trained, selected, candidates, factor);
        BackwardExecutor executor;
        Scored scored(trained, &executor);
        scored.AddRecords(factor);
        const std::vector<double> scores = scored.Scores(selected, candidates);
        ExpectEqualScores(scores, plain, rounding);
        // Neither the order of joining nor who does the work nor the form of the source counts.
        Scored alone(trained);
        alone.AddBlocks(factor, 777);
        EXPECT_EQ(alone.Scores(selected, candidates), scores);
        std::shuffle(selected.begin(), selected.end(), random);
        ExpectEqualScores(alone.Scores(selected, candidates), plain, rounding);
        if (candidates.empty()) continue;
        // Trying is joining, to the bit.
        for (const bool byTarget : {false, true}) {
            scored.Scores(selected, {});
            const std::vector<double> tried =
                scored.ExactSums(selected, {candidates.front()}, byTarget);
            Tables joined = selected;
            joined.push_back(candidates.front());
            scored.fRecords.Join(candidates.front());
            EXPECT_EQ(scored.ExactSums(joined, {NBSubsetRecords::kNone}, byTarget), tried);
        }
    }
}

TEST_P(NBSubsetRecordsTest, EqualColumnsScoreEqualBitsWhereverTheyStand) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    int numPairs = 0;
    for (int trial = 0; trial < 20; ++trial) {
        const TrainedTables trained(RandomSearchData(random, 2500, 12, GetParam()));
        Scored scored(trained);
        scored.AddRecords(-0.01);
        Tables all(12);
        std::iota(all.begin(), all.end(), 0);
        const std::vector<double> scores = scored.Scores({}, all);
        for (std::size_t i = 0; i < all.size(); ++i) {
            for (std::size_t j = 0; j < i; ++j) {
                const bool areEqual =
                    std::all_of(trained.fData.fRows.begin(), trained.fData.fRows.end(),
                                [i, j](const auto& row) { return row.fCodes[i] == row.fCodes[j]; });
                if (!areEqual || trained.fData.fPredictors[i].fNumCategories !=
                                     trained.fData.fPredictors[j].fNumCategories) {
                    continue;
                }
                ++numPairs;
                EXPECT_EQ(scores[i], scores[j]);
            }
        }
    }
    EXPECT_GT(numPairs, 10);
}

/// Predictors whose second category has probability t * t, with t = 1e-12 or another.
SearchData Unseen(std::int32_t numPredictors, double weight) {
    SearchData data;
    data.fbWeighted = true;
    data.fPredictors.assign(static_cast<std::size_t>(numPredictors), {2, 2});
    const std::vector<std::int32_t> codes(static_cast<std::size_t>(numPredictors), 0);
    data.fRows = {{0, weight, codes}, {1, weight, codes}};
    return data;
}

TEST(NBSubsetRecordsUnderflow, ScoresAsThePlainFormAtEveryDepth) {
    // Products of some 1e-24 each pass through the whole range of a double and out of it.
    TrainedTables trained(Unseen(20, 5e11));
    for (std::size_t depth = 0; depth <= 20; ++depth) {
        MCCommon::Record record(22);
        record[1] = 1.0;
        for (std::size_t j = 0; j < 20; ++j) record[static_cast<int>(j) + 2] = j < depth ? 1.0 : -1;
        trained.fRecords.fvRecords.assign(40, record);
        Tables selected;
        for (std::int32_t table = 0; table < 19; ++table) {
            Scored scored(trained);
            scored.AddRecords(-1.0);
            const Tables candidates{table, 19};
            ExpectEqualScores(scored.Scores(selected, candidates),
                              PlainScores(trained, selected, candidates, -1.0));
            selected.push_back(table);
        }
    }
}

TEST(NBSubsetRecordsUnderflow, ProbabilitiesOfZeroAndNoNumbersScoreAsThePlainForm) {
    for (const double weight : {1e20, 1e31, 1e40, 1e100, 1e155, 1e170, 1e307, 1e308}) {
        TrainedTables trained(Unseen(3, weight));
        MCCommon::Record record(5);
        record[1] = 2.0;
        for (int j = 2; j < 5; ++j) record[j] = 1.0;
        trained.fRecords.fvRecords.assign(3, record);
        Scored scored(trained);
        scored.AddRecords(-1.0);
        EXPECT_EQ(scored.Scores({0}, {1, 2}), PlainScores(trained, {0}, {1, 2}, -1.0)) << weight;
    }
}

TEST(NBSubsetRecordsUnderflow, ARecordFarBehindComesBackWhenTheOthersFall) {
    // The second target's product is 2^-1600 of the first's until the last predictors turn it.
    SearchData data;
    data.fPredictors.assign(120, {2, 2});
    for (std::int32_t i = 0; i < 400; ++i) {
        const std::int32_t target = i % 2;
        data.fRows.push_back({target, 1.0, {}});
        for (std::int32_t j = 0; j < 120; ++j) data.fRows.back().fCodes.push_back(target);
    }
    TrainedTables trained(data);
    MCCommon::Record record(121);
    for (int j = 0; j < 120; ++j) record[j + 1] = j < 60 ? 0.0 : 1.0;
    trained.fRecords.fvRecords.assign(10, record);
    Scored scored(trained);
    scored.AddRecords(-1.0);
    Tables selected;
    for (std::int32_t table = 0; table < 119; ++table) {
        ExpectEqualScores(scored.Scores(selected, {119}),
                          PlainScores(trained, selected, {119}, -1.0));
        selected.push_back(table);
    }
}

TEST(NBSubsetRecordsUnderflow, WhatWasLetGoIsNeverMissed) {
    // The second target's product falls first, to some 2^-935 of the first's, which then falls as
    // far, in steps of 2^-187.
    SearchData data;
    data.fbWeighted = true;
    data.fPredictors.assign(11, {2, 2});
    for (const std::int32_t target : {0, 1}) {
        data.fRows.push_back({target, 1e28, std::vector<std::int32_t>(11, target)});
    }
    TrainedTables trained(data);
    MCCommon::Record record(13);
    record[1] = 1.0;
    for (int j = 0; j < 11; ++j) record[j + 2] = j < 5 ? 0.0 : 1.0;
    trained.fRecords.fvRecords.assign(10, record);
    Scored scored(trained);
    scored.AddRecords(-1.0);
    Tables selected;
    for (std::int32_t table = 0; table < 10; ++table) {
        ExpectEqualScores(scored.Scores(selected, {10}),
                          PlainScores(trained, selected, {10}, -1.0));
        selected.push_back(table);
    }
}

/// Sums of weight * logarithm in long doubles, from the counts; by target those of 1 / posterior.
std::vector<double> LongSums(const TrainedTables& trained, const Tables& selected,
                             const Tables& candidates, bool byTarget) {
    const SearchOracle::Model oracle = trained.fData.Oracle();
    std::vector<double> sums;
    for (const std::int32_t candidate : candidates) {
        Tables subset = selected;
        subset.push_back(candidate);
        long double sum = 0.0L;
        for (const SearchOracle::Row& row : trained.fData.fRows) {
            const auto target = static_cast<std::size_t>(row.fTarget);
            sum += row.fWeight * (oracle.LogMarginal(row, subset) -
                                  (byTarget ? oracle.LogJoint(row, subset, target) : 0.0L));
        }
        sums.push_back(static_cast<double>(sum));
    }
    return sums;
}

TEST_P(NBSubsetRecordsTest, ExactSumsAreThoseOfTheCounts) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 10; ++trial) {
        const auto numRows = static_cast<std::int32_t>(2 + random() % 3000);
        const TrainedTables trained(RandomSearchData(random, numRows, 7, GetParam()));
        double weight = 0.0;
        for (const SearchOracle::Row& row : trained.fData.fRows) weight += row.fWeight;
        Scored scored(trained);
        scored.AddRecords(-1.0);
        scored.Scores({3, 0}, {});
        for (const bool byTarget : {false, true}) {
            const std::vector<double> sums = scored.ExactSums({0, 3}, {1, 2, 6}, byTarget);
            const std::vector<double> expected = LongSums(trained, {0, 3}, {1, 2, 6}, byTarget);
            // The grid, and what long doubles leave.
            for (std::size_t c = 0; c < 3; ++c) {
                EXPECT_NEAR(sums[c], expected[c],
                            weight * NBGridLog::kUnit + 1e-15 * std::abs(expected[c]));
            }
        }
    }
}

TEST_P(NBSubsetRecordsTest, ExactSumsKnowNoOrderOfTheRecords) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 10; ++trial) {
        const auto numRows = static_cast<std::int32_t>(2 + random() % 3000);
        TrainedTables trained(RandomSearchData(random, numRows, 7, GetParam()));
        Scored scored(trained);
        scored.AddRecords(-1.0);
        const auto sums = [](Scored& of, bool byTarget) {
            of.Scores({0, 3}, {});
            return of.ExactSums({0, 3}, {1, 2, 6}, byTarget);
        };
        const std::vector<double> expected = sums(scored, true);
        const std::vector<double> expectedWithout = sums(scored, false);
        std::shuffle(trained.fRecords.fvRecords.begin(), trained.fRecords.fvRecords.end(), random);
        BackwardExecutor executor;
        Scored shuffled(trained, &executor);
        shuffled.AddBlocks(-1.0, 333);
        EXPECT_EQ(sums(shuffled, true), expected);
        EXPECT_EQ(sums(shuffled, false), expectedWithout);
    }
}

TEST_P(NBSubsetRecordsTest, QuickScoresKeepWithinTheirBound) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 20; ++trial) {
        const auto numRows = static_cast<std::int32_t>(2 + random() % 6000);
        const TrainedTables trained(RandomSearchData(random, numRows, 12, GetParam()));
        Scored scored(trained);
        scored.AddRecords(-1.0 / numRows);
        Tables selected;
        for (std::int32_t table = 0; table < 11; ++table) {
            const std::vector<double> quick = scored.Scores(selected, {table, 11});
            const std::vector<double> exact = scored.ExactSums(selected, {table, 11}, false);
            for (std::size_t c = 0; c < 2; ++c) {
                // Beside the grid of the exact ones.
                const double error =
                    scored.fRecords.ScoreError(selected.size(), scored.fFactor, quick[c]);
                double weight = 0.0;
                for (const SearchOracle::Row& row : trained.fData.fRows) weight += row.fWeight;
                const double mean = scored.fFactor * exact[c];
                EXPECT_LE(std::abs(quick[c] - mean),
                          error + weight / numRows * NBGridLog::kUnit + 0x1p-52 * std::abs(mean));
                // Nor is it a bound that leaves all candidates in.
                EXPECT_LT(error, 1e-11 * (1.0 + std::abs(mean)) * (1.0 + weight / numRows));
            }
            selected.push_back(table);
        }
    }
}

TEST_P(NBSubsetRecordsTest, ExactSumsAreTheSameWhoeverTakesTheLogarithms) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const TrainedTables trained(RandomSearchData(random, 9500, 5, GetParam(), 10));
    BackwardExecutor executor;
    Scored scored(trained, &executor);
    scored.AddRecords(-1e-4);
    Scored alone(trained);
    alone.AddRecords(-1e-4);
    scored.Scores({4}, {});
    alone.Scores({4}, {});
    Tables candidates;
    for (std::int32_t c = 0; c < 40; ++c) candidates.push_back(c % 4);
    executor.fNumRuns = 0;
    EXPECT_EQ(scored.ExactSums({4}, candidates, true), alone.ExactSums({4}, candidates, true));
    EXPECT_GT(executor.fNumRuns, 0);

    StopAfter processor(1);
    scored.fInterrupt.fpStopProcessor = &processor;
    executor.fNumRuns = 0;
    for (std::int32_t c = 0; c < 600; ++c) candidates.push_back(c % 4);
    scored.ExactSums({4}, candidates, true);
    EXPECT_TRUE(scored.fInterrupt.fStopped);
    EXPECT_EQ(executor.fNumRuns, 1);
}

// A record near underflow, and one of which a number was let go, are scored from their codes; the
// sums are the same where both forms can be had.
TEST(NBSubsetRecordsUnderflow, ExactSumsFromCodesAreThoseFromProducts) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    SearchData data;
    data.fNumTargets = 3;
    data.fbWeighted = true;
    data.fPredictors.assign(90, {2, 2});
    for (std::int32_t i = 0; i < 60; ++i) {
        const auto target = static_cast<std::int32_t>(random() % 3);
        data.fRows.push_back({target, 1e5, {}});
        for (int j = 0; j < 90; ++j) data.fRows.back().fCodes.push_back(target % 2);
    }
    TrainedTables trained(data);
    // Of one target as far as it goes; the numbers of the others fall behind by 2^-1000.
    Tables selected;
    for (std::int32_t table = 0; table < 89; ++table) {
        Scored scored(trained);
        scored.AddRecords(-1.0);
        scored.Scores(selected, {});
        const Tables subset = selected;
        for (const bool byTarget : {false, true}) {
            const std::vector<double> sums = scored.ExactSums(subset, {table}, byTarget);
            const std::vector<double> expected = LongSums(trained, subset, {table}, byTarget);
            EXPECT_NEAR(sums[0], expected[0], 1e-15 * std::abs(expected[0]) + 1e-15 * 6e6) << table;
        }
        selected.push_back(table);
    }
}

TEST_P(NBSubsetRecordsTest, ScoreTheSameInManyRounds) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const TrainedTables trained(RandomSearchData(random, 9500, 5, GetParam(), 10));
    BackwardExecutor executor;
    Scored scored(trained, &executor);
    scored.AddRecords(-1e-4);
    // So many candidates that few pieces make a round.
    Tables candidates;
    for (std::int32_t c = 0; c < 1200; ++c) candidates.push_back(c % 4);
    executor.fNumRuns = 0;
    const std::vector<double> scores = scored.Scores({4}, candidates);
    EXPECT_GT(executor.fNumRuns, 2);
    const std::vector<double> plain = PlainScores(trained, {4}, {0, 1, 2, 3}, -1e-4);
    for (std::size_t c = 0; c < candidates.size(); ++c) {
        ExpectEqualScores({scores[c]}, {plain[c % 4]}, 1e-13);
        EXPECT_EQ(scores[c], scores[c % 4]);
    }
}

TEST(NBSubsetRecordsTest, RowsOfABlockWithoutWeightAreLeftOut) {
    std::mt19937 random(3);
    TrainedTables trained(RandomSearchData(random, 500, 4, RandomWeights::kFew));
    std::vector<MCCommon::Record> weighed;
    for (std::size_t i = 0; i < 500; ++i) {
        MCCommon::Record& record = trained.fRecords.fvRecords[i];
        if (i % 5 == 0) record[1] = i % 2 == 0 ? 0.0 : MCMV::gMissingValue;
        if (i % 5 != 0) weighed.push_back(record);
    }
    Scored inBlocks(trained);
    inBlocks.AddBlocks(-0.01, 77);
    EXPECT_EQ(inBlocks.fRecords.GetNumRecords(), weighed.size());
    const std::vector<double> scores = inBlocks.Scores({0}, {1, 2, 3});
    trained.fRecords.fvRecords = weighed;
    Scored alone(trained);
    alone.AddRecords(-0.01);
    EXPECT_EQ(scores, alone.Scores({0}, {1, 2, 3}));
}

TEST(NBSubsetRecordsTest, AnInterruptLeavesOffBetweenPieces) {
    std::mt19937 random(1);
    const TrainedTables trained(RandomSearchData(random, 3000, 5, RandomWeights::kNone));
    BackwardExecutor executor;
    Scored scored(trained, &executor);
    scored.AddRecords(-1.0);
    scored.fInterrupt.fStopped = true;
    EXPECT_EQ(scored.Scores({}, {0, 1}), (std::vector<double>{0.0, 0.0}));
    EXPECT_EQ(executor.fNumRuns, 0);
}

}  // namespace
