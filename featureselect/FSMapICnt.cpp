#include "featureselect/FSMapICnt.h"

#include "featureselect/FSArchives.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSExactBytes.h"

bool FSMapICnt::Add(std::int32_t key, double weight) {
    const auto [entry, existed] = FindOrInsert({key, weight});
    if (existed) entry.fWeight += weight;
    return existed;
}

bool FSMapICnt::Find(std::int32_t key, double& weight) const {
    const FSMapICntEntry* entry = FindEntry(key);
    if (entry == nullptr) return false;
    weight = entry->fWeight;
    return true;
}

void FSMapICnt::Merge(std::span<const FSMapICntEntry> others) {
    MergeEntries(others, [](FSMapICntEntry& mine, const FSMapICntEntry& theirs) {
        mine.fWeight += theirs.fWeight;
    });
}

void FSMapICnt::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSMapICnt");
    FSDisplay::Line(out, "Map size = ", Size());
    for (const FSMapICntEntry& entry : fvEntries) {
        out << "Key = " << entry.fKey << ", Value = " << static_cast<double>(entry.fWeight) << '\n';
    }
    FSDisplay::End(out, "FSMapICnt");
}

void FSMapICnt::AppendExact(std::string& bytes) const {
    FSExactBytes::Append(bytes, Size());
    for (const FSMapICntEntry& entry : fvEntries) {
        FSExactBytes::Append(bytes, entry.fKey);
        entry.fWeight.Exact().AppendTo(bytes);
    }
}

std::int64_t FSMapICnt::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSMapICnt::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSMapICnt::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSMapICnt::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}
