// The canonical bytes of what an accumulator has gathered.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "featureselect/FSAccumKind.h"
#include "featureselect/tests/AccumCases.h"
#include "tests/support/RandomSeed.h"

namespace {

using accumcases::Case;

class FSExactForm : public testing::TestWithParam<std::int32_t> {
 protected:
    using Accum = std::unique_ptr<IFSPredTargetAccum>;

    std::vector<Case> RandomCases(std::uint32_t seed) const {
        const bool categorical = FSAccumKind::Make(GetParam())->IsCategorical();
        const bool categoricalTarget =
            GetParam() == FSAccumKind::kCatPCatT || GetParam() == FSAccumKind::kContPCatT;
        std::vector<Case> cases = accumcases::RandomCases(seed, 60, {categorical, 1e9, 1e-3},
                                                          {categoricalTarget, 0.0, 1e6});
        std::mt19937 engine(seed);
        for (Case& one : cases) {
            if (one.fWeight > 1.0) one.fWeight = std::uniform_real_distribution<>(0.1, 9)(engine);
        }
        return cases;
    }

    void Feed(IFSPredTargetAccum& accum, const Case& one) const {
        const bool withTarget = GetParam() != FSAccumKind::kCat && GetParam() != FSAccumKind::kCont;
        if (withTarget) {
            accumcases::FeedPair(accum, one);
        } else {
            accumcases::FeedValue(accum, one);
        }
    }

    static std::string Bytes(const Accum& accum) {
        std::string bytes;
        accum->AppendExact(bytes);
        return bytes;
    }
};

TEST_P(FSExactForm, IsThatOfTheSetOfRecords) {
    std::mt19937 engine(testsupport::RandomSeed());
    for (int trial = 0; trial < 40; ++trial) {
        std::vector<Case> cases = RandomCases(static_cast<std::uint32_t>(engine()));
        const Accum whole = FSAccumKind::Make(GetParam());
        for (const Case& one : cases) Feed(*whole, one);

        std::shuffle(cases.begin(), cases.end(), engine);
        std::vector<Accum> parts;
        for (int part = 0; part < 4; ++part) parts.push_back(FSAccumKind::Make(GetParam()));
        for (const Case& one : cases) Feed(*parts[engine() % parts.size()], one);
        while (parts.size() > 1) {
            std::shuffle(parts.begin(), parts.end(), engine);
            FSAccumKind::Merge(*parts.front(), *parts.back());
            parts.pop_back();
        }
        ASSERT_EQ(Bytes(parts.front()), Bytes(whole));

        // Any other set has other bytes.
        Feed(*parts.front(), {accumcases::kMissing, 0.0, 1.0});
        ASSERT_NE(Bytes(parts.front()), Bytes(whole));
    }
}

TEST_P(FSExactForm, OneZeroStandsForBoth) {
    const Accum plus = FSAccumKind::Make(GetParam());
    const Accum minus = FSAccumKind::Make(GetParam());
    Feed(*plus, {0.0, 0.0, 1.0});
    Feed(*minus, {-0.0, -0.0, 1.0});
    EXPECT_EQ(Bytes(plus), Bytes(minus));
}

INSTANTIATE_TEST_SUITE_P(Kinds, FSExactForm,
                         testing::Values(FSAccumKind::kCat, FSAccumKind::kCatPCatT,
                                         FSAccumKind::kCatPContT, FSAccumKind::kCont,
                                         FSAccumKind::kContPCatT, FSAccumKind::kContPContT));

}  // namespace
