#include "featureselect/FSTail.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(FSTail, IsMissingUntilSet) {
    EXPECT_EQ(FSTail().fP, MCMV::gMissingValue);
    EXPECT_EQ(FSTail().fLogP, MCMV::gMissingValue);
}

TEST(TailOfLog, KeepsTheLogarithmWherePUnderflows) {
    EXPECT_EQ(TailOfLog(-1e8).fP, 0.0);
    EXPECT_EQ(TailOfLog(-1e8).fLogP, -1e8);
    EXPECT_EQ(TailOfLog(-HUGE_VAL).fP, 0.0);
    EXPECT_EQ(TailOfLog(-HUGE_VAL).fLogP, -HUGE_VAL);
}

TEST(TailOfLog, IsNeverAboveOne) {
    EXPECT_EQ(TailOfLog(1e-16).fP, 1.0);
    EXPECT_EQ(TailOfLog(1e-16).fLogP, 0.0);
}

TEST(TailOfLogComplement, KeepsTheDigitsOfALogarithmNextToZero) {
    const FSTail tail = TailOfLogComplement(std::log(1e-200));
    EXPECT_EQ(tail.fP, 1.0);
    EXPECT_NEAR(tail.fLogP / -1e-200, 1.0, 1e-13);
}

TEST(TailOfLogComplement, ItsTwoFormsMeet) {
    for (const double q : {0.1, 0.49999, 0.5, 0.50001, 0.9}) {
        const FSTail tail = TailOfLogComplement(std::log(q));
        EXPECT_DOUBLE_EQ(tail.fP, 1.0 - q) << q;
        EXPECT_DOUBLE_EQ(tail.fLogP, std::log1p(-q)) << q;
    }
}

TEST(TailOfLogComplement, IsMissingWhenNothingOfPIsLeft) {
    for (const double logQ : {0.0, 1e-16, kNan}) {
        EXPECT_EQ(TailOfLogComplement(logQ).fP, MCMV::gMissingValue) << logQ;
        EXPECT_EQ(TailOfLogComplement(logQ).fLogP, MCMV::gMissingValue) << logQ;
    }
    EXPECT_EQ(TailOfLog(kNan).fP, MCMV::gMissingValue);
}

}  // namespace
