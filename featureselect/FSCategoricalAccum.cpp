#include "featureselect/FSCategoricalAccum.h"

#include "featureselect/FSDeletionReason.h"
#include "featureselect/FSDeletionRules.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSExactBytes.h"

void FSCategoricalAccum::AddMissing(double weight) {
    if (!(weight > 0.0)) return;
    fProcessed += weight;
    fMissing += weight;
}

void FSCategoricalAccum::TrackConstant(std::int32_t category) {
    if (!fConstant) return;
    if (fFirstCategory == -1) {
        fFirstCategory = category;
    } else {
        fConstant = category == fFirstCategory;
    }
}

std::int32_t FSCategoricalAccum::CheckDeletion(const FSSettings& settings) const {
    std::vector<std::int32_t> reasons;
    return CheckAllDeletions(settings, reasons) == 0 ? FSDeletionReason::kNone : reasons.front();
}

std::int32_t FSCategoricalAccum::CheckAllDeletions(const FSSettings& settings,
                                                   std::vector<std::int32_t>& reasons) const {
    using namespace FSDeletionReason;
    reasons.clear();
    if (FSDeletionRules::ManyMissing(settings, fProcessed, fMissing)) {
        reasons.push_back(kManyMissing);
    }
    if (FSDeletionRules::ManyConst(settings, fPredCounts)) reasons.push_back(kManyConst);
    if (FSDeletionRules::ManyCategs(settings, fPredCounts, fUnweightedValid)) {
        reasons.push_back(kManyCategs);
    }
    if (HasOneCaseRule() &&
        FSDeletionRules::ManyCategsWithOneCase(settings, fPredCounts, fUnweightedValid)) {
        reasons.push_back(kManyCategsWithOneCase);
    }
    return static_cast<std::int32_t>(reasons.size());
}

void FSCategoricalAccum::MergeCounts(const FSCategoricalAccum& other) {
    if (other.fFirstCategory != -1) {
        TrackConstant(other.fFirstCategory);
        fConstant = fConstant && other.fConstant;
    }
    fPredCounts.MergeFrom(other.fPredCounts);
    fProcessed += other.fProcessed;
    FSCountMore(fUnweightedValid, other.fUnweightedValid);
    fMissing += other.fMissing;
}

void FSCategoricalAccum::DisplayCounters(std::ostream& out,
                                         std::string_view firstCategoryLabel) const {
    FSDisplay::Line(out, "Number of processed cases = ", fProcessed);
    FSDisplay::Line(out, "Number of unweighted valid cases = ", fUnweightedValid);
    FSDisplay::Line(out, "Number of missing cases = ", fMissing);
    FSDisplay::Line(out, firstCategoryLabel, fFirstCategory);
    out << (fConstant ? "This is constant\n" : "This is not constant\n");
}

void FSCategoricalAccum::AppendCounts(std::string& bytes) const {
    fProcessed.Exact().AppendTo(bytes);
    fMissing.Exact().AppendTo(bytes);
    FSExactBytes::Append(bytes, fUnweightedValid);
    fPredCounts.AppendExact(bytes);
}
