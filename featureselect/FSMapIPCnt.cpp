#include "featureselect/FSMapIPCnt.h"

#include "featureselect/FSArchives.h"
#include "featureselect/FSCount.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSExactBytes.h"

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

void FSMapIPCnt::Merge(std::span<const FSMapIPCntEntry> others) {
    MergeEntries(others, [](FSMapIPCntEntry& mine, const FSMapIPCntEntry& theirs) {
        FSCountMore(mine.fCount, theirs.fCount);
        mine.fWeight += theirs.fWeight;
    });
}

void FSMapIPCnt::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSMapIPCnt");
    FSDisplay::Line(out, "Map size = ", Size());
    for (const FSMapIPCntEntry& entry : fvEntries) {
        out << "Key = " << entry.fKey << ", Value = (" << entry.fCount << ", "
            << static_cast<double>(entry.fWeight) << ")\n";
    }
    FSDisplay::End(out, "FSMapIPCnt");
}

void FSMapIPCnt::AppendExact(std::string& bytes) const {
    FSExactBytes::Append(bytes, Size());
    for (const FSMapIPCntEntry& entry : fvEntries) {
        FSExactBytes::Append(bytes, entry.fKey);
        FSExactBytes::Append(bytes, entry.fCount);
        entry.fWeight.Exact().AppendTo(bytes);
    }
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
