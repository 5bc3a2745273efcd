#include "featureselect/FSPredictorSet.h"

#include <ostream>
#include <string>

#include "featureselect/FSDeletionReason.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSSettings.h"

FSPredictorSet::FSPredictorSet(const FSSettings& settings, FSCancelState& cancel)
    : fpSettings(&settings),
      fpCancel(&cancel),
      fNumPredictors(settings.GetNumPredictors()),
      fPredSetType(settings.GetPredSetType()) {
    const auto predictors = static_cast<std::size_t>(fNumPredictors);
    for (std::int32_t criterion = 0; criterion < FSCriterion::kCount; ++criterion) {
        if (!settings.IsCriterionOn(criterion)) continue;
        fvRanks[static_cast<std::size_t>(criterion)].assign(predictors, -1);
        fvValues[static_cast<std::size_t>(criterion)].assign(predictors, MCMV::gMissingValue);
    }
}

void FSPredictorSet::Reset() {
    fNumPredictors = 0;
    fPredSetType = FSSettings::kUnknownType;
    fMemoryAllocated = false;
    fpTargetAccum.reset();
    fvpAccum.clear();
    fvDeletedIndices.clear();
    fvDeletionReasons.clear();
    for (auto& records : fvpSort) records.clear();
    for (auto& ranks : fvRanks) ranks.clear();
    for (auto& values : fvValues) values.clear();
    for (auto& logs : fvLogP) logs.clear();
}

void FSPredictorSet::GetRecordCounts(double& weightedValid, double& weightedExcluded,
                                     std::int32_t& unweightedValid,
                                     std::int32_t& unweightedExcluded) const {
    weightedValid = fWeightedValid;
    weightedExcluded = fWeightedExcluded;
    unweightedValid = fUnweightedValid;
    unweightedExcluded = fUnweightedExcluded;
}

std::int32_t FSPredictorSet::GetNumberOfTargetCategories() const {
    return fpTargetAccum ? fpTargetAccum->Size() : -1;
}

std::string_view FSPredictorSet::GetCriterionName(std::int32_t criterion) {
    switch (criterion) {
        case FSCriterion::kPearson:
            return "Pearson";
        case FSCriterion::kLikelihood:
            return "Likelihood";
        case FSCriterion::kCramer:
            return "Cramer";
        case FSCriterion::kLambda:
            return "Lambda";
        case FSCriterion::kFStat:
            return "F-Statistic";
        case FSCriterion::kTStat:
            return "t-Statistic";
        default:
            return {};
    }
}

std::string_view FSPredictorSet::GetReasonName(std::int32_t reason) {
    switch (reason) {
        case FSDeletionReason::kAllMissing:
            return "allMissing";
        case FSDeletionReason::kAllConst:
            return "allConst";
        case FSDeletionReason::kManyMissing:
            return "manyMissing";
        case FSDeletionReason::kManyConst:
            return "manyConst";
        case FSDeletionReason::kManyCategs:
            return "manyCategs";
        // Intended: a deleted predictor's kManyCategsWithOneCase has no name, although the list of
        // rules has one. TheSixthReasonHasNoName holds this.
        case FSDeletionReason::kManyCategsWithOneCase:
            return {};
        case FSDeletionReason::kSmallStdDev:
            return "smallStdDev";
        case FSDeletionReason::kSmallVar:
            return "smallVar";
        default:
            return {};
    }
}

namespace {

std::string_view StateText(std::int32_t state) {
    switch (state) {
        case FSPredictorSet::kInitial:
            return "Initial";
        case FSPredictorSet::kAccumulated:
            return "Counts and statistics accumulated";
        case FSPredictorSet::kChecked:
            return "Predictors checked for deletion";
        case FSPredictorSet::kComputed:
            return "Ranking criteria computed";
        case FSPredictorSet::kSortedAll:
            return "Predictors sorted (all)";
        case FSPredictorSet::kSortedBest:
            return "Predictors sorted (best)";
        case FSPredictorSet::kRanked:
            return "Predictors ranked";
        default:
            return {};
    }
}

constexpr std::array<std::string_view, FSCriterion::kCount> kSortVectors{
    "fvpSortPearson", "fvpSortLikelihood", "fvpSortCramer",
    "fvpSortLambda",  "fvpSortFStat",      "fvpSortTStat"};

}  // namespace

void FSPredictorSet::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSPredictorSet");
    out << (fpCancel->WasCancelled() ? "cancel has been called" : "cancel has not been called")
        << '\n';
    FSDisplay::Line(out, "Number of predictors = ", fNumPredictors);
    out << "Predictor set type = " << FSSettings::PredSetTypeText(fPredSetType) << '\n';
    out << "Predictor set status = " << StateText(fStatus) << '\n';
    out << (fMemoryAllocated ? "Memory for accumulation allocated"
                             : "Memory for accumulation not allocated")
        << '\n';
    out << (fDataPassCompleted ? "Data pass completed" : "Data pass not completed") << '\n';
    out << (fNoValidData ? "No valid data found" : "Valid data found") << '\n';
    out << (fNoValidWeight ? "No records with valid weight found"
                           : "Records with valid weight found")
        << '\n';
    FSDisplay::Line(out, "Weighted number of valid records = ", fWeightedValid);
    FSDisplay::Line(out, "Weighted number of excluded records = ", fWeightedExcluded);
    FSDisplay::Line(out, "Unweighted number of valid records = ", fUnweightedValid);
    FSDisplay::Line(out, "Unweighted number of excluded records = ", fUnweightedExcluded);
    out << "Total elapsed time " << fElapsed << " seconds.\n";
    FSDisplay::Line(out, "Number of best predictors sorted with SortBest() = ", fNumBestSorted);
    if (fpTargetAccum) {
        out << "Target data accumulation:\n";
        fpTargetAccum->Display(out);
    } else {
        out << "Target data accumulation object not allocated\n";
    }
    out << "Vector fvpAccum:\n";
    for (const auto& accum : fvpAccum) {
        if (accum) accum->Display(out);
    }
    FSDisplay::Vector(out, "Indices of deleted predictors", fvDeletedIndices);
    FSDisplay::Vector(out, "Reasons for deletion of deleted predictors", fvDeletionReasons);
    for (std::size_t slot = 0; slot < kSortVectors.size(); ++slot) {
        out << "Vector " << kSortVectors[slot] << ":\n";
        for (const auto& record : fvpSort[slot]) record->Display(out);
    }
    const auto criterionName = [](std::size_t slot) {
        return std::string(GetCriterionName(static_cast<std::int32_t>(slot)));
    };
    for (std::size_t slot = 0; slot < fvRanks.size(); ++slot) {
        FSDisplay::Vector(out, "Ranks based on " + criterionName(slot), fvRanks[slot]);
    }
    for (std::size_t slot = 0; slot < fvValues.size(); ++slot) {
        FSDisplay::Vector(
            out, "Criterion values in original order of predictors for " + criterionName(slot),
            fvValues[slot]);
    }
    FSDisplay::End(out, "FSPredictorSet");
}
