#include "embedded/data/OpenDataSet.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <limits>
#include <ostream>
#include <random>
#include <sstream>

#include "embedded/data/tests/TemporaryFiles.h"

namespace embedded {
namespace {

using Kind = DataError::Kind;

/// Reads texts as files of one directory.
class OpenText : public testing::Test {
 protected:
    DataSet Open(std::string_view text, const OpenOptions& options = {}) {
        return OpenDataSet(fFiles.Write("data.csv", text), options);
    }
    // What the refusal of a text says behind the path.
    std::string Refusal(std::string_view bytes, Kind kind, const OpenOptions& options = {}) {
        const std::string path = fFiles.Write("data.csv", bytes);
        try {
            OpenDataSet(path, options);
        } catch (const DataError& fault) {
            EXPECT_EQ(fault.GetKind(), kind);
            std::string message = fault.what();
            EXPECT_EQ(message.find('\n'), std::string::npos) << message;
            for (std::size_t at; (at = message.find(path)) != std::string::npos;) {
                message.replace(at, path.size(), "FILE");
            }
            return message;
        }
        ADD_FAILURE() << "the text was taken";
        return "";
    }
    TemporaryFiles fFiles;
};

// All cells as text, row by row; "." where missing.
std::string Cells(const DataSet& data) {
    std::ostringstream out;
    for (std::int64_t row = 0; row < data.RowCount(); ++row) {
        for (std::int32_t column = 0; column < data.ColumnCount(); ++column) {
            out << (column == 0 ? "" : "|")
                << ConvertObsToString(data.GetColumn(column).Value(row),
                                      data.Variable(column).GetFormat(), false);
        }
        out << "\n";
    }
    return out.str();
}

TEST_F(OpenText, ColumnsAreTypedAndMissingCellsAreMissing) {
    const DataSet data = Open("a,b,c,d\n1,x,true,2024-02-29\n,,,\n2.5,\"\",FALSE,1970-01-01\n");
    EXPECT_EQ(Cells(data), "1.0|x|1|2024-02-29\n.|.|.|.\n2.5||0|1970-01-01\n");
    EXPECT_EQ(data.Kind(0), ColumnKind::kNumber);
    EXPECT_EQ(data.Kind(1), ColumnKind::kString);
    EXPECT_EQ(data.Kind(2), ColumnKind::kBoolean);
    EXPECT_EQ(data.Kind(3), ColumnKind::kDate);
    EXPECT_EQ(data.Variable(0).GetType(), 0);
    EXPECT_EQ(data.Variable(1).GetType(), 1);
    EXPECT_EQ(*data.Variable(2).GetValueLabels().Find(1.0), "true");
    EXPECT_EQ(data.Variable(3).GetFormat().fCode, kFormatDate);
    EXPECT_EQ(data.Variable(3).GetMeasurementLevel(), kLevelScale);
    EXPECT_TRUE(data.Notes().empty());
}

struct SameTableCase {
    const char* fName;
    std::string fBytes;
};
void PrintTo(const SameTableCase& tableCase, std::ostream* out) { *out << tableCase.fName; }
class SameTable : public OpenText, public testing::WithParamInterface<SameTableCase> {};

TEST_P(SameTable, ReadsAlikeHoweverItIsWritten) {
    const DataSet data = Open(GetParam().fBytes);
    ASSERT_EQ(data.ColumnCount(), 2);
    EXPECT_EQ(data.Variable(0).GetName(), "name");
    EXPECT_EQ(data.Variable(1).GetName(), "size");
    EXPECT_EQ(Cells(data), "M\xC3\xBCller, A.|1.5\nO|2.0\n");
}

std::string LittleEndian(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text) {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

INSTANTIATE_TEST_SUITE_P(
    Forms, SameTable,
    testing::Values(
        SameTableCase{"Comma", "name,size\n\"M\xC3\xBCller, A.\",1.5\nO,2\n"},
        SameTableCase{"LastLineWithoutEnd", "name,size\n\"M\xC3\xBCller, A.\",1.5\nO,2"},
        SameTableCase{"CarriageReturnLineFeed",
                      "name,size\r\n\"M\xC3\xBCller, A.\",1.5\r\nO,2\r\n"},
        SameTableCase{"CarriageReturn", "name,size\r\"M\xC3\xBCller, A.\",1.5\rO,2\r"},
        SameTableCase{"EmptyLines", "\nname,size\n\n\"M\xC3\xBCller, A.\",1.5\n\n\nO,2\n\n"},
        SameTableCase{"SemicolonAndDecimalComma", "name;size\nM\xC3\xBCller, A.;1,5\nO;2\n"},
        SameTableCase{"Tab", "name\tsize\nM\xC3\xBCller, A.\t1.5\nO\t2\n"},
        SameTableCase{"Bar", "name|size\nM\xC3\xBCller, A.|1.5\nO|2\n"},
        SameTableCase{"SingleQuotes", "'name','size'\n'M\xC3\xBCller, A.','1.5'\n'O','2'\n"},
        SameTableCase{"AllQuoted",
                      "\"name\",\"size\"\n\"M\xC3\xBCller, A.\",\"1.5\"\n\"O\",\"2\"\n"},
        SameTableCase{"BlanksAroundNamesAndNumbers",
                      "name , size\n\"M\xC3\xBCller, A.\", 1.5\nO, 2 \n"},
        SameTableCase{"ByteOrderMark", "\xEF\xBB\xBFname,size\n\"M\xC3\xBCller, A.\",1.5\nO,2\n"},
        SameTableCase{"Windows1252", "name,size\n\"M\xFCller, A.\",1.5\nO,2\n"},
        SameTableCase{"Utf16", LittleEndian(u"\uFEFFname,size\n\"M\u00FCller, A.\",1.5\nO,2\n")}),
    [](const auto& tested) { return std::string(tested.param.fName); });

TEST_F(OpenText, ReadingInAnotherEncodingThanUtf8IsNoted) {
    const DataSet data = Open("a\n\xFC\n");
    ASSERT_EQ(data.Notes().size(), 1U);
    EXPECT_EQ(data.Notes()[0].fKind, DataNote::Kind::kEncoding);
    OpenOptions options;
    options.fEncoding = TextEncoding::kLatin1;
    EXPECT_TRUE(Open("a\n\xFC\n", options).Notes().empty());
}

TEST_F(OpenText, HeaderOnlyIsADataSetWithoutRows) {
    const DataSet data = Open("a,b\n");
    EXPECT_EQ(data.ColumnCount(), 2);
    EXPECT_EQ(data.RowCount(), 0);
    EXPECT_EQ(data.GetColumn(0).ChunkCount(), 0);
}

TEST_F(OpenText, OneColumnNeedsNoDelimiter) {
    EXPECT_EQ(Cells(Open("text\nx y\nz\n")), "x y\nz\n");
}

TEST_F(OpenText, CellsMayHoldLineEndsAndQuotes) {
    EXPECT_EQ(Cells(Open("a,b\n\"x\r\ny\",\"say \"\"hi\"\"\"\n")), "x\r\ny|say \"hi\"\n");
}

TEST_F(OpenText, NaTextsAreMissing) {
    OpenOptions options;
    options.fvNaTexts = {"NA", "?"};
    const DataSet data = Open("a,b\nNA,x\n1,?\n", options);
    EXPECT_EQ(Cells(data), ".|x\n1|.\n");
}

TEST_F(OpenText, QuotesMayBeSwitchedOff) {
    OpenOptions options;
    options.fQuote = '\0';
    EXPECT_EQ(Cells(Open("a,b\n\"x,5\n", options)), "\"x|5\n");
}

TEST_F(OpenText, TheDecimalMarkCanBeGiven) {
    OpenOptions options;
    options.fDecimalMark = ',';
    EXPECT_EQ(Open("a,b\n\"1,5\",2\n", options).Kind(0), ColumnKind::kNumber);
    EXPECT_EQ(Open("a,b\n\"1,5\",2\n").Kind(0), ColumnKind::kString);
    EXPECT_EQ(Open("a;b\n1.5;2\n", options).Kind(0), ColumnKind::kString);
}

TEST_F(OpenText, AStrayTextIsNotedWithItsLineAndHowToMendIt) {
    const DataSet data = Open("a,b\n\"x\n\",1\ny,2\nz,n/a\nz,n/a\nz,3\n");
    ASSERT_EQ(data.Notes().size(), 1U);
    const DataNote& note = data.Notes()[0];
    EXPECT_EQ(note.fKind, DataNote::Kind::kStrayText);
    EXPECT_EQ(note.fColumn, 1);
    EXPECT_EQ(note.fCount, 2);
    EXPECT_EQ(note.fFirstRow, 2);
    EXPECT_EQ(note.fText,
              "'b': the text 'n/a' in line 5 made it a string variable; 3 of 5 values are "
              "numbers. If 'n/a' stands for a missing value, use --na n/a.");
}

TEST_F(OpenText, AColumnMostlyOfTextIsNotNoted) {
    EXPECT_TRUE(Open("a\nx\ny\n1\n").Notes().empty());
    EXPECT_TRUE(Open("a\nx\n").Notes().empty());
}

TEST_F(OpenText, OdditiesAreNotedOnceAVariable) {
    const DataSet data = Open(
        "i,f,s\n1,2,x\n9007199254740993,inf,\xFF\xC3\xA4\xC3\xA4\xC3\xA4\n"
        "-9007199254740993,1e999,\xFF\n");
    ASSERT_EQ(data.Notes().size(), 3U);
    EXPECT_EQ(data.Notes()[0].fKind, DataNote::Kind::kInexactInteger);
    EXPECT_EQ(data.Notes()[1].fKind, DataNote::Kind::kInfinite);
    EXPECT_EQ(data.Notes()[1].fText,
              "'f': 2 values are infinite or too large for a number; treated as missing. "
              "First in line 3.");
    EXPECT_EQ(data.Notes()[2].fKind, DataNote::Kind::kUndecodable);
    for (const std::size_t at : {0U, 1U, 2U}) {
        EXPECT_EQ(data.Notes()[at].fColumn, static_cast<std::int32_t>(at));
        EXPECT_EQ(data.Notes()[at].fCount, 2);
        EXPECT_EQ(data.Notes()[at].fFirstRow, 1);
    }
    EXPECT_EQ(data.GetColumn(1).ValidCount(), 1);
}

TEST_F(OpenText, AHeaderOfNumbersIsNoted) {
    const DataSet data = Open("1,2\n3,4\n");
    ASSERT_EQ(data.Notes().size(), 1U);
    EXPECT_EQ(data.Notes()[0].fKind, DataNote::Kind::kHeader);
}

TEST_F(OpenText, NamesThatCannotBeDecodedAreStillNames) {
    OpenOptions options;
    options.fEncoding = TextEncoding::kUtf8;
    EXPECT_EQ(Open("a\xFF,b\n1,2\n", options).Variable(0).GetName(), "a\xEF\xBF\xBD");
}

struct RefusalCase {
    const char* fName;
    std::string fBytes;
    const char* fMessage;
};
void PrintTo(const RefusalCase& refusalCase, std::ostream* out) { *out << refusalCase.fName; }
class Refusals : public OpenText, public testing::WithParamInterface<RefusalCase> {};

TEST_P(Refusals, SayWhatWhereAndHowToMendIt) {
    EXPECT_EQ(Refusal(GetParam().fBytes, Kind::kContent), GetParam().fMessage);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Refusals,
    testing::Values(
        RefusalCase{"Empty", "",
                    "FILE: is empty; a header line with the variables' names is expected"},
        RefusalCase{"LineEndsOnly", "\n\r\n",
                    "FILE: is empty; a header line with the variables' names is expected"},
        RefusalCase{"ShortRow", "a,b,c\n1,2,3\n\"x\ny\",2\n4,5,6\n",
                    "FILE: line 3 has 2 values where the header has 3 names; correct the line, or "
                    "if comma is not what separates values, set --delimiter"},
        RefusalCase{"LongRow", "a;b\n1;2\n\n1;2;3\n",
                    "FILE: line 4 has 3 values where the header has 2 names; correct the line, or "
                    "if semicolon is not what separates values, set --delimiter"},
        RefusalCase{"OneName", "a\n1\n2,3\n",
                    "FILE: line 3 has 2 values where the header has 1 name; correct the line, or "
                    "if comma is not what separates values, set --delimiter"},
        RefusalCase{"OpenQuote", "a,b\n1,2\n1,\"2\n3,4\n",
                    "FILE: the record that starts in line 3 has a quote that is never closed; "
                    "close it or double it, or set --quote"},
        RefusalCase{"OpenQuoteInTheHeader", "a,\"b\n1,2\n",
                    "FILE: the record that starts in line 1 has a quote that is never closed; "
                    "close it or double it, or set --quote"},
        RefusalCase{"DuplicateNames", "a,b,a,c,b,a\n1,2,3,4,5,6\n",
                    "FILE: several columns have the same name: 'a' (columns 1, 3 and 6), 'b' "
                    "(columns 2 and 5); give every column a name of its own"},
        RefusalCase{"EmptyName", ",b\n1,2\n",
                    "FILE: column 1 has no name; give every column a "
                    "name"},
        RefusalCase{"EmptyNames", "a,\"\",b, \n1,2,3,4\n",
                    "FILE: columns 2 and 4 have no name; give every column a name"},
        RefusalCase{"Binary", std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16),
                    "FILE: is no data file in a known form (Parquet, Arrow or delimited text): "
                    "it holds zero bytes; check the file, or its encoding with --encoding"},
        RefusalCase{"Gzip", "\x1F\x8B\x08",
                    "FILE: is compressed (gzip); unpack it or export a CSV file first"},
        RefusalCase{"Zip", "PK\x03\x04rest",
                    "FILE: is compressed (zip; a spreadsheet is such an archive too); unpack it or "
                    "export a CSV file first"}),
    [](const auto& tested) { return std::string(tested.param.fName); });

std::string FileRefusal(const std::string& path, const OpenOptions& options = {}) {
    try {
        OpenDataSet(path, options);
    } catch (const DataError& fault) {
        EXPECT_EQ(fault.GetKind(), Kind::kFile);
        return fault.what();
    }
    ADD_FAILURE() << "the file was taken";
    return "";
}

TEST_F(OpenText, AFileThatIsNotThereIsRefused) {
    const std::string path = fFiles.Path("nothing.csv");
    EXPECT_EQ(FileRefusal(path), path + ": no such file; check the path");
    EXPECT_EQ(FileRefusal(""), ": no such file; check the path");
}

TEST_F(OpenText, ADirectoryIsRefused) {
    EXPECT_EQ(FileRefusal(fFiles.Directory()),
              fFiles.Directory() + ": cannot be read: it is a directory; name a file in it");
}

TEST_F(OpenText, AFileWithoutReadPermissionIsRefused) {
    const std::string path = fFiles.Write("secret.csv", "a\n1\n");
    ASSERT_EQ(chmod(path.c_str(), 0), 0);
    // The superuser may read everything: be somebody else for a moment.
    const uid_t user = geteuid();
    constexpr uid_t kNobody = 65534;
    ASSERT_EQ(seteuid(user == 0 ? kNobody : user), 0);
    const std::string message = FileRefusal(path);
    ASSERT_EQ(seteuid(user), 0);
    EXPECT_EQ(message, path +
                           ": cannot be read: permission denied; ask the owner for the right "
                           "to read it");
}

TEST_F(OpenText, ASchemaThatIsNamedMustBeThere) {
    OpenOptions options;
    options.fSchemaPath = fFiles.Path("nothing.json");
    EXPECT_EQ(FileRefusal(fFiles.Write("data.csv", "a\n1\n"), options),
              options.fSchemaPath + ": no such file; check the path");
}

TEST_F(OpenText, APipeIsReadToItsEnd) {
    const std::string path = fFiles.Path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        std::ofstream(path) << "a,b\n1,x\n";
        _exit(0);
    }
    EXPECT_EQ(Cells(OpenDataSet(path)), "1|x\n");
}

TEST_F(OpenText, StandardInputIsReadAsAFile) {
    const std::string path = fFiles.Write("input.csv", "a,b\n1,x\n");
    const int saved = dup(STDIN_FILENO);
    ASSERT_NE(freopen(path.c_str(), "r", stdin), nullptr);
    const DataSet data = OpenDataSet("-");
    dup2(saved, STDIN_FILENO);
    close(saved);
    EXPECT_EQ(Cells(data), "1|x\n");
    EXPECT_EQ(data.SourceName(), "standard input");
}

class ManyRows : public OpenText, public testing::WithParamInterface<std::int32_t> {};

TEST_P(ManyRows, EveryRowArrivesAndTheLastCellDecidesTheType) {
    const std::int32_t rows = GetParam();
    std::string text = "n,late,s\n";
    for (std::int32_t row = 0; row < rows; ++row) {
        text += std::to_string(row) + "," + (row == rows - 1 ? "x" : std::to_string(row % 10)) +
                ",v" + std::to_string(row % 300) + "\n";
    }
    const DataSet data = Open(text);
    ASSERT_EQ(data.RowCount(), rows);
    EXPECT_EQ(data.Kind(0), ColumnKind::kNumber);
    EXPECT_EQ(data.Kind(1), ColumnKind::kString);
    EXPECT_EQ(data.GetColumn(1).Value(rows - 1), KoltObs(std::string("x")));
    for (const std::int32_t row : {0, rows / 2, rows - 2, rows - 1}) {
        EXPECT_EQ(data.GetColumn(0).Value(row), KoltObs(static_cast<double>(row)));
        EXPECT_EQ(data.GetColumn(2).Value(row), KoltObs("v" + std::to_string(row % 300)));
    }
    EXPECT_EQ(data.GetColumn(1).Value(0), KoltObs(std::string("0")));
    ASSERT_EQ(data.Notes().size(), 1U);
    EXPECT_EQ(data.Notes()[0].fFirstRow, rows - 1);
    EXPECT_NE(data.Notes()[0].fText.find("line " + std::to_string(rows + 1)), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(ChunkBorders, ManyRows, testing::Values(65535, 65536, 65537));

TEST_F(OpenText, NothingDependsOnTheBlockSize) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::vector<std::string> cells = {"1",          "2.5", "",     "\"\"",       "x",
                                            "\"a\r\nb\"", "NA",  "true", "2024-01-01", " 7 "};
    for (int table = 0; table < 30; ++table) {
        // Each column draws from the first few kinds of cells, so that all types occur.
        const std::size_t kinds[] = {3, 4, cells.size(), 1 + random() % cells.size()};
        std::string text = "a,b,c,d\n";
        for (int row = 0; row < 50; ++row) {
            for (std::size_t column = 0; column < 4; ++column) {
                text += cells[random() % kinds[column]] + (column == 3 ? "\n" : ",");
            }
        }
        OpenOptions options;
        const std::string expected = Cells(Open(text, options));
        for (const std::int32_t bytes : {1, 7, 64, 200}) {
            options.fBlockBytes = bytes;
            ASSERT_EQ(Cells(Open(text, options)), expected) << text;
        }
    }
}

TEST_F(OpenText, ARecordMayBeLongerThanABlock) {
    const std::string longText(3000000, 'x');
    const DataSet data = Open("a,b\n1,2\n" + longText + ",3\n");
    EXPECT_EQ(data.Variable(0).GetType(), 3000000);
    EXPECT_EQ(data.GetColumn(1).Value(1), KoltObs(3.0));
}

TEST_F(OpenText, ManyColumnsAreReadByPosition) {
    std::string header;
    std::string row;
    for (int column = 0; column < 5000; ++column) {
        header += (column == 0 ? "c" : ",c") + std::to_string(column);
        row += (column == 0 ? "" : ",") + std::to_string(column);
    }
    const DataSet data = Open(header + "\n" + row + "\n");
    ASSERT_EQ(data.ColumnCount(), 5000);
    EXPECT_EQ(data.GetColumn(4321).Value(0), KoltObs(4321.0));
    EXPECT_EQ(data.FindVariable("c4321"), 4321);
}

TEST_F(OpenText, RandomBytesAreADataSetOrARefusal) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    // Letters that matter to some part of the way, and any byte now and then.
    constexpr std::string_view kLetters = "aab12..--,,;;\t|\"\"''\n\n\r \xC3\xA4\xFF\xFEtrue";
    int taken = 0;
    for (int file = 0; file < 1500; ++file) {
        std::string bytes;
        const std::size_t length = random() % 120;
        while (bytes.size() < length) {
            bytes.push_back(random() % 50 == 0 ? static_cast<char>(random())
                                               : kLetters[random() % kLetters.size()]);
        }
        try {
            const DataSet data = Open(bytes);
            EXPECT_GT(data.ColumnCount(), 0);
            for (std::int32_t column = 0; column < data.ColumnCount(); ++column) {
                EXPECT_EQ(data.GetColumn(column).RowCount(), data.RowCount());
            }
            ++taken;
        } catch (const DataError& fault) {
            EXPECT_EQ(fault.GetKind(), Kind::kContent) << fault.what();
        }
    }
    EXPECT_GT(taken, 20);
}

// ---- the dictionary ----

class OpenWithSchema : public OpenText {
 protected:
    DataSet OpenWith(std::string_view text, std::string_view schema,
                     const OpenOptions& options = {}) {
        fFiles.Write("data.csv.schema.json", schema);
        return Open(text, options);
    }
    std::string SchemaRefusal(std::string_view text, std::string_view schema,
                              Kind kind = Kind::kSchema, const OpenOptions& options = {}) {
        fFiles.Write("data.csv.schema.json", schema);
        return Refusal(text, kind, options);
    }
};

TEST_F(OpenWithSchema, LabelsLevelsAndMissingValuesCome) {
    const DataSet data = OpenWith("age,sex,w,g\n31,f,1,a\n-9,m,2,b\n95,f,1,a\n",
                                  R"({"fields": [
             {"name": "age", "title": "Age in years", "type": "integer",
              "missingValues": [{"value": -9, "label": "refused"}], "missingRange": [90, 99],
              "measurementLevel": "scale"},
             {"name": "sex", "categories": [{"value": "f", "label": "Female"}, "m"]}],
            "weight": "w", "split": "g"})");
    const KOLT_Variable& age = data.Variable(0);
    EXPECT_EQ(age.GetLabel(), "Age in years");
    EXPECT_EQ(age.GetMeasurementLevel(), kLevelScale);
    std::vector<KoltObs> values;
    EXPECT_EQ(age.GetMissingValues(values), -3);
    EXPECT_EQ(values, (std::vector<KoltObs>{90.0, 99.0, -9.0}));
    EXPECT_EQ(*age.GetValueLabels().Find(-9.0), "refused");
    EXPECT_EQ(*data.Variable(1).GetValueLabels().Find(std::string("f")), "Female");
    EXPECT_EQ(data.Variable(1).GetValueLabels().Find(std::string("m")), nullptr);
    EXPECT_EQ(data.WeightIndex(), 2);
    EXPECT_EQ(data.SplitIndices(), (std::vector<std::int32_t>{3}));
}

TEST_F(OpenWithSchema, ASchemaOfAnotherNameIsTakenWhenNamed) {
    OpenOptions options;
    options.fSchemaPath =
        fFiles.Write("other.json", R"({"fields": [{"name": "a", "title": "A label"}]})");
    EXPECT_EQ(Open("a\n1\n", options).Variable(0).GetLabel(), "A label");
}

TEST_F(OpenWithSchema, TextsOfTheWholeSchemaAreSystemMissingInEveryColumn) {
    const DataSet data =
        OpenWith("a,b\nNA,x\n1,NA\n", R"({"fields": [], "missingValues": ["NA"]})");
    EXPECT_EQ(Cells(data), ".|x\n1|.\n");
}

TEST_F(OpenWithSchema, AListOfTheFieldReplacesThatOfTheSchema) {
    const DataSet data = OpenWith("a,b\nNA,x\n1,NA\n",
                                  R"({"missingValues": ["NA"],
                                      "fields": [{"name": "b", "missingValues": []}]})");
    EXPECT_EQ(Cells(data), ".|x\n1|NA\n");
}

TEST_F(OpenWithSchema, LabelledMissingValuesOfTheSchemaAreUserMissing) {
    const DataSet data =
        OpenWith("a,b\n-1,x\n1,-1\n",
                 R"({"fields": [], "missingValues": [{"value": "-1", "label": "skipped"}]})");
    EXPECT_TRUE(data.Variable(0).IsUserMissing(-1.0));
    EXPECT_TRUE(data.Variable(1).IsUserMissing(std::string("-1")));
    EXPECT_EQ(*data.Variable(0).GetValueLabels().Find(-1.0), "skipped");
}

TEST_F(OpenWithSchema, BlanksAtTheEndOfATextAreNoPartOfADeclaredValueEither) {
    const DataSet data = OpenWith("a\nx \nskip\nx\n",
                                  R"({"fields": [{"name": "a", "missingValues":
                                      [{"value": "skip  ", "label": "skipped"}]}]})");
    EXPECT_EQ(data.GetColumn(0).DistinctCount(), 2);
    EXPECT_TRUE(data.Variable(0).IsUserMissing(std::string("skip")));
    EXPECT_NE(data.Variable(0).GetValueLabels().Find(std::string("skip")), nullptr);
}

TEST_F(OpenWithSchema, AMissingTextThatIsNoNumberIsSystemMissingInANumericVariable) {
    const DataSet data = OpenWith("a\n1\nrefused\n-9\n",
                                  R"({"fields": [{"name": "a", "type": "number",
                                      "missingValues": ["", "refused", "-9"]}]})");
    EXPECT_EQ(Cells(data), "1\n.\n-9\n");
    EXPECT_TRUE(data.Variable(0).IsUserMissing(-9.0));
}

TEST_F(OpenWithSchema, AnEmptyMissingTextMakesQuotedEmptyCellsMissing) {
    const DataSet data = OpenWith("a,b\nx,\"\"\n", R"({"fields": [{"name": "b", "type": "string",
                                                   "missingValues": [""]}]})");
    EXPECT_EQ(Cells(data), "x|.\n");
}

TEST_F(OpenWithSchema, DigitsDeclaredAStringStayAsWritten) {
    const DataSet data =
        OpenWith("zip\n01234\n", R"({"fields": [{"name": "zip", "type": "string"}]})");
    EXPECT_EQ(Cells(data), "01234\n");
    EXPECT_TRUE(data.Notes().empty());
}

TEST_F(OpenWithSchema, BooleansInOtherWordsTimesAndGroupedNumbersAreRead) {
    const DataSet data = OpenWith(
        "b;t;n\nja;12:30;1.234,5\nnein;00:00:01;2\n",
        R"({"fields": [{"name": "b", "type": "boolean", "trueValues": ["ja"], "falseValues": ["nein"]},
                       {"name": "t", "type": "time"},
                       {"name": "n", "type": "number", "decimalChar": ",", "groupChar": "."}]})");
    EXPECT_EQ(Cells(data), "1|12:30:00|1234.5\n0|00:00:01|2.0\n");
}

TEST_F(OpenWithSchema, OrderedCategoriesAreOrdinal) {
    const DataSet data = OpenWith("a,b,c\n1,2,3\n", R"({"fields": [
            {"name": "a", "categories": [1, 2], "categoriesOrdered": true},
            {"name": "b", "categories": [1, 2]},
            {"name": "c", "categories": [1, 2], "measurementLevel": "scale"}]})");
    EXPECT_EQ(data.Variable(0).GetMeasurementLevel(), kLevelOrdinal);
    EXPECT_EQ(data.Variable(1).GetMeasurementLevel(), kLevelNominal);
    EXPECT_EQ(data.Variable(2).GetMeasurementLevel(), kLevelScale);
}

TEST_F(OpenWithSchema, DatesAreDeclaredByTheirText) {
    const DataSet data = OpenWith("d\n1970-01-02\n9999-12-31\n",
                                  R"({"fields": [{"name": "d", "type": "date",
                                      "missingValues": ["9999-12-31"],
                                      "categories": [{"value": "1970-01-02", "label": "second"}]}]})");
    EXPECT_TRUE(data.Variable(0).IsUserMissing(2932896.0));
    EXPECT_EQ(*data.Variable(0).GetValueLabels().Find(1.0), "second");
}

TEST_F(OpenWithSchema, ColumnsOfATypeThatCannotBeUsedAreLeftOut) {
    const DataSet data =
        OpenWith("a,b\n1,\"[1, 2]\"\n", R"({"fields": [{"name": "b", "type": "array"}]})");
    EXPECT_EQ(data.ColumnCount(), 1);
    ASSERT_EQ(data.Notes().size(), 1U);
    EXPECT_EQ(data.Notes()[0].fText, "'b' was left out: columns of the type array cannot be used.");
}

TEST_F(OpenWithSchema, OptionsBeatTheSchema) {
    OpenOptions options;
    options.fvLevels = {{"a", "nominal"}, {"b", "ordinal"}};
    options.fvMissing = {{"a", "7..9, 1"}, {"b", ""}};
    options.fWeight = "b";
    const DataSet data = OpenWith("a,b\n1,2\n", R"({"fields": [
                                      {"name": "a", "measurementLevel": "scale", "missingValues": [5]},
                                      {"name": "b", "missingValues": [2]}], "weight": "a"})",
                                  options);
    EXPECT_EQ(data.Variable(0).GetMeasurementLevel(), kLevelNominal);
    EXPECT_EQ(data.Variable(1).GetMeasurementLevel(), kLevelOrdinal);
    EXPECT_EQ(data.Variable(0).GetMissingSpec(), (KoltMissingSpec{true, 7, 9, {1.0}}));
    EXPECT_EQ(data.Variable(1).GetMissingSpec(), KoltMissingSpec());
    EXPECT_EQ(data.WeightIndex(), 1);
}

TEST_F(OpenWithSchema, AMissingOptionKeepsWhatTheSchemaSaysAreNoValues) {
    OpenOptions options;
    options.fvMissing = {{"a", "99"}};
    const DataSet data = OpenWith(
        "a\n1\nNA\n99\n",
        R"({"fields": [{"name": "a", "type": "number", "missingValues": ["NA"]}]})", options);
    EXPECT_EQ(Cells(data), "1\n.\n99\n");
    EXPECT_TRUE(data.Variable(0).IsUserMissing(99.0));
}

TEST_F(OpenWithSchema, OptionsNeedNoSchema) {
    OpenOptions options;
    options.fvMissing = {{"s", "?,-"}, {"n", "NA"}};
    const DataSet data = Open("s,n\n?,1\nx,NA\n", options);
    EXPECT_TRUE(data.Variable(0).IsUserMissing(std::string("?")));
    EXPECT_EQ(Cells(data), "?|1\nx|.\n");
}

TEST_F(OpenWithSchema, NominalMaxIsAnOption) {
    OpenOptions options;
    options.fNominalMax = 1;
    EXPECT_EQ(Open("a\n1\n2\n", options).Variable(0).GetMeasurementLevel(), kLevelScale);
}

struct SchemaRefusalCase {
    const char* fName;
    const char* fSchema;
    const char* fMessage;
};
void PrintTo(const SchemaRefusalCase& refusalCase, std::ostream* out) { *out << refusalCase.fName; }
class SchemaRefusals : public OpenWithSchema,
                       public testing::WithParamInterface<SchemaRefusalCase> {};

// The data: a is numbers, b texts, d dates.
constexpr const char* kTable = "a,b,d\n1,x,2024-01-01\n2.5,y,2024-01-02\n";

TEST_P(SchemaRefusals, SayWhatWhereAndHowToMendIt) {
    EXPECT_EQ(SchemaRefusal(kTable, GetParam().fSchema), GetParam().fMessage);
}

INSTANTIATE_TEST_SUITE_P(
    Schemas, SchemaRefusals,
    testing::Values(
        SchemaRefusalCase{"NoJson", "{\"fields\": [\n  {\"name\": \"a\",}]}",
                          "FILE.schema.json: it is no JSON: line 2, column 16: syntax error while "
                          "parsing object key - unexpected '}'; expected string literal"},
        SchemaRefusalCase{
            "Empty", "",
            "FILE.schema.json: it is no JSON: line 1, column 1: syntax error while "
            "parsing value - unexpected end of input; expected '[', '{', or a literal"},
        SchemaRefusalCase{"NoFields", R"({"resources": []})",
                          "FILE.schema.json: it is no Table Schema: an object with a list 'fields' "
                          "is expected"},
        SchemaRefusalCase{"NoObject", "[1]",
                          "FILE.schema.json: it is no Table Schema: an object with a list 'fields' "
                          "is expected"},
        SchemaRefusalCase{"FieldsAreNoList", R"({"fields": {}})",
                          "FILE.schema.json: 'fields' must be a list, not {}"},
        SchemaRefusalCase{"FieldIsNoObject", R"({"fields": [{"name": "a"}, "b"]})",
                          "FILE.schema.json: item 2 of 'fields' must be an object with at least a "
                          "'name', not \"b\""},
        SchemaRefusalCase{"FieldWithoutName", R"({"fields": [{"title": "A"}]})",
                          "FILE.schema.json: item 1 of 'fields': it has no 'name'"},
        SchemaRefusalCase{"FieldTwice", R"({"fields": [{"name": "a"}, {"name": "a"}]})",
                          "FILE.schema.json: the field 'a' is declared twice"},
        SchemaRefusalCase{
            "UnknownName", R"({"fields": [{"name": "A"}]})",
            "FILE.schema.json: field 'A': no column of FILE has the name 'A'; correct "
            "the name or remove the field"},
        SchemaRefusalCase{"UnknownType", R"({"fields": [{"name": "a", "type": "float"}]})",
                          "FILE.schema.json: field 'a': the type 'float' is none of any, string, "
                          "number, integer, year, boolean, date, datetime, time, yearmonth, "
                          "duration, geopoint, list, array, object, geojson"},
        SchemaRefusalCase{"NumberHoldsText", R"({"fields": [{"name": "b", "type": "number"}]})",
                          "FILE.schema.json: field 'b': the type is number, but line 2 of FILE has "
                          "'x'; correct the cell or the type, or declare the text in "
                          "'missingValues'"},
        SchemaRefusalCase{
            "IntegerHoldsFraction", R"({"fields": [{"name": "a", "type": "integer"}]})",
            "FILE.schema.json: field 'a': the type is integer, but line 3 of FILE has "
            "'2.5'; correct the cell or the type, or declare the text in "
            "'missingValues'"},
        SchemaRefusalCase{"BadLevel", R"({"fields": [{"name": "a", "measurementLevel": "ratio"}]})",
                          "FILE.schema.json: field 'a': the measurement level 'ratio' is none of "
                          "nominal, ordinal, scale"},
        SchemaRefusalCase{"ScaleString",
                          R"({"fields": [{"name": "b", "measurementLevel": "scale"}]})",
                          "FILE.schema.json: field 'b': the string variable 'b' cannot have the "
                          "measurement level scale"},
        SchemaRefusalCase{
            "ReversedRange", R"({"fields": [{"name": "a", "missingRange": [9, 8]}]})",
            "FILE.schema.json: field 'a': the missing range is reversed: 9 is above 8; "
            "write the lower bound first"},
        SchemaRefusalCase{
            "RangeOfOne", R"({"fields": [{"name": "a", "missingRange": [9]}]})",
            "FILE.schema.json: field 'a': 'missingRange' must be a list of two values, "
            "low and high, not [9]"},
        SchemaRefusalCase{"RangeOfAString",
                          R"({"fields": [{"name": "b", "missingRange": [8, 9]}]})",
                          "FILE.schema.json: field 'b': a range of missing values needs a numeric "
                          "variable; 'b' is a string"},
        SchemaRefusalCase{"BoundIsText", R"({"fields": [{"name": "a", "missingRange": [8, "x"]}]})",
                          "FILE.schema.json: field 'a': the bound 'x' of the missing range is no "
                          "value of the numeric variable 'a'"},
        SchemaRefusalCase{"FourMissing",
                          R"({"fields": [{"name": "a", "missingValues": [6,7,8,9]}]})",
                          "FILE.schema.json: field 'a': 'a' has 4 missing values; at most 3 can be "
                          "declared, or one range and one value"},
        SchemaRefusalCase{
            "TwoMissingBesideARange",
            R"({"fields": [{"name": "a", "missingValues": [1,2], "missingRange": [8,9]}]})",
            "FILE.schema.json: field 'a': 'a' has 2 missing values beside a range; at "
            "most 1 can be declared"},
        SchemaRefusalCase{"MissingIsNoList", R"({"fields": [{"name": "a", "missingValues": 9}]})",
                          "FILE.schema.json: field 'a': 'missingValues' must be a list, not 9"},
        SchemaRefusalCase{
            "MissingIsAList", R"({"fields": [{"name": "a", "missingValues": [[9]]}]})",
            "FILE.schema.json: field 'a': a value in 'missingValues' must be a text, a "
            "number or a boolean, not [9]"},
        SchemaRefusalCase{"CategoryWithoutValue",
                          R"({"fields": [{"name": "a", "categories": [{"label": "x"}]}]})",
                          "FILE.schema.json: field 'a': an item of 'categories' has no 'value': "
                          "{\"label\":\"x\"}"},
        SchemaRefusalCase{
            "LabelIsANumber",
            R"({"fields": [{"name": "a", "categories": [{"value": 1, "label": 2}]}]})",
            "FILE.schema.json: field 'a': in 'categories' a label must be a text, not "
            "2"},
        SchemaRefusalCase{
            "CategoryOfAnotherType", R"({"fields": [{"name": "a", "categories": ["x"]}]})",
            "FILE.schema.json: field 'a': the category 'x' is no value of a variable of "
            "this type"},
        SchemaRefusalCase{"OrderedIsText",
                          R"({"fields": [{"name": "a", "categoriesOrdered": "yes"}]})",
                          "FILE.schema.json: field 'a': 'categoriesOrdered' must be true or false, "
                          "not \"yes\""},
        SchemaRefusalCase{
            "DateFormat", R"({"fields": [{"name": "d", "type": "date", "format": "%d/%m/%Y"}]})",
            "FILE.schema.json: field 'd': the format '%d/%m/%Y' is not supported; write "
            "values as YYYY-MM-DD, YYYY-MM-DDThh:mm:ss or hh:mm:ss, or declare a "
            "string"},
        SchemaRefusalCase{"TitleIsANumber", R"({"fields": [{"name": "a", "title": 5}]})",
                          "FILE.schema.json: field 'a': 'title' must be a text, not 5"},
        SchemaRefusalCase{"LongDecimalMark", R"({"fields": [{"name": "a", "decimalChar": ".,"}]})",
                          "FILE.schema.json: field 'a': 'decimalChar' must be one ASCII character, "
                          "not '.,'"},
        SchemaRefusalCase{"UnknownMatch", R"({"fields": [], "fieldsMatch": "some"})",
                          "FILE.schema.json: 'fieldsMatch' is \"some\", which is none of partial, "
                          "exact, equal, subset, superset"},
        SchemaRefusalCase{"EqualWantsAll", R"({"fields": [{"name": "a"}, {"name": "b"}],
                                               "fieldsMatch": "equal"})",
                          "FILE.schema.json: the column 'd' of FILE has no field, as 'fieldsMatch' "
                          "demands; declare it or use \"partial\""},
        SchemaRefusalCase{
            "ExactWantsOrder",
            R"({"fields": [{"name": "b"}, {"name": "a"}, {"name": "d"}],
                              "fieldsMatch": "exact"})",
            "FILE.schema.json: the fields are not in the order of the columns of FILE, "
            "as 'fieldsMatch' \"exact\" demands; reorder them or use \"equal\""},
        SchemaRefusalCase{"WeightUnknown", R"({"fields": [], "weight": "w"})",
                          "FILE.schema.json: 'weight': no column of FILE has the name 'w'"},
        SchemaRefusalCase{
            "WeightIsAString", R"({"fields": [], "weight": "b"})",
            "FILE.schema.json: 'weight': the weight variable 'b' is a string; a numeric "
            "variable is needed"},
        SchemaRefusalCase{"SplitUnknown", R"({"fields": [], "split": ["a", "s"]})",
                          "FILE.schema.json: 'split': no column of FILE has the name 's'"}),
    [](const auto& tested) { return std::string(tested.param.fName); });

TEST_F(OpenWithSchema, ASchemaCutShortAnywhereIsNoJson) {
    const std::string schema =
        R"({"fields": [{"name": "a", "title": "\u00e4", "missingValues": [9, "x", true]}]})";
    for (std::size_t length = 0; length < schema.size(); ++length) {
        EXPECT_EQ(SchemaRefusal(kTable, schema.substr(0, length))
                      .find("FILE.schema.json: it is no JSON: line 1, column "),
                  0U);
    }
}

TEST_F(OpenWithSchema, ManyLevelsOfNestingAreRefused) {
    const std::string schema =
        R"({"fields": [], "x": )" + std::string(100000, '[') + std::string(100000, ']') + "}";
    EXPECT_EQ(SchemaRefusal(kTable, schema),
              "FILE.schema.json: it is nested more than 100 levels deep");
}

TEST_F(OpenWithSchema, TheOtherWaysToMatchAreKept) {
    EXPECT_EQ(OpenWith("a,b\n1,2\n", R"({"fields": [{"name": "b"}, {"name": "a", "title": "A"}],
                                         "fieldsMatch": ["equal"]})")
                  .Variable(0)
                  .GetLabel(),
              "A");
    EXPECT_EQ(OpenWith("a\n1\n", R"({"fields": [{"name": "z"}, {"name": "a", "title": "A"}],
                                     "fieldsMatch": "superset"})")
                  .Variable(0)
                  .GetLabel(),
              "A");
    EXPECT_EQ(OpenWith("a,b\n1,2\n", R"({"fields": [{"name": "a"}], "fieldsMatch": "subset"})")
                  .ColumnCount(),
              2);
}

struct OptionRefusalCase {
    const char* fName;
    OpenOptions fOptions;
    const char* fMessage;
};
void PrintTo(const OptionRefusalCase& refusalCase, std::ostream* out) { *out << refusalCase.fName; }
class OptionRefusals : public OpenText, public testing::WithParamInterface<OptionRefusalCase> {};

TEST_P(OptionRefusals, SayWhatWhereAndHowToMendIt) {
    EXPECT_EQ(Refusal(kTable, Kind::kOption, GetParam().fOptions), GetParam().fMessage);
}

OpenOptions Level(const char* name, const char* level) {
    OpenOptions options;
    options.fvLevels = {{name, level}};
    return options;
}
OpenOptions Missing(const char* name, const char* values) {
    OpenOptions options;
    options.fvMissing = {{name, values}};
    return options;
}
OpenOptions Weight(const char* name) {
    OpenOptions options;
    options.fWeight = name;
    return options;
}

INSTANTIATE_TEST_SUITE_P(
    Options, OptionRefusals,
    testing::Values(
        OptionRefusalCase{"LevelOfNoVariable", Level("z", "scale"),
                          "--level z=scale: no column of FILE has the name 'z'; correct the name"},
        OptionRefusalCase{"NoLevel", Level("a", "metric"),
                          "--level a=metric: the measurement level 'metric' is none of nominal, "
                          "ordinal, scale"},
        OptionRefusalCase{"ScaleString", Level("b", "scale"),
                          "--level b=scale: the string variable 'b' cannot have the measurement "
                          "level scale"},
        OptionRefusalCase{
            "FourMissing", Missing("a", "1,2,3,4"),
            "--missing a=1,2,3,4: 'a' has 4 missing values; at most 3 can be declared, "
            "or one range and one value"},
        OptionRefusalCase{"TwoRanges", Missing("a", "1..2,3..4"),
                          "--missing a=1..2,3..4: only one range LOW..HIGH is possible"},
        OptionRefusalCase{
            "ReversedRange", Missing("a", "2..1"),
            "--missing a=2..1: the missing range is reversed: 2 is above 1; write the "
            "lower bound first"},
        OptionRefusalCase{
            "EmptyValue", Missing("a", "1,,2"),
            "--missing a=1,,2: a value is empty; separate values by single commas, as "
            "in 8,9"},
        OptionRefusalCase{"NoWeight", Weight("z"),
                          "--weight z: no column of FILE has the name 'z'"},
        OptionRefusalCase{"WeightIsAString", Weight("b"),
                          "--weight b: the weight variable 'b' is a string; a numeric variable is "
                          "needed"}),
    [](const auto& tested) { return std::string(tested.param.fName); });

}  // namespace
}  // namespace embedded
