#include "featureselect/IFSPredTargetAccum.h"

void IFSPredTargetAccum::ComputeCriterion(std::int32_t criterion, double& value, double& tieBreak1,
                                          double& tieBreak2, double& extra1, double& extra2) const {
    const FSTestResult test = Test(criterion);
    value = test.fValue;
    tieBreak1 = test.fTieBreak1;
    tieBreak2 = test.fTieBreak2;
    extra1 = test.fExtra1;
    extra2 = test.fExtra2;
}
