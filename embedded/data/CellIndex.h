#ifndef PREDSEL_EMBEDDED_DATA_CELLINDEX_H
#define PREDSEL_EMBEDDED_DATA_CELLINDEX_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/data/TextDialect.h"
#include "embedded/data/TextSections.h"

namespace embedded {

/// Walks over a section some rows at a time and says where their cells are.
class CellIndex {
 public:
    /// Borrows the section's text; columns: fields of every record. REQUIRES: less than 4 GiB.
    CellIndex(const TextSection& section, TextDialect dialect, std::int32_t columns);

    /// Goes to the next rows, at most maxRows; false when there are none, or when a record has more
    /// or fewer fields.
    bool Next(std::int32_t maxRows);
    /// Rows that suit the caches.
    std::int32_t SuitableRows() const { return fSuitableRows; }
    bool IsMalformed() const { return fbMalformed; }

    /// Of the rows at hand; the first is row FirstRow() of the section.
    std::int64_t FirstRow() const { return fFirstRow; }
    std::int32_t Rows() const { return fRows; }
    /// Bytes of the section up to the end of these rows.
    std::size_t Position() const { return fPosition; }

    const char* Text() const { return fSection.fText.data(); }
    /// For row and column: At(column)[row * Stride()] is the place before the cell, the next
    /// element that behind it, but for LastLetterIsReturn.
    const std::uint32_t* At(std::int32_t column) const { return fvPlaces.data() + column; }
    std::size_t Stride() const { return fStride; }
    /// Whether the cells of a column may have the carriage return of the line end behind them.
    bool MayEndInReturn(std::int32_t column) const {
        return fSection.fbPlain && fSection.fbReturns && column + 1 == fColumns;
    }
    /// Whether cells may be quoted: those are whose first letter is the quote.
    bool MayBeQuoted() const { return !fSection.fbPlain && fDialect.fQuote != '\0'; }
    bool IsQuoted(char firstLetter) const { return firstLetter == fDialect.fQuote; }
    /// A quoted cell without its quotes, in the buffer.
    std::string_view Unquoted(std::string_view cell, std::string& buffer) const;

 private:
    void FindPlaces(std::size_t wanted);
    bool NextPlain(std::int32_t maxRows);
    bool NextCareful(std::int32_t maxRows);
    bool TakeRecord();

    TextSection fSection;
    TextDialect fDialect;
    std::int32_t fColumns;
    bool fbFast;  // every field ends at a delimiter or line feed, and nothing else is one
    std::int32_t fSuitableRows;
    bool fbMalformed = false;
    std::int64_t fFirstRow = 0;
    std::int32_t fRows = 0;
    std::size_t fPosition = 0;
    std::size_t fScanned = 0;  // bytes whose places have been found
    std::size_t fCount = 0;    // places found, from fvPlaces[1] on
    std::size_t fUsed = 0;     // of them by the rows at hand
    std::size_t fStride;
    std::vector<std::uint32_t> fvPlaces;
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_CELLINDEX_H
