#include "embedded/data/DelimitedText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "embedded/data/DataError.h"
#include "embedded/data/tests/ArrowCells.h"
#include "tests/support/RandomSeed.h"

namespace embedded {
namespace {

/// Everything that a reading of a text comes to, in a form that can be compared and printed.
struct Result {
    std::string fError;
    std::vector<std::string> fvColumns;
};

std::string Noted(const Oddity& oddity) {
    return std::to_string(oddity.fCount) + "@" + std::to_string(oddity.fFirstRow) + " ";
}

std::string Shown(const ReadColumn& read) {
    std::string text = std::to_string(static_cast<int>(read.fKind)) + " " +
                       std::to_string(read.fDecimals) + " " + Noted(read.fInfinite) +
                       Noted(read.fInexact) + Noted(read.fUndecodable) + ":";
    for (std::int64_t row = 0; row < read.fColumn.RowCount(); ++row) {
        text += '|';
        if (!read.fColumn.IsValid(row)) {
            continue;
        }
        const KoltObs value = read.fColumn.Value(row);
        if (const auto* number = std::get_if<double>(&value)) {
            text += std::to_string(std::bit_cast<std::uint64_t>(*number));
        } else {
            text += std::get<std::string>(value);
        }
    }
    return text;
}

std::string Shown(const TextColumn::Fault& fault) {
    return "fault in row " + std::to_string(fault.fRow) + ": " + fault.fCell;
}

// Reads with Arrow's cutting into cells and each cell given to its column, one after the other.
Result PlainResult(const std::string& text, TextDialect dialect, const TextColumnRules& rules) {
    Result result;
    RecordScanner scanner(text, dialect);
    scanner.Next();
    const std::int32_t fields = scanner.FieldCount();
    const std::size_t body = scanner.Position();
    std::int64_t rows = 0;
    std::int64_t longest = 0;
    while (!scanner.IsUnterminated() && scanner.Next() && !scanner.IsUnterminated()) {
        if (scanner.FieldCount() != fields) {
            result.fError = "line " + std::to_string(scanner.Line()) + " has " +
                            std::to_string(scanner.FieldCount()) + " value";
            return result;
        }
        ++rows;
        longest = std::max(longest, static_cast<std::int64_t>(scanner.Record().size()));
    }
    if (scanner.IsUnterminated()) {
        result.fError = "starts in line " + std::to_string(scanner.Line()) + " has a quote";
        return result;
    }
    std::vector<std::int32_t> wanted;
    std::vector<std::unique_ptr<TextColumn>> columns;
    for (std::int32_t column = 0; column < fields; ++column) {
        wanted.push_back(column);
        columns.push_back(std::make_unique<TextColumn>(rules));
    }
    for (int reading = 1; reading <= 2 && rows > 0; ++reading) {
        const ArrowStream stream = ReadCells(std::string_view(text).substr(body), dialect, fields,
                                             wanted, longest, 1 << 20, "text");
        for (OwnedArrowArray batch; stream.Next(batch);) {
            for (std::size_t at = 0; at < wanted.size(); ++at) {
                const ArrowArray& cells = *batch.Get().children[at];
                const auto* validity = static_cast<const unsigned char*>(cells.buffers[0]);
                const auto* offsets = static_cast<const std::int32_t*>(cells.buffers[1]);
                const auto* letters = static_cast<const char*>(cells.buffers[2]);
                const std::int64_t first = batch.Get().offset + cells.offset;
                TextColumn& column = *columns[static_cast<std::size_t>(wanted[at])];
                for (std::int64_t row = first; row < first + batch.Get().length; ++row) {
                    if (validity != nullptr && ((validity[row / 8] >> (row % 8)) & 1) == 0) {
                        column.AppendEmpty();
                    } else {
                        column.Append({letters + offsets[row],
                                       static_cast<std::size_t>(offsets[row + 1] - offsets[row])});
                    }
                }
            }
        }
        std::erase_if(wanted, [&columns](std::int32_t column) {
            return columns[static_cast<std::size_t>(column)]->EndReading();
        });
        if (wanted.empty()) {
            break;
        }
    }
    for (const auto& column : columns) {
        result.fvColumns.push_back(column->GetFault() ? Shown(*column->GetFault())
                                                      : Shown(std::move(*column).Finish()));
    }
    return result;
}

Result ResultOf(const std::string& text, const OpenOptions& options, const TextColumnRules& rules,
                const std::shared_ptr<ColumnMemory>& memory) {
    Result result;
    try {
        const DelimitedText table(text, options, "text");
        std::vector<std::unique_ptr<TextColumn>> columns;
        for (std::size_t column = 0; column < table.Names().size(); ++column) {
            columns.push_back(std::make_unique<TextColumn>(rules));
        }
        for (const DelimitedText::Outcome& outcome : table.Read(std::move(columns), memory)) {
            result.fvColumns.push_back(outcome.fFault ? Shown(*outcome.fFault)
                                                      : Shown(*outcome.fRead));
        }
    } catch (const DataError& error) {
        result.fError = error.what();
    }
    return result;
}

// Reads in sections of all sizes, on one thread and more, within memory and beyond it.
void ExpectTheSame(const std::string& text, const TextColumnRules& rules = {},
                   TextDialect dialect = {}, const std::string& mark = "") {
    OpenOptions options;
    options.fDelimiter = dialect.fDelimiter;
    options.fQuote = dialect.fQuote;
    options.fEncoding = TextEncoding::kUtf8;
    const Result expected = PlainResult(text, dialect, rules);
    for (const auto& [blockBytes, threads, limit] :
         std::vector<std::array<int, 3>>{{1 << 20, 1, 1 << 30},
                                         {1, 2, 1 << 30},
                                         {2, 1, 0},
                                         {9, 5, 1},
                                         {64, 2, 1000},
                                         {1000, 5, 1 << 30}}) {
        options.fBlockBytes = blockBytes;
        options.fThreads = threads;
        const auto memory = limit == 0 ? nullptr : std::make_shared<ColumnMemory>(limit);
        const Result found = ResultOf(mark + text, options, rules, memory);
        SCOPED_TRACE("blocks of " + std::to_string(blockBytes));
        if (!expected.fError.empty()) {
            ASSERT_NE(found.fError.find(expected.fError), std::string::npos)
                << expected.fError << " not in: " << found.fError << "\n"
                << testing::PrintToString(text);
        } else {
            ASSERT_EQ(found.fError, "");
            ASSERT_EQ(found.fvColumns.size(), expected.fvColumns.size());
            for (std::size_t at = 0; at < expected.fvColumns.size(); ++at) {
                ASSERT_TRUE(found.fvColumns[at] == expected.fvColumns[at])
                    << "column " << at << "\n"
                    << found.fvColumns[at].substr(0, 2000) << "\n"
                    << expected.fvColumns[at].substr(0, 2000) << "\n"
                    << testing::PrintToString(text.substr(0, 2000));
            }
        }
    }
}

class Awkward : public testing::TestWithParam<const char*> {};

TEST_P(Awkward, ReadsAsTheLibraryCutsIt) { ExpectTheSame(GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Files, Awkward,
    testing::Values("a,b\n1,2\n", "a,b\n1,2", "a,b\n", "a,b", "a\n1\n2\n", "a\n1\n\n2\n\n",
                    "\n\na,b\n1,2\n", "a,b\r\n1,2\r\n3,4\r\n", "a,b\r\n1,\r\n,4\r\n",
                    "a,b\r1,2\r3,4\r", "a,b\r1,2\r3,4", "a,b\n1,2\r\n3,4\r5,6\n",
                    "a,b\n\n1,2\n\r\n3,4\r\r5,6\n\n", "a,b\r\n\r\n1,2\r\n\r\n",
                    "a,b\n\"x,y\",2\n\"p\nq\",3\n\"p\r\nq\",4\n\"p\rq\",5\n",
                    "a,b\n\"x\"\"y\",\"\"\n\"\"\"\",\"\"\"\"\"\"\n",
                    "a,b\n\"x\"y,\"x\"\"y\"z\"\n\"x\" , \"x\"\n", "a,b\n5\",6\"7\nx\"y\"z,1\n",
                    "a,b\n\"\",\n , \n\t,x\n", "a,b\n\"\n\n\n\",1\n\"\r\r\n\n\",2\n",
                    "a,b\n1,2\n3\n4,5\n", "a,b\n1,2\n3,4,5\n", "a,b\n1,2\n,\n\n3\n",
                    "a,b\n1,2\n\"3,4\n5,6\n", "a,b\n\"1\n2\",3\n4\n", "a,b\n1,2,3\n4\n5,6\n",
                    "\"a\nb\",c\n1,2\n", "a,b\nx,true\n y ,False\nz,TRUE\n",
                    "a,b\n2020-01-31,2020-02-01\n2020-02-01 10:00,x\n,\n",
                    "a,b\nnan,inf\nNaN,-Infinity\n", "a,b\nnan,inf\n1,2\n-inf,nan\n",
                    "a,b\nnan,1\ntrue,true\n", "a,b\n1,2020-01-01\n2020-01-01,1\n",
                    "a,b\nabcdefghijklmnop,abcdefghijklmnopq\n"
                    "abcdefghijklmnop,abcdefghijklmnopqr\nabcdefghijklmno,abcdefghijklmnopq\n",
                    "a,b\n\xC3\xA4,\xFF\n\xC3,\xC3\xA4\xC3\n", "a,b,c\n1,2,3\n4,5\n6,7,8,9\n"));

TextColumnRules CommaRules() {
    TextColumnRules rules;
    rules.fbCommaMark = true;
    return rules;
}

TEST(DelimitedText, NumbersAtTheEdgesAreExact) {
    std::string text = "a,b\n";
    for (const char* number : {"0",
                               "-0",
                               "+1",
                               "007",
                               "-007.50",
                               ".5",
                               "5.",
                               "-.5",
                               "-5.",
                               ".",
                               "-",
                               "+",
                               "",
                               "1e5",
                               "1E-5",
                               "1e",
                               "1e+",
                               "4.9e-324",
                               "2.2250738585072014e-308",
                               "2.2250738585072011e-308",
                               "1e308",
                               "1.7976931348623157e308",
                               "-1.7976931348623157e308",
                               "1.7976931348623159e308",
                               "1e-400",
                               "1e400",
                               "-1e400",
                               "9007199254740991",
                               "9007199254740992",
                               "9007199254740993",
                               "-9007199254740993",
                               "900719925474.0993",
                               "9999999999999999",
                               "999999999999999.9",
                               "0.1234567890123456",
                               "12345678901234567",
                               "123456789012345678901234567890",
                               "0.30000000000000004",
                               "1.00000000000000011102230246251565",
                               "8.5",
                               "12345678",
                               "123456789",
                               "1234567.8",
                               "12345678.9",
                               "1.23456789",
                               "-12345678.12345678",
                               "00000000000000000001",
                               "0000000000000001",
                               "-000000000000001",
                               "1 ",
                               " 1",
                               "\t2\t",
                               "1.5.5",
                               "1,5",
                               "0x10",
                               "1_0"}) {
        const std::string cell = number;
        ExpectTheSame("a,b\n1," + cell + "\n2,\n3,4\n");
        ExpectTheSame("a;b\n1;" + cell + "\n2;\n3;4\n", CommaRules(), {';', '"'});
    }
}

// A cell of one of some kinds, with now and then one that is out of the ordinary.
std::string RandomCell(std::mt19937& random, unsigned kind, unsigned oddOneIn) {
    const auto below = [&random](unsigned count) {
        return static_cast<unsigned>(random() % count);
    };
    static const std::vector<std::string> kOdd = {
        "nan",      "inf",        "-inf",
        "NA",       "-9",         "99",
        "n/a",      " ",          "\"\"",
        "\" \"",    "1e400",      "x",
        "true",     "1,5",        "1.5",
        "\"1,5\"",  "2020-01-01", "9007199254740993",
        "-0",       "\"a\nb\"",   "\"7\"",
        "\"1.25\"", "\"q\"\"q\"", "1e3",
        "\xC3\xA4", "\xFF",       "-1.7976931348623157e308",
        "\"5\"x"};
    if (oddOneIn > 0 && below(oddOneIn) == 0) {
        return kOdd[below(static_cast<unsigned>(kOdd.size()))];
    }
    if (below(20) == 0) {
        return "";
    }
    switch (kind) {
        case 0:
            return std::to_string(below(12));
        case 1:
            return std::to_string(static_cast<int>(random()));
        case 2:
            return std::to_string(static_cast<double>(static_cast<int>(random())) / 65536);
        case 3:
            return "level_" + std::to_string(below(20));
        case 4:
            return std::string("a rather long text, number ").substr(0, below(20)) +
                   std::to_string(below(1000));
        case 5:
            return below(2) == 0 ? "true" : "false";
        case 6:
            return "20" + std::to_string(10 + below(10)) + "-0" + std::to_string(1 + below(9)) +
                   "-11";
        case 7:
            return std::to_string(below(100000)) + "." + std::to_string(below(10000));
        default:
            return "\"" + std::to_string(below(400)) + "\"";
    }
}

std::vector<TextColumnRules> AllRules() {
    std::vector<TextColumnRules> all(10);
    all[1] = CommaRules();
    all[2].fMissingTexts = {"NA", "-9", " "};
    all[3] = CommaRules();
    all[3].fNeutralTexts = {"99", "-9", "n/a", "1,5"};
    all[4].fNeutralTexts = {"99", "NA"};
    for (std::size_t number = 5; number < 8; ++number) {
        all[number].fDeclared = ColumnKind::kNumber;
    }
    all[6].fbWholeOnly = true;
    all[6].fNeutralTexts = {"NA"};
    all[7].fGroupMark = '.';
    all[8].fDeclared = ColumnKind::kString;
    all[9].fDeclared = ColumnKind::kBoolean;
    return all;
}

// A text of columns of random kinds, and how it is to be read.
struct RandomText {
    std::string fText;
    TextDialect fDialect;
};

RandomText MakeRandomText(std::mt19937& random, unsigned mostColumns, unsigned mostRows) {
    const auto below = [&random](unsigned count) {
        return static_cast<unsigned>(random() % count);
    };
    RandomText made;
    made.fDialect.fDelimiter = std::array{',', ',', ';', '\t', '|', ' ', ':'}[below(7)];
    made.fDialect.fQuote = std::array{'"', '"', '"', '\'', '\0'}[below(5)];
    const char delimiter = made.fDialect.fDelimiter;
    const char quote = made.fDialect.fQuote;
    const unsigned columns = 1 + below(mostColumns);
    const unsigned rows = below(mostRows);
    // Texts with the delimiter make records of the wrong length: most files have none.
    const unsigned oddOneIn = std::array{0U, 30U, 500U, 2000U}[below(4)];
    static constexpr std::array<const char*, 4> kEnds = {"\n", "\r\n", "\r", "\n"};
    const unsigned end = below(5);
    const auto lineEnd = [&] {
        const unsigned which = end < kEnds.size() ? end : below(4);
        return std::string(kEnds[which]) + (below(200) == 0 ? kEnds[which] : "");
    };
    std::vector<unsigned> kinds;
    for (unsigned column = 0; column < columns; ++column) {
        kinds.push_back(below(9));
        made.fText += (column == 0 ? "" : std::string(1, delimiter)) + "v" + std::to_string(column);
    }
    for (unsigned row = 0; row < rows; ++row) {
        made.fText += lineEnd();
        for (unsigned column = 0; column < columns; ++column) {
            std::string cell = RandomCell(random, kinds[column], oddOneIn);
            std::replace(cell.begin(), cell.end(), '"', quote == '\0' ? 'q' : quote);
            if (quote != '\0' && cell.find(delimiter) != std::string::npos && cell[0] != quote &&
                below(40) != 0) {
                cell = quote + cell + quote;
            }
            if (quote == '\0' && below(40) != 0) {
                std::replace(cell.begin(), cell.end(), delimiter, '_');
                std::replace(cell.begin(), cell.end(), '\n', '_');
            }
            made.fText += (column == 0 ? "" : std::string(1, delimiter)) + cell;
        }
    }
    made.fText += below(3) == 0 ? "" : lineEnd();
    return made;
}

TEST(DelimitedText, RandomFilesReadAsTheLibraryCutsThem) {
    std::mt19937 random(testsupport::RandomSeed());
    const std::vector<TextColumnRules> rules = AllRules();
    for (unsigned file = 0; file < 150; ++file) {
        const RandomText made =
            MakeRandomText(random, file % 10 == 0 ? 60 : 6, file % 5 == 0 ? 700 : 60);
        SCOPED_TRACE("file " + std::to_string(file));
        ExpectTheSame(made.fText, rules[random() % rules.size()], made.fDialect,
                      random() % 4 == 0 ? "\xEF\xBB\xBF" : "");
        if (HasFatalFailure()) {
            return;
        }
    }
}

// Sections of more rows than are looked at together, and more distinct texts than a byte or two
// bytes have room for.
TEST(DelimitedText, LongRandomFilesReadAsTheLibraryCutsThem) {
    std::mt19937 random(testsupport::RandomSeed());
    const std::vector<TextColumnRules> rules = AllRules();
    for (int file = 0; file < 3; ++file) {
        const RandomText made = MakeRandomText(random, 5, 6000);
        SCOPED_TRACE("file " + std::to_string(file));
        ExpectTheSame(made.fText, rules[random() % rules.size()], made.fDialect);
        if (HasFatalFailure()) {
            return;
        }
    }
    std::string text = "a,b\n";
    for (unsigned row = 0; row < 70000; ++row) {
        text += "x" + std::to_string(row) + "," + std::to_string(row % 300) + "\n";
    }
    ExpectTheSame(text);
}

TEST(DelimitedText, RandomLettersReadAsTheLibraryCutsThem) {
    std::mt19937 random(testsupport::RandomSeed());
    constexpr std::string_view kLetters = "a1\"\",,,\n\n\r .-";
    for (int soup = 0; soup < 2000; ++soup) {
        std::string text = soup % 2 == 0 ? "a,b\n" : "a\n";
        const std::size_t length = 1 + random() % 60;
        while (text.size() < length) {
            text.push_back(kLetters[random() % kLetters.size()]);
        }
        ExpectTheSame(text);
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(DelimitedText, RandomBytesAreATableOrARefusal) {
    std::mt19937 random(testsupport::RandomSeed());
    int tables = 0;
    for (int soup = 0; soup < 2000; ++soup) {
        std::string text = "a,b\n";
        const std::size_t length = random() % 200;
        while (text.size() < length) {
            text.push_back(soup % 4 == 0 ? static_cast<char>(random())
                                         : "1,\n\"x\xC3\xA4"[random() % 7]);
        }
        OpenOptions options;
        options.fBlockBytes = 1 + static_cast<std::int32_t>(random() % 64);
        options.fThreads = 1 + static_cast<std::int32_t>(random() % 3);
        const Result result = ResultOf(text, options, {}, nullptr);
        ASSERT_EQ(result.fError.empty(), !result.fvColumns.empty());
        tables += result.fError.empty() ? 1 : 0;
    }
    EXPECT_GT(tables, 20);
}

// No record but the last ones is copied, and none is read with all others in one piece.
TEST(TextSections, TextsOfCarriageReturnsAreCutAsWell) {
    std::string text = "a,b\r";
    for (int row = 0; row < 1000; ++row) {
        text += "1,2\r";
    }
    const SectionedText cut = CutIntoSections(text, 4, {',', '"'}, 100, 1, [](std::string_view) {});
    EXPECT_EQ(cut.fRows, 1000);
    EXPECT_GT(cut.fvSections.size(), 30U);
    EXPECT_EQ(cut.fvCopies.size(), 1U);
}

TEST(DelimitedText, LinesOfRowsAreCountedFromTheTopOfTheFile) {
    OpenOptions options;
    options.fBlockBytes = 1;
    const std::string plain = "\na,b\n1,2\n3,4\n5,6\n";
    EXPECT_EQ(DelimitedText(plain, options, "text").LineOfRow(2), 5);
    const std::string spread = "a,b\n1,\"x\ny\"\n\n3,4\n5,6\n";
    EXPECT_EQ(DelimitedText(spread, options, "text").LineOfRow(1), 5);
}

}  // namespace
}  // namespace embedded
