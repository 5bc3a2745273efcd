// Training: counting records, searching a subset, merging.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <new>
#include <stdexcept>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBBlockAdapter.h"
#include "naivebayes/NBInternalAdapter.h"
#include "naivebayes/NBProgressPacing.h"
#include "naivebayes/NBReporter.h"
#include "naivebayes/NBSubsetSearch.h"
#include "naivebayes/data/INBEncoder.h"
#include "naivebayes/data/INBVariable.h"

namespace {

constexpr std::int32_t kTargetPosition = 0;  // in a prepared record
constexpr std::int32_t kWeightPosition = 1;
constexpr std::int32_t kNoMaxSize = -1;

NBStatus Error(std::uint32_t code) { return NBStatus(code, false); }

/// Record counts of merged and updated models stop at the largest number.
std::int32_t SumOfCounts(std::int32_t left, std::int32_t right) {
    constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::min(std::int64_t{left} + right, kMost));
}

/// Another source's records, counted as they pass.
class CountingSource final : public MCCommon::RecordIterator {
 public:
    explicit CountingSource(MCCommon::RecordIterator& source) : fSource(source) {}
    bool HasMore() override { return fSource.HasMore(); }
    const MCCommon::Record* Next() override {
        const MCCommon::Record* record = fSource.Next();
        if (record != nullptr) ++fCount;
        return record;
    }
    std::int32_t GetFailReason() const override { return fSource.GetFailReason(); }
    std::int32_t Count() const { return fCount; }

 private:
    MCCommon::RecordIterator& fSource;
    std::int32_t fCount = 0;
};

}  // namespace

template <class Train>
NBStatus NBAlgorithm::Training(Train train) {
    try {
        return train();
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    fvInputs.clear();
    fbModelBuilt = false;
    return fStatus = Error(NBCode::kNoMemory);
}

NBStatus NBAlgorithm::BuildModel(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords) {
    if (fInterrupt.IsStopped()) return ResetModel();
    if (fStatus.IsError()) return fStatus;
    return Training([&] {
        EnsurePreparator(false, numRecords);
        const NBStatus status = TrainOn(records, numRecords, [this] { ResetTables(false); });
        records.NewPass();
        return FinishTraining(status);
    });
}

NBStatus NBAlgorithm::UpdateModel(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords) {
    if (fStatus.IsError()) return fStatus;
    if (fInterrupt.IsStopped()) return ResetModel();
    if (!fbModelBuilt) return Error(NBCode::kNotBuilt);
    if (!records.HasMore()) return Error(NBCode::kNoUsableRecords);
    if (numRecords == 0) return Error(NBCode::kNoRecordCount);
    if (numRecords < 0) numRecords = std::numeric_limits<std::int32_t>::max();
    return Training([&] {
        const NBStatus status = TrainOn(records, numRecords, [] {});
        records.NewPass();
        // Without a usable record the model stays as it is, and goes on.
        const bool isUnchanged = status.GetCode() == NBCode::kNoUsableRecords;
        return isUnchanged && !fInterrupt.IsStopped() ? status : FinishTraining(status);
    });
}

template <class Prepare>
NBStatus NBAlgorithm::TrainOn(MCCommon::RecordIterator& records, std::int32_t numRecords,
                              Prepare prepare) {
    // A listener hears of single records.
    auto* const blocks = dynamic_cast<MCCommon::RecordBlockSource*>(&records);
    if (blocks != nullptr && fSettings.fpListener == nullptr) {
        NBBlockAdapter adapter(records, *blocks, numRecords, *fpPreparator);
        if (!adapter.HasMore()) return Error(NBCode::kNoUsableRecords);
        prepare();
        return TrainOnAdapter(adapter, numRecords);
    }
    NBInternalAdapter adapter(records, numRecords, *fpPreparator);
    if (!adapter.HasMore()) return Error(NBCode::kNoUsableRecords);
    prepare();
    return TrainOnAdapter(adapter, numRecords);
}

template <class Adapter>
NBStatus NBAlgorithm::TrainOnAdapter(Adapter& adapter, std::int32_t numRecords) {
    const NBStatus status = AccumulateRecords(adapter, numRecords, true);
    fNumExcluded = SumOfCounts(fNumExcluded, adapter.GetNumExcluded());
    fExcludedWeight += adapter.GetExcludedWeight();
    // A saved model is read back by this number.
    fNumInputs = static_cast<std::int32_t>(fvInputs.size());
    if (!status.IsError()) fpPreparator->MakeCollapsedEncoders(fvInputs);
    return status;
}

NBStatus NBAlgorithm::SelectSubset(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords,
                                   std::vector<std::int32_t>& selectedOut,
                                   std::vector<double>& criteriaOut,
                                   std::vector<NBSubset>& bestSubsetsOut, std::int32_t maxSize,
                                   bool exact, MCCommon::MultiPassRecordIter* testRecords,
                                   std::int32_t numTest, std::int32_t numBest,
                                   std::ostream* xmlStream, const NBWriteOptions* xmlOptions) {
    const NBStatus asked =
        CheckSelection(records, numRecords, maxSize, testRecords != nullptr, numTest);
    if (asked.IsError()) return fStatus = asked;
    if (fInterrupt.IsStopped()) return ResetModel();
    if (fStatus.IsError()) return fStatus;
    return Training([&] {
        selectedOut.clear();
        criteriaOut.clear();
        bestSubsetsOut.clear();
        EnsurePreparator(true, numRecords);
        const bool fits = fSettings.fMaxRecordsInMemory >= numRecords;
        ResetTables(true);
        std::unique_ptr<MCCommon::MultiPassRecordIter> store;
        std::int32_t count = 0;
        NBStatus status = fpPreparator->PrepareRecords(records, numRecords, fits, store, count,
                                                       fSettings.fTempDir);
        fNumExcluded = fpPreparator->GetNumExcluded();
        fExcludedWeight = fpPreparator->GetWeightExcluded();
        records.NewPass();
        if (store != nullptr) {
            if (dynamic_cast<MCCommon::RecordBlockSource*>(store.get()) != nullptr) {
                status = AccumulateRecords(*store, count, false);
            } else {
                CountingSource kept(*store);
                status = AccumulateRecords(kept, count, false);
                // Fewer than were written: the disk was full. A model of the others would pass for
                // one of all.
                if (!fInterrupt.IsStopped() && kept.Count() < count) {
                    status = Error(NBCode::kNoTempFile);
                }
            }
            store->NewPass();
        }
        if (status.IsError()) return FinishTraining(status);

        auto* const blocks = dynamic_cast<MCCommon::RecordBlockSource*>(&records);
        NBSubsetSearch search(fvInputs, fOutput, fVarList, fSettings, fInterrupt,
                              blocks == nullptr ? nullptr : blocks->GetExecutor());
        numBest = BoundNumBest(numBest);
        maxSize = BoundSize(maxSize, status);
        const NBStatus searched =
            exact ? search.RunExactSize(maxSize, *store, count, fits, selectedOut)
            : testRecords != nullptr
                ? search.RunTestData(maxSize, *store, count, fits, *testRecords, numTest,
                                     selectedOut, bestSubsetsOut, numBest, *fpPreparator)
                : search.RunPseudoBIC(maxSize, *store, count, fits, selectedOut, bestSubsetsOut,
                                      numBest);
        if (searched.IsError()) return FinishTraining(searched);
        search.GetCriteria(criteriaOut);
        if (xmlStream != nullptr) {
            search.WriteSelectionXML(*xmlStream, !exact && testRecords != nullptr, xmlOptions);
        }
        KeepSelected();
        return FinishTraining(status);
    });
}

NBStatus NBAlgorithm::CheckSelection(MCCommon::MultiPassRecordIter& records,
                                     std::int32_t numRecords, std::int32_t maxSize,
                                     bool hasTestRecords, std::int32_t numTest) const {
    if (!records.HasMore()) return Error(NBCode::kTrainingEmpty);
    if (numRecords <= 0) return Error(NBCode::kNoRecordCount);
    if (hasTestRecords && numTest == 0) return Error(NBCode::kNoTestCount);
    const std::int32_t forced = fVarList.GetNumInputVars();
    if (maxSize != kNoMaxSize && maxSize <= forced) {
        NBStatus status = Error(NBCode::kMaxSizeTooSmall);
        status.SetIntArg(0, maxSize);
        status.SetIntArg(1, forced);
        return status;
    }
    return NBStatus();
}

std::int32_t NBAlgorithm::BoundSize(std::int32_t maxSize, NBStatus& status) const {
    const std::int32_t forced = fVarList.GetNumInputVars();
    const std::int32_t candidates = fVarList.GetNumPossibleInputVars();
    const std::int32_t total = forced + candidates;
    if (maxSize == kNoMaxSize) {
        // A fifth of the predictors, but from 20 to 100 of them.
        const std::int32_t allowed = std::clamp(total / 5, 20, 100);
        return std::min(forced + allowed, total);
    }
    if (maxSize <= total) return maxSize;
    status = NBStatus(NBCode::kMaxSizeTooLarge, true);
    status.SetIntArg(0, maxSize);
    status.SetIntArg(1, forced);
    status.SetIntArg(2, candidates);
    return total;
}

std::int32_t NBAlgorithm::BoundNumBest(std::int32_t numBest) const {
    constexpr std::int32_t kDefaultNumBest = 5;
    const std::int32_t candidates = fVarList.GetNumPossibleInputVars();
    if (numBest < 1) numBest = kDefaultNumBest;
    if (numBest <= candidates) return numBest;
    // The forced predictors alone are a subset too.
    return candidates + (fVarList.GetNumInputVars() > 0 ? 1 : 0);
}

void NBAlgorithm::KeepSelected() {
    fpPreparator->SyncWithVarList();
    for (std::size_t i = fvInputs.size(); i-- > 0;) {
        if (fVarList.GetRole(fvInputs[i].GetVarIndex()) != NBRole::kInput) RemoveTable(i);
    }
    fNumInputs = static_cast<std::int32_t>(fvInputs.size());
    fpPreparator->MakeCollapsedEncoders(fvInputs);
}

NBStatus NBAlgorithm::AccumulateRecords(MCCommon::RecordIterator& records, std::int32_t numRecords,
                                        bool reportProgress) {
    if (!records.HasMore()) return Error(NBCode::kNoUsableRecords);
    double weight = 0.0;
    auto* const blocks = dynamic_cast<MCCommon::RecordBlockSource*>(&records);
    const std::int32_t used = blocks != nullptr
                                  ? CountBlocks(records, *blocks, numRecords, weight)
                                  : CountRecords(records, numRecords, reportProgress, weight);
    if (used < 1) return Error(NBCode::kNoUsableRecords);
    fNumRecords = SumOfCounts(fNumRecords, used);
    if (fNumRecords < 2) return Error(NBCode::kTooLittleData);
    fWeight += weight;
    // No share of an infinite weight is a probability.
    if (!std::isfinite(fWeight)) return Error(NBCode::kTooLittleData);
    fOutput.ComputePriors(fWeight);
    return DropUninformative();
}

std::int32_t NBAlgorithm::CountRecords(MCCommon::RecordIterator& records, std::int32_t numRecords,
                                       bool reportProgress, double& weightOut) {
    NBProgressPacing pacing(reportProgress ? fSettings.fpListener : nullptr, fSettings.fNumSkip);
    const bool weighted = fpPreparator->GetWeightIndex() >= 0;
    std::int32_t used = 0;
    while (used < numRecords && records.HasMore() && !fInterrupt.IsStopped()) {
        const MCCommon::Record* record = records.Next();
        if (record == nullptr) continue;
        const double target = (*record)[kTargetPosition];
        const double weight = weighted ? (*record)[kWeightPosition] : 1.0;
        // A missing weight is below 0.
        if (IsKnown(target) && weight > 0.0) {
            CountRecord(*record, Category(target, fOutput.GetNumCategories()), weight);
            weightOut += weight;
            ++used;
        }
        if (pacing.IsDue()) pacing.Send(NBReporter(used, pacing.ElapsedSeconds()));
    }
    return used;
}

void NBAlgorithm::CountRecord(const MCCommon::Record& record, std::int32_t target, double weight) {
    fOutput.AddRecord(target, weight);
    for (NBayesInput& table : fvInputs) {
        const double code = record[table.GetAdjustedRecordIndex()];
        if (IsKnown(code)) table.AddCount(Category(code, table.GetNumCategories()), target, weight);
    }
}

NBStatus NBAlgorithm::DropUninformative() {
    NBStatus status;
    for (std::size_t i = fvInputs.size(); i-- > 0;) {
        if (fvInputs[i].UpdateProbabilities(fWeight) >= 2) continue;
        const std::int32_t index = fvInputs[i].GetVarIndex();
        if (fVarList.GetRole(index) == NBRole::kInput) {
            status = NBStatus(NBCode::kForcedUninformative, true);
            status.SetIntArg(0, index);
        }
        fVarList.SetRole(index, NBRole::kUnused);
        fpPreparator->RemoveInput(static_cast<std::int32_t>(i));
        RemoveTable(i);
    }
    return fvInputs.empty() ? Error(NBCode::kTooLittleData) : status;
}

void NBAlgorithm::RemoveTable(std::size_t i) {
    const auto behind = fvInputs.erase(fvInputs.begin() + static_cast<std::ptrdiff_t>(i));
    std::for_each(behind, fvInputs.end(),
                  [](NBayesInput& table) { table.DecrementAdjustedIndex(); });
}

void NBAlgorithm::EnsurePreparator(bool usePossibleInputs, std::int32_t numRecords) {
    const std::int32_t inputs =
        fVarList.GetNumInputVars() + (usePossibleInputs ? fVarList.GetNumPossibleInputVars() : 0);
    if (fpPreparator != nullptr && fpPreparator->GetInputRecordSize() == inputs) return;
    fvInputs.clear();
    fpPreparator =
        std::make_unique<NBDataPreparator>(fVarList, usePossibleInputs, numRecords, fInterrupt);
}

void NBAlgorithm::ResetTables(bool includeCandidates) {
    fNumRecords = 0;
    fWeight = 0.0;
    fNumExcluded = 0;
    fExcludedWeight = 0.0;
    fOutput.Clear();
    const auto isWanted = [this, includeCandidates](std::int32_t index) {
        const std::int32_t role = fVarList.GetRole(index);
        return role == NBRole::kInput || (includeCandidates && role == NBRole::kPossibleInput);
    };
    const std::int32_t wanted =
        fVarList.GetNumInputVars() + (includeCandidates ? fVarList.GetNumPossibleInputVars() : 0);
    // Where tables have moved up, records are from now on stored without those that left.
    const bool haveMoved =
        std::any_of(fvInputs.begin(), fvInputs.end(), [](const NBayesInput& table) {
            return table.GetRecordIndex() != table.GetAdjustedRecordIndex();
        });
    if (static_cast<std::int32_t>(fvInputs.size()) == wanted && !haveMoved) {
        for (NBayesInput& table : fvInputs) table.ClearCounts();
        return;
    }
    fvInputs.clear();
    std::int32_t recordIndex = fpPreparator->GetWeightIndex() >= 0 ? 2 : 1;
    for (std::int32_t i = 0; i < fVarList.GetNumVariables(); ++i) {
        if (!isWanted(i)) continue;
        fvInputs.emplace_back().Setup(*fVarList.GetVariable(i), fOutput.GetNumCategories(), i,
                                      recordIndex++);
    }
}

NBStatus NBAlgorithm::FinishTraining(const NBStatus& status) {
    if (fInterrupt.IsStopped()) return ResetModel();
    fStatus = status;
    fbModelBuilt = !status.IsError();
    return fStatus;
}

NBStatus NBAlgorithm::ResetModel() {
    fStatus = Error(NBCode::kInterrupted);
    fbModelBuilt = false;
    fvInputs.clear();
    fOutput.Clear();
    fNumRecords = 0;
    fNumInputs = 0;
    return fStatus;
}

bool NBAlgorithm::IsMergeable() const {
    return fbModelBuilt && !fInterrupt.fStopped && !fStatus.IsError();
}

NBStatus NBAlgorithm::MergeModel(const INBAlgorithm& other, bool checkVariables) {
    NBStatus refused = Error(NBCode::kCannotMerge);
    refused.SetIntArg(0, -1);
    const auto* peer = dynamic_cast<const NBAlgorithm*>(&other);
    if (fInterrupt.IsStopped() || !IsMergeable()) return refused;
    if (peer == nullptr || !peer->IsMergeable()) return refused;
    std::int32_t difference = -1;
    if (checkVariables && !fVarList.Compare(peer->fVarList, difference)) {
        refused.SetIntArg(0, difference);
        return refused;
    }
    // Whatever the caller's word: tables merge by position.
    if (fvInputs.size() != peer->fvInputs.size()) return refused;
    return Training([&] {
        std::vector<std::int32_t> codeMap;
        double weight = 0.0;
        fOutput.MergeFrom(peer->fOutput, fVarList.GetEncoder(fOutput.GetVarIndex()),
                          peer->fVarList.GetEncoder(peer->fOutput.GetVarIndex()), codeMap, weight);
        for (std::size_t i = 0; i < fvInputs.size(); ++i) {
            const NBayesInput& theirs = peer->fvInputs[i];
            fvInputs[i].MergeFrom(theirs, fVarList.GetEncoder(fvInputs[i].GetVarIndex()),
                                  peer->fVarList.GetEncoder(theirs.GetVarIndex()),
                                  fOutput.GetNumCategories(), codeMap, weight);
        }
        for (NBOutputStatistics* statistics : {fpTrainStatistics.get(), fpTestStatistics.get()}) {
            if (statistics != nullptr) statistics->Extend(fOutput.GetNumCategories());
        }
        // What the encoders learned from the other side.
        for (std::int32_t i = 0; i < fVarList.GetNumVariables(); ++i) {
            fVarList.GetVariable(i)->RefreshNumCategories();
        }
        fpPreparator->RefreshCategoryCounts();
        fpPreparator->MakeCollapsedEncoders(fvInputs);
        fNumRecords = SumOfCounts(fNumRecords, peer->fNumRecords);
        fWeight += peer->fWeight;
        fNumExcluded = SumOfCounts(fNumExcluded, peer->fNumExcluded);
        fExcludedWeight += peer->fExcludedWeight;
        return NBStatus();
    });
}
