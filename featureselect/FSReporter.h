#ifndef PREDSEL_FEATURESELECT_FSREPORTER_H
#define PREDSEL_FEATURESELECT_FSREPORTER_H

#include <cstdint>
#include <string>

#include "host/Progress.h"

/// The progress of one step of the screening engine at one moment.
class FSReporter : public ProgressReport {
 public:
    /// records and predictors are the numbers done, -1 where the step counts the other one;
    /// elapsedSeconds is the time of the whole run so far.
    FSReporter(std::int32_t records, std::int32_t predictors, double elapsedSeconds)
        : fRecords(records), fPredictors(predictors), fElapsed(elapsedSeconds) {}

    /// "records" and "predictors"; -1 for any other name.
    std::int32_t GetInteger(const std::string& name) const override;
    /// "elapsedTime" in seconds; the missing value for any other name.
    double GetDouble(const std::string& name) const override;

 private:
    std::int32_t fRecords;
    std::int32_t fPredictors;
    double fElapsed;
};

#endif  // PREDSEL_FEATURESELECT_FSREPORTER_H
