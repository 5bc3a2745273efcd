#ifndef PREDSEL_APPS_COMMANDLINEPARTS_H
#define PREDSEL_APPS_COMMANDLINEPARTS_H

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

#include "apps/predselect/Options.h"

// What the declarations of the commands share: checks, and options that several of them have.

namespace app {

/// Headings of the help.
inline constexpr const char* kVariablesGroup = "Variables";
inline constexpr const char* kDataGroup = "Data";
inline constexpr const char* kOutputGroup = "Output";

/// The end of each command's help.
inline constexpr const char* kExitStatusHelp = R"(
Exit status: 0 done (also when nothing was selected), 1 the command failed, 2 wrong use or a command
that does not parse, 3 a file could not be read or written, 130 interrupted.)";

/// The library's checks describe themselves in terms of its own in the help.
CLI::Validator Undescribed(CLI::Validator check);
CLI::Validator OneOf(const std::vector<std::string>& words);
CLI::Validator Number();
/// A whole number, or the word auto.
CLI::Validator SizeOrAuto();

/// An option that takes a text as it is, but none that is empty; its type is what the help calls
/// it.
CLI::Option* AddText(CLI::App& command, const char* name, std::string& value, const char* help,
                     const char* type, const char* group);
/// An option with a closed set of words.
template <class Value>
void AddWords(CLI::App& command, const std::string& name, Value& target,
              const std::vector<std::pair<std::string, Value>>& words, const char* help,
              const char* group) {
    std::vector<std::string> names;
    std::string type;
    for (const auto& [word, value] : words) {
        names.push_back(word);
        type += (type.empty() ? "" : "|") + word;
    }
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
        ->type_name(type)
        ->group(group);
}
/// An option that takes a list of variables.
void AddVariableList(CLI::App& command, const char* name, std::vector<std::string>& names,
                     const char* help);

/// --target, --factors, --covariates, --except.
void AddVariableOptions(CLI::App& command, VariableOptions& variables);
/// --data, not required.
CLI::Option* AddDataOption(CLI::App& command, ProgramOptions& options);
/// How the data are to be read. The last is what the help says of --memory.
void AddReadingOptions(CLI::App& command, ProgramOptions& options,
                       const char* memoryHelp =
                           "Most memory for the columns of the data, such as 500M or 4G; what is "
                           "beyond waits in a temporary file (half of the machine's)");
/// Where the report goes; --chart and --vega for a command that draws charts.
void AddReportOptions(CLI::App& command, OutputOptions& output);
void AddChartOptions(CLI::App& command, OutputOptions& output);
/// --state and --state-xml.
void AddStateOptions(CLI::App& command, OutputOptions& output);
void AddSeed(CLI::App& command, ProgramOptions& options);
void AddPmml(CLI::App& command, OutputOptions& output);
/// --save, for a run that makes new variables.
void AddSave(CLI::App& command, OutputOptions& output, const char* help);

}  // namespace app

#endif  // PREDSEL_APPS_COMMANDLINEPARTS_H
