#include "featureselect/FSMomentLanes.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "host/Records.h"
#include "tests/support/RandomSeed.h"

namespace {

using FSMomentLanes::Form;

class FSMomentLanesForm : public testing::TestWithParam<Form> {};

/// Records of eight predictors with missing values, three classes and some that do not count.
struct Block {
    static constexpr std::size_t kRows = 1000;

    explicit Block(std::uint32_t seed, bool unit) {
        std::mt19937 engine(seed);
        std::normal_distribution<double> normal(1e3, 1.0);
        std::uniform_int_distribution<int> group(0, 3);
        std::bernoulli_distribution missing(0.05);
        for (std::size_t row = 0; row < kRows; ++row) {
            fvClasses.push_back(static_cast<std::uint16_t>(group(engine)));
            fvTargets.push_back(normal(engine));
            fvWeights.push_back(unit ? 1.0 : std::uniform_real_distribution<>(0.1, 3)(engine));
        }
        for (auto& values : fvValues) {
            for (std::size_t row = 0; row < kRows; ++row) {
                values.push_back(missing(engine) ? MCMV::gMissingValue : normal(engine));
            }
        }
        for (std::size_t lane = 0; lane < fColumns.size(); ++lane) {
            fColumns[lane] = fvValues[lane].data();
        }
        fCases.fWeights = fvWeights;
        fCases.fTargets = fvTargets;
        fCases.fClasses = fvClasses;
        fCases.fClassKeys = fvKeys;
        for (std::size_t row = 0; row < kRows; ++row) fCases.fCounted += fCases.Counts(row);
        fCases.fbUnit = unit;
    }

    std::array<std::vector<double>, FSMomentLanes::kLanes> fvValues;
    std::vector<double> fvWeights;
    std::vector<double> fvTargets;
    std::vector<std::uint16_t> fvClasses;
    std::vector<std::int32_t> fvKeys{0, 1, 2};
    FSMomentLanes::Columns fColumns{};
    FSBlockCases fCases;
};

template <class T>
bool SameBits(const T& a, const T& b) {
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

TEST_P(FSMomentLanesForm, GivesTheBitsOfThePortableOne) {
    if (!FSMomentLanes::IsAvailable(GetParam())) GTEST_SKIP() << "not on this processor";
    const std::uint32_t seed = testsupport::RandomSeed();
    for (const bool unit : {true, false}) {
        const Block block(seed, unit);
        const auto add = [&](const auto& start, Form form) {
            auto lanes = start;
            FSMomentLanes::Add(lanes, block.fColumns, block.fCases, form);
            FSMomentLanes::Add(lanes, block.fColumns, block.fCases, form);
            return lanes;
        };
        const FSMomentLanes::Single single;
        EXPECT_TRUE(SameBits(add(single, GetParam()), add(single, Form::kPortable)));
        const FSMomentLanes::Pair pair;
        EXPECT_TRUE(SameBits(add(pair, GetParam()), add(pair, Form::kPortable)));
        FSMomentLanes::ByClass byClass;
        byClass.fvClasses.resize(3);
        const FSMomentLanes::ByClass mine = add(byClass, GetParam());
        const FSMomentLanes::ByClass portable = add(byClass, Form::kPortable);
        EXPECT_TRUE(SameBits(mine.fMean, portable.fMean));
        EXPECT_TRUE(SameBits(mine.fWeights, portable.fWeights));
        for (std::size_t group = 0; group < 3; ++group) {
            EXPECT_TRUE(SameBits(mine.fvClasses[group], portable.fvClasses[group]));
        }
        EXPECT_GT(portable.fvClasses[1].fMoment[2], 0.0);
    }
}

INSTANTIATE_TEST_SUITE_P(Wider, FSMomentLanesForm, testing::Values(Form::kAvx2, Form::kAvx512));

}  // namespace
