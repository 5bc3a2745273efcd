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
        files.Add("-",
                  fmt::format("The classifier of {} now stands on {} cases; {} were left out.\n",
                              model.Target().fName, records, excluded));
    }
    files.Commit();
}

}  // namespace

ExitStatus UpdateCommand(const ProgramOptions& options) {
    CheckOutputPaths(OutputsOf(options), {{"the data file", options.fDataPath}});
    const SavedModel model(options.fModel.fState);
    std::optional<ProgressLine> progress;
    if (ProgressIsSeen() && !options.fOutput.fbQuiet) progress.emplace().Show("Updating");
    const embedded::DataSet data = embedded::OpenDataSet(options.fDataPath, options.fOpen);
    if (data.WeightIndex() >= 0) {
        throw ProgramError(kWrongUse,
                           "the classifier knows no weights, and the data have the weight "
                           "variable " +
                               data.Variable(data.WeightIndex()).GetName() + "; leave it out");
    }
    StopThroughCommands();
    embedded::LayoutRecordsOptions reading;
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(model.Layout().fvColumns.size()); ++i) {
        if (!model.IsInput(i) && i != model.TargetColumn()) reading.fvMayLack.push_back(i);
    }
    embedded::LayoutRecords records =
        ReadByLayout(data, model.Layout(), reading, options.fDataPath);
    MCStopProcessor stop(0.0);
    model.Engine().SetInterruptSource(&stop);
    const NBStatus status = model.Engine().UpdateModel(records, -1);
    progress.reset();
    if (status.IsError()) {
        Fail("cannot update " + options.fModel.fState + " with " + options.fDataPath, status,
             model);
    }
    // The engine has rewound the records, and they count what they deliver.
    while (records.Next() != nullptr) {
    }
    TellUnknownValues(records, model.Layout());
    WriteModel(options, model);
    return kDone;
}

ExitStatus MergeCommand(const ProgramOptions& options) {
    CheckOutputPaths(OutputsOf(options), {});
    SavedModel model(options.fModel.fvStates.front());
    for (std::size_t i = 1; i < options.fModel.fvStates.size(); ++i) {
        const SavedModel other(options.fModel.fvStates[i]);
        const NBStatus status = model.Engine().MergeModel(other.Engine(), true);
        if (status.IsError()) {
            Fail("cannot merge " + other.Path() + " into " + model.Path(), status, model);
        }
    }
    model.RefreshValues();
    WriteModel(options, model);
    return kDone;
}

}  // namespace app
