#include <algorithm>
#include <array>
#include <utility>

#include "embedded/HostSession.h"
#include "embedded/command/CommandFault.h"
#include "embedded/command/CommandPlaces.h"
#include "embedded/command/MessageParts.h"
#include "host/CommandLanguage.h"
#include "host/Output.h"

namespace {

using embedded::CommandTokens;
using embedded::FilledText;
using embedded::FindPlace;
using embedded::ShownText;
using embedded::TextPlace;

const CommandTokens& Command() { return embedded::HostSession::Active().Command(); }

void Refuse(std::string_view key, const std::vector<std::string>& arguments, TextPlace place) {
    embedded::ReportFault(embedded::MakeFault(key, arguments, Command().Source(), place));
}

/// "SUBSET MAXSIZE", or one of the two when the other is empty.
std::string Joined(std::string_view subcommand, std::string_view parameter) {
    std::string joined(subcommand);
    if (!subcommand.empty() && !parameter.empty()) joined += ' ';
    return joined.append(parameter);
}

/// The end of a sentence on a value that only its procedure can judge: what it may be.
std::string FormsOf(std::string_view parameter) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kForms = {
        {{"MAXSIZE", "Forms of MAXSIZE..."},
         {"BESTSUBSET", "Forms of BESTSUBSET..."},
         {"PREDPROB", "Forms of PREDPROB..."}}};
    const auto found = std::find_if(kForms.begin(), kForms.end(), [parameter](const auto& form) {
        return form.first == parameter;
    });
    return FilledText(found == kForms.end() ? "Forms unknown..." : found->second, {});
}

void Warn(std::string_view key, const std::vector<std::string>& arguments) {
    BpComposite text(key, true);
    for (const std::string& argument : arguments) text.Add(BpString(argument, false));
    text.Finish();
    BpError(text, kBpErrorShow, kBpWarning);
}

}  // namespace

void ParserMessage::DisableSplit() const { Warn("Split files ignored by ^1...", {fCommandName}); }

void ParserMessage::NoTableRequested() const {
    Warn("No table requested of ^1...", {fCommandName});
}

std::string ParserMessage::GetTranslatedText(std::string_view key,
                                             const std::vector<std::string>& arguments) const {
    return FilledText(key, arguments);
}

void ParserMessage::ParamExclusive(std::string_view first, std::string_view second,
                                   std::string_view subcommand) const {
    Refuse("Parameters ^1 and ^2 exclusive in ^3...",
           {std::string(first), std::string(second), std::string(subcommand)},
           FindPlace(Command(), subcommand, second, ""));
}

void ParserMessage::InvalidParamWithWeight(std::string_view parameter,
                                           std::string_view subcommand) const {
    Refuse("Parameter ^1 not with a weight...", {Joined(subcommand, parameter)},
           FindPlace(Command(), subcommand, parameter, ""));
}

void ParserMessage::NeedDepVarCat(std::string_view variable, std::string_view parameter,
                                  std::string_view subcommand) const {
    Refuse("Target ^1 of ^2 not categorical...", {ShownText(variable), fCommandName},
           FindPlace(Command(), subcommand, parameter, variable));
}

void ParserMessage::VariableNoQualif(std::string_view variable, std::string_view parameter,
                                     std::string_view subcommand) const {
    Refuse("Variable ^1 takes no qualifier...", {ShownText(variable)},
           FindPlace(Command(), subcommand, parameter, variable));
}

void ParserMessage::VariableInvalidQualif(std::string_view variable, std::string_view parameter,
                                          std::string_view subcommand) const {
    Refuse("Variable ^1 has invalid qualifier...", {ShownText(variable)},
           FindPlace(Command(), subcommand, parameter, variable));
}

void ParserMessage::ParamExclAnyOther(std::string_view parameter,
                                      std::string_view subcommand) const {
    Refuse("Parameter ^1 excludes others in ^2...",
           {std::string(parameter), std::string(subcommand)},
           FindPlace(Command(), subcommand, parameter, ""));
}

void ParserMessage::InvalidParam(std::string_view text, std::string_view subcommand) const {
    Refuse("Invalid parameter ^1 in ^2...", {ShownText(text), std::string(subcommand)},
           FindPlace(Command(), subcommand, "", text));
}

void ParserMessage::InvalidParamOption(std::string_view text, std::string_view parameter,
                                       std::string_view subcommand) const {
    Refuse("Invalid option ^1 of ^2 ^3...",
           {ShownText(text), Joined(subcommand, parameter), FormsOf(parameter)},
           FindPlace(Command(), subcommand, parameter, text));
}

void ParserMessage::WrongValueType(std::string_view parameter, std::string_view subcommand) const {
    Refuse("Wrong form of value of ^1 ^2...", {Joined(subcommand, parameter), FormsOf(parameter)},
           FindPlace(Command(), subcommand, parameter, ""));
}

void ParserMessage::ParamValueBreakBdry(double value, double lower, std::int32_t lowerOption,
                                        double upper, std::int32_t upperOption,
                                        std::string_view parameter,
                                        std::string_view subcommand) const {
    const std::string shown = embedded::PlainNumber(value);
    Refuse("Value ^1 of ^2 not ^3...",
           {shown, Joined(subcommand, parameter),
            embedded::BoundsText(lower, lowerOption, upper, upperOption)},
           FindPlace(Command(), subcommand, parameter, shown));
}

void ParserMessage::NeedSubComForParam(std::string_view neededSubcommand,
                                       std::string_view parameter, std::string_view option) const {
    // The parameter comes with its subcommand: "SUBSET BESTSUBSET".
    const std::size_t blank = parameter.find(' ');
    const std::string_view subcommand = parameter.substr(0, blank);
    const std::string_view word =
        blank == std::string_view::npos ? std::string_view() : parameter.substr(blank + 1);
    Refuse("Subcommand ^1 needed for ^2 of ^3...",
           {std::string(neededSubcommand), std::string(option), std::string(parameter)},
           FindPlace(Command(), subcommand, word, option));
}

void ParserMessage::InvalidVarName(std::string_view text, std::string_view parameter,
                                   std::string_view subcommand) const {
    Refuse("Invalid variable name ^1 in ^2...", {ShownText(text), Joined(subcommand, parameter)},
           FindPlace(Command(), subcommand, parameter, text));
}

void ParserMessage::ParamNeedInteger(std::string_view parameter,
                                     std::string_view subcommand) const {
    // The parameter may come with more than its name: "PREDPROB root".
    const std::string_view word = parameter.substr(0, parameter.find(' '));
    Refuse("Parameter ^1 needs an integer above 0...", {Joined(subcommand, parameter)},
           FindPlace(Command(), subcommand, word, ""));
}
