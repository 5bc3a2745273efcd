#include "embedded/data/DataSet.h"

#include <gtest/gtest.h>

#include "embedded/data/DataSetBuilder.h"

namespace embedded {
namespace {

std::vector<double> Counting(int from, int to) {
    std::vector<double> values;
    for (int value = from; value <= to; ++value) {
        values.push_back(value);
    }
    return values;
}

struct LevelCase {
    const char* fName;
    std::vector<double> fValues;
    std::int32_t fLevel;
};
void PrintTo(const LevelCase& levelCase, std::ostream* out) { *out << levelCase.fName; }
class LevelByValues : public testing::TestWithParam<LevelCase> {};

TEST_P(LevelByValues, IsSettledAtBuilding) {
    const DataSet data = DataSetBuilder().Numbers("x", GetParam().fValues).Build();
    EXPECT_EQ(data.Variable(0).GetMeasurementLevel(), GetParam().fLevel);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, LevelByValues,
    testing::Values(LevelCase{"TwentyWholeNumbersAreNominal", Counting(1, 20), kLevelNominal},
                    LevelCase{"TwentyOneWholeNumbersAreScale", Counting(1, 21), kLevelScale},
                    LevelCase{"OneFractionIsScale", {1, 2, 2.5}, kLevelScale},
                    LevelCase{"MissingDoesNotCount", {1, MCMV::gMissingValue}, kLevelNominal},
                    LevelCase{"NegativeWholeNumbersAreNominal", {-1, 0, 1}, kLevelNominal}),
    [](const auto& tested) { return std::string(tested.param.fName); });

TEST(DataSet, UserMissingValuesDoNotCountForTheLevel) {
    std::vector<double> withFraction(22, 1.0);
    withFraction.back() = 9.5;
    DataSet data = DataSetBuilder()
                       .Numbers("x", Counting(1, 22))
                       .Missing({true, 21, 99, {}})
                       .Numbers("y", withFraction)
                       .Missing({false, 0, 0, {9.5}})
                       .Build();
    EXPECT_EQ(data.Variable(0).GetMeasurementLevel(), kLevelNominal);
    EXPECT_EQ(data.Variable(1).GetMeasurementLevel(), kLevelNominal);
}

TEST(DataSet, KindsOtherThanNumbersHaveALevelOfTheirOwn) {
    const DataSet data = DataSetBuilder()
                             .Strings("s", {"a"})
                             .Numbers("b", {0})
                             .Kind(ColumnKind::kBoolean)
                             .Numbers("d", {0})
                             .Kind(ColumnKind::kDate)
                             .Numbers("t", {0.5})
                             .Kind(ColumnKind::kTime)
                             .Build();
    EXPECT_EQ(data.Variable(0).GetMeasurementLevel(), kLevelNominal);
    EXPECT_EQ(data.Variable(1).GetMeasurementLevel(), kLevelNominal);
    EXPECT_EQ(data.Variable(2).GetMeasurementLevel(), kLevelScale);
    EXPECT_EQ(data.Variable(3).GetMeasurementLevel(), kLevelScale);
    EXPECT_EQ(*data.Variable(1).GetValueLabels().Find(1.0), "true");
}

TEST(DataSet, NominalMaxIsAnOption) {
    const DataSet data = DataSetBuilder().Numbers("x", {1, 2, 3}).NominalMax(2).Build();
    EXPECT_EQ(data.Variable(0).GetMeasurementLevel(), kLevelScale);
}

TEST(DataSet, DeclaredLevelsStay) {
    const DataSet data = DataSetBuilder().Numbers("x", {1, 2}).Level(kLevelScale).Build();
    EXPECT_EQ(data.Variable(0).GetMeasurementLevel(), kLevelScale);
}

TEST(DataSet, LevelsThatBecameUnknownAreSettledAgain) {
    DataSet data = DataSetBuilder().Numbers("x", {1, 2}).Level(kLevelScale).Build();
    data.MutableVariable(0).SetMeasurementLevel(kLevelUnknown);
    data.SettleMeasurementLevels();
    EXPECT_EQ(data.Variable(0).GetMeasurementLevel(), kLevelNominal);
}

TEST(DataSet, VariablesAreFoundByExactName) {
    const DataSet data = DataSetBuilder().Numbers("Age", {1}).Strings("b c", {"x"}).Build();
    EXPECT_EQ(data.ColumnCount(), 2);
    EXPECT_EQ(data.FindVariable("Age"), 0);
    EXPECT_EQ(data.FindVariable("b c"), 1);
    EXPECT_EQ(data.FindVariable("age"), -1);
}

TEST(DataSet, WeightAndSplitsAreByIndex) {
    const DataSet data = DataSetBuilder()
                             .Numbers("a", {1})
                             .Split()
                             .Numbers("w", {2})
                             .Weight()
                             .Numbers("b", {1})
                             .Split()
                             .SourceName("memory")
                             .Build();
    EXPECT_EQ(data.WeightIndex(), 1);
    EXPECT_EQ(data.SplitIndices(), (std::vector<std::int32_t>{0, 2}));
    EXPECT_EQ(data.SourceName(), "memory");
}

TEST(DataSet, TypeOfAStringIsItsLongestValueInBytes) {
    const DataSet data = DataSetBuilder()
                             .Strings("s", {"ab", "\xC3\xA4\xC3\xA4", std::nullopt})
                             .Strings("empty", {std::nullopt, "", ""})
                             .Numbers("n", {1, 2, 3})
                             .Build();
    EXPECT_EQ(data.Variable(0).GetType(), 4);
    EXPECT_EQ(data.Variable(1).GetType(), 1);
    EXPECT_EQ(data.Variable(2).GetType(), 0);
}

}  // namespace
}  // namespace embedded
