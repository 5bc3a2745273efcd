#include "apps/predselect/CommandLineParts.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/HostGlobals.h"

namespace app {
namespace {

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

}  // namespace

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

CLI::Option* AddText(CLI::App& command, const char* name, std::string& value, const char* help,
                     const char* type, const char* group) {
    return command.add_option(name, value, help)
        ->type_name(type)
        ->group(group)
        ->check(CLI::Validator(
            [](const std::string& text) {
                return std::string(text.empty() ? "must not be empty; leave it out or give a value"
                                                : "");
            },
            ""));
}

void AddVariableList(CLI::App& command, const char* name, std::vector<std::string>& names,
                     const char* help) {
    constexpr int kMostNames = 1 << 20;
    // Brackets of a name must not be taken for a list, as extra arguments would let them be.
    command.add_option(name, names, help)
        ->type_name("NAME ...")
        ->expected(1, kMostNames)
        ->allow_extra_args(false)
        ->group(kVariablesGroup);
}

void AddVariableOptions(CLI::App& command, VariableOptions& variables) {
    AddText(command, "-t,--target", variables.fTarget, "Variable to be predicted", "NAME",
            kVariablesGroup)
        ->required();
    AddVariableList(
        command, "--factors", variables.fvFactors,
        "Categorical predictors, apart by blanks: names, FIRST..LAST, STEM*, ALL; what stands in "
        "double quotes is a name; default: all variables by level");
    AddVariableList(command, "--covariates", variables.fvCovariates, "Scale predictors, likewise");
    AddVariableList(command, "--except", variables.fvExcept, "Variables that are no predictors");
}

CLI::Option* AddDataOption(CLI::App& command, ProgramOptions& options) {
    return AddText(command, "-d,--data", options.fDataPath,
                   "CSV, TSV, Parquet, Arrow IPC file or stream; - is standard input", "FILE",
                   kDataGroup);
}

void AddReadingOptions(CLI::App& command, ProgramOptions& options, const char* memoryHelp) {
    embedded::OpenOptions& open = options.fOpen;
    command
        .add_option("--schema", open.fSchemaPath,
                    "Dictionary of the data (Table Schema); default FILE.schema.json if it exists")
        ->type_name("FILE")
        ->group(kDataGroup);
    command.add_option("--weight", open.fWeight, "Variable that holds the case weights")
        ->type_name("NAME")
        ->group(kDataGroup);
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
            ->group(kDataGroup);
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
        ->group(kDataGroup);
    command.add_option("--na", open.fvNaTexts, "Cells with this text are missing; may be repeated")
        ->type_name("TEXT")
        ->allow_extra_args(false)
        ->take_all()
        ->group(kDataGroup);
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
            ->group(kDataGroup);
    };
    character("--delimiter", open.fDelimiter, "Between cells of delimited text; default: detected");
    character("--quote", open.fQuote, "Around cells of delimited text, or none; default: detected");
    character("--decimal", open.fDecimalMark, "Decimal mark, . or , ; default: detected");
    AddWords<embedded::TextEncoding>(command, "--encoding", open.fEncoding,
                                     {{"detect", embedded::TextEncoding::kDetect},
                                      {"utf-8", embedded::TextEncoding::kUtf8},
                                      {"utf-16", embedded::TextEncoding::kUtf16},
                                      {"latin-1", embedded::TextEncoding::kLatin1}},
                                     "Of delimited text (detect)", kDataGroup);
    constexpr std::int32_t kMostThreads = 256;
    command
        .add_option("--threads", open.fThreads,
                    "Threads that read the data and go through them; no result depends on it (one "
                    "a processor)")
        ->check(Undescribed(CLI::Range(1, kMostThreads)))
        ->type_name("N")
        ->group(kDataGroup);
    command
        .add_option_function<std::uint64_t>(
            "--memory",
            [&options](std::uint64_t bytes) {
                options.fMemory = bytes;
                // 0 would mean that nothing was said.
                constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
                options.fOpen.fMemory =
                    static_cast<std::int64_t>(std::clamp<std::uint64_t>(bytes, 1, kMost));
            },
            memoryHelp)
        ->transform(Undescribed(CLI::AsSizeValue(false)))
        // Runs first: the transformation takes a sign for a very large size.
        ->check(CLI::Validator(
            [](const std::string& text) {
                return std::string(text.starts_with('-') ? "must not be negative" : "");
            },
            ""))
        ->type_name("SIZE")
        ->group(kDataGroup);
}

void AddReportOptions(CLI::App& command, OutputOptions& output) {
    AddText(command, "--html", output.fHtml, "Write the report as one HTML page", "FILE",
            kOutputGroup);
    AddText(command, "--json", output.fJson, "Write the report as JSON for programs", "FILE",
            kOutputGroup);
    command.add_flag("-q,--quiet", output.fbQuiet, "No text report and no progress")
        ->group(kOutputGroup);
    AddWords<ColorMode>(
        command, "--color", output.fColor,
        {{"auto", ColorMode::Auto}, {"always", ColorMode::Always}, {"never", ColorMode::Never}},
        "Colours in the text report (auto)", kOutputGroup);
    command
        .add_option("--width", output.fWidth, "Columns of the text report; default: the terminal's")
        ->check(Undescribed(CLI::Range(20, 10000)))
        ->type_name("COLUMNS")
        ->group(kOutputGroup);
}

void AddChartOptions(CLI::App& command, OutputOptions& output) {
    AddText(command, "--chart", output.fChart,
            "Write the chart as SVG; a further chart gets -2, -3, ... in its name", "FILE",
            kOutputGroup);
    AddText(command, "--vega", output.fVega, "Write the chart as Vega-Lite JSON, named likewise",
            "FILE", kOutputGroup);
}

void AddStateOptions(CLI::App& command, OutputOptions& output) {
    AddText(command, "--state", output.fState,
            "Write the engine's whole state, for predselect score, update and merge", "FILE",
            kOutputGroup);
    AddText(command, "--state-xml", output.fStateXml, "Write the engine's state as XML", "FILE",
            kOutputGroup);
}

void AddPmml(CLI::App& command, OutputOptions& output) {
    AddText(command, "--pmml", output.fPmml, "Write the model as PMML 4.3", "FILE", kOutputGroup);
}

void AddSave(CLI::App& command, OutputOptions& output, const char* help) {
    AddText(command, "--save", output.fSave, help, "FILE", kOutputGroup);
}

void AddSeed(CLI::App& command, ProgramOptions& options) {
    command
        .add_option("--seed", options.fSeed,
                    "Seed of the random numbers that draw a training sample (2026)")
        ->type_name("N")
        ->group(kDataGroup);
}

}  // namespace app
