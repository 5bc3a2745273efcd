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
    if (!IsDense(entryEnd, cases)) {
        CountRecords(entries, cases);
        AddSorted(entries, cases, [](std::int32_t, std::span<const std::uint32_t>) {});
        return;
    }
    std::vector<double> weights = LoadPredCounts(entryEnd);
    if (CountsExactly(cases)) {
        const std::vector<std::uint32_t> cells = FSCellCounts::Count(entries, entryEnd, cases);
        for (std::size_t entry = 1; entry < entryEnd; ++entry) weights[entry] += cells[entry];
        const auto missing = static_cast<std::int32_t>(cells[0]);
        CountUnits(cases.fCounted - missing, missing);
    } else {
        CountRecords(entries, cases);
        for (std::size_t row = 0; row < entries.size(); ++row) {
            if (cases.Counts(row)) weights[entries[row]] += cases.fWeights[row];
        }
    }
    StorePredCounts(weights);
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
