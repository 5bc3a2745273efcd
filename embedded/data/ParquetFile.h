#ifndef PREDSEL_EMBEDDED_DATA_PARQUETFILE_H
#define PREDSEL_EMBEDDED_DATA_PARQUETFILE_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/data/ArrowStream.h"
#include "embedded/data/ReadColumn.h"

namespace embedded {

/// A Parquet file, opened. Its fields are those of Schema(), by number from 0.
class ParquetFile {
 public:
    /// Told of bytes that have been read and are not needed for now. From any thread; may be empty.
    using GiveBack = std::function<void(std::string_view part)>;

    /// Borrows the bytes, which are not trusted. Throws DataError; a build without Apache Arrow has
    /// this in place of every reader. name stands for the source in messages.
    static std::unique_ptr<ParquetFile> Open(std::string_view bytes, const std::string& name,
                                             const GiveBack& giveBack = {});
    virtual ~ParquetFile() = default;

    /// The schema of the batches that Stream gives for all fields.
    virtual OwnedArrowSchema Schema() const = 0;
    /// As the file says; where its row groups say more than its total, as they do, but no more
    /// than 2^31 for each.
    virtual std::int64_t RowCount() const = 0;

    /// Reads fields straight from their pages, row groups and columns side by side: numbers,
    /// booleans and texts. Nothing for fields that are not wanted, of another form, or faulty in
    /// any way: they are for Stream, which says what the fault is. missingTexts are texts that are
    /// system-missing, by field. Throws DataError of kind kFile when the memory's file fails.
    virtual std::vector<std::optional<ReadColumn>> ReadPages(
        const std::vector<bool>& wanted, const std::vector<TextSet>& missingTexts,
        const std::shared_ptr<ColumnMemory>& memory, std::int32_t threads) const = 0;

    /// Batches of some fields, given in ascending order, each checked in full. Must not outlive the
    /// file.
    virtual ArrowStream Stream(const std::vector<std::int32_t>& fields) const = 0;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_PARQUETFILE_H
