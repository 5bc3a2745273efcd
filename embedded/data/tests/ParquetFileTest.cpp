// What is read straight from the pages of a Parquet file is what batches of the same table give.
#include "embedded/data/ParquetFile.h"

#include <arrow/api.h>
#include <arrow/io/api.h>
#include <arrow/ipc/api.h>
#include <arrow/util/compression.h>
#include <gtest/gtest.h>
#include <parquet/arrow/writer.h>

#include <array>
#include <cstring>
#include <random>

#include "embedded/data/OpenDataSet.h"
#include "embedded/data/tests/TemporaryFiles.h"
#include "tests/support/RandomSeed.h"

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

// Any way in which a writer may lay the columns of RandomTable out.
std::shared_ptr<parquet::WriterProperties> RandomProperties(std::mt19937& random,
                                                            const arrow::Schema& schema) {
    using parquet::Compression;
    using parquet::Encoding;
    parquet::WriterProperties::Builder properties;
    const auto pick = [&random](const auto& list) { return list[random() % list.size()]; };
    properties.data_page_version(
        pick(std::array{parquet::ParquetDataPageVersion::V1, parquet::ParquetDataPageVersion::V2}));
    properties.data_pagesize(pick(std::array{100, 3000, 1 << 20}));
    properties.write_batch_size(pick(std::array{17, 1024}));
    properties.dictionary_pagesize_limit(pick(std::array{50, 4096, 1 << 20}));
    for (const auto& field : schema.fields()) {
        std::vector<Encoding::type> encodings = {Encoding::PLAIN};
        switch (field->type()->id()) {
            case arrow::Type::BOOL:
                encodings = {Encoding::PLAIN, Encoding::RLE};
                break;
            case arrow::Type::STRING:
            case arrow::Type::BINARY:
                encodings = {Encoding::PLAIN, Encoding::DELTA_LENGTH_BYTE_ARRAY,
                             Encoding::DELTA_BYTE_ARRAY};
                break;
            case arrow::Type::DOUBLE:
            case arrow::Type::FLOAT:
                encodings = {Encoding::PLAIN, Encoding::BYTE_STREAM_SPLIT};
                break;
            default:
                encodings = {Encoding::PLAIN, Encoding::DELTA_BINARY_PACKED,
                             Encoding::BYTE_STREAM_SPLIT};
        }
        const std::string& name = field->name();
        properties.encoding(name, pick(encodings));
        if (random() % 2 == 0) {
            properties.disable_dictionary(name);
        }
        const Compression::type codec =
            pick(std::array{Compression::UNCOMPRESSED, Compression::SNAPPY, Compression::GZIP,
                            Compression::BROTLI, Compression::ZSTD, Compression::LZ4});
        if (arrow::util::Codec::IsAvailable(codec)) {
            properties.compression(name, codec);
        }
    }
    return properties.build();
}

std::string ParquetOf(const arrow::Table& table, std::int64_t groupRows,
                      const std::shared_ptr<parquet::WriterProperties>& properties) {
    const auto out = arrow::io::BufferOutputStream::Create().ValueOrDie();
    EXPECT_TRUE(
        parquet::arrow::WriteTable(table, arrow::default_memory_pool(), out, groupRows, properties)
            .ok());
    return out->Finish().ValueOrDie()->ToString();
}

std::string ParquetOf(const arrow::Table& table, std::int64_t groupRows, bool dictionaries) {
    parquet::WriterProperties::Builder properties;
    if (!dictionaries) {
        properties.disable_dictionary();
    }
    properties.dictionary_pagesize_limit(4096);
    return ParquetOf(table, groupRows, properties.build());
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

// Reads with several threads in memory, and with one thread beyond it.
void ExpectToReadAs(const DataSet& expected, const std::string& path) {
    for (const std::int64_t memory : {0, 1}) {
        OpenOptions options;
        options.fMemory = memory;
        options.fThreads = memory == 0 ? 3 : 1;
        ExpectSame(OpenDataSet(path, options), expected);
    }
}

TEST(ParquetPages, GiveWhatBatchesGive) {
    std::mt19937 random(testsupport::RandomSeed());
    const TemporaryFiles files;
    for (const std::int64_t rows : {0, 1, 1000, 100000}) {
        const std::shared_ptr<arrow::Table> table = RandomTable(random, rows);
        const DataSet expected = OpenDataSet(files.Write("table.arrows", IpcOf(*table)), {});
        for (const std::int64_t groupRows : {std::int64_t{1} << 20, std::int64_t{30011}}) {
            for (const bool dictionaries : {true, false}) {
                ExpectToReadAs(expected, files.Write("table.parquet",
                                                     ParquetOf(*table, groupRows, dictionaries)));
            }
        }
    }
}

TEST(ParquetPages, GiveWhatBatchesGiveHoweverTheyAreWritten) {
    std::mt19937 random(testsupport::RandomSeed());
    const TemporaryFiles files;
    for (int round = 0; round < 30; ++round) {
        const std::shared_ptr<arrow::Table> table = RandomTable(random, random() % 2000);
        const DataSet expected = OpenDataSet(files.Write("table.arrows", IpcOf(*table)), {});
        const std::int64_t groupRows = 1 + static_cast<std::int64_t>(random() % 1500);
        ExpectToReadAs(
            expected,
            files.Write("table.parquet",
                        ParquetOf(*table, groupRows, RandomProperties(random, *table->schema()))));
        if (HasFailure()) {
            return;
        }
    }
}

// More rows than are read at a time come before the first value, and more values than a byte has
// room for.
TEST(ParquetPages, MayBeginWithoutAValue) {
    std::mt19937 random(1);
    constexpr std::int64_t kNone = 70000;
    arrow::StringBuilder texts;
    arrow::Int32Builder numbers;
    ASSERT_TRUE(texts.AppendNulls(kNone).ok());
    ASSERT_TRUE(numbers.AppendNulls(kNone).ok());
    for (int value = 0; value < 1000; ++value) {
        ASSERT_TRUE(texts.Append(std::to_string(value % 500)).ok());
        ASSERT_TRUE(numbers.Append(value % 500).ok());
    }
    const auto text = texts.Finish().ValueOrDie();
    const auto number = numbers.Finish().ValueOrDie();
    const auto table = arrow::Table::Make(
        arrow::schema({arrow::field("t", text->type()), arrow::field("n", number->type())}),
        {text, number});
    const TemporaryFiles files;
    const DataSet expected = OpenDataSet(files.Write("table.arrows", IpcOf(*table)), {});
    for (const bool dictionaries : {true, false}) {
        ExpectToReadAs(expected,
                       files.Write("table.parquet", ParquetOf(*table, 1 << 20, dictionaries)));
    }
}

// Every outcome but a crash is right: what was hit may be a value.
TEST(ParquetPages, DamagedOnesNeverCrash) {
    std::mt19937 random(testsupport::RandomSeed());
    const TemporaryFiles files;
    int refused = 0;
    int taken = 0;
    for (int round = 0; round < 20; ++round) {
        const std::shared_ptr<arrow::Table> table = RandomTable(random, 1 + random() % 300);
        const std::string bytes =
            ParquetOf(*table, 100, RandomProperties(random, *table->schema()));
        for (int damage = 0; damage < 25; ++damage) {
            std::string damaged = bytes;
            // Half of them in the description of the file, at its end.
            const std::size_t from = random() % 2 == 0 ? 4 : damaged.size() * 3 / 4;
            for (std::size_t left = 1 + random() % 3; left > 0; --left) {
                char& letter = damaged[from + random() % (damaged.size() - from - 8)];
                letter = random() % 2 == 0 ? static_cast<char>(letter ^ (1 << (random() % 8)))
                                           : static_cast<char>(random());
            }
            try {
                OpenOptions options;
                options.fThreads = 2;
                const DataSet data = OpenDataSet(files.Write("table.parquet", damaged), options);
                for (std::int32_t at = 0; at < data.ColumnCount(); ++at) {
                    EXPECT_LE(data.GetColumn(at).ValidCount(), data.RowCount());
                }
                ++taken;
            } catch (const DataError& fault) {
                EXPECT_EQ(std::string(fault.what()).find('\n'), std::string::npos);
                ++refused;
            }
        }
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(taken, 0);
}

// Rows are read by the counts of their groups, so that these are what too many is told from.
TEST(ParquetPages, OfMoreRowsThanTheTotalSaysAreCounted) {
    std::mt19937 random(1);
    const std::int64_t rows = 123457;
    const auto column = ArrayOf<arrow::Int32Builder>(
        random, rows, 0, [](std::int64_t row) { return static_cast<std::int32_t>(row % 3); });
    const auto table =
        arrow::Table::Make(arrow::schema({arrow::field("x", column->type())}), {column});
    // A field after its neighbour, of 64 bits, and its number in sevens of bits, lowest first.
    const auto count = [](std::int64_t number) {
        std::string bytes(1, '\x16');
        std::uint64_t left = static_cast<std::uint64_t>(number) << 1U;
        for (; left >= 128; left >>= 7U) {
            bytes += static_cast<char>(left % 128 + 128);
        }
        return bytes + static_cast<char>(left);
    };
    std::string bytes = ParquetOf(*table, rows, false);
    EXPECT_EQ(ParquetFile::Open(bytes, "table")->RowCount(), rows);
    // The file's count comes first, that of its only group last.
    const std::size_t at = bytes.rfind(count(rows));
    ASSERT_NE(at, std::string::npos);
    const std::size_t before = bytes.size();
    bytes.replace(at, count(rows).size(), count(3'000'000'000));
    // The description's length stands before the last four letters.
    std::uint32_t length = 0;
    char* const place = bytes.data() + bytes.size() - 8;
    std::memcpy(&length, place, sizeof length);
    length += static_cast<std::uint32_t>(bytes.size() - before);
    std::memcpy(place, &length, sizeof length);

    EXPECT_EQ(ParquetFile::Open(bytes, "table")->RowCount(), std::int64_t{1} << 31);
    const TemporaryFiles files;
    try {
        OpenDataSet(files.Write("table.parquet", bytes));
        FAIL();
    } catch (const DataError& fault) {
        EXPECT_NE(std::string(fault.what()).find("has more than 2147483647 records"),
                  std::string::npos)
            << fault.what();
    }
}

// Numbers, booleans and texts are read straight from the pages, whether these have a dictionary or
// not, and other forms not at all.
TEST(ParquetPages, LeaveOtherFormsToTheBatches) {
    std::mt19937 random(1);
    for (const bool dictionaries : {true, false}) {
        const std::string bytes = ParquetOf(*RandomTable(random, 5000), 5000, dictionaries);
        const std::unique_ptr<ParquetFile> file = ParquetFile::Open(bytes, "table");
        EXPECT_EQ(file->RowCount(), 5000);
        const std::size_t fields = 16;
        const auto read =
            file->ReadPages(std::vector<bool>(fields, true), std::vector<TextSet>(fields),
                            std::make_shared<ColumnMemory>(), 2);
        ASSERT_EQ(read.size(), fields);
        for (std::size_t field = 0; field + 1 < fields; ++field) {
            EXPECT_TRUE(read[field].has_value()) << field;
        }
        EXPECT_FALSE(read.back().has_value());
    }
}

}  // namespace
}  // namespace embedded
