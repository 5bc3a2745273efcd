#ifndef PREDSEL_EMBEDDED_CASES_TASKEXECUTOR_H
#define PREDSEL_EMBEDDED_CASES_TASKEXECUTOR_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>

#include "embedded/threads/ParallelTasks.h"
#include "host/Blocks.h"

namespace embedded {

/// The tasks of a block on the threads of the run.
class TaskExecutor final : public MCCommon::BlockExecutor {
 public:
    /// Below 1: as many threads as are available.
    explicit TaskExecutor(std::int32_t threads)
        : fThreads(threads < 1 ? AvailableThreads() : threads) {}

    std::int32_t Threads() const { return fThreads; }
    void Run(std::int32_t count, const std::function<void(std::int32_t)>& task) override {
        RunTasks(fThreads, count, task);
    }
    /// Calls task for each column that has so many rows: side by side where there is more to do
    /// than threads cost.
    void RunOver(std::int64_t rows, std::size_t columns,
                 const std::function<void(std::size_t)>& task) {
        constexpr std::int64_t kManyValues = 1 << 18;
        constexpr std::size_t kTasksPerThread = 4;
        const bool many = rows * static_cast<std::int64_t>(columns) >= kManyValues;
        const std::size_t tasks =
            many ? std::min(columns, kTasksPerThread * static_cast<std::size_t>(fThreads)) : 1;
        Run(static_cast<std::int32_t>(tasks), [&](std::int32_t number) {
            const auto part = static_cast<std::size_t>(number);
            const std::size_t end = columns * (part + 1) / tasks;
            for (std::size_t column = columns * part / tasks; column < end; ++column) task(column);
        });
    }

 private:
    std::int32_t fThreads;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_CASES_TASKEXECUTOR_H
