#include <cmath>
#include <limits>
#include <string>

#include "backend/predselect/PRSParser.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "host/Assertion.h"

// SUBSET, SAVE and OUTFILE of NAIVEBAYES.

namespace {

bool IsOperator(const TokenInfoObj& token, TokenSequenceBase::OperatorCode code) {
    return token.getOperatorCode() == code;
}

}  // namespace

bool PRSParser::HandleSubset(const SubComObj& subcommand) {
    PREDSEL_ASSERT(subcommand.getParamListSize() > 0, "nParams > 0");
    if (subcommand.getParamListSize() > 1) {
        fParserMessage.ParamExclusive(subcommand.getParamObjAt(0).getParamName(),
                                      subcommand.getParamObjAt(1).getParamName(), "SUBSET");
        return false;
    }
    std::int32_t maxSize = -1;
    bool pseudoBIC = false;
    bool testData = false;
    std::int32_t exactSize = 0;
    if (const ParamObj* maximum = subcommand.getParamObj("MAXSIZE")) {
        if (!ReadMaxSize(*maximum, maxSize, pseudoBIC, testData)) {
            return false;
        }
    }
    if (const ParamObj* exact = subcommand.getParamObj("EXACTSIZE")) {
        exactSize = exact->getInteger();
        // All candidates at once leave nothing to search for, so this limit is one lower than that
        // of MAXSIZE.
        if (exactSize >= GetPredictorCount()) {
            fMessage.ParamBelowPossiblePreds("SUBSET EXACTSIZE", "FORCE", "NAIVEBAYES", true);
            return false;
        }
    }
    fpValidSpecs->SetSubset(maxSize, pseudoBIC, testData, exactSize);
    return true;
}

bool PRSParser::ReadMaxSize(const ParamObj& parameter, std::int32_t& maxSizeOut, bool& pseudoBICOut,
                            bool& testDataOut) {
    const TokenList& tokens = parameter.getTokenList();
    const auto wrongType = [this] {
        fParserMessage.WrongValueType("MAXSIZE", "SUBSET");
        return false;
    };
    if (tokens.empty()) {
        return wrongType();
    }
    const TokenInfoObj& first = tokens.front();
    const double number = first.getNumeric();
    if (first.IsString()) {
        if (first.getUpperString() != "AUTO") {
            fParserMessage.InvalidParamOption(first.getString(), "MAXSIZE", "SUBSET");
            return false;
        }
        maxSizeOut = 0;
    } else if (first.IsNumber() && number == std::trunc(number)) {
        if (number < 1) {
            fParserMessage.ParamValueBreakBdry(number, 0.0, kBdryExcluded, 0.0, 0, "MAXSIZE",
                                               "SUBSET");
            return false;
        }
        if (number > GetPredictorCount()) {
            fMessage.ParamBelowPossiblePreds("SUBSET MAXSIZE", "FORCE", "NAIVEBAYES", false);
            return false;
        }
        maxSizeOut = static_cast<std::int32_t>(number);
    } else {
        return wrongType();
    }

    if (tokens.size() == 1) {
        testDataOut = fSubComs.fpTrainSample != nullptr;
        pseudoBICOut = !testDataOut;
        return true;
    }
    return tokens.size() == 6 ? ReadBestSubset(tokens, pseudoBICOut, testDataOut) : wrongType();
}

/// The tail of `AUTO (BESTSUBSET=WORD)`.
bool PRSParser::ReadBestSubset(const TokenList& tokens, bool& pseudoBICOut, bool& testDataOut) {
    if (!(IsOperator(tokens[1], TokenSequenceBase::kOpLeftParen) && tokens[2].IsString() &&
          IsOperator(tokens[3], TokenSequenceBase::kOpEquals) && tokens[4].IsString() &&
          IsOperator(tokens[5], TokenSequenceBase::kOpRightParen))) {
        fParserMessage.WrongValueType("MAXSIZE", "SUBSET");
        return false;
    }
    if (tokens[2].getUpperString() != "BESTSUBSET") {
        fParserMessage.InvalidParam(tokens[2].getString(), "SUBSET");
        return false;
    }
    const std::string criterion = tokens[4].getUpperString();
    if (criterion == "PSEUDOBIC") {
        pseudoBICOut = true;
        return true;
    }
    if (criterion != "TESTDATA") {
        fParserMessage.InvalidParamOption(tokens[4].getString(), "BESTSUBSET", "SUBSET");
        return false;
    }
    if (fSubComs.fpTrainSample == nullptr) {
        fParserMessage.NeedSubComForParam("TRAININGSAMPLE", "SUBSET BESTSUBSET", "TESTDATA");
        return false;
    }
    testDataOut = true;
    return true;
}

bool PRSParser::HandleSave(const SubComObj& subcommand) {
    const ParamObj* predVal = subcommand.getParamObj("PREDVAL");
    if (predVal != nullptr && !ReadPredVal(*predVal)) {
        return false;
    }
    const ParamObj* predProb = subcommand.getParamObj("PREDPROB");
    return predProb == nullptr || ReadPredProb(*predProb);
}

bool PRSParser::ReadPredVal(const ParamObj& parameter) {
    if (parameter.isLeadingToken()) {
        // Not checked: the host makes a free name of it when the variable is made.
        fpValidSpecs->SetPredVal(KoltVarName("PredictedValue"), true);
        return true;
    }
    const KoltVarName name = parameter.getVarName();
    const VarSpecObj newVariable("PREDVAL", "SAVE", *fpCommandDesc, *fpActiveDS, false);
    if (newVariable.CheckNewVariable(name) >= 0) {
        return false;
    }
    fpValidSpecs->SetPredVal(name, false);
    return true;
}

bool PRSParser::ReadPredProb(const ParamObj& parameter) {
    KoltVarName root("PredictedProbability");
    std::int32_t count = fpValidSpecs->GetMaxPredProbs();
    const TokenList& tokens = parameter.getTokenList();
    if (tokens.size() == 1) {
        if (!tokens.front().IsVarName()) {
            fParserMessage.InvalidVarName(tokens.front().getString(), "PREDPROB", "SAVE");
            return false;
        }
        root = tokens.front().getVarName();
    } else if (!parameter.isLeadingToken()) {
        std::size_t formSize = 2;  // :count
        if (tokens.front().IsVarName()) {
            root = tokens.front().getVarName();
            formSize = 3;  // root:count
        }
        if (tokens.size() != formSize ||
            !IsOperator(tokens[formSize - 2], TokenSequenceBase::kOpColon) ||
            !tokens.back().IsNumber()) {
            fParserMessage.WrongValueType("PREDPROB", "SAVE");
            return false;
        }
        const double number = tokens.back().getNumeric();
        if (!(number > 0.5 && number == std::trunc(number) &&
              number <= std::numeric_limits<std::int32_t>::max())) {
            fParserMessage.ParamNeedInteger("PREDPROB " + root.GetString(), "SAVE");
            return false;
        }
        count = static_cast<std::int32_t>(number);
    }
    fpValidSpecs->SetPredProb(std::move(root), count);
    return true;
}

bool PRSParser::HandleOutfile(const SubComObj& subcommand) {
    std::string path;
    Required(subcommand, "MODEL").getFilePath(path, true, true);
    fpValidSpecs->SetModelFile(std::move(path));
    return true;
}
