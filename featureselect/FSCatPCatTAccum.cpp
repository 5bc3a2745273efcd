#include "featureselect/FSCatPCatTAccum.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
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

/// What a block adds to the maps: its cells come entry by entry, and in each class by class.
struct FSCatPCatTAccum::BlockCounts {
    explicit BlockCounts(std::size_t classes) : fvTarget(classes) {}

    void Add(std::uint32_t entry, std::size_t group, const FSWeightSum& weight,
             const FSBlockCases& cases) {
        if (weight == 0.0) return;
        if (entry == 0) {
            fMissing += weight;
            return;
        }
        const auto code = static_cast<std::int32_t>(entry - 1);
        if (fvPred.empty() || fvPred.back().fKey != code) fvPred.push_back({code, {}});
        fvPred.back().fWeight += weight;
        fvTarget[group] += weight;
        fvPairs.push_back({{code, cases.fClassKeys[group]}, weight});
    }

    FSWeightSum Valid() const {
        FSWeightSum valid;
        for (const FSWeightSum& weight : fvTarget) valid += weight;
        return valid;
    }

    FSWeightSum fMissing;
    std::vector<FSMapICntEntry> fvPred;
    std::vector<FSWeightSum> fvTarget;  // by class
    std::vector<FSMapPiCntEntry> fvPairs;
};

// A table of records by class and code, [class * entryEnd + entry], gives all three maps; weighted
// records are summed as lines.
template <class Entry>
void FSCatPCatTAccum::AddEntries(std::span<const Entry> entries, std::uint32_t entryEnd,
                                 const FSBlockCases& cases) {
    if (!IsDense(entryEnd, cases)) return AddBySorting(entries, cases);
    const std::size_t classes = cases.Classes();
    BlockCounts counts(classes);
    if (cases.fbUnit) {
        const std::vector<std::uint32_t> cells = FSCellCounts::Count(entries, entryEnd, cases);
        for (std::uint32_t entry = 0; entry < entryEnd; ++entry) {
            for (std::size_t group = 0; group < classes; ++group) {
                counts.Add(entry, group, FSWeightSum(cells[group * entryEnd + entry]), cases);
            }
        }
    } else {
        const FSRowLines& lines = cases.fpNumbers->Lines();
        const std::size_t stride = lines.Stride();
        // Records that do not count have a class of their own.
        std::vector<std::int64_t> cells((classes + 1) * entryEnd * stride);
        lines.AddTo(cells, entries.size(), [&](std::size_t row) {
            return std::size_t{cases.fClasses[row]} * entryEnd + entries[row];
        });
        for (std::uint32_t entry = 0; entry < entryEnd; ++entry) {
            for (std::size_t group = 0; group < classes; ++group) {
                FSWeightSum weight;
                lines.AddWeight(&cells[(group * entryEnd + entry) * stride], weight);
                counts.Add(entry, group, weight, cases);
            }
        }
    }
    CountRecords(entries, cases, counts.Valid(), counts.fMissing);
    TakeCounts(counts, cases);
}

template <class Entry>
void FSCatPCatTAccum::AddBySorting(std::span<const Entry> entries, const FSBlockCases& cases) {
    BlockCounts counts(cases.Classes());
    ForEachCode(entries, cases, [&](std::uint32_t entry, std::span<std::uint32_t> rows) {
        std::sort(rows.begin(), rows.end(), [&](std::uint32_t a, std::uint32_t b) {
            return cases.fClasses[a] < cases.fClasses[b];
        });
        for (std::size_t at = 0; at < rows.size();) {
            const std::uint16_t group = cases.fClasses[rows[at]];
            const std::size_t first = at;
            while (at < rows.size() && cases.fClasses[rows[at]] == group) ++at;
            FSWeightSum weight;
            if (cases.fbUnit) {
                weight += static_cast<double>(at - first);
            } else {
                const FSRowLines& lines = cases.fpNumbers->Lines();
                lines.AddWeight(lines.SumOf(rows.subspan(first, at - first)).data(), weight);
            }
            counts.Add(entry, group, weight, cases);
        }
    });
    CountRecords(entries, cases, counts.Valid(), counts.fMissing);
    TakeCounts(counts, cases);
}

void FSCatPCatTAccum::TakeCounts(const BlockCounts& counts, const FSBlockCases& cases) {
    std::vector<FSMapICntEntry> targets;
    for (std::size_t group = 0; group < counts.fvTarget.size(); ++group) {
        if (counts.fvTarget[group] == 0.0) continue;
        targets.push_back({cases.fClassKeys[group], counts.fvTarget[group]});
    }
    fPredCounts.Merge(counts.fvPred);
    fTargetCounts.Merge(targets);
    fPairCounts.Merge(counts.fvPairs);
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
        const double weight = pair.fWeight;
        if (!hasPlace || weight <= 0.0) continue;
        // What is not a number has met an infinite weight.
        cells.push_back({static_cast<std::uint32_t>(row - rows.begin()),
                         static_cast<std::uint32_t>(column - columns.begin()),
                         std::isnan(weight) ? std::numeric_limits<double>::infinity() : weight});
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

void FSCatPCatTAccum::AppendExact(std::string& bytes) const {
    AppendCounts(bytes);
    fTargetCounts.AppendExact(bytes);
    fPairCounts.AppendExact(bytes);
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
