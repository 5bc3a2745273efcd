#include "naivebayes/NBScaledProduct.h"
#include "tests/support/RandomSeed.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {

template <class Entry>
class NBScaledProductTest : public testing::Test {};
using Entries = testing::Types<std::uint8_t, std::uint16_t, std::uint32_t>;
TYPED_TEST_SUITE(NBScaledProductTest, Entries);

double LogOf(const NBScaledProduct& product) {
    return std::log(product.fMantissa) + static_cast<double>(product.fExponent) * std::numbers::ln2;
}

TYPED_TEST(NBScaledProductTest, BothFormsGiveTheSameBitsAndTheProduct) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> uniform(1e-6, 1.0);
    for (int trial = 0; trial < 200; ++trial) {
        const std::size_t width = 1 + random() % 4;
        const std::size_t count = NBMixtures::kGroup * (random() % 70);
        const std::size_t numRows = 1 + random() % 250;
        const std::size_t stride = width * NBMixtures::kGroup;
        std::vector<double> weights(count * stride);
        std::vector<double> rows(numRows * stride);
        std::vector<TypeParam> entries(count);
        for (double& weight : weights) weight = uniform(random);
        for (double& cell : rows) cell = std::pow(uniform(random), 3.0);
        for (TypeParam& entry : entries) entry = static_cast<TypeParam>(random() % numRows);
        const NBMixtures::Operands<TypeParam> operands{
            weights.data(), entries.data(), rows.data(), width, count, 1 + random() % 16};
        const NBScaledProduct product = NBMixtures::Product(operands);
        EXPECT_EQ(product, NBMixtures::PortableProduct(operands));
        EXPECT_GE(product.fMantissa, 1.0);
        EXPECT_LT(product.fMantissa, 16.0);
        long double expected = 0.0L;
        for (std::size_t i = 0; i < count; ++i) {
            long double sum = 0.0L;
            for (std::size_t k = 0; k < stride; ++k) {
                sum += static_cast<long double>(weights[i * stride + k]) *
                       rows[entries[i] * stride + k];
            }
            expected += std::log(sum);
        }
        EXPECT_NEAR(LogOf(product), static_cast<double>(expected),
                    1e-13 * (1.0 + std::abs(static_cast<double>(expected))));
    }
}

TYPED_TEST(NBScaledProductTest, OfNothingIsOne) {
    const NBMixtures::Operands<TypeParam> operands{nullptr, nullptr, nullptr, 1, 0, 32};
    EXPECT_EQ(NBMixtures::Product(operands), NBScaledProduct());
    EXPECT_EQ(NBMixtures::PortableProduct(operands), NBScaledProduct());
}

TYPED_TEST(NBScaledProductTest, StaysExactFarBeyondTheRangeOfADouble) {
    // 2^-200 for each of 4000 records, five to a run.
    const std::vector<double> weights(4000 * 4, 0.25);
    const std::vector<double> rows(4, 0x1p-200);
    const std::vector<TypeParam> entries(4000, 0);
    const NBMixtures::Operands<TypeParam> operands{
        weights.data(), entries.data(), rows.data(), 1, 4000, 5};
    const NBScaledProduct expected{1.0, -200 * 4000};
    EXPECT_EQ(NBMixtures::Product(operands), expected);
    EXPECT_EQ(NBMixtures::PortableProduct(operands), expected);
}

}  // namespace
