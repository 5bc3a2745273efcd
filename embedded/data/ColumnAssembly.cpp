#include "embedded/data/ColumnAssembly.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <string_view>
#include <type_traits>
#include <utility>

#include "embedded/data/CellText.h"
#include "embedded/data/NumberCodes.h"
#include "embedded/data/Utf8.h"
#include "embedded/threads/ParallelTasks.h"

namespace embedded {
namespace {

constexpr double kMissing = MCMV::gMissingValue;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// More distinct numbers are held as doubles.
constexpr std::size_t kMostNumberCodes = 0xFFFF;

// Which codes below count have a row. Most dictionaries have been met whole after a few rows.
std::vector<bool> UsedCodes(const CodeVector& codes, std::size_t count) {
    std::vector<std::uint8_t> met(count + 1);
    std::visit(
        [&met](const auto& entries) {
            std::size_t step = 1024;
            for (std::size_t first = 0; first < entries.size(); step *= 4) {
                const std::size_t end = std::min(entries.size(), first + step);
                for (; first < end; ++first) {
                    met[entries[first]] = 1;
                }
                if (std::all_of(met.begin() + 1, met.end(), [](auto code) { return code != 0; })) {
                    break;
                }
            }
        },
        codes);
    return {met.begin() + 1, met.end()};
}

std::int64_t RowsOf(const CodeVector& codes) {
    return static_cast<std::int64_t>(
        std::visit([](const auto& entries) { return entries.size(); }, codes));
}

// Rows whose code has a mark.
Oddity MarkedRows(const CodeVector& codes, const std::vector<bool>& marks) {
    Oddity rows;
    std::visit(
        [&](const auto& entries) {
            for (std::size_t row = 0; row < entries.size(); ++row) {
                if (entries[row] != 0 && marks[entries[row] - 1U]) {
                    rows.Note(static_cast<std::int64_t>(row));
                }
            }
        },
        codes);
    return rows;
}

StoredCodes Stored(CodeVector codes, const std::shared_ptr<ColumnMemory>& memory) {
    return std::visit(
        [&memory](auto& entries) -> StoredCodes {
            return StoredCells<typename std::decay_t<decltype(entries)>::value_type>(
                std::move(entries), memory);
        },
        codes);
}

/// Where the rows of a column come from: which rows of which part make a chunk. A part is let go
/// of once its last chunk has been made.
class PartRows {
 public:
    template <class Parts>
    explicit PartRows(const Parts& parts) : fvChunksLeft(parts.size()) {
        fvFirstRows.push_back(0);
        for (std::size_t part = 0; part < parts.size(); ++part) {
            const std::int64_t first = fvFirstRows.back();
            const std::int64_t end = first + parts[part].fRows;
            fvFirstRows.push_back(end);
            fvChunksLeft[part] = static_cast<std::int32_t>(
                first == end ? 0 : (end - 1) / kChunkRows - first / kChunkRows + 1);
        }
    }
    std::int64_t Rows() const { return fvFirstRows.back(); }
    std::int64_t FirstRow(std::size_t part) const { return fvFirstRows[part]; }
    std::int32_t Chunks() const {
        return static_cast<std::int32_t>((Rows() + kChunkRows - 1) / kChunkRows);
    }
    std::size_t ChunkSize(std::int32_t chunk) const {
        return static_cast<std::size_t>(
            std::min<std::int64_t>(kChunkRows, Rows() - std::int64_t{chunk} * kChunkRows));
    }
    /// Calls take(part, first row in the part, rows, first row in the chunk), and done(part) when
    /// this was the last chunk with rows of it.
    template <class Take, class Done>
    void ForChunk(std::int32_t chunk, Take take, Done done) {
        const std::int64_t begin = std::int64_t{chunk} * kChunkRows;
        const std::int64_t end = begin + static_cast<std::int64_t>(ChunkSize(chunk));
        auto part = static_cast<std::size_t>(
            std::upper_bound(fvFirstRows.begin(), fvFirstRows.end(), begin) - fvFirstRows.begin() -
            1);
        for (std::int64_t row = begin; row < end; ++part) {
            const std::int64_t partEnd = std::min(end, fvFirstRows[part + 1]);
            if (partEnd == row) {
                continue;
            }
            take(part, static_cast<std::size_t>(row - fvFirstRows[part]),
                 static_cast<std::size_t>(partEnd - row), static_cast<std::size_t>(row - begin));
            row = partEnd;
            if (--fvChunksLeft[part] == 0) {
                done(part);
            }
        }
    }

 private:
    std::vector<std::int64_t> fvFirstRows;  // by part, and behind the last
    std::vector<std::atomic<std::int32_t>> fvChunksLeft;
};

// Chunks of the codes of all parts. newEntries gives, part by part, what becomes of an entry.
template <class Parts>
Column::CodeChunks JoinedCodes(Parts& parts,
                               const std::vector<std::vector<std::uint32_t>>& newEntries,
                               std::size_t lastEntry, const std::shared_ptr<ColumnMemory>& memory,
                               std::int32_t threads, std::int64_t& validCount) {
    PartRows rows(parts);
    std::atomic<std::int64_t> missing = 0;
    Column::CodeChunks result;
    ForEntriesUpTo(lastEntry, [&](auto zero) {
        using Entry = decltype(zero);
        std::vector<StoredCells<Entry>> chunks(static_cast<std::size_t>(rows.Chunks()));
        RunTasks(threads, rows.Chunks(), [&](std::int32_t chunk) {
            Cells<Entry> cells(rows.ChunkSize(chunk));
            const auto take = [&](std::size_t part, std::size_t first, std::size_t count,
                                  std::size_t at) {
                Cells<Entry> table(newEntries[part].size());
                std::transform(newEntries[part].begin(), newEntries[part].end(), table.begin(),
                               [](std::uint32_t entry) { return static_cast<Entry>(entry); });
                std::visit(
                    [&](const auto& stored) {
                        Cells<typename std::decay_t<decltype(stored)>::Value> buffer;
                        const auto entries = stored.Get(first, count, buffer);
                        for (std::size_t row = 0; row < count; ++row) {
                            cells[at + row] = table[entries[row]];
                        }
                    },
                    parts[part].fCodes);
            };
            rows.ForChunk(chunk, take, [&parts](std::size_t part) {
                std::visit([](auto& stored) { stored.Clear(); }, parts[part].fCodes);
            });
            missing += std::count(cells.begin(), cells.end(), Entry{0});
            chunks[static_cast<std::size_t>(chunk)] = StoredCells<Entry>(std::move(cells), memory);
        });
        result = std::move(chunks);
    });
    validCount = rows.Rows() - missing;
    return result;
}

// Few distinct numbers are held as codes, whatever came out of the file; nothing when there are too
// many to gain by it.
std::optional<Column> AsCodes(const std::vector<StoredCells<double>>& chunks,
                              const std::shared_ptr<ColumnMemory>& memory,
                              std::int64_t validCount) {
    constexpr std::size_t kSample = 4096;
    constexpr std::size_t kMostCodes = 0xFF;
    if (chunks.empty()) {
        return std::nullopt;
    }
    NumberCodes codes;
    Cells<double> buffer;
    const std::span<const double> sample =
        chunks[0].Get(0, std::min(kSample, chunks[0].Size()), buffer);
    for (const double value : sample) {
        if (value != kMissing && codes.Code(value) >= sample.size() / 16) {
            return std::nullopt;
        }
    }
    std::vector<Cells<std::uint8_t>> coded;
    for (const StoredCells<double>& chunk : chunks) {
        Cells<std::uint8_t>& entries = coded.emplace_back(chunk.Size());
        const std::span<const double> numbers = chunk.Get(0, chunk.Size(), buffer);
        double last = kMissing;
        std::uint8_t lastEntry = 0;
        for (std::size_t row = 0; row < numbers.size(); ++row) {
            if (numbers[row] != last) {
                last = numbers[row];
                const std::uint32_t entry = last == kMissing ? 0 : codes.Code(last) + 1;
                if (entry > kMostCodes) {
                    return std::nullopt;
                }
                lastEntry = static_cast<std::uint8_t>(entry);
            }
            entries[row] = lastEntry;
        }
    }
    std::vector<std::uint32_t> newEntries;
    std::vector<double> values = AscendingValues(codes, newEntries);
    std::vector<StoredCells<std::uint8_t>> stored;
    for (Cells<std::uint8_t>& entries : coded) {
        for (std::uint8_t& entry : entries) {
            entry = static_cast<std::uint8_t>(newEntries[entry]);
        }
        stored.emplace_back(std::move(entries), memory);
    }
    return Column::OfCodes(std::move(values), std::move(stored), validCount);
}

// Makes -0 to 0 and returns how many are missing.
std::int64_t SettleFinite(Cells<double>& numbers) {
    std::int64_t missing = 0;
    for (double& value : numbers) {
        missing += value == kMissing ? 1 : 0;
        value += 0.0;
    }
    return missing;
}

}  // namespace

std::int64_t SettleNumbers(std::span<double> numbers, std::int64_t firstRow, Oddity& infinite) {
    // What is out of the ordinary is rare: a pass that the compiler can do several at a time.
    std::int64_t odd = 0;
    for (double& value : numbers) {
        odd += std::abs(value) < std::numeric_limits<double>::max() ? 0 : 1;
        value += 0.0;
    }
    std::int64_t missing = 0;
    for (std::size_t row = 0; odd > 0 && row < numbers.size(); ++row) {
        double& value = numbers[row];
        if (std::isfinite(value) && value != kMissing) {
            continue;
        }
        if (!std::isnan(value)) {
            infinite.Note(firstRow + static_cast<std::int64_t>(row));
        }
        value = kMissing;
        ++missing;
    }
    return missing;
}

// ---- numbers ----

NumericParts::NumericParts(const std::vector<std::int64_t>& partRows,
                           std::shared_ptr<ColumnMemory> memory)
    : fpMemory(std::move(memory)), fvParts(partRows.size()) {
    fvFirstRows.push_back(0);
    for (const std::int64_t rows : partRows) {
        fvFirstRows.push_back(fvFirstRows.back() + rows);
    }
    fvPlaced.resize(static_cast<std::size_t>((fvFirstRows.back() + kChunkRows - 1) / kChunkRows));
}

NumericParts::Part& NumericParts::At(std::int32_t part) {
    const std::lock_guard lock(fMutex);
    while (fvParts.size() <= static_cast<std::size_t>(part)) {
        fvParts.emplace_back();
    }
    return fvParts[static_cast<std::size_t>(part)];
}

std::span<double> NumericParts::Room(std::int32_t part, std::int64_t row) {
    const auto at = static_cast<std::size_t>(part);
    const std::int64_t begin = fvFirstRows[at] + row;
    const std::int64_t chunkBegin = begin / kChunkRows * kChunkRows;
    const std::int64_t chunkEnd = std::min(chunkBegin + kChunkRows, fvFirstRows.back());
    const std::int64_t end = std::min(chunkEnd, fvFirstRows[at + 1]);
    const std::lock_guard lock(fMutex);
    Cells<double>& chunk = fvPlaced[static_cast<std::size_t>(begin / kChunkRows)];
    if (chunk.empty()) {
        chunk.resize(static_cast<std::size_t>(chunkEnd - chunkBegin));
    }
    return std::span(chunk).subspan(static_cast<std::size_t>(begin - chunkBegin),
                                    static_cast<std::size_t>(end - begin));
}

void NumericParts::SetPlaced(std::int32_t part, std::int64_t missing) {
    Part& placed = At(part);
    placed.fRows = fvFirstRows[static_cast<std::size_t>(part) + 1] -
                   fvFirstRows[static_cast<std::size_t>(part)];
    placed.fMissing = missing;
    placed.fbPlaced = true;
}

void NumericParts::SetNumbers(std::int32_t part, Cells<double> numbers) {
    Part& set = At(part);
    set.fRows = static_cast<std::int64_t>(numbers.size());
    set.fMissing = SettleFinite(numbers);
    set.fNumbers = StoredCells<double>(std::move(numbers), fpMemory);
}

void NumericParts::SetCodes(std::int32_t part, std::vector<double> values, CodeVector entries) {
    Part& set = At(part);
    set.fRows = RowsOf(entries);
    set.fbCoded = true;
    const std::vector<bool> used = UsedCodes(entries, values.size());
    std::vector<bool> infinite(values.size());
    for (std::size_t code = 0; code < values.size(); ++code) {
        double& value = values[code];
        if (!used[code]) {
            value = kMissing;
        } else if (std::isfinite(value) && value != kMissing) {
            value += 0.0;
        } else {
            infinite[code] = !std::isnan(value);
            value = kNaN;
        }
    }
    if (std::find(infinite.begin(), infinite.end(), true) != infinite.end()) {
        set.fInfinite = MarkedRows(entries, infinite);
    }
    set.fvValues = std::move(values);
    set.fCodes = Stored(std::move(entries), fpMemory);
}

void NumericParts::NoteInfinite(std::int32_t part, const Oddity& oddity) {
    At(part).fInfinite = oddity;
}

bool NumericParts::AreAllCoded() const {
    return std::all_of(fvParts.begin(), fvParts.end(),
                       [](const Part& part) { return part.fbCoded || part.fRows == 0; });
}

Column NumericParts::Finish(std::int32_t threads) {
    std::int64_t firstRow = 0;
    for (const Part& part : fvParts) {
        fInfinite.Join(part.fInfinite, firstRow);
        firstRow += part.fRows;
    }
    if (AreAllCoded()) {
        if (std::optional<Column> coded = FinishCodes(threads)) {
            return std::move(*coded);
        }
    }
    return FinishNumbers(threads);
}

// Nothing when there are too many distinct values.
std::optional<Column> NumericParts::FinishCodes(std::int32_t threads) {
    std::vector<double> values;
    for (const Part& part : fvParts) {
        std::copy_if(part.fvValues.begin(), part.fvValues.end(), std::back_inserter(values),
                     [](double value) { return !std::isnan(value) && value != kMissing; });
        if (part.fvValues.size() > kMostNumberCodes) {
            return std::nullopt;
        }
    }
    std::sort(values.begin(), values.end());
    values.erase(std::unique(values.begin(), values.end()), values.end());
    if (values.size() > kMostNumberCodes) {
        return std::nullopt;
    }
    std::vector<std::vector<std::uint32_t>> newEntries(fvParts.size());
    for (std::size_t part = 0; part < fvParts.size(); ++part) {
        newEntries[part].push_back(0);
        for (const double value : fvParts[part].fvValues) {
            // Of what is missing or has no row it does not matter where it would be.
            const bool isValue = !std::isnan(value) && value != kMissing;
            const auto place = std::lower_bound(values.begin(), values.end(), value);
            newEntries[part].push_back(
                isValue ? static_cast<std::uint32_t>(place - values.begin() + 1) : 0);
        }
    }
    std::int64_t validCount = 0;
    Column::CodeChunks chunks =
        JoinedCodes(fvParts, newEntries, values.size(), fpMemory, threads, validCount);
    return Column::OfCodes(std::move(values), std::move(chunks), validCount);
}

Column NumericParts::FinishNumbers(std::int32_t threads) {
    std::atomic<std::int64_t> missing = 0;
    std::vector<std::vector<double>> tables(fvParts.size());  // by part and entry
    for (std::size_t part = 0; part < fvParts.size(); ++part) {
        missing += fvParts[part].fMissing;
        tables[part].push_back(kMissing);
        for (const double value : fvParts[part].fvValues) {
            tables[part].push_back(std::isnan(value) ? kMissing : value);
        }
    }
    PartRows rows(fvParts);
    std::vector<StoredCells<double>> chunks(static_cast<std::size_t>(rows.Chunks()));
    fvPlaced.resize(chunks.size());
    RunTasks(threads, rows.Chunks(), [&](std::int32_t chunk) {
        Cells<double> cells = std::move(fvPlaced[static_cast<std::size_t>(chunk)]);
        cells.resize(rows.ChunkSize(chunk));
        const auto take = [&](std::size_t number, std::size_t first, std::size_t count,
                              std::size_t at) {
            const Part& part = fvParts[number];
            const std::span<double> out = std::span(cells).subspan(at, count);
            if (part.fbPlaced) {
                return;
            }
            if (!part.fbCoded) {
                Cells<double> buffer;
                const std::span<const double> in = part.fNumbers.Get(first, count, buffer);
                std::copy(in.begin(), in.end(), out.begin());
                return;
            }
            std::visit(
                [&](const auto& stored) {
                    Cells<typename std::decay_t<decltype(stored)>::Value> buffer;
                    const auto in = stored.Get(first, count, buffer);
                    std::transform(in.begin(), in.end(), out.begin(),
                                   [&](auto entry) { return tables[number][entry]; });
                },
                part.fCodes);
            missing += std::count(out.begin(), out.end(), kMissing);
        };
        rows.ForChunk(chunk, take, [this](std::size_t number) {
            fvParts[number].fNumbers.Clear();
            std::visit([](auto& stored) { stored.Clear(); }, fvParts[number].fCodes);
        });
        chunks[static_cast<std::size_t>(chunk)] = StoredCells<double>(std::move(cells), fpMemory);
    });
    const std::int64_t validCount = rows.Rows() - missing;
    if (std::optional<Column> coded = AsCodes(chunks, fpMemory, validCount)) {
        return std::move(*coded);
    }
    return Column::OfNumbers(std::move(chunks), validCount);
}

// ---- texts ----

TextParts::Part& TextParts::At(std::int32_t part) {
    const std::lock_guard lock(fMutex);
    while (fvParts.size() <= static_cast<std::size_t>(part)) {
        fvParts.emplace_back();
    }
    return fvParts[static_cast<std::size_t>(part)];
}

void TextParts::SetCodes(std::int32_t part, std::vector<std::string> values, CodeVector entries) {
    Part& set = At(part);
    set.fRows = RowsOf(entries);
    set.fvbUsed = UsedCodes(entries, values.size());
    std::vector<bool> replaced(values.size());
    bool someReplaced = false;
    for (std::size_t code = 0; code < values.size(); ++code) {
        if (!set.fvbUsed[code]) {
            continue;
        }
        const bool isText = IsUtf8(values[code]);
        if (!isText) {
            values[code] = ReplaceInvalidUtf8(values[code]);
        }
        if (fpMissingTexts != nullptr && fpMissingTexts->contains(values[code])) {
            set.fvbUsed[code] = false;
            continue;
        }
        values[code].resize(TrimTrailingBlanks(values[code]).size());
        if (!isText) {
            replaced[code] = true;
            someReplaced = true;
        }
    }
    if (someReplaced) {
        set.fUndecodable = MarkedRows(entries, replaced);
    }
    set.fvValues = std::move(values);
    set.fCodes = Stored(std::move(entries), fpMemory);
}

Column TextParts::Finish(std::int32_t threads) {
    struct Place {
        std::string* fpText;
        std::uint32_t* fpNewEntry;
    };
    std::vector<std::vector<std::uint32_t>> newEntries(fvParts.size());
    std::vector<Place> places;
    std::int64_t firstRow = 0;
    for (std::size_t part = 0; part < fvParts.size(); ++part) {
        fUndecodable.Join(fvParts[part].fUndecodable, firstRow);
        firstRow += fvParts[part].fRows;
        std::vector<std::string>& values = fvParts[part].fvValues;
        newEntries[part].resize(values.size() + 1);
        for (std::size_t code = 0; code < values.size(); ++code) {
            if (fvParts[part].fvbUsed[code]) {
                places.push_back({&values[code], &newEntries[part][code + 1]});
            }
        }
    }
    std::sort(places.begin(), places.end(),
              [](const Place& a, const Place& b) { return *a.fpText < *b.fpText; });
    std::vector<std::string> values;
    for (const Place& place : places) {
        if (values.empty() || values.back() != *place.fpText) {
            values.push_back(std::move(*place.fpText));
        }
        *place.fpNewEntry = static_cast<std::uint32_t>(values.size());
    }
    std::int64_t validCount = 0;
    Column::CodeChunks chunks =
        JoinedCodes(fvParts, newEntries, values.size(), fpMemory, threads, validCount);
    return Column::OfCodes(std::move(values), std::move(chunks), validCount);
}

}  // namespace embedded
