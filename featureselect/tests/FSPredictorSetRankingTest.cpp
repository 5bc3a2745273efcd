#include <algorithm>
#include <cmath>

#include "featureselect/tests/PredictorSetFixture.h"

namespace {

using testsupport::CancelAtPoll;
using testsupport::ProgressRecorder;

class FSPredictorSetRanking : public PredictorSetTest {
 protected:
    void ComputeAndSort() {
        EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
        EXPECT_TRUE(fpSet->SortAll().IsOk());
        EXPECT_TRUE(fpSet->RankAll().IsOk());
    }

    void ComputeAndSortBest(std::int32_t count) {
        EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
        EXPECT_TRUE(fpSet->SortBest(count).IsOk());
        EXPECT_TRUE(fpSet->RankBest().IsOk());
    }

    Indices Best(std::int32_t criterion, std::int32_t count) const {
        Indices indices{99};
        std::vector<double> values{99};
        EXPECT_TRUE(fpSet->GetBest(criterion, count, indices, values).IsOk());
        EXPECT_EQ(values.size(), indices.size());
        return indices;
    }

    std::size_t SortedRecords() const { return SortRecords(*fpSet).size(); }

    // Four categorical predictors of a categorical target, in ascending order of strength: 3, 0, 1,
    // while 2 is 0 again.
    void ReadFourCategorical() {
        fSettings = FSSettings(4, kCategorical, true);
        Make();
        Rows rows;
        for (int row = 0; row < 24; ++row) {
            const int target = row % 2;
            const double middling = row < 16 ? target : row % 3;
            const double strong = row < 22 ? target : 1 - target;
            const double weak = row < 14 ? target : 1 - target;
            rows.push_back({static_cast<double>(target), middling, strong, middling, weak});
        }
        EXPECT_TRUE(Read(rows).IsOk());
    }

    // Categorical, continuous, continuous, categorical.
    void ReadMixed(bool targetCategorical) {
        fSettings.SetTargetCategorical(targetCategorical);
        fSettings.AddPredictor(kCategorical);
        fSettings.AddPredictors(2, kContinuous);
        fSettings.AddPredictor(kCategorical);
        ReadMixedRows();
    }
    void ReadMixedRows() {
        Make();
        Rows rows;
        for (int row = 0; row < 30; ++row) {
            const double target = fSettings.IsTargetCategorical() ? row % 3 : row;
            rows.push_back({target, static_cast<double>(row % 3 == 0 ? row % 2 : row % 3),
                            static_cast<double>(row * row % 11),
                            static_cast<double>(row % 3) + 0.01 * row,
                            static_cast<double>(row / 7)});
        }
        rows.push_back({fSettings.IsTargetCategorical() ? 1.0 : 40.0, -1, kMissing, 2, 1});
        EXPECT_TRUE(Read(rows).IsOk());
    }

    FSPredSort RecordOf(std::int32_t predictor, std::size_t which) const {
        for (const FSPredSort& record : SortRecords(*fpSet)) {
            if (record.fPredictor == predictor && which-- == 0) return record;
        }
        ADD_FAILURE() << "no such record of predictor " << predictor;
        return {};
    }
};

TEST_F(FSPredictorSetRanking, ComputesEveryCriterionOfACategoricalSet) {
    ReadFourCategorical();
    EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
    EXPECT_EQ(fpSet->GetState(), 4);
    EXPECT_EQ(SortedRecords(), 16U);
    for (std::int32_t criterion = 0; criterion < 4; ++criterion) {
        for (std::int32_t predictor = 0; predictor < 4; ++predictor) {
            double value = 0, b = 0, c = 0, d = 0;
            EXPECT_TRUE(fpSet->GetPredictorCriterion(criterion, predictor, value, b, c, d));
            EXPECT_EQ(fpSet->GetCriterionValues(criterion)[static_cast<std::size_t>(predictor)],
                      value);
        }
    }
    EXPECT_TRUE(fpSet->GetCriterionValues(4).empty());
    EXPECT_TRUE(fpSet->GetRanks(4).empty());
}

TEST_F(FSPredictorSetRanking, EqualPredictorsKeepTheirIndexOrder) {
    ReadFourCategorical();
    ComputeAndSort();
    EXPECT_EQ(fpSet->GetState(), 7);
    for (std::int32_t criterion = 0; criterion < 4; ++criterion) {
        SCOPED_TRACE(criterion);
        // Predictors 0 and 2 are the same column. Lambda counts cases that the modes predict:
        // 22 of 24 for predictor 1 against 21 for 0 and 2, and 14 for 3.
        EXPECT_EQ(Best(criterion, 0), (Indices{1, 0, 2, 3}));
        EXPECT_EQ(fpSet->GetRanks(criterion), (Indices{1, 0, 2, 3}));
    }
}

TEST_F(FSPredictorSetRanking, TwentyFiveCopiesKeepTheOrderOfTheFile) {
    // Copies of a column, as they are and with their categories named otherwise, between a stronger
    // predictor and a weaker one.
    constexpr int kCopies = 25;
    fSettings = FSSettings(kCopies + 2, kCategorical, true);
    Make();
    Rows rows;
    for (int row = 0; row < 60; ++row) {
        const int target = row % 3;
        std::vector<double> record{static_cast<double>(target), static_cast<double>(row / 30)};
        const int copied = row % 7 == 0 ? row % 2 : target;
        for (int copy = 0; copy < kCopies; ++copy) {
            record.push_back(copy % 2 == 0 ? copied : (copied + copy) % 3 + 5);
        }
        record.push_back(row % 20 == 0 ? 0 : target);
        rows.push_back(record);
    }
    EXPECT_TRUE(Read(rows).IsOk());
    ComputeAndSort();
    Indices expected{kCopies + 1};
    for (std::int32_t copy = 1; copy <= kCopies; ++copy) expected.push_back(copy);
    expected.push_back(0);
    for (std::int32_t criterion = 0; criterion < 4; ++criterion) {
        EXPECT_EQ(Best(criterion, 0), expected) << criterion;
        for (std::size_t copy = 2; copy <= kCopies; ++copy) {
            EXPECT_EQ(fpSet->GetCriterionValues(criterion)[copy],
                      fpSet->GetCriterionValues(criterion)[1]);
        }
        ComputeAndSortBest(10);
        EXPECT_EQ(Best(criterion, 0), Indices(expected.begin(), expected.begin() + 10));
        ComputeAndSort();
    }
}

TEST_F(FSPredictorSetRanking, PValuesTooSmallForADoubleAreOrderedAndHaveALogarithm) {
    // Both tables have p-values below 1e-700; the second has more degrees of freedom.
    fSettings = FSSettings(2, kCategorical, true);
    fSettings.SetWeightPosition(1);
    Make();
    EXPECT_TRUE(Read({{0, 2000, 0, 0}, {1, 1000, 1, 1}, {1, 1000, 1, 2}}).IsOk());
    ComputeAndSort();
    EXPECT_EQ(fpSet->GetCriterionValues(0), (std::vector<double>{0.0, 0.0}));
    EXPECT_EQ(Best(0, 0), (Indices{0, 1}));
    double one = 0;
    double two = 0;
    EXPECT_TRUE(fpSet->GetPredictorLogP(0, 0, one));
    EXPECT_TRUE(fpSet->GetPredictorLogP(0, 1, two));
    // The chi-square of both is 4000. With two degrees of freedom the tail is exp(-2000); with one
    // its logarithm is -2004.3733... (mpmath).
    EXPECT_NEAR(two, -2000.0, 1e-10);
    EXPECT_NEAR(one, -2004.3730660166381, 1e-10);
}

TEST_F(FSPredictorSetRanking, MeasuresAndDeletedPredictorsHaveNoLogarithm) {
    ReadFourCategorical();
    ComputeAndSort();
    for (const std::int32_t criterion : {0, 1}) {
        double p = 0, statistic = 0, df = 0, none = 0, logP = 0;
        EXPECT_TRUE(fpSet->GetPredictorCriterion(criterion, 1, p, statistic, df, none));
        EXPECT_TRUE(fpSet->GetPredictorLogP(criterion, 1, logP));
        EXPECT_NEAR(logP, std::log(p), 1e-12);
    }
    for (const auto& [criterion, predictor] : std::vector<std::pair<int, int>>{
             {2, 1}, {3, 1}, {4, 1}, {-1, 1}, {6, 1}, {0, -1}, {0, 4}}) {
        double logP = 0;
        EXPECT_FALSE(fpSet->GetPredictorLogP(criterion, predictor, logP));
        EXPECT_EQ(logP, kMissing);
    }
    fpSet->Reset();
    double logP = 0;
    EXPECT_FALSE(fpSet->GetPredictorLogP(0, 1, logP));
    EXPECT_EQ(logP, kMissing);
}

TEST_F(FSPredictorSetRanking, SortAllLeavesItsStateBehind) {
    ReadFourCategorical();
    EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
    EXPECT_TRUE(fpSet->SortAll().IsOk());
    EXPECT_EQ(fpSet->GetState(), 5);
    EXPECT_EQ(fpSet->GetRanks(0), (Indices{-1, -1, -1, -1}));
}

TEST_F(FSPredictorSetRanking, GetBestOfNoneAfterRankAllGivesAllRemaining) {
    ReadFourCategorical();
    ComputeAndSort();
    EXPECT_EQ(Best(0, 0).size(), 4U);
    EXPECT_EQ(Best(0, 3).size(), 3U);
    EXPECT_EQ(Best(0, 9).size(), 4U);
    EXPECT_TRUE(Best(0, -2).empty());
}

TEST_F(FSPredictorSetRanking, SortBestOrdersTheHeadAndRankBestRanksItAlone) {
    ReadFourCategorical();
    EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
    EXPECT_TRUE(fpSet->SortBest(2).IsOk());
    EXPECT_EQ(fpSet->GetState(), 6);
    EXPECT_TRUE(fpSet->RankBest().IsOk());
    EXPECT_EQ(fpSet->GetState(), 7);
    const Indices& ranks = fpSet->GetRanks(0);
    // Predictors 0 and 2 tie for the second place, which goes to the first of them.
    EXPECT_EQ(ranks, (Indices{1, 0, -1, -1}));
    EXPECT_EQ(Best(0, 0).size(), 2U);
}

TEST_F(FSPredictorSetRanking, GetBestIsBoundByTheSortedHead) {
    fSettings = FSSettings(12, kCategorical, true);
    Make();
    Rows rows;
    for (int row = 0; row < 60; ++row) {
        std::vector<double> record{static_cast<double>(row % 2)};
        for (int predictor = 0; predictor < 12; ++predictor) {
            record.push_back((row * (predictor + 3) / 4) % 3);
        }
        rows.push_back(record);
    }
    EXPECT_TRUE(Read(rows).IsOk());
    ComputeAndSortBest(5);
    EXPECT_EQ(Best(0, 10).size(), 5U);
    EXPECT_EQ(Best(0, 0).size(), 5U);
    EXPECT_EQ(Best(0, 4).size(), 4U);
}

TEST_F(FSPredictorSetRanking, SortBestOfNoneOrTooManyTakesAllRemaining) {
    for (const std::int32_t count : {0, -3, 99}) {
        SCOPED_TRACE(count);
        ReadFourCategorical();
        ComputeAndSortBest(count);
        EXPECT_EQ(Best(0, 0).size(), 4U);
        const auto& ranks = fpSet->GetRanks(0);
        EXPECT_EQ(std::count(ranks.begin(), ranks.end(), -1), 0);
    }
}

TEST_F(FSPredictorSetRanking, AShortListLowersTheCountForLaterCriteria) {
    ReadMixed(true);
    ComputeAndSortBest(4);
    // The F order of a mixed set holds the two continuous predictors alone. Its length is the count
    // that stays, so that of the orders before it too only two are ranked and given.
    const Indices& ranks = fpSet->GetRanks(0);
    EXPECT_EQ(std::count(ranks.begin(), ranks.end(), -1), 2);
    EXPECT_EQ(Best(0, 4).size(), 2U);
    EXPECT_EQ(Best(4, 4).size(), 2U);
}

TEST_F(FSPredictorSetRanking, ACriterionThatIsNotOnHasNoBest) {
    ReadFourCategorical();
    ComputeAndSort();
    for (const std::int32_t criterion : {4, 5, -1, 6}) {
        Indices indices{99};
        std::vector<double> values{99};
        ExpectStatus(fpSet->GetBest(criterion, 0, indices, values), 80006, -1);
        EXPECT_TRUE(indices.empty());
        EXPECT_TRUE(values.empty());
    }
    EXPECT_TRUE(fpSet->GetRanks(-1).empty());
    EXPECT_TRUE(fpSet->GetRanks(6).empty());
    EXPECT_TRUE(fpSet->GetCriterionValues(6).empty());
}

TEST_F(FSPredictorSetRanking, AMixedSetRanksUnlikeTestsInOneChiSquareOrder) {
    ReadMixed(true);
    ComputeAndSort();
    double p = 0, f = 0, df1 = 0, df2 = 0;
    ASSERT_TRUE(fpSet->GetPredictorCriterion(4, 1, p, f, df1, df2));
    for (const std::int32_t criterion : {0, 1, 4}) {
        EXPECT_EQ(fpSet->GetCriterionValues(criterion)[1], p);
    }
    // A continuous predictor has -N of 30 valid cases in the chi-square orders, N in the F order.
    for (std::size_t which = 0; which < 3; ++which) {
        const FSPredSort record = RecordOf(1, which);
        EXPECT_EQ(record.fCriterion, p);
        EXPECT_EQ(record.fTieBreak1, f);
        EXPECT_EQ(record.fTieBreak2, which == 2 ? 30 : -30);
    }
    double chiSquare = 0, df = 0;
    ASSERT_TRUE(fpSet->GetPredictorCriterion(0, 0, p, chiSquare, df, df2));
    EXPECT_EQ(fpSet->GetCriterionValues(0)[0], p);
    EXPECT_EQ(RecordOf(0, 0).fTieBreak2, df);
    EXPECT_EQ(Best(0, 0).size(), 4U);
    EXPECT_EQ(Best(1, 0).size(), 4U);
}

TEST_F(FSPredictorSetRanking, TheFOrderOfAMixedSetHoldsContinuousPredictorsAlone) {
    ReadMixed(true);
    ComputeAndSort();
    Indices best = Best(4, 0);
    std::sort(best.begin(), best.end());
    EXPECT_EQ(best, (Indices{1, 2}));
    EXPECT_EQ(fpSet->GetCriterionValues(4)[0], kMissing);
    EXPECT_EQ(fpSet->GetCriterionValues(4)[3], kMissing);
    EXPECT_EQ(fpSet->GetRanks(4)[0], -1);
}

TEST_F(FSPredictorSetRanking, AMixedSetWithoutPearsonHasTheSameFOrder) {
    ReadMixed(true);
    ComputeAndSort();
    const auto pValues = fpSet->GetCriterionValues(4);
    const auto likelihood = fpSet->GetCriterionValues(1);
    ASSERT_TRUE(fSettings.SetCriterion(FSCriterion::kPearson, false));
    ReadMixedRows();
    ComputeAndSort();
    EXPECT_EQ(fpSet->GetCriterionValues(4), pValues);
    EXPECT_EQ(fpSet->GetCriterionValues(1), likelihood);
    EXPECT_EQ(RecordOf(1, 0).fTieBreak2, -30);
    EXPECT_EQ(RecordOf(1, 1).fTieBreak2, 30);
}

TEST_F(FSPredictorSetRanking, AMixedSetWithoutLikelihoodHasTheSameFOrder) {
    ReadMixed(true);
    ComputeAndSort();
    const auto pValues = fpSet->GetCriterionValues(4);
    ASSERT_TRUE(fSettings.SetCriterion(FSCriterion::kLikelihood, false));
    ReadMixedRows();
    ComputeAndSort();
    EXPECT_EQ(fpSet->GetCriterionValues(4), pValues);
    EXPECT_EQ(RecordOf(1, 0).fTieBreak2, -30);
    EXPECT_EQ(RecordOf(1, 1).fTieBreak2, 30);
}

TEST_F(FSPredictorSetRanking, AMixedSetWithAContinuousTargetHasOneOrderForFAndT) {
    ReadMixed(false);
    ComputeAndSort();
    EXPECT_EQ(SortedRecords(), 4U);
    EXPECT_EQ(Best(4, 0).size(), 4U);
    EXPECT_EQ(Best(5, 0), Best(4, 0));
    EXPECT_EQ(fpSet->GetRanks(5), fpSet->GetRanks(4));
    EXPECT_EQ(fpSet->GetCriterionValues(5), fpSet->GetCriterionValues(4));
    double p = 0, r = 0, t = 0, df = 0;
    ASSERT_TRUE(fpSet->GetPredictorCriterion(5, 1, p, r, t, df));
    EXPECT_EQ(fpSet->GetCriterionValues(4)[1], p);
    double f = 0, df1 = 0, df2 = 0;
    ASSERT_TRUE(fpSet->GetPredictorCriterion(4, 0, p, f, df1, df2));
    EXPECT_EQ(fpSet->GetCriterionValues(4)[0], p);
}

TEST_F(FSPredictorSetRanking, GetBestReadsTheFOrderForTWhateverTheTarget) {
    ReadMixed(false);
    ComputeAndSort();
    const Indices fOrder = Best(4, 0);
    const Indices fRanks = fpSet->GetRanks(4);
    // No setter leaves t on beside a categorical target; a restored state may.
    auto bytes = testsupport::Save(fSettings);
    const std::size_t targetKind = 5 + 4 + 4 * 4 + 2 * 4;  // after tag, count, kinds, two numbers
    bytes[targetKind] = std::byte{1};
    testsupport::RestoreInto(fSettings, bytes);
    ASSERT_TRUE(fSettings.IsTargetCategorical());
    ASSERT_TRUE(fSettings.IsCriterionOn(FSCriterion::kTStat));
    EXPECT_EQ(Best(5, 0), fOrder);
    EXPECT_EQ(fpSet->GetRanks(5), (Indices{-1, -1, -1, -1}));
    EXPECT_NE(fpSet->GetRanks(5), fRanks);
    EXPECT_EQ(fpSet->GetCriterionValues(5), std::vector<double>(4, kMissing));
}

TEST_F(FSPredictorSetRanking, AContinuousSetWithAContinuousTargetHasAnOrderOfItsOwnForT) {
    fSettings = FSSettings(2, kContinuous, false);
    Make();
    EXPECT_TRUE(Read({{1, 5, 1}, {2, 3, 2}, {3, 8, 3}, {4, 1, 5}}).IsOk());
    ComputeAndSort();
    EXPECT_EQ(Best(5, 0), (Indices{1, 0}));
    EXPECT_EQ(fpSet->GetRanks(5), (Indices{1, 0}));
    EXPECT_TRUE(fpSet->GetRanks(4).empty());
}

TEST_F(FSPredictorSetRanking, ACategoricalSetWithAContinuousTargetIsRankedByF) {
    fSettings = FSSettings(2, kCategorical, false);
    Make();
    EXPECT_TRUE(Read({{1, 0, 0}, {2, 0, 1}, {5, 1, 0}, {6, 1, 1}, {7, 1, 0}}).IsOk());
    ComputeAndSort();
    EXPECT_EQ(Best(4, 0), (Indices{0, 1}));
    EXPECT_EQ(SortedRecords(), 2U);
}

TEST_F(FSPredictorSetRanking, ADeletedPredictorHasNoRecordAndAMissingValue) {
    fSettings = FSSettings(3, kCategorical, true);
    Make();
    EXPECT_TRUE(Read({{0, 1, 5, 1}, {1, 2, 5, 2}, {0, 1, 5, 2}}).IsOk());
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    ComputeAndSort();
    EXPECT_EQ(SortedRecords(), 8U);
    EXPECT_EQ(fpSet->GetCriterionValues(0)[1], kMissing);
    EXPECT_EQ(fpSet->GetRanks(0), (Indices{0, -1, 1}));
    EXPECT_EQ(Best(0, 0), (Indices{0, 2}));
    EXPECT_EQ(Best(0, 3), (Indices{0, 2}));
}

TEST_F(FSPredictorSetRanking, APredictorOfOneCategoryIsLastByCramerAndZeroByLambda) {
    fSettings = FSSettings(2, kCategorical, true);
    Make();
    EXPECT_TRUE(Read({{0, 3, 1}, {1, 3, 2}, {1, 3, 1}}).IsOk());
    ComputeAndSort();
    EXPECT_EQ(fpSet->GetCriterionValues(0)[0], 1.0);
    EXPECT_EQ(fpSet->GetCriterionValues(1)[0], 1.0);
    EXPECT_EQ(fpSet->GetCriterionValues(2)[0], kMissing);
    EXPECT_EQ(fpSet->GetCriterionValues(3)[0], 0.0);
    EXPECT_EQ(RecordOf(0, 0).fTieBreak1, 0);
    EXPECT_EQ(RecordOf(0, 0).fTieBreak2, 0);
    EXPECT_EQ(Best(2, 0), (Indices{1, 0}));
}

TEST_F(FSPredictorSetRanking, AllCasesInOneTargetCategoryLeaveLambdaMissing) {
    fSettings = FSSettings(1, kCategorical, true);
    Make();
    EXPECT_TRUE(Read({{0, 3}, {0, 4}}).IsOk());
    ComputeAndSort();
    EXPECT_EQ(fpSet->GetCriterionValues(3)[0], kMissing);
    // Missing values are sorted and ranked too.
    EXPECT_EQ(fpSet->GetRanks(3), (Indices{0}));
}

TEST_F(FSPredictorSetRanking, MoreCategoriesGoFirstAmongEqualLambdas) {
    fSettings = FSSettings(2, kCategorical, true);
    Make();
    // Both predict the target perfectly.
    EXPECT_TRUE(Read({{0, 1, 1}, {0, 1, 2}, {1, 3, 3}, {1, 3, 3}}).IsOk());
    ComputeAndSort();
    EXPECT_EQ(fpSet->GetCriterionValues(3), (std::vector<double>{1.0, 1.0}));
    EXPECT_EQ(Best(3, 0), (Indices{1, 0}));
}

TEST_F(FSPredictorSetRanking, GroupsWithoutVariationRankFirstByF) {
    fSettings = FSSettings(2, kContinuous, true);
    Make();
    EXPECT_TRUE(Read({{0, 1, 1}, {0, 1.1, 1}, {1, 9, 2}, {1, 9.1, 2}}).IsOk());
    ComputeAndSort();
    EXPECT_EQ(fpSet->GetCriterionValues(4)[1], 0.0);
    EXPECT_EQ(RecordOf(1, 0).fTieBreak1, kMissing);
    EXPECT_EQ(Best(4, 0), (Indices{1, 0}));
}

TEST_F(FSPredictorSetRanking, APerfectCorrelationHasNoTAndRanksFirst) {
    fSettings = FSSettings(2, kContinuous, false);
    Make();
    EXPECT_TRUE(Read({{0, 3, 0}, {1, 1, 1}, {2, 4, 2}, {3, 1, 3}}).IsOk());
    ComputeAndSort();
    double p = -1, r = -1, t = -1, df = -1;
    EXPECT_TRUE(fpSet->GetPredictorCriterion(5, 1, p, r, t, df));
    EXPECT_EQ(p, 0.0);
    EXPECT_EQ(t, kMissing);
    EXPECT_EQ(df, 2);
    EXPECT_EQ(RecordOf(1, 0).fTieBreak1, r * r);
    EXPECT_EQ(RecordOf(1, 0).fTieBreak2, 4);
    EXPECT_EQ(Best(5, 0), (Indices{1, 0}));
}

TEST_F(FSPredictorSetRanking, NoDegreeOfFreedomLeavesTheTTestWithoutAValue) {
    fSettings = FSSettings(1, kContinuous, false);
    fSettings.SetWeightPosition(1);
    fSettings.SetWeightConversion(FSSettings::kWeightAsIs);
    Make();
    // Three records that weigh 2 together, so that r is not perfect.
    EXPECT_TRUE(Read({{0, 0.5, 1}, {1, 0.5, 5}, {3, 1, 2}}).IsOk());
    ComputeAndSort();
    double p = -1, r = -1, t = -1, df = -1;
    EXPECT_TRUE(fpSet->GetPredictorCriterion(5, 0, p, r, t, df));
    EXPECT_LT(r * r, 1.0);
    EXPECT_EQ(df, 0);
    EXPECT_EQ(p, kMissing);
    EXPECT_EQ(fpSet->GetCriterionValues(5)[0], kMissing);
    EXPECT_EQ(fpSet->GetRanks(5), (Indices{0}));
}

TEST_F(FSPredictorSetRanking, AnotherRankingStartsAfresh) {
    ReadFourCategorical();
    ComputeAndSortBest(1);
    ComputeAndSort();
    EXPECT_EQ(SortedRecords(), 16U);
    EXPECT_EQ(Best(0, 0), (Indices{1, 0, 2, 3}));
    ComputeAndSortBest(1);
    EXPECT_EQ(fpSet->GetRanks(0), (Indices{-1, 0, -1, -1}));
}

TEST_F(FSPredictorSetRanking, ASecondPassDerivesItsStatisticsAnew) {
    const Rows first{{0, 1}, {0, 2}, {1, 4}, {1, 7}};
    const Rows second{{0, 9}, {1, 3}, {1, 2}};
    Rows both = first;
    both.insert(both.end(), second.begin(), second.end());
    fSettings = FSSettings(1, kContinuous, true);
    Make();
    EXPECT_TRUE(Read(both).IsOk());
    EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
    const double atOnce = fpSet->GetCriterionValues(4)[0];
    Make();
    EXPECT_TRUE(Read(first).IsOk());
    EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
    EXPECT_NE(fpSet->GetCriterionValues(4)[0], atOnce);
    EXPECT_TRUE(Read(second).IsOk());
    EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
    EXPECT_EQ(fpSet->GetCriterionValues(4)[0], atOnce);
}

TEST_F(FSPredictorSetRanking, ACriterionSwitchedOnAfterConstructionHasNoValuesAndNoRanks) {
    fSettings = FSSettings(2, kCategorical, true);
    ASSERT_TRUE(fSettings.SetCriterion(FSCriterion::kLikelihood, false));
    Make();
    ASSERT_TRUE(fSettings.SetCriterion(FSCriterion::kLikelihood, true));
    EXPECT_TRUE(Read({{0, 1, 1}, {1, 2, 1}, {1, 2, 3}}).IsOk());
    ComputeAndSort();
    EXPECT_TRUE(fpSet->GetRanks(1).empty());
    EXPECT_TRUE(fpSet->GetCriterionValues(1).empty());
    EXPECT_EQ(fpSet->GetRanks(0), (Indices{0, 1}));
}

TEST_F(FSPredictorSetRanking, WithoutAnyPassNothingIsRanked) {
    fSettings = FSSettings(2, kCategorical, true);
    Make();
    ComputeAndSort();
    EXPECT_EQ(fpSet->GetRanks(0), (Indices{-1, -1}));
    EXPECT_EQ(fpSet->GetCriterionValues(0), std::vector<double>(2, kMissing));
    EXPECT_TRUE(Best(0, 0).empty());
}

TEST_F(FSPredictorSetRanking, ReportsEverySkipPlusOnePredictors) {
    ProgressRecorder listener;
    ReadFourCategorical();
    fSettings.SetProgressListener(&listener);
    fSettings.SetPredictorsToSkip(1);
    EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
    EXPECT_EQ(listener.Predictors(), (Indices{2, 4}));
    EXPECT_EQ(listener.Records(), (Indices{-1, -1}));
}

TEST_F(FSPredictorSetRanking, ACancelKeepsTheRecordsMadeBefore) {
    ReadFourCategorical();
    CancelAtPoll check(2);
    fCancel.SetCancelCheck(&check);
    EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
    EXPECT_EQ(SortedRecords(), 8U);
    EXPECT_EQ(fpSet->GetState(), 4);
    EXPECT_NE(fpSet->GetCriterionValues(0)[1], kMissing);
    EXPECT_EQ(fpSet->GetCriterionValues(0)[2], kMissing);
}

TEST_F(FSPredictorSetRanking, ACancelBetweenCriteriaLeavesTheLaterOnesUnsorted) {
    ReadFourCategorical();
    EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
    CancelAtPoll check(1);
    fCancel.SetCancelCheck(&check);
    EXPECT_TRUE(fpSet->SortAll().IsOk());
    EXPECT_EQ(fpSet->GetState(), 5);
    EXPECT_EQ(Best(0, 0), (Indices{1, 0, 2, 3}));
    EXPECT_EQ(Best(1, 0), (Indices{0, 1, 2, 3}));
}

TEST_F(FSPredictorSetRanking, ACancelBeforeSortBestKeepsTheCountAsked) {
    ReadFourCategorical();
    EXPECT_TRUE(fpSet->ComputeCriteria().IsOk());
    fCancel.Cancel();
    EXPECT_TRUE(fpSet->SortBest(3).IsOk());
    EXPECT_EQ(fpSet->GetState(), 6);
    EXPECT_EQ(Best(0, 0), (Indices{0, 1, 2}));
    EXPECT_TRUE(fpSet->RankBest().IsOk());
    EXPECT_EQ(fpSet->GetRanks(0), (Indices{-1, -1, -1, -1}));
}

}  // namespace
