#include "featureselect/FSFTest.h"

#include <cstdint>

#include "featureselect/FSDistributions.h"
#include "featureselect/FSMapIStat.h"

FSFTest FSFTest::Of(const FSMapIStat& groups, double grandMean, double validWeight) {
    double between = 0.0;
    double within = 0.0;
    for (std::int32_t i = 0; i < groups.Size(); ++i) {
        const FSMapIStatEntry& group = groups.GetAt(i);
        const double deviation = group.fMean - grandMean;
        between += deviation * deviation * group.fWeight;
        within += (group.fWeight - 1.0) * group.fVariance;
    }

    FSFTest test;
    test.fDf1 = groups.Size() - 1.0;
    test.fDf2 = validWeight - groups.Size();
    if (!(within > 0.0)) {
        test.fPValue = 0.0;
    } else if (test.fDf1 > 0.0 && test.fDf2 > 0.0) {
        const double f = (between / test.fDf1) / (within / test.fDf2);
        const double below = FCdf(f, test.fDf1, test.fDf2);
        if (below != MCMV::gMissingValue) {
            test.fPValue = 1.0 - below;
            test.fF = f;
        }
    }
    return test;
}

FSTestResult FSFTest::Result() const {
    FSTestResult result;
    result.fTest = FSTestResult::kF;
    result.fValue = fPValue;
    result.fStatistic = fF;
    result.fDf1 = fDf1;
    result.fDf2 = fDf2;
    result.fTieBreak1 = fF;
    result.fExtra1 = fDf1;
    result.fExtra2 = fDf2;
    return result;
}
