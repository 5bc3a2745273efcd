#include "embedded/data/TextColumn.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace embedded {

TextColumn::TextColumn(TextColumnRules rules)
    : fRules(std::move(rules)), fTexts(&fRules.fMissingTexts) {
    if (!fRules.fDeclared) {
        return;
    }
    fbSettled = true;
    switch (*fRules.fDeclared) {
        case ColumnKind::kNumber:
            fState = State::kNumber;
            break;
        case ColumnKind::kBoolean:
            fState = State::kBoolean;
            break;
        case ColumnKind::kDate:
            fState = State::kDate;
            break;
        case ColumnKind::kDateTime:
            fState = State::kDateTime;
            break;
        case ColumnKind::kTime:
            fState = State::kTime;
            break;
        case ColumnKind::kString:
            fState = State::kText;
            break;
    }
}

void TextColumn::StoreMissing() {
    if (fState == State::kText) {
        fTexts.AppendMissing();
    } else {
        fNumbers.AppendMissing();
    }
}

void TextColumn::AppendEmpty() {
    if (!fbStale && !fFault) {
        StoreMissing();
    }
    ++fRow;
}

void TextColumn::Append(std::string_view cell) {
    if (fFault || (fbStale && fState == State::kText)) {
        ++fRow;
        return;
    }
    if (fState == State::kText) {
        fTexts.Append(cell);
    } else if (!fRules.fMissingTexts.empty() && fRules.fMissingTexts.contains(cell)) {
        StoreMissing();
    } else {
        Classify(cell, TrimBlanks(cell));
    }
    ++fRow;
}

// The column is no text so far.
void TextColumn::Classify(std::string_view cell, std::string_view trimmed) {
    if (trimmed.empty()) {
        fbEmptySoFar = false;
        StoreMissing();
        return;
    }
    if (!fRules.fNeutralTexts.empty() && fRules.fNeutralTexts.contains(cell)) {
        fbEmptySoFar = false;
        const bool specialSeen = fbSpecialSeen;
        if (!StoreAs(fState == State::kUndecided ? State::kNumber : fState, trimmed)) {
            StoreMissing();
        }
        fbSpecialSeen = specialSeen;
        return;
    }
    if (fState != State::kUndecided) {
        if (StoreAs(fState, trimmed)) {
            return;
        }
        if (fbSettled) {
            fFault = Fault{fRow, std::string(cell)};
            return;
        }
        if (fState == State::kDate && ParseDateTime(trimmed)) {
            fNumbers.Scale(86400);
            fState = State::kDateTime;
            StoreAs(fState, trimmed);
            return;
        }
    } else if (StoreAs(State::kNumber, trimmed)) {
        // "nan" and "inf" may still turn out to be text.
        fState = fbSpecialSeen && fbNothingStored ? State::kUndecided : State::kNumber;
        return;
    } else if (!fbSpecialSeen) {
        for (const State state : {State::kBoolean, State::kDate, State::kDateTime}) {
            const bool stale = fbStale || !fbNothingStored;
            if (StoreAs(state, trimmed)) {
                fState = state;
                fbStale = stale;
                return;
            }
        }
    }
    TurnIntoText();
    if (!fbStale) {
        fTexts.Append(cell);
    }
}

// Stores the cell as a value of that state; false when it is none.
bool TextColumn::StoreAs(State state, std::string_view trimmed) {
    const std::optional<Value> value = ValueAs(state, trimmed);
    if (!value) {
        return false;
    }
    fDecimals = std::max(fDecimals, value->fDecimals);
    if (value->fbInexact) {
        fInexact.Note(fRow);
    }
    fNumbers.Append(value->fNumber);
    fbEmptySoFar = false;
    if (std::isfinite(value->fNumber)) {
        fbNothingStored = false;
    } else {
        fbSpecialSeen = true;
    }
    return true;
}

// The cell as a value of that state, if it is one.
std::optional<TextColumn::Value> TextColumn::ValueAs(State state, std::string_view trimmed) {
    Value result;
    std::optional<double> value;
    switch (state) {
        case State::kUndecided:
        case State::kText:
            return std::nullopt;
        case State::kNumber: {
            const std::optional<NumberText> number = Number(trimmed);
            if (!number || (fRules.fbWholeOnly && std::isfinite(number->fValue) &&
                            number->fValue != std::floor(number->fValue))) {
                return std::nullopt;
            }
            result.fDecimals = number->fDecimals;
            result.fbInexact = number->fbInteger && std::isfinite(number->fValue) &&
                               std::abs(number->fValue) >= kFirstInexactInteger;
            value = number->fValue;
            break;
        }
        case State::kBoolean:
            if (fRules.fTrueTexts.contains(trimmed)) {
                value = 1;
            } else if (fRules.fFalseTexts.contains(trimmed)) {
                value = 0;
            }
            break;
        case State::kDate:
            value = ParseDate(trimmed);
            break;
        case State::kDateTime:
            value = ParseDateTime(trimmed);
            if (!value) {
                value = ParseDate(trimmed);
                value = value ? std::optional(*value * 86400) : value;
            }
            break;
        case State::kTime:
            value = ParseTime(trimmed);
            break;
    }
    if (!value) {
        return std::nullopt;
    }
    result.fNumber = *value;
    return result;
}

TextColumn::Value TextColumn::ValueOf(std::string_view cell) {
    Value missing;
    missing.fNumber = std::numeric_limits<double>::quiet_NaN();
    const std::string_view trimmed = TrimBlanks(cell);
    if (trimmed.empty() || fRules.fMissingTexts.contains(cell)) {
        return missing;
    }
    if (const auto value =
            ValueAs(fState == State::kUndecided ? State::kNumber : fState, trimmed)) {
        return *value;
    }
    missing.fbFault = !fRules.fNeutralTexts.contains(cell);
    return missing;
}

std::optional<NumberText> TextColumn::Number(std::string_view trimmed) {
    if (fRules.fGroupMark != '\0') {
        fUngrouped.assign(trimmed);
        std::erase(fUngrouped, fRules.fGroupMark);
        trimmed = fUngrouped;
    }
    std::optional<NumberText> number;
    if (fRules.fbPointMark) {
        number = ParseNumber(trimmed, '.');
        if (number) {
            // A column has one decimal mark.
            fRules.fbCommaMark = fRules.fbCommaMark && !number->fbMark;
            return number;
        }
    }
    if (fRules.fbCommaMark) {
        number = ParseNumber(trimmed, ',');
        if (number) {
            fRules.fbPointMark = fRules.fbPointMark && !number->fbMark;
        }
    }
    return number;
}

void TextColumn::TurnIntoText() {
    fState = State::kText;
    fNumbers = NumericColumnBuilder();
    fbStale = !fbEmptySoFar;
    for (std::int64_t row = 0; row < fRow && !fbStale; ++row) {
        fTexts.AppendMissing();
    }
}

bool TextColumn::EndReading() {
    if (fState == State::kUndecided && fbSpecialSeen && fbNothingStored) {
        TurnIntoText();
    }
    if (!fbStale) {
        return true;
    }
    fbStale = false;
    fbSettled = true;
    fRow = 0;
    fDecimals = 0;
    fInexact = Oddity();
    fNumbers = NumericColumnBuilder();
    fTexts = StringColumnBuilder(&fRules.fMissingTexts);
    return false;
}

ColumnKind TextColumn::Kind() const {
    switch (fState) {
        case State::kBoolean:
            return ColumnKind::kBoolean;
        case State::kDate:
            return ColumnKind::kDate;
        case State::kDateTime:
            return ColumnKind::kDateTime;
        case State::kTime:
            return ColumnKind::kTime;
        case State::kText:
            return ColumnKind::kString;
        case State::kUndecided:
        case State::kNumber:
            break;
    }
    return ColumnKind::kNumber;
}

ReadColumn TextColumn::Finish() && {
    if (fState == State::kText) {
        const Oddity undecodable = fTexts.Undecodable();
        ReadColumn result{std::move(fTexts).Finish(), ColumnKind::kString};
        result.fUndecodable = undecodable;
        return result;
    }
    const ColumnKind kind = Kind();
    const Oddity infinite = fNumbers.Infinite();
    ReadColumn result{std::move(fNumbers).Finish(), kind};
    result.fInfinite = infinite;
    result.fInexact = fInexact;
    if (kind == ColumnKind::kNumber) {
        result.fDecimals = std::min(fDecimals, 16);
    }
    return result;
}

}  // namespace embedded
