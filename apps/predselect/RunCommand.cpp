#include "apps/predselect/RunCommand.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "apps/predselect/ChartFiles.h"
#include "apps/predselect/OutputFiles.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/SelectCommandText.h"
#include "apps/predselect/Signals.h"
#include "apps/predselect/Terminal.h"
#include "backend/predselect/PREDSELE.h"
#include "embedded/CommandRunner.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/data/OpenDataSet.h"
#include "embedded/output/HtmlRenderer.h"
#include "embedded/output/JsonRenderer.h"
#include "embedded/output/TextRenderer.h"

namespace app {
namespace {

void Tell(const std::string& text) { std::cerr << "predselect: " << text << '\n'; }

std::string ReadCommandFile(const std::string& path) {
    if (path == "-") {
        return std::string(std::istreambuf_iterator<char>(std::cin), {});
    }
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    // A directory opens, but cannot be read.
    if (!file || !(text << file.rdbuf() || file.peek() == std::ifstream::traits_type::eof()) ||
        file.bad()) {
        throw ProgramError(kFileFault, "cannot read the command file " + path + ": " +
                                           std::strerror(errno) + "; check the path");
    }
    return text.str();
}

struct CommandSource {
    std::string fName;
    std::string fText;
};

CommandSource SourceOf(const ProgramOptions& options) {
    if (options.fVerb == Verb::Select) {
        return {"command of these options", SelectCommandText(options.fSelect)};
    }
    if (options.fCommandFile.empty() != options.fCommandText.has_value()) {
        throw ProgramError(kWrongUse,
                           "run needs either a command file or -c 'COMMAND', one of the two");
    }
    if (options.fCommandText) return {"command line", *options.fCommandText};
    if (options.fCommandFile == "-" && options.fDataPath == "-") {
        throw ProgramError(kWrongUse,
                           "standard input cannot give both the commands and the data; put one of "
                           "them in a file");
    }
    return {options.fCommandFile == "-" ? "standard input" : options.fCommandFile,
            ReadCommandFile(options.fCommandFile)};
}

// At most one form may go to standard output, and the text report then stays away.
bool StandardOutputTaken(const OutputOptions& output) {
    const std::vector<const std::string*> paths{&output.fHtml, &output.fJson, &output.fChart,
                                                &output.fVega};
    const auto taken =
        std::count_if(paths.begin(), paths.end(), [](const auto* path) { return *path == "-"; });
    if (taken > 1) {
        throw ProgramError(
            kWrongUse, "only one output can go to standard output; give the others a file name");
    }
    return taken == 1;
}

embedded::TextStyle StyleOf(const OutputOptions& output) {
    embedded::TextStyle style;
    style.fWidth = static_cast<std::size_t>(TextWidth(output.fWidth));
    style.fbColor = UseColor(output.fColor);
    return style;
}

// Errors of the command that did not end well, one line each; a refused command shows its line too.
ExitStatus TellFailure(const embedded::CommandReport& command) {
    if (command.fStatus == embedded::CommandStatus::Interrupted) {
        Tell("interrupted");
        return kInterrupted;
    }
    bool refused = false;
    for (const embedded::ReportMessage& message : command.fvMessages) {
        if (message.fLevel != embedded::MessageLevel::Error) continue;
        Tell(message.fText);
        refused = refused || message.fbCommandLanguage;
    }
    return refused ? kWrongUse : kCommandFailed;
}

void TellWarnings(const embedded::Report& report) {
    for (const embedded::CommandReport& command : report.fvCommands) {
        for (const embedded::ReportMessage& message : command.fvMessages) {
            if (message.fLevel == embedded::MessageLevel::Warning)
                Tell("warning: " + message.fText);
        }
    }
}

void WriteReport(const embedded::Report& report, const OutputOptions& output) {
    const bool showText = !output.fbQuiet && !StandardOutputTaken(output);
    OutputFiles files;
    if (!output.fHtml.empty()) files.Add(output.fHtml, embedded::HtmlRenderer::Render(report));
    if (!output.fJson.empty()) files.Add(output.fJson, embedded::JsonRenderer::Render(report));
    if (!output.fChart.empty()) {
        AddCharts(report, &embedded::ReportChart::fSvg, output.fChart, files);
    }
    if (!output.fVega.empty()) {
        AddCharts(report, &embedded::ReportChart::fVegaLite, output.fVega, files);
    }
    if (showText) files.Add("-", embedded::TextRenderer::Render(report, StyleOf(output)));
    if (Interrupted()) throw ProgramError(kInterrupted, "interrupted");
    files.Commit();
    // The text report shows them already.
    if (!showText) TellWarnings(report);
}

void CheckOutputs(const OutputOptions& output) {
    StandardOutputTaken(output);
    for (const std::string* path : {&output.fHtml, &output.fJson, &output.fChart, &output.fVega}) {
        CheckWritable(*path);
    }
}

std::vector<embedded::CommandTokens> ReadCommands(const CommandSource& source) {
    embedded::CommandScript script = embedded::ParseCommandText(source.fText, source.fName);
    if (script.fFault) throw ProgramError(kWrongUse, script.fFault->Lines());
    if (script.fvCommands.empty()) {
        throw ProgramError(
            kWrongUse, source.fName + " holds no command; write SELECTPRED and a target variable");
    }
    return std::move(script.fvCommands);
}

}  // namespace

ExitStatus RunCommand(const ProgramOptions& options) {
    const CommandSource source = SourceOf(options);
    if (options.fbShowCommand) {
        WriteStandardOutput(source.fText);
        return kDone;
    }
    CheckOutputs(options.fOutput);
    const std::vector<embedded::CommandTokens> commands = ReadCommands(source);

    std::optional<ProgressLine> progress;
    if (ProgressIsSeen() && !options.fOutput.fbQuiet) progress.emplace();
    if (progress) progress->Show("Reading " + options.fDataPath);
    embedded::DataSet data = embedded::OpenDataSet(options.fDataPath, options.fOpen);

    StopThroughCommands();
    embedded::Report report;
    report.fVersion = PREDSELECT_VERSION;
    report.fvCommands =
        embedded::RunCommands(data, commands, &PREDSELE, progress ? &*progress : nullptr);
    progress.reset();
    for (const embedded::DataNote& note : data.Notes()) Tell("note: " + note.fText);

    const embedded::CommandReport& last = report.fvCommands.back();
    if (last.fStatus != embedded::CommandStatus::Ok) {
        const ExitStatus status = TellFailure(last);
        report.fvCommands.pop_back();
        // What earlier commands found is shown, but a failed run leaves no file.
        if (!options.fOutput.fbQuiet && !StandardOutputTaken(options.fOutput) &&
            !report.fvCommands.empty()) {
            WriteStandardOutput(embedded::TextRenderer::Render(report, StyleOf(options.fOutput)));
        }
        return status;
    }
    WriteReport(report, options.fOutput);
    return kDone;
}

}  // namespace app
