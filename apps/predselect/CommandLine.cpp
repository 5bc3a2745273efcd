#include "apps/predselect/CommandLine.h"

#include <memory>
#include <sstream>
#include <string>

#include "apps/predselect/CommandLineCommands.h"
#include "apps/predselect/CommandLineParts.h"

namespace app {
namespace {

constexpr const char* kExamples = R"(
Examples:
  predselect describe penguins.csv
  predselect select --data penguins.csv --target species
  predselect select --data churn.csv --target churn --html report.html
  predselect bayes --data churn.csv --target churn --pmml churn.xml --state churn.state
  predselect score --model churn.state --data new.csv --save scored.csv
  predselect run screening.pred --data churn.parquet --json report.json
)";

constexpr const char* kRunExamples = R"(
Examples:
  predselect run screening.pred --data churn.parquet --json report.json
  predselect run -c 'SELECTPRED churn BY state area_code WITH total*;' --data churn.csv
  generate | predselect run screening.pred --data - --quiet --html report.html
)";

constexpr const char* kDescribeExamples = R"(
Examples:
  predselect describe churn.csv
  predselect describe answers.csv --missing q1=97..99 --write-schema=answers.csv.schema.json
)";

// Help whose descriptions are broken into lines of 100 columns.
class HelpFormatter final : public CLI::Formatter {
 public:
    HelpFormatter() { column_width(kIndent); }
    std::string make_option_desc(const CLI::Option* option) const override {
        std::istringstream words(option->get_description());
        std::string text;
        std::size_t width = 0;
        for (std::string word; words >> word;) {
            const bool breaks = width > 0 && width + 1 + word.size() > kLine - kIndent;
            if (width > 0) text += breaks ? '\n' : ' ';
            width = breaks || width == 0 ? word.size() : width + 1 + word.size();
            text += word;
        }
        return text;
    }

 private:
    static constexpr std::size_t kLine = 100;
    static constexpr std::size_t kIndent = 32;
};

void AddRun(CLI::App& program, ProgramOptions& options) {
    CLI::App& run =
        *program.add_subcommand("run", "Run commands from a file or from the command line");
    run.footer(std::string(kRunExamples) + kExitStatusHelp);
    run.add_option("commands", options.fCommandFile, "Command file; - is standard input")
        ->type_name("FILE.pred");
    run.add_option("-c,--command", options.fCommandText, "The commands themselves")
        ->type_name("'COMMAND'");
    AddDataOption(run, options)->required();
    AddReadingOptions(run, options);
    AddSeed(run, options);
    AddReportOptions(run, options.fOutput);
    AddChartOptions(run, options.fOutput);
    AddSave(run, options.fOutput,
            "Write the data with the variables that the commands made (CSV, TSV, Parquet, Arrow)");
    run.callback([&options] { options.fVerb = Verb::Run; });
}

void AddDescribe(CLI::App& program, ProgramOptions& options) {
    CLI::App& describe =
        *program.add_subcommand("describe", "Show a data file's dictionary as it is understood");
    describe.footer(std::string(kDescribeExamples) + kExitStatusHelp);
    describe
        .add_option("file", options.fDataPath,
                    "CSV, TSV, Parquet, Arrow IPC file or stream; - is standard input")
        ->type_name("FILE")
        ->required();
    describe.add_flag("--json", options.fbDescribeJson, "As JSON")->group(kOutputGroup);
    describe
        .add_option("--write-schema", options.fWriteSchema,
                    "Draft a dictionary (Table Schema) to FILE, by default beside the data as "
                    "DATA.schema.json; - is standard output")
        ->type_name("FILE")
        ->expected(0, 1)
        ->group(kOutputGroup);
    describe
        .add_option("--width", options.fOutput.fWidth,
                    "Columns of the text; default: the terminal's")
        ->check(Undescribed(CLI::Range(20, 10000)))
        ->type_name("COLUMNS")
        ->group(kOutputGroup);
    AddReadingOptions(describe, options);
    describe.callback([&options] { options.fVerb = Verb::Describe; });
}

void AddCompletion(CLI::App& program, ProgramOptions& options) {
    CLI::App& completion =
        *program.add_subcommand("completion", "Print a completion script for a shell");
    completion.footer("");
    completion.add_option("shell", options.fShell, "bash, zsh or fish")
        ->check(OneOf({"bash", "zsh", "fish"}))
        ->required();
    completion.callback([&options] { options.fVerb = Verb::Completion; });
}

}  // namespace

std::unique_ptr<CLI::App> MakeCommandLine(ProgramOptions& options) {
    auto program = std::make_unique<CLI::App>(
        "Finds, in a table of many columns, the few that predict a target, and says why each of\n"
        "the others was dropped.",
        "predselect");
    program->set_version_flag("--version", std::string("predselect ") + PREDSELECT_VERSION);
    // Not at least one: a mistyped one would be told as a missing one.
    program->require_subcommand(0, 1);
    program->callback([commandLine = program.get()] {
        if (commandLine->get_subcommands().empty()) {
            throw CLI::RequiredError(
                "run, select, bayes, score, update, merge, describe or completion");
        }
    });
    program->footer(std::string(kExamples) + kExitStatusHelp);
    program->formatter(std::make_shared<HelpFormatter>());
    AddRun(*program, options);
    AddSelect(*program, options);
    AddBayes(*program, options);
    AddModelCommands(*program, options);
    AddDescribe(*program, options);
    AddCompletion(*program, options);
    return program;
}

}  // namespace app
