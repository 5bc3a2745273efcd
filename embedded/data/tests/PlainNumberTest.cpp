#include "embedded/data/PlainNumber.h"

#include <gtest/gtest.h>

#include <bit>
#include <optional>
#include <random>
#include <string>

#include "embedded/data/CellText.h"

namespace embedded {
namespace {

// True when it was read; then it must be what the general form reads.
bool ReadsAlike(const std::string& text, char mark) {
    const std::string padded = text + ",1234.5678\n" + std::string(17, '\0');
    double value = 0;
    std::int32_t decimals = 0;
    if (!ReadPlainNumber(padded.data(), static_cast<std::uint32_t>(text.size()), mark, value,
                         decimals)) {
        return false;
    }
    const std::optional<NumberText> number = ParseNumber(text, mark);
    EXPECT_TRUE(number) << text;
    if (number) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(value),
                  std::bit_cast<std::uint64_t>(number->fValue + 0.0))
            << text;
        EXPECT_EQ(decimals, number->fDecimals) << text;
        EXPECT_EQ(decimals > 0, number->fbMark) << text;
    }
    return true;
}

TEST(PlainNumber, CommonNumbersAreRead) {
    for (const char* text : {"0", "7", "-7", "42", "12345678", "123456789", "9007199254740991",
                             "0.5", "-123.4567", "1234567.8", "12345678.9", "123456789.1",
                             "-0.0001", "1.23456789012345", "0000000000000001", "-0"}) {
        EXPECT_TRUE(ReadsAlike(text, '.')) << text;
    }
    EXPECT_TRUE(ReadsAlike("1,5", ','));
}

TEST(PlainNumber, EverythingElseIsLeftToTheGeneralForm) {
    for (const char* text : {"",
                             "-",
                             ".",
                             "-.",
                             ".5",
                             "5.",
                             "+1",
                             "1e5",
                             "nan",
                             "1.2.3",
                             "1,5",
                             " 1",
                             "1 ",
                             "--1",
                             "-+1",
                             "9007199254740992",
                             "12345678901234567",
                             "1:",
                             "1/",
                             "\xB1"}) {
        EXPECT_FALSE(ReadsAlike(text, '.')) << text;
    }
}

TEST(PlainNumber, WhatIsReadIsWhatTheGeneralFormReads) {
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    constexpr std::string_view kLetters = "0123456789012345678901234567890123456789.,-+e x";
    int read = 0;
    for (int trial = 0; trial < 200000; ++trial) {
        std::string text = random() % 3 == 0 ? "-" : "";
        const std::size_t length = random() % 18;
        const bool digits = random() % 2 == 0;
        while (text.size() < length) {
            text.push_back(kLetters[random() % (digits ? 41 : kLetters.size())]);
        }
        read += ReadsAlike(text, random() % 4 == 0 ? ',' : '.') ? 1 : 0;
    }
    EXPECT_GT(read, 20000);
}

}  // namespace
}  // namespace embedded
