#include "featureselect/FSContAccum.h"

#include <cmath>

#include "featureselect/FSArchives.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSRunningMean.h"

void FSContAccum::AddPair(double, double, double, bool) {}

void FSContAccum::AddValue(double value, double weight, bool track) {
    if (!(weight > 0.0)) return;
    TrackConstant(value);
    if (track) {
        const FSMeanStep step(ValidWeight(), weight);
        const double shift = step.Shift(value, fMean);
        fMean += shift;
        fSecondMoment += step.Moment(shift, shift);
    }
    fProcessed += weight;
}

void FSContAccum::AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    AddInLanes<FSContAccum>(parts, cases);
}

void FSContAccum::AddLanes(std::span<FSContAccum* const> accums,
                           const FSMomentLanes::Columns& columns, const FSBlockCases& cases) {
    FSMomentLanes::Single lanes;
    for (std::size_t lane = 0; lane < accums.size(); ++lane) {
        const FSContAccum& accum = *accums[lane];
        accum.LoadWeights(lanes.fWeights, lane);
        lanes.fMean[lane] = accum.fMean;
        lanes.fMoment[lane] = accum.fSecondMoment;
    }
    FSMomentLanes::Add(lanes, columns, cases);
    for (std::size_t lane = 0; lane < accums.size(); ++lane) {
        FSContAccum& accum = *accums[lane];
        accum.StoreWeights(lanes.fWeights, lane);
        accum.fMean = lanes.fMean[lane];
        accum.fSecondMoment = lanes.fMoment[lane];
    }
}

void FSContAccum::FinishData() {
    const double valid = ValidWeight();
    if (valid > 1.0) fVariance = fSecondMoment / (valid - 1.0);
}

void FSContAccum::ComputeCriterion(std::int32_t, double&, double&, double&, double&,
                                   double&) const {}

bool FSContAccum::GetCriterionForDisplay(std::int32_t, double& first, double& second, double& third,
                                         double& fourth) const {
    SetMissing(first, second, third, fourth);
    return false;
}

double FSContAccum::ScreenedStdDev() const { return std::sqrt(fVariance); }

void FSContAccum::MergeFrom(const FSContAccum& other) {
    const double mine = ValidWeight();
    const double theirs = other.ValidWeight();
    if (theirs > 0.0) {
        if (mine > 0.0) {
            const FSMeanJoin join(mine, theirs);
            const double delta = other.fMean - fMean;
            fMean += delta * join.fShare;
            fSecondMoment += other.fSecondMoment + join.Moment(delta, delta);
        } else {  // copied: no bit changes
            fMean = other.fMean;
            fSecondMoment = other.fSecondMoment;
        }
    }
    MergeCounts(other);
}

void FSContAccum::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSContAccum");
    DisplayWeights(out);
    DisplayConstant(out, "The first non-missing value = ");
    FSDisplay::Line(out, "Mean = ", fMean);
    FSDisplay::Line(out, "Second moment = ", fSecondMoment);
    FSDisplay::Line(out, "Variance = ", fVariance);
    FSDisplay::End(out, "FSContAccum");
}

std::int64_t FSContAccum::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSContAccum::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSContAccum::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSContAccum::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}
