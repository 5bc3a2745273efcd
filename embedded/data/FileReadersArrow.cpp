#include <arrow/api.h>
#include <arrow/c/bridge.h>
#include <arrow/io/api.h>
#include <arrow/ipc/api.h>

#include <algorithm>
#include <exception>
#include <functional>
#include <memory>
#include <utility>

#include "embedded/data/FileReaders.h"
#include "embedded/data/FileReadersArrow.h"

namespace embedded {
namespace {

/// Batches from a function, each checked in full before it goes on.
class ValidatedBatches : public arrow::RecordBatchReader {
 public:
    using NextBatch = std::function<arrow::Result<std::shared_ptr<arrow::RecordBatch>>()>;

    ValidatedBatches(std::shared_ptr<arrow::Schema> schema, NextBatch next)
        : fpSchema(std::move(schema)), fNext(std::move(next)) {}

    std::shared_ptr<arrow::Schema> schema() const override { return fpSchema; }
    arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override {
        // Some faults of a file surface as exceptions of the library.
        try {
            ARROW_ASSIGN_OR_RAISE(*batch, fNext());
            return *batch == nullptr ? arrow::Status::OK() : (*batch)->ValidateFull();
        } catch (const std::exception& fault) {
            return arrow::Status::Invalid(fault.what());
        }
    }

 private:
    std::shared_ptr<arrow::Schema> fpSchema;
    NextBatch fNext;
};

ReaderResult OpenIpcFile(std::string_view bytes) {
    ARROW_ASSIGN_OR_RAISE(auto file, arrow::ipc::RecordBatchFileReader::Open(ArrowInput(bytes)));
    const std::shared_ptr<arrow::Schema> schema = file->schema();
    return std::make_shared<ValidatedBatches>(
        schema, [file, next = 0]() mutable -> arrow::Result<std::shared_ptr<arrow::RecordBatch>> {
            if (next == file->num_record_batches()) {
                return nullptr;
            }
            return file->ReadRecordBatch(next++);
        });
}

ReaderResult OpenIpcStream(std::string_view bytes) {
    ARROW_ASSIGN_OR_RAISE(auto batches,
                          arrow::ipc::RecordBatchStreamReader::Open(ArrowInput(bytes)));
    return ValidatedBatchesOf(batches);
}

}  // namespace

void FailAsDamaged(const std::string& name, const std::string& what, std::string reason) {
    reason.erase(std::min(reason.find('\n'), reason.size()));
    throw DataError(DataError::Kind::kContent,
                    name + ": " + what + " is damaged or cut short: " + reason);
}

std::shared_ptr<arrow::io::RandomAccessFile> ArrowInput(std::string_view bytes) {
    return std::make_shared<arrow::io::BufferReader>(
        std::make_shared<arrow::Buffer>(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                        static_cast<std::int64_t>(bytes.size())));
}

std::shared_ptr<arrow::RecordBatchReader> ValidatedBatchesOf(
    const std::shared_ptr<arrow::RecordBatchReader>& batches) {
    const std::shared_ptr<arrow::Schema> schema = batches->schema();
    return std::make_shared<ValidatedBatches>(schema, [batches]() { return batches->Next(); });
}

ArrowStream ArrowBatches(const std::string& name, const std::string& what,
                         const std::function<ReaderResult()>& open) {
    ArrowStream stream(name);
    try {
        const ReaderResult reader = open();
        if (!reader.ok()) {
            FailAsDamaged(name, what, reader.status().message());
        }
        const arrow::Status status = arrow::ExportRecordBatchReader(*reader, stream.Out());
        if (!status.ok()) {
            FailAsDamaged(name, what, status.message());
        }
    } catch (const DataError&) {
        throw;
    } catch (const std::exception& fault) {
        FailAsDamaged(name, what, fault.what());
    }
    return stream;
}

ArrowStream ReadIpcFile(std::string_view bytes, const std::string& name) {
    return ArrowBatches(name, "the Arrow file", [bytes]() { return OpenIpcFile(bytes); });
}

ArrowStream ReadIpcStream(std::string_view bytes, const std::string& name) {
    return ArrowBatches(name, "the Arrow stream", [bytes]() { return OpenIpcStream(bytes); });
}

}  // namespace embedded
