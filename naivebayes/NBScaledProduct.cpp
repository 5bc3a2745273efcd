#include "naivebayes/NBScaledProduct.h"

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define PREDSEL_WIDE_REGISTERS 1
#endif

namespace NBMixtures {

namespace {

// A double's parts: sign, exponent moved up by 1023, fraction.
constexpr int kFractionBits = 52;
constexpr std::int64_t kExponentOfOne = 1023;
constexpr std::uint64_t kFractionMask = (std::uint64_t{1} << kFractionBits) - 1;
constexpr std::uint64_t kOne = std::uint64_t{kExponentOfOne} << kFractionBits;

/// The four products as one. moved: what was taken out of each, with kExponentOfOne every time.
NBScaledProduct Join(const std::array<double, kGroup>& products,
                     const std::array<std::int64_t, kGroup>& moved, std::int64_t times) {
    NBScaledProduct joined;
    joined.fMantissa = (products[0] * products[1]) * (products[2] * products[3]);
    joined.fExponent = std::accumulate(moved.begin(), moved.end(), std::int64_t{0}) -
                       static_cast<std::int64_t>(kGroup) * kExponentOfOne * times;
    return joined;
}

/// The sum for one record: over the groups first, then within one.
inline double Mixture(const double* weights, const double* row, std::size_t width) {
    std::array<double, kGroup> sums{weights[0] * row[0], weights[1] * row[1], weights[2] * row[2],
                                    weights[3] * row[3]};
    for (std::size_t i = kGroup; i < width * kGroup; i += kGroup) {
        for (std::size_t j = 0; j < kGroup; ++j) sums[j] += weights[i + j] * row[i + j];
    }
    return (sums[0] + sums[1]) + (sums[2] + sums[3]);
}

#ifdef PREDSEL_WIDE_REGISTERS

template <class Entry, bool kNarrow>
__attribute__((target("avx2"))) NBScaledProduct WideProduct(const Operands<Entry>& operands) {
    const std::size_t stride = kNarrow ? kGroup : operands.fWidth * kGroup;
    const double* weights = operands.fpWeights;
    const double* const rows = operands.fpRows;
    const Entry* const entries = operands.fpEntries;
    __m256d products = _mm256_set1_pd(1.0);
    __m256i moved = _mm256_setzero_si256();
    std::int64_t times = 0;
    for (std::size_t i = 0; i < operands.fCount;) {
        const std::size_t end = std::min(operands.fCount, i + kGroup * operands.fSafeRun);
        for (; i < end; i += kGroup, weights += kGroup * stride) {
            const double* const row0 = rows + entries[i] * stride;
            const double* const row1 = rows + entries[i + 1] * stride;
            const double* const row2 = rows + entries[i + 2] * stride;
            const double* const row3 = rows + entries[i + 3] * stride;
            const double* const weights1 = weights + stride;
            const double* const weights2 = weights1 + stride;
            const double* const weights3 = weights2 + stride;
            __m256d sum0 = _mm256_mul_pd(_mm256_loadu_pd(weights), _mm256_loadu_pd(row0));
            __m256d sum1 = _mm256_mul_pd(_mm256_loadu_pd(weights1), _mm256_loadu_pd(row1));
            __m256d sum2 = _mm256_mul_pd(_mm256_loadu_pd(weights2), _mm256_loadu_pd(row2));
            __m256d sum3 = _mm256_mul_pd(_mm256_loadu_pd(weights3), _mm256_loadu_pd(row3));
            if constexpr (!kNarrow) {
                for (std::size_t j = kGroup; j < stride; j += kGroup) {
                    sum0 = _mm256_add_pd(sum0, _mm256_mul_pd(_mm256_loadu_pd(weights + j),
                                                             _mm256_loadu_pd(row0 + j)));
                    sum1 = _mm256_add_pd(sum1, _mm256_mul_pd(_mm256_loadu_pd(weights1 + j),
                                                             _mm256_loadu_pd(row1 + j)));
                    sum2 = _mm256_add_pd(sum2, _mm256_mul_pd(_mm256_loadu_pd(weights2 + j),
                                                             _mm256_loadu_pd(row2 + j)));
                    sum3 = _mm256_add_pd(sum3, _mm256_mul_pd(_mm256_loadu_pd(weights3 + j),
                                                             _mm256_loadu_pd(row3 + j)));
                }
            }
            // Neighbours within each record, then the two halves of each record.
            const __m256d pairs01 = _mm256_hadd_pd(sum0, sum1);
            const __m256d pairs23 = _mm256_hadd_pd(sum2, sum3);
            const __m256d mixtures = _mm256_add_pd(_mm256_blend_pd(pairs01, pairs23, 0b1100),
                                                   _mm256_permute2f128_pd(pairs01, pairs23, 0x21));
            products = _mm256_mul_pd(products, mixtures);
        }
        const __m256i bits = _mm256_castpd_si256(products);
        moved = _mm256_add_epi64(moved, _mm256_srli_epi64(bits, kFractionBits));
        products = _mm256_castsi256_pd(_mm256_or_si256(
            _mm256_and_si256(bits, _mm256_set1_epi64x(static_cast<long long>(kFractionMask))),
            _mm256_set1_epi64x(static_cast<long long>(kOne))));
        ++times;
    }
    std::array<double, kGroup> lanes{};
    std::array<std::int64_t, kGroup> exponents{};
    _mm256_storeu_pd(lanes.data(), products);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(exponents.data()), moved);
    return Join(lanes, exponents, times);
}

#endif

}  // namespace

template <class Entry>
NBScaledProduct PortableProduct(const Operands<Entry>& operands) {
    const std::size_t stride = operands.fWidth * kGroup;
    const double* weights = operands.fpWeights;
    std::array<double, kGroup> products{1.0, 1.0, 1.0, 1.0};
    std::array<std::int64_t, kGroup> moved{};
    std::int64_t times = 0;
    for (std::size_t i = 0; i < operands.fCount;) {
        const std::size_t end = std::min(operands.fCount, i + kGroup * operands.fSafeRun);
        for (; i < end; i += kGroup) {
            for (std::size_t lane = 0; lane < kGroup; ++lane, weights += stride) {
                products[lane] *=
                    Mixture(weights, operands.fpRows + operands.fpEntries[i + lane] * stride,
                            operands.fWidth);
            }
        }
        for (std::size_t lane = 0; lane < kGroup; ++lane) {
            const auto bits = std::bit_cast<std::uint64_t>(products[lane]);
            moved[lane] += static_cast<std::int64_t>(bits >> kFractionBits);
            products[lane] = std::bit_cast<double>((bits & kFractionMask) | kOne);
        }
        ++times;
    }
    return Join(products, moved, times);
}

template <class Entry>
NBScaledProduct Product(const Operands<Entry>& operands) {
#ifdef PREDSEL_WIDE_REGISTERS
    static const bool kHasWideRegisters = __builtin_cpu_supports("avx2") != 0;
    if (kHasWideRegisters) {
        return operands.fWidth == 1 ? WideProduct<Entry, true>(operands)
                                    : WideProduct<Entry, false>(operands);
    }
#endif
    return PortableProduct(operands);
}

template NBScaledProduct Product(const Operands<std::uint8_t>&);
template NBScaledProduct Product(const Operands<std::uint16_t>&);
template NBScaledProduct Product(const Operands<std::uint32_t>&);
template NBScaledProduct PortableProduct(const Operands<std::uint8_t>&);
template NBScaledProduct PortableProduct(const Operands<std::uint16_t>&);
template NBScaledProduct PortableProduct(const Operands<std::uint32_t>&);

}  // namespace NBMixtures
