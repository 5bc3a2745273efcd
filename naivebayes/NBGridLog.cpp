#include "naivebayes/NBGridLog.h"

#include <bit>
#include <cmath>

namespace NBGridLog {

namespace {

constexpr int kFractionBits = 52;
constexpr std::int64_t kExponentOfOne = 1023;
constexpr std::uint64_t kFractionMask = (std::uint64_t{1} << kFractionBits) - 1;
constexpr std::uint64_t kOne = std::uint64_t{kExponentOfOne} << kFractionBits;

/// The whole number nearest to one below 2^51.
std::int64_t Whole(double number) {
    return std::bit_cast<std::int64_t>(number + kRounder) - std::bit_cast<std::int64_t>(kRounder);
}

/// -log(reciprocal) by 2 * artanh(z) = 2 * (z + z^3/3 + ...), z = (1 - reciprocal) / (1 +
/// reciprocal), which is at most 1/3.
NBDoubleDouble MinusLog(double reciprocal) {
    constexpr int kTerms = 36;  // 9^-36 is 2^-114
    const NBDoubleDouble z =
        NBDoubleDouble(1.0 - reciprocal) / NBDoubleDouble::Ordered(1.0, reciprocal);
    const NBDoubleDouble square = z * z;
    NBDoubleDouble sum;
    for (int term = kTerms; term-- > 0;) {
        sum = sum * square + NBDoubleDouble(2.0) / NBDoubleDouble(2.0 * term + 1.0);
    }
    return sum * z;
}

Table MakeTable() {
    Table table{};
    for (std::size_t i = 0; i < kNumSteps; ++i) {
        const double middle = 1.0 + (static_cast<double>(i) + 0.5) / kNumSteps;
        table.fReciprocals[i] = 1.0 / middle;
        const NBDoubleDouble log = MinusLog(table.fReciprocals[i]);
        table.fTops[i] = static_cast<double>(Whole(std::ldexp(log.fHigh, kTopBits)));
        // The difference is exact, being of neighbours.
        const NBDoubleDouble rest =
            NBDoubleDouble::Sum(log.fHigh - std::ldexp(table.fTops[i], -kTopBits), log.fLow);
        table.fRests[i] = rest.fHigh;
        table.fLows[i] = rest.fLow;
    }
    return table;
}

}  // namespace

const Table& GetTable() {
    static const Table kTable = MakeTable();
    return kTable;
}

Parts LogParts(const NBDoubleDouble& value, std::int64_t exponent) {
    const Table& table = GetTable();
    const auto bits = std::bit_cast<std::uint64_t>(value.fHigh);
    const std::int64_t own = static_cast<std::int64_t>(bits >> kFractionBits) - kExponentOfOne;
    const std::int64_t moved = own + exponent;
    const double mantissa = std::bit_cast<double>((bits & kFractionMask) | kOne);
    const double low = std::ldexp(value.fLow, static_cast<int>(-own));
    const std::size_t step = (bits & kFractionMask) >> (kFractionBits - kStepBits);

    // r in two parts; the difference is exact. No sum is brought into order before the last.
    const double reciprocal = table.fReciprocals[step];
    const double product = mantissa * reciprocal;
    const double error = std::fma(mantissa, reciprocal, -product);
    const double r = product - 1.0;
    const double rLow = error + low * reciprocal;
    const double square = r * r;
    const double squareLow = std::fma(r, r, -square) + (r + r) * rLow;
    const double cube = square * r;
    const double cubeLow = std::fma(square, r, -cube) + (square * rLow + squareLow * r);
    const double third = cube * kThird;
    const double thirdLow = std::fma(cube, kThird, -third) + (cube * kThirdLow + cubeLow * kThird);
    double series = kSeries.back();
    for (std::size_t i = kSeries.size() - 1; i-- > 0;) series = series * r + kSeries[i];
    const double power = (square * square) * series;
    // What the logarithms of 2 and of the step leave.
    const auto turns = static_cast<double>(moved);
    const double rest = turns * kLn2Rest;
    const double restLow = std::fma(turns, kLn2Rest, -rest) + turns * kLn2Low;
    const NBDoubleDouble known = NBDoubleDouble::Sum(rest, table.fRests[step]);

    const NBDoubleDouble two = NBDoubleDouble::Ordered(r, -0.5 * square);
    const NBDoubleDouble three = NBDoubleDouble::Ordered(two.fHigh, third);
    const NBDoubleDouble all = NBDoubleDouble::Sum(three.fHigh, known.fHigh);
    const double tiny = ((rLow - 0.5 * squareLow) + (thirdLow + two.fLow)) +
                        ((three.fLow + all.fLow) + (known.fLow + (restLow + table.fLows[step])));
    const double logLow = power + tiny;

    constexpr double kFirst = static_cast<double>(std::int64_t{1} << kFirstBits);
    constexpr double kSecond = static_cast<double>(std::int64_t{1} << (kGridBits - kFirstBits));
    const double scaled = all.fHigh * kFirst;
    const double first = (scaled + kRounder) - kRounder;
    const double second = ((scaled - first) + logLow * kFirst) * kSecond;
    return {moved * kLn2Top + static_cast<std::int64_t>(table.fTops[step]),
            Whole(scaled) * (std::int64_t{1} << (kGridBits - kFirstBits)) + Whole(second)};
}

NBInt128 Log(const NBDoubleDouble& value, std::int64_t exponent) {
    const Parts parts = LogParts(value, exponent);
    return Units(parts.fTop, parts.fRest);
}

}  // namespace NBGridLog
