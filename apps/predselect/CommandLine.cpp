#include "apps/predselect/CommandLine.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "host/HostGlobals.h"

namespace app {
namespace {

constexpr const char* kData = "Data";
constexpr const char* kOutput = "Output";

constexpr const char* kExitStatus = R"(
Exit status: 0 done (also when nothing was selected), 1 the command failed, 2 wrong use or a command
that does not parse, 3 a file could not be read or written, 130 interrupted.)";

constexpr const char* kExamples = R"(
Examples:
  predselect describe penguins.csv
  predselect select --data penguins.csv --target species
  predselect select --data churn.csv --target churn --html report.html
  predselect run screening.pred --data churn.parquet --json report.json
)";

constexpr const char* kRunExamples = R"(
Examples:
  predselect run screening.pred --data churn.parquet --json report.json
  predselect run -c 'SELECTPRED churn BY state area_code WITH total*;' --data churn.csv
  generate | predselect run screening.pred --data - --quiet --html report.html
)";

constexpr const char* kSelectExamples = R"(
Examples:
  predselect select --data penguins.csv --target species
  predselect select --data churn.csv --target churn --size 5 --html report.html --chart chart.svg
  predselect select --data churn.csv --target churn --factors state --covariates total* \
      --summary lrchisq --show-command
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

// The library's checks, which describe themselves in terms of its own in the help.
CLI::Validator Undescribed(CLI::Validator check) { return check.description(""); }

CLI::Validator OneOf(const std::vector<std::string>& words) {
    return Undescribed(CLI::IsMember(words, CLI::ignore_case));
}

CLI::Validator Number() {
    return {[](const std::string& text) {
                double number = 0;
                const auto [end, error] =
                    std::from_chars(text.data(), text.data() + text.size(), number);
                const bool ok = error == std::errc() && end == text.data() + text.size();
                return ok ? std::string() : "'" + text + "' is not a number";
            },
            ""};
}

CLI::Validator SizeOrAuto() {
    return {[](const std::string& text) {
                const bool digits =
                    !text.empty() && std::all_of(text.begin(), text.end(),
                                                 [](char c) { return c >= '0' && c <= '9'; });
                return digits || AreStringsEqualCase(text, "auto")
                           ? std::string()
                           : "'" + text + "' has to be a whole number or auto";
            },
            ""};
}

// An option with a closed set of words.
template <class Value>
void AddWords(CLI::App& command, const std::string& name, Value& target,
              const std::vector<std::pair<std::string, Value>>& words, const char* help,
              const char* group) {
    std::vector<std::string> names;
    for (const auto& [word, value] : words) names.push_back(word);
    command
        .add_option_function<std::string>(
            name,
            [&target, words](const std::string& text) {
                for (const auto& [word, value] : words) {
                    if (word == text) target = value;
                }
            },
            help)
        ->check(OneOf(names))
        ->type_name(fmt::format("{}", fmt::join(names, "|")))
        ->group(group);
}

// NAME=VALUE, split at the last "=": names may hold one, levels and missing values hardly do.
std::string AddPairs(const std::vector<std::string>& texts,
                     std::vector<std::pair<std::string, std::string>>& pairs) {
    for (const std::string& text : texts) {
        const std::size_t at = text.rfind('=');
        if (at == std::string::npos || at == 0) {
            return "'" + text + "' has to be NAME=VALUE";
        }
        pairs.emplace_back(text.substr(0, at), text.substr(at + 1));
    }
    return {};
}

// One character, or the name of one that is awkward to type.
std::string OneCharacter(const std::string& text, std::optional<char>& character) {
    static const std::map<std::string, char> kNames{
        {"tab", '\t'},  {"comma", ','}, {"semicolon", ';'}, {"pipe", '|'},
        {"space", ' '}, {"none", '\0'}, {"\\t", '\t'}};
    if (const auto named = kNames.find(text); named != kNames.end()) {
        character = named->second;
        return {};
    }
    if (text.size() != 1) return "'" + text + "' has to be one character, or a word such as tab";
    character = text.front();
    return {};
}

void AddReadingOptions(CLI::App& command, ProgramOptions& options) {
    embedded::OpenOptions& open = options.fOpen;
    command
        .add_option("--schema", open.fSchemaPath,
                    "Dictionary of the data (Table Schema); default FILE.schema.json if it exists")
        ->type_name("FILE")
        ->group(kData);
    command.add_option("--weight", open.fWeight, "Variable that holds the case weights")
        ->type_name("NAME")
        ->group(kData);
    const auto pairs = [&](const char* name, auto& target, const char* help, const char* type) {
        command
            .add_option_function<std::vector<std::string>>(
                name,
                [&target, name](const std::vector<std::string>& texts) {
                    const std::string fault = AddPairs(texts, target);
                    if (!fault.empty()) throw CLI::ValidationError(name, fault);
                },
                help)
            ->type_name(type)
            ->allow_extra_args(false)
            ->take_all()
            ->group(kData);
    };
    pairs("--level", open.fvLevels, "Measurement level of a variable; may be repeated",
          "NAME=nominal|ordinal|scale");
    pairs("--missing", open.fvMissing,
          "User-missing values of a variable, at most three, or LOW..HIGH and one; may be repeated",
          "NAME=VALUE[,VALUE]");
    command
        .add_option(
            "--nominal-max", open.fNominalMax,
            "Numbers that are all whole count as nominal up to this many distinct ones (20)")
        ->check(Undescribed(CLI::NonNegativeNumber))
        ->group(kData);
    command.add_option("--na", open.fvNaTexts, "Cells with this text are missing; may be repeated")
        ->type_name("TEXT")
        ->allow_extra_args(false)
        ->take_all()
        ->group(kData);
    const auto character = [&](const char* name, std::optional<char>& target, const char* help) {
        command
            .add_option_function<std::string>(
                name,
                [&target, name](const std::string& text) {
                    const std::string fault = OneCharacter(text, target);
                    if (!fault.empty()) throw CLI::ValidationError(name, fault);
                },
                help)
            ->type_name("CHAR")
            ->group(kData);
    };
    character("--delimiter", open.fDelimiter, "Between cells of delimited text; default: detected");
    character("--quote", open.fQuote, "Around cells of delimited text, or none; default: detected");
    character("--decimal", open.fDecimalMark, "Decimal mark, . or , ; default: detected");
    AddWords<embedded::TextEncoding>(command, "--encoding", open.fEncoding,
                                     {{"detect", embedded::TextEncoding::kDetect},
                                      {"utf-8", embedded::TextEncoding::kUtf8},
                                      {"utf-16", embedded::TextEncoding::kUtf16},
                                      {"latin-1", embedded::TextEncoding::kLatin1}},
                                     "Of delimited text (detect)", kData);
}

void AddOutputOptions(CLI::App& command, ProgramOptions& options) {
    OutputOptions& output = options.fOutput;
    const auto file = [&](const char* name, std::string& path, const char* help) {
        command.add_option(name, path, help)->type_name("FILE")->group(kOutput);
    };
    file("--html", output.fHtml, "Write the report as one HTML page");
    file("--json", output.fJson, "Write the report as JSON for programs");
    file("--chart", output.fChart,
         "Write the chart as SVG; a further chart gets -2, -3, ... in its name");
    file("--vega", output.fVega, "Write the chart as a Vega-Lite specification, named likewise");
    command.add_flag("-q,--quiet", output.fbQuiet, "No text report and no progress")
        ->group(kOutput);
    AddWords<ColorMode>(
        command, "--color", output.fColor,
        {{"auto", ColorMode::Auto}, {"always", ColorMode::Always}, {"never", ColorMode::Never}},
        "Colours in the text report (auto)", kOutput);
    command
        .add_option("--width", output.fWidth, "Columns of the text report; default: the terminal's")
        ->check(Undescribed(CLI::Range(20, 10000)))
        ->type_name("COLUMNS")
        ->group(kOutput);
}

CLI::Option* AddDataOption(CLI::App& command, ProgramOptions& options) {
    return command
        .add_option("-d,--data", options.fDataPath,
                    "CSV, TSV, Parquet, Arrow IPC file or stream; - is standard input")
        ->type_name("FILE")
        ->group(kData);
}

void AddRun(CLI::App& program, ProgramOptions& options) {
    CLI::App& run =
        *program.add_subcommand("run", "Run commands from a file or from the command line");
    run.footer(std::string(kRunExamples) + kExitStatus);
    run.add_option("commands", options.fCommandFile, "Command file; - is standard input")
        ->type_name("FILE.pred");
    run.add_option("-c,--command", options.fCommandText, "The commands themselves")
        ->type_name("'COMMAND'");
    AddDataOption(run, options)->required();
    AddReadingOptions(run, options);
    AddOutputOptions(run, options);
    run.callback([&options] { options.fVerb = Verb::Run; });
}

void AddSelect(CLI::App& program, ProgramOptions& options) {
    constexpr const char* kVariables = "Variables";
    constexpr int kMostNames = 1 << 20;
    constexpr const char* kScreening = "Screening";
    constexpr const char* kSelection = "Selection";
    SelectOptions& select = options.fSelect;
    CLI::App& command = *program.add_subcommand(
        "select", "Screen and rank the predictors of a target (SELECTPRED)");

    command.footer(std::string(kSelectExamples) + kExitStatus);
    command.add_option("-t,--target", select.fTarget, "Variable to be predicted")
        ->type_name("NAME")
        ->required()
        ->group(kVariables);
    command
        .add_option("--target-level", select.fTargetLevel,
                    "Treat the target so, whatever its measurement level")
        ->check(OneOf({"nominal", "ordinal", "scale"}))
        ->type_name("nominal|ordinal|scale")
        ->group(kVariables);
    const auto list = [&](const char* name, std::vector<std::string>& names, const char* help) {
        // Brackets of a name must not be taken for a list, as extra arguments would let them be.
        command.add_option(name, names, help)
            ->type_name("NAME ...")
            ->expected(1, kMostNames)
            ->allow_extra_args(false)
            ->group(kVariables);
    };
    list("--factors", select.fvFactors,
         "Categorical predictors, apart by blanks: names, FIRST..LAST, STEM*, ALL; what stands in "
         "double quotes is a name; default: all variables by level");
    list("--covariates", select.fvCovariates, "Scale predictors, likewise");
    list("--except", select.fvExcept, "Variables that are no predictors");

    const auto text = [&](const char* name, std::string& value, const char* help, const char* type,
                          const char* group) {
        return command.add_option(name, value, help)->type_name(type)->group(group);
    };
    text("--screening", select.fScreening, "Drop predictors by the rules below", "on|off",
         kScreening)
        ->check(OneOf({"on", "off"}));
    text("--max-missing", select.fMaxMissing, "Most missing values, in percent (70)", "N",
         kScreening)
        ->check(Number());
    text("--max-single", select.fMaxSingle, "Largest share of one category, in percent (95)", "N",
         kScreening)
        ->check(Number());
    text("--max-categories", select.fMaxCategories, "Most categories, in percent of the cases (90)",
         "N", kScreening)
        ->check(Number());
    text("--min-cv", select.fMinCv, "Least coefficient of variation (0.001)", "N", kScreening)
        ->check(Number());
    text("--min-stddev", select.fMinStdDev, "Least standard deviation (0)", "N", kScreening)
        ->check(Number());
    text("--user-missing", select.fUserMissing,
         "User-missing values are missing, or values (exclude)", "exclude|include", kScreening)
        ->check(OneOf({"exclude", "include"}));

    text("--ranking", select.fRanking, "Criterion for categorical predictors (pearsonchisq)",
         "pearsonchisq|lrchisq|cramersv|lambda", kSelection)
        ->check(OneOf({"pearsonchisq", "lrchisq", "cramersv", "lambda"}));
    text("--size", select.fSize, "How many to select at most, or auto", "N", kSelection)
        ->check(SizeOrAuto());
    text("--p-cutoff", select.fPCutoff, "Select only below this p-value (0.05)", "P", kSelection)
        ->check(Number());
    text("--show-unselected", select.fShowUnselected, "Show so many of the others too (0)", "N",
         kSelection)
        ->check(Number());
    text("--timer", select.fTimer, "Time limit in minutes; 0: none (5)", "N", kSelection)
        ->check(Number());

    command
        .add_option("--print", select.fvPrint,
                    "Tables to show: cps, excluded, summary, selected, or none; default: all")
        ->check(OneOf({"cps", "excluded", "summary", "selected", "none"}))
        ->type_name("TABLE")
        ->group(kOutput);
    command
        .add_option("--summary", select.fvSummary,
                    "Further criteria in the summary: pearsonchisq, lrchisq, cramersv, lambda")
        ->check(OneOf({"pearsonchisq", "lrchisq", "cramersv", "lambda"}))
        ->type_name("CRITERION")
        ->group(kOutput);
    command
        .add_flag("--plot", select.fbPlot,
                  "Draw the chart; --html, --chart and --vega ask for it too")
        ->group(kOutput);
    command
        .add_flag("--show-command", options.fbShowCommand,
                  "Print the command that these options stand for, and do not run it")
        ->group(kOutput);

    const CLI::Option* data = AddDataOption(command, options);
    AddReadingOptions(command, options);
    AddOutputOptions(command, options);
    command.callback([&options, data] {
        options.fVerb = Verb::Select;
        if (!options.fbShowCommand && data->count() == 0) throw CLI::RequiredError("--data");
    });
}

void AddDescribe(CLI::App& program, ProgramOptions& options) {
    CLI::App& describe =
        *program.add_subcommand("describe", "Show a data file's dictionary as it is understood");
    describe.footer(std::string(kDescribeExamples) + kExitStatus);
    describe
        .add_option("file", options.fDataPath,
                    "CSV, TSV, Parquet, Arrow IPC file or stream; - is standard input")
        ->type_name("FILE")
        ->required();
    describe.add_flag("--json", options.fbDescribeJson, "As JSON")->group(kOutput);
    describe
        .add_option("--write-schema", options.fWriteSchema,
                    "Draft a dictionary (Table Schema) to FILE, by default beside the data as "
                    "DATA.schema.json; - is standard output")
        ->type_name("FILE")
        ->expected(0, 1)
        ->group(kOutput);
    describe
        .add_option("--width", options.fOutput.fWidth,
                    "Columns of the text; default: the terminal's")
        ->check(Undescribed(CLI::Range(20, 10000)))
        ->type_name("COLUMNS")
        ->group(kOutput);
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
            throw CLI::RequiredError("run, select, describe or completion");
        }
    });
    program->footer(std::string(kExamples) + kExitStatus);
    program->formatter(std::make_shared<HelpFormatter>());
    AddRun(*program, options);
    AddSelect(*program, options);
    AddDescribe(*program, options);
    AddCompletion(*program, options);
    return program;
}

}  // namespace app
