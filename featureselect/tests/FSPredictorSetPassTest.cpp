#include <cstring>
#include <limits>
#include <random>

#include "featureselect/FSAccumKind.h"
#include "featureselect/tests/PredictorSetFixture.h"
#include "tests/support/SplitInvariance.h"

namespace {

using testsupport::CancelAtPoll;
using testsupport::ProgressRecorder;
using testsupport::RecordList;

class FSPredictorSetPass : public PredictorSetTest {};

TEST_F(FSPredictorSetPass, AllocatesOnce) {
    fSettings.AddPredictors(2, kCategorical);
    Make();
    EXPECT_TRUE(fpSet->AllocateAccumulators(true));
    EXPECT_FALSE(fpSet->AllocateAccumulators(true));
    EXPECT_EQ(SeenBy(*fpSet).size(), 2U);
}

struct KindCase {
    const char* fName;
    bool fbPredictorCategorical;
    bool fbWithTarget;
    bool fbTargetCategorical;
    const char* fClass;
    std::int32_t fKind;
    std::int32_t fTargetCategories;
};

void PrintTo(const KindCase& kind, std::ostream* out) { *out << kind.fName; }

class AccumulatorKind : public testing::TestWithParam<KindCase> {};

TEST_P(AccumulatorKind, ServesPredictorAndTarget) {
    const KindCase& kind = GetParam();
    FSSettings settings({kind.fbPredictorCategorical}, kind.fbTargetCategorical);
    FSCancelState cancel;
    FSPredictorSet set(settings, cancel);
    set.AllocateAccumulators(kind.fbWithTarget);
    EXPECT_EQ(SavedFields(testsupport::StateOf(set), kind.fClass, 0).empty(), false);
    EXPECT_EQ(set.GetNumberOfTargetCategories(), kind.fTargetCategories);
    EXPECT_EQ(
        FSAccumKind::For(kind.fbPredictorCategorical, kind.fbWithTarget, kind.fbTargetCategorical),
        kind.fKind);
    const auto accum = FSAccumKind::Make(kind.fKind);
    EXPECT_EQ(FSAccumKind::Of(accum.get()), kind.fKind);
    EXPECT_EQ(accum->IsCategorical(), kind.fbPredictorCategorical);
}

INSTANTIATE_TEST_SUITE_P(
    Table, AccumulatorKind,
    testing::Values(
        KindCase{"CategoricalAlone", true, false, true, "FSCatAccum", 1, -1},
        KindCase{"CategoricalAloneBesideAContinuousTarget", true, false, false, "FSCatAccum", 1,
                 -1},
        KindCase{"CategoricalWithCategorical", true, true, true, "FSCatPCatTAccum", 2, 0},
        KindCase{"CategoricalWithContinuous", true, true, false, "FSCatPContTAccum", 3, -1},
        KindCase{"ContinuousAlone", false, false, true, "FSContAccum", 4, -1},
        KindCase{"ContinuousWithCategorical", false, true, true, "FSContPCatTAccum", 5, 0},
        KindCase{"ContinuousWithContinuous", false, true, false, "FSContPContTAccum", 6, -1}),
    [](const auto& test) { return std::string(test.param.fName); });

TEST(FSAccumKind, ADeletedPredictorHasNone) {
    EXPECT_EQ(FSAccumKind::Of(nullptr), FSAccumKind::kDeleted);
    EXPECT_EQ(FSAccumKind::Make(FSAccumKind::kDeleted), nullptr);
    EXPECT_EQ(FSAccumKind::Make(7), nullptr);
}

TEST_F(FSPredictorSetPass, EveryRecordCountsOneWithoutAWeightColumn) {
    fSettings.AddPredictors(2, kCategorical);
    Make();
    EXPECT_TRUE(Read({{0, 1, 2}, {1, 1, 3}, {0, 2, -1}}).IsOk());
    EXPECT_EQ(fpSet->GetState(), 2);
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{3, 0, 3, 0}));
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{3, 0}, {3, 1}}));
    EXPECT_EQ(fpSet->GetNumberOfTargetCategories(), 2);
}

TEST_F(FSPredictorSetPass, RecordsOfTheTargetTableAreCountedAndWeighted) {
    fSettings.AddPredictor(kCategorical);
    fSettings.SetWeightPosition(1);
    fSettings.SetWeightConversion(0);
    Make();
    // The third record holds no valid predictor value and so stays out of the table.
    EXPECT_TRUE(Read({{4, 0.5, 1}, {4, 2, 1}, {4, 8, -1}, {2, 1, 1}}).IsOk());
    const FSMapIPCnt* table = fpSet->GetTargetCategories();
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table->Size(), 2);
    EXPECT_EQ(table->GetAt(0).fKey, 2);
    EXPECT_EQ(table->GetAt(1).fKey, 4);
    EXPECT_EQ(table->GetAt(1).fCount, 2);
    EXPECT_EQ(table->GetAt(1).fWeight, 2.5);
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{3.5, 8, 3, 1}));
}

struct WeightCase {
    const char* fName;
    double fRaw;
    std::int32_t fConversion;
    double fFrequency;  // 0: the record is dropped
};

void PrintTo(const WeightCase& weight, std::ostream* out) { *out << weight.fName; }

class WeightToFrequency : public testing::TestWithParam<WeightCase> {};

TEST_P(WeightToFrequency, FollowsTheConversion) {
    const WeightCase& weight = GetParam();
    FSSettings settings({kCategorical}, true);
    settings.SetWeightPosition(1);
    settings.SetWeightConversion(weight.fConversion);
    FSCancelState cancel;
    FSPredictorSet set(settings, cancel);
    RecordList records({{0, weight.fRaw, 1}});
    const FSStatus status = set.AccumulateRecords(records, -1);
    if (weight.fFrequency > 0) {
        EXPECT_TRUE(status.IsOk());
        EXPECT_EQ(CountsOf(set), (RecordCounts{weight.fFrequency, 0, 1, 0}));
        EXPECT_EQ(SeenBy(set), (std::vector<Seen>{{weight.fFrequency, 0}}));
    } else {
        ExpectStatus(status, 80013, -1);
        EXPECT_EQ(CountsOf(set), (RecordCounts{0, 0, 0, 0}));
        EXPECT_EQ(SeenBy(set), (std::vector<Seen>{{0, 0}}));
    }
}

INSTANTIATE_TEST_SUITE_P(Rules, WeightToFrequency,
                         testing::Values(WeightCase{"RoundsPointFourToNothing", 0.4, 1, 0},
                                         WeightCase{"AsIsKeepsPointFour", 0.4, 0, 0.4},
                                         WeightCase{"RoundsAHalfUp", 0.5, 1, 1},
                                         WeightCase{"RoundsToTheNearest", 2.4, 1, 2},
                                         WeightCase{"TruncatesDown", 1.9, 2, 1},
                                         WeightCase{"TruncatesPointNineToNothing", 0.9, 2, 0},
                                         WeightCase{"AnUnknownConversionLeavesIt", 0.4, 7, 0.4},
                                         WeightCase{"ZeroIsDropped", 0, 0, 0},
                                         WeightCase{"ANegativeOneIsDropped", -3, 0, 0},
                                         WeightCase{"NotANumberIsDropped",
                                                    std::numeric_limits<double>::quiet_NaN(), 1, 0},
                                         WeightCase{"TheMissingValueIsDropped", kMissing, 0, 0}),
                         [](const auto& test) { return std::string(test.param.fName); });

TEST_F(FSPredictorSetPass, AMissingWeightLeavesNoTraceAndAMissingTargetIsExcluded) {
    fSettings.AddPredictor(kCategorical);
    fSettings.SetWeightPosition(1);
    Make();
    EXPECT_TRUE(Read({{0, kMissing, 1}, {-1, 3, 1}, {kMissing, 5, 1}, {0, 2, 1}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{2, 8, 1, 2}));
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{2, 0}}));
}

TEST_F(FSPredictorSetPass, ACategoricalTargetIsMissingByItsTruncation) {
    fSettings.AddPredictor(kCategorical);
    Make();
    EXPECT_TRUE(Read({{-1.9, 1}, {-2, 1}, {-0.9, 1}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{2, 1, 2, 1}));
    EXPECT_EQ(fpSet->GetTargetCategories()->GetAt(0).fKey, -2);
    EXPECT_EQ(fpSet->GetTargetCategories()->GetAt(1).fKey, 0);
}

TEST_F(FSPredictorSetPass, AContinuousTargetOfMinusOneIsValid) {
    fSettings.SetTargetCategorical(false);
    fSettings.AddPredictor(kContinuous);
    Make();
    EXPECT_TRUE(Read({{-1, 5}, {kMissing, 6}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 1, 1, 1}));
}

TEST_F(FSPredictorSetPass, ACategoricalPredictorIsMissingByItsTruncationAContinuousOneIsNot) {
    fSettings = FSSettings({kCategorical, kContinuous}, true);
    Make();
    EXPECT_TRUE(Read({{0, -1.5, -1.5}, {0, kMissing, kMissing}, {0, -2, -1}}).IsOk());
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{3, 2}, {3, 1}}));
}

TEST_F(FSPredictorSetPass, TheMaximumCountsRecordsThatPassTheWeightTest) {
    fSettings.AddPredictor(kCategorical);
    fSettings.SetWeightPosition(1);
    Make();
    // Dropped, excluded for its target, excluded for its only value, valid, one too many.
    RecordList records({{0, 0, 1}, {-1, 1, 1}, {0, 1, -1}, {0, 1, 1}, {0, 1, 1}});
    EXPECT_TRUE(fpSet->AccumulateRecords(records, 3).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 2, 1, 2}));
    EXPECT_EQ(records.Taken(), 4U);
}

TEST_F(FSPredictorSetPass, AMaximumOfZeroReadsNothing) {
    fSettings.AddPredictor(kCategorical);
    Make();
    ExpectStatus(Read({{0, 1}}, 0), 80009, -1);
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{0, 0, 0, 0}));
}

TEST_F(FSPredictorSetPass, ANullRecordEndsThePass) {
    fSettings.AddPredictor(kCategorical);
    Make();
    RecordList records({{0, 1}, {0, 1}, {0, 1}});
    records.BreakAt(2);
    EXPECT_TRUE(fpSet->AccumulateRecords(records, -1).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{2, 0, 2, 0}));
    EXPECT_EQ(fpSet->GetState(), 2);
}

// Every special column, wherever it stands among the predictors. The predictors hold 10, 20, 30, so
// that each accumulator's first category tells which column it read.
struct ColumnCase {
    const char* fName;
    std::int32_t fTarget, fCaseId, fWeight;
    std::vector<double> fRow;
    std::vector<double> fRead;
};

void PrintTo(const ColumnCase& columns, std::ostream* out) { *out << columns.fName; }

class SpecialColumns : public testing::TestWithParam<ColumnCase> {
 protected:
    static std::vector<double> FirstCategories(const FSPredictorSet& set,
                                               const std::string& className) {
        std::vector<double> categories;
        for (int which = 0; which < 3; ++which) {
            categories.push_back(SavedFields(testsupport::StateOf(set), className, which)[2]);
        }
        return categories;
    }
    static FSSettings Settings(const ColumnCase& columns) {
        FSSettings settings(3, kCategorical, true);
        settings.SetTargetPosition(columns.fTarget);
        settings.SetCaseIdPosition(columns.fCaseId);
        settings.SetWeightPosition(columns.fWeight);
        return settings;
    }
};

TEST_P(SpecialColumns, AreSkipped) {
    const FSSettings settings = Settings(GetParam());
    FSCancelState cancel;
    FSPredictorSet set(settings, cancel);
    RecordList records({GetParam().fRow});
    EXPECT_TRUE(set.AccumulateRecords(records, -1).IsOk());
    EXPECT_EQ(FirstCategories(set, "FSCatPCatTAccum"), GetParam().fRead);
}

INSTANTIATE_TEST_SUITE_P(
    Records, SpecialColumns,
    testing::Values(
        ColumnCase{"TargetFirst", 0, -1, -1, {7, 10, 20, 30}, {10, 20, 30}},
        ColumnCase{"TargetAndWeightFirst", 0, -1, 1, {7, 1, 10, 20, 30}, {10, 20, 30}},
        ColumnCase{"AllThreeInOrder", 0, 1, 2, {7, 99, 1, 10, 20, 30}, {10, 20, 30}},
        ColumnCase{"AllThreeInOrderInTheMiddle", 1, 2, 3, {10, 7, 99, 1, 20, 30}, {10, 20, 30}},
        ColumnCase{"TargetLast", 3, -1, -1, {10, 20, 30, 7}, {10, 20, 30}},
        ColumnCase{"ApartInOrder", 1, 3, 5, {10, 7, 20, 99, 30, 1}, {10, 20, 30}},
        ColumnCase{"ApartInAnyOrder", 3, 5, 1, {10, 1, 20, 7, 30, 99}, {10, 20, 30}},
        ColumnCase{"AWeightBeforeTheTargetMakesTheTargetAPredictor",
                   1,
                   -1,
                   0,
                   {1, 7, 10, 20, 30},
                   {7, 10, 20}},
        ColumnCase{"ACaseIdBeforeTheTargetMakesTheTargetAPredictor",
                   1,
                   0,
                   -1,
                   {99, 7, 10, 20, 30},
                   {7, 10, 20}}),
    [](const auto& test) { return std::string(test.param.fName); });

class SpecialColumnsOfScreening : public SpecialColumns {};

TEST_P(SpecialColumnsOfScreening, AreSkipped) {
    const FSSettings settings = Settings(GetParam());
    FSCancelState cancel;
    FSPredictorSet set(settings, cancel);
    RecordList records({GetParam().fRow});
    EXPECT_TRUE(set.AccumulateForScreening(records, -1).IsOk());
    EXPECT_EQ(FirstCategories(set, "FSCatAccum"), GetParam().fRead);
}

INSTANTIATE_TEST_SUITE_P(
    Screening, SpecialColumnsOfScreening,
    testing::Values(ColumnCase{"None", -1, -1, -1, {10, 20, 30}, {10, 20, 30}},
                    ColumnCase{"CaseIdThenWeight", -1, 0, 1, {99, 1, 10, 20, 30}, {10, 20, 30}},
                    ColumnCase{
                        "ATargetIsAPredictorLikeAnother", 0, -1, -1, {7, 10, 20, 30}, {7, 10, 20}},
                    ColumnCase{"AWeightBeforeTheCaseIdMakesTheCaseIdAPredictor",
                               -1,
                               1,
                               0,
                               {1, 99, 10, 20, 30},
                               {99, 10, 20}}),
    [](const auto& test) { return std::string(test.param.fName); });

TEST_F(FSPredictorSetPass, AShortRecordTellsTheLaterPredictorsNothing) {
    fSettings.AddPredictors(3, kCategorical);
    Make();
    EXPECT_TRUE(Read({{0, 1}, {0, 1, 2, 3}, {0}}).IsOk());
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{2, 0}, {1, 0}, {1, 0}}));
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{2, 1, 2, 1}));
}

TEST_F(FSPredictorSetPass, ARecordWithoutItsTargetColumnIsExcluded) {
    fSettings.AddPredictor(kCategorical);
    fSettings.SetTargetPosition(5);
    Make();
    ExpectStatus(Read({{1, 2}}), 80009, -1);
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{0, 1, 0, 1}));
}

TEST_F(FSPredictorSetPass, WithoutATargetEveryRecordIsExcluded) {
    fSettings.AddPredictor(kCategorical);
    fSettings.SetTargetPosition(-1);
    Make();
    ExpectStatus(Read({{1}, {2}}), 80009, -1);
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{0, 2, 0, 2}));
}

TEST_F(FSPredictorSetPass, ARecordWithoutItsWeightColumnIsDropped) {
    fSettings.AddPredictor(kCategorical);
    fSettings.SetWeightPosition(5);
    Make();
    ExpectStatus(Read({{1, 2}}), 80013, -1);
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{0, 0, 0, 0}));
}

TEST_F(FSPredictorSetPass, ASecondPassSkipsADeletedPredictorAndReadsTheOthersRightly) {
    fSettings.AddPredictors(3, kCategorical);
    Make();
    EXPECT_TRUE(Read({{0, 1, 5, 1}, {1, 2, 5, 2}}).IsOk());
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    ASSERT_EQ(fpSet->GetDeletedIndices(), (Indices{1}));
    EXPECT_TRUE(Read({{1, 1, 8, -1}, {1, -1, 9, 2}}).IsOk());
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{4, 1}, {4, 1}}));
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{4, 0, 4, 0}));
    EXPECT_EQ(fpSet->GetState(), 2);
}

TEST_F(FSPredictorSetPass, NoValidValueOfAnyPredictorIsAnError) {
    fSettings.AddPredictors(2, kCategorical);
    Make();
    const FSStatus status = Read({{0, -1, kMissing}, {1, kMissing, -1}});
    ExpectStatus(status, 80009, -1);
    EXPECT_EQ(status, FSStatus::NoValidData());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{0, 2, 0, 2}));
    EXPECT_EQ(fpSet->GetState(), 2);
}

TEST_F(FSPredictorSetPass, AnEmptyInputIsNoValidDataWithoutAndNoValidWeightWithAWeightColumn) {
    fSettings.AddPredictor(kCategorical);
    Make();
    ExpectStatus(Read({}), 80009, -1);
    fSettings.SetWeightPosition(1);
    Make();
    ExpectStatus(Read({}), 80013, -1);
}

TEST_F(FSPredictorSetPass, AValidWeightWithoutAValidValueIsNoValidData) {
    fSettings.AddPredictor(kCategorical);
    fSettings.SetWeightPosition(1);
    Make();
    ExpectStatus(Read({{0, 1, -1}}), 80009, -1);
}

TEST_F(FSPredictorSetPass, ReportsEverySkipPlusOneRecordsThatHaveATarget) {
    ProgressRecorder listener;
    fSettings.AddPredictor(kCategorical);
    fSettings.SetProgressListener(&listener);
    fSettings.SetRecordsToSkip(1);
    Make();
    // The second record has no target: it counts as used but not for the countdown. The fourth is
    // excluded for its value and does count.
    EXPECT_TRUE(Read({{0, 1}, {-1, 1}, {0, 1}, {0, -1}, {0, 1}, {0, 1}}).IsOk());
    EXPECT_EQ(listener.Records(), (Indices{3, 5}));
    EXPECT_EQ(listener.Predictors(), (Indices{-1, -1}));
    EXPECT_GE(listener.fvReports[0].fElapsed, 0.0);
}

TEST_F(FSPredictorSetPass, ACancelledPassEndsWithWhatItHas) {
    CancelAtPoll check(2);
    fCancel.SetCancelCheck(&check);
    fSettings.AddPredictor(kCategorical);
    Make();
    EXPECT_TRUE(Read({{0, 1}, {0, 1}, {0, 1}, {0, 1}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{2, 0, 2, 0}));
    EXPECT_EQ(fpSet->GetState(), 2);
}

TEST_F(FSPredictorSetPass, APassCancelledBeforeItsFirstRecordHasNoValidData) {
    fCancel.Cancel();
    fSettings.AddPredictor(kCategorical);
    Make();
    ExpectStatus(Read({{0, 1}}), 80009, -1);
}

// --- The pass without a target ---

TEST_F(FSPredictorSetPass, ScreeningCountsEveryUsedRecordAsExcluded) {
    fSettings.AddPredictor(kCategorical);
    fSettings.SetTargetPosition(-1);
    fSettings.SetWeightPosition(0);
    Make();
    RecordList records({{2, 1}, {3, -1}, {0, 1}, {kMissing, 1}});
    EXPECT_TRUE(fpSet->AccumulateForScreening(records, -1).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{0, 5, 0, 2}));
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{5, 3}}));
    EXPECT_EQ(fpSet->GetNumberOfTargetCategories(), -1);
    EXPECT_EQ(fpSet->GetState(), 2);
}

TEST_F(FSPredictorSetPass, ScreeningStartsItsCountsAfresh) {
    fSettings.AddPredictor(kCategorical);
    Make();
    EXPECT_TRUE(Read({{0, 1}, {-1, 2}}).IsOk());
    fSettings.SetTargetPosition(-1);
    RecordList records(Rows{{1}});
    static_cast<void>(fpSet->AccumulateForScreening(records, -1));
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{0, 1, 0, 1}));
}

TEST_F(FSPredictorSetPass, ScreeningOnlyWarnsOfAnEmptyPass) {
    fSettings.AddPredictor(kCategorical);
    fSettings.SetTargetPosition(-1);
    Make();
    RecordList nothing(Rows{});
    ExpectStatus(fpSet->AccumulateForScreening(nothing, -1), 80009, 1);
    fSettings.SetWeightPosition(0);
    ExpectStatus(fpSet->AccumulateForScreening(nothing, -1), 80013, 1);
}

TEST_F(FSPredictorSetPass, ScreeningReportsEveryUsedRecordAndHeedsTheMaximum) {
    ProgressRecorder listener;
    fSettings.AddPredictor(kCategorical);
    fSettings.SetTargetPosition(-1);
    fSettings.SetProgressListener(&listener);
    fSettings.SetRecordsToSkip(0);
    Make();
    RecordList records(Rows{{1}, {-1}, {1}, {1}});
    EXPECT_TRUE(fpSet->AccumulateForScreening(records, 3).IsOk());
    EXPECT_EQ(listener.Records(), (Indices{1, 2, 3}));
}

TEST_F(FSPredictorSetPass, ScreeningHeedsACancel) {
    CancelAtPoll check(1);
    fCancel.SetCancelCheck(&check);
    fSettings.AddPredictor(kCategorical);
    fSettings.SetTargetPosition(-1);
    Make();
    RecordList records(Rows{{1}, {1}, {1}});
    EXPECT_TRUE(fpSet->AccumulateForScreening(records, -1).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{0, 1, 0, 1}));
}

// --- Merging partitions ---

// Cases of every kind of predictor, with missing values and weights of 0 too. A continuous target
// goes along with the continuous predictor, so that no moment is near 0.
Rows RandomRows(std::uint64_t seed, bool targetCategorical, double mean) {
    std::mt19937_64 random(seed);
    std::uniform_int_distribution<int> category(-1, 4);
    std::uniform_int_distribution<int> weight(0, 3);
    std::normal_distribution<double> value(mean, 3.0);
    std::normal_distribution<double> noise(0.0, 1.0);
    Rows rows;
    for (int row = 0; row < 60; ++row) {
        const double x = value(random);
        const double target = targetCategorical ? category(random) : x + noise(random);
        rows.push_back({category(random) == 0 ? kMissing : target,
                        static_cast<double>(weight(random)), static_cast<double>(category(random)),
                        category(random) < 0 ? kMissing : x, 3.0});
    }
    return rows;
}

struct SplitCase {
    const char* fName;
    bool fbTargetCategorical;
    bool fbScreening;
};

void PrintTo(const SplitCase& split, std::ostream* out) { *out << split.fName; }

class SplitInvariance : public testing::TestWithParam<SplitCase> {
 protected:
    SplitInvariance() : fSettings({kCategorical, kContinuous, kCategorical}, true) {
        fSettings.SetTargetCategorical(GetParam().fbTargetCategorical);
        fSettings.SetWeightPosition(1);
        if (GetParam().fbScreening) fSettings.SetTargetPosition(-1);
    }

    std::unique_ptr<FSPredictorSet> Read(const Rows& rows) {
        auto set = std::make_unique<FSPredictorSet>(fSettings, fCancel);
        RecordList records(rows);
        // A partition may be empty or hold nothing valid, which its status says.
        static_cast<void>(GetParam().fbScreening ? set->AccumulateForScreening(records, -1)
                                                 : set->AccumulateRecords(records, -1));
        return set;
    }

    std::unique_ptr<FSPredictorSet> Restored(const FSPredictorSet& set) {
        auto restored = std::make_unique<FSPredictorSet>(fSettings, fCancel);
        testsupport::RestoreInto(*restored, testsupport::Save(set));
        return restored;
    }

    void ExpectEveryCutToGiveOnePass(double mean) {
        for (const std::uint64_t seed : {11U, 12U, 13U}) {
            SCOPED_TRACE("seed " + std::to_string(seed));
            const Rows rows = RandomRows(seed, GetParam().fbTargetCategorical, mean);
            const auto whole = Read(rows);
            ClearElapsed(*whole);
            for (std::size_t cut = 0; cut <= rows.size() && !HasFailure(); ++cut) {
                SCOPED_TRACE("cut before record " + std::to_string(cut));
                const auto middle = rows.begin() + static_cast<std::ptrdiff_t>(cut);
                const auto first = Read(Rows(rows.begin(), middle));
                const auto second = Read(Rows(middle, rows.end()));
                const auto merged = Restored(*first);
                ASSERT_TRUE(merged->MergeFrom(*Restored(*second)));
                ASSERT_TRUE(first->MergeFrom(*second));
                for (FSPredictorSet* set : {first.get(), merged.get()}) {
                    EXPECT_EQ(CountsOf(*set), CountsOf(*whole));
                    ClearElapsed(*set);
                    testsupport::ExpectSameState(*whole, *set,
                                                 testsupport::ToleranceFor(mean, 3.0));
                }
            }
        }
    }

    FSSettings fSettings;
    FSCancelState fCancel;
};

TEST_P(SplitInvariance, BothSidesOfEveryCutGiveOnePass) { ExpectEveryCutToGiveOnePass(2.0); }

TEST_P(SplitInvariance, MeansFarFromZeroDoToo) { ExpectEveryCutToGiveOnePass(1e9); }

INSTANTIATE_TEST_SUITE_P(Passes, SplitInvariance,
                         testing::Values(SplitCase{"CategoricalTarget", true, false},
                                         SplitCase{"ContinuousTarget", false, false},
                                         SplitCase{"WithoutTarget", true, true}),
                         [](const auto& test) { return std::string(test.param.fName); });

class FSPredictorSetMerge : public PredictorSetTest {
 protected:
    FSPredictorSetMerge() {
        fSettings.AddPredictors(2, kCategorical);
        fOther.AddPredictors(2, kCategorical);
    }

    void MakeAndReadBoth() {
        Make();
        EXPECT_TRUE(Read({{0, 1, 2}, {1, 2, 1}}).IsOk());
        fpLater = std::make_unique<FSPredictorSet>(fOther, fCancel);
        RecordList records({{0, 2, 2}});
        EXPECT_TRUE(fpLater->AccumulateRecords(records, -1).IsOk());
    }

    void ExpectRefused() {
        const auto before = testsupport::StateOf(*fpSet);
        EXPECT_FALSE(fpSet->MergeFrom(*fpLater));
        EXPECT_EQ(testsupport::StateOf(*fpSet), before);
    }

    FSSettings fOther;
    std::unique_ptr<FSPredictorSet> fpLater;
};

TEST_F(FSPredictorSetMerge, AddsTheCasesOfTheOther) {
    MakeAndReadBoth();
    EXPECT_TRUE(fpSet->MergeFrom(*fpLater));
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{3, 0, 3, 0}));
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{3, 0}, {3, 0}}));
    EXPECT_EQ(fpSet->GetTargetCategories()->GetAt(0).fWeight, 2);
}

TEST_F(FSPredictorSetMerge, AnEmptyPartitionChangesNoBit) {
    MakeAndReadBoth();
    FSPredictorSet empty(fOther, fCancel);
    RecordList nothing(Rows{});
    ExpectStatus(empty.AccumulateRecords(nothing, -1), 80009, -1);
    ClearElapsed(empty);
    const auto before = testsupport::StateOf(*fpSet);
    EXPECT_TRUE(fpSet->MergeFrom(empty));
    EXPECT_EQ(testsupport::StateOf(*fpSet), before);
}

TEST_F(FSPredictorSetMerge, ValidDataAndWeightsOfEitherSideCount) {
    fSettings.SetWeightPosition(1);
    fOther.SetWeightPosition(1);
    Make();
    ExpectStatus(Read({{0, 0, 1, 2}}), 80013, -1);
    fpLater = std::make_unique<FSPredictorSet>(fOther, fCancel);
    RecordList records({{0, 1, 2, 2}});
    EXPECT_TRUE(fpLater->AccumulateRecords(records, -1).IsOk());
    EXPECT_TRUE(fpSet->MergeFrom(*fpLater));
    const auto fields = SavedFields(testsupport::StateOf(*fpSet), "FSPredictorSet", 0);
    EXPECT_EQ(fields[7], 0);  // no valid data
    EXPECT_EQ(fields[8], 0);  // no valid weight
}

TEST_F(FSPredictorSetMerge, IsRefusedBeforeADataPass) {
    MakeAndReadBoth();
    fpLater = std::make_unique<FSPredictorSet>(fOther, fCancel);
    ExpectRefused();
    Make();
    EXPECT_FALSE(fpSet->MergeFrom(*fpLater));
}

TEST_F(FSPredictorSetMerge, IsRefusedOnceThePassIsFinished) {
    MakeAndReadBoth();
    EXPECT_TRUE(fpLater->FinishDataPass().IsOk());
    ExpectRefused();
    EXPECT_FALSE(fpLater->MergeFrom(*fpSet));
}

TEST_F(FSPredictorSetMerge, IsRefusedAfterScreening) {
    MakeAndReadBoth();
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    ExpectRefused();
}

TEST_F(FSPredictorSetMerge, IsRefusedForOtherPredictors) {
    fOther.AddPredictor(kCategorical);
    fOther.SetTargetPosition(0);
    Make();
    EXPECT_TRUE(Read({{0, 1, 2}}).IsOk());
    fpLater = std::make_unique<FSPredictorSet>(fOther, fCancel);
    RecordList records({{0, 2, 2, 2}});
    EXPECT_TRUE(fpLater->AccumulateRecords(records, -1).IsOk());
    ExpectRefused();
}

TEST_F(FSPredictorSetMerge, IsRefusedForOtherKinds) {
    fOther.SetPredictorCategorical(1, kContinuous);
    MakeAndReadBoth();
    ExpectRefused();
}

TEST_F(FSPredictorSetMerge, IsRefusedForAnotherTarget) {
    fOther.SetTargetCategorical(false);
    MakeAndReadBoth();
    ExpectRefused();
}

TEST_F(FSPredictorSetMerge, IsRefusedForTransactions) {
    MakeAndReadBoth();
    fOther.SetTransactions(true);
    ExpectRefused();
}

TEST_F(FSPredictorSetMerge, IsRefusedWithItself) {
    MakeAndReadBoth();
    EXPECT_FALSE(fpSet->MergeFrom(*fpSet));
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{2, 0, 2, 0}));
}

TEST_F(FSPredictorSetMerge, IsRefusedWhenTheNumberOfRecordsWouldOverflow) {
    MakeAndReadBoth();
    auto bytes = testsupport::Save(*fpSet);
    const std::size_t valid = 5 + 2 * 4 + 8 + 2 * 4 + 4 * 4 + 2 * 8;  // fUnweightedValid
    const std::int32_t most = std::numeric_limits<std::int32_t>::max();
    std::memcpy(bytes.data() + valid, &most, sizeof most);
    testsupport::RestoreInto(*fpSet, bytes);
    ASSERT_EQ(CountsOf(*fpSet).fValid, most);
    ExpectRefused();
}

}  // namespace
