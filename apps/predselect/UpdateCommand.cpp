#include <fmt/format.h>

#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "apps/predselect/ModelCommands.h"
#include "apps/predselect/ModelNotes.h"
#include "apps/predselect/OutputFiles.h"
#include "apps/predselect/OutputPaths.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/SavedModel.h"
#include "apps/predselect/Signals.h"
#include "apps/predselect/Terminal.h"
#include "embedded/data/OpenDataSet.h"
#include "host/Files.h"
#include "host/Progress.h"
#include "naivebayes/data/NBVarList.h"

namespace app {
namespace {

std::vector<NamedPath> OutputsOf(const ProgramOptions& options) {
    return {{"--state", options.fOutput.fState},
            {"--state-xml", options.fOutput.fStateXml},
            {"--pmml", options.fOutput.fPmml}};
}

[[noreturn]] void Fail(const std::string& what, const NBStatus& status, const SavedModel& model) {
    if (status.GetCode() == NBCode::kInterrupted) throw ProgramError(kInterrupted, "interrupted");
    throw ProgramError(kCommandFailed, what + ": " + ReasonOf(status, model));
}

// Models whose search found other predictors differ in the roles of variables.
[[noreturn]] void FailToMerge(const SavedModel& model, const SavedModel& other,
                              const NBStatus& status) {
    const std::string what = "cannot merge " + other.Name() + " into " + model.Name();
    const std::int32_t variable = status.fIntArgs[0];
    if (status.GetCode() == NBCode::kCannotMerge && variable >= 0 &&
        variable < other.Engine().GetVarList().GetNumVariables() &&
        model.IsInput(variable) != other.IsInput(variable)) {
        throw ProgramError(
            kCommandFailed,
            fmt::format("{}: the variable {} is a predictor of {} only; train both with "
                        "--no-selection on variables that vary in the data of both",
                        what,
                        OneLine(model.Layout().fvColumns[static_cast<std::size_t>(variable)].fName),
                        model.IsInput(variable) ? model.Name() : other.Name()));
    }
    Fail(what, status, model);
}

// A new state may take the place of the one that it goes on from; its other forms may not.
void CheckOtherForms(const ProgramOptions& options, const std::vector<std::string>& states) {
    std::vector<NamedPath> models;
    for (const std::string& state : states) models.push_back({"a model", state});
    CheckOutputPaths(
        {{"--state-xml", options.fOutput.fStateXml}, {"--pmml", options.fOutput.fPmml}}, models);
}

std::string Written(const SavedModel& model, NBStatus (INBAlgorithm::*save)(std::ostream&)) {
    std::ostringstream stream;
    const NBStatus status = (model.Engine().*save)(stream);
    if (status.IsError()) Fail("cannot save the classifier", status, model);
    return std::move(stream).str();
}

std::string WrittenPMML(const SavedModel& model) {
    const KoltAppParams& application = *GetAppParams();
    const NBWriteOptions options{true, application.fAppName, application.fAppVersion,
                                 application.fCopyright};
    std::ostringstream stream;
    const NBStatus status = model.Engine().WritePMML(stream, &options);
    if (status.IsError()) Fail("cannot write the model", status, model);
    return std::move(stream).str();
}

void WriteModel(const ProgramOptions& options, const SavedModel& model) {
    OutputFiles files;
    files.Add(options.fOutput.fState, WrittenState({"NAIVEBAYES", model.Layout(),
                                                    Written(model, &INBAlgorithm::SaveBinary)}));
    if (!options.fOutput.fStateXml.empty()) {
        files.Add(options.fOutput.fStateXml, Written(model, &INBAlgorithm::SaveXML));
    }
    if (!options.fOutput.fPmml.empty()) files.Add(options.fOutput.fPmml, WrittenPMML(model));
    const bool isSeen = !options.fOutput.fbQuiet && options.fOutput.fState != "-" &&
                        options.fOutput.fStateXml != "-" && options.fOutput.fPmml != "-";
    if (isSeen) {
        double weight = 0.0;
        double excludedWeight = 0.0;
        std::int32_t records = 0;
        std::int32_t excluded = 0;
        model.Engine().GetRecordCounts(weight, excludedWeight, records, excluded);
        files.Add("-", fmt::format("The classifier of {} now stands on {}; {} {} left out.\n",
                                   OneLine(model.Target().fName), CasesText(records), excluded,
                                   excluded == 1 ? "was" : "were"));
    }
    files.Commit();
}

}  // namespace

ExitStatus UpdateCommand(const ProgramOptions& options) {
    CheckOutputPaths(OutputsOf(options), DataPaths(options.fDataPath, options.fOpen.fSchemaPath));
    CheckOtherForms(options, {options.fModel.fState});
    CheckStandardInput({options.fModel.fState, options.fDataPath});
    const SavedModel model(options.fModel.fState);
    std::optional<ProgressLine> progress;
    if (ProgressIsSeen() && !options.fOutput.fbQuiet) progress.emplace().Show("Updating");
    const embedded::DataSet data = embedded::OpenDataSet(options.fDataPath, options.fOpen);
    if (data.WeightIndex() >= 0) {
        throw ProgramError(kWrongUse,
                           "the classifier knows no weights, and the data have the weight "
                           "variable " +
                               OneLine(data.Variable(data.WeightIndex()).GetName()) +
                               "; leave it out");
    }
    StopThroughCommands();
    embedded::LayoutRecordsOptions reading;
    reading.fThreads = options.fOpen.fThreads;
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(model.Layout().fvColumns.size()); ++i) {
        if (!model.IsInput(i) && i != model.TargetColumn()) reading.fvMayLack.push_back(i);
    }
    embedded::LayoutRecords records = ReadByLayout(data, model.Layout(), reading);
    MCStopProcessor stop(0.0);
    model.Engine().SetInterruptSource(&stop);
    const NBStatus status = model.Engine().UpdateModel(records, -1);
    progress.reset();
    if (status.IsError()) {
        Fail("cannot update " + model.Name() + " with " + OneLine(data.SourceName()), status,
             model);
    }
    // The engine has rewound the records, and with them the counts of unknown values: once more,
    // for these.
    while (records.NextBlock(embedded::kChunkRows) != nullptr) {
    }
    TellUnknownValues(records, model.Layout());
    WriteModel(options, model);
    return kDone;
}

ExitStatus MergeCommand(const ProgramOptions& options) {
    CheckOutputPaths(OutputsOf(options), {});
    CheckOtherForms(options, options.fModel.fvStates);
    CheckStandardInput(options.fModel.fvStates);
    SavedModel model(options.fModel.fvStates.front());
    for (std::size_t i = 1; i < options.fModel.fvStates.size(); ++i) {
        const SavedModel other(options.fModel.fvStates[i]);
        const NBStatus status = model.Engine().MergeModel(other.Engine(), true);
        if (status.IsError()) FailToMerge(model, other, status);
    }
    StopThroughCommands();  // so that no temporary file is left
    model.RefreshValues();
    WriteModel(options, model);
    return kDone;
}

}  // namespace app
