#include "backend/predselect/PRSParser.h"

#include <gtest/gtest.h>

#include <string>

#include "backend/predselect/tests/ParseFixture.h"
#include "host/HostGlobals.h"

// The form of both commands, the order of the handlers, and what surrounds them. The handlers
// themselves are tested in the files named after them.

namespace {

struct FormCase {
    const char* fSubCommands;
    bool fbAccepted;
};

void PrintTo(const FormCase& form, std::ostream* out) {
    *out << form.fSubCommands << (form.fbAccepted ? " passes" : " fails");
}

void ExpectForm(const std::string& variables, const FormCase& form) {
    ParsedCommand command(variables + ' ' + form.fSubCommands);
    EXPECT_EQ(command.Ok(), form.fbAccepted) << command.MessageTexts();
    EXPECT_EQ(command.ErrorWord(), !form.fbAccepted);
    if (!form.fbAccepted) {
        EXPECT_EQ(command.Messages().size(), 1u) << command.MessageTexts();
    }
}

class SelectPredForm : public testing::TestWithParam<FormCase> {};
class NaiveBayesForm : public testing::TestWithParam<FormCase> {};

}  // namespace

TEST_P(SelectPredForm, IsAcceptedOrRefused) {
    ExpectForm("SELECTPRED y BY f1 f2 f3 WITH c1 c2", GetParam());
}

TEST_P(NaiveBayesForm, IsAcceptedOrRefused) {
    ExpectForm("NAIVEBAYES y BY f1 f2 f3 WITH c1 c2", GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Bounds, SelectPredForm,
    testing::Values(
        FormCase{"", true},
        // both sides of every bound
        FormCase{"/SCREENING PCTMISSING=0", false}, FormCase{"/SCREENING PCTMISSING=0.001", true},
        FormCase{"/SCREENING PCTMISSING=100", true},
        FormCase{"/SCREENING PCTMISSING=100.001", false}, FormCase{"/SCREENING PCTEQUAL=0", false},
        FormCase{"/SCREENING PCTEQUAL=0.001", true}, FormCase{"/SCREENING PCTEQUAL=100", true},
        FormCase{"/SCREENING PCTEQUAL=150", true}, FormCase{"/SCREENING PCTUNEQUAL=0", false},
        FormCase{"/SCREENING PCTUNEQUAL=0.001", true}, FormCase{"/SCREENING PCTUNEQUAL=100", true},
        FormCase{"/SCREENING PCTUNEQUAL=100.001", false}, FormCase{"/SCREENING CV=-0.001", false},
        FormCase{"/SCREENING CV=0", true}, FormCase{"/SCREENING STDDEV=-0.001", false},
        FormCase{"/SCREENING STDDEV=0", true}, FormCase{"/CRITERIA TIMER=-0.001", false},
        FormCase{"/CRITERIA TIMER=0", true}, FormCase{"/CRITERIA SHOWUNSELECTED=-1", false},
        FormCase{"/CRITERIA SHOWUNSELECTED=0", true}, FormCase{"/CRITERIA SIZE=0", false},
        FormCase{"/CRITERIA SIZE=1", true}, FormCase{"/CRITERIA SIZE=AUTO", true},
        FormCase{"/CRITERIA PCUTOFF=0", false}, FormCase{"/CRITERIA PCUTOFF=0.001", true},
        FormCase{"/CRITERIA PCUTOFF=1", true}, FormCase{"/CRITERIA PCUTOFF=1.001", false}));

INSTANTIATE_TEST_SUITE_P(
    Words, SelectPredForm,
    testing::Values(
        FormCase{"/EXCEPT VARIABLES=f1", true}, FormCase{"/EXCEPT VARIABLES", false},
        FormCase{"/SCREENING STATUS=ON", true}, FormCase{"/SCREENING STATUS=off", true},
        FormCase{"/SCREENING STATUS=YES", false}, FormCase{"/SCREENING CV=high", false},
        FormCase{"/SCREENING CV", false}, FormCase{"/CRITERIA SIZE=1.5", false},
        FormCase{"/CRITERIA SIZE=ALL", false}, FormCase{"/CRITERIA SHOWUNSELECTED=0.5", false},
        FormCase{"/CRITERIA SHOWUNSELECTED=AUTO", false},
        FormCase{"/CRITERIA RANKING=PEARSONCHISQ", true},
        FormCase{"/CRITERIA RANKING=LRCHISQ", true}, FormCase{"/CRITERIA RANKING=CRAMERSV", true},
        FormCase{"/CRITERIA RANKING=LAMBDA", true}, FormCase{"/CRITERIA RANKING=GINI", false},
        FormCase{"/CRITERIA BINS=10", false}, FormCase{"/CRITERIA MEMALLOCATE=64", false},
        FormCase{"/MISSING USERMISSING=EXCLUDE", true},
        FormCase{"/MISSING USERMISSING=INCLUDE", true},
        FormCase{"/MISSING USERMISSING=KEEP", false},
        FormCase{"/PRINT CPS EXCLUDED SELECTED SUMMARY", true}, FormCase{"/PRINT NONE", true},
        FormCase{"/PRINT SUMMARY(PEARSONCHISQ LRCHISQ)", true},
        FormCase{"/PRINT SUMMARY(GINI)", false}, FormCase{"/PRINT CLASSIFICATION", false},
        FormCase{"/PRINT UNCERTAINTY", false}, FormCase{"/PLOT SUMMARY", true},
        FormCase{"/PLOT UNCERTAINTY", false}));

INSTANTIATE_TEST_SUITE_P(SubcommandsOfTheOther, SelectPredForm,
                         testing::Values(FormCase{"/SUBSET MAXSIZE=2", false},
                                         FormCase{"/SAVE PREDVAL", false},
                                         FormCase{"/FORCE FACTORS=(f1)", false},
                                         FormCase{"/TRAININGSAMPLE PERCENT=50", false},
                                         FormCase{"/OUTFILE MODEL='m.xml'", false},
                                         FormCase{"/MACROVAR FACTORS=f1 COVARIATES=c1", false}));

INSTANTIATE_TEST_SUITE_P(
    Bounds, NaiveBayesForm,
    testing::Values(FormCase{"", true}, FormCase{"/TRAININGSAMPLE PERCENT=0", false},
                    FormCase{"/TRAININGSAMPLE PERCENT=0.001", true},
                    FormCase{"/TRAININGSAMPLE PERCENT=99.999", true},
                    FormCase{"/TRAININGSAMPLE PERCENT=100", false},
                    FormCase{"/SUBSET EXACTSIZE=0", false}, FormCase{"/SUBSET EXACTSIZE=1", true},
                    FormCase{"/CRITERIA TIMER=-0.001", false}, FormCase{"/CRITERIA TIMER=0", true},
                    FormCase{"/CRITERIA BINS=1", false}, FormCase{"/CRITERIA BINS=2", true},
                    FormCase{"/CRITERIA MEMALLOCATE=3.999", false},
                    FormCase{"/CRITERIA MEMALLOCATE=4", true}));

INSTANTIATE_TEST_SUITE_P(
    Words, NaiveBayesForm,
    testing::Values(
        FormCase{"/EXCEPT VARIABLES=f1", true}, FormCase{"/FORCE FACTORS=(part)", true},
        FormCase{"/FORCE COVARIATES=(sy)", true},
        FormCase{"/FORCE FACTORS=(part) COVARIATES=(sy)", true},
        FormCase{"/TRAININGSAMPLE VARIABLE=part", true}, FormCase{"/SUBSET EXACTSIZE=1.5", false},
        FormCase{"/SUBSET EXACTSIZE=AUTO", false}, FormCase{"/SUBSET NOSELECTION", true},
        FormCase{"/SUBSET MAXSIZE", false}, FormCase{"/SAVE PREDVAL", true},
        FormCase{"/SAVE PREDVAL(p)", true}, FormCase{"/SAVE PREDPROB", true},
        FormCase{"/SAVE PREDVAL PREDPROB", true}, FormCase{"/OUTFILE MODEL='m.xml'", true},
        FormCase{"/CRITERIA BINS=2.5", false}, FormCase{"/CRITERIA SIZE=2", false},
        FormCase{"/CRITERIA RANKING=LRCHISQ", false}, FormCase{"/CRITERIA PCUTOFF=0.5", false},
        FormCase{"/CRITERIA SHOWUNSELECTED=5", false},
        FormCase{"/MISSING USERMISSING=INCLUDE", true},
        FormCase{"/PRINT CPS EXCLUDED SELECTED SUMMARY CLASSIFICATION", true},
        FormCase{"/PRINT SUMMARY(LRCHISQ)", false}, FormCase{"/PRINT UNCERTAINTY", false}));

INSTANTIATE_TEST_SUITE_P(SubcommandsOfTheOther, NaiveBayesForm,
                         testing::Values(FormCase{"/SCREENING STATUS=OFF", false},
                                         FormCase{"/PLOT SUMMARY", false},
                                         FormCase{"/PLOT UNCERTAINTY", false},
                                         FormCase{"/MACROVAR FACTORS=f1 COVARIATES=c1", false}));

// The host refuses a subcommand without any parameter; the handlers rely on it.
INSTANTIATE_TEST_SUITE_P(Empty, SelectPredForm,
                         testing::Values(FormCase{"/EXCEPT", false}, FormCase{"/SCREENING", false},
                                         FormCase{"/CRITERIA", false}, FormCase{"/MISSING", false},
                                         FormCase{"/PRINT", false}, FormCase{"/PLOT", false}));
INSTANTIATE_TEST_SUITE_P(Empty, NaiveBayesForm,
                         testing::Values(FormCase{"/FORCE", false},
                                         FormCase{"/TRAININGSAMPLE", false},
                                         FormCase{"/SUBSET", false}, FormCase{"/SAVE", false},
                                         FormCase{"/OUTFILE", false},
                                         FormCase{"/CRITERIA", false}));

TEST(PRSParser, CommandWithoutAVariableListIsRefused) {
    EXPECT_FALSE(ParsedCommand("SELECTPRED /PRINT NONE").Ok());
    EXPECT_FALSE(ParsedCommand("NAIVEBAYES /PRINT NONE").Ok());
    EXPECT_FALSE(ParsedCommand("SELECTPRED").Ok());
}

TEST(PRSParser, RefusedFormLeavesTheSpecsAlone) {
    ParsedCommand command("SELECTPRED y BY f1 f2 /CRITERIA PCUTOFF=2");
    EXPECT_FALSE(command.Ok());
    EXPECT_EQ(command.Specs().GetDependVar(), -1);
    EXPECT_EQ(command.Predictors(), "null");
}

TEST(PRSParser, AFailedHandlerStopsThoseThatFollow) {
    // CRITERIA fails, so PRINT, which runs after it, stores nothing.
    ParsedCommand command("SELECTPRED y BY f1 f2 /PRINT CPS /CRITERIA SIZE=2");
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.Specs().GetPrintExcluded());
    EXPECT_EQ(command.Predictors(), "f1 f2");  // the variable list ran before
}

TEST(PRSParser, HandlersRunInTheirOwnOrder) {
    // SIZE is compared with the predictors though CRITERIA is written before EXCEPT.
    EXPECT_TRUE(ParsedCommand("SELECTPRED y BY f1 f2 f3 /CRITERIA SIZE=2").Ok());
    EXPECT_FALSE(
        ParsedCommand("SELECTPRED y BY f1 f2 f3 /CRITERIA SIZE=2 /EXCEPT VARIABLES=f3").Ok());
}

TEST(PRSParser, SplitFilesAreSwitchedOffWithAWarning) {
    ParsedCommand command("SELECTPRED y BY f1 f2", ParseData().Split().Build());
    EXPECT_TRUE(command.Ok());
    EXPECT_EQ(command.SplitCount(), 0);
    EXPECT_TRUE(command.SaidOnly([](const ParserMessage& m) { m.DisableSplit(); }));
    EXPECT_EQ(command.Messages().front().fLevel, embedded::MessageLevel::Warning);
    EXPECT_FALSE(command.ErrorWord());
}

TEST(PRSParser, SplitFilesStayOnWhenTheCommandIsRefused) {
    EXPECT_EQ(ParsedCommand("SELECTPRED y BY f1 /CRITERIA PCUTOFF=2", ParseData().Split().Build())
                  .SplitCount(),
              1);
    EXPECT_EQ(ParsedCommand("SELECTPRED y BY f1 /CRITERIA SIZE=5", ParseData().Split().Build())
                  .SplitCount(),
              1);
}

TEST(PRSParser, SplitFilesStayOnWhenTheErrorWordIsSet) {
    ParsedCommand command("SELECTPRED y BY f1 /EXCEPT VARIABLES=nobody",
                          ParseData().Split().Build());
    EXPECT_TRUE(command.Ok());
    EXPECT_TRUE(command.ErrorWord());
    EXPECT_EQ(command.SplitCount(), 1);
}

TEST(PRSParser, WithoutSplitFilesNothingIsSaid) {
    EXPECT_TRUE(ParsedCommand("SELECTPRED y BY f1 f2").SaidNothing());
}

TEST(PRSParser, FaultOfFormSaysWhereItIs) {
    ParsedCommand command("SELECTPRED y BY f1 f2\n  /SCREENING PCTMISSING=120");
    ASSERT_EQ(command.Messages().size(), 1u);
    const std::string& text = command.Messages().front().fText;
    EXPECT_NE(text.find("test:2:25:"), std::string::npos) << text;
    EXPECT_NE(text.find("above 0 and at most 100"), std::string::npos) << text;
    EXPECT_NE(text.find("/SCREENING PCTMISSING=120"), std::string::npos) << text;
}
