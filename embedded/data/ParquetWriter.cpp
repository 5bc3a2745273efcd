#include "embedded/data/ParquetWriter.h"

#include <arrow/api.h>
#include <arrow/c/bridge.h>
#include <arrow/ipc/api.h>
#include <arrow/util/base64.h>
#include <arrow/util/compression.h>
#include <parquet/arrow/schema.h>
#include <parquet/column_page.h>
#include <parquet/column_writer.h>
#include <parquet/exception.h>
#include <parquet/file_writer.h>
#include <parquet/metadata.h>
#include <parquet/properties.h>
#include <parquet/schema.h>
#include <parquet/statistics.h>

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "embedded/data/Column.h"
#include "embedded/data/NumberRange.h"
#include "embedded/data/ParquetPage.h"
#include "embedded/threads/ParallelTasks.h"

namespace embedded {
namespace {

// Rows of a row group: large enough for a dictionary to pay, small enough for the columns of one
// to be kept until all are encoded.
constexpr std::int32_t kGroupChunks = 2;
constexpr std::int64_t kGroupRows = std::int64_t{kGroupChunks} * kChunkRows;

// Three pages of a chunk: of doubles 170 KB, which stay in a near cache, and for which the codec
// finds twice as much that repeats as in pages above 256 KB.
constexpr std::size_t kPageRows = (kChunkRows + 2) / 3;
constexpr std::int64_t kPageBytes = kPageRows * sizeof(double);

// What is given out as it lies in memory lies as Parquet has it.
constexpr bool kSameOrder = std::endian::native == std::endian::little;

using Sink = std::shared_ptr<arrow::io::OutputStream>;

void Require(const arrow::Status& status) {
    if (!status.ok()) throw parquet::ParquetStatusException(status);
}

template <class Value>
Value Require(arrow::Result<Value> result) {
    Require(result.status());
    return std::move(result).ValueUnsafe();
}

// What is to be in the file, in order. It is kept until it is taken, to be written.
class Gathered final : public arrow::io::OutputStream {
 public:
    explicit Gathered(Sink sink) : fSink(std::move(sink)) {}

    using Pieces = std::vector<std::shared_ptr<arrow::Buffer>>;
    // What has been given since it was last taken.
    Pieces Take() { return std::exchange(fvPieces, {}); }
    void Send(const Pieces& pieces) {
        for (const std::shared_ptr<arrow::Buffer>& piece : pieces) Require(fSink->Write(piece));
    }

    using arrow::io::OutputStream::Write;
    arrow::Status Write(const void* bytes, std::int64_t count) override {
        return Write(arrow::Buffer::FromString(
            std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(count))));
    }
    arrow::Status Write(const std::shared_ptr<arrow::Buffer>& piece) override {
        fPosition += piece->size();
        fvPieces.push_back(piece);
        return arrow::Status::OK();
    }
    arrow::Result<std::int64_t> Tell() const override { return fPosition; }
    arrow::Status Close() override { return arrow::Status::OK(); }
    bool closed() const override { return false; }

 private:
    Sink fSink;
    Pieces fvPieces;
    std::int64_t fPosition = 0;
};

template <class Type>
parquet::EncodedStatistics StatisticsOf(const parquet::ColumnDescriptor* column,
                                        std::span<const typename Type::c_type> values,
                                        std::int64_t missing) {
    const auto statistics = parquet::MakeStatistics<Type>(column);
    statistics->Update(values.data(), static_cast<std::int64_t>(values.size()), missing);
    return statistics->Encode();
}

// The values of a column that is held as codes, in ascending order.
class Dictionary {
 public:
    Dictionary(const ArrowColumns& columns, std::int32_t index,
               const std::shared_ptr<arrow::DataType>& type) {
        ArrowArray values{};
        columns.Values(index, values);
        fpValues = Require(
            arrow::ImportArray(&values, columns.IsText(index) ? arrow::large_utf8() : type));
    }

    std::int64_t Count() const { return fpValues->length(); }
    parquet::DictionaryPage Page() const {
        return {Plain(), static_cast<std::int32_t>(Count()), parquet::Encoding::PLAIN};
    }
    // Of a row group in which the places from low to high occur, both of them; where low is above
    // high none does.
    parquet::EncodedStatistics Statistics(const parquet::ColumnDescriptor* column, std::int64_t low,
                                          std::int64_t high, std::int64_t missing) const {
        switch (column->physical_type()) {
            case parquet::Type::INT32:
                return NumberStatistics<parquet::Int32Type>(column, low, high, missing);
            case parquet::Type::INT64:
                return NumberStatistics<parquet::Int64Type>(column, low, high, missing);
            case parquet::Type::DOUBLE:
                return NumberStatistics<parquet::DoubleType>(column, low, high, missing);
            default:
                return TextStatistics(column, low, high, missing);
        }
    }

 private:
    std::shared_ptr<arrow::Buffer> Plain() const {
        if (fpValues->type_id() != arrow::Type::LARGE_STRING) {
            return std::make_shared<arrow::Buffer>(fpValues->data()->GetValues<std::uint8_t>(1, 0),
                                                   Count() * fpValues->type()->byte_width());
        }
        std::string plain;
        for (std::int64_t place = 0; place < Count(); ++place) {
            const std::string_view text = Text(place);
            for (unsigned shift = 0; shift < 32; shift += 8) {
                plain += static_cast<char>((text.size() >> shift) & 0xFFU);
            }
            plain += text;
        }
        return arrow::Buffer::FromString(std::move(plain));
    }

    std::string_view Text(std::int64_t place) const {
        return static_cast<const arrow::LargeStringArray&>(*fpValues).GetView(place);
    }

    template <class Type>
    parquet::EncodedStatistics NumberStatistics(const parquet::ColumnDescriptor* column,
                                                std::int64_t low, std::int64_t high,
                                                std::int64_t missing) const {
        using Number = typename Type::c_type;
        if (low > high) return StatisticsOf<Type>(column, {}, missing);
        const auto* const values = fpValues->data()->GetValues<Number>(1);
        return StatisticsOf<Type>(column, std::array<Number, 2>{values[low], values[high]},
                                  missing);
    }
    parquet::EncodedStatistics TextStatistics(const parquet::ColumnDescriptor* column,
                                              std::int64_t low, std::int64_t high,
                                              std::int64_t missing) const {
        using parquet::ByteArray;
        if (low > high) return StatisticsOf<parquet::ByteArrayType>(column, {}, missing);
        return StatisticsOf<parquet::ByteArrayType>(
            column, std::array<ByteArray, 2>{ByteArray(Text(low)), ByteArray(Text(high))}, missing);
    }

    std::shared_ptr<arrow::Array> fpValues;
};

// One column, row group by row group.
class ParquetColumn {
 public:
    ParquetColumn(const ArrowColumns& columns, std::int32_t index,
                  std::shared_ptr<arrow::DataType> type,
                  const parquet::ArrowWriterProperties& properties)
        : fColumns(columns),
          fIndex(index),
          fType(std::move(type)),
          fForm(columns.FormOf(index)),
          fbScattered(columns.IsScattered(index)),
          fTotals(fForm == ColumnForm::kEntries ? columns.TotalsOf(index) : ValueTotals()),
          fContext(arrow::default_memory_pool(),
                   const_cast<parquet::ArrowWriterProperties*>(&properties)) {}

    bool IsScattered() const { return fbScattered; }

    // The column's part of a row group begins, to be written to the sink.
    void Begin(const Sink& sink, parquet::ColumnChunkMetaDataBuilder* metadata,
               const parquet::WriterProperties& properties, std::int16_t group) {
        fpProperties = &properties;
        fpMetadata = metadata;
        fpPages = parquet::PageWriter::Open(sink, properties.compression(metadata->descr()->path()),
                                            metadata, group, static_cast<std::int16_t>(fIndex),
                                            arrow::default_memory_pool(), true);
        fBytes = 0;
    }

    // Touches nothing that other columns do.
    void Write(std::int32_t firstChunk, std::int32_t endChunk) {
        const std::int64_t rows =
            std::min(std::int64_t{endChunk} * kChunkRows, fColumns.RowCount()) -
            std::int64_t{firstChunk} * kChunkRows;
        if (kSameOrder && fForm == ColumnForm::kEntries && HasUseOfDictionary(rows)) {
            WriteEntries(firstChunk, endChunk);
        } else if (kSameOrder && fForm == ColumnForm::kNumbers && fbScattered) {
            WriteNumbers(firstChunk, endChunk);
        } else {
            WriteArrays(firstChunk, endChunk);
        }
        // There may be very many columns.
        fColumns.Release(fIndex);
        fPage = ParquetPage();
        fpCompressed.reset();
        fvLevels = {};
    }

    // Gives to the sink what has been written. Returns its size before compression.
    std::int64_t End() {
        if (fpWriter != nullptr) {
            fBytes = fpWriter->Close();
            fpWriter.reset();
            return fBytes;
        }
        if (fStatistics.is_set()) {
            fStatistics.ApplyStatSizeLimits(
                fpProperties->max_statistics_size(fpMetadata->descr()->path()));
            fpMetadata->SetStatistics(fStatistics);
        }
        fpPages->Close(fbDictionaryWritten, false);
        fpPages.reset();
        return fBytes;
    }

 private:
    // The dictionary of all values stands in each row group, so it must not be more than the rows
    // themselves; a number says little more than its entry. A page has a 32-bit size.
    bool HasUseOfDictionary(std::int64_t rows) const {
        constexpr std::int64_t kMostTextBytes = std::int64_t{1} << 30;
        const std::int64_t rowsPerValue = fColumns.IsText(fIndex) ? 1 : 4;
        return !fbScattered && fTotals.fCount * rowsPerValue <= rows &&
               fTotals.fTextBytes <= kMostTextBytes;
    }

    void WriteEntries(std::int32_t firstChunk, std::int32_t endChunk) {
        if (!fDictionary) fDictionary.emplace(fColumns, fIndex, fType);
        fbDictionaryWritten = true;
        fBytes += fpPages->WriteDictionaryPage(fDictionary->Page());
        const auto count = static_cast<std::size_t>(fDictionary->Count());
        std::uint32_t low = std::numeric_limits<std::uint32_t>::max();
        std::uint32_t high = 0;
        std::int64_t missing = 0;
        for (std::int32_t chunk = firstChunk; chunk < endChunk; ++chunk) {
            std::visit(
                [&](const auto entries) {
                    using Entry = typename decltype(entries)::value_type;
                    Entry least = std::numeric_limits<Entry>::max();
                    Entry most = 0;
                    for (const Entry entry : entries) {
                        // Missing ones become the largest of all.
                        least = std::min(least, static_cast<Entry>(entry - 1U));
                        most = std::max(most, entry);
                    }
                    if (most > 0) low = std::min(low, std::uint32_t{least});
                    high = std::max(high, std::uint32_t{most});
                    for (std::size_t row = 0; row < entries.size(); row += kPageRows) {
                        const auto rows =
                            entries.subspan(row, std::min(kPageRows, entries.size() - row));
                        fPage.SetEntries(rows, count);
                        missing += static_cast<std::int64_t>(rows.size() - fPage.ValidCount());
                        WritePage(rows.size(), parquet::Encoding::RLE_DICTIONARY);
                    }
                },
                fColumns.Entries(fIndex, chunk).GetEntries());
        }
        fStatistics =
            fDictionary->Statistics(fpMetadata->descr(), low, std::int64_t{high} - 1, missing);
    }

    void WriteNumbers(std::int32_t firstChunk, std::int32_t endChunk) {
        fbDictionaryWritten = false;
        std::vector<double> extremes;
        std::int64_t missing = 0;
        for (std::int32_t chunk = firstChunk; chunk < endChunk; ++chunk) {
            const std::span<const double> numbers = fColumns.Numbers(fIndex, chunk);
            for (std::size_t row = 0; row < numbers.size(); row += kPageRows) {
                const auto rows = numbers.subspan(row, std::min(kPageRows, numbers.size() - row));
                fPage.SetNumbers(rows);
                missing += static_cast<std::int64_t>(rows.size() - fPage.ValidCount());
                if (fPage.ValidCount() > 0) {
                    const auto [low, high] = RangeOf(rows);
                    extremes.insert(extremes.end(), {low, high});
                }
                WritePage(rows.size(), parquet::Encoding::PLAIN);
            }
        }
        fStatistics = StatisticsOf<parquet::DoubleType>(fpMetadata->descr(), extremes, missing);
    }

    void WritePage(std::size_t rows, parquet::Encoding::type encoding) {
        const std::span<const std::uint8_t> bytes = fPage.Bytes();
        const auto size = static_cast<std::int64_t>(bytes.size());
        auto page = std::make_shared<arrow::Buffer>(bytes.data(), size);
        if (fpPages->has_compressor()) {
            if (fpCompressed == nullptr) {
                fpCompressed = parquet::AllocateBuffer(arrow::default_memory_pool(), 0);
            }
            fpPages->Compress(*page, fpCompressed.get());
            page = fpCompressed;
        }
        fBytes += fpPages->WriteDataPage(parquet::DataPageV1(page, static_cast<std::int32_t>(rows),
                                                             encoding, parquet::Encoding::RLE,
                                                             parquet::Encoding::RLE, size));
    }

    // As the library encodes arrays.
    void WriteArrays(std::int32_t firstChunk, std::int32_t endChunk) {
        fpWriter = parquet::ColumnWriter::Make(fpMetadata, std::move(fpPages), fpProperties);
        for (std::int32_t chunk = firstChunk; chunk < endChunk; ++chunk) {
            ArrowArray exported{};
            fColumns.Chunk(fIndex, chunk, exported);
            const std::shared_ptr<arrow::Array> rows =
                Require(arrow::ImportArray(&exported, fType));
            SetLevels(*rows);
            Require(fpWriter->WriteArrow(fvLevels.data(), nullptr, rows->length(), *rows, &fContext,
                                         true));
        }
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
    ColumnForm fForm;
    bool fbScattered;
    ValueTotals fTotals;  // of entries
    parquet::ArrowWriteContext fContext;
    std::optional<Dictionary> fDictionary;
    ParquetPage fPage;
    std::shared_ptr<parquet::ResizableBuffer> fpCompressed;
    std::vector<std::int16_t> fvLevels;

    // Of the row group.
    const parquet::WriterProperties* fpProperties = nullptr;
    parquet::ColumnChunkMetaDataBuilder* fpMetadata = nullptr;
    std::unique_ptr<parquet::PageWriter> fpPages;
    std::shared_ptr<parquet::ColumnWriter> fpWriter;  // only when arrays are written
    parquet::EncodedStatistics fStatistics;
    bool fbDictionaryWritten = false;
    std::int64_t fBytes = 0;
};

arrow::Compression::type Compression() {
    return arrow::util::Codec::IsAvailable(arrow::Compression::ZSTD)
               ? arrow::Compression::ZSTD
               : arrow::Compression::UNCOMPRESSED;
}

}  // namespace

void WriteParquetFile(const ArrowColumns& columns, const Sink& sink, std::int32_t threads) {
    ArrowSchema exported{};
    columns.Schema(exported);
    const std::shared_ptr<arrow::Schema> schema = Require(arrow::ImportSchema(&exported));
    // The types as they are, where Parquet's own are coarser.
    const auto types = parquet::ArrowWriterProperties::Builder().store_schema()->build();
    const auto bytes = Require(arrow::ipc::SerializeSchema(*schema));
    const auto keyed = arrow::key_value_metadata(
        {"ARROW:schema"}, {arrow::util::base64_encode(std::string_view(*bytes))});

    std::vector<ParquetColumn> parts;
    parts.reserve(static_cast<std::size_t>(columns.ColumnCount()));
    parquet::WriterProperties::Builder builder;
    builder.compression(Compression())->write_batch_size(8192)->data_pagesize(kPageBytes);
    for (std::int32_t i = 0; i < columns.ColumnCount(); ++i) {
        parts.emplace_back(columns, i, schema->field(i)->type(), *types);
        if (parts.back().IsScattered()) {
            builder.disable_dictionary(std::make_shared<parquet::schema::ColumnPath>(
                std::vector<std::string>{schema->field(i)->name()}));
        }
    }
    const std::shared_ptr<parquet::WriterProperties> properties = builder.build();
    std::shared_ptr<parquet::SchemaDescriptor> nodes;
    Require(parquet::arrow::ToParquetSchema(schema.get(), *properties, *types, &nodes));
    const auto metadata = parquet::FileMetaDataBuilder::Make(nodes.get(), properties);

    const auto gathered = std::make_shared<Gathered>(sink);
    Require(gathered->Write("PAR1", 4));
    std::int16_t group = 0;
    for (std::int64_t row = 0; row < columns.RowCount(); row += kGroupRows, ++group) {
        parquet::RowGroupMetaDataBuilder* const groupMetadata = metadata->AppendRowGroup();
        groupMetadata->set_num_rows(std::min(kGroupRows, columns.RowCount() - row));
        for (ParquetColumn& part : parts) {
            part.Begin(gathered, groupMetadata->NextColumnChunk(), *properties, group);
        }
        const std::int32_t chunk = group * kGroupChunks;
        const std::int32_t end = std::min(chunk + kGroupChunks, columns.ChunkCount());
        RunTasks(threads, columns.ColumnCount() + 1,
                 [&, before = gathered->Take()](std::int32_t i) {
                     if (i == 0) return gathered->Send(before);
                     parts[static_cast<std::size_t>(i) - 1].Write(chunk, end);
                 });
        std::int64_t written = 0;
        for (ParquetColumn& part : parts) written += part.End();
        groupMetadata->Finish(written, group);
    }
    parquet::WriteFileMetaData(*metadata->Finish(keyed), gathered.get());
    gathered->Send(gathered->Take());
}

}  // namespace embedded
