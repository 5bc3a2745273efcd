#include "embedded/data/SourceBytes.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "embedded/data/DataError.h"

namespace embedded {
namespace {

[[noreturn]] void Fail(const std::string& path, int error) {
    std::string text = path + ": cannot be read: ";
    switch (error) {
        case ENOENT:
            text = path + ": no such file; check the path";
            break;
        case EACCES:
        case EPERM:
            text += "permission denied; ask the owner for the right to read it";
            break;
        case EISDIR:
            text += "it is a directory; name a file in it";
            break;
        default:
            text += std::strerror(error);
    }
    throw DataError(DataError::Kind::kFile, text);
}

class Descriptor {
 public:
    Descriptor(const std::string& path, bool standardInput)
        : fNumber(standardInput ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)),
          fbOwned(!standardInput) {
        if (fNumber < 0) {
            Fail(path, errno);
        }
    }
    ~Descriptor() {
        if (fbOwned) {
            close(fNumber);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int Number() const { return fNumber; }

 private:
    int fNumber;
    bool fbOwned;
};

}  // namespace

SourceBytes::SourceBytes(const std::string& path) {
    const bool standardInput = path == "-";
    const std::string name = standardInput ? "standard input" : path;
    const Descriptor file(path, standardInput);
    struct stat status {};
    if (fstat(file.Number(), &status) != 0) {
        Fail(name, errno);
    }
    if (S_ISDIR(status.st_mode)) {
        Fail(name, EISDIR);
    }
    // Standard input may be an ordinary file that somebody has begun to read: it is read on.
    if (S_ISREG(status.st_mode) && !standardInput && status.st_size > 0) {
        fSize = static_cast<std::size_t>(status.st_size);
        fpMapped = mmap(nullptr, fSize, PROT_READ, MAP_PRIVATE, file.Number(), 0);
        if (fpMapped != MAP_FAILED) {
            return;
        }
        fpMapped = nullptr;
    }
    constexpr std::size_t kStep = 1U << 20U;
    while (true) {
        const std::size_t filled = fRead.size();
        fRead.resize(filled + kStep);
        const ssize_t count = read(file.Number(), fRead.data() + filled, kStep);
        fRead.resize(filled + (count > 0 ? static_cast<std::size_t>(count) : 0));
        if (count == 0) {
            return;
        }
        if (count < 0 && errno != EINTR) {
            Fail(name, errno);
        }
    }
}

void SourceBytes::GiveBack(std::string_view part) const {
    const auto* const begin = static_cast<const char*>(fpMapped);
    if (begin == nullptr || part.data() < begin || part.data() >= begin + fSize) {
        return;
    }
    static const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    // The page at the end may be in use by whoever reads on; it is given back with what follows.
    const std::size_t first = static_cast<std::size_t>(part.data() - begin) / page * page;
    const std::size_t end =
        (static_cast<std::size_t>(part.data() - begin) + part.size()) / page * page;
    if (end > first) {
        madvise(static_cast<char*>(fpMapped) + first, end - first, MADV_DONTNEED);
    }
}

SourceBytes::~SourceBytes() {
    if (fpMapped != nullptr) {
        munmap(fpMapped, fSize);
    }
}

}  // namespace embedded
