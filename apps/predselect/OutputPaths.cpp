#include "apps/predselect/OutputPaths.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "apps/predselect/ProgramError.h"
#include "apps/predselect/Signals.h"

namespace app {
namespace {

bool IsGiven(const NamedPath& path) { return !path.fPath.empty(); }

bool IsFile(const NamedPath& path) { return IsGiven(path) && path.fPath != "-"; }

// The path without links and detours, of a file that need not exist.
std::filesystem::path Place(const std::string& path) {
    std::error_code error;
    const auto place = std::filesystem::absolute(path, error);
    const auto resolved = std::filesystem::weakly_canonical(place, error);
    return error ? place : resolved;
}

// Both stand for one place. Devices and pipes may be named as often as one likes.
bool IsSamePlace(const NamedPath& one, const NamedPath& other) {
    if (!IsFile(one) || !IsFile(other)) return false;
    struct stat existing {};
    if (stat(one.fPath.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode)) return false;
    return Place(one.fPath) == Place(other.fPath);
}

void CheckWritable(const std::string& path) {
    struct stat existing {};
    if (stat(path.c_str(), &existing) == 0) {
        if (S_ISDIR(existing.st_mode)) FailToWrite(path, EISDIR);
        if (access(path.c_str(), W_OK) != 0) FailToWrite(path, errno);
        if (!S_ISREG(existing.st_mode)) return;
    } else if (errno != ENOENT) {
        FailToWrite(path, errno);
    }
    const std::string directory = DirectoryOf(ResolvedPath(path));
    if (stat(directory.c_str(), &existing) != 0) FailToWrite(path, errno);
    if (access(directory.c_str(), W_OK | X_OK) != 0) FailToWrite(path, errno);
}

}  // namespace

std::vector<NamedPath> DataPaths(const std::string& data, const std::string& schema) {
    return {{"the data file", data},
            {"the dictionary of the data", schema.empty() ? data + ".schema.json" : schema}};
}

const NamedPath* FindPlace(const std::string& path, const std::vector<NamedPath>& paths) {
    const NamedPath wanted{"", path};
    for (const NamedPath& other : paths) {
        const bool bothStandard = path == "-" && other.fPath == "-";
        if (bothStandard || IsSamePlace(wanted, other)) return &other;
    }
    return nullptr;
}

void CheckOutputPaths(const std::vector<NamedPath>& outputs, const std::vector<NamedPath>& inputs) {
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        const NamedPath& output = outputs[i];
        for (const NamedPath& input : inputs) {
            if (!IsSamePlace(output, input)) continue;
            throw ProgramError(kWrongUse, fmt::format("{} {} would replace {}; choose another path",
                                                      output.fName, output.fPath, input.fName));
        }
        for (std::size_t k = 0; k < i; ++k) {
            const bool bothStandard = output.fPath == "-" && outputs[k].fPath == "-";
            if (!bothStandard && !IsSamePlace(output, outputs[k])) continue;
            throw ProgramError(kWrongUse,
                               fmt::format("{} and {} both go to {}; give each a path of its own",
                                           outputs[k].fName, output.fName,
                                           bothStandard ? "standard output" : output.fPath));
        }
    }
    for (const NamedPath& output : outputs) {
        if (IsFile(output)) CheckWritable(output.fPath);
    }
}

bool FileExists(const std::string& path) {
    struct stat existing {};
    return stat(path.c_str(), &existing) == 0;
}

void FailToWrite(const std::string& path, int error) {
    if (error == EINTR && Interrupted()) throw ProgramError(kInterrupted, "interrupted");
    const char* mend = "choose another path";
    switch (error) {
        case ENOENT:
            mend = "create the directory first";
            break;
        case EACCES:
        case EPERM:
        case EROFS:
            mend = "choose a path that may be written";
            break;
        case ENOSPC:
        case EDQUOT:
            mend = "free some space or choose another disk";
            break;
        default:
            break;
    }
    throw ProgramError(kFileFault,
                       fmt::format("cannot write {}: {}; {}", path, std::strerror(error), mend));
}

std::string DirectoryOf(const std::string& path) {
    const std::string parent = std::filesystem::path(path).parent_path().string();
    return parent.empty() ? "." : parent;
}

std::string ResolvedPath(const std::string& path) {
    std::error_code error;
    const auto resolved = std::filesystem::canonical(path, error);
    return error ? path : resolved.string();
}

}  // namespace app
