#include "embedded/cases/LayoutRecords.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "embedded/data/DataSetBuilder.h"

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

}  // namespace
}  // namespace embedded
