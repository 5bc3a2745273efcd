#ifndef PREDSEL_FEATURESELECT_FSFIXEDSUMS_H
#define PREDSEL_FEATURESELECT_FSFIXEDSUMS_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "featureselect/FSExactSum.h"

/// Exact sums of a column of numbers, of their squares and of their products with another column.
///
/// The numbers become whole ones on a grid fine enough for all of them: limbs of some 50 bits (26
/// where a processor multiplies no more), whose products and sums are integers, so that the order
/// in which they are added shows nowhere. A number that the grid does not hold, as one whose
/// magnitude is far below that of the largest, is left out and handed back by its position.
namespace FSFixedSums {

/// Instruction sets that the loops are compiled for; all give the same sums.
enum class Form { kPortable, kAvx2, kAvx512 };

/// The best form of this processor.
Form BestForm();
bool IsAvailable(Form form);

/// What a column holds, MCMV::gMissingValue left out.
struct Range {
    double fLowest = 0;  // of the valid values
    double fHighest = 0;
    std::size_t fValid = 0;
    /// All values are finite, and none is so small or so large that scaling it would lose it.
    bool fbPlain = true;
    /// All magnitudes are below 2^fPower.
    std::int32_t fPower = 0;
};
Range RangeOf(std::span<const double> values, Form form = BestForm());

/// Positions in a column.
using Rows = std::vector<std::uint32_t>;

/// A column on its grid, to multiply others with. Missing values and odd ones count as 0.
struct Limbs {
    static constexpr std::size_t kMost = 3;

    Form fForm = Form::kPortable;
    std::int32_t fPower = 0;  // of the grid, see Range
    std::size_t fRows = 0;
    std::vector<std::int64_t> fvLimbs;  // limb by limb, the highest first
    std::size_t fStride = 0;            // from one limb to the next, rows rounded up
    Rows fvOdd;                         // that the grid doesn't hold, ascending
};
/// REQUIRES: the range is that of the values, and plain.
Limbs Split(std::span<const double> values, const Range& range, Form form = BestForm());

/// What became of the values of a column.
struct Seen {
    std::size_t fValid = 0;  // odd ones included
    Rows fvMissing;          // where asked for
    Rows fvOdd;              // left out of all sums
};

/// Adds a column to its sum and its sum of squares. REQUIRES: range is that of the column or of a
/// longer one that it is part of, and plain.
void Add(std::span<const double> values, const Range& range, FSExactSum& sum, FSExactSum& squares,
         Seen& seen, Form form = BestForm());
/// The same, and the sum of products with the rows of the other column from `first` on; seen holds
/// the missing rows too. REQUIRES: other was split for the same form.
void Add(std::span<const double> values, const Range& range, const Limbs& other, std::size_t first,
         FSExactSum& sum, FSExactSum& squares, FSExactSum& products, Seen& seen,
         Form form = BestForm());
/// The sum of products alone, with the rows of the other column from `first` on.
void AddProducts(std::span<const double> values, const Range& range, const Limbs& other,
                 std::size_t first, FSExactSum& products, Seen& seen, Form form = BestForm());
/// The sum of so many rows of a split column from `first` on.
void AddSum(const Limbs& limbs, std::size_t first, std::size_t rows, FSExactSum& sum);

}  // namespace FSFixedSums

#endif  // PREDSEL_FEATURESELECT_FSFIXEDSUMS_H
