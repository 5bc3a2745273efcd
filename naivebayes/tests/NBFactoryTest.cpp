#include <gtest/gtest.h>

#include "naivebayes/tests/EngineFixture.h"

using namespace enginetest;

namespace {

NBStatus CreationOf(const NBVarList& list) {
    NBStatus status;
    const auto engine = CreateNBAlgorithm(status, {}, list);
    EXPECT_EQ(engine == nullptr, status.IsError());
    return status;
}

}  // namespace

TEST(NBFactory, AListThatMakesAModelGivesAnEngine) {
    EXPECT_EQ(CreationOf(CategoricalList(2, {2, 3})), NBStatus());
    EXPECT_EQ(CreationOf(CategoricalList(2, {2, 3}, kCandidate)), NBStatus())
        << "candidates count as predictors";
}

TEST(NBFactory, TheFirstVariableAtFaultIsNamed) {
    NBVarList list = CategoricalList(2, {2, 3});
    list.AddContVar("empty", "", 1.0, 0.0, 5, kInput);
    AddCategorical(list, "constant", 1, kInput);
    EXPECT_EQ(CreationOf(list), With(Error(NBCode::kBadVarList), 0, 3));
    list = CategoricalList(2, {1, 3});
    list.AddContVar("empty", "", 1.0, 0.0, 5, kInput);
    EXPECT_EQ(CreationOf(list), With(Error(NBCode::kBadVarList), 0, 1));
}

TEST(NBFactory, AListWithoutTargetOrPredictorsHasNoVariableToName) {
    NBVarList list;
    EXPECT_EQ(CreationOf(list), With(Error(NBCode::kBadVarList), 0, -1));
    AddCategorical(list, "t", 2, kTarget);
    EXPECT_EQ(CreationOf(list), With(Error(NBCode::kBadVarList), 0, -1));
    list = CategoricalList(2, {2});
    AddCategorical(list, "second", 2, kTarget);
    EXPECT_EQ(CreationOf(list), With(Error(NBCode::kBadVarList), 0, -1));
}

TEST(NBFactory, TheListMustKnowItsTargetByIndex) {
    NBVarList list = CategoricalList(2, {2, 3});
    list.SetRole(1, kTarget);
    list.SetRole(0, kInput);
    ASSERT_EQ(list.GetTargetIndex(), -1);
    EXPECT_EQ(CreationOf(list), With(Error(NBCode::kBadVarList), 0, -1));
    NBVarList weight;
    weight.AddWeightVar("w", "", 0);
    weight.SetRole(0, kTarget);
    AddCategorical(weight, "t", 2, kInput);
    AddCategorical(weight, "x", 2, kInput);
    weight.SetRole(1, kTarget);
    ASSERT_EQ(weight.GetTargetIndex(), 0);
    EXPECT_EQ(CreationOf(weight), With(Error(NBCode::kBadVarList), 0, -1));
}

TEST(NBFactory, AContinuousVariableMadeTheTargetIsRefused) {
    NBVarList list;
    list.AddContVar("t", "", 0.0, 1.0, 5, kUnused);
    AddCategorical(list, "x", 2, kInput);
    list.SetRole(0, kTarget);
    EXPECT_EQ(CreationOf(list), With(Error(NBCode::kBadVarList), 0, -1));
}

TEST(NBFactory, TheEngineHasItsOwnCopies) {
    NBVarList list = CategoricalList(2, {2});
    NaiveBayesSettings settings;
    const auto engine = Create(list, settings);
    list.SetRole(1, kUnused);
    settings.fNumSkip = 7;
    EXPECT_EQ(engine->GetVarList().GetRole(1), kInput);
    EXPECT_EQ(engine->GetSettings().fNumSkip, 0);
}

TEST(NBFactory, AFailedStreamIsToldApartFromAStateThatIsNone) {
    std::istringstream stream("anything");
    stream.setstate(std::ios::failbit);
    NBStatus status;
    EXPECT_EQ(RestoreNBAlgorithm(status, stream), nullptr);
    EXPECT_EQ(status, Error(NBCode::kStreamFailed));
    EXPECT_EQ(RestoreNBAlgorithmXML(status, stream), nullptr);
    EXPECT_EQ(status, Error(NBCode::kStreamFailed));
}

TEST(NBFactory, AStateThatIsNoneFailsWithALineOnTheErrorStream) {
    NBStatus status;
    std::istringstream binary("NBAlgorithm 2.00 and more");
    testing::internal::CaptureStderr();
    EXPECT_EQ(RestoreNBAlgorithm(status, binary), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error reading NBAlgorithm!\n");
    EXPECT_EQ(status, Error(NBCode::kBinaryRestore));
    std::istringstream text("<html/>");
    testing::internal::CaptureStderr();
    EXPECT_EQ(RestoreNBAlgorithmXML(status, text), nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Error reading NBAlgorithm!\n");
    EXPECT_EQ(status, Error(NBCode::kXMLRestore));
}
