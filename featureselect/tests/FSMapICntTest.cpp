#include "featureselect/FSMapICnt.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <sstream>
#include <utility>
#include <vector>

#include "featureselect/FSMapIPCnt.h"
#include "tests/support/MemoryArchive.h"
#include "tests/support/RandomSeed.h"
#include "tests/support/SplitInvariance.h"

namespace {

using Entry = std::pair<std::int32_t, double>;

void Feed(FSMapICnt& map, const Entry& entry) { map.Add(entry.first, entry.second); }

TEST(FSMapICnt, AddTellsWhetherTheKeyExisted) {
    FSMapICnt map;
    EXPECT_FALSE(map.Add(3, 1.0));
    EXPECT_TRUE(map.Add(3, 0.5));
    EXPECT_FALSE(map.Add(-2, 1.0));
    EXPECT_EQ(map.Size(), 2);
    EXPECT_EQ(map.GetAt(0).fKey, -2);
    EXPECT_EQ(map.GetAt(1).fKey, 3);
    EXPECT_EQ(map.GetAt(1).fWeight, 1.5);
}

TEST(FSMapICnt, FindLeavesTheOutputForAnUnknownKey) {
    FSMapICnt map;
    map.Add(3, 1.5);
    double weight = 7.0;
    EXPECT_FALSE(map.Find(4, weight));
    EXPECT_EQ(weight, 7.0);
    EXPECT_TRUE(map.Find(3, weight));
    EXPECT_EQ(weight, 1.5);
}

TEST(FSMapICnt, HoldsWhatAPlainMapHolds) {
    std::mt19937 engine(testsupport::RandomSeed());
    std::uniform_int_distribution<std::int32_t> key(-50, 50);
    FSMapICnt map;
    std::map<std::int32_t, double> plain;
    for (int i = 0; i < 400; ++i) {
        const std::int32_t k = key(engine);
        EXPECT_EQ(map.Add(k, 0.5 * i), plain.contains(k));
        plain[k] += 0.5 * i;
    }
    ASSERT_EQ(map.Size(), static_cast<std::int32_t>(plain.size()));
    std::int32_t position = 0;
    for (const auto& [k, weight] : plain) {
        EXPECT_EQ(map.GetAt(position).fKey, k);
        EXPECT_EQ(map.GetAt(position).fWeight, weight);
        double found = 0.0;
        EXPECT_TRUE(map.Find(k, found));
        EXPECT_EQ(found, weight);
        ++position;
    }
}

TEST(FSMapICnt, MergedPartitionsAreOnePass) {
    const std::vector<Entry> entries{{5, 1.0}, {-2, 0.5}, {5, 2.0}, {9, 1.5}, {0, 1.0}, {-2, 3.0}};
    testsupport::ExpectSplitInvariant(
        entries, [] { return FSMapICnt(); }, Feed);
}

TEST(FSMapICnt, EmptyMapSavesNineBytes) { EXPECT_EQ(testsupport::Save(FSMapICnt()).size(), 9u); }

TEST(FSMapICnt, EntryTakesTwelveBytes) {
    FSMapICnt map;
    map.Add(3, 1.5);
    EXPECT_EQ(testsupport::Save(map).size(), 9u + 12u);
}

TEST(FSMapICnt, SharesItsTagWithFSMapIPCnt) {
    FSMapIPCnt other;
    FSMapICnt map;
    testsupport::RestoreInto(map, testsupport::Save(other));
    EXPECT_EQ(map.Size(), 0);
}

TEST(FSMapICnt, DisplayShowsEveryEntry) {
    FSMapICnt map;
    map.Add(3, 1.5);
    map.Add(-2, 1.0);
    std::ostringstream out;
    map.Display(out);
    EXPECT_EQ(out.str(),
              "Start of FSMapICnt display\n"
              "Map size = 2\n"
              "Key = -2, Value = 1\n"
              "Key = 3, Value = 1.5\n"
              "End of FSMapICnt display\n");
}

}  // namespace
