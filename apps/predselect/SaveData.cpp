#include "apps/predselect/SaveData.h"

#include <fstream>

#include "apps/predselect/ProgramError.h"
#include "apps/predselect/Terminal.h"
#include "embedded/data/DataError.h"
#include "embedded/data/Describe.h"
#include "embedded/data/SaveDataSet.h"

namespace app {
namespace {

embedded::SaveFormat FormatOf(const std::string& path) {
    return path == "-" ? embedded::SaveFormat::kCsv : embedded::SaveFormatOf(path);
}

// Empty when none is to be written.
std::string DictionaryPath(const ProgramOptions& options) {
    const std::string& path = options.fOutput.fSave;
    if (path.empty() || path == "-") return {};
    const bool hasDictionary =
        !options.fOpen.fSchemaPath.empty() ||
        (options.fDataPath != "-" && FileExists(options.fDataPath + ".schema.json"));
    return hasDictionary ? path + ".schema.json" : std::string();
}

}  // namespace

std::vector<NamedPath> SavedPaths(const ProgramOptions& options) {
    if (options.fOutput.fSave.empty()) return {};
    FormatOf(options.fOutput.fSave);
    return {{"--save", options.fOutput.fSave},
            {"the dictionary of --save", DictionaryPath(options)}};
}

void SaveData(const embedded::DataSet& data, const ProgramOptions& options, OutputFiles& files) {
    const std::string& path = options.fOutput.fSave;
    if (path.empty()) return;
    std::ofstream file(files.Place(path), std::ios::binary);
    try {
        embedded::SaveDataSet(data, FormatOf(path), file,
                              path == "-" ? "standard output" : OneLine(path),
                              options.fOpen.fThreads);
    } catch (const embedded::DataError& error) {
        throw ProgramError(kFileFault,
                           std::string(error.what()) + "; free some space or choose another path");
    }
    const std::string dictionary = DictionaryPath(options);
    if (!dictionary.empty()) files.Add(dictionary, embedded::SchemaOf(data));
}

}  // namespace app
