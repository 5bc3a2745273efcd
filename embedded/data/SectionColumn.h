#ifndef PREDSEL_EMBEDDED_DATA_SECTIONCOLUMN_H
#define PREDSEL_EMBEDDED_DATA_SECTIONCOLUMN_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/data/CellDictionary.h"
#include "embedded/data/CellIndex.h"
#include "embedded/data/Cells.h"
#include "embedded/data/ColumnAssembly.h"
#include "embedded/data/TextColumn.h"

namespace embedded {

/// How the cells of one column are read before it is known what they are. Shared by the sections.
struct CellReading {
    /// Borrows the rules.
    explicit CellReading(const TextColumnRules& rules);

    const TextColumnRules& fRules;
    /// Cells may be read as numbers at once; else their texts are kept.
    bool fbMayBeNumbers = false;
    /// Numbers that a missing text reads as.
    std::vector<double> fvMissingNumbers;
    /// Many distinct numbers have been met, so that it pays to read them as such from the start.
    std::atomic<bool> fbStartsAsNumbers = false;
    /// Where the numbers go; borrowed.
    NumericParts* fpNumbers = nullptr;
    bool fbPlaced = false;  // they have Room there
};

/// The cells of one column in one section: their distinct texts and the entry of each row, or
/// where these are many and all of them numbers, the numbers themselves, which then go to the
/// parts of the column.
class SectionColumn {
 public:
    enum class Form {
        kTexts,
        kNumbers,
        kContradicted  // read as numbers, and one cell is none; the rows are lost
    };

    /// Borrows the reading. asTexts: whatever the cells are.
    SectionColumn(CellReading& reading, std::int32_t part, std::int64_t rows, bool asTexts);

    /// The rows at hand of the index, which come in order.
    void Take(const CellIndex& index, std::int32_t column);
    /// After the last row: hands numbers to the parts and gives back what only reading needs.
    void End();

    Form GetForm() const { return fForm; }
    // Of texts:
    const CellDictionary& Dictionary() const { return fDictionary; }
    CodeVector& Entries() { return fEntries; }
    // Of numbers:
    std::int32_t Decimals() const { return fDecimals; }
    const Oddity& Inexact() const { return fInexact; }  // rows counted within the section
    /// Texts that stand for all that was read as numbers when it comes to what the column is: with
    /// a decimal mark if any has one, and "nan" or "inf".
    const std::vector<std::string>& Examples() const { return fvExamples; }

 private:
    template <class Entry>
    bool TakeTexts(const CellIndex& index, std::int32_t column, std::int32_t from,
                   std::int32_t& taken);
    bool TakeNumbers(const CellIndex& index, std::int32_t column, std::int32_t from,
                     std::int32_t to, double* out);
    bool ReadNumber(std::string_view cell, std::int64_t row, double& value);
    void Widen();
    bool TurnIntoNumbers(std::int64_t rows);
    double* RoomFrom(std::int64_t row, std::int64_t& rows);
    std::string_view Cell(const CellIndex& index, const char* cell, std::uint32_t length);

    CellReading* fpReading;
    std::int32_t fPart;
    std::int64_t fRows;
    Form fForm = Form::kTexts;
    bool fbAsTexts;
    CellDictionary fDictionary;
    CodeVector fEntries;
    // As numbers:
    Cells<double> fvNumbers;  // unless they have their room in the parts
    std::span<double> fRoom;
    std::int64_t fRoomBegin = 0;
    std::int64_t fMissing = 0;
    std::int32_t fDecimals = 0;
    char fMark = '\0';  // the decimal mark that was met or is the only one
    bool fbMarkSettled = false;
    bool fbExample = false;         // a number is among the examples
    bool fbSpecialExample = false;  // "nan" or "inf" is
    Oddity fInexact;
    Oddity fInfinite;
    std::vector<std::string> fvExamples;
    std::string fUnquoted;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_SECTIONCOLUMN_H
