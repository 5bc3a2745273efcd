#ifndef PREDSEL_NAIVEBAYES_NBSCALEDPRODUCT_H
#define PREDSEL_NAIVEBAYES_NBSCALEDPRODUCT_H

#include <cstddef>
#include <cstdint>

/// A positive number of any size: fMantissa * 2^fExponent, with a mantissa from 1 to below 16.
struct NBScaledProduct {
    double fMantissa = 1.0;
    std::int64_t fExponent = 0;
    bool operator==(const NBScaledProduct&) const = default;
};

/// The inner loop of the subset search: the product over records of the sum over target categories
/// k of weight[k] * row[k], where row is the row of a predictor's table that the record's code
/// names. One logarithm of the result then serves all the records.
namespace NBMixtures {

/// Weights and rows come in groups of four, filled up with 0.
inline constexpr std::size_t kGroup = 4;

/// What one product is over.
template <class Entry>
struct Operands {
    /// width * kGroup numbers a record.
    const double* fpWeights;
    /// A number a record: the row.
    const Entry* fpEntries;
    /// width * kGroup numbers a row.
    const double* fpRows;
    std::size_t fWidth;
    /// Records, a multiple of kGroup.
    std::size_t fCount;
    /// How many sums, one behind the other, a double holds the product of: all products of so many
    /// sums and a number from 1 to 2 are normal numbers. At least 1.
    std::size_t fSafeRun;
};

/// Four running products take the records in turn, each brought back to [1, 2) after a safe run;
/// the order of all additions and multiplications is fixed, so both forms give the same bits.
template <class Entry>
NBScaledProduct Product(const Operands<Entry>& operands);
/// The same without the processor's wide registers.
template <class Entry>
NBScaledProduct PortableProduct(const Operands<Entry>& operands);

}  // namespace NBMixtures

#endif  // PREDSEL_NAIVEBAYES_NBSCALEDPRODUCT_H
