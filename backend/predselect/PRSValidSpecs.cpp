#include "backend/predselect/PRSValidSpecs.h"

#include <algorithm>
#include <limits>
#include <ostream>

#include "featureselect/FSCriterion.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSSettings.h"
#include "host/Assertion.h"
#include "host/CaseDelivery.h"
#include "host/Files.h"
#include "host/Progress.h"
#include "host/Random.h"
#include "naivebayes/NaiveBayesSettings.h"

class PRSValidSpecs::VarRegistry : public UAVarValidSpecs {
 public:
    using UAVarValidSpecs::UAVarValidSpecs;
    ~VarRegistry() = default;
};

namespace {

constexpr const char* kDebugBanner = "*** For debugging only, not part of the output ***";

template <class Vector>
std::size_t SizeOrZero(const Vector* vector) {
    return vector == nullptr ? 0 : vector->size();
}

void CheckSizes(const std::vector<std::int32_t>* list, const std::vector<bool>* flags) {
    const std::size_t nPreds = SizeOrZero(list);
    const std::size_t nFlags = SizeOrZero(flags);
    PREDSEL_ASSERT(nPreds == nFlags, "nPreds == nFlags");
}

void FlagLine(std::ostream& out, std::string_view label, bool value) {
    out << label << (value ? "true" : "false") << '\n';
}

void TextLine(std::ostream& out, std::string_view label, const std::string& value) {
    out << label << '"' << value << "\"\n";
}

template <class Vector>
void ListLines(std::ostream& out, std::string_view label, const Vector* values) {
    if (values == nullptr) {
        out << label << ": none\n";
    } else {
        FSDisplay::Vector(out, label, *values);
    }
}

}  // namespace

PRSValidSpecs::PRSValidSpecs() = default;
PRSValidSpecs::~PRSValidSpecs() = default;

void PRSValidSpecs::SetDependVar(std::int32_t index, bool isCat) {
    fDependVar = index;
    fbDependCat = isCat;
}

void PRSValidSpecs::SetPredictors(const std::vector<std::int32_t>* list,
                                  const std::vector<bool>* flags) {
    CheckSizes(list, flags);
    fpPredictList = list;
    fbpPredCatVarList = flags;
}

void PRSValidSpecs::SetForcePredictors(const std::vector<std::int32_t>* list,
                                       const std::vector<bool>* flags) {
    CheckSizes(list, flags);
    fpForcePredList = list;
    fbpForceCatVarList = flags;
}

void PRSValidSpecs::SetScreening(bool status, double pctMissing, double pctEqual, double pctUnequal,
                                 double cv, double stdDev) {
    fbScreening = status;
    fPctMissing = pctMissing;
    fPctEqual = pctEqual;
    fPctUnequal = pctUnequal;
    fCoefVar = cv;
    fStdDev = stdDev;
}

void PRSValidSpecs::SetScreeningTexts(std::string pctMissing, std::string pctEqual,
                                      std::string pctUnequal, std::string cv, std::string stdDev) {
    fPctMissingText = std::move(pctMissing);
    fPctEqualText = std::move(pctEqual);
    fPctUnequalText = std::move(pctUnequal);
    fCoefVarText = std::move(cv);
    fStdDevText = std::move(stdDev);
}

void PRSValidSpecs::SetSelectCriteria(std::int32_t size, std::int32_t ranking, double pCutoff,
                                      std::int32_t showUnselected, double timer) {
    fSelectSize = size;
    fRanking = ranking;
    fPCutoff = pCutoff;
    fShowUnselected = showUnselected;
    fTimer = timer;
}

void PRSValidSpecs::SetNaiveCriteria(std::int32_t bins, double memAllocate,
                                     std::int32_t showUnselected, double timer) {
    fBins = bins;
    fMultiMemAllocate = memAllocate;
    fShowUnselected = showUnselected;
    fTimer = timer;
}

void PRSValidSpecs::SetTrainSample(double percent, std::int32_t variable) {
    fTrainSampPct = percent;
    fTrainSampVar = variable;
}

void PRSValidSpecs::SetSubset(std::int32_t maxSize, bool pseudoBIC, bool testData,
                              std::int32_t exactSize) {
    fMaxSubsetSize = maxSize;
    fbPseudoBIC = pseudoBIC;
    fbTestData = testData;
    fExactSubsetSize = exactSize;
}

void PRSValidSpecs::SetPredProb(KoltVarName root, std::int32_t count) {
    fPredProbRoot = std::move(root);
    fMaxPredProbs = count;
}

void PRSValidSpecs::SetPredVal(KoltVarName name, bool isDefault) {
    fPredValName = std::move(name);
    fbPredValDefault = isDefault;
}

void PRSValidSpecs::SetPrintFlags(bool cps, bool excluded, bool summary, bool selected,
                                  bool classification, bool uncertainty) {
    fbPrintCPS = cps;
    fbPrintExcluded = excluded;
    fbPrintSummary = summary;
    fbPrintSelected = selected;
    fbPrintClassification = classification;
    fbPrintUncertainty = uncertainty;
}

void PRSValidSpecs::AddPrintRank(std::int32_t criterion) {
    if (std::find(fPrintRankList.begin(), fPrintRankList.end(), criterion) ==
        fPrintRankList.end()) {
        fPrintRankList.push_back(criterion);
    }
}

UAVarValidSpecs* PRSValidSpecs::GetVarValidSpecs() const { return fpVarValidSpecs.get(); }

std::int32_t PRSValidSpecs::GetPredictCount() const {
    return static_cast<std::int32_t>(SizeOrZero(fpPredictList));
}

std::int32_t PRSValidSpecs::GetForcePredCount() const {
    return static_cast<std::int32_t>(SizeOrZero(fpForcePredList));
}

std::int32_t PRSValidSpecs::GetEffectiveSelectSize() const {
    if (fSelectSize != 0) {
        return fSelectSize;
    }
    if (fpFSSettings == nullptr || fpPredictList == nullptr) {
        return 0;
    }
    return fpFSSettings->GetDefaultBestCount(GetPredictCount());
}

void PRSValidSpecs::FinishSpecs() {
    PREDSEL_ASSERT((fpPredictList == nullptr) == (fbpPredCatVarList == nullptr),
                   "fpPredictList != 0 && fbpPredCatVarList != 0");
    PREDSEL_ASSERT(SizeOrZero(fpPredictList) == SizeOrZero(fbpPredCatVarList),
                   "fpPredictList->size() == fbpPredCatVarList->size()");

    fpVarValidSpecs = std::make_unique<VarRegistry>(true, fbUserMissExclude, true);
    fpStopProcessor = std::make_unique<MCStopProcessor>(fTimer * 60.0);
    const std::int32_t targetColumn = fpVarValidSpecs->AddVariable(fDependVar, fbDependCat);
    const std::int32_t weightColumn =
        fWeightVar >= 0 ? fpVarValidSpecs->SetWeightVar(fWeightVar) : -1;
    if (fpPredictList != nullptr) {
        std::vector<std::int32_t> columns;
        fpVarValidSpecs->AddVariables(*fpPredictList, columns, *fbpPredCatVarList);
    }
    if (fbUniVariable) {
        FinishSelectPred(targetColumn, weightColumn);
    } else {
        FinishNaiveBayes();
    }
}

void PRSValidSpecs::FinishSelectPred(std::int32_t targetColumn, std::int32_t weightColumn) {
    if (fbpPredCatVarList != nullptr) {
        fpFSSettings = std::make_unique<FSSettings>(*fbpPredCatVarList, fbDependCat);
    } else {
        fpFSSettings = std::make_unique<FSSettings>();
        fpFSSettings->SetTargetCategorical(fbDependCat);
    }
    fpFSSettings->SetTargetPosition(targetColumn);
    if (weightColumn >= 0) {
        fpFSSettings->SetWeightPosition(weightColumn);
    }
    if (fbScreening) {
        fpFSSettings->SetMaxMissingPercent(fPctMissing);
        fpFSSettings->SetMaxSingleCategoryPercent(fPctEqual);
        fpFSSettings->SetMaxCategoriesPercent(fPctUnequal);
        fpFSSettings->SetMinCoefVar(fCoefVar);
        fpFSSettings->SetMinStdDev(fStdDev);
    }
    // The settings refuse what these data do not allow; their own defaults then remain.
    fpFSSettings->SetCriterion(fRanking, true);
    for (const std::int32_t criterion : fPrintRankList) {
        if (criterion >= FSCriterion::kPearson && criterion <= FSCriterion::kLambda) {
            fpFSSettings->SetCriterion(criterion, true);
        }
    }
    fpFSSettings->SetCancelCheck(fpStopProcessor.get());
}

void PRSValidSpecs::FinishNaiveBayes() {
    fpNBSettings = std::make_unique<NaiveBayesSettings>();
    fpRandom = std::make_unique<UAUniformRandom>();
    if (fpForcePredList != nullptr && fbpForceCatVarList != nullptr) {
        std::vector<std::int32_t> columns;
        fpVarValidSpecs->AddVariables(*fpForcePredList, columns, *fbpForceCatVarList);
    }
    PREDSEL_ASSERT(fMultiMemAllocate >= 4.0, "fMultiMemAllocate >= 4.0");
    // Values of 8 bytes each and an allowance for the record itself.
    const double recordBytes = fpVarValidSpecs->GetNRecordVars() * 8.0 + 16.0;
    const double records = fMultiMemAllocate * 1024.0 / recordBytes;
    constexpr auto kMost = std::numeric_limits<std::int32_t>::max();
    fpNBSettings->fMaxRecordsInMemory =
        records < static_cast<double>(kMost) ? static_cast<std::int32_t>(records) : kMost;
    // The generator stays the engine's own: simulated records do not hang on the host's seed.
    fpNBSettings->fpUserRandom = fpRandom.get();
    fpNBSettings->fpStopProcessor = fpStopProcessor.get();
    fpNBSettings->fTempDir = GetKoltTempPath();
}

std::string_view PRSValidSpecs::RankingText(std::int32_t criterion) {
    switch (criterion) {
        case FSCriterion::kPearson:
            return "= Pearson Chi Square";
        case FSCriterion::kLikelihood:
            return "= Likelihood Ratio Chi Square";
        case FSCriterion::kCramer:
            return "= Predictors are sorted in descending order of Cramers's V";
        case FSCriterion::kLambda:
            return "= Rank Predictors based on Lambda (asymmetric)";
        default:
            return "= unrecognized";
    }
}

void PRSValidSpecs::Display(std::ostream& out) const {
    out << "PRSValidSpecs display start\n" << kDebugBanner << '\n';
    out << (fbUniVariable ? "This is SELECTPRED (univariable)\n"
                          : "This is NAIVEBAYES (multivariable)\n");
    FSDisplay::Line(out, "Dependent variable index = ", fDependVar);
    FlagLine(out, "Dependent variable is categorical = ", fbDependCat);
    FSDisplay::Line(out, "Weight variable index = ", fWeightVar);
    ListLines(out, "Predictor list", fpPredictList);
    ListLines(out, "Predictor is categorical", fbpPredCatVarList);
    if (!fbUniVariable) {
        ListLines(out, "Forced predictor list", fpForcePredList);
        ListLines(out, "Forced predictor is categorical", fbpForceCatVarList);
    }
    ListLines(out, "Except list", fpExceptList);
    if (fbUniVariable) {
        DisplaySelectPred(out);
    } else {
        DisplayNaiveBayes(out);
    }
    FlagLine(out, "Exclude user-missing values = ", fbUserMissExclude);
    TextLine(out, "Factor macro variable = ", fFactorMacroVar.GetString());
    TextLine(out, "Covariate macro variable = ", fCovarMacroVar.GetString());
    if (fbUniVariable) {
        out << "Number of further ranking criteria = " << fPrintRankList.size() << '\n';
        for (const std::int32_t criterion : fPrintRankList) {
            out << "Further ranking criterion " << RankingText(criterion) << '\n';
        }
    } else {
        TextLine(out, "Predicted probability root name = ", fPredProbRoot.GetString());
        FSDisplay::Line(out, "Maximum number of predicted probabilities = ", fMaxPredProbs);
        TextLine(out, "Predicted value name = ", fPredValName.GetString());
        FlagLine(out, "Predicted value name is the default = ", fbPredValDefault);
        TextLine(out, "Model file = ", fModelFile);
    }
    FlagLine(out, "Print case processing summary = ", fbPrintCPS);
    FlagLine(out, "Print excluded predictors = ", fbPrintExcluded);
    FlagLine(out, "Print summary = ", fbPrintSummary);
    FlagLine(out, "Print selected predictors = ", fbPrintSelected);
    if (fbUniVariable) {
        FlagLine(out, "Plot summary = ", fbPlotSummary);
    } else {
        FlagLine(out, "Print classification = ", fbPrintClassification);
        FlagLine(out, "Print uncertainty = ", fbPrintUncertainty);
        FlagLine(out, "Plot uncertainty = ", fbPlotUncertainty);
    }
    out << kDebugBanner << '\n' << "PRSValidSpecs display end\n";
}

void PRSValidSpecs::DisplaySelectPred(std::ostream& out) const {
    FlagLine(out, "Screening = ", fbScreening);
    FSDisplay::Line(out, "Percent missing = ", fPctMissing);
    FSDisplay::Line(out, "Percent equal = ", fPctEqual);
    FSDisplay::Line(out, "Percent unequal = ", fPctUnequal);
    FSDisplay::Line(out, "Coefficient of variation = ", fCoefVar);
    FSDisplay::Line(out, "Standard deviation = ", fStdDev);
    TextLine(out, "Percent missing as typed = ", fPctMissingText);
    TextLine(out, "Percent equal as typed = ", fPctEqualText);
    TextLine(out, "Percent unequal as typed = ", fPctUnequalText);
    TextLine(out, "Coefficient of variation as typed = ", fCoefVarText);
    TextLine(out, "Standard deviation as typed = ", fStdDevText);
    FSDisplay::Line(out, "Timer in minutes = ", fTimer);
    FSDisplay::Line(out, "Unselected predictors to show = ", fShowUnselected);
    FSDisplay::Line(out, "Number of predictors to select = ", fSelectSize);
    out << "Ranking criterion " << RankingText(fRanking) << '\n';
    FSDisplay::Line(out, "P-value cut-off = ", fPCutoff);
}

void PRSValidSpecs::DisplayNaiveBayes(std::ostream& out) const {
    FSDisplay::Line(out, "Timer in minutes = ", fTimer);
    FSDisplay::Line(out, "Unselected predictors to show = ", fShowUnselected);
    FSDisplay::Line(out, "Bins = ", fBins);
    FSDisplay::Line(out, "Memory in megabytes = ", fMultiMemAllocate);
    FSDisplay::Line(out, "Training sample percent = ", fTrainSampPct);
    FSDisplay::Line(out, "Training sample variable index = ", fTrainSampVar);
    FSDisplay::Line(out, "Maximum subset size = ", fMaxSubsetSize);
    FlagLine(out, "Best subset by pseudo-BIC = ", fbPseudoBIC);
    FlagLine(out, "Best subset by test data = ", fbTestData);
    FSDisplay::Line(out, "Exact subset size = ", fExactSubsetSize);
}
