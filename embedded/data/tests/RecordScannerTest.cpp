#include "embedded/data/RecordScanner.h"

#include <gtest/gtest.h>

#include <ostream>
#include <random>

#include "embedded/data/tests/ArrowCells.h"

namespace embedded {
namespace {

using Cells = std::vector<std::string>;

std::vector<Cells> Records(std::string_view text, TextDialect dialect = {}) {
    std::vector<Cells> records;
    for (RecordScanner scanner(text, dialect); scanner.Next();) {
        records.push_back(SplitRecord(scanner.Record(), dialect));
        EXPECT_EQ(static_cast<std::size_t>(scanner.FieldCount()), records.back().size());
    }
    return records;
}

struct ScanCase {
    const char* fName;
    const char* fText;
    std::vector<Cells> fRecords;
};
void PrintTo(const ScanCase& scanCase, std::ostream* out) { *out << scanCase.fName; }
class Scans : public testing::TestWithParam<ScanCase> {};

TEST_P(Scans, GiveCells) { EXPECT_EQ(Records(GetParam().fText), GetParam().fRecords); }

INSTANTIATE_TEST_SUITE_P(
    Texts, Scans,
    testing::Values(ScanCase{"Plain", "a,b\nc,d\n", {{"a", "b"}, {"c", "d"}}},
                    ScanCase{"NoLineEndAtTheEnd", "a,b\nc,d", {{"a", "b"}, {"c", "d"}}},
                    ScanCase{"CarriageReturns", "a,b\rc,d\r", {{"a", "b"}, {"c", "d"}}},
                    ScanCase{"Both", "a,b\r\nc,d\r\n", {{"a", "b"}, {"c", "d"}}},
                    ScanCase{"EmptyLinesAreNoRecords", "\n\na\r\n\r\n\nb\n\n", {{"a"}, {"b"}}},
                    ScanCase{"EmptyCells", ",\n,,\n", {{"", ""}, {"", "", ""}}},
                    ScanCase{"Quotes", "\"a,b\",\"c\"\"d\"\n", {{"a,b", "c\"d"}}},
                    ScanCase{"LineEndsInQuotes", "\"a\nb\r\nc\",d\n", {{"a\nb\r\nc", "d"}}},
                    ScanCase{"TextBehindAQuote", "\"a\"b,c\n", {{"ab", "c"}}},
                    ScanCase{"QuoteInsideAField", "5\" disk,b\n", {{"5\" disk", "b"}}},
                    ScanCase{"EmptyQuotes", "\"\",\"\"\n", {{"", ""}}}),
    [](const auto& tested) { return std::string(tested.param.fName); });

TEST(RecordScanner, CountsLinesThroughQuotesAndLineEndsOfAllKinds) {
    RecordScanner scanner("h\r\n\"a\nb\rc\r\nd\"\n\n\rx\ry\n", {});
    std::vector<std::int64_t> lines;
    while (scanner.Next()) {
        lines.push_back(scanner.Line());
    }
    EXPECT_EQ(lines, (std::vector<std::int64_t>{1, 2, 8, 9}));
}

TEST(RecordScanner, AnOpenQuoteIsUnterminated) {
    RecordScanner scanner("a,b\n1,\"2\n3,4\n", {});
    ASSERT_TRUE(scanner.Next());
    EXPECT_FALSE(scanner.IsUnterminated());
    ASSERT_TRUE(scanner.Next());
    EXPECT_TRUE(scanner.IsUnterminated());
    EXPECT_EQ(scanner.Line(), 2);
    EXPECT_FALSE(scanner.Next());
}

TEST(RecordScanner, QuotesMayHaveNoMeaning) {
    EXPECT_EQ(Records("\"a,b\"\n", {',', '\0'}), (std::vector<Cells>{{"\"a", "b\""}}));
}

// The reader that cuts cells must see the same records: scanner and reader are compared on random
// soups of the letters that matter.
TEST(RecordScanner, AgreesWithTheReaderOfCells) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    constexpr std::string_view kLetters = "aab,,\"\"\n\r ";
    int compared = 0;
    for (int soup = 0; soup < 3000; ++soup) {
        std::string text;
        const std::size_t length = 1 + random() % 40;
        while (text.size() < length) {
            text.push_back(kLetters[random() % kLetters.size()]);
        }
        std::vector<Cells> expected;
        RecordScanner scanner(text, {});
        std::int64_t longest = 0;
        bool even = true;
        while (scanner.Next() && !scanner.IsUnterminated()) {
            expected.push_back(SplitRecord(scanner.Record(), {}));
            longest = std::max(longest, static_cast<std::int64_t>(scanner.Record().size()));
            even = even && expected.back().size() == expected.front().size();
        }
        if (expected.empty() || !even || scanner.IsUnterminated()) {
            continue;
        }
        ++compared;
        SCOPED_TRACE(testing::PrintToString(text));
        const auto columns = static_cast<std::int32_t>(expected.front().size());
        std::vector<std::int32_t> wanted;
        for (std::int32_t column = 0; column < columns; ++column) {
            wanted.push_back(column);
        }
        const auto blockBytes = static_cast<std::int32_t>(1 + random() % 20);
        const ArrowStream stream =
            ReadCells(text, {}, columns, wanted, longest, blockBytes, "soup");
        std::vector<Cells> found;
        for (OwnedArrowArray batch; stream.Next(batch);) {
            for (std::int64_t row = 0; row < batch.Get().length; ++row) {
                Cells cells;
                for (std::int32_t column = 0; column < columns; ++column) {
                    const ArrowArray& array = *batch.Get().children[column];
                    const auto* offsets = static_cast<const std::int32_t*>(array.buffers[1]);
                    const std::int64_t at = batch.Get().offset + array.offset + row;
                    cells.emplace_back(static_cast<const char*>(array.buffers[2]) + offsets[at],
                                       static_cast<std::size_t>(offsets[at + 1] - offsets[at]));
                }
                found.push_back(std::move(cells));
            }
        }
        ASSERT_EQ(found, expected);
    }
    EXPECT_GT(compared, 200);
}

}  // namespace
}  // namespace embedded
