// The engine where memory does not suffice.
#include <gtest/gtest.h>

#include <cstddef>

#include "naivebayes/tests/AllocationMeter.h"
#include "naivebayes/tests/EngineFixture.h"

namespace {

using namespace enginetest;

// A target of so many categories: its table of classification takes 720000 bytes, the model a
// hundredth of it.
constexpr std::int32_t kTargets = 300;
constexpr std::size_t kLimit = 500000;

std::unique_ptr<INBAlgorithm> ManyTargets() {
    Rows rows;
    for (std::int32_t k = 0; k < kTargets; ++k) {
        rows.push_back({static_cast<double>(k), static_cast<double>(k % 2)});
    }
    return Built(CategoricalList(kTargets, {2}), rows);
}

}  // namespace

TEST(NBAlgorithmMemory, ATallyWithoutMemoryIsAnErrorAndTheEngineGoesOn) {
    const auto engine = ManyTargets();
    const MCCommon::Record record({0, 0});
    NBOutput output;
    NBStatus status;
    {
        const AllocationMeter meter(kLimit);
        status = engine->TallyRecord(record, output, true);
    }
    EXPECT_EQ(status, Error(NBCode::kNoMemory));
    EXPECT_EQ(output.GetWinner(), 0);
    EXPECT_EQ(engine->GetTrainStatistics(), nullptr);
    EXPECT_EQ(engine->TallyRecord(record, output, true), NBStatus());
    EXPECT_EQ(engine->GetTrainStatistics()->GetCell(0, 0), 1.0);
}

TEST(NBAlgorithmMemory, ATableWithoutMemoryIsAnErrorAndStaysAsItWas) {
    const auto engine = ManyTargets();
    Source source(Rows{{0, 0}});
    NBOutputStatistics table(2);
    table.Add(1, 1, 1.0);
    NBStatus status;
    {
        const AllocationMeter meter(kLimit);
        status = engine->ClassifyRecords(source, table, -1);
    }
    EXPECT_EQ(status, Error(NBCode::kNoMemory));
    EXPECT_EQ(table.GetMatrix(), (std::vector<std::vector<double>>{{0, 0}, {0, 1}}));
    EXPECT_EQ(table.GetTotalWeight(), 1.0);
    EXPECT_EQ(engine->ClassifyRecords(source, table, -1), NBStatus());
    EXPECT_EQ(table.GetNumCategories(), kTargets);
}

TEST(NBAlgorithmMemory, TrainingWithoutMemoryIsAnErrorThatSticks) {
    const Rows rows{{0, 0}, {1, 1}, {0, 999}};
    for (const bool searches : {false, true}) {
        const auto engine = Create(CategoricalList(2, {1000}, searches ? kCandidate : kInput));
        NBStatus status;
        {
            const AllocationMeter meter(16000);  // less than the rows of the table
            Selection selection;
            status = searches ? selection.Run(*engine, rows) : Build(*engine, rows);
        }
        EXPECT_EQ(status, Error(NBCode::kNoMemory)) << searches;
        EXPECT_EQ(engine->GetStatus(), status);
        EXPECT_FALSE(engine->IsModelBuilt());
        EXPECT_EQ(Build(*engine, rows), status);
    }
}

TEST(NBAlgorithmMemory, AMergeWithoutMemoryLeavesNoModel) {
    const auto engine = ManyTargets();
    NBOutput output;
    EXPECT_EQ(engine->TallyRecord(MCCommon::Record({0, 0}), output, true), NBStatus());
    NBVarList list;
    std::vector<double> values;
    for (std::int32_t k = 0; k < kTargets; ++k) values.push_back(-10.0 * (k + 1));
    list.AddNumericCatVar("t", "", values, {}, kTarget);
    AddCategorical(list, "p0", 2, kInput);
    const auto other = Built(list, {{0, 0}, {1, 1}});
    NBStatus status;
    {
        const AllocationMeter meter(kLimit);
        status = engine->MergeModel(*other, false);
    }
    EXPECT_EQ(status, Error(NBCode::kNoMemory));
    EXPECT_FALSE(engine->IsModelBuilt());
    EXPECT_EQ(engine->GetTrainStatistics()->GetCell(0, 0), 1.0);
}
