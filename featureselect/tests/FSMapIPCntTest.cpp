#include "featureselect/FSMapIPCnt.h"

#include <gtest/gtest.h>

#include <sstream>
#include <utility>
#include <vector>

#include "tests/support/MemoryArchive.h"
#include "tests/support/SplitInvariance.h"

namespace {

using Entry = std::pair<std::int32_t, double>;

void Feed(FSMapIPCnt& map, const Entry& entry) { map.Add(entry.first, entry.second); }

TEST(FSMapIPCnt, CountsCasesBesideTheirWeight) {
    FSMapIPCnt map;
    EXPECT_FALSE(map.Add(3, 2.5));
    EXPECT_TRUE(map.Add(3, 0.5));
    std::int32_t count = 0;
    double weight = 0.0;
    EXPECT_TRUE(map.Find(3, count, weight));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(weight, 3.0);
}

TEST(FSMapIPCnt, FindLeavesTheOutputsForAnUnknownKey) {
    FSMapIPCnt map;
    std::int32_t count = -5;
    double weight = -6.0;
    EXPECT_FALSE(map.Find(3, count, weight));
    EXPECT_EQ(count, -5);
    EXPECT_EQ(weight, -6.0);
}

TEST(FSMapIPCnt, MergedPartitionsAreOnePass) {
    const std::vector<Entry> entries{{5, 1.0}, {-2, 0.5}, {5, 2.0}, {9, 1.5}, {0, 1.0}, {-2, 3.0}};
    testsupport::ExpectSplitInvariant(
        entries, [] { return FSMapIPCnt(); }, Feed);
}

TEST(FSMapIPCnt, EntryTakesTwentyBytesWithFourUnused) {
    FSMapIPCnt map;
    map.Add(3, 1.5);
    const std::vector<std::byte> bytes = testsupport::Save(map);
    ASSERT_EQ(bytes.size(), 9u + 20u);
    const std::vector<std::byte> unused(bytes.begin() + 17, bytes.begin() + 21);
    EXPECT_EQ(unused, std::vector<std::byte>(4, std::byte{0}));
}

TEST(FSMapIPCnt, RestoresWhatItSaved) {
    FSMapIPCnt map;
    map.Add(3, 1.5);
    map.Add(3, 1.5);
    map.Add(-4, 0.25);
    FSMapIPCnt restored;
    testsupport::RestoreInto(restored, testsupport::Save(map));
    EXPECT_EQ(testsupport::StateOf(restored), testsupport::StateOf(map));
}

TEST(FSMapIPCnt, DisplayShowsCountAndWeight) {
    FSMapIPCnt map;
    map.Add(3, 1.5);
    std::ostringstream out;
    map.Display(out);
    EXPECT_EQ(out.str(),
              "Start of FSMapIPCnt display\n"
              "Map size = 1\n"
              "Key = 3, Value = (1, 1.5)\n"
              "End of FSMapIPCnt display\n");
}

}  // namespace
