#include "embedded/data/ArrowExport.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace embedded {
namespace {

// How a column's elements are laid out.
enum class Layout { kBits, kInt32, kInt64, kDouble, kOffsets32, kOffsets64 };

struct ExportType {
    const char* fFormat;
    Layout fLayout;
    double fPerUnit = 1;  // elements in one unit of the column's values
};

template <class Accept>
bool EveryNumber(const Column& column, Accept accept) {
    const auto isAccepted = [&accept](double value) {
        return value == MCMV::gMissingValue || accept(value);
    };
    const auto areAccepted = [&isAccepted](std::span<const double> numbers) {
        return std::all_of(numbers.begin(), numbers.end(), isAccepted);
    };
    // Every value of a coded column is in some row.
    if (column.IsCoded()) return areAccepted(column.Categories().Numbers());
    ColumnBuffer buffer;
    for (std::int32_t i = 0; i < column.ChunkCount(); ++i) {
        if (!areAccepted(column.Numbers(i, buffer))) return false;
    }
    return true;
}

// Whole numbers of that many a unit, of which the value is read back as it is.
bool HoldsExactly(double value, double perUnit) {
    constexpr double kLimit = 9.2e18;  // below the largest 64-bit integer
    const double scaled = value * perUnit;
    return std::abs(scaled) < kLimit && std::round(scaled) / perUnit == value;
}

// The offsets are those of a chunk.
ExportType TextType(const Column& column) {
    std::size_t longest = 0;
    for (const std::string& text : column.Categories().Strings()) {
        longest = std::max(longest, text.size());
    }
    constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
    return longest < kMost / kChunkRows ? ExportType{"u", Layout::kOffsets32}
                                        : ExportType{"U", Layout::kOffsets64};
}

ExportType TypeOf(const DataSet& data, std::int32_t index) {
    constexpr ExportType kPlain = {"g", Layout::kDouble};
    constexpr double kMicro = 1e6;
    constexpr double kNano = 1e9;
    constexpr double kExact = 9007199254740992.0;  // 2^53
    const Column& column = data.GetColumn(index);
    const auto every = [&column](double perUnit) {
        return EveryNumber(column,
                           [perUnit](double value) { return HoldsExactly(value, perUnit); });
    };
    switch (data.Kind(index)) {
        case ColumnKind::kString:
            return TextType(column);
        case ColumnKind::kBoolean:
            if (EveryNumber(column, [](double value) { return value == 0.0 || value == 1.0; })) {
                return {"b", Layout::kBits};
            }
            return kPlain;
        case ColumnKind::kDate:
            if (EveryNumber(column, [](double value) {
                    return std::abs(value) < std::numeric_limits<std::int32_t>::max() &&
                           value == std::floor(value);
                })) {
                return {"tdD", Layout::kInt32};
            }
            return kPlain;
        case ColumnKind::kDateTime:
            if (every(kMicro)) return {"tsu:UTC", Layout::kInt64, kMicro};
            if (every(kNano)) return {"tsn:UTC", Layout::kInt64, kNano};
            return kPlain;
        case ColumnKind::kTime:
            // Readers of times expect them below a day.
            if (!EveryNumber(column,
                             [](double value) { return value >= 0.0 && value < 86400.0; })) {
                return kPlain;
            }
            if (every(kMicro)) return {"ttu", Layout::kInt64, kMicro};
            if (every(kNano)) return {"ttn", Layout::kInt64, kNano};
            return kPlain;
        case ColumnKind::kNumber:
            break;
    }
    const bool whole =
        data.Variable(index).GetFormat().fDecimals == 0 && EveryNumber(column, [](double value) {
            return std::abs(value) <= kExact && value == std::floor(value);
        });
    return whole ? ExportType{"l", Layout::kInt64} : kPlain;
}

using Bytes = std::vector<std::byte>;

template <class Value>
void Put(Bytes& bytes, std::size_t place, Value value) {
    std::memcpy(bytes.data() + place * sizeof value, &value, sizeof value);
}

// ---- schema ----

// What a schema owns, children included; released with it.
struct SchemaParts {
    std::string fName;
    std::string fFormat;
    std::vector<ArrowSchema> fvChildren;
    std::vector<ArrowSchema*> fvPointers;
};

void ReleaseSchema(ArrowSchema* schema) {
    const std::unique_ptr<SchemaParts> parts(static_cast<SchemaParts*>(schema->private_data));
    for (ArrowSchema& child : parts->fvChildren) {
        if (child.release != nullptr) child.release(&child);
    }
    schema->release = nullptr;
}

void FillSchema(std::unique_ptr<SchemaParts> parts, std::int64_t flags, ArrowSchema& out) {
    for (ArrowSchema& child : parts->fvChildren) parts->fvPointers.push_back(&child);
    out = ArrowSchema{};
    out.format = parts->fFormat.c_str();
    out.name = parts->fName.c_str();
    out.flags = flags;
    out.n_children = static_cast<std::int64_t>(parts->fvChildren.size());
    out.children = parts->fvPointers.data();
    out.release = &ReleaseSchema;
    out.private_data = parts.release();
}

// ---- arrays ----

struct ArrayParts {
    /// A buffer that the array owns. An empty one is no buffer.
    void Own(Bytes bytes) {
        fvBytes.push_back(std::move(bytes));
        fvBuffers.push_back(fvBytes.back().empty() ? nullptr : fvBytes.back().data());
    }
    /// A buffer of the column store.
    void Borrow(const void* bytes) { fvBuffers.push_back(bytes); }

    std::vector<Bytes> fvBytes;
    std::vector<const void*> fvBuffers;
    std::vector<ArrowArray> fvChildren;
    std::vector<ArrowArray*> fvPointers;
};

void ReleaseArray(ArrowArray* array) {
    const std::unique_ptr<ArrayParts> parts(static_cast<ArrayParts*>(array->private_data));
    for (ArrowArray& child : parts->fvChildren) {
        if (child.release != nullptr) child.release(&child);
    }
    array->release = nullptr;
}

void FillArray(std::unique_ptr<ArrayParts> parts, std::int64_t length, std::int64_t nulls,
               ArrowArray& out) {
    for (ArrowArray& child : parts->fvChildren) parts->fvPointers.push_back(&child);
    out = ArrowArray{};
    out.length = length;
    out.null_count = nulls;
    out.n_buffers = static_cast<std::int64_t>(parts->fvBuffers.size());
    out.buffers = parts->fvBuffers.data();
    out.n_children = static_cast<std::int64_t>(parts->fvChildren.size());
    out.children = parts->fvPointers.data();
    out.release = &ReleaseArray;
    out.private_data = parts.release();
}

void SetBit(Bytes& bits, std::int32_t row) {
    bits[static_cast<std::size_t>(row) / 8] |= std::byte(1U << (static_cast<unsigned>(row) % 8U));
}

// Appends the validity, which is left out where every value is there. Returns the missing ones.
std::int64_t AddValidity(const ColumnChunk& chunk, ArrayParts& parts) {
    std::int64_t nulls = 0;
    for (std::int32_t row = 0; row < chunk.fRows && !chunk.fValidity.empty(); row += 64) {
        const std::int32_t rows = std::min(chunk.fRows - row, 64);
        const std::uint64_t ofWord = ~std::uint64_t{0} >> (64 - rows);
        const std::uint64_t word = chunk.fValidity[static_cast<std::size_t>(row) / 64];
        nulls += rows - std::popcount(word & ofWord);
    }
    if (nulls == 0) {
        parts.Own({});
    } else if (std::endian::native == std::endian::little) {
        parts.Borrow(chunk.fValidity.data());
    } else {
        Bytes bits((static_cast<std::size_t>(chunk.fRows) + 7) / 8);
        for (std::int32_t row = 0; row < chunk.fRows; ++row) {
            if (chunk.IsValid(row)) SetBit(bits, row);
        }
        parts.Own(std::move(bits));
    }
    return nulls;
}

template <class Element>
Bytes WholeNumbers(const ColumnChunk& chunk, double perUnit) {
    const auto rows = static_cast<std::size_t>(chunk.fRows);
    // A buffer is never a null pointer, so not empty either.
    Bytes bytes((rows + 1) * sizeof(Element));
    for (std::size_t row = 0; row < rows; ++row) {
        if (!chunk.IsValid(static_cast<std::int32_t>(row))) continue;
        const double value = chunk.fNumbers[row];
        Put(bytes, row, static_cast<Element>(perUnit == 1 ? value : std::round(value * perUnit)));
    }
    return bytes;
}

void AddNumbers(const ColumnChunk& chunk, const ExportType& type, ArrayParts& parts) {
    switch (type.fLayout) {
        case Layout::kBits: {
            Bytes bits(static_cast<std::size_t>(chunk.fRows) / 8 + 1);
            for (std::int32_t row = 0; row < chunk.fRows; ++row) {
                if (chunk.fNumbers[static_cast<std::size_t>(row)] == 1.0) SetBit(bits, row);
            }
            parts.Own(std::move(bits));
            break;
        }
        case Layout::kInt32:
            parts.Own(WholeNumbers<std::int32_t>(chunk, type.fPerUnit));
            break;
        case Layout::kInt64:
            parts.Own(WholeNumbers<std::int64_t>(chunk, type.fPerUnit));
            break;
        default:
            if (chunk.fNumbers.empty()) {
                parts.Own(Bytes(sizeof(double)));
            } else {
                parts.Borrow(chunk.fNumbers.data());
            }
    }
}

// The text of each row; text(row) is null where there is none.
template <class Offset, class Text>
void AddTexts(std::size_t rows, Text text, ArrayParts& parts) {
    std::size_t length = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        if (const std::string* const of = text(row)) length += of->size();
    }
    Bytes offsets((rows + 1) * sizeof(Offset));
    Bytes characters(length + 1);
    std::size_t end = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        if (const std::string* const of = text(row)) {
            std::memcpy(characters.data() + end, of->data(), of->size());
            end += of->size();
        }
        Put(offsets, row + 1, static_cast<Offset>(end));
    }
    parts.Own(std::move(offsets));
    parts.Own(std::move(characters));
}

template <class Text>
void AddTexts(Layout layout, std::size_t rows, Text text, ArrayParts& parts) {
    if (layout == Layout::kOffsets32) {
        AddTexts<std::int32_t>(rows, text, parts);
    } else {
        AddTexts<std::int64_t>(rows, text, parts);
    }
}

// ---- columns ----

class Columns final : public ArrowColumns {
 public:
    explicit Columns(const DataSet& data)
        : fData(data), fvBuffers(static_cast<std::size_t>(data.ColumnCount())) {
        for (std::int32_t i = 0; i < data.ColumnCount(); ++i) fvTypes.push_back(TypeOf(data, i));
    }

    void Schema(ArrowSchema& out) const override {
        auto batch = std::make_unique<SchemaParts>();
        batch->fFormat = "+s";
        batch->fvChildren.resize(fvTypes.size());
        for (std::size_t i = 0; i < fvTypes.size(); ++i) {
            auto column = std::make_unique<SchemaParts>();
            column->fName = fData.Variable(static_cast<std::int32_t>(i)).GetName();
            column->fFormat = fvTypes[i].fFormat;
            FillSchema(std::move(column), ARROW_FLAG_NULLABLE, batch->fvChildren[i]);
        }
        FillSchema(std::move(batch), 0, out);
    }

    std::int64_t RowCount() const override { return fData.RowCount(); }

    std::int32_t ColumnCount() const override { return fData.ColumnCount(); }

    std::int32_t ChunkCount() const override {
        return static_cast<std::int32_t>((fData.RowCount() + kChunkRows - 1) / kChunkRows);
    }

    void Chunk(std::int32_t column, std::int32_t chunk, ArrowArray& out) const override {
        const ColumnChunk rows = Rows(column, chunk);
        auto parts = std::make_unique<ArrayParts>();
        const std::int64_t nulls = AddValidity(rows, *parts);
        if (IsText(column)) {
            const std::vector<std::string>& texts = Of(column).Categories().Strings();
            const auto text = [&](std::size_t row) {
                const bool valid = rows.IsValid(static_cast<std::int32_t>(row));
                return valid ? &texts[rows.fCodes[row]] : nullptr;
            };
            AddTexts(TypeAt(column).fLayout, static_cast<std::size_t>(rows.fRows), text, *parts);
        } else {
            AddNumbers(rows, TypeAt(column), *parts);
        }
        FillArray(std::move(parts), rows.fRows, nulls, out);
    }

    bool IsText(std::int32_t column) const override {
        const Layout layout = TypeAt(column).fLayout;
        return layout == Layout::kOffsets32 || layout == Layout::kOffsets64;
    }

    ColumnForm FormOf(std::int32_t column) const override {
        const Layout layout = TypeAt(column).fLayout;
        if (layout != Layout::kBits && Of(column).IsCoded()) return ColumnForm::kEntries;
        return layout == Layout::kDouble ? ColumnForm::kNumbers : ColumnForm::kArrays;
    }

    CodeSpan Entries(std::int32_t column, std::int32_t chunk) const override {
        return Of(column).Codes(chunk, Buffer(column));
    }

    std::span<const double> Numbers(std::int32_t column, std::int32_t chunk) const override {
        return Of(column).Numbers(chunk, Buffer(column));
    }

    void Values(std::int32_t column, ArrowArray& out) const override {
        const ColumnCategories& categories = Of(column).Categories();
        auto parts = std::make_unique<ArrayParts>();
        parts->Own({});
        if (IsText(column)) {
            const std::vector<std::string>& texts = categories.Strings();
            AddTexts<std::int64_t>(
                texts.size(), [&](std::size_t at) { return &texts[at]; }, *parts);
        } else {
            ColumnChunk numbers;
            numbers.fRows = categories.Count();
            numbers.fNumbers = categories.Numbers();
            AddNumbers(numbers, TypeAt(column), *parts);
        }
        FillArray(std::move(parts), categories.Count(), 0, out);
    }

    ValueTotals TotalsOf(std::int32_t column) const override {
        const ColumnCategories& categories = Of(column).Categories();
        ValueTotals totals = {categories.Count(), 0};
        for (const std::string& text : categories.Strings()) {
            totals.fTextBytes += static_cast<std::int64_t>(text.size());
        }
        return totals;
    }

    void Release(std::int32_t column) const override { Buffer(column) = ColumnBuffer(); }

    bool IsScattered(std::int32_t column) const override {
        const Column& of = Of(column);
        if (IsText(column)) return std::int64_t{of.Categories().Count()} * 2 > of.ValidCount();
        if (of.IsCoded() || ChunkCount() == 0) return false;
        constexpr std::int32_t kSample = 4096;
        std::unordered_set<double> met;
        ColumnBuffer buffer;
        const std::span<const double> sample = of.Numbers(ChunkPart{0, 0, kSample}, buffer);
        met.insert(sample.begin(), sample.end());
        return met.size() * 2 > sample.size();
    }

 private:
    const Column& Of(std::int32_t column) const { return fData.GetColumn(column); }
    const ExportType& TypeAt(std::int32_t column) const {
        return fvTypes[static_cast<std::size_t>(column)];
    }

    ColumnBuffer& Buffer(std::int32_t column) const {
        return fvBuffers[static_cast<std::size_t>(column)];
    }

    ColumnChunk Rows(std::int32_t column, std::int32_t chunk) const {
        return Of(column).Chunk(chunk, Buffer(column));
    }

    const DataSet& fData;
    std::vector<ExportType> fvTypes;
    mutable std::vector<ColumnBuffer> fvBuffers;  // by column
};

// ---- stream ----

class Export {
 public:
    explicit Export(const DataSet& data) : fData(data), fColumns(data) {}

    void Schema(ArrowSchema& out) const { fColumns.Schema(out); }

    void Next(ArrowArray& out) {
        out = ArrowArray{};
        const std::int64_t first = std::int64_t{fChunk} * kChunkRows;
        if (first >= fData.RowCount()) return;  // released: the end
        auto batch = std::make_unique<ArrayParts>();
        batch->Own({});
        batch->fvChildren.resize(static_cast<std::size_t>(fData.ColumnCount()));
        for (std::int32_t i = 0; i < fData.ColumnCount(); ++i) {
            fColumns.Chunk(i, fChunk, batch->fvChildren[static_cast<std::size_t>(i)]);
        }
        ++fChunk;
        FillArray(std::move(batch), std::min<std::int64_t>(kChunkRows, fData.RowCount() - first), 0,
                  out);
    }

    std::string fError;

 private:
    const DataSet& fData;
    Columns fColumns;
    std::int32_t fChunk = 0;
};

Export& Of(ArrowArrayStream* stream) { return *static_cast<Export*>(stream->private_data); }

// The consumer may be written in another language: no exception leaves.
template <class Step>
int Guarded(ArrowArrayStream* stream, Step step) {
    try {
        step(Of(stream));
        return 0;
    } catch (const std::exception& fault) {
        Of(stream).fError = fault.what();
        return ENOMEM;
    }
}

}  // namespace

void ExportDataSet(const DataSet& data, ArrowArrayStream& streamOut) {
    auto stream = std::make_unique<Export>(data);
    streamOut = ArrowArrayStream{};
    streamOut.get_schema = [](ArrowArrayStream* from, ArrowSchema* out) {
        return Guarded(from, [out](const Export& source) { source.Schema(*out); });
    };
    streamOut.get_next = [](ArrowArrayStream* from, ArrowArray* out) {
        return Guarded(from, [out](Export& source) { source.Next(*out); });
    };
    streamOut.get_last_error = [](ArrowArrayStream* from) -> const char* {
        return Of(from).fError.c_str();
    };
    streamOut.release = [](ArrowArrayStream* from) {
        const std::unique_ptr<Export> source(&Of(from));
        from->release = nullptr;
    };
    streamOut.private_data = stream.release();
}

std::unique_ptr<ArrowColumns> ExportColumns(const DataSet& data) {
    return std::make_unique<Columns>(data);
}

}  // namespace embedded
