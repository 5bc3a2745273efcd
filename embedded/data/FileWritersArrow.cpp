#include <arrow/api.h>
#include <arrow/c/bridge.h>
#include <arrow/io/api.h>
#include <arrow/ipc/api.h>
#include <arrow/util/compression.h>
#include <parquet/arrow/writer.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <memory>
#include <ostream>
#include <system_error>

#include "embedded/data/DataError.h"
#include "embedded/data/FileWriters.h"

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

arrow::Status AsParquet(const Reader& reader, const Sink& sink) {
    parquet::WriterProperties::Builder properties;
    properties.compression(Compression());
    // The types as they are, where Parquet's own are coarser.
    const auto types = parquet::ArrowWriterProperties::Builder().store_schema()->build();
    ARROW_ASSIGN_OR_RAISE(const auto writer, parquet::arrow::FileWriter::Open(
                                                 *reader->schema(), arrow::default_memory_pool(),
                                                 sink, properties.build(), types));
    return WriteAll(reader, *writer);
}

arrow::Status AsIpcFile(const Reader& reader, const Sink& sink) {
    ARROW_ASSIGN_OR_RAISE(const auto writer, arrow::ipc::MakeFileWriter(sink, reader->schema()));
    return WriteAll(reader, *writer);
}

void Write(ArrowArrayStream& stream, std::ostream& file, const std::string& name,
           arrow::Status (*write)(const Reader&, const Sink&)) {
    const auto all = [&]() -> arrow::Status {
        // Some faults of the library are exceptions.
        try {
            ARROW_ASSIGN_OR_RAISE(const Reader reader, arrow::ImportRecordBatchReader(&stream));
            return write(reader, std::make_shared<StreamOutput>(file));
        } catch (const std::exception& fault) {
            return arrow::Status::UnknownError(fault.what());
        }
    };
    const arrow::Status status = all();
    if (stream.release != nullptr) stream.release(&stream);
    if (status.ok()) return;
    std::string reason = status.message();
    reason.erase(std::min(reason.find('\n'), reason.size()));
    throw DataError(DataError::Kind::kFile, name + ": cannot be written: " + reason);
}

}  // namespace

void WriteParquet(ArrowArrayStream& stream, std::ostream& file, const std::string& name) {
    Write(stream, file, name, &AsParquet);
}

void WriteIpcFile(ArrowArrayStream& stream, std::ostream& file, const std::string& name) {
    Write(stream, file, name, &AsIpcFile);
}

}  // namespace embedded
