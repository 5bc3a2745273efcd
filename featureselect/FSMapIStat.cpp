#include "featureselect/FSMapIStat.h"

#include "featureselect/FSArchives.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSRunningMean.h"

bool FSMapIStat::Add(std::int32_t key, double value, double weight) {
    if (!(weight > 0.0)) return FindEntry(key) != nullptr;
    const auto [entry, existed] = FindOrInsert({key, weight, value, 0.0, 0.0});
    if (existed) {
        const FSMeanStep step(entry.fWeight, weight);
        const double shift = step.Shift(value, entry.fMean);
        entry.fSecondMoment += step.Moment(shift, shift);
        entry.fMean += shift;
        entry.fWeight += weight;
    }
    return existed;
}

bool FSMapIStat::Find(std::int32_t key, double& weight, double& mean, double& secondMoment,
                      double& variance) const {
    const FSMapIStatEntry* entry = FindEntry(key);
    if (entry == nullptr) return false;
    weight = entry->fWeight;
    mean = entry->fMean;
    secondMoment = entry->fSecondMoment;
    variance = entry->fVariance;
    return true;
}

void FSMapIStat::MergeFrom(const FSMapIStat& other) {
    MergeEntries(other.Entries(), [](FSMapIStatEntry& mine, const FSMapIStatEntry& theirs) {
        const FSMeanJoin join(mine.fWeight, theirs.fWeight);
        const double delta = theirs.fMean - mine.fMean;
        mine.fSecondMoment += theirs.fSecondMoment + join.Moment(delta, delta);
        mine.fMean += delta * join.fShare;
        mine.fWeight += theirs.fWeight;
    });
}

void FSMapIStat::FinishVariances() {
    for (FSMapIStatEntry& entry : fvEntries) {
        const double divisor = entry.fWeight - 1.0;
        entry.fVariance = divisor > 0.0 ? entry.fSecondMoment / divisor : 0.0;
    }
}

void FSMapIStat::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSMapIStat");
    FSDisplay::Line(out, "Map size = ", Size());
    for (const FSMapIStatEntry& entry : fvEntries) {
        out << "Key = " << entry.fKey << ", Value = (" << entry.fWeight << ", " << entry.fMean
            << ", " << entry.fSecondMoment << ", " << entry.fVariance << ")\n";
    }
    FSDisplay::End(out, "FSMapIStat");
}

std::int64_t FSMapIStat::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSMapIStat::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSMapIStat::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSMapIStat::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}
