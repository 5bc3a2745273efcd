#include "naivebayes/data/NBBlockBinning.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "host/Records.h"
#include "naivebayes/data/NBBinningEncoder.h"
#include "naivebayes/data/NBNumericUserMissing.h"
#include "tests/support/RandomSeed.h"

namespace {

constexpr double kMissing = MCMV::gMissingValue;
constexpr double kHuge = std::numeric_limits<double>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

template <class Entry>
class NBBlockBinningEntries : public testing::Test {};
using EntryTypes = testing::Types<std::uint8_t, std::uint16_t, std::uint32_t>;
TYPED_TEST_SUITE(NBBlockBinningEntries, EntryTypes);

TYPED_TEST(NBBlockBinningEntries, AreTheCodesOfTheEncoderMovedUpByOne) {
    const std::uint32_t seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    NBNumericUserMissing missing;
    missing.Add(3.0, "");
    for (int round = 0; round < 300; ++round) {
        // Equal cutpoints close bins; 60 cutpoints are searched.
        std::vector<double> cutpoints;
        const std::size_t count = round % 50 == 0 ? 60 : random() % 12;
        for (std::size_t i = 0; i < count; ++i) {
            cutpoints.push_back(static_cast<double>(random() % 8) - 4.0);
        }
        if (round % 5 == 0) cutpoints.push_back(kHuge);
        if (round % 7 == 0) cutpoints.push_back(-kHuge);
        if (round % 11 != 0) std::sort(cutpoints.begin(), cutpoints.end());
        if (round % 2 == 0) {
            cutpoints.erase(std::unique(cutpoints.begin(), cutpoints.end()), cutpoints.end());
        }
        NBBinningEncoder encoder(cutpoints);
        if (round % 13 == 0) encoder.SetUserMissing(&missing);
        const NBBlockBinning binning(&encoder);
        std::vector<double> values = {kMissing,  kHuge,       std::nextafter(-kHuge, 0.0),
                                      kInfinity, -kInfinity,  0.0,
                                      -0.0,      std::nan("")};
        const std::size_t size = 100 + random() % 500;
        while (values.size() < size) {
            values.push_back(random() % 9 == 0 ? kMissing
                                               : static_cast<double>(random() % 33) * 0.5 - 8.0);
        }
        const auto highest = static_cast<std::uint32_t>(round % 3 == 0 ? random() % 5 : 255);
        std::vector<TypeParam> entries(values.size());
        binning.Encode(values, highest, entries.data());
        for (std::size_t i = 0; i < values.size(); ++i) {
            const double entry = encoder.Encode(values[i]) + 1.0;
            ASSERT_LT(entry, binning.GetEntryEnd());
            ASSERT_EQ(static_cast<double>(entries[i]),
                      std::min(entry, static_cast<double>(highest)))
                << values[i] << " in round " << round;
        }
    }
}

TEST(NBBlockBinning, WithoutAnEncoderAllIsMissing) {
    const NBBlockBinning binning(nullptr);
    EXPECT_EQ(binning.GetEntryEnd(), 1U);
    const std::vector<double> values = {1.0, 2.0};
    std::vector<std::uint16_t> entries(values.size(), 9);
    binning.Encode(values, 9, entries.data());
    EXPECT_EQ(entries, (std::vector<std::uint16_t>{0, 0}));
}

}  // namespace
