#include "naivebayes/data/NBBinningEncoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "host/Records.h"
#include "naivebayes/NBayesInputBase.h"
#include "naivebayes/data/NBNumericUserMissing.h"
#include "naivebayes/data/NBStringUserMissing.h"
#include "naivebayes/tests/SavedForms.h"
#include "tests/support/CaseName.h"
#include "tests/support/RandomSeed.h"

namespace {

using savedforms::Bytes;

constexpr double kLowest = std::numeric_limits<double>::lowest();
constexpr double kHighest = std::numeric_limits<double>::max();

TEST(NBBinningEncoder, TwoBinsHaveOneCutpointThatBelongsToTheLower) {
    const NBBinningEncoder encoder(0.0, 10.0, 2);
    EXPECT_EQ(encoder.GetCutpoints(), std::vector<double>{5.0});
    EXPECT_EQ(encoder.Encode(5.0), 0.0);
    EXPECT_EQ(encoder.Encode(std::nextafter(5.0, 6.0)), 1.0);
    EXPECT_EQ(encoder.GetNumCodes(), 2);
    EXPECT_EQ(encoder.GetEncoderType(), 1);
    EXPECT_FALSE(encoder.IsExplicit());
}

TEST(NBBinningEncoder, ValuesOutsideTheRangeGetTheOutermostBins) {
    const NBBinningEncoder encoder(0.0, 10.0, 4);
    EXPECT_EQ(encoder.Encode(-100.0), 0.0);
    EXPECT_EQ(encoder.Encode(100.0), 3.0);
}

TEST(NBBinningEncoder, CutpointsAreComputedEachByItself) {
    const NBBinningEncoder encoder(0.1, 0.8, 7);
    const double width = (0.8 - 0.1) / 7;
    ASSERT_EQ(encoder.GetCutpoints().size(), 6U);
    for (int k = 1; k < 7; ++k) {
        EXPECT_EQ(encoder.GetCutpoints()[static_cast<std::size_t>(k - 1)], k * width + 0.1);
    }
}

TEST(NBBinningEncoder, BelowTwoBinsThereAreNoCutpoints) {
    for (const std::int32_t bins : {1, 0, -3}) {
        const NBBinningEncoder encoder(0.0, 10.0, bins);
        EXPECT_TRUE(encoder.GetCutpoints().empty());
        EXPECT_EQ(encoder.GetNumCodes(), bins);
    }
}

TEST(NBBinningEncoder, WithoutCutpointsTheSignDecides) {
    const NBBinningEncoder encoder;
    EXPECT_EQ(encoder.GetNumCodes(), 0);
    EXPECT_EQ(encoder.Encode(0.0), 1.0);
    EXPECT_EQ(encoder.Encode(3.0), 1.0);
    EXPECT_EQ(encoder.Encode(-0.5), 0.0);
    EXPECT_EQ(encoder.Encode(MCMV::gMissingValue), -1.0);
}

TEST(NBBinningEncoder, EncodesAsACountOfCutpointsBelowTheValue) {
    std::mt19937 random(testsupport::RandomSeed());
    std::uniform_int_distribution<int> number(-20, 20);
    for (int round = 0; round < 500; ++round) {
        std::vector<double> cutpoints(1 + static_cast<std::size_t>(round % 9));
        for (double& cutpoint : cutpoints) cutpoint = number(random);
        std::sort(cutpoints.begin(), cutpoints.end());
        cutpoints.erase(std::unique(cutpoints.begin(), cutpoints.end()), cutpoints.end());
        const NBBinningEncoder encoder(cutpoints);
        for (double value = -21.0; value <= 21.0; value += 0.5) {
            const auto below = std::count_if(cutpoints.begin(), cutpoints.end(),
                                             [value](double c) { return c < value; });
            EXPECT_EQ(encoder.Encode(value), static_cast<double>(below));
        }
    }
}

TEST(NBBinningEncoder, MissingValuesGetTheMissingCode) {
    NBNumericUserMissing definition;
    definition.Add(9.0, "");
    NBBinningEncoder encoder({5.0});
    EXPECT_EQ(encoder.Encode(9.0), 1.0);
    EXPECT_TRUE(encoder.SetUserMissing(&definition));
    EXPECT_EQ(encoder.Encode(9.0), -1.0);
    EXPECT_EQ(encoder.Encode(MCMV::gMissingValue), -1.0);
    EXPECT_EQ(encoder.Encode(8.0), 1.0);
}

TEST(NBBinningEncoder, RefusesAStringDefinitionAndKeepsTheOld) {
    const NBNumericUserMissing numbers;
    const NBStringUserMissing strings;
    NBBinningEncoder encoder({5.0});
    EXPECT_TRUE(encoder.SetUserMissing(&numbers));
    EXPECT_FALSE(encoder.SetUserMissing(&strings));
    EXPECT_EQ(encoder.GetUserMissing(), &numbers);
    EXPECT_TRUE(encoder.SetUserMissing(nullptr));
    EXPECT_EQ(encoder.GetUserMissing(), nullptr);
}

TEST(NBBinningEncoder, ACloneSharesTheBorrowedDefinition) {
    const NBNumericUserMissing definition;
    NBBinningEncoder encoder({5.0});
    encoder.SetUserMissing(&definition);
    EXPECT_EQ(encoder.Clone()->GetUserMissing(), &definition);
}

TEST(NBBinningEncoder, HasNoCategoryLabels) {
    NBBinningEncoder encoder({5.0});
    encoder.SetCategoryLabels({"a", "b"});
    encoder.SetCategoryLabel(0, "a");
    EXPECT_EQ(encoder.GetCategoryLabels(), nullptr);
}

TEST(NBBinningEncoder, SetCutpointsCountsAsExplicit) {
    NBBinningEncoder encoder(0.0, 10.0, 2);
    encoder.SetCutpoints({1.0, 2.0, 3.0});
    EXPECT_EQ(encoder.GetNumCodes(), 4);
    EXPECT_TRUE(encoder.IsExplicit());
}

struct CollapseCase {
    const char* fName;
    std::vector<double> fRowSums;
    std::vector<double> fExpected;  // from cutpoints 10, 22, 34, 48 or the first of them
};

class Collapse : public testing::TestWithParam<CollapseCase> {};

/// A table whose rows have these sums over two target categories.
NBayesInputBase MakeTable(const std::vector<double>& rowSums) {
    NBayesInputBase::Matrix counts;
    for (const double sum : rowSums) counts.push_back({sum * 0.25, sum * 0.75});
    NBayesInputBase table;
    table.SetCounts(0.1, counts);
    return table;
}

std::vector<double> CutpointsFor(std::size_t bins) {
    const std::vector<double> all{10.0, 22.0, 34.0, 48.0};
    return {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(bins - 1)};
}

TEST_P(Collapse, GivesTheseCutpoints) {
    const auto& test = GetParam();
    const NBBinningEncoder encoder(CutpointsFor(test.fRowSums.size()));
    const auto copy = encoder.MakeCollapsedCopy(MakeTable(test.fRowSums));
    EXPECT_EQ(copy->GetCutpoints(), test.fExpected);
    EXPECT_EQ(copy->GetNumCodes(), encoder.GetNumCodes());
    EXPECT_TRUE(copy->IsExplicit());
    EXPECT_EQ(encoder.GetCutpoints(), CutpointsFor(test.fRowSums.size()));
}

INSTANTIATE_TEST_SUITE_P(
    NBBinningEncoder, Collapse,
    testing::Values(
        CollapseCase{"AGapIsCutInTheMiddle", {3, 0, 0, 4, 5}, {22.0, 22.0, 22.0, 48.0}},
        CollapseCase{"EmptyFirstBinsGoToTheFirstFilled", {0, 0, 2, 3}, {kLowest, kLowest, 34.0}},
        CollapseCase{"EmptyLastBinsGoToTheLastFilled", {2, 3, 0, 0}, {10.0, kHighest, kHighest}},
        CollapseCase{"OneEmptyLastBin", {2, 3, 1, 0}, {10.0, 22.0, kHighest}},
        CollapseCase{"OneFilledRowChangesNothing", {0, 3, 0, 0}, {10.0, 22.0, 34.0}},
        CollapseCase{"AllFilledRowsChangeNothing", {1, 3, 2, 1}, {10.0, 22.0, 34.0}},
        CollapseCase{"NoFilledRowChangesNothing", {0, 0, 0}, {10.0, 22.0}},
        CollapseCase{"AGapUpToTheLastFilledBin", {3, 0, 0, 0, 5}, {29.0, 29.0, 29.0, 29.0}},
        CollapseCase{"TwoGaps", {1, 0, 1, 0, 1}, {16.0, 16.0, 41.0, 41.0}},
        CollapseCase{
            "EmptyAtBothEndsAndBetween", {0, 1, 0, 1, 0}, {kLowest, 28.0, 28.0, kHighest}}),
    testsupport::CaseName());

TEST(NBBinningEncoder, MidpointsOfTwoGapsComeFromTheUnchangedCutpoints) {
    // Had the first gap's midpoint 16 been used, the second would be (16 + 48) / 2.
    const NBBinningEncoder encoder({10.0, 22.0, 34.0, 48.0});
    const auto copy = encoder.MakeCollapsedCopy(MakeTable({1, 0, 1, 0, 1}));
    EXPECT_EQ(copy->GetCutpoints()[2], (34.0 + 48.0) * 0.5);
}

TEST(NBBinningEncoder, ClosedBinsAreNeverReached) {
    const NBBinningEncoder encoder(0.0, 50.0, 5);
    const auto copy = encoder.MakeCollapsedCopy(MakeTable({0, 1, 0, 0, 2}));
    for (double value = -60.0; value <= 110.0; value += 0.25) {
        const double code = copy->Encode(value);
        EXPECT_TRUE(code == 1.0 || code == 4.0) << value;
    }
}

TEST(NBBinningEncoder, AValueOnASharedCutpointBelongsToTheLowestBin) {
    const NBBinningEncoder encoder({1.0, 4.0, 4.0, 4.0, 4.0, 9.0});
    EXPECT_EQ(encoder.Encode(1.0), 0.0);
    EXPECT_EQ(encoder.Encode(std::nextafter(4.0, 0.0)), 1.0);
    EXPECT_EQ(encoder.Encode(4.0), 1.0);
    EXPECT_EQ(encoder.Encode(std::nextafter(4.0, 9.0)), 5.0);
    EXPECT_EQ(encoder.Encode(9.0), 5.0);
    EXPECT_EQ(encoder.Encode(10.0), 6.0);
}

TEST(NBBinningEncoder, AValueOnTheCutpointOfAGapBelongsToTheBinBelowTheGap) {
    // Whole numbers 0 to 3 and 6 to 10 in ten bins: nothing above 3 up to 5, the middle is 4.
    const NBBinningEncoder encoder(0.0, 10.0, 10);
    const auto copy = encoder.MakeCollapsedCopy(MakeTable({2, 1, 1, 0, 0, 1, 1, 1, 1, 1}));
    EXPECT_EQ(copy->GetCutpoints(),
              (std::vector<double>{1.0, 2.0, 4.0, 4.0, 4.0, 6.0, 7.0, 8.0, 9.0}));
    EXPECT_EQ(copy->Encode(4.0), 2.0);
    EXPECT_EQ(copy->Encode(std::nextafter(4.0, 5.0)), 5.0);
}

TEST(NBBinningEncoder, CutpointsThatCoincideAfterRoundingLeaveTheBinsBetweenThemUnreached) {
    // Four neighbouring doubles in ten bins.
    const double low = 1e15;
    std::vector<double> values = {low};
    while (values.size() < 4) values.push_back(std::nextafter(values.back(), 2e15));
    const NBBinningEncoder encoder(values.front(), values.back(), 10);
    const std::vector<double>& cutpoints = encoder.GetCutpoints();
    ASSERT_NE(std::adjacent_find(cutpoints.begin(), cutpoints.end()), cutpoints.end());
    for (const double value : values) {
        const auto bin = static_cast<std::size_t>(encoder.Encode(value));
        EXPECT_TRUE(bin == 0 || cutpoints[bin - 1] < value) << bin;
        EXPECT_TRUE(bin == cutpoints.size() || value <= cutpoints[bin]) << bin;
        EXPECT_TRUE(encoder.IsReachable(bin));
    }
}

TEST(NBBinningEncoder, EqualValuesAllFallIntoTheFirstBin) {
    const NBBinningEncoder encoder(5.0, 5.0, 10);
    EXPECT_EQ(encoder.Encode(5.0), 0.0);
    EXPECT_EQ(encoder.Encode(4.0), 0.0);
    EXPECT_EQ(encoder.Encode(6.0), 9.0);
}

TEST(NBBinningEncoder, InfinitiesFallIntoTheOutermostBinsThatAreOpen) {
    const double infinity = std::numeric_limits<double>::infinity();
    const NBBinningEncoder encoder(0.0, 50.0, 5);
    EXPECT_EQ(encoder.Encode(-infinity), 0.0);
    EXPECT_EQ(encoder.Encode(infinity), 4.0);
    const auto copy = encoder.MakeCollapsedCopy(MakeTable({0, 1, 0, 2, 0}));
    for (const double value : {-infinity, std::nextafter(kLowest, 0.0)}) {
        EXPECT_EQ(copy->Encode(value), 1.0) << value;
    }
    for (const double value : {infinity, kHighest}) EXPECT_EQ(copy->Encode(value), 3.0) << value;
}

TEST(NBBinningEncoder, ReachableBinsAreThoseThatSomeValueFallsInto) {
    std::mt19937 random(testsupport::RandomSeed());
    const std::vector<double> places = {kLowest, -2.0, -1.0, 0.0, 1.0, 2.0, kHighest};
    for (int round = 0; round < 500; ++round) {
        std::vector<double> cutpoints(1 + random() % 8);
        for (double& cutpoint : cutpoints) cutpoint = places[random() % places.size()];
        std::sort(cutpoints.begin(), cutpoints.end());
        const NBBinningEncoder encoder(cutpoints);
        std::vector<bool> reached(cutpoints.size() + 1, false);
        for (const double place : places) {
            for (const double value :
                 {place, std::nextafter(place, kLowest), std::nextafter(place, kHighest)}) {
                if (value == MCMV::gMissingValue) continue;
                reached[static_cast<std::size_t>(encoder.Encode(value))] = true;
            }
        }
        for (std::size_t bin = 0; bin < reached.size(); ++bin) {
            EXPECT_EQ(encoder.IsReachable(bin), reached[bin]) << bin << " in round " << round;
        }
    }
}

TEST(NBBinningEncoder, AfterTrainingNoValueReachesABinWithoutRecords) {
    std::mt19937 random(testsupport::RandomSeed());
    for (int round = 0; round < 500; ++round) {
        std::vector<double> rowSums(2 + random() % 9);
        for (double& sum : rowSums) sum = random() % 3 == 0 ? 1.0 : 0.0;
        if (std::count(rowSums.begin(), rowSums.end(), 1.0) < 2) continue;
        const double low = static_cast<double>(random() % 20) - 10.0;
        const NBBinningEncoder encoder(low, low + static_cast<double>(1 + random() % 20),
                                       static_cast<std::int32_t>(rowSums.size()));
        const auto copy = encoder.MakeCollapsedCopy(MakeTable(rowSums));
        const double infinity = std::numeric_limits<double>::infinity();
        std::vector<double> values = {-infinity, std::nextafter(kLowest, 0.0), kHighest, infinity};
        for (const auto& cutpoints : {encoder.GetCutpoints(), copy->GetCutpoints()}) {
            for (const double cutpoint : cutpoints) {
                values.insert(values.end(), {std::nextafter(cutpoint, -infinity), cutpoint,
                                             std::nextafter(cutpoint, infinity)});
            }
        }
        for (const double value : values) {
            if (value == MCMV::gMissingValue) continue;
            const auto bin = static_cast<std::size_t>(copy->Encode(value));
            EXPECT_EQ(rowSums[bin], 1.0) << value << " in round " << round;
        }
    }
}

TEST(NBBinningEncoder, TheMiddleOfAGapBetweenTheLargestNumbersIsANumber) {
    const NBBinningEncoder encoder(std::vector<double>{0x1.8p1023, 0x1.9p1023, 0x1.cp1023});
    const auto copy = encoder.MakeCollapsedCopy(MakeTable({1, 0, 0, 1}));
    EXPECT_EQ(copy->GetCutpoints(), std::vector<double>(3, 0x1.ap1023));
}

TEST(NBBinningEncoder, ATableOfOtherBinsChangesNothing) {
    const NBBinningEncoder encoder({10.0, 22.0});
    EXPECT_EQ(encoder.MakeCollapsedCopy(MakeTable({1, 0, 0, 0, 1}))->GetCutpoints(),
              encoder.GetCutpoints());
}

TEST(NBBinningEncoder, ACollapsedCopyKeepsTheDefinition) {
    const NBNumericUserMissing definition;
    NBBinningEncoder encoder({10.0, 22.0});
    encoder.SetUserMissing(&definition);
    EXPECT_EQ(encoder.MakeCollapsedCopy(MakeTable({1, 0, 1}))->GetUserMissing(), &definition);
}

std::string GoodBytes() { return "BIEN" + Bytes(3) + Bytes(1) + Bytes(1.5) + Bytes(4.0); }

TEST(NBBinningEncoder, BinaryHasThePublishedLayout) {
    EXPECT_EQ(savedforms::Binary(NBBinningEncoder({1.5, 4.0})), GoodBytes());
    NBBinningEncoder restored;
    EXPECT_TRUE(savedforms::FromBinary(restored, GoodBytes()));
    EXPECT_EQ(restored.GetCutpoints(), (std::vector<double>{1.5, 4.0}));
    EXPECT_TRUE(restored.IsExplicit());
}

TEST(NBBinningEncoder, OnlyAFlagOfOneMeansExplicit) {
    NBBinningEncoder restored;
    EXPECT_TRUE(savedforms::FromBinary(restored, savedforms::With(GoodBytes(), 8, 2)));
    EXPECT_FALSE(restored.IsExplicit());
}

TEST(NBBinningEncoder, BinaryRefusesFewerThanTwoBins) {
    for (const std::int32_t bins : {1, 0, -1}) {
        NBBinningEncoder encoder;
        savedforms::ExpectBinaryFails(encoder, "BIEN" + Bytes(bins) + Bytes(0),
                                      "Error reading NBBinningEncoder!\n");
    }
}

TEST(NBBinningEncoder, XMLAcceptsNoBinsAndOneBin) {
    for (const std::int32_t bins : {0, 1}) {
        NBBinningEncoder restored({3.0});
        EXPECT_TRUE(savedforms::FromXML(restored, "<Obj name=\"NBBinningEncoder\"><Int value=\"" +
                                                      std::to_string(bins) +
                                                      "\"/><Int value=\"0\"/></Obj>"));
        EXPECT_EQ(restored.GetNumCodes(), bins);
        EXPECT_TRUE(restored.GetCutpoints().empty());
    }
}

TEST(NBBinningEncoder, XMLRefusesANegativeNumberOfBins) {
    NBBinningEncoder encoder;
    savedforms::ExpectXMLFails(
        encoder, "<Obj name=\"NBBinningEncoder\"><Int value=\"-1\"/><Int value=\"0\"/></Obj>",
        "Failure reading NBBinningEncoder from XML!\n");
}

TEST(NBBinningEncoder, XMLRoundTrips) {
    const std::string text = savedforms::XML(NBBinningEncoder({1.5, 4.0}));
    EXPECT_EQ(text,
              "<Obj name=\"NBBinningEncoder\">\n <Int value=\"3\"/>\n <Int value=\"1\"/>\n"
              " <Double value=\"1.5\"/>\n <Double value=\"4\"/>\n</Obj>\n");
    NBBinningEncoder restored;
    EXPECT_TRUE(savedforms::FromXML(restored, text));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
}

TEST(NBBinningEncoder, AWrongTagAndAShortStreamFail) {
    NBBinningEncoder encoder;
    savedforms::ExpectBinaryFails(encoder, savedforms::Replaced(GoodBytes(), "BIEN", "BIEM"),
                                  "Error reading NBBinningEncoder!\n");
    savedforms::ExpectBinaryFails(encoder, savedforms::With(GoodBytes(), 4, 2147483647),
                                  "Error reading NBBinningEncoder!\n");
}

TEST(NBBinningEncoder, DisplaysSevenCutpointsToALine) {
    NBNumericUserMissing definition;
    NBBinningEncoder encoder({1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0});
    encoder.SetUserMissing(&definition);
    EXPECT_EQ(savedforms::Displayed(encoder),
              "\tNBBinningEncoder: number of bins = 9\n\t\tCutpoints: 1 2 3 4 5 6 7\n8\n"
              "\t\tCutpoints set explicitly? Yes.\n"
              "\t\tUser-missing values for this encoder:\n\t\t"
              "Start of NBNumericUserMissing display\nDiscrete missing values:\n"
              "End of NBNumericUserMissing display\n");
}

}  // namespace
