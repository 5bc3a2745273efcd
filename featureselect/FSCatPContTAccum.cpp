#include "featureselect/FSCatPContTAccum.h"

#include "featureselect/FSArchives.h"
#include "featureselect/FSCriterion.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSFTest.h"
#include "featureselect/FSRunningMean.h"
#include "featureselect/FSTruncate.h"

void FSCatPContTAccum::AddPair(double predictor, double target, double weight, bool) {
    if (!(weight > 0.0)) return;
    const std::int32_t category = FSTruncate(predictor);
    TrackConstant(category);
    fPredCounts.Add(category, weight);
    fTargetStats.Add(category, target, weight);
    fTargetMean += FSMeanStep(ValidWeight(), weight).Shift(target, fTargetMean);
    fProcessed += weight;
    ++fUnweightedValid;
}

void FSCatPContTAccum::AddValue(double, double, bool) {}

void FSCatPContTAccum::ComputeCriterion(std::int32_t criterion, double& value, double& tieBreak1,
                                        double& tieBreak2, double& extra1, double& extra2) const {
    SetMissing(value, tieBreak1, tieBreak2, extra1, extra2);
    if (criterion != FSCriterion::kFStat && criterion != FSCriterion::kTStat) return;
    const FSFTest test = FSFTest::Of(fTargetStats, fTargetMean, ValidWeight());
    value = test.fPValue;
    tieBreak1 = test.fF;
    tieBreak2 = ValidWeight();
    extra1 = test.fDf1;
    extra2 = test.fDf2;
}

bool FSCatPContTAccum::GetCriterionForDisplay(std::int32_t criterion, double& first, double& second,
                                              double& third, double& fourth) const {
    SetMissing(first, second, third, fourth);
    if (criterion != FSCriterion::kFStat) return false;
    double validWeight = 0.0;
    ComputeCriterion(criterion, first, second, validWeight, third, fourth);
    return true;
}

void FSCatPContTAccum::MergeFrom(const FSCatPContTAccum& other) {
    const double mine = ValidWeight();
    const double theirs = other.ValidWeight();
    if (mine > 0.0) {
        if (theirs > 0.0) {
            fTargetMean += (other.fTargetMean - fTargetMean) * FSMeanJoin(mine, theirs).fShare;
        }
    } else {
        fTargetMean = other.fTargetMean;  // copied: no bit changes
    }
    fTargetStats.MergeFrom(other.fTargetStats);
    MergeCounts(other);
}

void FSCatPContTAccum::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSCatPContTAccum");
    FSDisplay::Line(out, "Number of predictor categories = ", fPredCounts.Size());
    DisplayCounters(out, "The first non-missing category = ");
    FSDisplay::Line(out, "Grand mean of the target = ", fTargetMean);
    out << "Case counts of predictor categories:\n";
    fPredCounts.Display(out);
    out << "Target statistics for predictor categories:\n";
    fTargetStats.Display(out);
    FSDisplay::End(out, "FSCatPContTAccum");
}

std::int64_t FSCatPContTAccum::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSCatPContTAccum::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSCatPContTAccum::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSCatPContTAccum::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}
