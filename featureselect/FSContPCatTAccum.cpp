#include "featureselect/FSContPCatTAccum.h"

#include <array>
#include <cmath>
#include <vector>

#include "featureselect/FSArchives.h"
#include "featureselect/FSCriterion.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSFTest.h"
#include "featureselect/FSRunningMean.h"
#include "featureselect/FSTruncate.h"

void FSContPCatTAccum::AddPair(double predictor, double target, double weight, bool) {
    if (!(weight > 0.0)) return;
    TrackConstant(predictor);
    fPredStats.Add(FSTruncate(target), predictor, weight);
    fMean += FSMeanStep(ValidWeight(), weight).Shift(predictor, fMean);
    fProcessed += weight;
}

void FSContPCatTAccum::AddValue(double, double, bool) {}

void FSContPCatTAccum::AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    AddInLanes<FSContPCatTAccum>(parts, cases);
}

bool FSContPCatTAccum::FitsLanes(const FSBlockCases& cases) const {
    return FSContinuousAccum::FitsLanes(cases) && fPredStats.HasOnlyWeights();
}

void FSContPCatTAccum::AddLanes(std::span<FSContPCatTAccum* const> accums,
                                const FSMomentLanes::Columns& columns, const FSBlockCases& cases) {
    FSMomentLanes::ByClass lanes;
    lanes.fvClasses.resize(cases.Classes());
    std::array<std::vector<FSMapIStatEntry>, FSMomentLanes::kLanes> stats;
    for (std::size_t lane = 0; lane < accums.size(); ++lane) {
        const FSContPCatTAccum& accum = *accums[lane];
        accum.LoadWeights(lanes.fWeights, lane);
        lanes.fMean[lane] = accum.fMean;
        stats[lane] = accum.fPredStats.EntriesOf(cases.fClassKeys);
        for (std::size_t at = 0; at < stats[lane].size(); ++at) {
            lanes.fvClasses[at].fWeight[lane] = stats[lane][at].fWeight;
            lanes.fvClasses[at].fMean[lane] = stats[lane][at].fMean;
            lanes.fvClasses[at].fMoment[lane] = stats[lane][at].fSecondMoment;
        }
    }
    FSMomentLanes::Add(lanes, columns, cases);
    for (std::size_t lane = 0; lane < accums.size(); ++lane) {
        FSContPCatTAccum& accum = *accums[lane];
        accum.StoreWeights(lanes.fWeights, lane);
        accum.fMean = lanes.fMean[lane];
        for (std::size_t at = 0; at < stats[lane].size(); ++at) {
            stats[lane][at].fWeight = lanes.fvClasses[at].fWeight[lane];
            stats[lane][at].fMean = lanes.fvClasses[at].fMean[lane];
            stats[lane][at].fSecondMoment = lanes.fvClasses[at].fMoment[lane];
        }
        std::erase_if(stats[lane], [](const auto& entry) { return entry.fWeight == 0.0; });
        accum.fPredStats.Replace(stats[lane]);
    }
}

FSTestResult FSContPCatTAccum::Test(std::int32_t criterion) const {
    const bool asChiSquare =
        criterion == FSCriterion::kPearson || criterion == FSCriterion::kLikelihood;
    if (!asChiSquare && criterion != FSCriterion::kFStat) return {};
    FSTestResult test = FSFTest::Of(fPredStats, fMean, ValidWeight()).Result();
    test.fTieBreak2 = asChiSquare ? -ValidWeight() : ValidWeight();
    return test;
}

bool FSContPCatTAccum::GetCriterionForDisplay(std::int32_t criterion, double& first, double& second,
                                              double& third, double& fourth) const {
    SetMissing(first, second, third, fourth);
    if (criterion != FSCriterion::kFStat) return false;
    double validWeight = 0.0;
    ComputeCriterion(criterion, first, second, validWeight, third, fourth);
    return true;
}

double FSContPCatTAccum::ScreenedStdDev() const {
    double weight = 0.0;
    double moment = 0.0;
    for (std::int32_t i = 0; i < fPredStats.Size(); ++i) {
        const FSMapIStatEntry& group = fPredStats.GetAt(i);
        const double deviation = fMean - group.fMean;
        weight += group.fWeight;
        moment += group.fSecondMoment + deviation * deviation * group.fWeight;
    }
    return weight > 1.0 ? std::sqrt(moment / (weight - 1.0)) : 0.0;
}

void FSContPCatTAccum::MergeFrom(const FSContPCatTAccum& other) {
    const double mine = ValidWeight();
    const double theirs = other.ValidWeight();
    if (theirs > 0.0) {
        if (mine > 0.0) {
            fMean += (other.fMean - fMean) * FSMeanJoin(mine, theirs).fShare;
        } else {
            fMean = other.fMean;  // copied: no bit changes
        }
    }
    fPredStats.MergeFrom(other.fPredStats);
    MergeCounts(other);
}

void FSContPCatTAccum::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSContPCatTAccum");
    DisplayWeights(out);
    FSDisplay::Line(out, "Grand mean of predictor = ", fMean);
    DisplayConstant(out, "The first non-missing predictor value = ");
    out << "Predictor statistics for target categories:\n";
    fPredStats.Display(out);
    FSDisplay::End(out, "FSContPCatTAccum");
}

std::int64_t FSContPCatTAccum::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSContPCatTAccum::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSContPCatTAccum::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSContPCatTAccum::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}
