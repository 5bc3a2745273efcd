#ifndef PREDSEL_NAIVEBAYES_NBREPORTER_H
#define PREDSEL_NAIVEBAYES_NBREPORTER_H

#include <cstdint>
#include <string>

#include "host/Progress.h"
#include "host/Records.h"

/// The progress of a training pass at one moment.
class NBReporter : public ProgressReport {
 public:
    /// Nothing is known yet.
    NBReporter() = default;
    /// trainRecords: records used so far.
    NBReporter(std::int32_t trainRecords, double elapsedSeconds)
        : fTrainRecords(trainRecords), fElapsed(elapsedSeconds) {}

    /// "trainRecords"; -1 for any other name and before it is known.
    std::int32_t GetInteger(const std::string& name) const override;
    /// "elapsedTime" in seconds; the missing value for any other name and before it is known.
    double GetDouble(const std::string& name) const override;

 private:
    std::int32_t fTrainRecords = -1;
    double fElapsed = MCMV::gMissingValue;
};

#endif  // PREDSEL_NAIVEBAYES_NBREPORTER_H
