#include <gtest/gtest.h>

#include <chrono>
#include <ostream>
#include <string>
#include <vector>

#include "embedded/command/tests/CommandRun.h"

namespace embedded {
namespace {

/// A grammar with every form of value, bound and flag.
CommandDescriptor DemoGrammar() {
    CommandDescriptor command("DEMO");
    command.addSubComDescriptor(SubComDescriptor("", kSubComVarList, true));

    SubComDescriptor except("EXCEPT", kSubComParams, false);
    except.addParamDescriptor(ParamDescriptor("VARIABLES", kParamTokenList, true, true));
    command.addSubComDescriptor(except);

    SubComDescriptor force("FORCE", kSubComParams, false);
    force.addParamDescriptor(ParamDescriptor("FACTORS", kParamTokenList, false, true));
    force.addParamDescriptor(ParamDescriptor("COVARIATES", kParamTokenList, false, true));
    command.addSubComDescriptor(force);

    SubComDescriptor numbers("NUMBERS", kSubComParams, false);
    ParamDescriptor open("OPEN", kParamNumber, false, true);
    open.setLowerBdry(0, kBdryExcluded);
    open.setUpperBdry(100, kBdryExcluded);
    numbers.addParamDescriptor(open);
    ParamDescriptor closed("CLOSED", kParamNumber, false, true);
    closed.setLowerBdry(0.5, kBdryIncluded);
    closed.setUpperBdry(1, kBdryIncluded);
    numbers.addParamDescriptor(closed);
    numbers.addParamDescriptor(ParamDescriptor("ANY", kParamNumber, false, true));
    ParamDescriptor count("COUNT", kParamInteger, false, true);
    count.setLowerBdry(0, kBdryExcluded);
    numbers.addParamDescriptor(count);
    ParamDescriptor size("SIZE", kParamInteger, false, true);
    size.setLowerBdry(0, kBdryExcluded);
    size.addStringValue("AUTO");
    numbers.addParamDescriptor(size);
    numbers.addParamDescriptor(ParamDescriptor("WHOLE", kParamInteger, false, true));
    command.addSubComDescriptor(numbers);

    SubComDescriptor subset("SUBSET", kSubComParams, false);
    ParamDescriptor maxSize("MAXSIZE", kParamTokenList, false, true);
    maxSize.setQualifOption(0);
    maxSize.addQualifDesc("BESTSUBSET");
    subset.addParamDescriptor(maxSize);
    subset.addParamDescriptor(ParamDescriptor("NOSELECTION", kParamKeyword, false, true));
    command.addSubComDescriptor(subset);

    SubComDescriptor print("PRINT", kSubComKeywords, false);
    print.addParamDescriptor(ParamDescriptor("NONE", kParamKeyword, false, true));
    print.addParamDescriptor(ParamDescriptor("CPS", kParamKeyword, false, true));
    ParamDescriptor summary("SUMMARY", kParamStringList, false, false);
    summary.addStringValue("PEARSON");
    summary.addStringValue("LAMBDA");
    summary.addStringValue("CPS");  // the same word as a keyword of the subcommand
    print.addParamDescriptor(summary);
    command.addSubComDescriptor(print);

    SubComDescriptor save("SAVE", kSubComKeywords, false);
    save.addParamDescriptor(ParamDescriptor("PREDVAL", kParamVariable, false, false));
    save.addParamDescriptor(ParamDescriptor("PREDPROB", kParamTokenList, false, false));
    command.addSubComDescriptor(save);

    SubComDescriptor missing("MISSING", kSubComParams, false);
    ParamDescriptor user("USERMISSING", kParamOneString, true, true);
    user.addStringValue("EXCLUDE");
    user.addStringValue("INCLUDE");
    missing.addParamDescriptor(user);
    command.addSubComDescriptor(missing);

    SubComDescriptor outfile("OUTFILE", kSubComParams, false);
    outfile.addParamDescriptor(ParamDescriptor("MODEL", kParamFile, false, true));
    command.addSubComDescriptor(outfile);
    return command;
}

/// The text behind the command's name, read by the demo grammar.
class DemoRun {
 public:
    explicit DemoRun(const std::string& text) : fRun("SELECTPRED " + text) {
        KOLT_TokenSequence tokens(true);
        fFaults = UniversalParser(tokens, fSpec, fGrammar).getCommandSpecifications();
    }
    std::int32_t Faults() const { return fFaults; }
    const CommandRun& Run() const { return fRun; }
    const SubComObj* SubCom(const char* name) const { return fSpec.getSubComObj(name); }
    /// Null when either was not written.
    const ParamObj* Param(const char* subcommand, const char* parameter) const {
        const SubComObj* found = SubCom(subcommand);
        return found == nullptr ? nullptr : found->getParamObj(parameter);
    }

 private:
    CommandDescriptor fGrammar = DemoGrammar();
    CommandRun fRun;
    CommandSpec fSpec;
    std::int32_t fFaults = 0;
};

std::string Spelled(const TokenList& tokens) {
    std::string all;
    for (const TokenInfoObj& token : tokens)
        all += (all.empty() ? "" : " ") +
               (token.IsQuoted() ? "\"" + token.getString() + "\"" : token.getString());
    return all;
}

template <class Case>
std::string CaseName(const testing::TestParamInfo<Case>& info) {
    return info.param.fName;
}

struct ValueCase {
    const char* fName;
    const char* fText;  // behind the target
    const char* fSubCom;
    const char* fParam;
    const char* fTokens;
};

std::ostream& operator<<(std::ostream& out, const ValueCase& valueCase) {
    return out << valueCase.fText;
}

class ParamValues : public testing::TestWithParam<ValueCase> {};

TEST_P(ParamValues, AreTakenAsWritten) {
    const DemoRun demo(std::string("y ") + GetParam().fText);
    ASSERT_EQ(demo.Faults(), 0) << demo.Run().Message();
    EXPECT_FALSE(demo.Run().HasError());
    const ParamObj* param = demo.Param(GetParam().fSubCom, GetParam().fParam);
    ASSERT_NE(param, nullptr);
    EXPECT_EQ(Spelled(param->getTokenList()), GetParam().fTokens);
}

INSTANTIATE_TEST_SUITE_P(
    Single, ParamValues,
    testing::Values(
        ValueCase{"Equals", "/NUMBERS ANY=5", "NUMBERS", "ANY", "5"},
        ValueCase{"EqualsWithBlanks", "/NUMBERS ANY = 5", "NUMBERS", "ANY", "5"},
        ValueCase{"Parentheses", "/NUMBERS ANY(5)", "NUMBERS", "ANY", "5"},
        ValueCase{"EqualsAndParentheses", "/NUMBERS ANY=(5)", "NUMBERS", "ANY", "5"},
        ValueCase{"AnyCase", "/nUmBers any=5", "NUMBERS", "ANY", "5"},
        ValueCase{"OverLines", "/\nNUMBERS # why\nANY\n=\n5", "NUMBERS", "ANY", "5"},
        ValueCase{"Negative", "/NUMBERS ANY=-5", "NUMBERS", "ANY", "-5"},
        ValueCase{"IntegerKeyword", "/NUMBERS SIZE=auto", "NUMBERS", "SIZE", "auto"},
        ValueCase{"IntegerInsteadOfKeyword", "/NUMBERS SIZE=3", "NUMBERS", "SIZE", "3"},
        ValueCase{"IntegerInScientificForm", "/NUMBERS COUNT=1e3", "NUMBERS", "COUNT", "1e3"},
        ValueCase{"OneString", "/MISSING USERMISSING=include", "MISSING", "USERMISSING", "include"},
        ValueCase{"Variable", "/SAVE PREDVAL=pred", "SAVE", "PREDVAL", "pred"},
        ValueCase{"VariableInParentheses", "/SAVE PREDVAL(pred)", "SAVE", "PREDVAL", "pred"},
        ValueCase{"QuotedVariable", "/SAVE PREDVAL(\"my pred\")", "SAVE", "PREDVAL", "\"my pred\""},
        ValueCase{"File", "/OUTFILE MODEL='out/my model.xml'", "OUTFILE", "MODEL",
                  "out/my model.xml"},
        ValueCase{"FileAsWord", "/OUTFILE MODEL=model.xml", "OUTFILE", "MODEL", "model.xml"},
        ValueCase{"FileAsWordBeforeAnotherSubcommand", "/OUTFILE MODEL=model.xml /PRINT NONE",
                  "OUTFILE", "MODEL", "model.xml"},
        ValueCase{"SecondOfTwo", "/NUMBERS ANY=5 COUNT=3", "NUMBERS", "COUNT", "3"},
        ValueCase{"SecondOfTwoBehindAComma", "/NUMBERS ANY=5, COUNT=3", "NUMBERS", "COUNT", "3"}),
    CaseName<ValueCase>);

INSTANTIATE_TEST_SUITE_P(
    Lists, ParamValues,
    testing::Values(
        ValueCase{"InParentheses", "/EXCEPT VARIABLES=(a b)", "EXCEPT", "VARIABLES", "a b"},
        ValueCase{"WithoutEquals", "/EXCEPT VARIABLES(a b)", "EXCEPT", "VARIABLES", "a b"},
        ValueCase{"CommasStay", "/EXCEPT VARIABLES=(a, b)", "EXCEPT", "VARIABLES", "a , b"},
        ValueCase{"Bare", "/EXCEPT VARIABLES=a b c", "EXCEPT", "VARIABLES", "a b c"},
        ValueCase{"BareWithCommas", "/EXCEPT VARIABLES=a, b", "EXCEPT", "VARIABLES", "a , b"},
        ValueCase{"BareRangeAndPattern", "/EXCEPT VARIABLES=a..c x*", "EXCEPT", "VARIABLES",
                  "a .. c x *"},
        ValueCase{"BareUpToTheNextParameter", "/FORCE FACTORS=a b COVARIATES=c", "FORCE", "FACTORS",
                  "a b"},
        ValueCase{"BareUpToACommaAndTheNextParameter", "/FORCE FACTORS=a, b, COVARIATES=c", "FORCE",
                  "FACTORS", "a , b"},
        ValueCase{"BareUpToTheNextSubcommand", "/FORCE FACTORS=a b /PRINT CPS", "FORCE", "FACTORS",
                  "a b"},
        ValueCase{"ParameterWordInParenthesesIsAVariable", "/FORCE FACTORS=(a covariates)", "FORCE",
                  "FACTORS", "a covariates"},
        ValueCase{"QuotedParameterWordIsAVariable", "/FORCE FACTORS=a \"covariates\"", "FORCE",
                  "FACTORS", "a \"covariates\""},
        ValueCase{"RangeEndMayBeAParameterWord", "/FORCE FACTORS=a..covariates", "FORCE", "FACTORS",
                  "a .. covariates"},
        ValueCase{"InnerParenthesesStay", "/EXCEPT VARIABLES=(a (b) c)", "EXCEPT", "VARIABLES",
                  "a ( b ) c"},
        ValueCase{"StringList", "/PRINT SUMMARY(PEARSON lambda)", "PRINT", "SUMMARY",
                  "PEARSON lambda"},
        ValueCase{"StringListLosesCommas", "/PRINT SUMMARY=(PEARSON, LAMBDA)", "PRINT", "SUMMARY",
                  "PEARSON LAMBDA"},
        ValueCase{"BareStringList", "/PRINT SUMMARY=LAMBDA PEARSON NONE", "PRINT", "SUMMARY",
                  "LAMBDA PEARSON"},
        ValueCase{"BareStringListTakesItsOwnWords", "/PRINT SUMMARY=LAMBDA CPS", "PRINT", "SUMMARY",
                  "LAMBDA CPS"},
        ValueCase{"RootAndCount", "/SAVE PREDPROB(root:5)", "SAVE", "PREDPROB", "root : 5"},
        ValueCase{"BareRootAndCount", "/SAVE PREDPROB=root:5 PREDVAL", "SAVE", "PREDPROB",
                  "root : 5"},
        ValueCase{"CountAlone", "/SAVE PREDPROB(:5)", "SAVE", "PREDPROB", ": 5"},
        ValueCase{"BareCountAlone", "/SAVE PREDPROB=:5", "SAVE", "PREDPROB", ": 5"}),
    CaseName<ValueCase>);

INSTANTIATE_TEST_SUITE_P(
    Qualifiers, ParamValues,
    testing::Values(
        ValueCase{"None", "/SUBSET MAXSIZE=5", "SUBSET", "MAXSIZE", "5"},
        ValueCase{"NoneInParentheses", "/SUBSET MAXSIZE(5)", "SUBSET", "MAXSIZE", "5"},
        ValueCase{"SixTokens", "/SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA)", "SUBSET", "MAXSIZE",
                  "AUTO ( BESTSUBSET = TESTDATA )"},
        ValueCase{"SixTokensWithBlanks", "/SUBSET MAXSIZE = 5 ( BESTSUBSET = TESTDATA )", "SUBSET",
                  "MAXSIZE", "5 ( BESTSUBSET = TESTDATA )"},
        ValueCase{"SixTokensInParentheses", "/SUBSET MAXSIZE=(AUTO(BESTSUBSET=TESTDATA))", "SUBSET",
                  "MAXSIZE", "AUTO ( BESTSUBSET = TESTDATA )"},
        ValueCase{"OfAnyForm", "/SUBSET MAXSIZE=AUTO(WRONG)", "SUBSET", "MAXSIZE",
                  "AUTO ( WRONG )"},
        ValueCase{"Empty", "/SUBSET MAXSIZE=AUTO()", "SUBSET", "MAXSIZE", "AUTO ( )"},
        ValueCase{"BeforeTheNextKeyword", "/SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA) NOSELECTION",
                  "SUBSET", "MAXSIZE", "AUTO ( BESTSUBSET = TESTDATA )"},
        ValueCase{"BareValueIsOneToken", "/SUBSET MAXSIZE=5 NOSELECTION", "SUBSET", "MAXSIZE",
                  "5"}),
    CaseName<ValueCase>);

struct RefusalCase {
    const char* fName;
    const char* fText;     // the command behind its name
    const char* fText1;    // what the message's first line says behind the place
    std::int32_t fColumn;  // in "SELECTPRED " and the text
};

std::ostream& operator<<(std::ostream& out, const RefusalCase& refusalCase) {
    return out << refusalCase.fText;
}

class Refusals : public testing::TestWithParam<RefusalCase> {};

TEST_P(Refusals, SayWhatWhereAndWhatWasExpected) {
    const DemoRun demo(GetParam().fText);
    EXPECT_EQ(demo.Faults(), 1);
    ASSERT_EQ(demo.Run().Messages().size(), 1u) << demo.Run().Message();
    const ReportMessage& message = demo.Run().Messages().front();
    const std::string column = std::to_string(GetParam().fColumn);
    const std::string first = message.fText.substr(0, message.fText.find('\n'));
    EXPECT_EQ(first, "test.pred:1:" + column + ": " + GetParam().fText1);
    EXPECT_EQ(message.fText.substr(first.size() + 1),
              std::string("SELECTPRED ") + GetParam().fText + "\n" +
                  std::string(static_cast<std::size_t>(GetParam().fColumn - 1), ' ') + "^");
    EXPECT_EQ(message.fLevel, MessageLevel::Error);
    EXPECT_TRUE(message.fbCommandLanguage);
    EXPECT_TRUE(demo.Run().HasError());
}

INSTANTIATE_TEST_SUITE_P(
    Subcommands, Refusals,
    testing::Values(
        RefusalCase{"NoVariableList", "/PRINT CPS",
                    "Expected the target variable after DEMO, found '/'.", 12},
        RefusalCase{"Unknown", "y /PRINTS CPS",
                    "DEMO has no subcommand PRINTS; did you mean PRINT?", 15},
        RefusalCase{"UnknownAndFar", "y /QQQQ CPS",
                    "DEMO has no subcommand QQQQ; expected EXCEPT, FORCE, NUMBERS, SUBSET, PRINT, "
                    "SAVE, MISSING or OUTFILE.",
                    15},
        RefusalCase{"Abbreviated", "y /PRI CPS", "DEMO has no subcommand PRI; did you mean PRINT?",
                    15},
        RefusalCase{
            "SlashAtTheEnd", "y /",
            "Expected a subcommand after '/', found the end of the command; the subcommands are "
            "EXCEPT, FORCE, NUMBERS, SUBSET, PRINT, SAVE, MISSING or OUTFILE.",
            15},
        RefusalCase{"SlashBeforeTheSemicolon", "y / ;",
                    "Expected a subcommand after '/', found ';'; the subcommands are EXCEPT, "
                    "FORCE, NUMBERS, SUBSET, PRINT, SAVE, MISSING or OUTFILE.",
                    16},
        RefusalCase{"TwoSlashes", "y //PRINT CPS",
                    "Expected a subcommand after '/', found '/'; the subcommands are EXCEPT, "
                    "FORCE, NUMBERS, SUBSET, PRINT, SAVE, MISSING or OUTFILE.",
                    15},
        RefusalCase{"Quoted", "y /\"PRINT\" CPS",
                    "Expected a subcommand after '/', found \"PRINT\"; the subcommands are EXCEPT, "
                    "FORCE, NUMBERS, SUBSET, PRINT, SAVE, MISSING or OUTFILE.",
                    15},
        RefusalCase{"Twice", "y /PRINT CPS /print NONE",
                    "The subcommand PRINT stands twice, first in line 1; expected it once.", 26},
        RefusalCase{"Empty", "y /PRINT", "PRINT is empty; expected NONE, CPS or SUMMARY.", 15},
        RefusalCase{"MandatoryParameterMissing", "y /MISSING",
                    "MISSING is empty; expected USERMISSING.", 15}),
    CaseName<RefusalCase>);

INSTANTIATE_TEST_SUITE_P(
    Parameters, Refusals,
    testing::Values(
        RefusalCase{"Unknown", "y /PRINT CSP", "PRINT does not know CSP; did you mean CPS?", 21},
        RefusalCase{"UnknownAndFar", "y /PRINT EVERYTHING",
                    "PRINT does not know EVERYTHING; expected NONE, CPS or SUMMARY.", 21},
        RefusalCase{"UnknownBehindABareList", "y /FORCE FACTORS=a COVARIATE=b",
                    "FORCE does not know COVARIATE; did you mean COVARIATES?", 31},
        RefusalCase{"Twice", "y /PRINT CPS cps", "CPS stands twice in PRINT; expected it once.",
                    25},
        RefusalCase{"Number", "y /PRINT 5",
                    "Found 5 in PRINT; expected NONE, CPS or SUMMARY, '/' or ';'.", 21},
        RefusalCase{"Quoted", "y /PRINT \"CPS\"",
                    "Found \"CPS\" in PRINT; expected NONE, CPS or SUMMARY, '/' or ';'.", 21},
        RefusalCase{"LeadingComma", "y /PRINT , CPS",
                    "Found ',' in PRINT; expected NONE, CPS or SUMMARY, '/' or ';'.", 21},
        RefusalCase{"TwoCommas", "y /PRINT CPS,,NONE",
                    "Found ',' in PRINT; expected NONE, CPS or SUMMARY, '/' or ';'.", 25},
        RefusalCase{
            "TrailingComma", "y /PRINT CPS,",
            "Found the end of the command in PRINT; expected NONE, CPS or SUMMARY, '/' or ';'.",
            25},
        RefusalCase{
            "SuperfluousParenthesis", "y /NUMBERS ANY=5)",
            "Found ')' in NUMBERS; expected OPEN, CLOSED, ANY, COUNT, SIZE or WHOLE, '/' or ';'.",
            28},
        RefusalCase{
            "SuperfluousValue", "y /NUMBERS ANY=5 6",
            "Found 6 in NUMBERS; expected OPEN, CLOSED, ANY, COUNT, SIZE or WHOLE, '/' or ';'.",
            29}),
    CaseName<RefusalCase>);

INSTANTIATE_TEST_SUITE_P(
    Values, Refusals,
    testing::Values(
        RefusalCase{"None", "y /NUMBERS ANY",
                    "NUMBERS ANY needs a value after '=': a number; found the end of the command.",
                    26},
        RefusalCase{"NoneBehindEquals", "y /NUMBERS ANY=;",
                    "NUMBERS ANY needs a value after '=': a number; found ';'.", 27},
        RefusalCase{"NoneBeforeASlash", "y /NUMBERS ANY=/PRINT CPS",
                    "NUMBERS ANY needs a value after '=': a number; found '/'.", 27},
        RefusalCase{
            "EqualsForgotten", "y /NUMBERS CLOSED 1",
            "NUMBERS CLOSED needs a value after '=': a number at least 0.5 and at most 1; found 1.",
            30},
        RefusalCase{"EmptyParentheses", "y /EXCEPT VARIABLES=()",
                    "EXCEPT VARIABLES needs a value after '=': one value or a list in parentheses; "
                    "found ')'.",
                    33},
        RefusalCase{"EmptyParenthesesOfAnOptionalValue", "y /PRINT SUMMARY()",
                    "PRINT SUMMARY needs a value after '=': one or more of PEARSON, LAMBDA and "
                    "CPS; found ')'.",
                    29},
        RefusalCase{"OpenParenthesis", "y /EXCEPT VARIABLES=(a b",
                    "The parenthesis of EXCEPT VARIABLES is not closed; expected ')' before the "
                    "end of the command.",
                    32},
        RefusalCase{"OpenParenthesisBeforeASlash", "y /EXCEPT VARIABLES=(a b /PRINT CPS",
                    "The parenthesis of EXCEPT VARIABLES is not closed; expected ')' before '/'.",
                    32},
        RefusalCase{"OpenQualifier", "y /SUBSET MAXSIZE=5(BESTSUBSET=TESTDATA",
                    "The parenthesis of SUBSET MAXSIZE is not closed; expected ')' before the end "
                    "of the command.",
                    31},
        RefusalCase{"KeywordWithValue", "y /PRINT CPS=1",
                    "PRINT CPS takes no value; expected the next keyword, '/' or ';', found '='.",
                    24},
        RefusalCase{"KeywordWithParentheses", "y /PRINT CPS(1)",
                    "PRINT CPS takes no value; expected the next keyword, '/' or ';', found '('.",
                    24},
        RefusalCase{"WordForNumber", "y /NUMBERS ANY=many",
                    "NUMBERS ANY expects a number, found many.", 27},
        RefusalCase{"StringForNumber", "y /NUMBERS ANY='5'",
                    "NUMBERS ANY expects a number, found '5'.", 27},
        RefusalCase{"FractionForInteger", "y /NUMBERS COUNT=2.5",
                    "NUMBERS COUNT expects an integer above 0, found 2.5.", 29},
        RefusalCase{"WordForIntegerWithKeyword", "y /NUMBERS SIZE=all",
                    "NUMBERS SIZE expects an integer above 0 or AUTO, found all.", 28},
        RefusalCase{"QuotedKeyword", "y /NUMBERS SIZE=\"AUTO\"",
                    "NUMBERS SIZE expects an integer above 0 or AUTO, found \"AUTO\".", 28},
        RefusalCase{"IntegerTooLarge", "y /NUMBERS COUNT=3000000000",
                    "NUMBERS COUNT expects an integer of at most 2147483647, found 3000000000.",
                    29},
        RefusalCase{"TwoNumbers", "y /NUMBERS ANY=(5 6)",
                    "NUMBERS ANY expects one value, a number; found a second one, 6.", 30},
        RefusalCase{"UnknownOneString", "y /MISSING USERMISSING=EXCLUD",
                    "MISSING USERMISSING does not know EXCLUD; did you mean EXCLUDE?", 35},
        RefusalCase{"NumberForOneString", "y /MISSING USERMISSING=1",
                    "MISSING USERMISSING expects EXCLUDE or INCLUDE, found 1.", 35},
        RefusalCase{"UnknownInStringList", "y /PRINT SUMMARY(LAMBDA KENDALL)",
                    "PRINT SUMMARY does not know KENDALL; expected PEARSON, LAMBDA or CPS.", 36},
        RefusalCase{"NumberInStringList", "y /PRINT SUMMARY(LAMBDA 5)",
                    "PRINT SUMMARY expects one or more of PEARSON, LAMBDA and CPS, found 5.", 36},
        RefusalCase{"TwoCommasInStringList", "y /PRINT SUMMARY(LAMBDA,,CPS)",
                    "PRINT SUMMARY expects one or more of PEARSON, LAMBDA and CPS, found ','.", 36},
        RefusalCase{"NumberForVariable", "y /SAVE PREDVAL=5",
                    "SAVE PREDVAL expects the name of a variable, found 5.", 28},
        RefusalCase{"NumberForFile", "y /OUTFILE MODEL=5",
                    "OUTFILE MODEL expects a file path in single quotes, found 5.", 29},
        RefusalCase{"EmptyFile", "y /OUTFILE MODEL=''",
                    "OUTFILE MODEL expects a file path in single quotes, found ''.", 29},
        RefusalCase{"PathWithoutQuotes", "y /OUTFILE MODEL=out/model.xml",
                    "OUTFILE MODEL expects a file path in single quotes, found '/'.", 32}),
    CaseName<RefusalCase>);

struct BoundCase {
    const char* fName;
    const char* fText;
    const char* fExpected;  // null when it passes
};

std::ostream& operator<<(std::ostream& out, const BoundCase& boundCase) {
    return out << boundCase.fText;
}

class Bounds : public testing::TestWithParam<BoundCase> {};

TEST_P(Bounds, HoldOnBothSides) {
    const DemoRun demo(std::string("y /NUMBERS ") + GetParam().fText);
    EXPECT_EQ(demo.Faults(), GetParam().fExpected == nullptr ? 0 : 1) << demo.Run().Message();
    if (GetParam().fExpected == nullptr) return;
    EXPECT_EQ(demo.Run().Key(), "Parameter ^1 beyond bounds ^2, found ^3...");
    EXPECT_NE(demo.Run().Message().find(GetParam().fExpected), std::string::npos)
        << demo.Run().Message();
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, Bounds,
    testing::Values(
        BoundCase{"ExcludedLower", "OPEN=0", "a number above 0 and below 100, found 0."},
        BoundCase{"AboveExcludedLower", "OPEN=1e-300", nullptr},
        BoundCase{"ExcludedUpper", "OPEN=100", "a number above 0 and below 100, found 100."},
        BoundCase{"BelowExcludedUpper", "OPEN=99.999", nullptr},
        BoundCase{"Below", "OPEN=-1", "a number above 0 and below 100, found -1."},
        BoundCase{"IncludedLower", "CLOSED=0.5", nullptr},
        BoundCase{"BelowIncludedLower", "CLOSED=0.499",
                  "a number at least 0.5 and at most 1, found 0.499."},
        BoundCase{"IncludedUpper", "CLOSED=1", nullptr},
        BoundCase{"AboveIncludedUpper", "CLOSED=1.001",
                  "a number at least 0.5 and at most 1, found 1.001."},
        BoundCase{"NoBounds", "ANY=-1e300", nullptr},
        BoundCase{"IntegerAtLower", "COUNT=0", "an integer above 0, found 0."},
        BoundCase{"IntegerAboveLower", "COUNT=1", nullptr},
        BoundCase{"LargestInteger", "COUNT=2147483647", nullptr},
        BoundCase{"KeywordAtLower", "SIZE=0", "an integer above 0 or AUTO, found 0."},
        BoundCase{"NegativeInteger", "WHOLE=-2147483647", nullptr}),
    CaseName<BoundCase>);

TEST(UniversalParser, ValueMayBeLeftOutWhereItIsOptional) {
    const DemoRun demo("y /PRINT SUMMARY CPS /SAVE PREDVAL PREDPROB");
    ASSERT_EQ(demo.Faults(), 0) << demo.Run().Message();
    EXPECT_TRUE(demo.Param("PRINT", "SUMMARY")->isLeadingToken());
    EXPECT_TRUE(demo.Param("SAVE", "PREDVAL")->isLeadingToken());
    EXPECT_TRUE(demo.Param("SAVE", "PREDPROB")->isLeadingToken());
}

TEST(UniversalParser, ParameterWithAValueIsNoLeadingToken) {
    const DemoRun demo("y /PRINT SUMMARY(LAMBDA)");
    EXPECT_FALSE(demo.Param("PRINT", "SUMMARY")->isLeadingToken());
}

TEST(UniversalParser, AbsentThingsAreNull) {
    const DemoRun demo("y /PRINT CPS");
    EXPECT_EQ(demo.SubCom("SAVE"), nullptr);
    EXPECT_EQ(demo.Param("PRINT", "NONE"), nullptr);
    EXPECT_NE(demo.Param("PRINT", "CPS"), nullptr);
}

TEST(UniversalParser, OpeningListIsTheNamelessSubcommand) {
    const DemoRun demo("y (MLEVEL=S) BY a, b WITH c..d x* /PRINT CPS");
    ASSERT_EQ(demo.Faults(), 0) << demo.Run().Message();
    ASSERT_NE(demo.SubCom(""), nullptr);
    EXPECT_EQ(Spelled(demo.SubCom("")->exportParamObj()),
              "y ( MLEVEL = S ) BY a , b WITH c .. d x *");
}

TEST(UniversalParser, ParametersKeepTheirOrder) {
    const DemoRun demo("y /NUMBERS SIZE=1 ANY=2 OPEN=3");
    const SubComObj& numbers = *demo.SubCom("NUMBERS");
    ASSERT_EQ(numbers.getParamListSize(), 3);
    EXPECT_EQ(numbers.getParamObjAt(0).getParamName(), "SIZE");
    EXPECT_EQ(numbers.getParamObjAt(1).getParamName(), "ANY");
    EXPECT_EQ(numbers.getParamObjAt(2).getParamName(), "OPEN");
}

TEST(UniversalParser, ValuesAreReadInEveryForm) {
    const DemoRun demo(
        "y /NUMBERS OPEN=2.50 COUNT=7 SIZE=Auto /MISSING USERMISSING=Include "
        "/PRINT SUMMARY(Lambda, PEARSON) /SAVE PREDVAL(\"My Pred\") /OUTFILE MODEL='a b.xml'");
    ASSERT_EQ(demo.Faults(), 0) << demo.Run().Message();
    EXPECT_EQ(demo.Param("NUMBERS", "OPEN")->getNumeric(), 2.5);
    EXPECT_EQ(demo.Param("NUMBERS", "OPEN")->getStringToken(), "2.50");
    EXPECT_EQ(demo.Param("NUMBERS", "COUNT")->getInteger(), 7);
    EXPECT_FALSE(demo.Param("NUMBERS", "COUNT")->isStringValueCase("AUTO"));
    EXPECT_TRUE(demo.Param("NUMBERS", "SIZE")->isStringValueCase("AUTO"));
    EXPECT_TRUE(demo.Param("MISSING", "USERMISSING")->isStringValueCase("INCLUDE"));
    EXPECT_FALSE(demo.Param("MISSING", "USERMISSING")->isStringValueCase("EXCLUDE"));
    const ParamObj& summary = *demo.Param("PRINT", "SUMMARY");
    EXPECT_EQ(summary.getStringList(), (std::vector<std::string>{"Lambda", "PEARSON"}));
    EXPECT_EQ(summary.getUpperStringList(), (std::vector<std::string>{"LAMBDA", "PEARSON"}));
    EXPECT_EQ(demo.Param("SAVE", "PREDVAL")->getVarName(), KoltVarName("My Pred"));
    std::string path;
    EXPECT_TRUE(demo.Param("OUTFILE", "MODEL")->getFilePath(path, true, true));
    EXPECT_EQ(path, "a b.xml");
}

TEST(UniversalParser, SlashOfAPathWithoutQuotesBeginsNoSubcommand) {
    const DemoRun demo("y /OUTFILE MODEL=a/b/c.xml /PRINT CSP");
    ASSERT_EQ(demo.Run().Messages().size(), 2u) << demo.Run().Message();
    EXPECT_EQ(demo.Run().Messages()[0].fKey, "Parameter ^1 expects ^2, found ^3...");
    EXPECT_EQ(demo.Run().Messages()[1].fKey, "Unknown word ^2 in ^1 ^3...");
}

TEST(UniversalParser, NoTokenAtAllLacksTheVariableList) {
    const DemoRun demo("");
    EXPECT_EQ(demo.Faults(), 1);
    EXPECT_EQ(demo.Run().Key(), "Variable list of command ^1 missing, found ^2...");
}

TEST(UniversalParser, MandatoryParameterIsMissedBesideOthers) {
    CommandDescriptor grammar("DEMO");
    SubComDescriptor both("BOTH", kSubComParams, true);
    both.addParamDescriptor(ParamDescriptor("NEEDED", kParamNumber, true, true));
    both.addParamDescriptor(ParamDescriptor("OTHER", kParamNumber, false, true));
    grammar.addSubComDescriptor(both);
    {
        const CommandRun run("SELECTPRED y /BOTH OTHER=1");
        KOLT_TokenSequence tokens(true);
        CommandSpec spec;
        EXPECT_EQ(UniversalParser(tokens, spec, grammar).getCommandSpecifications(), 1);
        EXPECT_EQ(run.Message(),
                  "test.pred:1:15: BOTH needs its parameter NEEDED, which is not there.\n"
                  "SELECTPRED y /BOTH OTHER=1\n"
                  "              ^");
    }
    const CommandRun run("SELECTPRED y");
    KOLT_TokenSequence tokens(true);
    CommandSpec spec;
    EXPECT_EQ(UniversalParser(tokens, spec, grammar).getCommandSpecifications(), 1);
    EXPECT_EQ(run.Key(), "Subcommand ^1 missing in ^2...");
}

TEST(UniversalParser, ChangingADescriptorAfterwardsReachesTheCopyNoMore) {
    ParamDescriptor number("N", kParamNumber, false, true);
    SubComDescriptor sub("S", kSubComParams, false);
    sub.addParamDescriptor(number);
    number.setUpperBdry(100, kBdryIncluded);
    EXPECT_TRUE(number.HasUpper());
    EXPECT_FALSE(sub.Params().front().HasUpper());
}

TEST(UniversalParser, GoesOnAtTheNextSubcommandAfterAFault) {
    const DemoRun demo(
        "y /PRINT FOO BAR /NUMBERS OPEN=0 /EXCEPT VARIABLES=(a /MISSING USERMISSING=INCLUDE");
    EXPECT_EQ(demo.Faults(), 3);
    ASSERT_EQ(demo.Run().Messages().size(), 3u);
    EXPECT_EQ(demo.Run().Messages()[0].fKey, "Unknown word ^2 in ^1 ^3...");
    EXPECT_EQ(demo.Run().Messages()[1].fKey, "Parameter ^1 beyond bounds ^2, found ^3...");
    EXPECT_EQ(demo.Run().Messages()[2].fKey, "Parenthesis of ^1 not closed, found ^2...");
}

TEST(UniversalParser, StopsAfterTenFaults) {
    std::string text = "y";
    for (int i = 0; i < 1000; ++i) text += " /FOO";
    EXPECT_EQ(DemoRun(text).Faults(), 10);
}

TEST(UniversalParser, CaretStandsUnderTheCharacterBehindTabsAndLetters) {
    const DemoRun demo("größe\t/PRINT\tCSP");
    EXPECT_EQ(demo.Run().Message(),
              "test.pred:1:25: PRINT does not know CSP; did you mean CPS?\n"
              "SELECTPRED größe\t/PRINT\tCSP\n"
              "                \t      \t^");
}

TEST(UniversalParser, AHundredThousandTokensTakeWellUnderASecond) {
    std::string list;
    for (int i = 0; i < 100000; ++i) list += " x" + std::to_string(i);
    const std::string text = "y BY" + list + " /EXCEPT VARIABLES=" + list;
    const auto start = std::chrono::steady_clock::now();
    const DemoRun demo(text);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(demo.Faults(), 0);
    EXPECT_EQ(demo.Param("EXCEPT", "VARIABLES")->getTokenList().size(), 100000u);
    EXPECT_LT(seconds.count(), 2.0);  // twice the tokens; sanitizers included
}

TEST(UniversalParser, DeepParenthesesNeedNoStack) {
    const std::string deep(200000, '('), closed(200000, ')');
    EXPECT_EQ(DemoRun("y /EXCEPT VARIABLES=" + deep).Faults(), 1);
    EXPECT_EQ(DemoRun("y /EXCEPT VARIABLES=" + deep + "a" + closed).Faults(), 0);
}

}  // namespace
}  // namespace embedded
