#include "host/CaseDelivery.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "embedded/HostSession.h"
#include "embedded/command/CommandTokens.h"
#include "embedded/data/DataSetBuilder.h"
#include "embedded/output/Report.h"
#include "host/HostGlobals.h"
#include "host/Progress.h"

namespace {

using embedded::DataSet;
using embedded::DataSetBuilder;
using MCMV::gMissingValue;

struct Specs final : UAVarValidSpecs {
    using UAVarValidSpecs::UAVarValidSpecs;
};
struct Adapter final : UAInputAdapter {
    using UAInputAdapter::UAInputAdapter;
};
struct Iterator final : UAProcDataSourceIter {
    using UAProcDataSourceIter::UAProcDataSourceIter;
};

// A session over a data set, with all its variables registered in order.
class Delivery {
 public:
    Delivery(DataSet data, const std::vector<bool>& categorical, bool userMissExclude = true)
        : fData(std::move(data)),
          fCommands(embedded::ParseCommandText("SELECTPRED x;", "test").fvCommands),
          fSession(fData, fCommands.front(), fReport),
          fSpecs(true, userMissExclude, true) {
        for (std::int32_t i = 0; i < fData.ColumnCount(); ++i) {
            if (i == fData.WeightIndex()) {
                fSpecs.SetWeightVar(i);
            } else {
                fSpecs.AddVariable(i, categorical[static_cast<std::size_t>(i)]);
            }
        }
        fpAdapter = std::make_unique<Adapter>(&fSpecs, fSource);
        fpIterator = std::make_unique<Iterator>(*fpAdapter, true);
    }

    std::vector<std::vector<double>> ReadAll() {
        std::vector<std::vector<double>> rows;
        while (const MCCommon::Record* record = fpIterator->Next()) {
            std::vector<double>& row = rows.emplace_back();
            for (std::int32_t i = 0; i < record->Size(); ++i) row.push_back((*record)[i]);
        }
        return rows;
    }

    DataSet fData;
    std::vector<embedded::CommandTokens> fCommands;
    embedded::CommandReport fReport;
    embedded::HostSession fSession;
    ProcedureDataSource fSource;
    Specs fSpecs;
    std::unique_ptr<Adapter> fpAdapter;
    std::unique_ptr<Iterator> fpIterator;
};

using Rows = std::vector<std::vector<double>>;

TEST(CaseDelivery, RecordColumnsFollowTheOrderOfRegistration) {
    Specs specs(true, true, true);
    EXPECT_EQ(specs.AddVariable(7, true), 0);
    EXPECT_EQ(specs.SetWeightVar(3), 1);
    std::vector<std::int32_t> columns;
    specs.AddVariables({4, 5}, columns, {false, true});
    EXPECT_EQ(columns, (std::vector<std::int32_t>{2, 3}));
    EXPECT_EQ(specs.GetNRecordVars(), 4);
    EXPECT_EQ(specs.GetKOLTVarIndex(2), 4);
    EXPECT_TRUE(specs.GetKOLTCatVar(7));
    EXPECT_FALSE(specs.GetKOLTCatVar(4));
    EXPECT_FALSE(specs.GetKOLTCatVar(99)) << "not registered";
    EXPECT_EQ(specs.GetWeightColumn(), 1);
}

TEST(CaseDelivery, CodesAscendByValueWhateverTheOrderOfRows) {
    Delivery run(DataSetBuilder()
                     .Strings("s", {"b", "a", std::nullopt, "c", "a"})
                     .Numbers("n", {10, -3, 10, gMissingValue, 2.5})
                     .Build(),
                 {true, true});
    EXPECT_EQ(run.ReadAll(), (Rows{{1, 2}, {0, 0}, {-1, 2}, {2, -1}, {0, 1}}));
    EXPECT_EQ(run.fpAdapter->GetCatVarSize(0), 3);
    EXPECT_EQ(run.fpAdapter->GetCatVarSize(1), 3);
}

TEST(CaseDelivery, CodesAreDecodedToTheirValues) {
    Delivery run(DataSetBuilder().Strings("s", {"b", "a"}).Numbers("n", {5, 4}).Build(),
                 {true, true});
    std::int32_t variable = -1;
    KoltObs value;
    ASSERT_TRUE(run.fpAdapter->DecodeCatValue(0, 1, variable, value));
    EXPECT_EQ(variable, 0);
    EXPECT_EQ(value, KoltObs(std::string("b")));
    ASSERT_TRUE(run.fpAdapter->DecodeCatValue(1, 0, variable, value));
    EXPECT_EQ(value, KoltObs(4.0));
    EXPECT_FALSE(run.fpAdapter->DecodeCatValue(1, 2, variable, value));
    EXPECT_FALSE(run.fpAdapter->DecodeCatValue(1, -1, variable, value));
}

TEST(CaseDelivery, ContinuousValuesArriveAsTheyAreWithTheirRange) {
    Delivery run(DataSetBuilder()
                     .Numbers("x", {2, gMissingValue, -7.5, 4})
                     .Numbers("y", {gMissingValue, gMissingValue, gMissingValue, gMissingValue})
                     .Build(),
                 {false, false});
    EXPECT_EQ(run.ReadAll(), (Rows{{2, gMissingValue},
                                   {gMissingValue, gMissingValue},
                                   {-7.5, gMissingValue},
                                   {4, gMissingValue}}));
    EXPECT_EQ(run.fpAdapter->GetContMinValue(0), -7.5);
    EXPECT_EQ(run.fpAdapter->GetContMaxValue(0), 4);
    EXPECT_EQ(run.fpAdapter->GetContMinValue(1), gMissingValue);
    EXPECT_EQ(run.fpAdapter->GetContMaxValue(1), gMissingValue);
}

DataSet WithUserMissing() {
    return DataSetBuilder()
        .Numbers("x", {1, 99, 3, 150})
        .Missing({true, 100, 200, {KoltObs(99.0)}})
        .Numbers("c", {1, 2, 9, 1})
        .Missing({false, 0, 0, {KoltObs(9.0)}})
        .Strings("s", {"a", "?", "b", "a"})
        .Missing({false, 0, 0, {KoltObs(std::string("?"))}})
        .Build();
}

TEST(CaseDelivery, UserMissingExcludedArrivesAsMissing) {
    Delivery run(WithUserMissing(), {false, true, true}, true);
    EXPECT_EQ(run.ReadAll(),
              (Rows{{1, 0, 0}, {gMissingValue, 1, -1}, {3, -1, 1}, {gMissingValue, 0, 0}}));
    EXPECT_EQ(run.fpAdapter->GetCatVarSize(1), 2);
    EXPECT_EQ(run.fpAdapter->GetContMaxValue(0), 3);
}

TEST(CaseDelivery, UserMissingIncludedArrivesAsValue) {
    Delivery run(WithUserMissing(), {false, true, true}, false);
    EXPECT_EQ(run.ReadAll(), (Rows{{1, 0, 1}, {99, 1, 0}, {3, 2, 2}, {150, 0, 1}}));
    EXPECT_EQ(run.fpAdapter->GetCatVarSize(2), 3);
}

TEST(CaseDelivery, CasesWithoutAWeightAboveZeroAreNotDelivered) {
    Delivery run(DataSetBuilder()
                     .Strings("s", {"only here", "b", "c", "d", "b", "c"})
                     .Numbers("w", {0, 1, gMissingValue, -2, 3, 99})
                     .Missing({false, 0, 0, {KoltObs(99.0)}})
                     .Weight()
                     .Build(),
                 {true, false}, false);
    EXPECT_EQ(run.ReadAll(), (Rows{{0, 1}, {0, 3}})) << "codes close up over the delivered cases";
    EXPECT_EQ(run.fpAdapter->GetCatVarSize(0), 1);
    EXPECT_FALSE(run.fReport.fbFractionalWeights);
}

TEST(CaseDelivery, FractionalWeightsAreNotedInTheReport) {
    Delivery run(DataSetBuilder().Numbers("x", {1, 2}).Numbers("w", {1, 0.4}).Weight().Build(),
                 {false, false});
    EXPECT_TRUE(run.fReport.fbFractionalWeights);
    EXPECT_EQ(run.ReadAll().size(), 2U);
}

TEST(CaseDelivery, NoRowsIsNoValidCase) {
    Delivery run(DataSetBuilder().Numbers("x", {}).Build(), {false});
    EXPECT_EQ(run.fpIterator->GetFailReason(), MCCommon::kITER_NO_VALID_CASE);
    EXPECT_FALSE(run.fpIterator->HasMore());
    EXPECT_EQ(run.fpIterator->Next(), nullptr);
}

TEST(CaseDelivery, AllWeightsZeroIsNoValidCase) {
    Delivery run(DataSetBuilder().Numbers("x", {1, 2}).Numbers("w", {0, 0}).Weight().Build(),
                 {false, false});
    EXPECT_EQ(run.fpIterator->GetFailReason(), MCCommon::kITER_NO_VALID_CASE);
}

TEST(CaseDelivery, FailReasonIsSuccessAsLongAsThereIsMore) {
    Delivery run(DataSetBuilder().Numbers("x", {1, 2}).Build(), {false});
    EXPECT_EQ(run.fpIterator->GetFailReason(), MCCommon::kITER_SUCCESS) << "not asked yet";
    run.fpIterator->Next();
    EXPECT_EQ(run.fpIterator->GetFailReason(), MCCommon::kITER_SUCCESS);
    run.fpIterator->Next();
    EXPECT_EQ(run.fpIterator->GetFailReason(), MCCommon::kITER_NO_VALID_CASE);
    EXPECT_FALSE(run.fpIterator->HasMore());
}

TEST(CaseDelivery, AStringReadAsANumberIsMissing) {
    Delivery run(DataSetBuilder().Strings("s", {"1", "2"}).Build(), {false});
    EXPECT_EQ(run.ReadAll(), (Rows{{gMissingValue}, {gMissingValue}}));
}

TEST(CaseDelivery, ASecondPassGivesTheSameRecords) {
    Delivery run(DataSetBuilder().Strings("s", {"b", "a"}).Numbers("x", {1, 2}).Build(),
                 {true, false});
    const Rows first = run.ReadAll();
    run.fpIterator->NewPass();
    EXPECT_EQ(run.ReadAll(), first);
    EXPECT_EQ(run.fpAdapter->GetCatVarSize(0), 2);
}

TEST(CaseDelivery, AskingForMoreTwiceLosesNoCase) {
    Delivery run(DataSetBuilder().Numbers("x", {1, 2}).Build(), {false});
    EXPECT_TRUE(run.fpIterator->HasMore());
    EXPECT_TRUE(run.fpIterator->HasMore());
    EXPECT_EQ(run.ReadAll().size(), 2U);
}

class OddCases final : public UAProcDataSourceIter {
 public:
    explicit OddCases(UAInputAdapter& adapter) : UAProcDataSourceIter(adapter, false) {}
    bool PreprocessCase() override { return fSeen++ % 2 == 0; }

 private:
    int fSeen = 0;
};

TEST(CaseDelivery, PreprocessCaseLeavesCasesOut) {
    Delivery run(DataSetBuilder().Numbers("x", {1, 2, 3}).Build(), {false});
    OddCases odd(*run.fpAdapter);
    std::vector<double> seen;
    while (const MCCommon::Record* record = odd.Next()) seen.push_back((*record)[0]);
    EXPECT_EQ(seen, (std::vector<double>{1, 3}));
}

class Counter final : public ProgressListener {
 public:
    void OnProgress(const ProgressReport& report) override {
        fvRecords.push_back(report.GetInteger("records"));
        EXPECT_EQ(report.GetInteger("totalRecords"), embedded::kChunkRows + 1);
        EXPECT_GE(report.GetDouble("elapsedTime"), 0.0);
    }
    std::vector<std::int32_t> fvRecords;
};

class ChunkBorder : public testing::TestWithParam<std::int32_t> {};

TEST_P(ChunkBorder, EveryRowIsDeliveredOnce) {
    const std::int32_t rows = embedded::kChunkRows + GetParam();
    std::vector<double> numbers;
    std::vector<std::optional<std::string>> texts;
    for (std::int32_t row = 0; row < rows; ++row) {
        numbers.push_back(row);
        texts.push_back(row % 7 == 0
                            ? std::nullopt
                            : std::optional(std::string(1, static_cast<char>('a' + row % 5))));
    }
    Delivery run(DataSetBuilder().Numbers("x", numbers).Strings("s", texts).Build(), {false, true});
    std::int32_t row = 0;
    while (const MCCommon::Record* record = run.fpIterator->Next()) {
        ASSERT_EQ((*record)[0], row);
        ASSERT_EQ((*record)[1], row % 7 == 0 ? -1 : row % 5) << row;
        ++row;
    }
    EXPECT_EQ(row, rows);
}
INSTANTIATE_TEST_SUITE_P(Rows, ChunkBorder, testing::Values(-1, 0, 1));

TEST(CaseDelivery, ProgressIsToldAtEachChunkAndAtTheEnd) {
    std::vector<double> numbers(static_cast<std::size_t>(embedded::kChunkRows) + 1, 1.0);
    Delivery run(DataSetBuilder().Numbers("x", numbers).Build(), {false});
    Counter counter;
    run.fSession.SetProgress(&counter);
    run.ReadAll();
    EXPECT_EQ(counter.fvRecords,
              (std::vector<std::int32_t>{0, embedded::kChunkRows, embedded::kChunkRows + 1}));
}

TEST(CaseDelivery, NoValidCasesSetsTheErrorWordAndTheWarningDoesNot) {
    Delivery run(DataSetBuilder().Numbers("x", {}).Build(), {false});
    const UAInpAdaptMsg messages(run.fSource);
    messages.NoValidCasesForSelect();
    EXPECT_EQ(pvGetCmnGlb()[kErrorWord], 0);
    messages.NoValidCases();
    EXPECT_NE(pvGetCmnGlb()[kErrorWord], 0);
    ASSERT_EQ(run.fReport.fvMessages.size(), 2U);
    EXPECT_EQ(run.fReport.fvMessages[0].fLevel, embedded::MessageLevel::Warning);
    EXPECT_EQ(run.fReport.fvMessages[1].fLevel, embedded::MessageLevel::Error);
}

// Several passes: training cases are those with x above 0.
class Sampled final : public UAProcDataSourceIter {
 public:
    Sampled(UAInputAdapter& adapter, bool train, bool test)
        : UAProcDataSourceIter(adapter, false), fAdapter(adapter), fbTrain(train), fbTest(test) {}

    bool PreprocessCase() override {
        fvCaseCounts.push_back(fAdapter.GetCaseCount());
        fvPassCounts.push_back(fAdapter.GetDataPassCount());
        fbIsTrain = fAdapter.GetDSIterator()->GetNumericValue(0) > 0.0;
        return fbIsTrain ? fbTrain : fbTest;
    }

    std::vector<std::vector<double>> ReadRest() {
        std::vector<std::vector<double>> rows;
        while (const MCCommon::Record* record = Next()) {
            std::vector<double>& row = rows.emplace_back();
            for (std::int32_t i = 0; i < record->Size(); ++i) row.push_back((*record)[i]);
        }
        return rows;
    }

    bool fbIsTrain = false;
    std::vector<std::int32_t> fvCaseCounts;
    std::vector<std::int32_t> fvPassCounts;

 private:
    UAInputAdapter& fAdapter;
    bool fbTrain;
    bool fbTest;
};

// Cases 0, 2 and 4 train; "a" and "d" occur in the other ones alone.
DataSet Mixed() {
    return DataSetBuilder()
        .Numbers("x", {1, -1, 2, -2, 3, -3})
        .Strings("s", {"c", "a", "b", "d", "c", "a"})
        .Build();
}

struct SampledDelivery : Delivery {
    explicit SampledDelivery(DataSet data = Mixed()) : Delivery(std::move(data), {false, true}) {
        fpIterator.reset();
        fpTrain = std::make_unique<Sampled>(*fpAdapter, true, false);
    }
    void ReadFirstPass() {
        EXPECT_EQ(fpTrain->NewPass(), MCCommon::kITER_SUCCESS);
        fpTrain->ReadRest();
    }
    std::unique_ptr<Sampled> fpTrain;
};

TEST(Passes, TheFirstPassLearnsOnlyWhatItDelivers) {
    SampledDelivery run;
    run.ReadFirstPass();
    EXPECT_EQ(run.fpAdapter->GetCatVarSize(1), 2);
    EXPECT_EQ(run.fpAdapter->GetContMinValue(0), 1);
    EXPECT_EQ(run.fpAdapter->GetContMaxValue(0), 3);
}

TEST(Passes, ReorderedCategoriesAscendWithoutGaps) {
    SampledDelivery run;
    run.ReadFirstPass();
    run.fpAdapter->ReorderCategories(1, true);
    std::int32_t variable = -1;
    KoltObs value;
    ASSERT_TRUE(run.fpAdapter->DecodeCatValue(1, 0, variable, value));
    EXPECT_EQ(value, KoltObs(std::string("b")));
    ASSERT_TRUE(run.fpAdapter->DecodeCatValue(1, 1, variable, value));
    EXPECT_EQ(value, KoltObs(std::string("c")));
    EXPECT_FALSE(run.fpAdapter->DecodeCatValue(1, 2, variable, value));
    EXPECT_EQ(run.fpTrain->NewPass(), MCCommon::kITER_SUCCESS);
    EXPECT_EQ(run.fpTrain->ReadRest(), (Rows{{1, 1}, {2, 0}, {3, 1}}));
}

TEST(Passes, ReorderedCategoriesDescendWhenAskedTo) {
    SampledDelivery run;
    run.ReadFirstPass();
    run.fpAdapter->ReorderCategories(1, true);
    run.fpAdapter->ReorderCategories(1, false);
    run.fpTrain->NewPass();
    EXPECT_EQ(run.fpTrain->ReadRest(), (Rows{{1, 0}, {2, 1}, {3, 0}}));
}

TEST(Passes, ACategoryThatOnlyALaterPassMeetsIsMissingAndCountedOnce) {
    SampledDelivery run;
    run.ReadFirstPass();
    run.fpAdapter->ReorderCategories(1, true);
    Sampled test(*run.fpAdapter, false, true);
    EXPECT_EQ(test.NewPass(), MCCommon::kITER_SUCCESS);
    EXPECT_EQ(test.ReadRest(), (Rows{{-1, -1}, {-2, -1}, {-3, -1}}));
    Sampled all(*run.fpAdapter, true, true);
    all.NewPass();
    EXPECT_EQ(all.ReadRest().size(), 6U);
    EXPECT_EQ(run.fpAdapter->GetCatVarSize(1), 2) << "later passes teach nothing";
    EXPECT_EQ(run.fpAdapter->GetContMinValue(0), 1);
    run.fSession.AddClosingNotes();
    ASSERT_EQ(run.fReport.fvNotes.size(), 1U);
    EXPECT_EQ(run.fReport.fvNotes[0].fText, "s: 3");
}

TEST(Passes, WithoutUnknownCategoriesThereIsNoNote) {
    SampledDelivery run;
    run.ReadFirstPass();
    run.fpTrain->NewPass();
    run.fpTrain->ReadRest();
    run.fSession.AddClosingNotes();
    EXPECT_TRUE(run.fReport.fvNotes.empty());
}

TEST(Passes, EveryCaseIsPreprocessedOnceInOrderAndCounted) {
    SampledDelivery run;
    EXPECT_EQ(run.fpAdapter->GetCaseCount(), 0);
    run.fpTrain->NewPass();
    EXPECT_EQ(run.fpAdapter->GetCaseCount(), 1) << "stands on the first";
    run.fpTrain->ReadRest();
    EXPECT_EQ(run.fpAdapter->GetCaseCount(), 6);
    EXPECT_EQ(run.fpTrain->fvCaseCounts, (std::vector<std::int32_t>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(run.fpTrain->fvPassCounts, std::vector<std::int32_t>(6, 0));
    EXPECT_EQ(run.fpAdapter->GetDataPassCount(), 1);
    Sampled test(*run.fpAdapter, false, true);
    test.NewPass();
    EXPECT_EQ(run.fpAdapter->GetCaseCount(), 2) << "its first is the second of the file";
    EXPECT_EQ(test.fvPassCounts, std::vector<std::int32_t>(2, 1));
}

TEST(Passes, CasesWithoutAWeightArePreprocessedToo) {
    SampledDelivery run(DataSetBuilder()
                            .Numbers("x", {1, 2, 3})
                            .Numbers("w", {0, 1, gMissingValue})
                            .Weight()
                            .Build());
    run.fpTrain->NewPass();
    EXPECT_EQ(run.fpTrain->ReadRest(), (Rows{{2, 1}}));
    EXPECT_EQ(run.fpTrain->fvCaseCounts, (std::vector<std::int32_t>{1, 2, 3}));
}

TEST(Passes, ThePassStandsOnTheCaseThatCurrentGives) {
    SampledDelivery run;
    Sampled all(*run.fpAdapter, true, true);
    EXPECT_EQ(all.Current(), nullptr);
    ASSERT_EQ(all.NewPass(true), MCCommon::kITER_SUCCESS);
    std::vector<double> seen;
    while (all.HasMore()) {
        const MCCommon::Record* current = all.Current();
        ASSERT_NE(current, nullptr);
        seen.push_back((*current)[0]);
        EXPECT_EQ(all.fbIsTrain, seen.back() > 0);
        EXPECT_EQ(all.GetProcDS()->GetNumericValue(0), seen.back());
        EXPECT_EQ(all.Next(), current);
        EXPECT_EQ((*current)[0], seen.back()) << "valid until the next call";
    }
    EXPECT_EQ(seen, (std::vector<double>{1, -1, 2, -2, 3, -3}));
    EXPECT_EQ(all.Current(), nullptr);
    EXPECT_EQ(run.fpAdapter->GetDSIterator(), nullptr);
}

TEST(Passes, APassWithoutACaseFailsAtOnce) {
    SampledDelivery run(DataSetBuilder().Numbers("x", {-1, -2}).Strings("s", {"a", "b"}).Build());
    EXPECT_EQ(run.fpTrain->NewPass(), MCCommon::kITER_NO_VALID_CASE);
    EXPECT_FALSE(run.fpTrain->HasMore());
    EXPECT_EQ(run.fpTrain->GetFailReason(), MCCommon::kITER_NO_VALID_CASE);
}

TEST(Passes, APassThatDoesNotStandOnItsFirstRecordReadsNothingYet) {
    SampledDelivery run;
    EXPECT_EQ(run.fpTrain->NewPass(false), MCCommon::kITER_SUCCESS);
    EXPECT_EQ(run.fpAdapter->GetCaseCount(), 0);
    EXPECT_TRUE(run.fpTrain->HasMore());
    EXPECT_EQ(run.fpAdapter->GetCaseCount(), 1);
}

TEST(Passes, ANewPassEndsThatOfAnotherIterator) {
    SampledDelivery run;
    run.ReadFirstPass();
    run.fpTrain->NewPass();
    Sampled all(*run.fpAdapter, true, true);
    all.NewPass();
    EXPECT_FALSE(run.fpTrain->HasMore());
    EXPECT_EQ(run.fpTrain->Current(), nullptr);
    EXPECT_EQ(all.ReadRest().size(), 6U);
    EXPECT_EQ(run.fpTrain->NewPass(), MCCommon::kITER_SUCCESS);
    EXPECT_EQ(run.fpTrain->ReadRest().size(), 3U);
}

TEST(Passes, AFirstPassThatIsBrokenOffLimitsTheLaterOnes) {
    SampledDelivery run;
    run.fpTrain->NewPass();
    run.fpTrain->Next();
    run.fpTrain->StopPass();
    EXPECT_EQ(run.fpAdapter->GetDataPassCount(), 1);
    EXPECT_FALSE(run.fpTrain->HasMore());
    Sampled all(*run.fpAdapter, true, true);
    all.NewPass();
    EXPECT_EQ(all.ReadRest(), (Rows{{1, 2}, {-1, -1}, {2, 1}})) << "stood on the third case";
}

TEST(Passes, StoppingWithoutAPassDoesNothing) {
    SampledDelivery run;
    run.fpTrain->StopPass();
    EXPECT_EQ(run.fpAdapter->GetDataPassCount(), 0);
    run.ReadFirstPass();
    run.fpTrain->StopPass();
    EXPECT_EQ(run.fpAdapter->GetDataPassCount(), 1);
}

TEST(Passes, NoPassFollowsTheLast) {
    SampledDelivery run;
    run.fpTrain->NewPass(true);
    run.fpTrain->SetLastPass();
    EXPECT_EQ(run.fpTrain->ReadRest().size(), 3U);
    EXPECT_EQ(run.fpTrain->NewPass(), MCCommon::kITER_NO_NEW_PASS);
    EXPECT_FALSE(run.fpTrain->HasMore());
}

TEST(Passes, NewColumnsAreWrittenIntoTheRowOfTheCase) {
    SampledDelivery run;
    run.ReadFirstPass();
    run.fSource.SetMaxObsAdded(2);
    std::int32_t number = -1;
    std::int32_t text = -1;
    run.fSource.MakeVariable(0, number)->SetName("number");
    run.fSource.MakeVariable(3, text)->SetName("text");
    Sampled test(*run.fpAdapter, false, true);
    test.NewPass(true);
    test.SetLastPass();
    KOLT_InputCaseIterator* writer = test.GetProcDS();
    while (test.HasMore()) {
        const double x = (*test.Current())[0];
        if (x != -2) {
            writer->SetColumnValue(number, 10 * x);
            writer->SetColumnValue(text, x == -1 ? "\xC3\xA4\xC3\xB6" : "b", 3);
        }
        test.Next();
    }
    run.fSession.Keep();
    ASSERT_EQ(run.fData.ColumnCount(), 4);
    std::vector<KoltObs> numbers;
    std::vector<KoltObs> texts;
    for (std::int64_t row = 0; row < 6; ++row) {
        numbers.push_back(run.fData.GetColumn(number).Value(row));
        texts.push_back(run.fData.GetColumn(text).Value(row));
    }
    const KoltObs none = gMissingValue;
    EXPECT_EQ(numbers, (std::vector<KoltObs>{none, -10.0, none, none, none, -30.0}));
    EXPECT_EQ(texts, (std::vector<KoltObs>{none, std::string("\xC3\xA4"), none, none, none,
                                           std::string("b")}))
        << "cut off at a character";
    EXPECT_EQ(run.fReport.fvSavedVariables, (std::vector<std::string>{"number", "text"}));
}

struct ReaderCase {
    const char* fName;
    bool fbIncludeUserMissing;
    std::vector<bool> fvExpected;
};
void PrintTo(const ReaderCase& readerCase, std::ostream* out) { *out << readerCase.fName; }
class CaseValueReader : public testing::TestWithParam<ReaderCase> {};

TEST_P(CaseValueReader, TellsWhetherTheCaseHasAValidValue) {
    for (const std::int32_t variable : {1, 2}) {
        Delivery run(DataSetBuilder()
                         .Numbers("x", {1, 2, 3})
                         .Strings("s", {"a", "?", std::nullopt})
                         .Missing({false, 0, 0, {KoltObs(std::string("?"))}})
                         .Numbers("n", {5, 99, gMissingValue})
                         .Missing({true, 90, 99, {}})
                         .Build(),
                     {false, true, false});
        const UACaseValueReader reader(*run.fpAdapter, variable, GetParam().fbIncludeUserMissing);
        std::vector<bool> valid;
        while (run.fpIterator->HasMore()) {
            valid.push_back(reader.UpdateValid());
            run.fpIterator->Next();
        }
        EXPECT_EQ(valid, GetParam().fvExpected) << variable;
    }
}
INSTANTIATE_TEST_SUITE_P(UserMissing, CaseValueReader,
                         testing::Values(ReaderCase{"Included", true, {true, true, false}},
                                         ReaderCase{"Excluded", false, {true, false, false}}));

TEST(Passes, ProgressIsToldInEveryPass) {
    class Listener final : public ProgressListener {
     public:
        void OnProgress(const ProgressReport& report) override {
            fvPasses.push_back(report.GetInteger("pass"));
        }
        std::vector<std::int32_t> fvPasses;
    };
    SampledDelivery run;
    Listener listener;
    run.fSession.SetProgress(&listener);
    run.ReadFirstPass();
    run.ReadFirstPass();
    EXPECT_EQ(listener.fvPasses, (std::vector<std::int32_t>{1, 1, 2, 2}));
}

}  // namespace
