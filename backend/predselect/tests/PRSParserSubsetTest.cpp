#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "backend/predselect/tests/ParseFixture.h"

// SUBSET, SAVE and OUTFILE.

namespace {

using embedded::MessageLevel;

constexpr const char* kBelowPossible =
    "Parameter ^1 less than number of possible predictors in ^3, not subcommand ^2...";
constexpr const char* kAtMostPossible =
    "Parameter ^1 less than or equal to number of possible predictors in ^3, not ^2...";

/// A nominal target y and ten candidates x0 to x9.
embedded::DataSet TenCandidates() {
    embedded::DataSetBuilder builder;
    builder.Numbers("y", {0, 1}).Level(kLevelNominal);
    for (int i = 0; i < 10; ++i) {
        builder.Numbers("x" + std::to_string(i), {0, 1}).Level(kLevelNominal);
    }
    return builder.Build();
}

struct SubsetCase {
    const char* fName;
    const char* fSubCommands;
    std::int32_t fMaxSize;
    bool fbPseudoBIC;
    bool fbTestData;
    std::int32_t fExactSize;
};
void PrintTo(const SubsetCase& subset, std::ostream* out) { *out << subset.fSubCommands; }

class Subset : public testing::TestWithParam<SubsetCase> {};

struct RefusedSubset {
    const char* fName;
    const char* fSubset;
    std::function<void(const ParserMessage&)> fExpected;
};
void PrintTo(const RefusedSubset& subset, std::ostream* out) { *out << subset.fSubset; }

class SubsetRefused : public testing::TestWithParam<RefusedSubset> {};

const auto kWrongMaxSize = [](const ParserMessage& m) { m.WrongValueType("MAXSIZE", "SUBSET"); };

}  // namespace

TEST_P(Subset, IsStored) {
    ParsedCommand command(std::string("NAIVEBAYES y BY f1 f2 f3 ") + GetParam().fSubCommands);
    ASSERT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_TRUE(command.SaidNothing());
    EXPECT_EQ(command.Specs().GetMaxSubsetSize(), GetParam().fMaxSize);
    EXPECT_EQ(command.Specs().GetPseudoBIC(), GetParam().fbPseudoBIC);
    EXPECT_EQ(command.Specs().GetTestData(), GetParam().fbTestData);
    EXPECT_EQ(command.Specs().GetExactSubsetSize(), GetParam().fExactSize);
}

INSTANTIATE_TEST_SUITE_P(
    Forms, Subset,
    testing::Values(
        SubsetCase{"AbsentIsAutoByPseudoBIC", "", 0, true, false, 0},
        SubsetCase{"AbsentWithASampleIsAutoByTestData", "/TRAININGSAMPLE PERCENT=50", 0, false,
                   true, 0},
        SubsetCase{"MaxSizeAloneIsByPseudoBIC", "/SUBSET MAXSIZE=3", 3, true, false, 0},
        SubsetCase{"MaxSizeAloneWithASampleIsByTestData",
                   "/SUBSET MAXSIZE=3 /TRAININGSAMPLE PERCENT=50", 3, false, true, 0},
        SubsetCase{"MaxSizeAuto", "/SUBSET MAXSIZE=auto", 0, true, false, 0},
        SubsetCase{"PseudoBIC", "/SUBSET MAXSIZE=2(BESTSUBSET=PSEUDOBIC)", 2, true, false, 0},
        SubsetCase{"AutoByPseudoBICDespiteASample",
                   "/TRAININGSAMPLE PERCENT=50 /SUBSET MAXSIZE=AUTO(BESTSUBSET=PSEUDOBIC)", 0, true,
                   false, 0},
        SubsetCase{"TestDataWithASample",
                   "/TRAININGSAMPLE VARIABLE=part /SUBSET MAXSIZE=AUTO(bestsubset=testdata)", 0,
                   false, true, 0},
        SubsetCase{"ExactSize", "/SUBSET EXACTSIZE=2", -1, false, false, 2},
        SubsetCase{"NoSelection", "/SUBSET NOSELECTION", -1, false, false, 0}),
    [](const auto& one) { return std::string(one.param.fName); });

TEST_P(SubsetRefused, IsReported) {
    ParsedCommand command(std::string("NAIVEBAYES y BY f1 f2 f3 /SUBSET ") + GetParam().fSubset);
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.SaidOnly(GetParam().fExpected));
    EXPECT_EQ(command.Specs().GetMaxSubsetSize(), 0);  // nothing stored
    EXPECT_FALSE(command.Specs().GetPseudoBIC());
}

INSTANTIATE_TEST_SUITE_P(
    Faults, SubsetRefused,
    testing::Values(
        RefusedSubset{
            "TwoParameters", "EXACTSIZE=1 MAXSIZE=2",
            [](const ParserMessage& m) { m.ParamExclusive("EXACTSIZE", "MAXSIZE", "SUBSET"); }},
        RefusedSubset{
            "NoSelectionWithASize", "MAXSIZE=2 NOSELECTION",
            [](const ParserMessage& m) { m.ParamExclusive("MAXSIZE", "NOSELECTION", "SUBSET"); }},
        RefusedSubset{
            "AnotherWord", "MAXSIZE=some",
            [](const ParserMessage& m) { m.InvalidParamOption("some", "MAXSIZE", "SUBSET"); }},
        RefusedSubset{"Zero", "MAXSIZE=0",
                      [](const ParserMessage& m) {
                          m.ParamValueBreakBdry(0, 0.0, 2, 0.0, 0, "MAXSIZE", "SUBSET");
                      }},
        RefusedSubset{"Negative", "MAXSIZE=-2",
                      [](const ParserMessage& m) {
                          m.ParamValueBreakBdry(-2, 0.0, 2, 0.0, 0, "MAXSIZE", "SUBSET");
                      }},
        RefusedSubset{"Fraction", "MAXSIZE=2.5", kWrongMaxSize},
        RefusedSubset{"UnknownQualifier", "MAXSIZE=2(WORST=PSEUDOBIC)",
                      [](const ParserMessage& m) { m.InvalidParam("WORST", "SUBSET"); }},
        RefusedSubset{
            "UnknownCriterion", "MAXSIZE=2(BESTSUBSET=AIC)",
            [](const ParserMessage& m) { m.InvalidParamOption("AIC", "BESTSUBSET", "SUBSET"); }},
        RefusedSubset{"TestDataWithoutASample", "MAXSIZE=2(BESTSUBSET=TESTDATA)",
                      [](const ParserMessage& m) {
                          m.NeedSubComForParam("TRAININGSAMPLE", "SUBSET BESTSUBSET", "TESTDATA");
                      }}),
    [](const auto& one) { return std::string(one.param.fName); });

// What the host lets through or refuses itself; either way one message and nothing stored.
class SubsetShape : public testing::TestWithParam<const char*> {};
TEST_P(SubsetShape, IsRefused) {
    ParsedCommand command(std::string("NAIVEBAYES y BY f1 f2 f3 /SUBSET ") + GetParam());
    EXPECT_FALSE(command.Ok());
    EXPECT_EQ(command.Messages().size(), 1u) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetMaxSubsetSize(), 0);
    EXPECT_FALSE(command.Specs().GetPseudoBIC());
}
INSTANTIATE_TEST_SUITE_P(
    Shapes, SubsetShape,
    testing::Values("MAXSIZE=(2 3)", "MAXSIZE=2 (BESTSUBSET)", "MAXSIZE=2 (BESTSUBSET=)",
                    "MAXSIZE=2 (=PSEUDOBIC)", "MAXSIZE=2 (BESTSUBSET PSEUDOBIC)",
                    "MAXSIZE=2 (BESTSUBSET=1)", "MAXSIZE=2 (BESTSUBSET:PSEUDOBIC)",
                    "MAXSIZE=2 (BESTSUBSET=PSEUDOBIC) 4", "MAXSIZE=(BESTSUBSET=PSEUDOBIC)",
                    "MAXSIZE=2 BESTSUBSET=PSEUDOBIC", "MAXSIZE=*", "MAXSIZE=1e30"));

TEST(SubsetSize, MaxSizeMayEqualTheNumberOfCandidates) {
    ParsedCommand command("NAIVEBAYES y /SUBSET MAXSIZE=10", TenCandidates());
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetMaxSubsetSize(), 10);
}

TEST(SubsetSize, MaxSizeMayNotExceedTheNumberOfCandidates) {
    ParsedCommand command("NAIVEBAYES y /SUBSET MAXSIZE=11", TenCandidates());
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.SaidOnlyKey(kAtMostPossible, MessageLevel::Error,
                                    {"SUBSET MAXSIZE", "FORCE", "NAIVEBAYES"}));
}

TEST(SubsetSize, ForcedPredictorsAreNoCandidates) {
    EXPECT_FALSE(
        ParsedCommand("NAIVEBAYES y /FORCE FACTORS=(x0) /SUBSET MAXSIZE=10", TenCandidates()).Ok());
    EXPECT_TRUE(
        ParsedCommand("NAIVEBAYES y /FORCE FACTORS=(x0) /SUBSET MAXSIZE=9", TenCandidates()).Ok());
}

TEST(SubsetSize, ExactSizeMayNotEqualTheNumberOfCandidates) {
    ParsedCommand command("NAIVEBAYES y /SUBSET EXACTSIZE=10", TenCandidates());
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.SaidOnlyKey(kBelowPossible, MessageLevel::Error,
                                    {"SUBSET EXACTSIZE", "FORCE", "NAIVEBAYES"}));
}

TEST(SubsetSize, ExactSizeBelowTheNumberOfCandidatesPasses) {
    ParsedCommand command("NAIVEBAYES y /SUBSET EXACTSIZE=9", TenCandidates());
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetExactSubsetSize(), 9);
}

TEST(Save, AbsentSavesNothing) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2");
    EXPECT_TRUE(command.Specs().GetPredValName().IsEmpty());
    EXPECT_TRUE(command.Specs().GetPredProbRoot().IsEmpty());
}

TEST(Save, PredValWithoutAValueTakesTheDefaultNameUnchecked) {
    embedded::DataSetBuilder builder = ParseData();
    builder.Numbers("PredictedValue", {1, 2, 3, 4});
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /SAVE PREDVAL", builder.Build());
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetPredValName().GetString(), "PredictedValue");
    EXPECT_TRUE(command.Specs().GetPredValDefault());
    EXPECT_TRUE(command.Specs().GetPredProbRoot().IsEmpty());
}

TEST(Save, PredValWithAFreeName) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /SAVE PREDVAL(guess)");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetPredValName().GetString(), "guess");
    EXPECT_FALSE(command.Specs().GetPredValDefault());
}

TEST(Save, PredValWithTheNameOfAVariableFails) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /SAVE PREDVAL(c1)");
    EXPECT_FALSE(command.Ok());
    EXPECT_EQ(command.Messages().size(), 1u) << command.MessageTexts();
    EXPECT_TRUE(command.Specs().GetPredValName().IsEmpty());
}

struct PredProbCase {
    const char* fName;
    const char* fSave;
    const char* fRoot;
    std::int32_t fCount;
};
void PrintTo(const PredProbCase& save, std::ostream* out) { *out << save.fSave; }

class PredProb : public testing::TestWithParam<PredProbCase> {};
TEST_P(PredProb, IsStored) {
    ParsedCommand command(std::string("NAIVEBAYES y BY f1 f2 /SAVE ") + GetParam().fSave);
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetPredProbRoot().GetString(), GetParam().fRoot);
    EXPECT_EQ(command.Specs().GetMaxPredProbs(), GetParam().fCount);
}
INSTANTIATE_TEST_SUITE_P(
    Forms, PredProb,
    testing::Values(
        PredProbCase{"AloneIs25OfTheDefaultRoot", "PREDPROB", "PredictedProbability", 25},
        PredProbCase{"Root", "PREDPROB(p)", "p", 25},
        PredProbCase{"RootAndCount", "PREDPROB(p:3)", "p", 3},
        PredProbCase{"CountAloneKeepsTheDefaultRoot", "PREDPROB(:5)", "PredictedProbability", 5},
        PredProbCase{"CountWrittenAsADecimal", "PREDPROB(p:4.0)", "p", 4},
        PredProbCase{"BesideAPredictedValue", "PREDVAL(v) PREDPROB(p:1)", "p", 1}),
    [](const auto& one) { return std::string(one.param.fName); });

struct RefusedPredProb {
    const char* fName;
    const char* fValue;
    std::function<void(const ParserMessage&)> fExpected;
};
void PrintTo(const RefusedPredProb& save, std::ostream* out) { *out << save.fValue; }

class PredProbRefused : public testing::TestWithParam<RefusedPredProb> {};
TEST_P(PredProbRefused, IsReported) {
    ParsedCommand command(std::string("NAIVEBAYES y BY f1 f2 /SAVE PREDPROB(") + GetParam().fValue +
                          ")");
    EXPECT_FALSE(command.Ok());
    EXPECT_TRUE(command.SaidOnly(GetParam().fExpected));
    EXPECT_TRUE(command.Specs().GetPredProbRoot().IsEmpty());
}

namespace {

const auto kWrongPredProb = [](const ParserMessage& m) { m.WrongValueType("PREDPROB", "SAVE"); };
const auto kNeedsInteger = [](const ParserMessage& m) { m.ParamNeedInteger("PREDPROB P", "SAVE"); };

}  // namespace

INSTANTIATE_TEST_SUITE_P(
    Faults, PredProbRefused,
    testing::Values(
        RefusedPredProb{"Zero", "P:0", kNeedsInteger},
        RefusedPredProb{"Fraction", "P:2.5", kNeedsInteger},
        RefusedPredProb{"Negative", "P:-3", kNeedsInteger},
        RefusedPredProb{"BeyondAllIntegers", "P:1e30", kNeedsInteger},
        RefusedPredProb{"ZeroOfTheDefaultRoot", ":0",
                        [](const ParserMessage& m) {
                            m.ParamNeedInteger("PREDPROB PredictedProbability", "SAVE");
                        }},
        RefusedPredProb{"NumberAsRoot", "5",
                        [](const ParserMessage& m) { m.InvalidVarName("5", "PREDPROB", "SAVE"); }},
        RefusedPredProb{"StringAsRoot", "'p'",
                        [](const ParserMessage& m) { m.InvalidVarName("p", "PREDPROB", "SAVE"); }},
        RefusedPredProb{"NoColon", "P 3", kWrongPredProb},
        RefusedPredProb{"NoCount", "P:", kWrongPredProb},
        RefusedPredProb{"WordAsCount", "P:many", kWrongPredProb},
        RefusedPredProb{"AnotherOperator", "P=3", kWrongPredProb},
        RefusedPredProb{"FourTokens", "P:3 4", kWrongPredProb},
        RefusedPredProb{"TwoRoots", "P Q", kWrongPredProb},
        RefusedPredProb{"CountBeforeRoot", "3:P", kWrongPredProb}),
    [](const auto& one) { return std::string(one.param.fName); });

TEST(Outfile, PathIsStored) {
    ParsedCommand command("NAIVEBAYES y BY f1 f2 /OUTFILE MODEL='models/some model.xml'");
    EXPECT_TRUE(command.Ok()) << command.MessageTexts();
    EXPECT_EQ(command.Specs().GetModelFile(), "models/some model.xml");
}

TEST(Outfile, AbsentIsNoFile) {
    EXPECT_EQ(ParsedCommand("NAIVEBAYES y BY f1 f2").Specs().GetModelFile(), "");
}
