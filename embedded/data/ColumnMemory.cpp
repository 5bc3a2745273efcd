#include "embedded/data/ColumnMemory.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "embedded/data/DataError.h"

namespace embedded {
namespace {

std::int64_t HalfOfTheMachine() {
    const std::int64_t pages = sysconf(_SC_PHYS_PAGES);
    const std::int64_t bytes = sysconf(_SC_PAGE_SIZE);
    return std::max<std::int64_t>(1, pages * bytes / 2);
}

std::string TemporaryFolder() {
    const char* folder = std::getenv("TMPDIR");
    return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

}  // namespace

ColumnMemory::ColumnMemory(std::int64_t limit)
    : fLimit(limit > 0 ? limit : HalfOfTheMachine()), fFolder(TemporaryFolder()) {}

ColumnMemory::~ColumnMemory() {
    if (fFile >= 0) {
        close(fFile);
    }
}

bool ColumnMemory::Take(std::int64_t bytes) {
    std::int64_t taken = fTaken;
    while (bytes <= fLimit - taken) {
        if (fTaken.compare_exchange_weak(taken, taken + bytes)) {
            return true;
        }
    }
    return false;
}

void ColumnMemory::Fail(const char* what, int error) const {
    throw DataError(DataError::Kind::kFile,
                    "the data need more than the memory allowed (" +
                        std::to_string(fLimit / (1 << 20)) + " MiB), and the temporary file in " +
                        fFolder + " " + what + ": " + std::strerror(error) +
                        "; allow more with --memory, or set TMPDIR to a folder with room");
}

void ColumnMemory::OpenFile() {
    std::string path = fFolder + "/predselect-XXXXXX";
    const int file = mkostemp(path.data(), O_CLOEXEC);
    if (file < 0) {
        Fail("cannot be made", errno);
    }
    unlink(path.c_str());
    fFile = file;
}

std::int64_t ColumnMemory::Write(const void* bytes, std::size_t size) {
    std::call_once(fOpened, [this] { OpenFile(); });
    const std::int64_t place = fEnd.fetch_add(static_cast<std::int64_t>(size));
    const char* at = static_cast<const char*>(bytes);
    std::int64_t to = place;
    while (size > 0) {
        const ssize_t count = pwrite(fFile, at, size, to);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            Fail("cannot be written", count < 0 ? errno : ENOSPC);
        }
        at += count;
        to += count;
        size -= static_cast<std::size_t>(count);
    }
    return place;
}

void ColumnMemory::Read(std::int64_t place, void* out, std::size_t size) const {
    char* at = static_cast<char*>(out);
    while (size > 0) {
        const ssize_t count = pread(fFile, at, size, place);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            Fail("cannot be read", count < 0 ? errno : EIO);
        }
        at += count;
        place += count;
        size -= static_cast<std::size_t>(count);
    }
}

void ColumnMemory::Forget(std::int64_t place, std::int64_t size) noexcept {
#ifdef FALLOC_FL_PUNCH_HOLE
    // Where this is not to be had, the room comes back when the file is closed.
    (void)fallocate(fFile, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, place, size);
#else
    (void)place;
    (void)size;
#endif
}

}  // namespace embedded
