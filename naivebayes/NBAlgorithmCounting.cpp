// Training from blocks of prepared records: the tables are counted one by one, side by side.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <variant>

#include "naivebayes/NBAlgorithm.h"

namespace {

/// The target of each row as an entry, 0 where the record does not count, and its weight.
struct CountedRows {
    std::vector<std::uint32_t> fvTargets;
    std::vector<double> fvWeights;  // none: each record counts once
    std::uint32_t fNumTargets = 0;
};

/// Adds 1 so many times. A count of records stays exact when they are added at once.
void AddOnes(double& count, std::uint32_t times) {
    constexpr double kExact = 0x1p52;
    if (count == std::floor(count) && std::abs(count) < kExact) {
        count += times;
        return;
    }
    for (std::uint32_t i = 0; i < times; ++i) count += 1.0;
}

/// Each record once.
template <class Entry>
void CountOnce(std::span<const Entry> entries, const CountedRows& rows, NBayesInput& table) {
    const std::size_t stride = rows.fNumTargets + 1;
    const auto numCategories = static_cast<std::uint32_t>(table.GetNumCategories());
    // Two of each, since neighbours often fall into the same cell.
    const std::size_t size = (std::size_t{numCategories} + 1) * stride;
    std::vector<std::uint32_t> counts(2 * size, 0);
    std::uint32_t* const even = counts.data();
    std::uint32_t* const odd = even + size;
    const auto cell = [&](std::size_t i) {
        return std::min(std::uint32_t{entries[i]}, numCategories) * stride + rows.fvTargets[i];
    };
    std::size_t i = 0;
    for (; i + 1 < entries.size(); i += 2) {
        ++even[cell(i)];
        ++odd[cell(i + 1)];
    }
    if (i < entries.size()) ++even[cell(i)];
    for (std::uint32_t m = 0; m < numCategories; ++m) {
        for (std::uint32_t k = 0; k < rows.fNumTargets; ++k) {
            const std::size_t at = (std::size_t{m} + 1) * stride + k + 1;
            const std::uint32_t times = even[at] + odd[at];
            if (times > 0) {
                table.AddRecords(static_cast<std::int32_t>(m), static_cast<std::int32_t>(k),
                                 [times](double& count) { AddOnes(count, times); });
            }
        }
    }
}

/// Weights are added in the order of the records.
template <class Entry>
void CountWeights(std::span<const Entry> entries, const CountedRows& rows, NBayesInput& table) {
    const auto numCategories = static_cast<std::uint32_t>(table.GetNumCategories());
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (entries[i] == 0 || rows.fvTargets[i] == 0) continue;
        const std::uint32_t entry = std::min(std::uint32_t{entries[i]}, numCategories);
        table.AddCount(static_cast<std::int32_t>(entry) - 1,
                       static_cast<std::int32_t>(rows.fvTargets[i]) - 1, rows.fvWeights[i]);
    }
}

template <class Visit>
void VisitEntries(const MCCommon::BlockColumn& column, Visit visit) {
    std::visit(
        [&visit](const auto& entries) {
            using Values = std::remove_cvref_t<decltype(entries)>;
            if constexpr (!std::is_same_v<Values, MCCommon::BlockColumn::Numbers>) visit(entries);
        },
        column.fValues);
}

}  // namespace

std::int32_t NBAlgorithm::CountBlocks(MCCommon::RecordIterator& records,
                                      MCCommon::RecordBlockSource& blocks, std::int32_t numRecords,
                                      double& weightOut) {
    constexpr std::int32_t kBlockRows = 65536;
    const bool weighted = fpPreparator->GetWeightIndex() >= 0;
    std::int32_t used = 0;
    CountedRows rows;
    rows.fNumTargets = static_cast<std::uint32_t>(fOutput.GetNumCategories());
    while (used < numRecords && records.HasMore() && !fInterrupt.IsStopped()) {
        const auto* const block = blocks.NextBlock(kBlockRows);
        if (block == nullptr) break;
        const auto numRows = static_cast<std::size_t>(block->fRows);
        rows.fvTargets.assign(numRows, 0);
        if (weighted) {
            const auto weights =
                std::get<MCCommon::BlockColumn::Numbers>(block->fvColumns[1].fValues);
            rows.fvWeights.assign(weights.begin(), weights.end());
        }
        VisitEntries(block->fvColumns.front(), [&](const auto& targets) {
            for (std::size_t i = 0; i < numRows && used < numRecords; ++i) {
                const double weight = weighted ? rows.fvWeights[i] : 1.0;
                // A missing weight is below 0.
                if (targets[i] == 0 || !(weight > 0.0)) continue;
                rows.fvTargets[i] = std::min(std::uint32_t{targets[i]}, rows.fNumTargets);
                fOutput.AddRecord(static_cast<std::int32_t>(rows.fvTargets[i]) - 1, weight);
                weightOut += weight;
                ++used;
            }
        });
        const auto count = [&](std::int32_t i) {
            NBayesInput& table = fvInputs[static_cast<std::size_t>(i)];
            const auto position = static_cast<std::size_t>(table.GetAdjustedRecordIndex());
            VisitEntries(block->fvColumns[position], [&](const auto& entries) {
                if (weighted) {
                    CountWeights(entries, rows, table);
                } else {
                    CountOnce(entries, rows, table);
                }
            });
        };
        const auto numTables = static_cast<std::int32_t>(fvInputs.size());
        if (blocks.GetExecutor() != nullptr) {
            blocks.GetExecutor()->Run(numTables, count);
        } else {
            for (std::int32_t i = 0; i < numTables; ++i) count(i);
        }
    }
    return used;
}
