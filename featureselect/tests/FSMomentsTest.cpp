#include "featureselect/FSMoments.h"

#include <gtest/gtest.h>

#include <cmath>

#include "featureselect/FSGroupMoments.h"

namespace {

TEST(FSMoments, AreThoseOfTheValues) {
    FSMoments moments;
    moments.Add(1.0, 1.0);
    moments.Add(4.0, 2.0);
    EXPECT_EQ(moments.Mean(), 3.0);
    EXPECT_EQ(moments.SecondMoment().Value(), 6.0);
    EXPECT_EQ(FSMoments().Mean(), 0.0);
    EXPECT_TRUE(FSMoments().SecondMoment().IsZero());
}

TEST(FSMoments, AnOffsetCostsNoDigit) {
    // Deviations of 0.1's double and its neighbours about 1e12 are exact multiples of 2^-13.
    FSMoments moments;
    for (const double step : {-1.0, 0.0, 1.0}) moments.Add(1e12 + step * 0x1p-13, 1.0);
    EXPECT_EQ(moments.SecondMoment().Value(), 0x1p-25);
}

TEST(FSMoments, TakenFromRoundedNumbersGiveThemBack) {
    const FSMoments moments = FSMoments::Of(7.0, 0.1, 0.3);
    EXPECT_EQ(moments.Mean(), 0.1);
    EXPECT_EQ(moments.SecondMoment().Value(), 0.3);
    const FSPairMoments pairs = FSPairMoments::Of(0.7, 0.1, 0.3, -1e300, 1e250, -0.2);
    EXPECT_EQ(pairs.X().Mean(), 0.1);
    EXPECT_EQ(pairs.Y().Mean(), -1e300);
    EXPECT_EQ(pairs.Y().SecondMoment().Value(), 1e250);
    EXPECT_EQ(pairs.Cross().Value(), -0.2);
}

TEST(FSMoments, OnePartCanBeTakenFromTheWhole) {
    FSMoments part;
    part.Add(0.1, 0.3);
    FSMoments whole = part;
    whole.Add(1e200, 1.0);
    whole -= part;
    FSMoments rest;
    rest.Add(1e200, 1.0);
    EXPECT_EQ(whole.fSum, rest.fSum);
    EXPECT_EQ(whole.fSquares, rest.fSquares);
    EXPECT_EQ(whole.fWeight.Exact(), rest.fWeight.Exact());
}

TEST(FSGroupMoments, AWeightNotAboveZeroMakesNoCategory) {
    FSGroupMoments groups;
    groups.Add(3, 1.0, 0.0);
    groups.Add(3, 1.0, std::nan(""));
    EXPECT_EQ(groups.Size(), 0);
}

TEST(FSGroupMoments, RoundedAndBackAreTheSameEntries) {
    FSGroupMoments groups;
    groups.Add(5, 0.1, 0.3);
    groups.Add(5, 0.7, 0.9);
    groups.Add(-2, 1e9, 2.0);
    groups.FinishVariances();
    const FSMapIStat rounded = groups.Rounded();
    ASSERT_EQ(rounded.Size(), 2);
    EXPECT_EQ(rounded.GetAt(0).fKey, -2);
    EXPECT_EQ(rounded.GetAt(0).fMean, 1e9);
    EXPECT_EQ(rounded.GetAt(0).fVariance, 0.0);
    const FSMapIStat again = FSGroupMoments::Of(rounded).Rounded();
    for (std::int32_t i = 0; i < 2; ++i) {
        EXPECT_EQ(again.GetAt(i).fWeight, rounded.GetAt(i).fWeight);
        EXPECT_EQ(again.GetAt(i).fMean, rounded.GetAt(i).fMean);
        EXPECT_EQ(again.GetAt(i).fSecondMoment, rounded.GetAt(i).fSecondMoment);
        EXPECT_EQ(again.GetAt(i).fVariance, rounded.GetAt(i).fVariance);
    }
}

}  // namespace
