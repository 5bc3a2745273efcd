#include "backend/predselect/PRSMessage.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "backend/predselect/tests/ParseFixture.h"
#include "host/HostGlobals.h"
#include "host/Output.h"

namespace {

using embedded::MessageLevel;
using embedded::ReportMessage;

/// The messages that the call sends to the host, within a session of a command that said nothing.
std::vector<ReportMessage> MessagesOf(const std::function<void(const PRSMessage&)>& call,
                                      bool* errorWord = nullptr) {
    ParsedCommand command("SELECTPRED y");
    EXPECT_TRUE(command.SaidNothing());
    call(PRSMessage());
    if (errorWord != nullptr) {
        *errorWord = command.ErrorWord();
    }
    return command.Messages();
}

struct MessageCase {
    const char* fName;
    const char* fKey;
    MessageLevel fLevel;
    std::function<void(const PRSMessage&)> fCall;
    std::vector<std::string> fvWords;  // arguments that the text shows
};

void PrintTo(const MessageCase& message, std::ostream* out) { *out << message.fName; }

class PRSMessageTable : public testing::TestWithParam<MessageCase> {};

}  // namespace

TEST_P(PRSMessageTable, SendsItsKeyAtItsLevel) {
    bool errorWord = false;
    const std::vector<ReportMessage> said = MessagesOf(GetParam().fCall, &errorWord);
    ASSERT_EQ(said.size(), 1u);
    EXPECT_EQ(said[0].fKey, GetParam().fKey);
    EXPECT_EQ(said[0].fLevel, GetParam().fLevel);
    EXPECT_EQ(errorWord, GetParam().fLevel == MessageLevel::Error);
    EXPECT_FALSE(said[0].fText.ends_with("...")) << "the key is shown: " << said[0].fText;
    for (const std::string& word : GetParam().fvWords) {
        EXPECT_NE(said[0].fText.find(word), std::string::npos) << said[0].fText;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Operations, PRSMessageTable,
    testing::Values(
        MessageCase{"AllPossiblePredsExcluded",
                    "All possible predictors excluded...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) { m.AllPossiblePredsExcluded(); },
                    {}},
        MessageCase{"AllPredsMissingOrConstant",
                    "All predictors missing or constant...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) { m.AllPredsMissingOrConstant(); },
                    {}},
        MessageCase{"DepVarConstant",
                    "Dependent variable constant...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) { m.DepVarConstant(); },
                    {}},
        MessageCase{"OnlyDepVarInData",
                    "Only dependent variable in data...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) { m.OnlyDepVarInData(); },
                    {}},
        MessageCase{"MixedRankCriterionIgnored",
                    "Mixed rank criterion ^1 in parameter ^2 is ignored, subcommand ^3...",
                    MessageLevel::Warning,
                    [](const PRSMessage& m) {
                        m.RankCriterionIgnored("LRCHISQ", "SUMMARY", "PRINT", true);
                    },
                    {"LRCHISQ", "SUMMARY", "PRINT"}},
        MessageCase{"CategoricalRankCriterionIgnored",
                    "Categorical rank criterion ^1 in parameter ^2 is ignored, subcommand ^3...",
                    MessageLevel::Warning,
                    [](const PRSMessage& m) {
                        m.RankCriterionIgnored("LAMBDA", "SUMMARY", "PRINT", false);
                    },
                    {"LAMBDA", "SUMMARY", "PRINT"}},
        MessageCase{"NoPossiblePreds",
                    "No possible predictors available in data...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) { m.NoPossiblePreds(); },
                    {}},
        MessageCase{"NoPredsAvailable",
                    "No predictors available in data...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) { m.NoPredsAvailable(); },
                    {}},
        MessageCase{"NoPredsExcluded",
                    "No predictors excluded ...",
                    MessageLevel::Warning,
                    [](const PRSMessage& m) { m.NoPredsExcluded(); },
                    {}},
        MessageCase{"NoUniquePredsSelected",
                    "No unique predictors were selected...",
                    MessageLevel::Warning,
                    [](const PRSMessage& m) { m.NoUniquePredsSelected(); },
                    {}},
        MessageCase{"NoValidTestCases",
                    "No valid test cases for classification...",
                    MessageLevel::Warning,
                    [](const PRSMessage& m) { m.NoValidTestCases(); },
                    {}},
        MessageCase{"BelowPossiblePreds",
                    "Parameter ^1 less than number of possible predictors in ^3, not subcommand "
                    "^2...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) {
                        m.ParamBelowPossiblePreds("EXACTSIZE", "FORCE", "NAIVEBAYES", true);
                    },
                    {"EXACTSIZE", "FORCE", "NAIVEBAYES"}},
        MessageCase{"AtMostPossiblePreds",
                    "Parameter ^1 less than or equal to number of possible predictors in ^3, not "
                    "^2...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) {
                        m.ParamBelowPossiblePreds("MAXSIZE", "FORCE", "NAIVEBAYES", false);
                    },
                    {"MAXSIZE", "FORCE", "NAIVEBAYES"}},
        MessageCase{
            "BelowUniquePreds",
            "Parameter ^1 less than number of unique predictors in ^2...",
            MessageLevel::Error,
            [](const PRSMessage& m) { m.ParamBelowUniquePreds("SIZE", "SELECTPRED", true); },
            {"SIZE", "SELECTPRED"}},
        MessageCase{
            "AtMostUniquePreds",
            "Parameter ^1 less than or equal to number of unique predictors in ^2...",
            MessageLevel::Error,
            [](const PRSMessage& m) { m.ParamBelowUniquePreds("SIZE", "SELECTPRED", false); },
            {"SIZE", "SELECTPRED"}},
        MessageCase{"SomeForcedExcluded",
                    "Some forced predictors excluded...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) { m.SomeForcedExcluded(); },
                    {}},
        MessageCase{"TooFewForExactSize",
                    "Too few possible predictors, exact size...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) { m.TooFewForExactSize(); },
                    {}},
        MessageCase{"TooFewForMaxSize",
                    "Too few possible predictors, maximum size...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) { m.TooFewForMaxSize(); },
                    {}},
        MessageCase{"TrainVarOnPredList",
                    "Train Samp var ^1 on pred var list ...",
                    MessageLevel::Error,
                    [](const PRSMessage& m) { m.TrainVarOnPredList("half"); },
                    {"half"}}),
    [](const auto& one) { return std::string(one.param.fName); });

TEST(PRSMessage, OneArgumentFillsTheKeyAsAPlainText) {
    const auto said = MessagesOf([](const PRSMessage& m) { m.TrainVarOnPredList("half"); });
    ASSERT_EQ(said.size(), 1u);
    EXPECT_EQ(said[0].fText,
              "Variable half defines the training sample and cannot be a predictor as well.");
}

TEST(PRSMessage, ArgumentsAreNotTranslated) {
    // "Dependent Variable ^1" is a key with another English text.
    const auto said =
        MessagesOf([](const PRSMessage& m) { m.TrainVarOnPredList("Dependent Variable ^1"); });
    ASSERT_EQ(said.size(), 1u);
    EXPECT_NE(said[0].fText.find("Variable Dependent Variable ^1 defines"), std::string::npos)
        << said[0].fText;
}

TEST(PRSMessage, PossiblePredictorsNameTheCommandBeforeTheSubcommand) {
    const auto said = MessagesOf(
        [](const PRSMessage& m) { m.ParamBelowPossiblePreds("P", "SUB", "COMMAND", true); });
    ASSERT_EQ(said.size(), 1u);
    EXPECT_LT(said[0].fText.find("COMMAND"), said[0].fText.find("SUB")) << said[0].fText;
}

TEST(PRSMessage, TheSameKeyMayComeByTwoRoutes) {
    const auto said = MessagesOf([](const PRSMessage& m) {
        m.DepVarConstant();
        BpError(BpString("Dependent variable constant...", true), kBpErrorShow, kBpError);
    });
    ASSERT_EQ(said.size(), 2u);
    EXPECT_EQ(said[0].fKey, said[1].fKey);
    EXPECT_EQ(said[0].fText, said[1].fText);
    EXPECT_EQ(said[0].fLevel, said[1].fLevel);
}

TEST(PRSMessage, NullKeySendsNothing) {
    bool errorWord = true;
    const auto said = MessagesOf(
        [](const PRSMessage&) {
            PRSMessage::Error(nullptr, "a", "b", "c");
            PRSMessage::Warning(nullptr);
        },
        &errorWord);
    EXPECT_TRUE(said.empty());
    EXPECT_FALSE(errorWord);
}

TEST(PRSMessage, ArgumentBehindAMissingOneIsNotUsed) {
    constexpr const char* kKey =
        "Mixed rank criterion ^1 in parameter ^2 is ignored, subcommand ^3...";
    const auto said = MessagesOf([](const PRSMessage&) {
        PRSMessage::Warning(kKey, "FIRST", nullptr, "THIRD");
        PRSMessage::Warning(kKey, nullptr, "SECOND", "THIRD");
    });
    ASSERT_EQ(said.size(), 2u);
    EXPECT_NE(said[0].fText.find("FIRST"), std::string::npos);
    EXPECT_EQ(said[0].fText.find("THIRD"), std::string::npos);
    EXPECT_EQ(said[1].fText.find("SECOND"), std::string::npos);
    EXPECT_EQ(said[1].fText.find("THIRD"), std::string::npos);
}
