#include "featureselect/FSContinuousAccum.h"

#include <algorithm>

#include "featureselect/FSDeletionReason.h"
#include "featureselect/FSDeletionRules.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSExactBytes.h"

void FSContinuousAccum::AddMissing(double weight) {
    if (!(weight > 0.0)) return;
    fProcessed += weight;
    fMissing += weight;
}

void FSContinuousAccum::TrackConstant(double value) {
    TrackRange(value + 0.0, value + 0.0);  // one zero for both
    if (!fConstant) return;
    if (fFirstValue == MCMV::gMissingValue) {
        fFirstValue = value;
    } else {
        fConstant = value == fFirstValue;
    }
}

void FSContinuousAccum::TrackRange(double lowest, double highest) {
    if (fLowest == MCMV::gMissingValue) {
        fLowest = lowest;
        fHighest = highest;
    } else {
        fLowest = std::min(fLowest, lowest);
        fHighest = std::max(fHighest, highest);
    }
}

// All valid values of a column at once.
void FSContinuousAccum::TrackColumn(std::span<const double> values, const FSBlockCases& cases,
                                    const FSFixedSums::Range& range) {
    if (range.fValid == 0) return;
    for (std::size_t row = 0; fFirstValue == MCMV::gMissingValue && row < values.size(); ++row) {
        if (cases.Counts(row)) fFirstValue = values[row];
    }
    fConstant = fConstant && range.fLowest == fFirstValue && range.fHighest == fFirstValue;
    TrackRange(range.fLowest, range.fHighest);
}

std::int32_t FSContinuousAccum::CheckDeletion(const FSSettings& settings) const {
    std::vector<std::int32_t> reasons;
    return CheckAllDeletions(settings, reasons) == 0 ? FSDeletionReason::kNone : reasons.front();
}

std::int32_t FSContinuousAccum::CheckAllDeletions(const FSSettings& settings,
                                                  std::vector<std::int32_t>& reasons) const {
    using namespace FSDeletionReason;
    reasons.clear();
    if (FSDeletionRules::ManyMissing(settings, fProcessed, fMissing)) {
        reasons.push_back(kManyMissing);
    }
    if (!(fProcessed > 0.0 && fMissing == fProcessed)) {  // else there is no spread to judge
        const double stdDev = ScreenedStdDev();
        if (FSDeletionRules::SmallStdDev(settings, stdDev)) reasons.push_back(kSmallStdDev);
        if (FSDeletionRules::SmallVar(settings, stdDev, ScreenedMean())) {
            reasons.push_back(kSmallVar);
        }
    }
    return static_cast<std::int32_t>(reasons.size());
}

void FSContinuousAccum::MergeCounts(const FSContinuousAccum& other) {
    if (other.fFirstValue != MCMV::gMissingValue) {
        TrackConstant(other.fFirstValue);
        fConstant = fConstant && other.fConstant;
    }
    if (other.fLowest != MCMV::gMissingValue) TrackRange(other.fLowest, other.fHighest);
    fProcessed += other.fProcessed;
    fMissing += other.fMissing;
}

void FSContinuousAccum::DisplayWeights(std::ostream& out) const {
    FSDisplay::Line(out, "Number of processed cases = ", fProcessed);
    FSDisplay::Line(out, "Number of missing cases = ", fMissing);
}

void FSContinuousAccum::DisplayConstant(std::ostream& out, std::string_view firstValueLabel) const {
    FSDisplay::Line(out, firstValueLabel, fFirstValue);
    out << (fConstant ? "This is constant\n" : "This is not constant\n");
}

void FSContinuousAccum::AppendCounts(std::string& bytes) const {
    fProcessed.Exact().AppendTo(bytes);
    fMissing.Exact().AppendTo(bytes);
    FSExactBytes::Append(bytes, fLowest);
    FSExactBytes::Append(bytes, fHighest);
}
