#ifndef PREDSEL_FEATURESELECT_FSCONTINUOUSACCUM_H
#define PREDSEL_FEATURESELECT_FSCONTINUOUSACCUM_H

#include <cstdint>
#include <ostream>
#include <string_view>
#include <vector>

#include "featureselect/IFSPredTargetAccum.h"
#include "host/Records.h"

/// What the accumulators of a continuous predictor have in common, whatever the target.
class FSContinuousAccum : public IFSPredTargetAccum {
 public:
    void AddMissing(double weight) override;
    bool IsAllMissing() const override { return fProcessed == fMissing; }
    bool IsConstant() const override { return fConstant; }
    std::int32_t CheckDeletion(const FSSettings& settings) const override;
    std::int32_t CheckAllDeletions(const FSSettings& settings,
                                   std::vector<std::int32_t>& reasons) const override;
    bool IsCategorical() const override { return false; }

 protected:
    double ValidWeight() const { return fProcessed - fMissing; }
    void TrackConstant(double value);
    /// Adds the weights and the constancy of a later partition.
    void MergeCounts(const FSContinuousAccum& other);
    void DisplayWeights(std::ostream& out) const;
    void DisplayConstant(std::ostream& out, std::string_view firstValueLabel) const;
    /// Mean and standard deviation that the screening rules test.
    virtual double ScreenedMean() const = 0;
    virtual double ScreenedStdDev() const = 0;

    double fProcessed = 0;                     // weight of all records, missing included
    double fMissing = 0;                       // weight of missing values
    double fFirstValue = MCMV::gMissingValue;  // first valid value
    bool fConstant = true;                     // no second value so far, by exact comparison
};

#endif  // PREDSEL_FEATURESELECT_FSCONTINUOUSACCUM_H
