#ifndef PREDSEL_EMBEDDED_DATA_TEXTCOLUMN_H
#define PREDSEL_EMBEDDED_DATA_TEXTCOLUMN_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "embedded/data/CellText.h"
#include "embedded/data/ReadColumn.h"

namespace embedded {

/// What is known about a column of cells before it is read.
struct TextColumnRules {
    /// What the dictionary declares; without it the cells decide.
    std::optional<ColumnKind> fDeclared;
    bool fbWholeOnly = false;  // numbers must be whole
    bool fbPointMark = true;   // a point may be the decimal mark
    bool fbCommaMark = false;  // a comma may be
    char fGroupMark = '\0';    // left out of numbers; '\0' none
    /// System-missing, whatever the column is.
    TextSet fMissingTexts;
    /// Declared as missing values: say nothing about what the column is; system-missing where they
    /// are no value of it.
    TextSet fNeutralTexts;
    TextSet fTrueTexts = {"true", "True", "TRUE"};
    TextSet fFalseTexts = {"false", "False", "FALSE"};
};

/// Cells of one column of a text: settles over the whole column what they are, and holds the
/// values. A column is numbers, booleans, dates or moments if every cell is; cells that are empty
/// or blank, system-missing texts and neutral texts do not count; "nan" and "inf" are numbers where
/// another number is, else text. A column without a cell that counts is numeric.
///
/// Cells are stored as what they seem to be. When a later cell shows that earlier ones meant
/// something else than what was stored, the column has to be read a second time.
///
/// What the cells are does not depend on how often each text occurs: whoever has the distinct texts
/// in order of appearance may give these alone, and ask what each stands for once that is settled.
class TextColumn {
 public:
    explicit TextColumn(TextColumnRules rules);
    TextColumn(const TextColumn&) = delete;  // the builder of texts borrows from the rules
    TextColumn& operator=(const TextColumn&) = delete;

    /// An empty cell that was not quoted.
    void AppendEmpty();
    void Append(std::string_view cell);
    /// After the last cell. False: all cells must be given once more; what they are is settled.
    bool EndReading();
    /// REQUIRES: EndReading gave true and there is no fault.
    ReadColumn Finish() &&;

    const TextColumnRules& Rules() const { return fRules; }
    /// What the cells given so far are; once they are texts, they stay texts.
    ColumnKind Kind() const;
    /// What a cell stands for in a column of Kind(), which is no text.
    struct Value {
        double fNumber = 0;  // NaN: missing
        std::int32_t fDecimals = 0;
        bool fbInexact = false;
        bool fbFault = false;  // contradicts the kind
    };
    /// REQUIRES: EndReading was called, and the cell is one of those given.
    Value ValueOf(std::string_view cell);

    /// The first cell that contradicts the declared kind; later cells are ignored.
    struct Fault {
        std::int64_t fRow;
        std::string fCell;
    };
    const std::optional<Fault>& GetFault() const { return fFault; }

 private:
    enum class State { kUndecided, kNumber, kBoolean, kDate, kDateTime, kTime, kText };

    void Classify(std::string_view cell, std::string_view trimmed);
    bool StoreAs(State state, std::string_view trimmed);
    std::optional<Value> ValueAs(State state, std::string_view trimmed);
    void TurnIntoText();
    std::optional<NumberText> Number(std::string_view trimmed);
    void StoreMissing();

    TextColumnRules fRules;
    State fState = State::kUndecided;
    bool fbSettled = false;       // by declaration or by a first reading
    bool fbStale = false;         // what is stored does not stand for the cells
    bool fbEmptySoFar = true;     // every cell so far would be missing in a string column too
    bool fbNothingStored = true;  // no value has been stored
    bool fbSpecialSeen = false;   // "nan" or "inf" among the cells
    std::int64_t fRow = 0;        // of the cell at hand
    std::int32_t fDecimals = 0;
    Oddity fInexact;
    std::optional<Fault> fFault;
    NumericColumnBuilder fNumbers;  // everything but texts
    StringColumnBuilder fTexts;
    std::string fUngrouped;  // a number without its group marks
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_TEXTCOLUMN_H
