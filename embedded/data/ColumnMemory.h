#ifndef PREDSEL_EMBEDDED_DATA_COLUMNMEMORY_H
#define PREDSEL_EMBEDDED_DATA_COLUMNMEMORY_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

namespace embedded {

/// What the columns of a data set may take in memory, and the temporary file that holds what is
/// beyond it. The file has no name once it is made, so that nothing is left behind however the
/// process ends. Any thread.
class ColumnMemory {
 public:
    /// limit in bytes; 0: half of what the machine has. The file is made when it is needed, in the
    /// folder that TMPDIR names now, else in /tmp.
    explicit ColumnMemory(std::int64_t limit = 0);
    ~ColumnMemory();
    ColumnMemory(const ColumnMemory&) = delete;
    ColumnMemory& operator=(const ColumnMemory&) = delete;

    std::int64_t Limit() const { return fLimit; }
    /// Counts bytes that are to be held in memory; false, and nothing counted, when that is beyond
    /// the limit.
    bool Take(std::int64_t bytes);
    void GiveBack(std::int64_t bytes) { fTaken -= bytes; }

    /// Appends to the file and returns the place. Throws DataError of kind kFile when there is no
    /// room or no such folder.
    std::int64_t Write(const void* bytes, std::size_t size);
    void Read(std::int64_t place, void* out, std::size_t size) const;
    /// What was written there is not needed any more.
    void Forget(std::int64_t place, std::int64_t size) noexcept;

 private:
    void OpenFile();
    [[noreturn]] void Fail(const char* what, int error) const;

    std::int64_t fLimit;
    std::string fFolder;
    std::atomic<std::int64_t> fTaken = 0;
    std::once_flag fOpened;
    int fFile = -1;
    std::atomic<std::int64_t> fEnd = 0;  // of what has been written
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_COLUMNMEMORY_H
