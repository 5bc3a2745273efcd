#include "featureselect/FSCatAccum.h"

#include <vector>

#include "featureselect/FSArchives.h"
#include "featureselect/FSCellCounts.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSTruncate.h"

void FSCatAccum::AddPair(double, double, double, bool) {}

void FSCatAccum::AddValue(double value, double weight, bool track) {
    if (!(weight > 0.0)) return;
    const std::int32_t category = FSTruncate(value);
    TrackConstant(category);
    if (track) fPredCounts.Add(category, weight);
    fProcessed += weight;
    FSCountOne(fUnweightedValid);
}

void FSCatAccum::AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    AddColumns<FSCatAccum>(parts, cases);
}

template <class Entry>
void FSCatAccum::AddEntries(std::span<const Entry> entries, std::uint32_t entryEnd,
                            const FSBlockCases& cases) {
    std::vector<FSMapICntEntry> counts;
    FSWeightSum missing;
    FSWeightSum valid;
    const auto put = [&](std::uint32_t entry, const FSWeightSum& weight) {
        if (weight == 0.0) return;
        if (entry == 0) {
            missing += weight;
        } else {
            valid += weight;
            counts.push_back({static_cast<std::int32_t>(entry - 1), weight});
        }
    };
    if (!IsDense(entryEnd, cases)) {
        ForEachCode(entries, cases, [&](std::uint32_t entry, std::span<const std::uint32_t> rows) {
            FSWeightSum weight;
            if (cases.fbUnit) {
                weight += static_cast<double>(rows.size());
            } else {
                const FSRowLines& lines = cases.fpNumbers->Lines();
                lines.AddWeight(lines.SumOf(rows).data(), weight);
            }
            put(entry, weight);
        });
    } else if (cases.fbUnit) {
        const std::vector<std::uint32_t> cells = FSCellCounts::Count(entries, entryEnd, cases);
        for (std::uint32_t entry = 0; entry < entryEnd; ++entry) put(entry, cells[entry]);
    } else {
        const FSRowLines& lines = cases.fpNumbers->Lines();
        std::vector<std::int64_t> cells(entryEnd * lines.Stride());
        lines.AddTo(cells, entries.size(), [&](std::size_t row) { return entries[row]; });
        for (std::uint32_t entry = 0; entry < entryEnd; ++entry) {
            FSWeightSum weight;
            lines.AddWeight(&cells[entry * lines.Stride()], weight);
            put(entry, weight);
        }
    }
    CountRecords(entries, cases, valid, missing);
    fPredCounts.Merge(counts);
}

void FSCatAccum::ComputeCriterion(std::int32_t, double&, double&, double&, double&, double&) const {
}

bool FSCatAccum::GetCriterionForDisplay(std::int32_t, double& first, double& second, double& third,
                                        double& fourth) const {
    SetMissing(first, second, third, fourth);
    return false;
}

void FSCatAccum::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSCatAccum");
    FSDisplay::Line(out, "Number of variable categories = ", fPredCounts.Size());
    DisplayCounters(out, "The first non-missing category = ");
    out << "Case counts of predictor categories:\n";
    fPredCounts.Display(out);
    FSDisplay::End(out, "FSCatAccum");
}

void FSCatAccum::AppendExact(std::string& bytes) const { AppendCounts(bytes); }

std::int64_t FSCatAccum::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSCatAccum::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSCatAccum::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSCatAccum::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}
