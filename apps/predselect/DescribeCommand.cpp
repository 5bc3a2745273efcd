#include "apps/predselect/OutputFiles.h"
#include "apps/predselect/RunCommand.h"
#include "apps/predselect/Terminal.h"
#include "embedded/data/Describe.h"
#include "embedded/data/OpenDataSet.h"

namespace app {

ExitStatus DescribeCommand(const ProgramOptions& options) {
    if (options.fWriteSchema) CheckWritable(*options.fWriteSchema);
    const embedded::DataSet data = embedded::OpenDataSet(options.fDataPath, options.fOpen);
    OutputFiles files;
    if (options.fWriteSchema) files.Add(*options.fWriteSchema, embedded::DraftSchema(data));
    if (options.fbDescribeJson) {
        files.Add("-", embedded::DescribeAsJson(data));
    } else if (!options.fWriteSchema || *options.fWriteSchema != "-") {
        files.Add("-", embedded::DescribeAsText(data, TextWidth(options.fOutput.fWidth)));
    }
    files.Commit();
    return kDone;
}

}  // namespace app
