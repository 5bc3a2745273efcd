#include "naivebayes/NBExactMixtures.h"

#include <algorithm>
#include <array>
#include <bit>

#include "naivebayes/NBDoubleDouble.h"
#include "naivebayes/NBGridLog.h"

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define PREDSEL_WIDE_REGISTERS 1
#define PREDSEL_WIDE __attribute__((target("avx2,fma")))
// Within a function, so that numbers stay in registers.
#define PREDSEL_WIDE_PART __attribute__((target("avx2,fma"), always_inline)) inline
#endif

namespace NBExactMixtures {

namespace {

constexpr std::size_t kGroup = 4;
constexpr int kFractionBits = 52;
constexpr std::int64_t kExponentOfOne = 1023;
constexpr double kNothing = 0x1p-900;
static_assert(kNothingExponent == -900);

std::int32_t ExponentOf(double positive) {
    return static_cast<std::int32_t>(std::bit_cast<std::uint64_t>(positive) >> kFractionBits) -
           static_cast<std::int32_t>(kExponentOfOne);
}

double PowerOfTwo(std::int32_t exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + kExponentOfOne)
                                 << kFractionBits);
}

#ifdef PREDSEL_WIDE_REGISTERS

/// Four of NBDoubleDouble. The functions are its own, see there.
struct Wide {
    __m256d fHigh;
    __m256d fLow;
};

PREDSEL_WIDE_PART Wide Ordered(__m256d high, __m256d low) {
    const __m256d sum = _mm256_add_pd(high, low);
    return {sum, _mm256_sub_pd(low, _mm256_sub_pd(sum, high))};
}

PREDSEL_WIDE_PART Wide Sum(__m256d left, __m256d right) {
    const __m256d sum = _mm256_add_pd(left, right);
    const __m256d added = _mm256_sub_pd(sum, left);
    return {sum, _mm256_add_pd(_mm256_sub_pd(left, _mm256_sub_pd(sum, added)),
                               _mm256_sub_pd(right, added))};
}

PREDSEL_WIDE_PART Wide Plus(const Wide& left, const Wide& right) {
    const Wide sum = Sum(left.fHigh, right.fHigh);
    return Ordered(sum.fHigh, _mm256_add_pd(sum.fLow, _mm256_add_pd(left.fLow, right.fLow)));
}

PREDSEL_WIDE_PART Wide Times(const Wide& left, const Wide& right) {
    const __m256d product = _mm256_mul_pd(left.fHigh, right.fHigh);
    const __m256d error = _mm256_fmsub_pd(left.fHigh, right.fHigh, product);
    return Ordered(product,
                   _mm256_add_pd(error, _mm256_add_pd(_mm256_mul_pd(left.fHigh, right.fLow),
                                                      _mm256_mul_pd(left.fLow, right.fHigh))));
}

PREDSEL_WIDE_PART Wide Over(const Wide& left, const Wide& right) {
    const __m256d inverse = _mm256_div_pd(_mm256_set1_pd(1.0), right.fHigh);
    const __m256d quotient = _mm256_mul_pd(left.fHigh, inverse);
    const __m256d rest = _mm256_fnmadd_pd(quotient, right.fHigh, left.fHigh);
    const __m256d more = _mm256_sub_pd(left.fLow, _mm256_mul_pd(quotient, right.fLow));
    return Ordered(quotient, _mm256_mul_pd(_mm256_add_pd(rest, more), inverse));
}

PREDSEL_WIDE_PART Wide SumOfFour(const Wide& a, const Wide& b, const Wide& c, const Wide& d) {
    const Wide left = Sum(a.fHigh, b.fHigh);
    const Wide right = Sum(c.fHigh, d.fHigh);
    const Wide sum = Sum(left.fHigh, right.fHigh);
    const __m256d lows = _mm256_add_pd(_mm256_add_pd(left.fLow, _mm256_add_pd(a.fLow, b.fLow)),
                                       _mm256_add_pd(right.fLow, _mm256_add_pd(c.fLow, d.fLow)));
    return Ordered(sum.fHigh, _mm256_add_pd(sum.fLow, lows));
}

/// Whole numbers below 2^51 as integers.
PREDSEL_WIDE_PART __m256i Whole(__m256d number) {
    const __m256d rounder = _mm256_set1_pd(NBGridLog::kRounder);
    return _mm256_sub_epi64(_mm256_castpd_si256(_mm256_add_pd(number, rounder)),
                            _mm256_castpd_si256(rounder));
}

/// x * y - product, without error where product is the rounded one.
PREDSEL_WIDE_PART __m256d ErrorOf(__m256d x, __m256d y, __m256d product) {
    return _mm256_fmsub_pd(x, y, product);
}

/// log(1 + r) + known, where r = value * reciprocal - 1 for a value from 1 to 2, in two parts that
/// overlap.
PREDSEL_WIDE_PART Wide LogNearOne(const Wide& value, __m256d reciprocal, const Wide& known) {
    const __m256d product = _mm256_mul_pd(value.fHigh, reciprocal);
    const __m256d r = _mm256_sub_pd(product, _mm256_set1_pd(1.0));
    const __m256d rLow = _mm256_add_pd(ErrorOf(value.fHigh, reciprocal, product),
                                       _mm256_mul_pd(value.fLow, reciprocal));
    const __m256d square = _mm256_mul_pd(r, r);
    const __m256d squareLow =
        _mm256_add_pd(ErrorOf(r, r, square), _mm256_mul_pd(_mm256_add_pd(r, r), rLow));
    const __m256d cube = _mm256_mul_pd(square, r);
    const __m256d cubeLow =
        _mm256_add_pd(ErrorOf(square, r, cube),
                      _mm256_add_pd(_mm256_mul_pd(square, rLow), _mm256_mul_pd(squareLow, r)));
    const __m256d oneThird = _mm256_set1_pd(NBGridLog::kThird);
    const __m256d third = _mm256_mul_pd(cube, oneThird);
    const __m256d thirdLow =
        _mm256_add_pd(ErrorOf(cube, oneThird, third),
                      _mm256_add_pd(_mm256_mul_pd(cube, _mm256_set1_pd(NBGridLog::kThirdLow)),
                                    _mm256_mul_pd(cubeLow, oneThird)));
    __m256d series = _mm256_set1_pd(NBGridLog::kSeries.back());
    for (std::size_t i = NBGridLog::kSeries.size() - 1; i-- > 0;) {
        series = _mm256_add_pd(_mm256_mul_pd(series, r), _mm256_set1_pd(NBGridLog::kSeries[i]));
    }
    const __m256d power = _mm256_mul_pd(_mm256_mul_pd(square, square), series);

    const __m256d half = _mm256_set1_pd(0.5);
    const Wide two = Ordered(r, _mm256_mul_pd(_mm256_set1_pd(-0.5), square));
    const Wide three = Ordered(two.fHigh, third);
    const Wide all = Sum(three.fHigh, known.fHigh);
    const __m256d tiny =
        _mm256_add_pd(_mm256_add_pd(_mm256_sub_pd(rLow, _mm256_mul_pd(half, squareLow)),
                                    _mm256_add_pd(thirdLow, two.fLow)),
                      _mm256_add_pd(_mm256_add_pd(three.fLow, all.fLow), known.fLow));
    return {all.fHigh, _mm256_add_pd(power, tiny)};
}

/// NBGridLog::LogParts of four, exponents as whole doubles.
PREDSEL_WIDE_PART void WideLog(const Wide& value, __m256d exponent, const NBGridLog::Table& table,
                               __m256i& topOut, __m256i& restOut) {
    const __m256i bits = _mm256_castpd_si256(value.fHigh);
    const __m256i own = _mm256_srli_epi64(bits, kFractionBits);
    // An integer below 2^52 behind the bits of 2^52 is a double.
    constexpr double kIntegers = 0x1p52;
    const __m256d ownExponent = _mm256_sub_pd(
        _mm256_castsi256_pd(_mm256_or_si256(own, _mm256_castpd_si256(_mm256_set1_pd(kIntegers)))),
        _mm256_set1_pd(kIntegers + kExponentOfOne));
    const __m256d turns = _mm256_add_pd(ownExponent, exponent);
    const __m256i fraction = _mm256_and_si256(bits, _mm256_set1_epi64x((1LL << kFractionBits) - 1));
    const __m256d mantissa =
        _mm256_castsi256_pd(_mm256_or_si256(fraction, _mm256_castpd_si256(_mm256_set1_pd(1.0))));
    const __m256d scale = _mm256_castsi256_pd(_mm256_slli_epi64(
        _mm256_sub_epi64(_mm256_set1_epi64x(2 * kExponentOfOne), own), kFractionBits));
    const __m256i step = _mm256_srli_epi64(fraction, kFractionBits - NBGridLog::kStepBits);

    const __m256d ln2Rest = _mm256_set1_pd(NBGridLog::kLn2Rest);
    const __m256d rest = _mm256_mul_pd(turns, ln2Rest);
    const __m256d restLow = _mm256_add_pd(ErrorOf(turns, ln2Rest, rest),
                                          _mm256_mul_pd(turns, _mm256_set1_pd(NBGridLog::kLn2Low)));
    Wide known = Sum(rest, _mm256_i64gather_pd(table.fRests.data(), step, 8));
    known.fLow = _mm256_add_pd(
        known.fLow, _mm256_add_pd(restLow, _mm256_i64gather_pd(table.fLows.data(), step, 8)));
    const Wide log = LogNearOne({mantissa, _mm256_mul_pd(value.fLow, scale)},
                                _mm256_i64gather_pd(table.fReciprocals.data(), step, 8), known);

    const __m256d firstUnits = _mm256_set1_pd(static_cast<double>(1LL << NBGridLog::kFirstBits));
    constexpr int kSecondBits = NBGridLog::kGridBits - NBGridLog::kFirstBits;
    const __m256d scaled = _mm256_mul_pd(log.fHigh, firstUnits);
    const __m256d rounder = _mm256_set1_pd(NBGridLog::kRounder);
    const __m256d first = _mm256_sub_pd(_mm256_add_pd(scaled, rounder), rounder);
    const __m256d second = _mm256_mul_pd(
        _mm256_add_pd(_mm256_sub_pd(scaled, first), _mm256_mul_pd(log.fLow, firstUnits)),
        _mm256_set1_pd(static_cast<double>(1LL << kSecondBits)));
    restOut = _mm256_add_epi64(_mm256_slli_epi64(Whole(scaled), kSecondBits), Whole(second));
    topOut = Whole(
        _mm256_add_pd(_mm256_mul_pd(turns, _mm256_set1_pd(static_cast<double>(NBGridLog::kLn2Top))),
                      _mm256_i64gather_pd(table.fTops.data(), step, 8)));
}

/// Sets apart what stands in the same place of four groups.
PREDSEL_WIDE_PART void Transpose(__m256d& a, __m256d& b, __m256d& c, __m256d& d) {
    const __m256d ab = _mm256_unpacklo_pd(a, b);
    const __m256d abOdd = _mm256_unpackhi_pd(a, b);
    const __m256d cd = _mm256_unpacklo_pd(c, d);
    const __m256d cdOdd = _mm256_unpackhi_pd(c, d);
    a = _mm256_permute2f128_pd(ab, cd, 0x20);
    b = _mm256_permute2f128_pd(abOdd, cdOdd, 0x20);
    c = _mm256_permute2f128_pd(ab, cd, 0x31);
    d = _mm256_permute2f128_pd(abOdd, cdOdd, 0x31);
}

/// A record's sums over the groups.
PREDSEL_WIDE_PART Wide GroupSum(const ConstProducts& products, std::size_t at, std::size_t width) {
    Wide sum{_mm256_loadu_pd(products.fpHigh + at), _mm256_loadu_pd(products.fpLow + at)};
    for (std::size_t i = at + kGroup; i < at + width * kGroup; i += kGroup) {
        sum =
            Plus(sum, {_mm256_loadu_pd(products.fpHigh + i), _mm256_loadu_pd(products.fpLow + i)});
    }
    return sum;
}

/// What the logarithms are of, for a few records: numbers and exponents besides.
struct Quotients {
    static constexpr std::size_t kMost = 64;
    alignas(32) std::array<double, kMost> fHigh;
    alignas(32) std::array<double, kMost> fLow;
    alignas(32) std::array<double, kMost> fExponents;
};

/// From record `first` on.
PREDSEL_WIDE_PART void WideQuotients(const ConstProducts& products, const std::uint32_t* targets,
                                     const std::int32_t* exponents, std::size_t width,
                                     std::size_t first, std::size_t count, Quotients& out) {
    const std::size_t stride = width * kGroup;
    for (std::size_t i = 0; i < count; i += kGroup) {
        const std::size_t record = first + i;
        alignas(32) std::array<double, kGroup> ownHigh{1.0, 1.0, 1.0, 1.0};
        alignas(32) std::array<double, kGroup> ownLow{};
        for (std::size_t lane = 0; lane < kGroup; ++lane) {
            const std::uint32_t target = targets == nullptr ? 0 : targets[record + lane];
            out.fExponents[i + lane] = target == 0 ? exponents[record + lane] : 0.0;
            if (target == 0) continue;
            const std::size_t at = (record + lane) * stride + target - 1;
            ownHigh[lane] = products.fpHigh[at];
            ownLow[lane] = products.fpLow[at];
        }
        Wide a = GroupSum(products, record * stride, width);
        Wide b = GroupSum(products, (record + 1) * stride, width);
        Wide c = GroupSum(products, (record + 2) * stride, width);
        Wide d = GroupSum(products, (record + 3) * stride, width);
        Transpose(a.fHigh, b.fHigh, c.fHigh, d.fHigh);
        Transpose(a.fLow, b.fLow, c.fLow, d.fLow);
        const Wide quotient = Over(SumOfFour(a, b, c, d),
                                   {_mm256_load_pd(ownHigh.data()), _mm256_load_pd(ownLow.data())});
        _mm256_store_pd(&out.fHigh[i], quotient.fHigh);
        _mm256_store_pd(&out.fLow[i], quotient.fLow);
    }
}

// In two loops, since the steps of each wait for one another.
PREDSEL_WIDE void WideLogs(const ConstProducts& products, const std::uint32_t* targets,
                           const std::int32_t* exponents, std::size_t width, std::size_t count,
                           const LogsOut& out) {
    const NBGridLog::Table& table = NBGridLog::GetTable();
    Quotients quotients;
    for (std::size_t first = 0; first < count; first += Quotients::kMost) {
        const std::size_t some = std::min(count - first, Quotients::kMost);
        WideQuotients(products, targets, exponents, width, first, some, quotients);
        for (std::size_t i = 0; i < some; i += kGroup) {
            __m256i tops;
            __m256i rests;
            WideLog({_mm256_load_pd(&quotients.fHigh[i]), _mm256_load_pd(&quotients.fLow[i])},
                    _mm256_load_pd(&quotients.fExponents[i]), table, tops, rests);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out.fpTops + first + i), tops);
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out.fpRests + first + i), rests);
        }
    }
}

/// The exponent of the largest number, which is positive.
PREDSEL_WIDE_PART std::int32_t LargestExponent(__m256d numbers) {
    const __m256d halves = _mm256_max_pd(numbers, _mm256_permute2f128_pd(numbers, numbers, 1));
    const __m256d largest = _mm256_max_pd(halves, _mm256_permute_pd(halves, 0b0101));
    return ExponentOf(_mm256_cvtsd_f64(largest));
}

/// The products of one group.
PREDSEL_WIDE_PART Wide GroupProduct(const ConstProducts& from, std::size_t at,
                                    const ConstProducts& rows, std::size_t row) {
    return Times({_mm256_loadu_pd(from.fpHigh + at), _mm256_loadu_pd(from.fpLow + at)},
                 {_mm256_loadu_pd(rows.fpHigh + row), _mm256_loadu_pd(rows.fpLow + row)});
}

/// Stores a group, scaled, without what is let go. Returns which numbers, that its row has, these
/// are.
PREDSEL_WIDE_PART __m256d StoreGroup(const Wide& product, __m256d scale, const double* row,
                                     const Products& to, std::size_t at) {
    const __m256d high = _mm256_mul_pd(product.fHigh, scale);
    const __m256d kept = _mm256_cmp_pd(high, _mm256_set1_pd(kNothing), _CMP_GE_OQ);
    _mm256_storeu_pd(to.fpHigh + at, _mm256_and_pd(high, kept));
    _mm256_storeu_pd(to.fpLow + at, _mm256_and_pd(_mm256_mul_pd(product.fLow, scale), kept));
    return _mm256_andnot_pd(kept,
                            _mm256_cmp_pd(_mm256_loadu_pd(row), _mm256_setzero_pd(), _CMP_GT_OQ));
}

template <class Entry>
PREDSEL_WIDE bool WideMultiply(const ConstProducts& from, const ConstProducts& rows,
                               const Entry* entries, std::size_t width, std::size_t count,
                               const Products& to, std::int32_t* exponents) {
    const std::size_t stride = width * kGroup;
    __m256d lost = _mm256_setzero_pd();
    if (width == 1) {
        for (std::size_t i = 0, at = 0; i < count; ++i, at += kGroup) {
            const std::size_t row = entries[i] * kGroup;
            const Wide product = GroupProduct(from, at, rows, row);
            const std::int32_t exponent = LargestExponent(product.fHigh);
            const __m256d scale = _mm256_set1_pd(PowerOfTwo(-exponent));
            lost = _mm256_or_pd(lost, StoreGroup(product, scale, rows.fpHigh + row, to, at));
            exponents[i] += exponent;
        }
        return _mm256_movemask_pd(lost) != 0;
    }
    for (std::size_t i = 0, at = 0; i < count; ++i, at += stride) {
        const std::size_t row = entries[i] * stride;
        __m256d largest = _mm256_setzero_pd();
        for (std::size_t k = 0; k < stride; k += kGroup) {
            const Wide product = GroupProduct(from, at + k, rows, row + k);
            largest = _mm256_max_pd(largest, product.fHigh);
            _mm256_storeu_pd(to.fpHigh + at + k, product.fHigh);
            _mm256_storeu_pd(to.fpLow + at + k, product.fLow);
        }
        const std::int32_t exponent = LargestExponent(largest);
        const __m256d scale = _mm256_set1_pd(PowerOfTwo(-exponent));
        for (std::size_t k = 0; k < stride; k += kGroup) {
            const Wide product{_mm256_loadu_pd(to.fpHigh + at + k),
                               _mm256_loadu_pd(to.fpLow + at + k)};
            lost =
                _mm256_or_pd(lost, StoreGroup(product, scale, rows.fpHigh + row + k, to, at + k));
        }
        exponents[i] += exponent;
    }
    return _mm256_movemask_pd(lost) != 0;
}

bool HasWideRegisters() {
    static const bool kHas =
        __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0;
    return kHas;
}

#endif

}  // namespace

template <class Entry>
bool PortableMultiply(const ConstProducts& from, const ConstProducts& rows, const Entry* entries,
                      std::size_t width, std::size_t count, const Products& to,
                      std::int32_t* exponents) {
    const std::size_t stride = width * kGroup;
    bool hasLost = false;
    for (std::size_t i = 0, at = 0; i < count; ++i, at += stride) {
        const std::size_t row = entries[i] * stride;
        double largest = 0.0;
        for (std::size_t k = 0; k < stride; ++k) {
            const NBDoubleDouble product =
                NBDoubleDouble(from.fpHigh[at + k], from.fpLow[at + k]) *
                NBDoubleDouble(rows.fpHigh[row + k], rows.fpLow[row + k]);
            largest = std::max(largest, product.fHigh);
            to.fpHigh[at + k] = product.fHigh;
            to.fpLow[at + k] = product.fLow;
        }
        const std::int32_t exponent = ExponentOf(largest);
        const double scale = PowerOfTwo(-exponent);
        for (std::size_t k = 0; k < stride; ++k) {
            const double high = to.fpHigh[at + k] * scale;
            const bool isKept = high >= kNothing;
            hasLost = hasLost || (!isKept && rows.fpHigh[row + k] > 0.0);
            to.fpLow[at + k] = isKept ? to.fpLow[at + k] * scale : 0.0;
            to.fpHigh[at + k] = isKept ? high : 0.0;
        }
        exponents[i] += exponent;
    }
    return hasLost;
}

template <class Entry>
bool Multiply(const ConstProducts& from, const ConstProducts& rows, const Entry* entries,
              std::size_t width, std::size_t count, const Products& to, std::int32_t* exponents) {
#ifdef PREDSEL_WIDE_REGISTERS
    if (HasWideRegisters()) return WideMultiply(from, rows, entries, width, count, to, exponents);
#endif
    return PortableMultiply(from, rows, entries, width, count, to, exponents);
}

void PortableLogs(const ConstProducts& products, const std::uint32_t* targets,
                  const std::int32_t* exponents, std::size_t width, std::size_t count,
                  const LogsOut& out) {
    const auto number = [&products](std::size_t at) {
        return NBDoubleDouble(products.fpHigh[at], products.fpLow[at]);
    };
    const std::size_t stride = width * kGroup;
    for (std::size_t i = 0; i < count; ++i) {
        std::array<NBDoubleDouble, kGroup> sums;
        for (std::size_t j = 0; j < kGroup; ++j) {
            sums[j] = number(i * stride + j);
            for (std::size_t k = j + kGroup; k < stride; k += kGroup) {
                sums[j] = sums[j] + number(i * stride + k);
            }
        }
        const NBDoubleDouble sum = SumOfFour(sums[0], sums[1], sums[2], sums[3]);
        const bool isOver = targets != nullptr && targets[i] != 0;
        const NBDoubleDouble own =
            isOver ? number(i * stride + targets[i] - 1) : NBDoubleDouble(1.0);
        const NBGridLog::Parts parts =
            NBGridLog::LogParts(sum / own, isOver ? 0 : std::int64_t{exponents[i]});
        out.fpTops[i] = parts.fTop;
        out.fpRests[i] = parts.fRest;
    }
}

void Logs(const ConstProducts& products, const std::uint32_t* targets,
          const std::int32_t* exponents, std::size_t width, std::size_t count, const LogsOut& out) {
#ifdef PREDSEL_WIDE_REGISTERS
    if (HasWideRegisters()) {
        return WideLogs(products, targets, exponents, width, count, out);
    }
#endif
    PortableLogs(products, targets, exponents, width, count, out);
}

template bool Multiply(const ConstProducts&, const ConstProducts&, const std::uint8_t*, std::size_t,
                       std::size_t, const Products&, std::int32_t*);
template bool Multiply(const ConstProducts&, const ConstProducts&, const std::uint16_t*,
                       std::size_t, std::size_t, const Products&, std::int32_t*);
template bool Multiply(const ConstProducts&, const ConstProducts&, const std::uint32_t*,
                       std::size_t, std::size_t, const Products&, std::int32_t*);
template bool PortableMultiply(const ConstProducts&, const ConstProducts&, const std::uint8_t*,
                               std::size_t, std::size_t, const Products&, std::int32_t*);
template bool PortableMultiply(const ConstProducts&, const ConstProducts&, const std::uint16_t*,
                               std::size_t, std::size_t, const Products&, std::int32_t*);
template bool PortableMultiply(const ConstProducts&, const ConstProducts&, const std::uint32_t*,
                               std::size_t, std::size_t, const Products&, std::int32_t*);

}  // namespace NBExactMixtures
