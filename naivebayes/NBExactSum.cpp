#include "naivebayes/NBExactSum.h"

#include <cmath>
#include <limits>

namespace {

using UInt128 = NBUInt128;

constexpr int kLimbBits = 64;
constexpr int kFractionBits = 53;

std::uint64_t Low(UInt128 number) { return static_cast<std::uint64_t>(number); }
std::uint64_t High(UInt128 number) { return static_cast<std::uint64_t>(number >> kLimbBits); }

}  // namespace

void NBExactSum::Add(double weight, NBInt128 number) {
    if (!std::isfinite(weight)) return AddNoNumber();
    if (weight == 0.0 || number == 0) return;
    int exponent = 0;
    const auto digits =
        static_cast<std::uint64_t>(std::ldexp(std::frexp(weight, &exponent), kFractionBits));
    const bool isNegative = number < 0;
    const UInt128 magnitude =
        isNegative ? UInt128{0} - static_cast<UInt128>(number) : static_cast<UInt128>(number);
    const auto position = static_cast<std::size_t>(exponent - kFractionBits - kLowestExponent);
    AddAt(position, UInt128{Low(magnitude)} * digits, isNegative);
    AddAt(position + kLimbBits, UInt128{High(magnitude)} * digits, isNegative);
}

void NBExactSum::AddAt(std::size_t position, UInt128 product, bool isNegative) {
    const auto shift = static_cast<int>(position % kLimbBits);
    const std::array<std::uint64_t, 3> parts{Low(product << shift), High(product << shift),
                                             shift == 0 ? 0 : High(product) >> (kLimbBits - shift)};
    // What goes on from limb to limb: a carry or a borrow.
    std::uint64_t over = 0;
    for (std::size_t i = position / kLimbBits, part = 0;
         i < kNumLimbs && (part < parts.size() || over != 0); ++i, ++part) {
        const UInt128 moved = UInt128{part < parts.size() ? parts[part] : 0} + over;
        const UInt128 sum = isNegative ? UInt128{fLimbs[i]} - moved : UInt128{fLimbs[i]} + moved;
        fLimbs[i] = Low(sum);
        over = High(sum) == 0 ? 0 : (isNegative ? ~High(sum) + 1 : High(sum));
    }
}

void NBExactSum::AddSum(const NBExactSum& other) {
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < kNumLimbs; ++i) {
        const UInt128 sum = UInt128{fLimbs[i]} + other.fLimbs[i] + carry;
        fLimbs[i] = Low(sum);
        carry = High(sum);
    }
    fNumLogsOfZero += other.fNumLogsOfZero;
    fNumNoNumbers += other.fNumNoNumbers;
}

void NBExactSum::SubtractSum(const NBExactSum& other) {
    // Minus one number is its complement and 1.
    std::uint64_t carry = 1;
    for (std::size_t i = 0; i < kNumLimbs; ++i) {
        const UInt128 sum = UInt128{fLimbs[i]} + ~other.fLimbs[i] + carry;
        fLimbs[i] = Low(sum);
        carry = High(sum);
    }
    fNumLogsOfZero -= other.fNumLogsOfZero;
    fNumNoNumbers += other.fNumNoNumbers;
}

double NBExactSum::Minus(const NBExactSum& other) const {
    const double value = GetValue();
    const double otherValue = other.GetValue();
    if (!std::isfinite(value) || !std::isfinite(otherValue)) return value - otherValue;
    NBExactSum difference = *this;
    difference.SubtractSum(other);
    return difference.GetValue();
}

double NBExactSum::Magnitude(const Limbs& limbs) {
    std::size_t top = kNumLimbs - 1;
    while (top > 1 && limbs[top] == 0) --top;
    // 65 bits at least; what is further down can at most decide a tie.
    const UInt128 digits = (UInt128{limbs[top]} << kLimbBits) | limbs[top - 1];
    return std::ldexp(static_cast<double>(digits),
                      static_cast<int>(top - 1) * kLimbBits + kLowestExponent);
}

double NBExactSum::GetValue() const {
    if (fNumNoNumbers > 0) return std::numeric_limits<double>::quiet_NaN();
    if (fNumLogsOfZero != 0) {
        const double infinity = std::numeric_limits<double>::infinity();
        return fNumLogsOfZero > 0 ? -infinity : infinity;
    }
    const bool isNegative = fLimbs.back() >> (kLimbBits - 1) != 0;
    if (!isNegative) return Magnitude(fLimbs);
    Limbs negated{};
    std::uint64_t carry = 1;
    for (std::size_t i = 0; i < kNumLimbs; ++i) {
        negated[i] = ~fLimbs[i] + carry;
        carry = carry != 0 && negated[i] == 0 ? 1 : 0;
    }
    return -Magnitude(negated);
}
