#include "embedded/data/NewColumns.h"

#include <algorithm>
#include <utility>

#include "embedded/data/ColumnBuilder.h"
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
        column.fvNumbers.assign(rows, MCMV::gMissingValue);
    } else {
        column.fvText.assign(rows, -1);
    }
    return &column.fVariable;
}

void NewColumns::Set(std::int32_t column, std::int64_t row, double value) {
    Pending& pending = fvColumns[Place(column)];
    PREDSEL_ASSERT(pending.fbNumeric, "a new numeric variable");
    pending.fvNumbers[static_cast<std::size_t>(row)] = value;
}

void NewColumns::Set(std::int32_t column, std::int64_t row, const std::string& text,
                     std::int32_t bytes) {
    Pending& pending = fvColumns[Place(column)];
    PREDSEL_ASSERT(!pending.fbNumeric, "a new string variable");
    std::size_t length = std::min(text.size(), static_cast<std::size_t>(std::max(0, bytes)));
    // A byte 10xxxxxx goes on with a character that began before it.
    while (length > 0 && length < text.size() &&
           (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U) {
        --length;
    }
    const auto next = static_cast<std::int32_t>(pending.fvTexts.size());
    const auto [place, isNew] = pending.fPlaces.emplace(text.substr(0, length), next);
    if (isNew) pending.fvTexts.push_back(place->first);
    pending.fvText[static_cast<std::size_t>(row)] = place->second;
}

std::vector<std::string> NewColumns::MoveTo(DataSet& data) {
    std::vector<std::string> names;
    for (Pending& pending : fvColumns) {
        names.push_back(pending.fVariable.GetName());
        const ColumnKind kind = KindOf(pending.fVariable);
        if (pending.fbNumeric) {
            NumericColumnBuilder builder;
            for (const double value : pending.fvNumbers) builder.Append(value);
            data.AddColumn(std::move(pending.fVariable), std::move(builder).Finish(), kind);
        } else {
            StringColumnBuilder builder;
            std::vector<StringColumnBuilder::Token> tokens;
            for (const std::string& text : pending.fvTexts) tokens.push_back(builder.Intern(text));
            for (const std::int32_t place : pending.fvText) {
                builder.Append(place < 0 ? StringColumnBuilder::kMissingToken
                                         : tokens[static_cast<std::size_t>(place)]);
            }
            data.AddColumn(std::move(pending.fVariable), std::move(builder).Finish(), kind);
        }
    }
    fvColumns.clear();
    data.SettleMeasurementLevels();
    return names;
}

}  // namespace embedded
