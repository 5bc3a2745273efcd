// Scoring: one record's posteriors and winner, and the tables that count them.

#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <variant>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/NBBlockScorer.h"
#include "naivebayes/NBWinner.h"
#include "naivebayes/data/NBRoundEncoder.h"

namespace {

/// The truncation of a code moved up by a half: the code itself for whole numbers.
std::int32_t Rounded(double code) {
    const double moved = code + 0.5;
    return static_cast<std::int32_t>(moved);
}

NBStatus Error(std::uint32_t code) { return NBStatus(code, false); }

/// What a record holds in the place of this row.
double RecordValue(const MCCommon::BlockColumn& column, std::size_t row) {
    return std::visit(
        [row](const auto values) -> double {
            using Value = std::remove_const_t<typename decltype(values)::element_type>;
            const auto value = static_cast<double>(values[row]);
            return std::is_same_v<Value, double> ? value : value - 1.0;
        },
        column.fValues);
}

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
    return NBFindWinner(fvPosteriors, fOutput.GetWeightedCounts(), fvTies);
}

NBStatus NBAlgorithm::TallyRecord(const MCCommon::Record& record, NBOutput& output,
                                  bool isTraining) {
    const NBStatus scored = ScoreRecord(record, output);
    if (!scored.IsOK()) return scored;
    const std::int32_t weightIndex = fpPreparator->GetWeightIndex();
    const bool tallied =
        Tally(weightIndex >= 0 ? record[weightIndex] : 1.0, record[fpPreparator->GetTargetIndex()],
              output.GetWinner(), isTraining);
    return tallied ? scored : Error(NBCode::kNoMemory);
}

bool NBAlgorithm::Tally(double weightValue, double observed, std::int32_t winner, bool isTraining) {
    double weight = 1.0;
    if (fpPreparator->GetWeightIndex() >= 0) {
        weight = fpPreparator->GetWeightEncoder()->Encode(weightValue);
        if (weight == MCMV::gMissingValue) return true;
    }
    const std::int32_t categories = fOutput.GetNumCategories();
    if (!(observed >= -0.5 && observed + 0.5 < categories)) return true;
    auto& statistics = isTraining ? fpTrainStatistics : fpTestStatistics;
    if (statistics == nullptr) {
        auto table = std::make_unique<NBOutputStatistics>();
        if (!TryReset(*table, categories)) return false;
        statistics = std::move(table);
    }
    statistics->Add(Rounded(observed), winner, weight);
    return true;
}

NBStatus NBAlgorithm::ScoreBlock(const MCCommon::RecordBlock& block,
                                 MCCommon::BlockExecutor* executor, NBBlockScores& scores) {
    const NBStatus checked =
        CheckScoring(fVarList.GetNumVariables(), static_cast<std::int32_t>(block.fvColumns.size()));
    if (checked.IsError()) return checked;
    if (fInterrupt.IsStopped()) return Error(NBCode::kInterrupted);
    try {
        const NBBlockScorer scorer(*fpPreparator, fvInputs, fOutput, block);
        if (!scorer.IsUsable()) return ScoreEachRecord(block, scores);
        scorer.Score(executor, scores);
    } catch (const std::bad_alloc&) {
        return Error(NBCode::kNoMemory);
    } catch (const std::length_error&) {
        return Error(NBCode::kNoMemory);
    }
    return fInterrupt.IsStopped() ? Error(NBCode::kInterrupted) : NBStatus();
}

NBStatus NBAlgorithm::ScoreEachRecord(const MCCommon::RecordBlock& block, NBBlockScores& scores) {
    scores.Reset(block.fRows, fOutput.GetNumCategories());
    MCCommon::Record record(static_cast<std::int32_t>(block.fvColumns.size()));
    NBOutput output;
    for (std::size_t row = 0; row < scores.fRows; ++row) {
        for (std::size_t i = 0; i < block.fvColumns.size(); ++i) {
            record[static_cast<std::int32_t>(i)] = RecordValue(block.fvColumns[i], row);
        }
        const NBStatus scored = ScoreRecord(record, output);
        if (scored.IsError()) return scored;
        if (scored.GetCode() == NBCode::kCodeOutOfRange) continue;
        scores.fvStates[row] = scored.IsOK() ? NBScoreState::kScored : NBScoreState::kByPriors;
        scores.fvWinners[row] = output.GetWinner();
        for (std::size_t k = 0; k < output.GetValues().size(); ++k) {
            scores.fvPosteriors[k * scores.fRows + row] = output.GetValues()[k];
        }
    }
    return NBStatus();
}

NBStatus NBAlgorithm::TallyBlock(const MCCommon::RecordBlock& block,
                                 MCCommon::BlockExecutor* executor, NBBlockScores& scores,
                                 std::span<const std::uint8_t> isTraining) {
    const NBStatus scored = ScoreBlock(block, executor, scores);
    if (scored.IsError()) return scored;
    const auto value = [&block](std::int32_t variable, std::size_t row) {
        return RecordValue(block.fvColumns[static_cast<std::size_t>(variable)], row);
    };
    const std::int32_t weightIndex = fpPreparator->GetWeightIndex();
    for (std::size_t row = 0; row < scores.fRows; ++row) {
        if (scores.fvStates[row] != NBScoreState::kScored) continue;
        if (!Tally(weightIndex >= 0 ? value(weightIndex, row) : 1.0,
                   value(fpPreparator->GetTargetIndex(), row), scores.fvWinners[row],
                   isTraining[row] != 0)) {
            return Error(NBCode::kNoMemory);
        }
    }
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
