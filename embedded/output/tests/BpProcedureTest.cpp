// Messages and notes.
#include <gtest/gtest.h>

#include "embedded/output/tests/OutputSession.h"
#include "host/HostGlobals.h"

namespace embedded {
namespace {

using BpProcedureOutput = OutputSession;

TEST_F(BpProcedureOutput, AnErrorIsShownAndSetsTheErrorWord) {
    BpError(BpString("There are no valid cases...", true), kBpErrorShow, kBpError);
    ASSERT_EQ(fReport.fvMessages.size(), 1U);
    EXPECT_EQ(fReport.fvMessages[0].fLevel, MessageLevel::Error);
    EXPECT_EQ(fReport.fvMessages[0].fKey, "There are no valid cases...");
    EXPECT_EQ(fReport.fvMessages[0].fText, "There are no valid cases.");
    EXPECT_NE(pvGetCmnGlb()[kErrorWord], 0);
}

TEST_F(BpProcedureOutput, AWarningLeavesTheErrorWordClear) {
    BpError(BpString("No predictors were selected.", true), kBpErrorShow, kBpWarning);
    ASSERT_EQ(fReport.fvMessages.size(), 1U);
    EXPECT_EQ(fReport.fvMessages[0].fLevel, MessageLevel::Warning);
    EXPECT_EQ(pvGetCmnGlb()[kErrorWord], 0);
}

TEST_F(BpProcedureOutput, AMessageWithArgumentsKeepsItsTemplateAsKey) {
    BpComposite message("Train Samp var ^1 on pred var list ...", true);
    message.Add(BpString("age", false));
    message.Finish();
    BpError(message, kBpErrorShow, kBpWarning);
    EXPECT_EQ(fReport.fvMessages.at(0).fKey, "Train Samp var ^1 on pred var list ...");
    EXPECT_EQ(fReport.fvMessages.at(0).fText,
              "Variable age defines the training sample and cannot be a predictor as well.");
}

TEST_F(BpProcedureOutput, NotesKeepTheirGroupAndOrder) {
    AddNotes(4, BpString("Definition of Missing", true), BpString("UserMiss excluded ...", true));
    AddNotes(4, BpString("Cases Used", true), BpString("plain text", false));
    ASSERT_EQ(fReport.fvNotes.size(), 2U);
    EXPECT_EQ(fReport.fvNotes[0].fGroup, 4);
    EXPECT_EQ(fReport.fvNotes[0].fTitle, "Definition of Missing");
    EXPECT_EQ(fReport.fvNotes[0].fText, "User-defined missing values are treated as missing.");
    EXPECT_EQ(fReport.fvNotes[1].fText, "plain text");
}

TEST_F(BpProcedureOutput, ANoteOfSeveralShowsItsHeading) {
    AddNotesWithGroup(3, BpString("Predicted Probabilities", true), BpString("y = a", false),
                      BpString("prob1", false));
    ASSERT_EQ(fReport.fvNotes.size(), 1U);
    EXPECT_EQ(fReport.fvNotes[0].fGroup, 3);
    EXPECT_EQ(fReport.fvNotes[0].fTitle, "Predicted Probabilities");
    EXPECT_EQ(fReport.fvNotes[0].fText, "y = a: prob1");
}

}  // namespace
}  // namespace embedded
