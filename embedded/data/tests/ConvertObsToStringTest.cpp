#include <gtest/gtest.h>

#include <ostream>

#include "host/Data.h"
#include "host/Records.h"

namespace {

struct ConvertCase {
    const char* fName;
    KoltObs fValue;
    KoltFormat fFormat;
    const char* fText;
};
void PrintTo(const ConvertCase& convertCase, std::ostream* out) { *out << convertCase.fName; }
class ConvertObs : public testing::TestWithParam<ConvertCase> {};

TEST_P(ConvertObs, GivesText) {
    EXPECT_EQ(ConvertObsToString(GetParam().fValue, GetParam().fFormat, true), GetParam().fText);
}

constexpr KoltFormat kWhole{kFormatNumber, 8, 0};
constexpr KoltFormat kTwo{kFormatNumber, 8, 2};
constexpr KoltFormat kDate{kFormatDate, 10, 0};
constexpr KoltFormat kDateTime{kFormatDateTime, 19, 0};
constexpr KoltFormat kTime{kFormatTime, 8, 0};
constexpr KoltFormat kText{kFormatString, 8, 0};

INSTANTIATE_TEST_SUITE_P(
    Formats, ConvertObs,
    testing::Values(
        ConvertCase{"Whole", 3.0, kWhole, "3"}, ConvertCase{"Negative", -3.0, kWhole, "-3"},
        ConvertCase{"Decimals", 0.5, kTwo, "0.50"},
        ConvertCase{"DigitsThatTheFormatWouldDrop", 0.125, kTwo, "0.125"},
        ConvertCase{"DifferentNumbersNeverLookAlike", 0.1 + 0.2, kTwo, "0.30000000000000004"},
        ConvertCase{"Huge", 1e300, kTwo, "1e+300"}, ConvertCase{"Tiny", 1e-300, kTwo, "1e-300"},
        ConvertCase{"SystemMissing", MCMV::gMissingValue, kWhole, "."},
        ConvertCase{"Epoch", 0.0, kDate, "1970-01-01"},
        ConvertCase{"LeapDay", 19782.0, kDate, "2024-02-29"},
        ConvertCase{"BeforeTheEpoch", -1.0, kDate, "1969-12-31"},
        ConvertCase{"YearOne", -719162.0, kDate, "0001-01-01"},
        ConvertCase{"PartOfADay", 0.5, kDate, "0.5"},
        ConvertCase{"BeyondTheCalendar", 1e12, kDate, "1e+12"},
        ConvertCase{"Moment", 86399.0, kDateTime, "1970-01-01 23:59:59"},
        ConvertCase{"MomentBeforeTheEpoch", -1.0, kDateTime, "1969-12-31 23:59:59"},
        ConvertCase{"Fraction", 0.25, kDateTime, "1970-01-01 00:00:00.25"},
        ConvertCase{"FractionCarries", 86399.9999999, kDateTime, "1970-01-02 00:00:00"},
        ConvertCase{"TimeOfDay", 45296.5, kTime, "12:34:56.5"},
        ConvertCase{"NoTimeOfDay", 90000.0, kTime, "90000"},
        ConvertCase{"TextTrimmed", std::string("ab  "), kText, "ab"},
        ConvertCase{"TextOfBlanks", std::string("   "), kText, ""},
        ConvertCase{"LeadingBlanksStay", std::string(" a"), kText, " a"}),
    [](const auto& tested) { return std::string(tested.param.fName); });

TEST(ConvertObsToString, WithoutTrimTextStaysAsItIs) {
    EXPECT_EQ(ConvertObsToString(std::string("ab  "), kText, false), "ab  ");
}

}  // namespace
