#include "embedded/CommandRunner.h"

#include <exception>

#include "embedded/HostSession.h"
#include "embedded/files/Interrupt.h"
#include "embedded/files/ModelFileFault.h"
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

// False, with a message, when the command's model file cannot come to its place.
bool Keep(HostSession& session) {
    try {
        session.Keep();
        return true;
    } catch (const std::exception& fault) {
        ReportModelFileFault(session.Report().fModelFile.value_or(""), fault.what());
        return false;
    }
}

// Whatever stopped this run must not stop the next. An interrupt that came before the run counts.
struct ForgetStop {
    ~ForgetStop() { ClearStop(); }
};

}  // namespace

std::vector<CommandReport> RunCommands(DataSet& data, const std::vector<CommandTokens>& commands,
                                       ProcedureEntry entry, const RunOptions& options) {
    const ForgetStop forget;
    std::vector<CommandReport> reports;
    for (const CommandTokens& command : commands) {
        CommandReport& report = reports.emplace_back();
        report.fCommand = command.Text();
        HostSession session(data, command, report, options);
        entry();
        session.AddClosingNotes();
        report.fStatus = Conclude();
        if (report.fStatus == CommandStatus::Ok && !Keep(session)) {
            report.fStatus = CommandStatus::Failed;
        }
        if (report.fStatus != CommandStatus::Ok) {
            report.fModelFile.reset();
            break;
        }
    }
    return reports;
}

}  // namespace embedded
