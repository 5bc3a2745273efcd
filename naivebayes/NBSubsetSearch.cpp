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
#include "naivebayes/NBDoubleDouble.h"
#include "naivebayes/NBExactMixtures.h"
#include "naivebayes/NBGridLog.h"
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

/// Exact sums of logarithms with this weight in all that are equal but for rounding differ by no
/// more: each logarithm is off by half a unit and a little.
double RoundingOf(double weight) { return weight * (1.0 + 0x1p-20); }

/// The order of sums that stand for criteria: the lowest is the best, one that is no number the
/// worst.
bool IsLower(const NBExactSum& left, const NBExactSum& right) {
    const bool leftIsNumber = !std::isnan(left.GetValue());
    const bool rightIsNumber = !std::isnan(right.GetValue());
    if (!leftIsNumber || !rightIsNumber) return leftIsNumber && !rightIsNumber;
    return left.Minus(right) < 0.0;
}

/// Adds weight * log(probability). Intended: 0 * log(0) is no number, see
/// NBSubsetSearchTest.CriteriaThatAreNoNumbersRankBySize.
void AddLog(double weight, const NBDoubleDouble& probability, NBExactSum& sum) {
    if (probability.fHigh > 0.0) {
        int exponent = 0;
        const double high = std::frexp(probability.fHigh, &exponent);
        const NBDoubleDouble scaled(high, std::ldexp(probability.fLow, -exponent));
        sum.Add(weight, NBGridLog::Log(scaled, exponent));
    } else if (probability.fHigh == 0.0 && weight > 0.0) {
        sum.AddLogOfZero();
    } else {
        sum.AddNoNumber();
    }
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
      fUnit(NBGridLog::kUnit / fTotalWeight),
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
    fNumTargetsRead = 0;
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
                fRecords.Add(*block, positions, fbWeighted ? kWeightPosition : -1);
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
            if (weight > 0.0) fRecords.Add(*record, positions, weight);
        }
        fRecords.Arrange();
        fNumTargetsRead += fRecords.GetNumTargets();
        visit();
    }
    records.NewPass();
}

bool NBSubsetSearch::AreRecordsThoseOfTheTables() const {
    const std::vector<std::int32_t>& counts = fOutput.GetUnweightedCounts();
    return std::accumulate(counts.begin(), counts.end(), std::int64_t{0}) ==
           static_cast<std::int64_t>(fNumTargetsRead);
}

NBExactSum NBSubsetSearch::ComputeLogLikelihoods() {
    const std::size_t numTargets = fModel.GetNumTargets();
    for (std::size_t table = 0; table < fvInputs.size() && !fInterrupt.IsStopped(); ++table) {
        NBExactSum sum;
        const NBExactMixtures::ConstProducts rows = fModel.GetExactRows(table);
        const NBayesInputBase::Matrix& counts = fvInputs[table].GetCounts();
        for (std::size_t m = 0; m < counts.size(); ++m) {
            for (std::size_t k = 0; k < numTargets; ++k) {
                const std::size_t at = (m + 1) * fModel.GetStride() + k;
                AddLog(counts[m][k], NBDoubleDouble(rows.fpHigh[at], rows.fpLow[at]), sum);
            }
        }
        fvPredictorLogs[table] = sum;
        fvPredictorLogLik[table] = fUnit * sum.GetValue();
    }
    NBExactSum sum;
    for (std::size_t k = 0; k < numTargets; ++k) {
        AddLog(fOutput.GetWeightedCounts()[k], fModel.GetExactPriors()[k], sum);
    }
    return sum;
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
    fvPredictorLogs.assign(fvInputs.size(), NBExactSum());
    NBExactSum joint = ComputeLogLikelihoods();
    Step step;
    SplitByRole(step);
    PREDSEL_ASSERT(maxSize >= std::max(fNumForced, 1), "The chain holds the forced predictors.");
    fvCriterionBySize.assign(static_cast<std::size_t>(maxSize), 0.0);
    fvJointLogsBySize.assign(static_cast<std::size_t>(maxSize), NBExactSum());
    fvLossBySize.assign(static_cast<std::size_t>(maxSize), NBExactSum());
    for (const std::int32_t table : fvSelectedOrder) {
        joint.AddSum(fvPredictorLogs[static_cast<std::size_t>(table)]);
    }
    if (fNumForced >= 1) fvJointLogsBySize[static_cast<std::size_t>(fNumForced) - 1] = joint;

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
        fbByTarget = fModel.IsModerate() && AreRecordsThoseOfTheTables();
        for (const std::int32_t table : step.fvSelected) fRecords.Join(table);
    }
    while (goesOn()) {
        Choice choice = fits ? PickOnRecords(step, joint) : PickOnDrawn(step, joint, simulator);
        if (fInterrupt.IsStopped()) break;
        const std::int32_t winner = step.fvCandidates[choice.fPlace];
        fvSelectedOrder.push_back(winner);
        step.fvCandidates.erase(step.fvCandidates.begin() +
                                static_cast<std::ptrdiff_t>(choice.fPlace));
        step.fvSelected.insert(
            std::upper_bound(step.fvSelected.begin(), step.fvSelected.end(), winner), winner);
        joint.AddSum(fvPredictorLogs[static_cast<std::size_t>(winner)]);
        const std::size_t size = fvSelectedOrder.size();
        fvCriterionBySize[size - 1] = choice.fScore;
        fvLossBySize[size - 1] = choice.fLoss;
        fvJointLogsBySize[size - 1] = joint;
        if (pacing.IsDue()) {
            pacing.Send(NBAttribSelectReporter({ChainLength(),
                                                static_cast<std::int32_t>(step.fvCandidates.size()),
                                                maxSize, numRecords, pacing.ElapsedSeconds()}));
        }
    }
    return fInterrupt.IsStopped() ? -1 : 0;
}

NBSubsetSearch::Choice NBSubsetSearch::PickOnRecords(Step& step, const NBExactSum& joint) {
    fRecords.Score(step.fvSelected, step.fvCandidates, -1.0 / fTotalWeight, step.fvScores);
    const std::vector<std::size_t> places =
        ListClose(step, fUnit * joint.GetValue(), -1.0 / fTotalWeight);
    std::vector<NBExactSum> losses;
    if (places.size() > 1) {
        fRecords.ScoreExactly(step.fvSelected, ListAt(step, places), fbByTarget, losses);
    } else {
        // The one that joins: no need to multiply twice.
        std::vector<std::int32_t> selected = step.fvSelected;
        selected.push_back(step.fvCandidates[places.front()]);
        fRecords.Join(selected.back());
        fRecords.ScoreExactly(selected, {NBSubsetRecords::kNone}, fbByTarget, losses);
    }
    if (!fbByTarget) {
        for (std::size_t i = 0; i < places.size(); ++i) {
            losses[i].SubtractSum(joint);
            losses[i].SubtractSum(
                fvPredictorLogs[static_cast<std::size_t>(step.fvCandidates[places[i]])]);
        }
    }
    // The first of equal ones. Without targets there are two sums, each with its rounding.
    const double rounding = RoundingOf(fTotalWeight) * (fbByTarget ? 1.0 : 2.0);
    const auto lowest = std::min_element(losses.begin(), losses.end(), IsLower);
    std::size_t best = 0;
    while (best + 1 < places.size() &&
           (IsLower(*lowest, losses[best]) && !(losses[best].Minus(*lowest) <= rounding))) {
        ++best;
    }
    if (places.size() > 1) fRecords.Join(step.fvCandidates[places[best]]);
    return {places[best], -fUnit * losses[best].GetValue(), losses[best]};
}

std::vector<std::size_t> NBSubsetSearch::ListClose(Step& step, double joint, double factor) const {
    const std::size_t count = step.fvCandidates.size();
    std::vector<double> errors(count);
    for (std::size_t c = 0; c < count; ++c) {
        const double part = OwnPart(joint, step.fvCandidates[c]);
        const double score = step.fvScores[c] + part;
        // Half a unit a logarithm in each of at most four sums with a weight of 1, and the
        // roundings of a sum's value, of its share and of two additions.
        errors[c] = fRecords.ScoreError(step.fvSelected.size(), factor, step.fvScores[c]) +
                    4.0 * NBGridLog::kUnit +
                    4.0 * std::numeric_limits<double>::epsilon() *
                        (std::abs(joint) + std::abs(part) + std::abs(score));
        step.fvScores[c] = score;
    }
    // Intended: an infinite score wins like any other.
    const auto best = static_cast<std::size_t>(
        std::max_element(step.fvScores.begin(), step.fvScores.end()) - step.fvScores.begin());
    if (!std::isfinite(step.fvScores[best])) return {best};
    std::vector<std::size_t> places;
    for (std::size_t c = 0; c < count; ++c) {
        // One that is no number is none of them.
        if (step.fvScores[c] + errors[c] >= step.fvScores[best] - errors[best]) {
            places.push_back(c);
        }
    }
    return places;
}

std::vector<std::int32_t> NBSubsetSearch::ListAt(const Step& step,
                                                 const std::vector<std::size_t>& places) {
    std::vector<std::int32_t> candidates;
    for (const std::size_t place : places) candidates.push_back(step.fvCandidates[place]);
    return candidates;
}

NBSubsetSearch::Choice NBSubsetSearch::PickOnDrawn(Step& step, const NBExactSum& joint,
                                                   NBRecordSimulator& simulator) {
    const std::int32_t numDrawn = fSettings.fNumSimulated;
    const double share = numDrawn > 0 ? 1.0 / numDrawn : 0.0;
    std::vector<std::int32_t> positions(fvInputs.size());
    std::iota(positions.begin(), positions.end(), 1);
    // Of more than one lot the last alone is at hand in the end.
    const bool isOneLot = numDrawn <= kLotRecords;
    std::vector<NBExactSum> sums(step.fvCandidates.size());
    for (std::int32_t i = 0; i < numDrawn && !fInterrupt.IsStopped();) {
        fRecords.Clear();
        const std::int32_t end = i + std::min(kLotRecords, numDrawn - i);
        for (; i < end && !fInterrupt.IsStopped(); ++i) {
            fRecords.Add(simulator.Draw(), positions, 1.0);
        }
        fRecords.Arrange();
        for (const std::int32_t table : step.fvSelected) fRecords.Join(table);
        if (isOneLot) continue;
        std::vector<NBExactSum> ofLot;
        fRecords.ScoreExactly(step.fvSelected, step.fvCandidates, false, ofLot);
        for (std::size_t c = 0; c < sums.size(); ++c) sums[c].AddSum(ofLot[c]);
    }
    std::vector<std::size_t> places(step.fvCandidates.size());
    std::iota(places.begin(), places.end(), std::size_t{0});
    const double jointLogLik = fUnit * joint.GetValue();
    if (isOneLot) {
        fRecords.Score(step.fvSelected, step.fvCandidates, -share, step.fvScores);
        places = ListClose(step, jointLogLik, -share);
        fRecords.ScoreExactly(step.fvSelected, ListAt(step, places), false, sums);
    }
    std::vector<double> scores;
    std::vector<double> roundings;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const double part = OwnPart(jointLogLik, step.fvCandidates[places[i]]);
        const double drawn = share * NBGridLog::kUnit * sums[i].GetValue();
        scores.push_back(part - drawn);
        roundings.push_back(2.0 * NBGridLog::kUnit +
                            4.0 * std::numeric_limits<double>::epsilon() *
                                (std::abs(jointLogLik) + std::abs(part) + std::abs(drawn)));
    }
    const auto highest =
        static_cast<std::size_t>(std::max_element(scores.begin(), scores.end()) - scores.begin());
    std::size_t best = 0;
    while (best < highest &&
           !(scores[best] + roundings[best] >=
             scores[highest] - (std::isfinite(scores[highest]) ? roundings[highest] : 0.0))) {
        ++best;
    }
    return {places[best], scores[best], NBExactSum()};
}

std::int32_t NBSubsetSearch::EvaluatePseudoBIC(MCCommon::MultiPassRecordIter& records,
                                               std::int32_t numRecords,
                                               std::vector<NBSubset>& bestOut) {
    // The search itself scored the sizes above the forced one, unless on drawn records.
    const std::int32_t lastSize = fbSimulated ? ChainLength() : fNumForced;
    if (lastSize > 0) EvaluateSizes(lastSize, records, numRecords);
    if (fInterrupt.IsStopped()) return -1;
    // The penalty of Schwarz (1978) with predictors for parameters, all per unit of weight. Sums
    // hold twice the criterion.
    const NBInt128 logOfWeight = NBGridLog::Log(NBDoubleDouble(fTotalWeight), 0);
    const double penalty = 0.5 * NBGridLog::kUnit * static_cast<double>(logOfWeight) / fTotalWeight;
    std::vector<Ranked> sizes;
    for (std::int32_t size = SmallestSize(); size <= ChainLength(); ++size) {
        const std::size_t entry = static_cast<std::size_t>(size) - 1;
        Ranked ranked{{size, size * penalty - fvCriterionBySize[entry]}, NBExactSum()};
        ranked.fSum.Add(size, logOfWeight);
        ranked.fSum.AddSum(fvLossBySize[entry]);
        ranked.fSum.AddSum(fvLossBySize[entry]);
        sizes.push_back(ranked);
    }
    const double rounding = 2.0 * RoundingOf(fTotalWeight) * (fbByTarget ? 1.0 : 2.0);
    return KeepBest(std::move(sizes), rounding + ChainLength(), bestOut);
}

void NBSubsetSearch::EvaluateSizes(std::int32_t lastSize, MCCommon::MultiPassRecordIter& records,
                                   std::int32_t numRecords) {
    const std::int32_t firstSize = SmallestSize();
    std::vector<NBExactSum> sums(static_cast<std::size_t>(lastSize - firstSize + 1));
    if (fbKept) {
        fRecords.Restart();
        AddSizes(lastSize, sums);
    } else {
        const auto pass = [&] {
            ForEachLot(records, numRecords, kLotRecords, [&] { AddSizes(lastSize, sums); });
        };
        fbByTarget = fModel.IsModerate();
        pass();
        if (fbByTarget && !AreRecordsThoseOfTheTables() && !fInterrupt.IsStopped()) {
            fbByTarget = false;
            sums.assign(sums.size(), NBExactSum());
            pass();
        }
    }
    for (std::int32_t size = firstSize; size <= lastSize; ++size) {
        const std::size_t entry = static_cast<std::size_t>(size) - 1;
        fvLossBySize[entry] = sums[static_cast<std::size_t>(size - firstSize)];
        if (!fbByTarget) fvLossBySize[entry].SubtractSum(fvJointLogsBySize[entry]);
        fvCriterionBySize[entry] = -fUnit * fvLossBySize[entry].GetValue();
    }
}

void NBSubsetSearch::AddSizes(std::int32_t lastSize, std::vector<NBExactSum>& sums) {
    const std::int32_t firstSize = SmallestSize();
    std::vector<std::int32_t> selected;
    std::vector<NBExactSum> sum;
    for (std::int32_t size = 1; size <= lastSize; ++size) {
        selected.push_back(fvSelectedOrder[static_cast<std::size_t>(size) - 1]);
        fRecords.Join(selected.back());
        if (size < firstSize) continue;
        fRecords.ScoreExactly(selected, {NBSubsetRecords::kNone}, fbByTarget, sum);
        sums[static_cast<std::size_t>(size - firstSize)].AddSum(sum.front());
    }
}

std::int32_t NBSubsetSearch::EvaluateTestData(NBInternalAdapter& adapter, std::int32_t numRecords,
                                              std::vector<NBSubset>& bestOut) {
    if (fInterrupt.IsStopped()) return -1;
    const std::int32_t firstSize = SmallestSize();
    // Test records are prepared after useless predictors were dropped, unlike the training records,
    // which keep their place for them.
    std::vector<std::int32_t> positions(fvInputs.size(), -1);
    for (const std::int32_t table : fvSelectedOrder) {
        const auto at = static_cast<std::size_t>(table);
        positions[at] = fvInputs[at].GetAdjustedRecordIndex();
    }
    std::vector<NBExactSum> sums(static_cast<std::size_t>(ChainLength() - firstSize + 1));
    NBExactSum weights;
    const auto score = [&] {
        fRecords.Arrange();
        AddSizes(ChainLength(), sums);
        fRecords.Clear();
    };
    fbKept = false;
    fbByTarget = true;
    fRecords.Clear();
    for (std::int32_t i = 0; (numRecords < 0 || i < numRecords) && adapter.HasMore(); ++i) {
        if (fInterrupt.IsStopped()) return -1;
        const MCCommon::Record& record = *adapter.Next();
        const double weight = fbWeighted ? record[kWeightPosition] : 1.0;
        // Preparation lets a record without target or weight pass when an input is out of range.
        if (!NBSubsetModel::IsValid(record[0]) || weight == MCMV::gMissingValue) continue;
        weights.Add(weight, 1);
        fRecords.Add(record, positions, weight);
        if (fRecords.GetNumRecords() == static_cast<std::size_t>(kLotRecords)) score();
    }
    score();
    if (fInterrupt.IsStopped()) return -1;
    const double totalWeight = weights.GetValue();
    if (!(totalWeight > 0.0) || !std::isfinite(totalWeight)) return 0;
    std::vector<Ranked> sizes;
    for (std::int32_t size = firstSize; size <= ChainLength(); ++size) {
        const NBExactSum& sum = sums[static_cast<std::size_t>(size - firstSize)];
        sizes.push_back({{size, NBGridLog::kUnit / totalWeight * sum.GetValue()}, sum});
    }
    return KeepBest(std::move(sizes), RoundingOf(totalWeight), bestOut);
}

std::int32_t NBSubsetSearch::KeepBest(std::vector<Ranked> sizes, double rounding,
                                      std::vector<NBSubset>& bestOut) {
    const auto isSmaller = [](const Ranked& left, const Ranked& right) {
        return left.fSubset.fSize < right.fSubset.fSize;
    };
    std::sort(sizes.begin(), sizes.end(), [&](const Ranked& left, const Ranked& right) {
        if (IsLower(left.fSum, right.fSum)) return true;
        return !IsLower(right.fSum, left.fSum) && isSmaller(left, right);
    });
    // Those that are equal to the best of the rest but for rounding are equal, and have one value.
    for (auto first = sizes.begin(); first != sizes.end();) {
        const Ranked best = *first;
        const auto end = std::find_if(first + 1, sizes.end(), [&](const Ranked& size) {
            return !(size.fSum.Minus(best.fSum) <= rounding);
        });
        std::sort(first, end, isSmaller);
        for (; first != end; ++first) first->fSubset.fCriterion = best.fSubset.fCriterion;
    }
    fNumBestSubsets =
        std::min(std::max(fNumBestSubsets, 1), static_cast<std::int32_t>(sizes.size()));
    std::vector<NBSubset> subsets;
    for (const Ranked& size : sizes) subsets.push_back(size.fSubset);
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
