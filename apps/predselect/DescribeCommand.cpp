#include <optional>
#include <string>

#include "apps/predselect/OutputFiles.h"
#include "apps/predselect/OutputPaths.h"
#include "apps/predselect/ProgressLine.h"
#include "apps/predselect/RunCommand.h"
#include "apps/predselect/Signals.h"
#include "apps/predselect/Terminal.h"
#include "embedded/data/Describe.h"
#include "embedded/data/OpenDataSet.h"

namespace app {
namespace {

// Where the draft goes; empty when none is asked for. A path that was not spelled out never
// replaces a dictionary: somebody may have written that one by hand.
std::string DraftPath(const ProgramOptions& options) {
    if (!options.fWriteSchema || !options.fWriteSchema->empty()) {
        return options.fWriteSchema.value_or("");
    }
    if (options.fDataPath == "-") {
        throw ProgramError(kWrongUse,
                           "--write-schema needs a file name when the data come from standard "
                           "input; write --write-schema=FILE");
    }
    std::string path = options.fDataPath + ".schema.json";
    if (FileExists(path)) {
        throw ProgramError(
            kWrongUse, path + " exists already; write --write-schema=" + path + " to replace it");
    }
    return path;
}

embedded::DataSet Open(const ProgramOptions& options) {
    std::optional<ProgressLine> progress;
    if (ProgressIsSeen()) progress.emplace().Show("Reading " + options.fDataPath);
    return embedded::OpenDataSet(options.fDataPath, options.fOpen);
}

}  // namespace

ExitStatus DescribeCommand(const ProgramOptions& options) {
    const std::string draftPath = DraftPath(options);
    CheckOutputPaths({{"--write-schema", draftPath}, {"--json", options.fbDescribeJson ? "-" : ""}},
                     {{"the data file", options.fDataPath}});
    const embedded::DataSet data = Open(options);
    StopThroughCommands();
    OutputFiles files;
    if (!draftPath.empty()) files.Add(draftPath, embedded::DraftSchema(data));
    if (options.fbDescribeJson) {
        files.Add("-", embedded::DescribeAsJson(data));
    } else if (draftPath != "-") {
        files.Add("-", embedded::DescribeAsText(data, TextWidth(options.fOutput.fWidth)));
    }
    files.Commit();
    return kDone;
}

}  // namespace app
