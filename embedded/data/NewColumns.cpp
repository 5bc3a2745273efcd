#include "embedded/data/NewColumns.h"

#include <algorithm>
#include <utility>

#include "embedded/data/ColumnAssembly.h"
#include "host/Assertion.h"

namespace embedded {
namespace {

ColumnKind KindOf(const KOLT_Variable& variable) {
    if (variable.GetType() != 0) return ColumnKind::kString;
    switch (variable.GetFormat().fCode) {
        case kFormatDate:
            return ColumnKind::kDate;
        case kFormatDateTime:
            return ColumnKind::kDateTime;
        case kFormatTime:
            return ColumnKind::kTime;
        default:
            return ColumnKind::kNumber;
    }
}

}  // namespace

std::size_t NewColumns::Place(std::int32_t column) const {
    PREDSEL_ASSERT(column >= fFirst && column - fFirst < Count(), "a new variable");
    return static_cast<std::size_t>(column - fFirst);
}

KOLT_Variable* NewColumns::Make(std::int32_t type, std::int32_t& columnOut) {
    const std::uint32_t slots = type == 0 ? 1 : (static_cast<std::uint32_t>(type) + 7) / 8;
    if (slots > fSlots) return nullptr;
    fSlots -= slots;
    columnOut = fFirst + Count();
    Pending& column = fvColumns.emplace_back();
    column.fVariable.SetType(type);
    if (type != 0) column.fVariable.SetFormat(kFormatString, type, 0);
    column.fbNumeric = type == 0;
    const auto rows = static_cast<std::size_t>(fRows);
    if (column.fbNumeric) {
        column.fvNumbers.resize((rows + kChunkRows - 1) / kChunkRows);
    } else {
        column.fvEntries.resize(rows);
    }
    return &column.fVariable;
}

NewColumns::Pending& NewColumns::At(std::int32_t column, bool numeric) {
    Pending& pending = fvColumns[Place(column)];
    PREDSEL_ASSERT(pending.fbNumeric == numeric, "a new variable of that kind");
    return pending;
}

Cells<double>& NewColumns::ChunkOf(Pending& pending, std::size_t chunk) const {
    Cells<double>& numbers = pending.fvNumbers[chunk];
    if (numbers.empty()) {
        const std::int64_t first = static_cast<std::int64_t>(chunk) * kChunkRows;
        const auto rows =
            static_cast<std::size_t>(std::min<std::int64_t>(kChunkRows, fRows - first));
        numbers.resize(rows, MCMV::gMissingValue);
    }
    return numbers;
}

std::uint32_t NewColumns::EntryOf(Pending& pending, const std::string& text, std::int32_t bytes) {
    std::size_t length = std::min(text.size(), static_cast<std::size_t>(std::max(0, bytes)));
    // A byte 10xxxxxx goes on with a character that began before it.
    while (length > 0 && length < text.size() &&
           (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        --length;
    }
    const auto next = static_cast<std::uint32_t>(pending.fvTexts.size() + 1);
    const auto [known, isNew] = pending.fEntryOf.emplace(text.substr(0, length), next);
    if (isNew) pending.fvTexts.push_back(known->first);
    return known->second;
}

void NewColumns::Set(std::int32_t column, std::int64_t row, double value) {
    Pending& pending = At(column, true);
    ChunkOf(pending, static_cast<std::size_t>(
                         row / kChunkRows))[static_cast<std::size_t>(row % kChunkRows)] = value;
}

void NewColumns::Set(std::int32_t column, std::int64_t row, const std::string& text,
                     std::int32_t bytes) {
    Pending& pending = At(column, false);
    pending.fvEntries[static_cast<std::size_t>(row)] = EntryOf(pending, text, bytes);
}

void NewColumns::Set(std::int32_t column, std::span<const std::int64_t> rows,
                     std::span<const double> values) {
    PREDSEL_ASSERT(rows.size() == values.size(), "one value a row");
    Pending& pending = At(column, true);
    for (std::size_t i = 0; i < rows.size();) {
        const std::int64_t chunk = rows[i] / kChunkRows;
        Cells<double>& numbers = ChunkOf(pending, static_cast<std::size_t>(chunk));
        const std::int64_t first = chunk * kChunkRows;
        for (; i < rows.size() && rows[i] / kChunkRows == chunk; ++i) {
            double& number = numbers[static_cast<std::size_t>(rows[i] - first)];
            number = values[i] == MCMV::gMissingValue ? number : values[i];
        }
    }
}

void NewColumns::Set(std::int32_t column, std::span<const std::int64_t> rows,
                     std::span<const std::int32_t> places, const std::vector<std::string>& texts,
                     std::int32_t bytes) {
    PREDSEL_ASSERT(rows.size() == places.size(), "one text a row");
    Pending& pending = At(column, false);
    std::vector<std::uint32_t> entries(texts.size());  // 0 until it is looked up
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (places[i] < 0) continue;
        const auto place = static_cast<std::size_t>(places[i]);
        if (entries[place] == 0) entries[place] = EntryOf(pending, texts[place], bytes);
        pending.fvEntries[static_cast<std::size_t>(rows[i])] = entries[place];
    }
}

Column NewColumns::ColumnOf(Pending& pending) const {
    if (pending.fbNumeric) {
        NumericParts parts;
        Oddity infinite;  // none is told of
        for (std::size_t chunk = 0; chunk < pending.fvNumbers.size(); ++chunk) {
            Cells<double>& numbers = ChunkOf(pending, chunk);
            SettleNumbers(numbers, 0, infinite);
            parts.SetNumbers(static_cast<std::int32_t>(chunk), std::move(numbers));
        }
        return parts.Finish(1);
    }
    TextParts parts;
    ForEntriesUpTo(pending.fvTexts.size(), [&](auto zero) {
        Cells<decltype(zero)> entries(pending.fvEntries.size());
        std::transform(pending.fvEntries.begin(), pending.fvEntries.end(), entries.begin(),
                       [](std::uint32_t entry) { return static_cast<decltype(zero)>(entry); });
        parts.SetCodes(0, std::move(pending.fvTexts), std::move(entries));
    });
    return parts.Finish(1);
}

std::vector<std::string> NewColumns::MoveTo(DataSet& data) {
    std::vector<std::string> names;
    for (Pending& pending : fvColumns) {
        names.push_back(pending.fVariable.GetName());
        const ColumnKind kind = KindOf(pending.fVariable);
        Column column = ColumnOf(pending);
        data.AddColumn(std::move(pending.fVariable), std::move(column), kind);
    }
    fvColumns.clear();
    data.SettleMeasurementLevels();
    return names;
}

}  // namespace embedded
