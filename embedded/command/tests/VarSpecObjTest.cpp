#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "embedded/command/tests/CommandRun.h"
#include "host/Data.h"

namespace embedded {
namespace {

using Indices = std::vector<std::int32_t>;

// 0 y scale, 1 age scale, 2 sex string, 3 x1 scale, 4 x2 nominal, 5 X3 scale, 6 "a b" scale,
// 7 Größe scale, 8 dup nominal, 9 DUP nominal, 10 s1 string, 11 s2 string, 12 by ordinal
DataSet People() {
    const std::vector<double> numbers = {1, 2, 3};
    const std::vector<std::optional<std::string>> texts = {"f", "m", "f"};
    DataSetBuilder builder;
    builder.Numbers("y", numbers).Level(kLevelScale);
    builder.Numbers("age", numbers).Level(kLevelScale);
    builder.Strings("sex", texts);
    builder.Numbers("x1", numbers).Level(kLevelScale);
    builder.Numbers("x2", numbers).Level(kLevelNominal);
    builder.Numbers("X3", numbers).Level(kLevelScale);
    builder.Numbers("a b", numbers).Level(kLevelScale);
    builder.Numbers("Größe", numbers).Level(kLevelScale);
    builder.Numbers("dup", numbers).Level(kLevelNominal);
    builder.Numbers("DUP", numbers).Level(kLevelNominal);
    builder.Strings("s1", texts);
    builder.Strings("s2", texts);
    builder.Numbers("by", numbers).Level(kLevelOrdinal);
    return builder.Build();
}

CommandDescriptor Grammar() {
    CommandDescriptor command("SELECTPRED");
    command.addSubComDescriptor(SubComDescriptor("", kSubComVarList, true));
    command.addSubComDescriptor(SubComDescriptor("EXCEPT", kSubComParams, false));
    command.addSubComDescriptor(SubComDescriptor("PRINT", kSubComKeywords, false));
    return command;
}

/// A command on the people, and lists of its variables.
class Lists {
 public:
    explicit Lists(const std::string& text, DataSet data = People())
        : fRun("SELECTPRED " + text, std::move(data)) {}

    VarSpecObj Spec(bool numericOnly = false) const {
        return VarSpecObj("VARIABLES", "EXCEPT", fGrammar, fSource, numericOnly);
    }
    VarSpecObj Weight() const { return VarSpecObj("", "", "WEIGHT", fSource, true); }
    /// All tokens of the command as one list of EXCEPT VARIABLES.
    const TokenList& Tokens() const { return fRun.Command().Tokens(); }
    const CommandRun& Run() const { return fRun; }
    const ProcedureDataSource& Source() const { return fSource; }
    const CommandDescriptor& Command() const { return fGrammar; }

 private:
    CommandDescriptor fGrammar = Grammar();
    CommandRun fRun;
    ProcedureDataSource fSource;
};

template <class Case>
std::string CaseName(const testing::TestParamInfo<Case>& info) {
    return info.param.fName;
}

struct ListCase {
    const char* fName;
    const char* fText;
    Indices fIndices;
};

std::ostream& operator<<(std::ostream& out, const ListCase& listCase) {
    return out << listCase.fText;
}

class GoodLists : public testing::TestWithParam<ListCase> {};

TEST_P(GoodLists, AreResolved) {
    const Lists lists(GetParam().fText);
    VarSpecObj spec = lists.Spec();
    ASSERT_TRUE(spec.ValidateVariables(lists.Tokens(), 2)) << lists.Run().Message();
    EXPECT_EQ(spec.GetValidVarList(), GetParam().fIndices);
    EXPECT_TRUE(lists.Run().Messages().empty());
    EXPECT_FALSE(lists.Run().HasError());
}

INSTANTIATE_TEST_SUITE_P(
    Names, GoodLists,
    testing::Values(ListCase{"One", "age", {1}}, ListCase{"InTheirOrder", "x1 age", {3, 1}},
                    ListCase{"Commas", "x1, age ,x2", {3, 1, 4}},
                    ListCase{"WithoutRegardToCaseIfUnique", "AGE x3", {1, 5}},
                    ListCase{"ExactCaseWins", "dup DUP", {8, 9}},
                    ListCase{"Quoted", "\"a b\"", {6}}, ListCase{"QuotedPlain", "\"age\"", {1}},
                    ListCase{"NonAsciiLetters", "Größe", {7}},
                    ListCase{"AsciiCaseOfNonAsciiName", "größe", {7}},
                    ListCase{"RepeatedIsDropped", "age age x1", {1, 3}},
                    ListCase{"WordOfTheLanguageInAList", "by", {12}}, ListCase{"None", "", {}}),
    CaseName<ListCase>);

INSTANTIATE_TEST_SUITE_P(
    Ranges, GoodLists,
    testing::Values(ListCase{"InFileOrder", "age..x2", {1, 2, 3, 4}},
                    ListCase{"OfOne", "age..age", {1}},
                    ListCase{"QuotedEnds", "\"x2\"..\"a b\"", {4, 5, 6}},
                    ListCase{"EndsWithoutRegardToCase", "X2..x3", {4, 5}},
                    ListCase{"WithOthers", "s1 age..x1, s2", {10, 1, 2, 3, 11}},
                    ListCase{"OverlappingOnes", "age..x1 x1..x2", {1, 2, 3, 4}}),
    CaseName<ListCase>);

INSTANTIATE_TEST_SUITE_P(
    Patterns, GoodLists,
    testing::Values(ListCase{"ExactCaseFirst", "x*", {3, 4}}, ListCase{"ExactUpperCase", "X*", {5}},
                    ListCase{"OtherCaseWhenNoneIsExact", "AG*", {1}},
                    ListCase{"WholeNameAsStem", "age*", {1}}, ListCase{"NonAsciiStem", "Grö*", {7}},
                    ListCase{"NamedOnesComeWhereTheyAreNamed", "x* x1", {4, 3}},
                    ListCase{"InCommas", "x*, s*", {3, 4, 2, 10, 11}}),
    CaseName<ListCase>);

INSTANTIATE_TEST_SUITE_P(
    All, GoodLists,
    testing::Values(ListCase{"Everything", "ALL", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
                    ListCase{"AnyCase", "all", {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}}),
    CaseName<ListCase>);

struct BadCase {
    const char* fName;
    const char* fText;
    std::int32_t fColumn;  // in "SELECTPRED " and the text
    const char* fMessage;
    std::int32_t fRepeatOption = 2;
    bool fbNumericOnly = false;
};

std::ostream& operator<<(std::ostream& out, const BadCase& badCase) { return out << badCase.fText; }

class BadLists : public testing::TestWithParam<BadCase> {};

TEST_P(BadLists, AreRefusedAtTheirPlace) {
    const Lists lists(GetParam().fText);
    VarSpecObj spec = lists.Spec(GetParam().fbNumericOnly);
    EXPECT_FALSE(spec.ValidateVariables(lists.Tokens(), GetParam().fRepeatOption));
    EXPECT_TRUE(spec.GetValidVarList().empty());
    const std::string message = lists.Run().Message();
    EXPECT_EQ(message.substr(0, message.find('\n')),
              "test.pred:1:" + std::to_string(GetParam().fColumn) + ": " + GetParam().fMessage);
    EXPECT_TRUE(lists.Run().HasError());
}

INSTANTIATE_TEST_SUITE_P(
    Names, BadLists,
    testing::Values(
        BadCase{"Unknown", "age agee", 16, "There is no variable agee; did you mean age?"},
        BadCase{"UnknownAndFar", "income", 12,
                "There is no variable income; no name in the data is similar."},
        BadCase{"SeveralAreNear", "x9", 12, "There is no variable x9; did you mean x1, x2 or X3?"},
        BadCase{"SuggestionsAreWrittenAsTheyMustBe", "\"a c\"", 12,
                "There is no variable \"a c\"; did you mean \"a b\"?"},
        BadCase{"Ambiguous", "Dup", 12,
                "The data have several variables of this name, but for upper and lower case: dup "
                "and DUP; expected Dup to be written as one of them."},
        BadCase{"QuotedAll", "\"ALL\"", 12,
                "There is no variable \"ALL\"; no name in the data is similar."},
        BadCase{"SlashForgotten", "age PRINT", 16,
                "There is no variable PRINT; a subcommand begins with '/'."},
        BadCase{
            "SemicolonForgotten", "age selectpred", 16,
            "There is no variable selectpred; a command ends with ';' before the next one begins."},
        BadCase{"Number", "age 2019", 16,
                "EXCEPT VARIABLES expects a variable name, found 2019; a name that begins with a "
                "digit or holds a hyphen stands in double quotes."},
        BadCase{"Hyphen", "age-x1", 15,
                "EXCEPT VARIABLES expects a variable name, found '-'; a name that begins with a "
                "digit or holds a hyphen stands in double quotes."},
        BadCase{"String", "'age'", 12,
                "EXCEPT VARIABLES expects a variable name, found the string 'age'; names stand in "
                "double quotes or without quotes."},
        BadCase{"Operator", "age = x1", 16, "EXCEPT VARIABLES expects a variable name, found '='."},
        BadCase{"Parenthesis", "age (x1)", 16,
                "EXCEPT VARIABLES expects a variable name, found '('."},
        BadCase{"LeadingComma", ", age", 12,
                "EXCEPT VARIABLES expects a variable name, found ','."},
        BadCase{"TwoCommas", "age,, x1", 16,
                "EXCEPT VARIABLES expects a variable name, found ','."},
        BadCase{"TrailingComma", "age,", 15,
                "EXCEPT VARIABLES expects a variable name, found ','."},
        BadCase{"Twice", "age x1 AGE", 19,
                "The variable age stands twice in EXCEPT VARIABLES; expected it once.", 0},
        BadCase{"StringVariable", "age sex", 16,
                "The variable sex holds strings, but EXCEPT VARIABLES needs numbers.", 2, true}),
    CaseName<BadCase>);

INSTANTIATE_TEST_SUITE_P(
    RangesAndPatterns, BadLists,
    testing::Values(
        BadCase{"Reversed", "x2..age", 12,
                "In the file, x2 comes after age; a range goes from the earlier to the later "
                "variable."},
        BadCase{"WithoutEnd", "age..", 15, "Expected a variable name after '..'."},
        BadCase{"WithoutBeginning", "..age", 12,
                "EXCEPT VARIABLES expects a variable name, found '..'."},
        BadCase{"EndIsNoName", "age..5", 17,
                "EXCEPT VARIABLES expects a variable name, found 5; a name that begins with a "
                "digit or holds a hyphen stands in double quotes."},
        BadCase{"UnknownBeginning", "agee..x1", 12, "There is no variable agee; did you mean age?"},
        BadCase{"UnknownEnd", "age..x11", 17, "There is no variable x11; did you mean x1?"},
        BadCase{"ThreeEnds", "age..x1..x2", 19,
                "EXCEPT VARIABLES expects a variable name, found '..'."},
        BadCase{"PatternWithoutMatch", "zz*", 12, "No variable has a name like zz*."},
        BadCase{"PatternWithoutStem", "*", 12,
                "EXCEPT VARIABLES expects a variable name, found '*'; a pattern is written stem*, "
                "and ALL means all variables."},
        BadCase{"BlankBeforeTheStar", "x *", 14,
                "A pattern is the beginning of a name and right behind it a star, as in stem*; "
                "expected a blank or comma after the star, and none before it."},
        BadCase{"WordBehindTheStar", "x*a", 13,
                "A pattern is the beginning of a name and right behind it a star, as in stem*; "
                "expected a blank or comma after the star, and none before it."},
        BadCase{"QuotedStem", "\"x\"*", 15,
                "A pattern is the beginning of a name and right behind it a star, as in stem*; "
                "expected a blank or comma after the star, and none before it."},
        BadCase{"OnlyStringsInPattern", "s*", 12,
                "This holds string variables only, but EXCEPT VARIABLES needs numeric ones.", 2,
                true},
        BadCase{"OnlyStringsInRange", "s1..s2", 12,
                "This holds string variables only, but EXCEPT VARIABLES needs numeric ones.", 2,
                true}),
    CaseName<BadCase>);

TEST(VarSpecObj, NumericOnlyPassesOverStringsOfARange) {
    const Lists lists("age..x1");
    VarSpecObj spec = lists.Spec(true);
    EXPECT_TRUE(spec.ValidateVariables(lists.Tokens(), 0));
    EXPECT_EQ(spec.GetValidVarList(), (Indices{1, 3}));
}

TEST(VarSpecObj, NumericOnlyPassesOverStringsOfAll) {
    const Lists lists("ALL");
    VarSpecObj spec = lists.Spec(true);
    EXPECT_TRUE(spec.ValidateVariables(lists.Tokens(), 0));
    EXPECT_EQ(spec.GetValidVarList(), (Indices{0, 1, 3, 4, 5, 6, 7, 8, 9, 12}));
}

TEST(VarSpecObj, RepetitionByRangesAndPatternsIsNoFault) {
    const Lists lists("x1 x* x1..X3 ALL");
    VarSpecObj spec = lists.Spec();
    EXPECT_TRUE(spec.ValidateVariables(lists.Tokens(), 0));
    EXPECT_EQ(spec.GetValidVarList().size(), 13u);
}

TEST(VarSpecObj, ResolvingAgainForgetsTheFormerList) {
    const Lists lists("age");
    VarSpecObj spec = lists.Spec();
    EXPECT_TRUE(spec.SetVariable(4));
    EXPECT_TRUE(spec.ValidateVariables(lists.Tokens(), 0));
    EXPECT_EQ(spec.GetValidVarList(), Indices{1});
}

TEST(VarSpecObj, OneVariableByName) {
    const Lists lists("y /EXCEPT VARIABLES=age");
    VarSpecObj spec = lists.Spec(true);
    EXPECT_EQ(spec.ValidateVariable(KoltVarName("Age")), 1);
    EXPECT_EQ(spec.GetValidVarInd(), 1);
    EXPECT_EQ(spec.GetFirstName(), "age");
}

TEST(VarSpecObj, OneUnknownVariableIsRefusedAtItsPlace) {
    const Lists lists("y /EXCEPT VARIABLES=agee");
    VarSpecObj spec = lists.Spec();
    EXPECT_LT(spec.ValidateVariable(KoltVarName("agee")), 0);
    EXPECT_EQ(spec.GetValidVarInd(), -1);
    EXPECT_EQ(lists.Run().Message(),
              "test.pred:1:32: There is no variable agee; did you mean age?\n"
              "SELECTPRED y /EXCEPT VARIABLES=agee\n"
              "                               ^");
}

TEST(VarSpecObj, OneStringVariableIsRefusedWhereNumbersAreNeeded) {
    const Lists lists("y /EXCEPT VARIABLES=sex");
    VarSpecObj spec = lists.Spec(true);
    EXPECT_LT(spec.ValidateVariable(KoltVarName("sex")), 0);
    EXPECT_EQ(lists.Run().Key(), "Variable ^1 is a string, ^2 needs numeric...");
}

TEST(VarSpecObj, VariableOfTheDictionary) {
    const Lists lists("y");
    VarSpecObj weight = lists.Weight();
    EXPECT_TRUE(weight.SetVariable(1));
    EXPECT_EQ(weight.GetValidVarList(), Indices{1});
    EXPECT_FALSE(weight.SetVariable(2));
    EXPECT_TRUE(weight.GetValidVarList().empty());
    EXPECT_EQ(lists.Run().Message(),
              "The variable sex holds strings, but the weight needs numbers.");
    EXPECT_TRUE(lists.Run().HasError());
}

TEST(VarSpecObjDeathTest, IndexBeyondTheDictionaryIsAMistakeOfTheCaller) {
    const Lists lists("y");
    VarSpecObj weight = lists.Weight();
    EXPECT_DEATH(weight.SetVariable(13), "index within the dictionary");
    EXPECT_DEATH(weight.SetVariable(-1), "index within the dictionary");
}

TEST(VarSpecObj, CategoricalByLevelOrString) {
    const Lists lists("y");
    const auto isCat = [&lists](std::int32_t index) {
        VarSpecObj spec = lists.Spec();
        spec.SetVariable(index);
        return spec.IsCatVar();
    };
    EXPECT_FALSE(isCat(0));                 // scale
    EXPECT_TRUE(isCat(2));                  // string
    EXPECT_TRUE(isCat(4));                  // nominal
    EXPECT_TRUE(isCat(12));                 // ordinal
    EXPECT_FALSE(lists.Spec().IsCatVar());  // no variable at all
    EXPECT_EQ(lists.Spec().GetFirstName(), "");
}

TEST(VarSpecObj, CommonVariablesAreReported) {
    const Lists lists("y /EXCEPT VARIABLES=(x1 age)");
    VarSpecObj spec = lists.Spec(), weight = lists.Weight();
    const TokenList names = {lists.Tokens()[6], lists.Tokens()[7]};
    ASSERT_EQ(names[0].getString(), "x1");
    ASSERT_TRUE(spec.ValidateVariables(names, 0));
    weight.SetVariable(4);
    EXPECT_TRUE(spec.CheckCommonVars(weight));
    EXPECT_TRUE(spec.CheckCommonVars(lists.Spec()));
    weight.SetVariable(1);
    EXPECT_FALSE(spec.CheckCommonVars(weight));
    EXPECT_EQ(lists.Run().Message(),
              "test.pred:1:36: The variable age stands both in EXCEPT VARIABLES and in the weight; "
              "expected it in one of them.\n"
              "SELECTPRED y /EXCEPT VARIABLES=(x1 age)\n"
              "                                   ^");
}

TEST(VarSpecObj, CommonVariablesAreReportedAtThePlaceThatIsKnown) {
    const Lists lists("y /EXCEPT VARIABLES=age");
    VarSpecObj spec = lists.Spec(), weight = lists.Weight();
    spec.ValidateVariable(KoltVarName("age"));
    weight.SetVariable(1);
    EXPECT_FALSE(weight.CheckCommonVars(spec));
    EXPECT_TRUE(lists.Run().Message().starts_with("test.pred:1:32:")) << lists.Run().Message();
}

TEST(VarSpecObj, CommonVariablesAreExcludedSilently) {
    const Lists lists("age x1 x2 X3");
    VarSpecObj spec = lists.Spec(), one = lists.Spec(), two = lists.Spec();
    ASSERT_TRUE(spec.ValidateVariables(lists.Tokens(), 0));
    one.SetVariable(3);
    two.SetVariable(5);
    EXPECT_TRUE(spec.ExcludeCommonVars({&one, &two}, 0));
    EXPECT_EQ(spec.GetValidVarList(), (Indices{1, 4}));
    VarSpecObj all = lists.Spec();
    ASSERT_TRUE(all.ValidateVariables(lists.Tokens(), 0));
    EXPECT_FALSE(spec.ExcludeCommonVars({&all}, 0));
    EXPECT_TRUE(lists.Run().Messages().empty());
}

TEST(VarSpecObj, EmptyListHasNothingLeftAfterExclusion) {
    const Lists lists("y");
    VarSpecObj spec = lists.Spec();
    EXPECT_FALSE(spec.ExcludeCommonVars({}, 0));
}

struct NewNameCase {
    const char* fName;
    std::string fText;
    bool fbFree;
};

std::ostream& operator<<(std::ostream& out, const NewNameCase& newNameCase) {
    return out << newNameCase.fText;
}

class NewNames : public testing::TestWithParam<NewNameCase> {};

TEST_P(NewNames, AreFreeOrRefused) {
    const Lists lists("y");
    const VarSpecObj spec = lists.Spec();
    EXPECT_EQ(spec.CheckNewVariable(KoltVarName(GetParam().fText)) < 0, GetParam().fbFree);
    EXPECT_EQ(lists.Run().Messages().size(), GetParam().fbFree ? 0u : 1u);
    EXPECT_EQ(lists.Run().HasError(), !GetParam().fbFree);
}

INSTANTIATE_TEST_SUITE_P(Names, NewNames,
                         testing::Values(NewNameCase{"Free", "PredictedValue", true},
                                         NewNameCase{"FreeWithBlank", "predicted value", true},
                                         NewNameCase{"FreeNonAscii", "Schätzung", true},
                                         NewNameCase{"FreeAndLong", std::string(1000, 'n'), true},
                                         NewNameCase{"Taken", "age", false},
                                         NewNameCase{"TakenInOtherCase", "AGE", false},
                                         NewNameCase{"TakenTwice", "Dup", false},
                                         NewNameCase{"Empty", "", false},
                                         NewNameCase{"Blank", " ", false},
                                         NewNameCase{"LeadingBlank", " p", false},
                                         NewNameCase{"TrailingBlank", "p ", false},
                                         NewNameCase{"LineBreak", "p\nq", false},
                                         NewNameCase{"ControlCharacter", "p\x1bq", false},
                                         NewNameCase{"NoUtf8", "p\xFF", false}),
                         CaseName<NewNameCase>);

TEST(VarSpecObj, TakenNewNameSaysWhoHasIt) {
    const Lists lists("y /EXCEPT VARIABLES=AGE");
    EXPECT_EQ(lists.Spec().CheckNewVariable(KoltVarName("AGE")), 1);
    EXPECT_EQ(
        lists.Run().Message(),
        "test.pred:1:32: EXCEPT VARIABLES expects the name of a new variable; the data have a "
        "variable age already.\n"
        "SELECTPRED y /EXCEPT VARIABLES=AGE\n"
        "                               ^");
}

/// `target [(qualifiers)] [BY factors] [WITH covariates]`, resolved.
class Opening {
 public:
    explicit Opening(const std::string& text, DataSet data = People())
        : fLists(text, std::move(data)) {
        fTarget.SetAllowQualifiers(true);
        fTarget.SetAllVarsByDefault(true);
        fTarget.SetNoVarsMessage("No predictors available in data...");
    }
    bool Resolve(std::int32_t repeatOption = 2,
                 const std::vector<const VarSpecObj*>& exclusion = {}) {
        return fTarget.ValidateRegrVarList(fLists.Tokens(), fFactors, fCovariates, repeatOption,
                                           exclusion);
    }
    VarSpecObj& Target() { return fTarget; }
    VarSpecObj& Factors() { return fFactors; }
    VarSpecObj& Covariates() { return fCovariates; }
    const Lists& Text() const { return fLists; }
    const CommandRun& Run() const { return fLists.Run(); }

 private:
    Lists fLists;
    VarSpecObj fTarget{"", "", fLists.Command(), fLists.Source(), false};
    VarSpecObj fFactors{"", "", fLists.Command(), fLists.Source(), false};
    VarSpecObj fCovariates{"", "", fLists.Command(), fLists.Source(), true};
};

struct OpeningCase {
    const char* fName;
    const char* fText;
    std::int32_t fTarget;
    Indices fFactors;
    Indices fCovariates;
};

std::ostream& operator<<(std::ostream& out, const OpeningCase& openingCase) {
    return out << openingCase.fText;
}

class GoodOpenings : public testing::TestWithParam<OpeningCase> {};

TEST_P(GoodOpenings, AreResolved) {
    Opening opening(GetParam().fText);
    ASSERT_TRUE(opening.Resolve()) << opening.Run().Message();
    EXPECT_EQ(opening.Target().GetValidVarList(), Indices{GetParam().fTarget});
    EXPECT_EQ(opening.Factors().GetValidVarList(), GetParam().fFactors);
    EXPECT_EQ(opening.Covariates().GetValidVarList(), GetParam().fCovariates);
    EXPECT_TRUE(opening.Run().Messages().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Lists, GoodOpenings,
    testing::Values(OpeningCase{"Both", "y BY sex x2 WITH age x1", 0, {2, 4}, {1, 3}},
                    OpeningCase{"FactorsOnly", "y by sex", 0, {2}, {}},
                    OpeningCase{"CovariatesOnly", "y with age", 0, {}, {1}},
                    OpeningCase{"CovariatesFirst", "y WITH age BY sex", 0, {2}, {1}},
                    OpeningCase{"Commas", "y BY sex, x2 WITH age, x1", 0, {2, 4}, {1, 3}},
                    OpeningCase{"ScaleFactor", "y BY age", 0, {1}, {}},
                    OpeningCase{"RepeatedIsDropped", "y BY sex sex WITH age age", 0, {2}, {1}},
                    OpeningCase{"QuotedListWordIsAName", "y BY \"by\"", 0, {12}, {}},
                    OpeningCase{"QuotedListWordAsTarget", "\"by\" BY sex", 12, {2}, {}},
                    OpeningCase{"StringTarget", "sex WITH age", 2, {}, {1}}),
    CaseName<OpeningCase>);

INSTANTIATE_TEST_SUITE_P(
    WhatIsLeft, GoodOpenings,
    testing::Values(
        OpeningCase{"AllLeavesOutTheTarget", "x1 BY x*", 3, {4}, {}},
        OpeningCase{"AllInWithLeavesOutStringsAndFactors",
                    "y BY x2 WITH ALL",
                    0,
                    {4},
                    {1, 3, 5, 6, 7, 8, 9, 12}},
        OpeningCase{"AllInByLeavesNamedOnesToWith",
                    "y BY ALL WITH age x1",
                    0,
                    {2, 4, 5, 6, 7, 8, 9, 10, 11, 12},
                    {1, 3}},
        OpeningCase{"FirstOfTwoPatternsTakesAll", "y BY x* WITH x* age", 0, {3, 4}, {1}},
        OpeningCase{"RangeLeavesOutNamedOnes", "y BY age..x2 WITH x1", 0, {1, 2, 4}, {3}},
        OpeningCase{"ByLevelWithoutLists", "y", 0, {2, 4, 8, 9, 10, 11, 12}, {1, 3, 5, 6, 7}}),
    CaseName<OpeningCase>);

struct BadOpeningCase {
    const char* fName;
    const char* fText;
    std::int32_t fColumn;
    const char* fMessage;
};

std::ostream& operator<<(std::ostream& out, const BadOpeningCase& badCase) {
    return out << badCase.fText;
}

class BadOpenings : public testing::TestWithParam<BadOpeningCase> {};

TEST_P(BadOpenings, AreRefusedAtTheirPlace) {
    Opening opening(GetParam().fText);
    EXPECT_FALSE(opening.Resolve());
    const std::string message = opening.Run().Message();
    EXPECT_EQ(message.substr(0, message.find('\n')),
              "test.pred:1:" + std::to_string(GetParam().fColumn) + ": " + GetParam().fMessage);
    EXPECT_TRUE(opening.Run().HasError());
}

INSTANTIATE_TEST_SUITE_P(
    Forms, BadOpenings,
    testing::Values(
        BadOpeningCase{"UnknownTarget", "yy BY sex", 12,
                       "There is no variable yy; did you mean y or \"by\"?"},
        BadOpeningCase{"NoTarget", "BY sex", 12,
                       "Expected the name of the target variable, found BY."},
        BadOpeningCase{"NumberAsTarget", "5 BY sex", 12,
                       "Expected the name of the target variable, found 5."},
        BadOpeningCase{"AllAsTarget", "ALL BY sex", 12,
                       "Expected the name of one variable as the target; ranges, patterns and ALL "
                       "name predictors."},
        BadOpeningCase{"PatternAsTarget", "x* BY sex", 12,
                       "Expected the name of one variable as the target; ranges, patterns and ALL "
                       "name predictors."},
        BadOpeningCase{"RangeAsTarget", "y..age BY sex", 12,
                       "Expected the name of one variable as the target; ranges, patterns and ALL "
                       "name predictors."},
        BadOpeningCase{"TwoTargets", "y age BY sex", 14,
                       "Expected BY or WITH before the predictors, found age."},
        BadOpeningCase{"CommaBehindTheTarget", "y, age", 13,
                       "Expected BY or WITH before the predictors, found ','."},
        BadOpeningCase{"ByTwice", "y BY sex BY x2", 21,
                       "BY stands twice; expected one list after it."},
        BadOpeningCase{"WithTwice", "y WITH age BY sex WITH x1", 30,
                       "WITH stands twice; expected one list after it."},
        BadOpeningCase{"EmptyBy", "y BY", 14, "Expected variable names after BY."},
        BadOpeningCase{"EmptyByBeforeWith", "y BY WITH age", 14,
                       "Expected variable names after BY."},
        BadOpeningCase{"EmptyWith", "y BY sex WITH", 21, "Expected variable names after WITH."},
        BadOpeningCase{
            "OpenQualifier", "y (MLEVEL=S BY sex", 14,
            "The parenthesis of y is not closed; expected ')' before the end of the command."},
        BadOpeningCase{"EmptyQualifier", "y () BY sex", 14,
                       "The qualifier of y is not valid; expected MLEVEL=N, MLEVEL=O, MLEVEL=F or "
                       "MLEVEL=T for categorical, MLEVEL=S for scale."},
        BadOpeningCase{"QualifierOfAPredictor", "y BY sex (MLEVEL=N)", 21,
                       "the BY list expects a variable name, found '('."}),
    CaseName<BadOpeningCase>);

INSTANTIATE_TEST_SUITE_P(
    Variables, BadOpenings,
    testing::Values(
        BadOpeningCase{"UnknownFactor", "y BY sexx", 17,
                       "There is no variable sexx; did you mean sex?"},
        BadOpeningCase{"UnknownCovariate", "y BY sex WITH agee", 26,
                       "There is no variable agee; did you mean age?"},
        BadOpeningCase{"StringCovariate", "y WITH age sex", 23,
                       "The variable sex holds strings, but the WITH list needs numbers."},
        BadOpeningCase{"StringsOnlyInWith", "y WITH s*", 19,
                       "This holds string variables only, but the WITH list needs numeric ones."},
        BadOpeningCase{"TargetAsFactor", "y BY sex Y", 21,
                       "The variable y stands both in the target and in the BY list; expected it "
                       "in one of them."},
        BadOpeningCase{"TargetAsCovariate", "y WITH y", 19,
                       "The variable y stands both in the target and in the WITH list; expected it "
                       "in one of them."},
        BadOpeningCase{"FactorAsCovariate", "y BY x1 WITH age x1", 29,
                       "The variable x1 stands both in the BY list and in the WITH list; expected "
                       "it in one of them."}),
    CaseName<BadOpeningCase>);

TEST(RegrVarList, RepetitionInOneListIsRefusedUnderOptionZero) {
    Opening opening("y BY sex sex");
    EXPECT_FALSE(opening.Resolve(0));
    EXPECT_EQ(opening.Run().Key(), "Variable ^1 twice in ^2...");
}

TEST(RegrVarList, QualifierTokensAreHandedOverWithoutParentheses) {
    Opening opening("y (MLEVEL=S) BY sex");
    ASSERT_TRUE(opening.Resolve()) << opening.Run().Message();
    const TokenList& tokens = opening.Target().GetQualifierTokens();
    ASSERT_EQ(tokens.size(), 3u);
    EXPECT_EQ(tokens[0].getUpperString(), "MLEVEL");
    EXPECT_EQ(tokens[1].getOperatorCode(), TokenSequenceBase::kOpEquals);
    EXPECT_EQ(tokens[2].getUpperString(), "S");
    EXPECT_EQ(opening.Factors().GetValidVarList(), Indices{2});
}

TEST(RegrVarList, QualifierWithoutListsTakesAllVariables) {
    Opening opening("y (MLEVEL=N)");
    ASSERT_TRUE(opening.Resolve()) << opening.Run().Message();
    EXPECT_EQ(
        opening.Factors().GetValidVarList().size() + opening.Covariates().GetValidVarList().size(),
        12u);
}

TEST(RegrVarList, QualifierIsRefusedWhereNoneIsAllowed) {
    Opening opening("y (MLEVEL=S) BY sex");
    opening.Target().SetAllowQualifiers(false);
    EXPECT_FALSE(opening.Resolve());
    EXPECT_EQ(opening.Run().Key(), "Variable ^1 takes no qualifier...");
}

TEST(RegrVarList, ListsAreNeededUnlessAllVariablesAreTheDefault) {
    Opening opening("y");
    opening.Target().SetAllVarsByDefault(false);
    EXPECT_FALSE(opening.Resolve());
    EXPECT_EQ(opening.Run().Key(), "BY or WITH expected, found ^1...");
}

TEST(RegrVarList, ExcludedVariablesAreDroppedFromBothListsSilently) {
    Opening opening("y BY sex x2 WITH age x1");
    VarSpecObj one = opening.Text().Spec(), two = opening.Text().Spec();
    one.SetVariable(2);
    two.SetVariable(3);
    ASSERT_TRUE(opening.Resolve(2, {&one, &two})) << opening.Run().Message();
    EXPECT_EQ(opening.Factors().GetValidVarList(), Indices{4});
    EXPECT_EQ(opening.Covariates().GetValidVarList(), Indices{1});
    EXPECT_TRUE(opening.Run().Messages().empty());
}

TEST(RegrVarList, ExcludedVariablesAreNotAmongAll) {
    Opening opening("y");
    VarSpecObj weight = opening.Text().Weight();
    weight.SetVariable(1);
    ASSERT_TRUE(opening.Resolve(2, {&weight}));
    EXPECT_EQ(opening.Covariates().GetValidVarList(), (Indices{3, 5, 6, 7}));
}

TEST(RegrVarList, TargetNamedInTheExclusionListIsRefused) {
    Opening opening("y BY sex");
    VarSpecObj weight = opening.Text().Weight();
    weight.SetVariable(0);
    EXPECT_FALSE(opening.Resolve(2, {&weight}));
    EXPECT_TRUE(opening.Run().Message().starts_with(
        "test.pred:1:12: The variable y stands both in the target and in the weight;"))
        << opening.Run().Message();
}

TEST(RegrVarList, TargetUnderAnExcludedPatternIsTheTargetAllTheSame) {
    Opening opening("x1 BY x2 sex /EXCEPT VARIABLES=x*");
    VarSpecObj except = opening.Text().Spec();
    const TokenList& tokens = opening.Text().Tokens();
    const TokenList pattern(tokens.end() - 2, tokens.end());
    ASSERT_TRUE(except.ValidateVariables(pattern, 2));
    VarSpecObj factors = opening.Text().Spec(), covariates = opening.Text().Spec();
    const TokenList opened(tokens.begin(), tokens.begin() + 4);
    ASSERT_TRUE(opening.Target().ValidateRegrVarList(opened, factors, covariates, 2, {&except}))
        << opening.Run().Message();
    EXPECT_EQ(factors.GetValidVarList(), Indices{2});
}

TEST(RegrVarList, NoPredictorLeftIsAMessageAboutTheData) {
    Opening opening("y BY sex");
    VarSpecObj except = opening.Text().Spec();
    except.SetVariable(2);
    EXPECT_FALSE(opening.Resolve(2, {&except}));
    ASSERT_EQ(opening.Run().Messages().size(), 1u);
    EXPECT_EQ(opening.Run().Key(), "No predictors available in data...");
    EXPECT_FALSE(opening.Run().Messages().front().fbCommandLanguage);
    EXPECT_TRUE(opening.Run().HasError());
}

TEST(RegrVarList, NoPredictorInDataOfOneVariable) {
    Opening opening("y", DataSetBuilder().Numbers("y", {1, 2}).Build());
    EXPECT_FALSE(opening.Resolve());
    EXPECT_EQ(opening.Run().Key(), "No predictors available in data...");
}

TEST(RegrVarList, NoListAtAll) {
    Opening opening("y");
    EXPECT_FALSE(
        opening.Target().ValidateRegrVarList({}, opening.Factors(), opening.Covariates(), 2, {}));
    EXPECT_EQ(opening.Run().Key(), "Target expected, found ^1...");
}

DataSet Wide(int columns) {
    DataSetBuilder builder;
    for (int i = 0; i < columns; ++i)
        builder.Numbers("variable_" + std::to_string(i), {1, 2}).Level(kLevelScale);
    return builder.Build();
}

TEST(VarSpecObj, TenThousandNamesAreQuick) {
    constexpr int kColumns = 10000;
    std::string text;
    for (int i = kColumns - 1; i >= 0; --i) text += " VARIABLE_" + std::to_string(i);
    const Lists lists(text, Wide(kColumns));
    VarSpecObj spec = lists.Spec();
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(spec.ValidateVariables(lists.Tokens(), 0));
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(spec.GetValidVarList().size(), 10000u);
    EXPECT_EQ(spec.GetValidVarList().front(), 9999);
    EXPECT_LT(seconds.count(), 1.0);
}

TEST(VarSpecObj, NearestOfTenThousandNamesIsQuick) {
    const Lists lists("variabel_777", Wide(10000));
    VarSpecObj spec = lists.Spec();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(spec.ValidateVariables(lists.Tokens(), 0));
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    EXPECT_NE(lists.Run().Message().find("did you mean variable_777,"), std::string::npos)
        << lists.Run().Message();
    EXPECT_LT(seconds.count(), 1.0);
}

TEST(VarSpecObj, LongNamesAreFoundAndShownShort) {
    const std::string name(1000, 'n');
    const Lists lists(name + "x", DataSetBuilder().Numbers(name, {1}).Build());
    VarSpecObj spec = lists.Spec();
    EXPECT_FALSE(spec.ValidateVariables(lists.Tokens(), 0));
    const std::string message = lists.Run().Message();
    EXPECT_LT(message.size(), 500u);
    EXPECT_NE(message.find("did you mean nnn"), std::string::npos);
    EXPECT_EQ(lists.Spec().ValidateVariable(KoltVarName(name)), 0);
}

}  // namespace
}  // namespace embedded
