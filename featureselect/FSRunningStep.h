#ifndef PREDSEL_FEATURESELECT_FSRUNNINGSTEP_H
#define PREDSEL_FEATURESELECT_FSRUNNINGSTEP_H

#include <cstdint>
#include <limits>

#include "host/Progress.h"

/// One step of a run while it runs: measures its processor time and tells a listener how far it
/// has come. The time joins that of the earlier steps when the step ends.
class FSRunningStep {
 public:
    /// elapsedSeconds is the time of the earlier steps, borrowed from the set that runs the step.
    /// listener is borrowed from the settings and may be null. Between two reports skip units go
    /// unreported.
    explicit FSRunningStep(double& elapsedSeconds, ProgressListener* listener = nullptr,
                           std::int32_t skip = 0);
    ~FSRunningStep();
    FSRunningStep(const FSRunningStep&) = delete;
    FSRunningStep& operator=(const FSRunningStep&) = delete;

    /// One more unit is done. Every (skip + 1)th call is reported, with records and predictors as
    /// the numbers done and -1 for the one that the step doesn't count.
    void Done(std::int32_t records, std::int32_t predictors) {
        if (fpListener == nullptr) return;
        if (fCountdown > 0) {
            --fCountdown;
        } else {
            Report(records, predictors);
        }
    }

    /// How many more calls of Done the next report takes; without a listener more than there are.
    std::int64_t UntilReport() const {
        return fpListener == nullptr ? std::numeric_limits<std::int64_t>::max()
                                     : std::int64_t{fCountdown} + 1;
    }
    /// As so many calls of Done, of which the last has these numbers. REQUIRES: units at most
    /// UntilReport().
    void DoneTogether(std::int64_t units, std::int32_t records, std::int32_t predictors) {
        if (fpListener == nullptr || units == 0) return;
        fCountdown -= static_cast<std::int32_t>(units - 1);
        Done(records, predictors);
    }

 private:
    void Report(std::int32_t records, std::int32_t predictors);
    double SecondsSoFar() const;

    double& fElapsed;
    ProgressListener* fpListener;
    std::int32_t fSkip;
    std::int32_t fCountdown;
    std::int64_t fStartMilliseconds;
};

#endif  // PREDSEL_FEATURESELECT_FSRUNNINGSTEP_H
