#include "embedded/data/DialectDetection.h"

#include <gtest/gtest.h>

#include <ostream>

namespace embedded {
namespace {

struct DialectCase {
    const char* fName;
    const char* fText;
    char fDelimiter;
    char fQuote;
};
void PrintTo(const DialectCase& dialectCase, std::ostream* out) { *out << dialectCase.fName; }
class Dialects : public testing::TestWithParam<DialectCase> {};

TEST_P(Dialects, AreDetected) {
    const TextDialect dialect = DetectDialect(GetParam().fText, std::nullopt, std::nullopt);
    EXPECT_EQ(dialect.fDelimiter, GetParam().fDelimiter);
    EXPECT_EQ(dialect.fQuote, GetParam().fQuote);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, Dialects,
    testing::Values(DialectCase{"Comma", "a,b\n1,2\n", ',', '"'},
                    DialectCase{"Semicolon", "a;b\n1;2\n", ';', '"'},
                    DialectCase{"SemicolonWithDecimalCommas", "a;b\n1,5;2,5\n", ';', '"'},
                    DialectCase{"Tab", "a\tb\n1\t2\n", '\t', '"'},
                    DialectCase{"TabWithCommasInTexts", "a\tb\nx, y\t2\nz\t3\n", '\t', '"'},
                    DialectCase{"Bar", "a|b\n1|2\n", '|', '"'},
                    DialectCase{"OneColumn", "a\n1\n2\n", ',', '"'},
                    DialectCase{"OneColumnOfTextsWithCommas", "text\nx, y\nz, w\n", ',', '"'},
                    DialectCase{"QuotedDelimiters", "\"a;x\",b\n\"1;2;3\",2\n", ',', '"'},
                    DialectCase{"RaggedCommaBeatsNothing", "a,b,c\n1,2\n1,2,3\n", ',', '"'},
                    DialectCase{"SingleQuotes", "'a','b'\n'x, y','2'\n", ',', '\''},
                    DialectCase{"Apostrophes", "a,b\ndon't,2\nit's,3\n", ',', '"'},
                    DialectCase{"ApostropheAtTheEnd", "a,b\ndogs',2\n", ',', '"'},
                    DialectCase{"ApostropheAtTheStart", "a,b\n'tis,2\n", ',', '"'},
                    DialectCase{"DoubleQuotesRuleOutSingle", "'a',\"b\"\n'1',2\n", ',', '"'},
                    DialectCase{"Empty", "", ',', '"'}),
    [](const auto& tested) { return std::string(tested.param.fName); });

TEST(DetectDialect, WhatIsGivenIsTaken) {
    EXPECT_EQ(DetectDialect("a,b;c\n1,2;3\n", ';', std::nullopt).fDelimiter, ';');
    EXPECT_EQ(DetectDialect("'a','b'\n", std::nullopt, '"').fQuote, '"');
    EXPECT_EQ(DetectDialect("\"a\",\"b\"\n", std::nullopt, '\0').fQuote, '\0');
}

}  // namespace
}  // namespace embedded
