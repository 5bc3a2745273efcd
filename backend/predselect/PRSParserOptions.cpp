#include <algorithm>
#include <string>
#include <string_view>

#include "backend/predselect/PRSParser.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "featureselect/FSCriterion.h"
#include "host/Assertion.h"

// CRITERIA, MISSING, MACROVAR, PRINT, PLOT and SCREENING. What a subcommand doesn't give keeps the
// value that PRSValidSpecs starts with.

namespace {

/// What a ranking word stands for, and whether it serves only where all predictors are factors.
struct RankingWord {
    std::string_view fWord;
    std::int32_t fCriterion;
    bool fbFactorsOnly;
};
constexpr RankingWord kRankingWords[] = {
    {"PEARSONCHISQ", FSCriterion::kPearson, false},
    {"LRCHISQ", FSCriterion::kLikelihood, false},
    {"CRAMERSV", FSCriterion::kCramer, true},
    {"LAMBDA", FSCriterion::kLambda, true},
};

double NumberOr(const SubComObj& subcommand, std::string_view name, double otherwise) {
    const ParamObj* parameter = subcommand.getParamObj(name);
    return parameter == nullptr ? otherwise : parameter->getNumeric();
}

std::int32_t IntegerOr(const SubComObj& subcommand, std::string_view name, std::int32_t otherwise) {
    const ParamObj* parameter = subcommand.getParamObj(name);
    return parameter == nullptr ? otherwise : parameter->getInteger();
}

std::string TypedText(const SubComObj& subcommand, std::string_view name) {
    const ParamObj* parameter = subcommand.getParamObj(name);
    return parameter == nullptr ? std::string() : parameter->getStringToken();
}

}  // namespace

bool PRSParser::HandleNaiveCriteria(const SubComObj& subcommand) {
    fpValidSpecs->SetNaiveCriteria(
        IntegerOr(subcommand, "BINS", fpValidSpecs->GetBins()),
        NumberOr(subcommand, "MEMALLOCATE", fpValidSpecs->GetMultiMemAllocate()),
        IntegerOr(subcommand, "SHOWUNSELECTED", fpValidSpecs->GetShowUnselected()),
        NumberOr(subcommand, "TIMER", fpValidSpecs->GetTimer()));
    return true;
}

bool PRSParser::HandleSelectCriteria(const SubComObj& subcommand) {
    std::int32_t size = fpValidSpecs->GetSelectSize();
    const ParamObj* sizeParam = subcommand.getParamObj("SIZE");
    if (sizeParam != nullptr && !sizeParam->isStringValueCase("AUTO")) {
        size = sizeParam->getInteger();
        if (size >= GetPredictorCount()) {
            fMessage.ParamBelowUniquePreds("CRITERIA SIZE", "SELECTPRED", true);
            return false;
        }
    }
    std::int32_t ranking = fpValidSpecs->GetRanking();
    const ParamObj* rankingParam = subcommand.getParamObj("RANKING");
    if (rankingParam != nullptr) {
        for (const RankingWord& word : kRankingWords) {
            if (rankingParam->isStringValueCase(word.fWord)) {
                // Factors and covariates have only p-values in common.
                ranking = word.fbFactorsOnly && GetPredictorMix().fbMixed ? FSCriterion::kPearson
                                                                          : word.fCriterion;
            }
        }
    }
    fpValidSpecs->SetSelectCriteria(
        size, ranking, NumberOr(subcommand, "PCUTOFF", fpValidSpecs->GetPCutoff()),
        IntegerOr(subcommand, "SHOWUNSELECTED", fpValidSpecs->GetShowUnselected()),
        NumberOr(subcommand, "TIMER", fpValidSpecs->GetTimer()));
    return true;
}

bool PRSParser::HandleMissing(const SubComObj& subcommand) {
    fpValidSpecs->SetUserMissExclude(
        Required(subcommand, "USERMISSING").isStringValueCase("EXCLUDE"));
    return true;
}

bool PRSParser::HandleMacroVar(const SubComObj& subcommand) {
    fpValidSpecs->SetFactorMacroVar(Required(subcommand, "FACTORS").getVarName());
    fpValidSpecs->SetCovarMacroVar(Required(subcommand, "COVARIATES").getVarName());
    return true;
}

bool PRSParser::HandlePrint(const SubComObj& subcommand) {
    const auto given = [&](std::string_view name) {
        return subcommand.getParamObj(name) != nullptr;
    };
    const bool none = given("NONE");
    if (none && subcommand.getParamListSize() > 1) {
        fParserMessage.ParamExclAnyOther("NONE", "PRINT");
        return false;
    }
    // Without a search there is neither a summary nor a selection.
    const bool noTable = !fbUniVariable && IsNoSelection()
                             ? !(given("CPS") || given("EXCLUDED") || given("CLASSIFICATION") ||
                                 given("UNCERTAINTY"))
                             : none;
    if (noTable && fSubComs.fpPlot == nullptr) {
        fParserMessage.NoTableRequested();
    }
    const ParamObj* summary = subcommand.getParamObj("SUMMARY");
    fpValidSpecs->SetPrintFlags(given("CPS"), given("EXCLUDED"), summary != nullptr,
                                given("SELECTED"), given("CLASSIFICATION"), given("UNCERTAINTY"));
    if (summary != nullptr && !summary->isLeadingToken()) {
        PREDSEL_ASSERT(fbUniVariable, "fbUniVariable");
        AddPrintRanks(*summary);
    }
    return true;
}

void PRSParser::AddPrintRanks(const ParamObj& summary) {
    const std::vector<std::string> rankUpperList = summary.getUpperStringList();
    const std::size_t nRanks = summary.getStringList().size();
    PREDSEL_ASSERT(nRanks > 0 && nRanks == rankUpperList.size(),
                   "nRanks > 0 && nRanks == rankUpperList.size()");
    const PredictorMix mix = GetPredictorMix();
    for (const RankingWord& word : kRankingWords) {
        if (std::find(rankUpperList.begin(), rankUpperList.end(), word.fWord) ==
            rankUpperList.end()) {
            continue;
        }
        if (mix.fbAllCategorical || (mix.fbMixed && !word.fbFactorsOnly)) {
            fpValidSpecs->AddPrintRank(word.fCriterion);
        } else {
            fMessage.RankCriterionIgnored(std::string(word.fWord), "SUMMARY", "PRINT",
                                          !word.fbFactorsOnly);
        }
    }
}

bool PRSParser::HandlePlot(const SubComObj&) {
    if (fbUniVariable) {
        fpValidSpecs->SetPlotSummary(true);
    } else {
        fpValidSpecs->SetPlotUncertainty(true);
    }
    return true;
}

bool PRSParser::HandleScreening(const SubComObj& subcommand) {
    const ParamObj* status = subcommand.getParamObj("STATUS");
    fpValidSpecs->SetScreening(status == nullptr || status->isStringValueCase("ON"),
                               NumberOr(subcommand, "PCTMISSING", fpValidSpecs->GetPctMissing()),
                               NumberOr(subcommand, "PCTEQUAL", fpValidSpecs->GetPctEqual()),
                               NumberOr(subcommand, "PCTUNEQUAL", fpValidSpecs->GetPctUnequal()),
                               NumberOr(subcommand, "CV", fpValidSpecs->GetCoefVar()),
                               NumberOr(subcommand, "STDDEV", fpValidSpecs->GetStdDev()));
    fpValidSpecs->SetScreeningTexts(TypedText(subcommand, "PCTMISSING"),
                                    TypedText(subcommand, "PCTEQUAL"),
                                    TypedText(subcommand, "PCTUNEQUAL"),
                                    TypedText(subcommand, "CV"), TypedText(subcommand, "STDDEV"));
    return true;
}

bool PRSParser::IsNoSelection() const {
    return fSubComs.fpSubset != nullptr && fSubComs.fpSubset->getParamObj("NOSELECTION") != nullptr;
}

PRSParser::PredictorMix PRSParser::GetPredictorMix() const {
    const bool anyFactors =
        std::find(fvPredCatFlags.begin(), fvPredCatFlags.end(), true) != fvPredCatFlags.end();
    const bool anyCovariates =
        std::find(fvPredCatFlags.begin(), fvPredCatFlags.end(), false) != fvPredCatFlags.end();
    const bool catWithFactors = fpValidSpecs->GetDependCat() && anyFactors;
    return {catWithFactors && !anyCovariates, catWithFactors && anyCovariates};
}
