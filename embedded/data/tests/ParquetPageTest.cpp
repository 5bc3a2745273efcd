// Pages are taken apart again by the words of the format.
#include "embedded/data/ParquetPage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/Records.h"
#include "tests/support/RandomSeed.h"

namespace embedded {
namespace {

constexpr double kMissing = MCMV::gMissingValue;

class Bytes {
 public:
    explicit Bytes(std::span<const std::uint8_t> bytes) : fBytes(bytes) {}

    bool IsAtEnd() const { return fBytes.empty(); }
    std::uint64_t Little(std::size_t count) {
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < count; ++i) number |= std::uint64_t{Next()} << (8 * i);
        return number;
    }
    std::uint64_t Varint() {
        std::uint64_t number = 0;
        for (unsigned shift = 0;; shift += 7) {
            const std::uint8_t byte = Next();
            number |= std::uint64_t{byte & 0x7FU} << shift;
            if (byte < 0x80) return number;
        }
    }
    Bytes Take(std::size_t count) {
        if (count > fBytes.size()) throw std::out_of_range("the page ends early");
        const Bytes taken(fBytes.first(count));
        fBytes = fBytes.subspan(count);
        return taken;
    }

 private:
    std::uint8_t Next() {
        if (fBytes.empty()) throw std::out_of_range("the page ends early");
        const std::uint8_t byte = fBytes.front();
        fBytes = fBytes.subspan(1);
        return byte;
    }
    std::span<const std::uint8_t> fBytes;
};

// Runs of one value and groups of eight that are bit-packed, the lowest bit first.
std::vector<std::uint64_t> Hybrid(Bytes bytes, unsigned width) {
    std::vector<std::uint64_t> values;
    while (!bytes.IsAtEnd()) {
        const std::uint64_t head = bytes.Varint();
        if (head % 2 == 0) {
            const std::uint64_t value = bytes.Little((width + 7) / 8);
            values.insert(values.end(), head / 2, value);
            continue;
        }
        std::vector<bool> bits;
        for (std::uint64_t byte = 0; byte < head / 2 * width; ++byte) {
            const std::uint64_t eight = bytes.Little(1);
            for (unsigned bit = 0; bit < 8; ++bit) bits.push_back(((eight >> bit) & 1U) != 0);
        }
        for (std::size_t at = 0; at < bits.size(); at += width) {
            std::uint64_t value = 0;
            for (unsigned bit = 0; bit < width; ++bit) {
                value |= std::uint64_t{bits[at + bit]} << bit;
            }
            values.push_back(value);
        }
    }
    return values;
}

// What fills up the last eight is none of the rows.
std::vector<std::uint64_t> Levels(Bytes& page, std::size_t rows) {
    const std::uint64_t length = page.Little(4);
    std::vector<std::uint64_t> levels = Hybrid(page.Take(length), 1);
    EXPECT_GE(levels.size(), rows);
    EXPECT_LT(levels.size(), rows + 8);
    levels.resize(rows);
    return levels;
}

template <class Entry>
class ParquetPageEntries : public testing::Test {};
using EntryTypes = testing::Types<std::uint8_t, std::uint16_t, std::uint32_t>;
TYPED_TEST_SUITE(ParquetPageEntries, EntryTypes);

TYPED_TEST(ParquetPageEntries, AreReadAsTheyWere) {
    const std::uint32_t seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    ParquetPage page;
    constexpr int kBits = std::numeric_limits<TypeParam>::digits;
    for (int round = 0; round < 600; ++round) {
        const std::size_t count = round % 10 == 0 ? 1 + random() % 20000 : random() % 300;
        const int bits = std::min(1 + static_cast<int>(random() % kBits), 31);
        const std::size_t values =
            random() % 3 == 0 ? (std::size_t{1} << bits) - 1 : 1 + random() % ((1U << bits) - 1);
        const std::size_t missingOneIn = round % 3 == 0 ? 0 : 1 + random() % 40;
        const std::size_t changesOneIn = round % 2 == 0 ? 1 : 1 + random() % 200;
        std::vector<TypeParam> rows(count);
        TypeParam last = 1;
        for (TypeParam& row : rows) {
            if (random() % changesOneIn == 0) last = static_cast<TypeParam>(1 + random() % values);
            row = missingOneIn != 0 && random() % missingOneIn == 0 ? TypeParam{0} : last;
        }
        page.SetEntries(std::span<const TypeParam>(rows), values);
        Bytes bytes(page.Bytes());
        const std::vector<std::uint64_t> levels = Levels(bytes, count);
        std::vector<std::uint64_t> expected;
        for (std::size_t row = 0; row < count; ++row) {
            ASSERT_EQ(levels[row], rows[row] == 0 ? 0U : 1U) << "round " << round;
            if (rows[row] != 0) expected.push_back(rows[row] - 1U);
        }
        ASSERT_EQ(page.ValidCount(), expected.size());
        const auto width = static_cast<unsigned>(bytes.Little(1));
        ASSERT_EQ(width, std::max(1, static_cast<int>(std::bit_width(values - 1))));
        std::vector<std::uint64_t> places = Hybrid(bytes, width);
        ASSERT_GE(places.size(), expected.size());
        ASSERT_LT(places.size(), expected.size() + 8);
        places.resize(expected.size());
        ASSERT_TRUE(places == expected) << "round " << round;
    }
}

TEST(ParquetPage, NumbersAreReadAsTheyWere) {
    const std::uint32_t seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    ParquetPage page;
    for (int round = 0; round < 200; ++round) {
        std::vector<double> rows(random() % 2000);
        const std::uint64_t missingOneIn = round % 3 == 0 ? 0 : 1 + random() % 40;
        for (double& row : rows) {
            const bool isMissing = missingOneIn != 0 && random() % missingOneIn == 0;
            row = isMissing ? kMissing : std::bit_cast<double>(random() & 0x7FEFFFFFFFFFFFFFU);
        }
        page.SetNumbers(rows);
        Bytes bytes(page.Bytes());
        const std::vector<std::uint64_t> levels = Levels(bytes, rows.size());
        std::size_t valid = 0;
        for (std::size_t row = 0; row < rows.size(); ++row) {
            ASSERT_EQ(levels[row], rows[row] == kMissing ? 0U : 1U);
            if (rows[row] == kMissing) continue;
            ASSERT_EQ(bytes.Little(8), std::bit_cast<std::uint64_t>(rows[row]));
            ++valid;
        }
        ASSERT_TRUE(bytes.IsAtEnd());
        ASSERT_EQ(page.ValidCount(), valid);
    }
}

TEST(ParquetPage, ALongRunTakesAFewBytes) {
    ParquetPage page;
    page.SetEntries(std::span<const std::uint8_t>(std::vector<std::uint8_t>(20000, 7)), 200);
    EXPECT_LT(page.Bytes().size(), 20U);
}

TEST(ParquetPage, OfAColumnWithoutAnyValueHoldsLevelsAlone) {
    ParquetPage page;
    page.SetEntries(std::span<const std::uint8_t>(std::vector<std::uint8_t>(16, 0)), 0);
    EXPECT_EQ(page.ValidCount(), 0U);
    Bytes bytes(page.Bytes());
    EXPECT_EQ(Levels(bytes, 16), std::vector<std::uint64_t>(16, 0));
    EXPECT_EQ(bytes.Little(1), 1U);
    EXPECT_TRUE(bytes.IsAtEnd());
}

}  // namespace
}  // namespace embedded
