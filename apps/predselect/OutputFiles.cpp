#include "apps/predselect/OutputFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>

#include "apps/predselect/OutputPaths.h"
#include "apps/predselect/ProgramError.h"
#include "apps/predselect/Signals.h"

namespace app {
namespace {

// An open file descriptor. Closing it can fail on some file systems, which Close tells.
class Descriptor {
 public:
    explicit Descriptor(int number) : fNumber(number) {}
    ~Descriptor() {
        if (fNumber >= 0) close(fNumber);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Number() const { return fNumber; }
    bool Close() {
        const int number = fNumber;
        fNumber = -1;
        return close(number) == 0;
    }

 private:
    int fNumber;
};

// False with errno; EINTR when a signal has asked the program to end. A write that a signal cuts
// short is no error in itself.
bool WriteAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        if (Interrupted()) {
            errno = EINTR;
            return false;
        }
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

// So that the rename itself survives a power cut. Some file systems cannot sync a directory.
void SyncDirectory(const std::string& directory) {
    const Descriptor descriptor(open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.Number() >= 0) fsync(descriptor.Number());
}

// What a new file may be read and written by, or the mode of the file that it replaces.
mode_t ModeFor(const std::string& path) {
    struct stat existing {};
    if (stat(path.c_str(), &existing) == 0) return existing.st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// A device or a pipe, which cannot be replaced but written to.
bool IsStream(const std::string& path) {
    struct stat existing {};
    return path == "-" || (stat(path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode));
}

void WriteStream(const std::string& path, std::string_view content) {
    if (path == "-") {
        WriteStandardOutput(content);
        return;
    }
    Descriptor stream(open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (stream.Number() < 0 || !WriteAll(stream.Number(), content) || !stream.Close()) {
        FailToWrite(path, errno);
    }
}

std::string TemporaryDirectory() {
    const char* named = std::getenv("TMPDIR");
    return named != nullptr && access(named, W_OK | X_OK) == 0 ? named : "/tmp";
}

std::string ReadAll(int descriptor) {
    std::string content;
    std::array<char, 65536> piece;
    for (;;) {
        const ssize_t size = read(descriptor, piece.data(), piece.size());
        if (size > 0) content.append(piece.data(), static_cast<std::size_t>(size));
        if (size == 0 || (size < 0 && errno != EINTR)) return content;
    }
}

}  // namespace

OutputFiles::~OutputFiles() {
    for (const Pending& file : fvPending) unlink(file.fTemporary.c_str());
}

void OutputFiles::Add(const std::string& path, std::string_view content) {
    if (IsStream(path)) {
        fvStreams.push_back({path, std::string(content)});
        return;
    }
    const std::string target = ResolvedPath(path);
    std::string temporary = DirectoryOf(target) + "/.predselect-XXXXXX";
    Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (file.Number() < 0) FailToWrite(path, errno);
    fvPending.push_back({target, temporary, true, false});
    if (fchmod(file.Number(), ModeFor(target)) != 0 || !WriteAll(file.Number(), content) ||
        fsync(file.Number()) != 0 || !file.Close()) {
        FailToWrite(path, errno);
    }
}

int OutputFiles::TryPlace(const std::string& path, std::string& temporaryOut) {
    const bool isStream = IsStream(path);
    const std::string target = isStream ? path : ResolvedPath(path);
    temporaryOut = (isStream ? TemporaryDirectory() : DirectoryOf(target)) + "/.predselect-XXXXXX";
    const Descriptor file(mkostemp(temporaryOut.data(), O_CLOEXEC));
    if (file.Number() < 0) return errno;
    fvPending.push_back({target, temporaryOut, false, isStream});
    return isStream || fchmod(file.Number(), ModeFor(target)) == 0 ? 0 : errno;
}

std::string OutputFiles::Place(const std::string& path) {
    std::string temporary;
    if (const int error = TryPlace(path, temporary)) FailToWrite(path, error);
    return temporary;
}

// Brings what others have written to the disk, or to where the streams wait.
void OutputFiles::Complete() {
    for (Pending& file : fvPending) {
        if (file.fbComplete) continue;
        const Descriptor written(open(file.fTemporary.c_str(), O_RDONLY | O_CLOEXEC));
        if (written.Number() < 0) FailToWrite(file.fPath, errno);
        if (file.fbStream) {
            fvStreams.push_back({file.fPath, ReadAll(written.Number())});
        } else if (fsync(written.Number()) != 0) {
            FailToWrite(file.fPath, errno);
        }
        file.fbComplete = true;
    }
}

void OutputFiles::Commit() {
    if (Interrupted()) throw ProgramError(kInterrupted, "interrupted");
    Complete();
    for (const Stream& stream : fvStreams) WriteStream(stream.fPath, stream.fContent);
    fvStreams.clear();
    while (!fvPending.empty()) {
        const Pending& file = fvPending.front();
        if (file.fbStream) {
            unlink(file.fTemporary.c_str());
            fvPending.erase(fvPending.begin());
            continue;
        }
        if (rename(file.fTemporary.c_str(), file.fPath.c_str()) != 0) {
            FailToWrite(file.fPath, errno);
        }
        SyncDirectory(DirectoryOf(file.fPath));
        fvPending.erase(fvPending.begin());
    }
}

void WriteStandardOutput(std::string_view text) {
    if (!WriteAll(STDOUT_FILENO, text) && errno != EPIPE) FailToWrite("standard output", errno);
}

void FillStandardStreams() {
    // open gives the lowest number that is free.
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number) {
        if (fcntl(number, F_GETFD) == -1) open("/dev/null", O_RDWR);
    }
}

}  // namespace app
