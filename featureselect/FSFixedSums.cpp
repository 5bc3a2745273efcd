#include "featureselect/FSFixedSums.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "host/Records.h"

#if defined(__x86_64__)
#include <immintrin.h>
#define FS_X86_FORMS 1
#else
#define FS_X86_FORMS 0
#endif
// Into a form, whose instructions it then has.
#define FS_INLINE inline __attribute__((always_inline))

namespace FSFixedSums {
namespace {

__extension__ typedef __int128 Wide;
__extension__ typedef unsigned __int128 UnsignedWide;

// Added to a number below 2^51 in magnitude, leaves it as a whole number in the low bits.
constexpr double kMagic = 6755399441055744.0;  // 1.5 * 2^52
constexpr std::uint64_t kMagicBits = 0x4338000000000000;

// More rows at a time would let the sums of products outgrow 64 bits.
constexpr std::size_t kMostRows = 8192;

/// The grid of a form. A value is t * 2^(power - kTop) with |t| < 2^kTop; the first limb is the
/// whole number next to t, the next ones are the rest, kBits each, to either side of 0.
struct TwoLimbs {
    static constexpr std::size_t kLimbs = 2;
    static constexpr int kBits = 51;
    static constexpr int kTop = 50;
};
struct ThreeLimbs {
    static constexpr std::size_t kLimbs = 3;
    static constexpr int kBits = 26;
    static constexpr int kTop = 25;
};

/// Sums by the weight of a digit: the sum of digits[i] * 2^(kBits * i) is the number.
struct Totals {
    static constexpr std::size_t kDigits = 2 * Limbs::kMost - 1;
    std::array<Wide, Limbs::kMost> fSum{};
    std::array<Wide, kDigits> fSquares{};
    std::array<Wide, kDigits> fProducts{};
};

struct Grid {
    explicit Grid(Form form) {
        if (form == Form::kAvx2) {
            fLimbs = ThreeLimbs::kLimbs;
            fBits = ThreeLimbs::kBits;
            fTop = ThreeLimbs::kTop;
        }
    }
    std::int32_t Exponent(std::int32_t power) const {  // of the last limb
        return power - fTop - fBits * (static_cast<std::int32_t>(fLimbs) - 1);
    }
    double Scale(std::int32_t power) const { return std::ldexp(1.0, fTop - power); }

    std::size_t fLimbs = TwoLimbs::kLimbs;
    int fBits = TwoLimbs::kBits;
    int fTop = TwoLimbs::kTop;
};

void AddDigits(std::span<const Wide> digits, int bits, std::int32_t exponent, FSExactSum& sum) {
    constexpr int kWord = 64;
    std::array<std::uint64_t, FSExactSum::kMaxTermWords - 2> words{};
    for (std::size_t digit = 0; digit < digits.size(); ++digit) {
        const int place = bits * static_cast<int>(digit);
        const auto at = static_cast<std::size_t>(place / kWord);
        const int shift = place % kWord;
        const Wide value = digits[digit];
        if (value == 0) continue;
        const auto low = static_cast<UnsignedWide>(value) << shift;
        const auto top = static_cast<std::uint64_t>(value >> (127 - shift) >> 1);
        const std::uint64_t sign = value < 0 ? ~std::uint64_t{0} : 0;
        UnsignedWide carry = 0;
        for (std::size_t word = at; word < words.size(); ++word) {
            const std::uint64_t part = word == at       ? static_cast<std::uint64_t>(low)
                                       : word == at + 1 ? static_cast<std::uint64_t>(low >> kWord)
                                       : word == at + 2 ? top
                                                        : sign;
            carry += UnsignedWide{words[word]} + part;
            words[word] = static_cast<std::uint64_t>(carry);
            carry >>= kWord;
        }
    }
    sum.AddWords(words, exponent);
}

/// What a form's loop works on: some rows of a column, of the other's limbs and what it finds.
struct Work {
    const double* fpValues = nullptr;
    std::size_t fRows = 0;
    double fScale = 1.0;
    std::array<const std::int64_t*, Limbs::kMost> fpOther{};
    std::uint32_t fFirst = 0;  // position of the first row
    Seen* fpSeen = nullptr;
};

void NoteRows(unsigned mask, std::uint32_t first, Rows& rows) {
    for (; mask != 0; mask &= mask - 1) {
        rows.push_back(first + static_cast<std::uint32_t>(std::countr_zero(mask)));
    }
}

// --- Any processor -------------------------------------------------------------------------

// The limbs of a value; false when the grid does not hold it.
bool SplitOne(double value, double scale, std::int64_t& high, std::int64_t& low) {
    constexpr double kLimb = 2251799813685248.0;   // 2^51
    constexpr double kLimit = 1125899906842624.0;  // 2^50
    const double scaled = value * scale;
    const double whole = scaled + kMagic - kMagic;
    const double rest = (scaled - whole) * kLimb;
    const double restWhole = rest + kMagic - kMagic;
    if (!(std::abs(scaled) < kLimit) || restWhole != rest) return false;
    high = static_cast<std::int64_t>(whole);
    low = static_cast<std::int64_t>(rest);
    return true;
}

template <bool kSquares, bool kProducts>
void RunPortable(const Work& work, Totals& totals) {
    for (std::size_t row = 0; row < work.fRows; ++row) {
        const double value = work.fpValues[row];
        const auto position = static_cast<std::uint32_t>(work.fFirst + row);
        if (value == MCMV::gMissingValue) {
            if constexpr (kProducts) work.fpSeen->fvMissing.push_back(position);
            continue;
        }
        ++work.fpSeen->fValid;
        std::int64_t high = 0;
        std::int64_t low = 0;
        if (!SplitOne(value, work.fScale, high, low)) {
            work.fpSeen->fvOdd.push_back(position);
            continue;
        }
        if constexpr (kSquares) {
            totals.fSum[0] += low;
            totals.fSum[1] += high;
            totals.fSquares[0] += Wide{low} * low;
            totals.fSquares[1] += 2 * (Wide{low} * high);
            totals.fSquares[2] += Wide{high} * high;
        }
        if constexpr (kProducts) {
            const std::int64_t otherHigh = work.fpOther[0][row];
            const std::int64_t otherLow = work.fpOther[1][row];
            totals.fProducts[0] += Wide{low} * otherLow;
            totals.fProducts[1] += Wide{low} * otherHigh + Wide{high} * otherLow;
            totals.fProducts[2] += Wide{high} * otherHigh;
        }
    }
}

void SplitPortable(std::span<const double> values, double scale, Limbs& limbs) {
    for (std::size_t row = 0; row < values.size(); ++row) {
        std::int64_t high = 0;
        std::int64_t low = 0;
        if (values[row] != MCMV::gMissingValue && !SplitOne(values[row], scale, high, low)) {
            limbs.fvOdd.push_back(static_cast<std::uint32_t>(row));
        }
        limbs.fvLimbs[row] = high;
        limbs.fvLimbs[limbs.fStride + row] = low;
    }
}

#if FS_X86_FORMS

// --- 52-bit multiply-add -------------------------------------------------------------------
// Limbs carry the bias of kMagic, 2^51, so that they are unsigned numbers of 52 bits; the sums are
// freed of it afterwards. Rows that count as 0 are a bias and nothing else.

#define FS_AVX512 __attribute__((target("avx512f,avx512dq,avx512vl,avx512bw,avx512ifma")))

constexpr Wide kBias = Wide{1} << 51;

struct Split512 {
    FS_AVX512 explicit Split512(double scale)
        : fScale(_mm512_set1_pd(scale)),
          fMagic(_mm512_set1_pd(kMagic)),
          fLimb(_mm512_set1_pd(2251799813685248.0)),
          fLimit(_mm512_set1_pd(1125899906842624.0)),
          fMissing(_mm512_set1_pd(MCMV::gMissingValue)) {}

    /// The limbs of eight values; of those in `rows` that are valid, the ones that the grid does
    /// not hold come out in odd.
    FS_AVX512 FS_INLINE void operator()(__m512d values, __mmask8 rows, __mmask8& valid,
                                        __mmask8& odd, __m512i& high, __m512i& low) const {
        valid = _mm512_mask_cmp_pd_mask(rows, values, fMissing, _CMP_NEQ_UQ);
        const __m512d scaled = _mm512_maskz_mul_pd(valid, values, fScale);
        __m512d whole = _mm512_add_pd(scaled, fMagic);
        const __m512d rest =
            _mm512_mul_pd(_mm512_sub_pd(scaled, _mm512_sub_pd(whole, fMagic)), fLimb);
        __m512d restWhole = _mm512_add_pd(rest, fMagic);
        odd = static_cast<__mmask8>(
            _mm512_cmp_pd_mask(_mm512_sub_pd(restWhole, fMagic), rest, _CMP_NEQ_UQ) |
            _mm512_cmp_pd_mask(_mm512_abs_pd(scaled), fLimit, _CMP_NLT_UQ));
        if (odd != 0) [[unlikely]] {
            whole = _mm512_mask_mov_pd(whole, odd, fMagic);
            restWhole = _mm512_mask_mov_pd(restWhole, odd, fMagic);
        }
        high = _mm512_castpd_si512(whole);
        low = _mm512_castpd_si512(restWhole);
    }

    __m512d fScale;
    __m512d fMagic;
    __m512d fLimb;
    __m512d fLimit;
    __m512d fMissing;
};

FS_AVX512 FS_INLINE void MultiplyAdd(__m512i a, __m512i b, __m512i& low, __m512i& high) {
    low = _mm512_madd52lo_epu64(low, a, b);
    high = _mm512_madd52hi_epu64(high, a, b);
}

FS_AVX512 FS_INLINE Wide SumOf(const __m512i& lanes) {
    alignas(64) std::array<std::uint64_t, 8> numbers;
    _mm512_store_si512(numbers.data(), lanes);
    UnsignedWide sum = 0;
    for (const std::uint64_t number : numbers) sum += number;
    return static_cast<Wide>(sum);
}

// The sum of limbs of so many rows, without the bias and what else kMagic has above it.
FS_AVX512 FS_INLINE Wide LimbSum(const __m512i& lanes, std::size_t rows) {
    const auto sum = static_cast<std::uint64_t>(SumOf(lanes));
    return static_cast<std::int64_t>(sum - kMagicBits * rows);
}

FS_AVX512 FS_INLINE Wide ProductSum(const __m512i& low, const __m512i& high) {
    return SumOf(low) + (SumOf(high) << 52);
}

FS_AVX512 FS_INLINE __mmask8 RowsFrom(std::size_t row, std::size_t rows) {
    return rows - row >= 8 ? __mmask8{0xFF} : static_cast<__mmask8>((1U << (rows - row)) - 1);
}

template <bool kSquares, bool kProducts>
FS_AVX512 void Run512(const Work& work, Totals& totals) {
    const Split512 split(work.fScale);
    const __m512i zero = _mm512_setzero_si512();
    __m512i high = zero, low = zero, otherHigh = zero, otherLow = zero;
    __m512i s00 = zero, s00High = zero, s01 = zero, s01High = zero, s11 = zero, s11High = zero;
    __m512i p00 = zero, p00High = zero, p01 = zero, p01High = zero, p11 = zero, p11High = zero;
    std::size_t count = 0;
    for (std::size_t row = 0; row < work.fRows; row += 8) {
        const __mmask8 rows = RowsFrom(row, work.fRows);
        const __m512d values = _mm512_maskz_loadu_pd(rows, work.fpValues + row);
        __mmask8 valid, odd;
        __m512i one, two;
        split(values, rows, valid, odd, one, two);
        count += static_cast<std::size_t>(std::popcount(static_cast<unsigned>(valid)));
        const auto position = static_cast<std::uint32_t>(work.fFirst + row);
        if (odd != 0) [[unlikely]]
            NoteRows(odd, position, work.fpSeen->fvOdd);
        high = _mm512_add_epi64(high, one);
        low = _mm512_add_epi64(low, two);
        if constexpr (kSquares) {
            MultiplyAdd(two, two, s00, s00High);
            MultiplyAdd(one, two, s01, s01High);
            MultiplyAdd(one, one, s11, s11High);
        }
        if constexpr (kProducts) {
            if (valid != rows) {
                NoteRows(static_cast<unsigned>(rows & ~valid), position, work.fpSeen->fvMissing);
            }
            // The rows of the other column are rounded up to whole registers.
            const __m512i otherOne = _mm512_loadu_si512(work.fpOther[0] + row);
            const __m512i otherTwo = _mm512_loadu_si512(work.fpOther[1] + row);
            otherHigh = _mm512_add_epi64(otherHigh, otherOne);
            otherLow = _mm512_add_epi64(otherLow, otherTwo);
            MultiplyAdd(two, otherTwo, p00, p00High);
            MultiplyAdd(two, otherOne, p01, p01High);
            MultiplyAdd(one, otherTwo, p01, p01High);
            MultiplyAdd(one, otherOne, p11, p11High);
        }
    }
    work.fpSeen->fValid += count;
    const std::size_t lanes = (work.fRows + 7) / 8 * 8;
    const Wide rows = static_cast<Wide>(lanes);
    const Wide a = LimbSum(high, lanes);
    const Wide b = LimbSum(low, lanes);
    if constexpr (kSquares) {
        totals.fSum[0] += b;
        totals.fSum[1] += a;
        totals.fSquares[0] += ProductSum(s00, s00High) - 2 * kBias * b - rows * kBias * kBias;
        totals.fSquares[1] +=
            2 * (ProductSum(s01, s01High) - kBias * (a + b) - rows * kBias * kBias);
        totals.fSquares[2] += ProductSum(s11, s11High) - 2 * kBias * a - rows * kBias * kBias;
    }
    if constexpr (kProducts) {
        const Wide c = LimbSum(otherHigh, lanes);
        const Wide d = LimbSum(otherLow, lanes);
        totals.fProducts[0] += ProductSum(p00, p00High) - kBias * (b + d) - rows * kBias * kBias;
        totals.fProducts[1] +=
            ProductSum(p01, p01High) - kBias * (a + b + c + d) - 2 * rows * kBias * kBias;
        totals.fProducts[2] += ProductSum(p11, p11High) - kBias * (a + c) - rows * kBias * kBias;
    }
}

FS_AVX512 void SplitInto512(std::span<const double> values, double scale, Limbs& limbs) {
    const Split512 split(scale);
    for (std::size_t row = 0; row < values.size(); row += 8) {
        const __mmask8 rows = RowsFrom(row, values.size());
        __mmask8 valid, odd;
        __m512i high, low;
        split(_mm512_maskz_loadu_pd(rows, values.data() + row), rows, valid, odd, high, low);
        if (odd != 0) NoteRows(odd, static_cast<std::uint32_t>(row), limbs.fvOdd);
        _mm512_storeu_si512(limbs.fvLimbs.data() + row, high);
        _mm512_storeu_si512(limbs.fvLimbs.data() + limbs.fStride + row, low);
    }
}

// --- 32-bit multiplication -----------------------------------------------------------------

#define FS_AVX2 __attribute__((target("avx2")))

struct Split256 {
    FS_AVX2 explicit Split256(double scale)
        : fScale(_mm256_set1_pd(scale)),
          fMagic(_mm256_set1_pd(kMagic)),
          fLimb(_mm256_set1_pd(67108864.0)),
          fLimit(_mm256_set1_pd(33554432.0)),
          fMissing(_mm256_set1_pd(MCMV::gMissingValue)),
          fSign(_mm256_set1_pd(-0.0)) {}

    FS_AVX2 FS_INLINE void Next(__m256d& rest, __m256d& whole) const {
        whole = _mm256_add_pd(rest, fMagic);
        rest = _mm256_sub_pd(rest, _mm256_sub_pd(whole, fMagic));
    }

    FS_AVX2 FS_INLINE void operator()(__m256d values, const __m256d& rows, unsigned& valid,
                                      unsigned& odd, __m256i& high, __m256i& middle,
                                      __m256i& low) const {
        const __m256d isValid = _mm256_and_pd(rows, _mm256_cmp_pd(values, fMissing, _CMP_NEQ_UQ));
        const __m256d scaled = _mm256_and_pd(isValid, _mm256_mul_pd(values, fScale));
        __m256d rest = scaled;
        __m256d first, second, third;
        Next(rest, first);
        rest = _mm256_mul_pd(rest, fLimb);
        Next(rest, second);
        rest = _mm256_mul_pd(rest, fLimb);
        Next(rest, third);
        const __m256d isOdd =
            _mm256_or_pd(_mm256_cmp_pd(rest, _mm256_setzero_pd(), _CMP_NEQ_UQ),
                         _mm256_cmp_pd(_mm256_andnot_pd(fSign, scaled), fLimit, _CMP_NLT_UQ));
        valid = static_cast<unsigned>(_mm256_movemask_pd(isValid));
        odd = static_cast<unsigned>(_mm256_movemask_pd(isOdd));
        if (odd != 0) [[unlikely]] {
            first = _mm256_blendv_pd(first, fMagic, isOdd);
            second = _mm256_blendv_pd(second, fMagic, isOdd);
            third = _mm256_blendv_pd(third, fMagic, isOdd);
        }
        high = _mm256_castpd_si256(first);
        middle = _mm256_castpd_si256(second);
        low = _mm256_castpd_si256(third);
    }

    __m256d fScale;
    __m256d fMagic;
    __m256d fLimb;
    __m256d fLimit;
    __m256d fMissing;
    __m256d fSign;
};

FS_AVX2 FS_INLINE void MultiplyAdd(const __m256i& a, const __m256i& b, __m256i& sum) {
    sum = _mm256_add_epi64(sum, _mm256_mul_epi32(a, b));
}

FS_AVX2 FS_INLINE Wide SumOf(const __m256i& lanes) {
    alignas(32) std::array<std::int64_t, 4> numbers;
    _mm256_store_si256(reinterpret_cast<__m256i*>(numbers.data()), lanes);
    Wide sum = 0;
    for (const std::int64_t number : numbers) sum += number;
    return sum;
}

FS_AVX2 FS_INLINE Wide LimbSum(const __m256i& lanes, std::size_t rows) {
    const auto sum = static_cast<std::uint64_t>(SumOf(lanes));
    return static_cast<std::int64_t>(sum - kMagicBits * rows);
}

// The mask of the rows that there are, and their values.
FS_AVX2 FS_INLINE __m256d LoadRows(const double* values, std::size_t rows, __m256d& mask) {
    const __m256i places = _mm256_set_epi64x(3, 2, 1, 0);
    const __m256i end =
        _mm256_set1_epi64x(static_cast<std::int64_t>(std::min<std::size_t>(rows, 4)));
    const __m256i there = _mm256_cmpgt_epi64(end, places);
    mask = _mm256_castsi256_pd(there);
    return _mm256_maskload_pd(values, there);
}

template <bool kSquares, bool kProducts>
FS_AVX2 void Run256(const Work& work, Totals& totals) {
    const Split256 split(work.fScale);
    const __m256i zero = _mm256_setzero_si256();
    __m256i n0 = zero, n1 = zero, n2 = zero;
    __m256i s0 = zero, s1 = zero, s2 = zero, s2Mixed = zero, s3 = zero, s4 = zero;
    __m256i p0 = zero, p1 = zero, p2 = zero, p3 = zero, p4 = zero;
    std::size_t count = 0;
    for (std::size_t row = 0; row < work.fRows; row += 4) {
        __m256d mask;
        const __m256d values = LoadRows(work.fpValues + row, work.fRows - row, mask);
        unsigned valid = 0;
        unsigned odd = 0;
        __m256i a2, a1, a0;
        split(values, mask, valid, odd, a2, a1, a0);
        count += static_cast<std::size_t>(std::popcount(valid));
        const auto position = static_cast<std::uint32_t>(work.fFirst + row);
        if (odd != 0) [[unlikely]]
            NoteRows(odd, position, work.fpSeen->fvOdd);
        if constexpr (kSquares) {
            n2 = _mm256_add_epi64(n2, a2);
            n1 = _mm256_add_epi64(n1, a1);
            n0 = _mm256_add_epi64(n0, a0);
            MultiplyAdd(a0, a0, s0);
            MultiplyAdd(a0, a1, s1);
            MultiplyAdd(a1, a1, s2);
            MultiplyAdd(a0, a2, s2Mixed);
            MultiplyAdd(a1, a2, s3);
            MultiplyAdd(a2, a2, s4);
        }
        if constexpr (kProducts) {
            const auto rows = static_cast<unsigned>(_mm256_movemask_pd(mask));
            if (valid != rows) NoteRows(rows & ~valid, position, work.fpSeen->fvMissing);
            const auto other = [&](std::size_t limb) FS_AVX2 {
                return _mm256_loadu_si256(
                    reinterpret_cast<const __m256i*>(work.fpOther[limb] + row));
            };
            const __m256i b2 = other(0);
            const __m256i b1 = other(1);
            const __m256i b0 = other(2);
            MultiplyAdd(a0, b0, p0);
            MultiplyAdd(a0, b1, p1);
            MultiplyAdd(a1, b0, p1);
            MultiplyAdd(a0, b2, p2);
            MultiplyAdd(a1, b1, p2);
            MultiplyAdd(a2, b0, p2);
            MultiplyAdd(a1, b2, p3);
            MultiplyAdd(a2, b1, p3);
            MultiplyAdd(a2, b2, p4);
        }
    }
    work.fpSeen->fValid += count;
    const std::size_t lanes = (work.fRows + 3) / 4 * 4;
    if constexpr (kSquares) {
        totals.fSum[0] += LimbSum(n0, lanes);
        totals.fSum[1] += LimbSum(n1, lanes);
        totals.fSum[2] += LimbSum(n2, lanes);
        totals.fSquares[0] += SumOf(s0);
        totals.fSquares[1] += 2 * SumOf(s1);
        totals.fSquares[2] += SumOf(s2) + 2 * SumOf(s2Mixed);
        totals.fSquares[3] += 2 * SumOf(s3);
        totals.fSquares[4] += SumOf(s4);
    }
    if constexpr (kProducts) {
        totals.fProducts[0] += SumOf(p0);
        totals.fProducts[1] += SumOf(p1);
        totals.fProducts[2] += SumOf(p2);
        totals.fProducts[3] += SumOf(p3);
        totals.fProducts[4] += SumOf(p4);
    }
}

FS_AVX2 void SplitInto256(std::span<const double> values, double scale, Limbs& limbs) {
    const Split256 split(scale);
    for (std::size_t row = 0; row < values.size(); row += 4) {
        __m256d mask;
        const __m256d four = LoadRows(values.data() + row, values.size() - row, mask);
        unsigned valid = 0;
        unsigned odd = 0;
        __m256i parts[ThreeLimbs::kLimbs];
        split(four, mask, valid, odd, parts[0], parts[1], parts[2]);
        if (odd != 0) NoteRows(odd, static_cast<std::uint32_t>(row), limbs.fvOdd);
        for (std::size_t limb = 0; limb < ThreeLimbs::kLimbs; ++limb) {
            _mm256_storeu_si256(
                reinterpret_cast<__m256i*>(limbs.fvLimbs.data() + limb * limbs.fStride + row),
                parts[limb]);
        }
    }
}
#endif

template <bool kSquares, bool kProducts>
void Run(const Work& work, Totals& totals, Form form) {
#if FS_X86_FORMS
    if (form == Form::kAvx512) return Run512<kSquares, kProducts>(work, totals);
    if (form == Form::kAvx2) return Run256<kSquares, kProducts>(work, totals);
#endif
    static_cast<void>(form);
    RunPortable<kSquares, kProducts>(work, totals);
}

template <bool kSquares, bool kProducts>
Totals RunAll(std::span<const double> values, const Range& range, const Limbs* other,
              std::size_t otherFirst, Seen& seen, Form form) {
    Totals totals;
    Work work;
    work.fScale = Grid(form).Scale(range.fPower);
    work.fpSeen = &seen;
    for (std::size_t first = 0; first < values.size(); first += kMostRows) {
        work.fpValues = values.data() + first;
        work.fRows = std::min(kMostRows, values.size() - first);
        work.fFirst = static_cast<std::uint32_t>(first);
        if constexpr (kProducts) {
            for (std::size_t limb = 0; limb < Grid(form).fLimbs; ++limb) {
                work.fpOther[limb] =
                    other->fvLimbs.data() + limb * other->fStride + otherFirst + first;
            }
        }
        Run<kSquares, kProducts>(work, totals, form);
    }
    return totals;
}

std::size_t Digits(const Grid& grid) { return 2 * grid.fLimbs - 1; }

void Store(const Totals& totals, const Grid& grid, std::int32_t power, FSExactSum& sum,
           FSExactSum& squares) {
    const std::int32_t exponent = grid.Exponent(power);
    AddDigits(std::span(totals.fSum).first(grid.fLimbs), grid.fBits, exponent, sum);
    AddDigits(std::span(totals.fSquares).first(Digits(grid)), grid.fBits, 2 * exponent, squares);
}

void StoreProducts(const Totals& totals, const Grid& grid, std::int32_t power,
                   std::int32_t otherPower, FSExactSum& products) {
    AddDigits(std::span(totals.fProducts).first(Digits(grid)), grid.fBits,
              grid.Exponent(power) + grid.Exponent(otherPower), products);
}

// As many numbers as a register holds.
using Two = double __attribute__((vector_size(16)));
using Four = double __attribute__((vector_size(32)));
using Eight = double __attribute__((vector_size(64)));

template <class Vector>
FS_INLINE void RangeIn(std::span<const double> values, Range& range) {
    constexpr std::size_t kWidth = sizeof(Vector) / sizeof(double);
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    Vector lowest = Vector{} + kInfinity;
    Vector highest = Vector{} - kInfinity;
    Vector flaw{};                         // a NaN as soon as a value is not finite
    decltype(lowest < highest) invalid{};  // -1 a missing value
    const std::size_t whole = values.size() / kWidth * kWidth;
    for (std::size_t row = 0; row < whole; row += kWidth) {
        Vector some;
        std::memcpy(&some, &values[row], sizeof some);
        const auto missing = some == MCMV::gMissingValue;
        invalid += missing;
        flaw += some * 0.0;
        const auto lower = (some < lowest) & ~missing;
        lowest = lower ? some : lowest;
        highest = some > highest ? some : highest;
    }
    double low = kInfinity;
    double high = -kInfinity;
    double flawed = 0.0;
    std::int64_t missing = 0;
    for (std::size_t lane = 0; lane < kWidth; ++lane) {
        low = std::min(low, lowest[lane]);
        high = std::max(high, highest[lane]);
        flawed += flaw[lane];
        missing -= static_cast<std::int64_t>(invalid[lane]);
    }
    for (std::size_t row = whole; row < values.size(); ++row) {
        const double value = values[row];
        flawed += value * 0.0;
        if (value == MCMV::gMissingValue) {
            ++missing;
        } else {
            low = std::min(low, value);
            high = std::max(high, value);
        }
    }
    range.fValid = values.size() - static_cast<std::size_t>(missing);
    range.fLowest = low + 0.0;  // one zero for both
    range.fHighest = high + 0.0;
    range.fbPlain = flawed == 0.0;
}

template <class Vector>
FS_INLINE bool AnySmallerIn(std::span<const double> values, double bound) {
    constexpr std::size_t kWidth = sizeof(Vector) / sizeof(double);
    decltype(Vector{} < bound) any{};
    const std::size_t whole = values.size() / kWidth * kWidth;
    for (std::size_t row = 0; row < whole; row += kWidth) {
        Vector some;
        std::memcpy(&some, &values[row], sizeof some);
        any |= (some < bound) & (some > -bound) & (some != 0.0);
    }
    bool found = false;
    for (std::size_t lane = 0; lane < kWidth; ++lane) found = found || any[lane] != 0;
    for (std::size_t row = whole; row < values.size(); ++row) {
        found = found || (values[row] != 0.0 && std::abs(values[row]) < bound);
    }
    return found;
}

#if FS_X86_FORMS
FS_AVX512 void Range512(std::span<const double> values, Range& range) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const __m512d missing = _mm512_set1_pd(MCMV::gMissingValue);
    __m512d lowest = _mm512_set1_pd(kInfinity);
    __m512d highest = _mm512_set1_pd(-kInfinity);
    __m512d flaw = _mm512_setzero_pd();
    std::size_t valid = 0;
    for (std::size_t row = 0; row < values.size(); row += 8) {
        const __mmask8 rows = RowsFrom(row, values.size());
        const __m512d some = _mm512_maskz_loadu_pd(rows, values.data() + row);
        const __mmask8 there = _mm512_mask_cmp_pd_mask(rows, some, missing, _CMP_NEQ_UQ);
        valid += static_cast<std::size_t>(std::popcount(static_cast<unsigned>(there)));
        lowest = _mm512_mask_min_pd(lowest, there, lowest, some);
        highest = _mm512_mask_max_pd(highest, there, highest, some);
        flaw = _mm512_add_pd(flaw, _mm512_sub_pd(some, some));
    }
    range.fValid = valid;
    alignas(64) std::array<double, 8> low;
    alignas(64) std::array<double, 8> high;
    alignas(64) std::array<double, 8> flaws;
    _mm512_store_pd(low.data(), lowest);
    _mm512_store_pd(high.data(), highest);
    _mm512_store_pd(flaws.data(), flaw);
    range.fLowest = *std::min_element(low.begin(), low.end()) + 0.0;  // one zero for both
    range.fHighest = *std::max_element(high.begin(), high.end()) + 0.0;
    range.fbPlain = std::all_of(flaws.begin(), flaws.end(), [](double one) { return one == 0.0; });
}
FS_AVX2 void Range256(std::span<const double> values, Range& range) {
    RangeIn<Four>(values, range);
}
FS_AVX512 bool AnySmaller512(std::span<const double> values, double bound) {
    return AnySmallerIn<Eight>(values, bound);
}
FS_AVX2 bool AnySmaller256(std::span<const double> values, double bound) {
    return AnySmallerIn<Four>(values, bound);
}
#endif

void RangeIn(std::span<const double> values, Range& range, Form form) {
#if FS_X86_FORMS
    if (form == Form::kAvx512) return Range512(values, range);
    if (form == Form::kAvx2) return Range256(values, range);
#endif
    static_cast<void>(form);
    RangeIn<Two>(values, range);
}

// Whether a value other than 0 is smaller in magnitude.
bool AnySmaller(std::span<const double> values, double bound, Form form) {
#if FS_X86_FORMS
    if (form == Form::kAvx512) return AnySmaller512(values, bound);
    if (form == Form::kAvx2) return AnySmaller256(values, bound);
#endif
    static_cast<void>(form);
    return AnySmallerIn<Two>(values, bound);
}

}  // namespace

bool IsAvailable(Form form) {
#if FS_X86_FORMS
    if (form == Form::kAvx512) {
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
               __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw") &&
               __builtin_cpu_supports("avx512ifma");
    }
    if (form == Form::kAvx2) return __builtin_cpu_supports("avx2") != 0;
#endif
    return form == Form::kPortable;
}

Form BestForm() {
    static const Form kBest = IsAvailable(Form::kAvx512) ? Form::kAvx512
                              : IsAvailable(Form::kAvx2) ? Form::kAvx2
                                                         : Form::kPortable;
    return kBest;
}

Range RangeOf(std::span<const double> values, Form form) {
    // Scaled up or down by 2^50 at most, magnitudes within these bounds stay normal numbers.
    constexpr int kLowestPower = -900;
    constexpr int kHighestPower = 960;
    constexpr double kSmallest = 0x1p-60;
    Range range;
    RangeIn(values, range, form);
    if (range.fValid == 0) {
        range.fLowest = range.fHighest = 0.0;
        return range;
    }
    if (!range.fbPlain) return range;
    const double largest = std::max(std::abs(range.fLowest), std::abs(range.fHighest));
    if (largest == 0.0) return range;
    range.fPower = std::ilogb(largest) + 1;
    range.fbPlain = range.fPower >= kLowestPower && range.fPower <= kHighestPower;
    // Scaled down, a small number might vanish without a trace.
    if (range.fbPlain && range.fPower > ThreeLimbs::kTop) {
        range.fbPlain = !AnySmaller(values, kSmallest, form);
    }
    return range;
}

Limbs Split(std::span<const double> values, const Range& range, Form form) {
    const Grid grid(form);
    Limbs limbs;
    limbs.fForm = form;
    limbs.fPower = range.fPower;
    limbs.fRows = values.size();
    limbs.fStride = (values.size() + 7) / 8 * 8 + 8;  // a register from any row on
    const std::int64_t nothing =
        form == Form::kPortable ? 0 : static_cast<std::int64_t>(kMagicBits);
    limbs.fvLimbs.assign(limbs.fStride * grid.fLimbs, nothing);
    const double scale = grid.Scale(range.fPower);
#if FS_X86_FORMS
    if (form == Form::kAvx512) {
        SplitInto512(values, scale, limbs);
        return limbs;
    }
    if (form == Form::kAvx2) {
        SplitInto256(values, scale, limbs);
        return limbs;
    }
#endif
    SplitPortable(values, scale, limbs);
    return limbs;
}

void Add(std::span<const double> values, const Range& range, FSExactSum& sum, FSExactSum& squares,
         Seen& seen, Form form) {
    const Totals totals = RunAll<true, false>(values, range, nullptr, 0, seen, form);
    Store(totals, Grid(form), range.fPower, sum, squares);
}

void Add(std::span<const double> values, const Range& range, const Limbs& other, std::size_t first,
         FSExactSum& sum, FSExactSum& squares, FSExactSum& products, Seen& seen, Form form) {
    const Totals totals = RunAll<true, true>(values, range, &other, first, seen, form);
    Store(totals, Grid(form), range.fPower, sum, squares);
    StoreProducts(totals, Grid(form), range.fPower, other.fPower, products);
}

void AddProducts(std::span<const double> values, const Range& range, const Limbs& other,
                 std::size_t first, FSExactSum& products, Seen& seen, Form form) {
    const Totals totals = RunAll<false, true>(values, range, &other, first, seen, form);
    StoreProducts(totals, Grid(form), range.fPower, other.fPower, products);
}

void AddSum(const Limbs& limbs, std::size_t first, std::size_t rows, FSExactSum& sum) {
    const Grid grid(limbs.fForm);
    std::array<Wide, Limbs::kMost> digits{};
    for (std::size_t limb = 0; limb < grid.fLimbs; ++limb) {
        const std::int64_t* stored = limbs.fvLimbs.data() + limb * limbs.fStride + first;
        // Stored limbs carry kMagic's bits; what wraps around comes back when those are taken off.
        std::uint64_t total = 0;
        for (std::size_t row = 0; row < rows; ++row) {
            total += static_cast<std::uint64_t>(stored[row]);
        }
        if (limbs.fForm != Form::kPortable) total -= kMagicBits * rows;
        digits[grid.fLimbs - 1 - limb] = static_cast<std::int64_t>(total);
    }
    AddDigits(std::span(digits).first(grid.fLimbs), grid.fBits, grid.Exponent(limbs.fPower), sum);
}

}  // namespace FSFixedSums
