#include "naivebayes/NBSubsetSearch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <numeric>
#include <random>
#include <sstream>

#include "naivebayes/tests/SearchFixture.h"

namespace {

using Sizes = std::vector<std::int32_t>;

/// Two targets; predictor j copies the target with a chance that falls with j.
SearchData Noisy(std::int32_t numForced, std::int32_t numCandidates, std::int32_t numRows = 60) {
    SearchData data;
    for (std::int32_t j = 0; j < numForced + numCandidates; ++j) {
        data.fPredictors.push_back({2 + j % 3, j < numForced ? 1 : 2});
    }
    std::mt19937 generator(4711);
    const auto below = [&generator](std::int32_t limit) {
        return static_cast<std::int32_t>(generator() % static_cast<std::uint32_t>(limit));
    };
    for (std::int32_t i = 0; i < numRows; ++i) {
        SearchOracle::Row row;
        row.fTarget = below(2);
        std::int32_t j = 0;
        for (const SearchData::Predictor& predictor : data.fPredictors) {
            const bool copies = below(10) < 8 - j++ % 6;
            row.fCodes.push_back(copies ? row.fTarget : below(predictor.fNumCategories));
        }
        data.fRows.push_back(row);
    }
    return data;
}

Sizes SizesOf(const std::vector<NBSubset>& subsets) {
    Sizes sizes;
    for (const NBSubset& subset : subsets) sizes.push_back(subset.fSize);
    return sizes;
}

/// A run and what it gave.
struct Trial {
    explicit Trial(const SearchData& data) : fTrained(data), fSearch(fTrained.MakeSearch()) {}

    NBStatus Exact(std::int32_t maxSize, bool fits = true) {
        return Noted(fSearch.RunExactSize(maxSize, fTrained.fRecords, fTrained.NumRecords(), fits,
                                          fSelected));
    }
    NBStatus PseudoBIC(std::int32_t maxSize, bool fits = true, std::int32_t numBest = 100) {
        return Noted(fSearch.RunPseudoBIC(maxSize, fTrained.fRecords, fTrained.NumRecords(), fits,
                                          fSelected, fBest, numBest));
    }
    NBStatus TestData(std::int32_t maxSize, const std::vector<SearchOracle::Row>& rows,
                      std::int32_t numTest = -1, bool fits = true) {
        const NBDataPreparator preparator(fTrained.fList, true, fTrained.NumRecords(),
                                          fTrained.fInterrupt);
        CountedRecords test = fTrained.Originals(rows);
        return Noted(fSearch.RunTestData(maxSize, fTrained.fRecords, fTrained.NumRecords(), fits,
                                         test, numTest, fSelected, fBest, 100, preparator));
    }
    Sizes Chain() const { return fTrained.Predictors(fSelected); }
    double BestOf(std::int32_t size) const {
        for (const NBSubset& subset : fBest) {
            if (subset.fSize == size) return subset.fCriterion;
        }
        ADD_FAILURE() << "no subset of size " << size;
        return 0.0;
    }

    TrainedTables fTrained;
    NBSubsetSearch fSearch;
    Sizes fSelected;
    std::vector<NBSubset> fBest;
    std::vector<double> fCriteria;

 private:
    NBStatus Noted(const NBStatus& status) {
        fSearch.GetCriteria(fCriteria);
        return status;
    }
};

class CountedSource : public MCCommon::MCRandom {
 public:
    double GetRandom() override {
        ++fNumDrawn;
        return fTwister.GetRealOpen();
    }
    std::int32_t fNumDrawn = 0;

 private:
    MCCommonMath::MCRandomTwister fTwister;
};

TEST(NBSubsetSearchTest, OnePredictorByHand) {
    SearchData data;
    data.fPredictors = {{2, 2}};
    data.fRows = {{0, 1.0, {0}}, {1, 1.0, {1}}};
    Trial run(data);
    ASSERT_TRUE(run.PseudoBIC(1).IsOK());
    // t = 1/2: priors 1/2, P = 3/4 on the diagonal and 1/4 beside it, so each posterior is 3/4.
    EXPECT_NEAR(run.fCriteria[0], std::log(0.75), 1e-15);
    EXPECT_NEAR(run.BestOf(1), 0.5 * std::log(2.0) / 2.0 - std::log(0.75), 1e-15);
}

TEST(NBSubsetSearchTest, ForcedOnlyIsTheWholeChainAndOneSizeIsCompared) {
    Trial run(Noisy(3, 0));
    ASSERT_TRUE(run.PseudoBIC(3).IsOK());
    EXPECT_EQ(run.Chain(), (Sizes{0, 1, 2}));
    EXPECT_EQ(SizesOf(run.fBest), (Sizes{3}));
    EXPECT_NEAR(run.BestOf(3),
                run.fTrained.fData.Oracle().PseudoBIC(run.fTrained.fData.fRows, {0, 1, 2}), 1e-12);
}

TEST(NBSubsetSearchTest, AMaxSizeOfTheForcedCountStartsNoSearch) {
    Trial run(Noisy(2, 3));
    ASSERT_TRUE(run.Exact(2).IsOK());
    EXPECT_EQ(run.Chain(), (Sizes{0, 1}));
    EXPECT_EQ(run.fTrained.fRecords.fNumDelivered, 0);
    EXPECT_EQ(run.fTrained.Roles(), (Sizes{1, 1, 2, 2, 2}));
}

TEST(NBSubsetSearchTest, WithoutForcedPredictorsSizesRunFromOne) {
    Trial run(Noisy(0, 4));
    ASSERT_TRUE(run.PseudoBIC(4).IsOK());
    Sizes sizes = SizesOf(run.fBest);
    std::sort(sizes.begin(), sizes.end());
    EXPECT_EQ(sizes, (Sizes{1, 2, 3, 4}));
}

TEST(NBSubsetSearchTest, WithoutForcedPredictorsTestDataCompareSizesFromOne) {
    Trial run(Noisy(0, 4));
    ASSERT_TRUE(run.TestData(4, run.fTrained.fData.fRows).IsOK());
    Sizes sizes = SizesOf(run.fBest);
    std::sort(sizes.begin(), sizes.end());
    EXPECT_EQ(sizes, (Sizes{1, 2, 3, 4}));
}

TEST(NBSubsetSearchTest, OfEqualCandidatesTheOneWithTheSmallerTableIndexEnters) {
    SearchData data = Noisy(0, 2);
    data.fPredictors = {data.fPredictors[1], data.fPredictors[0], data.fPredictors[0],
                        data.fPredictors[0]};
    for (SearchOracle::Row& row : data.fRows) {
        row.fCodes = {row.fCodes[1], row.fCodes[0], row.fCodes[0], row.fCodes[0]};
    }
    Trial run(data);
    ASSERT_TRUE(run.Exact(1).IsOK());
    EXPECT_EQ(run.Chain(), (Sizes{1}));
}

TEST(NBSubsetSearchTest, OfSizesWithEqualPseudoBICTheSmallerRanksFirst) {
    // One record, one target and one category: every probability is 1 and every criterion 0.
    SearchData data;
    data.fNumTargets = 1;
    data.fPredictors = {{1, 2}, {1, 2}, {1, 2}};
    data.fRows = {{0, 1.0, {0, 0, 0}}};
    Trial run(data);
    ASSERT_TRUE(run.PseudoBIC(3).IsOK());
    EXPECT_EQ(run.fBest, (std::vector<NBSubset>{{1, 0.0}, {2, 0.0}, {3, 0.0}}));
    EXPECT_EQ(run.fTrained.Roles(), (Sizes{1, 2, 2}));
}

/// A predictor that copies the target but for some records, and behind it some that tell nothing of
/// it: each of their codes is as frequent in every target category, of which each has numEach
/// records.
SearchData Balanced(std::mt19937& random, std::int32_t numTargets, std::int32_t numEach,
                    std::int32_t numSilent) {
    SearchData data;
    data.fNumTargets = numTargets;
    data.fPredictors.push_back({numTargets, 2});
    std::vector<std::int32_t> numCategories;
    for (std::int32_t j = 0; j < numSilent; ++j) {
        const std::int32_t count = 2 + j % 3;
        numCategories.push_back(count);
        data.fPredictors.push_back({count, 2});
    }
    for (std::int32_t target = 0; target < numTargets; ++target) {
        std::vector<std::vector<std::int32_t>> codes;
        for (const std::int32_t count : numCategories) {
            codes.emplace_back();
            for (std::int32_t i = 0; i < numEach; ++i) codes.back().push_back(i % count);
            std::shuffle(codes.back().begin(), codes.back().end(), random);
        }
        for (std::int32_t i = 0; i < numEach; ++i) {
            const bool errs = i < numEach / 4;
            SearchOracle::Row row{target, 1.0, {errs ? (target + 1) % numTargets : target}};
            for (const auto& ofPredictor : codes) {
                row.fCodes.push_back(ofPredictor[static_cast<std::size_t>(i)]);
            }
            data.fRows.push_back(row);
        }
    }
    std::shuffle(data.fRows.begin(), data.fRows.end(), random);
    return data;
}

// Where the mathematics makes criteria equal, rounding must not make the longer chain the better.
TEST(NBSubsetSearchTest, ASizeThatAddsNothingToAnyRecordIsEqualAndNeverWins) {
    std::mt19937 random(20260501);
    for (std::int32_t trial = 0; trial < 150; ++trial) {
        const SearchData data =
            Balanced(random, 2 + trial % 3, 12 * (1 + trial % 5), 1 + trial % 4);
        Trial run(data);
        ASSERT_TRUE(
            run.TestData(static_cast<std::int32_t>(data.fPredictors.size()), data.fRows).IsOK());
        EXPECT_EQ(run.Chain().front(), 0);
        EXPECT_TRUE(std::is_sorted(run.fSelected.begin(), run.fSelected.end()));
        for (std::size_t i = 0; i < run.fBest.size(); ++i) {
            EXPECT_EQ(run.fBest[i].fSize, static_cast<std::int32_t>(i) + 1) << trial;
            EXPECT_EQ(run.fBest[i].fCriterion, run.fBest[0].fCriterion) << trial;
            EXPECT_EQ(run.fCriteria[i], run.fCriteria[0]) << trial;
        }
    }
}

// The same in classes of sizes that differ: a third or a fifth is the share of each code by the
// counts, while rounded quotients differ by class.
TEST(NBSubsetSearchTest, ASilentPredictorAddsNothingInClassesOfAnySize) {
    SearchData data;
    data.fNumTargets = 3;
    data.fPredictors = {{3, 2}, {3, 2}, {5, 2}, {3, 2}};
    const std::int32_t sizes[] = {15, 30, 45};
    for (std::int32_t target = 0; target < 3; ++target) {
        for (std::int32_t i = 0; i < sizes[target]; ++i) {
            data.fRows.push_back({target, 1.0, {i % 7 == 0 ? 0 : target, i % 3, i % 5, i / 5 % 3}});
        }
    }
    for (std::int32_t target = 0; target < 3; ++target) {
        std::vector<SearchOracle::Row> judges;
        std::copy_if(data.fRows.begin(), data.fRows.end(), std::back_inserter(judges),
                     [target](const SearchOracle::Row& row) { return row.fTarget == target; });
        Trial run(data);
        ASSERT_TRUE(run.TestData(4, judges).IsOK());
        EXPECT_EQ(run.Chain(), (Sizes{0, 1, 2, 3}));
        EXPECT_EQ(SizesOf(run.fBest), (Sizes{1, 2, 3, 4}));
        for (std::size_t i = 1; i < 4; ++i) {
            EXPECT_EQ(run.fCriteria[i], run.fCriteria[0]);
            EXPECT_EQ(run.fBest[i].fCriterion, run.fBest[0].fCriterion);
        }
    }
}

// Columns that are one another's copies under other names of their categories.
TEST(NBSubsetSearchTest, OfRelabelledCopiesTheFirstEntersAtEveryStep) {
    for (std::uint32_t seed = 1; seed <= 40; ++seed) {
        std::mt19937 random(seed);
        SearchData data = Noisy(0, 3, 40);
        for (std::int32_t copy = 0; copy < 2; ++copy) {
            for (std::int32_t j = 0; j < 3; ++j) {
                const std::int32_t count =
                    data.fPredictors[static_cast<std::size_t>(j)].fNumCategories;
                std::vector<std::int32_t> names(static_cast<std::size_t>(count));
                std::iota(names.begin(), names.end(), 0);
                std::shuffle(names.begin(), names.end(), random);
                data.fPredictors.push_back({count, 2});
                for (SearchOracle::Row& row : data.fRows) {
                    const auto code =
                        static_cast<std::size_t>(row.fCodes[static_cast<std::size_t>(j)]);
                    row.fCodes.push_back(names[code]);
                }
            }
        }
        std::shuffle(data.fRows.begin(), data.fRows.end(), random);
        Trial run(data);
        ASSERT_TRUE(run.PseudoBIC(9).IsOK());
        // Of a predictor and its copies, 3 and 6 behind it, the first comes first.
        const Sizes chain = run.Chain();
        const auto place = [&chain](std::int32_t predictor) {
            return std::find(chain.begin(), chain.end(), predictor);
        };
        for (std::int32_t j = 0; j < 6; ++j) EXPECT_LT(place(j), place(j + 3)) << seed;
    }
}

TEST(NBSubsetSearchTest, TheOrderOfTheRecordsAndSplitWeightsDoNotShow) {
    for (std::uint32_t seed = 1; seed <= 30; ++seed) {
        std::mt19937 random(seed);
        SearchData data = Noisy(static_cast<std::int32_t>(seed % 3), 6, 30 + 10 * (seed % 4));
        data.fbWeighted = true;
        for (SearchOracle::Row& row : data.fRows) {
            row.fWeight = static_cast<double>(1 + random() % 5);
            for (std::size_t j = 1; j < row.fCodes.size(); ++j) {
                if (random() % 8 == 0) row.fCodes[j] = -1;
            }
        }
        Trial run(data);
        ASSERT_TRUE(run.PseudoBIC(8).IsOK());
        Trial tested(data);
        ASSERT_TRUE(tested.TestData(8, data.fRows).IsOK());
        SearchData other = data;
        std::shuffle(other.fRows.begin(), other.fRows.end(), random);
        Trial shuffled(other);
        ASSERT_TRUE(shuffled.PseudoBIC(8).IsOK());
        EXPECT_EQ(shuffled.fSelected, run.fSelected) << seed;
        EXPECT_EQ(shuffled.fCriteria, run.fCriteria) << seed;
        EXPECT_EQ(shuffled.fBest, run.fBest) << seed;
        // A record of weight 3 as two of 1 and 2.
        other.fRows.clear();
        for (const SearchOracle::Row& row : run.fTrained.fData.fRows) {
            for (double left = row.fWeight; left > 0.0;) {
                SearchOracle::Row part = row;
                part.fWeight = std::min(left, static_cast<double>(1 + random() % 3));
                left -= part.fWeight;
                other.fRows.push_back(part);
            }
        }
        std::shuffle(other.fRows.begin(), other.fRows.end(), random);
        Trial split(other);
        ASSERT_TRUE(split.TestData(8, other.fRows).IsOK());
        EXPECT_EQ(split.fSelected, tested.fSelected) << seed;
        EXPECT_EQ(split.fCriteria, tested.fCriteria) << seed;
        EXPECT_EQ(split.fBest, tested.fBest) << seed;
    }
}

// Products that end among the smallest doubles tell the order: six probabilities of 2^-178 and then
// twelve of 3/5 stop at the smallest, the other way round they reach 0, whose score is infinite.
TEST(NBSubsetSearchTest, TheSelectedMultiplyInTheOrderOfTheirTables) {
    SearchData data;
    data.fNumTargets = 1;
    data.fbWeighted = true;
    data.fPredictors.assign(6, {2, 2});
    data.fPredictors.resize(18, {2, 1});
    data.fPredictors.push_back({2, 2});
    // The tiny ones have all weight in their first category, the others 3/5.
    for (std::int32_t i = 0; i < 5; ++i) {
        SearchOracle::Row row{0, 0x1p89 / 5.0, std::vector<std::int32_t>(19, i < 3 ? 0 : 1)};
        std::fill(row.fCodes.begin(), row.fCodes.begin() + 6, 0);
        data.fRows.push_back(row);
    }
    Trial run(data);
    std::vector<double> values(21, 0.0);
    values[1] = 1.0;
    std::fill(values.begin() + 2, values.begin() + 8, 1.0);
    values.back() = -1.0;
    run.fTrained.fRecords.fvRecords.emplace_back(values);
    ASSERT_TRUE(run.Exact(19).IsOK());
    const Sizes chain = run.Chain();
    EXPECT_EQ(Sizes(chain.begin() + 12, chain.end()), (Sizes{0, 1, 2, 3, 4, 5, 18}));
    EXPECT_TRUE(std::isfinite(run.fCriteria.back()));
}

TEST(NBSubsetSearchTest, FewerSizesThanAskedForGiveFewerSubsets) {
    Trial run(Noisy(1, 2));
    ASSERT_TRUE(run.PseudoBIC(3, true, 10).IsOK());
    EXPECT_EQ(run.fBest.size(), 3U);
}

TEST(NBSubsetSearchTest, AsManySubsetsAreKeptAsAskedForAndTheyAreTheBest) {
    Trial all(Noisy(0, 6));
    ASSERT_TRUE(all.PseudoBIC(6).IsOK());
    EXPECT_TRUE(std::is_sorted(
        all.fBest.begin(), all.fBest.end(),
        [](const NBSubset& a, const NBSubset& b) { return a.fCriterion < b.fCriterion; }));
    Trial some(Noisy(0, 6));
    ASSERT_TRUE(some.PseudoBIC(6, true, 2).IsOK());
    EXPECT_EQ(some.fBest, (std::vector<NBSubset>{all.fBest[0], all.fBest[1]}));
}

TEST(NBSubsetSearchTest, CandidatesThatRunOutLeaveTrailingZeros) {
    Trial run(Noisy(1, 2));
    ASSERT_TRUE(run.PseudoBIC(6).IsOK());
    EXPECT_EQ(run.Chain().size(), 3U);
    ASSERT_EQ(run.fCriteria.size(), 6U);
    for (std::size_t size = 1; size <= 3; ++size) EXPECT_LT(run.fCriteria[size - 1], 0.0) << size;
    for (std::size_t size = 4; size <= 6; ++size) EXPECT_EQ(run.fCriteria[size - 1], 0.0) << size;
}

TEST(NBSubsetSearchTest, SizesBelowTheForcedOneStayZero) {
    Trial run(Noisy(3, 2));
    ASSERT_TRUE(run.PseudoBIC(5).IsOK());
    EXPECT_EQ(run.fCriteria[0], 0.0);
    EXPECT_EQ(run.fCriteria[1], 0.0);
    EXPECT_LT(run.fCriteria[2], 0.0);
}

TEST(NBSubsetSearchTest, AnExactSizeLeavesTheForcedEntryZeroAndNoSubsets) {
    for (const bool fits : {true, false}) {
        Trial run(Noisy(1, 4));
        ASSERT_TRUE(run.Exact(3, fits).IsOK());
        EXPECT_EQ(run.fCriteria[0], 0.0);
        EXPECT_NE(run.fCriteria[1], 0.0);
        EXPECT_NE(run.fCriteria[2], 0.0);
        EXPECT_TRUE(run.fBest.empty());
        const Sizes roles = run.fTrained.Roles();
        EXPECT_EQ(std::count(roles.begin(), roles.end(), 1), 3);
    }
}

TEST(NBSubsetSearchTest, TestDataLeaveTheForcedEntryZeroToo) {
    Trial run(Noisy(1, 3));
    ASSERT_TRUE(run.TestData(4, run.fTrained.fData.fRows).IsOK());
    EXPECT_EQ(run.fCriteria[0], 0.0);
    EXPECT_LT(run.fCriteria[1], 0.0);
}

TEST(NBSubsetSearchTest, GetCriteriaTellsHowMany) {
    Trial run(Noisy(1, 3));
    ASSERT_TRUE(run.PseudoBIC(3).IsOK());
    std::vector<double> criteria{1.0};
    EXPECT_EQ(run.fSearch.GetCriteria(criteria), 3);
    EXPECT_EQ(criteria, run.fCriteria);
}

TEST(NBSubsetSearchTest, TheWholeChainIsListedWhateverSizeWins) {
    Trial run(Noisy(1, 6));
    ASSERT_TRUE(run.PseudoBIC(7).IsOK());
    EXPECT_EQ(run.fSelected.size(), 7U);
    const std::int32_t best = run.fBest.front().fSize;
    ASSERT_LT(best, 7);
    const Sizes chain = run.Chain();
    const Sizes roles = run.fTrained.Roles();
    for (std::int32_t position = 0; position < 7; ++position) {
        EXPECT_EQ(roles[static_cast<std::size_t>(chain[static_cast<std::size_t>(position)])],
                  position < best ? 1 : 2)
            << position;
    }
}

TEST(NBSubsetSearchTest, TheForcedComeFirstInTableOrder) {
    SearchData data = Noisy(0, 5);
    data.fPredictors[1].fRole = 1;
    data.fPredictors[4].fRole = 1;
    Trial run(data);
    ASSERT_TRUE(run.Exact(5).IsOK());
    const Sizes chain = run.Chain();
    EXPECT_EQ(chain[0], 1);
    EXPECT_EQ(chain[1], 4);
    EXPECT_EQ(run.fTrained.Roles(), (Sizes{1, 1, 1, 1, 1}));
}

TEST(NBSubsetSearchTest, RecordsInMemoryAreReadOnce) {
    Trial run(Noisy(2, 3));
    ASSERT_TRUE(run.PseudoBIC(5).IsOK());
    EXPECT_EQ(run.fTrained.fRecords.fNumDelivered, run.fTrained.NumRecords());
    EXPECT_EQ(run.fTrained.fRecords.fNext, 0U);
}

TEST(NBSubsetSearchTest, RecordsOnDiskAreReadOnlyOnceForThePseudoBIC) {
    Trial run(Noisy(2, 3));
    ASSERT_TRUE(run.PseudoBIC(5, false).IsOK());
    EXPECT_EQ(run.fTrained.fRecords.fNumDelivered, run.fTrained.NumRecords());
    EXPECT_EQ(run.fTrained.fRecords.fNext, 0U);
    Trial exact(Noisy(2, 3));
    ASSERT_TRUE(exact.Exact(5, false).IsOK());
    EXPECT_EQ(exact.fTrained.fRecords.fNumDelivered, 0);
}

TEST(NBSubsetSearchTest, NoMoreRecordsAreReadThanTold) {
    Trial run(Noisy(0, 2));
    ASSERT_TRUE(run.fSearch.RunExactSize(1, run.fTrained.fRecords, 7, true, run.fSelected).IsOK());
    EXPECT_EQ(run.fTrained.fRecords.fNumDelivered, 7);
}

TEST(NBSubsetSearchTest, RecordsWithoutWeightAreReadAndLeftOut) {
    SearchData data = Noisy(1, 3);
    data.fbWeighted = true;
    Trial plain(data);
    ASSERT_TRUE(plain.PseudoBIC(4).IsOK());
    Trial run(data);
    std::vector<MCCommon::Record>& records = run.fTrained.fRecords.fvRecords;
    for (const double weight : {MCMV::gMissingValue, 0.0, -3.0}) {
        MCCommon::Record record = records.front();
        record[1] = weight;
        records.insert(records.begin() + 5, record);
    }
    ASSERT_TRUE(run.PseudoBIC(4).IsOK());
    EXPECT_EQ(run.fCriteria, plain.fCriteria);
    EXPECT_EQ(run.fBest, plain.fBest);
    // They count towards the number of records to read.
    Trial limited(data);
    std::vector<MCCommon::Record>& few = limited.fTrained.fRecords.fvRecords;
    few.front()[1] = 0.0;
    ASSERT_TRUE(
        limited.fSearch.RunExactSize(2, limited.fTrained.fRecords, 1, true, limited.fSelected)
            .IsOK());
    EXPECT_EQ(limited.fTrained.fRecords.fNumDelivered, 1);
}

TEST(NBSubsetSearchTest, ScoresAreDividedByTheWeightOfTheTablesNotOfTheRecordsRead) {
    // Half of the records are read: the mean of Q is taken over all of N.
    const SearchData data = Noisy(0, 1, 40);
    Trial run(data);
    ASSERT_TRUE(run.fSearch.RunExactSize(1, run.fTrained.fRecords, 20, true, run.fSelected).IsOK());
    run.fSearch.GetCriteria(run.fCriteria);
    const SearchOracle::Model oracle = data.Oracle();
    long double expected = 0.0L;
    for (std::size_t i = 0; i < data.fRows.size(); ++i) {
        const SearchOracle::Row& row = data.fRows[i];
        expected += oracle.LogJoint(row, {0}, static_cast<std::size_t>(row.fTarget));
        if (i < 20) expected -= oracle.LogMarginal(row, {0});
    }
    EXPECT_NEAR(run.fCriteria[0], static_cast<double>(expected / 40.0L), 1e-12);
}

TEST(NBSubsetSearchTest, AProductThatUnderflowsWinsWithAnInfiniteScore) {
    SearchData data;
    data.fbWeighted = true;
    data.fPredictors.assign(15, {2, 1});
    data.fPredictors[13].fRole = 2;
    data.fPredictors[14].fRole = 2;
    data.fRows = {{0, 5e11, std::vector<std::int32_t>(15, 0)},
                  {1, 5e11, std::vector<std::int32_t>(15, 0)}};
    Trial run(data);
    // A record of categories that the tables have not seen: 1e-24 each, 1e-312 for the forced. Its
    // second candidate is missing, the first one takes the product to 0.
    std::vector<double> values(17, 1.0);
    values[16] = -1.0;
    run.fTrained.fRecords.fvRecords.emplace_back(values);
    ASSERT_TRUE(run.PseudoBIC(15).IsOK());
    EXPECT_EQ(run.Chain()[13], 13);
    EXPECT_EQ(run.fCriteria[13], std::numeric_limits<double>::infinity());
    EXPECT_EQ(run.fBest.front(), (NBSubset{14, -std::numeric_limits<double>::infinity()}));
}

TEST(NBSubsetSearchTest, EachStepDrawsItsOwnRecordsOverAllTables) {
    CountedSource source;
    Trial run(Noisy(2, 3));
    run.fTrained.fSettings.fRandomKind = NaiveBayesSettings::kUserProvided;
    run.fTrained.fSettings.fpUserRandom = &source;
    run.fTrained.fSettings.fNumSimulated = 40;
    ASSERT_TRUE(run.Exact(4, false).IsOK());
    EXPECT_EQ(source.fNumDrawn, 2 * 40 * (1 + 5));
}

TEST(NBSubsetSearchTest, AUserSourceCountsOnlyForItsKind) {
    for (const std::int32_t kind :
         {NaiveBayesSettings::kMersenneTwister, NaiveBayesSettings::kOlderPortable}) {
        CountedSource source;
        Trial run(Noisy(0, 3));
        run.fTrained.fSettings.fRandomKind = kind;
        run.fTrained.fSettings.fpUserRandom = &source;
        ASSERT_TRUE(run.Exact(2, false).IsOK());
        EXPECT_EQ(source.fNumDrawn, 0) << kind;
    }
}

TEST(NBSubsetSearchTest, TheSameSeedGivesTheSameChainAndScores) {
    for (const std::int32_t kind :
         {NaiveBayesSettings::kMersenneTwister, NaiveBayesSettings::kOlderPortable}) {
        Trial first(Noisy(1, 5));
        Trial second(Noisy(1, 5));
        Trial other(Noisy(1, 5));
        for (Trial* run : {&first, &second, &other}) run->fTrained.fSettings.fRandomKind = kind;
        other.fTrained.fSettings.fSeed = 1;
        for (Trial* run : {&first, &second, &other}) ASSERT_TRUE(run->Exact(6, false).IsOK());
        EXPECT_EQ(first.fSelected, second.fSelected) << kind;
        EXPECT_EQ(first.fCriteria, second.fCriteria) << kind;
        EXPECT_NE(first.fCriteria, other.fCriteria) << kind;
    }
}

TEST(NBSubsetSearchTest, AnInterruptAnywhereChoosesNothing) {
    const auto runs = std::vector<std::function<NBStatus(Trial&, bool)>>{
        [](Trial& run, bool fits) { return run.Exact(4, fits); },
        [](Trial& run, bool fits) { return run.PseudoBIC(4, fits); },
        [](Trial& run, bool fits) { return run.TestData(4, run.fTrained.fData.fRows, -1, fits); }};
    for (std::size_t kind = 0; kind < runs.size(); ++kind) {
        for (const bool fits : {true, false}) {
            std::int32_t polls = 0;
            for (;; polls += 1 + polls / 4) {
                Trial run(Noisy(1, 3, 12));
                run.fTrained.fSettings.fNumSimulated = 10;
                StopAfter stop(polls);
                run.fTrained.fInterrupt.fpStopProcessor = &stop;
                const NBStatus status = runs[kind](run, fits);
                if (status.IsOK()) break;
                EXPECT_EQ(status, NBStatus(NBCode::kInterrupted, false));
                EXPECT_EQ(run.fTrained.Roles(), (Sizes{1, 2, 2, 2}));
                EXPECT_TRUE(run.fSelected.empty());
                EXPECT_TRUE(run.fBest.empty());
                std::ostringstream report;
                EXPECT_TRUE(run.fSearch.WriteSelectionXML(report, false, nullptr).IsOK());
                EXPECT_EQ(report.str(), "");
            }
            EXPECT_GT(polls, 20) << kind << fits;
        }
    }
}

class NotingListener : public ProgressListener {
 public:
    void OnProgress(const ProgressReport& report) override {
        fvReports.push_back(
            {report.GetInteger("selectedPredictors"), report.GetInteger("candidatePredictors"),
             report.GetInteger("maxPredictors"), report.GetInteger("trainRecords")});
        EXPECT_GE(report.GetDouble("elapsedTime"), 0.0);
    }
    std::vector<Sizes> fvReports;
};

TEST(NBSubsetSearchTest, AListenerHearsOfEachStep) {
    NotingListener listener;
    Trial run(Noisy(1, 4));
    run.fTrained.fSettings.fpListener = &listener;
    ASSERT_TRUE(run.Exact(4).IsOK());
    EXPECT_EQ(listener.fvReports,
              (std::vector<Sizes>{{2, 3, 4, 60}, {3, 2, 4, 60}, {4, 1, 4, 60}}));
}

TEST(NBSubsetSearchTest, AListenerHearsOfEachSecondStepWithASkipOfOne) {
    NotingListener listener;
    Trial run(Noisy(1, 4));
    run.fTrained.fSettings.fpListener = &listener;
    run.fTrained.fSettings.fNumSkip = 1;
    ASSERT_TRUE(run.Exact(5).IsOK());
    EXPECT_EQ(listener.fvReports, (std::vector<Sizes>{{3, 2, 5, 60}, {5, 0, 5, 60}}));
}

TEST(NBSubsetSearchTest, AnEmptyTestSourceIsRefused) {
    Trial run(Noisy(1, 3));
    EXPECT_EQ(run.TestData(3, {}), NBStatus(NBCode::kTestEmpty, false));
    EXPECT_EQ(run.fTrained.Roles(), (Sizes{1, 2, 2, 2}));
}

TEST(NBSubsetSearchTest, TestRecordsOfWhichNoneCanBeUsedAreRefused) {
    Trial run(Noisy(1, 3));
    EXPECT_EQ(run.TestData(3, {{-1, 1.0, {0, 0, 0, 0}}, {0, 1.0, {-1, -1, -1, -1}}}),
              NBStatus(NBCode::kTestEmpty, false));
}

TEST(NBSubsetSearchTest, ATestSourceThatWasReadIsRewound) {
    Trial run(Noisy(1, 3));
    const NBDataPreparator preparator(run.fTrained.fList, true, 60, run.fTrained.fInterrupt);
    CountedRecords test = run.fTrained.Originals(run.fTrained.fData.fRows);
    while (test.HasMore()) test.Next();
    EXPECT_TRUE(run.fSearch
                    .RunTestData(3, run.fTrained.fRecords, 60, true, test, -1, run.fSelected,
                                 run.fBest, 5, preparator)
                    .IsOK());
    EXPECT_EQ(run.fBest.size(), 3U);
}

TEST(NBSubsetSearchTest, OnlyAsManyTestRecordsAreUsedAsTold) {
    Trial all(Noisy(1, 3));
    const std::vector<SearchOracle::Row> rows = all.fTrained.fData.fRows;
    ASSERT_TRUE(all.TestData(4, rows, 10).IsOK());
    Trial few(Noisy(1, 3));
    ASSERT_TRUE(few.TestData(4, {rows.begin(), rows.begin() + 10}).IsOK());
    EXPECT_EQ(all.fBest, few.fBest);
}

TEST(NBSubsetSearchTest, ATestRecordWithAnUnknownCodeStillAddsATermToEveryLaterSize) {
    Trial run(Noisy(1, 3));
    SearchOracle::Row row = run.fTrained.fData.fRows.front();
    row.fCodes[0] = -1;
    ASSERT_TRUE(run.TestData(4, {row}).IsOK());
    const SearchOracle::Model oracle = run.fTrained.fData.Oracle();
    Sizes chain = run.Chain();
    for (std::int32_t size = 4; size >= 1; --size) {
        EXPECT_NEAR(run.BestOf(size), -oracle.ConditionalLogLik({row}, chain), 1e-12) << size;
        chain.pop_back();
    }
}

TEST(NBSubsetSearchTest, TestRecordsOfDroppedPredictorsAreReadAtTheirNewPlaces) {
    // The first predictor has one category only and is dropped after the training pass: it leaves
    // the preparator, while the training records keep its column.
    SearchData data = Noisy(0, 4);
    for (SearchOracle::Row& row : data.fRows) row.fCodes[0] = 0;
    Trial run(data);
    NBDataPreparator preparator(run.fTrained.fList, true, 60, run.fTrained.fInterrupt);
    run.fTrained.fList.SetRole(run.fTrained.fvListIndices[0], 5);
    preparator.RemoveInput(0);
    run.fTrained.fvInputs.erase(run.fTrained.fvInputs.begin());
    for (NBayesInput& input : run.fTrained.fvInputs) input.DecrementAdjustedIndex();
    NBSubsetSearch search = run.fTrained.MakeSearch();
    CountedRecords test = run.fTrained.Originals(data.fRows);
    ASSERT_TRUE(search
                    .RunTestData(3, run.fTrained.fRecords, 60, true, test, -1, run.fSelected,
                                 run.fBest, 5, preparator)
                    .IsOK());
    const SearchOracle::Model oracle = data.Oracle();
    Sizes chain = run.Chain();
    for (std::int32_t size = 3; size >= 1; --size) {
        EXPECT_NEAR(run.BestOf(size), -oracle.ConditionalLogLik(data.fRows, chain), 1e-12) << size;
        chain.pop_back();
    }
}

TEST(NBSubsetSearchTest, ATestRecordWithoutTargetThatPreparationLetPassIsLeftOut) {
    Trial run(Noisy(1, 3));
    Trial plain(Noisy(1, 3));
    std::vector<SearchOracle::Row> rows = run.fTrained.fData.fRows;
    ASSERT_TRUE(plain.TestData(4, rows).IsOK());
    // An unknown target, and after it an input that is out of range, which is only a warning.
    rows.push_back({9, 1.0, {0, 0, 0, 77}});
    ASSERT_TRUE(run.TestData(4, rows).IsOK());
    EXPECT_EQ(run.fBest, plain.fBest);
}

TEST(NBSubsetSearchTest, TestRecordsThatPreparationLetPassAndAllLackATargetAreRefused) {
    Trial run(Noisy(1, 3));
    EXPECT_EQ(run.TestData(4, {{9, 1.0, {0, 0, 0, 77}}, {9, 1.0, {0, 0, 77, 0}}}),
              NBStatus(NBCode::kTestEmpty, false));
    EXPECT_EQ(run.fTrained.Roles(), (Sizes{1, 2, 2, 2}));
}

TEST(NBSubsetSearchTest, CriteriaThatAreNoNumbersRankBySize) {
    // Probabilities of empty cells underflow to 0 and their logs meet counts of 0.
    SearchData data;
    data.fbWeighted = true;
    data.fPredictors.assign(4, {2, 2});
    data.fRows = {{0, 1e170, {0, 0, 0, 0}}, {1, 1e170, {1, 1, 1, 1}}};
    Trial run(data);
    ASSERT_TRUE(run.PseudoBIC(4).IsOK());
    EXPECT_EQ(run.Chain(), (Sizes{0, 1, 2, 3}));
    EXPECT_EQ(SizesOf(run.fBest), (Sizes{1, 2, 3, 4}));
    for (const NBSubset& subset : run.fBest) EXPECT_TRUE(std::isnan(subset.fCriterion));
}

}  // namespace
