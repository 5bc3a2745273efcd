#include "naivebayes/NBInternalAdapter.h"

#include <gtest/gtest.h>

#include "naivebayes/data/tests/PreparatorFixture.h"
#include "naivebayes/tests/AllocationMeter.h"
#include "naivebayes/tests/RecordSource.h"

namespace {

using namespace preparatortest;
using Rows = std::vector<std::vector<double>>;

const std::optional<std::vector<double>> kGood = std::vector<double>{2, 1, 7, 2, 1, 0};
const std::optional<std::vector<double>> kOther = std::vector<double>{0, 0, 3, 1, 0, 0};
const std::optional<std::vector<double>> kNoTarget = std::vector<double>{2, kMissing, 7, 4, 1, 0};
const std::optional<std::vector<double>> kNoWeight = std::vector<double>{0, 0, 3, kMissing, 0, 0};
const std::vector<double> kGoodPrepared = {1, 2, 2, 1, 1};
const std::vector<double> kOtherPrepared = {0, 1, 0, 0, 0};

class NBInternalAdapterTest : public testing::Test {
 protected:
    Prepared fPrepared{MakeList()};
};

TEST_F(NBInternalAdapterTest, OverAnEmptySourceHasStatusThree) {
    RecordSource source({});
    NBInternalAdapter adapter(source, 0, fPrepared.fPreparator);
    EXPECT_EQ(adapter.GetFailReason(), 3);
    EXPECT_FALSE(adapter.HasMore());
    EXPECT_EQ(adapter.Next(), nullptr);
    EXPECT_EQ(adapter.GetNumRead(), 0);
}

TEST_F(NBInternalAdapterTest, DeliversTheUsableRecordsAndCountsTheOthers) {
    RecordSource source({kNoTarget, kGood, kNoTarget, kNoWeight, kOther, kNoTarget});
    NBInternalAdapter adapter(source, 0, fPrepared.fPreparator);
    EXPECT_EQ(Drain(adapter), (Rows{kGoodPrepared, kOtherPrepared}));
    EXPECT_EQ(adapter.GetFailReason(), 1);
    EXPECT_EQ(adapter.Next(), nullptr);
    EXPECT_EQ(adapter.GetNumRead(), 6);
    EXPECT_EQ(adapter.GetNumUsed(), 2);
    EXPECT_EQ(adapter.GetNumExcluded(), 4);
    EXPECT_EQ(adapter.GetExcludedWeight(), 12.0);
}

TEST_F(NBInternalAdapterTest, ReadsOneUsableRecordAhead) {
    RecordSource source({kGood, kNoTarget, kOther, kGood});
    NBInternalAdapter adapter(source, 0, fPrepared.fPreparator);
    EXPECT_EQ(adapter.GetNumRead(), 1);
    EXPECT_EQ(adapter.GetNumUsed(), 1);
    EXPECT_EQ(Values(*adapter.Next()), kGoodPrepared);
    EXPECT_EQ(adapter.GetNumRead(), 3);
    EXPECT_EQ(adapter.GetNumExcluded(), 1);
    EXPECT_EQ(source.Taken(), 3U);
}

TEST_F(NBInternalAdapterTest, StopsAtTheLimitOfRecordsRead) {
    RecordSource source({kGood, kNoTarget, kOther});
    NBInternalAdapter adapter(source, 2, fPrepared.fPreparator);
    EXPECT_EQ(Drain(adapter), (Rows{kGoodPrepared}));
    EXPECT_EQ(adapter.GetFailReason(), 1);
    EXPECT_EQ(source.Taken(), 2U);
    EXPECT_EQ(adapter.GetNumExcluded(), 1);
}

TEST_F(NBInternalAdapterTest, HasNoLimitBelowOne) {
    for (const std::int32_t limit : {0, -1, -5}) {
        RecordSource source({kGood, kOther, kGood});
        NBInternalAdapter adapter(source, limit, fPrepared.fPreparator);
        EXPECT_EQ(Drain(adapter).size(), 3U) << limit;
    }
}

TEST_F(NBInternalAdapterTest, PassesOverNullRecordsWithoutExcludingThem) {
    RecordSource source({std::nullopt, kGood, std::nullopt});
    NBInternalAdapter adapter(source, 0, fPrepared.fPreparator);
    EXPECT_EQ(Drain(adapter), (Rows{kGoodPrepared}));
    EXPECT_EQ(adapter.GetNumRead(), 3);
    EXPECT_EQ(adapter.GetNumUsed(), 1);
    EXPECT_EQ(adapter.GetNumExcluded(), 0);
    EXPECT_EQ(adapter.GetExcludedWeight(), 0.0);
}

TEST_F(NBInternalAdapterTest, CountsNullRecordsTowardsTheLimit) {
    RecordSource source({std::nullopt, std::nullopt, kGood});
    NBInternalAdapter adapter(source, 2, fPrepared.fPreparator);
    EXPECT_EQ(adapter.GetFailReason(), 1);
    EXPECT_EQ(adapter.GetNumRead(), 2);
}

TEST_F(NBInternalAdapterTest, WithoutAUsableRecordIsAtItsEnd) {
    RecordSource source({kNoTarget, kNoTarget});
    NBInternalAdapter adapter(source, 0, fPrepared.fPreparator);
    EXPECT_EQ(adapter.GetFailReason(), 1);
    EXPECT_EQ(adapter.Next(), nullptr);
    EXPECT_EQ(adapter.GetNumExcluded(), 2);
}

TEST_F(NBInternalAdapterTest, DeliversARecordThatOnlyHasAWarning) {
    RecordSource source({std::vector<double>{3, kMissing, 7, 1, 1, 0}});
    NBInternalAdapter adapter(source, 0, fPrepared.fPreparator);
    EXPECT_EQ(Drain(adapter), (Rows{{0, 1, kMissing, 1, 1}}));
    EXPECT_EQ(adapter.GetNumExcluded(), 0);
}

TEST_F(NBInternalAdapterTest, AllocatesNothingForARecord) {
    RecordSource source(RecordSource::Records(1000, kGood));
    NBInternalAdapter adapter(source, 0, fPrepared.fPreparator);
    const AllocationMeter meter;
    while (adapter.HasMore()) adapter.Next();
    EXPECT_EQ(adapter.GetNumUsed(), 1000);
    EXPECT_EQ(meter.Calls(), 0U);
}

}  // namespace
