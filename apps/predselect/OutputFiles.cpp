#include "apps/predselect/OutputFiles.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "apps/predselect/ProgramError.h"

namespace app {
namespace {

[[noreturn]] void Fail(const std::string& path, int error) {
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

bool WriteAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(descriptor, text.data(), text.size());
        if (written < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
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

// A link is written through: its target is what gets replaced.
std::string ResolvedPath(const std::string& path) {
    std::error_code error;
    const auto resolved = std::filesystem::canonical(path, error);
    return error ? path : resolved.string();
}

}  // namespace

void CheckWritable(const std::string& path) {
    if (path.empty() || path == "-") return;
    struct stat existing {};
    if (stat(path.c_str(), &existing) == 0) {
        if (S_ISDIR(existing.st_mode)) Fail(path, EISDIR);
        if (!S_ISREG(existing.st_mode)) return;
    }
    const std::string directory = DirectoryOf(ResolvedPath(path));
    if (stat(directory.c_str(), &existing) != 0) Fail(path, errno);
    if (!S_ISDIR(existing.st_mode)) Fail(path, ENOTDIR);
    if (access(directory.c_str(), W_OK | X_OK) != 0) Fail(path, errno);
}

OutputFiles::~OutputFiles() {
    for (const Pending& file : fvPending) unlink(file.fTemporary.c_str());
}

void OutputFiles::Add(const std::string& path, std::string_view content) {
    if (path == "-") {
        fStandardOutput += content;
        return;
    }
    const std::string target = ResolvedPath(path);
    struct stat existing {};
    if (stat(target.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode)) {
        // A device or pipe cannot be replaced: it is written to.
        Descriptor device(open(target.c_str(), O_WRONLY | O_CLOEXEC));
        if (device.Number() < 0 || !WriteAll(device.Number(), content) || !device.Close()) {
            Fail(path, errno);
        }
        return;
    }
    std::string temporary = target + ".XXXXXX";
    Descriptor file(mkostemp(temporary.data(), O_CLOEXEC));
    if (file.Number() < 0) Fail(path, errno);
    fvPending.push_back({target, temporary});
    if (fchmod(file.Number(), ModeFor(target)) != 0 || !WriteAll(file.Number(), content) ||
        fsync(file.Number()) != 0 || !file.Close()) {
        Fail(path, errno);
    }
}

void OutputFiles::Commit() {
    while (!fvPending.empty()) {
        const Pending& file = fvPending.front();
        if (rename(file.fTemporary.c_str(), file.fPath.c_str()) != 0) Fail(file.fPath, errno);
        SyncDirectory(DirectoryOf(file.fPath));
        fvPending.erase(fvPending.begin());
    }
    WriteStandardOutput(fStandardOutput);
    fStandardOutput.clear();
}

void WriteStandardOutput(std::string_view text) {
    if (!WriteAll(STDOUT_FILENO, text) && errno != EPIPE) Fail("standard output", errno);
}

}  // namespace app
