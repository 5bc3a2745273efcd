#include <algorithm>
#include <numeric>
#include <utility>

#include "embedded/HostSession.h"
#include "embedded/command/CharacterClasses.h"
#include "embedded/command/CommandFault.h"
#include "embedded/command/CommandPlaces.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/command/MessageParts.h"
#include "embedded/command/NewNames.h"
#include "embedded/command/VariableNames.h"
#include "host/Assertion.h"
#include "host/CommandLanguage.h"
#include "host/HostGlobals.h"
#include "host/Output.h"

using namespace TokenSequenceBase;

namespace {

using Tokens = std::vector<const TokenInfoObj*>;
using embedded::CommandTokens;
using embedded::FilledText;
using embedded::FindPlace;
using embedded::FoundText;
using embedded::PlaceOf;
using embedded::ShownText;
using embedded::TextPlace;

const CommandTokens& Command() { return embedded::HostSession::Active().Command(); }

/// Always false, for the caller to return.
bool Refuse(std::string_view key, const std::vector<std::string>& arguments, TextPlace place) {
    embedded::ReportFault(embedded::MakeFault(key, arguments, Command().Source(), place));
    return false;
}

/// A variable's name as it would be written, fit for a message.
std::string ShownName(std::string_view name) { return ShownText(embedded::WrittenName(name)); }

bool IsWord(const TokenInfoObj& token, std::string_view word) {
    return token.Kind() == TokenKind::Name && !token.IsQuoted() &&
           AreStringsEqualCase(token.getString(), word);
}

bool IsListWord(const TokenInfoObj& token) { return IsWord(token, "BY") || IsWord(token, "WITH"); }

/// True when the token follows the word without a blank.
bool IsRightBehind(const TokenInfoObj& word, const TokenInfoObj& token) {
    return !word.IsQuoted() && token.Line() == word.Line() &&
           token.Column() == word.Column() + embedded::CountCharacters(word.getString());
}

Tokens Pointers(const TokenList& tokens) {
    Tokens pointers;
    pointers.reserve(tokens.size());
    for (const TokenInfoObj& token : tokens) pointers.push_back(&token);
    return pointers;
}

/// The parts of `target [(qualifiers)] [BY factors] [WITH covariates]`.
struct OpeningList {
    const TokenInfoObj* fpTarget = nullptr;
    const TokenInfoObj* fpQualifierOpen = nullptr;  // its parenthesis, null without one
    TokenList fvQualifiers;
    const TokenInfoObj* fpBy = nullptr;  // the word, null without one
    const TokenInfoObj* fpWith = nullptr;
    Tokens fvFactors;
    Tokens fvCovariates;
};

TextPlace EndPlace() { return PlaceOf(Command().EndToken()); }

bool ReadTarget(const TokenList& tokens, std::size_t& at, OpeningList& list) {
    if (tokens.empty()) return Refuse("Target expected, found ^1...", {FoundText({})}, EndPlace());
    const TokenInfoObj& target = tokens.front();
    const std::int32_t next = tokens.size() > 1 ? tokens[1].getOperatorCode() : kOpNone;
    const bool several = IsWord(target, "ALL") || next == kOpRange || next == kOpStar;
    if (!target.IsVarName() || IsListWord(target))
        return Refuse("Target expected, found ^1...", {FoundText(target)}, PlaceOf(target));
    if (several) return Refuse("Target is one variable...", {}, PlaceOf(target));
    list.fpTarget = &target;
    at = 1;
    if (next != kOpLeftParen) return true;
    list.fpQualifierOpen = &tokens[at];
    for (++at; at < tokens.size(); ++at) {
        if (tokens[at].getOperatorCode() == kOpRightParen) {
            ++at;
            return true;
        }
        list.fvQualifiers.push_back(tokens[at]);
    }
    return Refuse("Parenthesis of ^1 not closed, found ^2...",
                  {ShownName(target.getString()), FoundText(Command().EndToken())},
                  PlaceOf(*list.fpQualifierOpen));
}

bool ReadPredictorLists(const TokenList& tokens, std::size_t at, OpeningList& list) {
    while (at < tokens.size()) {
        const TokenInfoObj& word = tokens[at];
        if (!IsListWord(word))
            return Refuse("BY or WITH expected, found ^1...", {FoundText(word)}, PlaceOf(word));
        const bool by = IsWord(word, "BY");
        const TokenInfoObj*& seen = by ? list.fpBy : list.fpWith;
        if (seen != nullptr)
            return Refuse("List ^1 twice...", {word.getUpperString()}, PlaceOf(word));
        seen = &word;
        Tokens& variables = by ? list.fvFactors : list.fvCovariates;
        for (++at; at < tokens.size() && !IsListWord(tokens[at]); ++at)
            variables.push_back(&tokens[at]);
        if (variables.empty())
            return Refuse("List ^1 empty...", {word.getUpperString()}, PlaceOf(word));
    }
    return true;
}

}  // namespace

/// Resolves lists against one dictionary.
struct VarSpecObj::Resolver {
    /// One name, range, pattern or ALL of a list.
    struct Element {
        const TokenInfoObj* fpToken;
        bool fbByName;
        std::vector<std::int32_t> fvVariables;
    };
    /// A list as it is written and the object that takes its variables.
    struct List {
        VarSpecObj* fpSpec;
        std::vector<Element> fvElements;
    };

    Resolver(const ProcedureDataSource& source, const std::vector<std::string>& subcommandNames)
        : fSource(source),
          fNames(source),
          fvSubcommandNames(subcommandNames),
          fvPlaces(static_cast<std::size_t>(source.ColumnCount()), nullptr),
          fvBlocked(static_cast<std::size_t>(source.ColumnCount()), false) {}

    const std::string& NameOf(std::int32_t index) const {
        return fSource.GetVariable(index).GetName();
    }
    bool IsString(std::int32_t index) const { return fSource.GetVariable(index).GetType() != 0; }

    /// The variable of a name, or -1 after a message.
    std::int32_t Resolve(std::string_view name, bool quoted, TextPlace place) const {
        const std::vector<std::int32_t> found = fNames.Find(name);
        if (found.size() == 1) return found.front();
        if (found.empty()) {
            Refuse("Unknown variable ^1 ^2...", {ShownName(name), UnknownHint(name, quoted)},
                   place);
            return -1;
        }
        std::vector<std::string> names;
        for (const std::int32_t index : found) names.push_back(ShownName(NameOf(index)));
        Refuse("Variable name ^1 ambiguous among ^2...", {ShownName(name), embedded::AllOf(names)},
               place);
        return -1;
    }

    std::int32_t Resolve(const TokenInfoObj& token) const {
        return Resolve(token.getString(), token.IsQuoted(), PlaceOf(token));
    }

    /// The end of the sentence that there is no such variable.
    std::string UnknownHint(std::string_view name, bool quoted) const {
        const auto isName = [name](std::string_view other) {
            return AreStringsEqualCase(name, other);
        };
        if (!quoted && std::any_of(fvSubcommandNames.begin(), fvSubcommandNames.end(), isName))
            return FilledText("a subcommand begins with a slash...", {});
        if (!quoted &&
            std::any_of(embedded::kCommandNames.begin(), embedded::kCommandNames.end(), isName))
            return FilledText("a command ends with a semicolon...", {});
        std::vector<std::string> names;
        for (const std::string& near : fNames.Nearest(name)) names.push_back(ShownName(near));
        return names.empty() ? FilledText("no variable has a similar name...", {})
                             : FilledText("did you mean ^1?", {embedded::OneOf(names)});
    }

    bool ReadList(const Tokens& tokens, List& list) const {
        bool afterElement = false;
        for (std::size_t at = 0; at < tokens.size();) {
            const bool comma = tokens[at]->getOperatorCode() == kOpComma;
            if (comma && (!afterElement || at + 1 == tokens.size()))
                return RefuseElement(*tokens[at], *list.fpSpec);
            if (comma) {
                ++at;
            } else if (!ReadElement(tokens, at, list)) {
                return false;
            }
            afterElement = !comma;
        }
        return true;
    }

    bool RefuseElement(const TokenInfoObj& token, const VarSpecObj& spec) const {
        std::string_view key = "Variable name of ^1 expected, found ^2...";
        if (token.IsNumber() || token.getOperatorCode() == kOpMinus)
            key = "Variable name of ^1 expected, found ^2, quotes needed...";
        if (token.Kind() == TokenKind::String)
            key = "Variable name of ^1 expected, found string ^2...";
        if (token.getOperatorCode() == kOpStar) key = "Pattern of ^1 without stem...";
        return Refuse(key, {spec.fRole, FoundText(token)}, PlaceOf(token));
    }

    bool ReadElement(const Tokens& tokens, std::size_t& at, List& list) const {
        const TokenInfoObj& token = *tokens[at];
        if (!token.IsVarName()) return RefuseElement(token, *list.fpSpec);
        const std::int32_t next =
            at + 1 < tokens.size() ? tokens[at + 1]->getOperatorCode() : kOpNone;
        Element element{&token, false, {}};
        if (next == kOpRange) {
            if (!ReadRange(tokens, at, *list.fpSpec, element)) return false;
            at += 3;
        } else if (next == kOpStar) {
            if (!ReadPattern(tokens, at, *list.fpSpec, element)) return false;
            at += 2;
        } else if (IsWord(token, "ALL")) {
            element.fvVariables.resize(static_cast<std::size_t>(fSource.ColumnCount()));
            std::iota(element.fvVariables.begin(), element.fvVariables.end(), 0);
            ++at;
        } else {
            const std::int32_t index = Resolve(token);
            if (index < 0) return false;
            element.fbByName = true;
            element.fvVariables = {index};
            ++at;
        }
        list.fvElements.push_back(std::move(element));
        return true;
    }

    bool ReadRange(const Tokens& tokens, std::size_t at, const VarSpecObj& spec,
                   Element& element) const {
        if (at + 2 == tokens.size())
            return Refuse("Range without end...", {}, PlaceOf(*tokens[at + 1]));
        const TokenInfoObj& end = *tokens[at + 2];
        if (!end.IsVarName()) return RefuseElement(end, spec);
        const std::int32_t first = Resolve(*tokens[at]);
        const std::int32_t last = first < 0 ? -1 : Resolve(end);
        if (last < 0) return false;
        if (last < first)
            return Refuse("Range from ^1 to ^2 reversed...",
                          {ShownName(NameOf(first)), ShownName(NameOf(last))},
                          PlaceOf(*tokens[at]));
        element.fvVariables.resize(static_cast<std::size_t>(last - first) + 1);
        std::iota(element.fvVariables.begin(), element.fvVariables.end(), first);
        return CheckKind(spec, element, *tokens[at]);
    }

    bool ReadPattern(const Tokens& tokens, std::size_t at, const VarSpecObj& spec,
                     Element& element) const {
        const TokenInfoObj& stem = *tokens[at];
        const TokenInfoObj& star = *tokens[at + 1];
        const bool goesOn = at + 2 < tokens.size() && tokens[at + 2]->IsVarName() &&
                            tokens[at + 2]->Line() == star.Line() &&
                            tokens[at + 2]->Column() == star.Column() + 1;
        if (!IsRightBehind(stem, star) || goesOn)
            return Refuse("Pattern is a plain word and a star...", {}, PlaceOf(star));
        element.fvVariables = fNames.FindByStem(stem.getString());
        if (element.fvVariables.empty())
            return Refuse("Pattern ^1 matches no variable...", {ShownText(stem.getString()) + "*"},
                          PlaceOf(stem));
        return CheckKind(spec, element, stem);
    }

    /// False, with a message, when a range or pattern holds string variables only and the list
    /// wants numeric ones.
    bool CheckKind(const VarSpecObj& spec, const Element& element,
                   const TokenInfoObj& token) const {
        const bool onlyStrings =
            spec.fbNumericOnly &&
            std::all_of(element.fvVariables.begin(), element.fvVariables.end(),
                        [this](std::int32_t index) { return IsString(index); });
        return !onlyStrings || Refuse("Only string variables in list, ^1 needs numeric...",
                                      {spec.fRole}, PlaceOf(token));
    }

    /// Gives the variables that a list names by name their place in it, before ranges, patterns
    /// and ALL of any list take what is left.
    bool PlaceNamed(const List& list, std::int32_t repeatOption) {
        for (const Element& element : list.fvElements) {
            if (!element.fbByName) continue;
            const std::int32_t index = element.fvVariables.front();
            const VarSpecObj*& place = fvPlaces[static_cast<std::size_t>(index)];
            if (list.fpSpec->fbNumericOnly && IsString(index))
                return Refuse("Variable ^1 is a string, ^2 needs numeric...",
                              {ShownName(NameOf(index)), list.fpSpec->fRole},
                              PlaceOf(*element.fpToken));
            if (place == list.fpSpec && repeatOption == 0)
                return Refuse("Variable ^1 twice in ^2...",
                              {ShownName(NameOf(index)), list.fpSpec->fRole},
                              PlaceOf(*element.fpToken));
            if (place != nullptr && place != list.fpSpec)
                return Refuse("Variable ^1 both in ^2 and in ^3...",
                              {ShownName(NameOf(index)), place->fRole, list.fpSpec->fRole},
                              PlaceOf(*element.fpToken));
            place = list.fpSpec;
        }
        return true;
    }

    /// Makes all variables that are left predictors by their measurement level.
    void FillByLevel(VarSpecObj& factors, VarSpecObj& covariates) const {
        for (std::int32_t index = 0; index < fSource.ColumnCount(); ++index) {
            if (fvBlocked[static_cast<std::size_t>(index)]) continue;
            const bool scale =
                fSource.GetVariable(index).GetMeasurementLevel() == kLevelScale && !IsString(index);
            (scale ? covariates : factors).Add(index, {0, 0, false});
        }
    }

    void Block(std::int32_t index) { fvBlocked[static_cast<std::size_t>(index)] = true; }

    /// Takes a list's variables that have no place elsewhere and are not blocked.
    void Fill(const List& list) {
        for (const Element& element : list.fvElements)
            for (const std::int32_t index : element.fvVariables) {
                const auto variable = static_cast<std::size_t>(index);
                const bool leftOut =
                    !element.fbByName && (fvPlaces[variable] != nullptr ||
                                          (list.fpSpec->fbNumericOnly && IsString(index)));
                if (fvBlocked[variable] || leftOut) continue;
                list.fpSpec->Add(
                    index, {element.fpToken->Line(), element.fpToken->Column(), element.fbByName});
                Block(index);
            }
    }

    const ProcedureDataSource& fSource;  // borrowed from the VarSpecObj, as the names
    embedded::VariableNames fNames;
    const std::vector<std::string>& fvSubcommandNames;
    std::vector<const VarSpecObj*> fvPlaces;  // where a variable is named by name, null: nowhere
    std::vector<bool> fvBlocked;              // taken or excluded
};

VarSpecObj::VarSpecObj(std::string parameter, std::string subcommand,
                       const CommandDescriptor& command, const ProcedureDataSource& source,
                       bool numericOnly)
    : VarSpecObj(std::move(parameter), std::move(subcommand), command.Name(), source, numericOnly) {
    for (const SubComDescriptor& subCom : command.SubComs())
        if (!subCom.Name().empty()) fvSubcommandNames.push_back(subCom.Name());
}

VarSpecObj::VarSpecObj(std::string parameter, std::string subcommand, const std::string& command,
                       const ProcedureDataSource& source, bool numericOnly)
    : fParameter(std::move(parameter)),
      fSubcommand(std::move(subcommand)),
      fRole(fSubcommand.empty() ? FilledText(command, {}) : fSubcommand + " " + fParameter),
      fpSource(&source),
      fbNumericOnly(numericOnly) {}

void VarSpecObj::Clear() {
    fvIndices.clear();
    fvOrigins.clear();
}

void VarSpecObj::Add(std::int32_t index, Origin origin) {
    fvIndices.push_back(index);
    fvOrigins.push_back(origin);
}

bool VarSpecObj::SetVariable(std::int32_t index) {
    PREDSEL_ASSERT(index >= 0 && index < fpSource->ColumnCount(), "index within the dictionary");
    Clear();
    const KOLT_Variable& variable = fpSource->GetVariable(index);
    if (fbNumericOnly && variable.GetType() != 0)
        return Refuse("Variable ^1 is a string, ^2 needs numeric...",
                      {ShownName(variable.GetName()), fRole}, {});
    Add(index, {0, 0, true});
    return true;
}

bool VarSpecObj::ValidateVariables(const TokenList& tokens, std::int32_t repeatOption) {
    Clear();
    Resolver resolver(*fpSource, fvSubcommandNames);
    Resolver::List list{this, {}};
    if (!resolver.ReadList(Pointers(tokens), list) || !resolver.PlaceNamed(list, repeatOption))
        return false;
    resolver.Fill(list);
    return true;
}

std::int32_t VarSpecObj::ValidateVariable(const KoltVarName& name) {
    Clear();
    const Resolver resolver(*fpSource, fvSubcommandNames);
    const TextPlace place = FindPlace(Command(), fSubcommand, fParameter, name.GetString());
    const std::int32_t index = resolver.Resolve(name.GetString(), true, place);
    if (index < 0) return index;
    if (fbNumericOnly && resolver.IsString(index)) {
        Refuse("Variable ^1 is a string, ^2 needs numeric...",
               {ShownName(resolver.NameOf(index)), fRole}, place);
        return -1;
    }
    Add(index, {place.fLine, place.fColumn, true});
    return index;
}

bool VarSpecObj::ValidateRegrVarList(const TokenList& tokens, VarSpecObj& factors,
                                     VarSpecObj& covariates, std::int32_t repeatOption,
                                     const std::vector<const VarSpecObj*>& exclusion) {
    for (VarSpecObj* spec : {this, &factors, &covariates}) spec->Clear();
    fvQualifiers.clear();
    fRole = FilledText("the target", {});
    factors.fRole = FilledText("the BY list", {});
    covariates.fRole = FilledText("the WITH list", {});

    OpeningList written;
    std::size_t at = 0;
    if (!ReadTarget(tokens, at, written) || !ReadPredictorLists(tokens, at, written)) return false;
    const TokenInfoObj& target = *written.fpTarget;
    const bool predictorsNamed = written.fpBy != nullptr || written.fpWith != nullptr;
    if (!predictorsNamed && !fbAllVarsByDefault)
        return Refuse("BY or WITH expected, found ^1...", {FoundText(Command().EndToken())},
                      EndPlace());
    if (written.fpQualifierOpen != nullptr && (!fbAllowQualifiers || written.fvQualifiers.empty()))
        return Refuse(fbAllowQualifiers ? "Variable ^1 has invalid qualifier..."
                                        : "Variable ^1 takes no qualifier...",
                      {ShownName(target.getString())}, PlaceOf(*written.fpQualifierOpen));

    Resolver resolver(*fpSource, fvSubcommandNames);
    Resolver::List targetList{this, {}}, factorList{&factors, {}}, covariateList{&covariates, {}};
    if (!resolver.ReadList({&target}, targetList) || !resolver.PlaceNamed(targetList, 0) ||
        !resolver.ReadList(written.fvFactors, factorList) ||
        !resolver.ReadList(written.fvCovariates, covariateList) ||
        !resolver.PlaceNamed(factorList, repeatOption) ||
        !resolver.PlaceNamed(covariateList, repeatOption))
        return false;
    resolver.Fill(targetList);
    for (const VarSpecObj* other : exclusion)
        for (std::size_t i = 0; i < other->fvIndices.size(); ++i) {
            // Left out by its own name and the target at once: one of the two is a mistake.
            if (other->fvIndices[i] == GetValidVarInd() && other->fvOrigins[i].fbByName)
                return RefuseCommonVar(0, *other);
            resolver.Block(other->fvIndices[i]);
        }
    resolver.Fill(factorList);
    resolver.Fill(covariateList);
    if (!predictorsNamed) resolver.FillByLevel(factors, covariates);
    fvQualifiers = std::move(written.fvQualifiers);
    if (!factors.fvIndices.empty() || !covariates.fvIndices.empty()) return true;
    BpError(BpString(fNoVarsKey, true), kBpErrorShow, kBpError);
    return false;
}

/// Reports that the variable at a position of this list is in the other one too; always false.
bool VarSpecObj::RefuseCommonVar(std::size_t position, const VarSpecObj& other) const {
    const std::int32_t index = fvIndices[position];
    const auto there = std::find(other.fvIndices.begin(), other.fvIndices.end(), index);
    const Origin& mine = fvOrigins[position];
    const Origin& theirs =
        other.fvOrigins[static_cast<std::size_t>(there - other.fvIndices.begin())];
    const Origin& shown = mine.fLine > 0 ? mine : theirs;
    return Refuse("Variable ^1 both in ^2 and in ^3...",
                  {ShownName(fpSource->GetVariable(index).GetName()), fRole, other.fRole},
                  {shown.fLine, shown.fColumn});
}

bool VarSpecObj::CheckCommonVars(const VarSpecObj& other) const {
    const std::vector<bool> taken = other.Members();
    for (std::size_t i = 0; i < fvIndices.size(); ++i)
        if (taken[static_cast<std::size_t>(fvIndices[i])]) return RefuseCommonVar(i, other);
    return true;
}

bool VarSpecObj::ExcludeCommonVars(const std::vector<const VarSpecObj*>& others,
                                   std::int32_t /*level*/) {
    for (const VarSpecObj* other : others) {
        const std::vector<bool> dropped = other->Members();
        std::size_t kept = 0;
        for (std::size_t i = 0; i < fvIndices.size(); ++i) {
            if (dropped[static_cast<std::size_t>(fvIndices[i])]) continue;
            fvIndices[kept] = fvIndices[i];
            fvOrigins[kept] = fvOrigins[i];
            ++kept;
        }
        fvIndices.resize(kept);
        fvOrigins.resize(kept);
    }
    return !fvIndices.empty();
}

/// By dictionary index, whether a variable is in the list.
std::vector<bool> VarSpecObj::Members() const {
    std::vector<bool> members(static_cast<std::size_t>(fpSource->ColumnCount()), false);
    for (const std::int32_t index : fvIndices) members[static_cast<std::size_t>(index)] = true;
    return members;
}

std::int32_t VarSpecObj::CheckNewVariable(const KoltVarName& name) const {
    const std::string& text = name.GetString();
    if (!embedded::IsTidyName(text)) {
        RefuseName(text);
        return 0;
    }
    const TextPlace place = FindPlace(Command(), fSubcommand, fParameter, text);
    const std::vector<std::int32_t> found = embedded::VariableNames(*fpSource).Find(text);
    if (found.empty()) return -1;
    Refuse("New name ^1 in ^2 taken...",
           {ShownName(fpSource->GetVariable(found.front()).GetName()), fRole}, place);
    return found.front();
}

bool VarSpecObj::NewVarNameByRoot(const KoltVarName& root, KoltVarName& nameOut) const {
    const std::string& text = root.GetString();
    if (!embedded::IsTidyName(text)) return RefuseName(text);
    const embedded::VariableNames names(*fpSource);
    const auto isTaken = [&names](const std::string& name) { return !names.Find(name).empty(); };
    nameOut = KoltVarName(embedded::FreeName(text, isTaken));
    return true;
}

bool VarSpecObj::NewVarNamesByRoot(const KoltVarName& root, std::int32_t count,
                                   std::vector<KoltVarName>& namesOut) const {
    namesOut.clear();
    const std::string& text = root.GetString();
    if (!embedded::IsTidyName(text)) return RefuseName(text);
    const embedded::VariableNames names(*fpSource);
    const auto isTaken = [&names](const std::string& name) { return !names.Find(name).empty(); };
    for (std::string& name : embedded::FreeNames(text, count, isTaken)) {
        namesOut.emplace_back(std::move(name));
    }
    return true;
}

bool VarSpecObj::RefuseName(const std::string& name) const {
    return Refuse("Invalid new name ^1 in ^2...", {ShownName(name), fRole},
                  FindPlace(Command(), fSubcommand, fParameter, name));
}

bool VarSpecObj::IsCatVar() const {
    if (fvIndices.empty()) return false;
    const KOLT_Variable& variable = fpSource->GetVariable(fvIndices.front());
    const std::int32_t level = variable.GetMeasurementLevel();
    return variable.GetType() != 0 || level == kLevelNominal || level == kLevelOrdinal;
}

std::string VarSpecObj::GetFirstName() const {
    return fvIndices.empty() ? std::string() : fpSource->GetVariable(fvIndices.front()).GetName();
}
