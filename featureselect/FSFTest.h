#ifndef PREDSEL_FEATURESELECT_FSFTEST_H
#define PREDSEL_FEATURESELECT_FSFTEST_H

#include "featureselect/FSTestResult.h"
#include "host/Records.h"

class FSExactSum;
class FSGroupMoments;
class FSWeightSum;

/// One-way analysis of variance of a continuous variable over the categories of another (Fisher
/// 1925): F = (B / df1) / (W / df2), with B and W the sums of squares between and within groups.
struct FSFTest {
    double fPValue = MCMV::gMissingValue;  // upper tail; see Of for the degenerate cases
    double fLogP = MCMV::gMissingValue;
    double fF = MCMV::gMissingValue;
    double fDf1 = 0;  // groups - 1
    double fDf2 = 0;  // valid weight - groups

    /// groups: moments per category; sum: of weight times value; validWeight: weight of all groups
    /// together. Without variation within the groups the p-value is 0.0, the strongest possible,
    /// and F is missing; otherwise, without a degree of freedom on either side, both are missing.
    /// So they are when a value was not finite. A group whose weight is not above 1 has no
    /// variation.
    static FSFTest Of(const FSGroupMoments& groups, const FSExactSum& sum,
                      const FSWeightSum& validWeight);

    /// All but the second tie-breaker.
    FSTestResult Result() const;
};

#endif  // PREDSEL_FEATURESELECT_FSFTEST_H
