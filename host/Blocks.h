#ifndef PREDSEL_HOST_BLOCKS_H
#define PREDSEL_HOST_BLOCKS_H

#include <cstdint>
#include <functional>
#include <span>
#include <variant>
#include <vector>

namespace MCCommon {

/// One column of some consecutive records: numbers as a record holds them, MCMV::gMissingValue
/// where missing; or category codes moved up by one, so that 0 is missing, in the narrowest
/// unsigned integer that holds them.
struct BlockColumn {
    using Bytes = std::span<const std::uint8_t>;
    using Shorts = std::span<const std::uint16_t>;
    using Words = std::span<const std::uint32_t>;
    using Numbers = std::span<const double>;

    std::variant<Bytes, Shorts, Words, Numbers> fValues;
    /// Of codes: every entry is below it. At least 1.
    std::uint32_t fEntryEnd = 1;

    bool IsCategorical() const { return !std::holds_alternative<Numbers>(fValues); }
};

/// Consecutive records, column by column: value `row` of column `c` is what element `c` of the
/// record would be. All columns have fRows values.
struct RecordBlock {
    std::int32_t fRows = 0;
    std::vector<BlockColumn> fvColumns;
};

/// Runs tasks that touch nothing in common.
class BlockExecutor {
 public:
    virtual ~BlockExecutor() = default;
    /// Calls task(0) to task(count - 1), each once, in any order and side by side; returns when all
    /// are done. An exception of a task comes out here, that of the lowest number.
    virtual void Run(std::int32_t count, const std::function<void(std::int32_t)>& task) = 0;
};

/// Beside RecordIterator: the same records in blocks. An engine asks its source for this interface
/// and reads record by record where it is wanting.
class RecordBlockSource {
 public:
    virtual ~RecordBlockSource() = default;
    /// The next records, at most maxRows (above 0) of them and at least one; null at the end, with
    /// the fail reason of the iterator. Goes on where Next() stands and moves it. Valid until the
    /// following call on the source.
    virtual const RecordBlock* NextBlock(std::int32_t maxRows) = 0;
    /// Null when all is done on the caller's thread. Borrowed from the source.
    virtual BlockExecutor* GetExecutor() { return nullptr; }
};

}  // namespace MCCommon

#endif  // PREDSEL_HOST_BLOCKS_H
