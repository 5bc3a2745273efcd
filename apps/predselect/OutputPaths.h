#ifndef PREDSEL_APPS_OUTPUTPATHS_H
#define PREDSEL_APPS_OUTPUTPATHS_H

#include <string>
#include <vector>

namespace app {

/// A path of the command line and what it is there, for messages: "--json" or "the data file". An
/// empty path was not given; "-" is standard input or output.
struct NamedPath {
    std::string fName;
    std::string fPath;
};

/// The data file and its dictionary, which no output may replace.
std::vector<NamedPath> DataPaths(const std::string& data, const std::string& schema);

/// The first of them that is at the place of this path, "-" included; null when none is. A device
/// or a pipe is at no place.
const NamedPath* FindPlace(const std::string& path, const std::vector<NamedPath>& paths);

/// Before work is spent on them: throws ProgramError when an output cannot be put in its place
/// (kFileFault: no such directory, no permission, a directory there), or when it is the place of an
/// input, of another output, or standard output is asked for twice (kWrongUse).
void CheckOutputPaths(const std::vector<NamedPath>& outputs, const std::vector<NamedPath>& inputs);

bool FileExists(const std::string& path);

/// What a failed writing is told as: "cannot write PATH: why; how to mend it". error is an errno.
[[noreturn]] void FailToWrite(const std::string& path, int error);

/// The directory of a path, "." when it names none.
std::string DirectoryOf(const std::string& path);

/// The file that a link stands for, and the path itself where there is no link: what gets replaced
/// is the file.
std::string ResolvedPath(const std::string& path);

}  // namespace app

#endif  // PREDSEL_APPS_OUTPUTPATHS_H
