#include "embedded/files/ModelFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

namespace embedded {
namespace {

[[noreturn]] void Fail() { throw std::system_error(errno, std::generic_category()); }

void Sync(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) Fail();
    const bool synced = fsync(descriptor) == 0;
    const int reason = errno;
    close(descriptor);
    if (!synced) throw std::system_error(reason, std::generic_category());
}

// What a new file may be read and written by, or the mode of the file that it replaces.
mode_t ModeFor(const std::string& path) {
    struct stat existing {};
    if (stat(path.c_str(), &existing) == 0) return existing.st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

ModelFiles::~ModelFiles() {
    for (const Pending& file : fvPending) unlink(file.fTemporary.c_str());
}

std::string ModelFiles::Place(const std::string& path) {
    std::error_code fault;
    const std::filesystem::path target = std::filesystem::weakly_canonical(path, fault);
    if (fault) throw std::system_error(fault);
    if (std::filesystem::is_directory(target)) {
        throw std::system_error(EISDIR, std::generic_category());
    }
    std::string temporary = (target.parent_path() / ".predselect-XXXXXX").string();
    const int descriptor = mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) Fail();
    fvPending.push_back({target.string(), temporary});
    const bool ready = fchmod(descriptor, ModeFor(target.string())) == 0;
    if (close(descriptor) != 0 || !ready) Fail();
    return temporary;
}

void ModelFiles::Commit() {
    while (!fvPending.empty()) {
        const Pending& file = fvPending.front();
        Sync(file.fTemporary);
        if (rename(file.fTemporary.c_str(), file.fPath.c_str()) != 0) Fail();
        fvPending.erase(fvPending.begin());
    }
}

}  // namespace embedded
