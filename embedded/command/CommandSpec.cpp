#include <algorithm>

#include "host/CommandLanguage.h"
#include "host/HostGlobals.h"

namespace {

std::vector<const TokenInfoObj*> Words(const TokenList& tokens) {
    std::vector<const TokenInfoObj*> words;
    for (const TokenInfoObj& token : tokens)
        if (token.IsString()) words.push_back(&token);
    return words;
}

}  // namespace

bool ParamObj::isStringValueCase(std::string_view word) const {
    return fvTokens.size() == 1 && fvTokens.front().Kind() == TokenKind::Name &&
           !fvTokens.front().IsQuoted() && AreStringsEqualCase(fvTokens.front().getString(), word);
}

std::string ParamObj::getStringToken() const {
    return fvTokens.empty() ? std::string() : fvTokens.front().getString();
}

double ParamObj::getNumeric() const { return fvTokens.empty() ? 0 : fvTokens.front().getNumeric(); }

// The parser has made sure that an integer parameter fits.
std::int32_t ParamObj::getInteger() const { return static_cast<std::int32_t>(getNumeric()); }

std::vector<std::string> ParamObj::getStringList() const {
    std::vector<std::string> list;
    for (const TokenInfoObj* word : Words(fvTokens)) list.push_back(word->getString());
    return list;
}

std::vector<std::string> ParamObj::getUpperStringList() const {
    std::vector<std::string> list;
    for (const TokenInfoObj* word : Words(fvTokens)) list.push_back(word->getUpperString());
    return list;
}

KoltVarName ParamObj::getVarName() const {
    return fvTokens.empty() ? KoltVarName() : fvTokens.front().getVarName();
}

bool ParamObj::getFilePath(std::string& pathOut, bool /*expand*/, bool /*forWriting*/) const {
    if (fvTokens.empty() || !fvTokens.front().IsString()) return false;
    pathOut = fvTokens.front().getString();
    return true;
}

const ParamObj* SubComObj::getParamObj(std::string_view name) const {
    const auto found = std::find_if(
        fvParams.begin(), fvParams.end(),
        [name](const ParamObj& param) { return AreStringsEqualCase(param.getParamName(), name); });
    return found == fvParams.end() ? nullptr : &*found;
}

const SubComObj* CommandSpec::getSubComObj(std::string_view name) const {
    const auto found =
        std::find_if(fvSubComs.begin(), fvSubComs.end(), [name](const SubComObj& subcommand) {
            return AreStringsEqualCase(subcommand.getSubComName(), name);
        });
    return found == fvSubComs.end() ? nullptr : &*found;
}
