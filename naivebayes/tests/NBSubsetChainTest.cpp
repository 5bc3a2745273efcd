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

/// What the plain form's rounding may hide: criteria closer than that are equal.
constexpr double kPlainRounding = 1e-12;

/// The whole search as it is defined: record by record, a logarithm a candidate. Chains hold
/// predictors.
class PlainSearch {
 public:
    PlainSearch(TrainedTables& trained, bool fits)
        : fTrained(trained), fScoring(trained.fvInputs, trained.fOutput) {
        for (const double weight : trained.fOutput.GetWeightedCounts()) fWeight += weight;
        const double share = 1.0 / fWeight;
        double sum = 0.0;
        for (std::int32_t k = 0; k < trained.fOutput.GetNumCategories(); ++k) {
            sum += trained.fOutput.GetWeightedCount(k) * std::log(trained.fOutput.GetPi(k));
        }
        fJoint = share * sum;
        for (const NBayesInput& input : trained.fvInputs) {
            sum = 0.0;
            for (std::size_t m = 0; m < input.GetCounts().size(); ++m) {
                for (std::size_t k = 0; k < input.GetCounts()[m].size(); ++k) {
                    sum += input.GetCounts()[m][k] * std::log(input.GetProbabilities()[m][k]);
                }
            }
            fOwnPart.push_back(share * sum);
        }
        Search(fits);
    }

    Sizes fChain;
    std::vector<double> fCriteria;  // A(s) of every size from the forced one on, 0 below
    std::vector<NBSubset> fBest;    // all sizes by pseudo-BIC

 private:
    void Search(bool fits) {
        Sizes selected;
        Sizes candidates;
        for (std::int32_t j = 0; j < NumTables(); ++j) {
            const bool forced = fTrained.fData.fPredictors[At(j)].fRole == 1;
            (forced ? selected : candidates).push_back(j);
        }
        fChain = selected;
        for (const std::int32_t table : selected) fJoint += fOwnPart[At(table)];
        const auto numForced = static_cast<std::int32_t>(selected.size());
        fCriteria.assign(At(NumTables()), 0.0);
        if (numForced > 0) fCriteria[At(numForced - 1)] = fJoint + Score(selected);
        const NaiveBayesSettings& settings = fTrained.fSettings;
        MCRandom random(settings.fSeed, true, true, nullptr);
        NBRecordSimulator simulator(fTrained.fvInputs, fTrained.fOutput, random);
        while (!candidates.empty()) {
            std::vector<double> scores(candidates.size(), 0.0);
            if (fits) {
                for (const MCCommon::Record& record : fTrained.fRecords.fvRecords) {
                    const double weight = fTrained.fData.fbWeighted ? record[1] : 1.0;
                    AddScores(record, fTrained.fData.fbWeighted ? 2 : 1, weight * (-1.0 / fWeight),
                              selected, candidates, scores);
                }
            } else {
                for (std::int32_t i = 0; i < settings.fNumSimulated; ++i) {
                    AddScores(simulator.Draw(), 1, -1.0 / settings.fNumSimulated, selected,
                              candidates, scores);
                }
            }
            for (std::size_t c = 0; c < candidates.size(); ++c) {
                scores[c] += fJoint + fOwnPart[At(candidates[c])];
            }
            // The first of equal ones.
            const double highest = *std::max_element(scores.begin(), scores.end());
            const auto best = static_cast<std::size_t>(
                std::find_if(scores.begin(), scores.end(),
                             [highest](double score) {
                                 return score >=
                                        highest - kPlainRounding * std::max(1.0, std::abs(highest));
                             }) -
                scores.begin());
            const std::int32_t winner = candidates[best];
            fChain.push_back(winner);
            candidates.erase(candidates.begin() + static_cast<std::ptrdiff_t>(best));
            selected.insert(std::upper_bound(selected.begin(), selected.end(), winner), winner);
            fJoint += fOwnPart[At(winner)];
            fCriteria[fChain.size() - 1] = fits ? scores[best] : fJoint + Score(fChain);
        }
        for (auto size = std::max(numForced, 1); size <= NumTables(); ++size) {
            fBest.push_back(
                {size, size * 0.5 * std::log(fWeight) / fWeight - fCriteria[At(size - 1)]});
        }
        // The best first, of equal ones the smallest.
        for (auto first = fBest.begin(); first != fBest.end(); ++first) {
            const auto lowest = std::min_element(
                first, fBest.end(),
                [](const NBSubset& a, const NBSubset& b) { return a.fCriterion < b.fCriterion; });
            const double most =
                lowest->fCriterion + kPlainRounding * std::max(1.0, std::abs(lowest->fCriterion));
            const auto best = std::find_if(first, fBest.end(), [most](const NBSubset& subset) {
                return subset.fCriterion <= most;
            });
            std::rotate(first, best, best + 1);
        }
    }
    /// Adds the parts of one record whose codes begin at first.
    void AddScores(const MCCommon::Record& record, std::int32_t first, double share,
                   const Sizes& selected, const Sizes& candidates, std::vector<double>& scores) {
        fScoring.StartRecord();
        for (const std::int32_t table : selected) fScoring.Multiply(table, record[first + table]);
        for (std::size_t c = 0; c < candidates.size(); ++c) {
            scores[c] += share * fScoring.LogSumWith(candidates[c], record[first + candidates[c]]);
        }
    }
    /// The same of a subset alone, over the training records.
    double Score(const Sizes& selected) {
        double score = 0.0;
        const std::int32_t first = fTrained.fData.fbWeighted ? 2 : 1;
        for (const MCCommon::Record& record : fTrained.fRecords.fvRecords) {
            fScoring.StartRecord();
            for (const std::int32_t table : selected) {
                fScoring.Multiply(table, record[first + table]);
            }
            const double weight = fTrained.fData.fbWeighted ? record[1] : 1.0;
            score += weight * (-1.0 / fWeight) * fScoring.LogSum();
        }
        return score;
    }
    std::int32_t NumTables() const { return static_cast<std::int32_t>(fTrained.fvInputs.size()); }
    static std::size_t At(std::int32_t i) { return static_cast<std::size_t>(i); }

    TrainedTables& fTrained;
    PlainScoring fScoring;
    double fWeight = 0.0;
    double fJoint = 0.0;
    std::vector<double> fOwnPart;
};

/// Holds whole searches to those of the plain form.
void ExpectThePlainChain(const SearchData& data, std::int32_t numSimulated) {
    for (const bool fits : {true, false}) {
        SCOPED_TRACE(fits ? "on the records" : "on drawn records");
        TrainedTables trained(data);
        trained.fSettings.fNumSimulated = numSimulated;
        const PlainSearch plain(trained, fits);
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
        EXPECT_EQ(trained.Predictors(selected), plain.fChain);
        std::vector<double> criteria;
        search.GetCriteria(criteria);
        ASSERT_EQ(criteria.size(), plain.fCriteria.size());
        for (std::size_t i = 0; i < criteria.size(); ++i) {
            EXPECT_NEAR(criteria[i], plain.fCriteria[i],
                        1e-12 * std::max(1.0, std::abs(plain.fCriteria[i])))
                << i;
        }
        ASSERT_EQ(best.size(), plain.fBest.size());
        for (std::size_t i = 0; i < best.size(); ++i) {
            EXPECT_EQ(best[i].fSize, plain.fBest[i].fSize) << i;
            EXPECT_NEAR(best[i].fCriterion, plain.fBest[i].fCriterion,
                        1e-12 * std::max(1.0, std::abs(plain.fBest[i].fCriterion)))
                << i;
        }
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

TEST_P(NBSubsetChain, OfManyRecordsIsThePlainOne) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 6; ++trial) {
        const auto numRows = static_cast<std::int32_t>(1000 + random() % 3000);
        ExpectThePlainChain(RandomSearchData(random, numRows, 10, GetParam()), 300);
    }
}

// With few records of few categories many candidates are equal but for the order of their records,
// which must not tell them apart.
TEST_P(NBSubsetChain, OfFewRecordsWithManyEqualCandidatesIsThePlainOne) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 150; ++trial) {
        const auto numRows = static_cast<std::int32_t>(4 + random() % 40);
        ExpectThePlainChain(RandomSearchData(random, numRows, 8, GetParam(), 3), 20);
    }
}

// Columns that hold the same pairs of code and target in other orders.
TEST(NBSubsetChain, OfShuffledColumnsIsThePlainOne) {
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
        ExpectThePlainChain(data, 50);
    }
}

// More records than are scored at a time where they are not kept, drawn ones too.
TEST(NBSubsetChain, OfRecordsInSeveralLotsIsThePlainOne) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    ExpectThePlainChain(RandomSearchData(random, 18000, 5, RandomWeights::kFew, 8), 17000);
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
