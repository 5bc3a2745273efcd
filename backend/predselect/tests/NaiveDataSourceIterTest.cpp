#include "backend/predselect/NaiveDataSourceIter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "backend/predselect/tests/ParseFixture.h"
#include "host/Random.h"
#include "naivebayes/NaiveBayesSettings.h"

namespace {

using embedded::DataSet;
using embedded::DataSetBuilder;
using Ids = std::vector<double>;
using Bits = std::vector<bool>;

constexpr double kMissing = MCMV::gMissingValue;

struct InputAdapter final : UAInputAdapter {
    using UAInputAdapter::UAInputAdapter;
};

/// The iterators of a command over one adapter. Records are target y and covariate id.
class Samples {
 public:
    Samples(const std::string& subcommands, DataSet data)
        : fCommand("NAIVEBAYES y WITH id " + subcommands + ";", std::move(data)) {
        if (!fCommand.Ok()) throw std::invalid_argument(fCommand.MessageTexts());
        fCommand.Specs().FinishSpecs();
        fpAdapter =
            std::make_unique<InputAdapter>(fCommand.Specs().GetVarValidSpecs(), fCommand.Source());
        fpTrain = Make(true, false);
    }

    std::unique_ptr<NaiveDataSourceIter> Make(bool needTrain, bool needTest) {
        return std::make_unique<NaiveDataSourceIter>(*fpAdapter, fCommand.Specs(), fvFlags,
                                                     needTrain, needTest);
    }

    /// The ids of a new pass. trainOut takes the flag of each case.
    static Ids Pass(NaiveDataSourceIter& cases, Bits* trainOut = nullptr) {
        Ids ids;
        cases.NewPass();
        while (cases.HasMore()) {
            ids.push_back((*cases.Current())[1]);
            if (trainOut) trainOut->push_back(cases.IsTrainCase());
            cases.Next();
        }
        return ids;
    }

    MCCommon::MCRandom& Random() { return *fCommand.Specs().GetNBSettings()->fpUserRandom; }

    ParsedCommand fCommand;
    Bits fvFlags;
    std::unique_ptr<InputAdapter> fpAdapter;
    std::unique_ptr<NaiveDataSourceIter> fpTrain;
};

/// 40 cases numbered from 1; the target of every fifth, from the third on, is missing.
DataSet ManyCases() {
    std::vector<std::optional<std::string>> y;
    Ids id;
    for (int i = 0; i < 40; ++i) {
        y.push_back(i % 5 == 2 ? std::nullopt : std::optional<std::string>(i % 2 == 0 ? "a" : "b"));
        id.push_back(i + 1);
    }
    return DataSetBuilder().Strings("y", y).Numbers("id", id).Level(kLevelScale).Build();
}

bool HasTarget(double id) { return static_cast<int>(id - 1) % 5 != 2; }

TEST(NaiveDataSourceIter, OneInTheSampleVariableAloneTrains) {
    Samples samples("/TRAININGSAMPLE VARIABLE=part", DataSetBuilder()
                                                         .Strings("y", {"a", "b", "a", "b", "a"})
                                                         .Numbers("id", {1, 2, 3, 4, 5})
                                                         .Level(kLevelScale)
                                                         .Numbers("part", {1, 0, 2, kMissing, 1})
                                                         .Build());
    EXPECT_EQ(Samples::Pass(*samples.fpTrain), (Ids{1, 5}));
    EXPECT_EQ(Samples::Pass(*samples.Make(false, true)), (Ids{2, 3, 4}));
    EXPECT_TRUE(samples.fvFlags.empty());
}

TEST(NaiveDataSourceIter, WithoutASampleAllCasesTrainAndNoNumberIsDrawn) {
    Samples samples("", ManyCases());
    EXPECT_EQ(Samples::Pass(*samples.fpTrain).size(), 32U) << "with a target";
    EXPECT_TRUE(samples.fvFlags.empty());
    UAUniformRandom untouched;
    EXPECT_EQ(samples.Random().GetRandom(), untouched.GetRandom());
}

TEST(NaiveDataSourceIter, ARandomSampleHasOneBitForEveryCaseValidOrNot) {
    Samples samples("/TRAININGSAMPLE PERCENT=50", ManyCases());
    Samples::Pass(*samples.fpTrain);
    EXPECT_EQ(samples.fvFlags.size(), 40U);
    EXPECT_TRUE(std::count(samples.fvFlags.begin(), samples.fvFlags.end(), true) > 0);
    EXPECT_TRUE(std::count(samples.fvFlags.begin(), samples.fvFlags.end(), false) > 0);
}

TEST(NaiveDataSourceIter, ACaseTrainsWhenItsNumberIsBelowTheProportion) {
    Samples samples("/TRAININGSAMPLE PERCENT=30", ManyCases());
    Samples::Pass(*samples.fpTrain);
    UAUniformRandom same;
    for (std::size_t i = 0; i < samples.fvFlags.size(); ++i) {
        EXPECT_EQ(samples.fvFlags[i], 30 * 0.01 > same.GetRandom()) << i;
    }
}

TEST(NaiveDataSourceIter, LaterPassesDrawNothing) {
    Samples samples("/TRAININGSAMPLE PERCENT=50", ManyCases());
    Samples::Pass(*samples.fpTrain);
    const Bits first = samples.fvFlags;
    Samples::Pass(*samples.fpTrain);
    Samples::Pass(*samples.Make(true, true));
    EXPECT_EQ(samples.fvFlags, first);
    UAUniformRandom same;
    for (std::size_t i = 0; i < first.size(); ++i) same.GetRandom();
    EXPECT_EQ(samples.Random().GetRandom(), same.GetRandom());
}

TEST(NaiveDataSourceIter, ACaseDroppedForItsTargetHasItsBitInLaterPasses) {
    Samples samples("/TRAININGSAMPLE PERCENT=50", ManyCases());
    const Ids first = Samples::Pass(*samples.fpTrain);
    const Ids second = Samples::Pass(*samples.fpTrain);
    Ids trained, trainedWithTarget;
    for (std::size_t i = 0; i < samples.fvFlags.size(); ++i) {
        const auto id = static_cast<double>(i + 1);
        if (!samples.fvFlags[i]) continue;
        trained.push_back(id);
        if (HasTarget(id)) trainedWithTarget.push_back(id);
    }
    EXPECT_EQ(first, trainedWithTarget);
    EXPECT_EQ(second, trained);
    EXPECT_LT(first.size(), second.size());
}

TEST(NaiveDataSourceIter, TestAndTrainingCasesAreEachOthersComplement) {
    Samples samples("/TRAININGSAMPLE PERCENT=50", ManyCases());
    Samples::Pass(*samples.fpTrain);
    Ids all = Samples::Pass(*samples.fpTrain);
    const Ids test = Samples::Pass(*samples.Make(false, true));
    for (const double id : test) {
        EXPECT_EQ(std::count(all.begin(), all.end(), id), 0) << id;
    }
    all.insert(all.end(), test.begin(), test.end());
    EXPECT_EQ(all.size(), 40U);
}

TEST(NaiveDataSourceIter, TheScoringIteratorDeliversAllCasesWithTheirFlag) {
    Samples samples("/TRAININGSAMPLE PERCENT=50", ManyCases());
    Samples::Pass(*samples.fpTrain);
    Bits flags;
    const Ids ids = Samples::Pass(*samples.Make(true, true), &flags);
    ASSERT_EQ(ids.size(), 40U);
    EXPECT_EQ(ids.front(), 1.0);
    EXPECT_EQ(ids.back(), 40.0);
    EXPECT_EQ(flags, samples.fvFlags);
}

// The test iterator is made while the training iterator stands on its first record.
TEST(NaiveDataSourceIter, AnIteratorMadeDuringTheFirstPassReadsInLaterOnes) {
    Samples samples("/TRAININGSAMPLE PERCENT=50", ManyCases());
    samples.fpTrain->NewPass();
    const auto test = samples.Make(false, true);
    while (samples.fpTrain->HasMore()) samples.fpTrain->Next();
    EXPECT_EQ(Samples::Pass(*test).size() + Samples::Pass(*samples.fpTrain).size(), 40U);
}

DataSet UserMissingTarget() {
    KoltMissingSpec missing;
    missing.fvDiscrete = {KoltObs(9.0)};
    return DataSetBuilder()
        .Numbers("y", {1, 9, 2})
        .Missing(missing)
        .Numbers("id", {1, 2, 3})
        .Level(kLevelScale)
        .Build();
}

TEST(NaiveDataSourceIter, AUserMissingTargetIsInvalidUnlessIncluded) {
    Samples excluding("", UserMissingTarget());
    EXPECT_EQ(Samples::Pass(*excluding.fpTrain), (Ids{1, 3}));
}

TEST(NaiveDataSourceIter, AnIncludedUserMissingTargetIsValid) {
    Samples including("/MISSING USERMISSING=INCLUDE", UserMissingTarget());
    EXPECT_EQ(Samples::Pass(*including.fpTrain), (Ids{1, 2, 3}));
}

TEST(NaiveDataSourceIterDeathTest, OneSampleIsNeeded) {
    Samples samples("", ManyCases());
    EXPECT_DEATH(samples.Make(false, false), "fbNeedTrainData \\|\\| fbNeedTestData");
}

TEST(NaiveDataSourceIterDeathTest, TheFirstPassStartsWithoutFlags) {
    Samples samples("/TRAININGSAMPLE PERCENT=50", ManyCases());
    samples.fvFlags.push_back(true);
    EXPECT_DEATH(samples.Make(true, false), "fTrainTestFlags.size\\(\\) == 0");
}

TEST(NaiveDataSourceIterDeathTest, AProportionOfOneStops) {
    Samples samples("", ManyCases());
    samples.fCommand.Specs().SetTrainSample(100.0, -1);
    EXPECT_DEATH(samples.Make(true, false), "fTrainSampProp < 1.0");
}

TEST(NaiveDataSourceIterDeathTest, ALaterPassBehindTheFlagsStops) {
    Samples samples("/TRAININGSAMPLE PERCENT=50", ManyCases());
    Samples::Pass(*samples.fpTrain);
    samples.fvFlags.resize(10);
    EXPECT_DEATH(Samples::Pass(*samples.fpTrain), "iCase < fTrainTestFlags.size\\(\\)");
}

}  // namespace
