#ifndef PREDSEL_EMBEDDED_DATA_PARQUETPAGE_H
#define PREDSEL_EMBEDDED_DATA_PARQUETPAGE_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "embedded/data/Cells.h"

namespace embedded {

/// What stands in a data page of an optional column, in the first version of Parquet's data pages:
/// which rows have a value (definition levels, run-length and bit-packed), then the values of these
/// rows. (Apache Parquet format, Encodings: PLAIN, RLE and RLE_DICTIONARY.)
class ParquetPage {
 public:
    /// Numbers as they are; MCMV::gMissingValue where there is none.
    void SetNumbers(std::span<const double> rows);
    /// Entries of a dictionary of so many values: place + 1, and 0 where there is none. Entry is an
    /// unsigned integer of 1, 2 or 4 bytes.
    template <class Entry>
    void SetEntries(std::span<const Entry> rows, std::size_t values);

    /// Valid until the page is set again.
    std::span<const std::uint8_t> Bytes() const { return std::span(fvBytes).first(fSize); }
    /// Rows with a value.
    std::size_t ValidCount() const { return fValid; }

 private:
    void Begin(std::size_t rows, std::size_t bytesPerRow);
    template <class Value, class MakePut>
    void TakeValid(std::span<const Value> rows, Value missing, MakePut makePut);
    void PutVarint(std::size_t number);
    template <class Entry>
    void PutPlaces(std::span<const Entry> places, unsigned width);
    template <class Entry>
    void PutPacked(std::span<const Entry> places, unsigned width);

    std::vector<std::uint8_t> fvBytes;  // longer than the page
    std::size_t fSize = 0;
    std::size_t fValid = 0;
    CodeVector fPlaces;  // room for the places of a page
};

}  // namespace embedded

#endif  // PREDSEL_EMBEDDED_DATA_PARQUETPAGE_H
