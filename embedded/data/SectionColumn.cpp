#include "embedded/data/SectionColumn.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>
#include <utility>

#include "embedded/data/CellText.h"
#include "embedded/data/PlainNumber.h"

namespace embedded {
namespace {

constexpr double kMissing = MCMV::gMissingValue;

// As many distinct texts as a byte has entries for are kept as such, numbers too.
constexpr std::size_t kMostByteTexts = std::numeric_limits<std::uint8_t>::max();

}  // namespace

CellReading::CellReading(const TextColumnRules& rules) : fRules(rules) {
    // Neutral texts may be what settles the decimal mark, which then depends on their order.
    fbMayBeNumbers = (!rules.fDeclared || *rules.fDeclared == ColumnKind::kNumber) &&
                     rules.fGroupMark == '\0' && (rules.fbPointMark || rules.fbCommaMark) &&
                     (rules.fNeutralTexts.empty() || !rules.fbPointMark || !rules.fbCommaMark);
    for (const std::string& text : rules.fMissingTexts) {
        for (const char mark : {'.', ','}) {
            if (const auto number = ParseNumber(TrimBlanks(text), mark)) {
                fvMissingNumbers.push_back(number->fValue);
            }
        }
    }
}

SectionColumn::SectionColumn(CellReading& reading, std::int32_t part, std::int64_t rows,
                             bool asTexts)
    : fpReading(&reading),
      fPart(part),
      fRows(rows),
      fbAsTexts(asTexts || !reading.fbMayBeNumbers),
      fDictionary(!fbAsTexts && reading.fbStartsAsNumbers ? 1 : 16) {
    fbMarkSettled = !reading.fRules.fbPointMark || !reading.fRules.fbCommaMark;
    fMark = reading.fRules.fbPointMark ? '.' : ',';
    if (!fbAsTexts && reading.fbStartsAsNumbers) {
        TurnIntoNumbers(0);
    } else {
        fEntries = Cells<std::uint8_t>(static_cast<std::size_t>(rows));
    }
}

std::string_view SectionColumn::Cell(const CellIndex& index, const char* cell,
                                     std::uint32_t length) {
    return index.Unquoted({cell, length}, fUnquoted);
}

void SectionColumn::Take(const CellIndex& index, std::int32_t column) {
    std::int32_t from = 0;
    while (fForm == Form::kTexts && from < index.Rows()) {
        bool fits = false;
        std::int32_t taken = from;
        std::visit(
            [&](const auto& entries) {
                using Entry = typename std::decay_t<decltype(entries)>::value_type;
                fits = TakeTexts<Entry>(index, column, from, taken);
            },
            fEntries);
        from = taken;
        if (!fits && !TurnIntoNumbers(index.FirstRow() + from)) {
            Widen();
        }
    }
    while (fForm == Form::kNumbers && from < index.Rows()) {
        std::int64_t rows = 0;
        double* const out = RoomFrom(index.FirstRow() + from, rows);
        const auto to =
            static_cast<std::int32_t>(std::min<std::int64_t>(index.Rows(), from + rows));
        if (!TakeNumbers(index, column, from, to, out)) {
            fForm = Form::kContradicted;
            fvNumbers = Cells<double>();
        }
        from = to;
    }
}

// False at the first row whose text has an entry beyond what the integer holds.
template <class Entry>
bool SectionColumn::TakeTexts(const CellIndex& index, std::int32_t column, std::int32_t from,
                              std::int32_t& taken) {
    constexpr std::uint32_t kLast = std::numeric_limits<Entry>::max();
    Entry* const out = std::get<Cells<Entry>>(fEntries).data() + index.FirstRow();
    const char* const text = index.Text();
    const std::size_t stride = index.Stride();
    const std::uint32_t* place = index.At(column) + static_cast<std::size_t>(from) * stride;
    const bool mayBeQuoted = index.MayBeQuoted();
    const bool mayEndInReturn = index.MayEndInReturn(column);
    const std::int32_t rows = index.Rows();
    CellDictionary::Probe probe(fDictionary);
    for (std::int32_t row = from; row < rows; ++row, place += stride) {
        const std::uint32_t begin = place[0] + 1;
        std::uint32_t length = place[1] - begin;
        const char* const cell = text + begin;
        if (mayEndInReturn && length > 0 && cell[length - 1] == '\r') {
            --length;
        }
        if (length == 0) {
            out[row] = 0;
            continue;
        }
        std::uint32_t entry = 0;
        if (mayBeQuoted && index.IsQuoted(*cell)) {
            // The letters may end where the buffer does.
            fUnquoted.assign(Cell(index, cell, length));
            const std::size_t size = fUnquoted.size();
            fUnquoted.append(CellDictionary::kLettersRead, '\0');
            entry = probe.Entry(fUnquoted.data(), static_cast<std::uint32_t>(size));
        } else {
            entry = probe.Entry(cell, length);
        }
        if (entry > kLast) {
            taken = row;
            return false;
        }
        out[row] = static_cast<Entry>(entry);
    }
    taken = rows;
    return true;
}

void SectionColumn::Widen() {
    const auto widened = [this](auto zero) {
        std::visit(
            [this](const auto& entries) {
                Cells<decltype(zero)> wide(entries.size());
                // Rows to come are unset.
                std::copy(entries.begin(), entries.end(), wide.begin());
                fEntries = std::move(wide);
            },
            CodeVector(std::move(fEntries)));
    };
    if (std::holds_alternative<Cells<std::uint8_t>>(fEntries)) {
        widened(std::uint16_t{0});
    } else {
        widened(std::uint32_t{0});
    }
}

// What the first rows were is in the entries. False when the column is not to be read as numbers.
bool SectionColumn::TurnIntoNumbers(std::int64_t rows) {
    if (fbAsTexts) {
        return false;
    }
    const std::size_t texts = std::min(fDictionary.Count(), kMostByteTexts);
    std::vector<double> values(texts + 1, kMissing);
    std::vector<bool> odd(texts + 1);  // missing, or noted with its row
    for (std::size_t entry = 1; entry <= texts; ++entry) {
        if (!ReadNumber(fDictionary.Text(static_cast<std::uint32_t>(entry)), 0, values[entry])) {
            fbAsTexts = true;  // the section is no section of numbers
            return false;
        }
        odd[entry] = !(std::abs(values[entry]) < kFirstInexactInteger);
    }
    fForm = Form::kNumbers;
    if (rows > 0) {
        fpReading->fbStartsAsNumbers = true;
    }
    if (!fpReading->fbPlaced) {
        fvNumbers.resize(static_cast<std::size_t>(fRows));
    }
    // Counted again, by rows.
    fInexact = Oddity();
    fInfinite = Oddity();
    fMissing = 0;
    const auto* const entries = std::get_if<Cells<std::uint8_t>>(&fEntries);
    for (std::int64_t row = 0; row < rows;) {
        std::int64_t room = 0;
        double* const out = RoomFrom(row, room);
        const std::int64_t end = std::min(rows, row + room);
        for (std::int64_t at = row; at < end; ++at) {
            const std::uint8_t entry = (*entries)[static_cast<std::size_t>(at)];
            if (entry == 0) {
                out[at - row] = kMissing;
                ++fMissing;
            } else if (odd[entry]) {
                ReadNumber(fDictionary.Text(entry), at, out[at - row]);
            } else {
                out[at - row] = values[entry];
            }
        }
        row = end;
    }
    fEntries = Cells<std::uint8_t>();
    fDictionary = CellDictionary(1);
    return true;
}

// Where numbers from a row on go, and how many have room there.
double* SectionColumn::RoomFrom(std::int64_t row, std::int64_t& rows) {
    if (!fpReading->fbPlaced) {
        rows = fRows - row;
        return fvNumbers.data() + row;
    }
    if (row < fRoomBegin || row >= fRoomBegin + static_cast<std::int64_t>(fRoom.size())) {
        fRoom = fpReading->fpNumbers->Room(fPart, row);
        fRoomBegin = row;
    }
    rows = fRoomBegin + static_cast<std::int64_t>(fRoom.size()) - row;
    return fRoom.data() + (row - fRoomBegin);
}

// False when a cell is no number.
bool SectionColumn::TakeNumbers(const CellIndex& index, std::int32_t column, std::int32_t from,
                                std::int32_t to, double* out) {
    const char* const text = index.Text();
    const std::size_t stride = index.Stride();
    const std::uint32_t* place = index.At(column) + static_cast<std::size_t>(from) * stride;
    const bool mayBeQuoted = index.MayBeQuoted();
    const bool mayEndInReturn = index.MayEndInReturn(column);
    const bool wholeOnly = fpReading->fRules.fbWholeOnly;
    const std::vector<double>& missingNumbers = fpReading->fvMissingNumbers;
    std::int32_t mostDecimals = fDecimals;
    std::int64_t missing = 0;
    for (std::int32_t row = from; row < to; ++row, place += stride, ++out) {
        const std::uint32_t begin = place[0] + 1;
        std::uint32_t length = place[1] - begin;
        const char* const cell = text + begin;
        if (mayEndInReturn && length > 0 && cell[length - 1] == '\r') {
            --length;
        }
        if (length == 0) {
            *out = kMissing;
            ++missing;
            continue;
        }
        double value = 0;
        std::int32_t decimals = 0;
        const bool quoted = mayBeQuoted && index.IsQuoted(*cell);
        if (!quoted && ReadPlainNumber(cell, length, fMark, value, decimals) && fbExample &&
            (decimals == 0 || (fbMarkSettled && !wholeOnly)) &&
            (missingNumbers.empty() || std::find(missingNumbers.begin(), missingNumbers.end(),
                                                 value) == missingNumbers.end())) {
            mostDecimals = std::max(mostDecimals, decimals);
            *out = value;
            continue;
        }
        if (!ReadNumber(quoted ? Cell(index, cell, length) : std::string_view(cell, length),
                        index.FirstRow() + row, *out)) {
            return false;
        }
        mostDecimals = std::max(mostDecimals, fDecimals);
    }
    fDecimals = mostDecimals;
    fMissing += missing;
    return true;
}

// Any cell but an empty one; false when it is no number and not missing.
bool SectionColumn::ReadNumber(std::string_view cell, std::int64_t row, double& value) {
    const TextColumnRules& rules = fpReading->fRules;
    value = kMissing;
    const std::string_view trimmed = TrimBlanks(cell);
    if (trimmed.empty() || (!rules.fMissingTexts.empty() && rules.fMissingTexts.contains(cell))) {
        ++fMissing;
        return true;
    }
    std::optional<NumberText> number = ParseNumber(trimmed, fMark);
    if (!number && !fbMarkSettled) {
        number = ParseNumber(trimmed, ',');
        fMark = number ? ',' : fMark;
    }
    const bool neutral = !rules.fNeutralTexts.empty() && rules.fNeutralTexts.contains(cell);
    if (!number || (rules.fbWholeOnly && std::isfinite(number->fValue) &&
                    number->fValue != std::floor(number->fValue))) {
        ++fMissing;
        return neutral;
    }
    const bool settles = number->fbMark && !fbMarkSettled;
    fbMarkSettled = fbMarkSettled || settles;
    fDecimals = std::max(fDecimals, number->fDecimals);
    const bool finite = std::isfinite(number->fValue);
    if (!neutral && (settles || !(finite ? fbExample : fbSpecialExample))) {
        fvExamples.emplace_back(trimmed);
        (finite ? fbExample : fbSpecialExample) = true;
    }
    if (!finite || number->fValue == kMissing) {
        if (!std::isnan(number->fValue)) {
            fInfinite.Note(row);
        }
        ++fMissing;
        return true;
    }
    if (number->fbInteger && std::abs(number->fValue) >= kFirstInexactInteger) {
        fInexact.Note(row);
    }
    value = number->fValue + 0.0;
    return true;
}

void SectionColumn::End() {
    fDictionary.Close();
    if (fForm != Form::kNumbers) {
        return;
    }
    NumericParts& parts = *fpReading->fpNumbers;
    if (fpReading->fbPlaced) {
        parts.SetPlaced(fPart, fMissing);
    } else {
        parts.SetNumbers(fPart, std::move(fvNumbers));
    }
    if (fInfinite.fCount > 0) {
        parts.NoteInfinite(fPart, fInfinite);
    }
}

}  // namespace embedded
