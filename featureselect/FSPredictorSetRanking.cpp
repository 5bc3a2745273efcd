// Criteria of the remaining predictors, their order and ranks.
#include <algorithm>

#include "featureselect/FSPredOrder.h"
#include "featureselect/FSPredictorSet.h"
#include "featureselect/FSRunningStep.h"
#include "featureselect/FSSettings.h"

FSStatus FSPredictorSet::ComputeCriteria() {
    FinishDataPassIfDue();
    FSRunningStep step(fElapsed, fpSettings->GetProgressListener(),
                       fpSettings->GetPredictorsToSkip());
    BeginRanking();
    for (std::int32_t predictor = 0; predictor < fNumPredictors; ++predictor) {
        if (fpCancel->IsCancelled()) break;
        if (const IFSPredTargetAccum* accum = AccumOf(predictor))
            ComputePredictor(predictor, *accum);
        step.Done(-1, predictor + 1);
    }
    fStatus = kComputed;
    return FSStatus::Success();
}

// A ranking asked for again starts afresh, so that every predictor has one record per criterion.
void FSPredictorSet::BeginRanking() {
    fNumBestSorted = 0;
    for (std::int32_t criterion = 0; criterion < FSCriterion::kCount; ++criterion) {
        const auto slot = static_cast<std::size_t>(criterion);
        fvpSort[slot].clear();
        std::fill(fvRanks[slot].begin(), fvRanks[slot].end(), -1);
        std::fill(fvValues[slot].begin(), fvValues[slot].end(), MCMV::gMissingValue);
        fvLogP[slot].assign(static_cast<std::size_t>(fNumPredictors), MCMV::gMissingValue);
        if (fpSettings->IsCriterionOn(criterion)) {
            fvpSort[slot].reserve(static_cast<std::size_t>(GetNumberOfRemaining()));
        }
    }
}

void FSPredictorSet::ComputePredictor(std::int32_t predictor, const IFSPredTargetAccum& accum) {
    const bool mixed = fPredSetType == FSSettings::kMixed;
    const bool pearsonOfMixed = mixed && fpSettings->IsCriterionOn(FSCriterion::kPearson);
    const bool chiSquareOfMixed =
        pearsonOfMixed || (mixed && fpSettings->IsCriterionOn(FSCriterion::kLikelihood));
    const bool targetCategorical = fpSettings->IsTargetCategorical();
    const bool continuous = !accum.IsCategorical();

    FSTestResult last;  // where criteria share a test, the later one takes it from here
    for (std::int32_t criterion = 0; criterion < FSCriterion::kCount; ++criterion) {
        if (!fpSettings->IsCriterionOn(criterion)) continue;
        switch (criterion) {
            case FSCriterion::kLikelihood:
                // Of a continuous predictor both chi-square criteria are the same F test.
                if (!(pearsonOfMixed && continuous)) last = accum.Test(criterion);
                break;
            case FSCriterion::kFStat:
                if (targetCategorical && !continuous) continue;
                if (targetCategorical && chiSquareOfMixed) {
                    last.fTieBreak2 = -last.fTieBreak2;  // there it was -N, here N
                } else {
                    last = accum.Test(criterion);
                }
                break;
            case FSCriterion::kTStat:
                // A mixed set has its t tests in the F order.
                if (targetCategorical || fPredSetType != FSSettings::kAllContinuous) continue;
                last = accum.Test(criterion);
                break;
            default:
                last = accum.Test(criterion);
                break;
        }
        AddResult(criterion, predictor, last);
    }
}

void FSPredictorSet::AddResult(std::int32_t criterion, std::int32_t predictor,
                               const FSTestResult& result) {
    const auto slot = static_cast<std::size_t>(criterion);
    fvpSort[slot].push_back(std::make_unique<FSPredSort>(FSPredSort::Of(predictor, result)));
    fvLogP[slot][static_cast<std::size_t>(predictor)] = result.fLogP;
    // A criterion switched on after construction has no values and no ranks.
    if (!fvValues[slot].empty()) {
        fvValues[slot][static_cast<std::size_t>(predictor)] = result.fValue;
    }
}

FSStatus FSPredictorSet::SortAll() {
    const FSRunningStep step(fElapsed);
    for (std::int32_t criterion = 0; criterion < FSCriterion::kCount; ++criterion) {
        if (!fpSettings->IsCriterionOn(criterion)) continue;
        if (fpCancel->IsCancelled()) break;
        auto& records = fvpSort[static_cast<std::size_t>(criterion)];
        FSPredOrder::Sort(records, criterion, records.size());
    }
    fStatus = kSortedAll;
    return FSStatus::Success();
}

FSStatus FSPredictorSet::SortBest(std::int32_t count) {
    const FSRunningStep step(fElapsed);
    if (count < 1) count = GetNumberOfRemaining();
    for (std::int32_t criterion = 0; criterion < FSCriterion::kCount; ++criterion) {
        if (!fpSettings->IsCriterionOn(criterion)) continue;
        if (fpCancel->IsCancelled()) break;
        auto& records = fvpSort[static_cast<std::size_t>(criterion)];
        if (records.empty()) continue;
        // Intended: a short list lowers the count for all criteria after it.
        // AShortListLowersTheCountForLaterCriteria holds this.
        count = static_cast<std::int32_t>(
            std::min<std::size_t>(static_cast<std::size_t>(count), records.size()));
        FSPredOrder::Sort(records, criterion, static_cast<std::size_t>(count));
    }
    fNumBestSorted = count;
    fStatus = kSortedBest;
    return FSStatus::Success();
}

FSStatus FSPredictorSet::RankAll() {
    RankHeads(fNumPredictors);
    return FSStatus::Success();
}

FSStatus FSPredictorSet::RankBest() {
    RankHeads(fNumBestSorted);
    return FSStatus::Success();
}

// Ranks the first limit records of each order, from 0; ties have ranks of their own.
void FSPredictorSet::RankHeads(std::int32_t limit) {
    const FSRunningStep step(fElapsed);
    for (std::int32_t criterion = 0; criterion < FSCriterion::kCount; ++criterion) {
        if (!fpSettings->IsCriterionOn(criterion)) continue;
        if (fpCancel->IsCancelled()) break;
        const auto slot = static_cast<std::size_t>(criterion);
        if (fvRanks[slot].empty()) continue;
        const auto end = std::min(limit, static_cast<std::int32_t>(fvpSort[slot].size()));
        for (std::int32_t rank = 0; rank < end; ++rank) {
            const FSPredSort& record = *fvpSort[slot][static_cast<std::size_t>(rank)];
            fvRanks[slot][static_cast<std::size_t>(record.fPredictor)] = rank;
        }
    }
    fStatus = kRanked;
}

FSStatus FSPredictorSet::GetBest(std::int32_t criterion, std::int32_t count,
                                 std::vector<std::int32_t>& indices,
                                 std::vector<double>& values) const {
    indices.clear();
    values.clear();
    if (!IsCriterion(criterion) || !fpSettings->IsCriterionOn(criterion)) {
        return FSStatus::CriterionNotRequested();
    }
    const std::int32_t remaining = GetNumberOfRemaining();
    if (count == 0) count = fNumBestSorted;
    if (fNumBestSorted > 0) count = std::min(count, fNumBestSorted);
    if (count > remaining || count == 0) count = remaining;
    // Intended: of a mixed set the t order is read as the F order whatever the target, where
    // GetRanks asks for a continuous one. GetBestReadsTheFOrderForTWhateverTheTarget holds this.
    const bool readsF = criterion == FSCriterion::kTStat && fPredSetType == FSSettings::kMixed;
    const auto& records =
        fvpSort[static_cast<std::size_t>(readsF ? FSCriterion::kFStat : criterion)];
    count = std::min(count, static_cast<std::int32_t>(records.size()));
    for (std::int32_t at = 0; at < count; ++at) {
        indices.push_back(records[static_cast<std::size_t>(at)]->fPredictor);
        values.push_back(records[static_cast<std::size_t>(at)]->fCriterion);
    }
    return FSStatus::Success();
}

const std::vector<std::int32_t>& FSPredictorSet::GetRanks(std::int32_t criterion) const {
    static const std::vector<std::int32_t> kNone;
    return IsCriterion(criterion) ? fvRanks[ResultSlot(criterion)] : kNone;
}

const std::vector<double>& FSPredictorSet::GetCriterionValues(std::int32_t criterion) const {
    static const std::vector<double> kNone;
    return IsCriterion(criterion) ? fvValues[ResultSlot(criterion)] : kNone;
}

// Where the ranks and values of a criterion stand.
std::size_t FSPredictorSet::ResultSlot(std::int32_t criterion) const {
    const bool readsF = criterion == FSCriterion::kTStat && fPredSetType == FSSettings::kMixed &&
                        !fpSettings->IsTargetCategorical();
    return static_cast<std::size_t>(readsF ? FSCriterion::kFStat : criterion);
}

bool FSPredictorSet::GetPredictorCriterion(std::int32_t criterion, std::int32_t predictor,
                                           double& first, double& second, double& third,
                                           double& fourth) const {
    first = second = third = fourth = MCMV::gMissingValue;
    const IFSPredTargetAccum* accum = AccumOf(predictor);
    return accum != nullptr &&
           accum->GetCriterionForDisplay(criterion, first, second, third, fourth);
}

bool FSPredictorSet::GetPredictorLogP(std::int32_t criterion, std::int32_t predictor,
                                      double& logP) const {
    const IFSPredTargetAccum* accum = AccumOf(predictor);
    logP = MCMV::gMissingValue;
    if (accum == nullptr) return false;
    if (IsCriterion(criterion)) {
        const std::vector<double>& known = fvLogP[static_cast<std::size_t>(criterion)];
        if (!known.empty()) logP = known[static_cast<std::size_t>(predictor)];
    }
    // Of a test that orders no predictors, and after a restore.
    if (logP == MCMV::gMissingValue) logP = accum->Test(criterion).fLogP;
    return logP != MCMV::gMissingValue;
}

const IFSPredTargetAccum* FSPredictorSet::AccumOf(std::int32_t predictor) const {
    const auto at = static_cast<std::size_t>(predictor);
    return predictor >= 0 && at < fvpAccum.size() ? fvpAccum[at].get() : nullptr;
}

bool FSPredictorSet::IsCriterion(std::int32_t criterion) {
    return criterion >= 0 && criterion < FSCriterion::kCount;
}
