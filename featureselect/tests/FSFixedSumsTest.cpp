#include "featureselect/FSFixedSums.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "featureselect/FSBlockNumbers.h"
#include "featureselect/FSRowLines.h"
#include "host/Records.h"
#include "tests/support/RandomSeed.h"

namespace {

using FSFixedSums::Form;

constexpr double kMissing = MCMV::gMissingValue;

std::vector<Form> Forms() {
    std::vector<Form> forms;
    for (const Form form : {Form::kPortable, Form::kAvx2, Form::kAvx512}) {
        if (FSFixedSums::IsAvailable(form)) forms.push_back(form);
    }
    return forms;
}

/// Columns of all sorts, a tenth of them missing.
std::vector<double> Column(std::mt19937_64& engine, int kind, std::size_t rows) {
    std::normal_distribution<double> normal;
    std::vector<double> column(rows);
    for (double& value : column) {
        value = 3.0 * normal(engine);
        if (kind == 1) value = std::round(value * 100) / 100;
        if (kind == 2) value = std::ldexp(value, static_cast<int>(engine() % 200) - 100);
        if (kind == 3) value += 1e12;
        if (kind == 4) value = engine() % 3 == 0 ? 0.0 : -0.0;
        if (kind == 5) value = std::round(value * 1e6) * 0x1p40;
        if (kind == 6) value *= 1e-290;
        if (engine() % 10 == 0) value = kMissing;
    }
    return column;
}
constexpr int kKinds = 7;

/// The sums value by value.
struct Plain {
    FSExactSum fSum;
    FSExactSum fSquares;
    FSExactSum fProducts;
    std::size_t fValid = 0;

    void Add(double x, double y) {
        fSum.Add(x);
        fSquares.AddProduct(x, x);
        fProducts.AddProduct(x, y);
    }
};

TEST(FSFixedSums, EveryFormGivesTheExactSums) {
    std::mt19937_64 engine(testsupport::RandomSeed());
    std::size_t odd = 0;
    for (int trial = 0; trial < 700; ++trial) {
        const std::size_t rows = trial % 70 == 0 ? 9000 + engine() % 9 : engine() % 100;
        const std::vector<double> x = Column(engine, trial % kKinds, rows);
        std::vector<double> y = Column(engine, 0, rows);
        std::replace(y.begin(), y.end(), kMissing, 1e-30);  // far below: some grids lose it
        Plain plain;
        for (std::size_t row = 0; row < rows; ++row) {
            if (x[row] == kMissing) continue;
            plain.Add(x[row], y[row]);
            ++plain.fValid;
        }
        for (const Form form : Forms()) {
            const FSFixedSums::Range range = FSFixedSums::RangeOf(x, form);
            EXPECT_EQ(range.fValid, plain.fValid);
            if (!range.fbPlain) continue;
            const FSFixedSums::Limbs other =
                FSFixedSums::Split(y, FSFixedSums::RangeOf(y, form), form);
            Plain sums;
            FSFixedSums::Seen seen;
            FSFixedSums::Add(x, range, other, 0, sums.fSum, sums.fSquares, sums.fProducts, seen,
                             form);
            EXPECT_EQ(seen.fValid, plain.fValid);
            EXPECT_EQ(seen.fvMissing.size(), rows - plain.fValid);
            for (const std::uint32_t row : other.fvOdd) {  // 0 in the products
                const bool isOdd =
                    std::find(seen.fvOdd.begin(), seen.fvOdd.end(), row) != seen.fvOdd.end();
                if (x[row] != kMissing && !isOdd) sums.fProducts.AddProduct(x[row], y[row]);
            }
            for (const std::uint32_t row : seen.fvOdd) sums.Add(x[row], y[row]);
            odd += seen.fvOdd.size();
            ASSERT_EQ(sums.fSum, plain.fSum) << trial << ' ' << static_cast<int>(form);
            ASSERT_EQ(sums.fSquares, plain.fSquares) << trial << ' ' << static_cast<int>(form);
            ASSERT_EQ(sums.fProducts, plain.fProducts) << trial << ' ' << static_cast<int>(form);
        }
    }
    EXPECT_GT(odd, 0U);
}

TEST(FSFixedSums, APartOfAColumnAndOfTheOtherAddsUp) {
    std::mt19937_64 engine(testsupport::RandomSeed());
    const std::vector<double> x = Column(engine, 0, 333);
    const std::vector<double> y(333, 0.375);
    for (const Form form : Forms()) {
        const FSFixedSums::Range range = FSFixedSums::RangeOf(x, form);
        const FSFixedSums::Limbs other = FSFixedSums::Split(y, FSFixedSums::RangeOf(y, form), form);
        FSExactSum whole;
        FSExactSum parts;
        FSExactSum sum;
        FSFixedSums::Seen seen;
        FSFixedSums::AddProducts(x, range, other, 0, whole, seen, form);
        for (const auto& [first, end] : {std::pair<std::size_t, std::size_t>{0, 101}, {101, 333}}) {
            const auto part = std::span(x).subspan(first, end - first);
            FSFixedSums::AddProducts(part, range, other, first, parts, seen, form);
            FSFixedSums::AddSum(other, first, end - first, sum);
        }
        EXPECT_EQ(whole, parts);
        EXPECT_EQ(sum, FSExactSum(333 * 0.375));
    }
}

TEST(FSFixedSums, TheRangeLeavesMissingValuesOutAndFindsWhatNoGridHolds) {
    for (const Form form : Forms()) {
        const FSFixedSums::Range range = FSFixedSums::RangeOf(
            std::vector<double>{3.0, kMissing, -2.5, 0.0, 3.5, 1, 1, 1, 1}, form);
        EXPECT_EQ(range.fLowest, -2.5);
        EXPECT_EQ(range.fHighest, 3.5);
        EXPECT_EQ(range.fValid, 8U);
        EXPECT_EQ(range.fPower, 2);
        EXPECT_TRUE(range.fbPlain);
        const auto isPlain = [form](std::vector<double> values) {
            return FSFixedSums::RangeOf(values, form).fbPlain;
        };
        EXPECT_FALSE(isPlain({1.0, std::numeric_limits<double>::infinity()}));
        EXPECT_FALSE(isPlain({1.0, std::numeric_limits<double>::quiet_NaN()}));
        EXPECT_FALSE(isPlain({1e300, 1.0}));
        EXPECT_FALSE(isPlain({1e-290, 1e-300}));
        // Scaled down with the largest, the smallest would become nothing.
        EXPECT_FALSE(isPlain({1e15, 1e-200}));
        EXPECT_TRUE(isPlain({1e15, 1.0}));
        EXPECT_EQ(FSFixedSums::RangeOf(std::vector<double>{kMissing}, form).fValid, 0U);
    }
}

/// The records of a block with the moments of each cell, added one by one.
void ExpectLinesToAddUp(std::mt19937_64& engine, int weightKind, int numberKind) {
    const std::size_t rows = 500;
    std::vector<double> weights(rows, 1.0);
    for (double& weight : weights) {
        if (weightKind == 1) weight = static_cast<double>(1 + engine() % 5000);
        if (weightKind == 2) weight = std::uniform_real_distribution<>(0.01, 9.0)(engine);
        if (weightKind == 3) weight = std::ldexp(1.0, static_cast<int>(engine() % 300) - 150);
    }
    std::vector<double> numbers = Column(engine, numberKind, rows);
    std::replace(numbers.begin(), numbers.end(), kMissing, -7.25);
    std::vector<std::uint8_t> counts(rows, 1);
    for (auto& one : counts) one = engine() % 8 == 0 ? 0 : 1;
    const FSRowLines lines(weights, numbers, counts);
    const std::size_t cells = 7;
    std::vector<std::int64_t> table(cells * lines.Stride());
    lines.AddTo(table, rows, [](std::size_t row) { return row % cells; });
    std::vector<FSMoments> expected(cells);
    std::vector<FSMoments> found(cells);
    for (std::size_t row = 0; row < rows; ++row) {
        if (counts[row] != 0) expected[row % cells].Add(numbers[row], weights[row]);
    }
    for (std::size_t cell = 0; cell < cells; ++cell) {
        lines.AddMoments(&table[cell * lines.Stride()], found[cell]);
    }
    for (const std::uint32_t row : lines.Odd()) {
        EXPECT_TRUE(lines.IsZero(lines.LineOf(row)));
        found[row % cells].Add(numbers[row], weights[row]);
    }
    for (std::size_t cell = 0; cell < cells; ++cell) {
        ASSERT_EQ(found[cell].fWeight.Exact(), expected[cell].fWeight.Exact());
        ASSERT_EQ(found[cell].fSum, expected[cell].fSum);
        ASSERT_EQ(found[cell].fSquares, expected[cell].fSquares);
    }
}

TEST(FSRowLines, AddUpToTheMomentsOfEveryCell) {
    std::mt19937_64 engine(testsupport::RandomSeed());
    for (int weightKind = 0; weightKind < 4; ++weightKind) {
        for (int numberKind = 0; numberKind < kKinds; ++numberKind) {
            SCOPED_TRACE(testing::Message() << weightKind << ' ' << numberKind);
            ExpectLinesToAddUp(engine, weightKind, numberKind);
        }
    }
}

/// A block of three classes in turn, with a target that is the class.
struct Classes {
    explicit Classes(std::vector<double> weights) : fvWeights(std::move(weights)) {
        for (std::size_t row = 0; row < fvWeights.size(); ++row) {
            fvClasses.push_back(static_cast<std::uint16_t>(row % 3));
            fvTargets.push_back(static_cast<double>(row % 3));
        }
        fCases.fTarget = FSBlockCases::kCategorical;
        fCases.fWeights = fvWeights;
        fCases.fTargets = fvTargets;
        fCases.fClasses = fvClasses;
        fCases.fClassKeys = fvKeys;
        fCases.fCounted = static_cast<std::int32_t>(fvWeights.size());
        fCases.fbUnit = false;
    }

    std::vector<double> fvWeights;
    std::vector<double> fvTargets;
    std::vector<std::uint16_t> fvClasses;
    std::vector<std::int32_t> fvKeys{0, 1, 2};
    FSBlockCases fCases;
};

TEST(FSBlockNumbers, RecordsOfInfiniteWeightAreLeftOutOneByOne) {
    const Classes all(std::vector<double>(5, std::numeric_limits<double>::infinity()));
    const FSBlockNumbers numbers(all.fCases, true);
    EXPECT_EQ(numbers.Odd().size(), 5U);
    const std::vector<double> column{1, 2, 3, 4, 5};
    FSOrderedColumn ordered(column, numbers);
    FSMoments moments;
    FSWeightSum missing;
    for (std::size_t group = 0; group < 3; ++group) ordered.AddMoments(group, moments, missing);
    EXPECT_EQ(static_cast<double>(moments.fWeight), 0.0);
}

TEST(FSBlockNumbers, FewAndManyWeightsGiveTheExactMomentsOfEveryClass) {
    std::mt19937_64 engine(testsupport::RandomSeed());
    for (const int different : {1, 4, 100000}) {
        std::vector<double> weights(2000);
        for (double& weight : weights) {
            weight = 0.1 * static_cast<double>(1 + engine() % static_cast<unsigned>(different));
        }
        const Classes block(weights);
        const FSBlockNumbers numbers(block.fCases, true);
        EXPECT_EQ(numbers.Weights().empty(), different < 100);
        EXPECT_TRUE(numbers.Odd().empty());
        const std::vector<double> column = Column(engine, 0, weights.size());
        FSOrderedColumn ordered(column, numbers);
        for (std::size_t group = 0; group < 3; ++group) {
            FSMoments moments;
            FSMoments expected;
            FSWeightSum missing;
            FSWeightSum without;
            ordered.AddMoments(group, moments, missing);
            for (std::size_t row = group; row < weights.size(); row += 3) {
                if (column[row] == kMissing) {
                    without += weights[row];
                } else {
                    expected.Add(column[row], weights[row]);
                }
            }
            EXPECT_TRUE(ordered.Apart().empty());
            EXPECT_EQ(moments.fSum, expected.fSum) << different;
            EXPECT_EQ(moments.fSquares, expected.fSquares) << different;
            EXPECT_EQ(moments.fWeight.Exact(), expected.fWeight.Exact()) << different;
            EXPECT_EQ(missing.Exact(), without.Exact()) << different;
        }
    }
}

TEST(FSRowLines, WeightsAloneNeedOneLimbWhenTheyAreWhole) {
    const std::vector<double> weights{3.0, 1.0, 4096.0};
    const std::vector<std::uint8_t> counts{1, 1, 1};
    const FSRowLines lines(weights, {}, counts);
    EXPECT_EQ(lines.Stride(), 1U);
    EXPECT_EQ(lines.WeightOf(lines.SumOf(std::vector<std::uint32_t>{0, 2}).data()),
              FSExactSum(4099.0));
}

}  // namespace
