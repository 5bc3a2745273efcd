#include "embedded/data/Column.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "embedded/data/ColumnBuilder.h"

namespace embedded {
namespace {

// Gives each distinct number a code in order of appearance: an open hash table over the bits of
// doubles, much quicker here than std::unordered_map.
class NumberCodes {
 public:
    std::uint32_t Code(double value) {
        if (2 * (fvValues.size() + 1) > fvSlots.size()) {
            Grow();
        }
        std::size_t slot = Slot(value);
        while (fvSlots[slot] != 0) {
            const std::uint32_t code = fvSlots[slot] - 1;
            if (fvValues[code] == value) {
                return code;
            }
            slot = (slot + 1) & (fvSlots.size() - 1);
        }
        fvValues.push_back(value);
        fvSlots[slot] = static_cast<std::uint32_t>(fvValues.size());
        return fvSlots[slot] - 1;
    }
    const std::vector<double>& Values() const { return fvValues; }

 private:
    std::size_t Slot(double value) const {
        std::uint64_t bits = std::bit_cast<std::uint64_t>(value);
        // The finisher of Steele, Lea & Flood (2014), SplitMix: spreads the few bits in which
        // whole numbers differ.
        bits = (bits ^ (bits >> 30U)) * 0xbf58476d1ce4e5b9U;
        bits = (bits ^ (bits >> 27U)) * 0x94d049bb133111ebU;
        bits ^= bits >> 31U;
        return static_cast<std::size_t>(bits) & (fvSlots.size() - 1);
    }
    void Grow() {
        fvSlots.assign(std::max<std::size_t>(1024, 2 * fvSlots.size()), 0);
        for (std::size_t code = 0; code < fvValues.size(); ++code) {
            std::size_t slot = Slot(fvValues[code]);
            while (fvSlots[slot] != 0) {
                slot = (slot + 1) & (fvSlots.size() - 1);
            }
            fvSlots[slot] = static_cast<std::uint32_t>(code + 1);
        }
    }

    std::vector<double> fvValues;        // by code
    std::vector<std::uint32_t> fvSlots;  // code + 1, 0 empty; a power of two of them
};

std::int64_t CountValid(const Column::Validity& validity, std::int64_t rows) {
    if (validity.empty()) {
        return rows;
    }
    std::int64_t count = 0;
    for (const std::uint64_t word : validity) {
        count += std::popcount(word);
    }
    return count;
}

}  // namespace

CodeSpan::CodeSpan(const CodeVector& codes) {
    std::visit([this](const auto& list) { fCodes = std::span(list); }, codes);
}

std::size_t CodeSpan::Size() const {
    return Visit([](const auto codes) { return codes.size(); });
}

std::uint32_t CodeSpan::operator[](std::size_t row) const {
    return Visit([row](const auto codes) { return std::uint32_t{codes[row]}; });
}

ColumnCategories::ColumnCategories(std::vector<std::string> values, std::vector<CodeVector> chunks)
    : fvStrings(std::move(values)), fvChunks(std::move(chunks)) {}

ColumnCategories::ColumnCategories(std::vector<double> values, std::vector<CodeVector> chunks)
    : fvNumbers(std::move(values)), fvChunks(std::move(chunks)) {}

std::int32_t ColumnCategories::Count() const {
    return static_cast<std::int32_t>(fvStrings.size() + fvNumbers.size());
}

KoltObs ColumnCategories::Value(std::int32_t code) const {
    const auto at = static_cast<std::size_t>(code);
    return fvNumbers.empty() ? KoltObs(fvStrings[at]) : KoltObs(fvNumbers[at]);
}

CodeSpan ColumnCategories::Codes(std::int32_t chunk) const {
    return CodeSpan(fvChunks[static_cast<std::size_t>(chunk)]);
}

Column Column::OfNumbers(std::vector<std::vector<double>> chunks, std::vector<Validity> validity) {
    Column column;
    column.fbNumeric = true;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const auto rows = static_cast<std::int64_t>(chunks[i].size());
        column.fRowCount += rows;
        column.fValidCount += CountValid(validity[i], rows);
    }
    column.fvNumbers = std::move(chunks);
    column.fvValidity = std::move(validity);
    return column;
}

Column Column::OfStrings(std::vector<std::string> values, std::vector<CodeVector> chunks,
                         std::vector<Validity> validity) {
    Column column;
    column.fbNumeric = false;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
        const auto rows = static_cast<std::int64_t>(CodeSpan(chunks[i]).Size());
        column.fRowCount += rows;
        column.fValidCount += CountValid(validity[i], rows);
    }
    column.fvValidity = std::move(validity);
    column.fpCategories = std::make_unique<ColumnCategories>(std::move(values), std::move(chunks));
    return column;
}

ColumnChunk Column::Chunk(std::int32_t index) const {
    const auto at = static_cast<std::size_t>(index);
    ColumnChunk chunk;
    chunk.fFirstRow = std::int64_t{index} * kChunkRows;
    chunk.fRows =
        static_cast<std::int32_t>(std::min<std::int64_t>(kChunkRows, fRowCount - chunk.fFirstRow));
    chunk.fValidity = fvValidity[at];
    if (fbNumeric) {
        chunk.fNumbers = fvNumbers[at];
    } else {
        chunk.fCodes = fpCategories->Codes(index);
    }
    return chunk;
}

const ColumnCategories& Column::Categories() const {
    if (fpCategories) {
        return *fpCategories;
    }
    NumberCodes codes;
    CodeChunks chunks;
    for (std::int32_t i = 0; i < ChunkCount(); ++i) {
        const ColumnChunk chunk = Chunk(i);
        for (std::int32_t row = 0; row < chunk.fRows; ++row) {
            if (chunk.IsValid(row)) {
                chunks.Append(codes.Code(chunk.fNumbers[static_cast<std::size_t>(row)]));
            } else {
                chunks.AppendMissing();
            }
        }
    }
    const std::vector<double>& met = codes.Values();
    std::vector<std::uint32_t> order(met.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = static_cast<std::uint32_t>(i);
    }
    std::sort(order.begin(), order.end(),
              [&met](std::uint32_t a, std::uint32_t b) { return met[a] < met[b]; });
    std::vector<double> values;
    values.reserve(order.size());
    std::vector<std::uint32_t> rank(order.size());
    for (const std::uint32_t code : order) {
        rank[code] = static_cast<std::uint32_t>(values.size());
        values.push_back(met[code]);
    }
    fpCategories = std::make_unique<ColumnCategories>(std::move(values),
                                                      std::move(chunks).Recode(rank, order.size()));
    return *fpCategories;
}

std::int64_t Column::DistinctCount() const {
    if (fpCategories) {
        return fpCategories->Count();
    }
    NumberCodes codes;
    for (std::int32_t i = 0; i < ChunkCount(); ++i) {
        const ColumnChunk chunk = Chunk(i);
        for (std::int32_t row = 0; row < chunk.fRows; ++row) {
            if (chunk.IsValid(row)) {
                codes.Code(chunk.fNumbers[static_cast<std::size_t>(row)]);
            }
        }
    }
    return static_cast<std::int64_t>(codes.Values().size());
}

bool Column::IsValid(std::int64_t row) const {
    return Chunk(static_cast<std::int32_t>(row / kChunkRows))
        .IsValid(static_cast<std::int32_t>(row % kChunkRows));
}

KoltObs Column::Value(std::int64_t row) const {
    if (!IsValid(row)) {
        return MCMV::gMissingValue;
    }
    const ColumnChunk chunk = Chunk(static_cast<std::int32_t>(row / kChunkRows));
    const auto at = static_cast<std::size_t>(row % kChunkRows);
    if (fbNumeric) {
        return chunk.fNumbers[at];
    }
    return fpCategories->Value(static_cast<std::int32_t>(chunk.fCodes[at]));
}

}  // namespace embedded
