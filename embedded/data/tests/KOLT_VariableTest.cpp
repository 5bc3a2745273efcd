#include <gtest/gtest.h>

#include "host/Data.h"

namespace {

TEST(KOLT_ValueLabelMap, KeepsTheOrderOfDeclarationAndReplacesLabels) {
    KOLT_ValueLabelMap labels;
    labels.Set(2.0, "two");
    labels.Set(1.0, "one");
    labels.Set(2.0, "deux");
    ASSERT_EQ(labels.Entries().size(), 2U);
    EXPECT_EQ(labels.Entries()[0].second, "deux");
    EXPECT_EQ(*labels.Find(1.0), "one");
    EXPECT_EQ(labels.Find(3.0), nullptr);
    EXPECT_EQ(labels.Find(std::string("1")), nullptr);
}

struct MissingCase {
    const char* fName;
    KoltMissingSpec fSpec;
    std::int32_t fCount;
    std::vector<KoltObs> fValues;
};
void PrintTo(const MissingCase& missingCase, std::ostream* out) { *out << missingCase.fName; }
class MissingValues : public testing::TestWithParam<MissingCase> {};

TEST_P(MissingValues, AreReportedByCountAndValue) {
    KOLT_Variable variable;
    variable.SetMissingSpec(GetParam().fSpec);
    std::vector<KoltObs> values = {7.0};  // emptied first
    EXPECT_EQ(variable.GetMissingValues(values), GetParam().fCount);
    EXPECT_EQ(values, GetParam().fValues);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, MissingValues,
    testing::Values(MissingCase{"None", {}, 0, {}},
                    MissingCase{"Three", {false, 0, 0, {1.0, 2.0, 9.0}}, 3, {1.0, 2.0, 9.0}},
                    MissingCase{
                        "OneText", {false, 0, 0, {std::string("?")}}, 1, {std::string("?")}},
                    MissingCase{"Range", {true, 8, 9, {}}, -2, {8.0, 9.0}},
                    MissingCase{"RangeAndOne", {true, 8, 9, {-1.0}}, -3, {8.0, 9.0, -1.0}}),
    [](const auto& tested) { return std::string(tested.param.fName); });

TEST(KOLT_Variable, RangeIncludesItsBounds) {
    KOLT_Variable variable;
    variable.SetMissingSpec({true, 8, 9, {-1.0}});
    for (const double value : {8.0, 8.5, 9.0, -1.0}) {
        EXPECT_TRUE(variable.IsUserMissing(value)) << value;
    }
    for (const double value : {7.999, 9.001, 1.0}) {
        EXPECT_FALSE(variable.IsUserMissing(value)) << value;
    }
    EXPECT_FALSE(variable.IsUserMissing(std::string("8")));
}

TEST(KOLT_Variable, WithoutASpecZeroIsNotMissing) {
    EXPECT_FALSE(KOLT_Variable().IsUserMissing(0.0));
}

}  // namespace
