#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

#include "naivebayes/NBColumnStore.h"
#include "naivebayes/data/tests/PreparatorFixture.h"
#include "naivebayes/tests/RandomSearchData.h"
#include "naivebayes/tests/RecordSource.h"
#include "tests/support/RandomSeed.h"

namespace {

using namespace preparatortest;
using Rows = std::vector<std::vector<double>>;
using Store = std::unique_ptr<MCCommon::MultiPassRecordIter>;

/// Records of MakeList: codes, some out of range; numbers, some on cutpoints; all at times missing.
std::vector<MCCommon::Record> RandomOriginals(std::mt19937& random, std::int32_t count,
                                              bool weighted) {
    const auto below = [&random](std::int32_t limit) {
        return static_cast<std::int32_t>(random() % static_cast<std::uint32_t>(limit));
    };
    std::vector<MCCommon::Record> records;
    for (std::int32_t i = 0; i < count; ++i) {
        std::vector<double> values;
        values.push_back(below(5) == 0 ? -1.0 : below(4));
        values.push_back(below(5) == 0 ? -1.0 : below(3));
        values.push_back(below(5) == 0 ? kMissing : below(21) * 0.5);
        if (weighted) values.push_back(below(5) == 0 ? kMissing : below(9) * 0.3 - 0.3);
        values.push_back(below(5) == 0 ? -1.0 : below(3));
        values.push_back(-1.0);
        records.emplace_back(std::move(values));
    }
    return records;
}

/// What is missing for whatever reason is -1.
Rows Unified(Rows rows) {
    for (std::vector<double>& row : rows) std::replace(row.begin(), row.end(), kMissing, -1.0);
    return rows;
}

struct Pass {
    NBStatus fStatus;
    std::int32_t fCount = 0;
    std::int32_t fNumExcluded = 0;
    double fWeightExcluded = 0.0;
    Rows fRows;
    Rows fSecond;
    bool operator==(const Pass&) const = default;
};

Pass PassOver(MCCommon::MultiPassRecordIter& source, NBDataPreparator& preparator,
              std::int32_t numRecords, bool inMemory) {
    Pass pass;
    Store store;
    pass.fStatus = preparator.PrepareRecords(source, numRecords, inMemory, store, pass.fCount, "");
    pass.fNumExcluded = preparator.GetNumExcluded();
    pass.fWeightExcluded = preparator.GetWeightExcluded();
    if (store == nullptr) return pass;
    pass.fRows = Unified(Drain(*store));
    store->NewPass();
    pass.fSecond = Unified(Drain(*store));
    return pass;
}

TEST(NBDataPreparatorBlocks, KeepTheRecordsThatOneByOneAreKept) {
    const auto seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    for (int trial = 0; trial < 40; ++trial) {
        const bool weighted = trial % 2 == 0;
        Prepared prepared(weighted ? MakeList() : MakeUnweightedList());
        const auto count = static_cast<std::int32_t>(random() % 300);
        const auto records = RandomOriginals(random, count, weighted);
        std::vector<std::int32_t> kinds{9, 9, -1, 9, 9};
        if (weighted) kinds.insert(kinds.begin() + 3, -1);
        if (trial % 5 == 4) kinds.front() = -1;  // a categorical variable that comes as numbers
        BackwardExecutor executor;
        const auto limit = static_cast<std::int32_t>(1 + random() % 400);
        for (const bool inMemory : {true, false}) {
            CountedRecords oneByOne(records);
            BlockRecords blocks(records, kinds, static_cast<std::int32_t>(1 + random() % 60),
                                trial % 3 == 0 ? &executor : nullptr);
            const Pass expected = PassOver(oneByOne, prepared.fPreparator, limit, inMemory);
            const Pass pass = PassOver(blocks, prepared.fPreparator, limit, inMemory);
            EXPECT_EQ(pass, expected) << trial;
            EXPECT_EQ(blocks.fNext, oneByOne.fNext);
        }
    }
}

TEST(NBDataPreparatorBlocks, AreKeptColumnByColumnAndReadInAnyMixture) {
    std::mt19937 random(3);
    Prepared prepared(MakeList());
    BlockRecords blocks(RandomOriginals(random, 200, true), {9, 9, -1, -1, 9, 9}, 50);
    Store store;
    std::int32_t count = 0;
    ASSERT_TRUE(prepared.fPreparator.PrepareRecords(blocks, 200, true, store, count, "").IsOK());
    auto* const columns = dynamic_cast<NBColumnStore*>(store.get());
    ASSERT_NE(columns, nullptr);
    const Rows rows = Drain(*columns);
    ASSERT_EQ(rows.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(columns->Next(), nullptr);
    EXPECT_EQ(columns->NextBlock(5), nullptr);
    EXPECT_EQ(columns->GetFailReason(), 1);
    EXPECT_EQ(columns->NewPass(), 0);
    EXPECT_EQ(Values(*columns->Next()), rows[0]);
    const MCCommon::RecordBlock* const block = columns->NextBlock(7);
    ASSERT_EQ(block->fRows, 7);
    for (std::size_t i = 0; i < 7; ++i) {
        const auto codes = std::get<MCCommon::BlockColumn::Bytes>(block->fvColumns[2].fValues);
        EXPECT_EQ(codes[i] - 1.0, rows[i + 1][2]);
        const auto weights = std::get<MCCommon::BlockColumn::Numbers>(block->fvColumns[1].fValues);
        EXPECT_EQ(weights[i], rows[i + 1][1]);
    }
    EXPECT_EQ(Values(*columns->Next()), rows[8]);
    EXPECT_EQ(columns->NextBlock(1000)->fRows, count - 9);
    EXPECT_FALSE(columns->HasMore());
}

TEST(NBDataPreparatorBlocks, StopBetweenBlocksWhenInterrupted) {
    class StopAtSecond : public MCStopProcessor {
     public:
        StopAtSecond() : MCStopProcessor(0.0) {}
        bool IsCancelled() override { return ++fPolls == 2; }

     private:
        int fPolls = 0;
    } stop;
    std::mt19937 random(4);
    Prepared prepared(MakeList());
    prepared.fInterrupt.fpStopProcessor = &stop;
    BlockRecords blocks(RandomOriginals(random, 200, true), {9, 9, -1, -1, 9, 9}, 50);
    Store store;
    std::int32_t count = 0;
    EXPECT_TRUE(prepared.fPreparator.PrepareRecords(blocks, 200, true, store, count, "").IsOK());
    EXPECT_EQ(blocks.fNext, 50U);
    EXPECT_EQ(count + prepared.fPreparator.GetNumExcluded(), 50);
}

}  // namespace
