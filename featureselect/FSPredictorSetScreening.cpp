// Screening: which predictors are not worth ranking, and why.
#include <algorithm>
#include <utility>

#include "featureselect/FSDeletionReason.h"
#include "featureselect/FSPredictorSet.h"
#include "featureselect/FSRunningStep.h"
#include "featureselect/FSSettings.h"

FSStatus FSPredictorSet::DeleteMissingOrConstant() {
    return DeletePredictors(FSStatus::AllMissingOrConstant(), [](const IFSPredTargetAccum& accum) {
        if (accum.IsAllMissing()) return FSDeletionReason::kAllMissing;
        return accum.IsConstant() ? FSDeletionReason::kAllConst : FSDeletionReason::kNone;
    });
}

FSStatus FSPredictorSet::DeleteByCriteria() {
    return DeletePredictors(FSStatus::AllDeleted(), [this](const IFSPredTargetAccum& accum) {
        return accum.CheckDeletion(*fpSettings);
    });
}

FSStatus FSPredictorSet::CollectDeletionReasons(std::vector<std::int32_t>& indices,
                                                std::vector<std::vector<std::int32_t>>& reasons) {
    // The rules of continuous predictors read the variances.
    FinishDataPassIfDue();
    const FSRunningStep step(fElapsed);
    indices.clear();
    reasons.clear();
    std::int32_t deleted = 0;
    for (std::size_t predictor = 0; predictor < fvpAccum.size(); ++predictor) {
        if (fpCancel->IsCancelled()) break;
        if (!fvpAccum[predictor]) {
            ++deleted;
            continue;
        }
        std::vector<std::int32_t> broken;
        if (fvpAccum[predictor]->CheckAllDeletions(*fpSettings, broken) > 0) {
            indices.push_back(static_cast<std::int32_t>(predictor));
            reasons.push_back(std::move(broken));
        }
    }
    return deleted == fNumPredictors ? FSStatus::AllDeleted() : FSStatus::Success();
}

// Deletes every predictor for which verdict(accumulator) gives a reason; noneLeft is the result
// when that takes the last one.
template <class Verdict>
FSStatus FSPredictorSet::DeletePredictors(const FSStatus& noneLeft, Verdict verdict) {
    FinishDataPassIfDue();
    const FSRunningStep step(fElapsed);
    FSStatus result;
    if (GetNumberOfRemaining() == 0) {
        result = FSStatus::AllDeleted();
    } else {
        const std::int32_t before = GetNumberOfDeleted();
        for (std::size_t predictor = 0; predictor < fvpAccum.size(); ++predictor) {
            if (fpCancel->IsCancelled()) break;
            if (!fvpAccum[predictor]) continue;
            const std::int32_t reason = verdict(*fvpAccum[predictor]);
            if (reason == FSDeletionReason::kNone) continue;
            fvpAccum[predictor].reset();
            fvDeletedIndices.push_back(static_cast<std::int32_t>(predictor));
            fvDeletionReasons.push_back(reason);
        }
        if (GetNumberOfRemaining() == 0) result = noneLeft;
        if (GetNumberOfDeleted() > before) SortDeleted();
    }
    fStatus = kChecked;
    return result;
}

void FSPredictorSet::SortDeleted() {
    std::vector<std::pair<std::int32_t, std::int32_t>> deleted;
    deleted.reserve(fvDeletedIndices.size());
    for (std::size_t at = 0; at < fvDeletedIndices.size(); ++at) {
        deleted.emplace_back(fvDeletedIndices[at], fvDeletionReasons[at]);
    }
    std::sort(deleted.begin(), deleted.end());
    for (std::size_t at = 0; at < deleted.size(); ++at) {
        fvDeletedIndices[at] = deleted[at].first;
        fvDeletionReasons[at] = deleted[at].second;
    }
}
