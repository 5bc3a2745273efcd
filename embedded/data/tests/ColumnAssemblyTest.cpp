#include "embedded/data/ColumnAssembly.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <optional>
#include <random>

#include "embedded/data/DataError.h"

namespace embedded {
namespace {

constexpr double kMissing = MCMV::gMissingValue;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

CodeVector ByteCodes(std::initializer_list<std::uint8_t> entries) {
    return Cells<std::uint8_t>(entries);
}

void ExpectSame(const Column& first, const Column& second) {
    ASSERT_EQ(first.RowCount(), second.RowCount());
    ASSERT_EQ(first.IsNumeric(), second.IsNumeric());
    EXPECT_EQ(first.ValidCount(), second.ValidCount());
    EXPECT_EQ(first.DistinctCount(), second.DistinctCount());
    EXPECT_EQ(first.Categories().Strings(), second.Categories().Strings());
    EXPECT_EQ(first.Categories().Numbers(), second.Categories().Numbers());
    ColumnBuffer firstBuffer;
    ColumnBuffer secondBuffer;
    for (std::int32_t i = 0; i < first.ChunkCount(); ++i) {
        const ColumnChunk one = first.Chunk(i, firstBuffer);
        const ColumnChunk other = second.Chunk(i, secondBuffer);
        ASSERT_EQ(one.fRows, other.fRows);
        for (std::int32_t row = 0; row < one.fRows; ++row) {
            ASSERT_EQ(one.IsValid(row), other.IsValid(row)) << i << " " << row;
        }
        if (first.IsNumeric()) {
            for (std::size_t row = 0; row < one.fNumbers.size(); ++row) {
                ASSERT_EQ(one.fNumbers[row], other.fNumbers[row]);
                ASSERT_EQ(std::signbit(one.fNumbers[row]), std::signbit(other.fNumbers[row]));
            }
        }
        const CodeSpan oneCodes = first.Codes(i, firstBuffer);
        const CodeSpan otherCodes = second.Codes(i, secondBuffer);
        ASSERT_EQ(oneCodes.Size(), otherCodes.Size());
        for (std::size_t row = 0; row < oneCodes.Size(); ++row) {
            ASSERT_EQ(oneCodes[row], otherCodes[row]);
        }
    }
}

TEST(NumericParts, DictionariesOfPartsBecomeOneInAscendingOrder) {
    NumericParts parts;
    parts.SetCodes(1, {3, -0.0, 7}, ByteCodes({2, 1, 0, 1}));
    parts.SetCodes(0, {9, 3}, ByteCodes({1, 2, 0}));
    const Column column = parts.Finish(2);
    EXPECT_TRUE(column.IsCoded());
    // 7 is in no row.
    EXPECT_EQ(column.Categories().Numbers(), (std::vector<double>{0, 3, 9}));
    const std::vector<double> expected = {9, 3, kMissing, 0, 3, kMissing, 3};
    ASSERT_EQ(column.RowCount(), 7);
    for (std::size_t row = 0; row < expected.size(); ++row) {
        EXPECT_EQ(column.Chunk(0).fNumbers[row], expected[row]) << row;
    }
    EXPECT_EQ(column.ValidCount(), 5);
}

TEST(NumericParts, InfiniteEntriesAreMissingAndCountedByRow) {
    NumericParts parts;
    parts.SetCodes(0, {1, kInfinity, kNaN, -kInfinity}, ByteCodes({1, 3, 1}));
    parts.SetCodes(1, {1, kInfinity, kNaN, kMissing}, ByteCodes({1, 2, 3, 4, 2}));
    const Column column = parts.Finish(1);
    EXPECT_EQ(parts.Infinite().fCount, 3);
    EXPECT_EQ(parts.Infinite().fFirstRow, 4);
    EXPECT_EQ(column.ValidCount(), 3);
    EXPECT_EQ(column.Categories().Numbers(), std::vector<double>{1});
}

TEST(NumericParts, NoPartsMakeAColumnWithoutRows) {
    NumericParts parts;
    EXPECT_EQ(parts.Finish(1).RowCount(), 0);
}

TEST(SettleNumbers, WhatIsNoNumberIsMissing) {
    std::vector<double> numbers = {1, kNaN, kInfinity, -0.0, kMissing, -kInfinity};
    Oddity infinite;
    EXPECT_EQ(SettleNumbers(numbers, 10, infinite), 4);
    EXPECT_EQ(numbers, (std::vector<double>{1, kMissing, kMissing, 0, kMissing, kMissing}));
    EXPECT_FALSE(std::signbit(numbers[3]));
    EXPECT_EQ(infinite.fCount, 3);
    EXPECT_EQ(infinite.fFirstRow, 12);
}

TEST(TextParts, TextsThatStandForMissingAndUndecodableOnesAreSettledOnce) {
    const TextSet missing = {"NA"};
    TextParts parts(&missing);
    parts.SetCodes(0, {"b", "NA", "unused"}, ByteCodes({1, 2, 0}));
    parts.SetCodes(2, {"\xFFx", "b", "\xFEx"}, ByteCodes({2, 1, 3}));
    const Column column = parts.Finish(1);
    EXPECT_EQ(column.Categories().Strings(), (std::vector<std::string>{"b", "\xEF\xBF\xBDx"}));
    EXPECT_EQ(parts.Undecodable().fCount, 2);
    EXPECT_EQ(parts.Undecodable().fFirstRow, 4);
    EXPECT_EQ(column.ValidCount(), 4);
    EXPECT_FALSE(column.IsValid(1));
}

// How the rows were parted, how each part was given, where its rows went and how many threads there
// were: nothing of it shows.
TEST(ColumnParts, AreTheColumnThatIsMadeRowByRow) {
    const auto seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (const int distinct : {3, 200, 300, 70000, 1000000}) {
        const std::size_t rows = 150000 + random() % 100000;
        std::vector<double> values(rows);
        NumericColumnBuilder numbers;
        StringColumnBuilder texts;
        for (double& value : values) {
            value = random() % 20 == 0 ? kMissing : static_cast<int>(random() % distinct) - 2.5;
            numbers.Append(value == kMissing ? kNaN : value);
            texts.Append(value == kMissing ? StringColumnBuilder::kMissingToken
                                           : texts.Intern(std::to_string(value)));
        }
        const Column expected = std::move(numbers).Finish();
        const Column expectedTexts = std::move(texts).Finish();
        for (const std::int64_t limit : {std::int64_t{1}, std::int64_t{700000}, std::int64_t{0}}) {
            const auto memory = std::make_shared<ColumnMemory>(limit);
            std::vector<std::int64_t> partRows;
            for (std::size_t left = rows; left > 0;) {
                const std::size_t count = std::min<std::size_t>(left, random() % 90000);
                partRows.push_back(static_cast<std::int64_t>(count));
                left -= count;
            }
            const bool placed = limit == 0;
            NumericParts parts(memory);
            NumericParts placedParts(partRows, memory);
            NumericParts& numeric = placed ? placedParts : parts;
            TextParts textParts(nullptr, memory);
            std::size_t first = 0;
            for (std::size_t part = 0; part < partRows.size(); ++part) {
                const auto number = static_cast<std::int32_t>(part);
                const auto end = first + static_cast<std::size_t>(partRows[part]);
                std::vector<double> dictionary;
                std::vector<std::string> textDictionary;
                std::unordered_map<double, std::uint32_t> entryOf = {{kMissing, 0}};
                Cells<std::uint32_t> entries;
                for (std::size_t row = first; row < end; ++row) {
                    const auto [known, isNew] = entryOf.try_emplace(
                        values[row], static_cast<std::uint32_t>(dictionary.size() + 1));
                    if (isNew) {
                        dictionary.push_back(values[row]);
                        textDictionary.push_back(std::to_string(values[row]));
                    }
                    entries.push_back(known->second);
                }
                textParts.SetCodes(number, textDictionary, entries);
                const auto way = random() % 3;
                if (way == 0 && placed) {
                    std::int64_t missing = 0;
                    for (std::size_t row = first; row < end;) {
                        const std::span<double> room =
                            numeric.Room(number, static_cast<std::int64_t>(row - first));
                        for (double& value : room) {
                            missing += values[row] == kMissing ? 1 : 0;
                            value = values[row++];
                        }
                    }
                    numeric.SetPlaced(number, missing);
                } else if (way == 1) {
                    numeric.SetNumbers(
                        number, Cells<double>(values.begin() + static_cast<std::ptrdiff_t>(first),
                                              values.begin() + static_cast<std::ptrdiff_t>(end)));
                } else {
                    numeric.SetCodes(number, dictionary, entries);
                }
                first = end;
            }
            ExpectSame(numeric.Finish(3), expected);
            ExpectSame(textParts.Finish(3), expectedTexts);
        }
    }
}

// TMPDIR as it was comes back with the end of the object.
class TemporaryFolderNamed {
 public:
    explicit TemporaryFolderNamed(const std::string& folder) {
        if (const char* before = std::getenv("TMPDIR")) {
            fBefore = before;
        }
        setenv("TMPDIR", folder.c_str(), 1);
    }
    ~TemporaryFolderNamed() {
        if (fBefore) {
            setenv("TMPDIR", fBefore->c_str(), 1);
        } else {
            unsetenv("TMPDIR");
        }
    }
    TemporaryFolderNamed(const TemporaryFolderNamed&) = delete;
    TemporaryFolderNamed& operator=(const TemporaryFolderNamed&) = delete;

 private:
    std::optional<std::string> fBefore;
};

TEST(ColumnMemory, AFolderThatIsNotThereIsToldInOneLine) {
    const TemporaryFolderNamed folder("/no such folder");
    NumericParts parts(std::make_shared<ColumnMemory>(3 << 20));
    try {
        parts.SetNumbers(0, Cells<double>(1 << 20));
        FAIL();
    } catch (const DataError& fault) {
        EXPECT_EQ(fault.GetKind(), DataError::Kind::kFile);
        EXPECT_STREQ(fault.what(),
                     "the data need more than the memory allowed (3 MiB), and the temporary file "
                     "in /no such folder cannot be made: No such file or directory; allow more "
                     "with --memory, or set TMPDIR to a folder with room");
    }
}

TEST(ColumnMemory, AFileThatCannotGrowIsToldInOneLine) {
    struct sigaction ignore {};
    struct sigaction signalBefore {};
    ignore.sa_handler = SIG_IGN;
    ASSERT_EQ(sigaction(SIGXFSZ, &ignore, &signalBefore), 0);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit small{1000, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    std::string told;
    try {
        ColumnMemory memory(1);
        const std::vector<char> bytes(1500, 'x');
        memory.Write(bytes.data(), 900);
        memory.Write(bytes.data(), bytes.size());
    } catch (const DataError& fault) {
        told = fault.what();
    }
    setrlimit(RLIMIT_FSIZE, &before);
    sigaction(SIGXFSZ, &signalBefore, nullptr);
    EXPECT_NE(told.find("cannot be written: File too large; allow more"), std::string::npos)
        << told;
}

TEST(ColumnMemory, WhatIsGivenBackCanBeTakenAgain) {
    ColumnMemory memory(100);
    EXPECT_TRUE(memory.Take(60));
    EXPECT_FALSE(memory.Take(60));
    memory.GiveBack(60);
    EXPECT_TRUE(memory.Take(100));
    EXPECT_FALSE(memory.Take(1));
}

}  // namespace
}  // namespace embedded
