#include "naivebayes/NBRecordSimulator.h"

#include <gtest/gtest.h>

#include <vector>

#include "naivebayes/MCRandom.h"
#include "naivebayes/tests/SearchFixture.h"

namespace {

/// Gives a list of numbers, over and over.
class ListedNumbers : public MCCommon::MCRandom {
 public:
    explicit ListedNumbers(std::vector<double> numbers) : fvNumbers(std::move(numbers)) {}
    double GetRandom() override { return fvNumbers[fNumDrawn++ % fvNumbers.size()]; }
    std::size_t fNumDrawn = 0;

 private:
    std::vector<double> fvNumbers;
};

/// Target weights 6 and 4; counts (3 1, 2 1, 1 2) and (4 1, 2 3), predictor categories by target.
SearchData TenRecords() {
    SearchData data;
    data.fPredictors = {{3, 2}, {2, 2}};
    const auto add = [&data](std::int32_t target, std::int32_t first, std::int32_t second) {
        data.fRows.push_back({target, 1.0, {first, second}});
    };
    add(0, 0, 0);
    add(0, 0, 0);
    add(0, 0, 0);
    add(0, 1, 0);
    add(0, 1, 1);
    add(0, 2, 1);
    add(1, 0, 0);
    add(1, 1, 1);
    add(1, 2, 1);
    add(1, 2, 1);
    return data;
}

std::vector<double> Values(const MCCommon::Record& record) {
    std::vector<double> values;
    for (std::int32_t i = 0; i < record.Size(); ++i) values.push_back(record[i]);
    return values;
}

std::vector<double> DrawWith(std::vector<double> numbers) {
    TrainedTables trained(TenRecords());
    ListedNumbers source(std::move(numbers));
    MCRandom random(1, true, true, &source);
    NBRecordSimulator simulator(trained.fvInputs, trained.fOutput, random);
    return Values(simulator.Draw());
}

// The records below were drawn with NumPy 2: raw 32 bits r of numpy.random.MT19937 seeded by
// _legacy_seeding(876543), u = (r + 0.5) / 2**32, t = 0.1, priors (t + w) / (10 + 2 t), cells
// (counts + t) / (column sums + rows t), and u inverted category by category.
TEST(NBRecordSimulatorTest, TheDefaultSeedDrawsTheRecordsThatNumPyDraws) {
    TrainedTables trained(TenRecords());
    MCRandom random(NaiveBayesSettings().fSeed, true, true, nullptr);
    NBRecordSimulator simulator(trained.fvInputs, trained.fOutput, random);
    const std::vector<std::vector<double>> expected = {{0, 2, 0}, {0, 0, 1}, {1, 2, 0}, {0, 0, 0},
                                                       {0, 0, 1}, {0, 0, 1}, {0, 0, 0}, {1, 0, 0}};
    for (const std::vector<double>& record : expected) {
        EXPECT_EQ(Values(simulator.Draw()), record);
    }
}

TEST(NBRecordSimulatorTest, TheDefaultSeedGivesTheNumbersThatNumPyGives) {
    MCRandom random(NaiveBayesSettings().fSeed, true, true, nullptr);
    for (const double expected : {0.25348937197122723, 0.915621223510243, 0.13651889574248344,
                                  0.08354445535223931, 0.14985344663728029, 0.9402843617135659}) {
        EXPECT_EQ(random.GetUniform(), expected);
    }
}

TEST(NBRecordSimulatorTest, ARecordTakesOneNumberForTheTargetAndOneATable) {
    TrainedTables trained(TenRecords());
    ListedNumbers source({0.5});
    MCRandom random(1, true, true, &source);
    NBRecordSimulator simulator(trained.fvInputs, trained.fOutput, random);
    simulator.Draw();
    EXPECT_EQ(source.fNumDrawn, 3U);
    simulator.Draw();
    EXPECT_EQ(source.fNumDrawn, 6U);
}

TEST(NBRecordSimulatorTest, ANumberThatEqualsTheShareStaysInTheCategory) {
    const TrainedTables trained(TenRecords());
    EXPECT_EQ(DrawWith({trained.fOutput.GetPi(0), 0.0, 0.0})[0], 0.0);
}

TEST(NBRecordSimulatorTest, TheTargetSteersTheCodes) {
    // 0.45 of the first predictor: 3.1 / 6.3 given target 0, (1.1 + 1.1) / 4.3 given target 1.
    EXPECT_EQ(DrawWith({0.0, 0.45, 0.0}), (std::vector<double>{0, 0, 0}));
    EXPECT_EQ(DrawWith({0.9, 0.45, 0.0}), (std::vector<double>{1, 1, 0}));
}

TEST(NBRecordSimulatorTest, NumbersBeyondAllSharesFallIntoTheLastCategories) {
    EXPECT_EQ(DrawWith({1.0, 1.0, 1.0}), (std::vector<double>{1, 2, 1}));
    EXPECT_EQ(DrawWith({65536.0}), (std::vector<double>{1, 2, 1}));
}

}  // namespace
