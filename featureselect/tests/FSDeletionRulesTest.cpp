#include "featureselect/FSDeletionRules.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "featureselect/FSMapICnt.h"
#include "featureselect/FSSettings.h"
#include "tests/support/CaseName.h"

namespace {

FSMapICnt Counts(const std::vector<double>& weights) {
    FSMapICnt counts;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        counts.Add(static_cast<std::int32_t>(i), weights[i]);
    }
    return counts;
}

// ---- Upper bounds: a share, a bound in percent, whether the rule is on ----

struct ShareCase {
    std::string fName;
    double fPercent;
    bool fbOn;
    bool fbFires;
};

void PrintTo(const ShareCase& one, std::ostream* out) { *out << one.fName; }

// Every rule is tried with a share of exactly 3/4.
class FSDeletionRulesShare : public testing::TestWithParam<ShareCase> {};

TEST_P(FSDeletionRulesShare, ManyMissing) {
    FSSettings settings;
    settings.SetMaxMissingPercent(GetParam().fPercent);
    settings.SetDeleteManyMissing(GetParam().fbOn);
    EXPECT_EQ(FSDeletionRules::ManyMissing(settings, 8.0, 6.0), GetParam().fbFires);
}

TEST_P(FSDeletionRulesShare, ManyConst) {
    FSSettings settings;
    settings.SetMaxSingleCategoryPercent(GetParam().fPercent);
    settings.SetDeleteManyConst(GetParam().fbOn);
    EXPECT_EQ(FSDeletionRules::ManyConst(settings, Counts({0.5, 3.0, 0.5})), GetParam().fbFires);
}

TEST_P(FSDeletionRulesShare, ManyCategs) {
    FSSettings settings;
    settings.SetMaxCategoriesPercent(GetParam().fPercent);
    settings.SetDeleteManyCategs(GetParam().fbOn);
    EXPECT_EQ(FSDeletionRules::ManyCategs(settings, Counts({5.0, 5.0, 7.0}), 4),
              GetParam().fbFires);
}

TEST_P(FSDeletionRulesShare, ManyCategsWithOneCase) {
    FSSettings settings;
    settings.SetMaxOneCaseCategoriesPercent(GetParam().fPercent);
    settings.SetDeleteManyCategsOneCase(GetParam().fbOn);
    EXPECT_EQ(FSDeletionRules::ManyCategsWithOneCase(settings, Counts({1.0, 1.0, 2.0, 1.0}), 5),
              GetParam().fbFires);
}

INSTANTIATE_TEST_SUITE_P(ThreeQuarters, FSDeletionRulesShare,
                         testing::Values(ShareCase{"AboveTheBoundFires", 74.0, true, true},
                                         ShareCase{"AtTheBoundPasses", 75.0, true, false},
                                         ShareCase{"BelowTheBoundPasses", 76.0, true, false},
                                         ShareCase{"BoundOfZeroFires", 0.0, true, true},
                                         ShareCase{"SwitchedOffPasses", 0.0, false, false}),
                         testsupport::CaseName());

TEST(FSDeletionRules, FullPercentSwitchesARuleOff) {
    FSSettings settings;
    settings.SetMaxMissingPercent(100.0);
    settings.SetMaxSingleCategoryPercent(100.0);
    settings.SetMaxCategoriesPercent(100.0);
    settings.SetMaxOneCaseCategoriesPercent(100.0);
    EXPECT_FALSE(FSDeletionRules::ManyMissing(settings, 1.0, 2.0));  // a share above 1 even
    EXPECT_FALSE(FSDeletionRules::ManyConst(settings, Counts({1.0})));
    EXPECT_FALSE(FSDeletionRules::ManyCategs(settings, Counts({1.0, 1.0}), 1));
    EXPECT_FALSE(FSDeletionRules::ManyCategsWithOneCase(settings, Counts({1.0}), 1));
}

TEST(FSDeletionRules, NothingSeenFiresNoRule) {
    FSSettings settings;
    settings.SetMaxMissingPercent(0.0);
    settings.SetMaxSingleCategoryPercent(0.0);
    settings.SetMaxCategoriesPercent(0.0);
    settings.SetMaxOneCaseCategoriesPercent(0.0);
    EXPECT_FALSE(FSDeletionRules::ManyMissing(settings, 0.0, 0.0));
    EXPECT_FALSE(FSDeletionRules::ManyConst(settings, FSMapICnt()));
    EXPECT_FALSE(FSDeletionRules::ManyCategs(settings, FSMapICnt(), 0));
    EXPECT_FALSE(FSDeletionRules::ManyCategsWithOneCase(settings, FSMapICnt(), 0));
}

TEST(FSDeletionRules, OneCaseMeansAWeightOfExactlyOne) {
    FSSettings settings;
    settings.SetMaxOneCaseCategoriesPercent(40.0);
    // One record of weight 2 and three of weight 0.25 are no single case; two of 0.5 are one.
    EXPECT_FALSE(FSDeletionRules::ManyCategsWithOneCase(settings, Counts({2.0, 0.75}), 4));
    FSMapICnt halves = Counts({2.0, 0.5});
    halves.Add(1, 0.5);
    EXPECT_TRUE(FSDeletionRules::ManyCategsWithOneCase(settings, halves, 3));
}

// ---- Lower bounds ----

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

TEST(FSDeletionRules, StdDevBoundOfZeroNeverFires) {
    const FSSettings settings;
    EXPECT_FALSE(FSDeletionRules::SmallStdDev(settings, 0.0));
}

TEST(FSDeletionRules, StdDevBelowItsBoundFires) {
    FSSettings settings;
    settings.SetMinStdDev(0.5);
    EXPECT_TRUE(FSDeletionRules::SmallStdDev(settings, 0.4999));
    EXPECT_FALSE(FSDeletionRules::SmallStdDev(settings, 0.5));
    EXPECT_FALSE(FSDeletionRules::SmallStdDev(settings, 0.6));
    settings.SetDeleteSmallStdDev(false);
    EXPECT_FALSE(FSDeletionRules::SmallStdDev(settings, 0.0));
}

TEST(FSDeletionRules, StdDevBelowItsBoundByRoundingPasses) {
    FSSettings settings;
    settings.SetMinStdDev(1.0);
    EXPECT_FALSE(FSDeletionRules::SmallStdDev(settings, 1.0 - kEpsilon));
    EXPECT_TRUE(FSDeletionRules::SmallStdDev(settings, 1.0 - 2.0 * kEpsilon));
}

TEST(FSDeletionRules, NoSpreadFiresTheVariationRuleWhateverTheMean) {
    const FSSettings settings;
    EXPECT_TRUE(FSDeletionRules::SmallVar(settings, 0.0, 5.0));
    EXPECT_TRUE(FSDeletionRules::SmallVar(settings, 0.0, 0.0));
}

TEST(FSDeletionRules, MeanOfZeroWithSpreadNeverFires) {
    FSSettings settings;
    settings.SetMinCoefVar(1e9);
    EXPECT_FALSE(FSDeletionRules::SmallVar(settings, 1e-300, 0.0));
}

TEST(FSDeletionRules, VariationIsAbsolute) {
    FSSettings settings;
    settings.SetMinCoefVar(0.5);
    EXPECT_TRUE(FSDeletionRules::SmallVar(settings, 1.0, -4.0));
    EXPECT_FALSE(FSDeletionRules::SmallVar(settings, 2.0, -4.0));
    EXPECT_FALSE(FSDeletionRules::SmallVar(settings, 3.0, -4.0));
}

TEST(FSDeletionRules, VariationBelowItsBoundByRoundingPasses) {
    FSSettings settings;
    settings.SetMinCoefVar(1.0);
    EXPECT_FALSE(FSDeletionRules::SmallVar(settings, 1.0 - kEpsilon, 1.0));
    EXPECT_TRUE(FSDeletionRules::SmallVar(settings, 1.0 - 2.0 * kEpsilon, 1.0));
}

TEST(FSDeletionRules, VariationBoundOfZeroOrRuleOffPasses) {
    FSSettings settings;
    settings.SetDeleteSmallVar(false);
    EXPECT_FALSE(FSDeletionRules::SmallVar(settings, 0.0, 5.0));
    settings.SetDeleteSmallVar(true);
    settings.SetMinCoefVar(0.0);
    EXPECT_FALSE(FSDeletionRules::SmallVar(settings, 0.0, 5.0));
}

}  // namespace
