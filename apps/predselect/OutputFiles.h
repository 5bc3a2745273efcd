#ifndef PREDSEL_APPS_OUTPUTFILES_H
#define PREDSEL_APPS_OUTPUTFILES_H

#include <string>
#include <string_view>
#include <vector>

namespace app {

/// The outputs of one run. Files are written and synced under temporary names beside their places;
/// Commit puts them there when every one is complete, so that a run that fails leaves none and what
/// existed before stays. Throws ProgramError (kFileFault, or kInterrupted when a signal has come);
/// leftovers are removed.
class OutputFiles {
 public:
    OutputFiles() = default;
    ~OutputFiles();
    OutputFiles(const OutputFiles&) = delete;
    OutputFiles& operator=(const OutputFiles&) = delete;

    /// Takes the content that is to stand at the path. "-" is standard output.
    void Add(const std::string& path, std::string_view content);
    /// Gives the path of a new, empty file whose content, written by others before Commit, is to
    /// stand at the path.
    std::string Place(const std::string& path);
    /// The same without an exception: 0, or an errno.
    int TryPlace(const std::string& path, std::string& temporaryOut);
    /// Writes devices, pipes and standard output, which cannot be taken back, and then renames the
    /// files. Should a rename fail all the same, files renamed before it stay.
    void Commit();

 private:
    struct Pending {
        std::string fPath;
        std::string fTemporary;
        bool fbComplete = true;  // written and synced
        bool fbStream = false;   // to be copied there, not renamed
    };
    struct Stream {
        std::string fPath;
        std::string fContent;
    };
    void Complete();

    std::vector<Pending> fvPending;
    std::vector<Stream> fvStreams;
};

/// Writes all of it. A reader that has gone away is no fault; any other is a ProgramError.
void WriteStandardOutput(std::string_view text);

/// Opens /dev/null in the place of a standard stream that the process was started without, so that
/// no file that is opened later takes its number.
void FillStandardStreams();

}  // namespace app

#endif  // PREDSEL_APPS_OUTPUTFILES_H
