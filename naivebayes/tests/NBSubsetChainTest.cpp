#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>

#include "naivebayes/MCRandom.h"
#include "naivebayes/NBRecordSimulator.h"
#include "naivebayes/tests/PlainScoring.h"
#include "naivebayes/tests/RandomSearchData.h"
#include "tests/support/RandomSeed.h"

namespace {

using Sizes = std::vector<std::int32_t>;

/// Criteria as the plain form has them: record by record, a logarithm a candidate.
double PlainMean(const TrainedTables& trained, const std::vector<MCCommon::Record>& records,
                 std::int32_t first, bool isWeighted, const Sizes& subset, double weight) {
    PlainScoring scoring(trained.fvInputs, trained.fOutput);
    double sum = 0.0;
    for (const MCCommon::Record& record : records) {
        scoring.StartRecord();
        for (const std::int32_t table : subset) scoring.Multiply(table, record[first + table]);
        sum += (isWeighted ? record[1] : 1.0) / weight * scoring.LogSum();
    }
    return sum;
}

/// A search's results, held to those of the definition. What long doubles leave of an equality and
/// what the search resolves at best stay open.
class Definition {
 public:
    Definition(const TrainedTables& trained, bool fits)
        : fTrained(trained),
          fbFits(fits),
          fRows(trained.fData.fRows),
          fOracle(trained.fData.Oracle()),
          fRandom(trained.fSettings.fSeed, true, true, nullptr),
          fSimulator(trained.fvInputs, trained.fOutput, fRandom) {
        for (const SearchOracle::Row& row : fRows) fWeight += row.fWeight;
    }

    /// Each step takes the candidate with the highest A, the first of equal ones.
    void ExpectChain(const Sizes& chain, const std::vector<double>& criteria) {
        Sizes candidates;
        Sizes subset;
        for (std::int32_t j = 0; j < NumTables(); ++j) {
            const bool forced = fTrained.fData.fPredictors[static_cast<std::size_t>(j)].fRole == 1;
            (forced ? subset : candidates).push_back(j);
        }
        ASSERT_TRUE(std::equal(subset.begin(), subset.end(), chain.begin()));
        ASSERT_EQ(chain.size(), static_cast<std::size_t>(NumTables()));
        fNumForced = static_cast<std::int32_t>(subset.size());
        while (!candidates.empty()) {
            const std::int32_t winner = chain[subset.size()];
            ExpectStep(subset, candidates, winner);
            candidates.erase(std::find(candidates.begin(), candidates.end(), winner));
            subset.push_back(winner);
        }
        for (auto size = static_cast<std::size_t>(FirstSize()); size <= chain.size(); ++size) {
            const Sizes prefix(chain.begin(), chain.begin() + static_cast<std::ptrdiff_t>(size));
            const double plain = PlainLogLik(prefix);
            EXPECT_NEAR(criteria[size - 1], plain, 1e-12 * std::max(1.0, std::abs(plain))) << size;
        }
    }
    /// The sizes by pseudo-BIC, the smallest first of equal ones.
    void ExpectRanking(const Sizes& chain, const std::vector<NBSubset>& best) const {
        ASSERT_EQ(static_cast<std::int32_t>(best.size()), NumTables() - FirstSize() + 1);
        std::vector<long double> expected;
        for (const NBSubset& subset : best) {
            const Sizes prefix(chain.begin(), chain.begin() + subset.fSize);
            expected.push_back(subset.fSize * std::log(fWeight) / (2 * fWeight) +
                               fOracle.MeanLoss(fRows, prefix));
            const auto criterion = static_cast<double>(expected.back());
            EXPECT_NEAR(subset.fCriterion, criterion, 1e-15 * std::max(1.0, criterion));
        }
        for (std::size_t i = 1; i < best.size(); ++i) {
            EXPECT_LE(expected[i - 1], expected[i] + Open(expected[i])) << i;
            if (AreEqual(expected[i - 1], expected[i])) {
                EXPECT_LT(best[i - 1].fSize, best[i].fSize);
            }
        }
    }

 private:
    /// Nothing is told of criteria this near.
    static long double Open(long double criterion) {
        return 0x1p-60L + 1e-17L * std::abs(criterion);
    }
    static bool AreEqual(long double left, long double right) {
        return std::abs(left - right) <= 4e-18L * std::abs(left);
    }
    std::int32_t NumTables() const { return static_cast<std::int32_t>(fTrained.fvInputs.size()); }
    std::int32_t FirstSize() const { return std::max(fNumForced, 1); }

    void ExpectStep(const Sizes& subset, const Sizes& candidates, std::int32_t winner) {
        std::vector<SearchOracle::Row> drawn;
        if (!fbFits) {
            for (std::int32_t i = 0; i < fTrained.fSettings.fNumSimulated; ++i) {
                const MCCommon::Record& record = fSimulator.Draw();
                drawn.emplace_back();
                for (std::int32_t j = 0; j < NumTables(); ++j) {
                    drawn.back().fCodes.push_back(static_cast<std::int32_t>(record[j + 1]));
                }
            }
        }
        std::vector<long double> losses;
        for (const std::int32_t candidate : candidates) {
            Sizes tried = subset;
            tried.push_back(candidate);
            std::sort(tried.begin(), tried.end());
            losses.push_back(fbFits ? fOracle.MeanLoss(fRows, tried)
                                    : -fOracle.LongSimulatedLogLik(fRows, drawn, tried));
        }
        const auto at = static_cast<std::size_t>(
            std::find(candidates.begin(), candidates.end(), winner) - candidates.begin());
        ASSERT_LT(at, candidates.size());
        const long double lowest = *std::min_element(losses.begin(), losses.end());
        // On drawn records two means are taken from one another in doubles.
        EXPECT_LE(losses[at], lowest + (fbFits ? Open(lowest) : 1e-13L)) << subset.size();
        for (std::size_t c = 0; c < at; ++c) {
            if (!fbFits || lowest == 0.0L) continue;
            EXPECT_FALSE(AreEqual(losses[c], losses[at]))
                << candidates[c] << " comes before " << winner << " at " << subset.size();
        }
    }
    double PlainLogLik(const Sizes& subset) const {
        const bool isWeighted = fTrained.fData.fbWeighted;
        long double joint = 0.0L;
        for (const SearchOracle::Row& row : fRows) {
            joint +=
                row.fWeight * fOracle.LogJoint(row, subset, static_cast<std::size_t>(row.fTarget));
        }
        return static_cast<double>(joint / fWeight) -
               PlainMean(fTrained, fTrained.fRecords.fvRecords, isWeighted ? 2 : 1, isWeighted,
                         subset, static_cast<double>(fWeight));
    }

    const TrainedTables& fTrained;
    bool fbFits;
    const std::vector<SearchOracle::Row>& fRows;
    SearchOracle::Model fOracle;
    MCRandom fRandom;
    NBRecordSimulator fSimulator;
    long double fWeight = 0.0L;
    std::int32_t fNumForced = 0;
};

/// Holds whole searches to the definition.
void ExpectTheDefinedChain(const SearchData& data, std::int32_t numSimulated) {
    for (const bool fits : {true, false}) {
        SCOPED_TRACE(fits ? "on the records" : "on drawn records");
        TrainedTables trained(data);
        trained.fSettings.fNumSimulated = numSimulated;
        BackwardExecutor executor;
        NBSubsetSearch search(trained.fvInputs, trained.fOutput, trained.fList, trained.fSettings,
                              trained.fInterrupt, &executor);
        Sizes selected;
        std::vector<NBSubset> best;
        ASSERT_TRUE(search
                        .RunPseudoBIC(static_cast<std::int32_t>(data.fPredictors.size()),
                                      trained.fRecords, trained.NumRecords(), fits, selected, best,
                                      100)
                        .IsOK());
        std::vector<double> criteria;
        search.GetCriteria(criteria);
        Definition definition(trained, fits);
        const Sizes chain = trained.Predictors(selected);
        definition.ExpectChain(chain, criteria);
        definition.ExpectRanking(chain, best);
    }
}

class NBSubsetChain : public testing::TestWithParam<RandomWeights> {};

INSTANTIATE_TEST_SUITE_P(Weights, NBSubsetChain,
                         testing::Values(RandomWeights::kNone, RandomWeights::kFew,
                                         RandomWeights::kMany),
                         [](const auto& test) {
                             return std::string(test.param == RandomWeights::kNone  ? "None"
                                                : test.param == RandomWeights::kFew ? "Few"
                                                                                    : "Many");
                         });

TEST_P(NBSubsetChain, OfManyRecordsIsTheDefinedOne) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 6; ++trial) {
        const auto numRows = static_cast<std::int32_t>(1000 + random() % 3000);
        ExpectTheDefinedChain(RandomSearchData(random, numRows, 10, GetParam()), 300);
    }
}

// With few records of few categories many candidates are equal but for the order of their records,
// which must not tell them apart.
TEST_P(NBSubsetChain, OfFewRecordsWithManyEqualCandidatesIsTheDefinedOne) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 150; ++trial) {
        const auto numRows = static_cast<std::int32_t>(4 + random() % 40);
        ExpectTheDefinedChain(RandomSearchData(random, numRows, 8, GetParam(), 3), 20);
    }
}

// Columns that hold the same pairs of code and target in other orders.
TEST(NBSubsetChain, OfShuffledColumnsIsTheDefinedOne) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 20; ++trial) {
        SearchData data;
        data.fNumTargets = 3;
        data.fPredictors.assign(6, {4, 2});
        const int numRows = trial < 15 ? 300 : 2500;
        std::vector<std::vector<std::int32_t>> codes(3);
        for (int i = 0; i < numRows; ++i) {
            const auto target = static_cast<std::int32_t>(random() % 3);
            codes[static_cast<std::size_t>(target)].push_back(
                static_cast<std::int32_t>(random() % 2 == 0 ? random() % 4 : target));
            data.fRows.push_back({target, 1.0, {}});
        }
        for (int j = 0; j < 6; ++j) {
            for (auto& ofTarget : codes) std::shuffle(ofTarget.begin(), ofTarget.end(), random);
            std::vector<std::size_t> next(3, 0);
            for (SearchOracle::Row& row : data.fRows) {
                const auto target = static_cast<std::size_t>(row.fTarget);
                row.fCodes.push_back(codes[target][next[target]++]);
            }
        }
        ExpectTheDefinedChain(data, 50);
    }
}

// More records than are scored at a time where they are not kept, drawn ones too.
TEST(NBSubsetChain, OfRecordsInSeveralLotsIsTheDefinedOne) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    ExpectTheDefinedChain(RandomSearchData(random, 18000, 5, RandomWeights::kFew, 8), 17000);
}

/// A search over records that a preparator has stored.
struct StoredSearch {
    Sizes fSelected;
    std::vector<double> fCriteria;
    std::vector<NBSubset> fBest;
    bool operator==(const StoredSearch&) const = default;
};

StoredSearch SearchStored(const SearchData& data, bool inBlocks, bool inMemory, bool fits) {
    TrainedTables trained(data);
    std::vector<std::int32_t> columns{3};  // of the variable list
    for (std::size_t j = 0; j < data.fPredictors.size(); ++j) {
        columns.push_back(data.fPredictors[j].fNumCategories);
        if (j == 0) columns.push_back(data.fNumTargets);
    }
    if (data.fbWeighted) columns.push_back(-1);
    CountedRecords single = trained.Originals(data.fRows);
    BlockRecords blocks(single.fvRecords, columns, 777);
    NBDataPreparator preparator(trained.fList, true, trained.NumRecords(), trained.fInterrupt);
    std::unique_ptr<MCCommon::MultiPassRecordIter> store;
    std::int32_t count = 0;
    EXPECT_TRUE(
        preparator
            .PrepareRecords(inBlocks ? static_cast<MCCommon::RecordIterator&>(blocks) : single,
                            trained.NumRecords(), inMemory, store, count, testing::TempDir())
            .IsOK());
    StoredSearch result;
    NBSubsetSearch search = trained.MakeSearch();
    EXPECT_TRUE(search
                    .RunPseudoBIC(static_cast<std::int32_t>(data.fPredictors.size()), *store, count,
                                  fits, result.fSelected, result.fBest, 100)
                    .IsOK());
    search.GetCriteria(result.fCriteria);
    return result;
}

TEST_P(NBSubsetChain, IsTheSameWhereverTheRecordsAreKept) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 4; ++trial) {
        SearchData data = RandomSearchData(random, 3000, 8, GetParam());
        // The preparator rounds weights, and leaves out records without a weight or any code.
        for (SearchOracle::Row& row : data.fRows) {
            row.fWeight = std::ceil(row.fWeight);
            if (row.fCodes[0] < 0) row.fCodes[0] = 0;
        }
        for (const bool fits : {true, false}) {
            const StoredSearch expected = SearchStored(data, false, true, fits);
            for (const bool inBlocks : {true, false}) {
                EXPECT_EQ(SearchStored(data, inBlocks, true, fits), expected) << inBlocks << fits;
                EXPECT_EQ(SearchStored(data, inBlocks, false, fits), expected) << inBlocks << fits;
            }
        }
    }
}

}  // namespace
