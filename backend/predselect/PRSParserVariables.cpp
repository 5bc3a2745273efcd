#include <algorithm>
#include <string>
#include <utility>

#include "backend/predselect/PRSParser.h"
#include "backend/predselect/PRSValidSpecs.h"

// The weight, FORCE, TRAININGSAMPLE, EXCEPT and the variable list that opens a command.

namespace {

/// Factors and covariates in one list, ascending by dictionary index; flags are true for factors.
void MergePredictors(const VarSpecObj& factors, const VarSpecObj& covariates,
                     std::vector<std::int32_t>& listOut, std::vector<bool>& flagsOut) {
    std::vector<std::pair<std::int32_t, bool>> merged;
    merged.reserve(factors.GetValidVarList().size() + covariates.GetValidVarList().size());
    for (const std::int32_t index : factors.GetValidVarList()) {
        merged.emplace_back(index, true);
    }
    for (const std::int32_t index : covariates.GetValidVarList()) {
        merged.emplace_back(index, false);
    }
    std::sort(merged.begin(), merged.end());

    listOut.clear();
    flagsOut.clear();
    for (const auto& [index, isFactor] : merged) {
        listOut.push_back(index);
        flagsOut.push_back(isFactor);
    }
}

}  // namespace

bool PRSParser::HandleWeight() {
    const std::int32_t weight = fpActiveDS->GetWeightVarIndex();
    if (weight < 0) {
        return true;
    }
    if (!fpWeightSpec->SetVariable(weight)) {
        return false;
    }
    fpValidSpecs->SetWeightVar(weight);
    return true;
}

bool PRSParser::HandleForce(const SubComObj& subcommand) {
    const ParamObj* factors = subcommand.getParamObj("FACTORS");
    if (factors != nullptr && !(fpForceFactorSpec->ValidateVariables(factors->getTokenList(), 0) &&
                                fpForceFactorSpec->CheckCommonVars(*fpWeightSpec))) {
        return false;
    }
    const ParamObj* covariates = subcommand.getParamObj("COVARIATES");
    if (covariates != nullptr &&
        !(fpForceCovarSpec->ValidateVariables(covariates->getTokenList(), 0) &&
          fpForceCovarSpec->CheckCommonVars(*fpWeightSpec))) {
        return false;
    }
    if (factors != nullptr && covariates != nullptr &&
        !fpForceFactorSpec->CheckCommonVars(*fpForceCovarSpec)) {
        return false;
    }
    MergePredictors(*fpForceFactorSpec, *fpForceCovarSpec, fvForceList, fvForceCatFlags);
    fpValidSpecs->SetForcePredictors(&fvForceList, &fvForceCatFlags);
    return true;
}

bool PRSParser::HandleTrainSample(const SubComObj& subcommand) {
    const ParamObj* percent = subcommand.getParamObj("PERCENT");
    const ParamObj* variable = subcommand.getParamObj("VARIABLE");
    if (percent != nullptr && variable != nullptr) {
        fParserMessage.ParamExclusive("PERCENT", "VARIABLE", "TRAININGSAMPLE");
        return false;
    }
    // A case that stands for several can't fall into both samples.
    if (percent != nullptr && fpValidSpecs->GetWeightVar() >= 0) {
        fParserMessage.InvalidParamWithWeight("PERCENT", "TRAININGSAMPLE");
        return false;
    }
    std::int32_t index = -1;
    if (variable != nullptr) {
        index = fpTrainVarSpec->ValidateVariable(variable->getVarName());
        if (index < 0) {
            return false;
        }
        // The target is not known yet: the variable list refuses the sample variable as target.
        for (const VarSpecObj* other : {fpWeightSpec.get(), fpDependSpec.get(),
                                        fpForceFactorSpec.get(), fpForceCovarSpec.get()}) {
            if (!fpTrainVarSpec->CheckCommonVars(*other)) {
                return false;
            }
        }
    }
    fpValidSpecs->SetTrainSample(percent != nullptr ? percent->getNumeric() : 0.0, index);
    return true;
}

bool PRSParser::HandleExcept(const SubComObj& subcommand) {
    // Intended: a bad list is left to the host's message and error word, so that the rest of the
    // command is examined too. ABadListFailsByTheErrorWordOnly holds it.
    fpExceptSpec->ValidateVariables(Required(subcommand, "VARIABLES").getTokenList(), 2);
    if (!fbUniVariable) {
        fpExceptSpec->ExcludeCommonVars({fpForceFactorSpec.get(), fpForceCovarSpec.get()}, 0);
    }
    fpValidSpecs->SetExceptList(&fpExceptSpec->GetValidVarList());
    return true;
}

bool PRSParser::HandleNameless(const SubComObj& subcommand) {
    const TokenList& tokens = subcommand.exportParamObj();
    fpDependSpec->SetAllowQualifiers(fbUniVariable);
    fpDependSpec->SetAllVarsByDefault(true);
    fpDependSpec->SetNoVarsMessage("No predictors available in data...");
    const std::vector<const VarSpecObj*> exclusion = {fpWeightSpec.get(), fpTrainVarSpec.get(),
                                                      fpExceptSpec.get()};
    if (!fpDependSpec->ValidateRegrVarList(tokens, *fpFactorSpec, *fpCovarSpec, 2, exclusion)) {
        return false;
    }
    const std::string targetName = tokens.front().getString();
    if (!fbUniVariable && !ExcludeForced(targetName, exclusion)) {
        return false;
    }
    if (!fpDependSpec->CheckCommonVars(*fpWeightSpec)) {
        return false;
    }
    bool isCat = true;
    if (!ReadTargetKind(targetName, isCat)) {
        return false;
    }
    fpValidSpecs->SetDependVar(fpDependSpec->GetValidVarInd(), isCat);
    MergePredictors(*fpFactorSpec, *fpCovarSpec, fvPredictList, fvPredCatFlags);
    if (!fvPredictList.empty()) {
        fpValidSpecs->SetPredictors(&fvPredictList, &fvPredCatFlags);
    }
    return true;
}

bool PRSParser::ExcludeForced(const std::string& targetName,
                              std::vector<const VarSpecObj*> exclusion) {
    exclusion.push_back(fpForceFactorSpec.get());
    exclusion.push_back(fpForceCovarSpec.get());
    const bool anyFactors = fpFactorSpec->ExcludeCommonVars(exclusion, 0);
    const bool anyCovariates = fpCovarSpec->ExcludeCommonVars(exclusion, 0);
    // A model without a search may consist of forced predictors alone.
    if (!IsNoSelection() && !anyFactors && !anyCovariates) {
        fMessage.NoPossiblePreds();
        return false;
    }
    if (!fpDependSpec->IsCatVar()) {
        fParserMessage.NeedDepVarCat(targetName, "", "");
        return false;
    }
    return true;
}

bool PRSParser::ReadTargetKind(const std::string& targetName, bool& isCatOut) {
    const TokenList& qualifier = fpDependSpec->GetQualifierTokens();
    if (qualifier.empty()) {
        isCatOut = fpDependSpec->IsCatVar();
        return fbUniVariable || (fpDependSpec->CheckCommonVars(*fpForceFactorSpec) &&
                                 fpDependSpec->CheckCommonVars(*fpForceCovarSpec));
    }
    if (!fbUniVariable) {
        fParserMessage.VariableNoQualif(targetName, "", "");
        return false;
    }
    if (qualifier.size() == 3 && qualifier[0].getUpperString() == "MLEVEL" &&
        qualifier[1].getOperatorCode() == TokenSequenceBase::kOpEquals) {
        const std::string level = qualifier[2].getUpperString();
        if (level == "N" || level == "O" || level == "F" || level == "T") {
            isCatOut = true;
            return true;
        }
        if (level == "S") {
            isCatOut = false;
            return true;
        }
    }
    fParserMessage.VariableInvalidQualif(targetName, "", "");
    return false;
}
