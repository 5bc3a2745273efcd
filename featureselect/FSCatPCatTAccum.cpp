#include "featureselect/FSCatPCatTAccum.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "featureselect/FSArchives.h"
#include "featureselect/FSCellCounts.h"
#include "featureselect/FSCriterion.h"
#include "featureselect/FSDisplay.h"
#include "featureselect/FSDistributions.h"
#include "featureselect/FSTruncate.h"
#include "host/Records.h"

void FSCatPCatTAccum::AddPair(double predictor, double target, double weight, bool) {
    if (!(weight > 0.0)) return;
    const FSCategoryPair pair{FSTruncate(predictor), FSTruncate(target)};
    TrackConstant(pair.fPredictor);
    fPredCounts.Add(pair.fPredictor, weight);
    fTargetCounts.Add(pair.fTarget, weight);
    fPairCounts.Add(pair, weight);
    fProcessed += weight;
    FSCountOne(fUnweightedValid);
}

void FSCatPCatTAccum::AddValue(double, double, bool) {}

void FSCatPCatTAccum::AddBlock(std::span<const FSBlockPart> parts, const FSBlockCases& cases) {
    AddColumns<FSCatPCatTAccum>(parts, cases);
}

template <class Entry>
void FSCatPCatTAccum::AddEntries(std::span<const Entry> entries, std::uint32_t entryEnd,
                                 const FSBlockCases& cases) {
    if (!IsDense(entryEnd, cases)) return AddBySorting(entries, cases);
    const std::size_t classes = cases.Classes();
    std::vector<double> rows = LoadPredCounts(entryEnd);
    std::vector<FSMapICntEntry> columns = fTargetCounts.EntriesOf(cases.fClassKeys);
    std::vector<double> cells = LoadCells(entryEnd, cases.fClassKeys);
    if (CountsPairsExactly(cases)) {
        const std::vector<std::uint32_t> counts = FSCellCounts::Count(entries, entryEnd, cases);
        std::uint32_t missing = 0;
        for (std::size_t group = 0; group < classes; ++group) {
            const std::size_t start = group * entryEnd;
            missing += counts[start];
            std::uint32_t valid = 0;
            for (std::size_t entry = 1; entry < entryEnd; ++entry) {
                const std::uint32_t count = counts[start + entry];
                cells[start + entry] += count;
                rows[entry] += count;
                valid += count;
            }
            columns[group].fWeight += valid;
        }
        CountUnits(cases.fCounted - static_cast<std::int32_t>(missing),
                   static_cast<std::int32_t>(missing));
    } else {
        CountRecords(entries, cases);
        for (std::size_t row = 0; row < entries.size(); ++row) {
            const std::size_t entry = entries[row];
            if (!cases.Counts(row) || entry == 0) continue;
            const std::size_t group = cases.fClasses[row];
            const double weight = cases.fWeights[row];
            rows[entry] += weight;
            columns[group].fWeight += weight;
            cells[group * entryEnd + entry] += weight;
        }
    }
    StorePredCounts(rows);
    StoreTargetCounts(columns);
    StoreCells(cells, entryEnd, cases.fClassKeys);
}

template <class Entry>
void FSCatPCatTAccum::AddBySorting(std::span<const Entry> entries, const FSBlockCases& cases) {
    CountRecords(entries, cases);
    std::vector<FSMapICntEntry> columns = fTargetCounts.EntriesOf(cases.fClassKeys);
    for (std::size_t row = 0; row < entries.size(); ++row) {
        if (!cases.Counts(row) || entries[row] == 0) continue;
        columns[cases.fClasses[row]].fWeight += cases.fWeights[row];
    }
    StoreTargetCounts(columns);
    std::vector<FSMapPiCntEntry> pairs;
    AddSorted(entries, cases, [&](std::int32_t code, std::span<std::uint32_t> rows) {
        std::sort(rows.begin(), rows.end(), [&](std::uint32_t a, std::uint32_t b) {
            return cases.fClasses[a] != cases.fClasses[b] ? cases.fClasses[a] < cases.fClasses[b]
                                                          : a < b;
        });
        for (std::size_t at = 0; at < rows.size();) {
            const std::uint16_t group = cases.fClasses[rows[at]];
            FSMapPiCntEntry pair{{code, cases.fClassKeys[group]}, 0.0};
            fPairCounts.Find(pair.fKey, pair.fWeight);
            for (; at < rows.size() && cases.fClasses[rows[at]] == group; ++at) {
                pair.fWeight += cases.fWeights[rows[at]];
            }
            pairs.push_back(pair);
        }
    });
    fPairCounts.Replace(pairs);
}

bool FSCatPCatTAccum::CountsPairsExactly(const FSBlockCases& cases) const {
    return CountsExactly(cases) && CountsExactly(fTargetCounts, cases) &&
           std::all_of(fPairCounts.Entries().begin(), fPairCounts.Entries().end(),
                       [&](const FSMapPiCntEntry& pair) {
                           return FSCountsExactly(pair.fWeight, cases.fCounted);
                       });
}

// Weight per [class * entryEnd + entry], 0 where there is none.
std::vector<double> FSCatPCatTAccum::LoadCells(std::uint32_t entryEnd,
                                               std::span<const std::int32_t> classKeys) const {
    std::vector<double> cells(classKeys.size() * entryEnd);
    for (const FSMapPiCntEntry& pair : fPairCounts.Entries()) {
        const std::int64_t entry = std::int64_t{pair.fKey.fPredictor} + 1;
        if (entry <= 0 || entry >= entryEnd) continue;
        const auto found = std::lower_bound(classKeys.begin(), classKeys.end(), pair.fKey.fTarget);
        if (found == classKeys.end() || *found != pair.fKey.fTarget) continue;
        const auto group = static_cast<std::size_t>(found - classKeys.begin());
        cells[group * entryEnd + static_cast<std::size_t>(entry)] = pair.fWeight;
    }
    return cells;
}

void FSCatPCatTAccum::StoreCells(std::span<const double> cells, std::uint32_t entryEnd,
                                 std::span<const std::int32_t> classKeys) {
    std::vector<FSMapPiCntEntry> pairs;
    for (std::size_t entry = 1; entry < entryEnd; ++entry) {
        for (std::size_t group = 0; group < classKeys.size(); ++group) {
            const double weight = cells[group * entryEnd + entry];
            if (weight == 0.0) continue;
            pairs.push_back({{static_cast<std::int32_t>(entry - 1), classKeys[group]}, weight});
        }
    }
    fPairCounts.Replace(pairs);
}

void FSCatPCatTAccum::StoreTargetCounts(std::vector<FSMapICntEntry>& counts) {
    std::erase_if(counts, [](const FSMapICntEntry& entry) { return entry.fWeight == 0.0; });
    fTargetCounts.Replace(counts);
}

// The pairs come row by row. Those without a place in the margins, as a broken saved state may have
// them, are left out.
FSCrosstab FSCatPCatTAccum::Crosstab() const {
    const std::span<const FSMapICntEntry> rows = fPredCounts.Entries();
    const std::span<const FSMapICntEntry> columns = fTargetCounts.Entries();
    const auto below = [](const FSMapICntEntry& entry, std::int32_t key) {
        return entry.fKey < key;
    };
    std::vector<FSCrosstab::Cell> cells;
    cells.reserve(static_cast<std::size_t>(fPairCounts.Size()));
    auto row = rows.begin();
    for (const FSMapPiCntEntry& pair : fPairCounts.Entries()) {
        row = std::lower_bound(row, rows.end(), pair.fKey.fPredictor, below);
        const auto column =
            std::lower_bound(columns.begin(), columns.end(), pair.fKey.fTarget, below);
        const bool hasPlace = row != rows.end() && row->fKey == pair.fKey.fPredictor &&
                              column != columns.end() && column->fKey == pair.fKey.fTarget;
        if (!hasPlace || !(pair.fWeight > 0.0)) continue;
        cells.push_back({static_cast<std::uint32_t>(row - rows.begin()),
                         static_cast<std::uint32_t>(column - columns.begin()), pair.fWeight});
    }
    return FSCrosstab(std::move(cells), rows.size(), columns.size());
}

// A 32-bit product, which wraps around for tables beyond 2^31 cells.
double FSCatPCatTAccum::DegreesOfFreedom() const {
    const auto rows = static_cast<std::uint32_t>(fPredCounts.Size());
    const auto columns = static_cast<std::uint32_t>(fTargetCounts.Size());
    return static_cast<std::int32_t>((columns - 1) * (rows - 1));
}

void FSCatPCatTAccum::TestChiSquare(double statistic, FSTestResult& test) const {
    const double df = DegreesOfFreedom();
    const FSTail tail = ChiSquareTail(statistic, df);
    if (tail.fP == MCMV::gMissingValue) return;
    test.fValue = tail.fP;
    test.fLogP = tail.fLogP;
    test.fStatistic = statistic;
    test.fDf1 = df;
    test.fTieBreak1 = statistic;
    test.fTieBreak2 = df;
}

FSTestResult FSCatPCatTAccum::Test(std::int32_t criterion) const {
    FSTestResult test;
    switch (criterion) {
        case FSCriterion::kPearson:
        case FSCriterion::kLikelihood:
            test.fTest = FSTestResult::kChiSquare;
            if (HasTable()) {
                TestChiSquare(criterion == FSCriterion::kPearson ? Crosstab().ChiSquare().fChiSquare
                                                                 : Crosstab().LikelihoodRatio(),
                              test);
            } else {
                test.fValue = 1.0;
                test.fLogP = 0.0;
                test.fTieBreak1 = 0.0;
                test.fTieBreak2 = 0.0;
            }
            break;
        case FSCriterion::kCramer: {
            if (!HasTable()) break;
            const FSCrosstab::Pearson pearson = Crosstab().ChiSquare();
            if (!std::isfinite(pearson.fChiSquare)) break;
            test.fValue = pearson.CramersV(std::min(fPredCounts.Size(), fTargetCounts.Size()) - 1);
            test.fTieBreak1 = pearson.fChiSquare;
            break;
        }
        case FSCriterion::kLambda:
            test.fValue = Crosstab().Lambda().value_or(MCMV::gMissingValue);
            test.fTieBreak1 = fPredCounts.Size();
            break;
        default:
            break;
    }
    return test;
}

bool FSCatPCatTAccum::GetCriterionForDisplay(std::int32_t criterion, double& first, double& second,
                                             double& third, double& fourth) const {
    SetMissing(first, second, third, fourth);
    double unused = 0.0;
    switch (criterion) {
        case FSCriterion::kPearson:
        case FSCriterion::kLikelihood:
            ComputeCriterion(criterion, first, second, third, unused, unused);
            return true;
        case FSCriterion::kCramer:
        case FSCriterion::kLambda:
            ComputeCriterion(criterion, first, unused, unused, unused, unused);
            return true;
        default:
            return false;
    }
}

void FSCatPCatTAccum::MergeFrom(const FSCatPCatTAccum& other) {
    MergeCounts(other);
    fTargetCounts.MergeFrom(other.fTargetCounts);
    fPairCounts.MergeFrom(other.fPairCounts);
}

void FSCatPCatTAccum::Display(std::ostream& out) const {
    FSDisplay::Start(out, "FSCatPCatTAccum");
    FSDisplay::Line(out, "Number of predictor categories = ", fPredCounts.Size());
    FSDisplay::Line(out, "Number of target categories = ", fTargetCounts.Size());
    DisplayCounters(out, "The first non-missing predictor category = ");
    out << "Case counts of predictor categories:\n";
    fPredCounts.Display(out);
    out << "Case counts of target categories:\n";
    fTargetCounts.Display(out);
    out << "Case counts of pairs of predictor and target categories:\n";
    fPairCounts.Display(out);
    FSDisplay::End(out, "FSCatPCatTAccum");
}

std::int64_t FSCatPCatTAccum::SaveBinary(std::ostream& stream) const {
    return Persistence::SaveBinary(*this, stream);
}

std::int64_t FSCatPCatTAccum::RestoreBinary(std::istream& stream) {
    return FSArchives::RestoreBinary(*this, stream);
}

std::int64_t FSCatPCatTAccum::SaveXML(std::ostream& stream, std::int32_t level) const {
    return Persistence::SaveXML(*this, stream, level);
}

std::int64_t FSCatPCatTAccum::RestoreXML(MCCommonXML::XMLReader& document) {
    return FSArchives::RestoreXML(*this, document);
}
