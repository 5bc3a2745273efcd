#include <string>

#include "apps/predselect/CommandLineCommands.h"
#include "apps/predselect/CommandLineParts.h"

namespace app {
namespace {

constexpr const char* kSelectExamples = R"(
Examples:
  predselect select --data penguins.csv --target species
  predselect select --data churn.csv --target churn --size 5 --html report.html --chart chart.svg
  predselect select --data churn.csv --target churn --factors state --covariates total* \
      --summary lrchisq --show-command
)";

}  // namespace

void AddSelect(CLI::App& program, ProgramOptions& options) {
    constexpr const char* kScreening = "Screening";
    constexpr const char* kSelection = "Selection";
    SelectOptions& select = options.fSelect;
    CLI::App& command = *program.add_subcommand(
        "select", "Screen and rank the predictors of a target (SELECTPRED)");

    command.footer(std::string(kSelectExamples) + kExitStatusHelp);
    AddVariableOptions(command, select.fVariables);
    command
        .add_option("--target-level", select.fTargetLevel,
                    "Treat the target so, whatever its measurement level")
        ->check(OneOf({"nominal", "ordinal", "scale"}))
        ->type_name("nominal|ordinal|scale")
        ->group(kVariablesGroup);
    AddText(command, "--screening", select.fScreening, "Drop predictors by the rules below",
            "on|off", kScreening)
        ->check(OneOf({"on", "off"}));
    AddText(command, "--max-missing", select.fMaxMissing, "Most missing values, in percent (70)",
            "N", kScreening)
        ->check(Number());
    AddText(command, "--max-single", select.fMaxSingle,
            "Largest share of one category, in percent (95)", "N", kScreening)
        ->check(Number());
    AddText(command, "--max-categories", select.fMaxCategories,
            "Most categories, in percent of the cases (90)", "N", kScreening)
        ->check(Number());
    AddText(command, "--min-cv", select.fMinCv, "Least coefficient of variation (0.001)", "N",
            kScreening)
        ->check(Number());
    AddText(command, "--min-stddev", select.fMinStdDev, "Least standard deviation (0)", "N",
            kScreening)
        ->check(Number());
    AddText(command, "--user-missing", select.fUserMissing,
            "User-missing values are missing, or values (exclude)", "exclude|include", kScreening)
        ->check(OneOf({"exclude", "include"}));

    AddText(command, "--ranking", select.fRanking,
            "Criterion for categorical predictors (pearsonchisq)",
            "pearsonchisq|lrchisq|cramersv|lambda", kSelection)
        ->check(OneOf({"pearsonchisq", "lrchisq", "cramersv", "lambda"}));
    AddText(command, "--size", select.fSize, "How many to select at most, or auto", "N", kSelection)
        ->check(SizeOrAuto());
    AddText(command, "--p-cutoff", select.fPCutoff, "Select only below this p-value (0.05)", "P",
            kSelection)
        ->check(Number());
    AddText(command, "--show-unselected", select.fShowUnselected,
            "Show so many of the others too (0)", "N", kSelection)
        ->check(Number());
    AddText(command, "--timer", select.fTimer, "Time limit in minutes; 0: none (5)", "N",
            kSelection)
        ->check(Number());

    command
        .add_option("--print", select.fvPrint,
                    "Tables to show: cps, excluded, summary, selected, or none; default: all")
        ->check(OneOf({"cps", "excluded", "summary", "selected", "none"}))
        ->type_name("TABLE")
        ->group(kOutputGroup);
    command
        .add_option("--summary", select.fvSummary,
                    "Further criteria in the summary: pearsonchisq, lrchisq, cramersv, lambda")
        ->check(OneOf({"pearsonchisq", "lrchisq", "cramersv", "lambda"}))
        ->type_name("CRITERION")
        ->group(kOutputGroup);
    command
        .add_flag("--plot", select.fbPlot,
                  "Draw the chart; --html, --chart and --vega ask for it too")
        ->group(kOutputGroup);
    command
        .add_flag("--show-command", options.fbShowCommand,
                  "Print the command that these options stand for, and do not run it")
        ->group(kOutputGroup);

    const CLI::Option* data = AddDataOption(command, options);
    AddReadingOptions(command, options);
    AddReportOptions(command, options.fOutput);
    AddChartOptions(command, options.fOutput);
    AddStateOptions(command, options.fOutput);
    command.callback([&options, data] {
        options.fVerb = Verb::Select;
        if (!options.fbShowCommand && data->count() == 0) throw CLI::RequiredError("--data");
    });
}

}  // namespace app
