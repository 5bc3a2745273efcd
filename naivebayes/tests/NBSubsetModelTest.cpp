#include "naivebayes/NBSubsetModel.h"

#include <gtest/gtest.h>

#include <cmath>

#include "naivebayes/tests/SearchFixture.h"

namespace {

TEST(NBSubsetModel, MissingAndUnknownCodesNameRowZero) {
    for (const double code : {MCMV::gMissingValue, -1.0, -1.5, std::nan("")}) {
        EXPECT_EQ(NBSubsetModel::Row(code, 4), 0U) << code;
    }
    EXPECT_EQ(NBSubsetModel::Row(0.0, 0), 0U) << "a predictor without categories";
}

TEST(NBSubsetModel, ACodeNamesTheRowBehindItAndIsRoundedUpFromFiftyFiveHundredths) {
    EXPECT_EQ(NBSubsetModel::Row(0.0, 4), 1U);
    EXPECT_EQ(NBSubsetModel::Row(2.0, 4), 3U);
    EXPECT_EQ(NBSubsetModel::Row(2.52, 4), 3U);
    EXPECT_EQ(NBSubsetModel::Row(2.56, 4), 4U);
    EXPECT_EQ(NBSubsetModel::Row(-0.6, 4), 1U) << "cut to a whole number it is not -1";
}

TEST(NBSubsetModel, ACodeBeyondTheCategoriesNamesTheLast) {
    for (const double code : {3.0, 3.9, 4.0, 1e300}) {
        EXPECT_EQ(NBSubsetModel::Row(code, 4), 4U) << code;
    }
}

/// Two targets of this weight each, that a predictor of two categories tells apart.
SearchData Parted(double weight) {
    SearchData data;
    data.fbWeighted = true;
    data.fPredictors = {{2, 2}};
    data.fRows = {{0, weight, {0}}, {1, weight, {1}}};
    return data;
}

NBSubsetModel ModelOf(const TrainedTables& trained) {
    return NBSubsetModel(trained.fvInputs, trained.fOutput);
}

TEST(NBSubsetModel, RowsAreTheProbabilitiesFilledUpToGroupsOfFour) {
    SearchData data;
    data.fNumTargets = 5;
    data.fPredictors = {{3, 2}};
    for (std::int32_t i = 0; i < 15; ++i) data.fRows.push_back({i % 5, 1.0, {i % 3}});
    const TrainedTables trained(data);
    const NBSubsetModel model = ModelOf(trained);
    ASSERT_EQ(model.GetWidth(), 2U);
    ASSERT_EQ(model.GetStride(), 8U);
    for (std::int32_t row = 0; row < 4; ++row) {
        for (std::int32_t k = 0; k < 8; ++k) {
            const double expected = k >= 5     ? 0.0
                                    : row == 0 ? 1.0
                                               : trained.fvInputs[0].GetProbability(row - 1, k);
            EXPECT_EQ(model.GetRows(0)[row * 8 + k], expected) << row << k;
        }
    }
}

TEST(NBSubsetModel, OnlyAbsurdWeightsMakeProbabilitiesThatAreNotModerate) {
    EXPECT_TRUE(ModelOf(TrainedTables(Parted(1.0))).IsModerate());
    EXPECT_TRUE(ModelOf(TrainedTables(Parted(1e29))).IsModerate());
    EXPECT_FALSE(ModelOf(TrainedTables(Parted(1e31))).IsModerate());
    TrainedTables none(Parted(1.0));
    none.fOutput.ComputePriors(0.0);  // no numbers
    EXPECT_FALSE(ModelOf(none).IsModerate());
}

// The least sum of a product's run is a power of 2 that a double still holds.
TEST(NBSubsetModel, ASafeRunStaysWithinADouble) {
    for (const double weight : {1.0, 1e3, 1e8, 1e20, 1e28}) {
        const TrainedTables trained(Parted(weight));
        const NBSubsetModel model = ModelOf(trained);
        const double lowest = trained.fvInputs[0].GetProbability(1, 0);
        const auto run = static_cast<double>(model.GetSafeRun(0));
        EXPECT_GE(run, 1.0);
        EXPECT_LE(run, 32.0);
        EXPECT_GE(run * std::log2(lowest), -1022.0) << weight;
        // No shorter than it must be.
        if (run < 32.0) {
            EXPECT_LT((run + 1.0) * (std::log2(lowest) - 2.0), -1000.0) << weight;
        }
    }
}

}  // namespace
