// Scoring: one record's posteriors and winner, and the tables that count them.

#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <utility>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/data/NBRoundEncoder.h"

namespace {

/// The truncation of a code moved up by a half: the code itself for whole numbers.
std::int32_t Rounded(double code) {
    const double moved = code + 0.5;
    return static_cast<std::int32_t>(moved);
}

NBStatus Error(std::uint32_t code) { return NBStatus(code, false); }

/// False, and the table as it was, when memory does not suffice: a table grows with the square of
/// the categories, far above the model itself.
bool TryReset(NBOutputStatistics& table, std::int32_t categories) {
    try {
        table.Reset(categories);
        return true;
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    return false;
}

}  // namespace

NBStatus NBAlgorithm::CheckScoring(std::int32_t expectedLength, std::int32_t length) const {
    if (fStatus.IsError()) return fStatus;
    if (!fbModelBuilt) return Error(NBCode::kNotBuilt);
    if (length == expectedLength) return NBStatus();
    NBStatus status = Error(NBCode::kRecordLength);
    status.SetIntArg(0, expectedLength);
    status.SetIntArg(1, length);
    return status;
}

NBStatus NBAlgorithm::ScoreInputRecord(const MCCommon::Record& record, NBOutput& output) {
    const NBStatus checked = CheckScoring(fNumInputs, record.Size());
    if (checked.IsError()) return checked;
    if (fInterrupt.IsStopped()) return Error(NBCode::kInterrupted);
    SizeScratch();
    return FinishScore(fpPreparator->PrepareInputRecord(record, fInputRecord), output);
}

NBStatus NBAlgorithm::ScoreRecord(const MCCommon::Record& record, NBOutput& output) {
    const NBStatus checked = CheckScoring(fVarList.GetNumVariables(), record.Size());
    if (checked.IsError()) return checked;
    if (fInterrupt.IsStopped()) return Error(NBCode::kInterrupted);
    SizeScratch();
    double weight = 1.0;
    return FinishScore(fpPreparator->PrepareScoreRecord(record, fInputRecord, weight), output);
}

NBStatus NBAlgorithm::FinishScore(const NBStatus& prepared, NBOutput& output) {
    if (!prepared.IsOK() && prepared.GetCode() != NBCode::kNoValidPredictor) return prepared;
    if (prepared.IsOK()) {
        ComputePosterior();
    } else {
        fvPosteriors = fOutput.GetPi();
    }
    output.SetResult(fvPosteriors, FindWinner());
    return fInterrupt.IsStopped() ? Error(NBCode::kInterrupted) : prepared;
}

void NBAlgorithm::SizeScratch() {
    const std::int32_t inputs = fpPreparator->GetInputRecordSize();
    if (fInputRecord.Size() != inputs) fInputRecord = MCCommon::Record(inputs);
}

void NBAlgorithm::ComputePosterior() {
    fvPosteriors = fOutput.GetPi();
    for (std::size_t j = 0; j < fvInputs.size(); ++j) {
        const double code = fInputRecord[static_cast<std::int32_t>(j)];
        if (!IsKnown(code)) continue;
        const NBayesInput& table = fvInputs[j];
        const auto m = static_cast<std::size_t>(Category(code, table.GetNumCategories()));
        const std::vector<double>& row = table.GetProbabilities()[m];
        for (std::size_t k = 0; k < fvPosteriors.size(); ++k) fvPosteriors[k] *= row[k];
    }
    double sum = 0.0;
    for (const double product : fvPosteriors) sum += product;
    // Intended: nothing guards against a sum of 0. The posteriors are then not numbers and
    // FindWinner gives category 0, see ProductsThatUnderflowGiveNotANumberAndTheFirstCategory.
    for (double& product : fvPosteriors) product /= sum;
}

std::int32_t NBAlgorithm::FindWinner() {
    // The heaviest category of a tie wins. Intended: category 0 never joins a tie, so one of 0 and
    // another goes to 0 whatever their weights, and in one of 0 and several others the first of
    // these is passed over, see NBAlgorithmTies.
    fvTies.clear();
    std::size_t winner = 0;
    double best = fvPosteriors[0];
    for (std::size_t k = 1; k < fvPosteriors.size(); ++k) {
        if (fvPosteriors[k] > best) {
            best = fvPosteriors[k];
            winner = k;
            fvTies.assign(1, k);
        } else if (fvPosteriors[k] == best) {
            fvTies.push_back(k);
        }
    }
    const std::vector<double>& weights = fOutput.GetWeightedCounts();
    for (std::size_t i = 1; i < fvTies.size(); ++i) {
        if (weights[fvTies[i]] > weights[winner]) winner = fvTies[i];
    }
    return static_cast<std::int32_t>(winner);
}

NBStatus NBAlgorithm::TallyRecord(const MCCommon::Record& record, NBOutput& output,
                                  bool isTraining) {
    const NBStatus scored = ScoreRecord(record, output);
    if (!scored.IsOK()) return scored;
    double weight = 1.0;
    if (fpPreparator->GetWeightIndex() >= 0) {
        weight = fpPreparator->GetWeightEncoder()->Encode(record[fpPreparator->GetWeightIndex()]);
        if (weight == MCMV::gMissingValue) return scored;
    }
    const double observed = record[fpPreparator->GetTargetIndex()];
    const std::int32_t categories = fOutput.GetNumCategories();
    if (!(observed >= -0.5 && observed + 0.5 < categories)) return scored;
    auto& statistics = isTraining ? fpTrainStatistics : fpTestStatistics;
    if (statistics == nullptr) {
        auto table = std::make_unique<NBOutputStatistics>();
        if (!TryReset(*table, categories)) return Error(NBCode::kNoMemory);
        statistics = std::move(table);
    }
    statistics->Add(Rounded(observed), output.GetWinner(), weight);
    return scored;
}

NBStatus NBAlgorithm::ClassifyRecords(MCCommon::RecordIterator& records,
                                      NBOutputStatistics& tableOut, std::int32_t numRecords) {
    if (fStatus.IsError()) return fStatus;
    if (!fbModelBuilt) return Error(NBCode::kNotBuilt);
    if (!records.HasMore()) return Error(NBCode::kNoUsableRecords);
    if (numRecords == 0) return Error(NBCode::kNoRecordCount);
    if (fInterrupt.IsStopped()) return Error(NBCode::kInterrupted);
    if (numRecords < 0) numRecords = std::numeric_limits<std::int32_t>::max();
    const std::int32_t categories = fOutput.GetNumCategories();
    if (!TryReset(tableOut, categories)) return Error(NBCode::kNoMemory);
    SizeScratch();
    double usedWeight = 0.0;
    double wrongWeight = 0.0;
    for (std::int32_t used = 0;
         used < numRecords && records.HasMore() && !fInterrupt.IsStopped();) {
        const MCCommon::Record* record = records.Next();
        if (record == nullptr) break;
        if (record->Size() != fVarList.GetNumVariables()) {
            return CheckScoring(fVarList.GetNumVariables(), record->Size());
        }
        double weight = 1.0;
        const NBStatus prepared = fpPreparator->PrepareScoreRecord(*record, fInputRecord, weight);
        const double observed = (*record)[fpPreparator->GetTargetIndex()];
        const bool usable = prepared.IsOK() && weight != MCMV::gMissingValue && observed >= 0.0 &&
                            observed < categories - 0.5;
        if (!usable) continue;
        usedWeight += weight;
        ++used;
        ComputePosterior();
        const std::int32_t winner = FindWinner();
        if (winner != Rounded(observed)) wrongWeight += weight;
        // Intended: the cell goes by the truncated code, the error by the rounded one, see
        // AFractionalTargetIsTruncatedForItsCellAndRoundedForTheError. Codes are whole numbers.
        tableOut.AddCell(static_cast<std::int32_t>(observed), winner, weight);
    }
    if (fInterrupt.IsStopped()) return Error(NBCode::kInterrupted);
    tableOut.SetErrorPercent(usedWeight > 0.0 ? wrongWeight / usedWeight * 100.0 : 0.0);
    return NBStatus();
}
