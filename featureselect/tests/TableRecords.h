#ifndef PREDSEL_FEATURESELECT_TESTS_TABLERECORDS_H
#define PREDSEL_FEATURESELECT_TESTS_TABLERECORDS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <thread>
#include <type_traits>
#include <variant>
#include <vector>

#include "host/Blocks.h"
#include "host/Records.h"

// A table held in columns, to be read as records one by one or in blocks.

namespace testsupport {

/// One column of a table, in the form that a block holds it in.
struct TableColumn {
    std::variant<std::vector<std::uint8_t>, std::vector<std::uint16_t>, std::vector<std::uint32_t>,
                 std::vector<double>>
        fValues;
    std::uint32_t fEntryEnd = 1;

    double At(std::size_t row) const {
        return std::visit(
            [&]<class Values>(const Values& values) {
                const auto value = static_cast<double>(values[row]);
                return std::is_same_v<Values, std::vector<double>> ? value : value - 1.0;
            },
            fValues);
    }
    MCCommon::BlockColumn Part(std::size_t first, std::size_t count) const {
        MCCommon::BlockColumn column{{}, fEntryEnd};
        std::visit(
            [&](const auto& values) { column.fValues = std::span(values).subspan(first, count); },
            fValues);
        return column;
    }
};

using TableColumns = std::vector<TableColumn>;

class OneByOne : public MCCommon::RecordIterator {
 public:
    OneByOne(const TableColumns& columns, std::size_t rows) : fColumns(columns), fRows(rows) {}
    bool HasMore() override { return fNext < fRows; }
    const MCCommon::Record* Next() override {
        if (!HasMore()) return nullptr;
        fRecord = MCCommon::Record(static_cast<std::int32_t>(fColumns.size()));
        for (std::size_t column = 0; column < fColumns.size(); ++column) {
            fRecord[static_cast<std::int32_t>(column)] = fColumns[column].At(fNext);
        }
        ++fNext;
        return &fRecord;
    }
    std::int32_t GetFailReason() const override {
        return fNext < fRows ? MCCommon::kITER_SUCCESS : MCCommon::kITER_NO_VALID_CASE;
    }

 protected:
    const TableColumns& fColumns;
    std::size_t fRows;
    std::size_t fNext = 0;
    MCCommon::Record fRecord;
};

/// Runs the tasks on so many threads, the later ones first.
class Threads : public MCCommon::BlockExecutor {
 public:
    explicit Threads(std::int32_t threads) : fThreads(threads) {}
    void Run(std::int32_t count, const std::function<void(std::int32_t)>& task) override {
        std::vector<std::thread> threads;
        for (std::int32_t thread = 0; thread < fThreads; ++thread) {
            threads.emplace_back([&, thread] {
                for (std::int32_t number = count - 1 - thread; number >= 0; number -= fThreads) {
                    task(number);
                }
            });
        }
        for (std::thread& thread : threads) thread.join();
    }

 private:
    std::int32_t fThreads;
};

class InBlocks : public OneByOne, public MCCommon::RecordBlockSource {
 public:
    InBlocks(const TableColumns& columns, std::size_t rows, std::size_t blockRows,
             std::int32_t threads)
        : OneByOne(columns, rows), fBlockRows(blockRows) {
        if (threads > 0) fThreads.emplace(threads);
    }
    const MCCommon::RecordBlock* NextBlock(std::int32_t maxRows) override {
        const std::size_t rows =
            std::min({fRows - fNext, fBlockRows, static_cast<std::size_t>(maxRows)});
        if (rows == 0) return nullptr;
        fBlock.fRows = static_cast<std::int32_t>(rows);
        fBlock.fvColumns.clear();
        for (const TableColumn& column : fColumns) {
            fBlock.fvColumns.push_back(column.Part(fNext, rows));
        }
        fNext += rows;
        return &fBlock;
    }
    MCCommon::BlockExecutor* GetExecutor() override { return fThreads ? &*fThreads : nullptr; }

 private:
    std::size_t fBlockRows;
    std::optional<Threads> fThreads;
    MCCommon::RecordBlock fBlock;
};

}  // namespace testsupport

#endif  // PREDSEL_FEATURESELECT_TESTS_TABLERECORDS_H
