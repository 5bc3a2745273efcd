#ifndef PREDSEL_NAIVEBAYES_TESTS_RANDOMSEARCHDATA_H
#define PREDSEL_NAIVEBAYES_TESTS_RANDOMSEARCHDATA_H

#include <algorithm>
#include <cstdint>
#include <functional>
#include <random>
#include <vector>

#include "host/Blocks.h"
#include "naivebayes/NBEntryColumn.h"
#include "naivebayes/tests/SearchFixture.h"

/// Kinds of weights.
enum class RandomWeights { kNone, kFew, kMany };

/// Predictors that tell something of the target, with missing codes; some are copies of others.
inline SearchData RandomSearchData(std::mt19937& random, std::int32_t numRows,
                                   std::int32_t numPredictors, RandomWeights weights,
                                   std::int32_t mostCategories = 300,
                                   std::int32_t fewestCategories = 1) {
    const auto below = [&random](std::int32_t limit) {
        return static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(limit));
    };
    SearchData data;
    data.fNumTargets = 2 + below(11);
    data.fbWeighted = weights != RandomWeights::kNone;
    std::vector<std::int32_t> copyOf;
    for (std::int32_t j = 0; j < numPredictors; ++j) {
        copyOf.push_back(j > 0 && below(4) == 0 ? below(j) : j);
        const std::int32_t categories =
            copyOf.back() < j
                ? data.fPredictors[static_cast<std::size_t>(copyOf.back())].fNumCategories
                : fewestCategories +
                      below((below(3) == 0 ? mostCategories : std::min(10, mostCategories)) -
                            fewestCategories + 1);
        data.fPredictors.push_back({categories, below(6) == 0 ? 1 : 2});
    }
    data.fPredictors.back().fRole = 2;
    for (std::int32_t i = 0; i < numRows; ++i) {
        SearchOracle::Row row;
        row.fTarget = below(data.fNumTargets);
        if (weights == RandomWeights::kFew) row.fWeight = 1.0 + below(4);
        // Sums of them are exact.
        if (weights == RandomWeights::kMany) row.fWeight = 0.25 + below(100000) * 0x1p-10;
        for (std::int32_t j = 0; j < numPredictors; ++j) {
            const std::int32_t original = copyOf[static_cast<std::size_t>(j)];
            if (original < j) {
                row.fCodes.push_back(row.fCodes[static_cast<std::size_t>(original)]);
                continue;
            }
            const std::int32_t categories =
                data.fPredictors[static_cast<std::size_t>(j)].fNumCategories;
            row.fCodes.push_back(below(20) == 0      ? -1
                                 : below(3) <= j % 3 ? row.fTarget % categories
                                                     : below(categories));
        }
        data.fRows.push_back(row);
    }
    return data;
}

/// Records that also come in blocks of at most so many, column by column.
class BlockRecords : public CountedRecords, public MCCommon::RecordBlockSource {
 public:
    /// numCategories: of each column, codes are below it; -1 for a column of numbers.
    BlockRecords(std::vector<MCCommon::Record> records, std::vector<std::int32_t> numCategories,
                 std::int32_t mostRows, MCCommon::BlockExecutor* executor = nullptr)
        : CountedRecords(std::move(records)),
          fMostRows(mostRows),
          fpExecutor(executor),
          fvNumCategories(std::move(numCategories)) {}
    const MCCommon::RecordBlock* NextBlock(std::int32_t maxRows) override {
        if (!HasMore()) return nullptr;
        const auto count = std::min<std::size_t>(
            fvRecords.size() - fNext, static_cast<std::size_t>(std::min(maxRows, fMostRows)));
        fvColumns.clear();
        fvNumbers.assign(fvNumCategories.size(), {});
        for (std::size_t c = 0; c < fvNumCategories.size(); ++c) {
            fvColumns.emplace_back(fvNumCategories[c]);
            for (std::size_t i = fNext; i < fNext + count; ++i) {
                const double value = fvRecords[i][static_cast<std::int32_t>(c)];
                if (fvNumCategories[c] < 0) {
                    fvNumbers[c].push_back(value);
                } else {
                    fvColumns[c].Append(value < 0.0 ? 0 : static_cast<std::uint32_t>(value) + 1);
                }
            }
        }
        fBlock.fvColumns.clear();
        for (std::size_t c = 0; c < fvColumns.size(); ++c) {
            fBlock.fvColumns.push_back(fvColumns[c].View(0, fvColumns[c].Size()));
            if (fvNumCategories[c] < 0) {
                fBlock.fvColumns.back().fValues = MCCommon::BlockColumn::Numbers(fvNumbers[c]);
            }
        }
        fBlock.fRows = static_cast<std::int32_t>(count);
        fNext += count;
        return &fBlock;
    }
    MCCommon::BlockExecutor* GetExecutor() override { return fpExecutor; }

 private:
    std::int32_t fMostRows;
    MCCommon::BlockExecutor* fpExecutor;
    std::vector<std::int32_t> fvNumCategories;  // a column each, -1 for numbers
    std::vector<NBEntryColumn> fvColumns;
    std::vector<std::vector<double>> fvNumbers;
    MCCommon::RecordBlock fBlock;
};

/// Runs tasks from the last to the first.
class BackwardExecutor : public MCCommon::BlockExecutor {
 public:
    void Run(std::int32_t count, const std::function<void(std::int32_t)>& task) override {
        ++fNumRuns;
        for (std::int32_t i = count; i-- > 0;) task(i);
    }
    std::int32_t fNumRuns = 0;
};

#endif  // PREDSEL_NAIVEBAYES_TESTS_RANDOMSEARCHDATA_H
