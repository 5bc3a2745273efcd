// The data pass over a source that offers its records in blocks: column by column inside a block.
// Sums are exact, so that the state is the same to the bit as record by record.
#include <algorithm>
#include <cstddef>
#include <limits>
#include <span>
#include <variant>
#include <vector>

#include "featureselect/FSAccumKind.h"
#include "featureselect/FSBlockCases.h"
#include "featureselect/FSBlockNumbers.h"
#include "featureselect/FSCellCounts.h"
#include "featureselect/FSCount.h"
#include "featureselect/FSPredictorSet.h"
#include "featureselect/FSRunningStep.h"
#include "featureselect/FSSettings.h"
#include "featureselect/FSTruncate.h"
#include "host/Blocks.h"

namespace {

using MCCommon::BlockColumn;

// Enough for the tables to pay off; few enough that the rows of a group of columns stay near the
// processor and a cancel is seen soon.
constexpr std::int32_t kMostRows = 16384;
constexpr std::int32_t kFewestRows = 4096;
constexpr std::int32_t kMostCells = 1 << 26;
// Below, the tables cost more than they save.
constexpr std::size_t kTableRows = 64;
// Below, threads cost more than they save.
constexpr std::size_t kCellsSideBySide = 1 << 16;

// The predictors that one task takes.
constexpr std::size_t kGroup = 4;

const BlockColumn* ColumnAt(const MCCommon::RecordBlock& block, std::int32_t column) {
    const auto at = static_cast<std::size_t>(column);
    return column >= 0 && at < block.fvColumns.size() ? &block.fvColumns[at] : nullptr;
}

/// The first row that counts and has a valid value; the number of rows when there is none.
std::uint32_t FirstValid(const FSBlockPart& part, const FSBlockCases& cases) {
    const bool categorical = part.fpAccum->IsCategorical();
    std::uint32_t row = 0;
    const auto find = [&](const auto& values) {
        const auto isValid = [&] {
            return cases.Counts(row) && !FSBlockColumn::IsMissing(values[row], categorical);
        };
        while (row < cases.Rows() && !isValid()) ++row;
    };
    std::visit(find, part.fColumn.fValues);
    return row;
}

/// The rows that count and have no valid value of any predictor, ascending.
std::vector<std::uint32_t> RowsWithoutData(std::span<const FSBlockPart> parts,
                                           const FSBlockCases& cases) {
    std::vector<std::uint32_t> rows(cases.Rows());
    std::size_t kept = 0;
    const auto keep = [&](std::uint32_t row, bool isIn) {
        rows[kept] = row;
        kept += isIn ? 1 : 0;
    };
    const auto count = static_cast<std::uint32_t>(rows.size());
    for (std::uint32_t row = 0; row < count; ++row) keep(row, cases.Counts(row));
    for (const FSBlockPart& part : parts) {
        const std::size_t left = kept;
        if (left == 0) break;
        kept = 0;
        const bool categorical = part.fpAccum->IsCategorical();
        const auto drop = [&](const auto& values) {
            for (std::size_t at = 0; at < left; ++at) {
                const std::uint32_t row = rows[at];
                keep(row, FSBlockColumn::IsMissing(values[row], categorical));
            }
        };
        std::visit(drop, part.fColumn.fValues);
    }
    rows.resize(kept);
    return rows;
}

}  // namespace

/// What the records of a block are apart from their predictors, a value each.
struct FSPredictorSet::BlockRecords {
    enum Use : std::uint8_t { kDropped, kNoTarget, kCounted };

    std::vector<Use> fvUse;
    std::vector<double> fvWeights;  // of dropped ones, any
    std::vector<double> fvTargets;  // with a target
    std::vector<std::uint16_t> fvClasses;
    std::vector<std::int32_t> fvClassKeys;
    bool fbUnit = true;  // the weights are 1.0, but for those of dropped records

    std::int32_t Count(Use use, std::size_t first, std::size_t end) const {
        const auto at = [&](std::size_t row) {
            return fvUse.begin() + static_cast<std::ptrdiff_t>(row);
        };
        return static_cast<std::int32_t>(std::count(at(first), at(end), use));
    }
    /// Records [first, end) that have a weight.
    std::int32_t CountUsed(std::size_t first, std::size_t end) const {
        return static_cast<std::int32_t>(end - first) - Count(kDropped, first, end);
    }
    /// The end of the records from first on with so many counted ones, the last of them included.
    std::size_t EndOf(std::size_t first, std::int64_t counted) const {
        if (counted >= std::ssize(fvUse) - static_cast<std::int64_t>(first)) return fvUse.size();
        std::size_t end = first;
        for (; end < fvUse.size() && counted > 0; ++end) counted -= fvUse[end] == kCounted ? 1 : 0;
        return end;
    }

    /// The records [first, end) as the accumulators see them.
    FSBlockCases Cases(std::size_t first, std::size_t end, FSBlockCases::Target target) const {
        FSBlockCases cases;
        cases.fTarget = target;
        cases.fWeights = std::span(fvWeights).subspan(first, end - first);
        if (!fvTargets.empty()) cases.fTargets = std::span(fvTargets).subspan(first, end - first);
        cases.fClasses = std::span(fvClasses).subspan(first, end - first);
        cases.fClassKeys = fvClassKeys;
        cases.fCounted = Count(kCounted, first, end);
        cases.fbUnit = fbUnit;
        return cases;
    }

    /// One class of all counted records.
    void SetOneClass() {
        fvClassKeys.assign(1, 0);
        fvClasses.resize(fvUse.size());
        std::transform(fvUse.begin(), fvUse.end(), fvClasses.begin(),
                       [](Use use) { return static_cast<std::uint16_t>(use == kCounted ? 0 : 1); });
    }

    /// Positions of the categories that the counted records have among these, and the position
    /// after the last for the others.
    void SetClasses(const std::vector<std::int32_t>& categories) {
        fvClassKeys.clear();
        std::int64_t lowest = std::numeric_limits<std::int64_t>::max();
        std::int64_t highest = std::numeric_limits<std::int64_t>::min();
        for (std::size_t row = 0; row < fvUse.size(); ++row) {
            if (fvUse[row] != kCounted) continue;
            lowest = std::min<std::int64_t>(lowest, categories[row]);
            highest = std::max<std::int64_t>(highest, categories[row]);
        }
        if (lowest > highest) {
            fvClasses.assign(fvUse.size(), 0);
        } else if (highest - lowest < kMostRows) {
            MapByTable(categories, lowest, highest);
        } else {
            MapBySearch(categories);
        }
    }

 private:
    void MapByTable(const std::vector<std::int32_t>& categories, std::int64_t lowest,
                    std::int64_t highest) {
        // By category, and a last one for the records that do not count.
        const auto last = static_cast<std::size_t>(highest - lowest + 1);
        const auto at = [&](std::size_t row) {
            return fvUse[row] == kCounted ? static_cast<std::size_t>(categories[row] - lowest)
                                          : last;
        };
        std::vector<std::uint16_t> positions(last + 1);
        for (std::size_t row = 0; row < fvUse.size(); ++row) positions[at(row)] = 1;
        for (std::size_t category = 0; category < last; ++category) {
            if (positions[category] == 0) continue;
            positions[category] = static_cast<std::uint16_t>(fvClassKeys.size());
            fvClassKeys.push_back(
                static_cast<std::int32_t>(lowest + static_cast<std::int64_t>(category)));
        }
        positions[last] = static_cast<std::uint16_t>(fvClassKeys.size());
        fvClasses.resize(fvUse.size());
        for (std::size_t row = 0; row < fvUse.size(); ++row) fvClasses[row] = positions[at(row)];
    }

    void MapBySearch(const std::vector<std::int32_t>& categories) {
        for (std::size_t row = 0; row < fvUse.size(); ++row) {
            if (fvUse[row] == kCounted) fvClassKeys.push_back(categories[row]);
        }
        std::sort(fvClassKeys.begin(), fvClassKeys.end());
        fvClassKeys.erase(std::unique(fvClassKeys.begin(), fvClassKeys.end()), fvClassKeys.end());
        fvClasses.assign(fvUse.size(), static_cast<std::uint16_t>(fvClassKeys.size()));
        for (std::size_t row = 0; row < fvUse.size(); ++row) {
            if (fvUse[row] != kCounted) continue;
            const auto found =
                std::lower_bound(fvClassKeys.begin(), fvClassKeys.end(), categories[row]);
            fvClasses[row] = static_cast<std::uint16_t>(found - fvClassKeys.begin());
        }
    }
};

/// The accumulators of one kind and their columns of the block.
struct FSPredictorSet::BlockParts {
    std::int32_t fKind = FSAccumKind::kDeleted;
    std::vector<FSBlockPart> fvParts;
};

void FSPredictorSet::ReadBlocks(MCCommon::RecordBlockSource& source, std::int32_t maxRecords,
                                bool withTarget) {
    FSRunningStep step(fElapsed, fpSettings->GetProgressListener(), fpSettings->GetRecordsToSkip());
    if (maxRecords < 0) maxRecords = std::numeric_limits<std::int32_t>::max();
    const std::vector<std::int32_t> columns = PredictorColumns(withTarget);
    std::vector<std::int32_t> kinds;
    for (const auto& accum : fvpAccum) kinds.push_back(FSAccumKind::Of(accum.get()));
    const std::int32_t atOnce =
        std::clamp(kMostCells / std::max(fNumPredictors, 1), kFewestRows, kMostRows);
    const FSBlockCases::Target target = !withTarget ? FSBlockCases::kNone
                                        : fpSettings->IsTargetCategorical()
                                            ? FSBlockCases::kCategorical
                                            : FSBlockCases::kContinuous;
    std::int32_t used = 0;
    BlockRecords records;
    while (used < maxRecords && !fpCancel->IsCancelled()) {
        // A record counts once at most, so that none is read beyond the last that may count.
        const MCCommon::RecordBlock* block = source.NextBlock(std::min(atOnce, maxRecords - used));
        if (block == nullptr) break;
        ReadBlockRecords(*block, withTarget, records);
        const std::size_t rows = records.fvUse.size();
        // A report comes right after its record, as its listener may cancel.
        for (std::size_t first = 0; first < rows && !fpCancel->IsCancelled();) {
            const std::size_t end = records.EndOf(first, step.UntilReport());
            const FSBlockCases cases = records.Cases(first, end, target);
            AddBlockRows(*block, columns, kinds, records, first, cases, source.GetExecutor());
            used += records.CountUsed(first, end);
            step.DoneTogether(cases.fCounted, used, -1);
            first = end;
        }
    }
    fStatus = kAccumulated;
}

// Weights and targets of a block, by the rules of ReadWeight and IsTargetMissing.
void FSPredictorSet::ReadBlockRecords(const MCCommon::RecordBlock& block, bool withTarget,
                                      BlockRecords& records) const {
    const auto rows = static_cast<std::size_t>(block.fRows);
    records.fvUse.assign(rows, BlockRecords::kCounted);
    records.fvWeights.resize(rows, 1.0);
    if (fpSettings->GetWeightPosition() >= 0) ReadBlockWeights(block, records);
    if (!withTarget) return records.SetOneClass();

    records.fvTargets.assign(rows, MCMV::gMissingValue);
    const BlockColumn* column = ColumnAt(block, fpSettings->GetTargetPosition());
    if (column == nullptr) {
        std::replace(records.fvUse.begin(), records.fvUse.end(), BlockRecords::kCounted,
                     BlockRecords::kNoTarget);
        return records.SetOneClass();
    }
    const bool categorical = fpSettings->IsTargetCategorical();
    const auto take = [&](const auto& values) {
        for (std::size_t row = 0; row < rows; ++row) {
            records.fvTargets[row] = FSBlockColumn::ValueOf(values[row]);
            const BlockRecords::Use use = records.fvUse[row];
            records.fvUse[row] = FSBlockColumn::IsMissing(values[row], categorical)
                                     ? std::min(use, BlockRecords::kNoTarget)
                                     : use;
        }
    };
    std::visit(take, column->fValues);
    // A table of the target's categories stays one, whatever the target has become.
    if (!categorical && fpTargetAccum == nullptr) return records.SetOneClass();
    std::vector<std::int32_t> categories(rows);
    std::transform(records.fvTargets.begin(), records.fvTargets.end(), categories.begin(),
                   [](double target) { return FSTruncate(target); });
    records.SetClasses(categories);
}

void FSPredictorSet::ReadBlockWeights(const MCCommon::RecordBlock& block,
                                      BlockRecords& records) const {
    records.fbUnit = true;
    const BlockColumn* column = ColumnAt(block, fpSettings->GetWeightPosition());
    if (column == nullptr) {
        records.fvUse.assign(records.fvUse.size(), BlockRecords::kDropped);
        return;
    }
    const auto take = [&](const auto& values) {
        for (std::size_t row = 0; row < records.fvUse.size(); ++row) {
            double weight = FSBlockColumn::ValueOf(values[row]);
            if (!ConvertWeight(weight)) {
                records.fvUse[row] = BlockRecords::kDropped;
            } else if (weight != 1.0) {
                records.fbUnit = false;
            }
            records.fvWeights[row] = weight;
        }
    };
    std::visit(take, column->fValues);
}

// Feeds some records of a block, from first on, to the accumulators and counts them.
void FSPredictorSet::AddBlockRows(const MCCommon::RecordBlock& block,
                                  const std::vector<std::int32_t>& columns,
                                  const std::vector<std::int32_t>& kinds,
                                  const BlockRecords& records, std::size_t first,
                                  const FSBlockCases& cases, MCCommon::BlockExecutor* executor) {
    std::vector<BlockParts> all;
    for (std::size_t predictor = 0; predictor < fvpAccum.size(); ++predictor) {
        const BlockColumn* column = ColumnAt(block, columns[predictor]);
        if (column == nullptr) break;
        if (fvpAccum[predictor] == nullptr) continue;
        auto parts = std::find_if(all.begin(), all.end(), [&](const BlockParts& some) {
            return some.fKind == kinds[predictor];
        });
        if (parts == all.end()) parts = all.insert(all.end(), BlockParts{kinds[predictor], {}});
        parts->fvParts.push_back(
            {fvpAccum[predictor].get(), FSBlockColumn::Cut(*column, first, cases.Rows())});
    }
    CountBlockRows(all, records, first, cases);
    if (cases.fCounted == 0) return;
    if (cases.Rows() < kTableRows || !NeedsNumbers(all, cases)) {
        return FeedParts(all, cases, executor);
    }

    const bool anyContinuous = std::any_of(all.begin(), all.end(), [](const BlockParts& parts) {
        return !parts.fvParts[0].fpAccum->IsCategorical();
    });
    const FSBlockNumbers numbers(cases, anyContinuous);
    // Records that no grid holds with the others are left out of the block and follow one by one.
    FSBlockCases together = cases;
    together.fpNumbers = &numbers;
    std::vector<std::uint16_t> classes;
    if (!numbers.Odd().empty()) {
        classes.assign(cases.fClasses.begin(), cases.fClasses.end());
        for (const std::uint32_t row : numbers.Odd()) {
            classes[row] = static_cast<std::uint16_t>(cases.Classes());
        }
        together.fClasses = classes;
        together.fCounted -= static_cast<std::int32_t>(numbers.Odd().size());
    }
    // The first value of a column stays the first one.
    const std::span<const std::uint32_t> odd = numbers.Odd();
    std::vector<std::size_t> before;  // of each part
    for (const BlockParts& parts : all) {
        if (odd.empty()) break;
        for (const FSBlockPart& part : parts.fvParts) {
            const std::uint32_t valid = FirstValid(part, together);
            const auto end = std::lower_bound(odd.begin(), odd.end(), valid);
            before.push_back(static_cast<std::size_t>(end - odd.begin()));
            part.AddRows(cases, odd.first(before.back()));
        }
    }
    FeedParts(all, together, executor);
    auto done = before.begin();
    for (const BlockParts& parts : all) {
        if (odd.empty()) break;
        for (const FSBlockPart& part : parts.fvParts) part.AddRows(cases, odd.subspan(*done++));
    }
}

// Crosstabs of unit weights get by with counts.
bool FSPredictorSet::NeedsNumbers(const std::vector<BlockParts>& all, const FSBlockCases& cases) {
    return !cases.fbUnit || cases.fTarget == FSBlockCases::kContinuous ||
           std::any_of(all.begin(), all.end(), [](const BlockParts& parts) {
               return !parts.fvParts[0].fpAccum->IsCategorical();
           });
}

void FSPredictorSet::FeedParts(const std::vector<BlockParts>& all, const FSBlockCases& cases,
                               MCCommon::BlockExecutor* executor) {
    struct Task {
        std::int32_t fKind;
        std::span<const FSBlockPart> fParts;
    };
    std::vector<Task> tasks;
    std::size_t columns = 0;
    for (const BlockParts& parts : all) {
        const std::span<const FSBlockPart> rest(parts.fvParts);
        columns += rest.size();
        for (std::size_t at = 0; at < rest.size(); at += kGroup) {
            tasks.push_back({parts.fKind, rest.subspan(at, std::min(kGroup, rest.size() - at))});
        }
    }
    const auto run = [&](std::int32_t number) {
        const Task& task = tasks[static_cast<std::size_t>(number)];
        // Accumulators that were made for another kind of target know for themselves what is
        // nothing to them.
        const bool fits =
            task.fKind == FSAccumKind::For(task.fParts[0].fpAccum->IsCategorical(),
                                           cases.fTarget != FSBlockCases::kNone,
                                           cases.fTarget == FSBlockCases::kCategorical);
        if (fits && cases.Rows() >= kTableRows) {
            return FSAccumKind::AddBlock(task.fKind, task.fParts, cases);
        }
        for (const FSBlockPart& part : task.fParts) part.AddPlainly(cases);
    };
    const auto count = static_cast<std::int32_t>(tasks.size());
    if (executor != nullptr && cases.Rows() * columns >= kCellsSideBySide) {
        executor->Run(count, run);
    } else {
        for (std::int32_t number = 0; number < count; ++number) run(number);
    }
}

// The counters of the set, of the records of the cases, which begin at first.
void FSPredictorSet::CountBlockRows(const std::vector<BlockParts>& all, const BlockRecords& records,
                                    std::size_t first, const FSBlockCases& cases) {
    std::vector<FSBlockPart> parts;
    for (const BlockParts& some : all) {
        parts.insert(parts.end(), some.fvParts.begin(), some.fvParts.end());
    }
    const std::vector<std::uint32_t> empty = RowsWithoutData(parts, cases);
    if (static_cast<std::int32_t>(empty.size()) < cases.fCounted) fNoValidData = false;
    const std::int32_t used = records.CountUsed(first, first + cases.Rows());
    if (fpSettings->GetWeightPosition() >= 0 && used > 0) fNoValidWeight = false;

    const std::int32_t valid = cases.fTarget == FSBlockCases::kNone
                                   ? 0
                                   : cases.fCounted - static_cast<std::int32_t>(empty.size());
    FSCountMore(fUnweightedValid, valid);
    FSCountMore(fUnweightedExcluded, used - valid);
    std::vector<FSMapIPCntEntry> classes;
    std::vector<std::uint32_t> added;  // to each of the classes
    if (fpTargetAccum && cases.fTarget != FSBlockCases::kNone) {
        for (const std::int32_t key : cases.fClassKeys) classes.push_back({key, 0, {}});
        added = FSCellCounts::CountClasses(cases);
        for (const std::uint32_t row : empty) --added[cases.fClasses[row]];
    }
    if (cases.fbUnit) {
        fWeightedValid += valid;
        fWeightedExcluded += used - valid;
        for (std::size_t at = 0; at < classes.size(); ++at) classes[at].fWeight += added[at];
    } else {
        AddWeights(records, first, empty, cases, classes);
    }
    std::size_t kept = 0;
    for (std::size_t at = 0; at < classes.size(); ++at) {
        if (added[at] == 0) continue;
        classes[at].fCount = static_cast<std::int32_t>(added[at]);
        if (kept != at) classes[kept] = std::move(classes[at]);
        ++kept;
    }
    classes.resize(kept);
    if (kept > 0) fpTargetAccum->Merge(classes);
}

// Of weights other than 1. empty are the rows without data, classes the target's categories if they
// are kept.
void FSPredictorSet::AddWeights(const BlockRecords& records, std::size_t first,
                                std::span<const std::uint32_t> empty, const FSBlockCases& cases,
                                std::vector<FSMapIPCntEntry>& classes) {
    auto nextEmpty = empty.begin();
    for (std::size_t row = 0; row < cases.Rows(); ++row) {
        if (records.fvUse[first + row] == BlockRecords::kDropped) continue;
        const double weight = cases.fWeights[row];
        const bool isEmpty = nextEmpty != empty.end() && *nextEmpty == row;
        if (isEmpty) ++nextEmpty;
        if (cases.fTarget == FSBlockCases::kNone || isEmpty || !cases.Counts(row)) {
            fWeightedExcluded += weight;
            continue;
        }
        fWeightedValid += weight;
        if (!classes.empty()) classes[cases.fClasses[row]].fWeight += weight;
    }
}
