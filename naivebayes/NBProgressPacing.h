#ifndef PREDSEL_NAIVEBAYES_NBPROGRESSPACING_H
#define PREDSEL_NAIVEBAYES_NBPROGRESSPACING_H

#include <cstdint>

#include "host/Progress.h"

/// When a step of the engine is to report to its listener, and for how long it has been running.
class NBProgressPacing {
 public:
    /// listener is borrowed from the settings and may be null: then nothing is ever due. Between
    /// two reports skip units go unreported. The time starts here.
    NBProgressPacing(ProgressListener* listener, std::int32_t skip);

    /// Called once a unit. True for every (skip + 1)th call.
    bool IsDue() {
        if (fpListener == nullptr) return false;
        if (fCountdown > 0) {
            --fCountdown;
            return false;
        }
        fCountdown = fSkip;
        return true;
    }
    /// Only when IsDue.
    void Send(const ProgressReport& report) { fpListener->OnProgress(report); }
    /// Processor time since the start, in whole milliseconds.
    double ElapsedSeconds() const;

 private:
    ProgressListener* fpListener;
    std::int32_t fSkip;
    std::int32_t fCountdown;
    std::int64_t fStartMilliseconds;
};

#endif  // PREDSEL_NAIVEBAYES_NBPROGRESSPACING_H
