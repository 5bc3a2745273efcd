#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "embedded/HostSession.h"
#include "embedded/command/CharacterClasses.h"
#include "embedded/command/CommandFault.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/command/MessageParts.h"
#include "host/CommandLanguage.h"

namespace embedded {

namespace {

using namespace TokenSequenceBase;

constexpr double kLargestInteger = std::numeric_limits<std::int32_t>::max();

bool IsWord(const TokenInfoObj& token) {
    return token.Kind() == TokenKind::Name && !token.IsQuoted();
}

template <class Descriptor>
std::vector<std::string> NamesOf(const std::vector<Descriptor>& descriptors) {
    std::vector<std::string> names;
    for (const Descriptor& descriptor : descriptors)
        if (!descriptor.Name().empty()) names.push_back(descriptor.Name());
    return names;
}

template <class Descriptor>
const Descriptor* FindByWord(const std::vector<Descriptor>& descriptors,
                             const TokenInfoObj& token) {
    if (!IsWord(token)) return nullptr;
    const std::string word = token.getUpperString();
    const auto found =
        std::find_if(descriptors.begin(), descriptors.end(),
                     [&word](const Descriptor& descriptor) { return descriptor.Name() == word; });
    return found == descriptors.end() ? nullptr : &*found;
}

bool IsInWords(const TokenInfoObj& token, const std::vector<std::string>& words) {
    return IsWord(token) &&
           std::find(words.begin(), words.end(), token.getUpperString()) != words.end();
}

std::string BoundsOf(const ParamDescriptor& param) {
    return BoundsText(param.Lower(), param.HasLower() ? param.LowerOption() : 0, param.Upper(),
                      param.HasUpper() ? param.UpperOption() : 0);
}

bool IsWithinBounds(const ParamDescriptor& param, double value) {
    if (param.HasLower() &&
        (param.LowerOption() == kBdryIncluded ? value < param.Lower() : value <= param.Lower()))
        return false;
    return !param.HasUpper() ||
           (param.UpperOption() == kBdryIncluded ? value <= param.Upper() : value < param.Upper());
}

std::string WithBounds(const std::string& what, const std::string& bounds) {
    return bounds.empty() ? what : what + " " + bounds;
}

/// What a parameter's value has to be, in words.
std::string Expected(const ParamDescriptor& param) {
    switch (param.Spec()) {
        case kParamNumber:
            return WithBounds(FilledText("a number", {}), BoundsOf(param));
        case kParamInteger: {
            std::vector<std::string> forms = {
                WithBounds(FilledText("an integer", {}), BoundsOf(param))};
            forms.insert(forms.end(), param.StringValues().begin(), param.StringValues().end());
            return OneOf(forms);
        }
        case kParamOneString:
            return OneOf(param.StringValues());
        case kParamStringList:
            return FilledText("one or more of ^1", {AllOf(param.StringValues())});
        case kParamVariable:
            return FilledText("the name of a variable", {});
        case kParamFile:
            return FilledText("a file path in single quotes", {});
        default:
            return FilledText("one value or a list in parentheses", {});
    }
}

/// Reads one command. A fault ends the subcommand that it is in; reading goes on at the next slash,
/// so that one run shows what is wrong in several places.
class CommandReader {
 public:
    /// tokens ends with the End token. spec and descriptor are borrowed.
    CommandReader(TokenList tokens, const CommandDescriptor& descriptor, CommandSpec& spec)
        : fvTokens(std::move(tokens)), fDescriptor(descriptor), fSpec(spec) {}

    std::int32_t Read() {
        constexpr std::int32_t kMostFaults = 10;
        ReadOpeningList();
        while (At(kOpSlash) && fFaults < kMostFaults) {
            Advance();
            if (!ReadSubCom())
                while (!AtSubComEnd()) Advance();
        }
        if (fFaults == 0) CheckMandatorySubComs();
        return fFaults;
    }

 private:
    const TokenInfoObj& Peek(std::size_t ahead = 0) const {
        return fvTokens[std::min(fAt + ahead, fvTokens.size() - 1)];
    }
    bool At(std::int32_t operatorCode, std::size_t ahead = 0) const {
        return Peek(ahead).getOperatorCode() == operatorCode;
    }
    bool AtEnd() const { return Peek().Kind() == TokenKind::End; }
    bool AtSubComEnd() const { return AtEnd() || At(kOpSlash); }
    void Advance() { ++fAt; }

    /// Always false, for the caller to return.
    bool Fault(std::string_view key, const std::vector<std::string>& arguments,
               const TokenInfoObj& token) {
        ReportFault(
            MakeFault(key, arguments, HostSession::Active().Command().Source(), PlaceOf(token)));
        ++fFaults;
        return false;
    }

    void ReadOpeningList() {
        SubComObj list("", Peek());
        TokenList tokens;
        for (; !AtSubComEnd(); Advance()) tokens.push_back(Peek());
        if (tokens.empty()) return;
        list.SetTokens(std::move(tokens));
        fSpec.AddSubCom(std::move(list));
    }

    bool ReadSubCom() {
        const TokenInfoObj word = Peek();
        if (!IsWord(word))
            return Fault("Subcommand expected ^1, found ^2...",
                         {OneOf(NamesOf(fDescriptor.SubComs())), FoundText(word)}, word);
        const SubComDescriptor* subCom = FindByWord(fDescriptor.SubComs(), word);
        if (subCom == nullptr)
            return Fault("Unknown subcommand ^1 of ^2 ^3...",
                         {ShownText(word.getString()), fDescriptor.Name(),
                          DidYouMean(word.getString(), NamesOf(fDescriptor.SubComs()))},
                         word);
        if (const SubComObj* first = fSpec.getSubComObj(subCom->Name()))
            return Fault("Subcommand ^1 twice, first in line ^2...",
                         {subCom->Name(), std::to_string(first->Word().Line())}, word);
        Advance();
        SubComObj written(subCom->Name(), word);
        if (!ReadParams(*subCom, written)) return false;
        fSpec.AddSubCom(std::move(written));
        return true;
    }

    bool ReadParams(const SubComDescriptor& subCom, SubComObj& written) {
        while (!AtSubComEnd()) {
            const bool comma = At(kOpComma) && written.getParamListSize() > 0;
            if (comma) Advance();
            const TokenInfoObj& word = Peek();
            if (!IsWord(word))
                return Fault("Superfluous ^1 in subcommand ^2, expected ^3...",
                             {FoundText(word), subCom.Name(), OneOf(NamesOf(subCom.Params()))},
                             word);
            const ParamDescriptor* param = FindByWord(subCom.Params(), word);
            if (param == nullptr)
                return Fault("Unknown word ^2 in ^1 ^3...",
                             {subCom.Name(), ShownText(word.getString()),
                              DidYouMean(word.getString(), NamesOf(subCom.Params()))},
                             word);
            if (written.getParamObj(param->Name()) != nullptr)
                return Fault("Parameter ^1 twice in subcommand ^2...",
                             {param->Name(), subCom.Name()}, word);
            ParamObj value(param->Name(), word);
            Advance();
            if (!ReadValue(subCom, *param, value)) return false;
            written.AddParam(std::move(value));
        }
        return CheckParams(subCom, written);
    }

    bool CheckParams(const SubComDescriptor& subCom, const SubComObj& written) {
        if (written.getParamListSize() == 0)
            return Fault("Subcommand ^1 empty, expected ^2...",
                         {subCom.Name(), OneOf(NamesOf(subCom.Params()))}, written.Word());
        for (const ParamDescriptor& param : subCom.Params())
            if (param.IsMandatory() && written.getParamObj(param.Name()) == nullptr)
                return Fault("Parameter ^1 missing in subcommand ^2...",
                             {param.Name(), subCom.Name()}, written.Word());
        return true;
    }

    void CheckMandatorySubComs() {
        for (const SubComDescriptor& subCom : fDescriptor.SubComs()) {
            if (!subCom.IsMandatory() || fSpec.getSubComObj(subCom.Name()) != nullptr) continue;
            if (subCom.Spec() == kSubComVarList)
                Fault("Variable list of command ^1 missing, found ^2...",
                      {fDescriptor.Name(), FoundText(fvTokens.front())}, fvTokens.front());
            else
                Fault("Subcommand ^1 missing in ^2...", {subCom.Name(), fDescriptor.Name()},
                      fvTokens.back());
        }
    }

    bool ReadValue(const SubComDescriptor& subCom, const ParamDescriptor& param, ParamObj& value) {
        const std::string name = subCom.Name() + " " + param.Name();
        if (param.Spec() == kParamKeyword) {
            if (At(kOpEquals) || At(kOpLeftParen))
                return Fault("Keyword ^1 takes no value, found ^2...", {name, FoundText(Peek())},
                             Peek());
            return true;
        }
        const bool equals = At(kOpEquals);
        if (!equals && !At(kOpLeftParen)) {
            if (!param.IsValueRequired()) return true;
            return Fault("Parameter ^1 needs value ^2, found ^3...",
                         {name, Expected(param), FoundText(Peek())}, Peek());
        }
        if (equals) Advance();
        TokenList tokens;
        const bool brackets = At(kOpLeftParen);
        if (brackets) {
            if (!ReadInBrackets(name, tokens)) return false;
        } else {
            ReadBareValue(subCom, param, tokens);
        }
        // Here stands what ended the value: the token to show when the value is empty.
        if (tokens.empty())
            return Fault("Parameter ^1 needs value ^2, found ^3...",
                         {name, Expected(param), FoundText(Peek())}, Peek());
        if (!param.Qualifiers().empty() && At(kOpLeftParen) && !ReadQualifier(name, tokens))
            return false;
        if (!CheckValue(name, param, tokens, brackets)) return false;
        value.SetTokens(std::move(tokens));
        return true;
    }

    /// Takes what stands between a parenthesis and the one that closes it, without the two. In an
    /// empty pair it stops at the second.
    bool ReadInBrackets(const std::string& name, TokenList& tokens) {
        const TokenInfoObj open = Peek();
        Advance();
        for (std::int32_t depth = 1; !AtSubComEnd(); Advance()) {
            if (At(kOpLeftParen)) ++depth;
            if (At(kOpRightParen) && --depth == 0) {
                if (!tokens.empty()) Advance();
                return true;
            }
            tokens.push_back(Peek());
        }
        return Fault("Parenthesis of ^1 not closed, found ^2...", {name, FoundText(Peek())}, open);
    }

    /// Takes what stands between a parenthesis and the one that closes it, together with the two.
    bool ReadQualifier(const std::string& name, TokenList& tokens) {
        const TokenInfoObj open = Peek();
        TokenList inside;
        if (!ReadInBrackets(name, inside)) return false;
        if (inside.empty()) {
            tokens.push_back(open);
            tokens.push_back(Peek());
            Advance();
            return true;
        }
        tokens.push_back(open);
        tokens.insert(tokens.end(), inside.begin(), inside.end());
        tokens.push_back(fvTokens[fAt - 1]);
        return true;
    }

    /// Takes a value without parentheses: one token, of a list all up to the next parameter.
    void ReadBareValue(const SubComDescriptor& subCom, const ParamDescriptor& param,
                       TokenList& tokens) {
        const bool list = (param.Spec() == kParamTokenList && param.Qualifiers().empty()) ||
                          param.Spec() == kParamStringList;
        bool joined = false;  // behind an operator that needs one more token
        while (!AtSubComEnd() && !At(kOpLeftParen) && !At(kOpRightParen) && !At(kOpEquals)) {
            const std::size_t next = At(kOpComma) ? 1 : 0;
            if (!tokens.empty() && !joined && BeginsParam(subCom, param, next)) return;
            const std::int32_t code = Peek().getOperatorCode();
            if (tokens.empty() && code != kOpNone && code != kOpColon) return;
            joined = code == kOpComma || code == kOpColon || code == kOpRange;
            tokens.push_back(Peek());
            Advance();
            if (!list) return;
        }
    }

    /// True when a parameter, known or not, begins there, and not one more element of the value.
    bool BeginsParam(const SubComDescriptor& subCom, const ParamDescriptor& param,
                     std::size_t ahead) const {
        if (!IsWord(Peek(ahead))) return false;
        if (At(kOpEquals, ahead + 1) || At(kOpLeftParen, ahead + 1)) return true;
        if (param.Spec() == kParamStringList && IsInWords(Peek(ahead), param.StringValues()))
            return false;
        return FindByWord(subCom.Params(), Peek(ahead)) != nullptr;
    }

    bool CheckValue(const std::string& name, const ParamDescriptor& param, TokenList& tokens,
                    bool brackets) {
        if (param.Spec() == kParamTokenList) return true;
        if (param.Spec() == kParamStringList) return CheckWords(name, param, tokens);
        if (tokens.size() > 1)
            return Fault("Parameter ^1 one value ^2, found ^3...",
                         {name, Expected(param), FoundText(tokens[1])}, tokens[1]);
        const TokenInfoObj& token = tokens.front();
        switch (param.Spec()) {
            case kParamOneString:
                return IsInWords(token, param.StringValues()) || UnknownWord(name, param, token);
            case kParamNumber:
            case kParamInteger:
                return CheckNumber(name, param, token);
            case kParamVariable:
                return token.IsVarName() || WrongValue(name, param, token);
            default:
                break;
        }
        if (!token.IsString() || token.getString().empty()) return WrongValue(name, param, token);
        return brackets || !IsWord(token) || CheckPathEnds(name, param, token);
    }

    /// False, with a message, when signs follow a path without quotes and a blank: dir/file.xml is
    /// several tokens. Passes over them, since their slash begins no subcommand.
    bool CheckPathEnds(const std::string& name, const ParamDescriptor& param,
                       const TokenInfoObj& path) {
        const auto behind = [](const TokenInfoObj& token) {
            return token.Column() + CountCharacters(token.getString());
        };
        const TokenInfoObj after = Peek();
        std::int32_t end = behind(path);
        while (!AtEnd() && Peek().Line() == path.Line() && Peek().Column() == end) {
            end = behind(Peek());
            Advance();
        }
        return end == behind(path) || WrongValue(name, param, after);
    }

    bool CheckWords(const std::string& name, const ParamDescriptor& param, TokenList& tokens) {
        TokenList words;
        bool afterComma = true;
        for (TokenInfoObj& token : tokens) {
            const bool comma = token.getOperatorCode() == kOpComma;
            if (comma && afterComma) return WrongValue(name, param, token);
            if (!comma && !IsInWords(token, param.StringValues()))
                return UnknownWord(name, param, token);
            afterComma = comma;
            if (!comma) words.push_back(std::move(token));
        }
        if (afterComma) return WrongValue(name, param, Peek());
        tokens = std::move(words);
        return true;
    }

    bool CheckNumber(const std::string& name, const ParamDescriptor& param,
                     const TokenInfoObj& token) {
        if (param.Spec() == kParamInteger && IsInWords(token, param.StringValues())) return true;
        if (!token.IsNumber()) return WrongValue(name, param, token);
        const double value = token.getNumeric();
        const bool integer = param.Spec() == kParamInteger;
        if (integer && value != std::floor(value)) return WrongValue(name, param, token);
        if (!IsWithinBounds(param, value))
            return Fault("Parameter ^1 beyond bounds ^2, found ^3...",
                         {name, Expected(param), FoundText(token)}, token);
        if (integer && std::abs(value) > kLargestInteger)
            return Fault("Parameter ^1 integer too large, at most ^2, found ^3...",
                         {name, PlainNumber(kLargestInteger), FoundText(token)}, token);
        return true;
    }

    bool WrongValue(const std::string& name, const ParamDescriptor& param,
                    const TokenInfoObj& token) {
        return Fault("Parameter ^1 expects ^2, found ^3...",
                     {name, Expected(param), FoundText(token)}, token);
    }

    bool UnknownWord(const std::string& name, const ParamDescriptor& param,
                     const TokenInfoObj& token) {
        if (!IsWord(token)) return WrongValue(name, param, token);
        return Fault("Unknown word ^2 in ^1 ^3...",
                     {name, ShownText(token.getString()),
                      DidYouMean(token.getString(), param.StringValues())},
                     token);
    }

    TokenList fvTokens;
    const CommandDescriptor& fDescriptor;
    CommandSpec& fSpec;
    std::size_t fAt = 0;
    std::int32_t fFaults = 0;
};

}  // namespace

}  // namespace embedded

UniversalParser::UniversalParser(KOLT_TokenSequence& tokens, CommandSpec& spec,
                                 const CommandDescriptor& descriptor)
    : fTokens(tokens), fSpec(spec), fDescriptor(descriptor) {}

std::int32_t UniversalParser::getCommandSpecifications() {
    TokenList tokens;
    for (; fTokens.Peek().Kind() != TokenKind::End; fTokens.Advance())
        tokens.push_back(fTokens.Peek());
    tokens.push_back(fTokens.Peek());
    return embedded::CommandReader(std::move(tokens), fDescriptor, fSpec).Read();
}
