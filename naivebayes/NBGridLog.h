#ifndef PREDSEL_NAIVEBAYES_NBGRIDLOG_H
#define PREDSEL_NAIVEBAYES_NBGRIDLOG_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "naivebayes/NBDoubleDouble.h"

__extension__ using NBInt128 = __int128;

/// Natural logarithms as whole numbers of a grid, so that their sums know no order. Nothing but
/// additions, multiplications and divisions of doubles and the fused multiply-add go into them, so
/// every machine gets the same ones.
///
/// The logarithm is that of the middle of one of 128 steps from 1 to 2, from a table, plus
/// log(1 + r) with |r| < 2^-7.9 (Tang 1990, ACM TOMS 16(4)); all but the fourth and higher powers
/// of r are carried in two doubles, so the error before rounding is below 2^-84. Two forms of one
/// number whose own errors are as small give the same grid point but for one pair in 2^21, and then
/// neighbours.
namespace NBGridLog {

/// A unit is 2^-kGridBits.
inline constexpr int kGridBits = 62;
inline constexpr double kUnit = 0x1p-62;

inline constexpr std::size_t kNumSteps = 128;
inline constexpr int kStepBits = 7;

/// Logarithms are kept as a multiple of 2^-kTopBits, the rest in two doubles.
inline constexpr int kTopBits = 40;
inline constexpr std::int64_t kLn2Top = 0xB17217F7D1;  // log(2) * 2^40
inline constexpr double kLn2Rest = 0x1.9ef35793c7673p-41;
inline constexpr double kLn2Low = 0x1.f97b57a079a19p-103;

/// By step: a number near 1 / (middle of the step), and minus its logarithm.
struct Table {
    std::array<double, kNumSteps> fReciprocals;
    std::array<double, kNumSteps> fTops;  // times 2^-kTopBits, whole numbers
    std::array<double, kNumSteps> fRests;
    std::array<double, kNumSteps> fLows;
};
const Table& GetTable();

/// 1/3 in two doubles.
inline constexpr double kThird = 1.0 / 3;
inline constexpr double kThirdLow = 0x1.5555555555555p-56;
/// (log(1 + r) - r + r^2 / 2 - r^3 / 3) / r^4 = -1/4 + r/5 - ...
inline constexpr std::array<double, 7> kSeries{-1.0 / 4, 1.0 / 5, -1.0 / 6, 1.0 / 7,
                                               -1.0 / 8, 1.0 / 9, -1.0 / 10};
/// A logarithm's rest is rounded to units in two steps: this many bits of it first.
inline constexpr int kFirstBits = 50;

/// Adding and taking away rounds to whole numbers, for numbers below 2^51; in between the bits
/// behind those of kRounder itself are the whole number.
inline constexpr double kRounder = 0x1.8p52;

/// A logarithm: fTop * 2^-kTopBits + fRest units.
struct Parts {
    std::int64_t fTop;
    std::int64_t fRest;  // below 2^55
    bool operator==(const Parts&) const = default;
};
inline NBInt128 Units(NBInt128 top, NBInt128 rest) {
    return top * (NBInt128{1} << (kGridBits - kTopBits)) + rest;
}

/// log(value * 2^exponent). value: positive, its first part a normal number.
/// |exponent| is below 2^20.
Parts LogParts(const NBDoubleDouble& value, std::int64_t exponent);
/// The same in units.
NBInt128 Log(const NBDoubleDouble& value, std::int64_t exponent);

}  // namespace NBGridLog

#endif  // PREDSEL_NAIVEBAYES_NBGRIDLOG_H
