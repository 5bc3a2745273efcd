#include "naivebayes/NBSubsetSearch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>
#include <utility>

#include "host/Assertion.h"
#include "naivebayes/MCRandom.h"
#include "naivebayes/NBAttribSelectReporter.h"
#include "naivebayes/NBInternalAdapter.h"
#include "naivebayes/NBProgressPacing.h"
#include "naivebayes/NBRecordSimulator.h"
#include "naivebayes/NBayesInput.h"
#include "naivebayes/NBayesOutput.h"
#include "naivebayes/data/NBDataPreparator.h"
#include "naivebayes/data/NBVarList.h"

namespace {

constexpr std::int32_t kWeightPosition = 1;  // in a prepared record
/// Records that are scored at a time where they are not kept.
constexpr std::int32_t kLotRecords = 16384;

NBStatus Interrupted() { return NBStatus(NBCode::kInterrupted, false); }

/// Sum over the cells of count * log(probability).
double SumOfLogs(const NBayesInputBase::Matrix& counts, const NBayesInput& model) {
    double sum = 0.0;
    const NBayesInputBase::Matrix& probabilities = model.GetProbabilities();
    for (std::size_t m = 0; m < counts.size(); ++m) {
        for (std::size_t k = 0; k < counts[m].size(); ++k) {
            sum += counts[m][k] * std::log(probabilities[m][k]);
        }
    }
    return sum;
}

/// Sum over the target categories of weight * log(prior).
double SumOfPriorLogs(const std::vector<double>& weights, const NBayesOutput& model) {
    double sum = 0.0;
    for (std::size_t k = 0; k < weights.size(); ++k) {
        sum += weights[k] * std::log(model.GetPi()[k]);
    }
    return sum;
}

}  // namespace

NBSubsetSearch::NBSubsetSearch(const std::vector<NBayesInput>& inputs, const NBayesOutput& output,
                               NBVarList& varList, const NaiveBayesSettings& settings,
                               NBInterruptState& interrupt, MCCommon::BlockExecutor* executor)
    : fvInputs(inputs),
      fOutput(output),
      fVarList(varList),
      fSettings(settings),
      fTotalWeight(std::accumulate(output.GetWeightedCounts().begin(),
                                   output.GetWeightedCounts().end(), 0.0)),
      fbWeighted(varList.GetWeightIndex() >= 0),
      fInterrupt(interrupt),
      fModel(inputs, output),
      fRecords(fModel, interrupt, executor) {}

NBStatus NBSubsetSearch::RunExactSize(std::int32_t maxSize, MCCommon::MultiPassRecordIter& records,
                                      std::int32_t numRecords, bool fits,
                                      std::vector<std::int32_t>& selectedOut) {
    if (ForwardSelect(maxSize, records, numRecords, fits) < 0) return Interrupted();
    ListSelected(selectedOut);
    ApplySelection(ChainLength());
    return NBStatus();
}

NBStatus NBSubsetSearch::RunPseudoBIC(std::int32_t maxSize, MCCommon::MultiPassRecordIter& records,
                                      std::int32_t numRecords, bool fits,
                                      std::vector<std::int32_t>& selectedOut,
                                      std::vector<NBSubset>& bestSubsetsOut, std::int32_t numBest) {
    fNumBestSubsets = numBest;
    if (ForwardSelect(maxSize, records, numRecords, fits) < 0) return Interrupted();
    const std::int32_t size = EvaluatePseudoBIC(records, numRecords, bestSubsetsOut);
    if (size < 0) return Interrupted();
    ListSelected(selectedOut);
    ApplySelection(size);
    return NBStatus();
}

NBStatus NBSubsetSearch::RunTestData(std::int32_t maxSize, MCCommon::MultiPassRecordIter& records,
                                     std::int32_t numRecords, bool fits,
                                     MCCommon::MultiPassRecordIter& testRecords,
                                     std::int32_t numTest, std::vector<std::int32_t>& selectedOut,
                                     std::vector<NBSubset>& bestSubsetsOut, std::int32_t numBest,
                                     const NBDataPreparator& preparator) {
    fNumBestSubsets = numBest;
    if (ForwardSelect(maxSize, records, numRecords, fits) < 0) return Interrupted();
    testRecords.NewPass();
    if (!testRecords.HasMore()) return NBStatus(NBCode::kTestEmpty, false);
    NBInternalAdapter adapter(testRecords, numTest, preparator);
    if (!adapter.HasMore()) return NBStatus(NBCode::kTestEmpty, false);
    const std::int32_t size = EvaluateTestData(adapter, numTest, bestSubsetsOut);
    if (size < 0) return Interrupted();
    if (size == 0) return NBStatus(NBCode::kTestEmpty, false);
    ListSelected(selectedOut);
    ApplySelection(size);
    return NBStatus();
}

std::int32_t NBSubsetSearch::GetCriteria(std::vector<double>& out) const {
    out = fvCriterionBySize;
    return static_cast<std::int32_t>(out.size());
}

std::vector<std::int32_t> NBSubsetSearch::TrainingPositions() const {
    std::vector<std::int32_t> positions;
    for (const NBayesInput& input : fvInputs) positions.push_back(input.GetRecordIndex());
    return positions;
}

template <class Visit>
void NBSubsetSearch::ForEachLot(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords,
                                std::int32_t lot, Visit visit) {
    // Intended: N is the weight of the tables, also when records are left out here.
    const double factor = -1.0 / fTotalWeight;
    const std::vector<std::int32_t> positions = TrainingPositions();
    auto* const blocks = dynamic_cast<MCCommon::RecordBlockSource*>(&records);
    std::int32_t numRead = 0;
    while (numRead < numRecords && records.HasMore() && !fInterrupt.IsStopped()) {
        const std::int32_t end = numRead + std::min(lot, numRecords - numRead);
        fRecords.Clear(static_cast<std::size_t>(end - numRead));
        while (numRead < end && records.HasMore() && !fInterrupt.IsStopped()) {
            if (blocks != nullptr) {
                constexpr std::int32_t kBlockRows = 65536;
                const auto* const block = blocks->NextBlock(std::min(end - numRead, kBlockRows));
                if (block == nullptr) break;
                numRead += block->fRows;
                fRecords.Add(*block, positions, fbWeighted ? kWeightPosition : -1, factor);
                continue;
            }
            const MCCommon::Record* const record = records.Next();
            if (record == nullptr) {
                numRead = numRecords;
                break;
            }
            ++numRead;
            const double weight = fbWeighted ? (*record)[kWeightPosition] : 1.0;
            // A missing weight is below 0.
            if (weight > 0.0) fRecords.Add(*record, positions, weight * factor);
        }
        fRecords.Arrange();
        visit();
    }
    records.NewPass();
}

double NBSubsetSearch::ComputeLogLikelihoods() {
    const double share = 1.0 / fTotalWeight;
    for (std::size_t table = 0; table < fvInputs.size() && !fInterrupt.IsStopped(); ++table) {
        fvPredictorLogLik[table] = share * SumOfLogs(fvInputs[table].GetCounts(), fvInputs[table]);
    }
    return share * SumOfPriorLogs(fOutput.GetWeightedCounts(), fOutput);
}

void NBSubsetSearch::SplitByRole(Step& step) {
    std::int32_t table = -1;
    for (std::int32_t i = 0; i < fVarList.GetNumVariables(); ++i) {
        const std::int32_t role = fVarList.GetRole(i);
        if (role == NBRole::kInput) step.fvSelected.push_back(++table);
        if (role == NBRole::kPossibleInput) step.fvCandidates.push_back(++table);
    }
    PREDSEL_ASSERT(table + 1 == static_cast<std::int32_t>(fvInputs.size()),
                   "One table for each input and possible input of the variable list.");
    fvSelectedOrder = step.fvSelected;
    fNumForced = ChainLength();
}

std::int32_t NBSubsetSearch::ForwardSelect(std::int32_t maxSize,
                                           MCCommon::MultiPassRecordIter& records,
                                           std::int32_t numRecords, bool fits) {
    if (fInterrupt.IsStopped()) return -1;
    fbSimulated = !fits;
    fvPredictorLogLik.assign(fvInputs.size(), 0.0);
    double joint = ComputeLogLikelihoods();
    Step step;
    SplitByRole(step);
    PREDSEL_ASSERT(maxSize >= std::max(fNumForced, 1), "The chain holds the forced predictors.");
    fvCriterionBySize.assign(static_cast<std::size_t>(maxSize), 0.0);
    fvJointLogLikBySize.assign(static_cast<std::size_t>(maxSize), 0.0);
    for (const std::int32_t table : fvSelectedOrder) {
        joint += fvPredictorLogLik[static_cast<std::size_t>(table)];
    }
    if (fNumForced >= 1) fvJointLogLikBySize[static_cast<std::size_t>(fNumForced) - 1] = joint;

    NBProgressPacing pacing(fSettings.fpListener, fSettings.fNumSkip);
    const std::int32_t kind = fSettings.fRandomKind;
    MCRandom random(fSettings.fSeed, kind != NaiveBayesSettings::kLibrary,
                    kind == NaiveBayesSettings::kMersenneTwister,
                    kind == NaiveBayesSettings::kUserProvided ? fSettings.fpUserRandom : nullptr);
    NBRecordSimulator simulator(fvInputs, fOutput, random);
    const auto goesOn = [&] {
        return ChainLength() < maxSize && !step.fvCandidates.empty() && !fInterrupt.IsStopped();
    };
    if (fits && goesOn()) {
        ForEachLot(records, numRecords, numRecords, [] {});
        fbKept = true;
        for (const std::int32_t table : step.fvSelected) fRecords.Join(table);
    }
    while (goesOn()) {
        if (fits) {
            fRecords.Score(step.fvSelected, step.fvCandidates, step.fvScores);
        } else {
            ScoreOnSimulated(step, simulator);
        }
        const std::size_t best = PickBest(step, joint);
        const std::int32_t winner = step.fvCandidates[best];
        fvSelectedOrder.push_back(winner);
        step.fvCandidates.erase(step.fvCandidates.begin() + static_cast<std::ptrdiff_t>(best));
        step.fvSelected.insert(
            std::upper_bound(step.fvSelected.begin(), step.fvSelected.end(), winner), winner);
        if (fits && goesOn()) fRecords.Join(winner);
        joint += fvPredictorLogLik[static_cast<std::size_t>(winner)];
        const std::size_t size = fvSelectedOrder.size();
        fvCriterionBySize[size - 1] = step.fvScores[best];
        // With records in memory nothing reads it.
        if (!fits) fvJointLogLikBySize[size - 1] = joint;
        if (pacing.IsDue()) {
            pacing.Send(NBAttribSelectReporter({ChainLength(),
                                                static_cast<std::int32_t>(step.fvCandidates.size()),
                                                maxSize, numRecords, pacing.ElapsedSeconds()}));
        }
    }
    return fInterrupt.IsStopped() ? -1 : 0;
}

std::size_t NBSubsetSearch::PickBest(Step& step, double joint) {
    const auto ownPart = [&](std::int32_t table) {
        return joint + fvPredictorLogLik[static_cast<std::size_t>(table)];
    };
    for (std::size_t c = 0; c < step.fvCandidates.size(); ++c) {
        step.fvScores[c] += ownPart(step.fvCandidates[c]);
    }
    // The first of equal ones. Intended: an infinite score wins like any other.
    const auto firstHighest = [](const std::vector<double>& scores) {
        return static_cast<std::size_t>(std::max_element(scores.begin(), scores.end()) -
                                        scores.begin());
    };
    const std::size_t best = firstHighest(step.fvScores);
    // Of drawn records the last lot alone is at hand.
    const bool hasAll = !fbSimulated || fSettings.fNumSimulated <= kLotRecords;
    if (!hasAll || !std::isfinite(step.fvScores[best])) return best;
    // Half a unit of the sum a record, and some for the terms themselves.
    const double roundings = static_cast<double>(fRecords.GetNumRecords()) + 64.0;
    const auto doubt = [&](std::size_t c) {
        const double part = std::abs(ownPart(step.fvCandidates[c]));
        return roundings * std::numeric_limits<double>::epsilon() *
               (1.0 + part + std::abs(step.fvScores[c]));
    };
    std::vector<std::size_t> places;
    std::vector<std::int32_t> close;
    for (std::size_t c = 0; c < step.fvCandidates.size(); ++c) {
        // One that is no number is none of them.
        if (!(step.fvScores[c] + doubt(c) >= step.fvScores[best] - doubt(best))) continue;
        places.push_back(c);
        close.push_back(step.fvCandidates[c]);
    }
    if (close.size() < 2) return best;
    std::vector<double> scores;
    fRecords.ScoreInOrder(step.fvSelected, close, scores);
    for (std::size_t c = 0; c < close.size(); ++c) scores[c] += ownPart(close[c]);
    return places[firstHighest(scores)];
}

void NBSubsetSearch::ScoreOnSimulated(Step& step, NBRecordSimulator& simulator) {
    step.fvScores.assign(step.fvCandidates.size(), 0.0);
    const double factor = -1.0 / fSettings.fNumSimulated;
    std::vector<std::int32_t> positions(fvInputs.size());
    std::iota(positions.begin(), positions.end(), 1);
    std::vector<double> scores;
    for (std::int32_t i = 0; i < fSettings.fNumSimulated && !fInterrupt.IsStopped();) {
        fRecords.Clear();
        const std::int32_t end = i + std::min(kLotRecords, fSettings.fNumSimulated - i);
        for (; i < end && !fInterrupt.IsStopped(); ++i) {
            fRecords.Add(simulator.Draw(), positions, factor);
        }
        fRecords.Arrange();
        for (const std::int32_t table : step.fvSelected) fRecords.Join(table);
        fRecords.Score(step.fvSelected, step.fvCandidates, scores);
        for (std::size_t c = 0; c < scores.size(); ++c) step.fvScores[c] += scores[c];
    }
}

std::int32_t NBSubsetSearch::EvaluatePseudoBIC(MCCommon::MultiPassRecordIter& records,
                                               std::int32_t numRecords,
                                               std::vector<NBSubset>& bestOut) {
    // The search itself scored the sizes above the forced one, unless on drawn records.
    const std::int32_t lastSize = fbSimulated ? ChainLength() : fNumForced;
    if (lastSize > 0) EvaluateSizes(lastSize, records, numRecords);
    if (fInterrupt.IsStopped()) return -1;
    std::vector<NBSubset> subsets;
    // The penalty of Schwarz (1978) with predictors for parameters, all per unit of weight.
    for (std::int32_t size = SmallestSize(); size <= ChainLength(); ++size) {
        subsets.push_back({size, size * 0.5 * std::log(fTotalWeight) / fTotalWeight -
                                     fvCriterionBySize[static_cast<std::size_t>(size) - 1]});
    }
    return KeepBest(std::move(subsets), bestOut);
}

void NBSubsetSearch::EvaluateSizes(std::int32_t lastSize, MCCommon::MultiPassRecordIter& records,
                                   std::int32_t numRecords) {
    const std::int32_t firstSize = SmallestSize();
    std::vector<double> sums(static_cast<std::size_t>(lastSize - firstSize + 1), 0.0);
    if (fbKept) {
        fRecords.Restart();
        AddSizes(lastSize, sums);
    } else {
        ForEachLot(records, numRecords, kLotRecords, [&] { AddSizes(lastSize, sums); });
    }
    for (std::int32_t size = firstSize; size <= lastSize; ++size) {
        const std::size_t entry = static_cast<std::size_t>(size) - 1;
        fvCriterionBySize[entry] =
            fvJointLogLikBySize[entry] + sums[static_cast<std::size_t>(size - firstSize)];
    }
}

void NBSubsetSearch::AddSizes(std::int32_t lastSize, std::vector<double>& sums) {
    const std::int32_t firstSize = SmallestSize();
    std::vector<std::int32_t> selected;
    for (std::int32_t size = 1; size <= lastSize; ++size) {
        selected.push_back(fvSelectedOrder[static_cast<std::size_t>(size) - 1]);
        fRecords.Join(selected.back());
        if (size < firstSize) continue;
        sums[static_cast<std::size_t>(size - firstSize)] += fRecords.Score(selected);
    }
}

std::int32_t NBSubsetSearch::EvaluateTestData(NBInternalAdapter& adapter, std::int32_t numRecords,
                                              std::vector<NBSubset>& bestOut) {
    if (fInterrupt.IsStopped()) return -1;
    const std::int32_t firstSize = SmallestSize();
    std::vector<NBayesInputBase> testTables;  // a chain position each
    testTables.reserve(fvSelectedOrder.size());
    for (const std::int32_t table : fvSelectedOrder) {
        testTables.emplace_back(fvInputs[static_cast<std::size_t>(table)].GetNumCategories(),
                                fOutput.GetNumCategories());
    }
    std::vector<double> targetWeights(static_cast<std::size_t>(fOutput.GetNumCategories()), 0.0);
    // Test records are prepared after useless predictors were dropped, unlike the training records,
    // which keep their place for them.
    std::vector<std::int32_t> positions(fvInputs.size(), -1);
    for (const std::int32_t table : fvSelectedOrder) {
        const auto at = static_cast<std::size_t>(table);
        positions[at] = fvInputs[at].GetAdjustedRecordIndex();
    }
    std::vector<double> sums(static_cast<std::size_t>(ChainLength() - firstSize + 1), 0.0);
    double totalWeight = 0.0;
    const auto score = [&] {
        fRecords.Arrange();
        AddSizes(ChainLength(), sums);
        fRecords.Clear();
    };
    fbKept = false;
    fRecords.Clear();
    for (std::int32_t i = 0; (numRecords < 0 || i < numRecords) && adapter.HasMore(); ++i) {
        if (fInterrupt.IsStopped()) return -1;
        const MCCommon::Record& record = *adapter.Next();
        const double weight = fbWeighted ? record[kWeightPosition] : 1.0;
        // Preparation lets a record without target or weight pass when an input is out of range.
        if (!NBSubsetModel::IsValid(record[0]) || weight == MCMV::gMissingValue) continue;
        totalWeight += weight;
        const auto target = static_cast<std::int32_t>(record[0]);
        targetWeights[static_cast<std::size_t>(target)] += weight;
        for (std::size_t position = 0; position < testTables.size(); ++position) {
            const auto table = static_cast<std::size_t>(fvSelectedOrder[position]);
            NBayesInputBase& counts = testTables[position];
            const std::uint32_t row = NBSubsetModel::Row(
                record[positions[table]], static_cast<std::uint32_t>(counts.GetNumCategories()));
            if (row > 0) counts.AddCount(static_cast<std::int32_t>(row) - 1, target, weight);
        }
        fRecords.Add(record, positions, weight);
        if (fRecords.GetNumRecords() == static_cast<std::size_t>(kLotRecords)) score();
    }
    score();
    if (fInterrupt.IsStopped()) return -1;
    if (!(totalWeight > 0.0)) return 0;
    const double share = 1.0 / totalWeight;
    double joint = share * SumOfPriorLogs(targetWeights, fOutput);
    std::vector<NBSubset> subsets;
    for (std::size_t position = 0; position < testTables.size(); ++position) {
        const std::int32_t table = fvSelectedOrder[position];
        joint += share * SumOfLogs(testTables[position].GetCounts(),
                                   fvInputs[static_cast<std::size_t>(table)]);
        const auto size = static_cast<std::int32_t>(position) + 1;
        if (size >= firstSize) {
            subsets.push_back(
                {size, share * sums[static_cast<std::size_t>(size - firstSize)] - joint});
        }
    }
    return KeepBest(std::move(subsets), bestOut);
}

std::int32_t NBSubsetSearch::KeepBest(std::vector<NBSubset> subsets,
                                      std::vector<NBSubset>& bestOut) {
    const auto length = static_cast<std::int32_t>(subsets.size());
    fNumBestSubsets = std::min(std::max(fNumBestSubsets, 1), length);
    std::partial_sort(subsets.begin(), subsets.begin() + fNumBestSubsets, subsets.end(),
                      [](const NBSubset& left, const NBSubset& right) {
                          // A criterion that is not a number is the worst.
                          const bool leftIsNumber = !std::isnan(left.fCriterion);
                          const bool rightIsNumber = !std::isnan(right.fCriterion);
                          if (leftIsNumber != rightIsNumber) return leftIsNumber;
                          if (leftIsNumber && left.fCriterion != right.fCriterion) {
                              return left.fCriterion < right.fCriterion;
                          }
                          return left.fSize < right.fSize;
                      });
    subsets.resize(static_cast<std::size_t>(fNumBestSubsets));
    fvBestSubsets = std::move(subsets);
    bestOut = fvBestSubsets;
    return fvBestSubsets.front().fSize;
}

void NBSubsetSearch::ListSelected(std::vector<std::int32_t>& selectedOut) const {
    selectedOut.clear();
    for (const std::int32_t table : fvSelectedOrder) {
        selectedOut.push_back(fvInputs[static_cast<std::size_t>(table)].GetVarIndex());
    }
}

void NBSubsetSearch::ApplySelection(std::int32_t size) {
    for (std::int32_t position = fNumForced; position < size; ++position) {
        const std::int32_t table = fvSelectedOrder[static_cast<std::size_t>(position)];
        fVarList.SetRole(fvInputs[static_cast<std::size_t>(table)].GetVarIndex(), NBRole::kInput);
    }
}
