#include "backend/predselect/PRSMultiFactory.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "backend/predselect/PRSValidSpecs.h"
#include "backend/predselect/tests/NaiveData.h"
#include "backend/predselect/tests/ParseFixture.h"
#include "backend/predselect/tests/RunFixture.h"
#include "embedded/files/Interrupt.h"
#include "embedded/strings/StringTable.h"
#include "host/EngineState.h"
#include "naivebayes/NBStatus.h"
#include "naivebayes/data/INBEncoder.h"
#include "naivebayes/data/NBNumericUserMissing.h"
#include "naivebayes/data/NBStringUserMissing.h"
#include "naivebayes/data/NBVarList.h"

namespace {

using embedded::DataSet;
using embedded::DataSetBuilder;
using Texts = std::vector<std::string>;
using Indices = std::vector<std::int32_t>;

constexpr double kMissing = MCMV::gMissingValue;

/// A controller of a command over a data set, one stage at a time.
class Controller {
 public:
    Controller(const std::string& command, DataSet data) : fCommand(command, std::move(data)) {
        if (!fCommand.Ok()) throw std::invalid_argument(fCommand.MessageTexts());
        fCommand.Specs().FinishSpecs();
        fCommand.Source().SetMaxObsAdded(100);
        fpFactory = std::make_unique<PRSMultiFactory>(fCommand.Specs(), fCommand.Source());
    }

    PRSMultiFactory* operator->() const { return fpFactory.get(); }
    /// The stages up to the description of the variables.
    bool Prepare() { return fpFactory->CheckTrainingData() && fpFactory->BuildVarList(); }
    bool PrepareAndRun() { return Prepare() && fpFactory->Run(); }

    /// "level key" of every message so far.
    Texts Messages() const {
        Texts messages;
        for (const embedded::ReportMessage& message : fCommand.Messages()) {
            messages.push_back(
                (message.fLevel == embedded::MessageLevel::Error ? "error " : "warning ") +
                message.fKey);
        }
        return messages;
    }

    ParsedCommand fCommand;
    std::unique_ptr<PRSMultiFactory> fpFactory;
};

Indices Roles(const Controller& run) {
    Indices roles;
    const NBVarList& list = run->GetAlgorithm()->GetVarList();
    for (std::int32_t i = 0; i < list.GetNumVariables(); ++i) roles.push_back(list.GetRole(i));
    return roles;
}

// --- First pass ---

TEST(PRSMultiFactory, EmptyDataGive70000) {
    Controller run("NAIVEBAYES y BY f;",
                   DataSetBuilder().Strings("y", {}).Strings("f", {}).Build());
    EXPECT_EQ(run->GetStatus().fCode, 70000U);
    EXPECT_TRUE(run->GetStatus().IsError());
    EXPECT_EQ(run.Messages(), (Texts{"error No valid cases..."}));
    EXPECT_FALSE(run->BuildVarList());
    EXPECT_FALSE(run->Run());
    EXPECT_EQ(run->GetAlgorithm(), nullptr);
}

struct NoCase {
    std::string fTestName;
    std::string fSubcommands;
    DataSet (*fpData)();
};
class NoTrainingCase : public testing::TestWithParam<NoCase> {};

TEST_P(NoTrainingCase, HasOneMessageAndNoTable) {
    const CommandRun run("NAIVEBAYES y BY f" + GetParam().fSubcommands + ";", GetParam().fpData());
    EXPECT_EQ(run.Status(), "failed");
    EXPECT_EQ(run.Messages(), (Texts{"error No valid cases..."}));
    EXPECT_TRUE(run.TableIds().empty());
}
INSTANTIATE_TEST_SUITE_P(Reasons, NoTrainingCase,
                         testing::Values(NoCase{"TargetMissing", "",
                                                [] {
                                                    return DataSetBuilder()
                                                        .Strings("y", {std::nullopt, std::nullopt})
                                                        .Strings("f", {"p", "q"})
                                                        .Build();
                                                }},
                                         NoCase{"NoWeight", "",
                                                [] {
                                                    return DataSetBuilder()
                                                        .Strings("y", {"a", "b"})
                                                        .Strings("f", {"p", "q"})
                                                        .Numbers("w", {0, -1})
                                                        .Weight()
                                                        .Build();
                                                }},
                                         NoCase{"AllTest", " /TRAININGSAMPLE VARIABLE=part",
                                                [] {
                                                    return DataSetBuilder()
                                                        .Strings("y", {"a", "b"})
                                                        .Strings("f", {"p", "q"})
                                                        .Numbers("part", {0, 2})
                                                        .Build();
                                                }}),
                         [](const auto& param) { return param.param.fTestName; });

// --- Description of the variables ---

TEST(PRSMultiFactory, ATargetWithOneCategoryEndsTheDescriptionThere) {
    Controller run(
        "NAIVEBAYES y BY f;",
        DataSetBuilder().Strings("y", Letters("aa a")).Strings("f", Letters("pppp")).Build());
    EXPECT_TRUE(run->CheckTrainingData());
    EXPECT_FALSE(run->BuildVarList());
    EXPECT_EQ(run->GetStatus().fCode, 70000U);
    EXPECT_EQ(run.Messages(), (Texts{"error Dependent variable constant..."}));
    EXPECT_TRUE(run->GetConstPredList().empty()) << "not examined";
}

TEST(PRSMultiFactory, UnusableCandidatesAreListedAndKeepTheirPlace) {
    Controller run("NAIVEBAYES y BY none same good WITH empty flat /SUBSET NOSELECTION;",
                   TwoClasses()
                       .Strings("none", Letters(std::string(20, ' ')))
                       .Strings("same", Letters(std::string(20, 'p')))
                       .Numbers("empty", std::vector<double>(20, kMissing))
                       .Numbers("flat", std::vector<double>(20, 2.5))
                       .Build());
    ASSERT_TRUE(run.PrepareAndRun());
    // Dictionary: y good fair noise none same empty flat.
    EXPECT_EQ(run->GetEmptyPredList(), (Indices{4, 6}));
    EXPECT_EQ(run->GetConstPredList(), (Indices{5, 7}));
    EXPECT_EQ(Roles(run), (Indices{3, 1, 5, 5, 5, 5})) << "target, good, and those left out";
    EXPECT_TRUE(run.Messages().empty());
}

TEST(PRSMultiFactory, NothingExcludedIsAWarning) {
    Controller run("NAIVEBAYES y BY good;", TwoClasses().Build());
    EXPECT_TRUE(run.Prepare());
    EXPECT_EQ(run.Messages(), (Texts{"warning No predictors excluded ..."}));
}

TEST(PRSMultiFactory, NothingExcludedIsNotSaidWithoutItsTable) {
    Controller run("NAIVEBAYES y BY good /PRINT CPS;", TwoClasses().Build());
    EXPECT_TRUE(run.Prepare());
    EXPECT_TRUE(run.Messages().empty());
}

TEST(PRSMultiFactory, WithoutASearchAllPredictorsAreInputs) {
    Controller run("NAIVEBAYES y BY good fair noise /SUBSET NOSELECTION;", TwoClasses().Build());
    ASSERT_TRUE(run.PrepareAndRun());
    EXPECT_EQ(Roles(run), (Indices{3, 1, 1, 1}));
    EXPECT_TRUE(run->GetSelectPredictors().empty());
}

TEST(PRSMultiFactory, NoSelectionWithForcedPredictorsAloneBuildsTheirModel) {
    Controller run("NAIVEBAYES y BY good fair /FORCE FACTORS=(good fair) /SUBSET NOSELECTION;",
                   TwoClasses().Build());
    ASSERT_TRUE(run.PrepareAndRun());
    EXPECT_EQ(run->GetAlgorithm()->GetNumInputVars(), 2);
    EXPECT_EQ(Roles(run), (Indices{3, 1, 1}));
}

TEST(PRSMultiFactory, AConstantForcedPredictorEndsTheRun) {
    Controller run("NAIVEBAYES y BY good /FORCE FACTORS=(same);",
                   TwoClasses().Strings("same", Letters(std::string(20, 'p'))).Build());
    EXPECT_FALSE(run.Prepare());
    EXPECT_EQ(run.Messages(), (Texts{"error Some forced predictors excluded..."}));
    EXPECT_EQ(run->GetConstPredList(), (Indices{4}));
}

TEST(PRSMultiFactory, TheFirstUnusableForcedPredictorEndsTheDescription) {
    Controller run("NAIVEBAYES y BY good /FORCE FACTORS=(fair same none);",
                   TwoClasses()
                       .Strings("same", Letters(std::string(20, 'p')))
                       .Strings("none", Letters(std::string(20, ' ')))
                       .Build());
    EXPECT_FALSE(run.Prepare());
    EXPECT_EQ(run.Messages(), (Texts{"error Some forced predictors excluded..."})) << "once";
    EXPECT_EQ(run->GetConstPredList(), (Indices{4}));
    EXPECT_TRUE(run->GetEmptyPredList().empty()) << "not examined";
}

TEST(PRSMultiFactory, AFailedDescriptionStillShowsTheExcludedPredictors) {
    const CommandRun run("NAIVEBAYES y BY good /FORCE FACTORS=(same);",
                         TwoClasses().Strings("same", Letters(std::string(20, 'p'))).Build());
    EXPECT_EQ(run.Status(), "failed");
    EXPECT_EQ(run.TableIds(), (Texts{"ExcludedPredictors"}));
    const CommandRun silent("NAIVEBAYES y BY good /FORCE FACTORS=(same) /PRINT CPS;",
                            TwoClasses().Strings("same", Letters(std::string(20, 'p'))).Build());
    EXPECT_TRUE(silent.TableIds().empty());
}

struct CountCase {
    std::string fTestName;
    std::string fSubcommands;
    Texts fMessages;  // empty: the variables make a model
};
class PredictorCounts : public testing::TestWithParam<CountCase> {};

// Three candidates, of which same cannot be used; flat cannot be used either.
TEST_P(PredictorCounts, DecideOnTheModel) {
    Controller run("NAIVEBAYES y " + GetParam().fSubcommands + ";",
                   TwoClasses()
                       .Strings("same", Letters(std::string(20, 'p')))
                       .Strings("flat", Letters(std::string(20, 'p')))
                       .Build());
    EXPECT_EQ(run.Prepare(), GetParam().fMessages.empty());
    EXPECT_EQ(run.Messages(), GetParam().fMessages);
}
INSTANTIATE_TEST_SUITE_P(
    Sizes, PredictorCounts,
    testing::Values(
        CountCase{"ExactSizeOfAllUsable",
                  "BY good fair same /SUBSET EXACTSIZE=2",
                  {"error Too few possible predictors, exact size..."}},
        CountCase{"ExactSizeBelowAllUsable", "BY good fair same /SUBSET EXACTSIZE=1", {}},
        CountCase{"MaxSizeOfAllUsable", "BY good fair same /SUBSET MAXSIZE=2", {}},
        CountCase{"MaxSizeAboveAllUsable",
                  "BY good fair same /SUBSET MAXSIZE=3",
                  {"error Too few possible predictors, maximum size..."}},
        CountCase{"AutoWithOneUsable", "BY good same", {}},
        CountCase{"NoneUsable", "BY flat same", {"error All predictors missing or constant..."}},
        CountCase{"NoneUsableWithoutASearch",
                  "BY flat same /SUBSET NOSELECTION",
                  {"error All predictors missing or constant..."}},
        CountCase{"NoneUsableBesideForced",
                  "BY flat same /FORCE FACTORS=(good)",
                  {"error All possible predictors excluded..."}},
        CountCase{"NoneUsableBesideForcedWithoutASearch",
                  "BY flat same /FORCE FACTORS=(good) /SUBSET NOSELECTION",
                  {}}),
    [](const auto& param) { return param.param.fTestName; });

TEST(PRSMultiFactory, TheWeightHasItsPlaceBehindTheTarget) {
    Controller run("NAIVEBAYES y BY good /SUBSET NOSELECTION;",
                   TwoClasses().Numbers("w", std::vector<double>(20, 2)).Weight().Build());
    ASSERT_TRUE(run.PrepareAndRun());
    EXPECT_EQ(Roles(run), (Indices{3, 4, 1}));
}

// Category codes of the data set are alphabetical whatever the rows' order, and so are those of the
// model.
std::int32_t CodesOf(const Controller& run, std::int32_t listIndex) {
    return run->GetAlgorithm()->GetVarList().GetEncoder(listIndex)->GetNumCodes();
}

TEST(PRSMultiFactory, WithoutAModelFileCategoriesHaveNoValues) {
    Controller run("NAIVEBAYES y BY good /SUBSET NOSELECTION;", TwoClasses().Build());
    ASSERT_TRUE(run.PrepareAndRun());
    EXPECT_EQ(CodesOf(run, 0), 0);
    EXPECT_EQ(run->GetAlgorithm()->GetNumTargetCategories(), 2);
}

TEST(PRSMultiFactory, ForAModelFileValuesAndMissingValuesAreDescribed) {
    KoltMissingSpec range;
    range.fbRange = true;
    range.fLow = 90;
    range.fHigh = 99;
    range.fvDiscrete = {KoltObs(-1.0)};
    KoltMissingSpec text;
    text.fvDiscrete = {KoltObs(std::string("x"))};
    std::vector<double> numbers;
    for (int i = 0; i < 20; ++i) numbers.push_back(i < 18 ? i : 95);
    const std::string path = testing::TempDir() + "PRSMultiFactoryTest.xml";
    Controller run(
        "NAIVEBAYES y BY letter WITH n /SUBSET NOSELECTION /OUTFILE MODEL='" + path + "';",
        DataSetBuilder()
            .Strings("y", Letters("aaaaaaaaaabbbbbbbbbb"))
            .Strings("letter", Letters("ppppppppppqqqqqqqqqx"))
            .Missing(text)
            .Numbers("n", numbers)
            .Level(kLevelScale)
            .Missing(range)
            .Build());
    ASSERT_TRUE(run.PrepareAndRun());
    const NBVarList& list = run->GetAlgorithm()->GetVarList();
    EXPECT_EQ(CodesOf(run, 0), 2);
    EXPECT_EQ(CodesOf(run, 1), 2);
    EXPECT_EQ(list.GetVariable(0)->GetUserMissing(), nullptr);
    const auto* letters =
        dynamic_cast<const NBStringUserMissing*>(list.GetVariable(1)->GetUserMissing());
    ASSERT_NE(letters, nullptr);
    EXPECT_TRUE(letters->IsMissing("x"));
    const auto* interval =
        dynamic_cast<const NBNumericUserMissing*>(list.GetVariable(2)->GetUserMissing());
    ASSERT_NE(interval, nullptr);
    EXPECT_TRUE(interval->IsMissing(91.0));
    EXPECT_TRUE(interval->IsMissing(-1.0));
    EXPECT_FALSE(interval->IsMissing(17.0));
}

TEST(PRSMultiFactory, ForAModelFileUnusableCandidatesKeepTheirPlaceToo) {
    const std::string path = testing::TempDir() + "PRSMultiFactoryTest3.xml";
    Controller run("NAIVEBAYES y BY none same good WITH empty flat /OUTFILE MODEL='" + path + "';",
                   TwoClasses()
                       .Strings("none", Letters(std::string(20, ' ')))
                       .Strings("same", Letters(std::string(20, 'p')))
                       .Numbers("empty", std::vector<double>(20, kMissing))
                       .Numbers("flat", std::vector<double>(20, 2.5))
                       .Build());
    ASSERT_TRUE(run.PrepareAndRun());
    EXPECT_EQ(Roles(run), (Indices{3, 1, 5, 5, 5, 5}));
    EXPECT_EQ(run->GetEmptyPredList(), (Indices{4, 6}));
    EXPECT_EQ(run->GetConstPredList(), (Indices{5, 7}));
}

/// x with the values 1 to 20, of which 20 is user-missing.
DataSet LastIsUserMissing() {
    KoltMissingSpec last;
    last.fvDiscrete = {KoltObs(20.0)};
    std::vector<double> x;
    for (int i = 1; i <= 20; ++i) x.push_back(i);
    return TwoClasses().Numbers("x", x).Level(kLevelScale).Missing(last).Build();
}

// The one place in which user-missing values that count are missing all the same.
TEST(PRSMultiFactory, ForAModelFileUserMissingValuesAreDeclaredThoughTheyCount) {
    const std::string path = testing::TempDir() + "PRSMultiFactoryTest4.xml";
    Controller run(
        "NAIVEBAYES y WITH x /MISSING USERMISSING=INCLUDE /SUBSET NOSELECTION"
        " /OUTFILE MODEL='" +
            path + "';",
        LastIsUserMissing());
    ASSERT_TRUE(run.PrepareAndRun());
    const auto* missing = dynamic_cast<const NBNumericUserMissing*>(
        run->GetAlgorithm()->GetVarList().GetVariable(1)->GetUserMissing());
    ASSERT_NE(missing, nullptr);
    EXPECT_TRUE(missing->IsMissing(20.0));
    EXPECT_EQ(run->GetInputAdapter().GetContMaxValue(4), 20.0);
}

TEST(PRSMultiFactory, ForAModelFileTextsThatDifferInBlanksAtTheirEndAreOneCategory) {
    const std::string path = testing::TempDir() + "PRSMultiFactoryTest5.xml";
    Controller run("NAIVEBAYES y BY f /SUBSET NOSELECTION /OUTFILE MODEL='" + path + "';",
                   DataSetBuilder()
                       .Strings("y", {"a", "a ", "b", "b"})
                       .Strings("f", {"p", "q", "r ", "r"})
                       .Build());
    ASSERT_TRUE(run.PrepareAndRun());
    EXPECT_EQ(run->GetAlgorithm()->GetNumTargetCategories(), 2);
    EXPECT_EQ(CodesOf(run, 0), 2);
    EXPECT_EQ(CodesOf(run, 1), 3);
}

// --- Search ---

TEST(PRSMultiFactory, WithoutTestCasesTheSearchByTestDataFails) {
    const CommandRun run(
        "NAIVEBAYES y BY good fair /TRAININGSAMPLE VARIABLE=part"
        " /SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA);",
        TwoClasses().Numbers("part", std::vector<double>(20, 1)).Build());
    EXPECT_EQ(run.Status(), "failed");
    EXPECT_EQ(run.Messages(), (Texts{"warning No predictors excluded ...",
                                     "error No valid cases in test sample..."}));
    EXPECT_TRUE(run.TableIds().empty());
}

TEST(PRSMultiFactory, ASearchThatAddsNothingIsAWarning) {
    Controller run("NAIVEBAYES y BY noise /FORCE FACTORS=(good);", TwoClasses().Build());
    ASSERT_TRUE(run.PrepareAndRun());
    EXPECT_EQ(run->GetAlgorithm()->GetNumInputVars(), 1);
    EXPECT_EQ(run.Messages(), (Texts{"warning No predictors excluded ...",
                                     "warning No unique predictors were selected..."}));
}

TEST(PRSMultiFactory, AnExactSizeListsNoSubsets) {
    Controller run("NAIVEBAYES y BY fair good noise /SUBSET EXACTSIZE=2;", TwoClasses().Build());
    ASSERT_TRUE(run.PrepareAndRun());
    // The list is y good fair noise, as predictors stand in the order of the data. fair errs where
    // good errs, so that it makes the model sure of what is wrong; noise changes nothing.
    EXPECT_EQ(run->GetSelectPredictors(), (Indices{1, 3}));
    EXPECT_EQ(run->GetSelectCriteria().size(), 2U);
    EXPECT_TRUE(run->GetSelectBest().empty());
}

TEST(PRSMultiFactory, EverySizeIsListedBesideThatOfTheForcedPredictors) {
    Controller run("NAIVEBAYES y BY fair good noise /FORCE FACTORS=(noise);", TwoClasses().Build());
    ASSERT_TRUE(run.PrepareAndRun());
    EXPECT_EQ(run->GetSelectPredictors(), (Indices{3, 1, 2}))
        << "forced ones stand last in the list";
    EXPECT_EQ(run->GetSelectBest().size(), 3U);
}

// --- Failures that are nobody else's to tell of ---

// Weights that round to nothing: the cases count for the description, and none for the model.
TEST(PRSMultiFactory, WithoutAUsableCaseThereIsAMessageWithoutArguments) {
    for (const std::string subset : {"", " /SUBSET NOSELECTION"}) {
        DataSetBuilder builder = TwoClasses();
        builder.Numbers("w", std::vector<double>(20, 0.4)).Weight();
        Controller run("NAIVEBAYES y BY good fair" + subset + ";", builder.Build());
        EXPECT_FALSE(run.PrepareAndRun());
        EXPECT_EQ(run->GetAlgorithm()->GetStatus(), NBStatus(70011, false)) << subset;
        ASSERT_EQ(run.Messages(), (Texts{"warning No predictors excluded ...",
                                         "error All cases excluded in Predictor Selection..."}));
        EXPECT_EQ(run.fCommand.Messages().back().fText,
                  embedded::TextOf("All cases excluded in Predictor Selection..."));
    }
}

TEST(PRSMultiFactory, OneTrainingCaseIsTooLittle) {
    // The first pass meets both categories, but one case only has a predictor value.
    const CommandRun run("NAIVEBAYES y BY f /SUBSET NOSELECTION;", DataSetBuilder()
                                                                       .Strings("y", Letters("ab"))
                                                                       .Strings("f", Letters("pq"))
                                                                       .Numbers("w", {1, 0.2})
                                                                       .Weight()
                                                                       .Build());
    EXPECT_EQ(run.Status(), "failed");
    EXPECT_EQ(run.Messages(), (Texts{"warning No predictors excluded ...",
                                     "error Too little data for a model..."}));
    EXPECT_TRUE(run.TableIds().empty());
}

/// Interrupts the run when a pass of this number comes to its end.
class Interrupter final : public ProgressListener {
 public:
    explicit Interrupter(std::int32_t pass) : fPass(pass) {}
    void OnProgress(const ProgressReport& report) override {
        fLast = std::max(fLast, report.GetInteger("pass"));
        if (report.GetInteger("pass") == fPass) embedded::RequestInterrupt();
    }
    std::int32_t fLast = 0;

 private:
    std::int32_t fPass;
};

DataSet LongData() {
    std::vector<std::optional<std::string>> y, f;
    for (int i = 0; i < 70000; ++i) {
        y.emplace_back(i % 3 == 0 ? "a" : "b");
        f.emplace_back(i % 2 == 0 ? "p" : "q");
    }
    return DataSetBuilder().Strings("y", y).Strings("f", f).Build();
}

TEST(PRSMultiFactory, AnInterruptInAnyPassLeavesNoTableAndNoVariable) {
    const std::string command = "NAIVEBAYES y BY f /SUBSET NOSELECTION /SAVE PREDVAL;";
    Interrupter never(-1);
    const CommandRun whole(command, LongData(), &never);
    ASSERT_EQ(whole.Status(), "ok");
    ASSERT_GE(never.fLast, 3) << "training pass, model, scores";
    for (std::int32_t pass = 1; pass <= never.fLast; ++pass) {
        Interrupter interrupter(pass);
        const CommandRun run(command, LongData(), &interrupter);
        EXPECT_EQ(run.Status(), "interrupted") << pass;
        EXPECT_TRUE(run.TableIds().empty()) << pass;
        EXPECT_EQ(run.Data().ColumnCount(), 2) << pass;
        for (const std::string& message : run.Messages()) {
            EXPECT_NE(message.substr(0, 5), "error") << message;
        }
    }
}

// --- Model file ---

TEST(PRSMultiFactory, AModelFileThatCannotBeMadeFailsTheRun) {
    const CommandRun run(
        "NAIVEBAYES y BY good /SAVE PREDVAL /OUTFILE MODEL='/no/such/folder/m.xml';",
        TwoClasses().Build());
    EXPECT_EQ(run.Status(), "failed");
    EXPECT_EQ(run.Messages().back(), "error Model file ^1 cannot be written, ^2...");
    EXPECT_TRUE(run.TableIds().empty());
    EXPECT_EQ(run.Data().ColumnCount(), 4) << "nothing saved";
}

TEST(PRSMultiFactory, AModelThatDoesNotFitOnTheDiskFailsTheRun) {
    embedded::RunOptions options;
    options.fPlaceModelFile = [](const std::string&) { return "/dev/full"; };
    const CommandRun run("NAIVEBAYES y BY good /OUTFILE MODEL='m.xml';", TwoClasses().Build(),
                         options);
    EXPECT_EQ(run.Status(), "failed");
    EXPECT_EQ(run.Messages().back(), "error Model file ^1 cannot be written, ^2...");
    EXPECT_TRUE(run.TableIds().empty());
}

TEST(PRSMultiFactory, AModelFileIsNamedInTheNotesAndTheReport) {
    const std::string path = testing::TempDir() + "PRSMultiFactoryTest2.xml";
    const CommandRun run("NAIVEBAYES y BY good /OUTFILE MODEL='" + path + "';",
                         TwoClasses().Build());
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(run.Json()["modelFile"], path);
    EXPECT_EQ(run.Notes().back(), "Model File: " + path);
}

// --- Engine state ---

struct Taken {
    Texts fvCommands;
    std::string fBinary;
    std::string fXML;
};

embedded::RunOptions TakeInto(Taken& taken) {
    embedded::RunOptions options;
    options.fTakeEngine = [&taken](const SavableEngine& engine, const embedded::RecordLayout&) {
        std::ostringstream binary, xml;
        EXPECT_TRUE(engine.SaveBinary(binary));
        EXPECT_TRUE(engine.SaveXML(xml));
        taken.fvCommands.push_back(engine.GetCommandName());
        taken.fBinary = binary.str();
        taken.fXML = xml.str();
    };
    return options;
}

TEST(PRSMultiFactory, AnEngineThatIsKeptKnowsTheValuesOfItsCategories) {
    Taken taken;
    const CommandRun run("NAIVEBAYES y BY good /SUBSET NOSELECTION;", TwoClasses().Build(),
                         TakeInto(taken));
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(taken.fvCommands, (Texts{"NAIVEBAYES"}));
    NBStatus status;
    std::istringstream stream(taken.fBinary);
    const auto engine = RestoreNBAlgorithm(status, stream);
    ASSERT_NE(engine, nullptr) << status.fCode;
    EXPECT_EQ(engine->GetVarList().GetEncoder(0)->GetNumCodes(), 2);
    std::istringstream text(taken.fXML);
    EXPECT_NE(RestoreNBAlgorithmXML(status, text), nullptr) << status.fCode;
}

TEST(PRSMultiFactory, KeepingTheEngineDoesNotChangeTheScores) {
    for (const std::string missing : {"EXCLUDE", "INCLUDE"}) {
        const std::string command = "NAIVEBAYES y BY good WITH x /MISSING USERMISSING=" + missing +
                                    " /SUBSET NOSELECTION /SAVE PREDPROB(p);";
        Taken taken;
        const CommandRun kept(command, LastIsUserMissing(), TakeInto(taken));
        const CommandRun alone(command, LastIsUserMissing());
        ASSERT_EQ(kept.Status(), "ok");
        ASSERT_EQ(alone.Status(), "ok");
        EXPECT_EQ(kept.ValuesOf("p1"), alone.ValuesOf("p1")) << missing;
    }
}

TEST(PRSMultiFactory, ScreeningHandsItsEngineOverToo) {
    Taken taken;
    const CommandRun run("SELECTPRED y;", TwoClasses().Build(), TakeInto(taken));
    ASSERT_EQ(run.Status(), "ok");
    EXPECT_EQ(taken.fvCommands, (Texts{"SELECTPRED"}));
    EXPECT_EQ(taken.fBinary.substr(0, 16), "FSAlgorithm 1.00");
}

TEST(PRSMultiFactory, AFailedRunHandsOverNothing) {
    Taken taken;
    const CommandRun run("NAIVEBAYES y BY good /OUTFILE MODEL='/no/such/folder/m.xml';",
                         TwoClasses().Build(), TakeInto(taken));
    EXPECT_EQ(run.Status(), "failed");
    EXPECT_TRUE(taken.fvCommands.empty());
}

}  // namespace
