// Multiplying a column by a power of 2 is exact and changes no statistic that has no unit: values
// of any size a double can have give the bits that plain ones give.

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "featureselect/FSAlgorithm.h"
#include "featureselect/FSSettings.h"
#include "featureselect/tests/TableRecords.h"
#include "tests/support/CaseName.h"
#include "tests/support/RandomSeed.h"

namespace {

using testsupport::TableColumns;
using Random = std::mt19937_64;

constexpr std::size_t kRows = 60;

/// Multiples of 2^-40, so that a product with 2^-996 has all its bits.
double Draw(Random& random, double mean) {
    const double z = mean + std::normal_distribution<double>()(random);
    return std::ldexp(std::nearbyint(std::ldexp(z, 40)), -40);
}

/// The binary exponents of the factors of target and predictors.
using Exponents = std::vector<int>;

struct Kinds {
    const char* fName;
    std::vector<bool> fvPredictors;
    bool fbTargetCategorical;
};

void PrintTo(const Kinds& kinds, std::ostream* out) { *out << kinds.fName; }

class FSMagnitudes : public testing::TestWithParam<Kinds> {
 protected:
    void DrawTable(Random& random) {
        fvCategorical = GetParam().fvPredictors;
        fvCategorical.insert(fvCategorical.begin(), GetParam().fbTargetCategorical);
        fvValues.assign(fvCategorical.size(), std::vector<double>(kRows));
        for (std::size_t row = 0; row < kRows; ++row) {
            const double common = Draw(random, 0);
            for (std::size_t column = 0; column < fvCategorical.size(); ++column) {
                const double strength = 0.25 * static_cast<double>(column);
                double value = strength * common + Draw(random, 0);
                if (fvCategorical[column]) value = std::min(3.0, std::floor(std::fabs(value)));
                fvValues[column][row] = value;
            }
        }
        // One that hardly varies for its mean.
        for (double& value : fvValues.back()) {
            if (!fvCategorical.back()) value = std::ldexp(value, -11) + 1.0;
        }
    }

    TableColumns Scaled(const Exponents& exponents) const {
        TableColumns columns;
        for (std::size_t at = 0; at < fvValues.size(); ++at) {
            std::vector<double> values = fvValues[at];
            for (double& value : values) {
                if (!fvCategorical[at]) value = std::ldexp(value, exponents[at]);
            }
            columns.push_back({std::move(values), 1});
        }
        return columns;
    }

    /// All numbers, ranks and deletions of a run, as bits.
    std::vector<std::uint64_t> ResultsOf(const TableColumns& columns, double minStdDev,
                                         bool inBlocks) const {
        FSSettings settings(GetParam().fvPredictors, GetParam().fbTargetCategorical);
        settings.SetMinStdDev(minStdDev);
        settings.SetMinCoefVar(std::ldexp(1.0, -9));
        FSAlgorithm engine(settings);
        testsupport::OneByOne records(columns, kRows);
        testsupport::InBlocks blocks(columns, kRows, 1000, 0);
        EXPECT_TRUE(
            (inBlocks ? engine.RunAll(blocks, -1, true, 0) : engine.RunAll(records, -1, true, 0))
                .IsOk());
        std::vector<std::uint64_t> results;
        const auto add = [&](double value) {
            results.push_back(std::bit_cast<std::uint64_t>(value));
        };
        for (const std::int32_t index : engine.GetDeletedIndices()) add(index);
        for (const std::int32_t reason : engine.GetDeletionReasons()) add(reason);
        for (std::int32_t criterion = 0; criterion < 6; ++criterion) {
            for (const double value : engine.GetCriterionValues(criterion)) add(value);
            for (const std::int32_t rank : engine.GetRanks(criterion)) add(rank);
            for (int at = 0; at < settings.GetNumPredictors(); ++at) {
                std::array<double, 4> shown{};
                engine.GetPredictorCriterion(criterion, at, shown[0], shown[1], shown[2], shown[3]);
                for (const double value : shown) add(value);
            }
        }
        return results;
    }

    std::vector<bool> fvCategorical;  // target, predictors
    std::vector<std::vector<double>> fvValues;
};

TEST_P(FSMagnitudes, APowerOfTwoChangesNoBit) {
    Random random(testsupport::RandomSeed());
    for (int round = 0; round < 20; ++round) {
        DrawTable(random);
        const Exponents none(fvValues.size(), 0);
        const auto expected = ResultsOf(Scaled(none), 0.0, false);
        std::vector<Exponents> scales;
        for (const int exponent : {-996, -520, -300, -1, 1, 300, 520, 996}) {
            scales.emplace_back(fvValues.size(), exponent);
        }
        for (int drawn = 0; drawn < 5; ++drawn) {
            scales.emplace_back();
            for (std::size_t at = 0; at < fvValues.size(); ++at) {
                scales.back().push_back(std::uniform_int_distribution<int>(-996, 996)(random));
            }
        }
        for (const Exponents& exponents : scales) {
            for (const bool inBlocks : {false, true}) {
                ASSERT_EQ(ResultsOf(Scaled(exponents), 0.0, inBlocks), expected)
                    << "target by 2^" << exponents[0] << ", first predictor by 2^" << exponents[1]
                    << (inBlocks ? ", in a block" : ", one by one");
            }
        }
    }
}

TEST_P(FSMagnitudes, TheLeastStandardDeviationIsComparedInAnyUnit) {
    Random random(testsupport::RandomSeed());
    for (int round = 0; round < 20; ++round) {
        DrawTable(random);
        const auto expected = ResultsOf(Scaled(Exponents(fvValues.size(), 0)), 1.125, false);
        for (const int exponent : {-996, 520, 996}) {
            EXPECT_EQ(ResultsOf(Scaled(Exponents(fvValues.size(), exponent)),
                                std::ldexp(1.125, exponent), false),
                      expected)
                << "2^" << exponent;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Tables, FSMagnitudes,
    testing::Values(Kinds{"ContinuousByContinuous", {false, false, false, false}, false},
                    Kinds{"CategoricalByContinuous", {true, true, true}, false},
                    Kinds{"ContinuousByCategorical", {false, false, false, false}, true},
                    Kinds{"MixedByContinuous", {true, false, true, false}, false},
                    Kinds{"MixedByCategorical", {true, false, true, false}, true}),
    testsupport::CaseName());

// The largest doubles: their sums are beyond them, their means are not.
TEST(FSMagnitudesAtTheEnd, TheLargestDoublesHaveAStatistic) {
    const double most = std::numeric_limits<double>::max();
    FSSettings settings(2, false, false);
    FSAlgorithm engine(settings);
    // The missing value is -most, so the negative ones stay above it.
    const double x[] = {most, most, -most / 2, -most / 2, most / 2, 0, most, -most / 4};
    const double y[] = {1, 2, -3, -2, 0.5, 0, 1.5, -1};
    std::vector<double> target(std::begin(x), std::end(x)), same = target,
                                                            other(std::begin(y), std::end(y));
    const TableColumns columns{{target, 1}, {other, 1}, {same, 1}};
    testsupport::OneByOne records(columns, target.size());
    ASSERT_TRUE(engine.RunAll(records, -1, true, 0).IsOk());
    double p = 0.0, r = 0.0, t = 0.0, df = 0.0;
    ASSERT_TRUE(engine.GetPredictorCriterion(5, 1, p, r, t, df));
    EXPECT_EQ(r, 1.0);
    EXPECT_EQ(t, MCMV::gMissingValue);
    ASSERT_TRUE(engine.GetPredictorCriterion(5, 0, p, r, t, df));
    EXPECT_GT(r, 0.9);
    EXPECT_LT(r, 1.0);
    EXPECT_EQ(engine.GetRanks(5), (std::vector<std::int32_t>{1, 0}));
}

}  // namespace
