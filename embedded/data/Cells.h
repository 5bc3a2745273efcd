#ifndef PREDSEL_EMBEDDED_DATA_CELLS_H
#define PREDSEL_EMBEDDED_DATA_CELLS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <utility>
#include <variant>
#include <vector>

#include "embedded/data/ColumnMemory.h"

namespace embedded {

/// Leaves what is resized without a value as it is: every row is written once, and the pages of a
/// large table need not be touched twice.
template <class T>
struct UnsetAllocator : std::allocator<T> {
    template <class U>
    struct rebind {
        using other = UnsetAllocator<U>;
    };
    template <class U>
    void construct(U* place) {
        ::new (static_cast<void*>(place)) U;
    }
    template <class U, class... Arguments>
    void construct(U* place, Arguments&&... arguments) {
        ::new (static_cast<void*>(place)) U(std::forward<Arguments>(arguments)...);
    }
};

/// Values of consecutive rows. resize(count) leaves new ones unset.
template <class T>
using Cells = std::vector<T, UnsetAllocator<T>>;

/// Codes of some rows in the narrowest unsigned integer that holds all entries of the column.
/// Entries are code + 1, and 0 where the row is system-missing.
using CodeVector = std::variant<Cells<std::uint8_t>, Cells<std::uint16_t>, Cells<std::uint32_t>>;

/// Calls the visitor with a zero of the narrowest type that holds entries up to the last one.
template <class Visitor>
decltype(auto) ForEntriesUpTo(std::size_t last, Visitor&& visitor) {
    if (last <= 0xFF) {
        return visitor(std::uint8_t{0});
    }
    if (last <= 0xFFFF) {
        return visitor(std::uint16_t{0});
    }
    return visitor(std::uint32_t{0});
}

/// Cells that have found their place: in memory, or in the file of the memory's budget.
template <class T>
class StoredCells {
 public:
    using Value = T;

    StoredCells() = default;
    /// Without a budget they stay in memory.
    StoredCells(Cells<T> cells, std::shared_ptr<ColumnMemory> memory)
        : fSize(cells.size()), fpMemory(std::move(memory)) {
        if (!fpMemory || fpMemory->Take(Bytes())) {
            fvHeld = std::move(cells);
        } else {
            fPlace = fpMemory->Write(cells.data(), fSize * sizeof(T));
        }
    }
    ~StoredCells() { Clear(); }
    StoredCells(StoredCells&& other) noexcept
        : fSize(std::exchange(other.fSize, 0)),
          fPlace(std::exchange(other.fPlace, -1)),
          fvHeld(std::move(other.fvHeld)),
          fpMemory(std::move(other.fpMemory)) {}
    StoredCells& operator=(StoredCells&& other) noexcept {
        if (this != &other) {
            Clear();
            fSize = std::exchange(other.fSize, 0);
            fPlace = std::exchange(other.fPlace, -1);
            fvHeld = std::move(other.fvHeld);
            fpMemory = std::move(other.fpMemory);
        }
        return *this;
    }

    std::size_t Size() const { return fSize; }
    bool IsInMemory() const { return fPlace < 0; }
    const std::shared_ptr<ColumnMemory>& Memory() const { return fpMemory; }
    /// `count` cells from `first` on; the buffer is used when they are in the file. Throws
    /// DataError when they cannot be read back.
    std::span<const T> Get(std::size_t first, std::size_t count, Cells<T>& buffer) const {
        if (fPlace < 0) {
            return std::span<const T>(fvHeld).subspan(first, count);
        }
        buffer.resize(count);
        fpMemory->Read(fPlace + static_cast<std::int64_t>(first * sizeof(T)), buffer.data(),
                       count * sizeof(T));
        return buffer;
    }
    /// Gives memory or file room back.
    void Clear() noexcept {
        if (fpMemory && fPlace < 0) {
            fpMemory->GiveBack(Bytes());
        } else if (fpMemory) {
            fpMemory->Forget(fPlace, Bytes());
        }
        fSize = 0;
        fPlace = -1;
        fvHeld = Cells<T>();
        fpMemory.reset();
    }

 private:
    std::int64_t Bytes() const { return static_cast<std::int64_t>(fSize * sizeof(T)); }

    std::size_t fSize = 0;
    std::int64_t fPlace = -1;  // in the file; -1 in memory
    Cells<T> fvHeld;
    std::shared_ptr<ColumnMemory> fpMemory;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_CELLS_H
