#include "featureselect/FSCellCounts.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "tests/support/RandomSeed.h"

namespace {

/// Sizes of a crosstab.
struct Table {
    const char* fName;
    std::uint32_t fEntryEnd;
    std::size_t fClasses;
};

void PrintTo(const Table& table, std::ostream* out) { *out << table.fName; }

class FSCellCountsOf : public testing::TestWithParam<Table> {
 protected:
    /// As many random records, with some that do not count.
    template <class Entry>
    void CompareWithOneByOne(std::size_t rows, std::mt19937& engine) const {
        const Table& table = GetParam();
        std::vector<Entry> entries(rows);
        std::vector<std::uint16_t> groups(rows);
        std::uniform_int_distribution<std::uint32_t> entry(0, table.fEntryEnd - 1);
        std::uniform_int_distribution<std::size_t> group(0, table.fClasses);
        std::vector<std::int32_t> keys(table.fClasses);
        std::iota(keys.begin(), keys.end(), -1);
        std::vector<std::uint32_t> cells((table.fClasses + 1) * table.fEntryEnd);
        std::vector<std::uint32_t> classes(table.fClasses + 1);
        for (std::size_t row = 0; row < rows; ++row) {
            entries[row] = static_cast<Entry>(entry(engine));
            groups[row] = static_cast<std::uint16_t>(group(engine));
            ++cells[groups[row] * table.fEntryEnd + entries[row]];
            ++classes[groups[row]];
        }
        classes.pop_back();
        FSBlockCases cases;
        cases.fClasses = groups;
        cases.fClassKeys = keys;
        const std::span<const Entry> column(entries);
        EXPECT_EQ(FSCellCounts::Count(column, table.fEntryEnd, cases), cells) << rows;
        EXPECT_EQ(FSCellCounts::CountClasses(cases), classes) << rows;
    }
};

TEST_P(FSCellCountsOf, AnyNumberOfRecordsAreThoseOfOneByOne) {
    std::mt19937 engine(testsupport::RandomSeed());
    for (const std::size_t rows : {0, 1, 2, 3, 4, 5, 7, 511, 512, 513, 1023, 1025, 5000}) {
        const std::uint32_t end = GetParam().fEntryEnd;
        if (end <= 256) CompareWithOneByOne<std::uint8_t>(rows, engine);
        if (end <= 65536) CompareWithOneByOne<std::uint16_t>(rows, engine);
        CompareWithOneByOne<std::uint32_t>(rows, engine);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Tables, FSCellCountsOf,
    testing::Values(Table{"OneEntry", 1, 1}, Table{"TwoLevels", 3, 2}, Table{"AllBytes", 256, 3},
                    Table{"TheLargestInManyTables", 512, 3}, Table{"TheSmallestInOneTable", 683, 2},
                    Table{"TheLargestOfShortCells", 21845, 2},
                    Table{"TheSmallestOfWideCells", 21846, 2}, Table{"ManyClasses", 300, 300}),
    [](const auto& test) { return std::string(test.param.fName); });

}  // namespace
