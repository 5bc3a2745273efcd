#include "featureselect/FSSettings.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "featureselect/FSArchives.h"
#include "featureselect/FSDisplay.h"

namespace {

bool IsPercent(double percent) { return percent >= 0.0 && percent <= 100.0; }  // no NaN is

void DisplayColumn(std::ostream& out, std::string_view label, std::int32_t column) {
    if (column < 0) {
        out << label << "undefined\n";
    } else {
        FSDisplay::Line(out, label, column);
    }
}

void DisplayRule(std::ostream& out, std::string_view what, bool on) {
    out << "Variable with " << what << (on ? " is deleted\n" : " is not deleted\n");
}

std::string_view ConversionText(std::int32_t method) {
    switch (method) {
        case FSSettings::kWeightAsIs:
            return "using weight as is";
        case FSSettings::kRoundWeight:
            return "rounding to nearest integer";
        case FSSettings::kTruncateWeight:
            return "truncating to integer";
        default:
            return "unrecognized method";
    }
}

}  // namespace

FSSettings::FSSettings(std::vector<bool> predIsCategorical, bool targetIsCategorical)
    : fNumPredictors(static_cast<std::int32_t>(predIsCategorical.size())),
      fvPredIsCategorical(std::move(predIsCategorical)),
      fNumCategorical(static_cast<std::int32_t>(
          std::count(fvPredIsCategorical.begin(), fvPredIsCategorical.end(), true))),
      fTargetIsCategorical(targetIsCategorical) {
    if (fNumCategorical == fNumPredictors) {
        fPredSetType = kAllCategorical;
    } else {
        fPredSetType = fNumCategorical == 0 ? kAllContinuous : kMixed;
    }
    ResetCriteria();
}

FSSettings::FSSettings(std::int32_t numPredictors, bool predIsCategorical, bool targetIsCategorical)
    : fNumPredictors(std::max(numPredictors, 0)),
      fvPredIsCategorical(static_cast<std::size_t>(fNumPredictors), predIsCategorical),
      fNumCategorical(predIsCategorical ? fNumPredictors : 0),
      fPredSetType(predIsCategorical ? kAllCategorical : kAllContinuous),
      fTargetIsCategorical(targetIsCategorical) {
    ResetCriteria();
}

void FSSettings::AddPredictor(bool categorical) { AddPredictors(1, categorical); }

void FSSettings::AddPredictors(std::int32_t count, bool categorical) {
    if (count < 1) return;
    const bool first = fNumPredictors == 0;
    fNumPredictors += count;
    fvPredIsCategorical.resize(static_cast<std::size_t>(fNumPredictors), categorical);
    if (categorical) fNumCategorical += count;
    const std::int32_t ownType = categorical ? kAllCategorical : kAllContinuous;
    if (first) {
        fPredSetType = ownType;
        ResetCriteria();
    } else if ((fPredSetType == kAllCategorical || fPredSetType == kAllContinuous) &&
               fPredSetType != ownType) {
        fPredSetType = kMixed;
        AdjustCriteria();
    }
}

void FSSettings::SetPredictorCategorical(std::int32_t index, bool categorical) {
    if (index < 0 || index >= fNumPredictors) return;
    if (IsPredictorCategorical(index) == categorical) return;
    fvPredIsCategorical[static_cast<std::size_t>(index)] = categorical;
    std::int32_t newType = fPredSetType;
    if (categorical) {
        // Intended: an all-continuous set in which one predictor turns categorical stays of that
        // type, but its criteria are adjusted (AllContinuousKeepsTypeWhenOneTurnsCategorical).
        fPredSetType = kMixed;
        ++fNumCategorical;
        if (fNumCategorical == fNumPredictors) newType = kAllCategorical;
    } else {
        --fNumCategorical;
        newType = fNumCategorical == 0 ? kAllContinuous : kMixed;
    }
    if (newType != fPredSetType) {
        fPredSetType = newType;
        AdjustCriteria();
    }
}

void FSSettings::SetPredictorsCategorical(std::int32_t first, std::int32_t last, bool categorical) {
    if (first < 0 || first > last || last >= fNumPredictors) return;
    for (std::int32_t index = first; index <= last; ++index) {
        SetPredictorCategorical(index, categorical);
    }
}

void FSSettings::SetTargetCategorical(bool categorical) {
    if (fTargetIsCategorical == categorical) return;
    fTargetIsCategorical = categorical;
    AdjustCriteria();
}

bool FSSettings::SetCriterion(std::int32_t criterion, bool on) {
    if (criterion < 0 || criterion >= FSCriterion::kCount) return false;
    if (IsCriterionOn(criterion) == on) return true;
    if (IsRefused(criterion, on)) return false;
    Switch(criterion, on);
    return true;
}

// Whether the data forbid a change of a criterion's state.
bool FSSettings::IsRefused(std::int32_t criterion, bool on) const {
    using namespace FSCriterion;
    if (fTargetIsCategorical) {
        if (on) {
            return criterion == kTStat ||
                   (fPredSetType == kAllCategorical && criterion == kFStat) ||
                   (fPredSetType == kAllContinuous && criterion != kFStat) ||
                   (fPredSetType == kMixed && (criterion == kCramer || criterion == kLambda));
        }
        return (criterion == kFStat && fPredSetType != kAllCategorical) ||
               (criterion < kFStat && fPredSetType != kAllContinuous &&
                NumCategoricalCriteriaOn() < 2);
    }
    if (on) {
        return (fPredSetType == kAllCategorical && criterion != kFStat) ||
               (fPredSetType == kAllContinuous && criterion != kTStat) ||
               (fPredSetType == kMixed && criterion != kFStat && criterion != kTStat);
    }
    return (fPredSetType == kAllCategorical && criterion == kFStat) ||
           (fPredSetType == kAllContinuous && criterion == kTStat) ||
           (fPredSetType == kMixed && (criterion == kFStat || criterion == kTStat));
}

// How many of the criteria for a pair of categorical variables are on.
std::int32_t FSSettings::NumCategoricalCriteriaOn() const {
    return static_cast<std::int32_t>(
        std::count(fvCriteria.begin(), fvCriteria.begin() + FSCriterion::kFStat, true));
}

// The default criteria of the predictor set type and the target.
void FSSettings::ResetCriteria() {
    using namespace FSCriterion;
    fvCriteria.assign(kCount, false);
    if (fPredSetType == kUnknownType) return;
    const bool mixed = fPredSetType == kMixed;
    if (fTargetIsCategorical) {
        const bool allCategorical = fPredSetType == kAllCategorical;
        Switch(kPearson, allCategorical || mixed);
        Switch(kLikelihood, allCategorical || mixed);
        Switch(kCramer, allCategorical);
        Switch(kLambda, allCategorical);
        Switch(kFStat, !allCategorical);
    } else {
        Switch(kFStat, fPredSetType == kAllCategorical || mixed);
        Switch(kTStat, fPredSetType == kAllContinuous || mixed);
    }
}

// Drops the criteria that the present kinds forbid and makes sure of one that they allow.
void FSSettings::AdjustCriteria() {
    using namespace FSCriterion;
    if (fTargetIsCategorical) {
        Switch(kTStat, false);
        if (fPredSetType == kAllCategorical) {
            Switch(kFStat, false);
            if (NumCategoricalCriteriaOn() == 0) {
                for (std::int32_t c = kPearson; c <= kLambda; ++c) Switch(c, true);
            }
        } else if (fPredSetType == kAllContinuous) {
            for (std::int32_t c = kPearson; c <= kLambda; ++c) Switch(c, false);
            Switch(kFStat, true);
        } else if (fPredSetType == kMixed) {
            Switch(kCramer, false);
            Switch(kLambda, false);
            Switch(kFStat, true);
            if (!IsCriterionOn(kPearson) && !IsCriterionOn(kLikelihood)) {
                Switch(kPearson, true);
                Switch(kLikelihood, true);
            }
        }
        return;
    }
    for (std::int32_t c = kPearson; c <= kLambda; ++c) Switch(c, false);
    if (fPredSetType == kUnknownType) return;
    Switch(kFStat, fPredSetType != kAllContinuous);
    Switch(kTStat, fPredSetType != kAllCategorical);
}

void FSSettings::SetMaxMissingPercent(double percent) {
    if (IsPercent(percent)) fMaxMissing = percent / 100.0;
}

void FSSettings::SetMaxSingleCategoryPercent(double percent) {
    if (IsPercent(percent)) fMaxSingleCategory = percent / 100.0;
}

void FSSettings::SetMaxCategoriesPercent(double percent) {
    if (IsPercent(percent)) fMaxCategories = percent / 100.0;
}

void FSSettings::SetMaxOneCaseCategoriesPercent(double percent) {
    if (IsPercent(percent)) fMaxOneCaseCategories = percent / 100.0;
}

void FSSettings::SetMinCoefVar(double coefVar) {
    if (coefVar >= 0.0) fMinCoefVar = coefVar;
}

void FSSettings::SetMinStdDev(double stdDev) {
    if (stdDev >= 0.0) fMinStdDev = stdDev;
}

void FSSettings::SetRecordsToSkip(std::int32_t records) {
    if (records >= 0) fRecordsToSkip = records;
}

void FSSettings::SetPredictorsToSkip(std::int32_t predictors) {
    if (predictors >= 0) fPredictorsToSkip = predictors;
}

void FSSettings::SetCaseIdPosition(std::int32_t column) {
    if (column >= 0) fCaseIdPosition = column;
}

void FSSettings::SetWeightPosition(std::int32_t column) {
    if (column >= 0) fWeightPosition = column;
}

bool FSSettings::IsPredictorCategorical(std::int32_t index) const {
    return index >= 0 && index < fNumPredictors &&
           fvPredIsCategorical[static_cast<std::size_t>(index)];
}

std::int32_t FSSettings::GetDefaultBestCount(std::int32_t count) const {
    const double available = count > 0 ? count : fNumPredictors;
    const double limit = std::max(30.0, 2.0 * std::sqrt(available));
    return static_cast<std::int32_t>(std::floor(std::min(available, limit) + 0.5));
}

std::string_view FSSettings::PredSetTypeText(std::int32_t type) {
    switch (type) {
        case kAllCategorical:
            return "All categorical";
        case kAllContinuous:
            return "All continuous";
        case kMixed:
            return "Mixed";
        default:
            return "Unrecognized";
    }
}

void FSSettings::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSSettings");
    FSDisplay::Line(out, "Number of predictors = ", fNumPredictors);
    FSDisplay::Vector(out, "Predictor types (if true, categorical)", fvPredIsCategorical);
    FSDisplay::Line(out, "Number of categorical predictors = ", fNumCategorical);
    out << "Predictor set type = " << PredSetTypeText(fPredSetType) << '\n';
    out << "Target type (if target is defined) = "
        << (fTargetIsCategorical ? "categorical" : "continuous") << '\n';
    FSDisplay::Vector(out, "Ranking criteria (if true, compute)", fvCriteria);
    out << "Progress listener address = " << static_cast<const void*>(fpProgressListener) << '\n';
    out << "Cancel status check address = " << static_cast<const void*>(fpCancelCheck) << '\n';
    FSDisplay::Line(out, "Number of records to skip for progress report = ", fRecordsToSkip);
    FSDisplay::Line(out, "Number of predictors to skip for progress report = ", fPredictorsToSkip);
    out << "Input is in the form of " << (fTransactions ? "transactions" : "records") << '\n';
    if (fTargetPosition < 0) {
        out << "No target is defined\n";
    } else {
        FSDisplay::Line(out, "Target position = ", fTargetPosition);
    }
    DisplayColumn(out, "Case ID position = ", fCaseIdPosition);
    DisplayColumn(out, "Frequency weight position = ", fWeightPosition);
    if (fWeightPosition >= 0) {
        out << "Case weight converted to frequency by " << ConversionText(fWeightConversion)
            << '\n';
    }
    FSDisplay::Line(out, "Maximum percent of missing values = ", GetMaxMissingPercent());
    DisplayRule(out, "too many missing", fDeleteManyMissing);
    FSDisplay::Line(out, "Maximum percent of single category = ", GetMaxSingleCategoryPercent());
    DisplayRule(out, "too many single category values", fDeleteManyConst);
    FSDisplay::Line(out, "Maximum number of categories as percent of number of cases = ",
                    GetMaxCategoriesPercent());
    DisplayRule(out, "too many categories", fDeleteManyCategs);
    FSDisplay::Line(out, "Maximum percentage of categories containing only one case = ",
                    GetMaxOneCaseCategoriesPercent());
    DisplayRule(out, "too many categories containing only one case", fDeleteManyCategsOneCase);
    FSDisplay::Line(out, "Minimum coefficient of variation = ", fMinCoefVar);
    DisplayRule(out, "too small variation", fDeleteSmallVar);
    FSDisplay::Line(out, "Minimum standard deviation = ", fMinStdDev);
    DisplayRule(out, "too small standard deviation", fDeleteSmallStdDev);
    FSDisplay::End(out, "FSSettings");
}

std::int64_t FSSettings::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSSettings::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSSettings::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSSettings::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}
