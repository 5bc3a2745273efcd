#include <exception>
#include <iostream>
#include <new>
#include <sstream>
#include <string>

#include "apps/predselect/CommandLine.h"
#include "apps/predselect/Completion.h"
#include "apps/predselect/ModelCommands.h"
#include "apps/predselect/OutputFiles.h"
#include "apps/predselect/ProgramError.h"
#include "apps/predselect/RunCommand.h"
#include "apps/predselect/Signals.h"
#include "embedded/data/DataError.h"

namespace {

app::ExitStatus Perform(const CLI::App& commandLine, app::ProgramOptions& options) {
    switch (options.fVerb) {
        case app::Verb::Select:
            // A page or a picture asks for the chart.
            options.fSelect.fbPlot = options.fSelect.fbPlot || !options.fOutput.fHtml.empty() ||
                                     !options.fOutput.fChart.empty() ||
                                     !options.fOutput.fVega.empty();
            return app::RunCommand(options);
        case app::Verb::Run:
        case app::Verb::Bayes:
            return app::RunCommand(options);
        case app::Verb::Score:
            return app::ScoreCommand(options);
        case app::Verb::Update:
            return app::UpdateCommand(options);
        case app::Verb::Merge:
            return app::MergeCommand(options);
        case app::Verb::Describe:
            return app::DescribeCommand(options);
        case app::Verb::Completion:
            app::WriteStandardOutput(app::CompletionScript(commandLine, options.fShell));
            return app::kDone;
    }
    return app::kWrongUse;
}

// How to ask for help on the command that was meant.
std::string HelpOf(const CLI::App& commandLine) {
    std::string call = "predselect ";
    for (const CLI::App* command : commandLine.get_subcommands()) call += command->get_name() + ' ';
    return call + "--help";
}

int Fail(app::ExitStatus status, const std::string& message) {
    std::cerr << "predselect: " << message << '\n';
    return status;
}

}  // namespace

int main(int argc, char** argv) {
    app::FillStandardStreams();
    app::CatchSignals();
    app::ProgramOptions options;
    try {
        const auto commandLine = app::MakeCommandLine(options);
        try {
            commandLine->parse(argc, argv);
        } catch (const CLI::Success& request) {  // help and version
            std::ostringstream text;
            commandLine->exit(request, text);
            app::WriteStandardOutput(text.str());
            return app::kDone;
        } catch (const CLI::ParseError& error) {
            return Fail(app::kWrongUse,
                        std::string(error.what()) + "; see " + HelpOf(*commandLine));
        }
        return Perform(*commandLine, options);
    } catch (const app::ProgramError& error) {
        return Fail(error.Status(), error.what());
    } catch (const embedded::DataError& error) {
        return Fail(error.GetKind() == embedded::DataError::Kind::kOption ? app::kWrongUse
                                                                          : app::kFileFault,
                    error.what());
    } catch (const std::bad_alloc&) {
        return Fail(app::kCommandFailed,
                    "out of memory; use fewer columns or a machine with more memory");
    } catch (const std::exception& error) {
        return Fail(app::kCommandFailed, error.what());
    }
}
