#include "embedded/data/Column.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>
#include <set>

#include "embedded/data/ColumnBuilder.h"

namespace embedded {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

Column OfNumbers(const std::vector<double>& values) {
    NumericColumnBuilder builder;
    for (const double value : values) {
        builder.Append(value);
    }
    return std::move(builder).Finish();
}

Column OfTexts(const std::vector<std::string>& texts) {
    StringColumnBuilder builder;
    for (const std::string& text : texts) {
        builder.Append(text);
    }
    return std::move(builder).Finish();
}

bool AreCodesOfWidth(const CodeSpan& codes, std::size_t bytes) {
    return std::visit([bytes](const auto entries) { return sizeof(entries[0]) == bytes; },
                      codes.GetEntries());
}

TEST(Column, NoRowsMeansNoChunks) {
    const Column column = OfNumbers({});
    EXPECT_EQ(column.RowCount(), 0);
    EXPECT_EQ(column.ChunkCount(), 0);
    EXPECT_EQ(column.DistinctCount(), 0);
    EXPECT_EQ(column.Categories().Count(), 0);
}

TEST(Column, NaNIsMissingAndInfinityIsMissingAndCounted) {
    NumericColumnBuilder builder;
    for (const double value : {1.0, kNaN, kInfinity, -kInfinity, MCMV::gMissingValue, 2.0}) {
        builder.Append(value);
    }
    EXPECT_EQ(builder.Infinite().fCount, 3);
    EXPECT_EQ(builder.Infinite().fFirstRow, 2);
    const Column column = std::move(builder).Finish();
    EXPECT_EQ(column.ValidCount(), 2);
    for (const int row : {1, 2, 3, 4}) {
        EXPECT_FALSE(column.IsValid(row)) << row;
        EXPECT_EQ(column.Value(row), KoltObs(MCMV::gMissingValue)) << row;
    }
}

TEST(Column, NegativeZeroIsStoredAsZero) {
    const Column column = OfNumbers({-0.0, 0.0});
    EXPECT_FALSE(std::signbit(column.Chunk(0).fNumbers[0]));
    EXPECT_EQ(column.Categories().Count(), 1);
}

TEST(Column, CategoriesOfNumbersAscendWhateverTheOrderOfRows) {
    const Column column = OfNumbers({10, -3, 2.5, kNaN, 10, 9});
    const ColumnCategories& categories = column.Categories();
    EXPECT_EQ(categories.Numbers(), (std::vector<double>{-3, 2.5, 9, 10}));
    const CodeSpan codes = column.Codes(0);
    const std::vector<std::uint32_t> expected = {3, 0, 1, 0, 3, 2};
    for (std::size_t row = 0; row < expected.size(); ++row) {
        EXPECT_EQ(codes[row], expected[row]) << row;
    }
    EXPECT_EQ(column.DistinctCount(), 4);
}

TEST(Column, CategoriesOfStringsAreInByteOrder) {
    const Column column = OfTexts({"b", "\xC3\xA4", "B", "", "a", "b"});
    EXPECT_EQ(column.Categories().Strings(),
              (std::vector<std::string>{"", "B", "a", "b", "\xC3\xA4"}));
    EXPECT_EQ(column.Value(1), KoltObs(std::string("\xC3\xA4")));
    EXPECT_EQ(column.Value(3), KoltObs(std::string()));
    EXPECT_TRUE(column.IsValid(3));
}

class ChunkBorder : public testing::TestWithParam<std::int32_t> {};

TEST_P(ChunkBorder, EveryRowIsFoundInItsChunk) {
    const std::int32_t rows = GetParam();
    NumericColumnBuilder numbers;
    StringColumnBuilder texts;
    for (std::int32_t row = 0; row < rows; ++row) {
        if (row % 7 == 3 || row == rows - 1) {
            numbers.AppendMissing();
            texts.AppendMissing();
        } else {
            numbers.Append(row);
            texts.Append(std::to_string(row % 1000));
        }
    }
    const Column first = std::move(numbers).Finish();
    const Column second = std::move(texts).Finish();
    ASSERT_EQ(first.RowCount(), rows);
    ASSERT_EQ(second.RowCount(), rows);
    ASSERT_EQ(first.ChunkCount(), (rows + kChunkRows - 1) / kChunkRows);
    std::int64_t met = 0;
    for (std::int32_t i = 0; i < first.ChunkCount(); ++i) {
        const ColumnChunk chunk = first.Chunk(i);
        const ColumnChunk codes = second.Chunk(i);
        ASSERT_EQ(chunk.fFirstRow, met);
        ASSERT_EQ(chunk.fNumbers.size(), static_cast<std::size_t>(chunk.fRows));
        ASSERT_EQ(codes.fCodes.Size(), static_cast<std::size_t>(chunk.fRows));
        for (std::int32_t at = 0; at < chunk.fRows; ++at, ++met) {
            const bool valid = met % 7 != 3 && met != rows - 1;
            ASSERT_EQ(chunk.IsValid(at), valid) << met;
            ASSERT_EQ(codes.IsValid(at), valid) << met;
            if (valid) {
                ASSERT_EQ(chunk.fNumbers[static_cast<std::size_t>(at)], static_cast<double>(met));
                const auto code = codes.fCodes[static_cast<std::size_t>(at)];
                ASSERT_EQ(second.Categories().Strings()[code], std::to_string(met % 1000));
            }
        }
    }
    EXPECT_EQ(met, rows);
}

INSTANTIATE_TEST_SUITE_P(Rows, ChunkBorder,
                         testing::Values(1, 63, 64, 65, 65535, 65536, 65537, 131072, 131073));

TEST(RowsToOpen, TakeSixteenMebibytesAtMostButAreNeverTooFew) {
    EXPECT_EQ(RowsToOpen(0), kChunkRows);
    EXPECT_EQ(RowsToOpen(256), kChunkRows);
    EXPECT_EQ(RowsToOpen(257), kChunkRows / 2);
    EXPECT_EQ(RowsToOpen(16 * 2000), 512);
    EXPECT_EQ(RowsToOpen(std::int64_t{16} * 50'000'000), 512);
}

TEST(Column, AChunkWithoutMissingRowsHasNoValidityBits) {
    NumericColumnBuilder builder;
    for (std::int32_t row = 0; row < 2 * kChunkRows; ++row) {
        builder.Append(row == kChunkRows ? kNaN : 1.0);
    }
    const Column column = std::move(builder).Finish();
    EXPECT_TRUE(column.Chunk(0).fValidity.empty());
    EXPECT_FALSE(column.Chunk(1).fValidity.empty());
    EXPECT_EQ(column.ValidCount(), 2 * kChunkRows - 1);
}

struct WidthCase {
    std::int32_t fDistinct;
    std::size_t fBytes;
};
class CodeWidth : public testing::TestWithParam<WidthCase> {};

TEST_P(CodeWidth, IsTheNarrowestForTheDistinctValues) {
    const auto [distinct, bytes] = GetParam();
    NumericColumnBuilder numbers;
    StringColumnBuilder texts;
    for (std::int32_t value = distinct; value-- > 0;) {
        numbers.Append(value);
        texts.Append(std::to_string(value));
    }
    const Column first = std::move(numbers).Finish();
    const Column second = std::move(texts).Finish();
    for (std::int32_t i = 0; i < first.ChunkCount(); ++i) {
        EXPECT_TRUE(AreCodesOfWidth(first.Codes(i), bytes));
        EXPECT_TRUE(AreCodesOfWidth(second.Chunk(i).fCodes, bytes));
    }
    EXPECT_EQ(first.Codes(0)[0], static_cast<std::uint32_t>(distinct - 1));
}

INSTANTIATE_TEST_SUITE_P(Counts, CodeWidth,
                         testing::Values(WidthCase{255, 1}, WidthCase{256, 2}, WidthCase{65535, 2},
                                         WidthCase{65536, 4}));

TEST(Column, CategoriesAgreeWithASortedSetOnRandomData) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::vector<double> values(100000);
    std::set<double> distinct;
    for (double& value : values) {
        value =
            std::ldexp(static_cast<double>(random() % 5000) - 2500, static_cast<int>(random() % 3));
        distinct.insert(value);
    }
    const Column column = OfNumbers(values);
    EXPECT_EQ(column.DistinctCount(), static_cast<std::int64_t>(distinct.size()));
    const ColumnCategories& categories = column.Categories();
    EXPECT_EQ(categories.Numbers(), std::vector<double>(distinct.begin(), distinct.end()));
    for (std::size_t row = 0; row < values.size(); ++row) {
        const CodeSpan codes = column.Codes(static_cast<std::int32_t>(row / kChunkRows));
        ASSERT_EQ(categories.Numbers()[codes[row % kChunkRows]], values[row]) << row;
    }
}

TEST(StringColumnBuilder, UndecodableBytesAreReplacedAndCounted) {
    StringColumnBuilder builder;
    builder.Append("fine");
    builder.Append("b\xFFx");
    builder.Append("b\xFEx");
    builder.Append("b\xFFx");
    EXPECT_EQ(builder.Undecodable().fCount, 3);
    EXPECT_EQ(builder.Undecodable().fFirstRow, 1);
    const Column column = std::move(builder).Finish();
    EXPECT_EQ(column.Categories().Strings(), (std::vector<std::string>{"b\xEF\xBF\xBDx", "fine"}));
    EXPECT_EQ(column.Chunk(0).fCodes[1], 0U);
    EXPECT_EQ(column.Chunk(0).fCodes[2], 0U);
    EXPECT_EQ(column.Chunk(0).fCodes[0], 1U);
}

TEST(StringColumnBuilder, MissingTextsAreMissingRowsAndNoCategories) {
    const TextSet missing = {"NA"};
    StringColumnBuilder builder(&missing);
    for (const char* text : {"x", "NA", "NA", "NAN"}) {
        builder.Append(text);
    }
    const Column column = std::move(builder).Finish();
    EXPECT_EQ(column.ValidCount(), 2);
    EXPECT_EQ(column.Categories().Strings(), (std::vector<std::string>{"NAN", "x"}));
}

TEST(NumericColumnBuilder, ScalingLeavesMissingRowsMissing) {
    NumericColumnBuilder builder;
    builder.Append(2);
    builder.AppendMissing();
    builder.Scale(86400);
    const Column column = std::move(builder).Finish();
    EXPECT_EQ(column.Value(0), KoltObs(172800.0));
    EXPECT_FALSE(column.IsValid(1));
    EXPECT_EQ(column.Chunk(0).fNumbers[1], MCMV::gMissingValue);
}

}  // namespace
}  // namespace embedded
