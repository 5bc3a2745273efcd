#ifndef PREDSEL_FEATURESELECT_FSSCALED_H
#define PREDSEL_FEATURESELECT_FSSCALED_H

#include <cmath>
#include <cstdint>
#include <limits>

#include "featureselect/FSDoubleDouble.h"

/// A number of about 31 digits and any magnitude: a mantissa from 1 up to 2 in absolute value (or
/// 0, or NaN) and a power of two. So products and quotients of sums of squares of values as large
/// as doubles can be stay in range; only Value() leaves it.
class FSScaled {
 public:
    FSScaled() = default;
    /// mantissa * 2^exponent.
    explicit FSScaled(const FSDoubleDouble& mantissa, std::int64_t exponent = 0)
        : fMantissa(mantissa), fExponent(exponent) {
        const double high = mantissa.High();
        if (high == 0.0 || !std::isfinite(high)) {
            fExponent = 0;
            return;
        }
        const int power = std::ilogb(high);
        fMantissa = mantissa.TimesPowerOfTwo(-power);
        fExponent += power;
    }
    explicit FSScaled(double value) : FSScaled(FSDoubleDouble(value)) {}

    bool IsPositive() const { return fMantissa.High() > 0.0; }
    bool IsZero() const { return fMantissa.High() == 0.0; }

    friend FSScaled operator*(const FSScaled& a, const FSScaled& b) {
        return FSScaled(a.fMantissa * b.fMantissa, a.fExponent + b.fExponent);
    }
    /// REQUIRES: b is not 0.
    friend FSScaled operator/(const FSScaled& a, const FSScaled& b) {
        return FSScaled(a.fMantissa / b.fMantissa, a.fExponent - b.fExponent);
    }
    friend FSScaled operator+(const FSScaled& a, const FSScaled& b) {
        if (a.IsZero()) return b;
        if (b.IsZero()) return a;
        if (a.fExponent < b.fExponent) return b + a;
        const std::int64_t apart = a.fExponent - b.fExponent;
        if (apart > kDigits) return a;
        return FSScaled(a.fMantissa + b.fMantissa.TimesPowerOfTwo(-static_cast<int>(apart)),
                        a.fExponent);
    }
    /// Of a number not below 0.
    FSScaled SquareRoot() const {
        if (!IsPositive()) return *this;
        const bool odd = fExponent % 2 != 0;
        const FSDoubleDouble even = odd ? fMantissa.TimesPowerOfTwo(1) : fMantissa;
        return FSScaled(even.SquareRoot(), (odd ? fExponent - 1 : fExponent) / 2);
    }
    /// Smaller in value; by magnitude, then by what the mantissas leave out.
    friend bool operator<(const FSScaled& a, const FSScaled& b) {
        const FSScaled difference = a + b.Negated();
        return difference.fMantissa.High() < 0.0;
    }
    FSScaled Negated() const {
        FSScaled negated = *this;
        negated.fMantissa = -negated.fMantissa;
        return negated;
    }

    /// The nearest double, but for the last digit of what 31 digits leave open; the largest double
    /// for all beyond it.
    double Value() const {
        constexpr std::int64_t kBeyond = 3000;
        const auto power = static_cast<int>(fExponent > kBeyond    ? kBeyond
                                            : fExponent < -kBeyond ? -kBeyond
                                                                   : fExponent);
        const double value = std::ldexp(fMantissa.High(), power);
        if (std::isinf(value)) return std::copysign(std::numeric_limits<double>::max(), value);
        return value;
    }
    /// Whether Value() is the largest double instead of the number.
    bool IsBeyondDouble() const { return fExponent >= std::numeric_limits<double>::max_exponent; }

 private:
    static constexpr std::int64_t kDigits = 106;

    FSDoubleDouble fMantissa;
    std::int64_t fExponent = 0;
};

#endif  // PREDSEL_FEATURESELECT_FSSCALED_H
