// Blocks of records against the same records one by one.
#include "naivebayes/NBBlockScorer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "naivebayes/NBBlockScores.h"
#include "naivebayes/tests/EngineFixture.h"
#include "tests/support/RandomSeed.h"

namespace {

using enginetest::kInput;
using enginetest::kMissing;
using enginetest::kTarget;
using enginetest::Rows;

std::uint64_t Bits(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

// Runs the last task first.
class Backwards final : public MCCommon::BlockExecutor {
 public:
    void Run(std::int32_t count, const std::function<void(std::int32_t)>& task) override {
        while (count > 0) task(--count);
    }
};

// Columns of records; which are codes is told by the table of levels.
class Block {
 public:
    Block(const Rows& rows, const std::vector<bool>& isCode, int bytes) {
        fBlock.fRows = static_cast<std::int32_t>(rows.size());
        const std::size_t columns = isCode.size();
        fvBytes.resize(columns);
        fvShorts.resize(columns);
        fvWords.resize(columns);
        fvNumbers.resize(columns);
        for (std::size_t c = 0; c < columns; ++c) {
            std::uint32_t end = 1;
            for (const auto& row : rows) {
                const auto entry = isCode[c] ? static_cast<std::uint32_t>(row[c] + 1.0) : 0U;
                end = std::max(end, entry + 1);
                fvBytes[c].push_back(static_cast<std::uint8_t>(entry));
                fvShorts[c].push_back(static_cast<std::uint16_t>(entry));
                fvWords[c].push_back(entry);
                fvNumbers[c].push_back(row[c]);
            }
            MCCommon::BlockColumn& column = fBlock.fvColumns.emplace_back();
            column.fEntryEnd = end;
            if (!isCode[c]) {
                column.fValues = MCCommon::BlockColumn::Numbers(fvNumbers[c]);
            } else if (bytes == 1) {
                column.fValues = MCCommon::BlockColumn::Bytes(fvBytes[c]);
            } else if (bytes == 2) {
                column.fValues = MCCommon::BlockColumn::Shorts(fvShorts[c]);
            } else {
                column.fValues = MCCommon::BlockColumn::Words(fvWords[c]);
            }
        }
    }
    MCCommon::RecordBlock fBlock;

 private:
    std::vector<std::vector<std::uint8_t>> fvBytes;
    std::vector<std::vector<std::uint16_t>> fvShorts;
    std::vector<std::vector<std::uint32_t>> fvWords;
    std::vector<std::vector<double>> fvNumbers;
};

void ExpectSameStatistics(const NBOutputStatistics* left, const NBOutputStatistics* right) {
    ASSERT_EQ(left == nullptr, right == nullptr);
    if (left == nullptr) return;
    EXPECT_EQ(Bits(left->GetTotalWeight()), Bits(right->GetTotalWeight()));
    EXPECT_EQ(Bits(left->GetErrorPercent()), Bits(right->GetErrorPercent()));
    EXPECT_EQ(left->GetMatrix(), right->GetMatrix());
}

// Scores and tallies rows in both ways, in blocks of blockRows, and compares all.
void Compare(INBAlgorithm& plain, INBAlgorithm& inBlocks, const Rows& rows,
             const std::vector<bool>& isCode, std::size_t blockRows, int bytes,
             std::mt19937& random) {
    Backwards executor;
    NBBlockScores scores;
    for (std::size_t first = 0; first < rows.size(); first += blockRows) {
        const auto end =
            rows.begin() + static_cast<std::ptrdiff_t>(std::min(first + blockRows, rows.size()));
        const Rows some(rows.begin() + static_cast<std::ptrdiff_t>(first), end);
        const Block block(some, isCode, bytes);
        std::vector<std::uint8_t> training;
        for (std::size_t i = 0; i < some.size(); ++i) training.push_back(random() % 4 != 0 ? 1 : 0);
        ASSERT_EQ(inBlocks.TallyBlock(block.fBlock, random() % 2 == 0 ? &executor : nullptr, scores,
                                      training),
                  NBStatus());
        for (std::size_t i = 0; i < some.size(); ++i) {
            NBOutput output;
            const NBStatus status =
                plain.TallyRecord(MCCommon::Record(some[i]), output, training[i] != 0);
            const NBScoreState state =
                status.IsOK()
                    ? NBScoreState::kScored
                    : (status.GetCode() == NBCode::kNoValidPredictor ? NBScoreState::kByPriors
                                                                     : NBScoreState::kRefused);
            ASSERT_FALSE(status.IsError());
            ASSERT_EQ(scores.fvStates[i], state) << "record " << first + i;
            ASSERT_EQ(scores.fvWinners[i], output.GetWinner()) << "record " << first + i;
            for (std::int32_t k = 0; k < plain.GetNumTargetCategories(); ++k) {
                const double expected = state == NBScoreState::kRefused
                                            ? kMissing
                                            : output.GetValues()[static_cast<std::size_t>(k)];
                ASSERT_EQ(Bits(scores.Posteriors(k)[i]), Bits(expected))
                    << "record " << first + i << ", category " << k;
            }
        }
    }
    ExpectSameStatistics(plain.GetTrainStatistics(), inBlocks.GetTrainStatistics());
    ExpectSameStatistics(plain.GetTestStatistics(), inBlocks.GetTestStatistics());
}

struct Shape {
    std::int32_t fTargets;
    std::size_t fCategorical;
    std::size_t fContinuous;
    bool fbWeighted;
    std::size_t fRows;
    int fBytes;
};

void PrintTo(const Shape& shape, std::ostream* out) {
    *out << shape.fTargets << " targets, " << shape.fCategorical << " categorical, "
         << shape.fContinuous << " continuous, " << shape.fRows << " rows";
}

class BlocksAndRecords : public testing::TestWithParam<Shape> {};

TEST_P(BlocksAndRecords, ScoreToTheSameBits) {
    const Shape shape = GetParam();
    const std::uint32_t seed = testsupport::RandomSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    NBVarList list;
    std::vector<bool> isCode;
    std::vector<std::int32_t> categories;
    enginetest::AddCategorical(list, "t", shape.fTargets, kTarget);
    isCode.push_back(true);
    for (std::size_t j = 0; j < shape.fCategorical; ++j) {
        categories.push_back(static_cast<std::int32_t>(2 + random() % 9));
        enginetest::AddCategorical(list, "c" + std::to_string(j), categories.back(), kInput);
        isCode.push_back(true);
    }
    for (std::size_t j = 0; j < shape.fContinuous; ++j) {
        list.AddContVar("x" + std::to_string(j), "", -4.0, 9.0,
                        static_cast<std::int32_t>(2 + random() % 9), kInput);
        isCode.push_back(false);
    }
    if (shape.fbWeighted) {
        list.AddWeightVar("w", "", 1);
        isCode.push_back(false);
    }
    std::normal_distribution<double> normal;
    const auto draw = [&](bool clean) {
        std::vector<double> row;
        const auto target = static_cast<double>(random() % static_cast<unsigned>(shape.fTargets));
        row.push_back(!clean && random() % 11 == 0 ? -1.0 : target);
        // Now and then no predictor is there.
        const bool none = !clean && random() % 17 == 0;
        for (const std::int32_t count : categories) {
            auto code = static_cast<double>(random() % static_cast<unsigned>(count));
            if (random() % 5 == 0) code = std::min(target, count - 1.0);
            if (none || random() % 13 == 0) code = -1.0;
            if (!clean && random() % 97 == 0) code = count + static_cast<double>(random() % 3);
            row.push_back(code);
        }
        for (std::size_t j = 0; j < shape.fContinuous; ++j) {
            // Bins between the middle ones and the far ones stay empty while training.
            double value = normal(random) + (random() % 7 == 0 ? 8.0 : 0.0);
            if (random() % 4 == 0) value = static_cast<double>(random() % 14) - 4.0;
            row.push_back(none || random() % 13 == 0 ? kMissing : value);
        }
        if (shape.fbWeighted) {
            const double weight = static_cast<double>(random() % 40) * 0.25;
            row.push_back(random() % 9 == 0 ? kMissing : weight);
        }
        return row;
    };
    Rows training;
    Rows scored;
    for (std::size_t i = 0; i < 200; ++i) training.push_back(draw(true));
    for (std::size_t i = 0; i < shape.fRows; ++i) scored.push_back(draw(false));
    const auto plain = enginetest::Built(list, training);
    const auto inBlocks = enginetest::Built(list, training);
    const std::size_t blockRows = 1 + random() % (2 * shape.fRows);
    Compare(*plain, *inBlocks, scored, isCode, blockRows, shape.fBytes, random);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, BlocksAndRecords,
    testing::Values(Shape{2, 5, 0, false, 500, 1}, Shape{2, 0, 4, false, 500, 1},
                    Shape{3, 6, 5, false, 9000, 1}, Shape{3, 6, 5, true, 3000, 2},
                    Shape{4, 3, 3, true, 700, 4}, Shape{5, 8, 2, true, 700, 1},
                    Shape{9, 4, 4, false, 700, 2}, Shape{3, 1, 0, true, 300, 1},
                    // So many factors that products run into denormal numbers and 0.
                    Shape{3, 700, 30, false, 300, 1}));

TEST(NBBlockScorer, TiesGoWhereThoseOfARecordGo) {
    // Every category of the target looks the same, but for how many records it has.
    const NBVarList list = enginetest::CategoricalList(4, {2});
    Rows training;
    const std::vector<int> counts = {2, 3, 4, 3};
    for (std::size_t k = 0; k < counts.size(); ++k) {
        for (int i = 0; i < counts[k]; ++i) {
            training.push_back({static_cast<double>(k), static_cast<double>(i % 2)});
        }
    }
    const auto plain = enginetest::Built(list, training);
    const auto inBlocks = enginetest::Built(list, training);
    std::mt19937 random(1);
    Compare(*plain, *inBlocks, {{0, 0}, {1, 1}, {2, -1}, {3, 0}}, {true, true}, 4, 1, random);
}

TEST(NBBlockScorer, PredictorsOfAnotherKindAreScoredRecordByRecord) {
    const NBVarList list = enginetest::CategoricalList(2, {3, 3});
    std::mt19937 random(7);
    const Rows rows = enginetest::RandomRows(random, 50, 2, {3, 3});
    const auto plain = enginetest::Built(list, rows);
    const auto inBlocks = enginetest::Built(list, rows);
    // Codes that come as numbers.
    Compare(*plain, *inBlocks, rows, {true, false, true}, 20, 1, random);
}

TEST(NBBlockScorer, ABlockOfAnotherWidthIsRefused) {
    const NBVarList list = enginetest::CategoricalList(2, {2});
    const auto engine = enginetest::Built(list, {{0, 0}, {1, 1}, {0, 1}, {1, 1}});
    const Block block({{0, 0, 0}}, {true, true, true}, 1);
    NBBlockScores scores;
    EXPECT_EQ(engine->ScoreBlock(block.fBlock, nullptr, scores),
              enginetest::With(enginetest::Error(NBCode::kRecordLength), 2, 3));
}

TEST(NBBlockScorer, AnEngineWithoutAModelRefuses) {
    const auto engine = enginetest::Create(enginetest::CategoricalList(2, {2}));
    const Block block({{0, 0}}, {true, true}, 1);
    NBBlockScores scores;
    EXPECT_EQ(engine->ScoreBlock(block.fBlock, nullptr, scores),
              enginetest::Error(NBCode::kNotBuilt));
}

TEST(NBBlockScorer, AStopAtTheBlockIsAnError) {
    const auto engine =
        enginetest::Built(enginetest::CategoricalList(2, {2}), {{0, 0}, {1, 1}, {0, 1}, {1, 1}});
    enginetest::StopAtPoll stop(0);
    engine->SetInterruptSource(&stop);
    const Block block({{0, 0}}, {true, true}, 1);
    NBBlockScores scores;
    EXPECT_EQ(engine->ScoreBlock(block.fBlock, nullptr, scores),
              enginetest::Error(NBCode::kInterrupted));
}

}  // namespace
