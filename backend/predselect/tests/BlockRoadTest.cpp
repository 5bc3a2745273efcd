// Whole commands read their cases in blocks. An engine that is not given any reads record by record
// and polls its stop processor as often, so this program has a stop processor that counts.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "backend/predselect/tests/RunFixture.h"
#include "embedded/files/Interrupt.h"
#include "host/Progress.h"

namespace {

int gPolls = 0;

}  // namespace

MCStopProcessor::MCStopProcessor(double limitSeconds)
    : fLimitSeconds(limitSeconds), fStartNanoseconds(0) {}
MCStopProcessor::~MCStopProcessor() = default;
bool MCStopProcessor::IsCancelled() {
    ++gPolls;
    return fLimitSeconds < 0.0 || fStartNanoseconds != 0;
}
void embedded::RequestInterrupt() noexcept {}
void embedded::ClearStop() noexcept {}
embedded::StopCause embedded::LastStopCause() noexcept { return StopCause::None; }

namespace {

constexpr int kCases = 4000;

/// y with predictors of both kinds, and a weight. A tenth of the cases is for testing: those that
/// judge a search are read one by one.
embedded::DataSet Data(bool weighted) {
    std::mt19937 random(2026);
    std::vector<double> y;
    std::vector<double> w;
    std::vector<double> part;
    std::vector<std::vector<double>> factors(4);
    std::vector<std::vector<double>> covariates(2);
    for (int i = 0; i < kCases; ++i) {
        y.push_back(static_cast<double>(random() % 3));
        w.push_back(static_cast<double>(1 + random() % 3));
        part.push_back(random() % 10 == 0 ? 0.0 : 1.0);
        for (std::vector<double>& factor : factors) {
            factor.push_back(random() % 3 == 0 ? y.back() : static_cast<double>(random() % 5));
        }
        for (std::vector<double>& covariate : covariates) {
            covariate.push_back(y.back() + 0.01 * static_cast<double>(random() % 300));
        }
    }
    embedded::DataSetBuilder builder;
    builder.Numbers("y", y).Level(kLevelNominal);
    for (const char name : {'a', 'b', 'c', 'd'}) {
        builder.Numbers(std::string(1, name), factors[static_cast<std::size_t>(name - 'a')])
            .Level(kLevelNominal);
    }
    for (const char name : {'u', 'v'}) {
        builder.Numbers(std::string(1, name), covariates[static_cast<std::size_t>(name - 'u')])
            .Level(kLevelScale);
    }
    builder.Numbers("part", part).Level(kLevelScale);
    if (weighted) builder.Numbers("w", w).Level(kLevelScale).Weight();
    return builder.Build();
}

class BlockRoad : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(
    Commands, BlockRoad,
    testing::Values("SELECTPRED y BY a b c d WITH u v;", "SELECTPRED u BY a b WITH v;",
                    "NAIVEBAYES y BY a b c d WITH u v;",
                    "NAIVEBAYES y BY a b c d WITH u v /TRAININGSAMPLE VARIABLE=part;",
                    "NAIVEBAYES y BY a b c d WITH u v /SUBSET NOSELECTION /SAVE PREDVAL PREDPROB;",
                    "NAIVEBAYES y BY a b c d WITH u v /SUBSET EXACTSIZE=3;"));

TEST_P(BlockRoad, IsTakenByTheWholeCommand) {
    for (const bool weighted : {false, true}) {
        gPolls = 0;
        const CommandRun run(GetParam(), Data(weighted));
        ASSERT_EQ(run.Status(), "ok") << testing::PrintToString(run.Messages()) << weighted;
        EXPECT_GT(gPolls, 0) << "the stop processor is this program's";
        EXPECT_LT(gPolls, kCases / 2) << weighted;
    }
}

}  // namespace
