#include "featureselect/FSDoubleDouble.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(FSDoubleDouble, SumKeepsWhatADoubleLoses) {
    const FSDoubleDouble sum = FSDoubleDouble::ExactSum(1.0, 1e-25);
    EXPECT_EQ(sum.High(), 1.0);
    EXPECT_EQ(sum.Low(), 1e-25);
    EXPECT_EQ((sum - 1.0).High(), 1e-25);
}

TEST(FSDoubleDouble, ProductKeepsWhatADoubleLoses) {
    const double x = 1.0 + std::ldexp(1.0, -40);
    const FSDoubleDouble square = FSDoubleDouble::ExactProduct(x, x);
    EXPECT_EQ(square.High(), 1.0 + std::ldexp(1.0, -39));
    EXPECT_EQ(square.Low(), std::ldexp(1.0, -80));
}

TEST(FSDoubleDouble, QuotientTimesDivisorComesBack) {
    for (const double divisor : {3.0, 7.0, 1e10 + 1.0, 1.0 / 3.0}) {
        const FSDoubleDouble quotient = FSDoubleDouble(1.0) / divisor;
        const FSDoubleDouble rest = quotient * divisor - 1.0;
        EXPECT_LE(std::abs(rest.High()), 1e-31) << divisor;
    }
}

TEST(FSDoubleDouble, QuotientOutOfRangeIsThatOfPlainDoubles) {
    EXPECT_EQ((FSDoubleDouble(1e300) / 1e-300).High(), HUGE_VAL);
    EXPECT_EQ((FSDoubleDouble(3.0) / HUGE_VAL).High(), 0.0);
}

TEST(FSDoubleDouble, DifferenceOfNeighboursKeepsThirtyDigits) {
    const FSDoubleDouble third = FSDoubleDouble(1.0) / 3.0;
    const FSDoubleDouble difference = (third + 1.0) - (third + 1e-20) - 1.0;
    EXPECT_NEAR(difference.High(), -1e-20, 1e-31);
}

}  // namespace
