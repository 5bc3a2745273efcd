#include "apps/predselect/RunCommand.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "apps/predselect/BayesCommandText.h"
#include "apps/predselect/ChartFiles.h"
#include "apps/predselect/OutputFiles.h"
#include "apps/predselect/OutputPaths.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/SaveData.h"
#include "apps/predselect/SelectCommandText.h"
#include "apps/predselect/Signals.h"
#include "apps/predselect/StateFile.h"
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

// data null: none were given, for a command that is only shown.
CommandSource SourceOf(const ProgramOptions& options, const embedded::DataSet* data) {
    if (options.fVerb == Verb::Bayes) {
        const std::optional<std::int64_t> memory =
            data == nullptr ? std::nullopt
                            : MemAllocateFor(data->RowCount(), data->ColumnCount(),
                                             options.fMemory.value_or(HalfOfMemory()));
        return {"command of these options", BayesCommandText(options, memory)};
    }
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

std::vector<embedded::CommandTokens> ReadCommands(const CommandSource& source) {
    embedded::CommandScript script = embedded::ParseCommandText(source.fText, source.fName);
    if (script.fFault) throw ProgramError(kWrongUse, script.fFault->Lines());
    return std::move(script.fvCommands);
}

std::vector<NamedPath> InputsOf(const ProgramOptions& options) {
    std::vector<NamedPath> inputs = DataPaths(options.fDataPath, options.fOpen.fSchemaPath);
    inputs.push_back({"the command file", options.fCommandFile});
    return inputs;
}

std::vector<NamedPath> OutputsOf(const ProgramOptions& options) {
    const OutputOptions& output = options.fOutput;
    std::vector<NamedPath> outputs = SavedPaths(options);
    outputs.insert(outputs.end(), {{"--html", output.fHtml},
                                   {"--json", output.fJson},
                                   {"--chart", output.fChart},
                                   {"--vega", output.fVega},
                                   {"--pmml", output.fPmml},
                                   {"--state", output.fState},
                                   {"--state-xml", output.fStateXml}});
    return outputs;
}

void CheckOutputs(const ProgramOptions& options,
                  const std::vector<embedded::CommandTokens>& commands) {
    const OutputOptions& output = options.fOutput;
    CheckOutputPaths(OutputsOf(options), InputsOf(options));
    const bool wantsChart = !output.fChart.empty() || !output.fVega.empty();
    if (wantsChart && !AsksForChart(commands)) {
        throw ProgramError(kWrongUse,
                           "--chart and --vega need a command that draws a chart; add /PLOT "
                           "SUMMARY to it");
    }
}

// An output on standard output takes the place of the text report.
bool ShowsText(const OutputOptions& output, bool modelOnStandardOutput) {
    if (modelOnStandardOutput) return false;
    const std::array files{output.fHtml, output.fJson, output.fChart, output.fVega,
                           output.fSave, output.fPmml, output.fState, output.fStateXml};
    return !output.fbQuiet && std::find(files.begin(), files.end(), "-") == files.end();
}

std::string TextReport(const embedded::Report& report, const OutputOptions& output,
                       bool ofSeveralCommands) {
    embedded::TextStyle style;
    style.fbShowCommand = ofSeveralCommands;
    style.fWidth = static_cast<std::size_t>(TextWidth(output.fWidth));
    style.fbColor = UseColor(output.fColor);
    return embedded::TextRenderer::Render(report, style);
}

void TellNotes(const embedded::DataSet& data) {
    constexpr std::size_t kMost = 20;
    const std::vector<embedded::DataNote>& notes = data.Notes();
    for (std::size_t i = 0; i < std::min(kMost, notes.size()); ++i) {
        Tell("note: " + notes[i].fText);
    }
    if (notes.size() > kMost) {
        Tell("note: there are " + std::to_string(notes.size() - kMost) +
             " more; predselect describe shows all");
    }
}

void TellWarnings(const embedded::Report& report) {
    for (const embedded::CommandReport& command : report.fvCommands) {
        for (const embedded::ReportMessage& message : command.fvMessages) {
            if (message.fLevel != embedded::MessageLevel::Warning) continue;
            Tell("warning: " + message.fText);
        }
    }
}

// Why the command did not end well; a refused command shows its line too.
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

// The state of the engine as it ends its run, in the forms that are asked for.
class EngineTaker {
 public:
    explicit EngineTaker(const OutputOptions& output) : fOutput(output) {}

    bool IsAsked() const { return !fOutput.fState.empty() || !fOutput.fStateXml.empty(); }
    // Keeps what goes wrong for AddTo: the host must not see an exception.
    void Take(const SavableEngine& engine, const embedded::RecordLayout& layout) {
        try {
            if (!fOutput.fState.empty()) fState = WrittenState(TakeState(engine, layout));
            if (!fOutput.fStateXml.empty()) fXml = TakeStateAsXML(engine);
        } catch (...) {
            fFault = std::current_exception();
        }
    }
    void AddTo(OutputFiles& files) const {
        if (fFault) std::rethrow_exception(fFault);
        if (fState) files.Add(fOutput.fState, *fState);
        if (fXml) files.Add(fOutput.fStateXml, *fXml);
    }

 private:
    const OutputOptions& fOutput;
    std::optional<std::string> fState;
    std::optional<std::string> fXml;
    std::exception_ptr fFault;
};

// A classifier with a weight variable can be saved, but by the layout of its list not read back.
void CheckState(const ProgramOptions& options, const embedded::DataSet& data) {
    if (options.fVerb != Verb::Bayes || options.fOutput.fState.empty()) return;
    if (data.WeightIndex() < 0) return;
    throw ProgramError(
        kWrongUse, "--state cannot keep a classifier that is trained with the weight variable " +
                       data.Variable(data.WeightIndex()).GetName() +
                       ": it could not be read back; leave out the weight, or write --pmml or "
                       "--state-xml");
}

// Places the model files that commands name, which only they know.
class ModelPlaces {
 public:
    ModelPlaces(const ProgramOptions& options, OutputFiles& files)
        : fOptions(options), fFiles(files) {}

    // Throws what the host tells: why the path cannot be.
    std::string Place(const std::string& path) {
        // The one of bayes has been checked as --pmml.
        if (fOptions.fVerb != Verb::Bayes) CheckPath(path);
        fvPlaced.push_back({"the model of another command", path});
        std::string temporary;
        if (const int error = fFiles.TryPlace(path, temporary)) {
            throw std::system_error(error, std::generic_category());
        }
        return temporary;
    }
    bool HasStandardOutput() const { return FindPlace("-", fvPlaced) != nullptr; }

 private:
    void CheckPath(const std::string& path) const {
        if (path != "-") Refuse(FindPlace(path, InputsOf(fOptions)));
        Refuse(FindPlace(path, OutputsOf(fOptions)));
        Refuse(FindPlace(path, fvPlaced));
    }
    static void Refuse(const NamedPath* taken) {
        if (taken != nullptr) throw std::runtime_error("it is the place of " + taken->fName);
    }

    const ProgramOptions& fOptions;
    OutputFiles& fFiles;
    std::vector<NamedPath> fvPlaced;
};

void WriteReport(const embedded::Report& report, const OutputOptions& output, bool showsText,
                 OutputFiles& files) {
    if (!output.fHtml.empty()) files.Add(output.fHtml, embedded::HtmlRenderer::Render(report));
    if (!output.fJson.empty()) files.Add(output.fJson, embedded::JsonRenderer::Render(report));
    // A run that left no predictor draws none, and that is no failure.
    const auto addCharts = [&](std::string embedded::ReportChart::*form, const std::string& path) {
        if (path.empty() || AddCharts(report, form, path, files)) return;
        Tell("warning: there was nothing to draw, so no chart was written to " + path);
    };
    addCharts(&embedded::ReportChart::fSvg, output.fChart);
    addCharts(&embedded::ReportChart::fVegaLite, output.fVega);
    if (showsText) files.Add("-", TextReport(report, output, report.fvCommands.size() > 1));
    files.Commit();
    // The text report shows them already.
    if (!showsText) TellWarnings(report);
}

}  // namespace

ExitStatus RunCommand(const ProgramOptions& options) {
    const bool isShown = options.fbShowCommand;
    std::optional<embedded::DataSet> data;
    std::optional<ProgressLine> progress;
    const auto open = [&] {
        if (ProgressIsSeen() && !options.fOutput.fbQuiet) progress.emplace();
        if (progress) progress->Show("Reading " + options.fDataPath);
        data.emplace(embedded::OpenDataSet(options.fDataPath, options.fOpen));
    };
    // What bayes asks of the memory depends on the data; all else is checked before they are read.
    std::optional<CommandSource> source;
    std::vector<embedded::CommandTokens> commands;
    const auto prepare = [&](const embedded::DataSet* known) {
        source = SourceOf(options, known);
        commands = ReadCommands(*source);
        CheckOutputs(options, commands);
    };
    if (isShown) {
        if (options.fVerb == Verb::Bayes && !options.fDataPath.empty()) open();
        WriteStandardOutput(SourceOf(options, data ? &*data : nullptr).fText);
        return kDone;
    }
    prepare(nullptr);
    open();
    CheckState(options, *data);
    if (options.fVerb == Verb::Bayes) prepare(&*data);

    StopThroughCommands();
    OutputFiles files;
    EngineTaker taker(options.fOutput);
    embedded::RunOptions run;
    run.fpProgress = progress ? &*progress : nullptr;
    run.fThreads = options.fOpen.fThreads;
    run.fSeed = options.fSeed.value_or(run.fSeed);
    if (taker.IsAsked()) {
        run.fTakeEngine = [&taker](const SavableEngine& engine,
                                   const embedded::RecordLayout& layout) {
            taker.Take(engine, layout);
        };
    }
    ModelPlaces models(options, files);
    run.fPlaceModelFile = [&models](const std::string& path) { return models.Place(path); };
    embedded::Report report;
    report.fVersion = PREDSELECT_VERSION;
    report.fvCommands = embedded::RunCommands(*data, commands, &PREDSELE, run);
    progress.reset();
    TellNotes(*data);

    const bool showsText = ShowsText(options.fOutput, models.HasStandardOutput());
    if (report.fvCommands.back().fStatus == embedded::CommandStatus::Ok) {
        taker.AddTo(files);
        SaveData(*data, options, files);
        WriteReport(report, options.fOutput, showsText, files);
        return kDone;
    }
    const ExitStatus status = TellFailure(report.fvCommands.back());
    // Its messages have been told. What it found before it failed says why: the excluded
    // predictors.
    embedded::CommandReport& failed = report.fvCommands.back();
    failed.fvMessages.clear();
    if (failed.fvItems.empty()) report.fvCommands.pop_back();
    // What earlier commands found is shown too, but a failed run leaves no file.
    if (status != kInterrupted && showsText && !report.fvCommands.empty()) {
        WriteStandardOutput(TextReport(report, options.fOutput, commands.size() > 1));
    }
    return status;
}

}  // namespace app
