#include "embedded/data/ArrowExport.h"

#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <exception>
#include <limits>
#include <memory>
#include <string>
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
    for (std::int32_t i = 0; i < column.ChunkCount(); ++i) {
        for (const double value : column.Chunk(i).fNumbers) {
            if (value != MCMV::gMissingValue && !accept(value)) return false;
        }
    }
    return true;
}

// Whole numbers of that many a unit, of which the value is read back as it is.
bool HoldsExactly(double value, double perUnit) {
    constexpr double kLimit = 9.2e18;  // below the largest 64-bit integer
    const double scaled = value * perUnit;
    return std::abs(scaled) < kLimit && std::round(scaled) / perUnit == value;
}

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
    // The validity is left out where every value is there, and of the batch itself.
    for (std::size_t i = 0; i < parts->fvBytes.size(); ++i) {
        parts->fvBuffers.push_back(i == 0 && nulls == 0 ? nullptr : parts->fvBytes[i].data());
    }
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

Bytes Validity(const ColumnChunk& chunk, std::int64_t& nulls) {
    Bytes bits((static_cast<std::size_t>(chunk.fRows) + 7) / 8);
    nulls = 0;
    for (std::int32_t row = 0; row < chunk.fRows; ++row) {
        if (chunk.IsValid(row)) {
            SetBit(bits, row);
        } else {
            ++nulls;
        }
    }
    return bits;
}

Bytes Numbers(const ColumnChunk& chunk, const ExportType& type) {
    const auto rows = static_cast<std::size_t>(chunk.fRows);
    // A buffer is never a null pointer, so not empty either.
    Bytes bytes(type.fLayout == Layout::kBits ? rows / 8 + 1 : (rows + 1) * sizeof(double));
    for (std::int32_t row = 0; row < chunk.fRows; ++row) {
        if (!chunk.IsValid(row)) continue;
        const auto at = static_cast<std::size_t>(row);
        const double value = chunk.fNumbers[at];
        switch (type.fLayout) {
            case Layout::kBits:
                if (value != 0.0) SetBit(bytes, row);
                break;
            case Layout::kInt32:
                Put(bytes, at, static_cast<std::int32_t>(value));
                break;
            case Layout::kInt64:
                Put(bytes, at, static_cast<std::int64_t>(std::round(value * type.fPerUnit)));
                break;
            default:
                Put(bytes, at, value);
                break;
        }
    }
    return bytes;
}

template <class Offset>
void Texts(const ColumnChunk& chunk, const std::vector<std::string>& texts, ArrayParts& parts) {
    const auto rows = static_cast<std::size_t>(chunk.fRows);
    std::size_t length = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        if (chunk.IsValid(static_cast<std::int32_t>(row)))
            length += texts[chunk.fCodes[row]].size();
    }
    Bytes offsets((rows + 1) * sizeof(Offset));
    Bytes characters(length + 1);
    std::size_t end = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        if (chunk.IsValid(static_cast<std::int32_t>(row))) {
            const std::string& text = texts[chunk.fCodes[row]];
            std::memcpy(characters.data() + end, text.data(), text.size());
            end += text.size();
        }
        Put(offsets, row + 1, static_cast<Offset>(end));
    }
    parts.fvBytes.push_back(std::move(offsets));
    parts.fvBytes.push_back(std::move(characters));
}

void FillColumn(const Column& column, std::int32_t index, const ExportType& type, ArrowArray& out) {
    const ColumnChunk chunk = column.Chunk(index);
    auto parts = std::make_unique<ArrayParts>();
    std::int64_t nulls = 0;
    parts->fvBytes.push_back(Validity(chunk, nulls));
    if (type.fLayout == Layout::kOffsets32) {
        Texts<std::int32_t>(chunk, column.Categories().Strings(), *parts);
    } else if (type.fLayout == Layout::kOffsets64) {
        Texts<std::int64_t>(chunk, column.Categories().Strings(), *parts);
    } else {
        parts->fvBytes.push_back(Numbers(chunk, type));
    }
    FillArray(std::move(parts), chunk.fRows, nulls, out);
}

// ---- stream ----

class Export {
 public:
    explicit Export(const DataSet& data) : fData(data) {
        for (std::int32_t i = 0; i < data.ColumnCount(); ++i) fvTypes.push_back(TypeOf(data, i));
    }

    void Schema(ArrowSchema& out) const {
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

    void Next(ArrowArray& out) {
        out = ArrowArray{};
        const std::int64_t first = std::int64_t{fChunk} * kChunkRows;
        if (first >= fData.RowCount()) return;  // released: the end
        auto batch = std::make_unique<ArrayParts>();
        batch->fvBytes.resize(1);
        batch->fvChildren.resize(fvTypes.size());
        for (std::size_t i = 0; i < fvTypes.size(); ++i) {
            FillColumn(fData.GetColumn(static_cast<std::int32_t>(i)), fChunk, fvTypes[i],
                       batch->fvChildren[i]);
        }
        ++fChunk;
        FillArray(std::move(batch), std::min<std::int64_t>(kChunkRows, fData.RowCount() - first), 0,
                  out);
    }

    std::string fError;

 private:
    const DataSet& fData;
    std::vector<ExportType> fvTypes;
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

}  // namespace embedded
