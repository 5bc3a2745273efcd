#ifndef PREDSEL_FEATURESELECT_FSCATEGORICALACCUM_H
#define PREDSEL_FEATURESELECT_FSCATEGORICALACCUM_H

#include <cstdint>
#include <ostream>
#include <string_view>
#include <vector>

#include "featureselect/FSMapICnt.h"
#include "featureselect/IFSPredTargetAccum.h"

/// What the accumulators of a categorical predictor have in common, whatever the target.
class FSCategoricalAccum : public IFSPredTargetAccum {
 public:
    void AddMissing(double weight) override;
    bool IsAllMissing() const override { return fProcessed == fMissing; }
    bool IsConstant() const override { return fConstant; }
    std::int32_t CheckDeletion(const FSSettings& settings) const override;
    std::int32_t CheckAllDeletions(const FSSettings& settings,
                                   std::vector<std::int32_t>& reasons) const override;
    bool IsCategorical() const override { return true; }

 protected:
    double ValidWeight() const { return fProcessed - fMissing; }
    void TrackConstant(std::int32_t category);
    /// Adds the counters and predictor categories of a later partition.
    void MergeCounts(const FSCategoricalAccum& other);
    /// Display of the five scalar fields.
    void DisplayCounters(std::ostream& out, std::string_view firstCategoryLabel) const;
    /// Whether categories that hold one case can drop the predictor.
    virtual bool HasOneCaseRule() const { return true; }

    double fProcessed = 0;              // weight of all records, missing included
    std::int32_t fUnweightedValid = 0;  // number of valid values; not saved
    double fMissing = 0;                // weight of missing values
    std::int32_t fFirstCategory = -1;   // first valid category; -1 before it
    bool fConstant = true;              // no second category so far
    FSMapICnt fPredCounts;              // weight per predictor category
};

#endif  // PREDSEL_FEATURESELECT_FSCATEGORICALACCUM_H
