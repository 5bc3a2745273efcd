#include "naivebayes/NBSubsetSearch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
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
                               NBInterruptState& interrupt)
    : fvInputs(inputs),
      fOutput(output),
      fVarList(varList),
      fSettings(settings),
      fTotalWeight(std::accumulate(output.GetWeightedCounts().begin(),
                                   output.GetWeightedCounts().end(), 0.0)),
      fbWeighted(varList.GetWeightIndex() >= 0),
      fInterrupt(interrupt),
      fScoring(inputs, output) {}

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

template <class Visit>
void NBSubsetSearch::ForEachRecord(MCCommon::MultiPassRecordIter& records, std::int32_t numRecords,
                                   Visit visit) {
    for (std::int32_t i = 0; i < numRecords && records.HasMore(); ++i) {
        if (fInterrupt.IsStopped()) break;
        const MCCommon::Record* record = records.Next();
        if (record == nullptr) break;
        const double weight = fbWeighted ? (*record)[kWeightPosition] : 1.0;
        // A missing weight is below 0.
        if (weight > 0.0) visit(*record, weight);
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
    while (ChainLength() < maxSize && !step.fvCandidates.empty() && !fInterrupt.IsStopped()) {
        if (fits) {
            ScoreOnRecords(step, records, numRecords);
        } else {
            ScoreOnSimulated(step, simulator);
        }
        for (std::size_t c = 0; c < step.fvCandidates.size(); ++c) {
            const auto table = static_cast<std::size_t>(step.fvCandidates[c]);
            step.fvScores[c] += joint + fvPredictorLogLik[table];
        }
        // The first of equal ones. Intended: an infinite score wins like any other.
        const auto best = std::max_element(step.fvScores.begin(), step.fvScores.end());
        const auto candidate = step.fvCandidates.begin() + (best - step.fvScores.begin());
        const std::int32_t winner = *candidate;
        fvSelectedOrder.push_back(winner);
        step.fvCandidates.erase(candidate);
        step.fvSelected.insert(
            std::upper_bound(step.fvSelected.begin(), step.fvSelected.end(), winner), winner);
        joint += fvPredictorLogLik[static_cast<std::size_t>(winner)];
        const std::size_t size = fvSelectedOrder.size();
        fvCriterionBySize[size - 1] = *best;
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

void NBSubsetSearch::ScoreOnRecords(Step& step, MCCommon::MultiPassRecordIter& records,
                                    std::int32_t numRecords) {
    step.fvScores.assign(step.fvCandidates.size(), 0.0);
    // Intended: N is the weight of the tables, also when records are left out here.
    const double factor = -1.0 / fTotalWeight;
    ForEachRecord(records, numRecords,
                  [this, &step, factor](const MCCommon::Record& record, double weight) {
                      ScoreRecord(step, record, weight * factor);
                  });
}

void NBSubsetSearch::ScoreOnSimulated(Step& step, NBRecordSimulator& simulator) {
    step.fvScores.assign(step.fvCandidates.size(), 0.0);
    const double factor = -1.0 / fSettings.fNumSimulated;
    for (std::int32_t i = 0; i < fSettings.fNumSimulated && !fInterrupt.IsStopped(); ++i) {
        ScoreRecord(step, simulator.Draw(), factor);
    }
}

void NBSubsetSearch::ScoreRecord(Step& step, const MCCommon::Record& record, double factor) {
    const auto code = [this, &record](std::int32_t table) {
        return record[fbSimulated ? table + 1
                                  : fvInputs[static_cast<std::size_t>(table)].GetRecordIndex()];
    };
    fScoring.StartRecord();
    for (const std::int32_t table : step.fvSelected) fScoring.Multiply(table, code(table));
    for (std::size_t c = 0; c < step.fvCandidates.size(); ++c) {
        const std::int32_t table = step.fvCandidates[c];
        step.fvScores[c] += factor * fScoring.LogSumWith(table, code(table));
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
    const double factor = -1.0 / fTotalWeight;
    const std::int32_t firstSize = SmallestSize();
    std::vector<double> sums(static_cast<std::size_t>(lastSize - firstSize + 1), 0.0);
    ForEachRecord(records, numRecords, [&](const MCCommon::Record& record, double weight) {
        fScoring.StartRecord();
        for (std::int32_t size = 1; size <= lastSize; ++size) {
            const std::int32_t table = fvSelectedOrder[static_cast<std::size_t>(size) - 1];
            const NBayesInput& input = fvInputs[static_cast<std::size_t>(table)];
            fScoring.Multiply(table, record[input.GetRecordIndex()]);
            if (size < firstSize) continue;
            sums[static_cast<std::size_t>(size - firstSize)] += weight * factor * fScoring.LogSum();
        }
    });
    for (std::int32_t size = firstSize; size <= lastSize; ++size) {
        const std::size_t entry = static_cast<std::size_t>(size) - 1;
        fvCriterionBySize[entry] =
            fvJointLogLikBySize[entry] + sums[static_cast<std::size_t>(size - firstSize)];
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
    std::vector<double> sums(fvSelectedOrder.size(), 0.0);  // at size - 1, from firstSize
    double totalWeight = 0.0;
    for (std::int32_t i = 0; (numRecords < 0 || i < numRecords) && adapter.HasMore(); ++i) {
        if (fInterrupt.IsStopped()) return -1;
        const MCCommon::Record& record = *adapter.Next();
        const double weight = fbWeighted ? record[kWeightPosition] : 1.0;
        // Preparation lets a record without target or weight pass when an input is out of range.
        if (!NBSubsetScoring::IsValid(record[0]) || weight == MCMV::gMissingValue) continue;
        totalWeight += weight;
        const auto target = static_cast<std::int32_t>(record[0]);
        targetWeights[static_cast<std::size_t>(target)] += weight;
        fScoring.StartRecord();
        for (std::size_t position = 0; position < testTables.size(); ++position) {
            const std::int32_t table = fvSelectedOrder[position];
            // Test records are prepared after useless predictors were dropped, unlike the
            // training records, which keep their place for them.
            const double code =
                record[fvInputs[static_cast<std::size_t>(table)].GetAdjustedRecordIndex()];
            if (NBSubsetScoring::IsValid(code)) {
                NBayesInputBase& counts = testTables[position];
                counts.AddCount(NBSubsetScoring::Category(code, counts.GetNumCategories()), target,
                                weight);
            }
            fScoring.Multiply(table, code);
            if (position + 1 < static_cast<std::size_t>(firstSize)) continue;
            sums[position] += fScoring.LogSum() * weight;
        }
    }
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
        if (size >= firstSize) subsets.push_back({size, share * sums[position] - joint});
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
