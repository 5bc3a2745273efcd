#include "featureselect/FSContAccum.h"

#include "featureselect/FSArchives.h"
#include "featureselect/FSDisplay.h"

void FSContAccum::AddPair(double, double, double, bool) {}

void FSContAccum::AddValue(double value, double weight, bool track) {
    if (!(weight > 0.0)) return;
    TrackConstant(value);
    if (track) fMoments.Add(value, weight);
    fProcessed += weight;
}

void FSContAccum::AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    AddColumns<FSContAccum>(parts, cases);
}

FSWeightSum FSContAccum::AddColumn(FSOrderedColumn& column, const FSBlockCases&,
                                   FSWeightSum& missing) {
    const FSWeightSum before = fMoments.fWeight;
    column.AddMoments(0, fMoments, missing);
    return fMoments.fWeight - before;
}

void FSContAccum::FinishData() {
    const FSWeightSum valid = ValidWeight();
    if (!(valid > 1.0)) return;
    fSpread = fMoments.SecondMoment() / (valid - FSWeightSum(1.0)).Exact().Scaled();
    fVariance = fSpread.Value();
}

void FSContAccum::TakeRounded(double mean, double secondMoment) {
    fMoments = FSMoments::Of(ValidWeight(), mean, secondMoment);
    fSpread = FSScaled(fVariance);
    fLowest = fHighest = fFirstValue;
}

void FSContAccum::ComputeCriterion(std::int32_t, double&, double&, double&, double&,
                                   double&) const {}

bool FSContAccum::GetCriterionForDisplay(std::int32_t, double& first, double& second, double& third,
                                         double& fourth) const {
    SetMissing(first, second, third, fourth);
    return false;
}

void FSContAccum::MergeFrom(const FSContAccum& other) {
    fMoments += other.fMoments;
    MergeCounts(other);
}

void FSContAccum::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSContAccum");
    DisplayWeights(out);
    DisplayConstant(out, "The first non-missing value = ");
    FSDisplay::Line(out, "Mean = ", fMoments.Mean());
    FSDisplay::Line(out, "Second moment = ", fMoments.SecondMoment());
    FSDisplay::Line(out, "Variance = ", fVariance);
    FSDisplay::End(out, "FSContAccum");
}

void FSContAccum::AppendExact(std::string& bytes) const {
    AppendCounts(bytes);
    fMoments.AppendTo(bytes);
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
