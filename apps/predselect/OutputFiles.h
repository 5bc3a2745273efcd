#ifndef PREDSEL_APPS_OUTPUTFILES_H
#define PREDSEL_APPS_OUTPUTFILES_H

#include <string>
#include <string_view>
#include <vector>

namespace app {

/// The files of one run, all or none: each is written and synced under a temporary name beside its
/// place, and only when every one is complete are they renamed. What existed before stays until
/// then. Throws ProgramError (kFileFault); leftovers are removed.
class OutputFiles {
 public:
    OutputFiles() = default;
    ~OutputFiles();
    OutputFiles(const OutputFiles&) = delete;
    OutputFiles& operator=(const OutputFiles&) = delete;

    /// Writes the content that is to stand at the path. "-" is standard output, written by Commit.
    void Add(const std::string& path, std::string_view content);
    /// Puts all in place.
    void Commit();

 private:
    struct Pending {
        std::string fPath;
        std::string fTemporary;
    };
    std::vector<Pending> fvPending;
    std::string fStandardOutput;
};

/// Throws ProgramError (kFileFault) when a file could not be put at the path, before work is spent
/// on it: no such directory, no permission, a directory in its place.
void CheckWritable(const std::string& path);

/// Writes all of it. A reader that has gone away is no fault; any other is a ProgramError.
void WriteStandardOutput(std::string_view text);

}  // namespace app

#endif  // PREDSEL_APPS_OUTPUTFILES_H
