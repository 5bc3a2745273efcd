#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "apps/predselect/ModelCommands.h"
#include "apps/predselect/ModelNotes.h"
#include "apps/predselect/OutputFiles.h"
#include "apps/predselect/OutputPaths.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/SaveData.h"
#include "apps/predselect/SavedModel.h"
#include "apps/predselect/Signals.h"
#include "apps/predselect/Terminal.h"
#include "embedded/cases/LayoutRecords.h"
#include "embedded/command/NewNames.h"
#include "embedded/data/NewColumns.h"
#include "embedded/data/OpenDataSet.h"
#include "embedded/output/CompositeText.h"
#include "embedded/strings/StringTable.h"
#include "host/HostGlobals.h"
#include "host/Progress.h"
#include "naivebayes/NBBlockScores.h"
#include "naivebayes/NBOutputStatistics.h"

namespace app {
namespace {

void CheckPaths(const ProgramOptions& options) {
    std::vector<NamedPath> inputs = DataPaths(options.fDataPath, options.fOpen.fSchemaPath);
    inputs.push_back({"the model", options.fModel.fState});
    CheckOutputPaths(SavedPaths(options), inputs);
    CheckStandardInput({options.fModel.fState, options.fDataPath});
    if (options.fOutput.fSave.empty() && options.fOutput.fbQuiet) {
        throw ProgramError(kWrongUse, "nothing would be written; leave out --quiet or give --save");
    }
}

// The new variables of a scored data set, as a run that saves predictions makes them.
class Predictions {
 public:
    Predictions(const embedded::DataSet& data, const SavedModel& model, const ModelOptions& options)
        : fColumns(data.ColumnCount(), data.RowCount()), fTarget(model.Target()) {
        const std::int32_t classes = model.Engine().GetNumTargetCategories();
        const std::int32_t count = std::min(classes, options.fMaxProbabilities);
        fColumns.SetSlots(UINT32_MAX);
        std::string predicted;
        const auto isTaken = [&](const std::string& name) {
            for (std::int32_t i = 0; i < data.ColumnCount(); ++i) {
                if (AreStringsEqualCase(data.Variable(i).GetName(), name)) return true;
            }
            return AreStringsEqualCase(predicted, name);
        };
        predicted = embedded::FreeName(NameOr(options.fPredicted, "PredictedValue"), isTaken);
        AddPredicted(data, predicted);
        AddProbabilities(embedded::FreeNames(NameOr(options.fProbabilities, "PredictedProbability"),
                                             count, isTaken));
    }

    // Of these rows.
    void Set(std::span<const std::int64_t> rows, const NBBlockScores& scores) {
        SetPredicted(rows, scores.fvWinners);
        for (std::size_t i = 0; i < fvProbabilities.size(); ++i) {
            fColumns.Set(fvProbabilities[i], rows, scores.Posteriors(static_cast<std::int32_t>(i)));
        }
    }

    void MoveTo(embedded::DataSet& data) { fColumns.MoveTo(data); }

 private:
    static std::string NameOr(const std::string& name, const char* otherwise) {
        return name.empty() ? otherwise : name;
    }

    void AddPredicted(const embedded::DataSet& data, std::string name) {
        KOLT_Variable& variable = *fColumns.Make(fTarget.fType, fPredicted);
        // Shown as the target is, where the data have it.
        const std::int32_t target = data.FindVariable(fTarget.fName);
        if (target >= 0 && data.Variable(target).GetType() == fTarget.fType) {
            fFormat = data.Variable(target).GetFormat();
            variable.SetFormat(fFormat);
            variable.SetWriteFormat(data.Variable(target).GetWriteFormat());
            variable.SetAlignment(data.Variable(target).GetAlignment());
        }
        variable.SetMeasurementLevel(kLevelNominal);
        variable.SetLabel(std::string(embedded::TextOf("Predicted Value")));
        variable.SetName(std::move(name));
        if (fTarget.fType == 0) return;
        for (const KoltObs& value : fTarget.fvValues) {
            fvTexts.push_back(std::get<std::string>(value));
        }
    }

    void AddProbabilities(const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            std::int32_t column = -1;
            KOLT_Variable& variable = *fColumns.Make(0, column);
            variable.SetFormat(kFormatNumber, 5, 3);
            variable.SetWriteFormat(kFormatNumber, 5, 3);
            variable.SetMeasurementLevel(kLevelScale);
            variable.SetLabel(LabelOf(fTarget.fvValues, fvProbabilities.size()));
            variable.SetName(name);
            fvProbabilities.push_back(column);
        }
    }

    // As a run that saves probabilities labels them; a category without a value has no label.
    std::string LabelOf(const std::vector<KoltObs>& values, std::size_t category) const {
        if (category >= values.size()) return {};
        return embedded::CompositeText(
            embedded::TextOf("Predicted Probability for ^1 with value ^2..."),
            {fTarget.fName, ConvertObsToString(values[category], fFormat, true)});
    }

    // A winner without a value leaves its row missing.
    void SetPredicted(std::span<const std::int64_t> rows,
                      const std::vector<std::int32_t>& winners) {
        const auto count = static_cast<std::int32_t>(fTarget.fvValues.size());
        if (fTarget.fType == 0) {
            fvNumbers.clear();
            for (const std::int32_t winner : winners) {
                fvNumbers.push_back(
                    winner >= 0 && winner < count
                        ? std::get<double>(fTarget.fvValues[static_cast<std::size_t>(winner)])
                        : MCMV::gMissingValue);
            }
            fColumns.Set(fPredicted, rows, fvNumbers);
            return;
        }
        fvPlaces.clear();
        for (const std::int32_t winner : winners) fvPlaces.push_back(winner < count ? winner : -1);
        fColumns.Set(fPredicted, rows, fvPlaces, fvTexts, fTarget.fType);
    }

    embedded::NewColumns fColumns;
    const embedded::RecordLayoutColumn& fTarget;
    KoltFormat fFormat;  // of the target's values
    std::int32_t fPredicted = -1;
    std::vector<std::int32_t> fvProbabilities;
    std::vector<std::string> fvTexts;    // the values of a string target
    std::vector<double> fvNumbers;       // of the rows at hand
    std::vector<std::int32_t> fvPlaces;  // the same
};

struct Counts {
    std::int64_t fCases = 0;
    std::int64_t fByPriors = 0;  // no predictor was valid
};

std::string Percent(double share, double whole) {
    return fmt::format("{:.1f}%", whole > 0.0 ? 100.0 * share / whole : 0.0);
}

// What was done, and how good it was where the data say what is true.
std::string Summary(const embedded::DataSet& data, const SavedModel& model, const Counts& counts) {
    const std::string target = OneLine(model.Target().fName);
    std::string text = fmt::format("Scored {} of {} for {}.\n", CasesText(counts.fCases),
                                   OneLine(data.SourceName()), target);
    if (counts.fByPriors > 0) {
        text += fmt::format(
            "{} of them have no valid predictor and got the share of each category in "
            "the training sample.\n",
            counts.fByPriors);
    }
    const NBOutputStatistics* statistics = model.Engine().GetTestStatistics();
    if (statistics != nullptr) {
        const double total = statistics->GetTotalWeight();
        double correct = 0.0;
        for (std::int32_t k = 0; k < statistics->GetNumCategories(); ++k) {
            correct += statistics->GetCell(k, k);
        }
        text += fmt::format("Correct: {:.0f} of {:.0f} cases in which {} is known ({}).\n", correct,
                            total, target, Percent(correct, total));
    }
    return text;
}

}  // namespace

ExitStatus ScoreCommand(const ProgramOptions& options) {
    CheckPaths(options);
    const SavedModel model(options.fModel.fState);
    std::optional<ProgressLine> progress;
    if (ProgressIsSeen() && !options.fOutput.fbQuiet) progress.emplace().Show("Scoring");
    embedded::DataSet data = embedded::OpenDataSet(options.fDataPath, options.fOpen);
    StopThroughCommands();

    embedded::LayoutRecordsOptions reading;
    reading.fbIgnoreWeights = true;
    reading.fThreads = options.fOpen.fThreads;
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(model.Layout().fvColumns.size()); ++i) {
        if (!model.IsInput(i)) reading.fvMayLack.push_back(i);
    }
    embedded::LayoutRecords records = ReadByLayout(data, model.Layout(), reading);
    const bool knowsTarget = data.FindVariable(model.Target().fName) >= 0;
    MCStopProcessor stop(0.0);
    Predictions predictions(data, model, options.fModel);
    NBBlockScores scores;
    const std::int32_t mostRows = NBBlockScores::MostRows(model.Engine().GetNumTargetCategories());
    const std::vector<std::uint8_t> noTraining(static_cast<std::size_t>(mostRows));
    Counts counts;
    while (const MCCommon::RecordBlock* const block = records.NextBlock(mostRows)) {
        if (stop.IsCancelled()) throw ProgramError(kInterrupted, "interrupted");
        const NBStatus status =
            knowsTarget
                ? model.Engine().TallyBlock(*block, records.GetExecutor(), scores, noTraining)
                : model.Engine().ScoreBlock(*block, records.GetExecutor(), scores);
        if (status.IsError()) {
            throw ProgramError(kCommandFailed, "cannot score " + OneLine(data.SourceName()) + ": " +
                                                   ReasonOf(status, model));
        }
        counts.fCases += block->fRows;
        counts.fByPriors +=
            std::count(scores.fvStates.begin(), scores.fvStates.end(), NBScoreState::kByPriors);
        predictions.Set(records.BlockRows(), scores);
    }
    progress.reset();
    TellUnknownValues(records, model.Layout());
    predictions.MoveTo(data);

    OutputFiles files;
    SaveData(data, options, files);
    if (!options.fOutput.fbQuiet && options.fOutput.fSave != "-") {
        files.Add("-", Summary(data, model, counts));
    }
    files.Commit();
    return kDone;
}

}  // namespace app
