#include "featureselect/FSMapPiCnt.h"

#include <gtest/gtest.h>

#include <sstream>
#include <utility>
#include <vector>

#include "tests/support/MemoryArchive.h"
#include "tests/support/SplitInvariance.h"

namespace {

using Entry = std::pair<FSCategoryPair, double>;

void Feed(FSMapPiCnt& map, const Entry& entry) { map.Add(entry.first, entry.second); }

TEST(FSMapPiCnt, OrdersByFirstKeyThenSecond) {
    FSMapPiCnt map;
    EXPECT_FALSE(map.Add({2, -5}, 1.0));
    EXPECT_FALSE(map.Add({1, 9}, 1.0));
    EXPECT_FALSE(map.Add({1, 3}, 1.0));
    EXPECT_TRUE(map.Add({1, 9}, 2.0));
    ASSERT_EQ(map.Size(), 3);
    EXPECT_EQ(map.GetAt(0).fKey, (FSCategoryPair{1, 3}));
    EXPECT_EQ(map.GetAt(1).fKey, (FSCategoryPair{1, 9}));
    EXPECT_EQ(map.GetAt(2).fKey, (FSCategoryPair{2, -5}));
    EXPECT_EQ(map.GetAt(1).fWeight, 3.0);
}

TEST(FSMapPiCnt, FindLeavesTheOutputForAnUnknownPair) {
    FSMapPiCnt map;
    map.Add({1, 3}, 1.5);
    double weight = 7.0;
    EXPECT_FALSE(map.Find({3, 1}, weight));
    EXPECT_EQ(weight, 7.0);
    EXPECT_TRUE(map.Find({1, 3}, weight));
    EXPECT_EQ(weight, 1.5);
}

TEST(FSMapPiCnt, MergedPartitionsAreOnePass) {
    const std::vector<Entry> entries{{{5, 1}, 1.0}, {{5, 0}, 0.5}, {{-2, 1}, 2.0},
                                     {{5, 1}, 1.5}, {{0, 0}, 1.0}, {{-2, 1}, 3.0}};
    testsupport::ExpectSplitInvariant(
        entries, [] { return FSMapPiCnt(); }, Feed);
}

TEST(FSMapPiCnt, EntryTakesSixteenBytes) {
    FSMapPiCnt map;
    map.Add({1, 3}, 1.5);
    EXPECT_EQ(testsupport::Save(map).size(), 9u + 16u);
}

TEST(FSMapPiCnt, DisplayShowsPairs) {
    FSMapPiCnt map;
    map.Add({1, -3}, 1.5);
    std::ostringstream out;
    map.Display(out);
    EXPECT_EQ(out.str(),
              "Start of FSMapPiCnt display\n"
              "Map size = 1\n"
              "Key = (1, -3) Value = 1.5\n"
              "End of FSMapPiCnt display\n");
}

}  // namespace
