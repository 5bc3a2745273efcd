#ifndef PREDSEL_APPS_COMPLETION_H
#define PREDSEL_APPS_COMPLETION_H

#include <CLI/CLI.hpp>
#include <string>

namespace app {

/// A completion script for "bash", "zsh" or "fish", made from the command line's own declaration.
std::string CompletionScript(const CLI::App& program, const std::string& shell);

}  // namespace app

#endif  // PREDSEL_APPS_COMPLETION_H
