#include "embedded/CommandRunner.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "embedded/HostSession.h"
#include "embedded/files/Interrupt.h"
#include "host/HostGlobals.h"
#include "host/Output.h"
#include "host/Progress.h"

namespace {

using embedded::CommandReport;
using embedded::CommandStatus;

int gCalls = 0;

void Succeed() { ++gCalls; }

void Fail() {
    ++gCalls;
    BpError(BpString("this went wrong", false), kBpErrorShow, kBpError);
}

void RunOutOfTime() {
    MCStopProcessor stop(1e-9);
    while (!stop.IsCancelled()) {
    }
}

void BeInterrupted() {
    ++gCalls;
    embedded::RequestInterrupt();
    EXPECT_TRUE(MCStopProcessor(0.0).IsCancelled());
}

void LookForInterrupt() {
    ++gCalls;
    MCStopProcessor(0.0).IsCancelled();
}

std::vector<CommandReport> RunTwoCommands(embedded::ProcedureEntry entry,
                                          ProgressListener* progress = nullptr) {
    gCalls = 0;
    const embedded::CommandScript script =
        embedded::ParseCommandText("SELECTPRED y; naivebayes y /PRINT NONE;", "test");
    EXPECT_EQ(script.fvCommands.size(), 2U);
    embedded::DataSet data;
    return embedded::RunCommands(data, script.fvCommands, entry, {.fpProgress = progress});
}

TEST(CommandRunner, RunsOneCommandAfterTheOther) {
    const auto reports = RunTwoCommands(&Succeed);
    ASSERT_EQ(reports.size(), 2U);
    EXPECT_EQ(gCalls, 2);
    EXPECT_EQ(reports[0].fCommand, "SELECTPRED y");
    EXPECT_EQ(reports[1].fCommand, "naivebayes y /PRINT NONE");
    for (const CommandReport& report : reports) EXPECT_EQ(report.fStatus, CommandStatus::Ok);
}

TEST(CommandRunner, StopsBehindACommandThatFails) {
    const auto reports = RunTwoCommands(&Fail);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(gCalls, 1);
    EXPECT_EQ(reports[0].fStatus, CommandStatus::Failed);
    ASSERT_EQ(reports[0].fvMessages.size(), 1U);
    EXPECT_EQ(reports[0].fvMessages[0].fText, "this went wrong");
}

TEST(CommandRunner, AnEarlierErrorIsForgotten) {
    RunTwoCommands(&Fail);
    EXPECT_EQ(RunTwoCommands(&Succeed).size(), 2U);
}

TEST(CommandRunner, TellsThatTheTimeWasUp) {
    const auto reports = RunTwoCommands(&RunOutOfTime);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].fStatus, CommandStatus::Failed);
    ASSERT_EQ(reports[0].fvMessages.size(), 1U);
    EXPECT_EQ(reports[0].fvMessages[0].fKey, "The time limit was reached...");
    EXPECT_EQ(reports[0].fvMessages[0].fLevel, embedded::MessageLevel::Error);
}

TEST(CommandRunner, AnInterruptEndsTheRunWithoutAMessage) {
    const auto reports = RunTwoCommands(&BeInterrupted);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(gCalls, 1);
    EXPECT_EQ(reports[0].fStatus, CommandStatus::Interrupted);
    EXPECT_TRUE(reports[0].fvMessages.empty());
}

TEST(CommandRunner, WhatStoppedARunDoesNotStopTheNext) {
    RunTwoCommands(&BeInterrupted);
    EXPECT_EQ(RunTwoCommands(&LookForInterrupt).size(), 2U);
    RunTwoCommands(&RunOutOfTime);
    EXPECT_EQ(RunTwoCommands(&Succeed).size(), 2U);
}

TEST(CommandRunner, AnInterruptBeforeTheRunCounts) {
    embedded::RequestInterrupt();
    const auto reports = RunTwoCommands(&LookForInterrupt);
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_EQ(reports[0].fStatus, CommandStatus::Interrupted);
}

class Listener final : public ProgressListener {
 public:
    void OnProgress(const ProgressReport& /*report*/) override { ++fCalls; }
    int fCalls = 0;
};

class NoProgress final : public ProgressReport {
 public:
    std::int32_t GetInteger(const std::string& /*name*/) const override { return -1; }
    double GetDouble(const std::string& /*name*/) const override { return 0.0; }
};

TEST(CommandRunner, TheListenerHearsOfEveryCommand) {
    Listener listener;
    RunTwoCommands([] { embedded::HostSession::Active().Progress()->OnProgress(NoProgress()); },
                   &listener);
    EXPECT_EQ(listener.fCalls, 2);
}

TEST(HostSession, WritesTheCommandsNameForTheProcedure) {
    static std::vector<std::string> names;
    names.clear();
    RunTwoCommands([] { names.emplace_back(pvGetCmaSys()->fCommandName); });
    EXPECT_EQ(names, (std::vector<std::string>{"SELECTPRED", "NAIVEBAYES"}));
}

TEST(HostSession, GivesTheNumberOfSplitVariables) {
    static std::vector<std::int64_t> counts;
    counts.clear();
    const embedded::CommandScript script = embedded::ParseCommandText("SELECTPRED y;", "test");
    embedded::DataSet data;
    data.SetSplitIndices({0, 1});
    embedded::RunCommands(data, script.fvCommands,
                          [] { counts.push_back(pvGetCmnGlb()[kSplitFileCount]); });
    EXPECT_EQ(counts, std::vector<std::int64_t>{2});
}

}  // namespace
