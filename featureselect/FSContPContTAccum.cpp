#include "featureselect/FSContPContTAccum.h"

#include <cmath>

#include "featureselect/FSArchives.h"
#include "featureselect/FSCriterion.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSDistributions.h"
#include "featureselect/FSRunningMean.h"

void FSContPContTAccum::AddPair(double predictor, double target, double weight, bool) {
    if (!(weight > 0.0)) return;
    TrackConstant(predictor);
    const FSMeanStep step(ValidWeight(), weight);
    const double predShift = step.Shift(predictor, fPredMean);
    const double targetShift = step.Shift(target, fTargetMean);
    fPredMean += predShift;
    fPredSecondMoment += step.Moment(predShift, predShift);
    fTargetMean += targetShift;
    fTargetSecondMoment += step.Moment(targetShift, targetShift);
    fCrossProduct += step.Moment(predShift, targetShift);
    fProcessed += weight;
}

void FSContPContTAccum::AddValue(double, double, bool) {}

void FSContPContTAccum::AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    AddInLanes<FSContPContTAccum>(parts, cases);
}

void FSContPContTAccum::AddLanes(std::span<FSContPContTAccum* const> accums,
                                 const FSMomentLanes::Columns& columns, const FSBlockCases& cases) {
    FSMomentLanes::Pair lanes;
    for (std::size_t lane = 0; lane < accums.size(); ++lane) {
        const FSContPContTAccum& accum = *accums[lane];
        accum.LoadWeights(lanes.fWeights, lane);
        lanes.fPredMean[lane] = accum.fPredMean;
        lanes.fPredMoment[lane] = accum.fPredSecondMoment;
        lanes.fTargetMean[lane] = accum.fTargetMean;
        lanes.fTargetMoment[lane] = accum.fTargetSecondMoment;
        lanes.fCross[lane] = accum.fCrossProduct;
    }
    FSMomentLanes::Add(lanes, columns, cases);
    for (std::size_t lane = 0; lane < accums.size(); ++lane) {
        FSContPContTAccum& accum = *accums[lane];
        accum.StoreWeights(lanes.fWeights, lane);
        accum.fPredMean = lanes.fPredMean[lane];
        accum.fPredSecondMoment = lanes.fPredMoment[lane];
        accum.fTargetMean = lanes.fTargetMean[lane];
        accum.fTargetSecondMoment = lanes.fTargetMoment[lane];
        accum.fCrossProduct = lanes.fCross[lane];
    }
}

void FSContPContTAccum::FinishData() {
    fCorrelation = MCMV::gMissingValue;
    const double divisor = ValidWeight() - 1.0;
    if (!(ValidWeight() > 1.0)) {
        fPredVariance = 0.0;
        fTargetVariance = 0.0;
        return;
    }
    fPredVariance = fPredSecondMoment / divisor;
    fTargetVariance = fTargetSecondMoment / divisor;
    if (fPredVariance > 0.0 && fTargetVariance > 0.0) {
        fCorrelation =
            (fCrossProduct / divisor) / std::sqrt(fPredVariance) / std::sqrt(fTargetVariance);
    }
}

FSTestResult FSContPContTAccum::Test(std::int32_t criterion) const {
    if (criterion != FSCriterion::kFStat && criterion != FSCriterion::kTStat) return {};
    if (fCorrelation == MCMV::gMissingValue) return {};
    const double squared = fCorrelation * fCorrelation;
    const double df = ValidWeight() - 2.0;
    FSTestResult test;
    test.fTest = FSTestResult::kT;
    test.fDf1 = df;
    test.fTieBreak1 = squared;
    test.fTieBreak2 = df + 2.0;
    test.fExtra1 = fCorrelation;
    if (squared < 1.0 && df >= 0.0) {
        const double t = std::sqrt(df / (1.0 - squared)) * fCorrelation;
        test.fExtra2 = t;
        test.fStatistic = std::abs(t);
        const double below = TCdf(t, df);
        if (below != MCMV::gMissingValue) test.fValue = 2.0 * (t > 0.0 ? 1.0 - below : below);
    } else {
        test.fValue = 0.0;
    }
    return test;
}

bool FSContPContTAccum::GetCriterionForDisplay(std::int32_t criterion, double& first,
                                               double& second, double& third,
                                               double& fourth) const {
    SetMissing(first, second, third, fourth);
    if (criterion != FSCriterion::kTStat) return false;
    double squared = 0.0;
    double validWeight = 0.0;
    ComputeCriterion(criterion, first, squared, validWeight, second, third);
    if (validWeight != MCMV::gMissingValue) fourth = validWeight - 2.0;
    return true;
}

double FSContPContTAccum::ScreenedStdDev() const { return std::sqrt(fPredVariance); }

void FSContPContTAccum::MergeFrom(const FSContPContTAccum& other) {
    const double mine = ValidWeight();
    const double theirs = other.ValidWeight();
    if (theirs > 0.0) {
        if (mine > 0.0) {
            const FSMeanJoin join(mine, theirs);
            const double predDelta = other.fPredMean - fPredMean;
            const double targetDelta = other.fTargetMean - fTargetMean;
            fPredMean += predDelta * join.fShare;
            fPredSecondMoment += other.fPredSecondMoment + join.Moment(predDelta, predDelta);
            fTargetMean += targetDelta * join.fShare;
            fTargetSecondMoment +=
                other.fTargetSecondMoment + join.Moment(targetDelta, targetDelta);
            fCrossProduct += other.fCrossProduct + join.Moment(predDelta, targetDelta);
        } else {  // copied: no bit changes
            fPredMean = other.fPredMean;
            fPredSecondMoment = other.fPredSecondMoment;
            fTargetMean = other.fTargetMean;
            fTargetSecondMoment = other.fTargetSecondMoment;
            fCrossProduct = other.fCrossProduct;
        }
    }
    MergeCounts(other);
}

void FSContPContTAccum::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSContPContTAccum");
    DisplayWeights(out);
    DisplayConstant(out, "The first non-missing value = ");
    FSDisplay::Line(out, "Mean of the predictor = ", fPredMean);
    FSDisplay::Line(out, "Second moment of the predictor = ", fPredSecondMoment);
    FSDisplay::Line(out, "Mean of the target = ", fTargetMean);
    FSDisplay::Line(out, "Second moment of the target = ", fTargetSecondMoment);
    FSDisplay::Line(out, "Cross-product = ", fCrossProduct);
    FSDisplay::Line(out, "Variance of the predictor = ", fPredVariance);
    FSDisplay::Line(out, "Variance of the target = ", fTargetVariance);
    FSDisplay::Line(out, "Pearson correlation coefficient = ", fCorrelation);
    FSDisplay::End(out, "FSContPContTAccum");
}

std::int64_t FSContPContTAccum::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSContPContTAccum::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSContPContTAccum::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSContPContTAccum::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}
