// The last pass: every case is scored into the saved variables and the classification counts.

#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "backend/predselect/PRSMultiFactory.h"
#include "backend/predselect/PRSValidSpecs.h"
#include "host/Assertion.h"
#include "host/BlockWriting.h"
#include "host/Blocks.h"
#include "host/Output.h"
#include "naivebayes/NBBlockScores.h"
#include "naivebayes/NBOutput.h"

namespace {

constexpr std::int32_t kNewVariables = 3;  // group of the notes
constexpr std::int32_t kProbabilityWidth = 5;
constexpr std::int32_t kProbabilityDecimals = 3;

}  // namespace

// What the scoring of blocks keeps from one to the next.
struct PRSMultiFactory::BlockScratch {
    NBBlockScores fScores;
    std::vector<std::uint8_t> fvTraining;  // by record: 1 for a training case
    std::vector<double> fvTargetNumbers;   // by code of the target; missing without a value
    std::vector<std::string> fvTargetTexts;
    std::vector<std::int32_t> fvTextPlaces;  // by code of the target; -1 without a value
    std::vector<double> fvNumbers;           // by record
    std::vector<std::int32_t> fvPlaces;      // by record
};

bool PRSMultiFactory::ScoreCases() {
    if (!MakeSavedVariables()) {
        SetError(NBCode::kNoOutput);
        return false;
    }
    fpScoreRecIter = std::make_unique<NaiveDataSourceIter>(*fpInpAdapt, fProcValidSpec,
                                                           fTrainTestFlags, true, true);
    fpScoreRecIter->NewPass(true);
    fpScoreRecIter->SetLastPass();
    KOLT_InputCaseIterator* writer = fpScoreRecIter->GetProcDS();
    auto* const blockWriter = dynamic_cast<BlockColumnWriter*>(writer);
    BlockScratch scratch;
    if (blockWriter != nullptr) DecodeTargets(scratch);
    if (!fpScoreRecIter->HasMore()) {
        SetError(NBCode::kNoUsableRecords);
        return false;
    }
    while (!fStatus.IsError() && fpScoreRecIter->HasMore()) {
        // Scores of some cases only are no result.
        if (IsStopped()) {
            SetError(NBCode::kInterrupted);
            return false;
        }
        if (blockWriter != nullptr) {
            ScoreNextBlock(*blockWriter, scratch);
        } else {
            const MCCommon::Record* record = fpScoreRecIter->Current();
            PREDSEL_ASSERT(record != nullptr && writer != nullptr, "record != 0");
            ScoreOneCase(*writer, *record, fpScoreRecIter->IsTrainCase());
            fpScoreRecIter->Next();
        }
        if (fpScoreRecIter->GetFailReason() == MCCommon::kITER_ERROR) {
            SetError(NBCode::kNoValidCases);
            return false;
        }
    }
    return !fStatus.IsError();
}

bool PRSMultiFactory::MakeSavedVariables() {
    // A copy: making a variable may move the others.
    const KOLT_Variable target = fActiveDS.GetVariable(fProcValidSpec.GetDependVar());
    if (!fProcValidSpec.GetPredValName().IsEmpty() && !MakePredictedValue(target)) return false;
    return fNSaveDepCats < 1 || MakePredictedProbabilities(target);
}

bool PRSMultiFactory::MakePredictedValue(const KOLT_Variable& target) {
    const VarSpecObj names("PREDVAL", "SAVE", "NAIVEBAYES", fActiveDS, false);
    KoltVarName name;
    if (!names.NewVarNameByRoot(fProcValidSpec.GetPredValName(), name)) return false;
    KOLT_Variable* variable = fActiveDS.MakeVariable(target.GetType(), fPredValColumn);
    if (variable == nullptr) return false;
    variable->SetName(name.GetString());
    variable->SetFormat(target.GetFormat());
    variable->SetWriteFormat(target.GetWriteFormat());
    variable->SetMeasurementLevel(target.GetMeasurementLevel());
    variable->SetAlignment(target.GetAlignment());
    const std::string label = fTranslator.GetTranslatedText("Predicted Value");
    variable->SetLabel(label);
    AddNotes(kNewVariables, BpString(label, false), BpString(name.GetString(), false));
    return true;
}

bool PRSMultiFactory::MakePredictedProbabilities(const KOLT_Variable& target) {
    const VarSpecObj roots("PREDPROB", "SAVE", "NAIVEBAYES", fActiveDS, false);
    std::vector<KoltVarName> names;
    if (!roots.NewVarNamesByRoot(fProcValidSpec.GetPredProbRoot(), fNSaveDepCats, names)) {
        return false;
    }
    fPredProbVars.assign(static_cast<std::size_t>(fNSaveDepCats), -1);
    for (std::int32_t code = 0; code < fNSaveDepCats; ++code) {
        const auto i = static_cast<std::size_t>(code);
        KOLT_Variable* variable = fActiveDS.MakeVariable(0, fPredProbVars[i]);
        if (variable == nullptr) return false;
        variable->SetName(names[i].GetString());
        variable->SetFormat(kFormatNumber, kProbabilityWidth, kProbabilityDecimals);
        variable->SetWriteFormat(kFormatNumber, kProbabilityWidth, kProbabilityDecimals);
        variable->SetMeasurementLevel(kLevelScale);

        KoltObs value;
        PREDSEL_ASSERT(DecodeTarget(code, value), "every category has a value");
        const std::string text = ConvertObsToString(value, target.GetFormat(), true);
        variable->SetLabel(fTranslator.GetTranslatedText(
            "Predicted Probability for ^1 with value ^2...", {target.GetName(), text}));
        BpComposite category("^1 = ^2", true);
        category.Add(BpString(target.GetName(), false));
        category.Add(BpString(text, false));
        category.Finish();
        AddNotesWithGroup(kNewVariables, BpString("Predicted Probabilities", true), category,
                          BpString(names[i].GetString(), false));
    }
    return true;
}

bool PRSMultiFactory::DecodeTarget(std::int32_t code, KoltObs& valueOut) const {
    const std::int32_t koltX = fProcValidSpec.GetDependVar();
    std::int32_t depVarInd = -1;
    const bool found = fpInpAdapt->DecodeCatValue(koltX, code, depVarInd, valueOut);
    PREDSEL_ASSERT(depVarInd == koltX, "depVarInd == koltX");
    return found;
}

void PRSMultiFactory::ScoreOneCase(KOLT_InputCaseIterator& writer, const MCCommon::Record& record,
                                   bool isTraining) {
    NBOutput output;
    const NBStatus scored = fProcValidSpec.GetPrintClassification()
                                ? fpAlgorithm->TallyRecord(record, output, isTraining)
                                : fpAlgorithm->ScoreRecord(record, output);
    if (scored.IsError()) fStatus = scored;
    const std::vector<double>& predProbs = output.GetValues();
    if (scored.IsError() || output.GetWinner() < 0 || predProbs.empty()) return;

    KoltObs value;
    if (fPredValColumn >= 0 && DecodeTarget(output.GetWinner(), value)) {
        const KOLT_Variable& target = fActiveDS.GetVariable(fProcValidSpec.GetDependVar());
        if (target.GetType() == 0) {
            writer.SetColumnValue(fPredValColumn, std::get<double>(value));
        } else {
            writer.SetColumnValue(fPredValColumn,
                                  ConvertObsToString(value, target.GetFormat(), true),
                                  target.GetType());
        }
    }
    if (fNSaveDepCats < 1) return;
    const auto saved = static_cast<std::size_t>(fNSaveDepCats);
    PREDSEL_ASSERT(predProbs.size() >= saved, "predProbs.size() >= fNSaveDepCats");
    PREDSEL_ASSERT(fPredProbVars.size() == saved, "fPredProbVars.size() == fNSaveDepCats");
    for (std::size_t i = 0; i < saved; ++i) writer.SetColumnValue(fPredProbVars[i], predProbs[i]);
}

void PRSMultiFactory::DecodeTargets(BlockScratch& scratch) const {
    const KOLT_Variable& target = fActiveDS.GetVariable(fProcValidSpec.GetDependVar());
    for (std::int32_t code = 0; code < fpAlgorithm->GetNumTargetCategories(); ++code) {
        KoltObs value = MCMV::gMissingValue;
        const bool found = fPredValColumn >= 0 && DecodeTarget(code, value);
        if (target.GetType() == 0) {
            scratch.fvTargetNumbers.push_back(found ? std::get<double>(value)
                                                    : MCMV::gMissingValue);
            continue;
        }
        scratch.fvTextPlaces.push_back(
            found ? static_cast<std::int32_t>(scratch.fvTargetTexts.size()) : -1);
        if (found) {
            scratch.fvTargetTexts.push_back(ConvertObsToString(value, target.GetFormat(), true));
        }
    }
}

void PRSMultiFactory::ScoreNextBlock(BlockColumnWriter& writer, BlockScratch& scratch) {
    MCCommon::BlockExecutor* const executor = fpScoreRecIter->GetExecutor();
    const std::int32_t mostRows = NBBlockScores::MostRows(fpAlgorithm->GetNumTargetCategories());
    const MCCommon::RecordBlock* const block = fpScoreRecIter->NextBlock(mostRows);
    PREDSEL_ASSERT(block != nullptr, "block != 0");
    NBBlockScores& scores = scratch.fScores;
    NBStatus scored;
    if (fProcValidSpec.GetPrintClassification()) {
        scratch.fvTraining.clear();
        for (const std::int64_t number : fpScoreRecIter->GetBlockCases()) {
            scratch.fvTraining.push_back(fpScoreRecIter->IsTrainCase(number) ? 1 : 0);
        }
        scored = fpAlgorithm->TallyBlock(*block, executor, scores, scratch.fvTraining);
    } else {
        scored = fpAlgorithm->ScoreBlock(*block, executor, scores);
    }
    if (scored.IsError()) {
        fStatus = scored;
        return;
    }
    if (fPredValColumn >= 0) WritePredictedValues(writer, scratch);
    for (std::int32_t code = 0; code < fNSaveDepCats; ++code) {
        writer.SetColumnValues(fPredProbVars[static_cast<std::size_t>(code)],
                               scores.Posteriors(code));
    }
}

void PRSMultiFactory::WritePredictedValues(BlockColumnWriter& writer, BlockScratch& scratch) const {
    const std::int32_t type = fActiveDS.GetVariable(fProcValidSpec.GetDependVar()).GetType();
    const std::vector<std::int32_t>& winners = scratch.fScores.fvWinners;
    if (type == 0) {
        scratch.fvNumbers.clear();
        for (const std::int32_t winner : winners) {
            scratch.fvNumbers.push_back(
                winner < 0 ? MCMV::gMissingValue
                           : scratch.fvTargetNumbers[static_cast<std::size_t>(winner)]);
        }
        writer.SetColumnValues(fPredValColumn, scratch.fvNumbers);
        return;
    }
    scratch.fvPlaces.clear();
    for (const std::int32_t winner : winners) {
        scratch.fvPlaces.push_back(
            winner < 0 ? -1 : scratch.fvTextPlaces[static_cast<std::size_t>(winner)]);
    }
    writer.SetColumnTexts(fPredValColumn, scratch.fvPlaces, scratch.fvTargetTexts, type);
}
