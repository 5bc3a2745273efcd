#include "naivebayes/data/NBContVar.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "naivebayes/data/NBStringUserMissing.h"
#include "naivebayes/tests/SavedForms.h"

namespace {

using savedforms::Bytes;

NBContVar MakeRange(double min, double max, std::int32_t numBins,
                    std::int32_t role = NBRole::kInput) {
    return {"age", "Age", min, max, numBins, role};
}

NBContVar MakeCut(const std::vector<double>& cutpoints, std::int32_t role = NBRole::kInput) {
    return {"age", "Age", cutpoints, role};
}

std::unique_ptr<NBNumericUserMissing> Missing(double value) {
    auto definition = std::make_unique<NBNumericUserMissing>();
    definition->Add(value, "");
    return definition;
}

TEST(NBContVar, CutpointsReachOneIntervalFurther) {
    const NBContVar variable = MakeCut({10.0, 20.0, 50.0});
    EXPECT_EQ(variable.GetMin(), 0.0);
    EXPECT_EQ(variable.GetMax(), 80.0);
    EXPECT_EQ(variable.GetNumCategories(), 4);
    EXPECT_TRUE(variable.GetEncoderConst()->IsExplicit());
}

TEST(NBContVar, ASingleCutpointHasFiftyOnEachSide) {
    const NBContVar variable = MakeCut({10.0});
    EXPECT_EQ(variable.GetMin(), -40.0);
    EXPECT_EQ(variable.GetMax(), 60.0);
    EXPECT_EQ(variable.GetNumCategories(), 2);
}

TEST(NBContVar, WithoutCutpointsItIsConstant) {
    NBContVar variable = MakeCut({});
    EXPECT_EQ(variable.GetEncoder(), nullptr);
    EXPECT_EQ(variable.GetNumCategories(), 1);
    EXPECT_EQ(variable.GetRangeState(), 1);
    EXPECT_EQ(variable.MakeBinningEncoder(10), 0);
}

TEST(NBContVar, ARangeMakesEqualBins) {
    const NBContVar variable = MakeRange(0.0, 10.0, 5);
    ASSERT_NE(variable.GetEncoderConst(), nullptr);
    EXPECT_EQ(variable.GetEncoderConst()->GetCutpoints(),
              (std::vector<double>{2.0, 4.0, 6.0, 8.0}));
    EXPECT_FALSE(variable.GetEncoderConst()->IsExplicit());
}

TEST(NBContVar, MinEqualToMaxGetsNoEncoderAndStaysWithout) {
    NBContVar variable = MakeRange(3.0, 3.0, 5);
    EXPECT_EQ(variable.GetEncoder(), nullptr);
    EXPECT_EQ(variable.MakeBinningEncoder(10), 0);
    EXPECT_EQ(variable.GetEncoder(), nullptr);
    EXPECT_EQ(variable.GetRangeState(), 1);
    EXPECT_EQ(MakeRange(4.0, 3.0, 5).GetRangeState(), 2);
    EXPECT_EQ(MakeRange(2.0, 3.0, 5).GetRangeState(), 0);
}

TEST(NBContVar, AnUnusedOneGetsNoEncoderHoweverManyBins) {
    NBContVar variable = MakeRange(0.0, 3.0, 50, NBRole::kUnused);
    EXPECT_EQ(variable.GetEncoder(), nullptr);
    EXPECT_EQ(variable.MakeBinningEncoder(50), 0);
    EXPECT_EQ(variable.GetEncoder(), nullptr);
    EXPECT_EQ(MakeCut({1.0, 2.0}, NBRole::kUnused).GetEncoderConst(), nullptr);
}

TEST(NBContVar, AGivenNumberOfBinsIsKept) {
    NBContVar given = MakeRange(0.0, 3.0, 4, NBRole::kUnused);
    given.SetRole(NBRole::kInput);
    EXPECT_EQ(given.MakeBinningEncoder(10), 1);
    EXPECT_EQ(given.GetNumCategories(), 4);
    EXPECT_EQ(given.MakeBinningEncoder(10), 0);
    NBContVar open = MakeRange(0.0, 3.0, -1);
    EXPECT_EQ(open.MakeBinningEncoder(1), 0);
    EXPECT_EQ(open.GetNumCategories(), -1);
    EXPECT_EQ(open.MakeBinningEncoder(10), 1);
    EXPECT_EQ(open.GetNumCategories(), 10);
}

TEST(NBContVar, TheDefaultNumberOfBinsIsTakenEvenWhereNoneCanBeMade) {
    NBContVar variable = MakeRange(3.0, 3.0, 0);
    EXPECT_EQ(variable.MakeBinningEncoder(10), 0);
    EXPECT_EQ(variable.GetNumCategories(), 10);
}

TEST(NBContVar, BinsMadeLaterKnowTheDefinition) {
    NBContVar variable = MakeRange(0.0, 3.0, -1);
    variable.SetUserMissing(Missing(2.0));
    variable.MakeBinningEncoder(3);
    EXPECT_EQ(variable.GetEncoder()->Encode(2.0), -1.0);
    NBContVar cut = MakeRange(0.0, 3.0, -1);
    cut.SetUserMissing(Missing(2.0));
    cut.SetCutpoints({1.0});
    EXPECT_EQ(cut.GetEncoder()->Encode(2.0), -1.0);
}

TEST(NBContVar, CutpointsMustAscendAndComeBeforeAnyBins) {
    NBContVar variable = MakeRange(0.0, 3.0, 7, NBRole::kUnused);
    EXPECT_EQ(variable.SetCutpoints({}), 0);
    EXPECT_EQ(variable.SetCutpoints({1.0, 1.0}), 0);
    EXPECT_EQ(variable.SetCutpoints({2.0, 1.0}), 0);
    EXPECT_EQ(variable.GetNumCategories(), 7);
    EXPECT_EQ(variable.SetCutpoints({1.0, 2.0}), 1);
    EXPECT_EQ(variable.GetNumCategories(), 3);
    EXPECT_TRUE(variable.GetEncoder()->IsExplicit());
    EXPECT_EQ(variable.SetCutpoints({1.0}), 0);
    EXPECT_EQ(variable.GetNumCategories(), 3);
}

TEST(NBContVar, GivenCutpointsAreDroppedByForceOnly) {
    NBContVar equal = MakeRange(0.0, 10.0, 5);
    EXPECT_EQ(equal.DropEncoder(false), 1);
    EXPECT_EQ(equal.GetEncoder(), nullptr);
    EXPECT_EQ(equal.GetNumCategories(), 5);
    EXPECT_EQ(equal.DropEncoder(true), 0);
    NBContVar cut = MakeCut({1.0, 2.0});
    EXPECT_EQ(cut.DropEncoder(false), 0);
    EXPECT_EQ(cut.DropEncoder(true), 1);
}

TEST(NBContVar, KeepsTheDefinitionAndLendsItToTheEncoder) {
    NBContVar variable = MakeCut({1.0});
    EXPECT_TRUE(variable.SetUserMissing(Missing(5.0)));
    EXPECT_EQ(variable.GetEncoder()->GetUserMissing(), variable.GetUserMissing());
    const INBUserMissing* const held = variable.GetUserMissing();
    EXPECT_FALSE(variable.SetUserMissing(std::make_unique<NBStringUserMissing>()));
    EXPECT_EQ(variable.GetUserMissing(), held);
    EXPECT_EQ(variable.GetEncoder()->Encode(5.0), -1.0);
    EXPECT_TRUE(variable.SetUserMissing(nullptr));
    EXPECT_EQ(variable.GetUserMissing(), nullptr);
    EXPECT_EQ(variable.GetEncoder()->GetUserMissing(), nullptr);
}

TEST(NBContVar, ACloneOwnsItsDefinition) {
    auto variable = std::make_unique<NBContVar>(MakeCut({1.0}));
    variable->SetUserMissing(Missing(5.0));
    const auto clone = variable->Clone();
    variable.reset();
    EXPECT_EQ(clone->GetEncoder()->GetUserMissing(), clone->GetUserMissing());
    EXPECT_EQ(static_cast<NBBinningEncoder&>(*clone->GetEncoder()).Encode(5.0), -1.0);
}

TEST(NBContVar, AssignmentKeepsTheBinsThatAreThere) {
    NBContVar variable = MakeCut({1.0, 2.0});
    variable.SetUserMissing(Missing(7.0));
    NBContVar other = MakeRange(0.0, 10.0, 5, NBRole::kPossibleInput);
    other.SetUserMissing(Missing(5.0));
    variable = other;
    EXPECT_EQ(variable.GetEncoder()->GetCutpoints(), (std::vector<double>{1.0, 2.0}));
    EXPECT_EQ(variable.GetNumCategories(), 5);
    EXPECT_EQ(variable.GetMax(), 10.0);
    EXPECT_EQ(variable.GetRole(), NBRole::kPossibleInput);
    EXPECT_EQ(variable.GetEncoder()->Encode(5.0), -1.0);
    EXPECT_EQ(variable.GetEncoder()->Encode(7.0), 2.0);
    EXPECT_NE(variable.GetUserMissing(), other.GetUserMissing());
}

TEST(NBContVar, AssignmentTakesTheOthersBinsWhereThereAreNone) {
    NBContVar variable = MakeRange(0.0, 1.0, -1);
    variable = MakeCut({1.0, 2.0});
    EXPECT_EQ(variable.GetEncoder()->GetCutpoints(), (std::vector<double>{1.0, 2.0}));
    EXPECT_EQ(variable.GetEncoder()->GetUserMissing(), nullptr);
}

TEST(NBContVar, AssignmentOfOneWithoutBinsDropsThem) {
    NBContVar variable = MakeCut({1.0, 2.0});
    variable = MakeRange(0.0, 1.0, -1);
    EXPECT_EQ(variable.GetEncoder(), nullptr);
    EXPECT_EQ(variable.GetNumCategories(), -1);
}

TEST(NBContVar, AssignmentToItselfChangesNothing) {
    NBContVar variable = MakeCut({1.0, 2.0});
    variable.SetUserMissing(Missing(7.0));
    const std::string before = savedforms::Binary(variable);
    variable = std::as_const(variable);
    EXPECT_EQ(savedforms::Binary(variable), before);
}

NBContVar MakeSaved() {
    NBContVar variable = MakeCut({1.0, 2.0});
    variable.SetUserMissing(Missing(7.0));
    return variable;
}

std::string GoodBytes() {
    return "COVR" + Bytes(3) + "age" + Bytes(3) + "Age" + Bytes(1) + Bytes(3) + Bytes(0.0) +
           Bytes(3.0) + Bytes(1) + "BIEN" + Bytes(3) + Bytes(1) + Bytes(1.0) + Bytes(2.0) +
           Bytes(1) + "NBNumUMi" + Bytes(1) + Bytes(7.0) + Bytes(0) + Bytes(0);
}

TEST(NBContVar, BinaryHasThePublishedLayout) {
    EXPECT_EQ(savedforms::Binary(MakeSaved()), GoodBytes());
    NBContVar restored = MakeRange(-1.0, 1.0, -1);
    EXPECT_TRUE(savedforms::FromBinary(restored, GoodBytes()));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
    EXPECT_EQ(restored.GetEncoder()->Encode(7.0), -1.0);
}

TEST(NBContVar, XMLRoundTrips) {
    NBContVar restored = MakeCut({9.0});
    restored.SetUserMissing(Missing(3.0));
    EXPECT_TRUE(savedforms::FromXML(restored, savedforms::XML(MakeSaved())));
    EXPECT_EQ(savedforms::Binary(restored), GoodBytes());
    EXPECT_EQ(restored.GetEncoder()->Encode(7.0), -1.0);
    EXPECT_EQ(restored.GetEncoder()->Encode(3.0), 2.0);
}

TEST(NBContVar, RestoredWithoutEncoderItKeepsTheSavedBins) {
    for (const std::int32_t bins : {-1, 7}) {
        NBContVar restored = MakeCut({1.0});
        NBContVar saved = MakeRange(0.0, 1.0, bins, NBRole::kUnused);
        EXPECT_TRUE(savedforms::FromBinary(restored, savedforms::Binary(saved)));
        EXPECT_EQ(restored.GetEncoder(), nullptr);
        EXPECT_EQ(restored.RefreshNumCategories(), bins);
        EXPECT_EQ(restored.GetNumCategories(), bins);
    }
}

// Offsets of GoodBytes: 22 number of bins, 42 encoder type, 46 the encoder.
TEST(NBContVar, RestoredWithAnEncoderItHasThatNumberOfBins) {
    NBContVar restored = MakeRange(0.0, 1.0, -1);
    EXPECT_TRUE(savedforms::FromBinary(restored, savedforms::With(GoodBytes(), 22, 100)));
    EXPECT_EQ(restored.GetNumCategories(), 3);
}

TEST(NBContVar, AWrongEncoderTypeIsToldOnStandardOutput) {
    for (const std::int32_t type : {2, -1}) {
        NBContVar restored = MakeCut({1.0});
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        EXPECT_FALSE(savedforms::FromBinary(restored, savedforms::With(GoodBytes(), 42, type)));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "Wrong encoder type in NBContVar!\n");
        EXPECT_EQ(restored.GetEncoder(), nullptr);
    }
}

TEST(NBContVar, OnlyAFlagOfOneReadsADefinition) {
    NBContVar restored = MakeRange(0.0, 1.0, -1);
    EXPECT_TRUE(savedforms::FromBinary(restored, savedforms::With(GoodBytes(), 74, 2)));
    EXPECT_EQ(restored.GetUserMissing(), nullptr);
}

TEST(NBContVar, ANumberOfBinsToBeMadeIsNotBelievedBeyondMeasure) {
    NBContVar saved = MakeRange(0.0, 1.0, 2000000000, NBRole::kUnused);
    NBContVar restored = MakeRange(0.0, 1.0, -1);
    EXPECT_TRUE(savedforms::FromBinary(restored, savedforms::Binary(saved)));
    saved.SetRole(NBRole::kInput);
    savedforms::ExpectBinaryFails(restored, savedforms::Binary(saved),
                                  "Error reading NBContVar!\n");
}

TEST(NBContVar, FailuresHaveTheirLines) {
    NBContVar variable = MakeSaved();
    savedforms::ExpectBinaryFails(variable, savedforms::Replaced(GoodBytes(), "COVR", "CAVR"),
                                  "Error reading NBContVar!\n");
    savedforms::ExpectXMLFails(variable,
                               savedforms::Replaced(savedforms::XML(variable), "NBContVar", "x"),
                               "Failure reading NBContVar!\n");
    // An encoder of one bin reads by itself in XML, but no variable has one.
    savedforms::ExpectXMLFails(
        variable,
        savedforms::Replaced(savedforms::XML(variable),
                             "  <Int value=\"3\"/>\n  <Int value=\"1\"/>\n  <Double value=\"1\"/>\n"
                             "  <Double value=\"2\"/>\n",
                             "  <Int value=\"1\"/>\n  <Int value=\"1\"/>\n"),
        "Failure reading NBContVar!\n");
    EXPECT_EQ(variable.GetEncoder()->Encode(7.0), -1.0);
}

TEST(NBContVar, DisplaysTheRangeInFullAndRestoresThePrecision) {
    NBContVar variable = MakeRange(0.1, 1.0 / 3.0, -1);
    std::ostringstream out;
    variable.Display(out);
    EXPECT_EQ(out.str(),
              "Continuous variable: name = age, label = Age, role = Input\n"
              "\tNumber of bins = -1, min = 0.1, max = 0.3333333333333333\n"
              "\tEncoder not set.\n");
    EXPECT_EQ(out.precision(), 6);
    EXPECT_NE(savedforms::Displayed(MakeSaved()).find("Cutpoints: 1 2\n"), std::string::npos);
}

}  // namespace
