// The engine's description of the variables, and whether they make a model.

#include <algorithm>
#include <cstddef>
#include <variant>

#include "backend/predselect/PRSMultiFactory.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "host/Assertion.h"
#include "host/Output.h"
#include "host/Records.h"
#include "naivebayes/data/NBRoundEncoder.h"

namespace {

std::string LabelOf(const KOLT_Variable& variable, const KoltObs& value) {
    const std::string* label = variable.GetValueLabels().Find(value);
    return label == nullptr ? std::string() : *label;
}

double NumberOf(const KoltObs& value) { return std::get<double>(value); }

std::string TextOfValue(const KOLT_Variable& variable, const KoltObs& value) {
    return ConvertObsToString(value, variable.GetFormat(), true);
}

}  // namespace

bool PRSMultiFactory::BuildVarList() {
    if (fStatus.IsError()) return false;
    fpNBVarList = std::make_unique<NBVarList>();
    const std::int32_t target = fProcValidSpec.GetDependVar();
    fpInpAdapt->ReorderCategories(target, true);
    if (!AddVariable(target, true, false, false)) return false;

    if (fProcValidSpec.GetWeightVar() >= 0) {
        const KOLT_Variable& weight = fActiveDS.GetVariable(fProcValidSpec.GetWeightVar());
        fpNBVarList->AddWeightVar(weight.GetName(), weight.GetLabel(), NBRoundEncoder::kRound);
    }
    const auto addPredictor = [this](std::int32_t index, bool isCat, bool isForced) {
        if (isCat) fpInpAdapt->ReorderCategories(index, true);
        return AddVariable(index, isCat, true, isForced);
    };
    for (std::int32_t i = 0; i < fProcValidSpec.GetPredictCount(); ++i) {
        const auto at = static_cast<std::size_t>(i);
        if (addPredictor((*fProcValidSpec.GetPredictList())[at],
                         (*fProcValidSpec.GetPredCatFlags())[at], false)) {
            ++fNUniquePreds;
        }
    }
    for (std::int32_t i = 0; i < fProcValidSpec.GetForcePredCount(); ++i) {
        const auto at = static_cast<std::size_t>(i);
        if (!addPredictor((*fProcValidSpec.GetForcePredList())[at],
                          (*fProcValidSpec.GetForceCatFlags())[at], true)) {
            return false;
        }
        ++fNForcePreds;
    }
    if (!CheckPredictorCounts()) return false;
    if (fEmptyPredList.empty() && fConstPredList.empty() && fProcValidSpec.GetPrintExcluded()) {
        fMessages.NoPredsExcluded();
    }
    return true;
}

bool PRSMultiFactory::CheckPredictorCounts() {
    if (fbSubsetSearch && fNForcePreds >= 1 && fNUniquePreds < 1) {
        fMessages.AllPossiblePredsExcluded();
        return false;
    }
    // Forced predictors alone make a model only where nothing is searched.
    if (fNUniquePreds == 0 && (fbSubsetSearch || fNForcePreds < 1)) {
        fMessages.AllPredsMissingOrConstant();
        return false;
    }
    const std::int32_t maxSize = fProcValidSpec.GetMaxSubsetSize();
    if (maxSize >= 0 && fNUniquePreds < std::max(maxSize, 1)) {
        fMessages.TooFewForMaxSize();
        return false;
    }
    const std::int32_t exactSize = fProcValidSpec.GetExactSubsetSize();
    if (exactSize > 0 && fNUniquePreds <= exactSize) {
        fMessages.TooFewForExactSize();
        return false;
    }
    return true;
}

bool PRSMultiFactory::AddVariable(std::int32_t index, bool isCat, bool isPredictor, bool isForced) {
    std::int32_t role = NBRole::kTarget;
    if (isPredictor) role = isForced || !fbSubsetSearch ? NBRole::kInput : NBRole::kPossibleInput;
    const bool usable =
        isCat ? AddCategorical(index, role, isPredictor) : AddContinuous(index, role);
    if (!usable && isForced) fMessages.SomeForcedExcluded();
    return usable;
}

// A variable that cannot be used enters the list too, without a part in the model: a variable's
// place in the list is its place in the record.
bool PRSMultiFactory::AddCategorical(std::int32_t index, std::int32_t role, bool isPredictor) {
    const std::int32_t categories = fpInpAdapt->GetCatVarSize(index);
    const bool usable = categories >= 2;
    if (!usable) {
        role = NBRole::kUnused;
        if (isPredictor) {
            (categories == 0 ? fEmptyPredList : fConstPredList).push_back(index);
        } else if (categories == 0) {
            SetError(NBCode::kNoUsableRecords);
            ReportStatus();
        } else {
            SetError(NBCode::kNoValidCases);
            fMessages.DepVarConstant();
        }
    } else if (!isPredictor && !fProcValidSpec.GetPredProbRoot().IsEmpty()) {
        fNSaveDepCats = std::min(fProcValidSpec.GetMaxPredProbs(), categories);
    }
    if (fbDescribeValues) {
        AddByValues(index, categories, role);
    } else {
        // The encoder needs no values: codes are all that the engine meets.
        const KOLT_Variable& variable = fActiveDS.GetVariable(index);
        fpNBVarList->AddCatVar(
            variable.GetName(), variable.GetLabel(), categories,
            variable.GetType() == 0 ? NBMeasureLevel::kNumericCat : NBMeasureLevel::kStringCat,
            role);
    }
    return usable;
}

void PRSMultiFactory::AddByValues(std::int32_t index, std::int32_t categories, std::int32_t role) {
    const KOLT_Variable& variable = fActiveDS.GetVariable(index);
    std::vector<double> numbers;
    std::vector<std::string> texts;
    std::vector<std::string> labels;
    for (std::int32_t code = 0; code < categories; ++code) {
        std::int32_t decoded = -1;
        KoltObs value;
        PREDSEL_ASSERT(fpInpAdapt->DecodeCatValue(index, code, decoded, value),
                       "every category has a value");
        labels.push_back(LabelOf(variable, value));
        if (variable.GetType() == 0) {
            PREDSEL_ASSERT(NumberOf(value) != MCMV::gMissingValue, "value != SYSMIS");
            numbers.push_back(NumberOf(value));
        } else {
            texts.push_back(TextOfValue(variable, value));
        }
    }
    const std::int32_t added =
        variable.GetType() == 0
            ? fpNBVarList->AddNumericCatVar(variable.GetName(), variable.GetLabel(), numbers,
                                            labels, role)
            : fpNBVarList->AddStringCatVar(variable.GetName(), variable.GetLabel(), texts, labels,
                                           role);
    PassUserMissing(index, added);
}

bool PRSMultiFactory::AddContinuous(std::int32_t index, std::int32_t role) {
    const double min = fpInpAdapt->GetContMinValue(index);
    const double max = fpInpAdapt->GetContMaxValue(index);
    const bool usable = min != max;
    if (!usable) {
        role = NBRole::kUnused;
        (min == MCMV::gMissingValue ? fEmptyPredList : fConstPredList).push_back(index);
    } else {
        PREDSEL_ASSERT(min < max, "min < max");
    }
    const KOLT_Variable& variable = fActiveDS.GetVariable(index);
    const std::int32_t added = fpNBVarList->AddContVar(variable.GetName(), variable.GetLabel(), min,
                                                       max, fProcValidSpec.GetBins(), role);
    if (fbDescribeValues) PassUserMissing(index, added);
    return usable;
}

void PRSMultiFactory::PassUserMissing(std::int32_t index, std::int32_t variable) {
    // A model file declares them whatever the command says of them. An engine that is only kept
    // counts them as the run without it does.
    if (!fbWriteModel && !fProcValidSpec.GetUserMissExclude()) return;
    const KOLT_Variable& source = fActiveDS.GetVariable(index);
    std::vector<KoltObs> values;
    const std::int32_t kind = source.GetMissingValues(values);
    const auto addDiscrete = [&](const KoltObs& value) {
        const std::string label = LabelOf(source, value);
        if (source.GetType() == 0) {
            fpNBVarList->AddNumericMissing(variable, NumberOf(value), label);
        } else {
            fpNBVarList->AddStringMissing(variable, TextOfValue(source, value), label);
        }
    };
    if (kind > 0) {
        std::for_each(values.begin(), values.end(), addDiscrete);
    } else if (kind < 0 && source.GetType() == 0) {
        if (kind == -3) addDiscrete(values[2]);
        fpNBVarList->SetMissingRange(variable, NumberOf(values[0]), NumberOf(values[1]));
    }
}
