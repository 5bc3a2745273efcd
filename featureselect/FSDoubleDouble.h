#ifndef PREDSEL_FEATURESELECT_FSDOUBLEDOUBLE_H
#define PREDSEL_FEATURESELECT_FSDOUBLEDOUBLE_H

#include <cmath>

/// A number of about 31 digits, the unevaluated sum of two doubles (Dekker 1971, Knuth 1969).
/// For values and results far from the ends of the range of doubles. Only a quotient may leave it:
/// it then is the infinity or zero that plain doubles give.
class FSDoubleDouble {
 public:
    FSDoubleDouble(double value = 0.0) : fHigh(value) {}  // implicit: a double is one exactly

    /// a + b without rounding.
    static FSDoubleDouble ExactSum(double a, double b) {
        const double sum = a + b;
        const double bPart = sum - a;
        return {sum, (a - (sum - bPart)) + (b - bPart)};
    }
    /// a * b without rounding.
    static FSDoubleDouble ExactProduct(double a, double b) {
        const double product = a * b;
        return {product, std::fma(a, b, -product)};
    }

    /// The number rounded to a double.
    double High() const { return fHigh; }
    /// What High() leaves out.
    double Low() const { return fLow; }

    FSDoubleDouble operator-() const { return {-fHigh, -fLow}; }
    friend FSDoubleDouble operator+(const FSDoubleDouble& a, const FSDoubleDouble& b) {
        const FSDoubleDouble high = ExactSum(a.fHigh, b.fHigh);
        const FSDoubleDouble low = ExactSum(a.fLow, b.fLow);
        const FSDoubleDouble sum = Normalised(high.fHigh, high.fLow + low.fHigh);
        return Normalised(sum.fHigh, sum.fLow + low.fLow);
    }
    friend FSDoubleDouble operator-(const FSDoubleDouble& a, const FSDoubleDouble& b) {
        return a + (-b);
    }
    friend FSDoubleDouble operator*(const FSDoubleDouble& a, const FSDoubleDouble& b) {
        const FSDoubleDouble product = ExactProduct(a.fHigh, b.fHigh);
        return Normalised(product.fHigh, product.fLow + (a.fHigh * b.fLow + a.fLow * b.fHigh));
    }
    friend FSDoubleDouble operator/(const FSDoubleDouble& a, const FSDoubleDouble& b) {
        const double first = a.fHigh / b.fHigh;
        if (!std::isfinite(first) || first == 0.0)
            return first;  // over- or underflow, nothing to refine
        const FSDoubleDouble rest = a - b * first;
        const double second = rest.fHigh / b.fHigh;
        const double third = (rest - b * second).fHigh / b.fHigh;
        return Normalised(first, second) + third;
    }
    /// Exact as long as both parts stay in the range of doubles.
    FSDoubleDouble TimesPowerOfTwo(int power) const {
        return {std::ldexp(fHigh, power), std::ldexp(fLow, power)};
    }
    /// Of a number above 0, by one step of Newton's method (Karp & Markstein 1997).
    FSDoubleDouble SquareRoot() const {
        const double root = std::sqrt(fHigh);
        const FSDoubleDouble rest = *this - ExactProduct(root, root);
        return ExactSum(root, rest.fHigh / (2.0 * root));
    }

 private:
    FSDoubleDouble(double high, double low) : fHigh(high), fLow(low) {}
    // high + low with the smaller part last; REQUIRES: |high| >= |low| or high = 0.
    static FSDoubleDouble Normalised(double high, double low) {
        const double sum = high + low;
        return {sum, low - (sum - high)};
    }

    double fHigh;
    double fLow = 0.0;
};

#endif  // PREDSEL_FEATURESELECT_FSDOUBLEDOUBLE_H
