#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "naivebayes/tests/EngineFixture.h"

using namespace enginetest;

namespace {

const Rows kRows{{0, 0, 0}, {0, 0, 1}, {0, 1, 2}, {1, 1, 2}, {1, 1, 2}};

NBVarList WeightedList() {
    NBVarList list = CategoricalList(2, {2, 3});
    list.AddWeightVar("w", "", 1);
    return list;
}

/// Tells the numbers of records it was told, and may act on them.
class Listener : public ProgressListener {
 public:
    void OnProgress(const ProgressReport& report) override {
        fvRecords.push_back(report.GetInteger("trainRecords"));
        EXPECT_GE(report.GetDouble("elapsedTime"), 0.0);
        EXPECT_EQ(report.GetInteger("records"), -1);
        if (fOnReport) fOnReport();
    }
    std::vector<std::int32_t> fvRecords;
    std::function<void()> fOnReport;
};

}  // namespace

TEST(NBAlgorithmTraining, CountsRecordsAndTargets) {
    const auto engine = Create(CategoricalList(2, {2, 3}));
    EXPECT_FALSE(engine->IsModelBuilt());
    Source source(kRows);
    EXPECT_EQ(engine->BuildModel(source, 5), NBStatus());
    EXPECT_TRUE(engine->IsModelBuilt());
    EXPECT_EQ(engine->GetStatus(), NBStatus());
    EXPECT_EQ(source.fNext, 0U) << "the source is rewound";
    EXPECT_EQ(RecordCounts(*engine), (Counts{5.0, 0.0, 5, 0}));
    EXPECT_EQ(engine->GetNumInputVars(), 2);
    EXPECT_EQ(engine->GetNumTargetCategories(), 2);
    EXPECT_EQ(engine->GetTargetCategoryCounts(0), (INBAlgorithm::CategoryCounts{3, 3.0}));
    EXPECT_EQ(engine->GetTargetCategoryCounts(1), (INBAlgorithm::CategoryCounts{2, 2.0}));
}

TEST(NBAlgorithmTraining, ATargetCategoryOutOfRangeHasNoCounts) {
    const auto engine = Built(CategoricalList(2, {2, 3}), kRows);
    EXPECT_EQ(engine->GetTargetCategoryCounts(-1), (INBAlgorithm::CategoryCounts{-1, -1.0}));
    EXPECT_EQ(engine->GetTargetCategoryCounts(2), (INBAlgorithm::CategoryCounts{-1, -1.0}));
}

TEST(NBAlgorithmTraining, TheVersionNamesTheComponentAndTheCopyright) {
    EXPECT_EQ(Create(CategoricalList(2, {2}))->GetVersionString(),
              "Naive Bayes Component Ver. 1.0\nCopyright (c) 2026 The predselect authors");
}

TEST(NBAlgorithmTraining, ASingleRecordIsTooLittle) {
    const auto engine = Create(CategoricalList(2, {2, 3}));
    EXPECT_EQ(Build(*engine, {{0, 0, 0}}), Error(NBCode::kTooLittleData));
    EXPECT_FALSE(engine->IsModelBuilt());
    EXPECT_EQ(engine->GetStatus(), Error(NBCode::kTooLittleData));
}

TEST(NBAlgorithmTraining, AStoredErrorBlocksAllLaterWork) {
    const auto engine = Create(CategoricalList(2, {2, 3}));
    const NBStatus error = Error(NBCode::kTooLittleData);
    Build(*engine, {{0, 0, 0}});
    Source source(kRows);
    NBOutput output;
    NBOutputStatistics table;
    std::ostringstream stream;
    Selection selection;
    EXPECT_EQ(engine->BuildModel(source, 5), error);
    EXPECT_EQ(engine->UpdateModel(source, 5), error);
    EXPECT_EQ(selection.Run(*engine, kRows), error);
    EXPECT_EQ(engine->ScoreRecord(MCCommon::Record({0, 0, 0}), output), error);
    EXPECT_EQ(engine->ScoreInputRecord(MCCommon::Record({0, 0}), output), error);
    EXPECT_EQ(engine->TallyRecord(MCCommon::Record({0, 0, 0}), output, true), error);
    EXPECT_EQ(engine->ClassifyRecords(source, table, 5), error);
    EXPECT_EQ(engine->WritePMML(stream, nullptr), error);
    EXPECT_EQ(engine->SaveBinary(stream), error);
    EXPECT_EQ(engine->SaveXML(stream), error);
    EXPECT_TRUE(stream.str().empty());
    EXPECT_EQ(source.fNext, 0U) << "nothing was read";
}

TEST(NBAlgorithmTraining, AnEmptySourceHasNoUsableRecords) {
    EXPECT_EQ(Build(*Create(CategoricalList(2, {2, 3})), {}), Error(NBCode::kNoUsableRecords));
}

TEST(NBAlgorithmTraining, RecordsWithoutTargetAreExcluded) {
    Rows rows = kRows;
    rows.push_back({-1, 0, 0});
    rows.push_back({kMissing, 0, 0});
    rows.push_back({2, 0, 0});
    const auto engine = Create(CategoricalList(2, {2, 3}));
    EXPECT_EQ(Build(*engine, rows), NBStatus());
    EXPECT_EQ(RecordCounts(*engine), (Counts{5.0, 3.0, 5, 3}));
}

TEST(NBAlgorithmTraining, NullRecordsArePassedOver) {
    Rows rows = kRows;
    rows.insert(rows.begin() + 1, std::vector<double>{});
    rows.push_back({});
    const auto engine = Create(CategoricalList(2, {2, 3}));
    EXPECT_EQ(Build(*engine, rows), NBStatus());
    EXPECT_EQ(RecordCounts(*engine), (Counts{5.0, 0.0, 5, 0}));
}

TEST(NBAlgorithmTraining, ABadInputOfARecordWithoutTargetLetsItCountForTheFirstCategory) {
    // The later warning takes the place of the missing target's error; its code is then 0.
    Rows rows = kRows;
    rows.push_back({-1, 0, 9});
    const auto engine = Create(CategoricalList(2, {2, 3}));
    EXPECT_EQ(Build(*engine, rows), NBStatus());
    EXPECT_EQ(RecordCounts(*engine), (Counts{6.0, 0.0, 6, 0}));
    EXPECT_EQ(engine->GetTargetCategoryCounts(0).fUnweighted, 4);
}

TEST(NBAlgorithmTraining, ABadInputOfARecordWithATargetOutOfRangeIsReadButNotCounted) {
    Rows rows = kRows;
    rows.push_back({7, 0, 9});
    const auto engine = Create(CategoricalList(2, {2, 3}));
    EXPECT_EQ(Build(*engine, rows), NBStatus());
    EXPECT_EQ(RecordCounts(*engine), (Counts{5.0, 0.0, 5, 0}));
}

TEST(NBAlgorithmTraining, WeightsCountAndRecordsWithoutWeightAreExcluded) {
    const auto engine = Create(WeightedList());
    EXPECT_EQ(Build(*engine, {{0, 0, 0, 2.4},
                              {0, 1, 1, 0.6},
                              {1, 1, 2, 3},
                              {1, 0, 2, 0.2},
                              {1, 0, 2, -4},
                              {-1, 0, 2, 5}}),
              NBStatus());
    EXPECT_EQ(RecordCounts(*engine), (Counts{6.0, 5.0, 3, 3}));
    EXPECT_EQ(engine->GetTargetCategoryCounts(0), (INBAlgorithm::CategoryCounts{2, 3.0}));
    EXPECT_EQ(engine->GetTargetCategoryCounts(1), (INBAlgorithm::CategoryCounts{1, 3.0}));
}

TEST(NBAlgorithmTraining, NoMoreThanTheRecordsAskedForAreRead) {
    const auto engine = Create(CategoricalList(2, {2, 3}));
    Source source(kRows);
    EXPECT_EQ(engine->BuildModel(source, 4), NBStatus());
    EXPECT_EQ(RecordCounts(*engine).fRecords, 4);
}

TEST(NBAlgorithmTraining, APredictorWithOneFilledCategoryLeavesWithAWarning) {
    const auto engine = Create(CategoricalList(2, {2, 3, 2}));
    EXPECT_EQ(Build(*engine, {{0, 0, 2, 0}, {1, 1, 2, 1}, {1, 1, 2, 0}}),
              With(NBStatus(NBCode::kForcedUninformative, true), 2));
    EXPECT_EQ(engine->GetStatus().GetCode(), NBCode::kForcedUninformative);
    EXPECT_TRUE(engine->IsModelBuilt());
    EXPECT_EQ(engine->GetNumInputVars(), 2);
    EXPECT_EQ(engine->GetVarList().GetRole(2), kUnused);
    // The predictor behind it is still read at its place.
    NBOutput output;
    EXPECT_EQ(engine->ScoreRecord(MCCommon::Record({0, 0, 2, 0}), output), NBStatus());
    EXPECT_EQ(output.GetWinner(), 0);
}

TEST(NBAlgorithmTraining, OfSeveralThatLeaveTheFirstInTheListIsNamed) {
    // Tables are gone through from the last; the later warning takes the place of the earlier.
    const auto engine = Create(CategoricalList(2, {2, 3, 2}));
    EXPECT_EQ(Build(*engine, {{0, 0, 2, 0}, {1, 0, 2, 1}, {1, 0, 2, 0}}),
              With(NBStatus(NBCode::kForcedUninformative, true), 1));
    EXPECT_EQ(engine->GetNumInputVars(), 1);
}

TEST(NBAlgorithmTraining, WithoutAnyInformativePredictorThereIsNoModel) {
    const auto engine = Create(CategoricalList(2, {2, 3}));
    EXPECT_EQ(Build(*engine, {{0, 0, 2}, {1, 0, 2}}), Error(NBCode::kTooLittleData));
    EXPECT_FALSE(engine->IsModelBuilt());
}

TEST(NBAlgorithmTraining, BuildingAgainStartsAnew) {
    const auto engine = Built(CategoricalList(2, {2, 3}), kRows);
    EXPECT_EQ(Build(*engine, kRows), NBStatus());
    EXPECT_EQ(RecordCounts(*engine), (Counts{5.0, 0.0, 5, 0}));
    EXPECT_EQ(engine->GetTargetCategoryCounts(0).fUnweighted, 3);
}

TEST(NBAlgorithmTraining, UpdatingAddsToTheModel) {
    const NBVarList list = CategoricalList(2, {2, 3});
    const Rows more{{1, 0, 0}, {-1, 0, 0}, {0, 1, 1}};
    Rows all = kRows;
    all.insert(all.end(), more.begin(), more.end());
    const auto engine = Built(list, kRows);
    Source source(more);
    EXPECT_EQ(engine->UpdateModel(source, -1), NBStatus());
    EXPECT_EQ(source.fNext, 0U) << "the source is rewound";
    EXPECT_EQ(RecordCounts(*engine), (Counts{7.0, 1.0, 7, 1}));
    EXPECT_EQ(SavedBinary(*engine), SavedBinary(*Built(list, all)));
}

TEST(NBAlgorithmTraining, UpdatingAfterAPredictorHasLeftReadsTheOthersAtTheirPlaces) {
    const NBVarList list = CategoricalList(2, {2, 3, 3});
    const Rows first{{0, 0, 2, 0}, {1, 1, 2, 1}, {1, 1, 2, 0}};
    const Rows more{{0, 1, 2, 2}, {1, 0, 2, 2}};
    Rows all = first;
    all.insert(all.end(), more.begin(), more.end());
    const auto engine = Create(list);
    EXPECT_FALSE(Build(*engine, first).IsError());
    Source source(more);
    EXPECT_EQ(engine->UpdateModel(source, 2), NBStatus());
    const auto whole = Create(list);
    EXPECT_FALSE(Build(*whole, all).IsError());
    EXPECT_EQ(SavedBinary(*engine), SavedBinary(*whole));
}

TEST(NBAlgorithmTraining, UpdatingRefusesWhatItCannotUse) {
    const NBVarList list = CategoricalList(2, {2, 3});
    Source source(kRows);
    Source empty({});
    Source unusable(Rows{{-1, 0, 0}});
    EXPECT_EQ(Create(list)->UpdateModel(source, 5), Error(NBCode::kNotBuilt));
    const auto engine = Built(list, kRows);
    const std::string before = SavedBinary(*engine);
    EXPECT_EQ(engine->UpdateModel(empty, 5), Error(NBCode::kNoUsableRecords));
    EXPECT_EQ(engine->UpdateModel(source, 0), Error(NBCode::kNoRecordCount));
    EXPECT_EQ(engine->UpdateModel(unusable, 5), Error(NBCode::kNoUsableRecords));
    Source readButNotCounted(Rows{{7, 0, 9}});
    EXPECT_EQ(engine->UpdateModel(readButNotCounted, 5), Error(NBCode::kNoUsableRecords));
    EXPECT_EQ(SavedBinary(*engine), before);
}

TEST(NBAlgorithmTraining, WithoutASkipEachRecordIsReported) {
    Listener listener;
    const auto engine = Create(CategoricalList(2, {2, 3}));
    engine->SetProgressListener(&listener);
    EXPECT_EQ(Build(*engine, kRows), NBStatus());
    EXPECT_EQ(listener.fvRecords, (std::vector<std::int32_t>{1, 2, 3, 4, 5}));
}

TEST(NBAlgorithmTraining, ASkipLeavesReportsOutBetweenTwo) {
    Listener listener;
    const auto engine = Create(CategoricalList(2, {2, 3}));
    engine->SetProgressListener(&listener);
    engine->GetSettings().fNumSkip = 1;
    EXPECT_EQ(Build(*engine, kRows), NBStatus());
    EXPECT_EQ(listener.fvRecords, (std::vector<std::int32_t>{2, 4}));
}

TEST(NBAlgorithmTraining, AListenerMayInterrupt) {
    Listener listener;
    const auto engine = Create(CategoricalList(2, {2, 3}));
    listener.fOnReport = [&engine] { engine->Interrupt(); };
    engine->SetProgressListener(&listener);
    EXPECT_EQ(Build(*engine, kRows), Error(NBCode::kInterrupted));
    EXPECT_EQ(listener.fvRecords.size(), 1U);
    EXPECT_FALSE(engine->IsModelBuilt());
}

TEST(NBAlgorithmTraining, AnInterruptResetsTheModelForGood) {
    const auto engine = Built(CategoricalList(2, {2, 3}), kRows);
    engine->Interrupt();
    EXPECT_EQ(engine->GetStatus(), Error(NBCode::kInterrupted));
    EXPECT_FALSE(engine->IsModelBuilt());
    EXPECT_EQ(engine->GetNumInputVars(), 0);
    EXPECT_EQ(RecordCounts(*engine).fRecords, 0);
    EXPECT_EQ(engine->GetTargetCategoryCounts(0), (INBAlgorithm::CategoryCounts{0, 0.0}));
    EXPECT_EQ(Build(*engine, kRows), Error(NBCode::kInterrupted));
    EXPECT_EQ(engine->GetStatus(), Error(NBCode::kInterrupted));
}

TEST(NBAlgorithmTraining, ATimeLimitInterruptsAtAnyPollAndSticks) {
    // The stop processor says yes only once, whenever that is.
    bool ran = false;
    for (std::int32_t polls = 0; !ran && polls < 100; ++polls) {
        StopAtPoll stop(polls);
        NBStatus status;
        const auto engine = CreateNBAlgorithm(status, {}, CategoricalList(2, {2, 3}));
        ASSERT_NE(engine, nullptr);
        engine->SetInterruptSource(&stop);
        const NBStatus built = Build(*engine, kRows);
        ran = built.IsOK();
        if (ran) continue;
        EXPECT_EQ(built, Error(NBCode::kInterrupted)) << polls;
        EXPECT_FALSE(engine->IsModelBuilt());
        EXPECT_EQ(engine->GetStatus(), Error(NBCode::kInterrupted));
    }
    EXPECT_TRUE(ran);
}

TEST(NBAlgorithmTraining, AnEngineThatIsBornInterruptedIsNotMade) {
    StopAtPoll stop(0);
    NaiveBayesSettings settings;
    settings.fpStopProcessor = &stop;
    NBStatus status;
    EXPECT_EQ(CreateNBAlgorithm(status, settings, CategoricalList(2, {2})), nullptr);
    EXPECT_EQ(status, Error(NBCode::kInterrupted));
}

TEST(NBAlgorithmTraining, TheDisplayShowsTheModel) {
    std::ostringstream out;
    Built(CategoricalList(2, {2, 3}), kRows)->Display(out);
    const std::string text = out.str();
    EXPECT_EQ(text.find("Start of NBAlgorithm display\nModel built? Yes\nRecord count: 5\n"
                        "The target: "),
              0U);
    EXPECT_NE(text.find("The model has 2 predictors.\nPredictor 0: "), std::string::npos);
    EXPECT_NE(text.find("Predictor 1: "), std::string::npos);
    EXPECT_NE(text.find("End of NBAlgorithm display\n"), std::string::npos);
}

TEST(NBAlgorithmTraining, TheDisplayShowsThatThereIsNoModel) {
    std::ostringstream out;
    Create(CategoricalList(2, {2, 3}))->Display(out);
    EXPECT_NE(out.str().find("Model built? No\nRecord count: 0\n"), std::string::npos);
    EXPECT_NE(out.str().find("The model has 0 predictors.\n"), std::string::npos);
}

TEST(NBAlgorithmTraining, EmptyBinsAreClosedForScoring) {
    // Bins of width 1 from 0 to 4; no training value lies from 1 to 3.
    NBVarList list;
    AddCategorical(list, "t", 2, kTarget);
    list.AddContVar("x", "", 0.0, 4.0, 4, kInput);
    const auto engine = Built(list, {{0, 0.5}, {0, 0.2}, {1, 3.5}, {1, 3.9}, {0, 3.2}});
    const auto winner = [&engine](double x) {
        NBOutput output;
        EXPECT_EQ(engine->ScoreRecord(MCCommon::Record({0, x}), output), NBStatus());
        return output.GetWinner();
    };
    EXPECT_EQ(winner(1.9), 0) << "below the middle of the empty bins";
    EXPECT_EQ(winner(2.1), 1) << "above it";
}
