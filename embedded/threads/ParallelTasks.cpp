#include "embedded/threads/ParallelTasks.h"

#include <sched.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace embedded {
namespace {

/// What the threads of one call share.
class TaskQueue {
 public:
    TaskQueue(std::int32_t count, const std::function<void(std::int32_t)>& task)
        : fCount(count), fTask(task) {}

    void Work() {
        while (!fbFailed) {
            // A task that is taken is run, so that the lowest that fails is always among them.
            const std::int32_t number = fNext++;
            if (number >= fCount) return;
            try {
                fTask(number);
            } catch (...) {
                Keep(number, std::current_exception());
            }
        }
    }
    void Rethrow() const {
        if (fpError) std::rethrow_exception(fpError);
    }

 private:
    void Keep(std::int32_t number, std::exception_ptr error) {
        const std::lock_guard lock(fMutex);
        fbFailed = true;
        if (number >= fFailedNumber) return;
        fFailedNumber = number;
        fpError = std::move(error);
    }

    const std::int32_t fCount;
    const std::function<void(std::int32_t)>& fTask;
    std::atomic<std::int32_t> fNext = 0;
    std::atomic<bool> fbFailed = false;
    std::mutex fMutex;
    std::int32_t fFailedNumber = std::numeric_limits<std::int32_t>::max();
    std::exception_ptr fpError;
};

}  // namespace

std::int32_t AvailableThreads() {
    cpu_set_t processors;
    if (sched_getaffinity(0, sizeof processors, &processors) == 0) {
        return std::max(1, CPU_COUNT(&processors));
    }
    return std::max(1, static_cast<std::int32_t>(std::thread::hardware_concurrency()));
}

void RunTasks(std::int32_t threads, std::int32_t count,
              const std::function<void(std::int32_t)>& task) {
    if (count <= 0) return;
    const std::int32_t wanted = std::min(threads < 1 ? AvailableThreads() : threads, count);
    TaskQueue queue(count, task);
    {
        std::vector<std::jthread> helpers;
        helpers.reserve(static_cast<std::size_t>(wanted - 1));
        try {
            while (static_cast<std::int32_t>(helpers.size()) < wanted - 1) {
                helpers.emplace_back([&queue] { queue.Work(); });
            }
        } catch (const std::system_error&) {
            // The threads there are do it all.
        }
        queue.Work();
    }
    queue.Rethrow();
}

}  // namespace embedded
