#include "backend/predselect/PRSUniFactory.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "backend/predselect/PRSValidSpecs.h"
#include "backend/predselect/tests/RunFixture.h"
#include "embedded/HostSession.h"
#include "featureselect/IFSAlgorithm.h"

namespace {

using embedded::DataSet;
using embedded::DataSetBuilder;
using Texts = std::vector<std::string>;

constexpr double kMissing = MCMV::gMissingValue;

/// A controller over a data set: variable 0 is the target, the others are predictors by level, the
/// weight variable excepted.
class Controller {
 public:
    explicit Controller(DataSet data)
        : fData(std::move(data)),
          fCommands(embedded::ParseCommandText("SELECTPRED y;", "test").fvCommands),
          fSession(fData, fCommands.front(), fReport) {
        const auto isCategorical = [this](std::int32_t index) {
            return fData.Variable(index).GetMeasurementLevel() != kLevelScale;
        };
        for (std::int32_t i = 1; i < fData.ColumnCount(); ++i) {
            if (i == fData.WeightIndex()) continue;
            fvPredictors.push_back(i);
            fvFlags.push_back(isCategorical(i));
        }
        fSpecs.SetDependVar(0, isCategorical(0));
        fSpecs.SetWeightVar(fData.WeightIndex());
        fSpecs.SetPredictors(&fvPredictors, &fvFlags);
        fSpecs.FinishSpecs();
        fpFactory = std::make_unique<PRSUniFactory>(fSpecs, fSource);
    }

    /// "level key" of every message so far.
    Texts Messages() const {
        Texts messages;
        for (const embedded::ReportMessage& message : fReport.fvMessages) {
            messages.push_back(
                (message.fLevel == embedded::MessageLevel::Error ? "error " : "warning ") +
                message.fKey);
        }
        return messages;
    }

    DataSet fData;
    std::vector<embedded::CommandTokens> fCommands;
    embedded::CommandReport fReport;
    embedded::HostSession fSession;
    ProcedureDataSource fSource;
    std::vector<std::int32_t> fvPredictors;
    std::vector<bool> fvFlags;
    PRSValidSpecs fSpecs;
    std::unique_ptr<PRSUniFactory> fpFactory;
};

TEST(PRSUniFactory, EmptyDataGive80002AndNoEngine) {
    Controller run(DataSetBuilder().Strings("y", {}).Numbers("x", {}).Build());
    EXPECT_EQ(run.fpFactory->GetStatus().fCode, 80002U);
    EXPECT_TRUE(run.fpFactory->GetStatus().IsError());
    EXPECT_EQ(run.Messages(), (Texts{"error No valid cases..."}));
    EXPECT_FALSE(run.fpFactory->Run());
    EXPECT_EQ(run.fpFactory->GetAlgorithm(), nullptr);
    EXPECT_EQ(run.Messages().size(), 1U);
}

TEST(PRSUniFactory, NoWeightAboveZeroIsNoValidCase) {
    Controller run(DataSetBuilder()
                       .Strings("y", {"a", "b"})
                       .Numbers("x", {1, 2})
                       .Level(kLevelScale)
                       .Numbers("w", {0, -1})
                       .Weight()
                       .Build());
    EXPECT_EQ(run.fpFactory->GetStatus().fCode, 80002U);
}

TEST(PRSUniFactory, WeightsThatRoundToNothingGive80013) {
    Controller run(DataSetBuilder()
                       .Strings("y", {"a", "b"})
                       .Numbers("x", {1, 2})
                       .Level(kLevelScale)
                       .Numbers("w", {0.4, 0.3})
                       .Weight()
                       .Build());
    EXPECT_TRUE(run.fpFactory->GetStatus().IsOk());
    EXPECT_FALSE(run.fpFactory->Run());
    EXPECT_EQ(run.fpFactory->GetStatus().fCode, 80013U);
    EXPECT_EQ(run.Messages(), (Texts{"error There are no valid cases..."}));
}

TEST(PRSUniFactory, ATargetThatIsMissingThroughoutGives80009) {
    Controller run(DataSetBuilder()
                       .Strings("y", {std::nullopt, std::nullopt})
                       .Numbers("x", {1, 2})
                       .Level(kLevelScale)
                       .Build());
    EXPECT_FALSE(run.fpFactory->Run());
    EXPECT_EQ(run.fpFactory->GetStatus().fCode, 80009U);
    EXPECT_EQ(run.Messages(), (Texts{"error All cases excluded in Predictor Selection..."}));
}

TEST(PRSUniFactory, AllPredictorsConstantIsReportedAndTheRunIsGood) {
    Controller run(DataSetBuilder().Strings("y", {"a", "b"}).Strings("f", {"p", "p"}).Build());
    EXPECT_TRUE(run.fpFactory->Run());
    EXPECT_EQ(run.fpFactory->GetStatus().fCode, 80010U);
    EXPECT_TRUE(run.fpFactory->GetStatus().IsWarning());
    EXPECT_EQ(run.Messages(), (Texts{"warning All predictors missing or constant..."}));
}

TEST(PRSUniFactory, AllPredictorsScreenedOutIsReportedAs80011) {
    // Four missing values of five are above 70 percent.
    Controller run(DataSetBuilder()
                       .Strings("y", {"a", "b", "a", "b", "a", "b", "a", "b", "a", "b"})
                       .Numbers("x", {1, 2, kMissing, kMissing, kMissing, kMissing, kMissing,
                                      kMissing, kMissing, kMissing})
                       .Level(kLevelScale)
                       .Build());
    EXPECT_TRUE(run.fpFactory->Run());
    EXPECT_EQ(run.fpFactory->GetStatus().fCode, 80011U);
    EXPECT_EQ(run.Messages(), (Texts{"warning No predictors were selected."}));
}

TEST(PRSUniFactory, ACategoricalTargetWithOneCategoryIsConstant) {
    Controller run(DataSetBuilder()
                       .Strings("y", {"a", "a", std::nullopt})
                       .Numbers("x", {1, 2, 3})
                       .Level(kLevelScale)
                       .Build());
    EXPECT_FALSE(run.fpFactory->Run());
    EXPECT_EQ(run.fpFactory->GetStatus().fCode, 80000U);
    EXPECT_TRUE(run.fpFactory->GetStatus().IsError());
    EXPECT_EQ(run.Messages(), (Texts{"error Dependent variable constant..."}));
}

TEST(PRSUniFactory, AContinuousTargetWithOneValueIsConstant) {
    Controller run(DataSetBuilder()
                       .Numbers("y", {4, 4, 4})
                       .Level(kLevelScale)
                       .Numbers("x", {1, 2, 3})
                       .Level(kLevelScale)
                       .Build());
    EXPECT_FALSE(run.fpFactory->Run());
    EXPECT_EQ(run.fpFactory->GetStatus().fCode, 80000U);
    EXPECT_EQ(run.Messages(), (Texts{"error Dependent variable constant..."}));
}

TEST(PRSUniFactory, AGoodRunKeepsItsEngine) {
    Controller run(DataSetBuilder()
                       .Strings("y", {"a", "a", "b", "b"})
                       .Numbers("x", {1, 2, 7, 8})
                       .Level(kLevelScale)
                       .Build());
    EXPECT_TRUE(run.fpFactory->Run());
    EXPECT_TRUE(run.fpFactory->GetStatus().IsOk());
    ASSERT_NE(run.fpFactory->GetAlgorithm(), nullptr);
    EXPECT_TRUE(run.fpFactory->GetAlgorithm()->IsRanked());
    EXPECT_TRUE(run.Messages().empty());
}

TEST(PRSUniFactory, WithoutSettingsThereIsNoRun) {
    Controller run(DataSetBuilder().Strings("y", {"a", "b"}).Strings("f", {"p", "q"}).Build());
    PRSValidSpecs other;
    other.SetUniVariable(false);  // finished as the other command: no settings of this engine
    other.SetDependVar(0, true);
    other.FinishSpecs();
    PRSUniFactory factory(other, run.fSource);
    EXPECT_FALSE(factory.Run());
    EXPECT_TRUE(factory.GetStatus().IsOk()) << "unchanged";
    EXPECT_EQ(factory.GetAlgorithm(), nullptr);
}

}  // namespace
