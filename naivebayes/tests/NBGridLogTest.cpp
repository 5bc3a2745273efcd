#include "naivebayes/NBGridLog.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "tests/support/RandomSeed.h"

namespace {

/// log((high + low) * 2^exponent) * 2^62, rounded to a whole number: top * 2^64 + bottom.
struct Reference {
    double fHigh;
    double fLow;
    std::int64_t fExponent;
    std::int64_t fTop;
    std::uint64_t fBottom;
};

// By mpmath 1.3 with 600 bits: nint(log(mpf(high) + low + ...) * 2**62).
constexpr Reference kReferences[] = {
    {0x1.0000000000000p+0, 0x0.0p+0, 0, 0, 0x0U},
    {0x1.0000000000000p+1, 0x0.0p+0, 0, 0, 0x2c5c85fdf473de6bU},
    {0x1.0000000000000p-1, 0x0.0p+0, 0, -1, 0xd3a37a020b8c2195U},
    {0x1.0000000000000p+0, 0x0.0p+0, 1000, 173, 0x496b6802e49cd1c3U},
    {0x1.0000000000000p+0, 0x0.0p+0, -1000, -174, 0xb69497fd1b632e3dU},
    {0x1.0000000000000p+0, 0x1.0000000000000p-54, 0, 0, 0x100U},
    {0x1.0000000000000p+0, -0x1.0000000000000p-54, 0, -1, 0xffffffffffffff00U},
    {0x1.0000000000001p+0, 0x0.0p+0, 0, 0, 0x400U},
    {0x1.fffffffffffffp-1, 0x0.0p+0, 0, -1, 0xfffffffffffffe00U},
    {0x1.0000000000000p+0, 0x1.0000000000000p-60, 0, 0, 0x4U},
    {0x1.8000000000000p+1, 0x0.0p+0, 0, 0, 0x464fa9eab40c2a5eU},
    {0x1.4000000000000p+3, 0x0.0p+0, 0, 0, 0x935d8dddaaa8ac17U},
    {0x1.fffffffffffffp+0, 0x1.0000000000000p-54, 0, 0, 0x2c5c85fdf473dcebU},
    {0x1.56e1fc2f8f359p-997, 0x0.0p+0, 0, -173, 0x4e5dc03c02565599U},
    {0x1.7e43c8800759cp+996, 0x0.0p+0, 0, 172, 0xb1a23fc3fda9abcdU},
    {0x1.0000000000000p+0, 0x0.0p+0, 100000, 17328, 0xadf4a1214d41f03cU},
    {0x1.8000000000000p+0, 0x0.0p+0, -1000000, -173287, 0x4e64d89fbb04e99dU},
    {0x1.c95fe5991fdb0p+11, -0x1.f7e4c02f35455p-48, 0, 2, 0xd1dcea18b83b5a0U},
    {0x1.fcbc259fb4ec6p+8, 0x1.62403ae3e3c64p-47, 0, 1, 0x8ed7e4fb785fcb51U},
    {0x1.098cc0809c8bep+21, 0x1.a69070f384d79p-36, 0, 3, 0xa5ef0e32cc5cfb0bU},
    {0x1.a376d45268e14p+31, -0x1.a54e53b77293dp-25, 0, 5, 0x7ecea7efa593a97dU},
    {0x1.ff0760e947b87p+26, -0x1.7cfc23d1bee1bp-32, 0, 4, 0xada30657da019eebU},
    {0x1.fbaa20d27d607p+40, 0x1.f3f66bdfc120dp-14, 0, 7, 0x1a46228d89ac34cfU},
    {0x1.0da85cd7bc612p-23, 0x1.25b214410b0ecp-78, 0, -4, 0x7038886cdd7dbc9U},
    {0x1.b8bc78d412400p+15, -0x1.9abc2becae0fdp-39, 0, 2, 0xbc30c5acc37e5c31U},
    {0x1.1af8ade43ba10p+6, -0x1.8a1f2ff506780p-49, 0, 1, 0x10944cac28070358U},
    {0x1.d62cc4b965590p+8, 0x1.01036c8b1ea08p-52, 0, 1, 0x89cc77abdb8f37f8U},
    {0x1.6a8c538751b9cp-40, 0x1.503422a0b1cdcp-95, 0, -7, 0x27d05d95c98d28bbU},
    {0x1.387501e9c61f6p+29, 0x1.e5c1d76fc5409p-26, 0, 5, 0x133c56f89cc490adU},
    {0x1.22ac4f37320abp+40, -0x1.72f1e6a8fc95bp-18, 0, 6, 0xf6960f969c2f942bU},
    {0x1.dc076d1669824p-6, -0x1.a363185c9a32ep-62, 0, -1, 0x1d87e07aea4a5923U},
    {0x1.18d07f7180f0cp+2, 0x1.27867b9307fa3p-54, 0, 0, 0x5ea4d7030e07aacbU},
    {0x1.4e516b384b000p+32, 0x1.47e1de558b276p-25, 0, 5, 0x9ca5e3bad00b613fU},
    {0x1.d703ea1db202fp+3, 0x1.ca0b7f0d6e8f9p-51, 0, 0, 0xac1b1c2128a9d212U},
    {0x1.d45e30c659cccp+12, 0x1.a3a789d14694dp-42, 0, 2, 0x3aff79503da4e400U},
    {0x1.d9700f2d6376dp-3, -0x1.93063b73bb0d4p-58, 0, -1, 0xa2440447c4d9eccdU},
    {0x1.685f6654a98afp+9, 0x1.c7978f28298e5p-47, 0, 1, 0xa523672d76192d79U},
    {0x1.e03d86de3edfep-10, -0x1.ddd02b5979d60p-64, 0, -2, 0x6ca6177c14ed68eeU},
    {0x1.d29e8ba7b0150p+19, 0x1.85ccac7ed4a21p-35, 0, 3, 0x7149dadd0af07195U},
    {0x1.d4d78315ce264p-22, 0x1.245a26a854e74p-78, 0, -4, 0x56c63f64a9434b13U},
    {0x1.7a1ad963f76b5p+9, -0x1.4d60e7ca84aadp-50, 0, 1, 0xa836600b23b8a410U},
    {0x1.70d2edc53a854p-27, -0x1.4a1d7e1c64e95p-81, 0, -5, 0x699c5a99494105bfU},
    {0x1.e1639ad2bfd64p+13, 0x1.356411f636a02p-42, 0, 2, 0x691d46286abe1c89U},
    {0x1.b7d4e38e7828cp-33, -0x1.200f83838fa27p-87, 0, -6, 0x6ab5fc4db70f6a32U},
    {0x1.261eedaa04defp+9, -0x1.11d8bde7dc9c4p-49, 0, 1, 0x982306904729b9a4U},
    {0x1.e5d317e8f7be5p+7, -0x1.bb94f06519fb6p-47, 0, 1, 0x5f88676c21307680U},
    {0x1.a3774edefd606p+17, 0x1.de6d6c53efca1p-38, 0, 3, 0x11bf66bef53c355dU},
    {0x1.89ae7f28663c4p-20, 0x1.49dc2feb7f15bp-76, 0, -4, 0xa450a22a39c26aebU},
    {0x1.2f5901a04a5dcp+25, -0x1.9e7d5aaa88addp-31, 0, 4, 0x5fe57c458a917787U},
    {0x1.dd211ce96ef13p+34, 0x1.ae4c083669e47p-22, 0, 6, 0xc22a416df6cd195U},
    {0x1.fca44d59bc494p-10, -0x1.bee443eb613e7p-65, 0, -2, 0x7053791fde8e1a60U},
    {0x1.38316b92d5734p-19, 0x1.2dd62621409f4p-74, 0, -4, 0xc1d55dd9b1b0efa5U},
    {0x1.dd63da9ab8d1bp-14, 0x1.836aac893ad64p-69, 0, -3, 0xbad277a53926df0eU},
    {0x1.f8ef75dfa9ac0p+35, 0x1.477c25b71627fp-19, 0, 6, 0x3c1f33774a02db93U},
    {0x1.71c670cd75538p-28, 0x1.91ebe4a1c5652p-84, 0, -5, 0x3d6a080852911f74U},
    {0x1.0193ff084bf8ap-40, -0x1.1b844d2c52050p-95, 0, -7, 0x11efc0b5b7ddfa5cU},
    {0x1.d8de71700c036p-28, -0x1.c52c114ebef08p-83, 0, -5, 0x4d273c31030384d2U},
    {0x1.6e48efafba4cap+23, 0x1.b71546a164d00p-32, 0, 4, 0x133d58348835a3e2U},
    {0x1.6552714a57058p+2, -0x1.a2a15653e14b3p-53, 0, 0, 0x6e10749fd5700353U},
    {0x1.0489a6520650cp+16, -0x1.f46c23f5d958fp-39, 0, 2, 0xc6e83e3c2b0b7faaU},
    {0x1.a89c824394fa6p+11, -0x1.2fef5435b7273p-43, 0, 2, 0x85c02969ac4423fU},
    {0x1.e22baf72f2790p+24, 0x1.5e2edabd6a6c6p-33, 0, 4, 0x51319c420ccda4bbU},
    {0x1.3023887e7af45p+31, -0x1.758f0f3919d3cp-24, 0, 5, 0x6a3b4c963229fe32U},
    {0x1.ff8ac564e12a8p+31, 0x1.2916aeecf85d0p-27, 0, 5, 0x8b8216bd740e9b3eU},
    {0x1.3be266a0fa644p+11, 0x1.1f7d24f8dd0b0p-43, 0, 1, 0xf56da7a08e29c786U},
    {0x1.d3bd5f4b6f945p-37, -0x1.d125c88d11666p-91, 0, -7, 0xbd33d65653042f5fU},
    {0x1.d5ded1cfaa0e8p-12, 0x1.e00cf9960b567p-67, 0, -2, 0x128762b2748a3cf7U},
    {0x1.ceca8e1fe2be2p-16, 0x1.4fdd3ca414200p-70, 0, -3, 0x601c91aafc9ba11eU},
    {0x1.8b57e337fdcf4p+4, 0x1.82125ccbb01f5p-50, 0, 0, 0xcd42345ef7e1f16eU},
    {0x1.7840139224b80p+24, 0x1.6ab45493becb6p-32, 0, 4, 0x4151aa80be854b11U},
    {0x1.7a098b1aba280p+22, 0x1.51af72a26fbd1p-32, 0, 3, 0xe8e63ffab58c580cU},
    {0x1.6fb3da07bc19ep-26, 0x1.c77690f07a6fcp-82, 0, -5, 0x95c6fc8b8412de29U},
    {0x1.e299f8bd36b32p+13, -0x1.e50c0d96d416cp-42, 0, 2, 0x69467c2a22c2e8ceU},
    {0x1.05868fa0a5a5ap-28, -0x1.ca3ef2653dcc0p-84, 0, -5, 0x273f38ec76554099U},
    {0x1.7d8ca4bc42007p+19, -0x1.c2a8c86bbbbcdp-36, 0, 3, 0x646830c91dd8011eU},
    {0x1.4c2a659160443p+13, -0x1.e646172177badp-43, 0, 2, 0x515e1e835ab18a00U},
    {0x1.5d64b254f12eep-37, -0x1.4be7b6e6df4a2p-94, 0, -7, 0xaa88668a272fdd91U},
    {0x1.0000000000000p+0, 0x0.0p+0, 0, 0, 0x0U},
    {0x1.01fffffffffffp+0, 0x0.0p+0, 0, 0, 0x7f80a9ac419a2cU},
    {0x1.0800000000000p+0, 0x0.0p+0, 0, 0, 0x1f829b0e7833005U},
    {0x1.09fffffffffffp+0, 0x0.0p+0, 0, 0, 0x273d0f73fd7a81cU},
    {0x1.1000000000000p+0, 0x0.0p+0, 0, 0, 0x3e14618022c54ccU},
    {0x1.11fffffffffffp+0, 0x0.0p+0, 0, 0, 0x4594dbba8deb47dU},
    {0x1.1800000000000p+0, 0x0.0p+0, 0, 0, 0x5bc34a2b95ad2e7U},
    {0x1.19fffffffffffp+0, 0x0.0p+0, 0, 0, 0x630d1758c66c49cU},
    {0x1.2000000000000p+0, 0x0.0p+0, 0, 0, 0x789c1db8abcb97aU},
    {0x1.21fffffffffffp+0, 0x0.0p+0, 0, 0, 0x7fb244c76faab23U},
    {0x1.2800000000000p+0, 0x0.0p+0, 0, 0, 0x94aa97c0ffa91a6U},
    {0x1.29fffffffffffp+0, 0x0.0p+0, 0, 0, 0x9b8fe100f47b6aeU},
    {0x1.3000000000000p+0, 0x0.0p+0, 0, 0, 0xaff983853c9e9e4U},
    {0x1.31fffffffffffp+0, 0x0.0p+0, 0, 0, 0xb6b07f38ce90aeeU},
    {0x1.3800000000000p+0, 0x0.0p+0, 0, 0, 0xca92d4e7a2b5a3bU},
    {0x1.39fffffffffffp+0, 0x0.0p+0, 0, 0, 0xd11de0ff15aae4aU},
    {0x1.4000000000000p+0, 0x0.0p+0, 0, 0, 0xe47fbe3cd4d10d6U},
    {0x1.41fffffffffffp+0, 0x0.0p+0, 0, 0, 0xeae10b5a7ddc580U},
    {0x1.4800000000000p+0, 0x0.0p+0, 0, 0, 0xfdc8c36af1f1547U},
    {0x1.49fffffffffffp+0, 0x0.0p+0, 0, 0, 0x10402594b4d03dc1U},
    {0x1.5000000000000p+0, 0x0.0p+0, 0, 0, 0x11675cababa60e04U},
    {0x1.51fffffffffffp+0, 0x0.0p+0, 0, 0, 0x11c898c16999f7f4U},
    {0x1.5800000000000p+0, 0x0.0p+0, 0, 0, 0x12e8e2bae11d309cU},
    {0x1.59fffffffffffp+0, 0x0.0p+0, 0, 0, 0x1347dd9a987d51e1U},
    {0x1.6000000000000p+0, 0x0.0p+0, 0, 0, 0x14618bc21c5ec27dU},
    {0x1.61fffffffffffp+0, 0x0.0p+0, 0, 0, 0x14be5f9577789df7U},
    {0x1.6800000000000p+0, 0x0.0p+0, 0, 0, 0x15d1bdbf5809ca51U},
    {0x1.69fffffffffffp+0, 0x0.0p+0, 0, 0, 0x162c82f2b9c7925bU},
    {0x1.7000000000000p+0, 0x0.0p+0, 0, 0, 0x1739d7f6bbd0069dU},
    {0x1.71fffffffffffp+0, 0x0.0p+0, 0, 0, 0x1792a55fdd479fb8U},
    {0x1.7800000000000p+0, 0x0.0p+0, 0, 0, 0x189a3386c1425ab6U},
    {0x1.79fffffffffffp+0, 0x0.0p+0, 0, 0, 0x18f11e873662c4c9U},
    {0x1.8000000000000p+0, 0x0.0p+0, 0, 0, 0x19f323ecbf984bf3U},
    {0x1.81fffffffffffp+0, 0x0.0p+0, 0, 0, 0x1a484090e5bb0785U},
    {0x1.8800000000000p+0, 0x0.0p+0, 0, 0, 0x1b44f77bcc8f628dU},
    {0x1.89fffffffffffp+0, 0x0.0p+0, 0, 0, 0x1b9858969310f8c0U},
    {0x1.9000000000000p+0, 0x0.0p+0, 0, 0, 0x1c8ff7c79a9a21acU},
    {0x1.91fffffffffffp+0, 0x0.0p+0, 0, 0, 0x1ce1af0b85f3e8efU},
    {0x1.9800000000000p+0, 0x0.0p+0, 0, 0, 0x1dd46a04c1c4a0bfU},
    {0x1.99fffffffffffp+0, 0x0.0p+0, 0, 0, 0x1e24881a7c6c239dU},
    {0x1.a000000000000p+0, 0x0.0p+0, 0, 0, 0x1f128f5faf06ecb3U},
    {0x1.a1fffffffffffp+0, 0x0.0p+0, 0, 0, 0x1f6123fa7028a9eeU},
    {0x1.a800000000000p+0, 0x0.0p+0, 0, 0, 0x204aa54b4ba1fd8dU},
    {0x1.a9fffffffffffp+0, 0x0.0p+0, 0, 0, 0x2097bf3b524da265U},
    {0x1.b000000000000p+0, 0x0.0p+0, 0, 0, 0x217ce5c84a55056dU},
    {0x1.b1fffffffffffp+0, 0x0.0p+0, 0, 0, 0x21c8930ba3991592U},
    {0x1.b800000000000p+0, 0x0.0p+0, 0, 0, 0x22a987a5e9abd353U},
    {0x1.b9fffffffffffp+0, 0x0.0p+0, 0, 0, 0x22f3d577b1333f2eU},
    {0x1.c000000000000p+0, 0x0.0p+0, 0, 0, 0x23d0bebce081a07cU},
    {0x1.c1fffffffffffp+0, 0x0.0p+0, 0, 0, 0x2419b9a32556d8e0U},
    {0x1.c800000000000p+0, 0x0.0p+0, 0, 0, 0x24f2bc25136235d7U},
    {0x1.c9fffffffffffp+0, 0x0.0p+0, 0, 0, 0x253a6ffd85611354U},
    {0x1.d000000000000p+0, 0x0.0p+0, 0, 0, 0x260fae669e217c3fU},
    {0x1.d1fffffffffffp+0, 0x0.0p+0, 0, 0, 0x26562672243ae032U},
    {0x1.d800000000000p+0, 0x0.0p+0, 0, 0, 0x2727c1a6ac543354U},
    {0x1.d9fffffffffffp+0, 0x0.0p+0, 0, 0, 0x276d0893fff84336U},
    {0x1.e000000000000p+0, 0x0.0p+0, 0, 0, 0x283b1fd08ce55cc9U},
    {0x1.e1fffffffffffp+0, 0x0.0p+0, 0, 0, 0x287f3fc5f39cccd5U},
    {0x1.e800000000000p+0, 0x0.0p+0, 0, 0, 0x2949f0bb607d7604U},
    {0x1.e9fffffffffffp+0, 0x0.0p+0, 0, 0, 0x298cf35f99dc714cU},
    {0x1.f000000000000p+0, 0x0.0p+0, 0, 0, 0x2a545a4cb78b55ddU},
    {0x1.f1fffffffffffp+0, 0x0.0p+0, 0, 0, 0x2a9648cf33292d44U},
    {0x1.f800000000000p+0, 0x0.0p+0, 0, 0, 0x2b5a80986b3e59f6U},
    {0x1.f9fffffffffffp+0, 0x0.0p+0, 0, 0, 0x2b9b63b8d82ec714U},
};

TEST(NBGridLog, IsTheNearestUnit) {
    for (const Reference& reference : kReferences) {
        const NBInt128 expected =
            NBInt128{reference.fTop} * (NBInt128{1} << 64) + reference.fBottom;
        const NBInt128 actual =
            NBGridLog::Log(NBDoubleDouble(reference.fHigh, reference.fLow), reference.fExponent);
        EXPECT_EQ(static_cast<std::int64_t>(actual - expected), 0)
            << reference.fHigh << ' ' << reference.fLow << ' ' << reference.fExponent;
    }
}

TEST(NBGridLog, OfOneIsZero) {
    EXPECT_TRUE(NBGridLog::Log(NBDoubleDouble(1.0), 0) == 0);
    EXPECT_TRUE(NBGridLog::Log(NBDoubleDouble(0x1p-30), 30) == 0);
}

TEST(NBGridLog, KnowsNothingOfTheFormOfANumber) {
    // x * y / y is x to 100 bits; its logarithm is one of two neighbours and nearly always the
    // same.
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> uniform(1e-6, 1.0);
    int numOther = 0;
    for (int trial = 0; trial < 20000; ++trial) {
        const NBDoubleDouble x = NBDoubleDouble(uniform(random)) / NBDoubleDouble(uniform(random));
        const NBDoubleDouble y = NBDoubleDouble(uniform(random)) / NBDoubleDouble(uniform(random));
        const NBInt128 one = NBGridLog::Log(x, 0);
        const NBInt128 other = NBGridLog::Log((x * y) / y, 0);
        const auto difference = static_cast<std::int64_t>(one - other);
        EXPECT_LE(std::abs(difference), 1);
        numOther += difference != 0 ? 1 : 0;
    }
    EXPECT_LE(numOther, 2);
}

TEST(NBGridLog, GrowsWithTheNumber) {
    NBInt128 last = NBGridLog::Log(NBDoubleDouble(0.25), 0);
    for (double number = 0.25; number < 8.0; number += 0x1p-10) {
        for (const double next : {number, std::nextafter(number, 9.0)}) {
            const NBInt128 log = NBGridLog::Log(NBDoubleDouble(next), 0);
            EXPECT_TRUE(log >= last) << next;
            last = log;
        }
    }
}

}  // namespace
