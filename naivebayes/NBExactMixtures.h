#ifndef PREDSEL_NAIVEBAYES_NBEXACTMIXTURES_H
#define PREDSEL_NAIVEBAYES_NBEXACTMIXTURES_H

#include <cstddef>
#include <cstdint>

/// What the subset search scores equals with: products of probabilities to 106 bits, as
/// NBDoubleDouble has them, and the logarithms of their mixtures on the grid of NBGridLog. Numbers
/// come in groups of four a record, the first parts in one array and the second parts in another.
///
/// Both functions have a form for the processor's wide registers, and the same bits come from both.
namespace NBExactMixtures {

/// A scaled product's entries below this power of 2 are let go; they would only slow the arithmetic
/// down.
inline constexpr std::int32_t kNothingExponent = -900;

/// Records one behind the other: width groups each.
struct Products {
    double* fpHigh;
    double* fpLow;
};
struct ConstProducts {
    const double* fpHigh;
    const double* fpLow;
};

/// product * row for each record, scaled by the power of 2 that takes the largest number of each
/// record to from 1 to 2. entries: the row of each record. from and to may be the same. exponents
/// grow by what was taken out. Returns whether a number was let go.
/// REQUIRES: products were scaled likewise; no row has a number below 2^-200 but filling zeros.
template <class Entry>
bool Multiply(const ConstProducts& from, const ConstProducts& rows, const Entry* entries,
              std::size_t width, std::size_t count, const Products& to, std::int32_t* exponents);
/// The same without the processor's wide registers.
template <class Entry>
bool PortableMultiply(const ConstProducts& from, const ConstProducts& rows, const Entry* entries,
                      std::size_t width, std::size_t count, const Products& to,
                      std::int32_t* exponents);

/// Logarithms as NBGridLog::Parts, one a record.
struct LogsOut {
    std::int64_t* fpTops;
    std::int64_t* fpRests;
};

/// For each record the logarithm of the sum of its numbers: over its number
/// of target[i] - 1; where target[i] is 0, or target is null, times 2^exponents[i]. The sums go
/// over the groups first, then over neighbours within one.
/// REQUIRES: count is a multiple of 4; no number asked for was let go.
void Logs(const ConstProducts& products, const std::uint32_t* targets,
          const std::int32_t* exponents, std::size_t width, std::size_t count, const LogsOut& out);
/// The same without the processor's wide registers.
void PortableLogs(const ConstProducts& products, const std::uint32_t* targets,
                  const std::int32_t* exponents, std::size_t width, std::size_t count,
                  const LogsOut& out);

}  // namespace NBExactMixtures

#endif  // PREDSEL_NAIVEBAYES_NBEXACTMIXTURES_H
