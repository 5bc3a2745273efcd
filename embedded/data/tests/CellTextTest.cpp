#include "embedded/data/CellText.h"

#include <gtest/gtest.h>

#include <cmath>

namespace embedded {
namespace {

struct NumberCase {
    const char* fText;
    char fMark;
    double fValue;
    bool fbInteger;
    int fDecimals;
};
class Numbers : public testing::TestWithParam<NumberCase> {};

TEST_P(Numbers, AreRead) {
    const NumberCase& expected = GetParam();
    const auto number = ParseNumber(expected.fText, expected.fMark);
    ASSERT_TRUE(number) << expected.fText;
    EXPECT_EQ(number->fValue, expected.fValue) << expected.fText;
    EXPECT_EQ(number->fbInteger, expected.fbInteger) << expected.fText;
    EXPECT_EQ(number->fDecimals, expected.fDecimals) << expected.fText;
}

INSTANTIATE_TEST_SUITE_P(
    Forms, Numbers,
    testing::Values(NumberCase{"0", '.', 0, true, 0}, NumberCase{"-12", '.', -12, true, 0},
                    NumberCase{"+7", '.', 7, true, 0}, NumberCase{"007", '.', 7, true, 0},
                    NumberCase{"1.50", '.', 1.5, false, 2}, NumberCase{"1.", '.', 1, false, 0},
                    NumberCase{".5", '.', 0.5, false, 1}, NumberCase{"-.5", '.', -0.5, false, 1},
                    NumberCase{"1e3", '.', 1000, false, 0},
                    NumberCase{"1.25E-2", '.', 0.0125, false, 2},
                    NumberCase{"1,5", ',', 1.5, false, 1}, NumberCase{"1", ',', 1, true, 0},
                    NumberCase{"9007199254740993", '.', 9007199254740992.0, true, 0},
                    NumberCase{"0.1", '.', 0.1, false, 1}, NumberCase{"1e-400", '.', 0, false, 0}));

class NoNumbers : public testing::TestWithParam<const char*> {};

TEST_P(NoNumbers, AreRefused) { EXPECT_FALSE(ParseNumber(GetParam(), '.')) << GetParam(); }

INSTANTIATE_TEST_SUITE_P(Forms, NoNumbers,
                         testing::Values("", "-", "+", ".", "e5", "1e", "1,5", "1.2.3", "0x10",
                                         "0x1p3", "1 2", " 1", "1 ", "--1", "+-1", "12a", "1_000",
                                         "nano", "in", "1/2", "$5", "5%", "nan(1)"));

TEST(ParseNumber, InfinityAndNaNAreNumbersOfTheirOwn) {
    for (const char* text : {"inf", "INF", "Infinity", "+inf"}) {
        EXPECT_EQ(ParseNumber(text, '.')->fValue, HUGE_VAL) << text;
    }
    EXPECT_EQ(ParseNumber("-inf", '.')->fValue, -HUGE_VAL);
    EXPECT_TRUE(std::isnan(ParseNumber("NaN", '.')->fValue));
}

TEST(ParseNumber, TooLargeIsInfinite) {
    EXPECT_EQ(ParseNumber("1e999", '.')->fValue, HUGE_VAL);
    EXPECT_EQ(ParseNumber("-1e999", '.')->fValue, -HUGE_VAL);
}

TEST(ParseDate, ReadsTheCalendar) {
    EXPECT_EQ(ParseDate("1970-01-01"), 0.0);
    EXPECT_EQ(ParseDate("2024-02-29"), 19782.0);
    EXPECT_EQ(ParseDate("1969-12-31"), -1.0);
    for (const char* text : {"2023-02-29", "2024-13-01", "2024-00-10", "2024-1-1", "24-01-01",
                             "2024-01-01x", "2024/01/01", "", "20240101"}) {
        EXPECT_FALSE(ParseDate(text)) << text;
    }
}

TEST(ParseTime, ReadsTheClock) {
    EXPECT_EQ(ParseTime("00:00"), 0.0);
    EXPECT_EQ(ParseTime("12:34:56"), 45296.0);
    EXPECT_EQ(ParseTime("12:34:56.5"), 45296.5);
    EXPECT_EQ(ParseTime("12:34:56,25"), 45296.25);
    for (const char* text : {"24:00", "12:60", "12:34:60", "1:00", "12", "12:34:", "12:34:56."}) {
        EXPECT_FALSE(ParseTime(text)) << text;
    }
}

TEST(ParseDateTime, TakesShiftsToUtc) {
    EXPECT_EQ(ParseDateTime("1970-01-02T00:00:00Z"), 86400.0);
    EXPECT_EQ(ParseDateTime("1970-01-02 00:00"), 86400.0);
    EXPECT_EQ(ParseDateTime("1970-01-01T02:00:00+02:00"), 0.0);
    EXPECT_EQ(ParseDateTime("1970-01-01T00:00:00-0130"), 5400.0);
    EXPECT_EQ(ParseDateTime("1970-01-01T00:00:00.125+01"), -3599.875);
    for (const char* text : {"1970-01-02", "1970-01-02T", "1970-01-02T00:00:00+2",
                             "1970-01-02T00:00:00 Z", "1970-01-02T00:00:00+25:00"}) {
        EXPECT_FALSE(ParseDateTime(text)) << text;
    }
}

TEST(TrimBlanks, TakesBlanksAndTabsOffBothEnds) {
    EXPECT_EQ(TrimBlanks(" \t a b \t"), "a b");
    EXPECT_EQ(TrimBlanks("  "), "");
    EXPECT_EQ(TrimBlanks(""), "");
}

TEST(TrimTrailingBlanks, LeavesOtherBlanksAndTabs) {
    EXPECT_EQ(TrimTrailingBlanks(" a b  "), " a b");
    EXPECT_EQ(TrimTrailingBlanks("a\t "), "a\t");
    EXPECT_EQ(TrimTrailingBlanks("  "), "");
    EXPECT_EQ(TrimTrailingBlanks(""), "");
}

}  // namespace
}  // namespace embedded
