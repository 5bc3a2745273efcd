#include "featureselect/FSPredSort.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tests/support/MemoryArchive.h"

namespace {

constexpr double kMissing = MCMV::gMissingValue;

TEST(FSPredSort, TakesAllOfATestThatTheOrderGoesBy) {
    FSTestResult result;
    result.fTest = FSTestResult::kF;
    result.fValue = 0.25;
    result.fLogP = -1.5;
    result.fStatistic = 3;
    result.fDf1 = 2;
    result.fDf2 = 40;
    result.fTieBreak1 = 5;
    result.fTieBreak2 = 6;
    const FSPredSort record = FSPredSort::Of(7, result);
    EXPECT_EQ(record.fCriterion, 0.25);
    EXPECT_EQ(record.fTieBreak1, 5);
    EXPECT_EQ(record.fTieBreak2, 6);
    EXPECT_EQ(record.fPredictor, 7);
    EXPECT_EQ(record.fTest, FSTestResult::kF);
    EXPECT_EQ(record.fLogP, -1.5);
    EXPECT_EQ(record.fStatistic, 3);
    EXPECT_EQ(record.fDf1, 2);
    EXPECT_EQ(record.fDf2, 40);
}

TEST(FSPredSort, DisplayShowsMissingAsAWord) {
    std::ostringstream out;
    FSPredSort{0.25, 3, kMissing, 7}.Display(out);
    EXPECT_EQ(out.str(),
              "Start of FSPredSort display\n"
              "Criterion value = 0.25\n"
              "1st tie-breaking value = 3\n"
              "2nd tie-breaking value = <missing>\n"
              "End of FSPredSort display\n");
}

TEST(FSPredSort, SavesThirtyThreeBytesAndRestoresThem) {
    FSPredSort saved{0.25, 3, kMissing, 7};
    saved.fLogP = -1.5;
    const auto bytes = testsupport::Save(saved);
    ASSERT_EQ(bytes.size(), 33U);
    FSPredSort restored;
    testsupport::RestoreInto(restored, bytes);
    EXPECT_EQ(restored.fCriterion, 0.25);
    EXPECT_EQ(restored.fTieBreak1, 3);
    EXPECT_EQ(restored.fTieBreak2, kMissing);
    EXPECT_EQ(restored.fPredictor, 7);
    EXPECT_EQ(restored.fLogP, kMissing);  // not saved
}

}  // namespace
