#include "featureselect/FSMapPiCnt.h"

#include "featureselect/FSArchives.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSExactBytes.h"

bool FSMapPiCnt::Add(FSCategoryPair key, double weight) {
    const auto [entry, existed] = FindOrInsert({key, weight});
    if (existed) entry.fWeight += weight;
    return existed;
}

bool FSMapPiCnt::Find(FSCategoryPair key, double& weight) const {
    const FSMapPiCntEntry* entry = FindEntry(key);
    if (entry == nullptr) return false;
    weight = entry->fWeight;
    return true;
}

void FSMapPiCnt::Merge(std::span<const FSMapPiCntEntry> others) {
    MergeEntries(others, [](FSMapPiCntEntry& mine, const FSMapPiCntEntry& theirs) {
        mine.fWeight += theirs.fWeight;
    });
}

void FSMapPiCnt::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSMapPiCnt");
    FSDisplay::Line(out, "Map size = ", Size());
    for (const FSMapPiCntEntry& entry : fvEntries) {
        out << "Key = (" << entry.fKey.fPredictor << ", " << entry.fKey.fTarget
            << ") Value = " << static_cast<double>(entry.fWeight) << '\n';
    }
    FSDisplay::End(out, "FSMapPiCnt");
}

void FSMapPiCnt::AppendExact(std::string& bytes) const {
    FSExactBytes::Append(bytes, Size());
    for (const FSMapPiCntEntry& entry : fvEntries) {
        FSExactBytes::Append(bytes, entry.fKey.fPredictor);
        FSExactBytes::Append(bytes, entry.fKey.fTarget);
        entry.fWeight.Exact().AppendTo(bytes);
    }
}

std::int64_t FSMapPiCnt::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSMapPiCnt::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSMapPiCnt::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSMapPiCnt::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}
