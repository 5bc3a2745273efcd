#include "featureselect/FSMapIPCnt.h"

#include "featureselect/FSDisplay.h"

bool FSMapIPCnt::Add(std::int32_t key, double weight) {
    const auto [entry, existed] = FindOrInsert({key, 1, weight});
    if (existed) {
        ++entry.fCount;
        entry.fWeight += weight;
    }
    return existed;
}

bool FSMapIPCnt::Find(std::int32_t key, std::int32_t& count, double& weight) const {
    const FSMapIPCntEntry* entry = FindEntry(key);
    if (entry == nullptr) return false;
    count = entry->fCount;
    weight = entry->fWeight;
    return true;
}

void FSMapIPCnt::MergeFrom(const FSMapIPCnt& other) {
    MergeEntries(other, [](FSMapIPCntEntry& mine, const FSMapIPCntEntry& theirs) {
        mine.fCount += theirs.fCount;
        mine.fWeight += theirs.fWeight;
    });
}

void FSMapIPCnt::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSMapIPCnt");
    FSDisplay::Line(out, "Map size = ", Size());
    for (const FSMapIPCntEntry& entry : fvEntries) {
        out << "Key = " << entry.fKey << ", Value = (" << entry.fCount << ", " << entry.fWeight
            << ")\n";
    }
    FSDisplay::End(out, "FSMapIPCnt");
}
