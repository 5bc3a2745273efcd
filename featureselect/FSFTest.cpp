#include "featureselect/FSFTest.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "featureselect/FSDistributions.h"
#include "featureselect/FSGroupMoments.h"

namespace {

// The sum of numbers not below 0, the smaller ones first: so it knows nothing of their labels.
FSScaled SumOf(std::vector<FSScaled>& terms) {
    std::sort(terms.begin(), terms.end());
    FSScaled sum;
    for (const FSScaled& term : terms) sum = sum + term;
    return sum;
}

}  // namespace

FSFTest FSFTest::Of(const FSGroupMoments& groups, const FSExactSum& sum,
                    const FSWeightSum& validWeight) {
    const FSExactSum weight = validWeight.Exact();
    std::vector<FSScaled> between;  // of each group, times the squared weight of all
    std::vector<FSScaled> within;
    bool numbers = sum.IsNumber();
    for (const FSGroupMomentsEntry& group : groups.Entries()) {
        const FSMoments& moments = group.fMoments;
        numbers = numbers && moments.IsNumber();
        const FSExactSum share = moments.fWeight.Exact();
        if (share.Sign() <= 0) continue;
        const FSExactSum deviation = weight * moments.fSum - share * sum;
        between.push_back((deviation * deviation).Scaled() / share.Scaled());
        if (moments.fWeight > 1.0) within.push_back(moments.SecondMoment());
    }

    FSFTest test;
    test.fDf1 = groups.Size() - 1.0;
    test.fDf2 = validWeight - FSWeightSum(groups.Size());
    if (!numbers) return test;
    const FSScaled unexplained = SumOf(within);
    if (!unexplained.IsPositive()) {
        test.fPValue = 0.0;
        test.fLogP = -std::numeric_limits<double>::infinity();
    } else if (test.fDf1 > 0.0 && test.fDf2 > 0.0) {
        const FSScaled squared = weight.Scaled() * weight.Scaled();
        const FSScaled explained = SumOf(between) / squared / FSScaled(test.fDf1);
        const double f = (explained / (unexplained / FSScaled(test.fDf2))).Value();
        const FSTail tail = FTail(f, test.fDf1, test.fDf2);
        if (tail.fP != MCMV::gMissingValue) {
            test.fPValue = tail.fP;
            test.fLogP = tail.fLogP;
            test.fF = f;
        }
    }
    return test;
}

FSTestResult FSFTest::Result() const {
    FSTestResult result;
    result.fTest = FSTestResult::kF;
    result.fValue = fPValue;
    result.fLogP = fLogP;
    result.fStatistic = fF;
    result.fDf1 = fDf1;
    result.fDf2 = fDf2;
    result.fTieBreak1 = fF;
    result.fExtra1 = fDf1;
    result.fExtra2 = fDf2;
    return result;
}
