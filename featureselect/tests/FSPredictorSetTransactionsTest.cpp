#include "featureselect/tests/PredictorSetFixture.h"

namespace {

using testsupport::CancelAtPoll;
using testsupport::ProgressRecorder;
using testsupport::RecordList;

// An item is {transaction, predictor, value, target}. Three categorical predictors.
class FSPredictorSetTransactions : public PredictorSetTest {
 protected:
    FSPredictorSetTransactions() {
        fSettings.AddPredictors(3, kCategorical);
        fSettings.SetTransactions(true);
    }

    FSStatus ReadItems(const Rows& rows) {
        if (!fpSet) Make();
        RecordList items(rows);
        return fpSet->AccumulateTransactions(items);
    }

    std::int32_t CategoriesOfTarget() const { return fpSet->GetNumberOfTargetCategories(); }
};

TEST_F(FSPredictorSetTransactions, ThePhantomFirstTransactionIsExcluded) {
    EXPECT_TRUE(ReadItems({{1, 0, 5, 0}, {1, 1, 5, 0}, {1, 2, 5, 0}}).IsOk());
    // One transaction that ends on the last predictor: only the phantom is counted.
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{0, 1, 0, 1}));
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{1, 0}, {1, 0}, {1, 0}}));
    EXPECT_EQ(CategoriesOfTarget(), 0);
    EXPECT_EQ(fpSet->GetState(), 2);
}

TEST_F(FSPredictorSetTransactions, ALastTransactionThatReachesTheLastPredictorIsNotCounted) {
    EXPECT_TRUE(ReadItems({{1, 0, 5, 7}, {2, 2, 5, 8}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 1, 1, 1}));
    ASSERT_EQ(CategoriesOfTarget(), 1);
    EXPECT_EQ(fpSet->GetTargetCategories()->GetAt(0).fKey, 7);
}

TEST_F(FSPredictorSetTransactions, ALastTransactionCutShortIsCountedAndItsRestIsMissing) {
    EXPECT_TRUE(ReadItems({{1, 0, 5, 7}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 1, 1, 1}));
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{1, 0}, {1, 1}, {1, 1}}));
    EXPECT_EQ(CategoriesOfTarget(), 1);
}

TEST_F(FSPredictorSetTransactions, ATransactionClosesWhenTheNextOneStarts) {
    EXPECT_TRUE(ReadItems({{1, 0, 5, 7}, {1, 1, 6, 7}, {2, 1, 6, 8}, {3, 2, 4, 7}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{2, 1, 2, 1}));
    // Predictor 0: in 1; skipped in 2 and 3. Predictor 1: in 1 and 2, skipped in 3. Predictor 2:
    // after the end of 1 and 2, in 3.
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{3, 2}, {3, 1}, {3, 2}}));
    EXPECT_EQ(CategoriesOfTarget(), 2);
}

TEST_F(FSPredictorSetTransactions, ATransactionWithoutAValidValueIsExcluded) {
    EXPECT_TRUE(ReadItems({{1, 0, -1, 7}, {1, 1, kMissing, 7}, {2, 0, 5, 8}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 2, 1, 2}));
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{2, 1}, {2, 2}, {2, 2}}));
}

TEST_F(FSPredictorSetTransactions, AMissingTargetIsCountedTwice) {
    EXPECT_TRUE(ReadItems({{1, 0, 5, kMissing}, {1, 1, 5, kMissing}, {2, 0, 5, 8}}).IsOk());
    // The phantom, transaction 1 at its start and again at its end; then transaction 2.
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 3, 1, 3}));
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{1, 0}, {1, 1}, {1, 1}}));
}

TEST_F(FSPredictorSetTransactions, AMissingTargetOfTheLastTransactionIsCountedOnce) {
    EXPECT_TRUE(ReadItems({{1, 0, 5, 7}, {2, 0, 5, -1}, {2, 1, 5, -1}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 2, 1, 2}));
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{1, 0}, {1, 1}, {1, 1}}));
}

TEST_F(FSPredictorSetTransactions, ATargetJustBelowMinusOneLosesOnlyTheFirstItem) {
    EXPECT_TRUE(ReadItems({{1, 0, 5, -1.5}, {1, 1, 5, -1.5}, {2, 2, 5, 8}}).IsOk());
    // Excluded: the phantom, and transaction 1 at its start. Its second item makes it valid.
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 2, 1, 2}));
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{2, 2}, {2, 1}, {2, 1}}));
    ASSERT_EQ(CategoriesOfTarget(), 1);
    EXPECT_EQ(fpSet->GetTargetCategories()->GetAt(0).fKey, -1);
}

TEST_F(FSPredictorSetTransactions, AContinuousTargetOfMinusOneIsValid) {
    fSettings.SetTargetCategorical(false);
    EXPECT_TRUE(ReadItems({{1, 0, 5, -1}, {1, 1, 5, -1}, {2, 0, 5, kMissing}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 2, 1, 2}));
    EXPECT_EQ(CategoriesOfTarget(), -1);
}

TEST_F(FSPredictorSetTransactions, TheTargetIsThatOfTheFirstItem) {
    EXPECT_TRUE(ReadItems({{1, 0, 5, 7}, {1, 1, 5, 9}, {2, 2, 5, 8}}).IsOk());
    ASSERT_EQ(CategoriesOfTarget(), 1);
    EXPECT_EQ(fpSet->GetTargetCategories()->GetAt(0).fKey, 7);
}

TEST_F(FSPredictorSetTransactions, ATransactionNumberedMinusNinetyNineContinuesThePhantom) {
    EXPECT_TRUE(ReadItems({{-99, 0, 5, 7}, {1, 2, 5, 8}}).IsOk());
    // Its target is the phantom's 0, and its items make the phantom valid.
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 0, 1, 0}));
    ASSERT_EQ(CategoriesOfTarget(), 1);
    EXPECT_EQ(fpSet->GetTargetCategories()->GetAt(0).fKey, 0);
}

TEST_F(FSPredictorSetTransactions, AValueIsMissingAtMinusOneExactly) {
    EXPECT_TRUE(ReadItems({{1, 0, -1.5, 7}, {1, 1, -1, 7}, {1, 2, kMissing, 7}}).IsOk());
    // -1.5 is taken, as the category -1, unlike in records.
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{1, 0}, {1, 1}, {1, 1}}));
}

TEST_F(FSPredictorSetTransactions, AContinuousValueOfMinusOneIsValid) {
    fSettings.SetPredictorCategorical(0, kContinuous);
    EXPECT_TRUE(ReadItems({{1, 0, -1, 7}}).IsOk());
    EXPECT_EQ(SeenBy(*fpSet)[0], (Seen{1, 0}));
}

TEST_F(FSPredictorSetTransactions, AnIndexIsRounded) {
    EXPECT_TRUE(ReadItems({{1, 0.4, 5, 7}, {1, 0.6, 5, 7}, {1, 1.5, 5, 7}}).IsOk());
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{1, 0}, {1, 0}, {1, 0}}));
}

TEST_F(FSPredictorSetTransactions, AnIndexThatDoesNotRiseEndsThePass) {
    const FSStatus status = ReadItems({{1, 0, 5, 7}, {42.9, 1, 5, 7}, {42.9, 1, 5, 7}});
    ExpectStatus(status, 80007, -1);
    EXPECT_EQ(status.fIntArgs, (std::array<std::int32_t, 3>{1, 1, 42}));
    EXPECT_EQ(fpSet->GetState(), 1);
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 1, 1, 1}));
}

TEST_F(FSPredictorSetTransactions, ANegativeIndexIsOutOfOrder) {
    const FSStatus status = ReadItems({{3, -5, 5, 7}});
    ExpectStatus(status, 80007, -1);
    EXPECT_EQ(status.fIntArgs, (std::array<std::int32_t, 3>{-1, -4, 3}));
}

TEST_F(FSPredictorSetTransactions, AnIndexBeyondThePredictorsEndsThePass) {
    const FSStatus status = ReadItems({{3, 0, 5, 7}, {3, 3, 5, 7}});
    ExpectStatus(status, 80008, -1);
    EXPECT_EQ(status.fIntArgs, (std::array<std::int32_t, 3>{3, 3, 3}));
    EXPECT_EQ(fpSet->GetState(), 1);
    // The skipped predictors have been told before.
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{1, 0}, {1, 1}, {1, 1}}));
}

TEST_F(FSPredictorSetTransactions, AnErrorLeavesTheStateOfAnEarlierPass) {
    EXPECT_TRUE(ReadItems({{1, 0, 5, 7}}).IsOk());
    ExpectStatus(ReadItems({{3, 2000000000.0, 5, 7}}), 80008, -1);
    EXPECT_EQ(fpSet->GetState(), 2);
}

TEST_F(FSPredictorSetTransactions, NoValidValueIsAnError) {
    ExpectStatus(ReadItems({{1, 0, -1, 7}}), 80009, -1);
    EXPECT_EQ(fpSet->GetState(), 2);
    fpSet.reset();
    ExpectStatus(ReadItems({}), 80009, -1);
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{0, 0, 0, 0}));
}

TEST_F(FSPredictorSetTransactions, AWeightColumnChangesNothing) {
    fSettings.SetWeightPosition(2);
    EXPECT_TRUE(ReadItems({{1, 0, 5, 7}, {2, 0, 6, 7}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{2, 1, 2, 1}));
}

TEST_F(FSPredictorSetTransactions, ADeletedPredictorIsSkipped) {
    EXPECT_TRUE(ReadItems({{1, 0, 5, 7}, {1, 1, 5, 7}, {2, 0, 6, 7}, {2, 1, 5, 7}}).IsOk());
    EXPECT_TRUE(fpSet->DeleteMissingOrConstant().IsOk());
    ASSERT_EQ(fpSet->GetDeletedIndices(), (Indices{1, 2}));
    // Transaction 3 has an item of a deleted predictor alone, and so is excluded.
    EXPECT_TRUE(ReadItems({{3, 1, 5, 7}, {4, 0, 5, 7}}).IsOk());
    EXPECT_EQ(SeenBy(*fpSet), (std::vector<Seen>{{4, 1}}));
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{3, 3, 3, 3}));
}

TEST_F(FSPredictorSetTransactions, ReportsOnTheFirstItemOfATransactionWithATarget) {
    ProgressRecorder listener;
    fSettings.SetProgressListener(&listener);
    fSettings.SetRecordsToSkip(1);
    EXPECT_TRUE(ReadItems({{1, 0, 5, 7},
                           {1, 1, 5, 7},
                           {2, 0, 5, 7},
                           {2, 1, 5, 7},
                           {3, 0, 5, -1},
                           {4, 0, 5, 7},
                           {5, 0, 5, 7}})
                    .IsOk());
    EXPECT_EQ(listener.Records(), (Indices{2, 5}));
    EXPECT_EQ(listener.Predictors(), (Indices{-1, -1}));
}

TEST_F(FSPredictorSetTransactions, ACancelledPassEndsWithWhatItHas) {
    CancelAtPoll check(2);
    fCancel.SetCancelCheck(&check);
    EXPECT_TRUE(ReadItems({{1, 0, 5, 7}, {2, 0, 5, 7}, {3, 0, 5, 7}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{2, 1, 2, 1}));
    EXPECT_EQ(fpSet->GetState(), 2);
}

TEST_F(FSPredictorSetTransactions, ANullItemEndsThePass) {
    Make();
    RecordList items({{1, 0, 5, 7}, {2, 0, 5, 7}});
    items.BreakAt(1);
    EXPECT_TRUE(fpSet->AccumulateTransactions(items).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 1, 1, 1}));
}

TEST_F(FSPredictorSetTransactions, AnItemWithoutATargetColumnHasAMissingTarget) {
    EXPECT_TRUE(ReadItems({{1, 0, 5}, {2, 0, 5, 7}}).IsOk());
    EXPECT_EQ(CountsOf(*fpSet), (RecordCounts{1, 3, 1, 3}));
}

}  // namespace
