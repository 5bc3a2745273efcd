#ifndef PREDSEL_NAIVEBAYES_NBDOUBLEDOUBLE_H
#define PREDSEL_NAIVEBAYES_NBDOUBLEDOUBLE_H

#include <cmath>

/// A number as the sum of two doubles, the second at most half a unit of the first: 106 bits.
/// Dekker (1971), Numerische Mathematik 18; with the fused multiply-add for the error of a product.
/// For finite numbers that stay clear of both ends of a double's range. Sums are of numbers of one
/// sign. Relative errors are below 2^-102.
struct NBDoubleDouble {
    double fHigh = 0.0;
    double fLow = 0.0;

    NBDoubleDouble() = default;
    explicit NBDoubleDouble(double high, double low = 0.0) : fHigh(high), fLow(low) {}
    /// high + low, where |high| is not below |low|.
    static NBDoubleDouble Ordered(double high, double low) {
        const double sum = high + low;
        return NBDoubleDouble(sum, low - (sum - high));
    }
    /// left + right, without error.
    static NBDoubleDouble Sum(double left, double right) {
        const double sum = left + right;
        const double added = sum - left;
        return NBDoubleDouble(sum, (left - (sum - added)) + (right - added));
    }
    bool operator==(const NBDoubleDouble&) const = default;
};

// NBExactMixtures.cpp has all these for four numbers at a time; the order of operations is the
// same.

inline NBDoubleDouble operator+(const NBDoubleDouble& left, const NBDoubleDouble& right) {
    const NBDoubleDouble sum = NBDoubleDouble::Sum(left.fHigh, right.fHigh);
    return NBDoubleDouble::Ordered(sum.fHigh, sum.fLow + (left.fLow + right.fLow));
}

inline NBDoubleDouble operator*(const NBDoubleDouble& left, const NBDoubleDouble& right) {
    const double product = left.fHigh * right.fHigh;
    const double error = std::fma(left.fHigh, right.fHigh, -product);
    return NBDoubleDouble::Ordered(product,
                                   error + (left.fHigh * right.fLow + left.fLow * right.fHigh));
}

inline NBDoubleDouble operator/(const NBDoubleDouble& left, const NBDoubleDouble& right) {
    const double inverse = 1.0 / right.fHigh;
    const double quotient = left.fHigh * inverse;
    const double rest = std::fma(-quotient, right.fHigh, left.fHigh);
    return NBDoubleDouble::Ordered(quotient,
                                   (rest + (left.fLow - quotient * right.fLow)) * inverse);
}

/// (a + b) + (c + d)
inline NBDoubleDouble SumOfFour(const NBDoubleDouble& a, const NBDoubleDouble& b,
                                const NBDoubleDouble& c, const NBDoubleDouble& d) {
    const NBDoubleDouble left = NBDoubleDouble::Sum(a.fHigh, b.fHigh);
    const NBDoubleDouble right = NBDoubleDouble::Sum(c.fHigh, d.fHigh);
    const NBDoubleDouble sum = NBDoubleDouble::Sum(left.fHigh, right.fHigh);
    const double lows = (left.fLow + (a.fLow + b.fLow)) + (right.fLow + (c.fLow + d.fLow));
    return NBDoubleDouble::Ordered(sum.fHigh, sum.fLow + lows);
}

#endif  // PREDSEL_NAIVEBAYES_NBDOUBLEDOUBLE_H
