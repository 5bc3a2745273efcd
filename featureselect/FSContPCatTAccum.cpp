#include "featureselect/FSContPCatTAccum.h"

#include <utility>
#include <vector>

#include "featureselect/FSArchives.h"
#include "featureselect/FSCriterion.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSFTest.h"
#include "featureselect/FSTruncate.h"

void FSContPCatTAccum::AddPair(double predictor, double target, double weight, bool) {
    if (!(weight > 0.0)) return;
    TrackConstant(predictor);
    fGroups.Add(FSTruncate(target), predictor, weight);
    fSum.AddProduct(weight, predictor);
    fProcessed += weight;
}

void FSContPCatTAccum::AddValue(double, double, bool) {}

void FSContPCatTAccum::AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    AddColumns<FSContPCatTAccum>(parts, cases);
}

FSWeightSum FSContPCatTAccum::AddColumn(FSOrderedColumn& column, const FSBlockCases& cases,
                                        FSWeightSum& missing) {
    std::vector<FSGroupMomentsEntry> groups;
    FSWeightSum valid;
    for (std::size_t group = 0; group < cases.Classes(); ++group) {
        FSGroupMomentsEntry entry;
        entry.fKey = cases.fClassKeys[group];
        column.AddMoments(group, entry.fMoments, missing);
        if (entry.fMoments.fWeight == 0.0) continue;
        valid += entry.fMoments.fWeight;
        fSum += entry.fMoments.fSum;
        groups.push_back(std::move(entry));
    }
    fGroups.Merge(groups);
    return valid;
}

FSTestResult FSContPCatTAccum::Test(std::int32_t criterion) const {
    const bool asChiSquare =
        criterion == FSCriterion::kPearson || criterion == FSCriterion::kLikelihood;
    if (!asChiSquare && criterion != FSCriterion::kFStat) return {};
    FSTestResult test = FSFTest::Of(fGroups, fSum, ValidWeight()).Result();
    const double weight = ValidWeight();
    test.fTieBreak2 = asChiSquare ? -weight : weight;
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

double FSContPCatTAccum::GrandMean() const {
    const FSExactSum weight = ValidWeight().Exact();
    return weight.Sign() == 0 ? 0.0 : (fSum.Scaled() / weight.Scaled()).Value();
}

double FSContPCatTAccum::ScreenedStdDev() const {
    const FSMoments all = fGroups.Total();
    if (!(all.fWeight > 1.0)) return 0.0;
    const FSScaled divisor = (all.fWeight - FSWeightSum(1.0)).Exact().Scaled();
    return (all.SecondMoment() / divisor).SquareRoot().Value();
}

void FSContPCatTAccum::TakeRounded(double mean, const FSMapIStat& groups) {
    fSum = ValidWeight().Exact() * FSExactSum(mean);
    fGroups = FSGroupMoments::Of(groups);
    fLowest = fHighest = fFirstValue;
}

void FSContPCatTAccum::MergeFrom(const FSContPCatTAccum& other) {
    fSum += other.fSum;
    fGroups.MergeFrom(other.fGroups);
    MergeCounts(other);
}

void FSContPCatTAccum::AppendExact(std::string& bytes) const {
    AppendCounts(bytes);
    fGroups.AppendTo(bytes);
}

void FSContPCatTAccum::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSContPCatTAccum");
    DisplayWeights(out);
    FSDisplay::Line(out, "Grand mean of predictor = ", GrandMean());
    DisplayConstant(out, "The first non-missing predictor value = ");
    out << "Predictor statistics for target categories:\n";
    fGroups.Display(out);
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
