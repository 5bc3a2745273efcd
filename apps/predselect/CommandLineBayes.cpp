#include <string>

#include "apps/predselect/CommandLineCommands.h"
#include "apps/predselect/CommandLineParts.h"

namespace app {
namespace {

constexpr const char* kBayesExamples = R"(
Examples:
  predselect bayes --data penguins.csv --target species
  predselect bayes --data churn.csv --target churn --train-percent 70 --html report.html
  predselect bayes --data churn.csv --target churn --force-factors state --max-size 4 \
      --predicted --save scored.csv --pmml churn.xml --state churn.state
)";

}  // namespace

void AddBayes(CLI::App& program, ProgramOptions& options) {
    constexpr const char* kSample = "Training sample";
    constexpr const char* kSearch = "Search";
    constexpr const char* kSaved = "New variables";
    BayesOptions& bayes = options.fBayes;
    CLI::App& command = *program.add_subcommand(
        "bayes", "Find the few predictors that classify a target (NAIVEBAYES)");

    command.footer(std::string(kBayesExamples) + kExitStatusHelp);
    AddVariableOptions(command, bayes.fVariables);
    AddVariableList(command, "--force-factors", bayes.fvForceFactors,
                    "Categorical predictors that the model holds whatever the search finds");
    AddVariableList(command, "--force-covariates", bayes.fvForceCovariates,
                    "Scale predictors, likewise");
    AddText(command, "--user-missing", bayes.fUserMissing,
            "User-missing values are missing, or values (exclude)", "exclude|include",
            kVariablesGroup)
        ->check(OneOf({"exclude", "include"}));

    CLI::Option* percent =
        AddText(command, "--train-percent", bayes.fTrainPercent,
                "Train on a random sample of so many percent, test on the others", "P", kSample)
            ->check(Number());
    AddText(command, "--train-variable", bayes.fTrainVariable,
            "Train on the cases where this variable is 1, test on the others", "NAME", kSample)
        ->excludes(percent);

    CLI::Option* maxSize =
        AddText(command, "--max-size", bayes.fMaxSize,
                "Most predictors to find beside the forced ones, or auto (auto)", "N", kSearch)
            ->check(SizeOrAuto());
    AddText(command, "--best-subset", bayes.fBestSubset,
            "What judges the size: on the training sample or on the test sample (testdata if there "
            "is one)",
            "pseudobic|testdata", kSearch)
        ->check(OneOf({"pseudobic", "testdata"}));
    CLI::Option* exactSize =
        AddText(command, "--exact-size", bayes.fExactSize,
                "Exactly so many predictors beside the forced ones", "N", kSearch)
            ->check(Number())
            ->excludes(maxSize);
    command.add_flag("--no-selection", bayes.fbNoSelection, "All predictors, no search")
        ->excludes(maxSize)
        ->excludes(exactSize)
        ->group(kSearch);
    AddText(command, "--bins", bayes.fBins, "Intervals for the values of a scale predictor (10)",
            "N", kSearch)
        ->check(Number());
    AddText(command, "--timer", bayes.fTimer, "Time limit in minutes; 0: none (5)", "N", kSearch)
        ->check(Number());

    command
        .add_option("--predicted", bayes.fPredicted,
                    "Add the predicted category; NAME: as this variable")
        ->type_name("NAME")
        ->expected(0, 1)
        ->group(kSaved);
    command
        .add_option("--probabilities", bayes.fProbabilities,
                    "Add the probabilities of the target's categories; ROOT: begins their names")
        ->type_name("ROOT")
        ->expected(0, 1)
        ->group(kSaved);
    AddText(command, "--max-probabilities", bayes.fMaxProbabilities,
            "Most probabilities to add (25); asks for them too", "N", kSaved)
        ->check(Number());
    AddSave(command, options.fOutput,
            "Write the data with the new variables (CSV, TSV, Parquet, Arrow); asks for both kinds "
            "if neither is named");
    AddPmml(command, options.fOutput);
    command
        .add_option("--print", bayes.fvPrint,
                    "Tables to show: cps, excluded, summary, selected, classification, or none; "
                    "default: all")
        ->check(OneOf({"cps", "excluded", "summary", "selected", "classification", "none"}))
        ->type_name("TABLE")
        ->group(kOutputGroup);
    command
        .add_flag("--show-command", options.fbShowCommand,
                  "Print the command that these options stand for, and do not run it")
        ->group(kOutputGroup);

    const CLI::Option* data = AddDataOption(command, options);
    AddReadingOptions(command, options,
                      "Most memory for the columns of the data, and likewise for the records that "
                      "the search runs on, such as 500M or 4G (half of the machine's)");
    AddSeed(command, options);
    AddReportOptions(command, options.fOutput);
    AddStateOptions(command, options.fOutput);
    command.callback([&options, data] {
        options.fVerb = Verb::Bayes;
        if (!options.fbShowCommand && data->count() == 0) throw CLI::RequiredError("--data");
    });
}

}  // namespace app
