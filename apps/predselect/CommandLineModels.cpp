#include <cstdint>
#include <limits>
#include <string>

#include "apps/predselect/CommandLineCommands.h"
#include "apps/predselect/CommandLineParts.h"

namespace app {
namespace {

constexpr const char* kScoreExamples = R"(
Examples:
  predselect score --model churn.state --data new.csv --save scored.csv
  predselect score --model churn.state --data old.csv --predicted class --save scored.parquet
)";

constexpr const char* kUpdateExamples = R"(
Examples:
  predselect update --model january.state --data february.csv --state both.state
)";

constexpr const char* kMergeExamples = R"(
Examples:
  predselect merge north.state south.state --state both.state --pmml both.xml
)";

CLI::Option* AddModel(CLI::App& command, ModelOptions& model) {
    return AddText(command, "-m,--model", model.fState,
                   "State that --state of bayes, update or merge wrote; - is standard input",
                   "FILE", kDataGroup)
        ->required();
}

void AddScore(CLI::App& program, ProgramOptions& options) {
    ModelOptions& model = options.fModel;
    CLI::App& command =
        *program.add_subcommand("score", "Classify the cases of a data file with a saved state");
    command.footer(std::string(kScoreExamples) + kExitStatusHelp);
    AddModel(command, model);
    AddDataOption(command, options)->required();
    AddReadingOptions(command, options);
    AddSave(command, options.fOutput,
            "Write the data with the predictions (CSV, TSV, Parquet, Arrow)");
    AddText(command, "--predicted", model.fPredicted,
            "Name of the predicted category (PredictedValue)", "NAME", kOutputGroup);
    AddText(command, "--probabilities", model.fProbabilities,
            "Root of the names of the probabilities (PredictedProbability)", "ROOT", kOutputGroup);
    command
        .add_option("--max-probabilities", model.fMaxProbabilities,
                    "Most probabilities to add; 0: none (25)")
        ->check(Undescribed(CLI::Range(0, std::numeric_limits<std::int32_t>::max())))
        ->type_name("N")
        ->group(kOutputGroup);
    command.add_flag("-q,--quiet", options.fOutput.fbQuiet, "No text on standard output")
        ->group(kOutputGroup);
    command.callback([&options] { options.fVerb = Verb::Score; });
}

void AddResult(CLI::App& command, ProgramOptions& options) {
    AddStateOptions(command, options.fOutput);
    command.get_option("--state")->required();
    AddPmml(command, options.fOutput);
    command.add_flag("-q,--quiet", options.fOutput.fbQuiet, "No text on standard output")
        ->group(kOutputGroup);
}

void AddUpdate(CLI::App& program, ProgramOptions& options) {
    CLI::App& command =
        *program.add_subcommand("update", "Train a saved classifier on further cases");
    command.footer(std::string(kUpdateExamples) + kExitStatusHelp);
    AddModel(command, options.fModel);
    AddDataOption(command, options)->required();
    AddReadingOptions(command, options);
    AddResult(command, options);
    command.callback([&options] { options.fVerb = Verb::Update; });
}

void AddMerge(CLI::App& program, ProgramOptions& options) {
    CLI::App& command =
        *program.add_subcommand("merge", "Join saved classifiers of the same variables");
    command.footer(std::string(kMergeExamples) + kExitStatusHelp);
    command
        .add_option("states", options.fModel.fvStates,
                    "States to join, two or more; - is standard input")
        ->type_name("FILE ...")
        ->required()
        ->expected(2, 1 << 20);
    AddResult(command, options);
    command.callback([&options] { options.fVerb = Verb::Merge; });
}

}  // namespace

void AddModelCommands(CLI::App& program, ProgramOptions& options) {
    AddScore(program, options);
    AddUpdate(program, options);
    AddMerge(program, options);
}

}  // namespace app
