#ifndef PREDSEL_FEATURESELECT_FSTESTRESULT_H
#define PREDSEL_FEATURESELECT_FSTESTRESULT_H

#include "host/Records.h"

/// What a criterion says of one predictor: all that ordering and reporting need. What cannot be
/// computed, or has no meaning for the criterion, is the missing value.
struct FSTestResult {
    /// The test behind a p-value. Predictors of one test with equal degrees of freedom are ordered
    /// by its statistic.
    enum Test { kNone, kChiSquare, kF, kT };

    Test fTest = kNone;
    double fValue = MCMV::gMissingValue;      // p-value, or measure
    double fLogP = MCMV::gMissingValue;       // natural logarithm of the p-value; -infinity for 0
    double fStatistic = MCMV::gMissingValue;  // chi-square, F or |t|; grows as the p-value falls
    double fDf1 = MCMV::gMissingValue;        // of chi-square and t, and the numerator of F
    double fDf2 = MCMV::gMissingValue;        // of the denominator of F
    // As IFSPredTargetAccum::ComputeCriterion hands them out.
    double fTieBreak1 = MCMV::gMissingValue;
    double fTieBreak2 = MCMV::gMissingValue;
    double fExtra1 = MCMV::gMissingValue;
    double fExtra2 = MCMV::gMissingValue;
};

#endif  // PREDSEL_FEATURESELECT_FSTESTRESULT_H
