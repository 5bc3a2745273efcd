#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <numeric>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <variant>

#include "featureselect/tests/PredictorSetFixture.h"
#include "featureselect/tests/TableRecords.h"
#include "tests/support/RandomSeed.h"

// The same records in blocks and one by one: the saved states must be equal byte for byte.

namespace {

using testsupport::InBlocks;
using testsupport::OneByOne;
using testsupport::ProgressRecorder;
using RandomColumn = testsupport::TableColumn;
using RandomColumns = testsupport::TableColumns;

/// A data set, its settings and a way of reading it, all drawn at random.
class Drawn {
 public:
    explicit Drawn(std::uint32_t seed) : fEngine(seed) {
        fRows = Pick<std::size_t>({0, 1, 2, 63, 64, 300, 1000, 3000, 3000, 20000});
        const int predictors = fRows > 10000 ? Between(1, 6) : Between(1, 25);
        const bool targetCategorical = Chance(0.6);
        std::vector<bool> categorical;
        for (int predictor = 0; predictor < predictors; ++predictor) {
            categorical.push_back(Chance(0.5));
        }
        fSettings = FSSettings(categorical, targetCategorical);
        fbWithTarget = Chance(0.8);
        if (fbWithTarget && Chance(0.95)) {
            fSettings.SetTargetPosition(Chance(0.1) ? Between(0, predictors + 3) : 0);
        } else {
            fSettings.SetTargetPosition(-1);
        }
        const bool hasTarget = fbWithTarget && fSettings.GetTargetPosition() >= 0;
        const bool hasWeight = Chance(0.6);
        if (hasTarget) fvColumns.push_back(TargetColumn(targetCategorical));
        if (hasWeight) {
            fSettings.SetWeightPosition(Chance(0.1) ? Between(0, predictors + 3)
                                                    : static_cast<int>(fvColumns.size()));
            fSettings.SetWeightConversion(Between(0, 3));
            fWeightColumn = fvColumns.size();
            fvColumns.push_back(WeightColumn());
        }
        for (const bool one : categorical) {
            // Now and then not in the form that goes with the predictor.
            fvColumns.push_back(PredictorColumn(Chance(0.1) ? !one : one));
        }
        if (Chance(0.1)) fvColumns.resize(fvColumns.size() / 2);
        fMaxRecords = Chance(0.7) ? -1 : Between(0, static_cast<int>(fRows));
        fBlockRows = Pick<std::size_t>({1, 7, 64, 100, 1000, 5000, 70000});
        if (fRows * 10 / fBlockRows > 20000) fBlockRows = 64;
        fThreads = Between(0, 3);
        fbListens = Chance(0.4);
        fSettings.SetRecordsToSkip(Pick<std::int32_t>({0, 1, 70, 99, 500, 5000}));
        fCancelAt = Chance(0.5) ? Between(0, 20) : -1;
        DrawSecondPass(hasWeight && !fvColumns.empty());
    }

    struct Result {
        std::vector<std::byte> fState;
        std::string fText;
        std::vector<std::int32_t> fReports;
        std::vector<std::uint32_t> fCodes;
    };

    /// Two passes, as a state that is not empty is added to as well.
    Result Read(bool inBlocks) {
        FSCancelState cancel;
        ProgressRecorder recorder;
        recorder.fOnReport = [&] {
            if (fCancelAt >= 0 && std::ssize(recorder.fvReports) > fCancelAt) cancel.Cancel();
        };
        FSSettings settings = fSettings;
        if (fbListens) settings.SetProgressListener(&recorder);
        FSPredictorSet set(settings, cancel);
        Result result;
        RandomColumns columns = fvColumns;
        bool withTarget = fbWithTarget;
        for (int pass = 0; pass < 2; ++pass) {
            if (pass == 1) {
                if (fbFinishedBefore) static_cast<void>(set.FinishDataPass());
                withTarget = fbWithTarget != fbOtherwiseAgain;
                settings.SetTargetCategorical(settings.IsTargetCategorical() != fbOtherTargetAgain);
                if (fAgainWeights) columns[fWeightColumn] = *fAgainWeights;
            }
            std::unique_ptr<MCCommon::RecordIterator> records;
            if (inBlocks) {
                records = std::make_unique<InBlocks>(columns, fRows, fBlockRows, fThreads);
            } else {
                records = std::make_unique<OneByOne>(columns, fRows);
            }
            const FSStatus status = withTarget ? set.AccumulateRecords(*records, fMaxRecords)
                                               : set.AccumulateForScreening(*records, fMaxRecords);
            result.fCodes.push_back(status.fCode);
        }
        // What isn't saved shows there.
        result.fText = TextOf(set);
        ClearElapsed(set);
        result.fState = testsupport::Save(set);
        result.fReports = recorder.Records();
        return result;
    }

 private:
    bool Chance(double probability) { return std::bernoulli_distribution(probability)(fEngine); }
    int Between(int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(fEngine);
    }
    double Normal() { return std::normal_distribution<double>()(fEngine); }
    template <class T>
    T Pick(std::vector<T> from) {
        return from[static_cast<std::size_t>(Between(0, static_cast<int>(from.size()) - 1))];
    }

    /// What the second pass does otherwise: with the target or without it, a target of the other
    /// kind, other weights.
    void DrawSecondPass(bool hasWeight) {
        fbFinishedBefore = Chance(0.3);
        fbOtherwiseAgain = Chance(0.1);
        fbOtherTargetAgain = Chance(0.1);
        if (hasWeight && fWeightColumn < fvColumns.size() && Chance(0.3)) {
            fAgainWeights = NumberColumn([] { return 1.0; });
        }
    }

    static std::string TextOf(const FSPredictorSet& set) {
        std::ostringstream out;
        set.Display(out);
        std::string text = out.str();
        const std::size_t elapsed = text.find("Total elapsed time ");
        return text.erase(elapsed, text.find('\n', elapsed) - elapsed);
    }

    template <class Draw>
    RandomColumn NumberColumn(Draw draw) {
        std::vector<double> values(fRows);
        for (double& value : values) value = draw();
        return {std::move(values), 1};
    }

    template <class Entry>
    RandomColumn CodeColumnOf(int levels, double missing) {
        std::vector<Entry> values(fRows);
        const bool skewed = Chance(0.3);
        for (Entry& value : values) {
            if (Chance(missing)) continue;
            value = static_cast<Entry>(skewed && Chance(0.95) ? 1 : Between(1, levels));
        }
        return {std::move(values), static_cast<std::uint32_t>(levels) + 1};
    }
    RandomColumn CodeColumn(int levels, double missing) {
        const int width = Between(0, 2);
        if (levels < 256 && width == 0) return CodeColumnOf<std::uint8_t>(levels, missing);
        if (levels < 65536 && width < 2) return CodeColumnOf<std::uint16_t>(levels, missing);
        return CodeColumnOf<std::uint32_t>(levels, missing);
    }

    RandomColumn TargetColumn(bool categorical) {
        const double missing = Pick<double>({0, 0.02, 0.5});
        if (categorical && Chance(0.7)) return CodeColumn(Pick<int>({1, 2, 3, 10, 300}), missing);
        if (categorical) {
            const std::vector<double> codes = Pick<std::vector<double>>(
                {{0, 1, 2.7, -1.0, -1.5, -2, -0.5}, {5e9, -5e9, 2147483647.0, 0, -7, 1e6}, {3}});
            return NumberColumn([&] { return Chance(missing) ? kMissing : Pick(codes); });
        }
        if (Chance(0.1)) return CodeColumn(5, missing);
        const double centre = Pick<double>({0, 1e9});
        return NumberColumn([&] {
            if (Chance(missing)) return kMissing;
            return Chance(0.1) ? Pick<double>({0.0, -0.0, -1.0}) : centre + Normal();
        });
    }

    RandomColumn WeightColumn() {
        if (Chance(0.1)) return CodeColumn(4, 0.1);
        const std::vector<double> weights = Pick<std::vector<double>>(
            {{1},
             {1, 1, 1, 1, 0, -1, kMissing},
             {1, 2, 3, 0, kMissing},
             {0.3, 0.7, 1.1, 1e-9, 1e9, 0, -2, kMissing, 0.4, 2.5},
             {9007199254740990.0, 1, 0.5, kMissing},
             {1, 2, std::numeric_limits<double>::infinity()},
             {0, -1, kMissing, std::numeric_limits<double>::quiet_NaN()}});
        return NumberColumn([&] { return Pick(weights); });
    }

    RandomColumn PredictorColumn(bool categorical) {
        const double missing = Pick<double>({0, 0.02, 0.02, 0.6, 0.999, 1});
        if (categorical && Chance(0.8)) {
            return CodeColumn(Pick<int>({1, 2, 5, 20, 200, 5000, 100000}), missing);
        }
        if (categorical) {
            return NumberColumn([&] {
                return Chance(missing) ? kMissing
                                       : Pick<double>({-3, -2, -1, -1.2, -0.9, 0, 1, 1.5, 8, 3e9});
            });
        }
        const int kind = Between(0, 4);
        return NumberColumn([&] {
            if (Chance(missing)) return kMissing;
            switch (kind) {
                case 0:
                    return 1e9 + Normal();
                case 1:
                    return Pick<double>({0.0, -0.0});
                case 2:
                    return Chance(0.01) ? std::numeric_limits<double>::infinity() : Normal();
                case 3:
                    return 7.25;
                default:
                    return Normal();
            }
        });
    }

    std::mt19937 fEngine;
    FSSettings fSettings;
    RandomColumns fvColumns;
    std::size_t fRows = 0;
    bool fbWithTarget = true;
    std::int32_t fMaxRecords = -1;
    std::size_t fBlockRows = 1;
    std::int32_t fThreads = 0;
    bool fbListens = false;
    std::int32_t fCancelAt = -1;
    std::size_t fWeightColumn = 0;
    bool fbFinishedBefore = false;
    bool fbOtherwiseAgain = false;
    bool fbOtherTargetAgain = false;
    std::optional<RandomColumn> fAgainWeights;
};

TEST(FSPredictorSetBlocks, GiveTheStateOfRecordsOneByOneByteForByte) {
    const std::uint32_t seed = testsupport::RandomSeed();
    for (std::uint32_t round = 0; round < 150; ++round) {
        Drawn drawn(seed + round);
        const Drawn::Result plain = drawn.Read(false);
        const Drawn::Result blocks = drawn.Read(true);
        ASSERT_EQ(blocks.fReports, plain.fReports) << "seed " << seed + round;
        ASSERT_EQ(blocks.fCodes, plain.fCodes) << "seed " << seed + round;
        ASSERT_TRUE(blocks.fText == plain.fText) << "seed " << seed + round;
        ASSERT_TRUE(blocks.fState == plain.fState) << "seed " << seed + round;
    }
}

/// 100 records of a target, a categorical and a continuous predictor.
RandomColumns TargetAndPredictors() {
    RandomColumns columns(3);
    std::vector<double> targets;
    std::vector<std::uint8_t> codes;
    std::vector<double> numbers;
    for (int row = 0; row < 100; ++row) {
        targets.push_back(row % 7 == 0 ? kMissing : row % 3 + 0.25);
        codes.push_back(static_cast<std::uint8_t>(row % 4));
        numbers.push_back(row % 5 == 0 ? kMissing : 0.1 * row);
    }
    columns[0] = {targets, 1};
    columns[1] = {codes, 4};
    columns[2] = {numbers, 1};
    return columns;
}

/// The set after passes over the records, each of them with the settings as change(pass, settings)
/// leaves them.
template <class Change>
std::vector<std::byte> StateAfter(bool inBlocks, int passes, FSSettings settings, Change change) {
    const RandomColumns columns = TargetAndPredictors();
    FSCancelState cancel;
    FSPredictorSet set(settings, cancel);
    for (int pass = 0; pass < passes; ++pass) {
        const bool withTarget = change(pass, settings, set);
        InBlocks blocks(columns, 100, 70000, 0);
        OneByOne single(columns, 100);
        MCCommon::RecordIterator& records =
            inBlocks ? static_cast<MCCommon::RecordIterator&>(blocks) : single;
        EXPECT_TRUE((withTarget ? set.AccumulateRecords(records, -1)
                                : set.AccumulateForScreening(records, -1))
                        .IsOk());
    }
    ClearElapsed(set);
    return testsupport::Save(set);
}

struct TwoPasses {
    const char* fName;
    bool fbWithTarget[2];
    bool fbTargetCategorical[2];
};

void PrintTo(const TwoPasses& passes, std::ostream* out) { *out << passes.fName; }

class BlocksOfASecondPass : public testing::TestWithParam<TwoPasses> {};

TEST_P(BlocksOfASecondPass, AreToTheAccumulatorsWhatTheirRecordsAre) {
    const TwoPasses& passes = GetParam();
    const auto change = [&](int pass, FSSettings& settings, FSPredictorSet&) {
        settings.SetTargetCategorical(passes.fbTargetCategorical[pass]);
        settings.SetTargetPosition(passes.fbWithTarget[pass] ? 0 : -1);
        return passes.fbWithTarget[pass];
    };
    const FSSettings settings({kCategorical, kContinuous}, true);
    EXPECT_EQ(StateAfter(true, 2, settings, change), StateAfter(false, 2, settings, change));
}

INSTANTIATE_TEST_SUITE_P(
    Table, BlocksOfASecondPass,
    testing::Values(TwoPasses{"AsTheFirst", {true, true}, {true, true}},
                    TwoPasses{"WithoutItsCategoricalTarget", {true, false}, {true, true}},
                    TwoPasses{"WithoutItsContinuousTarget", {true, false}, {false, false}},
                    TwoPasses{"WithACategoricalTarget", {false, true}, {true, true}},
                    TwoPasses{"WithAContinuousTarget", {false, true}, {false, false}},
                    TwoPasses{"WhoseTargetBecameContinuous", {true, true}, {true, false}},
                    TwoPasses{"WhoseTargetBecameCategorical", {true, true}, {false, true}}),
    [](const auto& test) { return std::string(test.param.fName); });

TEST(FSPredictorSetBlocks, LeaveCountsAtTheLargestNumberThere) {
    FSSettings settings({kCategorical, kContinuous}, true);
    const auto fill = [](int pass, FSSettings&, FSPredictorSet& set) {
        if (pass == 0) return true;
        auto bytes = testsupport::Save(set);
        const std::int32_t most = std::numeric_limits<std::int32_t>::max();
        const std::size_t unweighted = 61;  // valid, then excluded
        const std::string tag = "FSMII";    // the target's categories are the last map
        const auto map = std::find_end(
            bytes.begin(), bytes.end(), tag.begin(), tag.end(),
            [](std::byte one, char other) { return one == static_cast<std::byte>(other); });
        const auto firstCount = static_cast<std::size_t>(map - bytes.begin()) + 13;
        for (const std::size_t at : {unweighted, unweighted + 4, firstCount}) {
            std::memcpy(bytes.data() + at, &most, sizeof most);
        }
        testsupport::RestoreInto(set, bytes);
        EXPECT_EQ(CountsOf(set).fValid, most);
        EXPECT_EQ(CountsOf(set).fExcluded, most);
        return true;
    };
    EXPECT_EQ(StateAfter(true, 2, settings, fill), StateAfter(false, 2, settings, fill));
}

struct TargetKind {
    const char* fName;
    bool fbWithTarget;
    bool fbCategorical;
};

void PrintTo(const TargetKind& kind, std::ostream* out) { *out << kind.fName; }

/// The set after passes over records(pass), whose weights stand second, as they are.
template <class Records>
std::vector<std::byte> WeightedState(std::vector<bool> predictors, const TargetKind& target,
                                     Records records, int passes) {
    FSSettings settings(std::move(predictors), target.fbCategorical);
    if (!target.fbWithTarget) {
        settings.SetTargetPosition(-1);
        settings.SetCaseIdPosition(0);
    }
    settings.SetWeightPosition(1);
    settings.SetWeightConversion(FSSettings::kWeightAsIs);
    FSCancelState cancel;
    FSPredictorSet set(settings, cancel);
    for (int pass = 0; pass < passes; ++pass) {
        EXPECT_TRUE((target.fbWithTarget ? set.AccumulateRecords(records(pass), -1)
                                         : set.AccumulateForScreening(records(pass), -1))
                        .IsOk());
    }
    ClearElapsed(set);
    return testsupport::Save(set);
}

class BlocksOfWeightedRecords : public testing::TestWithParam<TargetKind> {};

// More categories than a table of them is worth; most records share a few of them.
TEST_P(BlocksOfWeightedRecords, AddWeightsInTheOrderOfTheRecords) {
    std::mt19937 engine(testsupport::RandomSeed());
    std::uniform_real_distribution<double> weight(0.1, 3.0);
    std::vector<double> targets;
    std::vector<double> weights;
    std::vector<std::uint32_t> codes;
    for (std::uint32_t row = 0; row < 2000; ++row) {
        targets.push_back(GetParam().fbCategorical ? row % 3 : weight(engine));
        weights.push_back(weight(engine));
        codes.push_back(row % 10 == 0 ? 50000 + row : engine() % 4);
    }
    RandomColumns columns(3);
    columns[0] = {targets, 1};
    columns[1] = {weights, 1};
    columns[2] = {codes, 100000};
    const auto stateOf = [&](auto&& records) {
        return WeightedState(
            {kCategorical}, GetParam(), [&](int) -> auto& { return records; }, 1);
    };
    EXPECT_EQ(stateOf(InBlocks(columns, 2000, 700, 0)), stateOf(OneByOne(columns, 2000)));
}

// Sums that ones no longer grow exactly.
TEST_P(BlocksOfWeightedRecords, AddOnesAfterTinyWeightsInTheOrderOfTheRecords) {
    RandomColumns columns = TargetAndPredictors();
    if (GetParam().fbCategorical) columns[0] = {std::vector<std::uint8_t>(100, 2), 4};
    columns.insert(columns.begin() + 1, {std::vector<double>(100, 1e-9 / 3), 1});
    RandomColumns ones = columns;
    ones[1] = {std::vector<double>(100, 1.0), 1};
    const auto stateOf = [&](auto&& tinyWeights, auto&& oneWeights) {
        return WeightedState(
            {kCategorical, kContinuous}, GetParam(),
            [&](int pass) -> auto& { return pass == 0 ? tinyWeights : oneWeights; }, 2);
    };
    EXPECT_EQ(stateOf(InBlocks(columns, 100, 100, 0), InBlocks(ones, 100, 100, 0)),
              stateOf(OneByOne(columns, 100), OneByOne(ones, 100)));
}

INSTANTIATE_TEST_SUITE_P(Table, BlocksOfWeightedRecords,
                         testing::Values(TargetKind{"WithACategoricalTarget", true, true},
                                         TargetKind{"WithAContinuousTarget", true, false},
                                         TargetKind{"Alone", false, true}),
                         [](const auto& test) { return std::string(test.param.fName); });

TEST(FSPredictorSetBlocks, AreReadNoFurtherThanTheLastRecordThatCounts) {
    RandomColumns columns(2);
    columns[0] = {std::vector<std::uint8_t>{1, 2, 1, 2, 1, 2}, 3};
    columns[1] = {std::vector<double>{1, 0, 1, 0, 1, 1}, 1};  // weights
    FSSettings settings(1, kCategorical, true);
    settings.SetTargetPosition(-1);
    settings.SetWeightPosition(1);
    FSCancelState cancel;
    FSPredictorSet set(settings, cancel);
    InBlocks records(columns, 6, 70000, 0);
    EXPECT_TRUE(set.AccumulateForScreening(records, 3).IsOk());
    EXPECT_EQ(CountsOf(set), (RecordCounts{0, 3, 0, 3}));
    const MCCommon::Record* next = records.Next();
    ASSERT_NE(next, nullptr);
    EXPECT_EQ((*next)[0], 1.0);
    EXPECT_EQ(records.Next(), nullptr);
}

TEST(FSPredictorSetBlocks, StopAtACancelBetweenTwoBlocks) {
    RandomColumns columns(2);
    columns[0] = {std::vector<std::uint8_t>(1000, 1), 3};
    columns[1] = {std::vector<double>(1000, 0.5), 1};
    FSSettings settings(1, kContinuous, true);
    settings.SetTargetPosition(0);
    testsupport::CancelAtPoll check(4);  // two polls a block
    FSCancelState cancel(&check);
    FSPredictorSet set(settings, cancel);
    InBlocks records(columns, 1000, 100, 0);
    EXPECT_TRUE(set.AccumulateRecords(records, -1).IsOk());
    EXPECT_EQ(CountsOf(set), (RecordCounts{200, 0, 200, 0}));
}

}  // namespace
