#include "backend/predselect/NaiveDataSourceIter.h"

#include <cstddef>

#include "backend/predselect/PRSValidSpecs.h"
#include "host/Assertion.h"
#include "naivebayes/NaiveBayesSettings.h"

NaiveDataSourceIter::NaiveDataSourceIter(UAInputAdapter& adapter, const PRSValidSpecs& specs,
                                         std::vector<bool>& flags, bool needTrain, bool needTest)
    : UAProcDataSourceIter(adapter, false),
      fAdapter(adapter),
      fpRandom(specs.GetNBSettings()->fpUserRandom),
      fTrainSampProp(specs.GetTrainSampPct() * 0.01),
      fTrainSampVar(specs.GetTrainSampVar()),
      fTrainTestFlags(flags),
      fbNeedTrainData(needTrain),
      fbNeedTestData(needTest) {
    PREDSEL_ASSERT(fbNeedTrainData || fbNeedTestData, "fbNeedTrainData || fbNeedTestData");
    // The iterator that makes the first pass. One that is made while that pass is under way takes
    // part in later ones only.
    if (adapter.GetDataPassCount() == 0 && adapter.GetCaseCount() == 0) {
        PREDSEL_ASSERT(fTrainTestFlags.empty(), "fTrainTestFlags.size() == 0");
        fpCaseReader = std::make_unique<UACaseValueReader>(adapter, specs.GetDependVar(),
                                                           !specs.GetUserMissExclude());
    }
    PREDSEL_ASSERT(fTrainSampProp < 1.0, "fTrainSampProp < 1.0");
}

NaiveDataSourceIter::~NaiveDataSourceIter() = default;

bool NaiveDataSourceIter::PreprocessCase() {
    const KOLT_InputCaseIterator* fpDSIter = fAdapter.GetDSIterator();
    PREDSEL_ASSERT(fpDSIter != nullptr, "fpDSIter != 0");
    if (fTrainSampVar >= 0) {
        fbIsTrainCase = fpDSIter->GetNumericValue(fTrainSampVar) == 1.0;
    } else if (fTrainSampProp > 0.0) {
        fbIsTrainCase = DrawOrRecall();
    } else {
        fbIsTrainCase = true;
    }
    if (fTrainSampVar >= 0 || fTrainSampProp > 0.0) {
        fvTrainCases.resize(static_cast<std::size_t>(fAdapter.GetCaseCount()));
        fvTrainCases.back() = fbIsTrainCase;
    }
    if (fAdapter.GetDataPassCount() == 0 && !fpCaseReader->UpdateValid()) return false;
    return fbIsTrainCase ? fbNeedTrainData : fbNeedTestData;
}

bool NaiveDataSourceIter::DrawOrRecall() {
    const std::int32_t iCase = fAdapter.GetCaseCount() - 1;
    const auto at = static_cast<std::size_t>(iCase);
    if (fAdapter.GetDataPassCount() == 0) {
        PREDSEL_ASSERT(iCase >= 0 && at == fTrainTestFlags.size(),
                       "iCase >= 0 && iCase == fTrainTestFlags.size()");
        fTrainTestFlags.push_back(fTrainSampProp > fpRandom->GetRandom());
    }
    PREDSEL_ASSERT(iCase >= 0 && at < fTrainTestFlags.size(),
                   "iCase >= 0 && iCase < fTrainTestFlags.size()");
    return fTrainTestFlags[at];
}
