// What is read straight from the pages of a Parquet file is what batches of the same table give.
#include "embedded/data/ParquetFile.h"

#include <arrow/api.h>
#include <arrow/io/api.h>
#include <arrow/ipc/api.h>
#include <gtest/gtest.h>
#include <parquet/arrow/writer.h>

#include <random>

#include "embedded/data/OpenDataSet.h"
#include "embedded/data/tests/TemporaryFiles.h"

namespace embedded {
namespace {

template <class Builder, class Value>
std::shared_ptr<arrow::Array> ArrayOf(std::mt19937& random, std::int64_t rows, unsigned missing,
                                      Value value) {
    Builder builder;
    for (std::int64_t row = 0; row < rows; ++row) {
        const arrow::Status status = missing > 0 && random() % missing == 0
                                         ? builder.AppendNull()
                                         : builder.Append(value(row));
        EXPECT_TRUE(status.ok());
    }
    return builder.Finish().ValueOrDie();
}

std::shared_ptr<arrow::Table> RandomTable(std::mt19937& random, std::int64_t rows) {
    arrow::FieldVector fields;
    arrow::ArrayVector arrays;
    const auto add = [&](const std::string& name, std::shared_ptr<arrow::Array> array,
                         bool nullable = true) {
        fields.push_back(arrow::field(name, array->type(), nullable));
        arrays.push_back(std::move(array));
    };
    const auto whole = [&](std::int64_t) { return static_cast<std::int32_t>(random() % 9) - 4; };
    const auto odd = [&](std::int64_t row) {
        return row % 97 == 5   ? std::numeric_limits<double>::infinity()
               : row % 89 == 7 ? std::numeric_limits<double>::quiet_NaN()
               : row % 5 == 0  ? -0.0
                               : static_cast<double>(random()) / 64 - 1e6;
    };
    add("double", ArrayOf<arrow::DoubleBuilder>(random, rows, 0, odd));
    add("gaps", ArrayOf<arrow::DoubleBuilder>(random, rows, 3, odd));
    add("required", ArrayOf<arrow::DoubleBuilder>(random, rows, 0, odd), false);
    add("few", ArrayOf<arrow::DoubleBuilder>(random, rows, 9, [&](std::int64_t) {
            return static_cast<int>(random() % 7) / 4.0;
        }));
    add("float", ArrayOf<arrow::FloatBuilder>(random, rows, 9, [&](std::int64_t) {
            return static_cast<float>(random()) / 7;
        }));
    add("int8", ArrayOf<arrow::Int8Builder>(random, rows, 9, [&](std::int64_t row) {
            return static_cast<std::int8_t>(whole(row));
        }));
    add("uint16", ArrayOf<arrow::UInt16Builder>(random, rows, 9, [&](std::int64_t) {
            return static_cast<std::uint16_t>(random());
        }));
    add("int32", ArrayOf<arrow::Int32Builder>(random, rows, 9, whole));
    add("uint32", ArrayOf<arrow::UInt32Builder>(random, rows, 9, [&](std::int64_t) {
            return static_cast<std::uint32_t>(random());
        }));
    add("int64", ArrayOf<arrow::Int64Builder>(random, rows, 9, [&](std::int64_t) {
            return (std::int64_t{1} << 53) + static_cast<std::int64_t>(random() % 3) - 1;
        }));
    add("uint64", ArrayOf<arrow::UInt64Builder>(random, rows, 9, [&](std::int64_t) {
            return std::uint64_t{random()} << 32U;
        }));
    add("bool", ArrayOf<arrow::BooleanBuilder>(random, rows, 9,
                                               [&](std::int64_t) { return random() % 2 == 0; }));
    add("text", ArrayOf<arrow::StringBuilder>(random, rows, 9, [&](std::int64_t) {
            return "text " + std::to_string(random() % 12);
        }));
    add("bytes", ArrayOf<arrow::BinaryBuilder>(random, rows, 0, [&](std::int64_t) {
            return std::string(random() % 2 == 0 ? "\xFF" : "NA");
        }));
    add("names", ArrayOf<arrow::StringBuilder>(
                     random, rows, 9, [&](std::int64_t) { return std::to_string(random()); }));
    add("day", ArrayOf<arrow::Date32Builder>(random, rows, 9, whole));
    return arrow::Table::Make(arrow::schema(fields), arrays, rows);
}

std::string ParquetOf(const arrow::Table& table, std::int64_t groupRows, bool dictionaries) {
    const auto out = arrow::io::BufferOutputStream::Create().ValueOrDie();
    parquet::WriterProperties::Builder properties;
    if (!dictionaries) {
        properties.disable_dictionary();
    }
    properties.dictionary_pagesize_limit(4096);
    EXPECT_TRUE(parquet::arrow::WriteTable(table, arrow::default_memory_pool(), out, groupRows,
                                           properties.build())
                    .ok());
    return out->Finish().ValueOrDie()->ToString();
}

std::string IpcOf(const arrow::Table& table) {
    const auto out = arrow::io::BufferOutputStream::Create().ValueOrDie();
    const auto writer = arrow::ipc::MakeStreamWriter(out, table.schema()).ValueOrDie();
    EXPECT_TRUE(writer->WriteTable(table).ok());
    EXPECT_TRUE(writer->Close().ok());
    return out->Finish().ValueOrDie()->ToString();
}

void ExpectSame(const DataSet& first, const DataSet& second) {
    ASSERT_EQ(first.ColumnCount(), second.ColumnCount());
    ASSERT_EQ(first.RowCount(), second.RowCount());
    ASSERT_EQ(first.Notes().size(), second.Notes().size());
    for (std::size_t note = 0; note < first.Notes().size(); ++note) {
        EXPECT_EQ(first.Notes()[note].fText, second.Notes()[note].fText);
    }
    for (std::int32_t at = 0; at < first.ColumnCount(); ++at) {
        SCOPED_TRACE(first.Variable(at).GetName());
        const Column& one = first.GetColumn(at);
        const Column& other = second.GetColumn(at);
        EXPECT_EQ(first.Kind(at), second.Kind(at));
        EXPECT_EQ(first.Variable(at).GetMeasurementLevel(),
                  second.Variable(at).GetMeasurementLevel());
        ASSERT_EQ(one.ValidCount(), other.ValidCount());
        ASSERT_EQ(one.Categories().Strings(), other.Categories().Strings());
        ASSERT_EQ(one.Categories().Numbers(), other.Categories().Numbers());
        ColumnBuffer oneBuffer;
        ColumnBuffer otherBuffer;
        for (std::int32_t chunk = 0; chunk < one.ChunkCount(); ++chunk) {
            const CodeSpan codes = one.Codes(chunk, oneBuffer);
            const CodeSpan otherCodes = other.Codes(chunk, otherBuffer);
            ASSERT_EQ(codes.Size(), otherCodes.Size());
            for (std::size_t row = 0; row < codes.Size(); ++row) {
                ASSERT_EQ(codes[row], otherCodes[row]);
            }
        }
    }
}

TEST(ParquetPages, GiveWhatBatchesGive) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const TemporaryFiles files;
    for (const std::int64_t rows : {0, 1, 1000, 100000}) {
        const std::shared_ptr<arrow::Table> table = RandomTable(random, rows);
        const DataSet expected = OpenDataSet(files.Write("table.arrows", IpcOf(*table)), {});
        for (const std::int64_t groupRows : {std::int64_t{1} << 20, std::int64_t{30011}}) {
            for (const bool dictionaries : {true, false}) {
                const std::string path =
                    files.Write("table.parquet", ParquetOf(*table, groupRows, dictionaries));
                for (const std::int64_t memory : {0, 1}) {
                    OpenOptions options;
                    options.fMemory = memory;
                    options.fTempPath = testing::TempDir();
                    options.fThreads = memory == 0 ? 3 : 1;
                    ExpectSame(OpenDataSet(path, options), expected);
                }
            }
        }
    }
}

// Columns with a place in a dictionary are read without strings, of other forms not at all.
TEST(ParquetPages, LeaveOtherFormsToTheBatches) {
    std::mt19937 random(1);
    const std::string bytes = ParquetOf(*RandomTable(random, 5000), 5000, true);
    const std::unique_ptr<ParquetFile> file = ParquetFile::Open(bytes, "table");
    const std::size_t fields = 16;
    const auto read = file->ReadPages(std::vector<bool>(fields, true), std::vector<TextSet>(fields),
                                      std::make_shared<ColumnMemory>(), 2);
    ASSERT_EQ(read.size(), fields);
    for (std::size_t field = 0; field < 14; ++field) {
        EXPECT_TRUE(read[field].has_value()) << field;
    }
    EXPECT_FALSE(read[14].has_value());  // its dictionary became too long for the writer
    EXPECT_FALSE(read[15].has_value());
}

}  // namespace
}  // namespace embedded
