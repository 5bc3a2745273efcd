#include "embedded/command/CommandTokens.h"

#include <gtest/gtest.h>

#include <chrono>
#include <ostream>
#include <string>
#include <vector>

namespace embedded {
namespace {

using namespace TokenSequenceBase;

CommandScript Read(const std::string& text) { return ParseCommandText(text, "test.pred"); }

/// Tokens in one line: n: name, q: quoted name, d: number, s: string, o: operator.
std::string Spelled(const TokenList& tokens) {
    std::string all;
    for (const TokenInfoObj& token : tokens) {
        if (!all.empty()) all += ' ';
        switch (token.Kind()) {
            case TokenKind::Name:
                all += token.IsQuoted() ? "q" : "n";
                break;
            case TokenKind::Number:
                all += "d";
                break;
            case TokenKind::String:
                all += "s";
                break;
            case TokenKind::Operator:
                all += "o";
                break;
            case TokenKind::End:
                all += "e";
                break;
        }
        all += "<" + token.getString() + ">";
    }
    return all;
}

struct TokenCase {
    const char* fName;
    const char* fText;
    const char* fTokens;
};

std::ostream& operator<<(std::ostream& out, const TokenCase& tokenCase) {
    return out << tokenCase.fText;
}

template <class Case>
std::string CaseName(const testing::TestParamInfo<Case>& info) {
    return info.param.fName;
}

class CommandTokensTable : public testing::TestWithParam<TokenCase> {};

TEST_P(CommandTokensTable, CutsIntoTokens) {
    const CommandScript script = Read(std::string("SELECTPRED ") + GetParam().fText);
    ASSERT_FALSE(script.fFault) << script.fFault->Lines();
    ASSERT_EQ(script.fvCommands.size(), 1u);
    EXPECT_EQ(Spelled(script.fvCommands[0].Tokens()), GetParam().fTokens);
}

INSTANTIATE_TEST_SUITE_P(
    Names, CommandTokensTable,
    testing::Values(TokenCase{"PlainWord", "age", "n<age>"},
                    TokenCase{"CaseIsKept", "AgE", "n<AgE>"},
                    TokenCase{"DigitsInside", "x1", "n<x1>"},
                    TokenCase{"Underscore", "_a_1", "n<_a_1>"},
                    TokenCase{"DollarAndAt", "$a @b", "n<$a> n<@b>"},
                    TokenCase{"PeriodInside", "Sepal.Length", "n<Sepal.Length>"},
                    TokenCase{"PeriodsInside", "a.b.c", "n<a.b.c>"},
                    TokenCase{"NonAsciiLetters", "Größe año 年齢 возраст",
                              "n<Größe> n<año> n<年齢> n<возраст>"},
                    TokenCase{"SignsBeyondAscii", "temp° m² 😀", "n<temp°> n<m²> n<😀>"},
                    TokenCase{"JoinersOfPersian", "می\u200Cخواهم", "n<می\u200Cخواهم>"},
                    TokenCase{"InDoubleQuotes", "\"age\"", "q<age>"},
                    TokenCase{"BlanksInQuotes", "\"age at death\"", "q<age at death>"},
                    TokenCase{"QuoteInQuotes", "\"a \"\"b\"\"\"", "q<a \"b\">"},
                    TokenCase{"OnlyAQuoteInQuotes", "\"\"\"\"", "q<\">"},
                    TokenCase{"AnythingInQuotes", "\"#;/()=,'*\"", "q<#;/()=,'*>"},
                    TokenCase{"NonAsciiInQuotes", "\"Größe in “cm”\"", "q<Größe in “cm”>"},
                    TokenCase{"LineBreakInQuotes", "\"a\nb\"", "q<a\nb>"},
                    TokenCase{"CrlfInQuotesIsKept", "\"a\r\nb\"", "q<a\r\nb>"},
                    TokenCase{"QuotedNamesSideBySide", "\"a\" \"b\"", "q<a> q<b>"},
                    TokenCase{"NoBackslashEscapes", "\"a\\\"", "q<a\\>"}),
    CaseName<TokenCase>);

INSTANTIATE_TEST_SUITE_P(Strings, CommandTokensTable,
                         testing::Values(TokenCase{"InSingleQuotes", "'a b'", "s<a b>"},
                                         TokenCase{"QuoteInString", "'it''s'", "s<it's>"},
                                         TokenCase{"Empty", "''", "s<>"},
                                         TokenCase{"DoubleQuoteInString", "'a\"b'", "s<a\"b>"},
                                         TokenCase{"Path", "'out/my model.xml'",
                                                   "s<out/my model.xml>"},
                                         TokenCase{"CommentSignInString", "'a#b'", "s<a#b>"}),
                         CaseName<TokenCase>);

INSTANTIATE_TEST_SUITE_P(
    Operators, CommandTokensTable,
    testing::Values(TokenCase{"All", "= / - * , ( ) : ..",
                              "o<=> o</> o<-> o<*> o<,> o<(> o<)> o<:> o<..>"},
                    TokenCase{"WithoutBlanks", "A=(b,c)", "n<A> o<=> o<(> n<b> o<,> n<c> o<)>"},
                    TokenCase{"RangeOfNames", "a..b", "n<a> o<..> n<b>"},
                    TokenCase{"RangeOfNamesWithPeriods", "x.1..x.9", "n<x.1> o<..> n<x.9>"},
                    TokenCase{"RangeWithBlanks", "a .. b", "n<a> o<..> n<b>"},
                    TokenCase{"RangeOfQuotedNames", "\"a b\"..\"c d\"", "q<a b> o<..> q<c d>"},
                    TokenCase{"RangeOfNumbers", "1..5", "d<1> o<..> d<5>"},
                    TokenCase{"Pattern", "stem*", "n<stem> o<*>"},
                    TokenCase{"Qualifier", "y(MLEVEL=S)", "n<y> o<(> n<MLEVEL> o<=> n<S> o<)>"},
                    TokenCase{"MinusBehindANameIsNoSign", "a-5", "n<a> o<-> d<5>"},
                    TokenCase{"MinusBehindAQuotedNameIsNoSign", "\"a\"-5", "q<a> o<-> d<5>"},
                    TokenCase{"MinusBehindANumberIsNoSign", "3-5", "d<3> o<-> d<5>"},
                    TokenCase{"TwoMinuses", "--5", "o<-> d<-5>"},
                    TokenCase{"ColonAndNumber", "root:5", "n<root> o<:> d<5>"}),
    CaseName<TokenCase>);

INSTANTIATE_TEST_SUITE_P(
    Blanks, CommandTokensTable,
    testing::Values(TokenCase{"Tabs", "\ta\tb\t", "n<a> n<b>"},
                    TokenCase{"Lines", "a\nb\r\nc\rd", "n<a> n<b> n<c> n<d>"},
                    TokenCase{"Comment", "a # b ' \" ; \n c", "n<a> n<c>"},
                    TokenCase{"CommentRightBehindAName", "a#b\nc", "n<a> n<c>"},
                    TokenCase{"CommentAtTheEnd", "a # b", "n<a>"},
                    TokenCase{"CommentInCommentStaysOne", "a # b # c\nd", "n<a> n<d>"},
                    TokenCase{"NoBreakSpace", "a\u00A0b", "n<a> n<b>"},
                    TokenCase{"IdeographicSpace", "a\u3000b", "n<a> n<b>"},
                    TokenCase{"Nothing", "", ""}),
    CaseName<TokenCase>);

struct NumberCase {
    const char* fName;
    const char* fText;
    double fNumber;
};

std::ostream& operator<<(std::ostream& out, const NumberCase& numberCase) {
    return out << numberCase.fText;
}

class CommandNumbers : public testing::TestWithParam<NumberCase> {};

TEST_P(CommandNumbers, ReadsTheNumberAndKeepsItsText) {
    const CommandScript script = Read(std::string("SELECTPRED ") + GetParam().fText);
    ASSERT_FALSE(script.fFault) << script.fFault->Lines();
    ASSERT_EQ(script.fvCommands[0].Tokens().size(), 1u);
    const TokenInfoObj& token = script.fvCommands[0].Tokens()[0];
    EXPECT_TRUE(token.IsNumber());
    EXPECT_EQ(token.getNumeric(), GetParam().fNumber);
    EXPECT_EQ(token.getString(), GetParam().fText);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, CommandNumbers,
    testing::Values(NumberCase{"Integer", "42", 42}, NumberCase{"Zero", "0", 0},
                    NumberCase{"LeadingZeros", "007", 7}, NumberCase{"Decimals", "0.05", 0.05},
                    NumberCase{"NoDigitBeforeThePeriod", ".5", 0.5},
                    NumberCase{"NoDigitBehindThePeriod", "5.", 5},
                    NumberCase{"Negative", "-3.5", -3.5}, NumberCase{"Plus", "+3.5", 3.5},
                    NumberCase{"NegativePeriod", "-.5", -0.5}, NumberCase{"Exponent", "1e3", 1000},
                    NumberCase{"UpperExponent", "1E3", 1000},
                    NumberCase{"NegativeExponent", "2.5e-3", 0.0025},
                    NumberCase{"PlusExponent", "1e+2", 100},
                    NumberCase{"SeventeenDigits", "0.10000000000000001", 0.1},
                    NumberCase{"Largest", "1.7976931348623157e308", 1.7976931348623157e308}),
    CaseName<NumberCase>);

TEST(CommandTokens, OperatorsCarryTheHostsCodes) {
    const CommandScript script = Read("SELECTPRED = / - * , ( ) : ..");
    std::vector<std::int32_t> codes;
    for (const TokenInfoObj& token : script.fvCommands[0].Tokens())
        codes.push_back(token.getOperatorCode());
    EXPECT_EQ(codes, (std::vector<std::int32_t>{3, 5, 7, 9, 11, 13, 14, 16, 18}));
}

TEST(CommandTokens, TokenKindsAnswerWhatTheyAre) {
    const CommandScript script = Read("SELECTPRED a \"b\" 'c' 5 =");
    const TokenList& tokens = script.fvCommands[0].Tokens();
    EXPECT_TRUE(tokens[0].IsVarName() && tokens[0].IsString() && !tokens[0].IsQuoted());
    EXPECT_TRUE(tokens[1].IsVarName() && tokens[1].IsString() && tokens[1].IsQuoted());
    EXPECT_TRUE(!tokens[2].IsVarName() && tokens[2].IsString() && !tokens[2].IsQuoted());
    EXPECT_TRUE(!tokens[3].IsVarName() && !tokens[3].IsString() && tokens[3].IsNumber());
    EXPECT_TRUE(!tokens[4].IsVarName() && !tokens[4].IsString() && !tokens[4].IsNumber());
    EXPECT_EQ(tokens[0].getOperatorCode(), kOpNone);
    EXPECT_EQ(tokens[0].getNumeric(), 0);
    EXPECT_EQ(tokens[0].getUpperString(), "A");
    EXPECT_EQ(tokens[1].getVarName(), KoltVarName("b"));
}

TEST(CommandTokens, PlacesCountLinesAndCharacters) {
    const CommandScript script = Read("SELECTPRED\r\n\tGröße\tx\r\n 年齢 z");
    const TokenList& tokens = script.fvCommands[0].Tokens();
    const auto place = [&tokens](std::size_t i) {
        return std::pair(tokens[i].Line(), tokens[i].Column());
    };
    EXPECT_EQ(place(0), std::pair(2, 2));
    EXPECT_EQ(place(1), std::pair(2, 8));
    EXPECT_EQ(place(2), std::pair(3, 2));
    EXPECT_EQ(place(3), std::pair(3, 5));
}

TEST(CommandTokens, ByteOrderMarkIsNoCharacter) {
    const CommandScript script = Read("\xEF\xBB\xBFSELECTPRED y");
    ASSERT_EQ(script.fvCommands.size(), 1u);
    EXPECT_EQ(script.fvCommands[0].NameToken().Column(), 1);
}

TEST(CommandTokens, SeveralCommandsInOneText) {
    const CommandScript script =
        Read("# both\nselectpred y BY a ; ; NaiveBayes y;\nSELECTPRED z # last\n\n");
    ASSERT_EQ(script.fvCommands.size(), 3u);
    EXPECT_EQ(script.fvCommands[0].Name(), "SELECTPRED");
    EXPECT_EQ(script.fvCommands[0].Text(), "selectpred y BY a");
    EXPECT_EQ(script.fvCommands[1].Name(), "NAIVEBAYES");
    EXPECT_EQ(script.fvCommands[1].Text(), "NaiveBayes y");
    EXPECT_EQ(script.fvCommands[2].Text(), "SELECTPRED z");
    EXPECT_EQ(script.fvCommands[2].Source().Name(), "test.pred");
}

TEST(CommandTokens, TextIsTheCommandAsItWasWritten) {
    const CommandScript script = Read("SELECTPRED  y\n  BY a # why\n  'x' ;");
    EXPECT_EQ(script.fvCommands[0].Text(), "SELECTPRED  y\n  BY a # why\n  'x'");
}

TEST(CommandTokens, EndStandsAtTheSemicolonOrBehindTheLastToken) {
    const CommandScript script = Read("SELECTPRED y  ;\nSELECTPRED \"ab\"   # x\n\n");
    const TokenInfoObj& first = script.fvCommands[0].EndToken();
    EXPECT_EQ(first.getString(), ";");
    EXPECT_EQ(std::pair(first.Line(), first.Column()), std::pair(1, 15));
    const TokenInfoObj& second = script.fvCommands[1].EndToken();
    EXPECT_EQ(second.getString(), "");
    EXPECT_EQ(std::pair(second.Line(), second.Column()), std::pair(2, 16));
}

struct FaultCase {
    const char* fName;
    std::string fText;
    const char* fKey;
    TextPlace fPlace;
};

std::ostream& operator<<(std::ostream& out, const FaultCase& faultCase) {
    return out << faultCase.fText;
}

class CommandTextFaults : public testing::TestWithParam<FaultCase> {};

TEST_P(CommandTextFaults, IsRefusedAtItsPlace) {
    const CommandScript script = Read(GetParam().fText);
    ASSERT_TRUE(script.fFault);
    EXPECT_TRUE(script.fvCommands.empty());
    EXPECT_EQ(script.fFault->fKey, GetParam().fKey) << script.fFault->Lines();
    EXPECT_EQ(script.fFault->fPlace, GetParam().fPlace) << script.fFault->Lines();
    EXPECT_FALSE(script.fFault->fExcerpt.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, CommandTextFaults,
    testing::Values(
        FaultCase{"Empty", "", "No command in text ^1...", {1, 1}},
        FaultCase{"OnlyComments", "# a\n;;\n", "No command in text ^1...", {1, 1}},
        FaultCase{"UnknownCommand", "SELECTPRE y", "Unknown command ^1 ^2...", {1, 1}},
        FaultCase{
            "UnknownSecondCommand", "SELECTPRED y;\n Foo z", "Unknown command ^1 ^2...", {2, 2}},
        FaultCase{"NumberAsCommand", "5", "Command name expected ^1, found ^2...", {1, 1}},
        FaultCase{
            "QuotedCommand", "\"SELECTPRED\" y", "Command name expected ^1, found ^2...", {1, 1}},
        FaultCase{
            "OpenDoubleQuote", "SELECTPRED y BY \"a b", "Double quote not closed...", {1, 17}},
        FaultCase{"OpenDoubleQuoteAmongOthers",
                  "SELECTPRED y BY \"a\n WITH \"b\"",
                  "Double quote not closed...",
                  {1, 17}},
        FaultCase{"OpenSingleQuote", "SELECTPRED y 'a\n b'", "Single quote not closed...", {1, 14}},
        FaultCase{
            "OpenSingleQuoteAtTheEnd", "SELECTPRED y '", "Single quote not closed...", {1, 14}},
        FaultCase{"EmptyName", "SELECTPRED \"\"", "Empty name in quotes...", {1, 12}},
        FaultCase{"TwoPeriodsInNumber", "SELECTPRED 1.2.3", "Not a number ^1...", {1, 12}},
        FaultCase{
            "DigitsAndLetters", "SELECTPRED y BY 1st", "Neither number nor name ^1...", {1, 17}},
        FaultCase{
            "ExponentWithoutDigits", "SELECTPRED 1e+", "Neither number nor name ^1...", {1, 12}},
        FaultCase{"Hexadecimal", "SELECTPRED 0x1F", "Neither number nor name ^1...", {1, 12}},
        FaultCase{"NumberTooLarge", "SELECTPRED 1e999", "Number ^1 out of range...", {1, 12}},
        FaultCase{"IllegalCharacter", "SELECTPRED y BY a%b", "Illegal character ^1...", {1, 18}},
        FaultCase{"PlusAlone", "SELECTPRED y + a", "Illegal character ^1...", {1, 14}},
        FaultCase{"PeriodAlone", "SELECTPRED y . a", "Illegal character ^1...", {1, 14}},
        FaultCase{"NameEndsWithPeriod", "SELECTPRED Approx. a", "Illegal character ^1...", {1, 18}},
        FaultCase{
            "NameEndsWithPeriodAtTheEnd", "SELECTPRED Approx.", "Illegal character ^1...", {1, 18}},
        FaultCase{"ThreePeriods", "SELECTPRED a...b", "Illegal character ^1...", {1, 15}},
        FaultCase{"Dash", "SELECTPRED a\u2013b", "Illegal character ^1...", {1, 13}},
        FaultCase{"Ellipsis", "SELECTPRED a\u2026b", "Illegal character ^1...", {1, 13}},
        FaultCase{"ZeroWidthSpace", "SELECTPRED a\u200Bb", "Illegal character ^1...", {1, 13}},
        FaultCase{"ByteOrderMarkInside", "SELECTPRED \uFEFFa", "Illegal character ^1...", {1, 12}},
        FaultCase{"ControlCharacter", "SELECTPRED a\x1b[31m", "Illegal character ^1...", {1, 13}},
        FaultCase{
            "TypographicQuotes", "SELECTPRED \u201Ca\u201D", "Typographic quote ^1...", {1, 12}},
        FaultCase{"Backtick", "SELECTPRED `a`", "Typographic quote ^1...", {1, 12}},
        FaultCase{"BadUtf8", "SELECTPRED a\xFF", "Byte is not UTF-8...", {1, 13}},
        FaultCase{"OverlongUtf8", "SELECTPRED \xC0\xAF", "Byte is not UTF-8...", {1, 12}},
        FaultCase{"SurrogateInUtf8", "SELECTPRED \xED\xA0\x80", "Byte is not UTF-8...", {1, 12}},
        FaultCase{"CutOffUtf8", "SELECTPRED \xE5\xB9", "Byte is not UTF-8...", {1, 12}},
        FaultCase{"BadUtf8InQuotes", "SELECTPRED \"a\xFF\"", "Byte is not UTF-8...", {1, 14}},
        FaultCase{"BadUtf8InAComment", "SELECTPRED # \xFF\n y", "Byte is not UTF-8...", {1, 14}},
        FaultCase{"BadUtf8InANumber", "SELECTPRED 12\xFF", "Byte is not UTF-8...", {1, 14}},
        FaultCase{"BadUtf8BehindAPeriod", "SELECTPRED a.\xFF", "Illegal character ^1...", {1, 13}},
        FaultCase{
            "ZeroByte", std::string("SELECTPRED y\0 BY", 16), "Zero byte in command...", {1, 13}},
        FaultCase{"ZeroByteFirst", std::string("\0", 1), "Zero byte in command...", {1, 1}},
        FaultCase{"ZeroByteInQuotes",
                  std::string("SELECTPRED \"a\0\"", 15),
                  "Zero byte in command...",
                  {1, 14}}),
    CaseName<FaultCase>);

TEST(CommandTokens, FaultShowsFileLineColumnAndCaret) {
    const CommandScript script = Read("# screening\nSELECTPRED Größe BY a%\n");
    ASSERT_TRUE(script.fFault);
    EXPECT_EQ(script.fFault->Lines(),
              "test.pred:2:22: The character % (U+0025) has no meaning here; a name that holds it "
              "stands in double quotes.\n"
              "SELECTPRED Größe BY a%\n"
              "                     ^");
}

TEST(CommandTokens, UnknownCommandOffersTheNearest) {
    EXPECT_EQ(Read("SELECTPERD y").fFault->fText,
              "test.pred:1:1: There is no command SELECTPERD; did you mean SELECTPRED?");
    EXPECT_EQ(Read("TABULATE y").fFault->fText,
              "test.pred:1:1: There is no command TABULATE; expected SELECTPRED or NAIVEBAYES.");
}

TEST(CommandTokens, AHundredThousandTokensTakeWellUnderASecond) {
    std::string text = "SELECTPRED y BY";
    for (int i = 0; i < 100000; ++i)
        text += i % 100 == 0 ? "\nvariable_1" : " x" + std::to_string(i);
    const auto start = std::chrono::steady_clock::now();
    const CommandScript script = Read(text);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    ASSERT_EQ(script.fvCommands.size(), 1u);
    EXPECT_EQ(script.fvCommands[0].Tokens().size(), 100002u);
    EXPECT_LT(seconds.count(), 1.0);
}

TEST(CommandTokens, DeepParenthesesAreTokensLikeOthers) {
    const CommandScript script = Read("SELECTPRED y " + std::string(200000, '('));
    EXPECT_EQ(script.fvCommands.at(0).Tokens().size(), 200001u);
}

TEST(CommandTokens, NamesOfAThousandCharacters) {
    const std::string name(1000, 'n');
    const CommandScript script = Read("SELECTPRED " + name + " \"" + name + " x\"");
    EXPECT_EQ(script.fvCommands.at(0).Tokens()[0].getString(), name);
    EXPECT_EQ(script.fvCommands.at(0).Tokens()[1].getString(), name + " x");
}

struct WrittenCase {
    const char* fName;
    std::string fText;
    std::string fWritten;
};

std::ostream& operator<<(std::ostream& out, const WrittenCase& writtenCase) {
    return out << writtenCase.fText;
}

class WrittenNames : public testing::TestWithParam<WrittenCase> {};

TEST_P(WrittenNames, ReadBackAsTheSameName) {
    const std::string written = WrittenName(GetParam().fText);
    EXPECT_EQ(written, GetParam().fWritten);
    const CommandScript script = Read("SELECTPRED " + written);
    ASSERT_FALSE(script.fFault) << script.fFault->Lines();
    ASSERT_EQ(script.fvCommands[0].Tokens().size(), 1u);
    EXPECT_TRUE(script.fvCommands[0].Tokens()[0].IsVarName());
    EXPECT_EQ(script.fvCommands[0].Tokens()[0].getString(), GetParam().fText);
}

INSTANTIATE_TEST_SUITE_P(
    Names, WrittenNames,
    testing::Values(
        WrittenCase{"Plain", "age", "age"}, WrittenCase{"Period", "Sepal.Length", "Sepal.Length"},
        WrittenCase{"NonAscii", "Größe", "Größe"},
        WrittenCase{"Blank", "age group", "\"age group\""},
        WrittenCase{"Quote", "a\"b", "\"a\"\"b\""}, WrittenCase{"Hyphen", "a-b", "\"a-b\""},
        WrittenCase{"LeadingDigit", "1st", "\"1st\""}, WrittenCase{"Number", "2019", "\"2019\""},
        WrittenCase{"TrailingPeriod", "Approx.", "\"Approx.\""},
        WrittenCase{"LeadingPeriod", ".x", "\".x\""}, WrittenCase{"TwoPeriods", "a..b", "\"a..b\""},
        WrittenCase{"WordAll", "all", "\"all\""}, WrittenCase{"WordBy", "By", "\"By\""},
        WrittenCase{"WordWith", "WITH", "\"WITH\""}, WrittenCase{"LineBreak", "a\nb", "\"a\nb\""},
        WrittenCase{"NoBreakSpace", "a\u00A0b", "\"a\u00A0b\""}),
    CaseName<WrittenCase>);

TEST(WrittenString, ReadsBackAsTheSameText) {
    for (const std::string text : {"out.xml", "it's", "a \"b\"", "", "C:\\x\\y"}) {
        const CommandScript script = Read("SELECTPRED " + WrittenString(text));
        ASSERT_FALSE(script.fFault) << script.fFault->Lines();
        EXPECT_EQ(Spelled(script.fvCommands[0].Tokens()), "s<" + text + ">");
    }
}

}  // namespace
}  // namespace embedded
