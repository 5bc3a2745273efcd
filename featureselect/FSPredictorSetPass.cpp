// The data pass: records, transactions, records without a target; merging of partitions.
#include <algorithm>
#include <cmath>
#include <limits>

#include "featureselect/FSAccumKind.h"
#include "featureselect/FSCount.h"
#include "featureselect/FSPredictorSet.h"
#include "featureselect/FSRunningStep.h"
#include "featureselect/FSSettings.h"
#include "featureselect/FSTruncate.h"
#include "host/Blocks.h"

namespace {

// A record may be shorter than the settings promise, and a target may not be settled at all (-1).
double ValueAt(const MCCommon::Record& record, std::int32_t column) {
    return column >= 0 && column < record.Size() ? record[column] : MCMV::gMissingValue;
}

// The columns of an item of a transaction.
constexpr std::int32_t kItemTransaction = 0;
constexpr std::int32_t kItemPredictor = 1;
constexpr std::int32_t kItemValue = 2;
constexpr std::int32_t kItemTarget = 3;

}  // namespace

/// The transaction whose items are being read.
struct FSPredictorSet::Transaction {
    double fIdentifier = -99.0;
    double fTarget = 0.0;
    std::int32_t fLastPredictor = -1;
    bool fbEmpty = true;  // no valid value yet
};

bool FSPredictorSet::AllocateAccumulators(bool withTarget) {
    if (fMemoryAllocated) return false;
    const bool targetCategorical = fpSettings->IsTargetCategorical();
    fvpAccum.reserve(static_cast<std::size_t>(fNumPredictors));
    for (std::int32_t predictor = 0; predictor < fNumPredictors; ++predictor) {
        fvpAccum.push_back(FSAccumKind::Make(FSAccumKind::For(
            fpSettings->IsPredictorCategorical(predictor), withTarget, targetCategorical)));
    }
    if (withTarget && targetCategorical) fpTargetAccum = std::make_unique<FSMapIPCnt>();
    fMemoryAllocated = true;
    return true;
}

FSStatus FSPredictorSet::AccumulateRecords(MCCommon::RecordIterator& records,
                                           std::int32_t maxRecords) {
    BeginPass(true);
    if (auto* blocks = dynamic_cast<MCCommon::RecordBlockSource*>(&records)) {
        ReadBlocks(*blocks, maxRecords, true);
        return PassResult(FSStatus::kError);
    }
    const std::vector<std::int32_t> columns = PredictorColumns(true);
    ReadRecords(records, maxRecords, [&](const MCCommon::Record& record, double weight) {
        const double target = ValueAt(record, fpSettings->GetTargetPosition());
        if (IsTargetMissing(target)) {
            CountExcluded(weight);
            return false;
        }
        const bool holdsData = FeedPredictors(
            record, columns, weight, [target, weight](IFSPredTargetAccum& accum, double value) {
                accum.AddPair(value, target, weight, true);
            });
        if (holdsData) {
            CountValid(target, weight);
        } else {
            CountExcluded(weight);
        }
        return true;
    });
    return PassResult(FSStatus::kError);
}

FSStatus FSPredictorSet::AccumulateForScreening(MCCommon::RecordIterator& records,
                                                std::int32_t maxRecords) {
    BeginPass(false);
    fWeightedValid = fWeightedExcluded = FSWeightSum();
    fUnweightedValid = fUnweightedExcluded = 0;
    if (auto* blocks = dynamic_cast<MCCommon::RecordBlockSource*>(&records)) {
        ReadBlocks(*blocks, maxRecords, false);
        return PassResult(FSStatus::kWarning);
    }
    const std::vector<std::int32_t> columns = PredictorColumns(false);
    ReadRecords(records, maxRecords, [&](const MCCommon::Record& record, double weight) {
        FeedPredictors(record, columns, weight, [weight](IFSPredTargetAccum& accum, double value) {
            accum.AddValue(value, weight, true);
        });
        CountExcluded(weight);
        return true;
    });
    return PassResult(FSStatus::kWarning);
}

FSStatus FSPredictorSet::AccumulateTransactions(MCCommon::RecordIterator& items) {
    BeginPass(true);
    FSRunningStep step(fElapsed, fpSettings->GetProgressListener(), fpSettings->GetRecordsToSkip());
    const bool targetCategorical = fpSettings->IsTargetCategorical();
    Transaction open;
    std::int32_t transactions = 0;
    while (items.HasMore() && !fpCancel->IsCancelled()) {
        const MCCommon::Record* item = items.Next();
        if (item == nullptr) break;
        const double identifier = ValueAt(*item, kItemTransaction);
        const bool starts = identifier != open.fIdentifier;
        if (starts) {
            // Intended: the first item closes a transaction that never was, which counts as one
            // excluded record. ThePhantomFirstTransactionIsExcluded holds this.
            CloseTransaction(open);
            open = {identifier, ValueAt(*item, kItemTarget)};
            ++transactions;
            if (IsTargetMissing(open.fTarget)) {
                // Intended: the closing counts this transaction a second time.
                // AMissingTargetIsCountedTwice holds this.
                CountExcluded(1.0);
                continue;
            }
        } else if (open.fTarget == MCMV::gMissingValue ||
                   (targetCategorical && open.fTarget == -1.0)) {
            // Intended: -1 exactly, where the first item goes by the truncation.
            // ATargetJustBelowMinusOneLosesOnlyTheFirstItem holds this.
            continue;
        }

        const std::int32_t predictor = FSTruncate(ValueAt(*item, kItemPredictor) + 0.5);
        if (predictor <= open.fLastPredictor) {
            return FSStatus::PredictorsOutOfOrder(open.fLastPredictor, predictor,
                                                  FSTruncate(identifier));
        }
        AddMissingItems(open.fLastPredictor + 1, std::min(predictor, fNumPredictors));
        open.fLastPredictor = predictor;
        if (predictor >= fNumPredictors) {
            return FSStatus::PredictorOutOfRange(predictor, fNumPredictors, FSTruncate(identifier));
        }

        if (IFSPredTargetAccum* accum = fvpAccum[static_cast<std::size_t>(predictor)].get()) {
            const double value = ValueAt(*item, kItemValue);
            if (value == MCMV::gMissingValue || (accum->IsCategorical() && value == -1.0)) {
                accum->AddMissing(1.0);
            } else {
                fNoValidData = false;
                open.fbEmpty = false;
                accum->AddPair(value, open.fTarget, 1.0, true);
            }
        }
        if (starts) step.Done(transactions, -1);
    }
    // Intended: a last transaction that reached the last predictor isn't counted.
    // ALastTransactionThatReachesTheLastPredictorIsNotCounted holds this.
    if (IsCutShort(open)) CloseTransaction(open);
    fStatus = kAccumulated;
    return fNoValidData ? FSStatus::NoValidData() : FSStatus::Success();
}

bool FSPredictorSet::MergeFrom(const FSPredictorSet& other) {
    if (!CanMerge(other)) return false;
    fNoValidData = fNoValidData && other.fNoValidData;
    fNoValidWeight = fNoValidWeight && other.fNoValidWeight;
    fWeightedValid += other.fWeightedValid;
    fWeightedExcluded += other.fWeightedExcluded;
    fUnweightedValid += other.fUnweightedValid;
    fUnweightedExcluded += other.fUnweightedExcluded;
    fElapsed += other.fElapsed;
    if (fpTargetAccum) fpTargetAccum->MergeFrom(*other.fpTargetAccum);
    for (std::size_t predictor = 0; predictor < fvpAccum.size(); ++predictor) {
        FSAccumKind::Merge(*fvpAccum[predictor], *other.fvpAccum[predictor]);
    }
    return true;
}

FSStatus FSPredictorSet::FinishDataPass() {
    const FSRunningStep step(fElapsed);
    // With a categorical target only continuous predictors derive anything.
    const bool anyContinuous =
        fPredSetType == FSSettings::kAllContinuous || fPredSetType == FSSettings::kMixed;
    if (anyContinuous || !fpSettings->IsTargetCategorical()) {
        for (const auto& accum : fvpAccum) {
            if (accum) accum->FinishData();
        }
    }
    fDataPassCompleted = true;
    return FSStatus::Success();
}

void FSPredictorSet::FinishDataPassIfDue() {
    // It has no way to fail.
    if (!fDataPassCompleted) static_cast<void>(FinishDataPass());
}

void FSPredictorSet::BeginPass(bool withTarget) {
    AllocateAccumulators(withTarget);
    fDataPassCompleted = false;
}

// Calls take(record, weight) for every record with a valid weight; what it returns says whether the
// record shows in the progress.
template <class Take>
void FSPredictorSet::ReadRecords(MCCommon::RecordIterator& records, std::int32_t maxRecords,
                                 Take take) {
    FSRunningStep step(fElapsed, fpSettings->GetProgressListener(), fpSettings->GetRecordsToSkip());
    if (maxRecords < 0) maxRecords = std::numeric_limits<std::int32_t>::max();
    std::int32_t used = 0;
    while (records.HasMore() && used < maxRecords && !fpCancel->IsCancelled()) {
        const MCCommon::Record* record = records.Next();
        if (record == nullptr) break;
        double weight = 1.0;
        if (!ReadWeight(*record, weight)) continue;
        ++used;
        if (take(*record, weight)) step.Done(used, -1);
    }
    fStatus = kAccumulated;
}

// The column of each predictor.
// Intended: one test of each special column, in this order, so they are skipped rightly only when
// they stand in this order. AWeightBeforeTheTargetMakesTheTargetAPredictor holds this.
std::vector<std::int32_t> FSPredictorSet::PredictorColumns(bool withTarget) const {
    std::vector<std::int32_t> columns;
    columns.reserve(static_cast<std::size_t>(fNumPredictors));
    std::int32_t next = 0;
    for (std::int32_t predictor = 0; predictor < fNumPredictors; ++predictor) {
        if (withTarget && next == fpSettings->GetTargetPosition()) ++next;
        if (next == fpSettings->GetCaseIdPosition()) ++next;
        if (next == fpSettings->GetWeightPosition()) ++next;
        columns.push_back(next++);
    }
    return columns;
}

// The frequency of a record, 1.0 without a weight column; false when the record doesn't count.
bool FSPredictorSet::ReadWeight(const MCCommon::Record& record, double& weight) {
    const std::int32_t column = fpSettings->GetWeightPosition();
    if (column < 0) {
        weight = 1.0;
        return true;
    }
    weight = ValueAt(record, column);
    if (!ConvertWeight(weight)) return false;
    fNoValidWeight = false;
    return true;
}

// Makes a frequency of what the weight column holds; false when it is none.
bool FSPredictorSet::ConvertWeight(double& weight) const {
    if (weight == MCMV::gMissingValue) return false;
    switch (fpSettings->GetWeightConversion()) {
        case FSSettings::kRoundWeight:
            weight = std::floor(weight + 0.5);
            break;
        case FSSettings::kTruncateWeight:
            weight = std::floor(weight);
            break;
        default:
            break;
    }
    return weight > 0.0;  // drops NaN too
}

bool FSPredictorSet::IsTargetMissing(double target) const {
    return FSIsMissing(target, fpSettings->IsTargetCategorical());
}

// Gives the record's value of each predictor to its accumulator, a valid one through
// addValid(accumulator, value). Returns whether there was a valid one. A record may end early: the
// predictors that it doesn't reach take no note of it.
template <class AddValid>
bool FSPredictorSet::FeedPredictors(const MCCommon::Record& record,
                                    const std::vector<std::int32_t>& columns, double weight,
                                    AddValid addValid) {
    bool holdsData = false;
    for (std::size_t predictor = 0; predictor < fvpAccum.size(); ++predictor) {
        if (columns[predictor] >= record.Size()) break;
        IFSPredTargetAccum* accum = fvpAccum[predictor].get();
        if (accum == nullptr) continue;
        const double value = record[columns[predictor]];
        if (FSIsMissing(value, accum->IsCategorical())) {
            accum->AddMissing(weight);
            continue;
        }
        holdsData = true;
        addValid(*accum, value);
    }
    if (holdsData) fNoValidData = false;
    return holdsData;
}

void FSPredictorSet::CountValid(double target, double weight) {
    fWeightedValid += weight;
    FSCountOne(fUnweightedValid);
    if (fpTargetAccum) fpTargetAccum->Add(FSTruncate(target), weight);
}

void FSPredictorSet::CountExcluded(double weight) {
    fWeightedExcluded += weight;
    FSCountOne(fUnweightedExcluded);
}

FSStatus FSPredictorSet::PassResult(std::int16_t severity) const {
    if (fpSettings->GetWeightPosition() >= 0 && fNoValidWeight) {
        return FSStatus::NoValidWeight(severity);
    }
    return fNoValidData ? FSStatus::NoValidData(severity) : FSStatus::Success();
}

// Whether items for later predictors are wanting.
bool FSPredictorSet::IsCutShort(const Transaction& transaction) const {
    return transaction.fLastPredictor > -1 && transaction.fLastPredictor < fNumPredictors - 1;
}

void FSPredictorSet::CloseTransaction(const Transaction& transaction) {
    if (IsCutShort(transaction)) AddMissingItems(transaction.fLastPredictor + 1, fNumPredictors);
    if (transaction.fbEmpty) {
        CountExcluded(1.0);
    } else {
        CountValid(transaction.fTarget, 1.0);
    }
}

void FSPredictorSet::AddMissingItems(std::int32_t first, std::int32_t end) {
    for (std::int32_t predictor = first; predictor < end; ++predictor) {
        IFSPredTargetAccum* accum = fvpAccum[static_cast<std::size_t>(predictor)].get();
        if (accum != nullptr) accum->AddMissing(1.0);
    }
}

bool FSPredictorSet::CanMerge(const FSPredictorSet& other) const {
    const auto isOpen = [](const FSPredictorSet& set) {
        return set.fStatus == kAccumulated && !set.fDataPassCompleted &&
               set.fvDeletedIndices.empty() && !set.fpSettings->GetTransactions();
    };
    if (this == &other || !isOpen(*this) || !isOpen(other)) return false;
    if (fvpAccum.size() != other.fvpAccum.size() ||
        (fpTargetAccum == nullptr) != (other.fpTargetAccum == nullptr)) {
        return false;
    }
    for (std::size_t predictor = 0; predictor < fvpAccum.size(); ++predictor) {
        if (FSAccumKind::Of(fvpAccum[predictor].get()) !=
            FSAccumKind::Of(other.fvpAccum[predictor].get())) {
            return false;
        }
    }
    const std::int64_t records = std::int64_t{fUnweightedValid} + fUnweightedExcluded +
                                 other.fUnweightedValid + other.fUnweightedExcluded;
    return records <= std::numeric_limits<std::int32_t>::max();
}
