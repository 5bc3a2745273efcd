// Writing data sets and reading them again.
#include "embedded/data/SaveDataSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <ostream>
#include <random>
#include <set>
#include <span>
#include <sstream>
#include <string>
#include <vector>

#include "embedded/data/ArrowExport.h"
#include "embedded/data/DataSetBuilder.h"
#include "embedded/data/Describe.h"
#include "embedded/data/FileWriters.h"
#include "embedded/data/OpenDataSet.h"
#include "embedded/data/tests/TemporaryFiles.h"
#include "tests/support/RandomSeed.h"

namespace embedded {
namespace {

using MCMV::gMissingValue;

std::string Saved(const DataSet& data, SaveFormat format = SaveFormat::kCsv,
                  std::int32_t threads = 0) {
    std::ostringstream file;
    SaveDataSet(data, format, file, "memory", threads);
    return file.str();
}

std::string FaultOf(const std::function<void()>& act) {
    try {
        act();
    } catch (const DataError& fault) {
        return fault.what();
    }
    return "none";
}

TEST(SaveDataSet, WritesNumbersWithAllTheirDigitsAndWholeOnesWithoutAPoint) {
    EXPECT_EQ(Saved(DataSetBuilder()
                        .Numbers("x", {0.1, 100000, -3, gMissingValue, 1e300, 0.0001, 1.0 / 3,
                                       123456789012345})
                        .Numbers("y", {1, 2, 3, 4, 5, 6, 7, 8})
                        .Build()),
              "x,y\n0.1,1\n100000,2\n-3,3\n,4\n1e+300,5\n0.0001,6\n0.3333333333333333,7\n"
              "123456789012345,8\n");
}

TEST(SaveDataSet, QuotesTextsWhereTheyNeedIt) {
    EXPECT_EQ(Saved(DataSetBuilder()
                        .Strings("a,b", {"plain", "with, comma", "a \"quote\"", "two\nlines",
                                         " blank", "", std::nullopt})
                        .Strings("c", {"1", "2", "3", "4", "5", "6", "7"})
                        .Build()),
              "\"a,b\",c\nplain,1\n\"with, comma\",2\n\"a \"\"quote\"\"\",3\n\"two\nlines\",4\n"
              "\" blank\",5\n\"\",6\n,7\n");
}

TEST(SaveDataSet, TabsPartTheCellsOfATsvFile) {
    EXPECT_EQ(Saved(DataSetBuilder().Strings("a", {"x,y", "x\ty"}).Numbers("b", {1, 2}).Build(),
                    SaveFormat::kTsv),
              "a\tb\nx,y\t1\n\"x\ty\"\t2\n");
}

TEST(SaveDataSet, WritesDatesTimesAndBooleansAsSuch) {
    EXPECT_EQ(Saved(DataSetBuilder()
                        .Numbers("d", {0, 19000})
                        .Kind(ColumnKind::kDate)
                        .Numbers("dt", {86399.5, -1})
                        .Kind(ColumnKind::kDateTime)
                        .Numbers("t", {3661, gMissingValue})
                        .Kind(ColumnKind::kTime)
                        .Numbers("b", {1, 0})
                        .Kind(ColumnKind::kBoolean)
                        .Build()),
              "d,dt,t,b\n1970-01-01,1970-01-01 23:59:59.5,01:01:01,true\n"
              "2022-01-08,1969-12-31 23:59:59,,false\n");
}

TEST(SaveDataSet, PartsOfASecondAreWrittenAsFarAsTheyAreRead) {
    EXPECT_EQ(Saved(DataSetBuilder()
                        .Numbers("dt", {0.123456789, -0.000001})
                        .Kind(ColumnKind::kDateTime)
                        .Build()),
              "dt\n1970-01-01 00:00:00.123456789\n1969-12-31 23:59:59.999999\n")
        << "no text is read as exactly -0.000001; the nearest is written";
}

TEST(SaveDataSet, ADateWithoutACalendarFormIsANumber) {
    EXPECT_EQ(Saved(DataSetBuilder().Numbers("d", {0.5, 1e9}).Kind(ColumnKind::kDate).Build()),
              "d\n0.5\n1000000000\n");
}

TEST(SaveDataSet, UserMissingValuesAreWrittenAsTheyStand) {
    EXPECT_EQ(
        Saved(
            DataSetBuilder().Numbers("x", {1, -9}).Missing({false, 0, 0, {KoltObs(-9.0)}}).Build()),
        "x\n1\n-9\n");
}

TEST(SaveDataSet, ADataSetWithoutCasesKeepsItsNames) {
    const DataSet data = DataSetBuilder().Numbers("x", {}).Strings("s", {}).Build();
    EXPECT_EQ(Saved(data), "x,s\n");
}

struct NameCase {
    const char* fPath;
    SaveFormat fFormat;
};
void PrintTo(const NameCase& nameCase, std::ostream* out) { *out << nameCase.fPath; }
class FormatByName : public testing::TestWithParam<NameCase> {};
TEST_P(FormatByName, IsFound) { EXPECT_EQ(SaveFormatOf(GetParam().fPath), GetParam().fFormat); }
INSTANTIATE_TEST_SUITE_P(Names, FormatByName,
                         testing::Values(NameCase{"a.csv", SaveFormat::kCsv},
                                         NameCase{"a.b.TSV", SaveFormat::kTsv},
                                         NameCase{"/x.y/a.Parquet", SaveFormat::kParquet},
                                         NameCase{"a.arrow", SaveFormat::kArrow},
                                         NameCase{"a.feather", SaveFormat::kArrow}));

TEST(SaveDataSet, AnUnknownNameIsRefusedWithTheOnesThatServe) {
    EXPECT_EQ(FaultOf([] { SaveFormatOf("a.csv/data.xls"); }),
              "a.csv/data.xls: the format of a data file is told by its name; give it the ending "
              ".csv, .tsv, .parquet, .arrow or .feather");
}

TEST(SaveDataSet, AFileThatCannotBeMadeIsNamedWithTheReason) {
    const TemporaryFiles files;
    const std::string path = files.Path("none/data.csv");
    const DataSet data = DataSetBuilder().Numbers("x", {1}).Build();
    EXPECT_EQ(FaultOf([&] { SaveDataSet(data, SaveFormat::kCsv, path); }),
              path + ": cannot be written: No such file or directory");
}

TEST(SaveDataSet, AFullDeviceIsAnErrorInEveryFormat) {
    const DataSet data = DataSetBuilder().Numbers("x", std::vector<double>(10000, 1.5)).Build();
    for (const SaveFormat format : {SaveFormat::kCsv, SaveFormat::kParquet, SaveFormat::kArrow}) {
        const std::string fault = FaultOf([&] { SaveDataSet(data, format, "/dev/full"); });
        EXPECT_EQ(fault.find("/dev/full: cannot be written: "), 0U) << fault;
    }
}

// ---- round trips ----

class RoundTrip : public testing::TestWithParam<const char*> {
 protected:
    // Saved and opened again; with the schema of what was saved if asked for.
    DataSet Again(const DataSet& data, bool withSchema) const {
        const TemporaryFiles files;
        const std::string path = files.Path(std::string("data") + GetParam());
        SaveDataSet(data, SaveFormatOf(path), path);
        if (withSchema) {
            std::ofstream(path + ".schema.json", std::ios::binary) << SchemaOf(data);
        }
        return OpenDataSet(path);
    }
};

void ExpectSameValues(const DataSet& data, const DataSet& again) {
    ASSERT_EQ(again.ColumnCount(), data.ColumnCount());
    ASSERT_EQ(again.RowCount(), data.RowCount());
    for (std::int32_t i = 0; i < data.ColumnCount(); ++i) {
        EXPECT_EQ(again.Variable(i).GetName(), data.Variable(i).GetName());
        EXPECT_EQ(again.Kind(i), data.Kind(i)) << data.Variable(i).GetName();
        for (std::int64_t row = 0; row < data.RowCount(); ++row) {
            ASSERT_EQ(again.GetColumn(i).Value(row), data.GetColumn(i).Value(row))
                << data.Variable(i).GetName() << " in row " << row;
        }
    }
}

DataSet Everything() {
    return DataSetBuilder()
        .Numbers("n", {0.1, -9, gMissingValue, 95, 5e-324})
        .Label("A number")
        .Missing({true, 90, 99, {-9.0}})
        .ValueLabel(-9.0, "refused")
        .Numbers("whole", {1, 2, 3, 9007199254740992, -5})
        .Strings("s", {"f", "a \"b\", c", "", std::nullopt, "\xC3\xA4\nx"})
        .Label("A text")
        .ValueLabel(std::string("f"), "Female")
        .Missing({false, 0, 0, {std::string("f")}})
        .Strings("digits", {"1", "02", "3", std::nullopt, "5"})
        .Level(kLevelOrdinal)
        .Numbers("d", {0, 1, gMissingValue, -719000, 2932896})
        .Kind(ColumnKind::kDate)
        .Numbers("dt", {1.25, 1700000000.123456, gMissingValue, -0.5, 0})
        .Kind(ColumnKind::kDateTime)
        .Numbers("t", {0, 86399.999999, gMissingValue, 1, 0.5})
        .Kind(ColumnKind::kTime)
        .Numbers("b", {0, 1, gMissingValue, 1, 0})
        .Kind(ColumnKind::kBoolean)
        .Numbers("w", {1, 2, 1, 0.5, 1})
        .Weight()
        .Build();
}

TEST_P(RoundTrip, WithItsSchemaEverythingIsAsItWas) {
    const DataSet data = Everything();
    const DataSet again = Again(data, true);
    ExpectSameValues(data, again);
    for (std::int32_t i = 0; i < data.ColumnCount(); ++i) {
        const KOLT_Variable& before = data.Variable(i);
        const KOLT_Variable& after = again.Variable(i);
        EXPECT_EQ(after.GetLabel(), before.GetLabel());
        EXPECT_EQ(after.GetMeasurementLevel(), before.GetMeasurementLevel()) << before.GetName();
        EXPECT_EQ(after.GetType(), before.GetType());
        EXPECT_EQ(after.GetMissingSpec(), before.GetMissingSpec()) << before.GetName();
        for (const auto& [value, label] : before.GetValueLabels().Entries()) {
            const std::string* found = after.GetValueLabels().Find(value);
            ASSERT_NE(found, nullptr) << label;
            EXPECT_EQ(*found, label);
        }
    }
    EXPECT_EQ(again.WeightIndex(), data.WeightIndex());
}

TEST_P(RoundTrip, WithoutASchemaTheValuesAreAsTheyWere) {
    // A text file does not tell digits from a number.
    const DataSet data = DataSetBuilder()
                             .Numbers("n", {0.1, -9, gMissingValue})
                             .Strings("s", {"f", "", std::nullopt})
                             .Numbers("d", {0, 1, gMissingValue})
                             .Kind(ColumnKind::kDate)
                             .Numbers("dt", {1.25, 1700000000.5, gMissingValue})
                             .Kind(ColumnKind::kDateTime)
                             .Numbers("b", {0, 1, gMissingValue})
                             .Kind(ColumnKind::kBoolean)
                             .Build();
    ExpectSameValues(data, Again(data, false));
}

TEST_P(RoundTrip, OneVariableWithMissingValuesKeepsItsCases) {
    const DataSet data = DataSetBuilder().Numbers("n", {gMissingValue, 1, gMissingValue}).Build();
    ExpectSameValues(data, Again(data, true));
}

TEST_P(RoundTrip, EveryDoubleIsReadAsItWas) {
    const unsigned seed = std::random_device()();
    std::cout << "seed " << seed << '\n';
    std::mt19937_64 random(seed);
    std::vector<double> values;
    while (values.size() < 5000) {
        const std::uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (std::isfinite(value) && value != 0) values.push_back(value);
    }
    values.push_back(std::numeric_limits<double>::max());
    values.push_back(std::numeric_limits<double>::denorm_min());
    const DataSet data = DataSetBuilder().Numbers("x", values).Build();
    ExpectSameValues(data, Again(data, true));
}

TEST_P(RoundTrip, CasesAcrossChunksKeepTheirPlaces) {
    std::vector<double> numbers;
    std::vector<std::optional<std::string>> texts;
    for (std::int32_t row = 0; row < kChunkRows + 3; ++row) {
        numbers.push_back(row % 5 == 0 ? gMissingValue : row);
        texts.push_back(row % 7 == 0 ? std::nullopt
                                     : std::optional("t" + std::to_string(row % 11)));
    }
    const DataSet data = DataSetBuilder().Numbers("x", numbers).Strings("s", texts).Build();
    ExpectSameValues(data, Again(data, true));
}

TEST_P(RoundTrip, ADataSetWithoutCasesIsReadAsOne) {
    const DataSet data = DataSetBuilder().Numbers("x", {}).Strings("s", {}).Build();
    const DataSet again = Again(data, true);
    EXPECT_EQ(again.RowCount(), 0);
    EXPECT_EQ(again.ColumnCount(), 2);
}

TEST_P(RoundTrip, AnythingSavedTwiceIsTheSameBytes) {
    const DataSet data = Everything();
    const SaveFormat format = SaveFormatOf(std::string("x") + GetParam());
    EXPECT_EQ(Saved(data, format), Saved(data, format));
}

// Columns of all forms in which they are held, in runs and mixed, with and without missing values.
DataSet ManyForms(std::mt19937& random, std::int32_t rows) {
    const auto count = static_cast<std::size_t>(rows);
    const auto numbers = [&](std::uint32_t kinds, std::uint32_t missingOneIn, std::uint32_t run,
                             double unit) {
        std::vector<double> values(count, gMissingValue);
        double last = 0;
        for (std::size_t row = 0; row < count; ++row) {
            if (row % run == 0) last = static_cast<double>(random() % kinds) * unit;
            if (missingOneIn == 0 || random() % missingOneIn != 0) values[row] = last;
        }
        return values;
    };
    const auto texts = [&](std::uint32_t kinds, std::uint32_t missingOneIn) {
        std::vector<std::optional<std::string>> values(count);
        for (auto& value : values) {
            if (missingOneIn == 0 || random() % missingOneIn != 0) {
                value = "t" + std::to_string(random() % kinds);
            }
        }
        return values;
    };
    return DataSetBuilder()
        .Numbers("one", numbers(1, 0, 1, 1))
        .Numbers("two", numbers(2, 20, 1, 0.5))
        .Numbers("runs", numbers(200, 0, 70, 1))
        .Numbers("some", numbers(250, 3, 1, 1))
        .Numbers("scale", numbers(1U << 31, 50, 1, 0.001))
        .Numbers("full", numbers(1U << 31, 0, 1, -0.25))
        .Numbers("thousand", numbers(1000, 10, 1, 0.125))
        .Numbers("none", std::vector<double>(count, gMissingValue))
        .Strings("few", texts(3, 10))
        .Strings("many", texts(3000, 4))
        .Strings("own", texts(1U << 31, 7))
        .Strings("nothing", std::vector<std::optional<std::string>>(count))
        .Numbers("date", numbers(100, 10, 3, 1))
        .Kind(ColumnKind::kDate)
        .Numbers("time", numbers(86400, 10, 1, 1))
        .Kind(ColumnKind::kTime)
        .Numbers("instant", numbers(1U << 31, 10, 1, 0.5))
        .Kind(ColumnKind::kDateTime)
        .Numbers("flag", numbers(2, 10, 1, 1))
        .Kind(ColumnKind::kBoolean)
        .Build();
}

TEST_P(RoundTrip, EveryFormOfColumnIsReadAsItWas) {
    const std::uint32_t seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (const std::int32_t rows : {1, 7, 8, 100, 3000, 2 * kChunkRows + 9}) {
        SCOPED_TRACE(rows);
        const DataSet data = ManyForms(random, rows);
        ExpectSameValues(data, Again(data, true));
    }
}

TEST_P(RoundTrip, ThreadsDoNotShowInTheFile) {
    const std::uint32_t seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const DataSet data = ManyForms(random, 3 * kChunkRows + 1);
    const SaveFormat format = SaveFormatOf(std::string("x") + GetParam());
    EXPECT_TRUE(Saved(data, format, 1) == Saved(data, format, 4));
}

// The columns lie in a file and are opened in parts, which the rows do not fill.
TEST_P(RoundTrip, ManyColumnsBeyondTheMemoryAreReadAsTheyWere) {
    constexpr std::int32_t kColumns = 1000;
    constexpr std::int32_t kRows = 1300;
    DataSetBuilder builder;
    for (std::int32_t column = 0; column < kColumns; ++column) {
        const std::string name = "x" + std::to_string(column);
        if (column % 10 == 0) {
            std::vector<std::optional<std::string>> texts(kRows);
            for (std::int32_t row = 1; row < kRows; ++row) {
                texts[static_cast<std::size_t>(row)] = "t" + std::to_string((row + column) % 7);
            }
            builder.Strings(name, texts);
        } else {
            std::vector<double> numbers(kRows, gMissingValue);
            for (std::int32_t row = 1; row < kRows; ++row) {
                numbers[static_cast<std::size_t>(row)] = row + column / 4096.0;
            }
            builder.Numbers(name, numbers);
        }
    }
    const TemporaryFiles files;
    const std::string path = files.Path("source.csv");
    const DataSet data = builder.Build();
    SaveDataSet(data, SaveFormat::kCsv, path);
    OpenOptions options;
    options.fMemory = 1;
    const DataSet stored = OpenDataSet(path, options);
    ASSERT_GT(stored.GetColumn(1).BufferBytes(false), 0);
    ExpectSameValues(data, Again(stored, true));
}

INSTANTIATE_TEST_SUITE_P(Formats, RoundTrip, testing::Values(".csv", ".tsv", ".parquet", ".arrow"));

// In the rows that follow the distinct texts, a dictionary of all of them would take the more room.
TEST(ParquetWriter, HasNoDictionaryOfAllTextsInEveryRowGroup) {
    const std::uint32_t seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    constexpr std::size_t kDistinct = 2 * kChunkRows + 9000;
    constexpr std::size_t kLength = 16;
    std::vector<std::optional<std::string>> texts(10 * kChunkRows);
    for (std::size_t row = 0; row < texts.size(); ++row) {
        if (row >= kDistinct) {
            texts[row] = texts[row % 5];
            continue;
        }
        texts[row].emplace();
        while (texts[row]->size() < kLength) {
            *texts[row] += static_cast<char>('a' + random() % 26);
        }
    }
    const DataSet data = DataSetBuilder().Strings("id", texts).Build();
    const TemporaryFiles files;
    const std::string path = files.Path("data.parquet");
    SaveDataSet(data, SaveFormat::kParquet, path);
    EXPECT_LT(std::filesystem::file_size(path), 3 * kDistinct * kLength / 2);
    ExpectSameValues(data, OpenDataSet(path));
}

// All distinct texts may be longer than 32-bit offsets reach, though those of a chunk are not.
TEST(ExportColumns, DistinctTextsHaveOffsetsOf64Bits) {
    const DataSet data = DataSetBuilder().Strings("s", {"ccc", "a", std::nullopt, "bb"}).Build();
    ArrowArray values{};
    ExportColumns(data)->Values(0, values);
    ASSERT_EQ(values.length, 3);
    ASSERT_EQ(values.n_buffers, 3);
    const std::span offsets(static_cast<const std::int64_t*>(values.buffers[1]), 4);
    EXPECT_EQ(std::vector(offsets.begin(), offsets.end()), (std::vector<std::int64_t>{0, 1, 3, 6}));
    EXPECT_EQ(std::string(static_cast<const char*>(values.buffers[2]), 6), "abbccc");
    values.release(&values);
}

// Passes on what the columns give, and counts those that have been read but not released.
class CountedColumns final : public ArrowColumns {
 public:
    explicit CountedColumns(const DataSet& data) : fpColumns(ExportColumns(data)) {}

    std::size_t MostRead() const { return fMostRead; }
    std::size_t Read() const { return fRead.size(); }

    void Schema(ArrowSchema& out) const override { fpColumns->Schema(out); }
    std::int64_t RowCount() const override { return fpColumns->RowCount(); }
    std::int32_t ColumnCount() const override { return fpColumns->ColumnCount(); }
    std::int32_t ChunkCount() const override { return fpColumns->ChunkCount(); }
    void Chunk(std::int32_t column, std::int32_t chunk, ArrowArray& out) const override {
        Note(column);
        fpColumns->Chunk(column, chunk, out);
    }
    bool IsText(std::int32_t column) const override { return fpColumns->IsText(column); }
    ColumnForm FormOf(std::int32_t column) const override { return fpColumns->FormOf(column); }
    CodeSpan Entries(std::int32_t column, std::int32_t chunk) const override {
        Note(column);
        return fpColumns->Entries(column, chunk);
    }
    void Values(std::int32_t column, ArrowArray& out) const override {
        fpColumns->Values(column, out);
    }
    ValueTotals TotalsOf(std::int32_t column) const override { return fpColumns->TotalsOf(column); }
    std::span<const double> Numbers(std::int32_t column, std::int32_t chunk) const override {
        Note(column);
        return fpColumns->Numbers(column, chunk);
    }
    bool IsScattered(std::int32_t column) const override { return fpColumns->IsScattered(column); }
    void Release(std::int32_t column) const override {
        fRead.erase(column);
        fpColumns->Release(column);
    }

 private:
    void Note(std::int32_t column) const {
        fRead.insert(column);
        fMostRead = std::max(fMostRead, fRead.size());
    }

    std::unique_ptr<ArrowColumns> fpColumns;
    mutable std::set<std::int32_t> fRead;
    mutable std::size_t fMostRead = 0;
};

TEST(ParquetWriter, GivesBackEachColumnBeforeItReadsTheNext) {
    const std::uint32_t seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const DataSet data = ManyForms(random, 2 * kChunkRows + 9);
    const CountedColumns columns(data);
    std::ostringstream file;
    WriteParquet(columns, file, "memory", 1);
    EXPECT_EQ(columns.MostRead(), 1U);
    EXPECT_EQ(columns.Read(), 0U);
    EXPECT_TRUE(file.str() == Saved(data, SaveFormat::kParquet));
}

// What the schema of the source says of the form of cells does not hold for the saved file.
TEST(SchemaOf, ForgetsTheFormOfTheCellsThatWereRead) {
    const TemporaryFiles files;
    const std::string path = files.Write("in.csv", "x;flag;gone\n1,5;ja;1\n-;nein;2\n99;ja;3\n");
    files.Write("in.csv.schema.json", R"({
        "missingValues": ["-"], "custom": "kept",
        "fields": [
            {"name": "x", "type": "number", "decimalChar": ",", "title": "Ex", "note": "kept too",
             "missingValues": [{"value": "99", "label": "none"}, "-"]},
            {"name": "flag", "type": "boolean", "trueValues": ["ja"], "falseValues": ["nein"]},
            {"name": "gone", "type": "integer"}]})");
    const DataSet data = OpenDataSet(path);
    const std::string saved = files.Path("out.csv");
    SaveDataSet(data, SaveFormat::kCsv, saved);
    files.Write("out.csv.schema.json", SchemaOf(data));
    const DataSet again = OpenDataSet(saved);
    ExpectSameValues(data, again);
    EXPECT_EQ(again.Variable(0).GetLabel(), "Ex");
    EXPECT_EQ(again.Variable(0).GetMissingSpec(), data.Variable(0).GetMissingSpec());
    EXPECT_NE(SchemaOf(data).find("\"custom\": \"kept\""), std::string::npos);
    EXPECT_NE(SchemaOf(data).find("\"note\": \"kept too\""), std::string::npos);
}

}  // namespace
}  // namespace embedded
