#include "embedded/cases/LayoutRecords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <variant>
#include <vector>

#include "embedded/data/DataSetBuilder.h"
#include "tests/support/RandomSeed.h"

namespace embedded {
namespace {

using MCMV::gMissingValue;
using Rows = std::vector<std::vector<double>>;

KoltObs Text(const char* text) { return std::string(text); }

// Target, weight, a scale predictor with -9 user-missing.
RecordLayout Layout() {
    RecordLayout layout;
    layout.fvColumns = {
        {"y", ColumnKind::kString, 3, true, {Text("no"), Text("yes")}, {false, 0, 0, {Text("?")}}},
        {"w", ColumnKind::kNumber, 0, false, {}, {}},
        {"x", ColumnKind::kNumber, 0, false, {}, {false, 0, 0, {KoltObs(-9.0)}}}};
    layout.fWeightColumn = 1;
    return layout;
}

DataSet Data() {
    return DataSetBuilder()
        .SourceName("new.csv")
        .Numbers("x", {1, -9, 3, 4, gMissingValue})
        .Numbers("other", {0, 0, 0, 0, 0})
        .Numbers("w", {1, 2, 0, 1, 3})
        .Strings("y", {"yes", "?", "no", "maybe", "no"})
        .Build();
}

Rows ReadAll(LayoutRecords& records) {
    Rows rows;
    while (const MCCommon::Record* record = records.Next()) {
        std::vector<double>& row = rows.emplace_back();
        for (std::int32_t i = 0; i < record->Size(); ++i) row.push_back((*record)[i]);
    }
    return rows;
}

std::string Fault(const DataSet& data, const RecordLayout& layout,
                  const LayoutRecordsOptions& options = {}) {
    try {
        LayoutRecords(data, layout, options);
    } catch (const DataError& fault) {
        EXPECT_EQ(fault.GetKind(), DataError::Kind::kContent);
        return fault.what();
    }
    return "none";
}

TEST(LayoutRecords, DeliversTheCodesOfTheLayout) {
    const DataSet data = Data();
    LayoutRecords records(data, Layout());
    EXPECT_EQ(ReadAll(records),
              (Rows{{1, 1, 1}, {-1, 2, gMissingValue}, {-1, 1, 4}, {0, 3, gMissingValue}}));
}

TEST(LayoutRecords, CodesFollowTheLayoutWhateverItsOrder) {
    const DataSet data = Data();
    RecordLayout layout = Layout();
    layout.fvColumns[0].fvValues = {Text("yes"), Text("never"), Text("no")};
    LayoutRecords records(data, layout);
    std::vector<double> codes;
    for (const auto& row : ReadAll(records)) codes.push_back(row[0]);
    EXPECT_EQ(codes, (std::vector<double>{0, -1, -1, 2}));
}

TEST(LayoutRecords, AValueThatTheLayoutDoesNotKnowIsCountedButAMissingOneIsNot) {
    const DataSet data = Data();
    LayoutRecords records(data, Layout());
    ReadAll(records);
    EXPECT_EQ(records.UnknownValues()[0].fCount, 1);
    EXPECT_EQ(records.UnknownValues()[0].fFirstRow, 3);
    EXPECT_EQ(records.UnknownValues()[2].fCount, 0);
    records.NewPass();
    EXPECT_EQ(records.UnknownValues()[0].fCount, 0) << "each pass counts for itself";
    ReadAll(records);
    EXPECT_EQ(records.UnknownValues()[0].fCount, 1);
}

TEST(LayoutRecords, UserMissingValuesAreValuesWhenTheLayoutIncludesThem) {
    const DataSet data = Data();
    RecordLayout layout = Layout();
    layout.fbUserMissExclude = false;
    layout.fvColumns[0].fvValues = {Text("?"), Text("no"), Text("yes")};
    LayoutRecords records(data, layout);
    EXPECT_EQ(ReadAll(records), (Rows{{2, 1, 1}, {0, 2, -9}, {-1, 1, 4}, {1, 3, gMissingValue}}));
}

TEST(LayoutRecords, UserMissingValuesThatTheDataDeclareAreMissingToo) {
    const DataSet data = DataSetBuilder().Numbers("x", {1, 7}).Missing({true, 6, 8, {}}).Build();
    RecordLayout layout;
    layout.fvColumns = {{"x", ColumnKind::kNumber, 0, false, {}, {}}};
    LayoutRecords records(data, layout);
    EXPECT_EQ(ReadAll(records), (Rows{{1}, {gMissingValue}}));
}

TEST(LayoutRecords, ReadsAgainFromTheFirstRecord) {
    const DataSet data = Data();
    LayoutRecords records(data, Layout());
    const Rows first = ReadAll(records);
    EXPECT_FALSE(records.HasMore());
    EXPECT_EQ(records.GetFailReason(), MCCommon::kITER_NO_VALID_CASE);
    EXPECT_EQ(records.NewPass(), MCCommon::kITER_SUCCESS);
    EXPECT_EQ(ReadAll(records), first);
}

TEST(LayoutRecords, TellsTheRowOfEachRecord) {
    const DataSet data = Data();
    LayoutRecords records(data, Layout());
    std::vector<std::int64_t> rows;
    while (records.Next() != nullptr) rows.push_back(records.Row());
    EXPECT_EQ(rows, (std::vector<std::int64_t>{0, 1, 3, 4}));
}

TEST(LayoutRecords, EveryCaseIsDeliveredWithWeightOneWhenWeightsAreIgnored) {
    const DataSet data = DataSetBuilder().Numbers("x", {1, 2}).Strings("y", {"no", "yes"}).Build();
    LayoutRecordsOptions options;
    options.fbIgnoreWeights = true;
    LayoutRecords records(data, Layout(), options);
    EXPECT_EQ(ReadAll(records), (Rows{{0, 1, 1}, {1, 1, 2}}));
}

TEST(LayoutRecords, AVariableThatMayLackIsDeliveredAsMissing) {
    const DataSet data = DataSetBuilder().Numbers("x", {1}).Build();
    LayoutRecordsOptions options;
    options.fvMayLack = {0};
    options.fbIgnoreWeights = true;
    LayoutRecords records(data, Layout(), options);
    EXPECT_EQ(ReadAll(records), (Rows{{-1, 1, 1}}));
}

TEST(LayoutRecords, AVariableOfAnotherTypeThatMayLackIsDeliveredAsMissing) {
    const DataSet data =
        DataSetBuilder().Numbers("x", {1}).Numbers("w", {1}).Numbers("y", {7}).Build();
    LayoutRecordsOptions options;
    options.fvMayLack = {0};
    LayoutRecords records(data, Layout(), options);
    EXPECT_EQ(ReadAll(records), (Rows{{-1, 1, 1}}));
    EXPECT_EQ(records.UnknownValues()[0].fCount, 0);
}

TEST(LayoutRecords, RefusesDataThatLackVariablesOrHoldAnotherType) {
    const DataSet data = DataSetBuilder()
                             .SourceName("new.csv")
                             .Strings("x", {"one"})
                             .Numbers("w", {0})
                             .Kind(ColumnKind::kDate)
                             .Build();
    EXPECT_EQ(Fault(data, Layout()),
              "new.csv: does not fit the model: no variable 'y'; the variable 'w' holds dates in "
              "place of numbers; the variable 'x' holds texts in place of numbers; give data with "
              "the variables that the model was made from");
}

TEST(LayoutRecords, AColumnWithoutAnyValueServesForEveryType) {
    const DataSet data = DataSetBuilder()
                             .Numbers("y", {gMissingValue, gMissingValue})
                             .Strings("x", {std::nullopt, std::nullopt})
                             .Numbers("w", {1, 1})
                             .Build();
    LayoutRecords records(data, Layout());
    EXPECT_EQ(ReadAll(records), (Rows{{-1, 1, gMissingValue}, {-1, 1, gMissingValue}}));
}

TEST(LayoutRecords, BooleansServeAsNumbers) {
    const DataSet data = DataSetBuilder().Numbers("b", {0, 1}).Kind(ColumnKind::kBoolean).Build();
    RecordLayout layout;
    layout.fvColumns = {{"b", ColumnKind::kNumber, 0, true, {KoltObs(1.0)}, {}}};
    LayoutRecords records(data, layout);
    EXPECT_EQ(ReadAll(records), (Rows{{-1}, {0}}));
}

TEST(LayoutRecords, NoRowsAreNoValidCase) {
    const DataSet data = DataSetBuilder().Numbers("x", {}).Build();
    RecordLayout layout;
    layout.fvColumns = {{"x", ColumnKind::kNumber, 0, false, {}, {}}};
    LayoutRecords records(data, layout);
    EXPECT_EQ(records.GetFailReason(), MCCommon::kITER_NO_VALID_CASE);
    EXPECT_EQ(records.Next(), nullptr);
}

TEST(LayoutRecords, EveryRowIsDeliveredAcrossChunks) {
    std::vector<double> numbers;
    for (std::int32_t row = 0; row <= kChunkRows; ++row) numbers.push_back(row);
    const DataSet data = DataSetBuilder().Numbers("x", numbers).Build();
    RecordLayout layout;
    layout.fvColumns = {{"x", ColumnKind::kNumber, 0, false, {}, {}}};
    LayoutRecords records(data, layout);
    std::int32_t row = 0;
    while (const MCCommon::Record* record = records.Next()) ASSERT_EQ((*record)[0], row++);
    EXPECT_EQ(row, kChunkRows + 1);
}

// ---- blocks ----

double ValueOf(const MCCommon::BlockColumn& column, std::size_t row) {
    return std::visit(
        [&](const auto values) {
            const double value = values[row];
            if (!column.IsCategorical()) return value;
            EXPECT_LT(value, column.fEntryEnd);
            return value - 1;
        },
        column.fValues);
}

struct Delivered {
    Rows fvRows;
    std::vector<std::int64_t> fvNumbers;
    std::vector<std::int64_t> fvUnknown;  // count and first row of each column
    bool operator==(const Delivered&) const = default;
};

// blocks settles what is read in blocks; null: nothing is.
Delivered ReadIn(LayoutRecords& records, std::size_t columns, std::mt19937* blocks) {
    Delivered all;
    while (records.HasMore()) {
        EXPECT_EQ(records.GetFailReason(), MCCommon::kITER_SUCCESS);
        if (blocks == nullptr || (*blocks)() % 4 == 0) {
            const MCCommon::Record& record = *records.Next();
            std::vector<double>& row = all.fvRows.emplace_back();
            for (std::int32_t i = 0; i < record.Size(); ++i) row.push_back(record[i]);
            all.fvNumbers.push_back(records.Row());
            continue;
        }
        const auto most = static_cast<std::int32_t>(1 + (*blocks)() % 100000);
        const MCCommon::RecordBlock& block = *records.NextBlock(most);
        EXPECT_GE(block.fRows, 1);
        EXPECT_LE(block.fRows, most);
        EXPECT_EQ(block.fvColumns.size(), columns);
        for (std::size_t row = 0; row < static_cast<std::size_t>(block.fRows); ++row) {
            std::vector<double>& values = all.fvRows.emplace_back();
            for (const MCCommon::BlockColumn& column : block.fvColumns) {
                values.push_back(ValueOf(column, row));
            }
        }
        const auto numbers = records.BlockRows();
        EXPECT_EQ(numbers.size(), static_cast<std::size_t>(block.fRows));
        all.fvNumbers.insert(all.fvNumbers.end(), numbers.begin(), numbers.end());
    }
    EXPECT_EQ(records.NextBlock(1), nullptr);
    for (const Oddity& unknown : records.UnknownValues()) {
        all.fvUnknown.push_back(unknown.fCount);
        all.fvUnknown.push_back(unknown.fFirstRow);
    }
    return all;
}

class LayoutBlocks : public testing::TestWithParam<std::int32_t> {};

TEST_P(LayoutBlocks, GiveWhatRecordsGive) {
    const std::int32_t rows = GetParam();
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int round = 0; round < (rows > 10000 ? 3 : 30); ++round) {
        const auto numbers = [&](std::uint32_t kinds) {
            std::vector<double> values(static_cast<std::size_t>(rows), gMissingValue);
            for (double& value : values) {
                if (random() % 8 != 0) value = static_cast<double>(random() % kinds);
            }
            return values;
        };
        const auto texts = [&](std::uint32_t kinds) {
            std::vector<std::optional<std::string>> values(static_cast<std::size_t>(rows));
            for (auto& value : values) {
                if (random() % 8 != 0) value = "t" + std::to_string(random() % kinds);
            }
            return values;
        };
        // Long runs of cases without a weight leave chunks out.
        std::vector<double> weights = numbers(3);
        const std::size_t idle = random() % (static_cast<std::size_t>(rows) + 1);
        std::fill(weights.begin(), weights.begin() + static_cast<std::ptrdiff_t>(idle), 0.0);
        const DataSet data = DataSetBuilder()
                                 .Strings("few", texts(3))
                                 .Strings("some", texts(400))
                                 .Numbers("coded", numbers(12))
                                 .Missing({true, 10, 12, {}})
                                 .Numbers("scale", numbers(1U << 30))
                                 .Numbers("held", numbers(30))
                                 .Numbers("w", weights)
                                 .Build();
        // Codes of all categories in order, of more than there are, of some in another order.
        const auto categories = [&](const char* name, ColumnKind kind, std::size_t kinds) {
            RecordLayoutColumn column = {name, kind, kind == ColumnKind::kString ? 5 : 0,
                                         true, {},   {}};
            for (std::size_t i = 0; i < kinds; ++i) {
                column.fvValues.push_back(kind == ColumnKind::kString
                                              ? KoltObs("t" + std::to_string(i))
                                              : KoltObs(static_cast<double>(i)));
            }
            if (random() % 2 == 0) {
                std::shuffle(column.fvValues.begin(), column.fvValues.end(), random);
            }
            return column;
        };
        RecordLayout layout;
        layout.fvColumns = {
            categories("few", ColumnKind::kString, 1 + random() % 4),
            {"scale", ColumnKind::kNumber, 0, false, {}, {}},
            categories("some", ColumnKind::kString, 254 + random() % 4),
            categories("coded", ColumnKind::kNumber, 5 + random() % 300),
            {"held", ColumnKind::kNumber, 0, false, {}, {false, 0, 0, {KoltObs(7.0)}}},
            categories("absent", ColumnKind::kNumber, 3),
            {"nowhere", ColumnKind::kNumber, 0, false, {}, {}},
            {"w", ColumnKind::kNumber, 0, false, {}, {false, 0, 0, {KoltObs(2.0)}}}};
        layout.fWeightColumn = 7;
        // So many numbers that are held as codes that the rows of a chunk are opened in parts.
        const int more = random() % 2 == 0 ? 40 : 0;
        for (int i = 0; i < more; ++i) {
            layout.fvColumns.push_back({"held", ColumnKind::kNumber, 0, false, {}, {}});
        }
        layout.fbUserMissExclude = random() % 2 == 0;
        LayoutRecordsOptions options;
        options.fvMayLack = {5, 6};
        options.fbIgnoreWeights = random() % 3 == 0;
        options.fThreads = static_cast<std::int32_t>(1 + random() % 3);
        LayoutRecords records(data, layout, options);
        const std::size_t columns = layout.fvColumns.size();
        const Delivered one = ReadIn(records, columns, nullptr);
        for (int pass = 0; pass < 2; ++pass) {
            records.NewPass();
            ASSERT_TRUE(ReadIn(records, columns, &random) == one) << "round " << round;
        }
    }
}
INSTANTIATE_TEST_SUITE_P(Rows, LayoutBlocks,
                         testing::Values(0, 1, 1000, kChunkRows, 3 * kChunkRows + 1));

TEST(LayoutRecords, ManyColumnsThatAreNotHeldAsTheyAreDeliveredAreOpenedInParts) {
    std::vector<double> numbers;
    for (std::int32_t row = 0; row < kChunkRows + 7; ++row) numbers.push_back(row % 30);
    const DataSet data = DataSetBuilder().Numbers("x", numbers).Build();
    RecordLayout layout;
    layout.fvColumns.assign(40, {"x", ColumnKind::kNumber, 0, false, {}, {}});
    LayoutRecords records(data, layout);
    // Two buffers of doubles a column.
    const std::int32_t openRows = RowsToOpen(40 * 2 * sizeof(double));
    ASSERT_LT(openRows, kChunkRows);
    std::size_t row = 0;
    std::vector<std::int32_t> sizes;
    while (const MCCommon::RecordBlock* block = records.NextBlock(kChunkRows)) {
        sizes.push_back(block->fRows);
        for (std::int32_t i = 0; i < block->fRows; ++i, ++row) {
            ASSERT_EQ(ValueOf(block->fvColumns[39], static_cast<std::size_t>(i)), numbers[row]);
        }
    }
    EXPECT_EQ(row, numbers.size());
    std::vector<std::int32_t> expected(static_cast<std::size_t>(kChunkRows / openRows), openRows);
    expected.push_back(7);
    EXPECT_EQ(sizes, expected);
}

TEST(LayoutRecords, ABlockStaysWhenThePassHasLookedIntoALaterChunk) {
    std::vector<double> weights(3 * std::size_t{kChunkRows}, 0.0);
    weights.front() = 4;
    weights.back() = 5;
    const DataSet data = DataSetBuilder().Numbers("w", weights).Build();
    RecordLayout layout;
    layout.fvColumns = {{"w", ColumnKind::kNumber, 0, false, {}, {}}};
    layout.fWeightColumn = 0;
    LayoutRecords records(data, layout);
    const MCCommon::RecordBlock* block = records.NextBlock(10);
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(records.HasMore());
    EXPECT_EQ(block->fRows, 1);
    EXPECT_EQ(ValueOf(block->fvColumns[0], 0), 4);
    block = records.NextBlock(10);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(ValueOf(block->fvColumns[0], 0), 5);
    EXPECT_FALSE(records.HasMore());
}

TEST(LayoutRecords, OneThreadHasNoExecutor) {
    const DataSet data = Data();
    LayoutRecordsOptions options;
    EXPECT_EQ(LayoutRecords(data, Layout(), options).GetExecutor(), nullptr);
    options.fThreads = 2;
    EXPECT_NE(LayoutRecords(data, Layout(), options).GetExecutor(), nullptr);
}

}  // namespace
}  // namespace embedded
