#include "featureselect/FSContPContTAccum.h"

#include <cmath>
#include <limits>

#include "featureselect/FSArchives.h"
#include "featureselect/FSCriterion.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSDistributions.h"

void FSContPContTAccum::AddPair(double predictor, double target, double weight, bool) {
    if (!(weight > 0.0)) return;
    TrackConstant(predictor);
    fPairs.Add(predictor, target, weight);
    fProcessed += weight;
}

void FSContPContTAccum::AddValue(double, double, bool) {}

void FSContPContTAccum::AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    AddColumns<FSContPContTAccum>(parts, cases);
}

FSWeightSum FSContPContTAccum::AddColumn(FSOrderedColumn& column, const FSBlockCases&,
                                         FSWeightSum& missing) {
    const FSWeightSum before = fPairs.fWeight;
    column.AddPairs(fPairs, missing);
    return fPairs.fWeight - before;
}

// With n the sum of weights, n times the sums of squared and cross deviations are differences of
// exact products, and so is 1 - r^2 above their denominator: nothing cancels that was rounded.
void FSContPContTAccum::FinishData() {
    fCorrelation = MCMV::gMissingValue;
    const FSWeightSum valid = ValidWeight();
    fPredVariance = 0.0;
    fTargetVariance = 0.0;
    fPredSpread = FSScaled();
    if (!(valid > 1.0)) return;
    const FSMoments x = fPairs.X();
    const FSMoments y = fPairs.Y();
    const FSScaled divisor = (valid - FSWeightSum(1.0)).Exact().Scaled();
    fPredSpread = x.SecondMoment() / divisor;
    fPredVariance = fPredSpread.Value();
    fTargetVariance = (y.SecondMoment() / divisor).Value();
    const FSExactSum xx = x.WeightedSecondMoment();
    const FSExactSum yy = y.WeightedSecondMoment();
    if (!fPairs.IsNumber() || xx.Sign() <= 0 || yy.Sign() <= 0) return;
    const FSExactSum xy = fPairs.WeightedCross();
    const FSExactSum whole = xx * yy;
    const FSExactSum explained = xy * xy;
    fSquared = explained.Scaled() / whole.Scaled();
    fUnexplained = (whole - explained).Scaled() / whole.Scaled();
    fCorrelation = (xy.Scaled() / whole.Scaled().SquareRoot()).Value();
}

FSTestResult FSContPContTAccum::Test(std::int32_t criterion) const {
    if (criterion != FSCriterion::kFStat && criterion != FSCriterion::kTStat) return {};
    if (fCorrelation == MCMV::gMissingValue) return {};
    const FSWeightSum df = ValidWeight() - FSWeightSum(2.0);
    FSTestResult test;
    test.fTest = FSTestResult::kT;
    test.fDf1 = df;
    test.fTieBreak1 = fSquared.Value();
    test.fTieBreak2 = ValidWeight();
    test.fExtra1 = fCorrelation;
    if (fUnexplained.IsPositive() && df >= 0.0) {
        const FSScaled t = (df.Exact().Scaled() * fSquared / fUnexplained).SquareRoot();
        test.fExtra2 = std::copysign(t.Value(), fCorrelation);
        test.fStatistic = t.Value();
        const FSTail tail = TTail(test.fStatistic, df);
        test.fValue = tail.fP;
        test.fLogP = tail.fLogP;
    } else {
        test.fValue = 0.0;
        test.fLogP = -std::numeric_limits<double>::infinity();
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

void FSContPContTAccum::MergeFrom(const FSContPContTAccum& other) {
    fPairs += other.fPairs;
    MergeCounts(other);
}

void FSContPContTAccum::AppendExact(std::string& bytes) const {
    AppendCounts(bytes);
    fPairs.AppendTo(bytes);
}

void FSContPContTAccum::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSContPContTAccum");
    DisplayWeights(out);
    DisplayConstant(out, "The first non-missing value = ");
    FSDisplay::Line(out, "Mean of the predictor = ", fPairs.X().Mean());
    FSDisplay::Line(out, "Second moment of the predictor = ", fPairs.X().SecondMoment());
    FSDisplay::Line(out, "Mean of the target = ", fPairs.Y().Mean());
    FSDisplay::Line(out, "Second moment of the target = ", fPairs.Y().SecondMoment());
    FSDisplay::Line(out, "Cross-product = ", fPairs.Cross());
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
