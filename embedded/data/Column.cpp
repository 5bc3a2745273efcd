#include "embedded/data/Column.h"

#include <algorithm>
#include <numeric>
#include <type_traits>
#include <utility>

#include "embedded/data/NumberCodes.h"

namespace embedded {
namespace {

// One bit a row that `isValid` holds for; empty when it holds for all.
template <class Value, class IsValid>
void FillValidity(std::span<const Value> rows, IsValid isValid, std::vector<std::uint64_t>& bits) {
    bits.assign((rows.size() + 63) / 64, 0);
    bool all = true;
    for (std::size_t word = 0; word < bits.size(); ++word) {
        const std::size_t first = 64 * word;
        const std::size_t count = std::min<std::size_t>(64, rows.size() - first);
        std::uint64_t set = 0;
        for (std::size_t bit = 0; bit < count; ++bit) {
            set |= std::uint64_t{isValid(rows[first + bit])} << bit;
        }
        bits[word] = set;
        all = all && set == (count == 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1);
    }
    if (all) {
        bits.clear();
    }
}

template <class Stored>
std::int64_t CountRows(const std::vector<Stored>& chunks) {
    std::int64_t rows = 0;
    for (const Stored& chunk : chunks) {
        rows += static_cast<std::int64_t>(chunk.Size());
    }
    return rows;
}

}  // namespace

std::int32_t RowsToOpen(std::int64_t rowBytes) {
    constexpr std::int64_t kMostBytes = 16 << 20;
    constexpr std::int32_t kFewestRows = 512;
    std::int32_t rows = kChunkRows;
    while (rows > kFewestRows && rows * rowBytes > kMostBytes) rows /= 2;
    return rows;
}

std::vector<double> AscendingValues(const NumberCodes& codes,
                                    std::vector<std::uint32_t>& newEntries) {
    const std::vector<double>& met = codes.Values();
    std::vector<std::uint32_t> order(met.size());
    std::iota(order.begin(), order.end(), 0U);
    std::sort(order.begin(), order.end(),
              [&met](std::uint32_t a, std::uint32_t b) { return met[a] < met[b]; });
    std::vector<double> values;
    values.reserve(order.size());
    newEntries.assign(order.size() + 1, 0);
    for (const std::uint32_t code : order) {
        values.push_back(met[code]);
        newEntries[code + 1] = static_cast<std::uint32_t>(values.size());
    }
    return values;
}

std::size_t CodeSpan::Size() const {
    return std::visit([](const auto entries) { return entries.size(); }, fEntries);
}

std::uint32_t CodeSpan::operator[](std::size_t row) const {
    const auto entry =
        std::visit([row](const auto entries) { return std::uint32_t{entries[row]}; }, fEntries);
    return entry == 0 ? 0 : entry - 1;
}

std::int32_t ColumnCategories::Count() const {
    return static_cast<std::int32_t>(fvStrings.size() + fvNumbers.size());
}

KoltObs ColumnCategories::Value(std::int32_t code) const {
    const auto at = static_cast<std::size_t>(code);
    return fvNumbers.empty() ? KoltObs(fvStrings[at]) : KoltObs(fvNumbers[at]);
}

Column Column::OfNumbers(std::vector<StoredCells<double>> chunks, std::int64_t validCount) {
    Column column;
    column.fRowCount = CountRows(chunks);
    column.fValidCount = validCount;
    column.fvNumbers = std::move(chunks);
    return column;
}

Column Column::OfCodes(std::vector<double> values, CodeChunks chunks, std::int64_t validCount) {
    Column column;
    column.fbCoded = true;
    column.fRowCount = std::visit([](const auto& list) { return CountRows(list); }, chunks);
    column.fValidCount = validCount;
    column.fCodes = std::move(chunks);
    column.fpCategories = std::make_unique<ColumnCategories>(std::move(values));
    return column;
}

Column Column::OfCodes(std::vector<std::string> values, CodeChunks chunks,
                       std::int64_t validCount) {
    Column column = OfCodes(std::vector<double>(), std::move(chunks), validCount);
    column.fbNumeric = false;
    column.fpCategories = std::make_unique<ColumnCategories>(std::move(values));
    return column;
}

std::size_t Column::RowsOf(const ChunkPart& part) const {
    const std::int64_t first = std::int64_t{part.fChunk} * kChunkRows + part.fFirstRow;
    const std::int64_t rows = std::min(part.fRows, kChunkRows - part.fFirstRow);
    return static_cast<std::size_t>(std::min(rows, fRowCount - first));
}

ColumnBuffer& Column::OwnBuffer() const {
    if (!fpBuffer) {
        fpBuffer = std::make_unique<ColumnBuffer>();
    }
    return *fpBuffer;
}

ColumnChunk Column::Chunk(std::int32_t index, ColumnBuffer& buffer) const {
    ColumnChunk chunk;
    chunk.fFirstRow = std::int64_t{index} * kChunkRows;
    chunk.fRows = static_cast<std::int32_t>(RowsOf(ChunkPart{index}));
    const bool someMissing = fValidCount < fRowCount;
    if (fbNumeric) {
        chunk.fNumbers = Numbers(index, buffer);
        if (someMissing) {
            FillValidity(
                chunk.fNumbers, [](double value) { return value != MCMV::gMissingValue; },
                buffer.fvValidity);
            chunk.fValidity = buffer.fvValidity;
        }
        return chunk;
    }
    chunk.fCodes = Codes(index, buffer);
    if (someMissing) {
        std::visit(
            [&buffer](const auto entries) {
                FillValidity(
                    entries, [](auto entry) { return entry != 0; }, buffer.fvValidity);
            },
            chunk.fCodes.GetEntries());
        chunk.fValidity = buffer.fvValidity;
    }
    return chunk;
}

CodeSpan Column::Codes(const ChunkPart& part, ColumnBuffer& buffer) const {
    if (!fpCategories) {
        MakeCategories();
    }
    return std::visit(
        [&](const auto& chunks) {
            using Entry = typename std::decay_t<decltype(chunks)>::value_type::Value;
            if (!std::holds_alternative<Cells<Entry>>(buffer.fCodes)) {
                buffer.fCodes = Cells<Entry>();
            }
            return CodeSpan(chunks[static_cast<std::size_t>(part.fChunk)].Get(
                static_cast<std::size_t>(part.fFirstRow), RowsOf(part),
                std::get<Cells<Entry>>(buffer.fCodes)));
        },
        fCodes);
}

std::span<const double> Column::Numbers(const ChunkPart& part, ColumnBuffer& buffer) const {
    if (!fbCoded) {
        return fvNumbers[static_cast<std::size_t>(part.fChunk)].Get(
            static_cast<std::size_t>(part.fFirstRow), RowsOf(part), buffer.fvNumbers);
    }
    const std::vector<double>& values = fpCategories->Numbers();
    std::visit(
        [&](const auto entries) {
            buffer.fvNumbers.resize(entries.size());
            std::transform(entries.begin(), entries.end(), buffer.fvNumbers.begin(),
                           [&values](auto entry) {
                               return entry == 0 ? MCMV::gMissingValue : values[entry - 1U];
                           });
        },
        Codes(part, buffer).GetEntries());
    return buffer.fvNumbers;
}

std::int32_t Column::BufferBytes(bool asCodes) const {
    const auto bytes = [](const auto& chunks) {
        using Value = typename std::decay_t<decltype(chunks)>::value_type::Value;
        const bool held = std::all_of(chunks.begin(), chunks.end(),
                                      [](const auto& chunk) { return chunk.IsInMemory(); });
        return held ? 0 : static_cast<std::int32_t>(sizeof(Value));
    };
    const std::int32_t ofCodes = std::visit(bytes, fCodes);
    if (asCodes) {
        return ofCodes;
    }
    return fbCoded ? ofCodes + static_cast<std::int32_t>(sizeof(double)) : bytes(fvNumbers);
}

const ColumnCategories& Column::Categories() const {
    if (!fpCategories) {
        MakeCategories();
    }
    return *fpCategories;
}

void Column::MakeCategories() const {
    NumberCodes codes;
    std::vector<Cells<std::uint32_t>> chunks;  // entries by order of appearance
    ColumnBuffer buffer;
    for (std::int32_t i = 0; i < ChunkCount(); ++i) {
        const std::span<const double> numbers = Numbers(i, buffer);
        Cells<std::uint32_t>& entries = chunks.emplace_back(numbers.size());
        std::transform(numbers.begin(), numbers.end(), entries.begin(), [&codes](double value) {
            return value == MCMV::gMissingValue ? 0 : codes.Code(value) + 1;
        });
    }
    std::vector<std::uint32_t> newEntries;
    auto values = std::make_unique<ColumnCategories>(AscendingValues(codes, newEntries));
    const std::shared_ptr<ColumnMemory> memory =
        fvNumbers.empty() ? nullptr : fvNumbers.front().Memory();
    ForEntriesUpTo(values->Numbers().size(), [&](auto zero) {
        using Entry = decltype(zero);
        std::vector<StoredCells<Entry>> stored;
        for (Cells<std::uint32_t>& entries : chunks) {
            Cells<Entry> recoded(entries.size());
            std::transform(entries.begin(), entries.end(), recoded.begin(),
                           [&newEntries](std::uint32_t entry) {
                               return static_cast<Entry>(newEntries[entry]);
                           });
            entries = Cells<std::uint32_t>();
            stored.emplace_back(std::move(recoded), memory);
        }
        fCodes = std::move(stored);
    });
    fpCategories = std::move(values);
}

std::int64_t Column::DistinctCount(std::int64_t enough) const {
    if (fpCategories) {
        return fpCategories->Count();
    }
    NumberCodes codes;
    ColumnBuffer buffer;
    for (std::int32_t i = 0; i < ChunkCount(); ++i) {
        for (const double value : Numbers(i, buffer)) {
            if (value != MCMV::gMissingValue) {
                codes.Code(value);
                if (static_cast<std::int64_t>(codes.Values().size()) > enough) {
                    return enough + 1;
                }
            }
        }
    }
    return static_cast<std::int64_t>(codes.Values().size());
}

bool Column::IsValid(std::int64_t row) const { return Value(row) != KoltObs(MCMV::gMissingValue); }

KoltObs Column::Value(std::int64_t row) const {
    const auto index = static_cast<std::int32_t>(row / kChunkRows);
    const auto at = static_cast<std::size_t>(row % kChunkRows);
    if (!fbCoded) {
        return Numbers(index, OwnBuffer())[at];
    }
    const std::uint32_t entry = std::visit(
        [at](const auto entries) { return std::uint32_t{entries[at]}; }, Codes(index).GetEntries());
    return entry == 0 ? KoltObs(MCMV::gMissingValue)
                      : fpCategories->Value(static_cast<std::int32_t>(entry - 1));
}

}  // namespace embedded
