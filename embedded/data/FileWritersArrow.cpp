#include <arrow/api.h>
#include <arrow/c/bridge.h>
#include <arrow/io/api.h>
#include <arrow/ipc/api.h>
#include <parquet/exception.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>

#include "embedded/data/DataError.h"
#include "embedded/data/FileWriters.h"
#include "embedded/data/ParquetWriter.h"

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
    Write(file, name, [&](const Sink& sink) -> arrow::Status {
        WriteParquetFile(columns, sink, threads);
        return arrow::Status::OK();
    });
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
