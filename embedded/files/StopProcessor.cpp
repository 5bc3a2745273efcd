#include <atomic>
#include <chrono>

#include "embedded/files/Interrupt.h"
#include "host/Progress.h"

namespace embedded {
namespace {

std::atomic<bool> gInterrupted{false};
std::atomic<StopCause> gCause{StopCause::None};
static_assert(std::atomic<bool>::is_always_lock_free, "set from a signal handler");

std::int64_t NowNanoseconds() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

}  // namespace

void RequestInterrupt() noexcept { gInterrupted.store(true, std::memory_order_relaxed); }

void ClearStop() noexcept {
    gInterrupted.store(false, std::memory_order_relaxed);
    gCause.store(StopCause::None, std::memory_order_relaxed);
}

StopCause LastStopCause() noexcept { return gCause.load(std::memory_order_relaxed); }

}  // namespace embedded

MCStopProcessor::MCStopProcessor(double limitSeconds)
    : fLimitSeconds(limitSeconds), fStartNanoseconds(embedded::NowNanoseconds()) {}

MCStopProcessor::~MCStopProcessor() = default;

// A limit of 0 is no limit: a run that stops before its first record serves nobody.
bool MCStopProcessor::IsCancelled() {
    using embedded::StopCause;
    if (embedded::gInterrupted.load(std::memory_order_relaxed)) {
        embedded::gCause.store(StopCause::Interrupt, std::memory_order_relaxed);
        return true;
    }
    if (!(fLimitSeconds > 0.0)) return false;
    const double elapsed =
        static_cast<double>(embedded::NowNanoseconds() - fStartNanoseconds) * 1e-9;
    if (elapsed < fLimitSeconds) return false;
    embedded::gCause.store(StopCause::TimeLimit, std::memory_order_relaxed);
    return true;
}
