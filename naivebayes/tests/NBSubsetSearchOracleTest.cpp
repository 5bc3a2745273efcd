#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "naivebayes/NBSubsetSearch.h"
#include "naivebayes/tests/SearchFixture.h"

namespace {

using Sizes = std::vector<std::int32_t>;

/// Random tables of random shape; codes depend on the target, one in ten is missing.
class NBSubsetSearchOracleTest : public testing::TestWithParam<std::uint32_t> {
 protected:
    NBSubsetSearchOracleTest() : fGenerator(GetParam()) {
        fData.fNumTargets = 2 + Below(3);
        fData.fbWeighted = Below(2) == 0;
        const std::int32_t numPredictors = 1 + Below(6);
        const std::int32_t forced = Below(3);
        for (std::int32_t j = 0; j < numPredictors; ++j) {
            fData.fPredictors.push_back({2 + Below(4), Below(4) < forced ? 1 : 2});
        }
        fData.fRows = Rows(30 + Below(60));
        fNumForced = static_cast<std::int32_t>(
            std::count_if(fData.fPredictors.begin(), fData.fPredictors.end(),
                          [](const SearchData::Predictor& p) { return p.fRole == 1; }));
    }

    std::int32_t Below(std::int32_t limit) {
        return static_cast<std::int32_t>(fGenerator() % static_cast<std::uint32_t>(limit));
    }
    std::vector<SearchOracle::Row> Rows(std::int32_t count) {
        std::vector<SearchOracle::Row> rows;
        for (std::int32_t i = 0; i < count; ++i) {
            SearchOracle::Row row;
            row.fTarget = Below(fData.fNumTargets);
            row.fWeight = fData.fbWeighted ? 1.0 + Below(4) : 1.0;
            for (const SearchData::Predictor& predictor : fData.fPredictors) {
                const std::int32_t code = Below(3) == 0 ? row.fTarget : Below(40);
                row.fCodes.push_back(Below(10) == 0 ? -1 : code % predictor.fNumCategories);
            }
            // The preparator refuses a record without any valid code.
            if (row.fCodes[0] < 0) row.fCodes[0] = 0;
            rows.push_back(row);
        }
        return rows;
    }
    Sizes Candidates(const Sizes& chain, std::size_t length) const {
        Sizes candidates;
        for (std::int32_t j = 0; j < static_cast<std::int32_t>(fData.fPredictors.size()); ++j) {
            const auto end = chain.begin() + static_cast<std::ptrdiff_t>(length);
            if (std::find(chain.begin(), end, j) == end) candidates.push_back(j);
        }
        return candidates;
    }
    /// Holds each step of the chain to the best by score, and its criterion to that score.
    template <class Score>
    void ExpectGreedy(const Sizes& chain, const std::vector<double>& criteria, Score score) const {
        for (auto size = static_cast<std::size_t>(fNumForced); size < chain.size(); ++size) {
            double best = -1e300;
            for (const std::int32_t candidate : Candidates(chain, size)) {
                Sizes subset(chain.begin(), chain.begin() + static_cast<std::ptrdiff_t>(size));
                subset.push_back(candidate);
                const double value = score(subset, size);
                best = std::max(best, value);
                if (candidate == chain[size]) {
                    EXPECT_NEAR(criteria[size], value, 1e-12) << "size " << size + 1;
                }
            }
            EXPECT_NEAR(criteria[size], best, 1e-12) << "size " << size + 1;
        }
    }
    static Sizes Prefix(const Sizes& chain, std::int32_t size) {
        return Sizes(chain.begin(), chain.begin() + size);
    }
    std::int32_t NumPredictors() const {
        return static_cast<std::int32_t>(fData.fPredictors.size());
    }

    std::mt19937 fGenerator;
    SearchData fData;
    std::int32_t fNumForced = 0;
};

TEST_P(NBSubsetSearchOracleTest, ThePseudoBICIsThatOfItsDefinition) {
    for (const bool fits : {true, false}) {
        TrainedTables trained(fData);
        NBSubsetSearch search = trained.MakeSearch();
        Sizes selected;
        std::vector<NBSubset> best;
        ASSERT_TRUE(search
                        .RunPseudoBIC(NumPredictors(), trained.fRecords, trained.NumRecords(), fits,
                                      selected, best, 100)
                        .IsOK());
        const SearchOracle::Model oracle = fData.Oracle();
        const Sizes chain = trained.Predictors(selected);
        ASSERT_EQ(chain.size(), fData.fPredictors.size());
        const auto conditional = [&](const Sizes& subset, std::size_t) {
            return oracle.ConditionalLogLik(fData.fRows, subset);
        };
        std::vector<double> criteria;
        search.GetCriteria(criteria);
        if (fits) ExpectGreedy(chain, criteria, conditional);
        const std::int32_t first = std::max(fNumForced, 1);
        ASSERT_EQ(static_cast<std::int32_t>(best.size()), NumPredictors() - first + 1);
        for (const NBSubset& subset : best) {
            const Sizes prefix = Prefix(chain, subset.fSize);
            EXPECT_NEAR(subset.fCriterion, oracle.PseudoBIC(fData.fRows, prefix), 1e-12);
            EXPECT_NEAR(criteria[static_cast<std::size_t>(subset.fSize) - 1],
                        oracle.ConditionalLogLik(fData.fRows, prefix), 1e-12);
        }
    }
}

TEST_P(NBSubsetSearchOracleTest, DrawnRecordsDecideWhereTheRecordsDoNotFit) {
    TrainedTables trained(fData);
    trained.fSettings.fSeed = GetParam() + 99;
    trained.fSettings.fNumSimulated = 50;
    NBSubsetSearch search = trained.MakeSearch();
    Sizes selected;
    ASSERT_TRUE(
        search
            .RunExactSize(NumPredictors(), trained.fRecords, trained.NumRecords(), false, selected)
            .IsOK());
    const SearchOracle::Model oracle = fData.Oracle();
    std::mt19937 generator(trained.fSettings.fSeed);
    std::vector<std::vector<SearchOracle::Row>> drawn;  // a step each
    for (std::int32_t step = 0; step < NumPredictors() - fNumForced; ++step) {
        drawn.emplace_back();
        for (std::int32_t i = 0; i < 50; ++i) drawn.back().push_back(oracle.Draw(generator));
    }
    std::vector<double> criteria;
    search.GetCriteria(criteria);
    ExpectGreedy(trained.Predictors(selected), criteria,
                 [&](const Sizes& subset, std::size_t size) {
                     return oracle.SimulatedLogLik(
                         fData.fRows, drawn[size - static_cast<std::size_t>(fNumForced)], subset);
                 });
}

TEST_P(NBSubsetSearchOracleTest, TheTestCriterionIsTheMeanNegativeLogPosterior) {
    const std::vector<SearchOracle::Row> rows = Rows(25);
    TrainedTables trained(fData);
    NBSubsetSearch search = trained.MakeSearch();
    const NBDataPreparator preparator(trained.fList, true, trained.NumRecords(),
                                      trained.fInterrupt);
    CountedRecords test = trained.Originals(rows);
    Sizes selected;
    std::vector<NBSubset> best;
    ASSERT_TRUE(search
                    .RunTestData(NumPredictors(), trained.fRecords, trained.NumRecords(), true,
                                 test, -1, selected, best, 100, preparator)
                    .IsOK());
    const SearchOracle::Model oracle = fData.Oracle();
    const Sizes chain = trained.Predictors(selected);
    ASSERT_EQ(static_cast<std::int32_t>(best.size()),
              NumPredictors() - std::max(fNumForced, 1) + 1);
    for (const NBSubset& subset : best) {
        EXPECT_NEAR(subset.fCriterion, -oracle.ConditionalLogLik(rows, Prefix(chain, subset.fSize)),
                    1e-12);
    }
    EXPECT_TRUE(std::is_sorted(best.begin(), best.end(), [](const NBSubset& a, const NBSubset& b) {
        return a.fCriterion < b.fCriterion;
    }));
}

class ManyTestRecordsOracleTest : public NBSubsetSearchOracleTest {};

TEST_P(ManyTestRecordsOracleTest, TheTestCriterionIsTheMeanNegativeLogPosterior) {
    const std::vector<SearchOracle::Row> rows = Rows(17000);
    TrainedTables trained(fData);
    NBSubsetSearch search = trained.MakeSearch();
    const NBDataPreparator preparator(trained.fList, true, trained.NumRecords(),
                                      trained.fInterrupt);
    CountedRecords test = trained.Originals(rows);
    Sizes selected;
    std::vector<NBSubset> best;
    ASSERT_TRUE(search
                    .RunTestData(NumPredictors(), trained.fRecords, trained.NumRecords(), true,
                                 test, -1, selected, best, 100, preparator)
                    .IsOK());
    const Sizes chain = trained.Predictors(selected);
    for (const NBSubset& subset : best) {
        EXPECT_NEAR(subset.fCriterion,
                    -fData.Oracle().ConditionalLogLik(rows, Prefix(chain, subset.fSize)), 1e-12);
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, NBSubsetSearchOracleTest, testing::Range(1U, 61U),
                         [](const testing::TestParamInfo<std::uint32_t>& trial) {
                             return "Seed" + std::to_string(trial.param);
                         });

INSTANTIATE_TEST_SUITE_P(Seeds, ManyTestRecordsOracleTest, testing::Range(1U, 4U));

}  // namespace
