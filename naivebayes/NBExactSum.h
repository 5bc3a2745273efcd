#ifndef PREDSEL_NAIVEBAYES_NBEXACTSUM_H
#define PREDSEL_NAIVEBAYES_NBEXACTSUM_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "naivebayes/NBGridLog.h"

__extension__ using NBUInt128 = unsigned __int128;

/// The sum of weight * whole number, without any rounding, for all finite weights: it knows no
/// order and no parts. A long whole number in units of 2^-1152 (Kulisch 1971). Logarithms of 0 and
/// of what is no number are counted apart.
class NBExactSum {
 public:
    /// weight: at least 0. |number| is below 2^100. A weight that is infinite or no number makes
    /// the sum no number.
    void Add(double weight, NBInt128 number);
    void AddSum(const NBExactSum& other);
    void SubtractSum(const NBExactSum& other);
    /// A logarithm of 0.
    void AddLogOfZero() { ++fNumLogsOfZero; }
    void AddNoNumber() { ++fNumNoNumbers; }
    /// The sum to 53 bits; minus infinity where more logarithms of 0 were added than taken away.
    double GetValue() const;
    /// The difference to 53 bits, of infinite sums as doubles have it.
    double Minus(const NBExactSum& other) const;

 private:
    // Takes 2^26 summands of 2^1024 * 2^100, and 2^52 of those that logarithms are.
    static constexpr std::size_t kNumLimbs = 36;
    static constexpr int kLowestExponent = -1152;
    using Limbs = std::array<std::uint64_t, kNumLimbs>;

    /// Adds or takes away product at this bit.
    void AddAt(std::size_t position, NBUInt128 product, bool isNegative);
    static double Magnitude(const Limbs& limbs);

    Limbs fLimbs{};  // the lowest first; negative numbers as complements
    std::int64_t fNumLogsOfZero = 0;
    std::int64_t fNumNoNumbers = 0;
};

#endif  // PREDSEL_NAIVEBAYES_NBEXACTSUM_H
