#include "apps/predselect/Completion.h"

#include <fmt/format.h>

#include <string>
#include <vector>

namespace app {
namespace {

struct OptionInfo {
    std::vector<std::string> fvNames;   // with their dashes
    std::vector<std::string> fvValues;  // empty when any value goes
    std::string fHelp;
    bool fbTakesValue = false;
    bool fbFile = false;
};

struct CommandInfo {
    std::string fName;
    std::string fHelp;
    std::vector<OptionInfo> fvOptions;
    std::vector<std::string> fvWords;  // what its argument may be; empty: a file or anything
};

std::vector<std::string> SplitAt(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == separator) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    return parts;
}

OptionInfo InfoOf(const CLI::Option& option) {
    OptionInfo info;
    for (const std::string& name : option.get_snames()) info.fvNames.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) info.fvNames.push_back("--" + name);
    info.fHelp = option.get_description();
    info.fbTakesValue = option.get_items_expected_max() > 0;
    const std::string type = option.get_type_name();
    info.fbFile = type.rfind("FILE", 0) == 0;
    if (type.find('|') != std::string::npos && type.find('=') == std::string::npos) {
        info.fvValues = SplitAt(type.substr(0, type.find(':')), '|');
    }
    return info;
}

std::vector<CommandInfo> CommandsOf(const CLI::App& program) {
    std::vector<CommandInfo> commands;
    for (const CLI::App* command : program.get_subcommands({})) {
        CommandInfo& info = commands.emplace_back();
        info.fName = command->get_name();
        info.fHelp = command->get_description();
        for (const CLI::Option* option : command->get_options()) {
            if (!option->get_positional()) info.fvOptions.push_back(InfoOf(*option));
        }
        if (info.fName == "completion") info.fvWords = {"bash", "zsh", "fish"};
    }
    return commands;
}

std::string Joined(const std::vector<std::string>& words, const char* separator) {
    return fmt::format("{}", fmt::join(words, separator));
}

std::vector<std::string> NamesOf(const std::vector<CommandInfo>& commands) {
    std::vector<std::string> names;
    for (const CommandInfo& command : commands) names.push_back(command.fName);
    return names;
}

// Inside single quotes of a shell.
std::string Quoted(const std::string& text) {
    std::string quoted;
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted;
}

std::string BashScript(const std::vector<CommandInfo>& commands) {
    std::string script =
        "_predselect() {\n"
        "    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}\n"
        "    COMPREPLY=()\n"
        "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n";
    script += fmt::format(
        "        COMPREPLY=($(compgen -W '{} --help --version' -- \"$current\"))\n"
        "        return\n    fi\n    case ${{COMP_WORDS[1]}} in\n",
        Joined(NamesOf(commands), " "));
    for (const CommandInfo& command : commands) {
        script += fmt::format("    {})\n        case $previous in\n", command.fName);
        std::vector<std::string> all;
        for (const OptionInfo& option : command.fvOptions) {
            all.insert(all.end(), option.fvNames.begin(), option.fvNames.end());
            if (option.fvValues.empty()) continue;
            script += fmt::format(
                "        {})\n            COMPREPLY=($(compgen -W '{}' -- \"$current\"))\n"
                "            return ;;\n",
                Joined(option.fvNames, " | "), Joined(option.fvValues, " "));
        }
        script += fmt::format(
            "        esac\n        if [[ $current == -* ]]; then\n"
            "            COMPREPLY=($(compgen -W '{}' -- \"$current\"))\n        else\n"
            "            COMPREPLY=($(compgen {} -- \"$current\"))\n        fi ;;\n",
            Joined(all, " "),
            command.fvWords.empty() ? "-f" : "-W '" + Joined(command.fvWords, " ") + "'");
    }
    return script + "    esac\n}\ncomplete -o filenames -F _predselect predselect\n";
}

// A colon and brackets have a meaning in the descriptions of _arguments.
std::string ZshHelp(const std::string& text) {
    std::string help;
    for (const char c : Quoted(text)) {
        if (c == '[' || c == ']' || c == ':') help += '\\';
        help += c;
    }
    return help;
}

std::string ZshScript(const std::vector<CommandInfo>& commands) {
    std::string script =
        "#compdef predselect\n_predselect() {\n    local -a commands\n    commands=(\n";
    for (const CommandInfo& command : commands) {
        script += fmt::format("        '{}:{}'\n", command.fName, ZshHelp(command.fHelp));
    }
    script +=
        "    )\n    if (( CURRENT == 2 )); then\n        _describe command commands\n"
        "        return\n    fi\n    local command=$words[2]\n    shift words\n    (( CURRENT-- "
        "))\n"
        "    case $command in\n";
    for (const CommandInfo& command : commands) {
        script += fmt::format("    {})\n        _arguments -s", command.fName);
        for (const OptionInfo& option : command.fvOptions) {
            const std::string value = !option.fbTakesValue ? ""
                                      : !option.fvValues.empty()
                                          ? ":value:(" + Joined(option.fvValues, " ") + ")"
                                      : option.fbFile ? ":file:_files"
                                                      : ":value:";
            for (const std::string& name : option.fvNames) {
                script +=
                    fmt::format(" \\\n            '*{}[{}]{}'", name, ZshHelp(option.fHelp), value);
            }
        }
        script += command.fvWords.empty() ? std::string(" \\\n            '*:file:_files' ;;\n")
                                          : fmt::format(" \\\n            '1:shell:({})' ;;\n",
                                                        Joined(command.fvWords, " "));
    }
    // As a file in $fpath it is the function itself; sourced, it declares it.
    return script +
           "    esac\n}\nif [ \"$funcstack[1]\" = _predselect ]; then\n    _predselect \"$@\"\n"
           "else\n    compdef _predselect predselect\nfi\n";
}

std::string FishScript(const std::vector<CommandInfo>& commands) {
    std::string script;
    for (const CommandInfo& command : commands) {
        script += fmt::format("complete -c predselect -n __fish_use_subcommand -f -a {} -d '{}'\n",
                              command.fName, Quoted(command.fHelp));
    }
    for (const CommandInfo& command : commands) {
        const std::string within = fmt::format(
            "complete -c predselect -n '__fish_seen_subcommand_from {}'", command.fName);
        if (!command.fvWords.empty()) {
            script += fmt::format("{} -f -a '{}'\n", within, Joined(command.fvWords, " "));
        }
        for (const OptionInfo& option : command.fvOptions) {
            script += within;
            for (const std::string& name : option.fvNames) {
                script +=
                    name.rfind("--", 0) == 0 ? " -l " + name.substr(2) : " -s " + name.substr(1);
            }
            if (!option.fvValues.empty()) {
                script += fmt::format(" -x -a '{}'", Joined(option.fvValues, " "));
            } else if (option.fbTakesValue) {
                script += option.fbFile ? " -r -F" : " -x";
            }
            script += fmt::format(" -d '{}'\n", Quoted(option.fHelp));
        }
    }
    return script;
}

}  // namespace

std::string CompletionScript(const CLI::App& program, const std::string& shell) {
    const std::vector<CommandInfo> commands = CommandsOf(program);
    if (shell == "bash") return BashScript(commands);
    if (shell == "zsh") return ZshScript(commands);
    return FishScript(commands);
}

}  // namespace app
