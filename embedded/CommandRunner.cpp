#include "embedded/CommandRunner.h"

#include "embedded/HostSession.h"
#include "embedded/files/Interrupt.h"
#include "host/HostGlobals.h"
#include "host/Output.h"

namespace embedded {
namespace {

// A cancelled run leaves no message of its own: the procedure does not know who stopped it.
CommandStatus Conclude() {
    switch (LastStopCause()) {
        case StopCause::Interrupt:
            return CommandStatus::Interrupted;
        case StopCause::TimeLimit:
            BpError(BpString("The time limit was reached...", true), kBpErrorShow, kBpError);
            break;
        case StopCause::None:
            break;
    }
    return pvGetCmnGlb()[kErrorWord] == 0 ? CommandStatus::Ok : CommandStatus::Failed;
}

// Whatever stopped this run must not stop the next. An interrupt that came before the run counts.
struct ForgetStop {
    ~ForgetStop() { ClearStop(); }
};

}  // namespace

std::vector<CommandReport> RunCommands(DataSet& data, const std::vector<CommandTokens>& commands,
                                       ProcedureEntry entry, ProgressListener* progress) {
    const ForgetStop forget;
    std::vector<CommandReport> reports;
    for (const CommandTokens& command : commands) {
        CommandReport& report = reports.emplace_back();
        report.fCommand = command.Text();
        HostSession session(data, command, report);
        session.SetProgress(progress);
        entry();
        report.fStatus = Conclude();
        if (report.fStatus != CommandStatus::Ok) break;
    }
    return reports;
}

}  // namespace embedded
