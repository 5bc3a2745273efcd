#include "featureselect/FSPredSort.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tests/support/MemoryArchive.h"

namespace {

constexpr double kMissing = MCMV::gMissingValue;

struct OrderCase {
    std::string fName;
    std::int32_t fCriterion;
    FSPredSort fFirst;
    FSPredSort fSecond;
    bool fbOrdered;  // false: neither goes before the other
};

void PrintTo(const OrderCase& order, std::ostream* out) { *out << order.fName; }

class FSPredSortOrder : public testing::TestWithParam<OrderCase> {};

TEST_P(FSPredSortOrder, Holds) {
    const OrderCase& order = GetParam();
    EXPECT_EQ(order.fFirst.GoesBefore(order.fSecond, order.fCriterion), order.fbOrdered);
    EXPECT_FALSE(order.fSecond.GoesBefore(order.fFirst, order.fCriterion));
}

std::vector<OrderCase> OrderCases() {
    std::vector<OrderCase> cases;
    for (std::int32_t criterion = 0; criterion < 6; ++criterion) {
        const std::string suffix = std::to_string(criterion);
        const bool isMeasure = criterion == 2 || criterion == 3;
        const double better = isMeasure ? 0.9 : 0.1;
        const double worse = isMeasure ? 0.1 : 0.9;
        cases.push_back(
            {"BetterValueFirst" + suffix, criterion, {better, 1, 1, 5}, {worse, 9, 9, 2}, true});
        cases.push_back(
            {"MissingValueLast" + suffix, criterion, {worse, 1, 1, 5}, {kMissing, 9, 9, 2}, true});
        cases.push_back({"TwoMissingValuesAreEqual" + suffix,
                         criterion,
                         {kMissing, 9, 9, 1},
                         {kMissing, 1, 1, 2},
                         false});
        cases.push_back({"LargerFirstTieBreakerFirst" + suffix,
                         criterion,
                         {0.5, 9, 1, 5},
                         {0.5, 1, 1, 2},
                         true});
        cases.push_back({"MissingFirstTieBreakerLast" + suffix,
                         criterion,
                         {0.5, 0, 1, 5},
                         {0.5, kMissing, 1, 2},
                         true});
        cases.push_back({"AllEqualWhateverThePredictor" + suffix,
                         criterion,
                         {0.5, 1, 1, 5},
                         {0.5, 1, 1, 2},
                         false});
    }
    for (const std::int32_t criterion : {0, 1}) {
        cases.push_back({"FewerDegreesOfFreedomFirst" + std::to_string(criterion),
                         criterion,
                         {0.5, 4, 1, 5},
                         {0.5, 4, 2, 2},
                         true});
        cases.push_back({"MoreCasesByTheirNegativeFirst" + std::to_string(criterion),
                         criterion,
                         {0.5, 4, -100, 5},
                         {0.5, 4, -50, 2},
                         true});
    }
    for (const std::int32_t criterion : {2, 3}) {
        cases.push_back({"SecondTieBreakerIsNotRead" + std::to_string(criterion),
                         criterion,
                         {0.5, 4, 1, 5},
                         {0.5, 4, 2, 2},
                         false});
    }
    for (const std::int32_t criterion : {4, 5}) {
        cases.push_back({"MoreCasesFirst" + std::to_string(criterion),
                         criterion,
                         {0.5, 4, 100, 5},
                         {0.5, 4, 50, 2},
                         true});
    }
    return cases;
}

INSTANTIATE_TEST_SUITE_P(Rules, FSPredSortOrder, testing::ValuesIn(OrderCases()),
                         [](const auto& test) { return test.param.fName; });

TEST(FSPredSort, DisplayShowsMissingAsAWord) {
    std::ostringstream out;
    FSPredSort{0.25, 3, kMissing, 7}.Display(out);
    EXPECT_EQ(out.str(),
              "Start of FSPredSort display\n"
              "Criterion value = 0.25\n"
              "1st tie-breaking value = 3\n"
              "2nd tie-breaking value = <missing>\n"
              "End of FSPredSort display\n");
}

TEST(FSPredSort, SavesThirtyThreeBytesAndRestoresThem) {
    const FSPredSort saved{0.25, 3, kMissing, 7};
    const auto bytes = testsupport::Save(saved);
    ASSERT_EQ(bytes.size(), 33U);
    FSPredSort restored;
    testsupport::RestoreInto(restored, bytes);
    EXPECT_EQ(restored.fCriterion, 0.25);
    EXPECT_EQ(restored.fTieBreak1, 3);
    EXPECT_EQ(restored.fTieBreak2, kMissing);
    EXPECT_EQ(restored.fPredictor, 7);
}

}  // namespace
