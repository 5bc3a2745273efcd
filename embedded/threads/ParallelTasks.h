#ifndef PREDSEL_EMBEDDED_THREADS_PARALLELTASKS_H
#define PREDSEL_EMBEDDED_THREADS_PARALLELTASKS_H

#include <cstdint>
#include <functional>

namespace embedded {

/// Processors that this process may run on, at least 1.
std::int32_t AvailableThreads();

/// Calls task(0) to task(count - 1), each once, the lower ones first, on up to `threads` threads,
/// the caller's among them; below 1: as many as are available. Returns when all are done. After an
/// exception no further task begins, and that of the lowest number comes out. Where no thread can
/// be had, fewer do the work.
void RunTasks(std::int32_t threads, std::int32_t count,
              const std::function<void(std::int32_t)>& task);

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_THREADS_PARALLELTASKS_H
