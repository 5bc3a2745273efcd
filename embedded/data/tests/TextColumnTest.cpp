#include "embedded/data/TextColumn.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>

namespace embedded {
namespace {

using Values = std::vector<std::optional<KoltObs>>;
constexpr std::nullopt_t kMissing = std::nullopt;

void Fill(TextColumn& column, const std::vector<std::optional<std::string>>& cells) {
    for (const auto& cell : cells) {
        if (cell) {
            column.Append(*cell);
        } else {
            column.AppendEmpty();
        }
    }
}

ReadColumn Read(const std::vector<std::optional<std::string>>& cells, TextColumnRules rules = {}) {
    TextColumn column(std::move(rules));
    Fill(column, cells);
    if (!column.EndReading()) {
        Fill(column, cells);
        EXPECT_TRUE(column.EndReading());
    }
    EXPECT_FALSE(column.GetFault());
    return std::move(column).Finish();
}

Values ValuesOf(const ReadColumn& read) {
    Values values;
    for (std::int64_t row = 0; row < read.fColumn.RowCount(); ++row) {
        values.push_back(read.fColumn.IsValid(row) ? std::optional(read.fColumn.Value(row))
                                                   : std::nullopt);
    }
    return values;
}

KoltObs Text(const char* text) { return std::string(text); }

struct TypeCase {
    const char* fName;
    std::vector<std::optional<std::string>> fCells;
    ColumnKind fKind;
    Values fValues;
};
void PrintTo(const TypeCase& typeCase, std::ostream* out) { *out << typeCase.fName; }
class Typing : public testing::TestWithParam<TypeCase> {};

TEST_P(Typing, IsOverTheWholeColumn) {
    const ReadColumn read = Read(GetParam().fCells);
    EXPECT_EQ(read.fKind, GetParam().fKind);
    EXPECT_EQ(ValuesOf(read), GetParam().fValues);
}

INSTANTIATE_TEST_SUITE_P(
    Columns, Typing,
    testing::Values(
        TypeCase{"Numbers", {"1", "2.5", kMissing}, ColumnKind::kNumber, {1.0, 2.5, kMissing}},
        TypeCase{"TheLastCellDecides",
                 {"1", kMissing, "2", "x"},
                 ColumnKind::kString,
                 {Text("1"), kMissing, Text("2"), Text("x")}},
        TypeCase{"TextKeepsNumbersAsWritten",
                 {"007", "1.50", "x"},
                 ColumnKind::kString,
                 {Text("007"), Text("1.50"), Text("x")}},
        TypeCase{"TextAfterEmptyCells",
                 {kMissing, kMissing, "x"},
                 ColumnKind::kString,
                 {kMissing, kMissing, Text("x")}},
        TypeCase{"QuotedEmptyIsTextAmongTexts",
                 {"", "x", kMissing},
                 ColumnKind::kString,
                 {Text(""), Text("x"), kMissing}},
        TypeCase{
            "QuotedEmptyIsMissingAmongNumbers", {"", "1"}, ColumnKind::kNumber, {kMissing, 1.0}},
        TypeCase{"BlanksAreMissingAmongNumbers",
                 {"  ", " 1 ", "2"},
                 ColumnKind::kNumber,
                 {kMissing, 1.0, 2.0}},
        TypeCase{
            "BlanksAreTextAmongTexts", {"  ", " x"}, ColumnKind::kString, {Text(""), Text(" x")}},
        TypeCase{"BlanksAtTheEndAreNoPartOfAText",
                 {"x ", "y", "x", "x  "},
                 ColumnKind::kString,
                 {Text("x"), Text("y"), Text("x"), Text("x")}},
        TypeCase{"Booleans",
                 {"true", "FALSE", "True", kMissing},
                 ColumnKind::kBoolean,
                 {1.0, 0.0, 1.0, kMissing}},
        TypeCase{"BooleansAndNumbersAreText",
                 {"true", "1"},
                 ColumnKind::kString,
                 {Text("true"), Text("1")}},
        TypeCase{"NumbersAndBooleansAreText",
                 {"1", "true"},
                 ColumnKind::kString,
                 {Text("1"), Text("true")}},
        TypeCase{"YesAndNoAreText", {"yes", "no"}, ColumnKind::kString, {Text("yes"), Text("no")}},
        TypeCase{"Dates", {"1970-01-02", "1970-01-03"}, ColumnKind::kDate, {1.0, 2.0}},
        TypeCase{"DatesBecomeMomentsWhenOneHasATime",
                 {"1970-01-02", kMissing, "1970-01-02T00:00:01"},
                 ColumnKind::kDateTime,
                 {86400.0, kMissing, 86401.0}},
        TypeCase{"MomentsTakeDates",
                 {"1970-01-02T00:00:01", "1970-01-02"},
                 ColumnKind::kDateTime,
                 {86401.0, 86400.0}},
        TypeCase{"ImpossibleDatesAreText",
                 {"2024-02-28", "2024-02-30"},
                 ColumnKind::kString,
                 {Text("2024-02-28"), Text("2024-02-30")}},
        TypeCase{"TimesOfDayAreText", {"12:00"}, ColumnKind::kString, {Text("12:00")}},
        TypeCase{"NaNIsMissingAmongNumbers",
                 {"NaN", "1", "nan"},
                 ColumnKind::kNumber,
                 {kMissing, 1.0, kMissing}},
        TypeCase{"NaNAloneIsText", {"nan", "nan"}, ColumnKind::kString, {Text("nan"), Text("nan")}},
        TypeCase{"InfAloneIsText", {kMissing, "Inf"}, ColumnKind::kString, {kMissing, Text("Inf")}},
        TypeCase{"NaNAndTextIsText", {"nan", "x"}, ColumnKind::kString, {Text("nan"), Text("x")}},
        TypeCase{"NaNAndDateIsText",
                 {"nan", "2024-01-01"},
                 ColumnKind::kString,
                 {Text("nan"), Text("2024-01-01")}},
        TypeCase{"HexadecimalIsText", {"0x10"}, ColumnKind::kString, {Text("0x10")}},
        TypeCase{"NAIsText", {"1", "NA"}, ColumnKind::kString, {Text("1"), Text("NA")}},
        TypeCase{
            "NothingIsNumeric", {kMissing, kMissing}, ColumnKind::kNumber, {kMissing, kMissing}},
        TypeCase{"NoRows", {}, ColumnKind::kNumber, {}}),
    [](const auto& tested) { return std::string(tested.param.fName); });

TEST(TextColumn, InfinitiesAreMissingAndCounted) {
    const ReadColumn read = Read({"1", "-inf", "1e999", "2", "inf"});
    EXPECT_EQ(ValuesOf(read), (Values{1.0, kMissing, kMissing, 2.0, kMissing}));
    EXPECT_EQ(read.fInfinite.fCount, 3);
    EXPECT_EQ(read.fInfinite.fFirstRow, 1);
}

TEST(TextColumn, IntegersFromTwoToThe53OnAreCounted) {
    const ReadColumn read =
        Read({"9007199254740991", "9007199254740993", "-9007199254740992", "1e300", "3.5e20"});
    EXPECT_EQ(read.fInexact.fCount, 2);
    EXPECT_EQ(read.fInexact.fFirstRow, 1);
}

TEST(TextColumn, DecimalsAreTheMostThatWereWritten) {
    EXPECT_EQ(Read({"1.5", "2.125", "3"}).fDecimals, 3);
    EXPECT_EQ(Read({"1", "2"}).fDecimals, 0);
    EXPECT_EQ(Read({"0.12345678901234567890"}).fDecimals, 16);
}

TextColumnRules WithComma() {
    TextColumnRules rules;
    rules.fbCommaMark = true;
    return rules;
}

TEST(TextColumn, TheDecimalMarkIsOneForTheColumn) {
    EXPECT_EQ(ValuesOf(Read({"1", "2,5"}, WithComma())), (Values{1.0, 2.5}));
    EXPECT_EQ(ValuesOf(Read({"1", "2.5"}, WithComma())), (Values{1.0, 2.5}));
    EXPECT_EQ(Read({"1,5", "2.5"}, WithComma()).fKind, ColumnKind::kString);
    EXPECT_EQ(Read({"2.5", "1,5"}, WithComma()).fKind, ColumnKind::kString);
    EXPECT_EQ(Read({"1,5"}).fKind, ColumnKind::kString);
}

TEST(TextColumn, GroupMarksAreLeftOut) {
    TextColumnRules rules;
    rules.fGroupMark = ',';
    EXPECT_EQ(ValuesOf(Read({"1,234,567.5", "12"}, rules)), (Values{1234567.5, 12.0}));
}

TEST(TextColumn, MissingTextsAreMissingWhateverTheColumnIs) {
    TextColumnRules rules;
    rules.fMissingTexts = {"NA", "-"};
    EXPECT_EQ(ValuesOf(Read({"NA", "1", "-"}, rules)), (Values{kMissing, 1.0, kMissing}));
    EXPECT_EQ(ValuesOf(Read({"NA", "x", "-"}, rules)), (Values{kMissing, Text("x"), kMissing}));
    EXPECT_EQ(ValuesOf(Read({"1", "NA", "x"}, rules)), (Values{Text("1"), kMissing, Text("x")}));
}

TEST(TextColumn, NeutralTextsDoNotTellTheKind) {
    TextColumnRules rules;
    rules.fNeutralTexts = {"-9", "unknown"};
    EXPECT_EQ(ValuesOf(Read({"-9", "1", "unknown"}, rules)), (Values{-9.0, 1.0, kMissing}));
    EXPECT_EQ(ValuesOf(Read({"-9", "1970-01-02", "unknown"}, rules)),
              (Values{kMissing, 1.0, kMissing}));
    EXPECT_EQ(ValuesOf(Read({"-9", "true"}, rules)), (Values{kMissing, 1.0}));
    EXPECT_EQ(ValuesOf(Read({"-9", "unknown", "x"}, rules)),
              (Values{Text("-9"), Text("unknown"), Text("x")}));
}

struct DeclaredCase {
    const char* fName;
    ColumnKind fDeclared;
    std::vector<std::optional<std::string>> fCells;
    std::optional<std::int64_t> fFaultRow;
};
void PrintTo(const DeclaredCase& declaredCase, std::ostream* out) { *out << declaredCase.fName; }
class Declared : public testing::TestWithParam<DeclaredCase> {};

TEST_P(Declared, KindIsHeldAgainstEveryCell) {
    TextColumnRules rules;
    rules.fDeclared = GetParam().fDeclared;
    rules.fTrueTexts = {"yes"};
    rules.fFalseTexts = {"no"};
    TextColumn column(rules);
    Fill(column, GetParam().fCells);
    ASSERT_EQ(column.GetFault().has_value(), GetParam().fFaultRow.has_value());
    if (GetParam().fFaultRow) {
        EXPECT_EQ(column.GetFault()->fRow, *GetParam().fFaultRow);
        EXPECT_EQ(column.GetFault()->fCell,
                  *GetParam().fCells[static_cast<std::size_t>(*GetParam().fFaultRow)]);
    } else {
        EXPECT_TRUE(column.EndReading());
        EXPECT_EQ(std::move(column).Finish().fKind, GetParam().fDeclared);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Declared,
    testing::Values(
        DeclaredCase{"StringOfDigits", ColumnKind::kString, {"007", "12"}, {}},
        DeclaredCase{"Number", ColumnKind::kNumber, {"1", kMissing, "2"}, {}},
        DeclaredCase{"NumberWithText", ColumnKind::kNumber, {"1", kMissing, "x", "y"}, 2},
        DeclaredCase{"Boolean", ColumnKind::kBoolean, {"yes", "no"}, {}},
        DeclaredCase{"BooleanInOtherWords", ColumnKind::kBoolean, {"true"}, 0},
        DeclaredCase{"Date", ColumnKind::kDate, {"2024-01-01"}, {}},
        DeclaredCase{"DateWithTime", ColumnKind::kDate, {"2024-01-01T00:00"}, 0},
        DeclaredCase{"Moment", ColumnKind::kDateTime, {"2024-01-01", "2024-01-01T00:00"}, {}},
        DeclaredCase{"Time", ColumnKind::kTime, {"12:00", "12:00:01.5"}, {}},
        DeclaredCase{"TimeWithDate", ColumnKind::kTime, {"12:00", "2024-01-01"}, 1}),
    [](const auto& tested) { return std::string(tested.param.fName); });

TEST(TextColumn, WholeNumbersCanBeDemanded) {
    TextColumnRules rules;
    rules.fDeclared = ColumnKind::kNumber;
    rules.fbWholeOnly = true;
    TextColumn column(rules);
    Fill(column, {"1", "2.0", "2.5"});
    ASSERT_TRUE(column.GetFault());
    EXPECT_EQ(column.GetFault()->fCell, "2.5");
}

}  // namespace
}  // namespace embedded
