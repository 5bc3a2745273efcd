#ifndef PREDSEL_FEATURESELECT_FSDELETIONRULES_H
#define PREDSEL_FEATURESELECT_FSDELETIONRULES_H

#include <cstdint>

class FSMapICnt;
class FSSettings;

/// The screening rules, one function each: true when the rule is on and says to drop the predictor.
/// Every comparison is strict, so a predictor right on a bound stays. An upper bound of 100 percent
/// and a lower bound of 0 switch their rule off.
class FSDeletionRules {
 public:
    /// Share of the weight that is missing.
    static bool ManyMissing(const FSSettings& settings, double processed, double missing);
    /// Share of the largest category in the valid weight.
    static bool ManyConst(const FSSettings& settings, const FSMapICnt& counts);
    /// Categories per unweighted valid record, whatever the weights.
    static bool ManyCategs(const FSSettings& settings, const FSMapICnt& counts,
                           std::int32_t unweightedValid);
    /// Share of the categories whose weight is exactly 1.
    static bool ManyCategsWithOneCase(const FSSettings& settings, const FSMapICnt& counts,
                                      std::int32_t unweightedValid);
    static bool SmallStdDev(const FSSettings& settings, double stdDev);
    /// |stdDev / mean|; a standard deviation of 0 is always too small, a mean of 0 otherwise never.
    static bool SmallVar(const FSSettings& settings, double stdDev, double mean);
};

#endif  // PREDSEL_FEATURESELECT_FSDELETIONRULES_H
