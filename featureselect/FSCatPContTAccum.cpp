#include "featureselect/FSCatPContTAccum.h"

#include <utility>
#include <vector>

#include "featureselect/FSArchives.h"
#include "featureselect/FSCriterion.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSFTest.h"
#include "featureselect/FSTruncate.h"

void FSCatPContTAccum::AddPair(double predictor, double target, double weight, bool) {
    if (!(weight > 0.0)) return;
    const std::int32_t category = FSTruncate(predictor);
    TrackConstant(category);
    fPredCounts.Add(category, weight);
    fGroups.Add(category, target, weight);
    fSum.AddProduct(weight, target);
    fProcessed += weight;
    FSCountOne(fUnweightedValid);
}

void FSCatPContTAccum::AddValue(double, double, bool) {}

void FSCatPContTAccum::AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    AddColumns<FSCatPContTAccum>(parts, cases);
}

template <class Entry>
void FSCatPContTAccum::AddEntries(std::span<const Entry> entries, std::uint32_t entryEnd,
                                  const FSBlockCases& cases) {
    const FSRowLines& lines = cases.fpNumbers->Lines();
    std::vector<FSMapICntEntry> counts;
    std::vector<FSGroupMomentsEntry> groups;
    FSWeightSum missing;
    FSWeightSum valid;
    const auto put = [&](std::uint32_t entry, const std::int64_t* line) {
        if (lines.IsZero(line)) return;
        FSGroupMomentsEntry group;
        group.fKey = static_cast<std::int32_t>(entry - 1);
        lines.AddMoments(line, group.fMoments);
        if (entry == 0) {
            missing += group.fMoments.fWeight;
            return;
        }
        valid += group.fMoments.fWeight;
        fSum += group.fMoments.fSum;
        counts.push_back({group.fKey, group.fMoments.fWeight});
        groups.push_back(std::move(group));
    };
    if (IsDense(entryEnd, cases)) {
        std::vector<std::int64_t> table(entryEnd * lines.Stride());
        lines.AddTo(table, entries.size(), [&](std::size_t row) { return entries[row]; });
        for (std::uint32_t entry = 0; entry < entryEnd; ++entry) {
            put(entry, &table[entry * lines.Stride()]);
        }
    } else {
        ForEachCode(entries, cases, [&](std::uint32_t entry, std::span<const std::uint32_t> rows) {
            put(entry, lines.SumOf(rows).data());
        });
    }
    CountRecords(entries, cases, valid, missing);
    fPredCounts.Merge(counts);
    fGroups.Merge(groups);
}

double FSCatPContTAccum::GrandMean() const {
    const FSExactSum weight = ValidWeight().Exact();
    return weight.Sign() == 0 ? 0.0 : (fSum.Scaled() / weight.Scaled()).Value();
}

FSTestResult FSCatPContTAccum::Test(std::int32_t criterion) const {
    if (criterion != FSCriterion::kFStat && criterion != FSCriterion::kTStat) return {};
    FSTestResult test = FSFTest::Of(fGroups, fSum, ValidWeight()).Result();
    test.fTieBreak2 = ValidWeight();
    return test;
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
    fSum += other.fSum;
    fGroups.MergeFrom(other.fGroups);
    MergeCounts(other);
}

void FSCatPContTAccum::AppendExact(std::string& bytes) const {
    AppendCounts(bytes);
    fGroups.AppendTo(bytes);
}

void FSCatPContTAccum::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSCatPContTAccum");
    FSDisplay::Line(out, "Number of predictor categories = ", fPredCounts.Size());
    DisplayCounters(out, "The first non-missing category = ");
    FSDisplay::Line(out, "Grand mean of the target = ", GrandMean());
    out << "Case counts of predictor categories:\n";
    fPredCounts.Display(out);
    out << "Target statistics for predictor categories:\n";
    fGroups.Display(out);
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
