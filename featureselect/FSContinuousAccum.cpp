#include "featureselect/FSContinuousAccum.h"

#include "featureselect/FSDeletionReason.h"
#include "featureselect/FSDeletionRules.h"
#include "featureselect/FSDisplay.h"

void FSContinuousAccum::AddMissing(double weight) {
    if (!(weight > 0.0)) return;
    fProcessed += weight;
    fMissing += weight;
}

void FSContinuousAccum::TrackConstant(double value) {
    if (!fConstant) return;
    if (fFirstValue == MCMV::gMissingValue) {
        fFirstValue = value;
    } else {
        fConstant = value == fFirstValue;
    }
}

void FSContinuousAccum::TrackConstants(std::span<const double> values, const FSBlockCases& cases) {
    for (std::size_t row = 0; fConstant && row < values.size(); ++row) {
        if (cases.Counts(row) && values[row] != MCMV::gMissingValue) TrackConstant(values[row]);
    }
}

bool FSContinuousAccum::FitsLanes(const FSBlockCases& cases) const {
    return !cases.fbUnit || (FSCountsExactly(fProcessed, cases.fCounted) &&
                             FSCountsExactly(fMissing, cases.fCounted));
}

void FSContinuousAccum::LoadWeights(FSMomentLanes::Weights& weights, std::size_t lane) const {
    weights.fProcessed[lane] = fProcessed;
    weights.fMissing[lane] = fMissing;
}

void FSContinuousAccum::StoreWeights(const FSMomentLanes::Weights& weights, std::size_t lane) {
    fProcessed = weights.fProcessed[lane];
    fMissing = weights.fMissing[lane];
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
