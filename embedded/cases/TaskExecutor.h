#ifndef PREDSEL_EMBEDDED_CASES_TASKEXECUTOR_H
#define PREDSEL_EMBEDDED_CASES_TASKEXECUTOR_H

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

 private:
    std::int32_t fThreads;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_CASES_TASKEXECUTOR_H
