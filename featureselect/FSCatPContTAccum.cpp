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
    FSCountOne(fUnweightedValid);
}

void FSCatPContTAccum::AddValue(double, double, bool) {}

void FSCatPContTAccum::AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    AddColumns<FSCatPContTAccum>(parts, cases);
}

// As FSMapIStat::Add. A category without a weight is a new one.
void FSCatPContTAccum::Category::Add(double target, double weight) {
    if (fWeight > 0.0) {
        const FSMeanStep step(fWeight, weight);
        const double shift = step.Shift(target, fMean);
        fSecondMoment += step.Moment(shift, shift);
        fMean += shift;
        fWeight += weight;
    } else {
        fMean = target;
        fWeight = weight;
    }
}

template <class Entry>
void FSCatPContTAccum::AddEntries(std::span<const Entry> entries, std::uint32_t entryEnd,
                                  const FSBlockCases& cases) {
    AddToMean(entries, cases);
    if (!IsDense(entryEnd, cases)) return AddBySorting(entries, cases);
    std::vector<double> counts = LoadPredCounts(entryEnd);
    std::vector<Category> categories(entryEnd);
    for (const FSMapIStatEntry& entry : fTargetStats.Entries()) {
        const std::int64_t at = std::int64_t{entry.fKey} + 1;
        if (at <= 0 || at >= entryEnd) continue;
        categories[static_cast<std::size_t>(at)] = {entry.fWeight, entry.fMean, entry.fSecondMoment,
                                                    entry.fVariance};
    }
    for (std::size_t row = 0; row < entries.size(); ++row) {
        const std::size_t entry = entries[row];
        if (!cases.Counts(row) || entry == 0) continue;
        counts[entry] += cases.fWeights[row];
        categories[entry].Add(cases.fTargets[row], cases.fWeights[row]);
    }
    StorePredCounts(counts);
    std::vector<FSMapIStatEntry> stats;
    for (std::size_t entry = 1; entry < entryEnd; ++entry) {
        const Category& category = categories[entry];
        if (category.fWeight == 0.0) continue;
        stats.push_back({static_cast<std::int32_t>(entry - 1), category.fWeight, category.fMean,
                         category.fSecondMoment, category.fVariance});
    }
    fTargetStats.Replace(stats);
}

template <class Entry>
void FSCatPContTAccum::AddBySorting(std::span<const Entry> entries, const FSBlockCases& cases) {
    std::vector<FSMapIStatEntry> stats;
    AddSorted(entries, cases, [&](std::int32_t code, std::span<const std::uint32_t> rows) {
        Category category;
        fTargetStats.Find(code, category.fWeight, category.fMean, category.fSecondMoment,
                          category.fVariance);
        for (const std::uint32_t row : rows) {
            category.Add(cases.fTargets[row], cases.fWeights[row]);
        }
        stats.push_back(
            {code, category.fWeight, category.fMean, category.fSecondMoment, category.fVariance});
    });
    fTargetStats.Replace(stats);
}

// The grand mean and the counters, one record after the other.
template <class Entry>
void FSCatPContTAccum::AddToMean(std::span<const Entry> entries, const FSBlockCases& cases) {
    for (std::size_t row = 0; row < entries.size(); ++row) {
        if (!cases.Counts(row)) continue;
        const double weight = cases.fWeights[row];
        if (entries[row] == 0) {
            fMissing += weight;
        } else {
            fTargetMean +=
                FSMeanStep(ValidWeight(), weight).Shift(cases.fTargets[row], fTargetMean);
            FSCountOne(fUnweightedValid);
        }
        fProcessed += weight;
    }
}

FSTestResult FSCatPContTAccum::Test(std::int32_t criterion) const {
    if (criterion != FSCriterion::kFStat && criterion != FSCriterion::kTStat) return {};
    FSTestResult test = FSFTest::Of(fTargetStats, fTargetMean, ValidWeight()).Result();
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
