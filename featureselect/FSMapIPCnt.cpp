#include "featureselect/FSMapIPCnt.h"

#include "featureselect/FSArchives.h"
#include "featureselect/FSCount.h"
#include "featureselect/FSDisplay.h"

bool FSMapIPCnt::Add(std::int32_t key, double weight) {
    const auto [entry, existed] = FindOrInsert({key, 1, weight});
    if (existed) {
        FSCountOne(entry.fCount);
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
    MergeEntries(other.Entries(), [](FSMapIPCntEntry& mine, const FSMapIPCntEntry& theirs) {
        // Counts of a broken state may not fit; FSPredictorSet merges only what does.
        mine.fCount = static_cast<std::int32_t>(static_cast<std::uint32_t>(mine.fCount) +
                                                static_cast<std::uint32_t>(theirs.fCount));
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

std::int64_t FSMapIPCnt::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSMapIPCnt::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSMapIPCnt::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSMapIPCnt::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}
