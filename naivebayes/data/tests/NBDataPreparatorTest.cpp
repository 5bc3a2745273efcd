#include "naivebayes/data/NBDataPreparator.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>

#include "naivebayes/NBayesInput.h"
#include "naivebayes/data/NBBinningEncoder.h"
#include "naivebayes/data/NBRoundEncoder.h"
#include "naivebayes/data/tests/PreparatorFixture.h"
#include "naivebayes/tests/AllocationMeter.h"
#include "naivebayes/tests/RecordSource.h"
#include "tests/support/CaseName.h"

namespace {

using MCCommon::Record;
using namespace preparatortest;
using Integers = std::vector<std::int32_t>;
using Doubles = std::vector<double>;

NBStatus Status(std::uint32_t code, bool isWarning, std::array<std::int32_t, 3> integers = {},
                double value = 0.0) {
    NBStatus status(code, isWarning);
    status.fIntArgs = integers;
    status.SetDoubleArg(1, value);
    return status;
}

std::string Text(const NBStatus& status) {
    std::ostringstream out;
    out << status.fCode << '/' << status.fSeverity;
    for (const auto number : status.fIntArgs) out << ' ' << number;
    for (const auto number : status.fDoubleArgs) out << ' ' << number;
    return out.str();
}

// Making one.

struct BinsCase {
    std::string fName;
    std::int32_t fNumRecords;
    std::int32_t fBins;
};
void PrintTo(const BinsCase& bins, std::ostream* out) { *out << bins.fName; }
class NBDataPreparatorBins : public testing::TestWithParam<BinsCase> {};

TEST_P(NBDataPreparatorBins, OfAVariableThatCameWithoutACount) {
    NBVarList list = MakeUnweightedList();
    const std::int32_t open = list.AddContVar("open", "", 0.0, 1.0, 0, NBRole::kInput);
    const Prepared prepared(list, true, GetParam().fNumRecords);
    EXPECT_EQ(prepared.fList.GetVariable(open)->GetNumCategories(), GetParam().fBins);
    EXPECT_EQ(prepared.fPreparator.GetInputNumCategories().back(), GetParam().fBins);
}

INSTANTIATE_TEST_SUITE_P(
    Records, NBDataPreparatorBins,
    testing::Values(BinsCase{"NegativeGives2", -100, 2}, BinsCase{"NoneGives2", 0, 2},
                    BinsCase{"FourteenGive2", 14, 2}, BinsCase{"FortyFourGive2", 44, 2},
                    BinsCase{"FortyFiveGive3", 45, 3}, BinsCase{"HundredFortyNineGive9", 149, 9},
                    BinsCase{"HundredFiftyGive10", 150, 10},
                    BinsCase{"MillionGive10", 1000000, 10}),
    testsupport::CaseName());

TEST(NBDataPreparator, KeepsABinCountThatWasGiven) {
    const Prepared prepared(MakeList(), true, 150);
    EXPECT_EQ(prepared.fList.GetVariable(kSize)->GetNumCategories(), 2);
}

TEST(NBDataPreparator, PlacesTargetWeightAndInputs) {
    const Prepared prepared(MakeList(), true);
    const NBDataPreparator& preparator = prepared.fPreparator;
    EXPECT_EQ(preparator.GetOriginalRecordSize(), 6);
    EXPECT_EQ(preparator.GetProcessedRecordSize(), 5);
    EXPECT_EQ(preparator.GetInputRecordSize(), 3);
    EXPECT_EQ(preparator.GetVarIndex(), (Integers{2, 0, 3, 1, 4, -1}));
    EXPECT_EQ(preparator.GetInputIndices(), (Integers{kColour, kSize, kShape}));
    EXPECT_EQ(preparator.GetInputNumCategories(), (Integers{3, 2, 2}));
    EXPECT_EQ(preparator.GetInputMeasureLevels(), (Integers{2, 1, 2}));
    EXPECT_EQ(preparator.GetTargetIndex(), kTarget);
    EXPECT_EQ(preparator.GetWeightIndex(), kWeight);
    const INBEncoder* const weightEncoder = preparator.GetWeightEncoder();
    EXPECT_EQ(weightEncoder, prepared.fList.GetEncoder(kWeight));
    EXPECT_TRUE(preparator.GetStatus().IsOK());
}

TEST(NBDataPreparator, LeavesPossibleInputsOutWhereTheyAreNotUsed) {
    const Prepared prepared(MakeList(), false);
    EXPECT_EQ(prepared.fPreparator.GetVarIndex(), (Integers{2, 0, 3, 1, -1, -1}));
    EXPECT_EQ(prepared.fPreparator.GetProcessedRecordSize(), 4);
    EXPECT_EQ(prepared.fPreparator.GetInputRecordSize(), 2);
}

TEST(NBDataPreparator, StartsInputsAtOneWithoutAWeight) {
    const Prepared prepared(MakeUnweightedList(), true);
    EXPECT_EQ(prepared.fPreparator.GetVarIndex(), (Integers{1, 0, 2, 3, -1}));
    EXPECT_EQ(prepared.fPreparator.GetProcessedRecordSize(), 4);
    EXPECT_EQ(prepared.fPreparator.GetWeightIndex(), -1);
    EXPECT_EQ(prepared.fPreparator.GetWeightEncoder(), nullptr);
}

TEST(NBDataPreparator, PlacesInputsBehindTheWeightAlsoWhenTheWeightComesLast) {
    NBVarList list = MakeUnweightedList();
    const std::int32_t weight = list.AddWeightVar("weight", "", 1);
    const Prepared prepared(list, true);
    EXPECT_EQ(prepared.fPreparator.GetVarIndex(), (Integers{2, 0, 3, 4, -1, 1}));
    EXPECT_EQ(prepared.fPreparator.GetWeightIndex(), weight);
}

TEST(NBDataPreparator, TakesACategoricalVariableOfTheWeightsRoleForNone) {
    NBVarList list = MakeUnweightedList();
    list.GetVariable(0)->SetRole(NBRole::kWeight);
    const Prepared prepared(list, true);
    EXPECT_EQ(prepared.fPreparator.GetVarIndex(), (Integers{-1, 0, 1, 2, -1}));
    EXPECT_EQ(prepared.fPreparator.GetWeightIndex(), -1);
}

// Preparing a training record. Columns: colour, target, size, weight, shape, unused.

struct RecordCase {
    std::string fName;
    Doubles fOriginal;
    NBStatus fStatus;
    double fWeight;
    Doubles fExpected;
};
void PrintTo(const RecordCase& record, std::ostream* out) { *out << record.fName; }

class NBDataPreparatorTraining : public testing::TestWithParam<RecordCase> {};

TEST_P(NBDataPreparatorTraining, Gives) {
    const RecordCase& record = GetParam();
    const Prepared prepared(MakeList());
    Record processed(std::vector<double>(5, 99.0));
    double weight = -99.0;
    const NBStatus status =
        prepared.fPreparator.PrepareRecord(Record(record.fOriginal), processed, weight);
    EXPECT_EQ(status, record.fStatus) << Text(status);
    EXPECT_EQ(weight, record.fWeight);
    EXPECT_EQ(Values(processed), record.fExpected);
}

const double kFar = 1e300;
constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();

INSTANTIATE_TEST_SUITE_P(
    Records, NBDataPreparatorTraining,
    testing::Values(
        RecordCase{"Codes", {2, 1, 7, 2.6, 1, 0}, NBStatus(), 3, {1, 3, 2, 1, 1}},
        RecordCase{"FractionsOfCodesAsTheyAre",
                   {1.5, 0.25, 5, 1, 0.5, 0},
                   NBStatus(),
                   1,
                   {0.25, 1, 1.5, 0, 0.5}},
        RecordCase{"ValuesOutsideTheRangeOfAContinuousInput",
                   {0, 0, -1000, 1, 0, 0},
                   NBStatus(),
                   1,
                   {0, 1, 0, 0, 0}},
        RecordCase{"AMissingWeight",
                   {2, 1, 7, kMissing, 1, 0},
                   Status(70018, false, {kWeight, 0, 0}, kMissing),
                   kMissing,
                   {1, kMissing, 2, 1, 1}},
        RecordCase{"AWeightThatRoundsToNothingAsMissing",
                   {2, 1, 7, 0.4, 1, 0},
                   Status(70018, false, {kWeight, 0, 0}, 0.4),
                   kMissing,
                   {1, kMissing, 2, 1, 1}},
        RecordCase{"AMissingTargetInPlaceOfAMissingWeight",
                   {2, kMissing, 7, 0, 1, 0},
                   Status(70017, false),
                   kMissing,
                   {0, kMissing, 2, 1, 1}},
        RecordCase{
            "AMissingTarget", {2, kMissing, 7, 1, 1, 0}, Status(70017, false), 1, {0, 1, 2, 1, 1}},
        RecordCase{"ATargetOfMinusOneAsMissing",
                   {2, -1, 7, 1, 1, 0},
                   Status(70017, false),
                   1,
                   {0, 1, 2, 1, 1}},
        RecordCase{"ATargetThatTruncatesToMinusOneAsMissing",
                   {2, -1.9, 7, 1, 1, 0},
                   Status(70017, false),
                   1,
                   {0, 1, 2, 1, 1}},
        RecordCase{"ATargetThatTruncatesToZeroAsItIs",
                   {2, -0.9, 7, 1, 1, 0},
                   NBStatus(),
                   1,
                   {-0.9, 1, 2, 1, 1}},
        RecordCase{"ATargetCodeAboveTheHighest",
                   {2, 2, 7, 1, 1, 0},
                   Status(70010, false, {kTarget, 2, 1}, 2),
                   1,
                   {kMissing, 1, 2, 1, 1}},
        RecordCase{"ATargetCodeBelowMinusOne",
                   {2, -2, 7, 1, 1, 0},
                   Status(70010, false, {kTarget, -2, 1}, -2),
                   1,
                   {kMissing, 1, 2, 1, 1}},
        RecordCase{"ATargetFarBeyondAnyCode",
                   {2, kFar, 7, 1, 1, 0},
                   Status(70010, false, {kTarget, kLargest, 1}, kFar),
                   1,
                   {kMissing, 1, 2, 1, 1}},
        RecordCase{"MissingInputs",
                   {kMissing, 1, kMissing, 1, 1, 0},
                   NBStatus(),
                   1,
                   {1, 1, kMissing, -1, 1}},
        RecordCase{
            "AnInputOfMinusOneAsMissing", {-1, 1, 7, 1, -1, 0}, NBStatus(), 1, {1, 1, -1, 1, -1}},
        RecordCase{"ABadInputCode",
                   {3, 1, 7, 1, 1, 0},
                   Status(70010, true, {kColour, 3, 2}, 3),
                   1,
                   {1, 1, kMissing, 1, 1}},
        RecordCase{"AnInputThatOnlyTruncatesToMinusOneAsABadCode",
                   {-1.5, 1, 7, 1, 1, 0},
                   Status(70010, true, {kColour, -1, 2}, -1.5),
                   1,
                   {1, 1, kMissing, 1, 1}},
        RecordCase{"AnInputThatTruncatesToZeroAsItIs",
                   {-0.5, 1, 7, 1, 1, 0},
                   NBStatus(),
                   1,
                   {1, 1, -0.5, 1, 1}},
        RecordCase{"AnInputFarBelowAnyCode",
                   {-kFar, 1, 7, 1, 1, 0},
                   Status(70010, true, {kColour, kSmallest, 2}, -kFar),
                   1,
                   {1, 1, kMissing, 1, 1}},
        RecordCase{"TheLastOfSeveralBadInputCodes",
                   {3, 1, 7, 1, 2, 0},
                   Status(70010, true, {kShape, 2, 1}, 2),
                   1,
                   {1, 1, kMissing, 1, kMissing}},
        RecordCase{"AllInputsMissing",
                   {kMissing, 1, kMissing, 1, -1, 0},
                   Status(70016, false),
                   1,
                   {1, 1, kMissing, -1, -1}},
        RecordCase{"ABadInputCodeAmongMissingOnesAsAllMissing",
                   {kMissing, 1, kMissing, 1, 5, 0},
                   Status(70016, false),
                   1,
                   {1, 1, kMissing, -1, kMissing}},
        RecordCase{"AllInputsMissingInPlaceOfAnInvalidTarget",
                   {kMissing, 9, kMissing, 1, -1, 0},
                   Status(70016, false),
                   1,
                   {kMissing, 1, kMissing, -1, -1}},
        RecordCase{"AllInputsMissingInPlaceOfAMissingWeight",
                   {kMissing, 1, kMissing, 0, -1, 0},
                   Status(70016, false),
                   kMissing,
                   {1, kMissing, kMissing, -1, -1}}),
    testsupport::CaseName());

TEST(NBDataPreparator, ABadInputCodeTakesThePlaceOfAMissingTarget) {
    const Prepared prepared(MakeList());
    Record processed(5);
    double weight = 0.0;
    const NBStatus status = prepared.fPreparator.PrepareRecord(
        Record(Doubles{3, kMissing, 7, 1, 1, 0}), processed, weight);
    EXPECT_EQ(status, Status(70010, true, {kColour, 3, 2}, 3.0)) << Text(status);
    EXPECT_EQ(Values(processed), (Doubles{0, 1, kMissing, 1, 1}));
}

TEST(NBDataPreparator, ABadInputCodeTakesThePlaceOfAMissingWeight) {
    const Prepared prepared(MakeList());
    Record processed(5);
    double weight = 0.0;
    const NBStatus status = prepared.fPreparator.PrepareRecord(
        Record(Doubles{3, 1, 7, kMissing, 1, 0}), processed, weight);
    EXPECT_FALSE(status.IsError());
    EXPECT_EQ(weight, kMissing);
}

TEST(NBDataPreparator, GivesWeightOneWithoutAWeight) {
    const Prepared prepared(MakeUnweightedList());
    Record processed(4);
    double weight = 0.0;
    EXPECT_TRUE(
        prepared.fPreparator.PrepareRecord(Record(Doubles{2, 1, 7, 1, 0}), processed, weight)
            .IsOK());
    EXPECT_EQ(weight, 1.0);
    EXPECT_EQ(Values(processed), (Doubles{1, 2, 1, 1}));
}

TEST(NBDataPreparator, WithoutInputsFindsNoValidOneInAnyRecord) {
    NBVarList list;
    list.AddNumericCatVar("target", "", {0.0, 1.0}, NBRole::kTarget);
    const Prepared prepared(list);
    Record processed(1);
    double weight = 0.0;
    EXPECT_EQ(prepared.fPreparator.PrepareRecord(Record(Doubles{1}), processed, weight),
              Status(70016, false));
    Record inputOnly(0);
    EXPECT_EQ(prepared.fPreparator.PrepareScoreRecord(Record(Doubles{1}), inputOnly, weight),
              Status(70016, true));
}

TEST(NBDataPreparator, WithoutATargetFindsItMissing) {
    NBVarList list;
    list.AddNumericCatVar("colour", "", {0.0, 1.0}, NBRole::kInput);
    const Prepared prepared(list);
    Record processed(2);
    double weight = 0.0;
    EXPECT_EQ(prepared.fPreparator.PrepareRecord(Record(Doubles{1}), processed, weight),
              Status(70017, false));
}

TEST(NBDataPreparator, TakesAContinuousInputWithoutBinsForMissing) {
    NBVarList list = MakeUnweightedList();
    list.AddContVar("constant", "", 4.0, 4.0, 5, NBRole::kInput);
    Prepared prepared(list, false);
    Record processed(4);
    double weight = 0.0;
    EXPECT_TRUE(
        prepared.fPreparator.PrepareRecord(Record(Doubles{2, 1, 7, 1, 0, 4}), processed, weight)
            .IsOK());
    EXPECT_EQ(Values(processed), (Doubles{1, 2, 1, -1}));
}

TEST(NBDataPreparator, AllocatesNothingForARecord) {
    Prepared prepared(MakeList());
    prepared.fList.SetRole(kShape, NBRole::kUnused);
    prepared.fPreparator.SyncWithVarList();
    prepared.fPreparator.MakeCollapsedEncoders(
        std::vector<NBayesInput>{NBayesInput(3, 2), NBayesInput(2, 2)});
    const Record original(Doubles{3, 1, 7, 1, 1, 0});
    Record processed(4);
    Record inputOnly(2);
    double weight = 0.0;
    const AllocationMeter meter;
    for (int i = 0; i < 10; ++i) {
        EXPECT_FALSE(prepared.fPreparator.PrepareRecord(original, processed, weight).IsError());
        EXPECT_FALSE(
            prepared.fPreparator.PrepareScoreRecord(original, inputOnly, weight).IsError());
        EXPECT_FALSE(prepared.fPreparator.PrepareInputRecord(inputOnly, inputOnly).IsError());
    }
    EXPECT_EQ(meter.Calls(), 0U);
}

// Preparing a record to be scored.

/// Colour, size and shape are the inputs; the size's lower bin is closed in scoring.
struct Scoring : Prepared {
    Scoring() : Prepared(MakeScoringList()) {
        NBayesInput size(4, 2);
        size.SetCounts(0.01, {{0.0, 0.0}, {3.0, 2.0}, {0.0, 0.0}, {1.0, 4.0}});
        EXPECT_EQ(fPreparator.MakeCollapsedEncoders({NBayesInput(3, 2), size, NBayesInput(2, 2)}),
                  1);
    }
    static NBVarList MakeScoringList() {
        NBVarList list;
        list.AddNumericCatVar("colour", "", {10.0, 20.0, 30.0}, NBRole::kInput);
        list.AddNumericCatVar("target", "", {0.0, 1.0}, NBRole::kTarget);
        list.AddContVar("size", "", 0.0, 8.0, 4, NBRole::kInput);
        list.AddWeightVar("weight", "", 1);
        list.AddNumericCatVar("shape", "", {1.0, 2.0}, NBRole::kInput);
        return list;
    }
};

class NBDataPreparatorScoring : public testing::TestWithParam<RecordCase> {};

TEST_P(NBDataPreparatorScoring, Gives) {
    const RecordCase& record = GetParam();
    const Scoring scoring;
    Record inputOnly(std::vector<double>(3, 99.0));
    double weight = -99.0;
    const NBStatus status =
        scoring.fPreparator.PrepareScoreRecord(Record(record.fOriginal), inputOnly, weight);
    EXPECT_EQ(status, record.fStatus) << Text(status);
    EXPECT_EQ(weight, record.fWeight);
    EXPECT_EQ(Values(inputOnly), record.fExpected);
}

// Bins of the size: up to 2 closed, up to 4 filled, up to 6 closed, above filled. The gap is cut
// at 5.
INSTANTIATE_TEST_SUITE_P(
    Records, NBDataPreparatorScoring,
    testing::Values(
        RecordCase{"Codes", {2, 1, 7, 2.6, 1}, NBStatus(), 3, {2, 3, 1}},
        RecordCase{"TheFirstFilledBinBelowIt", {2, 1, 1, 1, 1}, NBStatus(), 1, {2, 1, 1}},
        RecordCase{"TheLowerBinInTheLowerHalfOfAGap", {2, 1, 5, 1, 1}, NBStatus(), 1, {2, 1, 1}},
        RecordCase{"TheUpperBinInTheUpperHalfOfAGap", {2, 1, 5.5, 1, 1}, NBStatus(), 1, {2, 3, 1}},
        RecordCase{
            "NoStatusForAMissingWeight", {2, 1, 7, kMissing, 1}, NBStatus(), kMissing, {2, 3, 1}},
        RecordCase{"NoStatusForABadTarget", {2, 77, 7, 1, 1}, NBStatus(), 1, {2, 3, 1}},
        RecordCase{
            "MinusOneForAMissingCategory", {kMissing, 1, 7, 1, 1}, NBStatus(), 1, {-1, 3, 1}},
        RecordCase{"AnInputThatTruncatesToMinusOneAsItIs",
                   {-1.5, 1, 7, 1, 1},
                   NBStatus(),
                   1,
                   {-1.5, 3, 1}},
        RecordCase{"MinusOneForABadCode",
                   {3, 1, 7, 1, 1},
                   Status(70010, true, {0, 3, 2}, 3),
                   1,
                   {-1, 3, 1}},
        RecordCase{"AWarningWhenAllInputsAreMissing",
                   {kMissing, 1, kMissing, 1, -1.5},
                   Status(70016, true),
                   1,
                   {-1, -1, -1.5}},
        RecordCase{"AllMissingInPlaceOfABadCode",
                   {3, 1, kMissing, 1, -1},
                   Status(70016, true),
                   1,
                   {-1, -1, -1}}),
    testsupport::CaseName());

TEST(NBDataPreparator, ScoresWithWeightOneWithoutAWeight) {
    Prepared prepared(MakeUnweightedList(), false);
    prepared.fPreparator.MakeCollapsedEncoders({NBayesInput(3, 2), NBayesInput(2, 2)});
    Record inputOnly(2);
    double weight = 0.0;
    EXPECT_TRUE(
        prepared.fPreparator.PrepareScoreRecord(Record(Doubles{2, 1, 7, 1, 0}), inputOnly, weight)
            .IsOK());
    EXPECT_EQ(weight, 1.0);
    EXPECT_EQ(Values(inputOnly), (Doubles{2, 1}));
}

// Preparing a record that has inputs only.

struct InputCase {
    std::string fName;
    Doubles fInputs;
    NBStatus fStatus;
    Doubles fExpected;
};
void PrintTo(const InputCase& inputs, std::ostream* out) { *out << inputs.fName; }
class NBDataPreparatorInputs : public testing::TestWithParam<InputCase> {};

TEST_P(NBDataPreparatorInputs, Gives) {
    const Scoring scoring;
    Record inputsOut(std::vector<double>(3, 99.0));
    const NBStatus status =
        scoring.fPreparator.PrepareInputRecord(Record(GetParam().fInputs), inputsOut);
    EXPECT_EQ(status, GetParam().fStatus) << Text(status);
    EXPECT_EQ(Values(inputsOut), GetParam().fExpected);
}

// Positions of list variables 0 to 2 in a processed record: colour 2, target 0, size 3.
INSTANTIATE_TEST_SUITE_P(
    Records, NBDataPreparatorInputs,
    testing::Values(InputCase{"Codes", {2, 7, 1}, NBStatus(), {2, 3, 1}},
                    InputCase{"MissingAsItIs", {kMissing, 7, -1}, NBStatus(), {kMissing, 3, -1}},
                    InputCase{"TruncatingToMinusOneAsItIs", {-1.5, 7, 1}, NBStatus(), {-1.5, 3, 1}},
                    InputCase{"NoStatusWhenAllAreMissing",
                              {kMissing, kMissing, -1},
                              NBStatus(),
                              {kMissing, -1, -1}},
                    InputCase{"ZeroForABadCodeWhosePositionComesLater",
                              {3, 7, 1},
                              Status(70010, true, {0, 3, 2}, 3),
                              {0, 3, 1}},
                    InputCase{"ZeroForABadCodeWhosePositionIsOutside",
                              {2, 7, 2},
                              Status(70010, true, {2, 2, 1}, 2),
                              {2, 3, 0}}),
    testsupport::CaseName());

TEST(NBDataPreparator, ABadCodeSetsThePositionOfTheListVariableToZero) {
    NBVarList list;
    list.AddNumericCatVar("a", "", {1.0, 2.0}, NBRole::kInput);
    list.AddNumericCatVar("target", "", {0.0, 1.0}, NBRole::kTarget);
    list.AddNumericCatVar("b", "", {1.0, 2.0}, NBRole::kInput);
    const Prepared prepared(list);
    Record inputsOut(2);
    // Input 1 is b, but list variable 1 is the target, whose position is 0: that of a's code.
    const NBStatus status =
        prepared.fPreparator.PrepareInputRecord(Record(Doubles{1, 5}), inputsOut);
    EXPECT_EQ(status, Status(70010, true, {1, 5, 1}, 5.0)) << Text(status);
    EXPECT_EQ(Values(inputsOut), (Doubles{0, 0}));
}

// What training changes.

TEST(NBDataPreparator, MakesACollapsedEncoderForEachContinuousInput) {
    Prepared prepared(MakeUnweightedList(), false);
    EXPECT_TRUE(prepared.fPreparator.GetCollapsedEncoders().empty());
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(
            prepared.fPreparator.MakeCollapsedEncoders({NBayesInput(3, 2), NBayesInput(2, 2)}), 1);
        ASSERT_EQ(prepared.fPreparator.GetCollapsedEncoders().size(), 1U);
        EXPECT_EQ(prepared.fPreparator.GetCollapsedEncoders()[0]->GetCutpoints(), (Doubles{5.0}));
    }
}

TEST(NBDataPreparator, MakesNoCollapsedEncoderForAnEmptyList) {
    Prepared prepared{NBVarList()};
    EXPECT_EQ(prepared.fPreparator.MakeCollapsedEncoders({}), 0);
}

TEST(NBDataPreparator, RefusesToRemoveAnInputOutOfRange) {
    Prepared prepared(MakeList());
    EXPECT_EQ(prepared.fPreparator.RemoveInput(-1), -1);
    EXPECT_EQ(prepared.fPreparator.RemoveInput(3), -1);
    EXPECT_EQ(prepared.fPreparator.GetInputRecordSize(), 3);
}

TEST(NBDataPreparator, RemovesAnInputAndMovesLaterOnesUp) {
    Prepared prepared(MakeList());
    EXPECT_EQ(prepared.fPreparator.RemoveInput(0), 2);
    EXPECT_EQ(prepared.fPreparator.GetVarIndex(), (Integers{-1, 0, 2, 1, 3, -1}));
    EXPECT_EQ(prepared.fPreparator.GetInputIndices(), (Integers{kSize, kShape}));
    EXPECT_EQ(prepared.fPreparator.GetInputNumCategories(), (Integers{2, 2}));
    EXPECT_EQ(prepared.fPreparator.GetInputMeasureLevels(), (Integers{1, 2}));
    EXPECT_EQ(prepared.fPreparator.GetProcessedRecordSize(), 4);
    Record processed(4);
    double weight = 0.0;
    EXPECT_TRUE(
        prepared.fPreparator.PrepareRecord(Record(Doubles{77, 1, 7, 2, 1, 0}), processed, weight)
            .IsOK());
    EXPECT_EQ(Values(processed), (Doubles{1, 2, 1, 1}));
}

TEST(NBDataPreparator, MovesNoPossibleInputThatIsNotInTheRecord) {
    Prepared prepared(MakeList(), false);
    EXPECT_EQ(prepared.fPreparator.RemoveInput(0), 1);
    EXPECT_EQ(prepared.fPreparator.GetVarIndex(), (Integers{-1, 0, 2, 1, -1, -1}));
}

TEST(NBDataPreparator, RemovesTheEncodersOfAContinuousInput) {
    NBVarList list;
    list.AddContVar("x", "", 0.0, 10.0, 2, NBRole::kInput);
    list.AddNumericCatVar("target", "", {0.0, 1.0}, NBRole::kTarget);
    list.AddContVar("y", "", 0.0, 100.0, 2, NBRole::kInput);
    list.AddContVar("z", "", 0.0, 1000.0, 2, NBRole::kInput);
    Prepared prepared(list);
    NBDataPreparator& preparator = prepared.fPreparator;
    preparator.MakeCollapsedEncoders({NBayesInput(2, 2), NBayesInput(2, 2), NBayesInput(2, 2)});
    EXPECT_EQ(preparator.RemoveInput(1), 2);
    ASSERT_EQ(preparator.GetCollapsedEncoders().size(), 2U);
    EXPECT_EQ(preparator.GetCollapsedEncoders()[1]->GetCutpoints(), (Doubles{500.0}));
    Record processed(3);
    double weight = 0.0;
    EXPECT_TRUE(preparator.PrepareRecord(Record(Doubles{6, 1, 77, 400}), processed, weight).IsOK());
    EXPECT_EQ(Values(processed), (Doubles{1, 1, 0}));
    EXPECT_EQ(preparator.MakeCollapsedEncoders({NBayesInput(2, 2), NBayesInput(2, 2)}), 2);
}

TEST(NBDataPreparator, RemovesTheLastInput) {
    Prepared prepared(MakeList(), false);
    EXPECT_EQ(prepared.fPreparator.RemoveInput(1), 1);
    EXPECT_EQ(prepared.fPreparator.RemoveInput(0), 0);
    EXPECT_EQ(prepared.fPreparator.RemoveInput(0), -1);
    EXPECT_EQ(prepared.fPreparator.GetProcessedRecordSize(), 2);
}

TEST(NBDataPreparator, TakesOverTheRolesOfASearch) {
    Prepared prepared(MakeList());
    prepared.fList.SetRole(kColour, NBRole::kPossibleInput);
    prepared.fList.SetRole(kShape, NBRole::kInput);
    prepared.fPreparator.SyncWithVarList();
    EXPECT_EQ(prepared.fPreparator.GetVarIndex(), (Integers{-1, 0, 2, 1, 3, -1}));
    EXPECT_EQ(prepared.fPreparator.GetInputIndices(), (Integers{kSize, kShape}));
    EXPECT_EQ(prepared.fPreparator.GetInputNumCategories(), (Integers{2, 2}));
    EXPECT_EQ(prepared.fPreparator.GetInputMeasureLevels(), (Integers{1, 2}));
    EXPECT_EQ(prepared.fPreparator.GetInputRecordSize(), 2);
    EXPECT_EQ(prepared.fPreparator.GetProcessedRecordSize(), 4);
    EXPECT_EQ(prepared.fPreparator.MakeCollapsedEncoders({NBayesInput(2, 2), NBayesInput(2, 2)}),
              1);
}

TEST(NBDataPreparator, KeepsThePositionOfAVariableThatIsNoLongerUsed) {
    Prepared prepared(MakeList());
    prepared.fList.SetRole(kShape, NBRole::kUnused);
    prepared.fPreparator.SyncWithVarList();
    EXPECT_EQ(prepared.fPreparator.GetVarIndex(), (Integers{2, 0, 3, 1, 4, -1}));
    EXPECT_EQ(prepared.fPreparator.GetInputIndices(), (Integers{kColour, kSize}));
}

TEST(NBDataPreparator, ChangesNothingButRolesWhenTheNumberOfInputsStays) {
    Prepared prepared(MakeList(), false);
    prepared.fList.SetRole(kColour, NBRole::kPossibleInput);
    prepared.fList.SetRole(kShape, NBRole::kInput);
    prepared.fPreparator.SyncWithVarList();
    EXPECT_EQ(prepared.fPreparator.GetInputIndices(), (Integers{kColour, kSize}));
    EXPECT_EQ(prepared.fPreparator.GetVarIndex(), (Integers{2, 0, 3, 1, -1, -1}));
}

TEST(NBDataPreparator, TakesOverCategoriesThatAMergeAdded) {
    NBVarList list;
    list.AddCatVar("colour", "", 2, NBMeasureLevel::kNumericCat, NBRole::kInput);
    list.AddCatVar("target", "", 2, NBMeasureLevel::kNumericCat, NBRole::kTarget);
    Prepared prepared(list);
    const Record original(Doubles{2, 2});
    Record processed(2);
    double weight = 0.0;
    EXPECT_TRUE(prepared.fPreparator.PrepareRecord(original, processed, weight).IsError());
    NBVarList grown;
    grown.AddCatVar("colour", "", 3, NBMeasureLevel::kNumericCat, NBRole::kInput);
    grown.AddCatVar("target", "", 3, NBMeasureLevel::kNumericCat, NBRole::kTarget);
    prepared.fList = grown;
    prepared.fPreparator.RefreshCategoryCounts();
    EXPECT_TRUE(prepared.fPreparator.PrepareRecord(original, processed, weight).IsOK());
    EXPECT_EQ(prepared.fPreparator.GetInputNumCategories(), (Integers{3}));
}

TEST(NBDataPreparator, DisplaysItsFields) {
    Prepared prepared(MakeList());
    std::ostringstream list;
    prepared.fList.Display(list);
    std::ostringstream out;
    prepared.fPreparator.Display(out);
    EXPECT_EQ(out.str(),
              "NBDataPreparator object: \n"
              "\tPossible inputs used? Yes.\n"
              "\tOriginal record size = 6\n"
              "\tProcessed record size = 5\n"
              "\tInput-only record size = 3\n"
              "\tFrequency weight original and new indices: 3 1\n"
              "\tVariable index: 2 0 3 1 4 -1 \n"
              "\tIndices of input variables in the variable list: 0 2 4 \n"
              "\tVariable measurement levels: 2 2 1 4 2 2 \n"
              "\tVariable roles: 1 3 1 4 2 5 \n"
              "\tNumbers of categories: 3 2 2 0 2 2 \n"
              "\tStatus is OK.\n" +
                  list.str());
}

TEST(NBDataPreparator, DisplaysItsErrorCode) {
    Prepared prepared(MakeList(), false);
    RecordSource source({});
    std::unique_ptr<MCCommon::MultiPassRecordIter> store;
    std::int32_t count = 0;
    EXPECT_TRUE(prepared.fPreparator.PrepareRecords(source, 5, true, store, count, "").IsError());
    std::ostringstream out;
    prepared.fPreparator.Display(out);
    EXPECT_NE(out.str().find("\tPossible inputs used? No.\n"), std::string::npos);
    EXPECT_NE(out.str().find("\tStatus has error code 70011\n"), std::string::npos);
}

}  // namespace
