#include "embedded/data/ParquetFile.h"

#include <arrow/api.h>
#include <arrow/c/bridge.h>
#include <arrow/io/api.h>
#include <parquet/api/reader.h>
#include <parquet/arrow/reader.h>
#include <parquet/arrow/schema.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <exception>
#include <limits>
#include <stdexcept>
#include <utility>
#include <variant>

#include "embedded/data/CellDictionary.h"
#include "embedded/data/ColumnAssembly.h"
#include "embedded/data/FileReadersArrow.h"
#include "embedded/data/Utf8.h"
#include "embedded/threads/ParallelTasks.h"

namespace embedded {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Dictionaries of numbers with more entries than this are not worth keeping.
constexpr std::int32_t kMostNumberEntries = 4096;

// The pages hold something else than the file says, or a form that is not read here.
[[noreturn]] void GiveUp() { throw std::runtime_error("pages of another form"); }

/// What a column is read as: how the values of its pages become numbers.
enum class PageForm {
    kNone,
    kDouble,
    kFloat,
    kBoolean,
    kInt8,
    kUint8,
    kInt16,
    kUint16,
    kInt32,
    kUint32,
    kInt64,
    kUint64,
    kText,   // must be UTF-8
    kBytes,  // what is no UTF-8 is replaced
};

PageForm FormOf(const arrow::DataType& type, parquet::Type::type physical) {
    const auto when = [physical](parquet::Type::type needed, PageForm form) {
        return physical == needed ? form : PageForm::kNone;
    };
    switch (type.id()) {
        case arrow::Type::DOUBLE:
            return when(parquet::Type::DOUBLE, PageForm::kDouble);
        case arrow::Type::FLOAT:
            return when(parquet::Type::FLOAT, PageForm::kFloat);
        case arrow::Type::BOOL:
            return when(parquet::Type::BOOLEAN, PageForm::kBoolean);
        case arrow::Type::INT8:
            return when(parquet::Type::INT32, PageForm::kInt8);
        case arrow::Type::UINT8:
            return when(parquet::Type::INT32, PageForm::kUint8);
        case arrow::Type::INT16:
            return when(parquet::Type::INT32, PageForm::kInt16);
        case arrow::Type::UINT16:
            return when(parquet::Type::INT32, PageForm::kUint16);
        case arrow::Type::INT32:
            return when(parquet::Type::INT32, PageForm::kInt32);
        case arrow::Type::UINT32:
            return when(parquet::Type::INT32, PageForm::kUint32);
        case arrow::Type::INT64:
            return when(parquet::Type::INT64, PageForm::kInt64);
        case arrow::Type::UINT64:
            return when(parquet::Type::INT64, PageForm::kUint64);
        case arrow::Type::STRING:
        case arrow::Type::LARGE_STRING:
            return when(parquet::Type::BYTE_ARRAY, PageForm::kText);
        case arrow::Type::BINARY:
        case arrow::Type::LARGE_BINARY:
            return when(parquet::Type::BYTE_ARRAY, PageForm::kBytes);
        case arrow::Type::DICTIONARY: {
            const auto& values = *static_cast<const arrow::DictionaryType&>(type).value_type();
            const PageForm form = FormOf(values, physical);
            return form == PageForm::kText || form == PageForm::kBytes ? form : PageForm::kNone;
        }
        default:
            return PageForm::kNone;
    }
}

template <class Raw>
double NumberOf(PageForm form, Raw raw) {
    switch (form) {
        case PageForm::kInt8:
            return static_cast<std::int8_t>(raw);
        case PageForm::kUint8:
            return static_cast<std::uint8_t>(raw);
        case PageForm::kInt16:
            return static_cast<std::int16_t>(raw);
        case PageForm::kUint16:
            return static_cast<std::uint16_t>(raw);
        case PageForm::kUint32:
            return static_cast<std::uint32_t>(raw);
        case PageForm::kUint64:
            return static_cast<double>(static_cast<std::uint64_t>(raw));
        default:
            return static_cast<double>(raw);
    }
}

/// One column while its row groups are read.
struct PageColumn {
    std::int32_t fField = 0;
    std::int32_t fLeaf = 0;  // among all columns of the file
    PageForm fForm = PageForm::kNone;
    bool fbOrdered = false;
    std::unique_ptr<NumericParts> fpNumbers;
    std::unique_ptr<TextParts> fpTexts;
    std::vector<Oddity> fvInexact;  // by row group, rows counted within it
    std::atomic<std::int32_t> fGroupsLeft = 0;
    std::atomic<bool> fbFaulty = false;

    bool IsText() const { return fForm == PageForm::kText || fForm == PageForm::kBytes; }
};

/// Room for one batch of one column.
struct PageBuffer {
    static constexpr std::int64_t kRows = kChunkRows;

    Cells<std::int16_t> fvLevels = Cells<std::int16_t>(kRows);
    Cells<std::int32_t> fvPlaces = Cells<std::int32_t>(kRows + 1);
    // Values of any type.
    Cells<std::byte> fvRaw = Cells<std::byte>(kRows * sizeof(parquet::ByteArray));
};

/// Reads one column of one row group.
class GroupColumn {
 public:
    GroupColumn(PageColumn& column, std::int32_t group, std::int64_t rows, bool placed,
                parquet::RowGroupReader& reader, PageBuffer& buffer)
        : fColumn(column),
          fGroup(group),
          fRows(rows),
          fbPlaced(placed),
          fReader(reader),
          fBuffer(buffer),
          fMaxLevel(reader.metadata()->schema()->Column(column.fLeaf)->max_definition_level()) {}

    void Read() {
        switch (fColumn.fForm) {
            case PageForm::kNone:
                GiveUp();
            case PageForm::kText:
            case PageForm::kBytes:
                return ReadTexts();
            case PageForm::kBoolean:
                return ReadBooleans();
            case PageForm::kDouble:
                return ReadNumbers<parquet::DoubleType>();
            case PageForm::kFloat:
                return ReadNumbers<parquet::FloatType>();
            case PageForm::kInt64:
            case PageForm::kUint64:
                return ReadNumbers<parquet::Int64Type>();
            default:
                return ReadNumbers<parquet::Int32Type>();
        }
    }

 private:
    // Places in the dictionary, as entries in as narrow an integer as they allow, and the
    // dictionary, which lives as long as the reader.
    template <class Type>
    struct Places {
        CodeVector fEntries;
        std::span<const typename Type::c_type> fDictionary;
    };

    template <class Type>
    std::shared_ptr<parquet::TypedColumnReader<Type>> Pages() {
        return std::static_pointer_cast<parquet::TypedColumnReader<Type>>(
            fReader.ColumnWithExposeEncoding(fColumn.fLeaf, parquet::ExposedEncoding::DICTIONARY));
    }
    static bool HavePlaces(parquet::ColumnReader& pages) {
        return pages.GetExposedEncoding() == parquet::ExposedEncoding::DICTIONARY;
    }

    template <class Type>
    Places<Type> ReadPlaces(parquet::TypedColumnReader<Type>& pages) {
        Places<Type> places;
        std::int64_t row = 0;
        while (pages.HasNext()) {
            std::int64_t valid = 0;
            const typename Type::c_type* dictionary = nullptr;
            std::int32_t length = 0;
            const std::int64_t rows = pages.ReadBatchWithDictionary(
                PageBuffer::kRows, fBuffer.fvLevels.data(), nullptr, fBuffer.fvPlaces.data(),
                &valid, &dictionary, &length);
            if (dictionary != nullptr && dictionary != places.fDictionary.data()) {
                if (!places.fDictionary.empty()) {
                    GiveUp();
                }
                places.fDictionary = {dictionary, static_cast<std::size_t>(length)};
                // The rows so far, if there are any, are missing.
                ForEntriesUpTo(places.fDictionary.size(), [&places, row](auto zero) {
                    places.fEntries = Cells<decltype(zero)>(static_cast<std::size_t>(row), zero);
                });
            }
            CheckBatch(row, rows, valid);
            TakePlaces(rows, valid, places.fDictionary.size(), places.fEntries);
            row += rows;
        }
        CheckEnd(row);
        return places;
    }

    void CheckBatch(std::int64_t row, std::int64_t rows, std::int64_t valid) const {
        if (rows <= 0 || rows > fRows - row || valid < 0 || valid > rows ||
            (fMaxLevel == 0 && valid != rows)) {
            GiveUp();
        }
    }
    void CheckEnd(std::int64_t row) const {
        if (row != fRows) {
            GiveUp();
        }
    }

    void TakePlaces(std::int64_t rows, std::int64_t valid, std::size_t length,
                    CodeVector& allEntries) {
        const std::int32_t* const places = fBuffer.fvPlaces.data();
        std::uint32_t largest = 0;
        for (std::int64_t i = 0; i < valid; ++i) {
            largest = std::max(largest, static_cast<std::uint32_t>(places[i]));
        }
        if (valid > 0 && largest >= length) {
            GiveUp();
        }
        std::visit(
            [&](auto& entries) {
                using Entry = typename std::decay_t<decltype(entries)>::value_type;
                const std::size_t first = entries.size();
                entries.resize(first + static_cast<std::size_t>(rows));
                Entry* const out = entries.data() + first;
                if (valid == rows) {
                    for (std::int64_t i = 0; i < rows; ++i) {
                        out[i] = static_cast<Entry>(places[i] + 1);
                    }
                    return;
                }
                std::int64_t next = 0;
                for (std::int64_t i = 0; i < rows; ++i) {
                    const bool isValid = fBuffer.fvLevels[static_cast<std::size_t>(i)] == fMaxLevel;
                    // One place more than there are may be looked at, never used.
                    out[i] = static_cast<Entry>(isValid ? places[next] + 1 : 0);
                    next += isValid ? 1 : 0;
                    if (next > valid) {
                        GiveUp();
                    }
                }
                if (next != valid) {
                    GiveUp();
                }
            },
            allEntries);
    }

    void ReadTexts() {
        const auto pages = Pages<parquet::ByteArrayType>();
        if (!HavePlaces(*pages)) {
            return ReadPlainTexts(*pages);
        }
        Places<parquet::ByteArrayType> places = ReadPlaces(*pages);
        std::vector<std::string> values;
        values.reserve(places.fDictionary.size());
        for (const parquet::ByteArray& text : places.fDictionary) {
            values.emplace_back(reinterpret_cast<const char*>(text.ptr), text.len);
        }
        SetTexts(std::move(values), std::move(places.fEntries));
    }

    // Pages without a dictionary, or with one that became too long for the writer.
    void ReadPlainTexts(parquet::TypedColumnReader<parquet::ByteArrayType>& pages) {
        auto* const raw = reinterpret_cast<parquet::ByteArray*>(fBuffer.fvRaw.data());
        CellDictionary texts;
        Cells<std::uint32_t> entries;
        while (pages.HasNext()) {
            const auto row = static_cast<std::int64_t>(entries.size());
            std::int64_t valid = 0;
            const std::int64_t rows =
                pages.ReadBatch(PageBuffer::kRows, fBuffer.fvLevels.data(), nullptr, raw, &valid);
            CheckBatch(row, rows, valid);
            entries.resize(static_cast<std::size_t>(row + rows));
            std::int64_t next = 0;
            CellDictionary::Probe probe(texts);
            for (std::int64_t i = 0; i < rows; ++i) {
                std::uint32_t& entry = entries[static_cast<std::size_t>(row + i)];
                if (valid < rows && fBuffer.fvLevels[static_cast<std::size_t>(i)] != fMaxLevel) {
                    entry = 0;
                    continue;
                }
                if (next == valid) {
                    GiveUp();
                }
                const parquet::ByteArray& text = raw[next++];
                entry = text.len < CellDictionary::kLettersRead
                            ? EntryOfShort(probe, text)
                            : probe.Entry(reinterpret_cast<const char*>(text.ptr), text.len);
            }
            if (next != valid) {
                GiveUp();
            }
        }
        CheckEnd(static_cast<std::int64_t>(entries.size()));
        texts.Close();
        std::vector<std::string> values;
        values.reserve(texts.Count());
        for (std::uint32_t entry = 1; entry <= texts.Count(); ++entry) {
            values.emplace_back(texts.Text(entry));
        }
        SetTexts(std::move(values), std::move(entries));
    }
    static std::uint32_t EntryOfShort(CellDictionary::Probe& probe,
                                      const parquet::ByteArray& text) {
        std::array<char, CellDictionary::kLettersRead> letters{};
        std::copy_n(text.ptr, text.len, letters.begin());
        return probe.Entry(letters.data(), text.len);
    }

    void SetTexts(std::vector<std::string> values, CodeVector entries) {
        if (fColumn.fForm == PageForm::kText &&
            !std::all_of(values.begin(), values.end(), IsUtf8)) {
            GiveUp();
        }
        fColumn.fpTexts->SetCodes(fGroup, std::move(values), std::move(entries));
    }

    template <class Type>
    void ReadNumbers() {
        const auto pages = Pages<Type>();
        if (!HavePlaces(*pages)) {
            return ReadPlain(*pages);
        }
        Places<Type> places = ReadPlaces(*pages);
        std::vector<double> values;
        values.reserve(places.fDictionary.size());
        for (const auto raw : places.fDictionary) {
            values.push_back(NumberOf(fColumn.fForm, raw));
        }
        NoteInexact(values, places.fEntries);
        if (values.size() <= kMostNumberEntries) {
            fColumn.fpNumbers->SetCodes(fGroup, std::move(values), std::move(places.fEntries));
            return;
        }
        std::visit(
            [&](const auto& entries) {
                std::size_t next = 0;
                StoreNumbers([&](std::span<double> out) {
                    for (double& value : out) {
                        const auto entry = entries[next++];
                        value = entry == 0 ? kNaN : values[entry - 1U];
                    }
                });
            },
            places.fEntries);
    }

    bool MayBeInexact() const {
        return fColumn.fForm == PageForm::kInt64 || fColumn.fForm == PageForm::kUint64;
    }
    void NoteInexact(const std::vector<double>& values, const CodeVector& codes) {
        const auto isInexact = [](double value) { return std::abs(value) >= kFirstInexactInteger; };
        if (!MayBeInexact() || std::none_of(values.begin(), values.end(), isInexact)) {
            return;
        }
        std::visit(
            [&](const auto& entries) {
                for (std::size_t row = 0; row < entries.size(); ++row) {
                    if (entries[row] != 0 && isInexact(values[entries[row] - 1U])) {
                        fColumn.fvInexact[static_cast<std::size_t>(fGroup)].Note(
                            static_cast<std::int64_t>(row));
                    }
                }
            },
            codes);
    }

    // Calls fill(std::span<double>) for all rows in their order; what it writes may be NaN,
    // infinite or -0.
    template <class Fill>
    void StoreNumbers(Fill fill) {
        Oddity infinite;
        if (!fbPlaced) {
            Cells<double> numbers(static_cast<std::size_t>(fRows));
            fill(std::span(numbers));
            SettleNumbers(numbers, 0, infinite);
            fColumn.fpNumbers->SetNumbers(fGroup, std::move(numbers));
        } else {
            std::int64_t missing = 0;
            for (std::int64_t row = 0; row < fRows;) {
                const std::span<double> room = fColumn.fpNumbers->Room(fGroup, row);
                fill(room);
                missing += SettleNumbers(room, row, infinite);
                row += static_cast<std::int64_t>(room.size());
            }
            fColumn.fpNumbers->SetPlaced(fGroup, missing);
        }
        if (infinite.fCount > 0) {
            fColumn.fpNumbers->NoteInfinite(fGroup, infinite);
        }
    }

    template <class Type>
    void ReadPlain(parquet::TypedColumnReader<Type>& pages) {
        using Raw = typename Type::c_type;
        std::int64_t row = 0;
        StoreNumbers([&](std::span<double> out) {
            for (std::size_t filled = 0; filled < out.size();) {
                const std::span<double> left = out.subspan(filled);
                const auto most = std::min<std::int64_t>(PageBuffer::kRows,
                                                         static_cast<std::int64_t>(left.size()));
                std::int64_t valid = 0;
                Raw* raw = reinterpret_cast<Raw*>(fBuffer.fvRaw.data());
                if constexpr (std::is_same_v<Raw, double>) {
                    raw = left.data();
                }
                const std::int64_t rows =
                    pages.ReadBatch(most, fBuffer.fvLevels.data(), nullptr, raw, &valid);
                CheckBatch(row, rows, valid);
                Spread<Raw>(left.first(static_cast<std::size_t>(rows)), raw, valid);
                if (MayBeInexact()) {
                    for (std::int64_t i = 0; i < rows; ++i) {
                        if (std::abs(left[static_cast<std::size_t>(i)]) >= kFirstInexactInteger) {
                            fColumn.fvInexact[static_cast<std::size_t>(fGroup)].Note(row + i);
                        }
                    }
                }
                row += rows;
                filled += static_cast<std::size_t>(rows);
            }
        });
        if (pages.HasNext()) {
            GiveUp();
        }
    }

    // Puts the valid values, which come first, into their rows; raw may be where out is.
    template <class Raw>
    void Spread(std::span<double> out, const Raw* raw, std::int64_t valid) {
        if (static_cast<std::size_t>(valid) == out.size()) {
            if constexpr (!std::is_same_v<Raw, double>) {
                std::transform(raw, raw + valid, out.begin(),
                               [this](Raw value) { return NumberOf(fColumn.fForm, value); });
            }
            return;
        }
        for (std::size_t row = out.size(); row-- > 0;) {
            if (fBuffer.fvLevels[row] != fMaxLevel) {
                out[row] = kNaN;
                continue;
            }
            if (--valid < 0) {
                GiveUp();
            }
            out[row] = NumberOf(fColumn.fForm, raw[valid]);
        }
        if (valid != 0) {
            GiveUp();
        }
    }

    void ReadBooleans() {
        const auto reader =
            std::static_pointer_cast<parquet::BoolReader>(fReader.Column(fColumn.fLeaf));
        bool* const raw = reinterpret_cast<bool*>(fBuffer.fvRaw.data());
        CodeVector codes;
        std::int64_t row = 0;
        while (reader->HasNext()) {
            std::int64_t valid = 0;
            const std::int64_t rows =
                reader->ReadBatch(PageBuffer::kRows, fBuffer.fvLevels.data(), nullptr, raw, &valid);
            CheckBatch(row, rows, valid);
            std::transform(raw, raw + valid, fBuffer.fvPlaces.begin(),
                           [](bool value) { return value ? 1 : 0; });
            TakePlaces(rows, valid, 2, codes);
            row += rows;
        }
        CheckEnd(row);
        fColumn.fpNumbers->SetCodes(fGroup, {0.0, 1.0}, std::move(codes));
    }

    PageColumn& fColumn;
    std::int32_t fGroup;
    std::int64_t fRows;
    bool fbPlaced;
    parquet::RowGroupReader& fReader;
    PageBuffer& fBuffer;
    std::int16_t fMaxLevel;
};

ReadColumn FinishColumn(PageColumn& column, const std::vector<std::int64_t>& groupRows) {
    if (column.IsText()) {
        ReadColumn read{column.fpTexts->Finish(1), ColumnKind::kString};
        read.fbOrdered = column.fbOrdered;
        read.fUndecodable = column.fpTexts->Undecodable();
        return read;
    }
    ReadColumn read{column.fpNumbers->Finish(1), column.fForm == PageForm::kBoolean
                                                     ? ColumnKind::kBoolean
                                                     : ColumnKind::kNumber};
    read.fInfinite = column.fpNumbers->Infinite();
    std::int64_t firstRow = 0;
    for (std::size_t group = 0; group < groupRows.size(); ++group) {
        read.fInexact.Join(column.fvInexact[group], firstRow);
        firstRow += groupRows[group];
    }
    return read;
}

class OpenedParquetFile : public ParquetFile {
 public:
    OpenedParquetFile(std::string_view bytes, std::string name, GiveBack giveBack)
        : fBytes(bytes), fName(std::move(name)), fGiveBack(std::move(giveBack)) {
        parquet::ArrowReaderProperties properties;
        properties.set_use_threads(false);
        parquet::arrow::FileReaderBuilder builder;
        Check(builder.Open(ArrowInput(fBytes)));
        auto file = builder.properties(properties)->Build();
        Check(file.status());
        fpFile = std::move(*file);
        Check(fpFile->GetSchema(&fpSchema));
    }

    OwnedArrowSchema Schema() const override {
        OwnedArrowSchema schema;
        Check(arrow::ExportSchema(*fpSchema, schema.Out()));
        return schema;
    }

    std::int64_t RowCount() const override {
        const auto metadata = fpFile->parquet_reader()->metadata();
        // The rows are read by the counts of their groups, which a damaged file may hold far above
        // its total. No sum of counts this large overflows.
        constexpr std::int64_t kMostOfGroup = std::int64_t{1} << 31;
        std::int64_t rows = 0;
        for (int group = 0; group < metadata->num_row_groups(); ++group) {
            rows +=
                std::clamp(metadata->RowGroup(group)->num_rows(), std::int64_t{0}, kMostOfGroup);
        }
        return std::max(rows, metadata->num_rows());
    }

    std::vector<std::optional<ReadColumn>> ReadPages(const std::vector<bool>& wanted,
                                                     const std::vector<TextSet>& missingTexts,
                                                     const std::shared_ptr<ColumnMemory>& memory,
                                                     std::int32_t threads) const override;

    ArrowStream Stream(const std::vector<std::int32_t>& fields) const override {
        return ArrowBatches(fName, "the Parquet file", [&]() -> ReaderResult {
            std::vector<int> groups;
            for (int group = 0; group < fpFile->num_row_groups(); ++group) {
                groups.push_back(group);
            }
            std::vector<int> leaves;
            for (const std::int32_t field : fields) {
                AddLeaves(Field(field), leaves);
            }
            ARROW_ASSIGN_OR_RAISE(std::shared_ptr<arrow::RecordBatchReader> batches,
                                  fpFile->GetRecordBatchReader(groups, leaves));
            return ValidatedBatchesOf(batches);
        });
    }

 private:
    using SchemaField = parquet::arrow::SchemaField;

    const SchemaField& Field(std::int32_t field) const {
        return fpFile->manifest().schema_fields[static_cast<std::size_t>(field)];
    }
    static void AddLeaves(const SchemaField& field, std::vector<int>& leaves) {
        if (field.is_leaf()) {
            leaves.push_back(field.column_index);
        }
        for (const SchemaField& child : field.children) {
            AddLeaves(child, leaves);
        }
    }
    void Check(const arrow::Status& status) const {
        if (!status.ok()) {
            FailAsDamaged(fName, "the Parquet file", status.message());
        }
    }

    void GiveBackPages(const parquet::ColumnChunkMetaData& pages) const {
        if (!fGiveBack) {
            return;
        }
        std::int64_t begin = pages.data_page_offset();
        if (pages.has_dictionary_page() && pages.dictionary_page_offset() > 0) {
            begin = std::min(begin, pages.dictionary_page_offset());
        }
        const std::int64_t size = pages.total_compressed_size();
        if (begin >= 0 && size > 0 && begin < static_cast<std::int64_t>(fBytes.size())) {
            fGiveBack(
                fBytes.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(size)));
        }
    }

    std::string_view fBytes;
    std::string fName;
    GiveBack fGiveBack;
    std::unique_ptr<parquet::arrow::FileReader> fpFile;
    std::shared_ptr<arrow::Schema> fpSchema;
};

std::vector<std::optional<ReadColumn>> OpenedParquetFile::ReadPages(
    const std::vector<bool>& wanted, const std::vector<TextSet>& missingTexts,
    const std::shared_ptr<ColumnMemory>& memory, std::int32_t threads) const {
    std::vector<std::optional<ReadColumn>> result(wanted.size());
    const std::shared_ptr<parquet::FileMetaData> metadata = fpFile->parquet_reader()->metadata();
    std::vector<std::int64_t> groupRows;
    std::int64_t rows = 0;
    // No more rows than the file could possibly hold, so that no count that is read makes room for
    // more than a small multiple of the file.
    const auto most = static_cast<std::int64_t>(fBytes.size()) * 4096;
    for (int group = 0; group < metadata->num_row_groups(); ++group) {
        groupRows.push_back(metadata->RowGroup(group)->num_rows());
        if (groupRows.back() < 0 || groupRows.back() > most - rows) {
            return result;
        }
        rows += groupRows.back();
    }
    std::vector<std::unique_ptr<PageColumn>> columns;
    std::int64_t numeric = 0;
    for (std::size_t field = 0; field < wanted.size(); ++field) {
        const SchemaField& description = Field(static_cast<std::int32_t>(field));
        if (!wanted[field] || !description.is_leaf() || groupRows.empty()) {
            continue;
        }
        const parquet::ColumnDescriptor& leaf =
            *metadata->schema()->Column(description.column_index);
        const arrow::DataType& type = *description.field->type();
        const PageForm form =
            leaf.max_repetition_level() > 0 ? PageForm::kNone : FormOf(type, leaf.physical_type());
        if (form == PageForm::kNone) {
            continue;
        }
        auto column = std::make_unique<PageColumn>();
        column->fField = static_cast<std::int32_t>(field);
        column->fLeaf = description.column_index;
        column->fForm = form;
        column->fbOrdered = type.id() == arrow::Type::DICTIONARY &&
                            static_cast<const arrow::DictionaryType&>(type).ordered();
        column->fvInexact.resize(groupRows.size());
        column->fGroupsLeft = static_cast<std::int32_t>(groupRows.size());
        numeric += column->IsText() ? 0 : 1;
        columns.push_back(std::move(column));
    }
    if (columns.empty()) {
        return result;
    }
    // Numbers are decoded where they stay if all columns will most likely fit into memory.
    const std::int64_t rowBytes = numeric * static_cast<std::int64_t>(sizeof(double)) +
                                  static_cast<std::int64_t>(columns.size()) - numeric;
    const bool placed = rows <= memory->Limit() / rowBytes;
    for (const auto& column : columns) {
        if (column->IsText()) {
            column->fpTexts = std::make_unique<TextParts>(
                &missingTexts[static_cast<std::size_t>(column->fField)], memory);
        } else {
            column->fpNumbers = placed ? std::make_unique<NumericParts>(groupRows, memory)
                                       : std::make_unique<NumericParts>(memory);
        }
    }
    // A task is some columns of one row group, about a chunk's worth; the row groups of a column
    // follow each other, so that it is soon complete.
    const auto groups = static_cast<std::int64_t>(groupRows.size());
    const std::int64_t stripe =
        std::clamp<std::int64_t>(kChunkRows / std::max<std::int64_t>(1, rows / groups), 1, 64);
    const auto count = static_cast<std::int64_t>(columns.size());
    const std::int64_t stripes = (count + stripe - 1) / stripe;
    if (stripes * groups > std::numeric_limits<std::int32_t>::max()) {
        return result;
    }
    RunTasks(threads, static_cast<std::int32_t>(stripes * groups), [&](std::int32_t task) {
        const auto group = static_cast<std::int32_t>(task % groups);
        const std::int64_t first = task / groups * stripe;
        PageBuffer buffer;
        std::unique_ptr<parquet::ParquetFileReader> file;
        std::shared_ptr<parquet::RowGroupReader> reader;
        for (std::int64_t at = first; at < std::min(count, first + stripe); ++at) {
            PageColumn& column = *columns[static_cast<std::size_t>(at)];
            const auto attempt = [&column](const auto& work) {
                try {
                    if (!column.fbFaulty) {
                        work();
                    }
                } catch (const DataError&) {
                    throw;
                } catch (const std::exception&) {
                    column.fbFaulty = true;
                }
            };
            attempt([&] {
                if (!reader) {
                    file = parquet::ParquetFileReader::Open(
                        ArrowInput(fBytes), parquet::default_reader_properties(), metadata);
                    reader = file->RowGroup(group);
                }
                GroupColumn(column, group, groupRows[static_cast<std::size_t>(group)], placed,
                            *reader, buffer)
                    .Read();
                GiveBackPages(*reader->metadata()->ColumnChunk(column.fLeaf));
            });
            if (--column.fGroupsLeft == 0) {
                attempt([&] {
                    result[static_cast<std::size_t>(column.fField)] =
                        FinishColumn(column, groupRows);
                });
                column.fpNumbers.reset();
                column.fpTexts.reset();
            }
        }
    });
    return result;
}

}  // namespace

std::unique_ptr<ParquetFile> ParquetFile::Open(std::string_view bytes, const std::string& name,
                                               const GiveBack& giveBack) {
    try {
        return std::make_unique<OpenedParquetFile>(bytes, name, giveBack);
    } catch (const DataError&) {
        throw;
    } catch (const std::exception& fault) {
        FailAsDamaged(name, "the Parquet file", fault.what());
    }
}

}  // namespace embedded
