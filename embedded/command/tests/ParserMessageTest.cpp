#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <string>

#include "embedded/command/CommandPlaces.h"
#include "embedded/command/MessageParts.h"
#include "embedded/command/tests/CommandRun.h"

namespace embedded {
namespace {

constexpr const char* kCommand =
    "NAIVEBAYES y (MLEVEL=S) BY a\n"
    "/TRAININGSAMPLE PERCENT=70 VARIABLE=t\n"
    "/SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA) EXACTSIZE=0\n"
    "/SAVE PREDPROB=(p:0)\n"
    "/PRINT NONE CPS";

struct MessageCase {
    const char* fName;
    std::function<void(const ParserMessage&)> fSend;
    const char* fText;   // first line
    const char* fCaret;  // what the caret stands under
};

std::ostream& operator<<(std::ostream& out, const MessageCase& messageCase) {
    return out << messageCase.fName;
}

std::string CaseName(const testing::TestParamInfo<MessageCase>& info) { return info.param.fName; }

class Messages : public testing::TestWithParam<MessageCase> {};

TEST_P(Messages, AreErrorsAtTheirPlace) {
    const CommandRun run(kCommand);
    ParserMessage message;
    message.SetCommandName("NAIVEBAYES");
    GetParam().fSend(message);
    ASSERT_EQ(run.Messages().size(), 1u);
    EXPECT_TRUE(run.HasError());
    EXPECT_TRUE(run.Messages().front().fbCommandLanguage);
    EXPECT_EQ(run.Messages().front().fLevel, MessageLevel::Error);

    const std::string text = run.Message();
    const std::size_t first = text.find('\n'), second = text.find('\n', first + 1);
    EXPECT_EQ(text.substr(0, first), GetParam().fText);
    const std::string line = text.substr(first + 1, second - first - 1);
    const std::size_t caret = text.find('^', second) - second - 1;
    EXPECT_TRUE(line.substr(caret).starts_with(GetParam().fCaret)) << text;
}

INSTANTIATE_TEST_SUITE_P(
    All, Messages,
    testing::Values(
        MessageCase{"ParamExclusive",
                    [](const ParserMessage& m) {
                        m.ParamExclusive("PERCENT", "VARIABLE", "TRAININGSAMPLE");
                    },
                    "test.pred:2:28: TRAININGSAMPLE takes either PERCENT or VARIABLE, not both.",
                    "VARIABLE=t"},
        MessageCase{
            "InvalidParamWithWeight",
            [](const ParserMessage& m) { m.InvalidParamWithWeight("PERCENT", "TRAININGSAMPLE"); },
            "test.pred:2:17: TRAININGSAMPLE PERCENT cannot be used while the data have a weight "
            "variable; expected TRAININGSAMPLE VARIABLE in its place.",
            "PERCENT=70"},
        MessageCase{"NeedDepVarCat", [](const ParserMessage& m) { m.NeedDepVarCat("y", "", ""); },
                    "test.pred:1:12: The target y is a scale variable, but NAIVEBAYES needs a "
                    "nominal or ordinal one.",
                    "y (MLEVEL"},
        MessageCase{
            "VariableNoQualif", [](const ParserMessage& m) { m.VariableNoQualif("y", "", ""); },
            "test.pred:1:12: The target y takes no qualifier in parentheses in this command.",
            "y (MLEVEL"},
        MessageCase{"VariableInvalidQualif",
                    [](const ParserMessage& m) { m.VariableInvalidQualif("y", "", ""); },
                    "test.pred:1:12: The qualifier of y is not valid; expected MLEVEL=N, MLEVEL=O, "
                    "MLEVEL=F or MLEVEL=T for categorical, MLEVEL=S for scale.",
                    "y (MLEVEL"},
        MessageCase{"ParamExclAnyOther",
                    [](const ParserMessage& m) { m.ParamExclAnyOther("NONE", "PRINT"); },
                    "test.pred:5:8: NONE cannot stand beside other keywords of PRINT; expected it "
                    "alone or left out.",
                    "NONE CPS"},
        MessageCase{"InvalidParam",
                    [](const ParserMessage& m) { m.InvalidParam("bestsubset", "SUBSET"); },
                    "test.pred:3:22: SUBSET has no qualifier bestsubset; expected BESTSUBSET.",
                    "BESTSUBSET="},
        MessageCase{
            "InvalidParamOptionOfMaxSize",
            [](const ParserMessage& m) { m.InvalidParamOption("AUTO", "MAXSIZE", "SUBSET"); },
            "test.pred:3:17: SUBSET MAXSIZE does not know AUTO; expected an integer or AUTO, "
            "either alone or before (BESTSUBSET=PSEUDOBIC) or (BESTSUBSET=TESTDATA).",
            "AUTO("},
        MessageCase{"InvalidParamOptionOfBestSubset",
                    [](const ParserMessage& m) {
                        m.InvalidParamOption("TESTDATA", "BESTSUBSET", "SUBSET");
                    },
                    "test.pred:3:33: SUBSET BESTSUBSET does not know TESTDATA; expected PSEUDOBIC "
                    "or TESTDATA.",
                    "TESTDATA)"},
        MessageCase{"WrongValueTypeOfMaxSize",
                    [](const ParserMessage& m) { m.WrongValueType("MAXSIZE", "SUBSET"); },
                    "test.pred:3:9: The value of SUBSET MAXSIZE is not in a form that it can have; "
                    "expected an integer or AUTO, either alone or before (BESTSUBSET=PSEUDOBIC) or "
                    "(BESTSUBSET=TESTDATA).",
                    "MAXSIZE="},
        MessageCase{"WrongValueTypeOfPredProb",
                    [](const ParserMessage& m) { m.WrongValueType("PREDPROB", "SAVE"); },
                    "test.pred:4:7: The value of SAVE PREDPROB is not in a form that it can have; "
                    "expected ROOT, ROOT:COUNT or :COUNT.",
                    "PREDPROB="},
        MessageCase{"ParamValueBreakBdry",
                    [](const ParserMessage& m) {
                        m.ParamValueBreakBdry(0, 0.0, 2, 0.0, 0, "EXACTSIZE", "SUBSET");
                    },
                    "test.pred:3:53: SUBSET EXACTSIZE expects a number above 0, found 0.", "0"},
        MessageCase{"NeedSubComForParam",
                    [](const ParserMessage& m) {
                        m.NeedSubComForParam("TRAININGSAMPLE", "SUBSET BESTSUBSET", "TESTDATA");
                    },
                    "test.pred:3:33: TESTDATA of SUBSET BESTSUBSET needs the subcommand "
                    "TRAININGSAMPLE, which is not there.",
                    "TESTDATA)"},
        MessageCase{"InvalidVarName",
                    [](const ParserMessage& m) { m.InvalidVarName("p", "PREDPROB", "SAVE"); },
                    "test.pred:4:17: SAVE PREDPROB expects a variable name, found p.", "p:0"},
        MessageCase{"ParamNeedInteger",
                    [](const ParserMessage& m) { m.ParamNeedInteger("PREDPROB p", "SAVE"); },
                    "test.pred:4:7: SAVE PREDPROB p expects an integer above 0 behind the colon.",
                    "PREDPROB="}),
    CaseName);

TEST(ParserMessage, DisableSplitIsAWarning) {
    const CommandRun run(kCommand);
    ParserMessage message;
    message.SetCommandName("SELECTPRED");
    message.DisableSplit();
    ASSERT_EQ(run.Messages().size(), 1u);
    EXPECT_EQ(run.Messages().front().fLevel, MessageLevel::Warning);
    EXPECT_EQ(run.Message(),
              "SELECTPRED ignores the split variables and analyses all cases together.");
    EXPECT_FALSE(run.Messages().front().fbCommandLanguage);
    EXPECT_FALSE(run.HasError());
}

TEST(ParserMessage, NoTableRequestedIsAWarning) {
    const CommandRun run(kCommand);
    ParserMessage message;
    message.SetCommandName("SELECTPRED");
    message.NoTableRequested();
    ASSERT_EQ(run.Messages().size(), 1u);
    EXPECT_EQ(run.Messages().front().fLevel, MessageLevel::Warning);
    EXPECT_EQ(run.Message(), "SELECTPRED shows no table: PRINT asks for none.");
    EXPECT_FALSE(run.HasError());
}

TEST(ParserMessage, TranslatedTextFillsItsPlaceholders) {
    EXPECT_EQ(ParserMessage().GetTranslatedText("Subcommand ^1 missing in ^2...", {"A", "B"}),
              "B needs the subcommand A, which is not there.");
    EXPECT_EQ(ParserMessage().GetTranslatedText("no such key ^1", {"x"}), "no such key x");
}

TEST(FindPlace, FallsBackOnWhatThereIs) {
    const CommandRun run(kCommand);
    const auto place = [&run](const char* subcommand, const char* parameter, const char* text) {
        return FindPlace(run.Command(), subcommand, parameter, text);
    };
    EXPECT_EQ(place("SUBSET", "MAXSIZE", "TESTDATA"), (TextPlace{3, 33}));
    EXPECT_EQ(place("SUBSET", "MAXSIZE", "elsewhere"), (TextPlace{3, 9}));
    EXPECT_EQ(place("SUBSET", "PERCENT", ""), (TextPlace{3, 2}));  // of another subcommand
    EXPECT_EQ(place("NONE", "", ""), (TextPlace{1, 1}));           // no subcommand of that name
    EXPECT_EQ(place("", "", "a"), (TextPlace{1, 28}));
    EXPECT_EQ(place("", "", "CPS"), (TextPlace{1, 1}));
}

TEST(BoundsText, SaysBothBoundsOrOne) {
    EXPECT_EQ(BoundsText(0, kBdryExcluded, 100, kBdryIncluded), "above 0 and at most 100");
    EXPECT_EQ(BoundsText(4, kBdryIncluded, 0, 0), "at least 4");
    EXPECT_EQ(BoundsText(0, 0, 0.05, kBdryExcluded), "below 0.05");
    EXPECT_EQ(BoundsText(0, 0, 0, 0), "");
}

}  // namespace
}  // namespace embedded
