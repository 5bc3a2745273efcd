#include "embedded/data/NewColumns.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include "embedded/data/DataSetBuilder.h"
#include "tests/support/RandomSeed.h"

namespace embedded {
namespace {

using MCMV::gMissingValue;
using Obs = std::vector<KoltObs>;

DataSet OfRows(std::int64_t rows) {
    return DataSetBuilder()
        .Numbers("x", std::vector<double>(static_cast<std::size_t>(rows), 1.0))
        .Build();
}

Obs ValuesOf(const DataSet& data, std::int32_t column) {
    Obs values;
    for (std::int64_t row = 0; row < data.RowCount(); ++row) {
        values.push_back(data.GetColumn(column).Value(row));
    }
    return values;
}

TEST(NewColumns, BlocksAndSingleRowsWriteTheSame) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::vector<std::string> texts = {"b", "a", "yesterday", "", "a  ", "never"};
    for (const std::int64_t rows : {std::int64_t{1}, std::int64_t{500}, std::int64_t{kChunkRows},
                                    2 * std::int64_t{kChunkRows} + 10}) {
        DataSet one = OfRows(rows);
        DataSet many = OfRows(rows);
        NewColumns single(1, rows);
        NewColumns blocks(1, rows);
        std::int32_t number = -1;
        std::int32_t text = -1;
        for (NewColumns* columns : {&single, &blocks}) {
            columns->SetSlots(2);
            columns->Make(0, number)->SetName("number");
            columns->Make(3, text)->SetName("text");
        }
        // Blocks of any rows, which may come again.
        for (int block = 0; block < 20; ++block) {
            std::vector<std::int64_t> numbers;
            std::vector<double> values;
            std::vector<std::int32_t> places;
            const std::int64_t first = static_cast<std::int64_t>(random()) % rows;
            const std::size_t step = 1 + random() % 3;
            for (std::int64_t row = first; row < rows && numbers.size() < 70000;
                 row += static_cast<std::int64_t>(step)) {
                numbers.push_back(row);
                values.push_back(random() % 5 == 0 ? gMissingValue
                                                   : static_cast<double>(random() % 1000) * 0.25);
                places.push_back(static_cast<std::int32_t>(random() % 6) - 1);
            }
            blocks.Set(number, numbers, values);
            blocks.Set(text, numbers, places, texts, 3);
            for (std::size_t i = 0; i < numbers.size(); ++i) {
                if (values[i] != gMissingValue) single.Set(number, numbers[i], values[i]);
                if (places[i] < 0) continue;
                single.Set(text, numbers[i], texts[static_cast<std::size_t>(places[i])], 3);
            }
        }
        EXPECT_EQ(single.MoveTo(one), (std::vector<std::string>{"number", "text"}));
        EXPECT_EQ(blocks.MoveTo(many), (std::vector<std::string>{"number", "text"}));
        for (const std::int32_t column : {number, text}) {
            ASSERT_TRUE(ValuesOf(one, column) == ValuesOf(many, column)) << rows << " rows";
            ASSERT_EQ(one.GetColumn(column).ValidCount(), many.GetColumn(column).ValidCount());
        }
        EXPECT_EQ(many.GetColumn(text).Categories().Strings(),
                  one.GetColumn(text).Categories().Strings());
    }
}

TEST(NewColumns, WhatIsNoNumberIsMissingAndMinusZeroIsZero) {
    DataSet data = OfRows(4);
    NewColumns columns(1, 4);
    columns.SetSlots(1);
    std::int32_t number = -1;
    columns.Make(0, number)->SetName("number");
    const std::vector<std::int64_t> rows = {0, 1, 2, 3};
    columns.Set(
        number, rows,
        std::vector<double>{std::nan(""), std::numeric_limits<double>::infinity(), -0.0, 2});
    columns.MoveTo(data);
    EXPECT_EQ(ValuesOf(data, number), (Obs{gMissingValue, gMissingValue, 0.0, 2.0}));
    EXPECT_FALSE(std::signbit(std::get<double>(data.GetColumn(number).Value(2))));
    EXPECT_EQ(data.GetColumn(number).ValidCount(), 2);
}

TEST(NewColumns, ARowThatNothingWasWrittenIntoIsMissing) {
    const std::int64_t rows = 2 * std::int64_t{kChunkRows};
    DataSet data = OfRows(rows);
    NewColumns columns(1, rows);
    columns.SetSlots(2);
    std::int32_t number = -1;
    std::int32_t text = -1;
    columns.Make(0, number)->SetName("number");
    columns.Make(8, text)->SetName("text");
    columns.Set(number, kChunkRows, 7.0);
    columns.MoveTo(data);
    EXPECT_EQ(data.GetColumn(number).ValidCount(), 1);
    EXPECT_EQ(data.GetColumn(number).Value(kChunkRows), KoltObs(7.0));
    EXPECT_EQ(data.GetColumn(text).ValidCount(), 0);
    EXPECT_EQ(data.GetColumn(text).RowCount(), rows);
}

TEST(NewColumns, ADataSetWithoutRowsGetsTheColumnsAllTheSame) {
    DataSet data = OfRows(0);
    NewColumns columns(1, 0);
    columns.SetSlots(2);
    std::int32_t column = -1;
    columns.Make(0, column)->SetName("number");
    columns.Make(8, column)->SetName("text");
    columns.MoveTo(data);
    EXPECT_EQ(data.ColumnCount(), 3);
    EXPECT_FALSE(data.GetColumn(2).IsNumeric());
}

TEST(NewColumns, MoreSlotsThanThereAreGiveNoVariable) {
    NewColumns columns(3, 1);
    columns.SetSlots(3);
    std::int32_t column = -1;
    EXPECT_EQ(columns.Make(25, column), nullptr);
    EXPECT_NE(columns.Make(24, column), nullptr);
    EXPECT_EQ(column, 3);
    EXPECT_EQ(columns.Make(0, column), nullptr);
}

}  // namespace
}  // namespace embedded
