#include "featureselect/FSDoubleDoubleLog.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace {

// The series of atanh(s) / s is 1 + z * (1/3 + z/5 + z^2/7 + ...) with z = s^2.
constexpr std::size_t kExactTerms = 5;

std::array<FSDoubleDouble, kExactTerms> OddReciprocals() {
    std::array<FSDoubleDouble, kExactTerms> reciprocals;
    for (std::size_t k = 0; k < kExactTerms; ++k) {
        reciprocals[k] = FSDoubleDouble(1.0) / static_cast<double>(2 * k + 3);
    }
    return reciprocals;
}

// The bracket of that series to `terms` terms, of which the first `exact` need all digits.
template <std::size_t exact, std::size_t terms>
FSDoubleDouble AtanhTail(const FSDoubleDouble& z) {
    static_assert(exact <= kExactTerms && exact <= terms);
    static const std::array<FSDoubleDouble, kExactTerms> kReciprocals = OddReciprocals();
    double rest = 0.0;
    for (std::size_t k = terms; k-- > exact;) {
        rest = rest * z.High() + 1.0 / static_cast<double>(2 * k + 3);
    }
    FSDoubleDouble sum = rest;
    for (std::size_t k = exact; k-- > 0;) sum = sum * z + kReciprocals[k];
    return sum;
}

// 2 * atanh(s), term by term: for |s| <= 1/3.
FSDoubleDouble TwiceAtanh(const FSDoubleDouble& s) {
    const FSDoubleDouble z = s * s;
    FSDoubleDouble power = s * 2.0;
    FSDoubleDouble sum = power;
    for (int odd = 3; std::abs(power.High()) > 1e-34; odd += 2) {
        power = power * z;
        sum = sum + power / static_cast<double>(odd);
    }
    return sum;
}

// Logarithms of the middles of kPieces equal pieces of [0.5, 1), and of 2.
constexpr std::size_t kPieces = 128;
struct LogTable {
    LogTable() {
        for (std::size_t piece = 0; piece < kPieces; ++piece) {
            const FSDoubleDouble middle = Middle(piece);
            fMiddles[piece] = TwiceAtanh((middle - 1.0) / (middle + 1.0));
        }
        fTwo = TwiceAtanh(FSDoubleDouble(1.0) / 3.0);
    }
    static double Middle(std::size_t piece) {
        return 0.5 + (static_cast<double>(piece) + 0.5) / (2.0 * kPieces);
    }
    std::array<FSDoubleDouble, kPieces> fMiddles;
    FSDoubleDouble fTwo;
};

}  // namespace

// a / b is about middle * 2^e, the middle being that of a piece, and so near to it that the series
// of log(a / (b * middle * 2^e)) = 2 * atanh((a - b * middle * 2^e) / (a + b * middle * 2^e)) has
// few terms: its z is at most 2^-18.
FSDoubleDouble LogOfRatio(const FSDoubleDouble& a, const FSDoubleDouble& b) {
    static const LogTable kTable;
    int exponent = 0;
    const double mantissa = std::frexp(a.High() / b.High(), &exponent);
    const auto piece = static_cast<std::size_t>((mantissa - 0.5) * (2.0 * kPieces));
    const FSDoubleDouble near = b * std::ldexp(LogTable::Middle(piece), exponent);
    const FSDoubleDouble s = (a - near) / (a + near);
    const FSDoubleDouble z = s * s;
    const FSDoubleDouble rest = s * 2.0 * (z * AtanhTail<2, 5>(z) + 1.0);
    return kTable.fTwo * static_cast<double>(exponent) + kTable.fMiddles[piece] + rest;
}

FSDoubleDouble AtanhExcess(const FSDoubleDouble& s) {
    const FSDoubleDouble z = s * s;
    return z * (s * (s + 1.0) * AtanhTail<5, 11>(z) + 1.0);
}
