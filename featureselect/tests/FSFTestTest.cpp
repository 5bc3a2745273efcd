#include "featureselect/FSFTest.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "featureselect/FSGroupMoments.h"

namespace {

FSGroupMoments Groups(const std::vector<std::vector<double>>& groups) {
    FSGroupMoments map;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        for (const double value : groups[i]) map.Add(static_cast<std::int32_t>(i), value, 1.0);
    }
    return map;
}

FSFTest Tested(const FSGroupMoments& groups) {
    const FSMoments total = groups.Total();
    return FSFTest::Of(groups, total.fSum, total.fWeight);
}

TEST(FSFTest, ThreeGroupsByHand) {
    // Means 2, 3, 7 about 4: B = 3 * (4 + 1 + 9) = 42. W = 2 + 2 + 2 = 6. F = (42/2) / (6/6) = 21.
    // With 2 numerator degrees of freedom the upper tail is (1 + 2 F / df2)^(-df2/2) = 8^-3.
    const FSFTest test = Tested(Groups({{1, 2, 3}, {2, 3, 4}, {6, 7, 8}}));
    EXPECT_EQ(test.fDf1, 2.0);
    EXPECT_EQ(test.fDf2, 6.0);
    EXPECT_DOUBLE_EQ(test.fF, 21.0);
    EXPECT_NEAR(test.fPValue, 1.0 / 512.0, 1e-15);
}

TEST(FSFTest, TwoGroupsAgreeWithStudent) {
    // F with 1 and 2 degrees of freedom is t^2: means 1 and 3, W = 1/2 + 1/2, B = 4, F = 4 / (1/2)
    // = 8, and the two-sided p-value of t = sqrt(8) is 1 - t / sqrt(2 + t^2) = 1 - sqrt(0.8).
    const FSFTest test = Tested(Groups({{0.5, 1.5}, {2.5, 3.5}}));
    EXPECT_DOUBLE_EQ(test.fF, 8.0);
    EXPECT_NEAR(test.fPValue, 1.0 - std::sqrt(0.8), 1e-15);
}

TEST(FSFTest, NoVariationWithinGroupsIsTheStrongestPossible) {
    const FSFTest test = Tested(Groups({{1, 1}, {2, 2, 2}}));
    EXPECT_EQ(test.fPValue, 0.0);
    EXPECT_EQ(test.fF, MCMV::gMissingValue);
    EXPECT_EQ(test.fDf1, 1.0);
    EXPECT_EQ(test.fDf2, 3.0);
}

TEST(FSFTest, OneGroupHasNoFreedomBetween) {
    const FSFTest test = Tested(Groups({{1, 2, 4}}));
    EXPECT_EQ(test.fDf1, 0.0);
    EXPECT_EQ(test.fPValue, MCMV::gMissingValue);
    EXPECT_EQ(test.fF, MCMV::gMissingValue);
}

TEST(FSFTest, FewCasesLeaveNoFreedomWithin) {
    // Weights of 1.25 and 0.5: W = 0.25 * v is above 0 while df2 = 1.75 - 2 is not.
    FSGroupMoments map;
    map.Add(0, 1.0, 0.75);
    map.Add(0, 2.0, 0.5);
    map.Add(1, 4.0, 0.5);
    const FSFTest test = Tested(map);
    EXPECT_EQ(test.fDf2, -0.25);
    EXPECT_EQ(test.fPValue, MCMV::gMissingValue);
    EXPECT_EQ(test.fF, MCMV::gMissingValue);
}

TEST(FSFTest, NoGroupAtAllHasNoVariationEither) {
    const FSFTest test = Tested(FSGroupMoments());
    EXPECT_EQ(test.fPValue, 0.0);
    EXPECT_EQ(test.fDf1, -1.0);
}

TEST(FSFTest, GroupsAndTheirLabelsGiveTheSameBitsInAnyOrder) {
    const FSFTest test =
        Tested(Groups({{0.1, 0.7}, {1e9, 0.3, 2.2}, {5.5, 0.1, 0.3}, {7.7, -1e3}}));
    const FSFTest turned =
        Tested(Groups({{-1e3, 7.7}, {0.3, 0.1, 5.5}, {0.7, 0.1}, {2.2, 1e9, 0.3}}));
    EXPECT_EQ(test.fF, turned.fF);
    EXPECT_EQ(test.fPValue, turned.fPValue);
}

TEST(FSFTest, ValuesBeyondTheSquareRootOfDoublesKeepTheirF) {
    const FSFTest test = Tested(Groups({{1, 2, 3}, {2, 3, 4}, {6, 7, 8}}));
    for (const double scale : {0x1p990, 0x1p-990}) {
        const FSFTest scaled = Tested(Groups({{scale, 2 * scale, 3 * scale},
                                              {2 * scale, 3 * scale, 4 * scale},
                                              {6 * scale, 7 * scale, 8 * scale}}));
        EXPECT_EQ(scaled.fF, test.fF);
        EXPECT_EQ(scaled.fLogP, test.fLogP);
    }
}

TEST(FSFTest, AValueThatIsNotFiniteLeavesNoTest) {
    const FSFTest test = Tested(Groups({{1, 2}, {3, std::numeric_limits<double>::infinity()}}));
    EXPECT_EQ(test.fPValue, MCMV::gMissingValue);
    EXPECT_EQ(test.fLogP, MCMV::gMissingValue);
}

}  // namespace
