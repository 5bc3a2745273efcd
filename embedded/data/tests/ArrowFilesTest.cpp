// Reading Arrow's own forms: every type, streams, files and Parquet, and damaged bytes.
#include <arrow/api.h>
#include <arrow/c/bridge.h>
#include <arrow/io/api.h>
#include <arrow/ipc/api.h>
#include <arrow/json/from_string.h>
#include <gtest/gtest.h>
#include <parquet/arrow/writer.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <random>

#include "embedded/data/OpenDataSet.h"
#include "embedded/data/tests/TemporaryFiles.h"

namespace embedded {
namespace {

using Array = std::shared_ptr<arrow::Array>;
using Batch = std::shared_ptr<arrow::RecordBatch>;

Array FromJson(const std::shared_ptr<arrow::DataType>& type, const std::string& json) {
    return arrow::json::ArrayFromJSONString(type, json).ValueOrDie();
}

Batch BatchOf(const std::vector<std::pair<std::string, Array>>& columns) {
    arrow::FieldVector fields;
    arrow::ArrayVector arrays;
    for (const auto& [name, array] : columns) {
        fields.push_back(arrow::field(name, array->type()));
        arrays.push_back(array);
    }
    return arrow::RecordBatch::Make(arrow::schema(fields), arrays.front()->length(), arrays);
}

DataSet ReadAll(const std::vector<Batch>& batches, const OpenOptions& options = {}) {
    auto reader = arrow::RecordBatchReader::Make(batches, batches.front()->schema()).ValueOrDie();
    ArrowArrayStream stream;
    EXPECT_TRUE(arrow::ExportRecordBatchReader(reader, &stream).ok());
    DataSet data = ReadArrowStream(stream, "memory", options);
    EXPECT_EQ(stream.release, nullptr);
    return data;
}

std::string ReadFailure(const std::vector<Batch>& batches) {
    try {
        ReadAll(batches);
    } catch (const DataError& fault) {
        return fault.what();
    }
    return "none";
}

// The values of a column as text, separated by bars; "." where missing.
std::string Values(const DataSet& data, std::int32_t index = 0) {
    std::string text;
    for (std::int64_t row = 0; row < data.RowCount(); ++row) {
        text += row == 0 ? "" : "|";
        text += ConvertObsToString(data.GetColumn(index).Value(row),
                                   data.Variable(index).GetFormat(), false);
    }
    return text;
}

struct TypeCase {
    const char* fName;
    std::shared_ptr<arrow::DataType> fType;
    const char* fJson;
    ColumnKind fKind;
    const char* fValues;
};
void PrintTo(const TypeCase& typeCase, std::ostream* out) { *out << typeCase.fName; }
class ArrowTypes : public testing::TestWithParam<TypeCase> {};

TEST_P(ArrowTypes, AreRead) {
    const Array array = FromJson(GetParam().fType, GetParam().fJson);
    const DataSet data = ReadAll({BatchOf({{"x", array}})});
    ASSERT_EQ(data.ColumnCount(), 1);
    EXPECT_EQ(data.Kind(0), GetParam().fKind);
    EXPECT_EQ(Values(data), GetParam().fValues);
    EXPECT_EQ(data.Variable(0).GetType() == 0, GetParam().fKind != ColumnKind::kString);
}

// Slices have offsets of their own, in the column and, through the struct, in the batch.
TEST_P(ArrowTypes, AreReadFromASlice) {
    const Array array = FromJson(GetParam().fType, GetParam().fJson);
    const std::int64_t length = array->length();
    if (length < 3) {
        GTEST_FAIL() << "the case needs three values";
    }
    const DataSet whole = ReadAll({BatchOf({{"x", array}})});
    const DataSet parts = ReadAll({BatchOf({{"x", array->Slice(0, 1)}}),
                                   BatchOf({{"x", array}})->Slice(1, length - 2),
                                   BatchOf({{"x", array->Slice(length - 1)}})});
    EXPECT_EQ(Values(parts), Values(whole));
}

// A dictionary over the type, with each kind of key, is what its values are.
TEST_P(ArrowTypes, AreReadThroughADictionary) {
    if (GetParam().fType->id() == arrow::Type::NA) {
        return;  // there is no dictionary of nothing
    }
    const Array values = FromJson(GetParam().fType, GetParam().fJson);
    const std::int64_t length = values->length();
    const DataSet plain = ReadAll({BatchOf({{"x", values}})});
    std::vector<std::string> shown;
    for (std::int64_t row = 0; row < length; ++row) {
        shown.push_back(ConvertObsToString(plain.GetColumn(0).Value(row),
                                           plain.Variable(0).GetFormat(), false));
    }
    std::string keysJson = "[";
    std::string expected;
    for (std::int64_t row = length - 1; row >= 0; --row) {
        keysJson += std::to_string(row) + ",null,";
        expected += (expected.empty() ? "" : "|") + shown[static_cast<std::size_t>(row)] + "|.";
    }
    keysJson.back() = ']';
    for (const auto& key : {arrow::int8(), arrow::uint8(), arrow::int16(), arrow::uint16(),
                            arrow::int32(), arrow::uint32(), arrow::int64(), arrow::uint64()}) {
        const Array keys = FromJson(key, keysJson);
        const auto array = arrow::DictionaryArray::FromArrays(
                               arrow::dictionary(key, GetParam().fType), keys, values)
                               .ValueOrDie();
        const DataSet data = ReadAll({BatchOf({{"x", array}})});
        ASSERT_EQ(data.ColumnCount(), 1) << key->ToString();
        EXPECT_EQ(Values(data), expected) << key->ToString();
        EXPECT_EQ(data.Kind(0), GetParam().fKind);
    }
}

constexpr const char* kSmall = "[1, null, 100, 0]";
constexpr const char* kTexts = R"(["b", null, "", "a longer text than twelve bytes"])";
constexpr const char* kReadTexts = "b|.||a longer text than twelve bytes";

INSTANTIATE_TEST_SUITE_P(
    All, ArrowTypes,
    testing::Values(
        TypeCase{"Null", arrow::null(), "[null, null, null]", ColumnKind::kNumber, ".|.|."},
        TypeCase{"Bool", arrow::boolean(), "[true, null, false]", ColumnKind::kBoolean, "1|.|0"},
        TypeCase{"Int8", arrow::int8(), "[-128, null, 127]", ColumnKind::kNumber, "-128|.|127"},
        TypeCase{"UInt8", arrow::uint8(), "[255, null, 0]", ColumnKind::kNumber, "255|.|0"},
        TypeCase{"Int16", arrow::int16(), "[-32768, null, 7]", ColumnKind::kNumber, "-32768|.|7"},
        TypeCase{"UInt16", arrow::uint16(), "[65535, null, 7]", ColumnKind::kNumber, "65535|.|7"},
        TypeCase{"Int32", arrow::int32(), kSmall, ColumnKind::kNumber, "1|.|100|0"},
        TypeCase{"UInt32", arrow::uint32(), "[4294967295, null, 7]", ColumnKind::kNumber,
                 "4294967295|.|7"},
        TypeCase{"Int64", arrow::int64(), "[-9007199254740991, null, 7]", ColumnKind::kNumber,
                 "-9007199254740991|.|7"},
        TypeCase{"UInt64", arrow::uint64(), kSmall, ColumnKind::kNumber, "1|.|100|0"},
        TypeCase{"Half", arrow::float16(), "[0.5, null, -65504, 6e-8]", ColumnKind::kNumber,
                 "0.50|.|-65504.00|5.960464477539063e-08"},
        TypeCase{"Float", arrow::float32(), "[0.5, null, -2]", ColumnKind::kNumber, "0.50|.|-2.00"},
        TypeCase{"Double", arrow::float64(), "[0.1, null, 1e300]", ColumnKind::kNumber,
                 "0.10|.|1e+300"},
        TypeCase{"Utf8", arrow::utf8(), kTexts, ColumnKind::kString, kReadTexts},
        TypeCase{"LargeUtf8", arrow::large_utf8(), kTexts, ColumnKind::kString, kReadTexts},
        TypeCase{"Utf8View", arrow::utf8_view(), kTexts, ColumnKind::kString, kReadTexts},
        TypeCase{"Binary", arrow::binary(), kTexts, ColumnKind::kString, kReadTexts},
        TypeCase{"LargeBinary", arrow::large_binary(), kTexts, ColumnKind::kString, kReadTexts},
        TypeCase{"BinaryView", arrow::binary_view(), kTexts, ColumnKind::kString, kReadTexts},
        TypeCase{"FixedSizeBinary", arrow::fixed_size_binary(3), R"(["abc", null, "xyz"])",
                 ColumnKind::kString, "abc|.|xyz"},
        TypeCase{"Date32", arrow::date32(), "[0, null, 19782]", ColumnKind::kDate,
                 "1970-01-01|.|2024-02-29"},
        TypeCase{"Date64", arrow::date64(), "[-86400000, null, 86400000]", ColumnKind::kDate,
                 "1969-12-31|.|1970-01-02"},
        TypeCase{"TimestampSeconds", arrow::timestamp(arrow::TimeUnit::SECOND), "[1, null, -1]",
                 ColumnKind::kDateTime, "1970-01-01 00:00:01|.|1969-12-31 23:59:59"},
        TypeCase{"TimestampMillis", arrow::timestamp(arrow::TimeUnit::MILLI), "[1500, null, 0]",
                 ColumnKind::kDateTime, "1970-01-01 00:00:01.5|.|1970-01-01 00:00:00"},
        TypeCase{"TimestampMicros", arrow::timestamp(arrow::TimeUnit::MICRO), "[1, null, 0]",
                 ColumnKind::kDateTime, "1970-01-01 00:00:00.000001|.|1970-01-01 00:00:00"},
        TypeCase{"TimestampNanosInAZone", arrow::timestamp(arrow::TimeUnit::NANO, "Europe/Berlin"),
                 "[1000000000, null, 0]", ColumnKind::kDateTime,
                 "1970-01-01 00:00:01|.|1970-01-01 00:00:00"},
        TypeCase{"Time32Seconds", arrow::time32(arrow::TimeUnit::SECOND), "[1, null, 86399]",
                 ColumnKind::kTime, "00:00:01|.|23:59:59"},
        TypeCase{"Time32Millis", arrow::time32(arrow::TimeUnit::MILLI), "[500, null, 0]",
                 ColumnKind::kTime, "00:00:00.5|.|00:00:00"},
        TypeCase{"Time64Micros", arrow::time64(arrow::TimeUnit::MICRO), "[500000, null, 0]",
                 ColumnKind::kTime, "00:00:00.5|.|00:00:00"},
        TypeCase{"Time64Nanos", arrow::time64(arrow::TimeUnit::NANO), "[3600000000000, null, 0]",
                 ColumnKind::kTime, "01:00:00|.|00:00:00"},
        TypeCase{"Duration", arrow::duration(arrow::TimeUnit::MILLI), "[1500, null, 0]",
                 ColumnKind::kNumber, "1.50|.|0.00"},
        TypeCase{"Decimal32", arrow::decimal32(5, 2), R"(["1.25", null, "-0.01"])",
                 ColumnKind::kNumber, "1.25|.|-0.01"},
        TypeCase{"Decimal64", arrow::decimal64(18, 2), R"(["1.25", null, "-0.01"])",
                 ColumnKind::kNumber, "1.25|.|-0.01"},
        TypeCase{"Decimal128", arrow::decimal128(38, 3),
                 R"(["12345678901234567890.125", null, "-0.001"])", ColumnKind::kNumber,
                 "12345678901234567168|.|-0.001"},
        TypeCase{
            "Decimal256", arrow::decimal256(76, 0),
            R"(["-1234567890123456789012345678901234567890123456789012345678901234567890", null, "0"])",
            ColumnKind::kNumber, "-1.2345678901234567e+69|.|0"}),
    [](const auto& tested) { return std::string(tested.param.fName); });

struct NestedCase {
    const char* fName;
    std::shared_ptr<arrow::DataType> fType;
    const char* fJson;
    const char* fTypeName;
};
void PrintTo(const NestedCase& nestedCase, std::ostream* out) { *out << nestedCase.fName; }
class NestedTypes : public testing::TestWithParam<NestedCase> {};

TEST_P(NestedTypes, AreLeftOutWithANote) {
    const DataSet data = ReadAll({BatchOf({{"a", FromJson(arrow::int32(), "[1]")},
                                           {"nested", FromJson(GetParam().fType, GetParam().fJson)},
                                           {"b", FromJson(arrow::int32(), "[2]")}})});
    ASSERT_EQ(data.ColumnCount(), 2);
    EXPECT_EQ(data.Variable(1).GetName(), "b");
    EXPECT_EQ(Values(data, 1), "2");
    ASSERT_EQ(data.Notes().size(), 1U);
    EXPECT_EQ(data.Notes()[0].fKind, DataNote::Kind::kUnusableColumn);
    EXPECT_EQ(data.Notes()[0].fText, std::string("'nested' was left out: columns of the type ") +
                                         GetParam().fTypeName + " cannot be used.");
}

INSTANTIATE_TEST_SUITE_P(
    All, NestedTypes,
    testing::Values(
        NestedCase{"List", arrow::list(arrow::int32()), "[[1, 2]]", "list"},
        NestedCase{"LargeList", arrow::large_list(arrow::int32()), "[[1, 2]]", "list"},
        NestedCase{"FixedSizeList", arrow::fixed_size_list(arrow::int32(), 2), "[[1, 2]]", "list"},
        NestedCase{"Struct", arrow::struct_({arrow::field("x", arrow::int32())}), R"([{"x": 1}])",
                   "struct"},
        NestedCase{"Map", arrow::map(arrow::utf8(), arrow::int32()), R"([[["k", 1]]])", "map"},
        NestedCase{"Union", arrow::dense_union({arrow::field("x", arrow::int32())}), "[[0, 1]]",
                   "union"},
        NestedCase{"Months", arrow::month_interval(), "[1]", "interval"}),
    [](const auto& tested) { return std::string(tested.param.fName); });

TEST(ArrowStream, AWeightThatIsNestedCannotBeUsed) {
    OpenOptions options;
    options.fWeight = "w";
    try {
        ReadAll({BatchOf({{"w", FromJson(arrow::list(arrow::int32()), "[[1]]")}})}, options);
        FAIL();
    } catch (const DataError& fault) {
        EXPECT_STREQ(fault.what(),
                     "--weight w: the column 'w' has the type list and cannot be used");
    }
}

TEST(ArrowStream, NoBatchesMeansNoRows) {
    auto reader =
        arrow::RecordBatchReader::Make({}, arrow::schema({arrow::field("a", arrow::int32())}))
            .ValueOrDie();
    ArrowArrayStream stream;
    ASSERT_TRUE(arrow::ExportRecordBatchReader(reader, &stream).ok());
    const DataSet data = ReadArrowStream(stream, "memory");
    EXPECT_EQ(data.ColumnCount(), 1);
    EXPECT_EQ(data.RowCount(), 0);
}

TEST(ArrowStream, NaNAndInfinityAreMissing) {
    arrow::DoubleBuilder builder;
    for (const double value :
         {1.0, std::nan(""), HUGE_VAL, -HUGE_VAL, -0.0, -std::numeric_limits<double>::max()}) {
        ASSERT_TRUE(builder.Append(value).ok());
    }
    const DataSet data = ReadAll({BatchOf({{"x", builder.Finish().ValueOrDie()}})});
    EXPECT_EQ(Values(data), "1|.|.|.|0|.");
    ASSERT_EQ(data.Notes().size(), 1U);
    EXPECT_EQ(data.Notes()[0].fCount, 3);
    EXPECT_EQ(data.Notes()[0].fFirstRow, 2);
    EXPECT_NE(data.Notes()[0].fText.find("First in row 3."), std::string::npos);
}

TEST(ArrowStream, IntegersFromTwoToThe53OnAreNoted) {
    const DataSet data =
        ReadAll({BatchOf({{"i", FromJson(arrow::int64(), "[9007199254740991, -9007199254740993]")},
                          {"u", FromJson(arrow::uint64(), "[18446744073709551615, 0]")},
                          {"d", FromJson(arrow::decimal128(38, 0), R"(["1", "9007199254740993"])")},
                          {"f", FromJson(arrow::float64(), "[1e300, 0]")}})});
    ASSERT_EQ(data.Notes().size(), 3U);
    EXPECT_EQ(data.Notes()[0].fFirstRow, 1);
    EXPECT_EQ(data.Notes()[1].fFirstRow, 0);
    EXPECT_EQ(data.Notes()[2].fFirstRow, 1);
}

TEST(ArrowStream, BytesThatAreNoTextAreReplaced) {
    arrow::BinaryBuilder builder;
    ASSERT_TRUE(builder.Append("a\xFF").ok());
    const DataSet data = ReadAll({BatchOf({{"x", builder.Finish().ValueOrDie()}})});
    EXPECT_EQ(Values(data), "a\xEF\xBF\xBD");
    ASSERT_EQ(data.Notes().size(), 1U);
    EXPECT_EQ(data.Notes()[0].fKind, DataNote::Kind::kUndecodable);
}

TEST(ArrowStream, ADecimalMayHaveANegativeScale) {
    arrow::Decimal128Builder builder(arrow::decimal128(3, -2));
    ASSERT_TRUE(builder.Append(arrow::Decimal128(123)).ok());
    const DataSet data = ReadAll({BatchOf({{"x", builder.Finish().ValueOrDie()}})});
    EXPECT_EQ(Values(data), "12300");
}

TEST(ArrowStream, ADictionaryOfItsOwnInEachBatchIsFollowed) {
    const auto type = arrow::dictionary(arrow::int8(), arrow::utf8());
    const DataSet data = ReadAll(
        {BatchOf({{"x", arrow::json::DictArrayFromJSONString(type, "[0, 1]", R"(["a", "c"])")
                            .ValueOrDie()}}),
         BatchOf({{"x", arrow::json::DictArrayFromJSONString(type, "[0, 1]", R"(["b", "a"])")
                            .ValueOrDie()}})});
    EXPECT_EQ(Values(data), "a|c|b|a");
    EXPECT_EQ(data.GetColumn(0).Categories().Strings(), (std::vector<std::string>{"a", "b", "c"}));
}

TEST(ArrowStream, EntriesThatNoRowHasAreNoCategories) {
    const auto type = arrow::dictionary(arrow::int8(), arrow::utf8());
    const DataSet data = ReadAll(
        {BatchOf({{"x", arrow::json::DictArrayFromJSONString(type, "[2, 2]", R"(["a", "b", "c"])")
                            .ValueOrDie()}})});
    EXPECT_EQ(data.GetColumn(0).Categories().Count(), 1);
}

TEST(ArrowStream, AnOrderedDictionaryIsOrdinal) {
    const auto type = arrow::dictionary(arrow::int8(), arrow::utf8(), true);
    const DataSet data = ReadAll({BatchOf(
        {{"x", arrow::json::DictArrayFromJSONString(type, "[0]", R"(["a"])").ValueOrDie()}})});
    EXPECT_EQ(data.Variable(0).GetMeasurementLevel(), kLevelOrdinal);
}

TEST(ArrowStream, AKeyOutsideItsDictionaryIsRefused) {
    const auto type = arrow::dictionary(arrow::int8(), arrow::utf8());
    const auto array = std::make_shared<arrow::DictionaryArray>(
        type, FromJson(arrow::int8(), "[5]"), FromJson(arrow::utf8(), R"(["a"])"));
    EXPECT_EQ(ReadFailure({BatchOf({{"x", array}})}),
              "memory: column 'x': an Arrow array is malformed: a key lies outside the dictionary");
}

TEST(ArrowStream, RowsThatAreNullAsAWholeAreMissing) {
    const auto type = arrow::struct_({arrow::field("x", arrow::int32())});
    const Array rows = FromJson(type, R"([{"x": 1}, null, {"x": 3}, {"x": 4}])")->Slice(1);
    // The C interface is filled by hand: the library's own reader has no null rows.
    struct Producer {
        Array fRows;
        bool fbGiven = false;
    };
    ArrowArrayStream stream{};
    stream.private_data = new Producer{rows};
    stream.get_schema = [](ArrowArrayStream* self, ArrowSchema* out) {
        return arrow::ExportType(*static_cast<Producer*>(self->private_data)->fRows->type(), out)
                       .ok()
                   ? 0
                   : EINVAL;
    };
    stream.get_next = [](ArrowArrayStream* self, ArrowArray* out) {
        auto& producer = *static_cast<Producer*>(self->private_data);
        if (std::exchange(producer.fbGiven, true)) {
            out->release = nullptr;
            return 0;
        }
        return arrow::ExportArray(*producer.fRows, out).ok() ? 0 : EINVAL;
    };
    stream.get_last_error = [](ArrowArrayStream*) -> const char* { return nullptr; };
    stream.release = [](ArrowArrayStream* self) {
        delete static_cast<Producer*>(self->private_data);
        self->release = nullptr;
    };
    EXPECT_EQ(Values(ReadArrowStream(stream, "memory")), ".|3|4");
}

TEST(ArrowStream, MoreRecordsThanCanBeCountedAreRefused) {
    ArrowArrayStream stream{};
    stream.get_schema = [](ArrowArrayStream*, ArrowSchema* out) {
        return arrow::ExportSchema(*arrow::schema({arrow::field("x", arrow::null())}), out).ok()
                   ? 0
                   : EINVAL;
    };
    stream.get_next = [](ArrowArrayStream*, ArrowArray* out) {
        const std::int64_t rows = std::int64_t{1} << 31;
        const auto batch =
            arrow::RecordBatch::Make(arrow::schema({arrow::field("x", arrow::null())}), rows,
                                     {std::make_shared<arrow::NullArray>(rows)});
        return arrow::ExportRecordBatch(*batch, out).ok() ? 0 : EINVAL;
    };
    stream.get_last_error = [](ArrowArrayStream*) -> const char* { return nullptr; };
    stream.release = [](ArrowArrayStream* self) { self->release = nullptr; };
    try {
        ReadArrowStream(stream, "memory");
        FAIL();
    } catch (const DataError& fault) {
        EXPECT_STREQ(fault.what(),
                     "memory: has more than 2147483647 records; split it into smaller files");
    }
}

TEST(ArrowStream, WhatTheSourceSaysOfAFaultIsPassedOn) {
    ArrowArrayStream stream{};
    stream.get_schema = [](ArrowArrayStream*, ArrowSchema*) { return EIO; };
    stream.get_last_error = [](ArrowArrayStream*) { return "the line went dead\nat noon"; };
    stream.release = [](ArrowArrayStream* self) { self->release = nullptr; };
    try {
        ReadArrowStream(stream, "memory");
        FAIL();
    } catch (const DataError& fault) {
        EXPECT_STREQ(fault.what(), "memory: cannot be read: the line went dead");
    }
}

TEST(ArrowStream, NamesMustBeDistinctAndThere) {
    const Array one = FromJson(arrow::int32(), "[1]");
    EXPECT_EQ(
        ReadFailure({BatchOf({{"a", one}, {"a", one}})}),
        "memory: several columns have the same name: 'a' (columns 1 and 2); give every column "
        "a name of its own");
    EXPECT_EQ(ReadFailure({BatchOf({{"a", one}, {"", one}})}),
              "memory: column 2 has no name; give every column a name");
}

TEST(ArrowStream, NaTextsHoldForStringsAndDictionariesOfStrings) {
    OpenOptions options;
    options.fvNaTexts = {"NA"};
    const auto type = arrow::dictionary(arrow::int8(), arrow::utf8());
    const DataSet data = ReadAll(
        {BatchOf({{"s", FromJson(arrow::utf8(), R"(["NA", "x"])")},
                  {"d", arrow::json::DictArrayFromJSONString(type, "[0, 1]", R"(["y", "NA"])")
                            .ValueOrDie()}})},
        options);
    EXPECT_EQ(Values(data, 0), ".|x");
    EXPECT_EQ(Values(data, 1), "y|.");
}

class DeclaredTypes : public testing::Test {
 protected:
    std::string Read(const Array& array, const std::string& type) {
        OpenOptions options;
        options.fSchemaPath = fFiles.Write(
            "schema.json", R"({"fields": [{"name": "x", "type": ")" + type + R"("}]})");
        try {
            const DataSet data = ReadAll({BatchOf({{"x", array}})}, options);
            fKind = data.Kind(0);
            return Values(data);
        } catch (const DataError& fault) {
            const std::string message = fault.what();
            return message.substr(message.find("the type"));
        }
    }
    TemporaryFiles fFiles;
    ColumnKind fKind = ColumnKind::kString;
};

TEST_F(DeclaredTypes, MustAgreeWithTheColumn) {
    EXPECT_EQ(Read(FromJson(arrow::utf8(), R"(["1"])"), "number"),
              "the type is number, but the column of memory holds texts; correct the type");
    EXPECT_EQ(Read(FromJson(arrow::int32(), "[1]"), "string"),
              "the type is string, but the column of memory holds numbers; correct the type");
    EXPECT_EQ(Read(FromJson(arrow::date32(), "[1]"), "datetime"),
              "the type is datetime, but the column of memory holds dates; correct the type");
    EXPECT_EQ(Read(FromJson(arrow::float64(), "[1, 2.5]"), "integer"),
              "the type is integer, but row 2 of memory has 2.5; correct the type");
    EXPECT_EQ(Read(FromJson(arrow::int8(), "[1, 0, 2]"), "boolean"),
              "the type is boolean, but row 3 of memory has 2; correct the type");
}

TEST_F(DeclaredTypes, NumbersMayBeDeclaredBooleans) {
    EXPECT_EQ(Read(FromJson(arrow::int8(), "[1, null, 0]"), "boolean"), "1|.|0");
    EXPECT_EQ(fKind, ColumnKind::kBoolean);
    EXPECT_EQ(Read(FromJson(arrow::float64(), "[1, null, 3]"), "integer"), "1|.|3");
}

// ---- files ----

std::shared_ptr<arrow::Table> SampleTable(std::int64_t rows) {
    arrow::Int32Builder numbers;
    arrow::StringBuilder texts;
    arrow::StringDictionaryBuilder categories;
    for (std::int64_t row = 0; row < rows; ++row) {
        EXPECT_TRUE(
            (row % 7 == 3 ? numbers.AppendNull() : numbers.Append(static_cast<std::int32_t>(row)))
                .ok());
        EXPECT_TRUE(texts.Append("text " + std::to_string(row % 500)).ok());
        EXPECT_TRUE(categories.Append(row % 2 == 0 ? "even" : "odd").ok());
    }
    const Array n = numbers.Finish().ValueOrDie();
    const Array t = texts.Finish().ValueOrDie();
    const Array c = categories.Finish().ValueOrDie();
    return arrow::Table::Make(
        arrow::schema({arrow::field("n", n->type()), arrow::field("t", t->type()),
                       arrow::field("c", c->type())}),
        {n, t, c});
}

std::string ParquetBytes(const arrow::Table& table, std::int64_t rowGroup = 1 << 20) {
    auto sink = arrow::io::BufferOutputStream::Create().ValueOrDie();
    EXPECT_TRUE(parquet::arrow::WriteTable(
                    table, arrow::default_memory_pool(), sink, rowGroup,
                    parquet::default_writer_properties(),
                    parquet::ArrowWriterProperties::Builder().store_schema()->build())
                    .ok());
    return sink->Finish().ValueOrDie()->ToString();
}

std::string IpcBytes(const arrow::Table& table, bool asStream) {
    auto sink = arrow::io::BufferOutputStream::Create().ValueOrDie();
    auto writer = (asStream ? arrow::ipc::MakeStreamWriter(sink, table.schema())
                            : arrow::ipc::MakeFileWriter(sink, table.schema()))
                      .ValueOrDie();
    EXPECT_TRUE(writer->WriteTable(table, 1000).ok());
    EXPECT_TRUE(writer->Close().ok());
    return sink->Finish().ValueOrDie()->ToString();
}

enum class FileForm { kParquet, kIpcFile, kIpcStream };
class ArrowFiles : public testing::TestWithParam<FileForm> {
 protected:
    std::string Bytes(const arrow::Table& table) const {
        return GetParam() == FileForm::kParquet
                   ? ParquetBytes(table, 30000)
                   : IpcBytes(table, GetParam() == FileForm::kIpcStream);
    }
    TemporaryFiles fFiles;
};

TEST_P(ArrowFiles, AreToldByTheirBytes) {
    for (const std::int64_t rows : {0, 1, 65535, 65536, 65537}) {
        const std::string path = fFiles.Write("data", Bytes(*SampleTable(rows)));
        const DataSet data = OpenDataSet(path);
        ASSERT_EQ(data.ColumnCount(), 3);
        ASSERT_EQ(data.RowCount(), rows);
        EXPECT_EQ(data.SourceName(), path);
        for (std::int64_t row = 0; row < rows; row += 1 + rows / 1000) {
            ASSERT_EQ(data.GetColumn(0).Value(row),
                      KoltObs(row % 7 == 3 ? MCMV::gMissingValue : static_cast<double>(row)));
            ASSERT_EQ(data.GetColumn(1).Value(row), KoltObs("text " + std::to_string(row % 500)));
            ASSERT_EQ(data.GetColumn(2).Value(row),
                      KoltObs(std::string(row % 2 == 0 ? "even" : "odd")));
        }
    }
}

TEST_P(ArrowFiles, CutShortAreRefused) {
    const std::string bytes = Bytes(*SampleTable(50));
    for (std::size_t length = 8; length < bytes.size(); length += 1 + bytes.size() / 400) {
        const std::string path = fFiles.Write("data", std::string_view(bytes).substr(0, length));
        try {
            const DataSet data = OpenDataSet(path);
            // A stream that ends between two messages is a whole stream.
            EXPECT_EQ(GetParam(), FileForm::kIpcStream) << length;
            EXPECT_EQ(data.RowCount() % 50, 0);
        } catch (const DataError& fault) {
            EXPECT_EQ(fault.GetKind(), DataError::Kind::kContent);
            EXPECT_EQ(std::string(fault.what()).find('\n'), std::string::npos);
            EXPECT_EQ(std::string(fault.what()).find(path), 0U);
        }
    }
}

// Every outcome but a crash is right: the flip may hit a value.
TEST_P(ArrowFiles, FlippedBitsNeverCrash) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::string bytes = Bytes(*SampleTable(50));
    int refused = 0;
    int taken = 0;
    for (int flip = 0; flip < 500; ++flip) {
        std::string damaged = bytes;
        damaged[random() % damaged.size()] ^= static_cast<char>(1 << (random() % 8));
        const std::string path = fFiles.Write("data", damaged);
        try {
            const DataSet data = OpenDataSet(path);
            std::int64_t valid = 0;
            for (std::int32_t index = 0; index < data.ColumnCount(); ++index) {
                valid +=
                    data.GetColumn(index).ValidCount() + data.GetColumn(index).Categories().Count();
            }
            EXPECT_GE(valid, 0);
            ++taken;
        } catch (const DataError&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(taken, 0);
}

INSTANTIATE_TEST_SUITE_P(Forms, ArrowFiles,
                         testing::Values(FileForm::kParquet, FileForm::kIpcFile,
                                         FileForm::kIpcStream),
                         [](const auto& tested) {
                             return std::string(tested.param == FileForm::kParquet   ? "Parquet"
                                                : tested.param == FileForm::kIpcFile ? "IpcFile"
                                                                                     : "IpcStream");
                         });

TEST(ParquetFile, CutShortSaysSo) {
    const TemporaryFiles files;
    const std::string bytes = ParquetBytes(*SampleTable(5));
    const std::string path =
        files.Write("data.parquet", std::string_view(bytes).substr(0, bytes.size() / 2));
    try {
        OpenDataSet(path);
        FAIL();
    } catch (const DataError& fault) {
        EXPECT_EQ(
            std::string(fault.what()).find(path + ": the Parquet file is damaged or cut short"), 0U)
            << fault.what();
    }
}

TEST(ParquetFile, ASchemaBesideItIsUsed) {
    const TemporaryFiles files;
    files.Write("data.parquet.schema.json",
                R"({"fields": [{"name": "n", "title": "A number", "missingValues": [4]}]})");
    const DataSet data = OpenDataSet(files.Write("data.parquet", ParquetBytes(*SampleTable(5))));
    EXPECT_EQ(data.Variable(0).GetLabel(), "A number");
    EXPECT_TRUE(data.Variable(0).IsUserMissing(4.0));
}

}  // namespace
}  // namespace embedded
