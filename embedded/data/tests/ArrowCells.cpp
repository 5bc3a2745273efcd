#include "embedded/data/tests/ArrowCells.h"

#include <arrow/api.h>
#include <arrow/csv/api.h>
#include <arrow/io/api.h>

#include <algorithm>
#include <limits>
#include <memory>

#include "embedded/data/FileReadersArrow.h"

namespace embedded {
namespace {

/// The bytes in blocks that never part a carriage return from its line feed: the library takes the
/// line feed at the start of a block for the rest of a line end, within quotes too, and drops it.
class TextInput : public arrow::io::InputStream {
 public:
    explicit TextInput(std::string_view bytes) : fBytes(bytes) {}

    arrow::Status Close() override {
        fbClosed = true;
        return arrow::Status::OK();
    }
    bool closed() const override { return fbClosed; }
    arrow::Result<std::int64_t> Tell() const override {
        return static_cast<std::int64_t>(fPosition);
    }
    arrow::Result<std::int64_t> Read(std::int64_t count, void* out) override {
        const std::string_view block = Take(count, false);
        std::copy(block.begin(), block.end(), static_cast<char*>(out));
        return static_cast<std::int64_t>(block.size());
    }
    arrow::Result<std::shared_ptr<arrow::Buffer>> Read(std::int64_t count) override {
        const std::string_view block = Take(count, true);
        return std::make_shared<arrow::Buffer>(reinterpret_cast<const std::uint8_t*>(block.data()),
                                               static_cast<std::int64_t>(block.size()));
    }

 private:
    std::string_view Take(std::int64_t count, bool mayBeLonger) {
        std::size_t length = std::min(static_cast<std::size_t>(count), fBytes.size() - fPosition);
        const std::size_t end = fPosition + length;
        if (length > 0 && end < fBytes.size() && fBytes[end - 1] == '\r' && fBytes[end] == '\n') {
            if (length > 1) {
                --length;
            } else if (mayBeLonger) {
                ++length;
            }
        }
        const std::string_view block = fBytes.substr(fPosition, length);
        fPosition += length;
        return block;
    }

    std::string_view fBytes;
    std::size_t fPosition = 0;
    bool fbClosed = false;
};

}  // namespace

ArrowStream ReadCells(std::string_view text, const TextDialect& dialect, std::int32_t columns,
                      const std::vector<std::int32_t>& wanted, std::int64_t longestRecord,
                      std::int32_t blockBytes, const std::string& name) {
    arrow::csv::ReadOptions reading = arrow::csv::ReadOptions::Defaults();
    reading.use_threads = false;
    // A record must fit into a block.
    reading.block_size = static_cast<std::int32_t>(std::clamp<std::int64_t>(
        longestRecord + 2, blockBytes, std::numeric_limits<std::int32_t>::max()));
    for (std::int32_t column = 0; column < columns; ++column) {
        reading.column_names.push_back(std::to_string(column));
    }
    arrow::csv::ParseOptions parsing = arrow::csv::ParseOptions::Defaults();
    parsing.delimiter = dialect.fDelimiter;
    parsing.quoting = dialect.fQuote != '\0';
    parsing.quote_char = dialect.fQuote;
    parsing.newlines_in_values = true;
    // All columns as bytes: types are settled over whole columns, by the caller.
    arrow::csv::ConvertOptions converting = arrow::csv::ConvertOptions::Defaults();
    converting.check_utf8 = false;
    converting.strings_can_be_null = true;
    converting.quoted_strings_can_be_null = false;
    converting.null_values = {""};
    for (const std::int32_t column : wanted) {
        converting.include_columns.push_back(std::to_string(column));
        converting.column_types[std::to_string(column)] = arrow::binary();
    }
    return ArrowBatches(name, "the text", [&]() -> ReaderResult {
        ARROW_ASSIGN_OR_RAISE(std::shared_ptr<arrow::RecordBatchReader> reader,
                              arrow::csv::StreamingReader::Make(arrow::io::default_io_context(),
                                                                std::make_shared<TextInput>(text),
                                                                reading, parsing, converting));
        return reader;
    });
}

}  // namespace embedded
