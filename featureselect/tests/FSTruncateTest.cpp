#include "featureselect/FSTruncate.h"

#include <gtest/gtest.h>

#include <limits>

#include "host/Records.h"

namespace {

constexpr std::int32_t kLowest = std::numeric_limits<std::int32_t>::min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(FSTruncate, CutsTowardsZero) {
    EXPECT_EQ(FSTruncate(2.9), 2);
    EXPECT_EQ(FSTruncate(-2.9), -2);
    EXPECT_EQ(FSTruncate(-0.5), 0);
    EXPECT_EQ(FSTruncate(-1.0), -1);
}

TEST(FSTruncate, KeepsTheWholeRange) {
    EXPECT_EQ(FSTruncate(2147483647.9), 2147483647);
    EXPECT_EQ(FSTruncate(-2147483648.9), kLowest);
}

TEST(FSTruncate, GivesTheLowestIntegerForAnythingOutOfRange) {
    EXPECT_EQ(FSTruncate(2147483648.0), kLowest);
    EXPECT_EQ(FSTruncate(-2147483649.0), kLowest);
    EXPECT_EQ(FSTruncate(1e300), kLowest);
    EXPECT_EQ(FSTruncate(kInfinity), kLowest);
    EXPECT_EQ(FSTruncate(-kInfinity), kLowest);
    EXPECT_EQ(FSTruncate(std::numeric_limits<double>::quiet_NaN()), kLowest);
    EXPECT_EQ(FSTruncate(MCMV::gMissingValue), kLowest);
}

}  // namespace
