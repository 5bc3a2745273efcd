#include "featureselect/FSGroupMoments.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "featureselect/FSExactBytes.h"

void FSGroupMoments::Add(std::int32_t key, double value, double weight) {
    if (!(weight > 0.0)) return;
    FSGroupMomentsEntry fresh;
    fresh.fKey = key;
    FindOrInsert(std::move(fresh)).first.fMoments.Add(value, weight);
}

void FSGroupMoments::Merge(std::span<const FSGroupMomentsEntry> groups) {
    MergeEntries(groups, [](FSGroupMomentsEntry& mine, const FSGroupMomentsEntry& theirs) {
        mine.fMoments += theirs.fMoments;
    });
}

void FSGroupMoments::FinishVariances() {
    for (FSGroupMomentsEntry& entry : fvEntries) {
        const FSWeightSum divisor = entry.fMoments.fWeight - FSWeightSum(1.0);
        entry.fVariance = divisor > 0.0
                              ? (entry.fMoments.SecondMoment() / divisor.Exact().Scaled()).Value()
                              : 0.0;
    }
}

FSMoments FSGroupMoments::Total() const {
    FSMoments total;
    for (const FSGroupMomentsEntry& entry : fvEntries) total += entry.fMoments;
    return total;
}

FSMapIStat FSGroupMoments::Rounded() const {
    std::vector<FSMapIStatEntry> entries;
    entries.reserve(fvEntries.size());
    for (const FSGroupMomentsEntry& entry : fvEntries) {
        entries.push_back({entry.fKey, entry.fMoments.fWeight, entry.fMoments.Mean(),
                           entry.fMoments.SecondMoment().Value(), entry.fVariance});
    }
    return FSMapIStat(std::move(entries));
}

FSGroupMoments FSGroupMoments::Of(const FSMapIStat& rounded) {
    FSGroupMoments groups;
    groups.fvEntries.reserve(rounded.Entries().size());
    for (const FSMapIStatEntry& entry : rounded.Entries()) {
        groups.fvEntries.push_back({entry.fKey,
                                    FSMoments::Of(entry.fWeight, entry.fMean, entry.fSecondMoment),
                                    entry.fVariance});
    }
    return groups;
}

void FSGroupMoments::AppendTo(std::string& bytes) const {
    FSExactBytes::Append(bytes, Size());
    for (const FSGroupMomentsEntry& entry : fvEntries) {
        FSExactBytes::Append(bytes, entry.fKey);
        entry.fMoments.AppendTo(bytes);
    }
}

void FSGroupMoments::Display(std::ostream& out) const {
    Rounded().Display(out);
    const bool anyBeyond = std::any_of(fvEntries.begin(), fvEntries.end(), [](const auto& entry) {
        return entry.fMoments.SecondMoment().IsBeyondDouble();
    });
    if (anyBeyond) out << "A second moment is the largest double; the number is beyond it\n";
}
