#include <arrow/api.h>
#include <arrow/c/bridge.h>
#include <arrow/io/api.h>
#include <arrow/ipc/api.h>
#include <arrow/util/base64.h>
#include <arrow/util/compression.h>
#include <parquet/arrow/schema.h>
#include <parquet/column_writer.h>
#include <parquet/exception.h>
#include <parquet/file_writer.h>
#include <parquet/properties.h>
#include <parquet/schema.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "embedded/data/DataError.h"
#include "embedded/data/FileWriters.h"
#include "embedded/threads/ParallelTasks.h"

namespace embedded {
namespace {

class StreamOutput final : public arrow::io::OutputStream {
 public:
    explicit StreamOutput(std::ostream& stream) : fStream(stream) {}
    arrow::Status Close() override {
        fbClosed = true;
        return arrow::Status::OK();
    }
    bool closed() const override { return fbClosed; }
    arrow::Result<std::int64_t> Tell() const override { return fPosition; }
    using arrow::io::OutputStream::Write;
    arrow::Status Write(const void* bytes, std::int64_t count) override {
        if (!fStream.write(static_cast<const char*>(bytes), count)) {
            return arrow::Status::IOError(errno == 0 ? "the file takes no more"
                                                     : std::generic_category().message(errno));
        }
        fPosition += count;
        return arrow::Status::OK();
    }

 private:
    std::ostream& fStream;
    std::int64_t fPosition = 0;
    bool fbClosed = false;
};

arrow::Compression::type Compression() {
    return arrow::util::Codec::IsAvailable(arrow::Compression::ZSTD)
               ? arrow::Compression::ZSTD
               : arrow::Compression::UNCOMPRESSED;
}

using Reader = std::shared_ptr<arrow::RecordBatchReader>;
using Sink = std::shared_ptr<arrow::io::OutputStream>;

// Writer has WriteRecordBatch and Close.
template <class Writer>
arrow::Status WriteAll(const Reader& reader, Writer& writer) {
    while (true) {
        ARROW_ASSIGN_OR_RAISE(const std::shared_ptr<arrow::RecordBatch> batch, reader->Next());
        if (batch == nullptr) break;
        ARROW_RETURN_NOT_OK(writer.WriteRecordBatch(*batch));
    }
    return writer.Close();
}

// Rows of a row group: large enough for a dictionary to pay, small enough for the columns of one
// to be kept until all are encoded.
constexpr std::int32_t kGroupChunks = 4;

// The last page of a column is left to the thread that closes the row group.
constexpr std::int64_t kPageBytes = 1 << 18;

void Require(const arrow::Status& status) {
    if (!status.ok()) throw parquet::ParquetStatusException(status);
}

template <class Value>
Value Require(arrow::Result<Value> result) {
    Require(result.status());
    return std::move(result).ValueUnsafe();
}

std::shared_ptr<arrow::DataType> CodeType(std::int32_t bytes) {
    if (bytes == 1) return arrow::uint8();
    return bytes == 2 ? arrow::uint16() : arrow::uint32();
}

// One column of the row groups of a Parquet file.
class ParquetColumn {
 public:
    ParquetColumn(const ArrowColumns& columns, std::int32_t index,
                  std::shared_ptr<arrow::DataType> type,
                  const parquet::ArrowWriterProperties& properties)
        : fColumns(columns),
          fIndex(index),
          fType(std::move(type)),
          fContext(arrow::default_memory_pool(),
                   const_cast<parquet::ArrowWriterProperties*>(&properties)),
          fbScattered(columns.IsScattered(index)) {}

    bool IsScattered() const { return fbScattered; }

    void Write(std::int32_t firstChunk, std::int32_t endChunk, parquet::ColumnWriter& writer) {
        const bool coded = fColumns.IsText(fIndex) && !fbScattered;
        if (coded && fpTexts == nullptr) {
            ArrowArray texts{};
            fColumns.Texts(fIndex, texts);
            fpTexts = Require(arrow::ImportArray(&texts, fType));
        }
        for (std::int32_t chunk = firstChunk; chunk < endChunk; ++chunk) {
            const std::shared_ptr<arrow::Array> rows = coded ? Coded(chunk) : Plain(chunk);
            SetLevels(*rows);
            Require(writer.WriteArrow(fvLevels.data(), nullptr, rows->length(), *rows, &fContext,
                                      true));
        }
        // Not closed: that is the row group's, as it writes to the file.
    }

 private:
    std::shared_ptr<arrow::Array> Plain(std::int32_t chunk) const {
        ArrowArray rows{};
        fColumns.Chunk(fIndex, chunk, rows);
        return Require(arrow::ImportArray(&rows, fType));
    }

    std::shared_ptr<arrow::Array> Coded(std::int32_t chunk) const {
        // Asked first, as what is asked last alone stays valid.
        const auto codes = CodeType(fColumns.CodeBytes(fIndex));
        ArrowArray rows{};
        fColumns.Codes(fIndex, chunk, rows);
        return std::make_shared<arrow::DictionaryArray>(
            arrow::dictionary(codes, fType), Require(arrow::ImportArray(&rows, codes)), fpTexts);
    }

    // 1 where a value is there.
    void SetLevels(const arrow::Array& rows) {
        fvLevels.assign(static_cast<std::size_t>(rows.length()), 1);
        if (rows.null_count() == 0) return;
        const std::uint8_t* const bits = rows.null_bitmap_data();
        for (std::size_t row = 0; row < fvLevels.size(); ++row) {
            fvLevels[row] = static_cast<std::int16_t>((bits[row / 8] >> (row % 8)) & 1);
        }
    }

    const ArrowColumns& fColumns;
    std::int32_t fIndex;
    std::shared_ptr<arrow::DataType> fType;
    std::shared_ptr<arrow::Array> fpTexts;
    parquet::ArrowWriteContext fContext;
    bool fbScattered;
    std::vector<std::int16_t> fvLevels;
};

arrow::Status AsParquet(const ArrowColumns& columns, const Sink& sink, std::int32_t threads) {
    ArrowSchema exported{};
    columns.Schema(exported);
    ARROW_ASSIGN_OR_RAISE(const auto schema, arrow::ImportSchema(&exported));
    // The types as they are, where Parquet's own are coarser.
    const auto types = parquet::ArrowWriterProperties::Builder().store_schema()->build();
    ARROW_ASSIGN_OR_RAISE(const auto bytes, arrow::ipc::SerializeSchema(*schema));
    const auto metadata = arrow::key_value_metadata(
        {"ARROW:schema"}, {arrow::util::base64_encode(std::string_view(*bytes))});

    std::vector<ParquetColumn> writers;
    writers.reserve(static_cast<std::size_t>(columns.ColumnCount()));
    parquet::WriterProperties::Builder builder;
    builder.compression(Compression())->write_batch_size(8192)->data_pagesize(kPageBytes);
    for (std::int32_t i = 0; i < columns.ColumnCount(); ++i) {
        writers.emplace_back(columns, i, schema->field(i)->type(), *types);
        if (writers.back().IsScattered()) {
            builder.disable_dictionary(std::make_shared<parquet::schema::ColumnPath>(
                std::vector<std::string>{schema->field(i)->name()}));
        }
    }
    const auto properties = builder.build();
    std::shared_ptr<parquet::SchemaDescriptor> nodes;
    ARROW_RETURN_NOT_OK(parquet::arrow::ToParquetSchema(schema.get(), *properties, *types, &nodes));
    const auto root = std::static_pointer_cast<parquet::schema::GroupNode>(nodes->schema_root());
    const auto file = parquet::ParquetFileWriter::Open(sink, root, properties, metadata);
    for (std::int32_t chunk = 0; chunk < columns.ChunkCount(); chunk += kGroupChunks) {
        const std::int32_t end = std::min(chunk + kGroupChunks, columns.ChunkCount());
        parquet::RowGroupWriter* const group = file->AppendBufferedRowGroup();
        RunTasks(threads, columns.ColumnCount(), [&](std::int32_t i) {
            writers[static_cast<std::size_t>(i)].Write(chunk, end, *group->column(i));
        });
        group->Close();
    }
    file->Close();
    return arrow::Status::OK();
}

arrow::Status AsIpcFile(const Reader& reader, const Sink& sink) {
    ARROW_ASSIGN_OR_RAISE(const auto writer, arrow::ipc::MakeFileWriter(sink, reader->schema()));
    return WriteAll(reader, *writer);
}

// Runs a writer; its faults come out as DataError.
template <class WriteTo>
void Write(std::ostream& file, const std::string& name, WriteTo writeTo) {
    const auto all = [&]() -> arrow::Status {
        // Some faults of the library are exceptions.
        try {
            return writeTo(std::make_shared<StreamOutput>(file));
        } catch (const DataError&) {
            throw;
        } catch (const parquet::ParquetStatusException& fault) {
            return fault.status();
        } catch (const std::exception& fault) {
            return arrow::Status::UnknownError(fault.what());
        }
    };
    const arrow::Status status = all();
    if (status.ok()) return;
    std::string reason = status.message();
    reason.erase(std::min(reason.find('\n'), reason.size()));
    throw DataError(DataError::Kind::kFile, name + ": cannot be written: " + reason);
}

}  // namespace

void WriteParquet(const ArrowColumns& columns, std::ostream& file, const std::string& name,
                  std::int32_t threads) {
    Write(file, name, [&](const Sink& sink) { return AsParquet(columns, sink, threads); });
}

void WriteIpcFile(ArrowArrayStream& stream, std::ostream& file, const std::string& name) {
    const auto release = [](ArrowArrayStream* of) {
        if (of->release != nullptr) of->release(of);
    };
    const std::unique_ptr<ArrowArrayStream, decltype(release)> owner(&stream, release);
    Write(file, name, [&](const Sink& sink) -> arrow::Status {
        ARROW_ASSIGN_OR_RAISE(const Reader reader, arrow::ImportRecordBatchReader(&stream));
        return AsIpcFile(reader, sink);
    });
}

}  // namespace embedded
