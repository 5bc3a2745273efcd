// Training records in blocks: column by column what PrepareRecord does record by record.

#include <algorithm>
#include <cstddef>
#include <functional>
#include <span>
#include <type_traits>
#include <variant>

#include "naivebayes/NBColumnStore.h"
#include "naivebayes/data/INBVariable.h"
#include "naivebayes/data/NBBlockBinning.h"
#include "naivebayes/data/NBDataPreparator.h"
#include "naivebayes/data/NBRoundEncoder.h"

namespace {

using Flags = std::vector<std::uint8_t>;  // a row each

double ValueAt(const MCCommon::BlockColumn& column, std::size_t row) {
    return std::visit(
        [row](const auto& values) {
            using Value = std::remove_cvref_t<decltype(values[row])>;
            const auto value = static_cast<double>(values[row]);
            return std::is_same_v<Value, double> ? value : value - 1.0;
        },
        column.fValues);
}

/// The entry of a prepared code.
std::uint32_t EntryOf(double code, std::uint32_t numCategories) {
    if (!(code > -1.0)) return 0;
    const double entry = code + 1.5;
    return entry < numCategories ? static_cast<std::uint32_t>(entry) : numCategories;
}

/// Appends the bins of numbers; without an encoder nothing has a code.
void AppendBins(const NBBinningEncoder* encoder, const MCCommon::BlockColumn& column,
                NBEntryColumn& binsOut) {
    const auto values = std::get<MCCommon::BlockColumn::Numbers>(column.fValues);
    const std::size_t first = binsOut.Size();
    binsOut.Resize(first + values.size());
    const NBBlockBinning binning(encoder);
    std::visit(
        [&](auto& entries) {
            binning.Encode(values, binsOut.GetNumCategories(), entries.data() + first);
        },
        binsOut.GetEntries());
}

/// Appends codes; those out of range become missing and mark their row.
void AppendCodes(const MCCommon::BlockColumn& column, NBEntryColumn& codesOut, Flags& badOut) {
    const std::uint32_t numCategories = codesOut.GetNumCategories();
    std::visit(
        [&](const auto& values) {
            using Value = typename std::remove_cvref_t<decltype(values)>::value_type;
            if constexpr (!std::is_same_v<Value, double>) {
                if (column.fEntryEnd <= numCategories + 1) {
                    codesOut.Append(values, [](Value value) { return value; });
                    return;
                }
                codesOut.Append(values, [numCategories](Value value) {
                    return value > numCategories ? 0U : std::uint32_t{value};
                });
                for (std::size_t i = 0; i < values.size(); ++i) {
                    if (values[i] > numCategories) badOut[i] = 1;
                }
            }
        },
        column.fValues);
}

}  // namespace

NBColumnStore NBDataPreparator::MakeColumnStore(MCCommon::BlockExecutor* executor) const {
    const std::int32_t numTargets =
        fTargetIndex < 0 ? 1 : fvNumCategories[static_cast<std::size_t>(fTargetIndex)];
    // A target that is missing may stand as category 0, so there is one.
    return NBColumnStore(std::max(numTargets, 1), fNewWeightIndex > 0, fvInputNumCategories,
                         executor);
}

bool NBDataPreparator::HasUsualKinds(const MCCommon::RecordBlock& block) const {
    const auto isCategorical = [&block](std::int32_t index) {
        return block.fvColumns[static_cast<std::size_t>(index)].IsCategorical();
    };
    if (fNewWeightIndex > 0 && isCategorical(fWeightIndex)) return false;
    if (fTargetIndex >= 0 && !isCategorical(fTargetIndex)) return false;
    for (std::size_t i = 0; i < fvInputIndices.size(); ++i) {
        const bool isContinuous = fvInputMeasureLevels[i] == NBMeasureLevel::kContinuous;
        if (isCategorical(fvInputIndices[i]) == isContinuous) return false;
    }
    return true;
}

void NBDataPreparator::PrepareBlock(const MCCommon::RecordBlock& block, NBColumnStore& store,
                                    std::int32_t& numExcluded, double& weightExcluded) const {
    if (!HasUsualKinds(block)) {
        PrepareRowByRow(block, store, numExcluded, weightExcluded);
        return;
    }
    const auto numRows = static_cast<std::size_t>(block.fRows);
    const std::size_t first = store.GetCount();
    const auto column = [&block](std::int32_t index) -> const MCCommon::BlockColumn& {
        return block.fvColumns[static_cast<std::size_t>(index)];
    };
    Flags faults(numRows, 0);  // no target or no weight
    std::vector<double>* const weights = store.Weights();
    if (weights != nullptr) {
        const auto values = std::get<MCCommon::BlockColumn::Numbers>(column(fWeightIndex).fValues);
        for (std::size_t i = 0; i < numRows; ++i) {
            weights->push_back(fpWeightEncoder->Encode(values[i]));
            if (weights->back() == MCMV::gMissingValue) faults[i] = 1;
        }
    }
    if (fTargetIndex < 0) {
        std::fill(faults.begin(), faults.end(), std::uint8_t{1});
        for (std::size_t i = 0; i < numRows; ++i) store.Target().Append(1);
    } else {
        const auto numCategories = static_cast<std::uint32_t>(
            std::max(fvNumCategories[static_cast<std::size_t>(fTargetIndex)], 0));
        std::visit(
            [&](const auto& values) {
                using Value = typename std::remove_cvref_t<decltype(values)>::value_type;
                if constexpr (!std::is_same_v<Value, double>) {
                    for (std::size_t i = 0; i < numRows; ++i) {
                        if (values[i] == 0 || values[i] > numCategories) faults[i] = 1;
                    }
                    // One that is missing stands as category 0, one that is out of range as
                    // missing.
                    store.Target().Append(values, [numCategories](Value value) {
                        return value == 0 ? 1U : value > numCategories ? 0U : std::uint32_t{value};
                    });
                }
            },
            column(fTargetIndex).fValues);
    }

    // Each task has its own share of the inputs, and its own flags.
    constexpr std::size_t kTasks = 8;
    struct TaskFlags {
        Flags fvValid;  // an input has a code
        Flags fvBad;    // an input is out of range
    };
    std::vector<TaskFlags> flags(kTasks);
    const std::size_t numInputs = fvInputIndices.size();
    const auto forEachInput = [&](const std::function<void(std::size_t, std::size_t)>& visit) {
        const auto run = [&](std::int32_t task) {
            const auto at = static_cast<std::size_t>(task);
            for (std::size_t i = at * numInputs / kTasks; i < (at + 1) * numInputs / kTasks; ++i) {
                visit(at, i);
            }
        };
        if (store.GetExecutor() != nullptr) {
            store.GetExecutor()->Run(kTasks, run);
        } else {
            for (std::int32_t task = 0; task < static_cast<std::int32_t>(kTasks); ++task) run(task);
        }
    };
    std::vector<const NBBinningEncoder*> encoders(numInputs, nullptr);
    std::size_t numContinuous = 0;
    for (std::size_t i = 0; i < numInputs; ++i) {
        if (fvInputMeasureLevels[i] == NBMeasureLevel::kContinuous) {
            encoders[i] = fvpBinningEncoders[numContinuous++];
        }
    }
    forEachInput([&](std::size_t task, std::size_t i) {
        Flags& valid = flags[task].fvValid;
        Flags& bad = flags[task].fvBad;
        valid.resize(numRows, 0);
        bad.resize(numRows, 0);
        NBEntryColumn& input = store.Inputs()[i];
        const MCCommon::BlockColumn& source = column(fvInputIndices[i]);
        if (fvInputMeasureLevels[i] == NBMeasureLevel::kContinuous) {
            AppendBins(encoders[i], source, input);
        } else {
            AppendCodes(source, input, bad);
        }
        std::visit(
            [&](const auto& entries) {
                for (std::size_t row = 0; row < numRows; ++row) {
                    valid[row] =
                        static_cast<std::uint8_t>(valid[row] | (entries[first + row] != 0 ? 1 : 0));
                }
            },
            input.GetEntries());
    });

    Flags keep(numRows, 0);
    bool isWhole = true;
    for (std::size_t row = 0; row < numRows; ++row) {
        bool isValid = false;
        bool isBad = false;
        for (const TaskFlags& task : flags) {
            if (task.fvValid.empty()) continue;
            isValid = isValid || task.fvValid[row] != 0;
            isBad = isBad || task.fvBad[row] != 0;
        }
        // The last fault of a record counts: an input out of range is a warning and hides the
        // faults before it, no valid input comes last.
        keep[row] = isValid && (isBad || faults[row] == 0) ? 1 : 0;
        if (keep[row] != 0) continue;
        isWhole = false;
        ++numExcluded;
        const double weight = weights == nullptr ? 1.0 : (*weights)[first + row];
        if (weight != MCMV::gMissingValue) weightExcluded += weight;
    }
    if (!isWhole) {
        store.Target().Keep(first, keep);
        if (weights != nullptr) NBEntryColumn::KeepOf(*weights, first, keep);
        forEachInput([&](std::size_t, std::size_t i) { store.Inputs()[i].Keep(first, keep); });
    }
    store.SetCount();
}

void NBDataPreparator::PrepareRowByRow(const MCCommon::RecordBlock& block, NBColumnStore& store,
                                       std::int32_t& numExcluded, double& weightExcluded) const {
    MCCommon::Record original(fOriginalRecordSize);
    MCCommon::Record processed(fProcessedRecordSize);
    for (std::size_t row = 0; row < static_cast<std::size_t>(block.fRows); ++row) {
        for (std::int32_t i = 0; i < fOriginalRecordSize; ++i) {
            original[i] = ValueAt(block.fvColumns[static_cast<std::size_t>(i)], row);
        }
        double weight = 1.0;
        if (PrepareRecord(original, processed, weight).IsError()) {
            ++numExcluded;
            if (weight != MCMV::gMissingValue) weightExcluded += weight;
            continue;
        }
        store.Target().Append(EntryOf(processed[0], store.Target().GetNumCategories()));
        if (store.Weights() != nullptr) store.Weights()->push_back(processed[fNewWeightIndex]);
        std::int32_t position = FirstInputPosition();
        for (NBEntryColumn& input : store.Inputs()) {
            input.Append(EntryOf(processed[position++], input.GetNumCategories()));
        }
    }
    store.SetCount();
}
