#ifndef PREDSEL_BACKEND_PRSGRAMMAR_H
#define PREDSEL_BACKEND_PRSGRAMMAR_H

#include <cstdint>
#include <memory>
#include <span>

#include "host/CommandLanguage.h"

/// The language of SELECTPRED and NAIVEBAYES as data: every subcommand and parameter with its value
/// form, bounds, words and default. PRSParser declares it to the host; docs/command-language.md
/// describes it to users.
namespace PRSGrammar {

/// Which commands a row serves; added up.
enum Commands : std::uint8_t { kNoCommand = 0, kSelectPred = 1, kNaiveBayes = 2, kBoth = 3 };

struct SubComRow {
    const char* fName;  // empty for the variable list that opens a command
    SubComSpec fSpec;
    bool fbMandatory;
    Commands fBuilt;     // commands whose declaration builds it
    Commands fAccepted;  // commands that accept it; the others leave what they built out
};

/// A bound of a number or integer.
struct Bound {
    bool fbSet = false;
    double fValue = 0;
    BdryOption fOption = kBdryIncluded;
};

struct ParamRow {
    const char* fSubCom;
    const char* fName;
    ParamSpec fSpec;
    Commands fCommands = kBoth;
    bool fbMandatory = false;
    bool fbValueOptional = false;
    Bound fLower{};
    Bound fUpper{};
    /// The parameter whose declaration receives fUpper in place of this one; null for its own.
    const char* fpUpperGoesTo = nullptr;
    std::span<const char* const> fvWords{};
    const char* fpQualifier = nullptr;
    const char* fDefault = "";  // what holds when the parameter is absent, in the user's words
};

/// In the order of declaration, parameters by subcommand.
std::span<const SubComRow> SubComs();
std::span<const ParamRow> Params();

/// The declaration of one command.
std::unique_ptr<CommandDescriptor> MakeDescriptor(const char* commandName, Commands command);

}  // namespace PRSGrammar

#endif  // PREDSEL_BACKEND_PRSGRAMMAR_H
