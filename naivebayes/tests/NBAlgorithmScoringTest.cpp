#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/tests/EngineFixture.h"
#include "tests/support/CaseName.h"
#include "tests/support/RandomSeed.h"

using namespace enginetest;

namespace {

const Rows kRows{{0, 0, 0}, {0, 0, 1}, {0, 1, 2}, {1, 1, 2}, {1, 1, 2}};

std::unique_ptr<INBAlgorithm> Model() { return Built(CategoricalList(2, {2, 3}), kRows); }

MCCommon::Record Of(std::vector<double> values) { return MCCommon::Record(std::move(values)); }

/// Posteriors from the definition, by logarithms in long double. Rows: target first, no weights.
std::vector<double> PosteriorsOf(const Rows& rows, std::int32_t targets,
                                 const std::vector<std::int32_t>& categories,
                                 const std::vector<double>& record) {
    const long double total = static_cast<long double>(rows.size());
    const long double small = 1 / total;
    std::vector<long double> logs;
    std::int32_t filledTargets = 0;
    for (std::int32_t k = 0; k < targets; ++k) {
        for (const auto& row : rows) {
            if (row[0] == k) {
                ++filledTargets;
                break;
            }
        }
    }
    for (std::int32_t k = 0; k < targets; ++k) {
        long double weight = 0;
        for (const auto& row : rows) weight += row[0] == k ? 1 : 0;
        long double sum = std::log((weight + small) / (total + filledTargets * small));
        for (std::size_t j = 0; j < categories.size(); ++j) {
            const double code = record[j + 1];
            if (code < 0) continue;
            long double cell = 0;
            long double column = 0;
            std::vector<bool> filled(static_cast<std::size_t>(categories[j]));
            for (const auto& row : rows) {
                if (row[j + 1] < 0) continue;
                filled[static_cast<std::size_t>(row[j + 1])] = true;
                if (row[0] != k) continue;
                column += 1;
                cell += row[j + 1] == code ? 1 : 0;
            }
            const auto rowsFilled = std::count(filled.begin(), filled.end(), true);
            sum +=
                std::log((cell + small) / (column + static_cast<long double>(rowsFilled) * small));
        }
        logs.push_back(sum);
    }
    long double all = 0;
    for (const long double value : logs) all += std::exp(value);
    std::vector<double> posteriors;
    for (const long double value : logs) {
        posteriors.push_back(static_cast<double>(std::exp(value) / all));
    }
    return posteriors;
}

/// A model whose target has these weights and priors: those of a saved state are overwritten.
std::unique_ptr<INBAlgorithm> ModelWithPriors(const std::vector<double>& weights,
                                              const std::vector<double>& priors) {
    Rows rows;
    for (std::size_t k = 0; k < weights.size(); ++k) {
        rows.push_back({static_cast<double>(k), 0});
        rows.push_back({static_cast<double>(k), 1});
    }
    const auto targets = static_cast<std::int32_t>(weights.size());
    std::string bytes = SavedBinary(*Built(CategoricalList(targets, {2}), rows));
    // Behind "NBOUT", index, categories and count: weight, 32-bit count and prior a category.
    const std::size_t entries = bytes.find("NBOUT") + 5 + 12;
    for (std::size_t k = 0; k < weights.size(); ++k) {
        std::memcpy(bytes.data() + entries + 20 * k, &weights[k], 8);
        std::memcpy(bytes.data() + entries + 20 * k + 12, &priors[k], 8);
    }
    return RestoredBinary(bytes);
}

struct TieCase {
    const char* fName;
    std::vector<double> fWeights;
    std::vector<double> fPriors;
    std::int32_t fWinner;
};

class NBAlgorithmTies : public testing::TestWithParam<TieCase> {};

}  // namespace

TEST_P(NBAlgorithmTies, GoToTheirWinner) {
    // Without a valid predictor the priors are the result.
    NBOutput output;
    const auto engine = ModelWithPriors(GetParam().fWeights, GetParam().fPriors);
    EXPECT_EQ(engine->ScoreRecord(Of({0, -1}), output), NBStatus(NBCode::kNoValidPredictor, true));
    EXPECT_EQ(output.GetWinner(), GetParam().fWinner);
}

INSTANTIATE_TEST_SUITE_P(
    Rule, NBAlgorithmTies,
    testing::Values(TieCase{"NoTie", {1, 1, 1}, {0.2, 0.5, 0.3}, 1},
                    TieCase{"OfTheFirstAndOneOtherGoesToTheFirst", {1, 9}, {0.5, 0.5}, 0},
                    TieCase{"OfTheFirstAndTheLastGoesToTheFirst", {1, 2, 9}, {0.4, 0.2, 0.4}, 0},
                    TieCase{"OfThreePassesTheSecondOver", {3, 9, 2}, {0.25, 0.25, 0.25}, 0},
                    TieCase{"OfThreeGoesToAHeavierThird", {3, 9, 4}, {0.25, 0.25, 0.25}, 2},
                    TieCase{"OfThreeNeedsAStrictlyHeavierThird", {3, 9, 3}, {0.25, 0.25, 0.25}, 0},
                    TieCase{"AboveTheFirstGoesToTheHeavierLater", {9, 2, 3}, {0.2, 0.4, 0.4}, 2},
                    TieCase{"AboveTheFirstGoesToTheHeavierEarlier", {9, 3, 2}, {0.2, 0.4, 0.4}, 1},
                    TieCase{"OfEqualWeightGoesToTheEarlier", {9, 3, 3}, {0.2, 0.4, 0.4}, 1},
                    TieCase{"ThatIsBeatenLaterIsForgotten", {9, 1, 8, 2}, {0.1, 0.2, 0.2, 0.5}, 3},
                    TieCase{"OfFourGoesToTheHeaviestBehindTheSecond",
                            {1, 9, 3, 4},
                            {0.25, 0.25, 0.25, 0.25},
                            3}),
    testsupport::CaseName());

TEST(NBAlgorithmScoring, APosteriorIsTheProductOfPriorAndProbabilities) {
    // N = 5. Priors (3.2, 2.2) / 5.4. First predictor, code 1, columns 3 and 2: 1.2 / 3.4 and
    // 2.2 / 2.4. Second, code 2, three filled rows: 1.2 / 3.6 and 2.2 / 2.6.
    const double first = 3.2 / 5.4 * (1.2 / 3.4) * (1.2 / 3.6);
    const double second = 2.2 / 5.4 * (2.2 / 2.4) * (2.2 / 2.6);
    NBOutput output;
    const auto engine = Model();
    EXPECT_EQ(engine->ScoreRecord(Of({-1, 1, 2}), output), NBStatus());
    EXPECT_EQ(output.GetWinner(), 1);
    EXPECT_NEAR(output.GetValues()[0], first / (first + second), 1e-15);
    EXPECT_NEAR(output.GetValues()[1], second / (first + second), 1e-15);
    EXPECT_EQ(output.GetMaxValue(), output.GetValues()[1]);
    // A record of inputs only says the same.
    NBOutput inputsOnly;
    EXPECT_EQ(engine->ScoreInputRecord(Of({1, 2}), inputsOnly), NBStatus());
    EXPECT_EQ(inputsOnly.GetValues(), output.GetValues());
}

TEST(NBAlgorithmScoring, PosteriorsAreThoseOfTheDefinitionOnRandomData) {
    std::mt19937 random(testsupport::RandomSeed());
    for (int set = 0; set < 20; ++set) {
        const std::vector<std::int32_t> categories{2, 3, 5, 4};
        Rows rows = RandomRows(random, 40, 3, categories);
        // Records without a valid predictor are no training records.
        std::erase_if(rows, [](const std::vector<double>& row) {
            return std::all_of(row.begin() + 1, row.end(), [](double code) { return code < 0; });
        });
        const auto engine = Create(CategoricalList(3, categories));
        ASSERT_FALSE(Build(*engine, rows).IsError());
        if (engine->GetNumInputVars() < 4) continue;  // a category short by chance
        for (const auto& row : RandomRows(random, 30, 3, categories)) {
            NBOutput output;
            const NBStatus status = engine->ScoreRecord(MCCommon::Record(row), output);
            ASSERT_TRUE(status.IsOK() || status.GetCode() == NBCode::kNoValidPredictor);
            const auto expected = PosteriorsOf(rows, 3, categories, row);
            for (std::size_t k = 0; k < 3; ++k) {
                ASSERT_NEAR(output.GetValues()[k], expected[k], 1e-13);
            }
        }
    }
}

TEST(NBAlgorithmScoring, WithoutAValidPredictorTheResultIsThePriorsWithAWarning) {
    NBOutput output;
    EXPECT_EQ(Model()->ScoreRecord(Of({1, -1, kMissing}), output),
              NBStatus(NBCode::kNoValidPredictor, true));
    EXPECT_EQ(output.GetValues(), (std::vector<double>{3.2 / 5.4, 2.2 / 5.4}));
    EXPECT_EQ(output.GetWinner(), 0);
}

TEST(NBAlgorithmScoring, ARecordOfInputsWithoutAValidOneIsNoWarning) {
    NBOutput output;
    EXPECT_EQ(Model()->ScoreInputRecord(Of({-1, kMissing}), output), NBStatus());
    EXPECT_NEAR(output.GetValues()[0], 3.2 / 5.4, 1e-15);
}

TEST(NBAlgorithmScoring, ACodeOutOfRangeEndsTheScoring) {
    NBOutput output;
    NBStatus expected = With(NBStatus(NBCode::kCodeOutOfRange, true), 2, 3, 2);
    expected.SetDoubleArg(1, 3.0);
    EXPECT_EQ(Model()->ScoreRecord(Of({0, 1, 3}), output), expected);
    EXPECT_EQ(output.GetWinner(), -1) << "no output";
}

TEST(NBAlgorithmScoring, AFractionalCodeStaysWithinItsTable) {
    // It truncates to the last category and would round beyond it.
    NBOutput output;
    NBOutput whole;
    const auto engine = Model();
    EXPECT_EQ(engine->ScoreRecord(Of({0, 1, 2.7}), output), NBStatus());
    EXPECT_EQ(engine->ScoreRecord(Of({0, 1, 2}), whole), NBStatus());
    EXPECT_EQ(output.GetValues(), whole.GetValues());
}

TEST(NBAlgorithmScoring, ARecordOfAnotherLengthIsRefused) {
    NBOutput output;
    const auto engine = Model();
    EXPECT_EQ(engine->ScoreRecord(Of({0, 1}), output), With(Error(NBCode::kRecordLength), 3, 2));
    EXPECT_EQ(engine->ScoreInputRecord(Of({0, 1, 2}), output),
              With(Error(NBCode::kRecordLength), 2, 3));
    EXPECT_EQ(engine->TallyRecord(Of({0, 1, 2, 3}), output, true),
              With(Error(NBCode::kRecordLength), 3, 4));
    EXPECT_TRUE(engine->GetStatus().IsOK()) << "the engine goes on";
}

TEST(NBAlgorithmScoring, WithoutAModelNothingIsScored) {
    const auto engine = Create(CategoricalList(2, {2, 3}));
    NBOutput output;
    NBOutputStatistics table;
    Source source(kRows);
    EXPECT_EQ(engine->ScoreRecord(Of({0, 0, 0}), output), Error(NBCode::kNotBuilt));
    EXPECT_EQ(engine->ScoreInputRecord(Of({0, 0}), output), Error(NBCode::kNotBuilt));
    EXPECT_EQ(engine->TallyRecord(Of({0, 0, 0}), output, true), Error(NBCode::kNotBuilt));
    EXPECT_EQ(engine->ClassifyRecords(source, table, -1), Error(NBCode::kNotBuilt));
}

TEST(NBAlgorithmScoring, AnInterruptEndsTheScoring) {
    const auto engine = Model();
    NBOutput output;
    NBOutputStatistics table;
    Source source(kRows);
    engine->Interrupt();
    EXPECT_EQ(engine->ScoreRecord(Of({0, 0, 0}), output), Error(NBCode::kInterrupted));
    EXPECT_EQ(engine->ScoreInputRecord(Of({0, 0}), output), Error(NBCode::kInterrupted));
    EXPECT_EQ(engine->TallyRecord(Of({0, 0, 0}), output, true), Error(NBCode::kInterrupted));
    EXPECT_EQ(engine->ClassifyRecords(source, table, -1), Error(NBCode::kInterrupted));
    EXPECT_EQ(engine->GetTrainStatistics(), nullptr);
}

TEST(NBAlgorithmScoring, AnInterruptAtTheEndIsToldWithTheResult) {
    const auto engine = Model();
    StopAtPoll stop(1);
    engine->SetInterruptSource(&stop);
    NBOutput output;
    EXPECT_EQ(engine->ScoreRecord(Of({0, 0, 0}), output), Error(NBCode::kInterrupted));
    EXPECT_EQ(output.GetWinner(), 0);
}

TEST(NBAlgorithmScoring, ProductsThatUnderflowGiveNotANumberAndTheFirstCategory) {
    // Each predictor has a category that no training record has: a factor below 0.01.
    const std::vector<std::int32_t> categories(200, 3);
    Rows rows;
    for (int i = 0; i < 20; ++i) {
        std::vector<double> row{i < 5 ? 0.0 : 1.0};
        for (std::size_t j = 0; j < categories.size(); ++j) row.push_back(i % 2);
        rows.push_back(row);
    }
    const auto engine = Built(CategoricalList(2, categories), rows);
    NBOutput output;
    EXPECT_EQ(engine->ScoreRecord(Of(std::vector<double>(201, 2.0)), output), NBStatus());
    EXPECT_TRUE(std::isnan(output.GetValues()[0]));
    EXPECT_TRUE(std::isnan(output.GetValues()[1]));
    EXPECT_EQ(output.GetWinner(), 0);
}

TEST(NBAlgorithmScoring, WithOneTargetCategoryEveryRecordWinsIt) {
    // The factory refuses such a target as constant; a state may hold one.
    NBAlgorithm engine(NaiveBayesSettings(), CategoricalList(1, {2}));
    EXPECT_EQ(Build(engine, {{0, 0}, {0, 1}}), NBStatus());
    const auto restored = RestoredBinary(SavedBinary(engine));
    Source source(Rows{{0, 0}, {0, 1}, {0, 1}});
    NBOutputStatistics table;
    EXPECT_EQ(restored->ClassifyRecords(source, table, -1), NBStatus());
    EXPECT_EQ(table.GetCell(0, 0), 3.0);
    EXPECT_EQ(table.GetErrorPercent(), 0.0);
}

TEST(NBAlgorithmTally, TrainingAndTestRecordsAreCountedApart) {
    const auto engine = Model();
    EXPECT_EQ(engine->GetTrainStatistics(), nullptr);
    EXPECT_EQ(engine->GetTestStatistics(), nullptr);
    NBOutput output;
    for (const auto& row : kRows) {
        EXPECT_EQ(engine->TallyRecord(MCCommon::Record(row), output, true), NBStatus());
    }
    EXPECT_EQ(engine->GetTestStatistics(), nullptr);
    EXPECT_EQ(engine->TallyRecord(Of({1, 0, 0}), output, false), NBStatus());
    const NBOutputStatistics& train = *engine->GetTrainStatistics();
    EXPECT_EQ(train.GetMatrix(), (std::vector<std::vector<double>>{{2, 1}, {0, 2}}));
    EXPECT_EQ(train.GetTotalWeight(), 5.0);
    EXPECT_NEAR(train.GetErrorPercent(), 20.0, 1e-12);
    EXPECT_EQ(train.GetCell(2, 0), -1.0);
    EXPECT_EQ(engine->GetTestStatistics()->GetMatrix(),
              (std::vector<std::vector<double>>{{0, 0}, {1, 0}}));
    EXPECT_EQ(engine->GetTestStatistics()->GetErrorPercent(), 100.0);
}

TEST(NBAlgorithmTally, ATargetOutOfRangeIsScoredButNotCounted) {
    for (const double target : {2.0, 1.5, -0.6, -1.0, 1e300, kMissing}) {
        const auto engine = Model();
        NBOutput output;
        EXPECT_EQ(engine->TallyRecord(Of({target, 0, 0}), output, true), NBStatus());
        EXPECT_EQ(output.GetWinner(), 0);
        EXPECT_EQ(engine->GetTrainStatistics(), nullptr) << target;
    }
}

TEST(NBAlgorithmTally, ATargetJustBelowZeroCountsForTheFirstCategory) {
    const auto engine = Model();
    NBOutput output;
    EXPECT_EQ(engine->TallyRecord(Of({-0.5, 0, 0}), output, true), NBStatus());
    ASSERT_NE(engine->GetTrainStatistics(), nullptr);
    EXPECT_EQ(engine->GetTrainStatistics()->GetCell(0, 0), 1.0);
}

TEST(NBAlgorithmTally, RecordsWithWarningsAreNotCounted) {
    const auto engine = Model();
    NBOutput output;
    EXPECT_EQ(engine->TallyRecord(Of({0, -1, -1}), output, true).GetCode(),
              NBCode::kNoValidPredictor);
    EXPECT_EQ(engine->TallyRecord(Of({0, 5, 0}), output, true).GetCode(), NBCode::kCodeOutOfRange);
    EXPECT_EQ(engine->GetTrainStatistics(), nullptr);
}

TEST(NBAlgorithmTally, WeightsAreRoundedAndRecordsWithoutOneAreNotCounted) {
    NBVarList list = CategoricalList(2, {2});
    list.AddWeightVar("w", "", 1);
    const auto engine = Built(list, {{0, 0, 2}, {1, 1, 2}});
    NBOutput output;
    EXPECT_EQ(engine->TallyRecord(Of({0, 0, 2.6}), output, true), NBStatus());
    EXPECT_EQ(engine->TallyRecord(Of({0, 1, 1}), output, true), NBStatus());
    EXPECT_EQ(engine->TallyRecord(Of({0, 0, 0.4}), output, true), NBStatus());
    EXPECT_EQ(engine->TallyRecord(Of({0, 0, kMissing}), output, true), NBStatus());
    EXPECT_EQ(engine->GetTrainStatistics()->GetMatrix(),
              (std::vector<std::vector<double>>{{3, 1}, {0, 0}}));
    EXPECT_NEAR(engine->GetTrainStatistics()->GetErrorPercent(), 25.0, 1e-12);
}

TEST(NBAlgorithmClassify, RecordsAreClassified) {
    const auto engine = Model();
    Source source(kRows);
    NBOutputStatistics table;
    EXPECT_EQ(engine->ClassifyRecords(source, table, -1), NBStatus());
    EXPECT_EQ(table.GetMatrix(), (std::vector<std::vector<double>>{{2, 1}, {0, 2}}));
    EXPECT_EQ(table.GetTotalWeight(), 5.0);
    EXPECT_EQ(table.GetErrorPercent(), 20.0);
}

TEST(NBAlgorithmClassify, TheLimitIsOfUsedRecords) {
    const auto engine = Model();
    Source source(
        Rows{{0, -1, -1}, {0, 7, 0}, {-1, 0, 0}, {2, 0, 0}, {0, 0, 0}, {0, 0, 1}, {1, 1, 2}});
    NBOutputStatistics table;
    EXPECT_EQ(engine->ClassifyRecords(source, table, 2), NBStatus());
    EXPECT_EQ(table.GetTotalWeight(), 2.0);
    EXPECT_EQ(source.fNext, 6U);
}

TEST(NBAlgorithmClassify, ANullRecordEndsThePass) {
    const auto engine = Model();
    Source source(Rows{{0, 0, 0}, {}, {0, 0, 0}});
    NBOutputStatistics table;
    EXPECT_EQ(engine->ClassifyRecords(source, table, -1), NBStatus());
    EXPECT_EQ(table.GetTotalWeight(), 1.0);
}

TEST(NBAlgorithmClassify, WithoutAUsableRecordTheErrorIsZero) {
    const auto engine = Model();
    Source source(Rows{{-1, 0, 0}});
    NBOutputStatistics table;
    EXPECT_EQ(engine->ClassifyRecords(source, table, -1), NBStatus());
    EXPECT_EQ(table.GetErrorPercent(), 0.0);
    EXPECT_EQ(table.GetMatrix(), (std::vector<std::vector<double>>{{0, 0}, {0, 0}}));
}

TEST(NBAlgorithmClassify, AFractionalTargetIsTruncatedForItsCellAndRoundedForTheError) {
    const auto engine = Model();
    Source source(Rows{{0.6, 0, 0}});
    NBOutputStatistics table;
    EXPECT_EQ(engine->ClassifyRecords(source, table, -1), NBStatus());
    EXPECT_EQ(table.GetCell(0, 0), 1.0);
    EXPECT_EQ(table.GetErrorPercent(), 100.0);
}

TEST(NBAlgorithmClassify, RefusesWhatItCannotUse) {
    const auto engine = Model();
    Source source(kRows);
    Source empty({});
    Source shortRecords(Rows{{0, 0}});
    NBOutputStatistics table;
    EXPECT_EQ(engine->ClassifyRecords(empty, table, -1), Error(NBCode::kNoUsableRecords));
    EXPECT_EQ(engine->ClassifyRecords(source, table, 0), Error(NBCode::kNoRecordCount));
    EXPECT_EQ(engine->ClassifyRecords(shortRecords, table, -1),
              With(Error(NBCode::kRecordLength), 3, 2));
}

TEST(NBAlgorithmClassify, AnInterruptEndsThePass) {
    const auto engine = Model();
    StopAtPoll stop(3);
    engine->SetInterruptSource(&stop);
    Source source(kRows);
    NBOutputStatistics table;
    EXPECT_EQ(engine->ClassifyRecords(source, table, -1), Error(NBCode::kInterrupted));
    EXPECT_EQ(source.fNext, 2U);
}
