#ifndef PREDSEL_NAIVEBAYES_NBINTERRUPTSTATE_H
#define PREDSEL_NAIVEBAYES_NBINTERRUPTSTATE_H

#include "host/Progress.h"

/// Whether the engine is to stop. Once it is, it stays so.
struct NBInterruptState {
    MCStopProcessor* fpStopProcessor = nullptr;  // borrowed
    bool fStopped = false;

    /// Polled between records.
    bool IsStopped() {
        if (!fStopped && fpStopProcessor != nullptr) fStopped = fpStopProcessor->IsCancelled();
        return fStopped;
    }
};

#endif  // PREDSEL_NAIVEBAYES_NBINTERRUPTSTATE_H
