#include "embedded/output/NumberText.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "host/Records.h"
#include "tests/support/CaseName.h"

namespace embedded {
namespace {

struct NumberCase {
    const char* fName;
    double fValue;
    BpFormatKind fKind;
    bool fbDecimalCounts;
    const char* fExpected;
};

class NumberTextOf : public testing::TestWithParam<NumberCase> {};

TEST_P(NumberTextOf, Format) {
    const NumberCase& c = GetParam();
    EXPECT_EQ(NumberText(c.fValue, c.fKind, c.fbDecimalCounts), c.fExpected);
}

constexpr auto kCount = BpFormatKind::Count;
constexpr auto kPercent = BpFormatKind::Percent;
constexpr auto kSig = BpFormatKind::Significance;
constexpr auto kStat = BpFormatKind::GeneralStat;
constexpr auto kCoefficient = BpFormatKind::Coefficient;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    Formats, NumberTextOf,
    testing::Values(NumberCase{"WholeCount", 1234, kCount, false, "1234"},
                    NumberCase{"CountHasNoDecimals", 12.4, kCount, false, "12"},
                    NumberCase{"CountUnderFractionalWeights", 12.4, kCount, true, "12.40"},
                    NumberCase{"WholeCountUnderFractionalWeights", 12, kCount, true, "12.00"},
                    NumberCase{"NegativeCountThatRoundsToZero", -0.2, kCount, false, "0"},
                    NumberCase{"CountOfATrillion", 1e12, kCount, false, "1000000000000"},
                    NumberCase{"CountBeyondWholeDoubles", 1.25e16, kCount, false, "1.250e+16"},
                    NumberCase{"Percent", 12.345, kPercent, false, "12.3%"},
                    NumberCase{"PercentOfAll", 100, kPercent, false, "100.0%"},
                    NumberCase{"PercentOfNone", 0, kPercent, false, "0.0%"},
                    NumberCase{"NegativePercentThatRoundsToZero", -0.01, kPercent, false, "0.0%"},
                    NumberCase{"Significance", 0.013, kSig, false, ".013"},
                    NumberCase{"SignificanceOfOne", 1, kSig, false, "1.000"},
                    NumberCase{"SignificanceThatRoundsToOne", 0.9996, kSig, false, "1.000"},
                    NumberCase{"SignificanceAtTheLeastShown", 0.001, kSig, false, ".001"},
                    NumberCase{"SignificanceJustBelow", 0.00099, kSig, false, "<.001"},
                    NumberCase{"SignificanceOfZero", 0, kSig, false, "<.001"},
                    NumberCase{"Statistic", 12.34567, kStat, false, "12.346"},
                    NumberCase{"StatisticKeepsItsZero", 0.25, kStat, false, "0.250"},
                    NumberCase{"NegativeStatistic", -3.5, kStat, false, "-3.500"},
                    NumberCase{"StatisticOfZero", 0, kStat, false, "0.000"},
                    NumberCase{"StatisticOfNegativeZero", -0.0, kStat, false, "0.000"},
                    NumberCase{"SmallestFixedStatistic", 0.0005, kStat, false, "0.001"},
                    NumberCase{"TinyStatistic", 0.00012345, kStat, false, "1.234e-04"},
                    NumberCase{"TinyNegativeStatistic", -1e-9, kStat, false, "-1.000e-09"},
                    NumberCase{"LargeStatistic", 1234567.8912, kStat, false, "1234567.891"},
                    NumberCase{"HugeStatistic", 1.5e12, kStat, false, "1.500e+12"},
                    NumberCase{"Coefficient", 0.4567, kCoefficient, false, "0.457"},
                    NumberCase{"TinyCoefficient", 0.0001, kCoefficient, false, "1.000e-04"},
                    NumberCase{"Missing", MCMV::gMissingValue, kStat, false, ""},
                    NumberCase{"MissingSignificance", MCMV::gMissingValue, kSig, false, ""},
                    NumberCase{"NotANumber", std::numeric_limits<double>::quiet_NaN(), kCount,
                               false, ""},
                    NumberCase{"Infinity", kInfinity, kStat, false, "∞"},
                    NumberCase{"NegativeInfinity", -kInfinity, kStat, false, "-∞"}),
    testsupport::CaseName());

}  // namespace
}  // namespace embedded
