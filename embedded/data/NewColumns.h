#ifndef PREDSEL_EMBEDDED_DATA_NEWCOLUMNS_H
#define PREDSEL_EMBEDDED_DATA_NEWCOLUMNS_H

#include <cstdint>
#include <deque>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "embedded/data/Cells.h"
#include "embedded/data/DataSet.h"

namespace embedded {

/// Variables that a command makes. They become columns of the data set when the command has ended
/// well; until then the data set is as it was.
class NewColumns {
 public:
    /// Of a data set with that many columns and rows.
    NewColumns(std::int32_t columns, std::int64_t rows) : fFirst(columns), fRows(rows) {}

    /// How many 8-byte slots all new variables together may take in each case.
    void SetSlots(std::uint32_t slots) { fSlots = slots; }
    /// A variable without a name, missing in every case; type as KOLT_Variable::GetType. Null when
    /// it needs more slots than are left. Borrowed.
    KOLT_Variable* Make(std::int32_t type, std::int32_t& columnOut);

    std::int32_t Count() const { return static_cast<std::int32_t>(fvColumns.size()); }
    /// By dictionary index, from the number of columns of the data set.
    const KOLT_Variable& Variable(std::int32_t column) const {
        return fvColumns[Place(column)].fVariable;
    }

    /// REQUIRES: a variable of that kind that Make gave; a row of the data set.
    void Set(std::int32_t column, std::int64_t row, double value);
    /// What goes beyond so many bytes is cut off, at a character.
    void Set(std::int32_t column, std::int64_t row, const std::string& text, std::int32_t bytes);
    /// The same for many rows. MCMV::gMissingValue leaves a row as it is.
    void Set(std::int32_t column, std::span<const std::int64_t> rows,
             std::span<const double> values);
    /// Places in texts; a negative one leaves its row as it is.
    void Set(std::int32_t column, std::span<const std::int64_t> rows,
             std::span<const std::int32_t> places, const std::vector<std::string>& texts,
             std::int32_t bytes);

    /// Appends all to the data set and returns their names. REQUIRES: names that no variable has.
    std::vector<std::string> MoveTo(DataSet& data);

 private:
    struct Pending {
        KOLT_Variable fVariable;
        bool fbNumeric;
        std::vector<Cells<double>> fvNumbers;  // by chunk; empty where nothing has been set
        std::vector<std::uint32_t> fvEntries;  // by row: place in fvTexts + 1, 0 where missing
        std::vector<std::string> fvTexts;
        std::unordered_map<std::string, std::uint32_t> fEntryOf;  // by text
    };
    std::size_t Place(std::int32_t column) const;
    Pending& At(std::int32_t column, bool numeric);
    /// With room for all rows of the chunk.
    Cells<double>& ChunkOf(Pending& pending, std::size_t chunk) const;
    static std::uint32_t EntryOf(Pending& pending, const std::string& text, std::int32_t bytes);
    Column ColumnOf(Pending& pending) const;

    std::int32_t fFirst;
    std::int64_t fRows;
    std::uint32_t fSlots = 0;
    std::deque<Pending> fvColumns;  // a deque: variables that were handed out stay where they are
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_NEWCOLUMNS_H
