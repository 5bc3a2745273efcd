#ifndef PREDSEL_NAIVEBAYES_NBATTRIBSELECTREPORTER_H
#define PREDSEL_NAIVEBAYES_NBATTRIBSELECTREPORTER_H

#include <cstdint>
#include <string>

#include "host/Progress.h"
#include "host/Records.h"

/// The progress of a subset search after one of its steps.
class NBAttribSelectReporter : public ProgressReport {
 public:
    /// What a step leaves. -1 and the missing value: not known yet.
    struct Progress {
        std::int32_t fSelectedPredictors = -1;   // forced ones included
        std::int32_t fCandidatePredictors = -1;  // still outside
        std::int32_t fMaxPredictors = -1;
        std::int32_t fTrainRecords = -1;
        double fElapsed = MCMV::gMissingValue;  // seconds
    };

    NBAttribSelectReporter() = default;
    explicit NBAttribSelectReporter(const Progress& progress) : fProgress(progress) {}

    /// "selectedPredictors", "candidatePredictors", "maxPredictors" and "trainRecords"; -1 for any
    /// other name.
    std::int32_t GetInteger(const std::string& name) const override;
    /// "elapsedTime" in seconds; the missing value for any other name.
    double GetDouble(const std::string& name) const override;

 private:
    Progress fProgress;
};

#endif  // PREDSEL_NAIVEBAYES_NBATTRIBSELECTREPORTER_H
