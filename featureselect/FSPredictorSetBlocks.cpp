// The data pass over a source that offers its records in blocks: column by column inside a block.
// Every accumulator meets the same values in the same order as record by record, so that the state
// is the same to the bit.
#include <algorithm>
#include <cstddef>
#include <limits>
#include <span>
#include <variant>
#include <vector>

#include "featureselect/FSAccumKind.h"
#include "featureselect/FSBlockCases.h"
#include "featureselect/FSMomentLanes.h"
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

// The predictors that one task takes.
constexpr std::size_t kGroup = FSMomentLanes::kLanes;

/// Calls visit(row, value) with the values of a column as records hold them.
template <class Visit>
void ForValues(const BlockColumn& column, Visit visit) {
    const auto all = [&](const auto& values) {
        for (std::size_t row = 0; row < values.size(); ++row) {
            visit(row, FSBlockColumn::ValueOf(values[row]));
        }
    };
    std::visit(all, column.fValues);
}

const BlockColumn* ColumnAt(const MCCommon::RecordBlock& block, std::int32_t column) {
    const auto at = static_cast<std::size_t>(column);
    return column >= 0 && at < block.fvColumns.size() ? &block.fvColumns[at] : nullptr;
}

/// Takes the rows out of the list in which a column has a valid value.
void DropValid(const FSBlockPart& part, std::vector<std::uint32_t>& rows) {
    const bool categorical = part.fpAccum->IsCategorical();
    const auto drop = [&](const auto& values) {
        std::erase_if(rows, [&](std::uint32_t row) {
            const double value = FSBlockColumn::ValueOf(values[row]);
            return !(value == MCMV::gMissingValue || (categorical && FSTruncate(value) == -1));
        });
    };
    std::visit(drop, part.fColumn.fValues);
}

}  // namespace

/// What the records of a block are apart from their predictors, a value each.
struct FSPredictorSet::BlockRecords {
    enum Use : std::uint8_t { kDropped, kNoTarget, kCounted };

    std::vector<Use> fvUse;
    std::vector<double> fvWeights;  // of dropped ones, any
    std::vector<double> fvTargets;  // of a continuous target
    std::vector<std::uint16_t> fvClasses;
    std::vector<std::int32_t> fvClassKeys;
    bool fbUnit = true;

    /// The records [first, end) as the accumulators see them.
    FSBlockCases Cases(std::size_t first, std::size_t end) const {
        FSBlockCases cases;
        cases.fWeights = std::span(fvWeights).subspan(first, end - first);
        if (!fvTargets.empty()) cases.fTargets = std::span(fvTargets).subspan(first, end - first);
        cases.fClasses = std::span(fvClasses).subspan(first, end - first);
        cases.fClassKeys = fvClassKeys;
        cases.fCounted = static_cast<std::int32_t>(
            std::count(fvUse.begin() + static_cast<std::ptrdiff_t>(first),
                       fvUse.begin() + static_cast<std::ptrdiff_t>(end), kCounted));
        cases.fbUnit = fbUnit;
        return cases;
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
        if (lowest > highest || highest - lowest < kMostRows) {
            MapByTable(categories, lowest, highest);
        } else {
            MapBySearch(categories);
        }
    }

 private:
    void MapByTable(const std::vector<std::int32_t>& categories, std::int64_t lowest,
                    std::int64_t highest) {
        std::vector<std::uint16_t> positions;
        if (lowest <= highest) positions.resize(static_cast<std::size_t>(highest - lowest + 1));
        const auto at = [&](std::size_t row) {
            return static_cast<std::size_t>(categories[row] - lowest);
        };
        for (std::size_t row = 0; row < fvUse.size(); ++row) {
            if (fvUse[row] == kCounted) positions[at(row)] = 1;
        }
        for (std::size_t category = 0; category < positions.size(); ++category) {
            if (positions[category] == 0) continue;
            positions[category] = static_cast<std::uint16_t>(fvClassKeys.size());
            fvClassKeys.push_back(
                static_cast<std::int32_t>(lowest + static_cast<std::int64_t>(category)));
        }
        fvClasses.assign(fvUse.size(), static_cast<std::uint16_t>(fvClassKeys.size()));
        for (std::size_t row = 0; row < fvUse.size(); ++row) {
            if (fvUse[row] == kCounted) fvClasses[row] = positions[at(row)];
        }
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
            std::int64_t reportable = 0;
            std::size_t end = first;
            for (; end < rows && reportable < step.UntilReport(); ++end) {
                if (records.fvUse[end] != BlockRecords::kDropped) ++used;
                if (records.fvUse[end] == BlockRecords::kCounted) ++reportable;
            }
            AddBlockRows(*block, columns, kinds, records, first, end, withTarget,
                         source.GetExecutor());
            step.DoneTogether(reportable, used, -1);
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
    records.fvWeights.assign(rows, 1.0);
    records.fbUnit = true;
    if (fpSettings->GetWeightPosition() >= 0) {
        if (const BlockColumn* column = ColumnAt(block, fpSettings->GetWeightPosition())) {
            ForValues(*column, [&](std::size_t row, double weight) {
                if (!ConvertWeight(weight)) records.fvUse[row] = BlockRecords::kDropped;
                records.fvWeights[row] = weight;
            });
        } else {
            std::fill(records.fvUse.begin(), records.fvUse.end(), BlockRecords::kDropped);
        }
    }

    const bool categorical = withTarget && fpSettings->IsTargetCategorical();
    records.fvTargets.clear();
    std::vector<std::int32_t> categories(rows, 0);
    if (withTarget) {
        if (!categorical) records.fvTargets.assign(rows, MCMV::gMissingValue);
        const auto take = [&](std::size_t row, double target) {
            if (IsTargetMissing(target) && records.fvUse[row] == BlockRecords::kCounted) {
                records.fvUse[row] = BlockRecords::kNoTarget;
            }
            if (categorical) {
                categories[row] = FSTruncate(target);
            } else {
                records.fvTargets[row] = target;
            }
        };
        if (const BlockColumn* column = ColumnAt(block, fpSettings->GetTargetPosition())) {
            ForValues(*column, take);
        } else {
            for (std::size_t row = 0; row < rows; ++row) take(row, MCMV::gMissingValue);
        }
    }
    records.SetClasses(categories);
    for (std::size_t row = 0; row < rows; ++row) {
        if (records.fvUse[row] == BlockRecords::kCounted && records.fvWeights[row] != 1.0) {
            records.fbUnit = false;
            break;
        }
    }
}

// Feeds the records [first, end) of a block to the accumulators and counts them.
void FSPredictorSet::AddBlockRows(const MCCommon::RecordBlock& block,
                                  const std::vector<std::int32_t>& columns,
                                  const std::vector<std::int32_t>& kinds,
                                  const BlockRecords& records, std::size_t first, std::size_t end,
                                  bool withTarget, MCCommon::BlockExecutor* executor) {
    FSBlockCases cases = records.Cases(first, end);
    if (withTarget) {
        cases.fTarget = fpSettings->IsTargetCategorical() ? FSBlockCases::kCategorical
                                                          : FSBlockCases::kContinuous;
    }
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
            {fvpAccum[predictor].get(), FSBlockColumn::Cut(*column, first, end - first)});
    }
    CountBlockRows(all, records, first, cases, withTarget);
    if (cases.fCounted > 0) FeedParts(all, cases, executor);
}

void FSPredictorSet::FeedParts(const std::vector<BlockParts>& all, const FSBlockCases& cases,
                               MCCommon::BlockExecutor* executor) {
    struct Task {
        std::int32_t fKind;
        std::span<const FSBlockPart> fParts;
    };
    std::vector<Task> tasks;
    for (const BlockParts& parts : all) {
        const std::span<const FSBlockPart> rest(parts.fvParts);
        for (std::size_t at = 0; at < rest.size(); at += kGroup) {
            tasks.push_back({parts.fKind, rest.subspan(at, std::min(kGroup, rest.size() - at))});
        }
    }
    const auto run = [&](std::int32_t number) {
        const Task& task = tasks[static_cast<std::size_t>(number)];
        if (cases.Rows() >= kTableRows)
            return FSAccumKind::AddBlock(task.fKind, task.fParts, cases);
        for (const FSBlockPart& part : task.fParts) part.AddPlainly(cases);
    };
    const auto count = static_cast<std::int32_t>(tasks.size());
    if (executor != nullptr && cases.Rows() >= kTableRows) {
        executor->Run(count, run);
    } else {
        for (std::int32_t number = 0; number < count; ++number) run(number);
    }
}

// The counters of the set, record after record.
void FSPredictorSet::CountBlockRows(const std::vector<BlockParts>& all, const BlockRecords& records,
                                    std::size_t first, const FSBlockCases& cases, bool withTarget) {
    std::vector<std::uint32_t> empty;  // without a valid value of any predictor
    for (std::size_t row = 0; row < cases.Rows(); ++row) {
        if (cases.Counts(row)) empty.push_back(static_cast<std::uint32_t>(row));
    }
    for (const BlockParts& parts : all) {
        for (const FSBlockPart& part : parts.fvParts) {
            if (empty.empty()) break;
            DropValid(part, empty);
        }
    }
    if (static_cast<std::int32_t>(empty.size()) < cases.fCounted) fNoValidData = false;

    std::vector<FSMapIPCntEntry> classes;
    if (fpTargetAccum) classes = fpTargetAccum->EntriesOf(cases.fClassKeys);
    std::vector<char> touched(classes.size(), 0);
    auto nextEmpty = empty.begin();
    for (std::size_t row = 0; row < cases.Rows(); ++row) {
        if (records.fvUse[first + row] == BlockRecords::kDropped) continue;
        if (fpSettings->GetWeightPosition() >= 0) fNoValidWeight = false;
        const double weight = cases.fWeights[row];
        const bool isEmpty = nextEmpty != empty.end() && *nextEmpty == row;
        if (isEmpty) ++nextEmpty;
        if (!withTarget || isEmpty || !cases.Counts(row)) {
            CountExcluded(weight);
            continue;
        }
        fWeightedValid += weight;
        ++fUnweightedValid;
        if (!fpTargetAccum) continue;
        FSMapIPCntEntry& entry = classes[cases.fClasses[row]];
        ++entry.fCount;
        entry.fWeight += weight;
        touched[cases.fClasses[row]] = 1;
    }
    std::size_t kept = 0;
    for (std::size_t at = 0; at < classes.size(); ++at) {
        if (touched[at] != 0) classes[kept++] = classes[at];
    }
    classes.resize(kept);
    if (fpTargetAccum) fpTargetAccum->Replace(classes);
}
