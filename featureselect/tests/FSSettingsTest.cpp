#include "featureselect/FSSettings.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/CaseName.h"
#include "tests/support/MemoryArchive.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// The six criteria as "110010": Pearson, likelihood, Cramer, lambda, F, t.
std::string Criteria(const FSSettings& settings) {
    std::string text;
    for (const bool on : settings.GetCriteria()) text += on ? '1' : '0';
    return text;
}

// ---- Constructors ----

struct ConstructorCase {
    std::string fName;
    std::vector<bool> fvPredIsCategorical;
    bool fbTarget;
    std::int32_t fType;
    std::int32_t fNumCategorical;
    std::string fCriteria;
};

void PrintTo(const ConstructorCase& one, std::ostream* out) { *out << one.fName; }

class FSSettingsFromVector : public testing::TestWithParam<ConstructorCase> {};

TEST_P(FSSettingsFromVector, DerivesTypeAndCriteria) {
    const ConstructorCase& expected = GetParam();
    const FSSettings settings(expected.fvPredIsCategorical, expected.fbTarget);
    EXPECT_EQ(settings.GetNumPredictors(),
              static_cast<std::int32_t>(expected.fvPredIsCategorical.size()));
    EXPECT_EQ(settings.GetPredIsCategorical(), expected.fvPredIsCategorical);
    EXPECT_EQ(settings.GetNumCategorical(), expected.fNumCategorical);
    EXPECT_EQ(settings.GetPredSetType(), expected.fType);
    EXPECT_EQ(settings.IsTargetCategorical(), expected.fbTarget);
    EXPECT_EQ(Criteria(settings), expected.fCriteria);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, FSSettingsFromVector,
    testing::Values(
        ConstructorCase{"EmptyCountsAsAllCategorical", {}, true, 0, 0, "111100"},
        ConstructorCase{"EmptyContinuousTarget", {}, false, 0, 0, "000010"},
        ConstructorCase{"AllCategorical", {true, true}, true, 0, 2, "111100"},
        ConstructorCase{"AllContinuous", {false, false}, true, 1, 0, "000010"},
        ConstructorCase{"Mixed", {false, true, false}, true, 2, 1, "110010"},
        ConstructorCase{"AllCategoricalContinuousTarget", {true, true}, false, 0, 2, "000010"},
        ConstructorCase{"AllContinuousContinuousTarget", {false}, false, 1, 0, "000001"},
        ConstructorCase{"MixedContinuousTarget", {true, false}, false, 2, 1, "000011"}),
    testsupport::CaseName());

TEST(FSSettings, DefaultHasNoPredictorsAndNoCriteria) {
    const FSSettings settings;
    EXPECT_EQ(settings.GetNumPredictors(), 0);
    EXPECT_EQ(settings.GetPredSetType(), 3);
    EXPECT_TRUE(settings.IsTargetCategorical());
    EXPECT_EQ(Criteria(settings), "000000");
    EXPECT_EQ(settings.GetProgressListener(), nullptr);
    EXPECT_EQ(settings.GetCancelCheck(), nullptr);
    EXPECT_EQ(settings.GetRecordsToSkip(), 99);
    EXPECT_EQ(settings.GetPredictorsToSkip(), 99);
    EXPECT_FALSE(settings.GetTransactions());
    EXPECT_EQ(settings.GetTargetPosition(), 0);
    EXPECT_EQ(settings.GetCaseIdPosition(), -1);
    EXPECT_EQ(settings.GetWeightPosition(), -1);
    EXPECT_EQ(settings.GetWeightConversion(), 1);
    EXPECT_DOUBLE_EQ(settings.GetMaxMissingPercent(), 70.0);
    EXPECT_DOUBLE_EQ(settings.GetMaxSingleCategoryPercent(), 95.0);
    EXPECT_DOUBLE_EQ(settings.GetMaxCategoriesPercent(), 90.0);
    EXPECT_DOUBLE_EQ(settings.GetMaxOneCaseCategoriesPercent(), 90.0);
    EXPECT_EQ(settings.GetMinCoefVar(), 0.001);
    EXPECT_EQ(settings.GetMinStdDev(), 0.0);
    EXPECT_TRUE(settings.GetDeleteManyMissing());
    EXPECT_TRUE(settings.GetDeleteManyConst());
    EXPECT_TRUE(settings.GetDeleteManyCategs());
    EXPECT_TRUE(settings.GetDeleteManyCategsOneCase());
    EXPECT_TRUE(settings.GetDeleteSmallVar());
    EXPECT_TRUE(settings.GetDeleteSmallStdDev());
}

TEST(FSSettings, CountOfOneKindGivesThatKindThroughout) {
    const FSSettings categorical(3, true, true);
    EXPECT_EQ(categorical.GetPredIsCategorical(), (std::vector<bool>{true, true, true}));
    EXPECT_EQ(categorical.GetNumCategorical(), 3);
    EXPECT_EQ(categorical.GetPredSetType(), 0);
    EXPECT_EQ(Criteria(categorical), "111100");
    const FSSettings continuous(2, false, false);
    EXPECT_EQ(continuous.GetNumCategorical(), 0);
    EXPECT_EQ(continuous.GetPredSetType(), 1);
    EXPECT_EQ(Criteria(continuous), "000001");
}

TEST(FSSettings, CountBelowOneMakesNoPredictor) {
    const FSSettings settings(-4, false, true);
    EXPECT_EQ(settings.GetNumPredictors(), 0);
    EXPECT_TRUE(settings.GetPredIsCategorical().empty());
    EXPECT_EQ(settings.GetPredSetType(), 1);
    EXPECT_EQ(Criteria(settings), "000010");
}

// ---- Changing the predictors ----

TEST(FSSettings, FirstPredictorFixesTypeAndDefaultCriteria) {
    FSSettings categorical;
    categorical.AddPredictor(true);
    EXPECT_EQ(categorical.GetPredSetType(), 0);
    EXPECT_EQ(Criteria(categorical), "111100");
    FSSettings continuous;
    continuous.AddPredictor(false);
    EXPECT_EQ(continuous.GetPredSetType(), 1);
    EXPECT_EQ(Criteria(continuous), "000010");
}

TEST(FSSettings, PredictorOfTheSameKindChangesNoCriteria) {
    FSSettings settings;
    settings.AddPredictor(true);
    ASSERT_TRUE(settings.SetCriterion(2, false));
    settings.AddPredictor(true);
    EXPECT_EQ(settings.GetNumCategorical(), 2);
    EXPECT_EQ(Criteria(settings), "110100");
}

TEST(FSSettings, PredictorOfTheOtherKindMakesTheSetMixed) {
    FSSettings settings;
    settings.AddPredictor(true);
    settings.AddPredictor(false);
    EXPECT_EQ(settings.GetPredSetType(), 2);
    EXPECT_EQ(settings.GetNumPredictors(), 2);
    EXPECT_EQ(settings.GetNumCategorical(), 1);
    EXPECT_EQ(Criteria(settings), "110010");
}

TEST(FSSettings, AddPredictorsActsAsABlock) {
    FSSettings settings;
    settings.AddPredictors(3, false);
    EXPECT_EQ(settings.GetNumPredictors(), 3);
    EXPECT_EQ(settings.GetPredSetType(), 1);
    settings.AddPredictors(2, true);
    EXPECT_EQ(settings.GetPredSetType(), 2);
    EXPECT_EQ(settings.GetNumCategorical(), 2);
    EXPECT_EQ(settings.GetPredIsCategorical(),
              (std::vector<bool>{false, false, false, true, true}));
    EXPECT_EQ(Criteria(settings), "110010");
}

TEST(FSSettings, AddPredictorsBelowOneDoesNothing) {
    FSSettings settings;
    settings.AddPredictors(0, true);
    settings.AddPredictors(-1, true);
    EXPECT_EQ(settings.GetNumPredictors(), 0);
    EXPECT_EQ(settings.GetPredSetType(), 3);
}

TEST(FSSettings, AllContinuousKeepsTypeWhenOneTurnsCategorical) {
    FSSettings settings(3, false, true);
    settings.SetPredictorCategorical(1, true);
    EXPECT_EQ(settings.GetPredSetType(), 1);
    EXPECT_EQ(settings.GetNumCategorical(), 1);
    EXPECT_TRUE(settings.IsPredictorCategorical(1));
    EXPECT_EQ(Criteria(settings), "000010");
}

TEST(FSSettings, LastContinuousTurningCategoricalMakesAllCategorical) {
    FSSettings settings({true, false}, true);
    settings.SetPredictorCategorical(1, true);
    EXPECT_EQ(settings.GetPredSetType(), 0);
    EXPECT_EQ(Criteria(settings), "110000");  // adjusted, not reset
}

TEST(FSSettings, MixedSetStaysMixedWhenOneMoreTurnsCategorical) {
    FSSettings settings({true, false, false}, true);
    settings.SetPredictorCategorical(1, true);
    EXPECT_EQ(settings.GetPredSetType(), 2);
    EXPECT_EQ(Criteria(settings), "110010");
}

TEST(FSSettings, TurningContinuousGivesMixedThenAllContinuous) {
    FSSettings settings(2, true, true);
    settings.SetPredictorCategorical(0, false);
    EXPECT_EQ(settings.GetPredSetType(), 2);
    EXPECT_EQ(settings.GetNumCategorical(), 1);
    EXPECT_EQ(Criteria(settings), "110010");
    settings.SetPredictorCategorical(1, false);
    EXPECT_EQ(settings.GetPredSetType(), 1);
    EXPECT_EQ(settings.GetNumCategorical(), 0);
    EXPECT_EQ(Criteria(settings), "000010");
}

TEST(FSSettings, SetPredictorCategoricalIgnoresBadIndexAndEqualValue) {
    FSSettings settings({true, false}, true);
    settings.SetPredictorCategorical(-1, false);
    settings.SetPredictorCategorical(2, false);
    settings.SetPredictorCategorical(0, true);
    EXPECT_EQ(settings.GetPredSetType(), 2);
    EXPECT_EQ(settings.GetNumCategorical(), 1);
}

TEST(FSSettings, SetPredictorsCategoricalActsOnTheRange) {
    FSSettings settings(4, false, true);
    settings.SetPredictorsCategorical(1, 2, true);
    EXPECT_EQ(settings.GetPredIsCategorical(), (std::vector<bool>{false, true, true, false}));
    EXPECT_EQ(settings.GetPredSetType(), 1);  // as for one predictor after the other
    settings.SetPredictorsCategorical(0, 3, true);
    EXPECT_EQ(settings.GetPredSetType(), 0);
}

TEST(FSSettings, SetPredictorsCategoricalIgnoresABadRange) {
    FSSettings settings(3, false, true);
    settings.SetPredictorsCategorical(-1, 1, true);
    settings.SetPredictorsCategorical(2, 1, true);
    settings.SetPredictorsCategorical(1, 3, true);
    EXPECT_EQ(settings.GetNumCategorical(), 0);
}

TEST(FSSettings, IsPredictorCategoricalIsFalseOutOfRange) {
    const FSSettings settings(2, true, true);
    EXPECT_TRUE(settings.IsPredictorCategorical(1));
    EXPECT_FALSE(settings.IsPredictorCategorical(2));
    EXPECT_FALSE(settings.IsPredictorCategorical(-1));
}

TEST(FSSettings, TargetKindAdjustsTheCriteria) {
    FSSettings categorical(2, true, true);
    categorical.SetTargetCategorical(false);
    EXPECT_EQ(Criteria(categorical), "000010");
    categorical.SetTargetCategorical(true);
    EXPECT_EQ(Criteria(categorical), "111100");
    FSSettings continuous(2, false, true);
    continuous.SetTargetCategorical(false);
    EXPECT_EQ(Criteria(continuous), "000001");
    continuous.SetTargetCategorical(true);
    EXPECT_EQ(Criteria(continuous), "000010");
    FSSettings mixed({true, false}, true);
    mixed.SetTargetCategorical(false);
    EXPECT_EQ(Criteria(mixed), "000011");
    mixed.SetTargetCategorical(true);
    EXPECT_EQ(Criteria(mixed), "110010");
}

TEST(FSSettings, EqualTargetKindChangesNoCriteria) {
    FSSettings settings(2, true, true);
    ASSERT_TRUE(settings.SetCriterion(0, false));
    settings.SetTargetCategorical(true);
    EXPECT_EQ(Criteria(settings), "011100");
}

TEST(FSSettings, TargetKindOfAnUnknownSetSwitchesNothingOn) {
    FSSettings settings;
    settings.SetTargetCategorical(false);
    EXPECT_EQ(Criteria(settings), "000000");
    settings.SetTargetCategorical(true);
    EXPECT_EQ(Criteria(settings), "000000");
}

TEST(FSSettings, MixedSetKeepsAChosenChiSquare) {
    FSSettings settings(2, true, true);
    ASSERT_TRUE(settings.SetCriterion(0, false));
    settings.AddPredictor(false);
    EXPECT_EQ(Criteria(settings), "010010");
}

// ---- SetCriterion ----

struct CriterionCase {
    std::string fName;
    std::int32_t fType;
    bool fbTarget;
    std::string fBefore;
    std::int32_t fCriterion;
    bool fbOn;
    bool fbResult;
};

void PrintTo(const CriterionCase& one, std::ostream* out) { *out << one.fName; }

void Put(std::vector<std::byte>& bytes, std::size_t offset, std::int32_t value) {
    std::memcpy(bytes.data() + offset, &value, sizeof value);
}

// Settings without predictors, of any type and criteria, as a saved state could hold them.
FSSettings InState(std::int32_t type, bool targetIsCategorical, const std::string& criteria) {
    constexpr std::size_t kType =
        5 + 2 * 4;  // after tag, number of predictors, of categorical ones
    std::vector<std::byte> bytes = testsupport::Save(FSSettings());
    Put(bytes, kType, type);
    Put(bytes, kType + 4, targetIsCategorical ? 1 : 0);
    for (std::size_t i = 0; i < criteria.size(); ++i) {
        Put(bytes, kType + 8 + 4 * i, criteria[i] == '1' ? 1 : 0);
    }
    FSSettings settings;
    testsupport::RestoreInto(settings, bytes);
    return settings;
}

class FSSettingsSetCriterion : public testing::TestWithParam<CriterionCase> {};

TEST_P(FSSettingsSetCriterion, ChangesOrRefuses) {
    const CriterionCase& one = GetParam();
    FSSettings settings = InState(one.fType, one.fbTarget, one.fBefore);
    ASSERT_EQ(Criteria(settings), one.fBefore);
    EXPECT_EQ(settings.SetCriterion(one.fCriterion, one.fbOn), one.fbResult);
    std::string after = one.fBefore;
    if (one.fbResult) after[static_cast<std::size_t>(one.fCriterion)] = one.fbOn ? '1' : '0';
    EXPECT_EQ(Criteria(settings), after);
}

// allowed[k] tells whether criterion k may be switched on (or off) in a set of this type, from none
// (or all) of the criteria being on.
std::vector<CriterionCase> Row(const std::string& name, std::int32_t type, bool target, bool on,
                               const std::string& allowed) {
    std::vector<CriterionCase> cases;
    for (std::int32_t c = 0; c < FSCriterion::kCount; ++c) {
        cases.push_back({name + std::to_string(c), type, target, on ? "000000" : "111111", c, on,
                         allowed[static_cast<std::size_t>(c)] == 'y'});
    }
    return cases;
}

std::vector<CriterionCase> Rows() {
    std::vector<CriterionCase> all;
    const auto add = [&](const std::vector<CriterionCase>& row) {
        all.insert(all.end(), row.begin(), row.end());
    };
    add(Row("OnAllCategorical", 0, true, true, "yyyynn"));
    add(Row("OnAllContinuous", 1, true, true, "nnnnyn"));
    add(Row("OnMixed", 2, true, true, "yynnyn"));
    add(Row("OnUnknown", 3, true, true, "yyyyyn"));
    add(Row("OnAllCategoricalContinuousTarget", 0, false, true, "nnnnyn"));
    add(Row("OnAllContinuousContinuousTarget", 1, false, true, "nnnnny"));
    add(Row("OnMixedContinuousTarget", 2, false, true, "nnnnyy"));
    add(Row("OnUnknownContinuousTarget", 3, false, true, "yyyyyy"));
    add(Row("OffAllCategorical", 0, true, false, "yyyyyy"));
    add(Row("OffAllContinuous", 1, true, false, "yyyyny"));
    add(Row("OffMixed", 2, true, false, "yyyyny"));
    add(Row("OffUnknown", 3, true, false, "yyyyny"));
    add(Row("OffAllCategoricalContinuousTarget", 0, false, false, "yyyyny"));
    add(Row("OffAllContinuousContinuousTarget", 1, false, false, "yyyyyn"));
    add(Row("OffMixedContinuousTarget", 2, false, false, "yyyynn"));
    add(Row("OffUnknownContinuousTarget", 3, false, false, "yyyyyy"));
    return all;
}

INSTANTIATE_TEST_SUITE_P(Rules, FSSettingsSetCriterion, testing::ValuesIn(Rows()),
                         testsupport::CaseName());

INSTANTIATE_TEST_SUITE_P(
    LastOfTheChiSquareFamily, FSSettingsSetCriterion,
    testing::Values(CriterionCase{"AllCategoricalPearsonAlone", 0, true, "100000", 0, false, false},
                    CriterionCase{"AllCategoricalLambdaAlone", 0, true, "000100", 3, false, false},
                    CriterionCase{"AllCategoricalOneOfTwo", 0, true, "100100", 3, false, true},
                    CriterionCase{"MixedPearsonAlone", 2, true, "100010", 0, false, false},
                    CriterionCase{"MixedOneOfTwo", 2, true, "110010", 0, false, true},
                    CriterionCase{"UnknownAlone", 3, true, "010000", 1, false, false},
                    CriterionCase{"AllContinuousMayDropIt", 1, true, "100010", 0, false, true},
                    CriterionCase{"ContinuousTargetMayDropIt", 0, false, "100010", 0, false, true}),
    testsupport::CaseName());

INSTANTIATE_TEST_SUITE_P(
    AlreadyInTheAskedState, FSSettingsSetCriterion,
    testing::Values(CriterionCase{"OffWhereRefused", 1, true, "000000", 4, false, true},
                    CriterionCase{"OnWhereRefused", 0, true, "111111", 5, true, true},
                    CriterionCase{"LastOneOn", 0, true, "100000", 0, true, true}),
    testsupport::CaseName());

TEST(FSSettings, LastChiSquareCriterionCannotBeSwitchedOff) {
    FSSettings settings(2, true, true);
    EXPECT_TRUE(settings.SetCriterion(1, false));
    EXPECT_TRUE(settings.SetCriterion(2, false));
    EXPECT_TRUE(settings.SetCriterion(3, false));
    EXPECT_FALSE(settings.SetCriterion(0, false));
    EXPECT_EQ(Criteria(settings), "100000");
}

TEST(FSSettings, UnknownCriterionNumberIsRefused) {
    FSSettings settings(2, true, true);
    EXPECT_FALSE(settings.SetCriterion(6, false));
    EXPECT_FALSE(settings.SetCriterion(-1, true));
}

// ---- Other setters ----

TEST(FSSettings, FullPercentIsStoredAsOne) {
    FSSettings settings;
    settings.SetMaxMissingPercent(100.0);
    EXPECT_EQ(settings.GetMaxMissingPercent(), 100.0);
}

TEST(FSSettings, SharesRefuseWhatIsNoPercent) {
    FSSettings settings;
    for (const double bad : {100.5, -0.5, kNaN, std::numeric_limits<double>::infinity()}) {
        settings.SetMaxMissingPercent(bad);
        settings.SetMaxSingleCategoryPercent(bad);
        settings.SetMaxCategoriesPercent(bad);
        settings.SetMaxOneCaseCategoriesPercent(bad);
    }
    EXPECT_DOUBLE_EQ(settings.GetMaxMissingPercent(), 70.0);
    EXPECT_DOUBLE_EQ(settings.GetMaxSingleCategoryPercent(), 95.0);
    EXPECT_DOUBLE_EQ(settings.GetMaxCategoriesPercent(), 90.0);
    EXPECT_DOUBLE_EQ(settings.GetMaxOneCaseCategoriesPercent(), 90.0);
}

TEST(FSSettings, SharesAreSetSeparately) {
    FSSettings settings;
    settings.SetMaxMissingPercent(50.0);
    settings.SetMaxSingleCategoryPercent(25.0);
    settings.SetMaxCategoriesPercent(12.5);
    settings.SetMaxOneCaseCategoriesPercent(0.0);
    EXPECT_EQ(settings.GetMaxMissingPercent(), 50.0);
    EXPECT_EQ(settings.GetMaxSingleCategoryPercent(), 25.0);
    EXPECT_EQ(settings.GetMaxCategoriesPercent(), 12.5);
    EXPECT_EQ(settings.GetMaxOneCaseCategoriesPercent(), 0.0);
}

TEST(FSSettings, LowerBoundsRefuseNegativeAndNaN) {
    FSSettings settings;
    settings.SetMinCoefVar(0.25);
    settings.SetMinStdDev(0.5);
    settings.SetMinCoefVar(-0.1);
    settings.SetMinStdDev(-0.1);
    settings.SetMinCoefVar(kNaN);
    settings.SetMinStdDev(kNaN);
    EXPECT_EQ(settings.GetMinCoefVar(), 0.25);
    EXPECT_EQ(settings.GetMinStdDev(), 0.5);
    settings.SetMinCoefVar(0.0);
    EXPECT_EQ(settings.GetMinCoefVar(), 0.0);
}

TEST(FSSettings, PositionsAndSkipsRefuseNegatives) {
    FSSettings settings;
    settings.SetRecordsToSkip(0);
    settings.SetPredictorsToSkip(7);
    settings.SetCaseIdPosition(2);
    settings.SetWeightPosition(3);
    settings.SetRecordsToSkip(-1);
    settings.SetPredictorsToSkip(-1);
    settings.SetCaseIdPosition(-1);
    settings.SetWeightPosition(-1);
    EXPECT_EQ(settings.GetRecordsToSkip(), 0);
    EXPECT_EQ(settings.GetPredictorsToSkip(), 7);
    EXPECT_EQ(settings.GetCaseIdPosition(), 2);
    EXPECT_EQ(settings.GetWeightPosition(), 3);
}

TEST(FSSettings, NegativeTargetPositionMeansNoTarget) {
    FSSettings settings;
    settings.SetTargetPosition(-7);
    EXPECT_EQ(settings.GetTargetPosition(), -1);
    std::ostringstream out;
    settings.Display(out);
    EXPECT_NE(out.str().find("\nNo target is defined\n"), std::string::npos);
    settings.SetTargetPosition(4);
    EXPECT_EQ(settings.GetTargetPosition(), 4);
}

TEST(FSSettings, AnyWeightConversionIsStored) {
    FSSettings settings;
    settings.SetWeightConversion(17);
    EXPECT_EQ(settings.GetWeightConversion(), 17);
}

TEST(FSSettings, HooksAreBorrowed) {
    class Check : public CancelCheck {
     public:
        bool IsCancelled() override { return false; }
    };
    class Listener : public ProgressListener {
     public:
        void OnProgress(const ProgressReport&) override {}
    };
    Check check;
    Listener listener;
    FSSettings settings;
    settings.SetCancelCheck(&check);
    settings.SetProgressListener(&listener);
    EXPECT_EQ(settings.GetCancelCheck(), &check);
    EXPECT_EQ(settings.GetProgressListener(), &listener);
}

// ---- Default number of best predictors ----

struct BestCase {
    std::string fName;
    std::int32_t fAsked;
    std::int32_t fPredictors;
    std::int32_t fBest;
};

void PrintTo(const BestCase& one, std::ostream* out) { *out << one.fName; }

class FSSettingsDefaultBestCount : public testing::TestWithParam<BestCase> {};

TEST_P(FSSettingsDefaultBestCount, IsTheLargerOfThirtyAndTwiceTheRoot) {
    const FSSettings settings(GetParam().fPredictors, true, true);
    EXPECT_EQ(settings.GetDefaultBestCount(GetParam().fAsked), GetParam().fBest);
}

INSTANTIATE_TEST_SUITE_P(Counts, FSSettingsDefaultBestCount,
                         testing::Values(BestCase{"TwentyNine", 29, 5, 29},
                                         BestCase{"Hundred", 100, 5, 30},
                                         BestCase{"TwoHundredTwentyFive", 225, 5, 30},
                                         BestCase{"FourHundred", 400, 5, 40},
                                         BestCase{"NineHundred", 900, 5, 60},
                                         BestCase{"RootIsRounded", 1000, 5, 63},
                                         BestCase{"ZeroTakesThePredictors", 0, 20, 20},
                                         BestCase{"NegativeTakesThePredictors", -3, 900, 60},
                                         BestCase{"NothingAtAll", 0, 0, 0}),
                         testsupport::CaseName());

// ---- Saving and display ----

TEST(FSSettings, RestoresWhatItSavedButTheHooks) {
    class Check : public CancelCheck {
     public:
        bool IsCancelled() override { return false; }
    };
    Check check;
    FSSettings settings({true, false, true}, true);
    settings.SetCancelCheck(&check);
    settings.SetCriterion(0, false);
    settings.SetMaxMissingPercent(12.5);
    settings.SetDeleteSmallVar(false);
    settings.SetTransactions(true);
    settings.SetWeightPosition(3);
    settings.SetWeightConversion(2);
    const std::vector<std::byte> bytes = testsupport::Save(settings);
    // tag, count, 3 predictors, 3 scalars, 6 criteria, 7 scalars, 6 pairs of double and boolean
    EXPECT_EQ(bytes.size(), 5u + 4u + 12u + 12u + 24u + 28u + 72u);
    FSSettings restored;
    testsupport::RestoreInto(restored, bytes);
    EXPECT_EQ(testsupport::Save(restored), bytes);
    EXPECT_EQ(restored.GetPredIsCategorical(), settings.GetPredIsCategorical());
    EXPECT_EQ(Criteria(restored), "010010");
    EXPECT_EQ(restored.GetMaxMissingPercent(), 12.5);
    EXPECT_FALSE(restored.GetDeleteSmallVar());
    EXPECT_EQ(restored.GetCancelCheck(), nullptr);
}

TEST(FSSettings, BooleanSavedAsTwoReadsBackAsFalse) {
    FSSettings settings(1, true, true);
    std::vector<std::byte> bytes = testsupport::Save(settings);
    Put(bytes, 5 + 4, 2);
    FSSettings restored;
    testsupport::RestoreInto(restored, bytes);
    EXPECT_FALSE(restored.IsPredictorCategorical(0));
}

TEST(FSSettings, DisplayShowsEveryField) {
    FSSettings settings({true, false}, true);
    std::ostringstream out;
    settings.Display(out);
    EXPECT_EQ(out.str(),
              "Start of FSSettings display\n"
              "Number of predictors = 2\n"
              "Predictor types (if true, categorical) (2 elements): \n"
              "  true false\n"
              "Number of categorical predictors = 1\n"
              "Predictor set type = Mixed\n"
              "Target type (if target is defined) = categorical\n"
              "Ranking criteria (if true, compute) (6 elements): \n"
              "  true  true false false  true false\n"
              "Progress listener address = 0\n"
              "Cancel status check address = 0\n"
              "Number of records to skip for progress report = 99\n"
              "Number of predictors to skip for progress report = 99\n"
              "Input is in the form of records\n"
              "Target position = 0\n"
              "Case ID position = undefined\n"
              "Frequency weight position = undefined\n"
              "Maximum percent of missing values = 70\n"
              "Variable with too many missing is deleted\n"
              "Maximum percent of single category = 95\n"
              "Variable with too many single category values is deleted\n"
              "Maximum number of categories as percent of number of cases = 90\n"
              "Variable with too many categories is deleted\n"
              "Maximum percentage of categories containing only one case = 90\n"
              "Variable with too many categories containing only one case is deleted\n"
              "Minimum coefficient of variation = 0.001\n"
              "Variable with too small variation is deleted\n"
              "Minimum standard deviation = 0\n"
              "Variable with too small standard deviation is deleted\n"
              "End of FSSettings display\n");
}

TEST(FSSettings, DisplayShowsTheOtherStateOfEveryField) {
    FSSettings settings(1, false, false);
    settings.SetTransactions(true);
    settings.SetCaseIdPosition(4);
    settings.SetWeightPosition(5);
    settings.SetDeleteManyMissing(false);
    settings.SetDeleteManyConst(false);
    settings.SetDeleteManyCategs(false);
    settings.SetDeleteManyCategsOneCase(false);
    settings.SetDeleteSmallVar(false);
    settings.SetDeleteSmallStdDev(false);
    std::ostringstream out;
    settings.Display(out);
    for (const char* line :
         {"Predictor set type = All continuous", "Target type (if target is defined) = continuous",
          "Predictor types (if true, categorical) (1 element): ",
          "Input is in the form of transactions", "Case ID position = 4",
          "Frequency weight position = 5",
          "Case weight converted to frequency by rounding to nearest integer",
          "Variable with too many missing is not deleted",
          "Variable with too many single category values is not deleted",
          "Variable with too many categories is not deleted",
          "Variable with too many categories containing only one case is not deleted",
          "Variable with too small variation is not deleted",
          "Variable with too small standard deviation is not deleted"}) {
        EXPECT_NE(out.str().find('\n' + std::string(line) + '\n'), std::string::npos) << line;
    }
}

struct TextCase {
    std::int32_t fNumber;
    std::string fText;
};

void PrintTo(const TextCase& one, std::ostream* out) { *out << one.fText; }

class FSSettingsConversionText : public testing::TestWithParam<TextCase> {};

TEST_P(FSSettingsConversionText, IsShownWithAWeight) {
    FSSettings settings;
    settings.SetWeightPosition(0);
    settings.SetWeightConversion(GetParam().fNumber);
    std::ostringstream out;
    settings.Display(out);
    EXPECT_NE(out.str().find("\nCase weight converted to frequency by " + GetParam().fText + '\n'),
              std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Methods, FSSettingsConversionText,
                         testing::Values(TextCase{0, "using weight as is"},
                                         TextCase{1, "rounding to nearest integer"},
                                         TextCase{2, "truncating to integer"},
                                         TextCase{3, "unrecognized method"},
                                         TextCase{-1, "unrecognized method"}));

class FSSettingsTypeText : public testing::TestWithParam<TextCase> {};

TEST_P(FSSettingsTypeText, NamesTheType) {
    EXPECT_EQ(FSSettings::PredSetTypeText(GetParam().fNumber), GetParam().fText);
}

INSTANTIATE_TEST_SUITE_P(Types, FSSettingsTypeText,
                         testing::Values(TextCase{0, "All categorical"},
                                         TextCase{1, "All continuous"}, TextCase{2, "Mixed"},
                                         TextCase{3, "Unrecognized"}, TextCase{9, "Unrecognized"},
                                         TextCase{-1, "Unrecognized"}));

}  // namespace
